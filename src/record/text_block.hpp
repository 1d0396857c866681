// Memory for the texts that a record is loaded with: one piece instead of one for each text.
#ifndef TW_RECORD_TEXT_BLOCK_HPP
#define TW_RECORD_TEXT_BLOCK_HPP

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <utility>

namespace tw {

// It only grows: what is taken goes back with the block, and no text in it may be read after that.
class text_block {
 public:
  text_block() = default;
  text_block(const text_block &) = delete;
  text_block &operator=(const text_block &) = delete;
  ~text_block() { clear(); }

  // Gives everything back that was taken.
  void clear() noexcept {
    while (last_) {
      piece *before = last_->before;
      std::free(last_);
      last_ = before;
    }
    at_ = end_ = nullptr;
  }

  // Makes room, in one piece, for texts of `bytes` altogether, however long they are. To be called first.
  // False without memory.
  bool reserve(std::size_t bytes) noexcept {
    reserved_ = add(bytes);
    return reserved_;
  }

  // Room for a text of `size` bytes, or for pointers. NULL for what is too long to share a piece, and without
  // memory.
  char *take(std::size_t size) noexcept { return take_aligned(size, 1); }
  char **take_pointers(std::size_t count) noexcept {
    return count <= longest / sizeof(char *)
               ? reinterpret_cast<char **>(take_aligned(count * sizeof(char *), alignof(char *)))
               : nullptr;
  }

 private:
  // The largest that the C library keeps at hand for the next request of its size.
  static constexpr std::size_t piece_size = 1032;
  static constexpr std::size_t longest = 256;  // leaves at most a quarter of a piece unused

  struct piece {
    piece *before;  // the bytes stand behind it
  };

  char *take_aligned(std::size_t size, std::size_t alignment) noexcept {
    const std::size_t padding = -reinterpret_cast<std::uintptr_t>(at_) & (alignment - 1);
    if (padding + size > static_cast<std::size_t>(end_ - at_)) return take_from_new_piece(size);
    if (size > longest && !reserved_) return nullptr;
    char *taken = at_ + padding;
    at_ = taken + size;
    return taken;
  }

  char *take_from_new_piece(std::size_t size) noexcept {
    if (size > longest || !add(piece_size - sizeof(piece))) return nullptr;
    reserved_ = false;
    return std::exchange(at_, at_ + size);
  }

  bool add(std::size_t bytes) noexcept {
    auto *added = static_cast<piece *>(std::malloc(sizeof(piece) + bytes));
    if (!added) return false;
    added->before = last_;
    last_ = added;
    at_ = reinterpret_cast<char *>(added + 1);
    end_ = at_ + bytes;
    return true;
  }

  piece *last_ = nullptr;
  char *at_ = nullptr, *end_ = nullptr;  // what is free of the last piece
  bool reserved_ = false;                // whether that piece was asked for
};

}  // namespace tw

#endif
