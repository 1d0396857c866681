// Memory for the texts that a record is loaded with: one piece instead of one for each text.
#ifndef TW_RECORD_TEXT_BLOCK_HPP
#define TW_RECORD_TEXT_BLOCK_HPP

#include <cstddef>
#include <cstdint>
#include <cstdlib>

namespace tw {

// It only grows: what is taken goes back with the block, and no text in it may be read after that.
class text_block {
 public:
  text_block() = default;
  text_block(const text_block &) = delete;
  text_block &operator=(const text_block &) = delete;
  ~text_block() {
    while (last_) {
      piece *before = last_->before;
      std::free(last_);
      last_ = before;
    }
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
    piece *before;
    char bytes[piece_size - sizeof(piece *)];
  };

  char *take_aligned(std::size_t size, std::size_t alignment) noexcept {
    if (size > longest) return nullptr;
    std::size_t begin = (used_ + alignment - 1) & ~(alignment - 1);
    if (begin + size > sizeof piece::bytes) {
      auto *added = static_cast<piece *>(std::malloc(sizeof(piece)));
      if (!added) return nullptr;
      added->before = last_;
      last_ = added;
      begin = 0;
    }
    used_ = begin + size;
    return last_->bytes + begin;
  }

  piece *last_ = nullptr;
  std::size_t used_ = sizeof piece::bytes;  // of the last piece
};

}  // namespace tw

#endif
