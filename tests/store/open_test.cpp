// Opening, status, verifying, compacting; and what an LMDB store demands of its directory.
#include "fixture.hpp"
#include "tree.hpp"

#include <sys/stat.h>

#include <filesystem>
#include <fstream>

class OpenTest : public StoreTest {
 protected:
  void SetUp() override {
    StoreTest::SetUp();
    ASSERT_NE(append_named(store, make_list(store, "nodes"), "n"), nullptr);
    ASSERT_TRUE(commits(store));
  }
};
STORE_TEST_ON_BOTH_ENGINES(OpenTest);

TEST_P(OpenTest, StatusTellsTheEngineAndTheRevision) {
  cfg_status_info status{};
  ASSERT_EQ(cfg_status(store, &status), 1);
  EXPECT_STREQ(status.engine, GetParam() == EngineKind::kLmdb ? "lmdb" : "memory");
  EXPECT_EQ(status.revision, 1U);
  EXPECT_GT(status.records, 0U);
  EXPECT_GT(status.used_bytes, 0U);
  EXPECT_EQ(status.oldest_log, 1U);
  cfg *other = another_handle();
  ASSERT_EQ(cfg_map_set_int(other, cfg_root(other), "x", 1), 1);
  ASSERT_TRUE(commits(other));
  ASSERT_EQ(cfg_status(store, &status), 1);
  EXPECT_EQ(status.revision, 2U);
}

TEST_P(OpenTest, AGoodStoreVerifies) {
  int problems = 0;
  cfg_problem_visitor count = [](void *context, const char *, const char *) {
    return ++*static_cast<int *>(context);
  };
  EXPECT_EQ(cfg_verify(store, count, &problems), 1);
  EXPECT_EQ(problems, 0);
  ASSERT_EQ(cfg_delete_element(store, cfg_get_by_id(store, "nodes-1")), 1);
  EXPECT_EQ(cfg_verify(store, count, &problems), 1);
  ASSERT_TRUE(commits(store));
  EXPECT_EQ(cfg_verify(store, count, &problems), 1);
  EXPECT_EQ(problems, 0);
}

TEST_P(OpenTest, CodesHaveNamesAndAdvice) {
  for (int code = CFG_OK; code <= CFG_E_FORMAT; ++code)
    EXPECT_STRNE(cfg_code_text(static_cast<cfg_code>(code)), "");
  EXPECT_STREQ(cfg_code_text(CFG_E_CONFLICT), "conflict");
  EXPECT_EQ(cfg_code_advice(CFG_OK), CFG_ADVICE_NONE);
  EXPECT_EQ(cfg_code_advice(CFG_E_CONFLICT), CFG_ADVICE_RETRY);
  EXPECT_EQ(cfg_code_advice(CFG_E_NO_SPACE), CFG_ADVICE_FIX);
  EXPECT_EQ(cfg_code_advice(CFG_E_PERMISSION), CFG_ADVICE_FIX);
  EXPECT_EQ(cfg_code_advice(CFG_E_CORRUPT), CFG_ADVICE_GIVE_UP);
  EXPECT_EQ(cfg_code_advice(CFG_E_UNKNOWN), CFG_ADVICE_OUTCOME_UNKNOWN);
}

TEST(MemoryStoreTest, WithoutANameIsNotShared) {
  cfg *one = cfg_open_memory(nullptr, nullptr);
  cfg *two = cfg_open_memory(nullptr, nullptr);
  ASSERT_EQ(cfg_map_set_int(one, cfg_root(one), "x", 1), 1);
  ASSERT_TRUE(commits(one));
  EXPECT_EQ(cfg_map_has(cfg_root(two), "x"), 0);
  cfg_close(one);
  cfg_close(two);
}

TEST(MemoryStoreTest, IsGoneWithItsLastHandle) {
  cfg *one = cfg_open_memory("gone with its last handle", nullptr);
  cfg *two = cfg_open_memory("gone with its last handle", nullptr);
  ASSERT_EQ(cfg_map_set_int(one, cfg_root(one), "x", 1), 1);
  ASSERT_TRUE(commits(one));
  cfg_close(one);
  EXPECT_EQ(cfg_map_has(cfg_root(two), "x"), 1);
  cfg_close(two);
  one = cfg_open_memory("gone with its last handle", nullptr);
  EXPECT_EQ(cfg_map_has(cfg_root(one), "x"), 0);
  cfg_close(one);
}

