#include "cli/text.hpp"

#include <arpa/inet.h>
#include <fmt/format.h>

#include <charconv>
#include <cstdlib>
#include <ctime>

namespace twctl {

namespace {

bool is_space(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n' || c == '\v' || c == '\f'; }
bool is_digit(char c) { return c >= '0' && c <= '9'; }
bool is_lower(char c) { return c >= 'a' && c <= 'z'; }
char lower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }
bool is_control(char c) { return static_cast<unsigned char>(c) < 0x20 || c == 0x7f; }

/// Length of the well-formed UTF-8 sequence at the start of the text; 0 when there is none.
size_t sequence_length(std::string_view text) {
  auto byte = [&](size_t i) { return i < text.size() ? static_cast<unsigned char>(text[i]) : 0u; };
  unsigned first = byte(0);
  if (first < 0x80) return text.empty() ? 0 : 1;
  size_t length = first >= 0xc2 && first < 0xe0   ? 2
                  : first >= 0xe0 && first < 0xf0 ? 3
                  : first >= 0xf0 && first < 0xf5 ? 4
                                                  : 0;
  for (size_t i = 1; i < length; i++)
    if ((byte(i) & 0xc0) != 0x80) return 0;
  if (first == 0xe0 && byte(1) < 0xa0) return 0;  // overlong
  if (first == 0xed && byte(1) > 0x9f) return 0;  // surrogates
  if (first == 0xf0 && byte(1) < 0x90) return 0;  // overlong
  if (first == 0xf4 && byte(1) > 0x8f) return 0;  // beyond U+10FFFF
  return length;
}

/// The control characters U+0080 to U+009F, which some terminals obey.
bool is_c1_control(std::string_view sequence) {
  return sequence.size() == 2 && static_cast<unsigned char>(sequence[0]) == 0xc2 &&
         static_cast<unsigned char>(sequence[1]) < 0xa0;
}

}  // namespace

std::string_view trim(std::string_view text) {
  while (!text.empty() && is_space(text.front())) text.remove_prefix(1);
  while (!text.empty() && is_space(text.back())) text.remove_suffix(1);
  return text;
}

std::string lower(std::string_view text) {
  std::string result(text);
  for (char &c : result) c = lower(c);
  return result;
}

std::string folded(std::string_view text) {
  std::string result;
  for (char c : lower(text))
    if (is_lower(c) || is_digit(c)) result += c;
  return result;
}

bool is_utf8(std::string_view text) {
  while (!text.empty()) {
    size_t length = sequence_length(text);
    if (length == 0) return false;
    text.remove_prefix(length);
  }
  return true;
}

bool is_label(std::string_view text) {
  constexpr size_t longest = 255;
  return !text.empty() && text.size() <= longest && is_utf8(text) && !has_control(text);
}

bool has_control(std::string_view text) {
  for (size_t i = 0; i < text.size(); i++)
    if (is_control(text[i]) || is_c1_control(text.substr(i, 2))) return true;
  return false;
}

std::string printable(std::string_view text) {
  std::string result;
  while (!text.empty()) {
    size_t length = sequence_length(text);
    std::string_view sequence = text.substr(0, length ? length : 1);
    if (length == 0 || is_control(text[0]) || is_c1_control(sequence))
      for (char c : sequence) result += fmt::format("\\x{:02x}", static_cast<unsigned char>(c));
    else
      result += sequence;
    text.remove_prefix(sequence.size());
  }
  return result;
}

std::optional<int64_t> parse_number(std::string_view text) {
  int64_t value = 0;
  auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
  return value;
}

std::optional<bool> parse_truth(std::string_view text) {
  std::string word = lower(text);
  if (word == "yes" || word == "true" || word == "1" || word == "on") return true;
  if (word == "no" || word == "false" || word == "0" || word == "off") return false;
  return std::nullopt;
}

bool is_host(std::string_view text) {
  std::string host(text);
  unsigned char address[sizeof(in6_addr)];
  if (host.find('\0') != std::string::npos) return false;
  if (inet_pton(AF_INET, host.c_str(), address) == 1 || inet_pton(AF_INET6, host.c_str(), address) == 1)
    return true;
  if (host.empty() || host.size() > 253) return false;
  bool digits_and_dots_only = true;
  size_t label = 0;
  for (size_t i = 0; i <= host.size(); i++) {
    char c = i < host.size() ? lower(host[i]) : '.';
    if (c == '.') {
      if (i > label && (host[label] == '-' || host[i - 1] == '-')) return false;
      if (i == label || i - label > 63) return false;
      label = i + 1;
    } else if (is_lower(c) || c == '-') {
      digits_and_dots_only = false;
    } else if (!is_digit(c)) {
      return false;
    }
  }
  return !digits_and_dots_only;  // "10.1.2" is a broken address, not a name
}

std::string utc_time(int64_t seconds) {
  auto value = static_cast<time_t>(seconds);
  tm parts{};
  char buffer[64];
  if (!gmtime_r(&value, &parts) || strftime(buffer, sizeof buffer, "%Y-%m-%dT%H:%M:%SZ", &parts) == 0)
    return {};
  return buffer;
}

std::string take(char *heap_text) {
  std::string result = heap_text ? heap_text : "";
  std::free(heap_text);
  return result;
}

}  // namespace twctl
