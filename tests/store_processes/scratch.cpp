#include "scratch.hpp"

#include <sys/stat.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>

namespace trial {

namespace fs = std::filesystem;

Scratch::Scratch() {
  const char *base = std::getenv("TMPDIR");
  path_ = (base && *base ? std::string(base) : fs::current_path().string()) + "/tw-store-XXXXXX";
  if (!mkdtemp(path_.data())) throw std::runtime_error("no scratch directory: " + path_);
}

Scratch::~Scratch() {
  std::error_code ignored;
  fs::remove_all(path_, ignored);
}

std::string read_file(const std::string &path) {
  std::ifstream in(path, std::ios::binary);
  if (!in) throw std::runtime_error("cannot read " + path);
  return {std::istreambuf_iterator<char>(in), {}};
}

void write_file(const std::string &path, const std::string &bytes) {
  std::ofstream out(path, std::ios::binary | std::ios::trunc);
  out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  if (!out.flush()) throw std::runtime_error("cannot write " + path);
}

std::vector<std::string> files_in(const std::string &directory) {
  std::vector<std::string> found;
  for (const auto &entry : fs::directory_iterator(directory))
    if (entry.is_regular_file()) found.push_back(entry.path().string());
  std::sort(found.begin(), found.end());
  return found;
}

std::string data_file(const std::string &store) { return store + "/data.mdb"; }

void remove_other_files(const std::string &store) {
  const std::string data = data_file(store);
  for (const std::string &file : files_in(store))
    if (file != data) fs::remove(file);
}

unsigned mode_of(const std::string &path) {
  struct stat info {};
  if (lstat(path.c_str(), &info) != 0) throw std::runtime_error("no " + path);
  return info.st_mode & 07777U;
}

}  // namespace trial
