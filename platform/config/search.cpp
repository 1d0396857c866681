// Searching a collection.
#include "calls.hpp"
#include "change_walk.hpp"
#include "commit_log.hpp"
#include "condition.hpp"
#include "id_text.hpp"
#include "list_view.hpp"
#include "store.hpp"

namespace twcfg {
namespace {

bool holds_for(Store &store, const cfg_condition &condition, const Found &entry) {
  return holds(condition, [&](const std::string &key) -> cfg_value {
    const Found found = find_path(store, entry, key);
    return found ? found.value() : cfg_value{};
  });
}

// What an index keeps of an entry: the value with its kind in front; false when the key holds nothing to
// compare.
bool indexed_value(Store &store, const std::string &key, const Found &entry, std::string &out) {
  const Found found = find_path(store, entry, key);
  if (!found || (found.kind() != CFG_STRING && found.kind() != CFG_REFERENCE)) return false;
  const cfg_value value = found.value();
  out = static_cast<char>('0' + value.kind);
  out.append(value.data, value.length);
  return true;
}

// Brings an index up to the handle's snapshot from the commit log. False when it must be built anew.
bool follow(Store &store, SearchIndex &index, const std::string &key, const std::string &path,
            std::uint32_t list) {
  const std::uint64_t now = store.snapshot->revision();
  if (index.revision() == now) return true;
  const std::uint64_t kept = store.snapshot->oldest_log();
  if (index.revision() > now || kept == 0 || kept > index.revision() + 1) return false;
  LoggedCommit commit;
  for (std::uint64_t revision = index.revision() + 1; revision <= now; ++revision) {
    if (!decode_commit(store.snapshot->log(revision), commit)) return false;
    for (const LoggedChange &change : commit.changes) {
      if (path.starts_with(change.path)) return false;  // the collection itself was replaced
      if (!change.path.starts_with(path) || change.path[path.size()] != '[') continue;
      const auto number = static_cast<std::uint32_t>(
          std::strtoul(std::string(change.path.substr(path.size() + 1)).c_str(), nullptr, 10));
      std::string value;
      const Found entry{nullptr, packed_record(store.snapshot->get(make_key(list, number)).bytes)};
      if (entry && indexed_value(store, key, entry, value)) {
        index.set(number, std::move(value));
      } else {
        index.drop(number);
      }
    }
  }
  index.reached(now);
  return true;
}

void build(Store &store, SearchIndex &index, const std::string &key, std::uint32_t list) {
  index.start();
  const auto cursor = store.snapshot->cursor();
  std::string value;
  for (bool more = cursor->seek(make_key(list, 1)); more && space_of(cursor->key()) == list;
       more = cursor->next()) {
    const Found entry{nullptr, packed_record(cursor->value().bytes)};
    if (entry && indexed_value(store, key, entry, value)) index.set(item_of(cursor->key()), value);
  }
  index.reached(store.snapshot->revision());
}

// The index that answers a leaf, when there is one by now: a question that comes once is not worth an index.
SearchIndex *index_for(Store &store, const cfg_condition &leaf, const Head &list, std::uint32_t distant) {
  const std::string path = path_of(&list);
  SearchIndex &index = store.indexes[std::to_string(distant) + ' ' + leaf.key];
  if (!index.built() && index.asked() < 2) return nullptr;
  if (!index.built() || !follow(store, index, leaf.key, path, distant))
    build(store, index, leaf.key, distant);
  return &index;
}

bool removed(const Store &store, std::uint32_t distant, std::uint32_t number) {
  if (store.edit == nullptr) return false;
  const auto changes = store.edit->lists.find(distant);
  return changes != store.edit->lists.end() && changes->second.node->has_removed(number);
}

// Entries that an index names, and those that the edit has opened or added, which no index knows.
void search_by_index(Store &store, const SearchIndex &index, const cfg_condition &leaf,
                     const cfg_condition &condition, Head *list, std::uint32_t distant,
                     std::vector<Head *> &result) {
  std::map<std::uint32_t, Head *> found;
  const char kind =
      static_cast<char>('0' + (leaf.kind == cfg_condition::Kind::reference ? CFG_REFERENCE : CFG_STRING));
  if (const auto *numbers = index.matches(kind + leaf.value)) {
    for (const std::uint32_t number : *numbers) {
      if (removed(store, distant, number)) continue;
      Head *head = entry_of(list, number);
      if (head != nullptr && holds_for(store, condition, {head->node, head->stored}))
        found.emplace(number, head);
    }
  }
  if (store.edit != nullptr) {
    for (const auto &[key, record] : store.edit->records) {
      if (space_of(key) == distant && in_place(record) && holds_for(store, condition, {record.root, {}})) {
        found.emplace(item_of(key), record.head);
      }
    }
  }
  for (const auto &[number, head] : found) result.push_back(head);
  if (store.edit == nullptr) return;
  if (const auto changes = store.edit->lists.find(distant); changes != store.edit->lists.end()) {
    for (Node *entry : changes->second.node->added) {
      if (holds_for(store, condition, {entry, {}})) result.push_back(entry->head);
    }
  }
}

Head *search(Store &store, const char *collection, const cfg_condition &condition) {
  Head *list = list_by_front(store, collection);
  if (list == nullptr || list->kind != CFG_LIST) {
    store.fail(CFG_E_NOT_FOUND, "there is no collection \"%.200s\"", collection);
    return nullptr;
  }
  const ListView view(list);
  if (!view) {
    store.fail(CFG_E_CORRUPT, "the list \"%s\" is damaged", list->id());
    return nullptr;
  }
  std::vector<Head *> result;
  const cfg_condition *leaf = view.distant() == 0 ? nullptr : index_leaf(condition);
  const SearchIndex *index = leaf == nullptr ? nullptr : index_for(store, *leaf, *list, view.distant());
  if (index != nullptr) {
    search_by_index(store, *index, *leaf, condition, list, view.distant(), result);
  } else {
    std::vector<std::pair<std::uint32_t, Node *>> hits;
    view.each([&](std::uint32_t number, const Found &entry) {
      if (holds_for(store, condition, entry)) hits.emplace_back(number, entry.node);
      return true;
    });
    for (const auto &[number, node] : hits) {
      Head *head = number == 0 ? node->head : entry_of(list, number);
      if (head != nullptr) result.push_back(head);
    }
  }
  return result_head(store, std::move(result));
}

}  // namespace
}  // namespace twcfg

cfg_elem *cfg_search(cfg *store, const char *collection, const cfg_condition *condition) noexcept {
  using namespace twcfg;
  if (!given(store, collection, condition)) return nullptr;
  return guarded(store, static_cast<cfg_elem *>(nullptr), [&]() -> cfg_elem * {
    if (!store->reading()) return nullptr;
    Head *head = search(*store, collection, *condition);
    return head == nullptr ? nullptr : head->elem();
  });
}

int cfg_condition_holds(cfg *store, cfg_elem *elem, const cfg_condition *condition) noexcept {
  using namespace twcfg;
  if (!given(store, elem, condition)) return 0;
  return guarded(store, 0, [&] {
    if (!store->reading()) return 0;
    Head *head = checked(store, elem);
    return head != nullptr && holds_for(*store, *condition, {head->node, head->stored}) ? 1 : 0;
  });
}
