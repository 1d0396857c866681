#include "wiping.hpp"

#include <dlfcn.h>

#include <cstddef>
#include <string>

namespace records {
namespace {

std::string looked_for;
int seen = 0;

void wipe(void *block, std::size_t size) {
  using function = void (*)(void *, std::size_t);
  static const auto system = reinterpret_cast<function>(dlsym(RTLD_NEXT, "explicit_bzero"));
  if (!looked_for.empty() && std::string_view(static_cast<char *>(block), size).starts_with(looked_for))
    ++seen;
  system(block, size);
}

}  // namespace

WipingWatch::WipingWatch(std::string_view text) {
  looked_for = text;
  seen = 0;
}
WipingWatch::~WipingWatch() { looked_for.clear(); }
int WipingWatch::count() const { return seen; }

}  // namespace records

// These stand in front of the C library's own, for the program and its libraries.
#define SEEN __attribute__((visibility("default")))
extern "C" {
SEEN void explicit_bzero(void *block, size_t size) { records::wipe(block, size); }
// What fortified code calls instead.
SEEN void __explicit_bzero_chk(void *block, size_t size, size_t) { records::wipe(block, size); }
}
