// A store handle: the engine, the snapshot it reads, the heads it has given out and the edit in progress.
#pragma once

#include <cstdarg>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include <twconfig.h>

#include "engine/engine.hpp"
#include "engine/fork_epoch.hpp"
#include "head.hpp"
#include "head_table.hpp"
#include "key_name.hpp"
#include "key_space.hpp"
#include "keyset_table.hpp"
#include "limits.hpp"
#include "message.hpp"
#include "node.hpp"
#include "sealed.hpp"
#include "search_index.hpp"
#include "shape.hpp"

namespace twcfg {

// A record that the edit has unpacked.
struct RecordEdit {
  Head *head = nullptr;    // the entry (or root) that the record holds
  std::uint64_t base = 0;  // revision of the stored record that `root` was unpacked from
  Node *root = nullptr;
};

// Changes to a distant list as such: entries that came and went.
struct ListEdit {
  Head *head = nullptr;
  ListNode *node = nullptr;
};

// A change that has lost its place because another commit removed what it was made in. It is kept so that the
// commit finds the conflict and nothing is lost in silence.
struct LostChange {
  std::string path;
  std::uint64_t seen;
};

struct Edit {
  Edit(std::size_t born, std::uint64_t number, KeyNames &names) : seals(number, names), first_born(born) {}
  Nodes nodes;
  Seals seals;
  std::unordered_map<Key, RecordEdit> records;
  std::unordered_map<std::uint32_t, ListEdit> lists;  // by list number
  const std::size_t first_born;                       // of the elements in the handle's `born`
  std::vector<LostChange> lost;
};

// Numbers of a distant list's entries in order, built when an index is first asked for.
struct ListNumbers {
  std::uint64_t revision = 0;  // of the list's head that they reflect
  std::vector<std::uint32_t> numbers;
};

struct SearchResult {
  Head *head = nullptr;
  std::vector<Head *> entries;
  bool idle = false;
};

}  // namespace twcfg

struct cfg {
  std::shared_ptr<twcfg::Engine> engine;
  bool read_only = false;
  std::uint64_t fork_epoch = 0;

  std::unique_ptr<twcfg::Snapshot> snapshot;  // opened by the first call that reads
  std::uint64_t generation = 1;

  twcfg::KeyNames names;
  twcfg::Shapes shapes{names};

  twcfg::Arena head_arena{twcfg::Contents::plain};
  twcfg::Head *root = nullptr;
  twcfg::HeadTable children;        // by holder and step
  twcfg::HeadTable by_id;           // those that were looked up, by the text of their ID
  std::uint64_t expected = 0;       // hash of the ID that cfg_expect() told last
  std::string nonce;                // front of this handle's provisional IDs
  std::vector<twcfg::Head *> born;  // every new element, by the number in its ID
  twcfg::KeysetTable keysets;
  std::unordered_map<std::uint32_t, twcfg::ListNumbers> list_numbers;
  std::unordered_map<std::string, twcfg::SearchIndex> indexes;
  std::vector<std::unique_ptr<twcfg::SearchResult>> results;
  std::vector<twcfg::SearchResult *> idle_results;  // dropped ones, used again by the next searches

  std::string idle_id;  // memory for the IDs that scans put together

  std::unique_ptr<twcfg::Edit> edit;
  std::uint64_t edits = 0;  // begun so far
  twcfg::MessageList messages;

  std::uint64_t committed = 0;  // revision of the last commit made through this handle

  cfg_code error = CFG_OK;
  std::string error_text;

  // Notes a failure; returns 0 so that callers can `return store->fail(...)`.
  int fail(cfg_code code, const char *format, ...) __attribute__((format(printf, 3, 4)));
  int fail(const twcfg::Failure &failure) { return fail(failure.code, "%s", failure.text.c_str()); }

  // False, with the reason noted, in a child of the process that opened the handle.
  bool in_own_process() {
    if (fork_epoch == twcfg::fork_epoch()) return true;
    return fail(CFG_E_FORKED, "the handle belongs to the parent process") != 0;
  }
  // Makes sure that there is a snapshot. False with the reason noted.
  bool reading() { return in_own_process() && (snapshot != nullptr || take_snapshot()); }
  // The same, and that changes are allowed.
  bool writing() { return !read_only ? reading() : refuse_changes(); }
  twcfg::Edit &editing();
  std::unique_ptr<twcfg::Edit> new_edit();
  // Handles of new elements go on as those of the committed ones, or end.
  void drop_edit(bool written = false);
  void drop_results();
  // Replaces the snapshot; every binding is then made anew.
  void move_to(std::unique_ptr<twcfg::Snapshot> newer);

