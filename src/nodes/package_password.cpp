#include "nodes/package_password.hpp"

#include <array>
#include <cstdint>
#include <utility>

namespace tw {
namespace {

constexpr size_t password_length = 64;
constexpr char letters[] = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789";
constexpr uint32_t letter_count = sizeof letters - 1;

// The generator behind srand() and rand() adds what it made 31 and 3 steps ago, to begin with to 31 numbers
// of a simpler generator, and throws the first 310 sums away.
constexpr size_t far = 31, near = 3, thrown_away = 310;

}  // namespace

bool make_package_password(secret &password, time_t now) noexcept {
  // The very numbers of srand(now) and rand(), drawn from a generator of our own: the process's one belongs
  // to the caller, who may be in the middle of a sequence, or on another thread. It is written out here
  // because seeding initstate_r()'s takes longer than all else that an enrolment does in memory.
  std::array<uint32_t, far + near + thrown_away + password_length> numbers;
  const auto seed = static_cast<uint32_t>(now);
  numbers[0] = seed != 0 ? seed : 1;
  int64_t simple = static_cast<int32_t>(numbers[0]);
  for (size_t i = 1; i < far; ++i) {
    simple = simple * 16807 % 0x7fffffff;
    if (simple < 0) simple += 0x7fffffff;
    numbers[i] = static_cast<uint32_t>(simple);
  }
  for (size_t i = far; i < far + near; ++i) numbers[i] = numbers[i - far];
  // The last three stay in registers: read back from the array at once, each would wait for its being
  // written.
  uint32_t third = numbers[far], second = numbers[far + 1], last = numbers[far + 2];
  for (size_t i = far + near; i < numbers.size(); ++i) {
    numbers[i] = numbers[i - far] + third;
    third = std::exchange(second, std::exchange(last, numbers[i]));
  }

  std::array<char, password_length> chars;
  const uint32_t *drawn = numbers.end() - password_length;
  for (char &c : chars) c = letters[(*drawn++ >> 1) % letter_count];
  const bool made = password.assign(chars.data(), chars.size());
  explicit_bzero(chars.data(), chars.size());
  explicit_bzero(numbers.data(), sizeof numbers);
  return made;
}

}  // namespace tw
