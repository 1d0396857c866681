#include "base64.hpp"

#include <array>
#include <cstdint>

namespace twcfg {
namespace {

constexpr char kDigits[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

constexpr auto kValues = [] {
  std::array<std::int8_t, 256> values{};
  values.fill(-1);
  for (int i = 0; i < 64; ++i) values[static_cast<unsigned char>(kDigits[i])] = static_cast<std::int8_t>(i);
  return values;
}();

}  // namespace

std::string to_base64(std::string_view bytes) {
  std::string text;
  text.reserve((bytes.size() + 2) / 3 * 4);
  for (std::size_t i = 0; i < bytes.size(); i += 3) {
    const std::size_t left = std::min<std::size_t>(3, bytes.size() - i);
    std::uint32_t group = 0;
    for (std::size_t j = 0; j < 3; ++j) {
      group = group << 8 | (j < left ? static_cast<unsigned char>(bytes[i + j]) : 0u);
    }
    for (std::size_t j = 0; j < 4; ++j) text += j <= left ? kDigits[group >> (18 - 6 * j) & 63] : '=';
  }
  return text;
}

bool from_base64(std::string_view text, std::string &bytes) {
  bytes.clear();
  if (text.size() % 4 != 0) return false;
  bytes.reserve(text.size() / 4 * 3);
  for (std::size_t i = 0; i < text.size(); i += 4) {
    std::string_view group = text.substr(i, 4);
    if (i + 4 == text.size()) {
      while (group.size() > 2 && group.back() == '=') group.remove_suffix(1);
    }
    std::uint32_t value = 0;
    for (std::size_t j = 0; j < 4; ++j) {
      const int digit = j < group.size() ? kValues[static_cast<unsigned char>(group[j])] : 0;
      if (digit < 0) return false;
      value = value << 6 | static_cast<std::uint32_t>(digit);
    }
    for (std::size_t j = 0; j + 1 < group.size(); ++j)
      bytes += static_cast<char>(value >> (16 - 8 * j) & 255);
  }
  return to_base64(bytes) == text;
}

}  // namespace twcfg
