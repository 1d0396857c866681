#include "packer.hpp"

#include <algorithm>
#include <cstring>

#include "calls.hpp"

namespace twcfg {
namespace {

std::uint32_t number_of(const Node *entry) { return entry->number != 0 ? entry->number : entry->assigned; }

}  // namespace

std::string list_name(const std::string &prefix, const KeyName &key) {
  return prefix.empty() ? key.flat : prefix + '_' + key.flat;
}

void named_lists(const Node *node, const std::string &prefix, std::vector<NamedList> &out) {
  for (const MapItem &item : static_cast<const MapNode *>(node)->items) {
    if (item.node == nullptr || item.node->kind > CFG_LIST) continue;
    std::string name = list_name(prefix, *item.key);
    if (item.node->kind == CFG_LIST) {
      out.push_back({std::move(name), static_cast<const ListNode *>(item.node)});
    } else {
      named_lists(item.node, name, out);
    }
  }
}

bool Packer::pack(const Node *root) { return pack(root, false) || pack(root, true); }

bool Packer::pack(const Node *root, bool wide) {
  out_.begin();
  inner_.clear();
  overflow_ = false;
  width_ = wide ? 4 : 2;
  out_.put(kRecordFormat);
  out_.put(static_cast<std::uint8_t>(wide ? 1 : 0));
  node(root);
  return !overflow_ && out_.size() <= (wide ? kMaxRecord : 0xffffu);
}

// Room for offsets that are patched in later; gives where it begins.
std::size_t Packer::slots(std::size_t bytes) {
  out_.extend(bytes);
  return out_.size() - bytes;
}

void Packer::patch(std::size_t slot, std::size_t offset) {
  if (width_ == 4) return out_.set(slot, static_cast<std::uint32_t>(offset));
  if (offset > 0xffff) overflow_ = true;
  out_.set(slot, static_cast<std::uint16_t>(offset));
}

template <class Length>
void Packer::bytes(Tag tag, std::string_view data) {
  const auto length = static_cast<Length>(data.size());
  char *to = out_.extend(1 + sizeof length + data.size() + 1);
  *to = static_cast<char>(tag);
  std::memcpy(to + 1, &length, sizeof length);
  *std::copy(data.begin(), data.end(), to + 1 + sizeof length) = '\0';
}

void Packer::node(const Node *node) {
  if (overflow_) return;
  if (node->kind == CFG_MAP) return map(*static_cast<const MapNode *>(node));
  if (node->kind == CFG_LIST) return list(*static_cast<const ListNode *>(node));
  const auto &scalar = *static_cast<const ScalarNode *>(node);
  switch (scalar.kind) {
    case CFG_STRING:
      if (scalar.data.size() <= 0xffff) return bytes<std::uint16_t>(kTagString, scalar.data);
      return bytes<std::uint32_t>(kTagLongString, scalar.data);
    case CFG_REFERENCE: {
      // References to elements that this or an earlier commit made are kept under their final IDs.
      std::string final;
      if (scalar.data.starts_with('{')) {
        if (Head *target = head_by_id(plan_.store_, scalar.data)) {
          final = target->born ? plan_.final_id(target->node) : present_id(target);
        }
      }
      return bytes<std::uint16_t>(kTagReference, final.empty() ? scalar.data : std::string_view(final));
    }
    case CFG_INT:
      out_.put(kTagInt);
      return out_.put(scalar.value);
    case CFG_BOOL:
      return out_.put(scalar.value != 0 ? kTagTrue : kTagFalse);
    default:
      return bytes<std::uint32_t>(kTagBlob, scalar.data);
  }
}

// One key of a map, whose offsets stand at `slot`.
void Packer::entry(const MapItem &item, std::size_t slot, bool spelled) {
  if (spelled) {
    patch(slot, out_.size());
    slot += width_;
    out_.put(static_cast<std::uint8_t>(item.key->text.size()));
    out_.append(item.key->text);
  }
  patch(slot, out_.size());
  node(item.node);
}

void Packer::map(const MapNode &map) {
  const MapLayout &layout = plan_.layout_of(map);
  const bool spelled = layout.shape >= kMaxShapes;
  const std::string retired_table = plan_.retired_table(map);
  const auto flag = static_cast<std::uint8_t>(retired_table.empty() ? 0 : kTagRetired);
  out_.put(static_cast<std::uint8_t>((spelled ? kTagSpelled : kTagMap) | flag));
  out_.put(spelled ? static_cast<std::uint32_t>(layout.sorted.size()) : layout.shape);
  const std::size_t step = (spelled ? 2 : 1) * width_;
  const std::size_t first = slots(layout.sorted.size() * step + (flag != 0 ? width_ : 0));
  // What is plain stands in front, close to the offsets, and what is nested behind: a scan reads a few plain
  // values of each record and then touches the record's first lines only.
  for (const bool nested : {false, true}) {
    std::size_t slot = first;
    for (const std::uint16_t index : layout.sorted) {
      const MapItem &item = map.items[index];
      if ((item.node->kind <= CFG_LIST) == nested) entry(item, slot, spelled);
      slot += step;
    }
  }
  if (flag != 0) {
    patch(first + layout.sorted.size() * step, out_.size());
    out_.append(retired_table);
  }
}

void Packer::list(const ListNode &list) {
  const std::uint32_t distant = list.distant != 0 ? list.distant : list.placed;
  if (distant != 0) {
    out_.put(kTagDistant);
    return out_.put(distant);
  }
  const std::size_t begin = out_.size();
  const std::size_t count = list.entries.size() + list.added.size() + list.future.size();
  out_.put(kTagList);
  out_.put(list.next_after);
  out_.put(static_cast<std::uint32_t>(count));
  std::size_t slot = slots(count * (4 + width_));
  for (const auto *entries : {&list.entries, &list.added, &list.future}) {
    for (const Node *entry : *entries) {
      out_.set(slot, number_of(entry));
      patch(slot + 4, out_.size());
      slot += 4 + width_;
      node(entry);
    }
  }
  if (count > 0) inner_.push_back({const_cast<ListNode *>(&list), out_.size() - begin});
}

}  // namespace twcfg
