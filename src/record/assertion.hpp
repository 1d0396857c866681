// Assertions that the interface promises: they hold in every kind of build.
#ifndef TW_RECORD_ASSERTION_HPP
#define TW_RECORD_ASSERTION_HPP

namespace tw {

[[noreturn]] void assertion_failed(const char *expression, const char *source, const char *function) noexcept;

}  // namespace tw

// `source` is the family's source path as callers know it from messages, for example "src/nodes".
#define TW_ASSERT(expression, source) \
  ((expression) ? static_cast<void>(0) : ::tw::assertion_failed(#expression, source, __func__))

#endif
