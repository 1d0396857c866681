// The C functions that read many values at once without copies.
#include <algorithm>
#include <charconv>
#include <iterator>

#include "calls.hpp"
#include "id_text.hpp"
#include "list_view.hpp"
#include "store.hpp"

using namespace twcfg;

namespace {

// A value as it is handed out. That of a map or list also says where this stands: a node of the edit has no
// length, and a stored record is never empty. It is made where it is wanted: as the result of a call it would
// be read whole right after it was written in parts, for which the processor waits, at each value of a scan.
[[gnu::always_inline]] inline cfg_value handed_out(const Found &found) {
  const cfg_value value = found.node != nullptr ? value_of(*found.node) : value_of(found.stored);
  if (value.kind != CFG_MAP && value.kind != CFG_LIST) return value;
  if (found.node != nullptr) return {value.kind, 0, reinterpret_cast<const char *>(found.node), 0};
  return {value.kind, static_cast<std::int32_t>(found.stored.at), found.stored.base, found.stored.size};
}

// The map or list that such a value came from.
Found place_of(const cfg_value &value) {
  if (value.data == nullptr) return {};
  if (value.length == 0) return {reinterpret_cast<Node *>(const_cast<char *>(value.data)), {}};
  return {nullptr,
          {value.data, static_cast<std::uint32_t>(value.length), static_cast<std::uint32_t>(value.number)}};
}

std::uintptr_t address(const char *bytes) { return reinterpret_cast<std::uintptr_t>(bytes); }

// Reads the keys of one set from map after map. Where the keys stand in the maps of a shape is worked out
// once for each pair of set and shape. Scans spend most of their time in read(): it is inlined where it is
// used, and what is rare stands outside of it.
class KeyReader {
 public:
  KeyReader(Store &store, const cfg_keyset &set) : store_(store), set_(set), known_(store.keysets.of(set)) {
    if (!known_.knows(set)) begin_anew();
    map_ = known_.last_form;
    slots_ = known_.last;
  }

  [[gnu::always_inline]] bool read(const Found &map, cfg_value *values) {
    if (map.node != nullptr) return read_node(map.node, values);
    const std::size_t count = set_.count;
    if (!map_.follow(map.stored)) {
      map_ = PackedMap(map.stored, store_.shapes, *store_.snapshot);
      if (!map_) return false;
      if (map_.shape() == nullptr) {
        read_spelled(map_, values);
        return true;
      }
      look_at(*map_.shape());
    }
    const PackedMap packed = map_;
    const std::int16_t *const slots = slots_;
    for (std::size_t i = 0; i < count; ++i) {
      values[i] = slots[i] < 0 ? cfg_value{}
                               : handed_out({nullptr, packed.child(static_cast<std::uint32_t>(slots[i]))});
    }
    return true;
  }

  // Asks for the memory of a record that will be read: its begin, and where the values would stand if it were
  // like the last one, for the records of a list are much alike.
  [[gnu::always_inline]] void ask_for(const char *record, const cfg_value *last) const {
    __builtin_prefetch(record);
    if (!map_) return;
    const std::uintptr_t shift = address(record) - address(map_.record());
    for (std::size_t i = 0; i < set_.count; ++i)
      __builtin_prefetch(reinterpret_cast<const void *>(address(last[i].data) + shift));
  }

 private:
  [[gnu::noinline]] void begin_anew() { known_.begin_anew(set_, store_.names); }

  [[gnu::noinline]] void read_spelled(const PackedMap &map, cfg_value *values) {
    for (std::size_t i = 0; i < set_.count; ++i)
      values[i] = handed_out({nullptr, map.find(set_.keys[i], store_.names)});
  }

  [[gnu::noinline]] bool read_node(Node *node, cfg_value *values) {
    MapNode *map = as_map(node);
    if (map == nullptr) return false;
    for (std::size_t i = 0; i < set_.count; ++i) {
      const MapItem *item = map->find(known_.names[i]);
      values[i] = item == nullptr || item->node == nullptr ? cfg_value{} : handed_out({item->node, {}});
    }
    return true;
  }

