#include "cli/fields.hpp"

#include <arpa/inet.h>
#include <fmt/format.h>

#include <optional>

#include "cli/text.hpp"

namespace twctl {

namespace {

[[noreturn]] void refuse(const std::string &text, const std::string &name, const std::string &why) {
  throw failure(exit_code::invalid_input, fmt::format("'{}' is no value for {}", printable(text), name), why);
}

bool is_address(const std::string &text) {
  in_addr parsed;
  return text.find('\0') == std::string::npos && inet_pton(AF_INET, text.c_str(), &parsed) == 1;
}

}  // namespace

void allow_text(const std::string &text, const std::string &name) {
  if (!text.empty()) require_label(text, name);
}

void require_host(const std::string &text, const std::string &name) {
  if (!is_host(text)) refuse(text, name, "it must be an IP address or a host name");
}

void allow_host(const std::string &text, const std::string &name) {
  if (!text.empty()) require_host(text, name);
}

void allow_address(const std::string &text, const std::string &name) {
  if (!text.empty() && !is_address(text)) refuse(text, name, "it must be an IPv4 address such as 10.0.0.1");
}

int32_t require_number(const std::string &text, const std::string &name, int32_t lowest, int32_t highest) {
  std::optional<int64_t> value = parse_number(text);
  if (!value || *value < lowest || *value > highest)
    refuse(text, name, fmt::format("it must be a whole number from {} to {}", lowest, highest));
  return static_cast<int32_t>(*value);
}

void refuse_word(const std::string &text, const std::string &name, const std::string &words) {
  refuse(text, name, "it must be one of " + words);
}

}  // namespace twctl
