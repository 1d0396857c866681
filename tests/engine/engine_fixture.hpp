// What the engine tests share: a temporary directory and short words for commits.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "engine/engine.hpp"

namespace twcfg::testing {

// A directory of the test's own, removed with all that is in it.
class TemporaryDirectory {
 public:
  TemporaryDirectory();
  TemporaryDirectory(const TemporaryDirectory &) = delete;
  TemporaryDirectory &operator=(const TemporaryDirectory &) = delete;
  ~TemporaryDirectory();
  std::string operator/(const std::string &name) const { return path_ + "/" + name; }
  const std::string &path() const { return path_; }

 private:
  std::string path_;
};

inline Write set(Key key, std::string_view bytes, std::uint64_t expected = 0) {
  return {key, expected, bytes, false};
}
inline Write remove(Key key, std::uint64_t expected) { return {key, expected, {}, true}; }

inline CommitResult commit(Engine &engine, std::vector<Write> writes, std::string_view log = "",
                           std::string_view token = "") {
  return engine.commit({std::move(writes), log, token});
}

// The view that must be there.
inline std::unique_ptr<Snapshot> view(Engine &engine) {
  Failure failure;
  auto snapshot = engine.snapshot(failure);
  EXPECT_TRUE(snapshot) << failure.text;
  EXPECT_EQ(failure.code, CFG_OK) << failure.text;
  return snapshot;
}

inline std::uint64_t newest(Engine &engine) {
  Failure failure;
  const auto revision = engine.newest(failure);
  EXPECT_EQ(failure.code, CFG_OK) << failure.text;
  return revision;
}

inline std::shared_ptr<Engine> open_store(const std::string &path, unsigned options = CFG_OPEN_CREATE) {
  Failure failure;
  auto engine = open_lmdb(path, options, failure);
  EXPECT_TRUE(engine) << failure.text;
  return engine;
}

// The failure of an open that must fail.
inline Failure refused_open(const std::string &path, unsigned options = 0) {
  Failure failure;
  EXPECT_FALSE(open_lmdb(path, options, failure));
  EXPECT_FALSE(failure.text.empty());
  return failure;
}

// What verify() found, and why it could not go on if it could not.
inline std::vector<std::string> problems(Engine &engine) {
  std::vector<std::string> found;
  const Failure failure = engine.verify(
      [&](const std::string &where, const std::string &what) { found.push_back(where + ": " + what); });
  if (failure) found.push_back(failure.text);
  return found;
}

// Runs `body` in a child process, which opened nothing and shares nothing. Returns its wait status.
int run_child(const std::function<int()> &body);
// The same for a child that must return 0.
void expect_child_succeeds(const std::function<int()> &body);

// Every byte of a file.
std::string contents_of(const std::string &path);

// Sanitizers need more address space than any bound that would be worth testing, and threads of their own.
constexpr bool kSanitized =
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    true;
#else
    false;
#endif

}  // namespace twcfg::testing