  [[gnu::noinline]] void look_at(const Shape &shape) {
    if (known_.by_shape.size() <= shape.number()) known_.by_shape.resize(shape.number() + 1);
    std::vector<std::int16_t> &slots = known_.by_shape[shape.number()];
    if (slots.empty()) {
      slots.reserve(set_.count);
      for (const KeyName *name : known_.names) slots.push_back(static_cast<std::int16_t>(shape.slot(name)));
    }
    slots_ = slots.data();
    known_.last_form = map_.form();
    known_.last = slots_;
  }

  Store &store_;
  const cfg_keyset &set_;
  KeysetSlots &known_;
  PackedMap map_;  // the last that was read
  const std::int16_t *slots_ = nullptr;
};

// Room for one value for each key of a set, on the stack for all but the longest.
class Values {
 public:
  explicit Values(std::size_t count) : many_(count > std::size(few_) ? count : 0) {}
  cfg_value *data() { return many_.empty() ? few_ : many_.data(); }

 private:
  cfg_value few_[16];
  std::vector<cfg_value> many_;
};

// The ID of one list entry after another. Its memory is the handle's, for the next one.
class EntryId {
 public:
  EntryId(Store &store, std::string front) : store_(store), text_(std::move(front)), front_(text_.size()) {}
  EntryId(const EntryId &) = delete;
  EntryId &operator=(const EntryId &) = delete;
  ~EntryId() { store_.idle_id = std::move(text_); }

  const char *of(std::uint32_t number) {
    text_.resize(front_ + kDigits);
    char *end = std::to_chars(text_.data() + front_, text_.data() + text_.size(), number).ptr;
    text_.resize(static_cast<std::size_t>(end - text_.data()));
    return text_.c_str();
  }

 private:
  static constexpr std::size_t kDigits = 10;
  Store &store_;
  std::string text_;
  const std::size_t front_;
};

// Visits the entries of a list that is not edited and lies in its owner's record: their IDs are put together
// here, without a head for the list or for an entry.
template <class Visit>
void visit_packed(Store &store, const PackedList &list, std::string id_front, Visit &&visit) {
  EntryId id(store, std::move(id_front));
  for (std::uint32_t i = 0; i < list.count(); ++i) {
    if (!visit(id.of(list.number(i)), Found{nullptr, list.child(i)})) return;
  }
}

template <class Visit>
void visit_heads(Head *list, Visit &&visit) {
  ListView view(list);
  for (std::uint32_t i = 0; i < view.size(); ++i) {
    const Head *entry = view.at(i);
    if (entry != nullptr && !visit(entry->id(), Found{entry->node, entry->stored})) return;
  }
}

// Shows the entries of a list to the visitor until it ends the scan. The result is the entry at which it did
// so, NULL when it saw them all.
Head *scan(Head *list, const cfg_keyset &set, cfg_scan_visitor visit, void *context) {
  Values room(set.count);
  cfg_value *const values = room.data();
  KeyReader reader(*list->store, set);
  std::int32_t index = 0;
  const auto goes_on = [&](const Found &entry) {
    if (!reader.read(entry, values)) std::fill_n(values, set.count, cfg_value{});
    return visit(context, index++, values) != 0;
  };
  if (list->result != nullptr) {
    for (Head *result : list->result->entries) {
      const Head *entry = bound(result);
      if (!goes_on(entry == nullptr ? Found{} : Found{entry->node, entry->stored})) return result;
    }
    return nullptr;
  }
  std::uint32_t number = 0;
  Node *last = nullptr;
  bool ended = false;
  const auto visit_entry = [&](std::uint32_t at, const Found &entry) {
    ended = !goes_on(entry);
    if (ended) {
      number = at;
      last = entry.node;
    }
    return !ended;
  };
  ListView(list).each(visit_entry, [&](std::string_view record) { reader.ask_for(record.data(), values); });
  if (!ended) return nullptr;
  return number == 0 ? last->head : entry_of(list, number);
}

// The numbers of a list's entries when nothing is edited about it; false when only its heads can tell.
bool stored_numbers(Head *list, std::vector<std::uint32_t> &numbers) {
  Store &store = *list->store;
  if (list->result != nullptr || list->node != nullptr) return false;
  if (const std::uint32_t distant = distant_list(list->stored); distant != 0) {
    if (store.edit != nullptr && store.edit->lists.contains(distant)) return false;
    const std::vector<std::uint32_t> *known = numbers_of(store, distant);
    if (known == nullptr) return false;
    numbers = *known;
    return true;
  }
  const PackedList packed(list->stored);
  for (std::uint32_t i = 0; i < packed.count(); ++i) numbers.push_back(packed.number(i));
  return static_cast<bool>(packed);
}

Head *checked_list(Store *store, cfg_elem *list) {
  Head *head = checked(store, list, CFG_LIST);
  if (head == nullptr || head->result != nullptr || ListView(head)) return head;
  store->fail(CFG_E_CORRUPT, "the list \"%s\" is damaged", head->id());
  return nullptr;
}

// Shows the entries of a list that was read as a value, until the visitor ends it. False when it is no list.
template <class Visit>
bool each_value(Store &store, const cfg_value &list, Visit &&visit) {
  if (!store.reading()) return false;
  if (list.kind != CFG_LIST) return store.fail(CFG_E_ARGUMENT, "the value is no list") != 0;
  const Found place = place_of(list);
  // Most lists lie in the record that is being read.
  if (const PackedList packed(place.stored); packed) {
    for (std::uint32_t i = 0; i < packed.count(); ++i) {
      if (!visit(Found{nullptr, packed.child(i)})) break;
    }
    return true;
  }
  const ListView view(store, place);
  if (!view) return store.fail(CFG_E_CORRUPT, "the list is damaged") != 0;
  view.each([&](std::uint32_t, const Found &entry) { return visit(entry); });
  return true;
}

bool sound(const cfg_keyset *set) { return set != nullptr && set->keys != nullptr && set->count > 0; }

}  // namespace

