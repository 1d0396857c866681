// The hash of a user's password.
#include <crypt.h>

#include <cstring>
#include <filesystem>
#include <regex>

#include "access_fixture.hpp"
#include "system_calls.hpp"

namespace {

using records::owned;
using records::RandomSource;
using records::texts;

class Password : public records::AccessTest {
 protected:
  void SetUp() override {
    AccessTest::SetUp();
    list_at("users");
    record = new_user("u");
  }
  // The hash as a save writes it; "none" when it writes none.
  std::string saved_hash() {
    EXPECT_EQ(1, cfg_user_save(record.get()));
    char *hash = nullptr;
    if (!cfg_map_get_string(store, cfg_get_by_id(store, cfg_user_get_uuid(record.get())), "hashed_password",
                            &hash))
      return "none";
    return records::heap_text(hash).get();
  }
  std::string hash_of(const char *clear) {
    cfg_user_set_password(record.get(), clear);
    return saved_hash();
  }
  static std::string crypted(const char *clear, const std::string &setting) {
    crypt_data data{};
    return crypt_r(clear, setting.c_str(), &data);
  }
  static std::ptrdiff_t open_files() {
    return std::distance(std::filesystem::directory_iterator("/proc/self/fd"),
                         std::filesystem::directory_iterator());
  }

