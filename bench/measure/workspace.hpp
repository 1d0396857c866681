// The directory in which a run keeps its stores, and keeping them in memory.
#pragma once

#include <string>

namespace bench {

// A fresh directory below `parent`, removed with everything in it at the end.
class Workspace {
 public:
  explicit Workspace(const std::string &parent);
  ~Workspace();
  Workspace(const Workspace &) = delete;
  Workspace &operator=(const Workspace &) = delete;
  // A new, empty directory in the workspace.
  std::string directory(const std::string &name) const;
  // True when commits go to memory only, so that durable figures mean nothing.
  bool is_tmpfs() const;
  const std::string &path() const { return path_; }

 private:
  std::string path_;
};

void remove_directory(const std::string &path);

// Locks in memory what this process has mapped from files below `directory`; an idle machine pages them out
// and the figures then show the disk. Prints a line when the system refuses.
void lock_mapped_files(const std::string &directory);

}  // namespace bench
