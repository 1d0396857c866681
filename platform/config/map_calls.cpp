// The C functions on maps.
#include "calls.hpp"
#include "store.hpp"

using namespace twcfg;

namespace {

// Reads a key of one kind; fills `value` with borrowed bytes.
bool get(cfg *store, cfg_elem *map, const char *key, cfg_kind kind, cfg_value &value) {
  Head *head = checked(store, map, CFG_MAP);
  if (head == nullptr) return false;
  const Found found = find_key(head, key);
  if (!found) return store->fail(CFG_E_NOT_FOUND, "\"%s\" has no key \"%.200s\"", head->id(), key) != 0;
  value = found.value();
  if (value.kind == kind) return true;
  return store->fail(CFG_E_ARGUMENT, "the key \"%.200s\" of \"%s\" is of another kind", key, head->id()) != 0;
}

int get_bytes(cfg *store, cfg_elem *map, const char *key, cfg_kind kind, char **out, std::size_t *length) {
  if (!given(store, map, key, out)) return 0;
  return guarded(store, 0, [&] {
    cfg_value value;
    if (!get(store, map, key, kind, value) || copy_out(store, value, out) == 0) return 0;
    if (length != nullptr) *length = value.length;
    return 1;
  });
}

int get_number(cfg *store, cfg_elem *map, const char *key, cfg_kind kind, std::int32_t *out) {
  if (!given(store, map, key, out)) return 0;
  return guarded(store, 0, [&] {
    cfg_value value;
    if (!get(store, map, key, kind, value)) return 0;
    *out = value.number;
    return 1;
  });
}

int set(cfg *store, cfg_elem *map, const char *key, cfg_kind kind, std::string_view data,
        std::int32_t number) {
  if (!given(store, map, key)) return 0;
  return guarded(store, 0, [&] {
    Head *head = checked(store, map, CFG_MAP);
    if (head == nullptr || !store->writing()) return 0;
    if (data.size() > (kind == CFG_REFERENCE ? kMaxId : kMaxValue)) {
      return store->fail(CFG_E_LIMIT, "the value for \"%.200s\" is too long", key);
    }
    // A stored value that would stay as it is needs no edit at all.
    if (head->node == nullptr) {
      const cfg_value now = find_key(head, key).value();
      if (now.kind == kind && now.number == number && std::string_view(now.data, now.length) == data)
        return 1;
    }
    return set_item(head, key, store->editing().nodes.scalar(kind, data, number)) ? 1 : 0;
  });
}

}  // namespace

int cfg_map_get_string(cfg *store, cfg_elem *map, const char *key, char **out) noexcept {
  return get_bytes(store, map, key, CFG_STRING, out, nullptr);
}

int cfg_map_get_int(cfg *store, cfg_elem *map, const char *key, int32_t *out) noexcept {
  return get_number(store, map, key, CFG_INT, out);
}

int cfg_map_get_bool(cfg *store, cfg_elem *map, const char *key, int32_t *out) noexcept {
  return get_number(store, map, key, CFG_BOOL, out);
}

int cfg_map_get_blob(cfg *store, cfg_elem *map, const char *key, void **data, size_t *length) noexcept {
  if (data == nullptr || length == nullptr) return 0;
  char *copy = nullptr;
  if (get_bytes(store, map, key, CFG_BLOB, &copy, length) == 0) return 0;
  *data = copy;
  return 1;
}

int cfg_map_get_reference(cfg *store, cfg_elem *map, const char *key, char **id) noexcept {
  return get_bytes(store, map, key, CFG_REFERENCE, id, nullptr);
}

int cfg_map_set_string(cfg *store, cfg_elem *map, const char *key, const char *value) noexcept {
  return given(store, value) ? set(store, map, key, CFG_STRING, value, 0) : 0;
}

int cfg_map_set_int(cfg *store, cfg_elem *map, const char *key, int32_t value) noexcept {
  return set(store, map, key, CFG_INT, {}, value);
}

int cfg_map_set_bool(cfg *store, cfg_elem *map, const char *key, int32_t value) noexcept {
  return set(store, map, key, CFG_BOOL, {}, value != 0 ? 1 : 0);
}

int cfg_map_set_blob(cfg *store, cfg_elem *map, const char *key, const void *data, size_t length) noexcept {
  if (!given(store, data)) return 0;
  return set(store, map, key, CFG_BLOB, {static_cast<const char *>(data), length}, 0);
}

int cfg_map_set_reference(cfg *store, cfg_elem *map, const char *key, const char *id) noexcept {
  return given(store, id) ? set(store, map, key, CFG_REFERENCE, id, 0) : 0;
}

int cfg_map_delete_key(cfg *store, cfg_elem *map, const char *key) noexcept {
  if (!given(store, map, key)) return 0;
  return guarded(store, 0, [&] {
    Head *head = checked(store, map, CFG_MAP);
    if (head == nullptr || !store->writing()) return 0;
    if (!find_key(head, key)) return 1;
    return set_item(head, key, nullptr) ? 1 : 0;
  });
}

int cfg_map_keys(cfg_elem *map, char ***keys, int32_t *count) noexcept {
  if (!given(store_of(map), count)) return 0;
  Store *store = Head::of(map)->store;
  return guarded(store, 0, [&] {
    Head *head = checked(store, map, CFG_MAP);
    if (head == nullptr) return 0;
    std::vector<std::string_view> found;
    if (const MapNode *node = as_map(head->node)) {
      for (const MapItem &item : node->items) {
        if (item.node != nullptr) found.push_back(item.key->text);
      }
    } else {
      const PackedMap packed(head->stored, store->shapes, *store->snapshot);
      if (!packed) return store->fail(CFG_E_CORRUPT, "the map \"%s\" is damaged", head->id());
      for (std::uint32_t i = 0; i < packed.count(); ++i) found.push_back(packed.key(i));
    }
    if (keys != nullptr) {
      auto **array = static_cast<char **>(std::calloc(found.size() + 1, sizeof(char *)));
      bool complete = array != nullptr;
      for (std::size_t i = 0; complete && i < found.size(); ++i) {
        array[i] = ::strndup(found[i].data(), found[i].size());
        complete = array[i] != nullptr;
      }
      if (!complete) {
        for (std::size_t i = 0; array != nullptr && i < found.size(); ++i) std::free(array[i]);
        std::free(array);
        return store->fail(CFG_E_MEMORY, "out of memory");
      }
      *keys = array;
    }
    *count = static_cast<std::int32_t>(found.size());
    return 1;
  });
}

int cfg_add_mapelem(cfg *store, cfg_elem *map, const char *key, cfg_elem *elem) noexcept {
  if (!given(store, map, key, elem)) return 0;
  return guarded(store, 0, [&] {
    Head *head = checked(store, map, CFG_MAP);
    Head *child = checked(store, elem);
    if (head == nullptr || child == nullptr) return 0;
    if (!child->born) return store->fail(CFG_E_ARGUMENT, "\"%s\" is not a new element", child->id());
    return attach_item(head, key, child->node) ? 1 : 0;
  });
}
