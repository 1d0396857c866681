// A list as its readers see it: the committed entries that are still there, then the ones added in this edit.
#pragma once

#include "store.hpp"

namespace twcfg {

class ListView {
 public:
  // `list` must be bound.
  explicit ListView(Head *list) : ListView(*list->store, {list->node, list->stored}) { list_ = list; }
  // A list without a head, for each() alone.
  ListView(Store &store, const Found &list);
  explicit operator bool() const { return sound_; }
  std::uint32_t size() const { return size_; }
  Head *at(std::uint32_t index);
  // Calls visit(number, found) for each entry in order until it returns false; new entries have number 0.
  // Makes no heads. The visitor must not change the store. The bytes of a stored record are announced to
  // ahead(bytes) one entry before it is visited.
  template <class Visit, class Ahead>
  void each(Visit &&visit, Ahead &&ahead) const;
  template <class Visit>
  void each(Visit &&visit) const {
    each(visit, [](std::string_view) {});
  }
  // The list number of a distant list, else 0.
  std::uint32_t distant() const { return distant_; }

 private:
  Store &store_;
  Packed stored_;
  Head *list_ = nullptr;
  ListNode *edited_ = nullptr;  // the list in memory, or the changes to a distant list
  std::uint32_t distant_ = 0;
  ListHead stored_head_;
  std::uint32_t size_ = 0;
  bool sound_ = false;
};

// The entry of a list, or of a search's result, at an index; NULL when none is there or it is gone. `list`
// must be bound.
Head *entry_at(Head *list, std::uint32_t index);
// The numbers of the committed entries of a distant list, in order; NULL when its head is missing.
const std::vector<std::uint32_t> *numbers_of(Store &store, std::uint32_t list);

template <class Visit, class Ahead>
void ListView::each(Visit &&visit, Ahead &&ahead) const {
  if (distant_ != 0) {
    const auto cursor = store_.snapshot->cursor();
    const bool opened = store_.edit != nullptr && !store_.edit->records.empty();
    bool more = cursor->seek(make_key(distant_, 1)) && space_of(cursor->key()) == distant_;
    std::string_view bytes = more ? cursor->value().bytes : std::string_view();
    while (more) {
      const Key key = cursor->key();
      Found found{nullptr, packed_record(bytes)};
      // Records are cold memory: the next one is on its way while this one is visited.
      more = cursor->next() && space_of(cursor->key()) == distant_;
      if (more) {
        bytes = cursor->value().bytes;
        ahead(bytes);
      }
      if (edited_ != nullptr && edited_->has_removed(item_of(key))) continue;
      if (opened) {
        const auto record = store_.edit->records.find(key);
        if (record != store_.edit->records.end()) found = {record->second.root, {}};
      }
      if (!visit(item_of(key), found)) return;
    }
  } else if (edited_ != nullptr) {
    for (Node *entry : edited_->entries) {
      if (!visit(entry->number, Found{entry, {}})) return;
    }
  } else {
    const PackedList packed(stored_);
    for (std::uint32_t i = 0; packed && i < packed.count(); ++i) {
      if (!visit(packed.number(i), Found{nullptr, packed.child(i)})) return;
    }
  }
  if (edited_ == nullptr) return;
  for (Node *entry : edited_->added) {
    if (!visit(0u, Found{entry, {}})) return;
  }
}

}  // namespace twcfg
