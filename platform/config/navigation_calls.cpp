// The C functions that find elements.
#include <cstdlib>
#include <cstring>
#include <utility>

#include "calls.hpp"
#include "list_view.hpp"
#include "store.hpp"

using namespace twcfg;

namespace {

cfg_elem *elem_of(Head *head) { return head == nullptr ? nullptr : head->elem(); }

cfg_elem *not_found(Store *store, const char *what, const char *name) {
  store->fail(CFG_E_NOT_FOUND, "there is no %s \"%.200s\"", what, name);
  return nullptr;
}

}  // namespace

cfg_elem *cfg_root(cfg *store) noexcept {
  if (store == nullptr) return nullptr;
  return guarded(store, static_cast<cfg_elem *>(nullptr), [&] { return elem_of(root_head(*store)); });
}

cfg_elem *cfg_get_by_path(cfg *store, const char *path) noexcept {
  return cfg_get_child_by_path(store, cfg_root(store), path);
}

cfg_elem *cfg_get_child_by_path(cfg *store, cfg_elem *elem, const char *path) noexcept {
  if (!given(store, path)) return nullptr;
  return guarded(store, static_cast<cfg_elem *>(nullptr), [&]() -> cfg_elem * {
    Head *head = checked(store, elem);
    if (head == nullptr) return nullptr;
    Head *found = head_by_path(head, path);
    return found == nullptr ? not_found(store, "element at path", path) : found->elem();
  });
}

cfg_elem *cfg_get_by_id(cfg *store, const char *id) noexcept {
  if (!given(store, id)) return nullptr;
  return guarded(store, static_cast<cfg_elem *>(nullptr), [&]() -> cfg_elem * {
    if (!store->reading()) return nullptr;
    Head *found = head_by_id(*store, id);
    return found == nullptr ? not_found(store, "element with ID", id) : found->elem();
  });
}

void cfg_expect(cfg *store, const char *id) noexcept {
  if (store == nullptr || id == nullptr) return;
  const std::uint64_t hash = hash_of_id(id);
  if (std::exchange(store->expected, hash) != hash)
    store->by_id.ask_for_slot(hash);
  else
    store->by_id.ask_for_head(hash);
}

cfg_elem **cfg_get_by_ids(cfg *store, const char *const *ids, int32_t count) noexcept {
  if (!given(store, ids) || count < 0) return nullptr;
  return guarded(store, static_cast<cfg_elem **>(nullptr), [&]() -> cfg_elem ** {
    if (!store->reading()) return nullptr;
    auto **elems =
        static_cast<cfg_elem **>(std::calloc(static_cast<std::size_t>(count) + 1, sizeof(cfg_elem *)));
    if (elems == nullptr) {
      store->fail(CFG_E_MEMORY, "out of memory");
      return nullptr;
    }
    std::unique_ptr<cfg_elem *, decltype(&std::free)> owner(elems, &std::free);
    std::size_t found = 0;
    for (std::int32_t i = 0; i < count; ++i) {
      Head *head = ids[i] == nullptr ? nullptr : head_by_id(*store, ids[i]);
      if (head != nullptr) elems[found++] = head->elem();
    }
    return owner.release();
  });
}

int cfg_elem_uuid(cfg_elem *elem, char **id) noexcept {
  if (!given(store_of(elem), id)) return 0;
  Store *store = Head::of(elem)->store;
  return guarded(store, 0, [&] {
    Head *head = bound(elem);
    if (head == nullptr) return 0;
    // Only below what was a new element does the text differ from the present ID.
    char *copy = ::strdup(head->id()[0] == '{' ? present_id(head).c_str() : head->id());
    if (copy == nullptr) return store->fail(CFG_E_MEMORY, "out of memory");
    *id = copy;
    return 1;
  });
}

cfg_elem *cfg_get_parent_elem(cfg *store, cfg_elem *elem) noexcept {
  if (!given(store, elem)) return nullptr;
  return guarded(store, static_cast<cfg_elem *>(nullptr), [&]() -> cfg_elem * {
    Head *head = checked(store, elem);
    return head == nullptr || head->result != nullptr ? nullptr : elem_of(holder_of(head));
  });
}

const char *cfg_get_mapelem(cfg_elem *map, const char *key) noexcept {
  if (map == nullptr) return nullptr;
  return reinterpret_cast<const char *>(cfg_simple_get_mapelem(Head::of(map)->store, map, key));
}

cfg_elem *cfg_simple_get_mapelem(cfg *store, cfg_elem *map, const char *key) noexcept {
  if (!given(store, key)) return nullptr;
  return guarded(store, static_cast<cfg_elem *>(nullptr), [&]() -> cfg_elem * {
    Head *head = checked(store, map);
    return head == nullptr || head->kind != CFG_MAP ? nullptr : elem_of(child_of(head, key));
  });
}

const char *cfg_get_listelem(cfg_elem *list, int32_t index) noexcept {
  if (list == nullptr) return nullptr;
  return reinterpret_cast<const char *>(cfg_simple_get_listelem(Head::of(list)->store, list, index));
}

cfg_elem *cfg_simple_get_listelem(cfg *store, cfg_elem *list, int32_t index) noexcept {
  if (store == nullptr || index < 0) return nullptr;
  return guarded(store, static_cast<cfg_elem *>(nullptr), [&]() -> cfg_elem * {
    Head *head = checked(store, list);
    if (head == nullptr || head->kind != CFG_LIST) return nullptr;
    return elem_of(entry_at(head, static_cast<std::uint32_t>(index)));
  });
}

int cfg_get_list(cfg *store, cfg_elem *list) noexcept {
  if (store == nullptr) return 0;
  return guarded(store, 0, [&] {
    Head *head = checked(store, list);
    return head != nullptr && head->kind == CFG_LIST ? 1 : 0;
  });
}

cfg_kind cfg_elem_kind(cfg_elem *elem) noexcept {
  if (elem == nullptr) return CFG_NONE;
  return guarded(Head::of(elem)->store, CFG_NONE, [&] {
    Head *head = bound(elem);
    return head == nullptr ? CFG_NONE : head->kind;
  });
}
