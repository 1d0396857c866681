// The memory behind arenas and record buffers: pieces that double in size, given back all at once.
#pragma once

#include <cstddef>
#include <vector>

namespace twcfg {

// Secrets are overwritten before their memory is given back.
enum class Contents { plain, secret };

class Chunks {
 public:
  explicit Chunks(Contents contents) : contents_(contents) {}
  Chunks(const Chunks &) = delete;
  Chunks &operator=(const Chunks &) = delete;
  ~Chunks();

  struct Chunk {
    char *begin = nullptr;
    std::size_t size = 0;
  };
  // A new one that holds at least `bytes`.
  Chunk add(std::size_t bytes);

 private:
  const Contents contents_;
  std::vector<Chunk> chunks_;
};

}  // namespace twcfg
