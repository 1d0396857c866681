#include "allocation/failing_allocator.hpp"

#include <dlfcn.h>
#include <link.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <new>

// The program is linked into before the sanitizers' runtimes are up: nothing here may be instrumented.
#define TW_PLAIN __attribute__((visibility("default"), no_sanitize("address", "undefined", "thread")))

namespace {

struct Plan {
  bool armed = false;
  bool refused_one = false;
  long left = 0;
  std::size_t largest = 0;
  allocation::Behind behind = allocation::Behind::granted;
  allocation::Whose whose = allocation::Whose::everybodys;
};
thread_local Plan plan;

// Where the code of OpenSSL lies; looked up outside the allocator.
struct Range {
  std::uintptr_t begin = UINTPTR_MAX, end = 0;
};
Range openssl;

TW_PLAIN bool is_openssl(const void *code) {
  const auto address = reinterpret_cast<std::uintptr_t>(code);
  return address >= openssl.begin && address < openssl.end;
}

int take_openssl(dl_phdr_info *library, std::size_t, void *) {
  if (!std::strstr(library->dlpi_name, "libcrypto")) return 0;
  for (int i = 0; i < library->dlpi_phnum; ++i) {
    const auto &part = library->dlpi_phdr[i];
    if (part.p_type != PT_LOAD) continue;
    openssl.begin = std::min<std::uintptr_t>(openssl.begin, library->dlpi_addr + part.p_vaddr);
    openssl.end = std::max<std::uintptr_t>(openssl.end, library->dlpi_addr + part.p_vaddr + part.p_memsz);
  }
  return 1;
}

TW_PLAIN bool granted(const void *caller, std::size_t size) {
  if (!plan.armed) return true;
  if (size > plan.largest) plan.largest = size;
  if (plan.whose == allocation::Whose::not_openssls && is_openssl(caller)) return true;
  if (--plan.left > 0) return true;
  const bool refused = plan.left == 0 || plan.behind == allocation::Behind::refused;
  if (!refused) return true;
  plan.refused_one = true;
  errno = ENOMEM;
  return false;
}

// What the watching thread has made and not given back.
struct Watched {
  static constexpr std::size_t most = 1U << 16;
  void *blocks[most];
  std::size_t count = 0;
  void (*look_at)(const void *block) = nullptr;
};
Watched watched;
thread_local bool watching = false;

TW_PLAIN void *noted(void *block) {
  if (!watching || !block) return block;
  if (watched.count == Watched::most) std::abort();
  return watched.blocks[watched.count++] = block;
}

TW_PLAIN void forget(void *block) {
  if (!watching || !block) return;
  if (watched.look_at) watched.look_at(block);
  for (std::size_t i = watched.count; i-- > 0;) {
    if (watched.blocks[i] != block) continue;
    watched.blocks[i] = watched.blocks[--watched.count];
    return;
  }
}

// The allocator behind this one: the C library's, or that of a sanitizer, which thus still sees every leak.
// While it is looked up there is none.
template <class Function>
TW_PLAIN Function *next(const char *name) {
  static Function *found = nullptr;
  static bool looking = false;
  if (!found && !looking) {
    looking = true;
    found = reinterpret_cast<Function *>(dlsym(RTLD_NEXT, name));
    looking = false;
  }
  return found;
}

TW_PLAIN void *made_by_new(std::size_t size) {
  void *memory = std::malloc(size ? size : 1);
  if (!memory) throw std::bad_alloc();
  return memory;
}

}  // namespace

void allocation::refuse(long nth, Behind behind, Whose whose) noexcept {
  if (openssl.end == 0) dl_iterate_phdr(take_openssl, nullptr);
  plan = {true, false, nth, 0, behind, whose};
}

bool allocation::stop_refusing() noexcept {
  plan.armed = false;
  return plan.refused_one;
}

std::size_t allocation::largest_asked() noexcept { return plan.largest; }

