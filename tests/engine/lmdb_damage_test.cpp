// Damaged data files, as verify() and reads see them.
#include <fcntl.h>
#include <lmdb.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <random>

#include "engine/lmdb_table.hpp"
#include "engine/records.hpp"
#include "engine_fixture.hpp"

namespace twcfg::testing {
namespace {

constexpr std::size_t kPage = 4096;

class LmdbDamage : public ::testing::Test {
 protected:
  // A store with trees of several levels, long values, and free pages.
  void SetUp() override {
    const auto engine = open_store(path_);
    std::vector<Write> writes;
    const std::string text(700, 'v');
    const std::string large(9000, 'L');
    for (Key key = 0; key < 600; key++) writes.push_back(set(key, key % 50 == 0 ? large : text));
    commit(*engine, writes, "log", "token");
    for (Key key = 0; key < 600; key += 7) commit(*engine, {set(key, text, 1)}, "log");
  }

  void overwrite(std::size_t offset, const std::string &bytes) const {
    const int file = open(data_.c_str(), O_WRONLY | O_CLOEXEC);
    ASSERT_GE(file, 0);
    EXPECT_EQ(pwrite(file, bytes.data(), bytes.size(), static_cast<off_t>(offset)),
              static_cast<ssize_t>(bytes.size()));
    close(file);
  }

  // Changes the records of the closed store through LMDB, so that its pages stay sound.
  void change_records(const std::function<void(WritableTable &)> &change) const {
    MDB_env *env = nullptr;
    ASSERT_EQ(mdb_env_create(&env), 0);
    ASSERT_EQ(mdb_env_open(env, path_.c_str(), MDB_NOTLS, 0600), 0);
    MDB_txn *txn = nullptr;
    MDB_dbi tree = 0;
    ASSERT_EQ(mdb_txn_begin(env, nullptr, 0, &txn), 0);
    ASSERT_EQ(mdb_dbi_open(txn, nullptr, kTreeFlags, &tree), 0);
    {
      LmdbTable table(txn);
      change(table);
    }
    ASSERT_EQ(mdb_txn_commit(txn), 0);
    mdb_env_close(env);
  }

  TemporaryDirectory directory_;
  const std::string path_ = directory_ / "store";
  const std::string data_ = path_ + "/data.mdb";
};

TEST_F(LmdbDamage, AnOverwrittenPageIsNeverReportedAsSound) {
  const std::string whole = contents_of(data_);
  std::size_t noticed = 0;
  const auto opened = open_store(path_, 0);
  for (std::size_t page = 2; page < whole.size() / kPage; page++) {
    const std::string before = whole.substr(page * kPage, kPage);
    overwrite(page * kPage, std::string(kPage, '\x5a'));
    if (!problems(*opened).empty()) noticed++;
    overwrite(page * kPage, before);
  }
  // The rest are free pages and the inner pages of long values, of which nothing but the length is known.
  EXPECT_GT(noticed, whole.size() / kPage / 2);
  EXPECT_EQ(problems(*opened), std::vector<std::string>());
}

TEST_F(LmdbDamage, WhateverBitsTurnCheckingEndsWithAnAnswer) {
  const std::string whole = contents_of(data_);
  std::mt19937 random(1);
  const auto opened = open_store(path_, 0);
  for (int round = 0; round < 3000; round++) {
    // Headers and node tables, where every number steers the walk.
    const std::size_t page = 2 + random() % (whole.size() / kPage - 2);
    const std::size_t offset = page * kPage + random() % 64;
    overwrite(offset,
              std::string(1, static_cast<char>(whole[offset] ^ static_cast<char>(1U << (random() % 8)))));
    problems(*opened);
    overwrite(offset, whole.substr(offset, 1));
  }
  EXPECT_EQ(problems(*opened), std::vector<std::string>());
}

TEST_F(LmdbDamage, WhateverBitsOfTheMetaPagesTurnOpeningEndsWithAnAnswer) {
  const std::string whole = contents_of(data_);
  int refused = 0;
  for (std::size_t page = 0; page < 2; page++)
    for (std::size_t byte = 0; byte < 152; byte++) {
      const std::size_t offset = page * kPage + byte;
      overwrite(offset, std::string(1, static_cast<char>(~whole[offset])));
      Failure failure;
      const auto engine = open_lmdb(path_, 0, failure);
      if (!engine) {
        refused++;
        EXPECT_TRUE(failure.code == CFG_E_CORRUPT || failure.code == CFG_E_VERSION) << failure.text;
      } else {
        problems(*engine);
      }
      overwrite(offset, whole.substr(offset, 1));
    }
  EXPECT_GT(refused, 50);
  EXPECT_EQ(problems(*open_store(path_, 0)), std::vector<std::string>());
}

TEST_F(LmdbDamage, RecordsThatContradictEachOtherAreNamed) {
  change_records([](WritableTable &table) {
    table.put(slot_of(Area::values, 1), {"short"});
    table.put(slot_of(Area::values, 2), {bytes_of(9999), "from the future"});
    table.erase(slot_of(Area::log, 5));
    table.put(slot_of(Area::log, 7), {"x"});
    table.put(slot_of(Area::tokens, 77), {bytes_of(3)});
    table.put(slot_of(Area::tokens, 78), {bytes_of(5)});
    table.put(slot_of(Area::tokens, 79), {"odd"});
  });
  const auto found = problems(*open_store(path_, 0));
  ASSERT_EQ(found.size(), 7U);
  EXPECT_EQ(found[0].substr(0, 9), "value 1: ");
  EXPECT_EQ(found[1].substr(0, 9), "value 2: ");
  EXPECT_EQ(found[2].substr(0, 10), "token 77: ");
  EXPECT_EQ(found[3].substr(0, 10), "token 78: ");
  EXPECT_EQ(found[4].substr(0, 10), "token 79: ");
  EXPECT_EQ(found[5], "log 6: the log has a gap behind commit 4");
  EXPECT_EQ(found[6], "log 7: the log entry is too short");
}

TEST_F(LmdbDamage, AReadThatMeetsDamageIsNotTakenForAnAbsence) {
  change_records([](WritableTable &table) { table.put(slot_of(Area::values, 3), {"short"}); });
  const auto engine = open_store(path_, 0);
  const auto snapshot = view(*engine);
  EXPECT_FALSE(snapshot->get(100'000));
  EXPECT_EQ(snapshot->failure().code, CFG_OK);
  EXPECT_FALSE(snapshot->get(3));
  EXPECT_EQ(snapshot->failure().code, CFG_E_CORRUPT);
  const CommitResult result = commit(*engine, {set(3, "x")});
  EXPECT_TRUE(result.stale || result.failure)
      << "damage must not be overwritten as if nothing had been there";
}

}  // namespace
}  // namespace twcfg::testing
