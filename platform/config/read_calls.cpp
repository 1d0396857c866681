// The C functions that read many values at once without copies.
#include "calls.hpp"
#include "list_view.hpp"
#include "store.hpp"

using namespace twcfg;

namespace {

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
