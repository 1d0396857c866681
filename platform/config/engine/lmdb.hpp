// Opening a store on LMDB with a bound on address space.
#pragma once

#include <cstddef>
#include <memory>
#include <string>

#include "engine/engine.hpp"

namespace twcfg {

// open_lmdb() that reserves at most `largest_map` bytes of address space to begin with.
std::shared_ptr<Engine> open_lmdb_within(const std::string &path, unsigned options, std::size_t largest_map,
                                         Failure &failure);

}  // namespace twcfg
