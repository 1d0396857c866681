// The edge between C++ and the C interface: exceptions stop here, getters and setters take NULL here.
#ifndef TW_RECORD_BOUNDARY_HPP
#define TW_RECORD_BOUNDARY_HPP

#include <cstdint>
#include <type_traits>
#include <utility>

#include "record/helpers.hpp"

namespace tw {

// Runs what may throw (containers that run out of memory) and turns an exception into the failure value of
// every function of the library: NULL or 0.
template <class Function>
auto guarded(Function &&function) noexcept -> decltype(function()) {
  try {
    return function();
  } catch (...) {
    return decltype(function())();
  }
}

template <bool Wiped>
const char *value_of(const basic_text<Wiped> &field) noexcept {
  return field.c_str();
}
inline std::int32_t value_of(std::int32_t field) noexcept { return field; }
inline std::uint32_t value_of(std::uint32_t field) noexcept { return field; }

// The body of a plain getter: the field, NULL or 0 for a NULL record.
template <auto Member, class Record>
auto get(const Record *record) noexcept -> decltype(value_of(record->*Member)) {
  if (!record) return {};
  return value_of(record->*Member);
}

// The body of a plain setter of an integer: keeps the value as it is; 1, or 0 for a NULL record.
template <auto Member, class Record, class Value>
int set(Record *record, Value value) noexcept {
  if (!record) return 0;
  record->*Member = value;
  return 1;
}

// The body of a string setter: NULL and "" clear the field. The node family's setters answer differently
// (set_string() in helpers.hpp).
template <auto Member, class Record>
int replace(Record *record, const char *value) noexcept {
  return record && _set_string(&(record->*Member), value);
}

// The body of a setter of two strings at once. Both are copied before either is let go of, so that they may
// be given in exchange for one another.
template <auto First, auto Second, class Record>
int replace_both(Record *record, const char *first, const char *second) noexcept {
  if (!record) return 0;
  std::remove_reference_t<decltype(record->*First)> new_first;
  std::remove_reference_t<decltype(record->*Second)> new_second;
  if (!new_first.set(first) || !new_second.set(second)) return 0;
  record->*First = std::move(new_first);
  record->*Second = std::move(new_second);
  return 1;
}

}  // namespace tw

#endif
