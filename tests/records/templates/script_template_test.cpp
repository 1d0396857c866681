// Templates that carry a script.
#include <cstring>

#include "template_fixture.hpp"

namespace {

using records::heap_text;
using records::template_record;

class ScriptTemplate : public records::TemplateTest {
 protected:
  void SetUp() override {
    TemplateTest::SetUp();
    list_at("templates");
  }
  template_record fresh_script(std::string_view script = "#!/bin/sh\n") {
    template_record record = fresh("run", CFG_TEMPLATE_SCRIPT);
    EXPECT_EQ(
        1, cfg_script_template_set_script(record.get(), script.data(), static_cast<int32_t>(script.size())));
    return record;
  }
  cfg_elem *elem_of(const template_record &record) {
    return cfg_get_by_id(store, cfg_template_get_uuid(record.get()));
  }
  static std::string script_of(const template_record &record) {
    const auto *bytes = static_cast<const char *>(cfg_script_template_get_script(record.get()));
    return bytes == nullptr
               ? "none"
               : std::string(bytes, static_cast<size_t>(cfg_script_template_get_size(record.get())));
  }
};

// Of "abc" and of nothing, as the standard gives them.
constexpr char sum_of_abc[] = "a9993e364706816aba3e25717850c26c9cd0d89d";
constexpr char sum_of_nothing[] = "da39a3ee5e6b4b0d3255bfef95601890afd80709";

TEST_F(ScriptTemplate, IsNewWithoutAScript) {
  const template_record record = fresh("run", CFG_TEMPLATE_SCRIPT);
  EXPECT_EQ(nullptr, cfg_script_template_get_script(record.get()));
  EXPECT_EQ(nullptr, cfg_script_template_get_checksum(record.get()));
  EXPECT_EQ(0, cfg_script_template_get_size(record.get()));
  EXPECT_EQ(0, cfg_script_template_get_timeout(record.get()));
}

TEST_F(ScriptTemplate, TheChecksumIsTheSha1InLowerCaseDigits) {
  const template_record record = fresh_script("abc");
  EXPECT_STREQ(sum_of_abc, cfg_script_template_get_checksum(record.get()));
  EXPECT_EQ(3, cfg_script_template_get_size(record.get()));
}

TEST_F(ScriptTemplate, AnEmptyScriptIsAScriptWithAChecksum) {
  const template_record record = fresh_script("abc");
  EXPECT_EQ(1, cfg_script_template_set_script(record.get(), "", 0));
  EXPECT_STREQ(sum_of_nothing, cfg_script_template_get_checksum(record.get()));
  EXPECT_EQ(0, cfg_script_template_get_size(record.get()));
  EXPECT_NE(nullptr, cfg_script_template_get_script(record.get()));
  EXPECT_EQ(1, cfg_template_save(record.get()));
  EXPECT_EQ(std::string(R"({name="run" script=<> script_checksum=")") + sum_of_nothing +
                R"(" script_timeout=0 template_type="script"})",
            dump(elem_of(record)));
}

TEST_F(ScriptTemplate, IsCopiedExactlyZeroBytesIncluded) {
  std::string script("\0a\0\xff\n\0", 6);
  const template_record record = fresh_script(script);
  script.assign("overwritten");
  EXPECT_EQ(std::string("\0a\0\xff\n\0", 6), script_of(record));
  ASSERT_EQ(1, cfg_template_save(record.get()));
  commit();
  EXPECT_EQ(std::string("\0a\0\xff\n\0", 6), script_of(load("templates-1")));
}

TEST_F(ScriptTemplate, OnlyAsManyBytesAreTakenAsAreGiven) {
  const template_record record = fresh("run", CFG_TEMPLATE_SCRIPT);
  EXPECT_EQ(1, cfg_script_template_set_script(record.get(), "abcdef", 3));
  EXPECT_EQ("abc", script_of(record));
  EXPECT_STREQ(sum_of_abc, cfg_script_template_get_checksum(record.get()));
}

TEST_F(ScriptTemplate, IsReplacedWholeAlsoByAPartOfItself) {
  const template_record record = fresh_script("xabc");
  const auto *bytes = static_cast<const char *>(cfg_script_template_get_script(record.get()));
  EXPECT_EQ(1, cfg_script_template_set_script(record.get(), bytes + 1, 3));
  EXPECT_EQ("abc", script_of(record));
  EXPECT_STREQ(sum_of_abc, cfg_script_template_get_checksum(record.get()));
}

