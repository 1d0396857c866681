#include "utf8.hpp"

#include <algorithm>
#include <cstdint>

#include "id_text.hpp"

namespace twcfg {
namespace {

// Length of the well-formed sequence at the front of `text`; 0 when there is none.
std::size_t sequence(std::string_view text) {
  const auto at = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
  const unsigned char lead = at(0);
  if (lead < 0x80) return 1;
  const std::size_t length = lead >= 0xf0 ? 4 : lead >= 0xe0 ? 3 : 2;
  if (lead < 0xc2 || lead > 0xf4 || text.size() < length) return 0;
  std::uint32_t point = lead & (0x7fu >> length);
  for (std::size_t i = 1; i < length; ++i) {
    if ((at(i) & 0xc0) != 0x80) return 0;
    point = point << 6 | (at(i) & 0x3fu);
  }
  const bool overlong = (length == 3 && point < 0x800) || (length == 4 && point < 0x10000);
  const bool surrogate = point >= 0xd800 && point < 0xe000;
  return overlong || surrogate || point > 0x10ffff ? 0 : length;
}

}  // namespace

bool is_utf8(std::string_view text) {
  while (!text.empty()) {
    const std::size_t length = sequence(text);
    if (length == 0) return false;
    text.remove_prefix(length);
  }
  return true;
}

std::string key_to_utf8(std::string_view key) {
  std::string text;
  while (!key.empty()) {
    const std::size_t length = key.front() == '~' ? 0 : sequence(key);
    if (length == 0) append_escaped(text, key.front());
    text += key.substr(0, length);
    key.remove_prefix(std::max<std::size_t>(length, 1));
  }
  return text;
}

bool key_from_utf8(std::string_view text, std::string &key) {
  return read_escaped(text, key) && key_to_utf8(key) == text;
}

}  // namespace twcfg
