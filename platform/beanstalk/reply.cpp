#include "reply.hpp"

#include <twbeanstalk.h>

#include <cerrno>
#include <charconv>
#include <cstring>

namespace twbs {
namespace {

bool take_number(std::string_view &rest, std::int64_t &number) noexcept {
  if (rest.size() < 2 || rest[0] != ' ' || rest[1] < '0' || rest[1] > '9') return false;
  const auto [end, error] = std::from_chars(rest.data() + 1, rest.data() + rest.size(), number);
  if (error != std::errc{}) return false;
  rest.remove_prefix(static_cast<std::size_t>(end - rest.data()));
  return true;
}

}  // namespace

bool parse(std::string_view line, std::string_view word, std::size_t count, Reply &reply) noexcept {
  if (!line.starts_with(word)) return false;
  std::string_view rest = line.substr(word.size());
  for (std::size_t i = 0; i < count; ++i)
    if (!take_number(rest, reply.numbers[i])) return false;
  reply.word = word;
  return rest.empty();
}

int error_of(std::string_view line) noexcept {
  constexpr struct {
    std::string_view line;
    int error;
  } known[] = {
      {"NOT_FOUND", ENOENT}, {"JOB_TOO_BIG", EMSGSIZE},  {"DRAINING", EBUSY},    {"OUT_OF_MEMORY", ENOBUFS},
      {"TIMED_OUT", EAGAIN}, {"DEADLINE_SOON", EDEADLK}, {"NOT_IGNORED", EPERM}, {"BURIED", ENOBUFS},
  };
  // A job that was put and could not be kept is buried, under a number.
  Reply buried;
  if (parse(line, "BURIED", 1, buried)) return -ENOBUFS;
  for (const auto &one : known)
    if (line == one.line) return -one.error;
  return -EPROTO;
}

bool is_tube(const char *name) noexcept {
  constexpr const char *allowed = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-+/;.$_()";
  if (!name || *name == '-') return false;
  const std::size_t length = std::strspn(name, allowed);
  return length > 0 && length <= BS_TUBE_MAX && name[length] == '\0';
}

}  // namespace twbs
