// What stands behind an element handle.
//
// The handle that callers hold points at the ID text, so that it reads as the ID; the rest stands in front of
// it. A head knows where its element is relative to its holder (a key or a number) and keeps a binding:
// either the stored bytes in the handle's snapshot or a node of the edit. Bindings are checked by counting: a
// commit or refresh moves the handle to another generation, opening a record for change moves the epoch of
// that record; a head that lags behind is bound anew through its holder. An element that is gone binds to
// nothing and behaves like NULL.
#pragma once

#include <cstddef>
#include <cstdint>

#include <twconfig/element.h>

#include "node.hpp"
#include "packed.hpp"

namespace twcfg {

struct SearchResult;

struct Head {
  ::cfg *store = nullptr;
  Head *parent = nullptr;        // holder; NULL for the root and search results; see `committed`
  Head *record = nullptr;        // head of the record that the binding lies in: itself, or one further up
  const KeyName *key = nullptr;  // step from the holder: a key ...
  std::uint32_t number = 0;      // ... or the number of a list entry

  cfg_kind kind = CFG_NONE;      // CFG_NONE: bound to nothing
  std::uint64_t generation = 0;  // of the handle, when a record's head was last checked
  std::uint32_t epoch = 0;       // of the record, when the binding was made
  std::uint32_t own_epoch = 0;   // moves when what this head's record is bound to changes
  Node *node = nullptr;          // binding in the edit, or
  Packed stored;                 // binding in the snapshot

  bool born = false;               // made by cfg_new_*: its ID is provisional
  bool committed = false;          // of a born head: holder and step, unused before, say where its element is
  Head *forward = nullptr;         // of a born head: the head of the committed element, once someone asked
  SearchResult *result = nullptr;  // of a list made by cfg_search()

  const char *id() const { return reinterpret_cast<const char *>(this + 1); }
  cfg_elem *elem() { return reinterpret_cast<cfg_elem *>(this + 1); }
  static Head *of(cfg_elem *elem) { return reinterpret_cast<Head *>(elem) - 1; }
};

}  // namespace twcfg
