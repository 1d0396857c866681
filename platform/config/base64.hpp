// Base64, for bytes in JSON texts.
#pragma once

#include <string>
#include <string_view>

namespace twcfg {

std::string to_base64(std::string_view bytes);
// Accepts exactly what to_base64() writes.
bool from_base64(std::string_view text, std::string &bytes);

}  // namespace twcfg
