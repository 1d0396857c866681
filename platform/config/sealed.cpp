#include "sealed.hpp"

#include <algorithm>

#include "id_text.hpp"
#include "pack.hpp"
#include "store.hpp"

namespace twcfg {
namespace {

// What is larger is kept as nodes, and what comes in more forms: they are looked through for each map.
constexpr std::size_t kMaxSealed = 0x8000;
constexpr std::size_t kMaxForms = 64;

std::string_view data_of(const cfg_content &content) { return {content.data, content.length}; }

template <class Item>
std::span<const Item> kept(Arena &arena, const std::vector<Item> &items) {
  auto *copy = static_cast<Item *>(arena.take(items.size() * sizeof(Item), alignof(Item)));
  std::copy(items.begin(), items.end(), copy);
  return {copy, items.size()};
}

}  // namespace

MapNode *Seals::seal(Store &store, const cfg_content &content) {
  if (content.kind != CFG_MAP) return nullptr;
  marks_.clear();
  links_.clear();
  largest_list_ = 0;
  writer_.begin(false);
  if (!map(store, content, false)) return nullptr;
  // A record beyond its target gives lists away, which is decided when it is packed from nodes.
  if (writer_.size() > kRecordTarget && largest_list_ > kWorthMoving) return nullptr;

  std::size_t opened = writer_.size();
  for (Sealed::Link &link : links_) {
    link.id = notes_.copy(link.id);
    opened += RecordWriter::reference_size(link.id.size());
  }
  if (opened > 0xffff) return nullptr;  // open() could not do it
  MapNode *node = store.editing().nodes.map();
  auto *sealed = new (notes_.take(sizeof(Sealed), alignof(Sealed))) Sealed;
  sealed->marks = kept(notes_, marks_);
  sealed->links = kept(notes_, links_);
  sealed->bytes = records_.keep();
  node->sealed = sealed;
  for (const Sealed::Mark &mark : sealed->marks) used_[mark.shape] = true;
  return node;
}

// `inner` is a map below a key: the lists in it would have to be held against those of its owner by name.
bool Seals::map(Store &store, const cfg_content &content, bool inner) {
  const ContentForm *form = form_of(store, content);
  if (form == nullptr || !form->closed) return false;
  marks_.push_back({static_cast<std::uint32_t>(writer_.size()), form->shape});
  const std::size_t first = writer_.map(kTagMap, numbers_[form->shape], form->places.size());
  for (const ContentForm::Place &place : form->places) {
    const cfg_content &item = content.items[place.item];
    if (inner && item.kind == CFG_LIST) return false;
    if (!value(store, item, first + place.slot * writer_.width(), true)) return false;
  }
  return true;
}

bool Seals::list(Store &store, const cfg_content &content) {
  const std::size_t begin = writer_.size();
  std::size_t slot = writer_.list(static_cast<std::uint32_t>(content.length + 1), content.length);
  for (std::size_t i = 0; i < content.length; ++i) {
    slot = writer_.entry(slot, static_cast<std::uint32_t>(i + 1));
    if (!value(store, content.items[i], slot, false)) return false;
    slot += writer_.width();
  }
  largest_list_ = std::max(largest_list_, writer_.size() - begin);
  return true;
}

bool Seals::value(Store &store, const cfg_content &content, std::size_t slot, bool inner) {
  // Values of megabytes are not copied to find out that they are too large.
  if (writer_.size() + content.length > kMaxSealed) return false;
  writer_.point(slot);
  switch (content.kind) {
    case CFG_MAP:
      return map(store, content, inner);
    case CFG_LIST:
      return list(store, content);
    case CFG_STRING:
      writer_.string(data_of(content));
      break;
    case CFG_REFERENCE:
      return reference(store, data_of(content), slot);
    case CFG_INT:
      writer_.integer(content.number);
      break;
    case CFG_BOOL:
      writer_.boolean(content.number != 0);
      break;
    default:
      writer_.blob(data_of(content));
  }
  return true;
}

bool Seals::reference(Store &store, std::string_view id, std::size_t slot) {
  if (is_provisional(id)) {
    const std::uint32_t length = guess_length(store, id);
    if (length == 0) return false;
    links_.push_back(
        {static_cast<std::uint32_t>(slot), static_cast<std::uint32_t>(writer_.size()), length, id});
    writer_.leave(RecordWriter::reference_size(length));
  } else {
    writer_.reference(id);
  }
  return true;
}

// References mostly go to the entry that was appended last, to a list whose entries are records of their own.
std::uint32_t Seals::guess_length(Store &store, std::string_view id) {
  const NewPlace place = new_place(store, id);
  const ListNode *list = place.element == nullptr ? nullptr : as_list(place.element->parent);
  if (list == nullptr || list->distant == 0) return 0;
  if (list != target_) {
    ListHead head;
    if (!read_list_head(store.snapshot->get(head_key(list->distant)).bytes, head)) return 0;
    target_ = list;
    target_next_ = head.next;
    target_length_ = static_cast<std::uint32_t>(flatten(list->head->id()).size() + 1);
  }
  const std::size_t last = target_next_ + list->added.size() + list->future.size() - 1;
  return target_length_ + static_cast<std::uint32_t>(std::to_string(last).size() + place.tail.size());
}

const ContentForm *Seals::form_of(Store &store, const cfg_content &map) {
  const cfg_keyset &set = *map.keys;
  if (set.count > kMaxShapeKeys) return nullptr;
  std::uint64_t present = 0;
  std::uint64_t nested = 0;
  for (std::size_t i = 0; i < set.count; ++i) {
    const cfg_kind kind = map.items[i].kind;
    present |= std::uint64_t{kind != CFG_NONE} << i;
    nested |= std::uint64_t{kind == CFG_MAP || kind == CFG_LIST} << i;
  }
  KeysetSlots &known = store.keysets.of(set);
  if (known.content_edit != edit_) {
    known.content_forms.clear();
    known.content_edit = edit_;
  }
  for (const ContentForm *form : known.content_forms) {
    if (form->present == present && form->nested == nested) return form;
  }
  if (known.content_forms.size() >= kMaxForms) return nullptr;
  make_form(store, known.names, present, nested);
  known.content_forms.push_back(forms_.back().get());
  return known.content_forms.back();
}

void Seals::make_form(Store &store, const std::vector<const KeyName *> &names, std::uint64_t present,
                      std::uint64_t nested) {
  ContentForm form{present, nested, 0, true, {}};
  std::vector<std::uint16_t> sorted;
  for (std::size_t i = 0; i < names.size(); ++i) {
    if ((present >> i & 1) != 0) sorted.push_back(static_cast<std::uint16_t>(i));
  }
  std::sort(sorted.begin(), sorted.end(),
            [&](std::uint16_t left, std::uint16_t right) { return names[left]->text < names[right]->text; });
  std::vector<const KeyName *> keys;
  keys.reserve(sorted.size());
  for (const std::uint16_t item : sorted) keys.push_back(names[item]);

  // Plain values in front, as Packer::map() has them. Two lists whose entries would be named alike are for
  // the commit to refuse.
  std::vector<std::string_view> flat;
  for (const bool behind : {false, true}) {
    for (std::size_t slot = 0; slot < sorted.size(); ++slot) {
      if ((nested >> sorted[slot] & 1) != std::uint64_t{behind}) continue;
      form.places.push_back({sorted[slot], static_cast<std::uint16_t>(slot)});
      if (behind) flat.push_back(keys[slot]->flat);
    }
  }
  std::sort(flat.begin(), flat.end());
  form.closed = std::adjacent_find(flat.begin(), flat.end()) == flat.end();

  form.shape = shapes_.own(keys).number();
  used_.resize(shapes_.size());
  while (numbers_.size() < shapes_.size())
    numbers_.push_back(guess_number(store, shapes_[static_cast<std::uint32_t>(numbers_.size())].keys()));
  forms_.push_back(std::make_unique<const ContentForm>(std::move(form)));
}

std::uint32_t Seals::guess_number(Store &store, const std::vector<const KeyName *> &keys) {
  if (const Shape *stored = store.shapes.find(keys, *store.snapshot)) return stored->number();
  if (!guessing_) {
    ListHead counters;
    read_list_head(store.snapshot->get(kCountersKey).bytes, counters);
    next_guess_ = counters.count;
    guessing_ = true;
  }
  return next_guess_++;
}

void Seals::settle(Plan &plan) {
  spelled_ = false;
  for (std::uint32_t shape = 0; shape < numbers_.size(); ++shape) {
    if (!used_[shape]) continue;
    const std::uint32_t number = plan.shape_of(shapes_[shape].keys());
    if (number >= kMaxShapes) spelled_ = true;
    if (numbers_[shape] == number) continue;
    numbers_[shape] = number;
    guesses_failed_ = true;
  }
}

std::string_view Seals::finish(Plan &plan, const Sealed &sealed) const {
  if (spelled_) return {};
  char *const bytes = sealed.bytes.data();
  if (guesses_failed_) {
    for (const Sealed::Mark &mark : sealed.marks)
      RecordWriter::put_shape(bytes + mark.at, numbers_[mark.shape]);
  }
  for (const Sealed::Link &link : sealed.links) {
    const std::string final = plan.final_reference(link.id);
    if (final.size() != link.length) return {};
    RecordWriter::put_reference(bytes + link.at, final);
  }
  return {bytes, sealed.bytes.size()};
}

namespace {

// Makes unpacked nodes new ones.
void make_new(Store &store, Node *node) {
  node->born = true;
  if (MapNode *map = as_map(node)) {
    map->owner = nullptr;
    for (MapItem &item : map->items) {
      item.stored = nullptr;
      item.changed = store.snapshot->revision();
      make_new(store, item.node);
    }
  } else if (ListNode *list = as_list(node)) {
    list->next = 1;
    list->added.swap(list->entries);
    for (Node *entry : list->added) {
      entry->number = 0;
      make_new(store, entry);
      new_head(store, entry);
    }
  }
}

}  // namespace

void Seals::open(Store &store, MapNode &map) {
  const Sealed &sealed = *map.sealed;
  // A copy that can be read: with shapes that are known here, and with provisional IDs, for which there is
  // room only behind it.
  writer_.begin_with({sealed.bytes.data(), sealed.bytes.size()});
  for (const Sealed::Mark &mark : sealed.marks) writer_.set_shape(mark.at, mark.shape);
  for (const Sealed::Link &link : sealed.links) {
    writer_.point(link.slot);
    writer_.reference(link.id);
  }
  Unpacker unpacker(store.editing().nodes, shapes_, store.names, *store.snapshot);
  MapNode *nodes = as_map(unpacker.unpack(packed_record(writer_.record())));
  make_new(store, nodes);
  for (const MapItem &item : nodes->items) item.node->parent = &map;
  map.items.swap(nodes->items);
  map.nested = nodes->nested;
  map.sealed = nullptr;
}

}  // namespace twcfg