int cfg_map_read(cfg_elem *map, const cfg_keyset *set, cfg_value *values) noexcept {
  if (!given(store_of(map), values) || !sound(set)) return 0;
  Store *store = Head::of(map)->store;
  return guarded(store, 0, [&] {
    Head *head = bound(map);
    if (head == nullptr) return 0;
    if (head->kind != CFG_MAP) return store->fail(CFG_E_ARGUMENT, "\"%s\" is no map", head->id());
    return KeyReader(*store, *set).read({head->node, head->stored}, values) ? 1 : 0;
  });
}

int cfg_child_read(cfg_elem *map, const char *child, const cfg_keyset *set, cfg_value *values) noexcept {
  if (!given(store_of(map), child, values) || !sound(set)) return 0;
  Store *store = Head::of(map)->store;
  return guarded(store, 0, [&] {
    Head *head = checked(store, map, CFG_MAP);
    if (head == nullptr) return 0;
    const Found found = find_key(head, child);
    return found && found.kind() == CFG_MAP && KeyReader(*store, *set).read(found, values) ? 1 : 0;
  });
}

int cfg_child_scan(cfg_elem *map, const char *child, const cfg_keyset *set, cfg_entry_visitor visit,
                   void *context) noexcept {
  if (!given(store_of(map), child, visit) || !sound(set)) return 0;
  Store *store = Head::of(map)->store;
  return guarded(store, 0, [&] {
    Head *head = checked(store, map, CFG_MAP);
    if (head == nullptr) return 0;
    const Found list = find_key(head, child);
    if (!list || list.kind() != CFG_LIST) return 0;
    Values room(set->count);
    cfg_value *const values = room.data();
    KeyReader reader(*store, *set);
    const auto visit_entry = [&](const char *id, const Found &entry) {
      return visit(context, id, reader.read(entry, values) ? values : nullptr) != 0;
    };
    if (list.node == nullptr && distant_list(list.stored) == 0)
      visit_packed(*store, PackedList(list.stored), entry_id_front(*head, child, std::move(store->idle_id)),
                   visit_entry);
    else
      visit_heads(child_of(head, child), visit_entry);
    return 1;
  });
}

int cfg_value_read(cfg *store, const cfg_value *map, const cfg_keyset *set, cfg_value *values) noexcept {
  if (!given(store, map, values) || !sound(set)) return 0;
  return guarded(store, 0, [&] {
    if (!store->reading()) return 0;
    if (map->kind != CFG_MAP) return store->fail(CFG_E_ARGUMENT, "the value is no map");
    return KeyReader(*store, *set).read(place_of(*map), values) ? 1 : 0;
  });
}

