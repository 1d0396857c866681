// What the C functions share: checked arguments in, heap copies out.
#pragma once

#include <cstdlib>
#include <cstring>

#include "store.hpp"

namespace twcfg {

inline Store *store_of(cfg_elem *elem) { return elem == nullptr ? nullptr : Head::of(elem)->store; }

// Whether the handle is there and every pointer is; a missing one is noted as the caller's mistake.
template <class... Pointer>
bool given(Store *store, Pointer... pointer) {
  if (store == nullptr) return false;
  if (((pointer != nullptr) && ...)) return true;
  store->fail(CFG_E_ARGUMENT, "an argument is NULL");
  return false;
}

// The bound head of an element of this handle; NULL for NULL, a dead element or one of another handle.
inline Head *checked(Store *store, cfg_elem *elem) {
  Head *head = bound(elem);
  if (head != nullptr && head->store != store) {
    store->fail(CFG_E_ARGUMENT, "the element belongs to another handle");
    return nullptr;
  }
  return head;
}

// The same for an element that must be a map, or a list.
inline Head *checked(Store *store, cfg_elem *elem, cfg_kind kind) {
  if (!store->reading()) return nullptr;
  Head *head = checked(store, elem);
  if (head == nullptr) {
    store->fail(CFG_E_ARGUMENT, "there is no such %s", kind == CFG_MAP ? "map" : "list");
    return nullptr;
  }
  if (head->kind != kind) {
    store->fail(CFG_E_ARGUMENT, "\"%s\" is no %s", head->id(), kind == CFG_MAP ? "map" : "list");
    return nullptr;
  }
  return head;
}

// Hands a value's bytes out as a heap copy with a NUL behind them.
inline int copy_out(Store *store, const cfg_value &value, char **out) {
  auto *copy = static_cast<char *>(std::malloc(value.length + 1));
  if (copy == nullptr) return store->fail(CFG_E_MEMORY, "out of memory");
  std::memcpy(copy, value.data, value.length);
  copy[value.length] = '\0';
  *out = copy;
  return 1;
}

// The ID that an element has now: that of a new element that has been committed is its final one.
std::string present_id(Head *head);

}  // namespace twcfg
