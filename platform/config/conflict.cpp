#include "conflict.hpp"

#include <map>
#include <utility>

#include "change_walk.hpp"
#include "commit_log.hpp"
#include "id_text.hpp"

namespace twcfg {
namespace {

struct Ours {
  std::uint64_t seen;
  bool appends_only;
};
using OurChanges = std::map<std::string, Ours, std::less<>>;

OurChanges our_changes(Store &store) {
  OurChanges ours;
  const std::uint64_t now = store.snapshot->revision();
  walk_changes(store, [&](const Change &change) {
    const bool append = change.kind == Change::kAppended;
    if (const auto known = ours.find(change.path); known == ours.end()) {
      ours.emplace(change.path, Ours{append ? now : change.seen, append});
    } else if (!append) {
      known->second = {change.seen, false};
    }
  });
  for (const LostChange &lost : store.edit->lost) ours.insert_or_assign(lost.path, Ours{lost.seen, false});
  return ours;
}

bool is_step(char c) { return c == '.' || c == '['; }

// Our change that a change at `theirs`, made in `revision`, gets in the way of; end() when there is none.
OurChanges::const_iterator hit(const OurChanges &ours, std::string_view theirs, std::uint64_t revision) {
  // At their element or below it: what ours was written in or to is not what it was.
  for (auto at = ours.lower_bound(theirs); at != ours.end() && at->first.starts_with(theirs); ++at) {
    const bool below =
        at->first.size() == theirs.size() || theirs.empty() || is_step(at->first[theirs.size()]);
    if (below && at->second.seen < revision) return at;
  }
  // Above their element: ours replaces or removes what they changed inside it. Appending disturbs nothing
  // inside.
  for (std::size_t end = 1; end < theirs.size(); ++end) {
    if (!is_step(theirs[end])) continue;
    const auto at = ours.find(theirs.substr(0, end));
    if (at != ours.end() && !at->second.appends_only && at->second.seen < revision) return at;
  }
  return ours.end();
}

// Puts the changes of an unpacked node onto a newer version of the same element.
class Grafter {
 public:
  explicit Grafter(Store &store) : store_(store) {}

  void graft(Node *ours, Node *theirs, const std::string &path) {
    if (theirs == nullptr || theirs->kind != ours->kind) {
      lose(ours, path);
    } else if (MapNode *map = as_map(ours)) {
      graft_map(*map, *as_map(theirs), path);
    } else if (ListNode *list = as_list(ours)) {
      graft_list(*list, *as_list(theirs), path);
    } else if (ours->changed != kClean) {
      as_scalar(theirs)->data = as_scalar(ours)->data;
      theirs->changed = ours->changed;
    }
  }

  void lose(const Node *node, const std::string &path) {
    walk_node(store_, node, path, {}, [&](const Change &change) { lose(change.path, change.seen); });
  }
  void lose(std::string_view path, std::uint64_t seen) {
    store_.edit->lost.push_back({std::string(path), seen});
  }

  // Moves the changes to a list as such: what was removed from it and what was added.
  void graft_entries(ListNode &ours, ListNode &theirs, const std::string &path) {
    for (auto [from, to] : {std::pair{&ours.added, &theirs.added}, std::pair{&ours.future, &theirs.future}}) {
      for (Node *entry : *from) {
        entry->parent = &theirs;
        to->push_back(entry);
      }
    }
    for (const ListNode::Removed &gone : ours.removed) {
      if (!remove(theirs, gone)) lose(entry_path(path, gone.number), gone.changed);
    }
  }

 private:
  void graft_map(MapNode &ours, MapNode &theirs, const std::string &path) {
    for (MapItem &item : ours.items) {
      MapItem *other = theirs.find(item.key);
      if (item.changed == kClean) {
        if (item.node != nullptr && item.node->kind <= CFG_LIST && touched(item.node)) {
          graft(item.node, other == nullptr ? nullptr : other->node, key_path(path, *item.key));
        }
        continue;
      }
      if (item.node != nullptr) item.node->parent = &theirs;
      if (other != nullptr) {
        theirs.put(*other, item.node);
        other->changed = item.changed;
      } else if (item.node != nullptr) {
        theirs.add({item.key, item.node, nullptr, item.changed});
      } else {
        lose(key_path(path, *item.key), item.changed);
      }
    }
  }

