// The C functions that write whole elements.
#include "calls.hpp"
#include "content.hpp"
#include "store.hpp"

using namespace twcfg;

namespace {

// Whether an element of the store can hold the content.
bool takes(Store &store, Head *holder, const cfg_content &content) {
  if (holder == nullptr || !store.writing()) return false;
  const int height = checked_height(store, content);
  return height > 0 && (content.kind > CFG_LIST || fits_below(holder, height));
}

}  // namespace

cfg_elem *cfg_append_content(cfg *store, cfg_elem *list, const cfg_content *content) noexcept {
  if (!given(store, list, content)) return nullptr;
  return guarded(store, static_cast<cfg_elem *>(nullptr), [&]() -> cfg_elem * {
    Head *holder = checked(store, list, CFG_LIST);
    if (!takes(*store, holder, *content)) return nullptr;
    ListNode *node = edit_list(holder);
    if (node == nullptr) return nullptr;
    Node *entry = node->distant != 0 ? store->editing().seals.seal(*store, *content) : nullptr;
    if (entry == nullptr) entry = build_nodes(*store, *content);
    Head *head = new_head(*store, entry);
    return append_entry(holder, entry, true) ? head->elem() : nullptr;
  });
}

int cfg_put_content(cfg *store, cfg_elem *map, const char *key, const cfg_content *content) noexcept {
  if (!given(store, map, key, content)) return 0;
  return guarded(store, 0, [&] {
    Head *holder = checked(store, map, CFG_MAP);
    if (!takes(*store, holder, *content)) return 0;
    return set_item(holder, key, build_nodes(*store, *content)) ? 1 : 0;
  });
}
