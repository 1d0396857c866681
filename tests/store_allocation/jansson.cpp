// Jansson's scanner takes no notice when it cannot make room for a long text: it goes on without some of the
// characters, and beyond the text when the closing quote is one of them. Reading a text is one allocation
// here, and fails as a whole.
#include <dlfcn.h>
#include <jansson.h>

#include "allocation/failing_allocator.hpp"

namespace {

template <class Function>
Function *jansson(const char *name) {
  return reinterpret_cast<Function *>(dlsym(RTLD_NEXT, name));
}

}  // namespace

// These stand in front of Jansson's own, for the program and its libraries.
#pragma GCC visibility push(default)
extern "C" {
json_t *json_loadb(const char *text, size_t length, size_t flags, json_error_t *error) {
  const allocation::Granted granted;
  return granted ? jansson<decltype(json_loadb)>("json_loadb")(text, length, flags, error) : nullptr;
}
json_t *json_load_callback(json_load_callback_t callback, void *data, size_t flags, json_error_t *error) {
  const allocation::Granted granted;
  return granted ? jansson<decltype(json_load_callback)>("json_load_callback")(callback, data, flags, error)
                 : nullptr;
}
}
#pragma GCC visibility pop
