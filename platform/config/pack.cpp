#include "pack.hpp"

#include <algorithm>

#include "calls.hpp"
#include "change_walk.hpp"
#include "id_text.hpp"
#include "packer.hpp"

namespace twcfg {
namespace {

std::string head_bytes(const ListHead &head) {
  std::string bytes(8, '\0');
  std::memcpy(bytes.data(), &head.next, 4);
  std::memcpy(bytes.data() + 4, &head.count, 4);
  return bytes;
}

const StoredList *named(const std::pmr::vector<StoredList> &lists, std::string_view name) {
  for (const StoredList &list : lists) {
    if (list.name == name) return &list;
  }
  return nullptr;
}

}  // namespace

Plan::Plan(Store &store) : store_(store), packer_(std::make_unique<Packer>(*this, records_)) {}

Plan::~Plan() = default;

void Plan::write(Key key, std::uint64_t expected, std::string_view bytes) {
  writes_.push_back({key, expected, bytes, false});
}

void Plan::remove(Key key, std::uint64_t expected) { writes_.push_back({key, expected, {}, true}); }

// By key; what was planned last for a key is what counts.
void Plan::sort_writes() {
  std::stable_sort(writes_.begin(), writes_.end(),
                   [](const Write &left, const Write &right) { return left.key < right.key; });
  const auto same = [](const Write &left, const Write &right) { return left.key == right.key; };
  writes_.erase(writes_.begin(), std::unique(writes_.rbegin(), writes_.rend(), same).base());
}

void Plan::write_head(std::uint32_t list, const ListHead &head, std::uint64_t expected) {
  write(head_key(list), expected, small_bytes_.copy(head_bytes(head)));
}

bool Plan::load_counters() {
  if (counters_loaded_) return true;
  const Stored stored = store_.snapshot->get(kCountersKey);
  counters_expected_ = stored.revision;
  if (stored) {
    ListHead pair;
    if (!read_list_head(stored.bytes, pair)) {
      return store_.fail(CFG_E_CORRUPT, "the store's counters are damaged") != 0;
    }
    next_list_ = pair.next;
    next_shape_ = pair.count;
  }
  counters_loaded_ = true;
  return true;
}

std::uint32_t Plan::new_list() {
  counters_changed_ = true;
  return next_list_++;
}

std::uint32_t Plan::shape_of(const std::vector<const KeyName *> &keys) {
  if (keys.size() > kMaxShapeKeys) return kMaxShapes;
  if (const Shape *known = store_.shapes.find(keys, *store_.snapshot)) return known->number();
  if (const auto planned = new_shapes_.find(keys); planned != new_shapes_.end()) return planned->second;
  if (next_shape_ >= kMaxShapes) return kMaxShapes;
  const std::uint32_t number = next_shape_++;
  counters_changed_ = true;
  new_shapes_.emplace(keys, number);
  write(make_key(kShapeSpace, number), 0, small_bytes_.copy(Shapes::encode(keys)));
  return number;
}

std::size_t Plan::KeysHash::operator()(const std::vector<const KeyName *> &keys) const {
  std::uint64_t hash = 0;
  for (const KeyName *key : keys) {
    hash = (hash ^ reinterpret_cast<std::uintptr_t>(key)) * 0x9e3779b97f4a7c15u;
    hash ^= hash >> 29;
  }
  return hash;
}

const MapLayout &Plan::layout_of(const MapNode &map) {
  keys_.clear();
  for (const MapItem &item : map.items) keys_.push_back(item.node != nullptr ? item.key : nullptr);
  if (const auto known = layouts_.find(keys_); known != layouts_.end()) return known->second;
  MapLayout layout;
  for (std::size_t i = 0; i < keys_.size(); ++i) {
    if (keys_[i] != nullptr) layout.sorted.push_back(static_cast<std::uint16_t>(i));
  }
  std::sort(layout.sorted.begin(), layout.sorted.end(), [this](std::uint16_t left, std::uint16_t right) {
    return keys_[left]->text < keys_[right]->text;
  });
  std::vector<const KeyName *> keys;
  keys.reserve(layout.sorted.size());
  for (const std::uint16_t at : layout.sorted) keys.push_back(keys_[at]);
  layout.shape = shape_of(keys);
  return layouts_.emplace(keys_, std::move(layout)).first->second;
}

// ---- Numbers ----

std::uint32_t Plan::first_number(const ListNode &list, const ListName *name) const {
  std::uint32_t next = list.next;
  if (!list.born || name == nullptr || name->owner == nullptr) return next;
  // A new list in the place of an old one goes on where that one stopped.
  if (name->owner->owner == nullptr) return next;
  const Ownership &owner = *name->owner->owner;
  if (const StoredList *old = named(owner.lists, name->prefix)) {
    ListHead head;
    if (old->distant == 0) {
      next = std::max(next, old->next);
    } else if (read_list_head(store_.snapshot->get(head_key(old->distant)).bytes, head)) {
      next = std::max(next, head.next);
    }
  }
  if (const StoredList *old = named(owner.retired, name->prefix)) next = std::max(next, old->next);
  return next;
}

bool Plan::number_entries(ListNode &list, std::uint32_t &next, int depth) {
  for (auto *entries : {&list.added, &list.future}) {
    for (Node *entry : *entries) {
      if (next > kMaxNumber) {
        return store_.fail(CFG_E_LIMIT, "a list has given out all its %u numbers", kMaxNumber) != 0;
      }
      entry->assigned = next++;
    }
  }
  for (auto *entries : {&list.entries, &list.added, &list.future}) {
    for (Node *entry : *entries) {
      if (!number(entry, nullptr, false, depth + 1)) return false;
    }
  }
  return true;
}

bool Plan::number_list(ListNode &list, ListName *name, bool in_root_record, int depth) {
  list.placed = 0;
  if (list.distant != 0) return true;
  std::uint32_t next = first_number(list, name);
  if (!number_entries(list, next, depth)) return false;
  list.next_after = next;
  // Collections of the root are shared by everyone, so each has records of its own from the start.
  if (in_root_record) list.placed = new_list();
  return true;
}

bool Plan::number(Node *node, ListName *name, bool in_root_record, int depth) {
  if (depth > kMaxDepth + 1) return store_.fail(CFG_E_LIMIT, "elements are nested too deep") != 0;
  if (ListNode *list = as_list(node)) return number_list(*list, name, in_root_record, depth);
  MapNode *map = as_map(node);
  if (map == nullptr) return true;
  ListName own{{}, map, list_names_.size()};
  const bool is_owner = name == nullptr;
  if (is_owner) name = &own;
  if (!map->nested) return true;
  for (MapItem &item : map->items) {
    if (item.node == nullptr || item.node->kind > CFG_LIST) continue;
    const std::size_t length = name->prefix.size();
    if (length != 0) name->prefix += '_';
    name->prefix += item.key->flat;
    if (item.node->kind == CFG_LIST) {
      const auto seen = list_names_.begin() + static_cast<std::ptrdiff_t>(name->first);
      if (std::find(seen, list_names_.end(), name->prefix) != list_names_.end()) {
        return store_.fail(CFG_E_ARGUMENT, "two lists would both name their entries \"%s-<number>\"",
                           name->prefix.c_str()) != 0;
      }
      list_names_.push_back(name->prefix);
    }
    const bool done = number(item.node, name, in_root_record, depth + 1);
    name->prefix.resize(length);
    if (!done) return false;
  }
  if (is_owner) list_names_.resize(own.first);
  return true;
}

std::string Plan::final_id(const Node *node) const {
  if (node == nullptr || node->dead) return {};
  if (node->head != nullptr && !node->head->born) return node->head->id();
  const Node *above = node->parent;
  if (above == nullptr) return {};
  const std::string holder = final_id(above);
  if (holder.empty()) return {};
  if (above->kind == CFG_LIST) {
    return flatten(holder) + '-' + std::to_string(node->number != 0 ? node->number : node->assigned);
  }
  const std::string key = escape_key(node->key->text);
  return holder == kRootId ? key : holder + '.' + key;
}

std::string Plan::final_reference(std::string_view id) const {
  // Without a look at the place itself, which would open an entry that may be planned already.
  if (const NewPlace place = new_place(store_, id); place.element != nullptr) {
    std::string element = final_id(place.element);
    return element.empty() ? element : element.append(place.tail);
  }
  Head *target = head_by_id(store_, id);
  if (target == nullptr) return {};
  return target->born ? final_id(target->node) : present_id(target);
}

std::string Plan::retired_table(const MapNode &owner) const {
  if (owner.owner == nullptr || (owner.owner->lists.empty() && owner.owner->retired.empty())) return {};
  std::vector<NamedList> lists;
  named_lists(&owner, {}, lists);
  const auto alive = [&](std::string_view name) {
    return std::any_of(lists.begin(), lists.end(), [&](const NamedList &list) { return list.name == name; });
  };
  std::map<std::string, std::uint32_t, std::less<>> retired;
  for (const StoredList &list : owner.owner->retired) {
    if (!alive(list.name)) retired[std::string(list.name)] = list.next;
  }
  for (const StoredList &list : owner.owner->lists) {
    if (alive(list.name)) continue;
    ListHead head{list.next, 0};
    if (list.distant != 0 && !read_list_head(store_.snapshot->get(head_key(list.distant)).bytes, head))
      continue;
    std::uint32_t &next = retired[std::string(list.name)];
    next = std::max(next, head.next);
  }
  if (retired.empty()) return {};
  std::string table;
  const auto put = [&](const void *value, std::size_t size) {
    table.append(static_cast<const char *>(value), size);
  };
  const auto count = static_cast<std::uint32_t>(retired.size());
  put(&count, sizeof count);
  for (const auto &[name, next] : retired) {
    const auto length = static_cast<std::uint16_t>(name.size());
    put(&next, sizeof next);
    put(&length, sizeof length);
    table += name;
  }
  return table;
}

// ---- Records ----

bool Plan::plan_sealed(Key key, MapNode &entry) {
  Seals &seals = store_.edit->seals;
  const std::string_view bytes = seals.finish(*this, *entry.sealed);
  if (!bytes.empty()) {
    write(key, 0, bytes);
    return true;
  }
  seals.open(store_, entry);
  return number(&entry, nullptr, false, 0) && plan_record(key, &entry, 0);
}

bool Plan::plan_record(Key key, Node *root, std::uint64_t expected) {
  if (MapNode *map = as_map(root); map != nullptr && map->sealed != nullptr) return plan_sealed(key, *map);
  for (;;) {
    if (!packer_->pack(root))
      return store_.fail(CFG_E_LIMIT, "a record would be larger than %zu bytes", kMaxRecord) != 0;
    ListNode *largest = nullptr;
    std::size_t size = kWorthMoving;
    if (records_.size() > kRecordTarget) {
      for (const Packer::Inner &inner : packer_->inner()) {
        if (inner.bytes > size) {
          largest = inner.list;
          size = inner.bytes;
        }
      }
    }
    if (largest == nullptr) {
      const std::span<char> record = records_.keep();
      write(key, expected, {record.data(), record.size()});
      break;
    }
    largest->placed = new_list();
  }
  return plan_placed_below(root);
}

bool Plan::plan_placed_below(Node *node) {
  if (MapNode *map = as_map(node)) {
    if (!map->nested) return true;
    for (const MapItem &item : map->items) {
      if (item.node != nullptr && item.node->kind <= CFG_LIST && !plan_placed_below(item.node)) return false;
    }
  } else if (ListNode *list = as_list(node); list != nullptr && list->distant == 0) {
    if (list->placed != 0) return plan_placed(*list);
    for (const auto *entries : {&list->entries, &list->added, &list->future}) {
      for (Node *entry : *entries) {
        if (!plan_placed_below(entry)) return false;
      }
    }
  }
  return true;
}

bool Plan::plan_placed(ListNode &list) {
  ListHead head{list.next_after, 0};
  for (const auto *entries : {&list.entries, &list.added, &list.future}) {
    for (Node *entry : *entries) {
      const std::uint32_t number = entry->number != 0 ? entry->number : entry->assigned;
      if (!plan_record(make_key(list.placed, number), entry, 0)) return false;
      ++head.count;
    }
  }
  write_head(list.placed, head, 0);
  return true;
}

bool Plan::plan_list(std::uint32_t list, ListNode &changes) {
  const Stored stored = store_.snapshot->get(head_key(list));
  ListHead head;
  if (!read_list_head(stored.bytes, head)) {
    return store_.fail(CFG_E_CORRUPT, "the head of list %u is damaged", list) != 0;
  }
  for (const ListNode::Removed &gone : changes.removed) {
    plan_removal(make_key(list, gone.number));
    --head.count;
  }
  for (auto *entries : {&changes.added, &changes.future}) {
    for (Node *entry : *entries) {
      if (!plan_record(make_key(list, entry->assigned), entry, 0)) return false;
      ++head.count;
    }
  }
  head.next = changes.next_after;
  write_head(list, head, stored.revision);
  return true;
}

void Plan::plan_removal(Key key) {
  const Stored stored = store_.snapshot->get(key);
  if (!stored) return;
  purge_inside(packed_record(stored.bytes), 0);
  remove(key, stored.revision);
}

void Plan::plan_purge(std::uint32_t list) {
  const auto cursor = store_.snapshot->cursor();
  std::vector<Key> keys;
  for (bool more = cursor->seek(make_key(list, 1)); more && space_of(cursor->key()) == list;
       more = cursor->next()) {
    keys.push_back(cursor->key());
  }
  for (const Key key : keys) plan_removal(key);
  const Stored head = store_.snapshot->get(head_key(list));
  if (head) remove(head_key(list), head.revision);
}

void Plan::purge_inside(const Packed &node, int depth) {
  if (depth > kMaxDepth) return;
  if (const std::uint32_t list = distant_list(node)) return plan_purge(list);
  if (kind_of(node) == CFG_MAP) {
    const PackedMap packed(node, store_.shapes, *store_.snapshot);
    for (std::uint32_t i = 0; packed && i < packed.count(); ++i) purge_inside(packed.child(i), depth + 1);
  } else if (kind_of(node) == CFG_LIST) {
    const PackedList packed(node);
    for (std::uint32_t i = 0; packed && i < packed.count(); ++i) purge_inside(packed.child(i), depth + 1);
  }
}

namespace {

void distant_lists(const Node *node, std::vector<std::uint32_t> &out) {
  if (node->kind == CFG_MAP) {
    for (const MapItem &item : static_cast<const MapNode *>(node)->items) {
      if (item.node != nullptr) distant_lists(item.node, out);
    }
  } else if (node->kind == CFG_LIST) {
    const auto &list = *static_cast<const ListNode *>(node);
    if (list.distant != 0) out.push_back(list.distant);
    for (const Node *entry : list.entries) distant_lists(entry, out);
  }
}

void distant_lists(Store &store, const Packed &node, int depth, std::vector<std::uint32_t> &out) {
  if (depth > kMaxDepth) return;
  if (const std::uint32_t list = distant_list(node)) {
    out.push_back(list);
  } else if (kind_of(node) == CFG_MAP) {
    const PackedMap packed(node, store.shapes, *store.snapshot);
    for (std::uint32_t i = 0; packed && i < packed.count(); ++i)
      distant_lists(store, packed.child(i), depth + 1, out);
  } else if (kind_of(node) == CFG_LIST) {
    const PackedList packed(node);
    for (std::uint32_t i = 0; packed && i < packed.count(); ++i)
      distant_lists(store, packed.child(i), depth + 1, out);
  }
}

}  // namespace

void Plan::purge_dropped(Key key, const Node *root) {
  const Stored stored = store_.snapshot->get(key);
  if (!stored) return;
  std::vector<std::uint32_t> before;
  std::vector<std::uint32_t> after;
  distant_lists(store_, packed_record(stored.bytes), 0, before);
  if (before.empty()) return;
  distant_lists(root, after);
  for (const std::uint32_t list : before) {
    if (std::find(after.begin(), after.end(), list) == after.end()) plan_purge(list);
  }
}

bool Plan::make() {
  Edit &edit = *store_.edit;
  if (!load_counters()) return false;
  struct Record {
    Key key;
    Node *root;
    std::uint64_t base;
  };
  std::vector<Record> records;
  for (const auto &[key, record] : edit.records) {
    // An entry that this edit has removed as well needs no writing.
    if (!in_place(record)) continue;
    if (record.root->changed != kClean || touched(record.root))
      records.push_back({key, record.root, record.base});
  }
  std::vector<std::pair<std::uint32_t, ListNode *>> lists;
  for (const auto &[number, list] : edit.lists) {
    if (list.node->touched() && in_place(number, list)) lists.emplace_back(number, list.node);
  }
  edit.seals.settle(*this);  // first: its guesses are about the next numbers of shapes
  // All numbers are given out before anything is packed, because references may point either way.
  for (const Record &record : records) {
    if (!number(record.root, nullptr, record.key == kRootKey, 0)) return false;
  }
  for (const auto &[list, changes] : lists) {
    ListHead head;
    if (!read_list_head(store_.snapshot->get(head_key(list)).bytes, head)) {
      return store_.fail(CFG_E_CORRUPT, "the head of list %u is damaged", list) != 0;
    }
    changes->next_after = head.next;
    if (!number_entries(*changes, changes->next_after, 0)) return false;
  }
  for (const auto &[list, changes] : lists) {
    if (!plan_list(list, *changes)) return false;
  }
  for (const Record &record : records) {
    purge_dropped(record.key, record.root);
    if (!plan_record(record.key, record.root, record.base)) return false;
  }
  if (counters_changed_)
    write(kCountersKey, counters_expected_, small_bytes_.copy(head_bytes({next_list_, next_shape_})));
  sort_writes();
  return true;
}

}  // namespace twcfg
