// Live state in a directory of the test's own, and its values in words.
#ifndef TW_TESTS_INFOD_INFOD_FIXTURE_HPP
#define TW_TESTS_INFOD_INFOD_FIXTURE_HPP

#include <gtest/gtest.h>
#include <twinfod.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "store_processes/scratch.hpp"

namespace infod {

/** The text of a key, or "error <number>". */
inline std::string text_of(const std::string &key) {
  char *text = nullptr;
  const int result = infod_get_extended(key.c_str(), &text, nullptr);
  if (result != 0) return "error " + std::to_string(result);
  const std::unique_ptr<char, decltype(&std::free)> owned(text, std::free);
  return text;
}
inline std::string text_of(infod_multiple *multiple, const std::string &key) {
  char *text = nullptr;
  const int result = infod_get_multiple_extended(multiple, key.c_str(), &text, nullptr);
  if (result != 0) return "error " + std::to_string(result);
  const std::unique_ptr<char, decltype(&std::free)> owned(text, std::free);
  return text;
}
inline const std::string missing = "error " + std::to_string(-ENOENT);

inline int push(const std::string &key, const std::string &text) {
  return infod_push_text(key.c_str(), text.c_str(), INFOD_KIND_STATUS);
}

/** "key=text" of every key with a prefix. */
inline std::vector<std::string> all(const char *prefix = "") {
  std::vector<std::string> found;
  const int result = infod_visit(
      prefix,
      [](void *context, const infod_value *value) {
        static_cast<std::vector<std::string> *>(context)->push_back(std::string(value->key) + "=" +
                                                                    value->text);
        return 0;
      },
      &found);
  if (result != 0) found.push_back("error " + std::to_string(result));
  return found;
}

class InfodTest : public testing::Test {
 protected:
  // In memory where that can be had, as on an appliance: every publishing is synced.
  InfodTest() {
    if (access("/dev/shm", W_OK) == 0) setenv("TMPDIR", "/dev/shm", 1);
    scratch_.emplace();
    go_to(scratch_->path() + "/live");
  }
  void go_to(const std::string &path) {
    directory = path;
    setenv("TW_INFOD_DIR", directory.c_str(), 1);
  }
  std::string data() const { return directory + "/state.mdb"; }

  std::string directory;

 private:
  std::optional<trial::Scratch> scratch_;
};

}  // namespace infod

#endif
