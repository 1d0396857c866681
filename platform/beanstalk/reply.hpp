// The reply lines of the server: a word, and numbers behind some words.
#pragma once

#include <array>
#include <cstdint>
#include <string_view>

namespace twbs {

struct Reply {
  std::string_view word;
  std::array<std::int64_t, 2> numbers{};
};

// Whether the line is `word` and exactly `count` numbers behind it, none negative or larger than an int64_t.
bool parse(std::string_view line, std::string_view word, std::size_t count, Reply &reply) noexcept;

// What an error reply means, as a negative errno number; -EPROTO for a line that is none.
int error_of(std::string_view line) noexcept;

// Whether the server would take the name, and nothing else of the line that it is written into.
bool is_tube(const char *name) noexcept;

}  // namespace twbs
