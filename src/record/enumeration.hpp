// Tables of enumerations: small integers in records, texts in the store.
#ifndef TW_RECORD_ENUMERATION_HPP
#define TW_RECORD_ENUMERATION_HPP

#include <cstdint>
#include <span>

namespace tw {

// Initialised by name: {.texts = media_texts, .any_case = true}.
struct enumeration {
  std::span<const char *const> texts;  // in the order of their values
  std::int32_t first = 1;              // value of texts[0]
  std::int32_t unknown = 0;            // what NULL and foreign text read as; it has no text
  bool any_case = false;               // compare without regard to case

  // The text of a value; NULL for any value outside the table. Constant.
  const char *to_string(std::int32_t value) const noexcept;
  std::int32_t from_string(const char *text) const noexcept;
};

}  // namespace tw

#endif
