// The C functions that make elements, change values and read them.
#include "calls.hpp"
#include "list_view.hpp"
#include "store.hpp"

using namespace twcfg;

namespace {

template <class Make>
cfg_elem *made(cfg *store, Make &&make) {
  if (store == nullptr) return nullptr;
  return guarded(store, static_cast<cfg_elem *>(nullptr), [&]() -> cfg_elem * {
    if (!store->writing()) return nullptr;
    return new_head(*store, make(store->editing().nodes))->elem();
  });
}

int set_value(cfg *store, cfg_elem *elem, cfg_kind kind, std::string_view data) {
  return guarded(store, 0, [&] {
    Head *head = checked(store, elem);
    if (head == nullptr) return 0;
    if (head->kind != kind) return store->fail(CFG_E_ARGUMENT, "\"%s\" is of another kind", head->id());
    if (data.size() > (kind == CFG_REFERENCE ? kMaxId : kMaxValue)) {
      return store->fail(CFG_E_LIMIT, "the value for \"%s\" is too long", head->id());
    }
    return replace_scalar(head, data) ? 1 : 0;
  });
}

// The value of a scalar element of one kind; borrowed bytes.
bool value_as(cfg_elem *elem, cfg_kind kind, cfg_value &value) {
  Head *head = bound(elem);
  if (head == nullptr) return false;
  if (head->kind != kind) {
    return head->store->fail(CFG_E_ARGUMENT, "\"%s\" is of another kind", head->id()) != 0;
  }
  value = Found{head->node, head->stored}.value();
  return value.kind == kind;
}

int bytes_as(cfg_elem *elem, cfg_kind kind, char **out, std::size_t *length) {
  if (elem == nullptr || out == nullptr) return 0;
  Store *store = Head::of(elem)->store;
  return guarded(store, 0, [&] {
    cfg_value value;
    if (!value_as(elem, kind, value) || copy_out(store, value, out) == 0) return 0;
    if (length != nullptr) *length = value.length;
    return 1;
  });
}

int number_as(cfg_elem *elem, cfg_kind kind, std::int32_t *out) {
  if (elem == nullptr || out == nullptr) return 0;
  return guarded(Head::of(elem)->store, 0, [&] {
    cfg_value value;
    if (!value_as(elem, kind, value)) return 0;
    *out = value.number;
    return 1;
  });
}

// Where the keys of a set stand in the maps of a shape: worked out once for each pair of set and shape.
const std::int16_t *slots_of(Store &store, const cfg_keyset &set, const Shape &shape) {
  KeysetSlots &known = store.keysets[&set];
  if (known.names.empty()) {
    for (std::size_t i = 0; i < set.count; ++i) known.names.push_back(store.names.intern(set.keys[i]));
  }
  if (known.by_shape.size() <= shape.number()) known.by_shape.resize(shape.number() + 1);
  std::vector<std::int16_t> &slots = known.by_shape[shape.number()];
  if (slots.empty()) {
    slots.reserve(set.count);
    for (const KeyName *name : known.names) slots.push_back(static_cast<std::int16_t>(shape.slot(name)));
  }
  return slots.data();
}

bool read_map(Store &store, const Found &map, const cfg_keyset &set, cfg_value *values) {
  if (map.kind() != CFG_MAP) return false;
  if (MapNode *node = as_map(map.node)) {
    for (std::size_t i = 0; i < set.count; ++i) {
      const KeyName *name = store.names.find(set.keys[i]);
      const MapItem *item = name == nullptr ? nullptr : node->find(name);
      values[i] = item == nullptr ? cfg_value{} : Found{item->node, {}}.value();
    }
    return true;
  }
  const PackedMap packed(map.stored, store.shapes, *store.snapshot);
  if (!packed) return false;
  if (packed.shape() == nullptr) {
    for (std::size_t i = 0; i < set.count; ++i) values[i] = value_of(packed.find(set.keys[i], store.names));
    return true;
  }
  const std::int16_t *slots = slots_of(store, set, *packed.shape());
  for (std::size_t i = 0; i < set.count; ++i) {
    values[i] = slots[i] < 0 ? cfg_value{} : value_of(packed.child(static_cast<std::uint32_t>(slots[i])));
  }
  return true;
}

bool sound(const cfg_keyset *set) { return set != nullptr && set->keys != nullptr && set->count > 0; }

}  // namespace

cfg_elem *cfg_new_map(cfg *store) noexcept {
  return made(store, [](Nodes &nodes) { return nodes.map(); });
}

cfg_elem *cfg_new_list(cfg *store) noexcept {
  return made(store, [](Nodes &nodes) { return nodes.list(); });
}

cfg_elem *cfg_new_string(cfg *store, const char *value) noexcept {
  if (value == nullptr || ::strnlen(value, kMaxValue + 1) > kMaxValue) return nullptr;
  return made(store, [&](Nodes &nodes) { return nodes.scalar(CFG_STRING, value, 0); });
}

