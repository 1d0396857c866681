// A directory of a test's own, and plain files in it.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace trial {

// A fresh directory below TMPDIR (else the working directory), removed with all that is in it.
class Scratch {
 public:
  Scratch();
  ~Scratch();
  Scratch(const Scratch &) = delete;
  Scratch &operator=(const Scratch &) = delete;

  const std::string &path() const { return path_; }
  // Where a test puts its store: a name in the directory that does not exist yet.
  std::string store() const { return path_ + "/store"; }

 private:
  std::string path_;
};

std::string read_file(const std::string &path);
void write_file(const std::string &path, const std::string &bytes);
// The regular files directly in a directory.
std::vector<std::string> files_in(const std::string &directory);
// The file that holds a store's data.
std::string data_file(const std::string &store);
// Removes what the store keeps besides its data, as a restored backup would lack it.
void remove_other_files(const std::string &store);
// The permission bits of a path.
unsigned mode_of(const std::string &path);

}  // namespace trial
