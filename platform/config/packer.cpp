#include "packer.hpp"

#include "id_text.hpp"

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
  inner_.clear();
  out_.begin(wide);
  node(root);
  return !out_.overflow() && out_.size() <= (wide ? kMaxRecord : 0xffffu);
}

void Packer::node(const Node *node) {
  if (out_.overflow()) return;
  if (node->kind == CFG_MAP) return map(*static_cast<const MapNode *>(node));
  if (node->kind == CFG_LIST) return list(*static_cast<const ListNode *>(node));
  const auto &scalar = *static_cast<const ScalarNode *>(node);
  switch (scalar.kind) {
    case CFG_STRING:
      return out_.string(scalar.data);
    case CFG_REFERENCE: {
      const std::string final =
          is_provisional(scalar.data) ? plan_.final_reference(scalar.data) : std::string();
      return out_.reference(final.empty() ? scalar.data : std::string_view(final));
    }
    case CFG_INT:
      return out_.integer(scalar.value);
    case CFG_BOOL:
      return out_.boolean(scalar.value != 0);
    default:
      return out_.blob(scalar.data);
  }
}

// One key of a map, whose offsets stand at `slot`.
void Packer::entry(const MapItem &item, std::size_t slot, bool spelled) {
  if (spelled) {
    out_.point(slot);
    slot += out_.width();
    out_.key(item.key->text);
  }
  out_.point(slot);
  node(item.node);
}

void Packer::map(const MapNode &map) {
  const MapLayout &layout = plan_.layout_of(map);
  const bool spelled = layout.shape >= kMaxShapes;
  const std::string retired_table = plan_.retired_table(map);
  const auto flag = static_cast<std::uint8_t>(retired_table.empty() ? 0 : kTagRetired);
  const auto tag = static_cast<std::uint8_t>((spelled ? kTagSpelled : kTagMap) | flag);
  const auto count = static_cast<std::uint32_t>(layout.sorted.size());
  const std::size_t offsets = count * (spelled ? 2 : 1);
  const std::size_t first = out_.map(tag, spelled ? count : layout.shape, offsets + (flag != 0 ? 1 : 0));
  // What is plain stands in front, close to the offsets, and what is nested behind: a scan reads a few plain
  // values of each record and then touches the record's first lines only.
  for (const bool nested : {false, true}) {
    std::size_t slot = first;
    for (const std::uint16_t index : layout.sorted) {
      const MapItem &item = map.items[index];
      if ((item.node->kind <= CFG_LIST) == nested) entry(item, slot, spelled);
      slot += (spelled ? 2 : 1) * out_.width();
    }
  }
  if (flag != 0) {
    out_.point(first + offsets * out_.width());
    out_.table(retired_table);
  }
}

void Packer::list(const ListNode &list) {
  const std::uint32_t distant = list.distant != 0 ? list.distant : list.placed;
  if (distant != 0) return out_.distant(distant);
  const std::size_t begin = out_.size();
  const std::size_t count = list.entries.size() + list.added.size() + list.future.size();
  std::size_t slot = out_.list(list.next_after, count);
  for (const auto *entries : {&list.entries, &list.added, &list.future}) {
    for (const Node *entry : *entries) {
      slot = out_.entry(slot, number_of(entry));
      out_.point(slot);
      slot += out_.width();
      node(entry);
    }
  }
  if (count > 0) inner_.push_back({const_cast<ListNode *>(&list), out_.size() - begin});
}

}  // namespace twcfg