// What only a store in files can do wrong.
class DirectoryTest : public OpenTest {
 protected:
  // The code with which opening fails; CFG_OK when it does not.
  static cfg_code open_code(const char *path, unsigned options) {
    cfg_failure failure{};
    cfg *handle = cfg_open(path, options, &failure);
    if (handle) {
      cfg_close(handle);
      return CFG_OK;
    }
    EXPECT_STRNE(failure.text, "");
    return failure.code;
  }
  static mode_t mode_of(const std::string &path) {
    struct stat info {};
    EXPECT_EQ(stat(path.c_str(), &info), 0) << path;
    return info.st_mode & 07777;
  }
};
INSTANTIATE_TEST_SUITE_P(Engines, DirectoryTest, ::testing::Values(EngineKind::kLmdb), engine_name);

TEST_P(DirectoryTest, OpenFailsWithoutAStore) {
  EXPECT_EQ(open_code((directory_ + "/nothing").c_str(), 0), CFG_E_NOT_FOUND);
  EXPECT_EQ(open_code((directory_ + "/nothing").c_str(), CFG_OPEN_READ_ONLY), CFG_E_NOT_FOUND);
  EXPECT_FALSE(std::filesystem::exists(directory_ + "/nothing"));
  EXPECT_EQ(open_code((directory_ + "/not/there").c_str(), CFG_OPEN_CREATE), CFG_E_NOT_FOUND);
  EXPECT_EQ(open_code(nullptr, CFG_OPEN_CREATE), CFG_E_ARGUMENT);
  EXPECT_EQ(open_code("", CFG_OPEN_CREATE), CFG_E_ARGUMENT);
  EXPECT_EQ(open_code(path_.c_str(), 0x4000), CFG_E_ARGUMENT);
  EXPECT_EQ(cfg_open(nullptr, 0, nullptr), nullptr);
  EXPECT_NE(open_code((directory_ + "/" + std::string(5000, 'x')).c_str(), CFG_OPEN_CREATE), CFG_OK);
}

TEST_P(DirectoryTest, AStoreIsForItsOwnerOnly) {
  EXPECT_EQ(mode_of(path_), 0700U);
  int files = 0;
  for (const auto &entry : std::filesystem::directory_iterator(path_)) {
    EXPECT_EQ(mode_of(entry.path()), 0600U) << entry.path();
    ++files;
  }
  EXPECT_GT(files, 0);
}

TEST_P(DirectoryTest, AReadOnlyHandleRefusesChanges) {
  cfg_failure failure{};
  cfg *reader = cfg_open(path_.c_str(), CFG_OPEN_READ_ONLY, &failure);
  ASSERT_NE(reader, nullptr) << failure.text;
  EXPECT_EQ(dump(reader), dump(store));
  EXPECT_TRUE(failed_with(reader, cfg_map_set_int(reader, cfg_root(reader), "x", 1), CFG_E_READ_ONLY));
  EXPECT_TRUE(
      failed_with(reader, cfg_delete_element(reader, cfg_get_by_id(reader, "nodes-1")), CFG_E_READ_ONLY));
  const cfg_content content = {CFG_STRING, 0, "x", 1, nullptr, nullptr};
  EXPECT_TRUE(failed_with(reader,
                          cfg_append_content(reader, cfg_get_by_id(reader, "nodes"), &content) != nullptr,
                          CFG_E_READ_ONLY));
  EXPECT_TRUE(failed_with(reader, cfg_put_content(reader, cfg_root(reader), "x", &content), CFG_E_READ_ONLY));
  EXPECT_EQ(cfg_set_list(reader, cfg_get_by_path(reader, "nodes")), nullptr);
  EXPECT_EQ(cfg_error_code(reader), CFG_E_READ_ONLY);
  EXPECT_EQ(cfg_has_changes(reader), 0);
  ASSERT_EQ(cfg_map_set_int(store, cfg_root(store), "x", 1), 1);
  ASSERT_TRUE(commits(store));
  EXPECT_EQ(cfg_map_has(cfg_root(reader), "x"), 0);
  ASSERT_EQ(cfg_refresh(reader), 1);
  EXPECT_EQ(cfg_map_has(cfg_root(reader), "x"), 1);
  cfg_close(reader);
}