int32_t cfg_value_entries(cfg *store, const cfg_value *list, cfg_value *entries, int32_t room) noexcept {
  if (!given(store, list, entries)) return -1;
  return guarded(store, -1, [&] {
    std::int32_t count = 0;
    const bool read = each_value(*store, *list, [&](const Found &entry) {
      if (count < room) entries[count] = handed_out(entry);
      ++count;
      return true;
    });
    return read ? count : -1;
  });
}

int cfg_value_scan(cfg *store, const cfg_value *list, cfg_value_visitor visit, void *context) noexcept {
  if (!given(store, list, visit)) return 0;
  return guarded(store, 0, [&] {
    const bool read = each_value(*store, *list, [&](const Found &entry) {
      const cfg_value value = handed_out(entry);
      return visit(context, &value) != 0;
    });
    return read ? 1 : 0;
  });
}

int cfg_value_scan_maps(cfg *store, const cfg_value *list, const cfg_keyset *set, cfg_map_visitor visit,
                        void *context) noexcept {
  if (!given(store, list, visit) || !sound(set)) return 0;
  return guarded(store, 0, [&] {
    Values room(set->count);
    cfg_value *const values = room.data();
    KeyReader reader(*store, *set);
    const bool read = each_value(*store, *list, [&](const Found &entry) {
      return visit(context, reader.read(entry, values) ? values : nullptr) != 0;
    });
    return read ? 1 : 0;
  });
}

int cfg_map_has(cfg_elem *map, const char *key) noexcept {
  if (!given(store_of(map), key)) return 0;
  return guarded(Head::of(map)->store, 0, [&] {
    Head *head = bound(map);
    return head != nullptr && head->kind == CFG_MAP && find_key(head, key) ? 1 : 0;
  });
}

int cfg_elem_read(cfg_elem *elem, cfg_value *value) noexcept {
  if (!given(store_of(elem), value)) return 0;
  return guarded(Head::of(elem)->store, 0, [&] {
    Head *head = bound(elem);
    if (head == nullptr) return 0;
    *value = head->result != nullptr ? cfg_value{CFG_LIST, 0, nullptr, 0}
                                     : Found{head->node, head->stored}.value();
    return 1;
  });
}

int cfg_list_scan(cfg_elem *list, const cfg_keyset *set, cfg_scan_visitor visit, void *context) noexcept {
  if (!given(store_of(list), visit) || !sound(set)) return 0;
  Store *store = Head::of(list)->store;
  return guarded(store, 0, [&] {
    Head *head = checked_list(store, list);
    if (head == nullptr) return 0;
    scan(head, *set, visit, context);
    return 1;
  });
}

cfg_elem *cfg_list_find(cfg_elem *list, const cfg_keyset *set, cfg_scan_visitor visit,
                        void *context) noexcept {
  if (!given(store_of(list), visit) || !sound(set)) return nullptr;
  Store *store = Head::of(list)->store;
  return guarded(store, static_cast<cfg_elem *>(nullptr), [&]() -> cfg_elem * {
    Head *head = checked_list(store, list);
    Head *found = head == nullptr ? nullptr : scan(head, *set, visit, context);
    return found == nullptr ? nullptr : found->elem();
  });
}

int cfg_list_ids(cfg_elem *list, cfg_id_visitor visit, void *context) noexcept {
  if (!given(store_of(list), visit)) return 0;
  Store *store = Head::of(list)->store;
  return guarded(store, 0, [&] {
    Head *head = checked_list(store, list);
    if (head == nullptr) return 0;
    std::int32_t index = 0;
    std::vector<std::uint32_t> numbers;
    if (stored_numbers(head, numbers)) {
      EntryId id(*store, flatten(head->id()) + '-');
      for (const std::uint32_t number : numbers) {
        if (visit(context, index++, id.of(number)) == 0) return 1;
      }
      return 1;
    }
    std::int32_t size = 0;
    if (cfg_list_size(list, &size) == 0) return 0;
    for (; index < size; ++index) {
      Head *entry = entry_at(head, static_cast<std::uint32_t>(index));
      if (visit(context, index, entry == nullptr ? nullptr : entry->id()) == 0) return 1;
    }
    return 1;
  });
}
