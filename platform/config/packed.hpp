// Records as they are stored: read in place, never decoded as a whole.
//
// A record holds the subtree of one list entry (or of the root) down to lists that have records of their own.
//   record   u8 format = 1, u8 flags (1: offsets are 32 bits wide, else 16), then the root node
//   map      tag 1, u32 shape, one offset for each of its keys
//   spelled  tag 2, u32 count, one pair of offsets (key, value) for each key, sorted; key: u8 length, bytes
//   list     tag 3, u32 next number, u32 count, for each entry u32 number and an offset; numbers go up
//   distant  tag 4, u32 list number: a list whose entries are records of their own
//   string   tag 5 or, longer than 65,535 bytes, 6: u16 or u32 length, bytes, NUL
//   refer.   tag 7, u16 length, bytes, NUL
//   integer  tag 8, i32; false: tag 9; true: tag 10
//   blob     tag 11, u32 length, bytes, NUL
// A map with bit 64 in its tag has one offset more, to its retired numbers: u32 count, for each list that
// once was there u32 next number, u16 length, flattened name. Numbers are little-endian and not aligned.
// The values of a map may stand in any order; those that are neither map nor list are written in front.
// Offsets count from the start of the record. Every offset and length is checked when it is followed.
#pragma once

#include <bit>
#include <cstdint>
#include <cstring>
#include <string_view>

#include <twconfig/read.h>

#include "shape.hpp"

namespace twcfg {

static_assert(std::endian::native == std::endian::little, "records are read in place");

enum Tag : std::uint8_t {
  kTagMap = 1,
  kTagSpelled = 2,
  kTagList = 3,
  kTagDistant = 4,
  kTagString = 5,
  kTagLongString = 6,
  kTagReference = 7,
  kTagInt = 8,
  kTagFalse = 9,
  kTagTrue = 10,
  kTagBlob = 11,
  kTagRetired = 64  // or-ed to a map's tag
};

inline constexpr std::uint8_t kRecordFormat = 1;
inline constexpr std::uint32_t kRecordHeader = 2;

template <class T>
T load_raw(const char *at) {
  T value;
  std::memcpy(&value, at, sizeof value);
  return value;
}

// A node of a stored record; empty when there is none.
struct Packed {
  const char *base = nullptr;
  std::uint32_t size = 0;
  std::uint32_t at = 0;

  explicit operator bool() const { return base != nullptr; }
  bool operator==(const Packed &) const = default;
  bool has(std::uint64_t offset, std::uint64_t bytes) const { return offset + bytes <= size; }
  std::uint8_t tag() const { return static_cast<std::uint8_t>(base[at]); }
  bool wide() const { return (base[1] & 1) != 0; }
  // The node at an offset of the same record; empty when the offset is impossible.
  Packed node(std::uint32_t offset) const {
    return offset >= kRecordHeader && offset < size ? Packed{base, size, offset} : Packed{};
  }
};

// The root node of a stored record; empty when the bytes are no record.
inline Packed packed_record(std::string_view bytes) {
  if (bytes.size() <= kRecordHeader || static_cast<std::uint8_t>(bytes[0]) != kRecordFormat) return {};
  return {bytes.data(), static_cast<std::uint32_t>(bytes.size()), kRecordHeader};
}

// Indexed by tag.
inline constexpr cfg_kind kKinds[] = {CFG_NONE,   CFG_MAP,       CFG_MAP, CFG_LIST, CFG_LIST, CFG_STRING,
                                      CFG_STRING, CFG_REFERENCE, CFG_INT, CFG_BOOL, CFG_BOOL, CFG_BLOB};

// The kind of a node; CFG_NONE for an empty or damaged one.
inline cfg_kind kind_of(const Packed &node) {
  if (!node) return CFG_NONE;
  const std::uint8_t tag = node.tag() & static_cast<std::uint8_t>(~kTagRetired);
  const cfg_kind kind = tag < sizeof kKinds / sizeof kKinds[0] ? kKinds[tag] : CFG_NONE;
  return tag == node.tag() || kind == CFG_MAP ? kind : CFG_NONE;
}

// Bytes behind a length of type L; a value that does not fit its record, or does not end in NUL, reads as
// absent. This and value_of() are the innermost step of every load and scan and must not cost a call.
template <class L>
[[gnu::always_inline]] inline cfg_value bytes_of(const Packed &node) {
  const std::uint64_t data = std::uint64_t{node.at} + 1 + sizeof(L);
  if (!node.has(node.at, 1 + sizeof(L))) return {};
  const L length = load_raw<L>(node.base + node.at + 1);
  if (!node.has(data, std::uint64_t{length} + 1) || node.base[data + length] != '\0') return {};
  return {kKinds[node.tag()], 0, node.base + data, length};
}

// The value of a node: borrowed bytes for strings, references and blobs.
[[gnu::always_inline]] inline cfg_value value_of(const Packed &node) {
  if (!node) return {};
  switch (node.tag()) {
    case kTagString:
    case kTagReference:
      return bytes_of<std::uint16_t>(node);
    case kTagLongString:
    case kTagBlob:
      return bytes_of<std::uint32_t>(node);
    case kTagInt:
      if (!node.has(node.at, 5)) return {};
      return {CFG_INT, load_raw<std::int32_t>(node.base + node.at + 1), nullptr, 0};
    case kTagFalse:
    case kTagTrue:
      return {CFG_BOOL, node.tag() == kTagTrue ? 1 : 0, nullptr, 0};
    default:
      return {kind_of(node), 0, nullptr, 0};
  }
}

// A map of either form.
class PackedMap {
 public:
  // Empty (false) when the node is no sound map.
  PackedMap(const Packed &node, Shapes &shapes, Snapshot &snapshot);
  PackedMap() = default;
  // Goes on to another map of the same shape and form; false, with nothing changed, when it is none.
  bool follow(const Packed &node);
  // What follow() goes by, without the map: empty, and good for as long as the handle.
  PackedMap form() const {
    PackedMap copy = *this;
    copy.node_ = {};
    return copy;
  }
  explicit operator bool() const { return static_cast<bool>(node_); }
  const char *record() const { return node_.base; }  // where its record begins
  std::uint32_t count() const { return count_; }
  const Shape *shape() const { return shape_; }  // NULL for a map that spells its keys
  std::string_view key(std::uint32_t slot) const;
  Packed child(std::uint32_t slot) const {
    return node_.node(offset(shape_ != nullptr ? slot : slot * 2 + 1));
  }
  // The child under a key; empty when there is none.
  Packed find(std::string_view key, const KeyNames &names) const;
  // Calls visit(name, next number) for every retired list; false when the table is damaged.
  template <class Visit>
  bool each_retired(Visit &&visit) const;