TEST_P(DirectoryTest, ADirectoryThatOthersMayWriteIsRefused) {
  close_handle(store);
  ASSERT_EQ(chmod(path_.c_str(), 0777), 0);
  EXPECT_EQ(open_code(path_.c_str(), 0), CFG_E_PERMISSION);
  ASSERT_EQ(chmod(path_.c_str(), 0700), 0);
  EXPECT_EQ(open_code(path_.c_str(), 0), CFG_OK);
}

TEST_P(DirectoryTest, AFileIsNoStore) {
  std::string file = directory_ + "/file";
  std::ofstream(file) << "text";
  EXPECT_NE(open_code(file.c_str(), 0), CFG_OK);
  EXPECT_NE(open_code(file.c_str(), CFG_OPEN_CREATE), CFG_OK);
  EXPECT_EQ(std::filesystem::file_size(file), 4U);
}

TEST_P(DirectoryTest, DamagedFilesAreRefusedOrTold) {
  for (int i = 0; i < 200; ++i)
    ASSERT_NE(append_named(store, cfg_get_by_path(store, "nodes"), std::string(300, 'n')), nullptr);
  ASSERT_TRUE(commits(store));
  close_handle(store);
  std::string data;
  for (const auto &entry : std::filesystem::directory_iterator(path_))
    if (data.empty() || entry.file_size() > std::filesystem::file_size(data)) data = entry.path();
  auto size = std::filesystem::file_size(data);
  std::filesystem::copy_file(data, directory_ + "/good");
  auto damage = [&](const std::string &what) {
    cfg_failure failure{};
    cfg *handle = cfg_open(path_.c_str(), 0, &failure);
    if (!handle) {
      EXPECT_EQ(failure.code, CFG_E_CORRUPT) << what << ": " << failure.text;
    } else {
      EXPECT_EQ(cfg_verify(handle, nullptr, nullptr), 0) << what;
      cfg_close(handle);
    }
    std::filesystem::copy_file(directory_ + "/good", data, std::filesystem::copy_options::overwrite_existing);
  };
  std::filesystem::resize_file(data, size / 2);
  damage("cut in half");
  std::filesystem::resize_file(data, 5000);
  damage("cut to 5000 bytes");
  std::filesystem::resize_file(data, 10);
  damage("cut to 10 bytes");
  std::ofstream(data, std::ios::binary) << std::string(size, 'x');
  damage("overwritten");
  EXPECT_EQ(open_code(path_.c_str(), 0), CFG_OK);
}

TEST_P(DirectoryTest, ACompactCopyHoldsTheSame) {
  for (int round = 0; round < 20; ++round) {
    for (int i = 0; i < 100; ++i)
      ASSERT_NE(append_named(store, cfg_get_by_path(store, "nodes"), "secret" + std::string(300, 'n')),
                nullptr);
    ASSERT_TRUE(commits(store));
    ASSERT_NE(cfg_set_list(store, cfg_get_by_path(store, "nodes")), nullptr);
    ASSERT_TRUE(commits(store));
  }
  ASSERT_NE(append_named(store, cfg_get_by_path(store, "nodes"), "last"), nullptr);
  ASSERT_TRUE(commits(store));
  std::string copy_path = directory_ + "/copy";
  ASSERT_EQ(cfg_compact(store, copy_path.c_str()), 1) << cfg_error_text(store);
  EXPECT_EQ(mode_of(copy_path), 0700U);
  cfg *copy = cfg_open(copy_path.c_str(), 0, nullptr);
  ASSERT_NE(copy, nullptr);
  EXPECT_EQ(dump(copy), dump(store));
  EXPECT_EQ(export_text(copy), export_text(store));
  EXPECT_EQ(cfg_revision(copy), cfg_revision(store));
  EXPECT_EQ(cfg_verify(copy, nullptr, nullptr), 1);
  cfg_close(copy);
  for (const auto &entry : std::filesystem::directory_iterator(copy_path)) {
    std::ifstream file(entry.path(), std::ios::binary);
    std::string bytes((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
    EXPECT_EQ(bytes.find("secret"), std::string::npos) << entry.path();
  }
  EXPECT_TRUE(failed_with(store, cfg_compact(store, copy_path.c_str()), CFG_E_EXISTS));
  EXPECT_TRUE(failed_with(store, cfg_compact(store, (directory_ + "/no/where").c_str()), CFG_E_NOT_FOUND));
}
