#include "record/assertion.hpp"

#include <cstdio>
#include <cstdlib>

namespace tw {

void assertion_failed(const char *expression, const char *source, const char *function) noexcept {
  std::fprintf(stderr, "%s: %s: Assertion `%s' failed.\n", source, function, expression);
  std::abort();
}

}  // namespace tw