TEST_F(ScriptTemplate, WhatIsNoScriptChangesNothing) {
  const template_record record = fresh_script("abc");
  EXPECT_EQ(0, cfg_script_template_set_script(record.get(), nullptr, 3));
  EXPECT_EQ(0, cfg_script_template_set_script(record.get(), "xyz", -1));
  EXPECT_EQ(0, cfg_script_template_set_script(nullptr, "xyz", 3));
  EXPECT_EQ("abc", script_of(record));
  EXPECT_STREQ(sum_of_abc, cfg_script_template_get_checksum(record.get()));
}

TEST_F(ScriptTemplate, IsSavedAndReadBack) {
  const template_record record = fresh_script("abc");
  ASSERT_EQ(1, cfg_script_template_set_timeout(record.get(), 90));
  EXPECT_EQ(1, cfg_template_save(record.get()));
  const std::string whole = std::string(R"({name="run" script=<abc> script_checksum=")") + sum_of_abc +
                            R"(" script_timeout=90 template_type="script"})";
  EXPECT_EQ(whole, dump(elem_of(record)));
  commit();
  const template_record again = load("templates-1");
  EXPECT_EQ("abc", script_of(again));
  EXPECT_STREQ(sum_of_abc, cfg_script_template_get_checksum(again.get()));
  EXPECT_EQ(90, cfg_script_template_get_timeout(again.get()));
  EXPECT_EQ(1, cfg_template_save(again.get()));
  EXPECT_EQ(whole, dump("templates").substr(1, whole.size()));
  EXPECT_FALSE(cfg_has_changes(store));
}

TEST_F(ScriptTemplate, ItsKeysAreWrittenInOrder) {
  const template_record record = fresh_script("abc");
  ASSERT_EQ(1, cfg_template_save(record.get()));
  commit();
  ASSERT_EQ(1, cfg_script_template_set_script(record.get(), "xyz", 3));
  ASSERT_EQ(1, cfg_script_template_set_timeout(record.get(), 9));
  EXPECT_EQ(1, cfg_template_save(record.get()));
  EXPECT_EQ((std::vector<std::string>{"= templates-1.script", "= templates-1.script_checksum",
                                      "= templates-1.script_timeout"}),
            changes());
}

TEST_F(ScriptTemplate, TheChecksumIsTakenAsItIsStored) {
  cfg_elem *elem = add_template("run", "script");
  set_blob(elem, "script", "abc");
  set(elem, "script_checksum", "not a checksum");
  const template_record record = load(elem);
  EXPECT_STREQ("not a checksum", cfg_script_template_get_checksum(record.get()));
  EXPECT_EQ(1, cfg_template_save(record.get()));
  EXPECT_STREQ("not a checksum", cfg_script_template_get_checksum(load(elem).get()));
}

TEST_F(ScriptTemplate, StoredWithoutATimeoutIsSavedWithZero) {
  cfg_elem *elem = add_template("run", "script");
  set_blob(elem, "script", "abc");
  const template_record record = load(elem);
  EXPECT_EQ(0, cfg_script_template_get_timeout(record.get()));
  EXPECT_EQ(1, cfg_template_save(record.get()));
  EXPECT_EQ(R"({name="run" script=<abc> script_timeout=0 template_type="script"})", dump(elem));
}

TEST_F(ScriptTemplate, ADeletedTimeoutStaysDeletedInEverySaveOfTheRecord) {
  const template_record record = fresh_script("abc");
  ASSERT_EQ(1, cfg_script_template_set_timeout(record.get(), 30));
  ASSERT_EQ(1, cfg_template_save(record.get()));
  cfg_elem *elem = elem_of(record);
  ASSERT_TRUE(cfg_map_has(elem, "script_timeout"));
  EXPECT_EQ(1, cfg_script_template_delete_timeout(record.get()));
  EXPECT_EQ(30, cfg_script_template_get_timeout(record.get()));
  for (const int32_t timeout : {40, 50}) {
    EXPECT_EQ(1, cfg_script_template_set_timeout(record.get(), timeout));
    EXPECT_EQ(timeout, cfg_script_template_get_timeout(record.get()));
    EXPECT_EQ(1, cfg_template_save(record.get()));
    EXPECT_FALSE(cfg_map_has(elem, "script_timeout")) << timeout;
  }
}

