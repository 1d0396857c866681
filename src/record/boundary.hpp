// The edge between C++ and the C interface: exceptions stop here, getters and setters take NULL here.
#ifndef TW_RECORD_BOUNDARY_HPP
#define TW_RECORD_BOUNDARY_HPP

#include <cstdint>

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

}  // namespace tw

#endif
