#include "packer.hpp"

#include <algorithm>

#include "calls.hpp"
#include "id_text.hpp"

namespace twcfg {
namespace {

std::uint32_t number_of(const Node *entry) { return entry->number != 0 ? entry->number : entry->assigned; }

}  // namespace

std::string list_name(const std::string &prefix, std::string_view key) {
  return prefix + (prefix.empty() ? "" : "_") + flatten(escape_key(key));
}

void named_lists(const Node *node, const std::string &prefix, std::vector<NamedList> &out) {
  for (const MapItem &item : static_cast<const MapNode *>(node)->items) {
    if (item.node == nullptr || item.node->kind > CFG_LIST) continue;
    std::string name = list_name(prefix, item.key->text);
    if (item.node->kind == CFG_LIST) {
      out.push_back({std::move(name), static_cast<const ListNode *>(item.node)});
    } else {
      named_lists(item.node, name, out);
    }
  }
}

std::string Packer::pack(const Node *root) {
  if (!pack(root, false) && !pack(root, true)) return {};
  return std::move(out_);
}

bool Packer::pack(const Node *root, bool wide) {
  out_.clear();
  inner_.clear();
  overflow_ = false;
  width_ = wide ? 4 : 2;
  put(kRecordFormat);
  put(static_cast<std::uint8_t>(wide ? 1 : 0));
  node(root);
  return !overflow_ && out_.size() <= (wide ? kMaxRecord : 0xffffu);
}

void Packer::patch(std::size_t slot, std::size_t offset) {
  if (width_ == 2 && offset > 0xffff) overflow_ = true;
  const auto value = static_cast<std::uint32_t>(offset);
  std::copy_n(reinterpret_cast<const char *>(&value), width_,
              out_.begin() + static_cast<std::ptrdiff_t>(slot));
}

void Packer::bytes(std::uint8_t tag, std::size_t length_bytes, std::string_view data) {
  put(tag);
  const auto length = static_cast<std::uint32_t>(data.size());
  out_.append(reinterpret_cast<const char *>(&length), length_bytes);
  out_ += data;
  out_ += '\0';
}

void Packer::node(const Node *node) {
  if (overflow_) return;
  if (node->kind == CFG_MAP) return map(*static_cast<const MapNode *>(node));
  if (node->kind == CFG_LIST) return list(*static_cast<const ListNode *>(node));
  const auto &scalar = *static_cast<const ScalarNode *>(node);
  switch (scalar.kind) {
    case CFG_STRING:
      if (scalar.data.size() <= 0xffff) return bytes(kTagString, 2, scalar.data);
      return bytes(kTagLongString, 4, scalar.data);
    case CFG_REFERENCE: {
      // References to elements that this or an earlier commit made are kept under their final IDs.
      std::string final;
      if (scalar.data.starts_with('{')) {
        if (Head *target = head_by_id(plan_.store_, scalar.data)) {
          final = target->born ? plan_.final_id(target->node) : present_id(target);
        }
      }
      return bytes(kTagReference, 2, final.empty() ? scalar.data : std::string_view(final));
    }
    case CFG_INT:
      put(static_cast<std::uint8_t>(kTagInt));
      return put(scalar.value);
    case CFG_BOOL:
      return put(static_cast<std::uint8_t>(scalar.value != 0 ? kTagTrue : kTagFalse));
    default:
      return bytes(kTagBlob, 4, scalar.data);
  }
}

void Packer::map(const MapNode &map) {
  std::vector<const MapItem *> items;
  items.reserve(map.items.size());
  for (const MapItem &item : map.items) {
    if (item.node != nullptr) items.push_back(&item);
  }
  std::sort(items.begin(), items.end(),
            [](const MapItem *left, const MapItem *right) { return left->key->text < right->key->text; });
  std::vector<const KeyName *> keys;
  keys.reserve(items.size());
  for (const MapItem *item : items) keys.push_back(item->key);

  const std::uint32_t shape = plan_.shape_of(keys);
  const bool spelled = shape >= kMaxShapes;
  std::string retired_table;
  if (map.owner != nullptr) retired_table = plan_.retired_table(map);
  const auto flag = static_cast<std::uint8_t>(retired_table.empty() ? 0 : kTagRetired);
  put(static_cast<std::uint8_t>((spelled ? kTagSpelled : kTagMap) | flag));
  put(spelled ? static_cast<std::uint32_t>(items.size()) : shape);
  std::size_t slot = out_.size();
  const std::size_t slots = items.size() * (spelled ? 2 : 1) + (flag != 0 ? 1 : 0);
  out_.append(slots * width_, '\0');
  for (const MapItem *item : items) {
    if (spelled) {
      patch(slot, out_.size());
      slot += width_;
      put(static_cast<std::uint8_t>(item->key->text.size()));
      out_ += item->key->text;
    }
    patch(slot, out_.size());
    slot += width_;
    node(item->node);
  }
  if (flag != 0) {
    patch(slot, out_.size());
    out_ += retired_table;
  }
}

void Packer::list(const ListNode &list) {
  const std::uint32_t distant = list.distant != 0 ? list.distant : list.placed;
  if (distant != 0) {
    put(static_cast<std::uint8_t>(kTagDistant));
    return put(distant);
  }
  const std::size_t begin = out_.size();
  const std::size_t count = list.entries.size() + list.added.size() + list.future.size();
  put(static_cast<std::uint8_t>(kTagList));
  put(list.next_after);
  put(static_cast<std::uint32_t>(count));
  std::size_t slot = out_.size();
  out_.append(count * (4 + width_), '\0');
  for (const auto *entries : {&list.entries, &list.added, &list.future}) {
    for (const Node *entry : *entries) {
      const std::uint32_t number = number_of(entry);
      std::copy_n(reinterpret_cast<const char *>(&number), 4,
                  out_.begin() + static_cast<std::ptrdiff_t>(slot));
      patch(slot + 4, out_.size());
      slot += 4 + width_;
      node(entry);
    }
  }
  if (count > 0) inner_.push_back({const_cast<ListNode *>(&list), out_.size() - begin});
}

}  // namespace twcfg
