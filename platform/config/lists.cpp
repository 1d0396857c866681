#include <algorithm>

#include "list_view.hpp"
#include "store.hpp"

namespace twcfg {

const std::vector<std::uint32_t> *numbers_of(Store &store, std::uint32_t list) {
  const Stored stored = store.snapshot->get(head_key(list));
  ListHead head;
  if (!stored || !read_list_head(stored.bytes, head)) return nullptr;
  ListNumbers &known = store.list_numbers[list];
  if (known.revision == stored.revision) return &known.numbers;
  const auto cursor = store.snapshot->cursor();
  const auto read_from = [&](std::uint32_t number) {
    for (bool more = cursor->seek(make_key(list, number)); more && space_of(cursor->key()) == list;
         more = cursor->next()) {
      known.numbers.push_back(item_of(cursor->key()));
    }
  };
  known.revision = 0;
  // Numbers only grow, so new entries stand behind the known ones; a count that does not fit tells of
  // removals.
  read_from(known.numbers.empty() ? 1 : known.numbers.back() + 1);
  if (known.numbers.size() != head.count) {
    known.numbers.clear();
    read_from(1);
  }
  known.revision = stored.revision;
  return &known.numbers;
}

ListView::ListView(Store &store, const Found &list) : store_(store), stored_(list.stored) {
  if (list.kind() != CFG_LIST) return;
  if (ListNode *node = as_list(list.node)) {
    distant_ = node->distant;
    if (distant_ == 0) {
      edited_ = node;
      size_ = static_cast<std::uint32_t>(node->entries.size() + node->added.size());
      sound_ = true;
      return;
    }
  } else {
    distant_ = distant_list(stored_);
  }
  if (distant_ == 0) {
    const PackedList packed(stored_);
    sound_ = static_cast<bool>(packed);
    size_ = packed.count();
    return;
  }
  if (store_.edit != nullptr) {
    const auto changes = store_.edit->lists.find(distant_);
    if (changes != store_.edit->lists.end()) edited_ = changes->second.node;
  }
  if (!read_list_head(store_.snapshot->get(head_key(distant_)).bytes, stored_head_)) return;
  sound_ = true;
  size_ = stored_head_.count;
  if (edited_ != nullptr) {
    size_ -= static_cast<std::uint32_t>(edited_->removed.size());
    size_ += static_cast<std::uint32_t>(edited_->added.size());
  }
}

Head *ListView::at(std::uint32_t index) {
  if (!sound_ || index >= size_) return nullptr;
  const std::size_t added = edited_ == nullptr ? 0 : edited_->added.size();
  const std::uint32_t committed = size_ - static_cast<std::uint32_t>(added);
  if (index >= committed) return bound(edited_->added[index - committed]->head);
  if (distant_ == 0) {
    if (edited_ != nullptr) return head_of(list_, edited_->entries[index]);
    return entry_of(list_, PackedList(stored_).number(index));
  }
  const std::vector<std::uint32_t> *numbers = numbers_of(store_, distant_);
  if (numbers == nullptr) return nullptr;
  std::size_t where = index;
  if (edited_ != nullptr) {
    for (const ListNode::Removed &gone : edited_->removed) {
      const auto at = std::lower_bound(numbers->begin(), numbers->end(), gone.number) - numbers->begin();
      if (static_cast<std::size_t>(at) > where) break;
      ++where;
    }
  }
  return where < numbers->size() ? entry_of(list_, (*numbers)[where]) : nullptr;
}

Head *entry_at(Head *list, std::uint32_t index) {
  if (list->result == nullptr) return ListView(list).at(index);
  const auto &entries = list->result->entries;
  return index < entries.size() ? bound(entries[index]) : nullptr;
}

}  // namespace twcfg
