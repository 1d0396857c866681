// Texts that JSON can carry.
#pragma once

#include <string>
#include <string_view>

namespace twcfg {

bool is_utf8(std::string_view text);
// A map key as UTF-8: "~" and bytes that are not UTF-8 become "~" and two hex digits; and back.
std::string key_to_utf8(std::string_view key);
bool key_from_utf8(std::string_view text, std::string &key);

}  // namespace twcfg
