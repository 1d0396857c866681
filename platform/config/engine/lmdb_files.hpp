// A store's directory and files: where they are, that they are safe to use, and making them.
#pragma once

#include <sys/types.h>

#include <string>
#include <utility>

#include "engine/engine.hpp"
#include "engine/table.hpp"

namespace twcfg {

// A descriptor that closes itself.
class File {
 public:
  explicit File(int descriptor = -1) : descriptor_(descriptor) {}
  File(File &&other) noexcept : descriptor_(std::exchange(other.descriptor_, -1)) {}
  File &operator=(File &&other) noexcept {
    std::swap(descriptor_, other.descriptor_);
    return *this;
  }
  ~File();
  int get() const { return descriptor_; }
  explicit operator bool() const { return descriptor_ >= 0; }

 private:
  int descriptor_;
};

// A file, whatever its names are: device and inode.
using FileId = std::pair<std::uint64_t, std::uint64_t>;

struct StoreFiles {
  std::string directory;
  FileId id{};  // of the data file
  std::string data() const { return directory + "/data.mdb"; }
  std::string lock() const { return directory + "/lock.mdb"; }
};

// Finds the store in `path`, makes it when CFG_OPEN_CREATE is among the options and it is missing or was left
// half-made, and checks that nobody else owns or can touch it. Opens neither of its files, because closing
// the lock file would drop the locks that this process may hold on it.
Failure find_store(const std::string &path, unsigned options, StoreFiles &files);

// Makes the file if it is missing, gives it the mode 0600 whatever the umask says, and `size` bytes of disk
// space. No environment of this process may have the file open: closing it here would drop that environment's
// locks.
Failure prepare_file(const std::string &path, off_t size);

// Makes the new directory `path`, which must not exist, with a data file that holds what `source` holds
// (NULL: nothing but the format). On failure nothing is left of it.
Failure make_store_copy(const std::string &path, Table *source);

}  // namespace twcfg
