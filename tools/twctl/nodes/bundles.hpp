// Finding enrollment bundles: what several nouns need.
#pragma once

#include <string>

#include "cli/records.hpp"

namespace twctl {

/// The bundle with this ID or name; fails with exit code 3 when there is none.
bundle_record find_bundle(cfg *store, const std::string &reference);

}  // namespace twctl
