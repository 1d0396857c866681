// Finding tags and their values: what several nouns need.
#pragma once

#include <string>

#include "cli/records.hpp"
#include "cli/session.hpp"

namespace twctl {

/// The tag with this ID or name; fails with exit code 3 when there is none.
tag_record find_tag(cfg *store, const std::string &reference);
/// The tag's value with this ID or text; fails with exit code 3 when there is none.
tag_value_record find_tag_value(cfg *store, const cfg_tag *tag, const std::string &reference);
/// The value that "TAG=VALUE" names; fails with exit code 2 for another form, 3 when there is none.
tag_value_record find_tag_pair(cfg *store, const std::string &pair);
/// "TAG=VALUE" for a value, as find_tag_pair() reads it.
std::string words_of(const cfg_tag_value *value);

}  // namespace twctl