  void graft_list(ListNode &ours, ListNode &theirs, const std::string &path) {
    ListNode *target = &theirs;
    Head *moved = nullptr;  // the list's head when its entries have become records of their own
    if (theirs.distant != 0) {
      if (ours.distant != 0) return;
      moved = head_by_id(store_, path_to_id(path));
      target = moved == nullptr ? nullptr : edit_list(moved);
      if (target == nullptr) return lose(&ours, path);
    }
    graft_entries(ours, *target, path);
    for (Node *entry : ours.entries) {
      if (entry->changed == kClean && !touched(entry)) continue;
      graft(entry, moved != nullptr ? opened_entry(moved, entry->number) : inner_entry(theirs, entry->number),
            entry_path(path, entry->number));
    }
  }

  static Node *inner_entry(const ListNode &list, std::uint32_t number) {
    for (Node *entry : list.entries) {
      if (entry->number == number) return entry;
    }
    return nullptr;
  }

  static Node *opened_entry(Head *list, std::uint32_t number) {
    Head *entry = entry_of(list, number);
    return entry == nullptr ? nullptr : open_node(entry);
  }

  bool remove(ListNode &theirs, const ListNode::Removed &gone) {
    if (theirs.distant != 0) {
      if (!store_.snapshot->get(make_key(theirs.distant, gone.number))) return false;
    } else {
      Node *entry = inner_entry(theirs, gone.number);
      if (entry == nullptr) return false;
      std::erase(theirs.entries, entry);
    }
    theirs.remove_number(gone.number, gone.changed);
    return true;
  }

  Store &store_;
};

}  // namespace

bool free_of_conflicts(Store &store, Snapshot &newest) {
  const OurChanges ours = our_changes(store);
  std::uint64_t oldest_seen = newest.revision();
  for (const auto &[path, change] : ours) oldest_seen = std::min(oldest_seen, change.seen);
  const std::uint64_t kept = newest.oldest_log();
  if (oldest_seen < newest.revision() && (kept == 0 || kept > oldest_seen + 1)) {
    return store.fail(
               CFG_E_CONFLICT,
               "conflict: the edit is based on revision %llu, which is too old to be checked against the log",
               static_cast<unsigned long long>(oldest_seen)) != 0;
  }
  LoggedCommit commit;
  for (std::uint64_t revision = oldest_seen + 1; revision <= newest.revision(); ++revision) {
    if (!decode_commit(newest.log(revision), commit)) {
      return store.fail(CFG_E_CORRUPT, "the log of revision %llu is damaged",
                        static_cast<unsigned long long>(revision)) != 0;
    }
    for (const LoggedChange &change : commit.changes) {
      const auto at = hit(ours, change.path, revision);
      if (at == ours.end()) continue;
      return store.fail(
                 CFG_E_CONFLICT,
                 "conflict on \"%s\": read at revision %llu, changed at revision %llu by \"%.*s\" (%.*s)",
                 path_to_id(at->first).c_str(), static_cast<unsigned long long>(at->second.seen),
                 static_cast<unsigned long long>(revision), static_cast<int>(commit.who.size()),
                 commit.who.data(), static_cast<int>(commit.why.size()), commit.why.data()) != 0;
    }
  }
  if (store.edit->lost.empty()) return true;
  return store.fail(CFG_E_CONFLICT, "conflict on \"%s\": it was removed since revision %llu",
                    path_to_id(store.edit->lost.front().path).c_str(),
                    static_cast<unsigned long long>(store.edit->lost.front().seen)) != 0;
}

namespace {

// Takes a rebase back that could not be finished. Grafting leaves the nodes of the edit as they are, but for
// their way up to what they were grafted to.
class RebaseGuard {
 public:
  RebaseGuard(Store &store, std::unique_ptr<Snapshot> newer)
      : store_(store), records_(store.edit->records), lists_(store.edit->lists), lost_(store.edit->lost) {
    before_ = std::exchange(store.snapshot, std::move(newer));
    ++store.generation;
  }
  ~RebaseGuard() {
    if (before_ == nullptr) return;
    store_.edit->records.swap(records_);
    store_.edit->lists.swap(lists_);
    store_.edit->lost.swap(lost_);
    for (const auto &[key, record] : store_.edit->records) lead_back(record.root);
    for (const auto &[number, list] : store_.edit->lists) lead_back(list.node);
    store_.move_to(std::move(before_));
  }
  RebaseGuard(const RebaseGuard &) = delete;
  RebaseGuard &operator=(const RebaseGuard &) = delete;

