/* The C++ face of the store itself: handles, conditions, messages. It needs libtwconfig alone. */
#ifndef TWOBJECT_STORE_HPP
#define TWOBJECT_STORE_HPP

#include <twconfig/condition.h>
#include <twconfig/element.h>
#include <twconfig/message.h>
#include <twconfig/store.h>
#include <twobject/owner.hpp>

namespace twobject {

/// An open store. Records use it, and are used no longer than it: make it first, and it ends last.
using store_handle = owner<cfg, cfg_close>;

/// A tree of conditions. One that is added to another tree belongs to that from then on: release() it.
using condition_tree = owner<cfg_condition, cfg_free_conditions>;

/// A message with its arguments.
using message_record = owner<cfg_message, cfg_message_free>;

/// The keys of a map, in no certain order; nothing when they cannot be read.
inline std::optional<heap_texts> map_keys(cfg_elem *map) noexcept {
  char **keys = nullptr;
  int32_t count = 0;
  if (!cfg_map_keys(map, &keys, &count)) return std::nullopt;
  return heap_texts(keys, count);
}

}  // namespace twobject

#endif
