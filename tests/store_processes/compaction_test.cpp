// Compact copies: what they hold and what they no longer hold.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>

#include "child.hpp"
#include "ledger.hpp"
#include "opened.hpp"
#include "scratch.hpp"

using namespace trial;

namespace {

const std::string kSecret = "a-password-that-nobody-must-find";

class Compaction : public testing::Test {
 protected:
  Compaction() { ledger::create(store_.get()); }

  // How many of the directory's files hold the secret.
  static int files_with_secret(const std::string &directory) {
    int count = 0;
    for (const std::string &file : files_in(directory))
      count += read_file(file).find(kSecret) != std::string::npos;
    return count;
  }

  // Stores the secret among other values and over many pages, and deletes it again.
  void store_and_delete_secrets() {
    commit_now(store_.get(), [](cfg *edit) {
      std::string large;
      while (large.size() < 50000) large += kSecret;
      return cfg_map_set_string(edit, cfg_root(edit), "password", kSecret.c_str()) &&
             cfg_map_set_string(edit, cfg_root(edit), "large", large.c_str());
    });
    commit_now(store_.get(), [](cfg *edit) {
      return cfg_map_delete_key(edit, cfg_root(edit), "password") &&
             cfg_map_delete_key(edit, cfg_root(edit), "large") && set_number(edit, "after", 1);
    });
  }

  Scratch scratch_;
  const std::string path_ = scratch_.store(), copy_ = scratch_.path() + "/copy";
  Opened store_ = open_store(path_, CFG_OPEN_CREATE);
};

}  // namespace

TEST_F(Compaction, DeletedSecretsAreNotInTheCopy) {
  store_and_delete_secrets();
  ASSERT_EQ(files_with_secret(path_), 1) << "free pages keep it: what the copy is for";
  ASSERT_TRUE(cfg_compact(store_.get(), copy_.c_str())) << explain(store_.get());
  EXPECT_EQ(files_with_secret(copy_), 0);
}

TEST_F(Compaction, ASecretThatIsStillStoredIsInTheCopy) {
  commit_now(store_.get(), [](cfg *edit) {
    return cfg_map_set_string(edit, cfg_root(edit), "password", kSecret.c_str()) != 0;
  });
  ASSERT_TRUE(cfg_compact(store_.get(), copy_.c_str())) << explain(store_.get());
  EXPECT_EQ(files_with_secret(copy_), 1);
}

TEST_F(Compaction, TheCopyOpensExportsTheSameBytesAndIsSmaller) {
  for (uint32_t i = 0; i < 50; ++i) ASSERT_EQ(ledger::move_and_commit(store_.get(), i * 3), "");
  store_and_delete_secrets();
  ASSERT_TRUE(cfg_compact(store_.get(), copy_.c_str())) << explain(store_.get());
  const Opened copy = open_store(copy_);
  EXPECT_EQ(export_text(copy.get()), export_text(store_.get()));
  EXPECT_EQ(cfg_revision(copy.get()), cfg_revision(store_.get()));
  EXPECT_EQ(ledger::check(copy.get()), "");
  EXPECT_EQ(problems(copy.get()), "");
  EXPECT_LT(std::filesystem::file_size(data_file(copy_)), std::filesystem::file_size(data_file(path_)));
  EXPECT_EQ(ledger::move_and_commit(copy.get(), 9), "") << "it is a store like any other";
  EXPECT_EQ(ledger::moves(store_.get()), 50) << "and not the one it was copied from";
}

TEST_F(Compaction, TheCopyGoesOnCountingWhereTheStoreStopped) {
  cfg_elem *last = append_number(store_.get(), "accounts", "balance", 1);
  commit_now(store_.get(), [](cfg *) { return true; });
  const std::string used = id_of(last);
  commit_now(store_.get(), [last](cfg *edit) { return cfg_delete_element(edit, last) != 0; });
  ASSERT_TRUE(cfg_compact(store_.get(), copy_.c_str())) << explain(store_.get());
  const Opened copy = open_store(copy_);
  cfg_elem *next = append_number(copy.get(), "accounts", "balance", 2);
  commit_now(copy.get(), [](cfg *) { return true; });
  EXPECT_NE(id_of(next), used);
}

TEST_F(Compaction, TheCopyIsPrivate) {
  EXPECT_EQ(in_child([this]() -> std::string {
              umask(0);
              const Opened store = open_store(path_);
              return cfg_compact(store.get(), copy_.c_str()) ? "" : explain(store.get());
            }),
            "");
  EXPECT_EQ(mode_of(copy_), 0700U);
  for (const std::string &file : files_in(copy_)) EXPECT_EQ(mode_of(file), 0600U) << file;
}

TEST_F(Compaction, AnExistingTargetIsNeitherReplacedNorFilled) {
  std::filesystem::create_directory(copy_);
  EXPECT_FALSE(cfg_compact(store_.get(), copy_.c_str()));
  EXPECT_EQ(cfg_error_code(store_.get()), CFG_E_EXISTS) << explain(store_.get());
  EXPECT_TRUE(std::filesystem::is_empty(copy_));
  EXPECT_FALSE(cfg_compact(store_.get(), path_.c_str()));
  EXPECT_EQ(cfg_error_code(store_.get()), CFG_E_EXISTS) << explain(store_.get());
  EXPECT_FALSE(cfg_compact(store_.get(), (scratch_.path() + "/no/where").c_str()));
  EXPECT_EQ(cfg_error_code(store_.get()), CFG_E_NOT_FOUND) << explain(store_.get());
  EXPECT_FALSE(cfg_compact(store_.get(), nullptr));
  EXPECT_EQ(cfg_error_code(store_.get()), CFG_E_ARGUMENT) << explain(store_.get());
  EXPECT_EQ(ledger::check(store_.get()), "");
}

TEST_F(Compaction, TheCopyIsOneRevisionEvenWhileAnotherProcessWrites) {
  store_.reset();
  Child writer([this](Line &parent) -> std::string {
    const Opened store = open_store(path_);
    parent.say("writing");
    for (uint32_t i = 0;; ++i)
      if (std::string problem = ledger::move_and_commit(store.get(), i); !problem.empty()) return problem;
  });
  ASSERT_TRUE(writer.line().wait());
  const Opened store = open_store(path_);
  for (int i = 0; i < 20; ++i) {
    const std::string copy = copy_ + std::to_string(i);
    ASSERT_TRUE(cfg_compact(store.get(), copy.c_str())) << explain(store.get());
    const Opened opened = open_store(copy);
    EXPECT_EQ(ledger::check(opened.get()), "");
    EXPECT_EQ(problems(opened.get()), "");
  }
  writer.kill_now();
  EXPECT_EQ(writer.finish(), "signal 9");
}
