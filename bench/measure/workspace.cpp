#include "measure/workspace.hpp"

#include <linux/magic.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/vfs.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>

namespace bench {

Workspace::Workspace(const std::string &parent) {
  std::filesystem::create_directories(parent);
  path_ = parent + "/run-XXXXXX";
  if (mkdtemp(path_.data()) == nullptr) throw std::runtime_error("cannot make a directory in " + parent);
}

Workspace::~Workspace() { remove_directory(path_); }

void remove_directory(const std::string &path) {
  std::error_code failed;
  std::filesystem::remove_all(path, failed);
  if (failed) std::fprintf(stderr, "bench: left behind: %s\n", path.c_str());
}

std::string Workspace::directory(const std::string &name) const {
  const std::string path = path_ + "/" + name;
  if (mkdir(path.c_str(), 0700) != 0) throw std::runtime_error("cannot make " + path);
  return path;
}

bool Workspace::is_tmpfs() const {
  struct statfs info {};
  return statfs(path_.c_str(), &info) == 0 && (info.f_type == TMPFS_MAGIC || info.f_type == RAMFS_MAGIC);
}

void lock_mapped_files(const std::string &directory) {
  std::ifstream maps("/proc/self/maps");
  for (std::string line; std::getline(maps, line);) {
    std::istringstream fields(line);
    std::string range, mode, device, inode, path;
    std::uint64_t offset = 0;
    fields >> range >> mode >> std::hex >> offset >> device >> inode >> std::ws;
    std::getline(fields, path);
    struct stat file {};
    if (path.rfind(directory + "/", 0) != 0 || stat(path.c_str(), &file) != 0) continue;
    std::uintptr_t begin = 0, end = 0;
    if (std::sscanf(range.c_str(), "%jx-%jx", reinterpret_cast<uintmax_t *>(&begin),
                    reinterpret_cast<uintmax_t *>(&end)) != 2)
      continue;
    // The map may be far larger than the file.
    const std::uint64_t used =
        std::min<std::uint64_t>(end - begin, static_cast<std::uint64_t>(file.st_size) - offset);
    if (mlock(reinterpret_cast<void *>(begin), used) != 0)
      std::printf("note: %s is not locked in memory (%s)\n", path.c_str(), std::strerror(errno));
  }
}

}  // namespace bench
