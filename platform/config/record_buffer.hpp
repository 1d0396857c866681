// Records one behind the other, each written where it stays. They hold private keys and passwords, so the
// memory is overwritten in the end.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <span>
#include <string_view>
#include <utility>

#include "chunks.hpp"

namespace twcfg {

class RecordBuffer {
 public:
  // Begins a record, in the place of the last one unless this was kept.
  void begin() { at_ = begin_; }
  // The finished record, valid as long as the buffer.
  std::span<char> keep() {
    const std::span<char> kept(begin_, size());
    begin_ = at_;
    return kept;
  }

  std::string_view record() const { return {begin_, size()}; }
  std::size_t size() const { return static_cast<std::size_t>(at_ - begin_); }
  // Adds `count` bytes to the record, which the caller fills at once.
  char *extend(std::size_t count) {
    if (static_cast<std::size_t>(end_ - at_) < count) move(count);
    return std::exchange(at_, at_ + count);
  }
  void append(std::string_view bytes) { std::copy(bytes.begin(), bytes.end(), extend(bytes.size())); }
  template <class T>
  void put(T value) {
    std::memcpy(extend(sizeof value), &value, sizeof value);
  }
  // Overwrites what stands at `offset` of the record.
  template <class T>
  void set(std::size_t offset, T value) {
    std::memcpy(begin_ + offset, &value, sizeof value);
  }

 private:
  // Moves the record begun to a new chunk, where it can grow by `count` bytes and more.
  void move(std::size_t count) {
    const Chunks::Chunk chunk = chunks_.add(size() * 2 + count);
    at_ = std::copy(begin_, at_, chunk.begin);
    begin_ = chunk.begin;
    end_ = chunk.begin + chunk.size;
  }

  char *begin_ = nullptr, *at_ = nullptr, *end_ = nullptr;  // of the record, and of its chunk
  Chunks chunks_{Contents::secret};
};

}  // namespace twcfg