  owned<cfg_user> record;
};

TEST_F(Password, IsHashedBySha256WithSixteenCharactersOfSalt) {
  const std::string hash = hash_of("tide and time");
  EXPECT_TRUE(std::regex_match(hash, std::regex("\\$5\\$[./0-9A-Za-z]{16}\\$[./0-9A-Za-z]{43}"))) << hash;
  EXPECT_EQ((texts{}), messages());
}

TEST_F(Password, IsVerifiedByCrypt) {
  for (const char *clear : {"x", "tide and time", "p\xc3\xa4ssw\xc3\xb6rd", "$5$abc$", "a:b\tc"}) {
    const std::string hash = hash_of(clear);
    EXPECT_EQ(hash, crypted(clear, hash)) << clear;
    EXPECT_NE(hash, crypted("another", hash)) << clear;
  }
}

TEST_F(Password, IsVerifiedByTheOpensslProgram) {
  const std::string hash = hash_of("tide-and-time");
  const std::string salt = hash.substr(3, 16);
  const std::string command = OPENSSL_PROGRAM " passwd -5 -salt '" + salt + "' tide-and-time";
  const std::unique_ptr<FILE, int (*)(FILE *)> output(popen(command.c_str(), "r"), pclose);
  char line[256] = "";
  ASSERT_NE(nullptr, fgets(line, sizeof line, output.get()));
  EXPECT_EQ(hash + "\n", line);
}

TEST_F(Password, GetsAFreshSaltEachTime) {
  const std::string first = hash_of("same");
  const std::string second = hash_of("same");
  EXPECT_NE(first.substr(0, 19), second.substr(0, 19));
  EXPECT_NE(first, second);
}

TEST_F(Password, TheSaltIsTwelveRandomBytesThreeByThreeTheFirstByteHighest) {
  const RandomSource random(RandomSource::bytes,
                            std::string("\x00\x10\x83\xff\xff\xff\x01\x00\x00\x00\x00\x01", 12));
  const std::string setting = "$5$./01zzzz.E...../";
  const std::string hash = hash_of("clear");
  EXPECT_EQ(setting + "$", hash.substr(0, 20));
  EXPECT_EQ(crypted("clear", setting), hash);
}

TEST_F(Password, EveryCharacterOfTheSaltComesFromItsSixBits) {
  // The 64 numbers in order are four salts.
  std::string bytes, characters;
  for (unsigned n = 0; n < 64; n += 4) {
    const unsigned group = n << 18 | (n + 1) << 12 | (n + 2) << 6 | (n + 3);
    for (const unsigned shift : {16U, 8U, 0U}) bytes.push_back(static_cast<char>(group >> shift & 0xff));
  }
  for (std::size_t i = 0; i < 4; ++i) {
    const RandomSource random(RandomSource::bytes, bytes.substr(i * 12, 12));
    characters += hash_of("x").substr(3, 16);
  }
  EXPECT_EQ("./0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz", characters);
}

TEST_F(Password, ShortReadsOfTheRandomSourceAreContinued) {
  for (const std::size_t at_once : {1U, 5U, 11U}) {
    const RandomSource random(RandomSource::bytes, "0123456789ab", at_once);
    EXPECT_EQ(crypted("x", "$5$A12mAnEpBXQsCK3W"), hash_of("x")) << at_once;
  }
}

TEST_F(Password, WithoutARandomSourceThereIsNoHashButAMessage) {
  const struct {
    RandomSource::Kind kind;
    const char *content;
  } sources[] = {{RandomSource::missing, ""},
                 {RandomSource::unreadable, ""},
                 {RandomSource::ended, ""},
                 {RandomSource::bytes, "eleven byte"}};
  for (const auto &source : sources) {
    ASSERT_NE("none", hash_of("old"));
    cfg_abandon(store);
    record = new_user("u");
    list_at("users");
    cfg_user_set_password(record.get(), "old");
    const std::ptrdiff_t files = open_files();
    {
      const RandomSource random(source.kind, source.content);
      cfg_user_set_password(record.get(), "new");
    }
    EXPECT_EQ(files, open_files()) << source.kind;
    EXPECT_EQ((texts{"src/users"}), messages()) << source.kind;
    EXPECT_EQ("none", saved_hash()) << "the old password is no good any more either";
  }
}

TEST_F(Password, OneThatCryptRefusesLeavesAMessageAndNoHash) {
  ASSERT_NE("none", hash_of(std::string(511, 'x').c_str()));
  EXPECT_EQ((texts{}), messages());
  EXPECT_EQ("none", hash_of(std::string(512, 'x').c_str()));
  EXPECT_EQ((texts{"src/users"}), messages());
}

TEST_F(Password, AnEmptyOneTakesTheStoredHashAwayWithTheNextSave) {
  ASSERT_NE("none", hash_of("x"));
  cfg_user_set_password(record.get(), "");
  EXPECT_EQ("none", saved_hash());
  EXPECT_EQ((texts{}), messages());
}

TEST_F(Password, NullChangesNothingAndLeavesAMessage) {
  const std::string hash = hash_of("x");
  cfg_user_set_password(record.get(), nullptr);
  EXPECT_EQ((texts{"src/users"}), messages());
  EXPECT_EQ(hash, saved_hash());
}

TEST_F(Password, ARecordThatIsNullOrHasNoHandleIsLeftAlone) {
  cfg_user_set_password(nullptr, "x");
  cfg_user_set_password(nullptr, nullptr);
  const owned<cfg_user> without(cfg_user_new(nullptr, "u"));
  cfg_user_set_password(without.get(), "x");
  cfg_user_set_password(without.get(), nullptr);
  EXPECT_EQ((texts{}), messages());
}

TEST_F(Password, TheStoredHashSurvivesASaveWithoutANewPassword) {
  const std::string hash = hash_of("x");
  commit_and_reopen();
  record = user("users-1");
  EXPECT_EQ(hash, saved_hash());
}

TEST_F(Password, IsInTheStoreAsItsHashAlone) {
  hash_of("tide and time");
  EXPECT_EQ(std::string::npos, dump("").find("tide"));
}

TEST_F(Password, WhatCryptWorkedOnIsWiped) {
  cfg_user_set_password(record.get(), "x");
  EXPECT_TRUE(records::crypt_work_was_wiped());
  cfg_user_set_password(record.get(), std::string(512, 'x').c_str());
  EXPECT_TRUE(records::crypt_work_was_wiped());
}

}  // namespace