  void done() { before_ = nullptr; }

 private:
  static void lead_back(Node *node) {
    if (MapNode *map = as_map(node)) {
      for (const MapItem &item : map->items) lead_back(item.node, node);
    } else if (ListNode *list = as_list(node)) {
      for (auto *entries : {&list->entries, &list->added, &list->future}) {
        for (Node *entry : *entries) lead_back(entry, node);
      }
    }
  }
  static void lead_back(Node *child, Node *parent) {
    if (child == nullptr) return;
    child->parent = parent;
    lead_back(child);
  }

  Store &store_;
  std::unique_ptr<Snapshot> before_;
  decltype(Edit::records) records_;
  decltype(Edit::lists) lists_;
  decltype(Edit::lost) lost_;
};

void rebase_edit(Store &store) {
  Edit &edit = *store.edit;
  Grafter grafter(store);

  // The heads are looked up before anything is bound anew, because binding follows what is in the edit.
  std::vector<Key> keys;
  keys.reserve(edit.records.size());
  for (const auto &[key, record] : edit.records) keys.push_back(key);
  std::vector<std::uint32_t> lists;
  lists.reserve(edit.lists.size());
  for (const auto &[number, list] : edit.lists) lists.push_back(number);

  for (const std::uint32_t number : lists) {
    const ListEdit list = edit.lists[number];
    const std::string path = path_of(list.head);
    if (store.snapshot->get(head_key(number))) {
      ListNode *fresh = edit.nodes.list();
      fresh->distant = number;
      fresh->head = list.head;
      grafter.graft_entries(*list.node, *fresh, path);
      edit.lists[number].node = fresh;
    } else {
      for (const ListNode::Removed &gone : list.node->removed) {
        grafter.lose(entry_path(path, gone.number), gone.changed);
      }
      if (!list.node->added.empty() || !list.node->future.empty()) grafter.lose(path, 0);
      edit.lists.erase(number);
    }
  }
  for (const Key key : keys) {
    const RecordEdit record = edit.records[key];
    const Stored stored = store.snapshot->get(key);
    if (stored.revision == record.base) continue;
    const std::string path = path_of(record.head);
    if (!stored) {
      grafter.lose(record.root, path);
      edit.records.erase(key);
      continue;
    }
    Unpacker unpacker(edit.nodes, store.shapes, store.names, *store.snapshot);
    Node *fresh = unpacker.unpack(packed_record(stored.bytes));
    if (fresh == nullptr) {
      grafter.lose(record.root, path);
      edit.records.erase(key);
      continue;
    }
    fresh->head = record.head;
    fresh->number = record.root->number;
    edit.records[key] = {record.head, stored.revision, fresh};
    ++store.generation;
    grafter.graft(record.root, fresh, path);
  }
  ++store.generation;
}

}  // namespace

void rebase(Store &store, std::unique_ptr<Snapshot> newer) {
  if (store.edit == nullptr) return store.move_to(std::move(newer));
  RebaseGuard guard(store, std::move(newer));
  rebase_edit(store);
  guard.done();
}

}  // namespace twcfg
