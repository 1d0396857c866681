#include <twobject/boot_flag.h>

#include "records/store_fixture.hpp"

namespace {

struct free_flag {
  void operator()(cfg_boot_flag *flag) const { cfg_boot_flag_free(flag); }
};
using flag_record = std::unique_ptr<cfg_boot_flag, free_flag>;

class BootFlag : public records::StoreTest {
 protected:
  flag_record by_name(const char *name) { return flag_record(cfg_boot_flag_get_by_name(store, name)); }
  flag_record make(const char *name) { return flag_record(cfg_boot_flag_new(store, name, "once")); }
};

TEST_F(BootFlag, ANewFlagIsSetAndHasNoId) {
  const flag_record flag = make("wipe");
  EXPECT_EQ(nullptr, cfg_boot_flag_get_uuid(flag.get()));
  EXPECT_STREQ("wipe", cfg_boot_flag_get_name(flag.get()));
  EXPECT_STREQ("once", cfg_boot_flag_get_flag_type(flag.get()));
  EXPECT_EQ(1, cfg_boot_flag_get_isset(flag.get()));
  EXPECT_EQ(nullptr, cfg_boot_flag_new(store, nullptr, "once"));
  EXPECT_EQ(nullptr, cfg_boot_flag_new(store, "wipe", nullptr));
}

TEST_F(BootFlag, ASavedFlagIsFoundInTheSameEditAndNotPending) {
  list_at("boot_flags");
  const flag_record flag = make("wipe");
  EXPECT_EQ(1, cfg_boot_flag_save(flag.get()));
  EXPECT_EQ("[{flag_type=\"once\" is_set=true name=\"wipe\"}]", dump("boot_flags"));
  const flag_record found = by_name("wipe");
  EXPECT_STREQ(cfg_boot_flag_get_uuid(flag.get()), cfg_boot_flag_get_uuid(found.get()));
}

TEST_F(BootFlag, SavingTwiceMakesOneElement) {
  list_at("boot_flags");
  const flag_record flag = make("wipe");
  EXPECT_EQ(1, cfg_boot_flag_save(flag.get()));
  EXPECT_EQ(1, cfg_boot_flag_set_isset(flag.get(), 0));
  EXPECT_EQ(1, cfg_boot_flag_save(flag.get()));
  commit();
  EXPECT_EQ(1, cfg_boot_flag_set_isset(flag.get(), -3));
  EXPECT_EQ(-3, cfg_boot_flag_get_isset(flag.get()));
  EXPECT_EQ(1, cfg_boot_flag_save(flag.get()));
  EXPECT_EQ("[{flag_type=\"once\" is_set=true name=\"wipe\"}]", dump("boot_flags"));
}

TEST_F(BootFlag, ASaveNeedsListElementNameAndType) {
  const flag_record flag = make("wipe");
  EXPECT_EQ(0, cfg_boot_flag_save(flag.get()));
  EXPECT_EQ(nullptr, cfg_boot_flag_get_uuid(flag.get()));
  cfg_elem *bare = entry_of("boot_flags");
  set(bare, "name", "n");
  const flag_record typeless = by_name("n");
  EXPECT_EQ(0, cfg_boot_flag_save(typeless.get()));
  EXPECT_EQ(1, cfg_boot_flag_save(flag.get()));
  ASSERT_EQ(1, cfg_delete_element(store, cfg_get_by_id(store, cfg_boot_flag_get_uuid(flag.get()))));
  EXPECT_EQ(0, cfg_boot_flag_save(flag.get()));
  EXPECT_EQ(0, cfg_boot_flag_save(nullptr));
}

TEST_F(BootFlag, ASaveWritesNameTypeAndSwitchAndStopsAtTheFirstThatFails) {
  list_at("boot_flags");
  const flag_record flag = make("wipe");
  cfg_boot_flag_set_flag_type(flag.get(), records::unwritable().c_str());
  EXPECT_EQ(0, cfg_boot_flag_save(flag.get()));
  EXPECT_EQ("[{name=\"wipe\"}]", dump("boot_flags"));
  cfg_boot_flag_set_name(flag.get(), records::unwritable().c_str());
  cfg_boot_flag_set_flag_type(flag.get(), "always");
  EXPECT_EQ(0, cfg_boot_flag_save(flag.get()));
  EXPECT_EQ("[{name=\"wipe\"}]", dump("boot_flags"));
}

TEST_F(BootFlag, MissingAndForeignKeysReadAsNothing) {
  cfg_elem *elem = entry_of("boot_flags");
  const flag_record bare(cfg_boot_flag_get_by_id(store, id_of(elem).c_str()));
  ASSERT_NE(nullptr, bare);
  EXPECT_EQ(nullptr, cfg_boot_flag_get_name(bare.get()));
  EXPECT_EQ(nullptr, cfg_boot_flag_get_flag_type(bare.get()));
  EXPECT_EQ(0, cfg_boot_flag_get_isset(bare.get()));
  for (const char *key : {"name", "flag_type", "is_set"}) set(elem, key, 1);
  const flag_record foreign(cfg_boot_flag_get_by_id(store, id_of(elem).c_str()));
  ASSERT_NE(nullptr, foreign);
  EXPECT_EQ(nullptr, cfg_boot_flag_get_name(foreign.get()));
  EXPECT_EQ(0, cfg_boot_flag_get_isset(foreign.get()));
  EXPECT_EQ(nullptr, cfg_boot_flag_get_by_id(store, "boot_flags-9"));
  EXPECT_EQ(nullptr, cfg_boot_flag_get_by_id(store, nullptr));
}

TEST_F(BootFlag, TheFirstFlagWithExactlyTheNameIsFound) {
  EXPECT_EQ(nullptr, by_name("wipe"));
  list_at("boot_flags");
  EXPECT_EQ(nullptr, by_name("wipe"));
  add(cfg_get_by_path(store, "boot_flags"), "no map");
  entry_of("boot_flags");
  for (const char *type : {"first", "second"}) {
    cfg_elem *elem = entry_of("boot_flags");
    set(elem, "name", "wipe");
    set(elem, "flag_type", type);
  }
  commit_and_reopen();
  EXPECT_STREQ("first", cfg_boot_flag_get_flag_type(by_name("wipe").get()));
  EXPECT_EQ(nullptr, by_name("Wipe"));
  EXPECT_EQ(nullptr, by_name("wip"));
  EXPECT_EQ(nullptr, by_name(nullptr));
  EXPECT_EQ(nullptr, cfg_boot_flag_get_by_name(nullptr, "wipe"));
}

TEST_F(BootFlag, TextsAreKeptAsTheyAreGivenAndNullChangesNothing) {
  const flag_record flag = make("wipe");
  EXPECT_EQ(1, cfg_boot_flag_set_name(flag.get(), nullptr));
  EXPECT_STREQ("wipe", cfg_boot_flag_get_name(flag.get()));
  EXPECT_EQ(1, cfg_boot_flag_set_name(flag.get(), "other"));
  EXPECT_STREQ("other", cfg_boot_flag_get_name(flag.get()));
  EXPECT_EQ(1, cfg_boot_flag_set_flag_type(flag.get(), nullptr));
  EXPECT_STREQ("once", cfg_boot_flag_get_flag_type(flag.get()));
  EXPECT_EQ(1, cfg_boot_flag_set_flag_type(flag.get(), ""));
  EXPECT_STREQ("", cfg_boot_flag_get_flag_type(flag.get()));
}

TEST_F(BootFlag, EverythingTakesNull) {
  EXPECT_EQ(nullptr, cfg_boot_flag_get_uuid(nullptr));
  EXPECT_EQ(nullptr, cfg_boot_flag_get_name(nullptr));
  EXPECT_EQ(nullptr, cfg_boot_flag_get_flag_type(nullptr));
  EXPECT_EQ(0, cfg_boot_flag_get_isset(nullptr));
  EXPECT_EQ(0, cfg_boot_flag_set_name(nullptr, "a"));
  EXPECT_EQ(0, cfg_boot_flag_set_flag_type(nullptr, "a"));
  EXPECT_EQ(0, cfg_boot_flag_set_isset(nullptr, 1));
  cfg_boot_flag_free(nullptr);
}

}  // namespace
