// Hashing a user's new password.
#include <crypt.h>
#include <fcntl.h>
#include <twconfig/message.h>
#include <unistd.h>

#include <cstring>

#include "users/user.hpp"

namespace {

constexpr char method[] = "$5$";  // SHA-256
constexpr char alphabet[] = "./0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz";

constexpr size_t salt_bytes = 12;  // three become four characters

bool read_random(unsigned char (&out)[salt_bytes]) noexcept {
  const int source = open("/dev/urandom", O_RDONLY | O_CLOEXEC);
  if (source < 0) return false;
  size_t filled = 0;
  while (filled < salt_bytes) {
    const ssize_t got = read(source, out + filled, salt_bytes - filled);
    if (got <= 0) break;
    filled += static_cast<size_t>(got);
  }
  close(source);
  return filled == salt_bytes;
}

// What crypt() is told: the method and a random salt.
struct password_setting {
  char text[sizeof method + salt_bytes / 3 * 4];

  // False when there is nothing random.
  bool make() noexcept {
    unsigned char bytes[salt_bytes];
    if (!read_random(bytes)) return false;
    char *at = std::strcpy(text, method) + std::strlen(method);
    // The first of three bytes is the highest and gives the first character. crypt() itself counts from the
    // other end; a salt is text to it, and this order is the one that the appliance's other tools write.
    for (size_t i = 0; i < salt_bytes; i += 3) {
      const unsigned group = unsigned{bytes[i]} << 16 | unsigned{bytes[i + 1]} << 8 | bytes[i + 2];
      for (const unsigned shift : {18U, 12U, 6U, 0U}) *at++ = alphabet[group >> shift & 63];
    }
    *at = '\0';
    return true;
  }
};

// False when crypt() refuses, or without memory. Nothing of the clear text is left in memory of ours.
bool hash(const char *clear, const password_setting &setting, tw::secret &out) noexcept {
  crypt_data work{};
  const char *hashed = crypt_rn(clear, setting.text, &work, sizeof work);
  const bool done = hashed && out.assign(hashed, std::strlen(hashed));
  explicit_bzero(&work, sizeof work);
  return done;
}

}  // namespace

void cfg_user_set_password(cfg_user *user, const char *clear) noexcept {
  if (!user || !user->cfg) return;
  if (!clear) {
    cfg_message_add_unexpected(user->cfg, "src/users", __LINE__);
    return;
  }
  user->hashed_password.clear();  // whatever happens now, the old password is not good any more
  if (!*clear) return;
  password_setting setting;
  if (!setting.make())
    cfg_message_add_unexpected(user->cfg, "src/users", __LINE__);
  else if (!hash(clear, setting, user->hashed_password))
    cfg_message_add_unexpected(user->cfg, "src/users", __LINE__);
}
