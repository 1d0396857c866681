#include "record/enumeration.hpp"

#include <strings.h>

#include <cstring>

namespace tw {

const char *enumeration::to_string(std::int32_t value) const noexcept {
  const std::int64_t index = std::int64_t{value} - first;
  return index >= 0 && static_cast<std::size_t>(index) < texts.size() ? texts[static_cast<std::size_t>(index)]
                                                                      : nullptr;
}

std::int32_t enumeration::from_string(const char *text) const noexcept {
  if (!text) return unknown;
  for (std::size_t i = 0; i < texts.size(); ++i) {
    if ((any_case ? strcasecmp(text, texts[i]) : std::strcmp(text, texts[i])) == 0)
      return first + static_cast<std::int32_t>(i);
  }
  return unknown;
}

}  // namespace tw
