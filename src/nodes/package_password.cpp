#include "nodes/package_password.hpp"

#include <array>

namespace tw {
namespace {

constexpr size_t password_length = 64;
constexpr char letters[] = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789";
constexpr int32_t letter_count = sizeof letters - 1;

}  // namespace

bool make_package_password(secret &password, time_t now) noexcept {
  // The very numbers of srand(now) and rand(), drawn from a generator of our own: the process's one belongs
  // to the caller, who may be in the middle of a sequence, or on another thread. 128 bytes of state make it
  // the generator that rand() uses.
  std::array<int32_t, 32> state{};
  random_data generator{};
  initstate_r(static_cast<unsigned>(now), reinterpret_cast<char *>(state.data()), sizeof state, &generator);

  std::array<char, password_length> chars;
  for (char &c : chars) {
    int32_t number = 0;
    random_r(&generator, &number);
    c = letters[number % letter_count];
  }
  const bool made = password.assign(chars.data(), chars.size());
  explicit_bzero(chars.data(), chars.size());
  explicit_bzero(state.data(), sizeof state);
  return made;
}

}  // namespace tw