TEST_F(ScriptTemplate, LoadedAnewCanHaveATimeoutAgain) {
  const template_record record = fresh_script("abc");
  cfg_script_template_delete_timeout(record.get());
  ASSERT_EQ(1, cfg_template_save(record.get()));
  const template_record again = load(cfg_template_get_uuid(record.get()));
  ASSERT_EQ(1, cfg_script_template_set_timeout(again.get(), 70));
  EXPECT_EQ(1, cfg_template_save(again.get()));
  EXPECT_EQ(70, cfg_script_template_get_timeout(load(cfg_template_get_uuid(record.get())).get()));
}

TEST_F(ScriptTemplate, WithoutAScriptLeavesTheStoredOneAndLosesTheChecksum) {
  cfg_elem *elem = add_template("run", "script");
  set_blob(elem, "script", "abc");
  set(elem, "script_checksum", "a checksum");
  const template_record record = load(elem);
  EXPECT_EQ(1, cfg_script_template_new_setup(record.get()));
  EXPECT_EQ("none", script_of(record));
  EXPECT_EQ(1, cfg_template_save(record.get()));
  EXPECT_EQ(R"({name="run" script=<abc> script_timeout=0 template_type="script"})", dump(elem));
}

TEST_F(ScriptTemplate, SetUpAnewForgetsEverythingADeletedTimeoutIncluded) {
  const template_record record = fresh_script("abc");
  cfg_script_template_set_timeout(record.get(), 30);
  cfg_script_template_delete_timeout(record.get());
  EXPECT_EQ(1, cfg_script_template_new_setup(record.get()));
  EXPECT_EQ(nullptr, cfg_script_template_get_checksum(record.get()));
  EXPECT_EQ(0, cfg_script_template_get_size(record.get()));
  EXPECT_EQ(0, cfg_script_template_get_timeout(record.get()));
  EXPECT_EQ(1, cfg_template_save(record.get()));
  EXPECT_EQ(R"({name="run" script_timeout=0 template_type="script"})", dump(elem_of(record)));
}

TEST_F(ScriptTemplate, ASizeThatIsSetIsHowMuchIsWritten) {
  const template_record record = fresh_script("abcdef");
  ASSERT_EQ(1, cfg_script_template_set_size(record.get(), 2));
  EXPECT_EQ(2, cfg_script_template_get_size(record.get()));
  EXPECT_EQ(1, cfg_template_save(record.get()));
  EXPECT_EQ("ab", script_of(load(cfg_template_get_uuid(record.get()))));
}

TEST_F(ScriptTemplate, NoSizeMakesASaveReadBeyondTheScript) {
  const template_record record = fresh_script("abcdef");
  for (const int32_t size : {7, INT32_MAX, -1, INT32_MIN}) {
    ASSERT_EQ(1, cfg_script_template_set_size(record.get(), size));
    EXPECT_EQ(size, cfg_script_template_get_size(record.get()));
    EXPECT_EQ(1, cfg_template_save(record.get()));
    EXPECT_EQ("abcdef", script_of(load(cfg_template_get_uuid(record.get())))) << size;
  }
  const template_record bare = fresh("run", CFG_TEMPLATE_SCRIPT);
  ASSERT_EQ(1, cfg_script_template_set_size(bare.get(), 100));
  EXPECT_EQ(1, cfg_template_save(bare.get()));
  EXPECT_FALSE(cfg_map_has(elem_of(bare), "script"));
}

TEST_F(ScriptTemplate, TheChecksumCanBeReplacedAndCleared) {
  const template_record record = fresh_script("abc");
  EXPECT_EQ(1, cfg_script_template_set_checksum(record.get(), "another"));
  EXPECT_STREQ("another", cfg_script_template_get_checksum(record.get()));
  EXPECT_EQ("abc", script_of(record));
  EXPECT_EQ(1, cfg_script_template_set_checksum(record.get(), ""));
  EXPECT_EQ(nullptr, cfg_script_template_get_checksum(record.get()));
  EXPECT_EQ(1, cfg_template_save(record.get()));
  EXPECT_FALSE(cfg_map_has(elem_of(record), "script_checksum"));
}

TEST_F(ScriptTemplate, IsReadWhateverItsKeysHold) {
  cfg_elem *elem = add_template("run", "script");
  set(elem, "script", "a string");
  set(elem, "script_checksum", 7);
  set(elem, "script_timeout", "soon");
  const template_record record = load(elem);
  ASSERT_NE(nullptr, record);
  EXPECT_EQ("none", script_of(record));
  EXPECT_EQ(0, cfg_script_template_get_size(record.get()));
  EXPECT_EQ(nullptr, cfg_script_template_get_checksum(record.get()));
  EXPECT_EQ(0, cfg_script_template_get_timeout(record.get()));
}

