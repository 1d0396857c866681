#include "id_text.hpp"

#include <algorithm>

#include "limits.hpp"

namespace twcfg {
namespace {

bool is_digit(char c) { return c >= '0' && c <= '9'; }

// Only what an ID or a path would misread is escaped, so ordinary keys look like themselves.
bool needs_escape(std::string_view key, std::size_t i) {
  switch (key[i]) {
    case '~':
    case '.':
    case '[':
    case ']':
    case '{':
      return true;
    case '-':
      return i + 1 < key.size() && is_digit(key[i + 1]);
    default:
      return false;
  }
}

int hex_digit(char c) {
  if (is_digit(c)) return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  return -1;
}

}  // namespace

void append_escaped(std::string &out, char byte) {
  static constexpr char kHex[] = "0123456789abcdef";
  const auto value = static_cast<unsigned char>(byte);
  out += '~';
  out += kHex[value >> 4];
  out += kHex[value & 15];
}

bool read_escaped(std::string_view text, std::string &bytes) {
  bytes.clear();
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] != '~') {
      bytes += text[i];
      continue;
    }
    if (i + 2 >= text.size()) return false;
    const int high = hex_digit(text[i + 1]);
    const int low = hex_digit(text[i + 2]);
    if (high < 0 || low < 0) return false;
    bytes += static_cast<char>(high * 16 + low);
    i += 2;
  }
  return true;
}

std::string escape_key(std::string_view key) {
  std::string out;
  out.reserve(key.size() + 4);
  for (std::size_t i = 0; i < key.size(); ++i) {
    if (needs_escape(key, i)) {
      append_escaped(out, key[i]);
    } else {
      out += key[i];
    }
  }
  return out;
}

bool unescape_key(std::string_view text, std::string &key) {
  return read_escaped(text, key) && escape_key(key) == text;
}

void append_flat(std::string &out, std::string_view id) {
  // Most IDs hold nothing to flatten: those of list entries.
  if (std::none_of(id.begin(), id.end(), [](char c) { return c == '.' || c == '~'; })) {
    out += id;
    return;
  }
  for (std::size_t i = 0; i < id.size(); ++i) {
    if (id[i] == '.') {
      out += '_';
    } else if (id.compare(i, 3, "~2e") == 0) {
      out += '_';
      i += 2;
    } else {
      out += id[i];
    }
  }
}

std::string flatten(std::string_view id) {
  std::string out;
  out.reserve(id.size());
  append_flat(out, id);
  return out;
}

bool split_entry(std::string_view id, std::string_view &front, std::uint32_t &number) {
  std::size_t at = id.size();
  while (at > 0 && is_digit(id[at - 1])) --at;
  const std::size_t digits = id.size() - at;
  if (digits == 0 || digits > 10 || at < 2 || id[at - 1] != '-' || id[at] == '0') return false;
  std::uint64_t value = 0;
  for (std::size_t i = at; i < id.size(); ++i) value = value * 10 + static_cast<unsigned>(id[i] - '0');
  if (value > kMaxNumber) return false;
  front = id.substr(0, at - 1);
  number = static_cast<std::uint32_t>(value);
  return true;
}

std::string path_to_id(std::string_view path) {
  if (path.empty()) return kRootId;
  const std::size_t last = path.rfind(']');
  const std::size_t tail = last == std::string_view::npos ? 0 : last + 1;
  std::string entry;
  for (const char c : flatten(path.substr(0, tail))) {
    if (c == '[') {
      entry += '-';
    } else if (c != ']') {
      entry += c;
    }
  }
  return entry + std::string(path.substr(tail));
}

}  // namespace twcfg
