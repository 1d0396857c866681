#include <algorithm>
#include <charconv>
#include <cstring>
#include <functional>
#include <new>
#include <stdexcept>

#include "calls.hpp"
#include "id_text.hpp"
#include "store.hpp"

namespace twcfg {
namespace {

// The root of a store that holds nothing yet: a map without keys.
constexpr char kEmptyRecord[] = {kRecordFormat, 0, kTagSpelled, 0, 0, 0, 0};
const Packed kEmptyRoot = packed_record({kEmptyRecord, sizeof kEmptyRecord});

Head *allocate(Store &store, std::string_view id) {
  void *block = store.head_arena.take(sizeof(Head) + id.size() + 1, alignof(Head));
  Head *head = new (block) Head;
  head->store = &store;
  head->record = head;
  char *text = reinterpret_cast<char *>(head + 1);
  std::memcpy(text, id.data(), id.size());
  text[id.size()] = '\0';
  return head;
}

void bind(Head &head, Node *node, const Packed &stored) {
  head.node = node;
  head.stored = stored;
  head.kind = node != nullptr ? node->kind : kind_of(stored);
}

// Binds an entry of a distant list, which is a record of its own.
void bind_record(Head &head, std::uint32_t list) {
  Store &store = *head.store;
  const Key key = make_key(list, head.number);
  if (store.edit != nullptr) {
    const auto changes = store.edit->lists.find(list);
    if (changes != store.edit->lists.end() && changes->second.node->has_removed(head.number)) return;
    const auto opened = store.edit->records.find(key);
    if (opened != store.edit->records.end()) return bind(head, opened->second.root, {});
  }
  bind(head, nullptr, packed_record(store.snapshot->get(key).bytes));
}

void bind_root(Head &head) {
  Store &store = *head.store;
  if (store.edit != nullptr) {
    const auto opened = store.edit->records.find(kRootKey);
    if (opened != store.edit->records.end()) return bind(head, opened->second.root, {});
  }
  const Stored stored = store.snapshot->get(kRootKey);
  bind(head, nullptr, stored ? packed_record(stored.bytes) : kEmptyRoot);
}

Found find_entry(const Head &list, std::uint32_t number) {
  if (const ListNode *node = as_list(list.node)) {
    const auto at =
        std::lower_bound(node->entries.begin(), node->entries.end(), number,
                         [](const Node *entry, std::uint32_t wanted) { return entry->number < wanted; });
    if (at != node->entries.end() && (*at)->number == number) return {*at, {}};
    return {};
  }
  const PackedList packed(list.stored);
  const std::int64_t index = packed ? packed.index_of(number) : -1;
  return index < 0 ? Found{} : Found{nullptr, packed.child(static_cast<std::uint32_t>(index))};
}

// Binds a head anew, through its holder.
void rebind(Head &head) {
  Store &store = *head.store;
  bind(head, nullptr, {});
  Head *record = &head;
  if (&head == store.root) {
    bind_root(head);
  } else if (Head *holder = bound(head.parent); holder != nullptr) {
    if (head.key != nullptr) {
      if (holder->kind == CFG_MAP) {
        const Found found = find_key(holder, head.key->text);
        bind(head, found.node, found.stored);
        record = holder->record;
      }
    } else if (holder->kind == CFG_LIST) {
      if (const std::uint32_t list = distant_of(*holder); list != 0) {
        bind_record(head, list);
      } else {
        const Found found = find_entry(*holder, head.number);
        bind(head, found.node, found.stored);
        record = holder->record;
      }
    }
  }
  // Whatever hangs on this head as its record has to look again, also when the head is no record any more.
  if (record == &head || head.record == &head) ++head.own_epoch;
  head.record = record;
  head.generation = store.generation;
  head.epoch = record->own_epoch;
  // An absence in a damaged store is not to be believed.
  if (head.kind == CFG_NONE) {
    if (const Failure damage = store.snapshot->failure()) store.fail(damage);
  }
}

std::string child_id(const Head &map, std::string_view key) {
  const std::string escaped = escape_key(key);
  return &map == map.store->root ? escaped : std::string(map.id()) + '.' + escaped;
}

std::string entry_id(const Head &list, std::uint32_t number) {
  return flatten(list.id()) + '-' + std::to_string(number);
}

std::uint64_t step_hash(const Head *holder, const KeyName *key, std::uint32_t number) {
  std::uint64_t mixed = reinterpret_cast<std::uintptr_t>(holder) * 0x9e3779b97f4a7c15u;
  mixed ^= (reinterpret_cast<std::uintptr_t>(key) + number) * 0xc2b2ae3d27d4eb4fu;
  return mixed ^ mixed >> 29;
}

Head *known_child(Head *holder, const KeyName *key, std::uint32_t number) {
  Store &store = *holder->store;
  const std::uint64_t hash = step_hash(holder, key, number);
  Head *known = store.children.find(hash, [&](const Head &head) {
    return head.parent == holder && head.key == key && head.number == number;
  });
  if (known != nullptr) return known;
  const std::string id = key != nullptr ? child_id(*holder, key->text) : entry_id(*holder, number);
  if (id.size() > kMaxId) throw std::length_error("an element's ID is longer than 4,096 bytes");
  Head *head = allocate(store, id);
  head->parent = holder;
  head->key = key;
  head->number = number;
  store.children.insert(hash, head);
  return head;
}

// The list below `map` whose flattened name, relative to its owner, is `name`.
Head *list_by_name(Head *map, std::string_view name) {
  Store &store = *map->store;
  const auto try_key = [&](std::string_view key, cfg_kind kind) -> Head * {
    const std::string flat = flatten(escape_key(key));
    if (!name.starts_with(flat)) return nullptr;
    const std::string_view rest = name.substr(flat.size());
    if (rest.empty()) return kind == CFG_LIST ? child_of(map, key) : nullptr;
    if (rest.front() != '_' || kind != CFG_MAP) return nullptr;
    Head *child = child_of(map, key);
    return child == nullptr ? nullptr : list_by_name(child, rest.substr(1));
  };
  if (const MapNode *node = as_map(map->node)) {
    // By position: looking a child up may add to the map of handles but never to this map.
    for (const MapItem &item : node->items) {
      if (item.node == nullptr) continue;
      if (Head *found = try_key(item.key->text, item.node->kind)) return found;
    }
    return nullptr;
  }
  const PackedMap packed(map->stored, store.shapes, *store.snapshot);
  for (std::uint32_t i = 0; packed && i < packed.count(); ++i) {
    if (Head *found = try_key(packed.key(i), kind_of(packed.child(i)))) return found;
  }
  return nullptr;
}

Head *entry_by_id(Store &store, std::string_view id);

}  // namespace

Head *list_by_front(Store &store, std::string_view front) {
  std::string_view outer;
  std::uint32_t number = 0;
  if (split_entry(front, outer, number)) return entry_by_id(store, front);  // a list in a list
  for (std::size_t at = front.rfind('_'); at != std::string_view::npos && at > 0;
       at = front.rfind('_', at - 1)) {
    if (!split_entry(front.substr(0, at), outer, number)) continue;
    Head *owner = entry_by_id(store, front.substr(0, at));
    return owner == nullptr || owner->kind != CFG_MAP ? nullptr : list_by_name(owner, front.substr(at + 1));
  }
  Head *root = root_head(store);
  return root == nullptr ? nullptr : list_by_name(root, front);
}

namespace {

Head *entry_by_id(Store &store, std::string_view id) {
  std::string_view front;
  std::uint32_t number = 0;
  if (!split_entry(id, front, number)) return nullptr;
  Head *list = list_by_front(store, front);
  return list == nullptr || list->kind != CFG_LIST ? nullptr : entry_of(list, number);
}

// Follows ".key.key" below a head.
Head *below(Head *head, std::string_view tail) {
  std::string key;
  while (head != nullptr && !tail.empty()) {
    tail.remove_prefix(1);
    const std::size_t end = std::min(tail.find('.'), tail.size());
    if (head->kind != CFG_MAP || !unescape_key(tail.substr(0, end), key)) return nullptr;
    head = child_of(head, key);
    tail.remove_prefix(end);
  }
  return head;
}

// The head of the new element whose ID `id` is.
Head *born_head(Store &store, std::string_view id) {
  if (!id.starts_with(store.nonce) || !id.ends_with('}')) return nullptr;
  std::size_t number = 0;
  const char *end = id.data() + id.size() - 1;
  const auto parsed = std::from_chars(id.data() + store.nonce.size(), end, number);
  if (parsed.ec != std::errc() || parsed.ptr != end || number >= store.born.size()) return nullptr;
  Head *head = store.born[number];
  return id == head->id() ? head : nullptr;
}

// A provisional ID in two: that of a new element, and the keys below it that follow. An ID that goes on in
// another way names nothing.
struct NewId {
  explicit NewId(std::string_view id) {
    const std::size_t end = std::min(id.find('}'), id.size() - 1) + 1;
    if (end < id.size() && id[end] != '.') return;
    element = id.substr(0, end);
    tail = id.substr(end);
  }
  std::string_view element, tail;
};

Head *born_by_id(Store &store, std::string_view id) {
  const NewId parts(id);
  return below(bound(born_head(store, parts.element)), parts.tail);
}

}  // namespace

std::uint32_t distant_of(const Head &list) {
  return list.node != nullptr ? as_list(list.node)->distant : distant_list(list.stored);
}

namespace {

// Whether a new element hangs on something that is still there: on nothing at all, on an opened record or on
// the changes to a distant list. What was removed further up is only seen from there.
bool anchored(const Node &node) {
  const Node *top = &node;
  while (top->parent != nullptr) top = top->parent;
  if (top->born || top->head == nullptr) return true;
  const Head *head = bound(top->head);
  if (head == nullptr) return false;
  if (head->node == top) return true;
  return head->kind == CFG_LIST && top->kind == CFG_LIST &&
         distant_of(*head) == static_cast<const ListNode *>(top)->distant;
}

}  // namespace

bool in_place(const RecordEdit &record) {
  const Head *head = bound(record.head);
  return head != nullptr && head->node == record.root;
}

bool in_place(std::uint32_t number, const ListEdit &list) {
  const Head *head = bound(list.head);
  return head != nullptr && head->kind == CFG_LIST && distant_of(*head) == number;
}

namespace {

// bound(), but for entries that were written whole: these stay sealed.
Head *alive(Head *head) {
  if (head == nullptr) return nullptr;
  Store &store = *head->store;
  while (head->forward != nullptr) head = head->forward;
  if (head->born || head->result != nullptr) {
    if (!store.reading()) return nullptr;
    if (head->result != nullptr) return head;
    if (head->committed) {
      Head *holder = bound(head->parent);
      if (holder == nullptr) return nullptr;
      head->forward =
          head->key != nullptr ? child_of(holder, head->key->text) : entry_of(holder, head->number);
      return head->forward;
    }
    if (head->node == nullptr || head->node->dead) return nullptr;
    // Whatever removes an element without reaching the new ones below it moves the generation.
    if (head->generation != store.generation) {
      if (!anchored(*head->node)) return nullptr;
      head->generation = store.generation;
    }
    return head;
  }
  if (head->record->generation != store.generation || !store.in_own_process()) {
    if (!store.reading()) return nullptr;
    if (head->record->born) {
      if (bound(head->record) == nullptr) return nullptr;
    } else {
      rebind(*head->record);
    }
  }
  if (head->epoch != head->record->own_epoch || (head->node != nullptr && head->node->dead)) rebind(*head);
  return head->kind == CFG_NONE ? nullptr : head;
}

}  // namespace

Head *bound(Head *head) {
  head = alive(head);
  if (head == nullptr || head->node == nullptr) return head;
  if (MapNode *map = as_map(head->node); map != nullptr && map->sealed != nullptr)
    head->store->edit->seals.open(*head->store, *map);
  return head;
}

NewPlace new_place(Store &store, std::string_view id) {
  const NewId parts(id);
  const Head *head = alive(born_head(store, parts.element));
  return head != nullptr && head->born ? NewPlace{head->node, parts.tail} : NewPlace{};
}

Head *bound(cfg_elem *elem) { return elem == nullptr ? nullptr : bound(Head::of(elem)); }

Head *root_head(Store &store) {
  if (store.root == nullptr) store.root = allocate(store, kRootId);
  return bound(store.root);
}

std::string present_id(Head *head) {
  while (head->forward != nullptr) head = head->forward;
  if (head->id()[0] != '{' || head->born) return head->id();
  // A child of what was a new element: its own text still begins with the provisional ID.
  const std::string holder = present_id(bound(head->parent));
  return head->key != nullptr ? holder + '.' + escape_key(head->key->text)
                              : flatten(holder) + '-' + std::to_string(head->number);
}

Found find_key(Head *map, std::string_view key) {
  Store &store = *map->store;
  if (MapNode *node = as_map(map->node)) {
    const KeyName *name = store.names.find(key);
    const MapItem *item = name == nullptr ? nullptr : node->find(name);
    return item == nullptr ? Found{} : Found{item->node, {}};
  }
  const PackedMap packed(map->stored, store.shapes, *store.snapshot);
  return packed ? Found{nullptr, packed.find(key, store.names)} : Found{};
}

std::string entry_id_front(const Head &map, std::string_view key, std::string front) {
  const KeyName &name = *map.store->names.intern(key);
  front.clear();
  if (&map != map.store->root) {
    append_flat(front, map.id());
    front += '_';
  }
  front += name.flat;
  front += '-';
  return front;
}

Head *head_of(Head *holder, Node *node) {
  if (node->head != nullptr) return node->head;
  Head *head = known_child(holder, node->key, node->number);
  bind(*head, node, {});
  head->record = holder->record;
  head->epoch = holder->record->own_epoch;
  return head;
}

Head *child_of(Head *map, std::string_view key) {
  const Found found = find_key(map, key);
  if (!found) return nullptr;
  if (found.node != nullptr) return head_of(map, found.node);
  Head *head = known_child(map, map->store->names.intern(key), 0);
  bind(*head, nullptr, found.stored);
  head->record = map->record;
  head->epoch = map->record->own_epoch;
  return head->kind == CFG_NONE ? nullptr : head;
}

Head *entry_of(Head *list, std::uint32_t number) {
  if (distant_of(*list) == 0) {
    const Found found = find_entry(*list, number);
    if (!found) return nullptr;
    if (found.node != nullptr) return head_of(list, found.node);
  }
  return bound(known_child(list, nullptr, number));
}

Head *head_by_id(Store &store, std::string_view id) {
  const std::uint64_t hash = hash_of_id(id);
  if (Head *known = store.by_id.find(hash, [&](const Head &head) { return id == head.id(); }))
    return bound(known);
  if (id.empty() || id.size() > kMaxId) return nullptr;
  if (id.front() == '{') return born_by_id(store, id);
  Head *head = nullptr;
  if (id == kRootId) {
    head = root_head(store);
  } else {
    const std::size_t dot = std::min(id.find('.'), id.size());
    std::string_view front;
    std::uint32_t number = 0;
    if (split_entry(id.substr(0, dot), front, number)) {
      head = below(entry_by_id(store, id.substr(0, dot)), id.substr(dot));
    } else {
      const std::string rooted = '.' + std::string(id);
      head = below(root_head(store), rooted);
    }
  }
  if (head != nullptr && !head->born && id == head->id()) store.by_id.insert(hash, head);
  return head;
}

Head *new_head(Store &store, Node *node) {
  char id[48];
  char *end = std::copy(store.nonce.begin(), store.nonce.end(), id);
  end = std::to_chars(end, std::end(id) - 1, store.born.size()).ptr;
  *end++ = '}';
  store.editing();  // before the element is counted
  Head *head = allocate(store, {id, end});
  head->born = true;
  head->generation = store.generation;
  bind(*head, node, {});
  store.born.push_back(head);
  node->born = true;
  node->head = head;
  return head;
}

Head *result_head(Store &store, std::vector<Head *> entries) {
  SearchResult *result = nullptr;
  if (store.idle_results.empty()) {
    auto fresh = std::make_unique<SearchResult>();
    fresh->head = allocate(store, "{search}");
    fresh->head->kind = CFG_LIST;
    fresh->head->result = fresh.get();
    result = fresh.get();
    store.idle_results.reserve(store.results.size() + 1);  // so that dropping a result cannot fail
    store.results.push_back(std::move(fresh));
  } else {
    result = store.idle_results.back();
    store.idle_results.pop_back();
  }
  result->entries = std::move(entries);
  result->idle = false;
  return result->head;
}

Head *holder_of(Head *head) {
  if (!head->born) return bound(head->parent);
  Node *above = head->node->parent;
  if (above == nullptr) return nullptr;
  if (above->head != nullptr) return bound(above->head);
  // The holder was unpacked from a stored record: find its head from the record's root downwards.
  std::vector<Node *> way;
  Node *node = above;
  for (; node->head == nullptr && node->parent != nullptr; node = node->parent) way.push_back(node);
  Head *holder = node->head == nullptr ? nullptr : bound(node->head);
  for (auto step = way.rbegin(); holder != nullptr && step != way.rend(); ++step)
    holder = head_of(holder, *step);
  return holder;
}

namespace {

// A path is tried with the shortest key first and falls back to keys that hold dots themselves. The number of
// tries is bounded, because a store full of such keys could make the same path ambiguous without end.
constexpr int kPathTries = 4096;

// Calls try_key(key, rest) for each way to cut the first key off; `rest` is empty at the end of the path.
template <class Try>
auto cut_path(std::string_view path, int &tries, Try &&try_key) -> decltype(try_key(path, path)) {
  for (std::size_t end = path.find('.');; end = path.find('.', end + 1)) {
    if (tries-- <= 0) return {};
    end = std::min(end, path.size());
    if (end > 0 && end <= kMaxKey && end + 1 != path.size()) {
      const auto found = try_key(path.substr(0, end), path.substr(std::min(end + 1, path.size())));
      if (found) return found;
    }
    if (end == path.size()) return {};
  }
}

Found walk_path(Store &store, const Found &map, std::string_view path, int &tries) {
  if (map.kind() != CFG_MAP) return {};
  return cut_path(path, tries, [&](std::string_view key, std::string_view rest) -> Found {
    Found child;
    if (MapNode *node = as_map(map.node)) {
      const KeyName *name = store.names.find(key);
      const MapItem *item = name == nullptr ? nullptr : node->find(name);
      if (item != nullptr) child.node = item->node;
    } else {
      const PackedMap packed(map.stored, store.shapes, *store.snapshot);
      if (packed) child.stored = packed.find(key, store.names);
    }
    return !child || rest.empty() ? child : walk_path(store, child, rest, tries);
  });
}

Head *walk_path(Head *map, std::string_view path, int &tries) {
  if (map->kind != CFG_MAP) return nullptr;
  return cut_path(path, tries, [&](std::string_view key, std::string_view rest) -> Head * {
    Head *child = child_of(map, key);
    return child == nullptr || rest.empty() ? child : walk_path(child, rest, tries);
  });
}

}  // namespace

Found find_path(Store &store, const Found &map, std::string_view path) {
  int tries = kPathTries;
  return path.size() > kMaxPath ? Found{} : walk_path(store, map, path, tries);
}

Head *head_by_path(Head *map, std::string_view path) {
  int tries = kPathTries;
  return path.size() > kMaxPath ? nullptr : walk_path(map, path, tries);
}

}  // namespace twcfg