TEST_F(ScriptTemplate, AValueThatTheStoreDoesNotTakeDoesNotStopTheOthers) {
  const template_record record = fresh_script(records::unwritable());
  ASSERT_EQ(1, cfg_script_template_set_checksum(record.get(), records::unwritable().c_str()));
  ASSERT_EQ(1, cfg_script_template_set_timeout(record.get(), 5));
  EXPECT_EQ(1, cfg_template_save(record.get()));
  EXPECT_EQ(R"({name="run" script_timeout=5 template_type="script"})", dump(elem_of(record)));
}

TEST_F(ScriptTemplate, OnlyAScriptTemplateReadsAndWritesAScript) {
  cfg_elem *elem = add_template("other", "ports");
  set_blob(elem, "script", "abc");
  EXPECT_EQ("none", script_of(load(elem)));
  const template_record other = fresh("other", CFG_TEMPLATE_NETWORK);
  cfg_script_template_set_script(other.get(), "abc", 3);
  EXPECT_EQ(1, cfg_template_save(other.get()));
  EXPECT_EQ(R"({name="other" template_type="network"})", dump(elem_of(other)));
}

TEST_F(ScriptTemplate, CanBeWrittenToAnyMapAndReadFromIt) {
  cfg_elem *map = map_at("elsewhere");
  EXPECT_EQ(1, cfg_script_template_save_to_config(fresh_script("abc").get(), map));
  EXPECT_EQ(std::string("{script=<abc> script_checksum=\"") + sum_of_abc + "\" script_timeout=0}", dump(map));
  const template_record other = fresh("other", CFG_TEMPLATE_DUMMY);
  EXPECT_EQ(1, cfg_script_template_load_from_config(other.get(), map));
  EXPECT_EQ("abc", script_of(other));
}

TEST_F(ScriptTemplate, ReadFromAMapWithoutAChecksumHasNone) {
  const template_record record = fresh_script("abc");
  cfg_elem *map = map_at("elsewhere");
  set_blob(map, "script", "xyz");
  EXPECT_EQ(1, cfg_script_template_load_from_config(record.get(), map));
  EXPECT_EQ("xyz", script_of(record));
  EXPECT_EQ(nullptr, cfg_script_template_get_checksum(record.get())) << "that of another script";
}

TEST_F(ScriptTemplate, FreeingTheTemplateLeavesScriptAndChecksum) {
  cfg_template *record = cfg_template_new(store, "run", CFG_TEMPLATE_SCRIPT);
  ASSERT_EQ(1, cfg_script_template_set_script(record, "abc", 3));
  const heap_text script(static_cast<char *>(const_cast<void *>(cfg_script_template_get_script(record))));
  const heap_text sum(const_cast<char *>(cfg_script_template_get_checksum(record)));
  cfg_template_free(record);
  EXPECT_EQ(0, std::memcmp("abc", script.get(), 3));
  EXPECT_STREQ(sum_of_abc, sum.get());
}

TEST_F(ScriptTemplate, NullDoesNothing) {
  cfg_elem *map = map_at("elsewhere");
  const template_record record = fresh_script("abc");
  EXPECT_EQ(0, cfg_script_template_new_setup(nullptr));
  EXPECT_EQ(nullptr, cfg_script_template_get_script(nullptr));
  EXPECT_EQ(nullptr, cfg_script_template_get_checksum(nullptr));
  EXPECT_EQ(0, cfg_script_template_get_size(nullptr));
  EXPECT_EQ(0, cfg_script_template_get_timeout(nullptr));
  EXPECT_EQ(0, cfg_script_template_set_checksum(nullptr, "x"));
  EXPECT_EQ(0, cfg_script_template_set_size(nullptr, 1));
  EXPECT_EQ(0, cfg_script_template_set_timeout(nullptr, 1));
  EXPECT_EQ(0, cfg_script_template_delete_timeout(nullptr));
  EXPECT_EQ(0, cfg_script_template_load_from_config(nullptr, map));
  EXPECT_EQ(0, cfg_script_template_load_from_config(record.get(), nullptr));
  EXPECT_EQ(0, cfg_script_template_save_to_config(nullptr, map));
  EXPECT_EQ(0, cfg_script_template_save_to_config(record.get(), nullptr));
  EXPECT_EQ("{}", dump(map));
  EXPECT_EQ("abc", script_of(record));
}

}  // namespace
