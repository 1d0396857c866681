// Who may touch a store: modes, owners, links, read-only handles.
#include <grp.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>

#include "child.hpp"
#include "ledger.hpp"
#include "opened.hpp"
#include "scratch.hpp"

using namespace trial;

namespace {

constexpr unsigned kNobody = 65534;

class Access : public testing::Test {
 protected:
  cfg_code code_of_open(const std::string &path, unsigned options = 0) {
    cfg_failure failure{};
    const Opened store(cfg_open(path.c_str(), options, &failure));
    if (store) return CFG_OK;
    EXPECT_NE(failure.text[0], '\0') << "no text for " << cfg_code_text(failure.code);
    return failure.code;
  }

  void make_store() { ledger::create(open_store(path_, CFG_OPEN_CREATE).get()); }

  Scratch scratch_;
  const std::string path_ = scratch_.store();
};

std::string become_nobody() {
  if (setgroups(0, nullptr) != 0 || setgid(kNobody) != 0 || setuid(kNobody) != 0)
    return "cannot drop privileges";
  return "";
}

}  // namespace

TEST_F(Access, AStoreIsPrivateWhateverTheUmask) {
  int number = 0;
  for (mode_t mask : {0U, 022U, 077U, 0277U, 0777U}) {
    const std::string path = path_ + std::to_string(++number);
    EXPECT_EQ(in_child([&]() -> std::string {
                umask(mask);
                ledger::create(open_store(path, CFG_OPEN_CREATE).get());
                return "";
              }),
              "");
    EXPECT_EQ(mode_of(path), 0700U) << "umask " << mask;
    ASSERT_FALSE(files_in(path).empty());
    for (const std::string &file : files_in(path))
      EXPECT_EQ(mode_of(file), 0600U) << file << ", umask " << mask;
  }
}

TEST_F(Access, TheUmaskOfTheProgramIsLeftAlone) {
  const mode_t before = umask(027);
  make_store();
  EXPECT_EQ(umask(before), 027U);
}

TEST_F(Access, AStoreInADirectoryThatOthersCanEnterIsRefused) {
  make_store();
  for (mode_t mode : {0701U, 0704U, 0707U, 0755U, 0777U, 01777U}) {
    ASSERT_EQ(chmod(path_.c_str(), mode), 0);
    EXPECT_EQ(code_of_open(path_), CFG_E_PERMISSION) << std::oct << mode;
    EXPECT_EQ(code_of_open(path_, CFG_OPEN_CREATE), CFG_E_PERMISSION) << std::oct << mode;
    EXPECT_EQ(code_of_open(path_, CFG_OPEN_READ_ONLY), CFG_E_PERMISSION) << std::oct << mode;
    EXPECT_EQ(mode_of(path_), mode) << "it is refused, not repaired";
  }
  ASSERT_EQ(chmod(path_.c_str(), 0700), 0);
  EXPECT_EQ(code_of_open(path_), CFG_OK);
}

TEST_F(Access, NothingIsCreatedInADirectoryThatOthersCanEnter) {
  ASSERT_EQ(mkdir(path_.c_str(), 0755), 0);
  ASSERT_EQ(chmod(path_.c_str(), 0755), 0);
  EXPECT_EQ(code_of_open(path_, CFG_OPEN_CREATE), CFG_E_PERMISSION);
  EXPECT_TRUE(std::filesystem::is_empty(path_));
}

TEST_F(Access, FilesThatOthersCanReadOrWriteAreRefused) {
  make_store();
  for (const std::string &file : files_in(path_))
    for (mode_t mode : {0604U, 0602U, 0666U}) {
      ASSERT_EQ(chmod(file.c_str(), mode), 0);
      EXPECT_EQ(code_of_open(path_), CFG_E_PERMISSION) << file << " " << std::oct << mode;
      ASSERT_EQ(chmod(file.c_str(), 0600), 0);
    }
  EXPECT_EQ(code_of_open(path_), CFG_OK);
}

TEST_F(Access, AStoreThatBelongsToSomebodyElseIsRefused) {
  if (geteuid() != 0) GTEST_SKIP() << "only root can give files away";
  make_store();
  for (const std::string &path : {path_, data_file(path_)}) {
    ASSERT_EQ(chown(path.c_str(), kNobody, kNobody), 0);
    EXPECT_EQ(code_of_open(path_), CFG_E_PERMISSION) << path;
    ASSERT_EQ(chown(path.c_str(), 0, 0), 0);
  }
  EXPECT_EQ(code_of_open(path_), CFG_OK);
}