 private:
  bool take_snapshot();
  bool refuse_changes();
};

namespace twcfg {

using Store = ::cfg;

// Runs the body of a C function: what is thrown inside becomes the failure value.
template <class Value, class Body>
Value guarded(Store *store, Value failed, Body &&body) noexcept {
  try {
    return body();
  } catch (const std::bad_alloc &) {
    if (store != nullptr) store->fail(CFG_E_MEMORY, "out of memory");
  } catch (const std::exception &problem) {
    if (store != nullptr) store->fail(CFG_E_LIMIT, "%s", problem.what());
  }
  return failed;
}

// heads.cpp: from handles to elements.

// The head behind a handle, bound to what the element is now; NULL for NULL and for an element that is gone.
// Forwards a committed new element to its committed head.
Head *bound(cfg_elem *elem);
Head *bound(Head *head);
Head *root_head(Store &store);
// The child under a key or with a number; NULL when there is none. `map`, `list` must be bound.
Head *child_of(Head *map, std::string_view key);
Head *entry_of(Head *list, std::uint32_t number);
Head *head_of(Head *holder, Node *node);  // of a node below a bound holder
Head *head_by_id(Store &store, std::string_view id);
inline std::uint64_t hash_of_id(std::string_view id) {
  return std::hash<std::string_view>{}(id);
}  // in `by_id`
// The list whose entries' IDs begin with `front`: "nodes", or "nodes-12_ports" for one inside an entry.
Head *list_by_front(Store &store, std::string_view front);
Head *new_head(Store &store, Node *node);
// The new element that a provisional ID names, as it is, and the keys below it that follow; no element when
// there is none.
struct NewPlace {
  const Node *element = nullptr;
  std::string_view tail;
};
NewPlace new_place(Store &store, std::string_view id);
Head *result_head(Store &store, std::vector<Head *> entries);
Head *holder_of(Head *head);  // bound holder, also of new elements
// Whether an opened record or list is still what its head is bound to; not so when the edit has removed it
// since.
bool in_place(const RecordEdit &record);
bool in_place(std::uint32_t number, const ListEdit &list);
// The list number of a bound list whose entries are records of their own; else 0.
std::uint32_t distant_of(const Head &list);

// Whether a map holds a key, and what it is, without making a head.
struct Found {
  Node *node = nullptr;
  Packed stored;
  explicit operator bool() const { return node != nullptr || stored; }
  cfg_kind kind() const { return node != nullptr ? node->kind : kind_of(stored); }
  cfg_value value() const { return node != nullptr ? value_of(*node) : value_of(stored); }
};
Found find_key(Head *map, std::string_view key);
// What the IDs of the committed entries of the list under a key begin with; their number follows. Takes the
// memory of `front`, whose text goes.
std::string entry_id_front(const Head &map, std::string_view key, std::string front);
// The element at a dotted path below a map, without making heads; crosses no list.
Found find_path(Store &store, const Found &map, std::string_view path);
Head *head_by_path(Head *map, std::string_view path);

// editing.cpp: opening for change. All take bound heads; a NULL or false result has its reason noted in the
// handle.
MapNode *edit_map(Head *map);
// The list itself when it stands in a record, else the changes to a distant list.
ListNode *edit_list(Head *list);
// Opens the record of any element and gives its node.
Node *open_node(Head *head);
// Sets or, with NULL, deletes a key.
bool set_item(Head *map, std::string_view key, Node *value);
// Whether records may be nested as deep as they would with something of this height below the holder.
bool fits_below(Head *holder, int height);
// Attaches an unattached new element.
bool attach_item(Head *map, std::string_view key, Node *value);
bool append_entry(Head *list, Node *entry, bool pending);
bool clear_list(Head *list);
bool remove_element(Head *head);
bool replace_scalar(Head *head, std::string_view data);

}  // namespace twcfg
