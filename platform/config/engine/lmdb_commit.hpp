// One durable commit.
#pragma once

#include "engine/lmdb_environment.hpp"

namespace twcfg {

// Threads and processes wait for each other here.
CommitResult commit_to(LmdbEnvironment &environment, const Commit &commit);

}  // namespace twcfg
