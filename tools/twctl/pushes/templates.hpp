// Finding templates: what several nouns need.
#pragma once

#include <string>

#include "cli/records.hpp"

namespace twctl {

/// The template with this ID or name; fails with exit code 3 when there is none.
template_record find_template(cfg *store, const std::string &reference);

}  // namespace twctl