cfg_elem *cfg_new_reference(cfg *store, const char *id) noexcept {
  if (id == nullptr || ::strnlen(id, kMaxId + 1) > kMaxId) return nullptr;
  return made(store, [&](Nodes &nodes) { return nodes.scalar(CFG_REFERENCE, id, 0); });
}

int cfg_set_string(cfg *store, cfg_elem *elem, const char *value) noexcept {
  return store == nullptr || value == nullptr ? 0 : set_value(store, elem, CFG_STRING, value);
}

int cfg_set_blob(cfg *store, cfg_elem *elem, const void *data, size_t length) noexcept {
  if (store == nullptr || data == nullptr) return 0;
  return set_value(store, elem, CFG_BLOB, {static_cast<const char *>(data), length});
}

int cfg_set_reference(cfg *store, cfg_elem *elem, const char *id) noexcept {
  return store == nullptr || id == nullptr ? 0 : set_value(store, elem, CFG_REFERENCE, id);
}

int cfg_delete_element(cfg *store, cfg_elem *elem) noexcept {
  if (store == nullptr) return 0;
  return guarded(store, 0, [&] {
    Head *head = checked(store, elem);
    return head != nullptr && remove_element(head) ? 1 : 0;
  });
}

int cfg_string_value(cfg_elem *elem, char **out) noexcept { return bytes_as(elem, CFG_STRING, out, nullptr); }

int cfg_int_value(cfg_elem *elem, int32_t *out) noexcept { return number_as(elem, CFG_INT, out); }

int cfg_bool_value(cfg_elem *elem, int32_t *out) noexcept { return number_as(elem, CFG_BOOL, out); }

int cfg_blob_value(cfg_elem *elem, void **data, size_t *length) noexcept {
  if (data == nullptr || length == nullptr) return 0;
  char *copy = nullptr;
  if (bytes_as(elem, CFG_BLOB, &copy, length) == 0) return 0;
  *data = copy;
  return 1;
}

int cfg_reference_value(cfg_elem *elem, char **id) noexcept {
  return bytes_as(elem, CFG_REFERENCE, id, nullptr);
}

int cfg_map_read(cfg_elem *map, const cfg_keyset *set, cfg_value *values) noexcept {
  if (map == nullptr || !sound(set) || values == nullptr) return 0;
  Store *store = Head::of(map)->store;
  return guarded(store, 0, [&] {
    Head *head = bound(map);
    if (head == nullptr) return 0;
    if (head->kind != CFG_MAP) return store->fail(CFG_E_ARGUMENT, "\"%s\" is no map", head->id());
    return read_map(*store, {head->node, head->stored}, *set, values) ? 1 : 0;
  });
}

int cfg_map_has(cfg_elem *map, const char *key) noexcept {
  if (map == nullptr || key == nullptr) return 0;
  return guarded(Head::of(map)->store, 0, [&] {
    Head *head = bound(map);
    return head != nullptr && head->kind == CFG_MAP && find_key(head, key) ? 1 : 0;
  });
}

int cfg_elem_read(cfg_elem *elem, cfg_value *value) noexcept {
  if (elem == nullptr || value == nullptr) return 0;
  return guarded(Head::of(elem)->store, 0, [&] {
    Head *head = bound(elem);
    if (head == nullptr) return 0;
    *value = head->result != nullptr ? cfg_value{CFG_LIST, 0, nullptr, 0}
                                     : Found{head->node, head->stored}.value();
    return 1;
  });
}

int cfg_list_scan(cfg_elem *list, const cfg_keyset *set, cfg_scan_visitor visit, void *context) noexcept {
  if (list == nullptr || !sound(set) || visit == nullptr) return 0;
  Store *store = Head::of(list)->store;
  return guarded(store, 0, [&] {
    Head *head = checked(store, list, CFG_LIST);
    if (head == nullptr) return 0;
    std::vector<cfg_value> values(set->count);
    const auto visit_entry = [&](std::int32_t index, const Found &entry) {
      if (!read_map(*store, entry, *set, values.data())) values.assign(set->count, cfg_value{});
      return visit(context, index, values.data()) != 0;
    };
    std::int32_t index = 0;
    if (head->result != nullptr) {
      for (Head *result : head->result->entries) {
        const Head *entry = bound(result);
        if (!visit_entry(index++, entry == nullptr ? Found{} : Found{entry->node, entry->stored})) break;
      }
      return 1;
    }
    const ListView view(head);
    if (!view) return store->fail(CFG_E_CORRUPT, "the list \"%s\" is damaged", head->id());
    view.each([&](std::uint32_t, const Found &entry) { return visit_entry(index++, entry); });
    return 1;
  });
}