 private:
  std::uint32_t offset(std::uint32_t index) const {
    const char *at = node_.base + slots_ + index * width_;
    return width_ == 2 ? load_raw<std::uint16_t>(at) : load_raw<std::uint32_t>(at);
  }

  Packed node_;
  const Shape *shape_ = nullptr;
  std::uint32_t count_ = 0;
  std::uint32_t slots_ = 0;  // where the offsets begin
  std::uint32_t width_ = 2;
  std::uint32_t tag_ = 0;
  std::uint64_t head_ = 0;  // bytes of tag, shape and offsets
};

inline PackedMap::PackedMap(const Packed &node, Shapes &shapes, Snapshot &snapshot) {
  if (!node || !node.has(node.at, 5)) return;
  const std::uint32_t tag = tag_ = node.tag();
  const auto word = load_raw<std::uint32_t>(node.base + node.at + 1);
  std::uint64_t offsets = tag / kTagRetired;
  if ((tag | kTagRetired) == (kTagMap | kTagRetired)) {
    shape_ = shapes.get(word, snapshot);
    if (shape_ == nullptr) return;
    count_ = static_cast<std::uint32_t>(shape_->keys().size());
    offsets += count_;
  } else if ((tag | kTagRetired) == (kTagSpelled | kTagRetired)) {
    count_ = word;
    offsets += std::uint64_t{count_} * 2;
  } else {
    return;
  }
  width_ = node.wide() ? 4 : 2;
  slots_ = node.at + 5;
  head_ = 5 + offsets * width_;
  if (node.has(node.at, head_))
    node_ = node;
  else
    shape_ = nullptr;  // no form to go on from
}

inline bool PackedMap::follow(const Packed &node) {
  if (shape_ == nullptr || !node || !node.has(node.at, head_) || node.tag() != tag_ ||
      node.wide() != (width_ == 4) || load_raw<std::uint32_t>(node.base + node.at + 1) != shape_->number())
    return false;
  node_ = node;
  slots_ = node.at + 5;
  return true;
}

// A list inside a record.
class PackedList {
 public:
  // Empty (false) when the node is no sound list.
  explicit PackedList(const Packed &node);
  explicit operator bool() const { return static_cast<bool>(node_); }
  std::uint32_t next() const { return load_raw<std::uint32_t>(node_.base + node_.at + 1); }
  std::uint32_t count() const { return count_; }
  std::uint32_t number(std::uint32_t index) const { return load_raw<std::uint32_t>(entry(index)); }
  Packed child(std::uint32_t index) const {
    const char *at = entry(index) + 4;
    return node_.node(width_ == 2 ? load_raw<std::uint16_t>(at) : load_raw<std::uint32_t>(at));
  }
  // The index of the entry with this number, or -1.
  std::int64_t index_of(std::uint32_t number) const;

 private:
  const char *entry(std::uint32_t index) const { return node_.base + node_.at + 9 + index * (4 + width_); }

  Packed node_;
  std::uint32_t count_ = 0;
  std::uint32_t width_ = 2;
};

inline PackedList::PackedList(const Packed &node) {
  if (!node || node.tag() != kTagList || !node.has(node.at, 9)) return;
  const auto count = load_raw<std::uint32_t>(node.base + node.at + 5);
  width_ = node.wide() ? 4 : 2;
  if (!node.has(node.at, 9 + std::uint64_t{count} * (4 + width_))) return;
  count_ = count;
  node_ = node;
}

// The list number of a distant list; 0 for any other node.
inline std::uint32_t distant_list(const Packed &node) {
  return node && node.tag() == kTagDistant && node.has(node.at, 5)
             ? load_raw<std::uint32_t>(node.base + node.at + 1)
             : 0;
}

// The head of a distant list.
struct ListHead {
  std::uint32_t next = 1;
  std::uint32_t count = 0;
};
bool read_list_head(std::string_view bytes, ListHead &head);

template <class Visit>
bool PackedMap::each_retired(Visit &&visit) const {
  if ((node_.tag() & kTagRetired) == 0) return true;
  const std::uint32_t at = offset(shape_ != nullptr ? count_ : count_ * 2);
  if (at < kRecordHeader || !node_.has(at, 4)) return false;
  const std::uint32_t total = load_raw<std::uint32_t>(node_.base + at);
  std::uint64_t where = at + 4;
  for (std::uint32_t i = 0; i < total; ++i) {
    if (!node_.has(where, 6)) return false;
    const auto next = load_raw<std::uint32_t>(node_.base + where);
    const auto length = load_raw<std::uint16_t>(node_.base + where + 4);
    if (!node_.has(where + 6, length)) return false;
    visit(std::string_view(node_.base + where + 6, length), next);
    where += 6u + length;
  }
  return true;
}

}  // namespace twcfg
