// A heap string that is freed where it was needed last: what store, daemon and library functions hand out.
#ifndef TW_RECORD_HEAP_STRING_HPP
#define TW_RECORD_HEAP_STRING_HPP

#include <cstdlib>
#include <memory>

namespace tw {

struct heap_free {
  void operator()(char *chars) const noexcept { std::free(chars); }
};
using heap_string = std::unique_ptr<char, heap_free>;

}  // namespace tw

#endif
