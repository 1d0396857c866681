// What cfg_open() says about things that are no store, or a store of another time.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <string>
#include <vector>

#include "child.hpp"
#include "ledger.hpp"
#include "opened.hpp"
#include "scratch.hpp"

using namespace trial;

namespace {

// Opens in a child, where a crash is told from a refusal. "opened", or the code's name when there is a text.
std::string open_outcome(const std::string &path, unsigned options = 0) {
  return in_child([&]() -> std::string {
    cfg_failure failure{};
    const Opened store(cfg_open(path.c_str(), options, &failure));
    if (store) return "opened";
    return failure.text[0] ? cfg_code_text(failure.code) : "a refusal without a text";
  });
}

class NotAStore : public testing::Test {
 protected:
  NotAStore() {
    ledger::create(open_store(path_, CFG_OPEN_CREATE).get());
    data_ = data_file(path_);
    bytes_ = read_file(data_);
  }

  // Puts other bytes in the data file's place.
  void replace_data(const std::string &bytes) {
    remove_other_files(path_);
    write_file(data_, bytes);
  }

  // The data with each occurrence of some bytes replaced by as many others.
  std::string with_replaced(const std::string &from, const std::string &to) {
    std::string bytes = bytes_;
    size_t found = 0;
    for (size_t at = 0; (at = bytes.find(from, at)) != std::string::npos; at += to.size(), ++found)
      bytes.replace(at, from.size(), to);
    EXPECT_GT(found, 0U) << "the format has changed: say here where its version stands now";
    return bytes;
  }

  static std::string name(cfg_code code) { return cfg_code_text(code); }

  Scratch scratch_;
  const std::string path_ = scratch_.store();
  std::string data_, bytes_;
};

}  // namespace

TEST_F(NotAStore, TheStoreItselfOpens) {
  EXPECT_EQ(open_outcome(path_), "opened");
  replace_data(bytes_);
  EXPECT_EQ(open_outcome(path_), "opened");
}

TEST_F(NotAStore, AFileCutToNothingIsDamageAndNoEmptyStore) {
  replace_data("");
  EXPECT_EQ(open_outcome(path_), name(CFG_E_CORRUPT));
  EXPECT_EQ(open_outcome(path_, CFG_OPEN_READ_ONLY), name(CFG_E_CORRUPT));
}

TEST_F(NotAStore, GarbageIsDamage) {
  std::string garbage(65536, '\0');
  for (size_t i = 0; i < garbage.size(); ++i) garbage[i] = static_cast<char>(i * 2654435761U >> 13);
  for (const std::string &bytes :
       {garbage, std::string(8192, '\0'), std::string(65536, '\xff'), garbage.substr(0, 100)}) {
    replace_data(bytes);
    EXPECT_EQ(open_outcome(path_), name(CFG_E_CORRUPT)) << bytes.size() << " bytes";
    EXPECT_EQ(open_outcome(path_, CFG_OPEN_CREATE), name(CFG_E_CORRUPT)) << bytes.size() << " bytes";
    EXPECT_EQ(read_file(data_), bytes) << "a file that is no store is left as it is";
  }
}

TEST_F(NotAStore, AStoreOfANewerFormatIsRefusedAsSuchAndLeftAlone) {
  using namespace std::string_literals;
  const std::string newer = with_replaced("twconfig\1\0\0\0"s, "twconfig\2\0\0\0"s);
  // The number of LMDB's own format stands behind its magic number.
  const std::string newer_lmdb = with_replaced("\xde\xc0\xef\xbe\1\0\0\0"s, "\xde\xc0\xef\xbe\2\0\0\0"s);
  for (const std::string &bytes : {newer, newer_lmdb})
    for (unsigned options : {0U, unsigned{CFG_OPEN_CREATE}, unsigned{CFG_OPEN_READ_ONLY}}) {
      replace_data(bytes);
      EXPECT_EQ(open_outcome(path_, options), name(CFG_E_VERSION));
      EXPECT_EQ(read_file(data_), bytes);
    }
}

TEST_F(NotAStore, AnLmdbFileOfAnotherProgramIsRefused) {
  using namespace std::string_literals;
  replace_data(with_replaced("twconfig\1\0\0\0"s, "somebody\1\0\0\0"s));
  EXPECT_EQ(open_outcome(path_), name(CFG_E_CORRUPT));
}

TEST_F(NotAStore, ADirectoryInTheFilesPlaceIsRefused) {
  std::filesystem::remove(data_);
  std::filesystem::create_directory(data_);
  for (unsigned options : {0U, unsigned{CFG_OPEN_CREATE}, unsigned{CFG_OPEN_READ_ONLY}}) {
    const std::string outcome = open_outcome(path_, options);
    EXPECT_TRUE(outcome == name(CFG_E_CORRUPT) || outcome == name(CFG_E_IO) ||
                outcome == name(CFG_E_PERMISSION))
        << outcome;
  }
}