allocation::Watch::Watch(void (*look_at)(const void *)) noexcept {
  watched.count = 0;
  watched.look_at = look_at;
  watching = true;
}
// What is left and was not given back is a leak from here on, for a sanitizer to find.
allocation::Watch::~Watch() {
  watching = false;
  std::fill_n(watched.blocks, watched.count, nullptr);
}

std::size_t allocation::Watch::left() const noexcept { return watched.count; }
void allocation::Watch::give_back() noexcept {
  while (watched.count > 0) std::free(watched.blocks[watched.count - 1]);
}

allocation::Granted::Granted() noexcept : armed(plan.armed), first(granted(nullptr, 0)) {
  plan.armed = false;
}
allocation::Granted::~Granted() { plan.armed = armed; }

extern "C" {

TW_PLAIN void *malloc(std::size_t size) {
  auto *real = next<void *(std::size_t)>("malloc");
  return real && granted(__builtin_return_address(0), size) ? noted(real(size)) : nullptr;
}

TW_PLAIN void *calloc(std::size_t count, std::size_t size) {
  auto *real = next<void *(std::size_t, std::size_t)>("calloc");
  return real && granted(__builtin_return_address(0), count * size) ? noted(real(count, size)) : nullptr;
}

TW_PLAIN void *realloc(void *old, std::size_t size) {
  auto *real = next<void *(void *, std::size_t)>("realloc");
  if (!real || !granted(__builtin_return_address(0), size)) return nullptr;
  forget(old);
  return noted(real(old, size));
}

TW_PLAIN void free(void *block) {
  forget(block);
  if (auto *real = next<void(void *)>("free")) real(block);
}

// The C library's allocates with malloc(), a sanitizer's does not.
TW_PLAIN char *strdup(const char *text) {
  const std::size_t size = std::strlen(text) + 1;
  void *memory = std::malloc(size);
  return memory ? static_cast<char *>(std::memcpy(memory, text, size)) : nullptr;
}

TW_PLAIN int posix_memalign(void **out, std::size_t alignment, std::size_t size) {
  auto *real = next<int(void **, std::size_t, std::size_t)>("posix_memalign");
  if (!real || !granted(__builtin_return_address(0), size)) return ENOMEM;
  const int failed = real(out, alignment, size);
  if (!failed) noted(*out);
  return failed;
}
}

TW_PLAIN void *operator new(std::size_t size) { return made_by_new(size); }
TW_PLAIN void *operator new(std::size_t size, std::align_val_t alignment) {
  void *memory = nullptr;
  if (posix_memalign(&memory, std::max(static_cast<std::size_t>(alignment), sizeof memory),
                     size ? size : 1) != 0)
    throw std::bad_alloc();
  return memory;
}
TW_PLAIN void *operator new[](std::size_t size) { return made_by_new(size); }
TW_PLAIN void *operator new(std::size_t size, const std::nothrow_t &) noexcept {
  return std::malloc(size ? size : 1);
}
TW_PLAIN void *operator new[](std::size_t size, const std::nothrow_t &) noexcept {
  return std::malloc(size ? size : 1);
}
TW_PLAIN void operator delete(void *memory) noexcept { std::free(memory); }
TW_PLAIN void operator delete(void *memory, std::align_val_t) noexcept { std::free(memory); }
TW_PLAIN void operator delete(void *memory, std::size_t, std::align_val_t) noexcept { std::free(memory); }
TW_PLAIN void operator delete[](void *memory) noexcept { std::free(memory); }
TW_PLAIN void operator delete(void *memory, std::size_t) noexcept { std::free(memory); }
TW_PLAIN void operator delete[](void *memory, std::size_t) noexcept { std::free(memory); }
TW_PLAIN void operator delete(void *memory, const std::nothrow_t &) noexcept { std::free(memory); }
TW_PLAIN void operator delete[](void *memory, const std::nothrow_t &) noexcept { std::free(memory); }
