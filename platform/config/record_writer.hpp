// The steps in which a record is put down in its stored form (packed.hpp).
#pragma once

#include <algorithm>
#include <cstring>
#include <string_view>

#include "packed.hpp"
#include "record_buffer.hpp"

namespace twcfg {

class RecordWriter {
 public:
  // Leaves the record in `out`.
  explicit RecordWriter(RecordBuffer &out) : out_(out) {}

  // Begins a record, in the place of the last one unless this was kept.
  void begin(bool wide) {
    out_.begin();
    overflow_ = false;
    width_ = wide ? 4 : 2;
    out_.put(kRecordFormat);
    out_.put(static_cast<std::uint8_t>(wide ? 1 : 0));
  }
  // Begins a record as a copy of another one.
  void begin_with(std::string_view record) {
    begin((record[1] & 1) != 0);
    out_.append(record.substr(kRecordHeader));
  }
  std::string_view record() const { return out_.record(); }
  std::size_t size() const { return out_.size(); }
  // Whether an offset was too large to be written. What is put down then means nothing.
  bool overflow() const { return overflow_; }

  // ---- Maps and lists: their heads, and room for offsets. Each gives where its first offset stands. ----

  std::size_t map(std::uint8_t tag, std::uint32_t word, std::size_t offsets) {
    out_.put(tag);
    out_.put(word);
    return slots(offsets * width_);
  }
  std::size_t list(std::uint32_t next, std::size_t count) {
    out_.put(kTagList);
    out_.put(next);
    out_.put(static_cast<std::uint32_t>(count));
    return slots(count * (4 + width_));
  }
  std::size_t width() const { return width_; }  // bytes of an offset
  // Where the offset of the list entry stands whose number is at `slot`.
  std::size_t entry(std::size_t slot, std::uint32_t number) {
    out_.set(slot, number);
    return slot + 4;
  }
  void distant(std::uint32_t list) {
    out_.put(kTagDistant);
    out_.put(list);
  }
  // What is written next is what the offset at `slot` leads to.
  void point(std::size_t slot) {
    const std::size_t offset = out_.size();
    if (width_ == 4) return out_.set(slot, static_cast<std::uint32_t>(offset));
    if (offset > 0xffff) overflow_ = true;
    out_.set(slot, static_cast<std::uint16_t>(offset));
  }

  // ---- Values ----

  void key(std::string_view text) {
    out_.put(static_cast<std::uint8_t>(text.size()));
    out_.append(text);
  }
  void table(std::string_view bytes) { out_.append(bytes); }
  void string(std::string_view text) {
    if (text.size() <= 0xffff) return bytes<std::uint16_t>(kTagString, text);
    bytes<std::uint32_t>(kTagLongString, text);
  }
  void reference(std::string_view id) { bytes<std::uint16_t>(kTagReference, id); }
  void blob(std::string_view data) { bytes<std::uint32_t>(kTagBlob, data); }
  void integer(std::int32_t value) {
    out_.put(kTagInt);
    out_.put(value);
  }
  void boolean(bool value) { out_.put(value ? kTagTrue : kTagFalse); }

  // ---- What is settled later ----

  // Room for something.
  void leave(std::size_t bytes) { out_.extend(bytes); }
  // What reference() writes for an ID of this length, and writing it to such room.
  static constexpr std::size_t reference_size(std::size_t id) { return 1 + sizeof(std::uint16_t) + id + 1; }
  static void put_reference(char *to, std::string_view id) {
    put_bytes<std::uint16_t>(to, kTagReference, id);
  }
  // Gives the map at an address, or at an offset of the record, another shape.
  static void put_shape(char *map, std::uint32_t shape) { std::memcpy(map + 1, &shape, sizeof shape); }
  void set_shape(std::size_t map, std::uint32_t shape) { out_.set(map + 1, shape); }

 private:
  std::size_t slots(std::size_t bytes) {
    out_.extend(bytes);
    return out_.size() - bytes;
  }
  template <class Length>
  void bytes(Tag tag, std::string_view data) {
    put_bytes<Length>(out_.extend(1 + sizeof(Length) + data.size() + 1), tag, data);
  }
  template <class Length>
  static void put_bytes(char *to, Tag tag, std::string_view data) {
    const auto length = static_cast<Length>(data.size());
    *to = static_cast<char>(tag);
    std::memcpy(to + 1, &length, sizeof length);
    *std::copy(data.begin(), data.end(), to + 1 + sizeof length) = '\0';
  }

  RecordBuffer &out_;
  std::size_t width_ = 2;
  bool overflow_ = false;
};

}  // namespace twcfg
