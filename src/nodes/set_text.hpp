// The string setter of the node family.
#ifndef TW_NODES_SET_TEXT_HPP
#define TW_NODES_SET_TEXT_HPP

#include "record/helpers.hpp"

namespace tw {

// Answers 0 also for the pointer that the field already holds: set_string().
template <auto Member, class Record>
int set_text(Record *record, const char *value) noexcept {
  return record && set_string(&(record->*Member), value);
}

}  // namespace tw

#endif
