// The C functions on lists.
#include "calls.hpp"
#include "list_view.hpp"
#include "store.hpp"

using namespace twcfg;

namespace {

Head *checked_list(cfg_elem *list) {
  return list == nullptr ? nullptr : checked(Head::of(list)->store, list, CFG_LIST);
}

// What the edit has in memory of a list: the list itself or the changes to a distant one; NULL when nothing.
ListNode *in_memory(Head *list) {
  if (ListNode *node = as_list(list->node); node != nullptr && node->distant == 0) return node;
  const std::uint32_t distant = distant_of(*list);
  if (distant == 0 || list->store->edit == nullptr) return nullptr;
  const auto known = list->store->edit->lists.find(distant);
  return known == list->store->edit->lists.end() ? nullptr : known->second.node;
}

int append(cfg *store, cfg_elem *list, cfg_elem *elem, bool pending) {
  if (!given(store, list, elem)) return 0;
  return guarded(store, 0, [&] {
    Head *head = checked(store, list, CFG_LIST);
    Head *entry = checked(store, elem);
    if (head == nullptr || entry == nullptr) return 0;
    if (!entry->born) return store->fail(CFG_E_ARGUMENT, "\"%s\" is not a new element", entry->id());
    return append_entry(head, entry->node, pending) ? 1 : 0;
  });
}

}  // namespace

int cfg_list_size(cfg_elem *list, int32_t *size) noexcept {
  if (!given(store_of(list), size)) return 0;
  Store *store = Head::of(list)->store;
  return guarded(store, 0, [&] {
    Head *head = checked_list(list);
    if (head == nullptr) return 0;
    if (head->result != nullptr) {
      *size = static_cast<std::int32_t>(head->result->entries.size());
      return 1;
    }
    const ListView view(head);
    if (!view) return store->fail(CFG_E_CORRUPT, "the list \"%s\" is damaged", head->id());
    *size = static_cast<std::int32_t>(view.size());
    return 1;
  });
}

int cfg_list_future_size(cfg_elem *list, int32_t *size) noexcept {
  if (!given(store_of(list), size)) return 0;
  return guarded(Head::of(list)->store, 0, [&] {
    Head *head = checked_list(list);
    if (head == nullptr) return 0;
    const ListNode *node = head->result != nullptr ? nullptr : in_memory(head);
    *size = node == nullptr ? 0 : static_cast<std::int32_t>(node->future.size());
    return 1;
  });
}

cfg_elem *cfg_get_future_listelem(cfg_elem *list, int32_t index) noexcept {
  if (list == nullptr || index < 0) return nullptr;
  return guarded(Head::of(list)->store, static_cast<cfg_elem *>(nullptr), [&]() -> cfg_elem * {
    Head *head = checked_list(list);
    const ListNode *node = head == nullptr || head->result != nullptr ? nullptr : in_memory(head);
    if (node == nullptr || static_cast<std::size_t>(index) >= node->future.size()) return nullptr;
    return node->future[static_cast<std::size_t>(index)]->head->elem();
  });
}

int cfg_add_listelem(cfg *store, cfg_elem *list, cfg_elem *elem) noexcept {
  return append(store, list, elem, false);
}

int cfg_append_future_listelem(cfg *store, cfg_elem *list, cfg_elem *elem) noexcept {
  return append(store, list, elem, true);
}

cfg_elem *cfg_set_list(cfg *store, cfg_elem *list) noexcept {
  if (!given(store, list)) return nullptr;
  return guarded(store, static_cast<cfg_elem *>(nullptr), [&]() -> cfg_elem * {
    Head *head = checked(store, list, CFG_LIST);
    return head != nullptr && clear_list(head) ? head->elem() : nullptr;
  });
}
