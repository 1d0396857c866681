#include "system_calls.hpp"

#include <crypt.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdarg>
#include <cstring>

namespace records {
namespace {

struct source {
  RandomSource::Kind kind;
  std::string content;
  std::size_t at_once;
  std::size_t given = 0;
};
source *pretended = nullptr;
int random_file = -1;

void *crypt_work = nullptr;
bool wiped = false;

template <class Function>
Function next(const char *name) {
  return reinterpret_cast<Function>(dlsym(RTLD_NEXT, name));
}

}  // namespace

RandomSource::RandomSource(Kind kind, std::string content, std::size_t at_once) {
  pretended = new source{kind, std::move(content), at_once};
}
RandomSource::~RandomSource() {
  delete pretended;
  pretended = nullptr;
  random_file = -1;
}

bool crypt_work_was_wiped() { return crypt_work != nullptr && wiped; }

namespace {

ssize_t read_pretended(void *data, std::size_t size) {
  if (pretended->kind == RandomSource::unreadable) {
    errno = EIO;
    return -1;
  }
  size = std::min({size, pretended->at_once, pretended->content.size() - pretended->given});
  std::memcpy(data, pretended->content.data() + pretended->given, size);
  pretended->given += size;
  return static_cast<ssize_t>(size);
}

void note_wiping(const void *block, std::size_t size) {
  if (block == crypt_work && size == sizeof(crypt_data)) wiped = true;
}

}  // namespace
}  // namespace records

#define SEEN __attribute__((visibility("default")))

extern "C" {

SEEN int open(const char *path, int flags, ...) {
  using namespace records;
  static const auto system = next<int (*)(const char *, int, ...)>("open");
  va_list rest;
  va_start(rest, flags);
  const int mode = (flags & O_CREAT) != 0 ? va_arg(rest, int) : 0;
  va_end(rest);
  const bool random = pretended != nullptr && std::strcmp(path, "/dev/urandom") == 0;
  if (random && (pretended->kind == RandomSource::missing || (flags & O_ACCMODE) != O_RDONLY)) {
    errno = ENOENT;
    return -1;
  }
  const int file = system(path, flags, mode);
  if (random) random_file = file;
  return file;
}

SEEN ssize_t read(int file, void *data, size_t size) {
  using namespace records;
  static const auto system = next<ssize_t (*)(int, void *, size_t)>("read");
  return pretended != nullptr && file == random_file ? read_pretended(data, size) : system(file, data, size);
}

// What fortified code calls instead.
SEEN ssize_t __read_chk(int file, void *data, size_t size, size_t) { return read(file, data, size); }

SEEN char *crypt_rn(const char *phrase, const char *setting, void *data, int size) {
  using namespace records;
  static const auto system = next<char *(*)(const char *, const char *, void *, int)>("crypt_rn");
  crypt_work = data;
  wiped = false;
  return system(phrase, setting, data, size);
}

SEEN void explicit_bzero(void *block, size_t size) {
  using namespace records;
  static const auto system = next<void (*)(void *, size_t)>("explicit_bzero");
  note_wiping(block, size);
  system(block, size);
}

SEEN void __explicit_bzero_chk(void *block, size_t size, size_t) { explicit_bzero(block, size); }
}
