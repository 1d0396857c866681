// What new elements are to hold, for those that are written whole (twconfig/content.h).
#ifndef TW_RECORD_CONTENT_HPP
#define TW_RECORD_CONTENT_HPP

#include <twconfig/content.h>

#include <cstdint>
#include <cstring>
#include <vector>

namespace tw {

// A key that stays absent.
inline cfg_content no_content() noexcept { return {}; }
inline cfg_content content(std::int32_t number) noexcept {
  return {CFG_INT, number, nullptr, 0, nullptr, nullptr};
}
// A string, or the ID of another element as a reference. The store refuses NULL.
inline cfg_content content(const char *chars, cfg_kind kind = CFG_STRING) noexcept {
  return {kind, 0, chars, chars ? std::strlen(chars) : 0, nullptr, nullptr};
}
inline cfg_content content(const std::vector<cfg_content> &entries) noexcept {
  return {CFG_LIST, 0, nullptr, entries.size(), nullptr, entries.data()};
}
// The values stand in the order of the keys.
template <std::size_t N>
cfg_content content(const cfg_keyset &keys, const cfg_content (&values)[N]) noexcept {
  return {CFG_MAP, 0, nullptr, 0, &keys, values};
}

}  // namespace tw

#endif