TEST_F(NotAStore, AFileInTheDirectorysPlaceIsRefused) {
  for (unsigned options : {0U, unsigned{CFG_OPEN_CREATE}, unsigned{CFG_OPEN_READ_ONLY}}) {
    const std::string outcome = open_outcome(data_, options);
    EXPECT_NE(outcome, "opened");
    EXPECT_EQ(outcome.find("signal"), std::string::npos) << outcome;
    EXPECT_EQ(outcome.find("without"), std::string::npos) << outcome;
  }
  EXPECT_EQ(read_file(data_), bytes_);
}

TEST_F(NotAStore, AFifoInTheFilesPlaceIsRefusedAndNotWaitedFor) {
  std::filesystem::remove(data_);
  ASSERT_EQ(mkfifo(data_.c_str(), 0600), 0);
  const std::string outcome = open_outcome(path_);
  EXPECT_NE(outcome, "opened");
  EXPECT_EQ(outcome.find("signal"), std::string::npos) << outcome;
}

TEST_F(NotAStore, ALockFileThatIsGoneEmptyOrGarbageDoesNoHarmWhenNobodyHasTheStoreOpen) {
  const auto others = [this] {
    std::vector<std::string> found;
    for (const std::string &file : files_in(path_))
      if (file != data_) found.push_back(file);
    return found;
  };
  const auto works = [this] {
    return in_child([this]() -> std::string {
      const Opened store = open_store(path_);
      if (std::string problem = ledger::move_and_commit(store.get(), 1); !problem.empty()) return problem;
      return ledger::check(store.get());
    });
  };
  remove_other_files(path_);
  EXPECT_EQ(works(), "") << "gone";
  ASSERT_FALSE(others().empty()) << "the store keeps a file for its readers";
  for (const std::string &bytes :
       {std::string(), std::string(8192, '\x5a'), std::string(8192, '\0'), std::string(1, 'x')}) {
    for (const std::string &file : others()) write_file(file, bytes);
    EXPECT_EQ(works(), "") << bytes.size() << " bytes of " << (bytes.empty() ? 0 : bytes[0]);
  }
}

TEST_F(NotAStore, AMissingStoreIsNotFoundAndNotMade) {
  const std::string missing = scratch_.path() + "/missing";
  EXPECT_EQ(open_outcome(missing), name(CFG_E_NOT_FOUND));
  EXPECT_EQ(open_outcome(missing, CFG_OPEN_READ_ONLY), name(CFG_E_NOT_FOUND));
  EXPECT_EQ(open_outcome(missing + "/deeper", CFG_OPEN_CREATE), name(CFG_E_NOT_FOUND));
  EXPECT_FALSE(std::filesystem::exists(missing));
}

TEST_F(NotAStore, AnEmptyDirectoryIsNotFoundWithoutCreateAndAStoreWithIt) {
  const std::string empty = scratch_.path() + "/empty";
  std::filesystem::create_directory(empty);
  chmod(empty.c_str(), 0700);
  EXPECT_EQ(open_outcome(empty), name(CFG_E_NOT_FOUND));
  EXPECT_TRUE(std::filesystem::is_empty(empty)) << "looking leaves nothing behind";
  EXPECT_EQ(open_outcome(empty, CFG_OPEN_CREATE), "opened");
  EXPECT_EQ(open_outcome(empty), "opened");
}

TEST_F(NotAStore, NonsenseArgumentsAreRefused) {
  cfg_failure failure{};
  EXPECT_FALSE(cfg_open(nullptr, 0, &failure));
  EXPECT_EQ(failure.code, CFG_E_ARGUMENT);
  failure = {};
  EXPECT_FALSE(cfg_open("", CFG_OPEN_CREATE, &failure));
  EXPECT_NE(failure.code, CFG_OK);
  failure = {};
  EXPECT_FALSE(cfg_open(path_.c_str(), 1U << 30, &failure));
  EXPECT_EQ(failure.code, CFG_E_ARGUMENT);
  failure = {};
  EXPECT_FALSE(cfg_open(std::string(100000, 'a').c_str(), CFG_OPEN_CREATE, &failure));
  EXPECT_NE(failure.code, CFG_OK);
  EXPECT_NE(failure.text[0], '\0');
  EXPECT_FALSE(cfg_open((path_ + "/none").c_str(), 0, nullptr)) << "nowhere to report to is allowed";
}