TEST_F(Access, AUserWithoutPermissionIsToldSo) {
  if (geteuid() != 0) GTEST_SKIP() << "only root can become somebody else";
  // Everybody may come as far as the store's directory, so that it is the store that says no.
  char place[] = "/tmp/tw-access-XXXXXX";
  ASSERT_TRUE(mkdtemp(place));
  ASSERT_EQ(chmod(place, 0777), 0);
  const std::string foreign = std::string(place) + "/foreign", own = std::string(place) + "/own";
  ledger::create(open_store(foreign, CFG_OPEN_CREATE).get());
  EXPECT_EQ(in_child([&]() -> std::string {
              if (std::string problem = become_nobody(); !problem.empty()) return problem;
              for (unsigned options : {0U, unsigned{CFG_OPEN_CREATE}, unsigned{CFG_OPEN_READ_ONLY}})
                if (code_of_open(foreign, options) != CFG_E_PERMISSION)
                  return std::string("the foreign store: ") + cfg_code_text(code_of_open(foreign, options));
              ledger::create(open_store(own, CFG_OPEN_CREATE).get());
              if (std::string problem = ledger::check(open_store(own).get()); !problem.empty())
                return problem;
              const std::string data = data_file(own);
              chmod(data.c_str(), 0000);
              if (code_of_open(own) != CFG_E_PERMISSION) return "a file without permissions was opened";
              chmod(data.c_str(), 0600);
              chmod(own.c_str(), 0000);
              if (code_of_open(own) != CFG_E_PERMISSION) return "a directory without permissions was opened";
              chmod(own.c_str(), 0700);
              return ledger::check(open_store(own).get());
            }),
            "");
  std::filesystem::remove_all(place);
}

TEST_F(Access, ASymbolicLinkInTheFilesPlaceIsRefused) {
  make_store();
  for (const std::string &file : files_in(path_)) {
    const std::string away = scratch_.path() + "/away";
    std::filesystem::rename(file, away);
    std::filesystem::create_symlink(away, file);
    const cfg_code code = code_of_open(path_);
    EXPECT_TRUE(code == CFG_E_PERMISSION || code == CFG_E_CORRUPT) << file << ": " << cfg_code_text(code);
    std::filesystem::remove(file);
    std::filesystem::rename(away, file);
  }
  EXPECT_EQ(code_of_open(path_), CFG_OK);
}

TEST_F(Access, ADanglingLinkInTheFilesPlaceIsNotWrittenThrough) {
  make_store();
  const std::string data = data_file(path_), target = scratch_.path() + "/target";
  std::filesystem::remove(data);
  std::filesystem::create_symlink(target, data);
  EXPECT_NE(code_of_open(path_, CFG_OPEN_CREATE), CFG_OK);
  EXPECT_FALSE(std::filesystem::exists(target));
}

TEST_F(Access, AnOpenDirectoryBehindALinkIsRefusedLikeAnyOther) {
  make_store();
  const std::string link = scratch_.path() + "/link";
  std::filesystem::create_directory_symlink(path_, link);
  ASSERT_EQ(chmod(path_.c_str(), 0755), 0);
  EXPECT_EQ(code_of_open(link), CFG_E_PERMISSION);
}

TEST_F(Access, AReadOnlyHandleReadsAndRefusesEveryChange) {
  make_store();
  const Opened writer = open_store(path_);
  const Opened reader = open_store(path_, CFG_OPEN_READ_ONLY);
  cfg *store = reader.get();
  EXPECT_EQ(ledger::check(store), "");
  const auto refused = [store](int result) {
    return result == 0 && cfg_error_code(store) == CFG_E_READ_ONLY;
  };
  EXPECT_TRUE(refused(cfg_map_set_int(store, cfg_root(store), "moves", 9))) << explain(store);
  EXPECT_TRUE(refused(cfg_map_set_string(store, cfg_root(store), "text", "t"))) << explain(store);
  EXPECT_TRUE(refused(cfg_map_delete_key(store, cfg_root(store), "moves"))) << explain(store);
  EXPECT_TRUE(refused(cfg_delete_element(store, cfg_get_by_path(store, "journal")))) << explain(store);
  EXPECT_FALSE(cfg_set_list(store, cfg_get_by_path(store, "journal")));
  EXPECT_EQ(cfg_error_code(store), CFG_E_READ_ONLY) << explain(store);
  EXPECT_FALSE(cfg_has_changes(store));
  EXPECT_EQ(ledger::moves(store), 0);
  EXPECT_EQ(ledger::move_and_commit(writer.get(), 1), "") << "the writing handle of the same process";
  ASSERT_TRUE(cfg_refresh(store));
  EXPECT_EQ(ledger::moves(store), 1);
}

TEST_F(Access, AStoreCanBeMadeForReadingOnly) {
  const Opened store = open_store(path_, CFG_OPEN_READ_ONLY | CFG_OPEN_CREATE);
  EXPECT_EQ(cfg_revision(store.get()), 0U);
  EXPECT_FALSE(set_number(store.get(), "number", 1));
  EXPECT_EQ(cfg_error_code(store.get()), CFG_E_READ_ONLY);
}
