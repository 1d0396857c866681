// Group records: fields, loading, saving, deleting, and the list of all groups.
#include "access_fixture.hpp"

namespace {

using records::owned;
using records::texts;

class Group : public records::AccessTest {
 protected:
  owned<cfg_group> find(const char *name) {
    return owned<cfg_group>(cfg_group_get_by_groupname(store, name));
  }
};

TEST_F(Group, ANewOneIsEnabledAndOtherwiseEmpty) {
  const auto record = new_group("g");
  EXPECT_STREQ("g", cfg_group_get_groupname(record.get()));
  EXPECT_EQ(nullptr, cfg_group_get_uuid(record.get()));
  EXPECT_EQ(nullptr, cfg_group_get_description(record.get()));
  EXPECT_EQ(nullptr, cfg_group_get_mode(record.get()));
  EXPECT_EQ(1, cfg_group_get_enabled(record.get()));
  EXPECT_EQ((texts{}), members_of(record.get()));
  EXPECT_EQ(nullptr, new_group(nullptr));
}

TEST_F(Group, FieldsAreKeptAsTheyAreSet) {
  const auto record = new_group("g");
  EXPECT_EQ(1, cfg_group_set_groupname(record.get(), "h"));
  EXPECT_STREQ("h", cfg_group_get_groupname(record.get()));
  for (const char *mode : {"global", "smart_group", "Global", "anything"}) {
    EXPECT_EQ(1, cfg_group_set_mode(record.get(), mode));
    EXPECT_STREQ(mode, cfg_group_get_mode(record.get()));
  }
  EXPECT_EQ(1, cfg_group_set_description(record.get(), "d"));
  EXPECT_STREQ("d", cfg_group_get_description(record.get()));
  EXPECT_EQ(1, cfg_group_set_enabled(record.get(), 7));
  EXPECT_EQ(7, cfg_group_get_enabled(record.get()));
}

TEST_F(Group, SettingNameOrModeToNullKeepsItAndLeavesAMessage) {
  const auto record = new_group("g");
  ASSERT_EQ(1, cfg_group_set_mode(record.get(), "global"));
  EXPECT_EQ(0, cfg_group_set_groupname(record.get(), nullptr));
  EXPECT_STREQ("g", cfg_group_get_groupname(record.get()));
  EXPECT_EQ((texts{"src/groups"}), messages());
  EXPECT_EQ(0, cfg_group_set_mode(record.get(), nullptr));
  EXPECT_STREQ("global", cfg_group_get_mode(record.get()));
  EXPECT_EQ((texts{"src/groups", "src/groups"}), messages());
}

TEST_F(Group, ReadsEveryKey) {
  cfg_elem *elem = add_group("g");
  set(elem, "description", "d");
  set(elem, "mode", "smart_group");
  set_bool(elem, "enabled", true);
  commit_and_reopen();
  const auto record = group("groups-1");
  ASSERT_NE(nullptr, record);
  EXPECT_STREQ("groups-1", cfg_group_get_uuid(record.get()));
  EXPECT_STREQ("g", cfg_group_get_groupname(record.get()));
  EXPECT_STREQ("d", cfg_group_get_description(record.get()));
  EXPECT_STREQ("smart_group", cfg_group_get_mode(record.get()));
  EXPECT_EQ(1, cfg_group_get_enabled(record.get()));
}

TEST_F(Group, OneWithoutAnythingCanBeReadAndReadsAsDisabled) {
  entry_of("groups");
  commit_and_reopen();
  const auto record = group("groups-1");
  ASSERT_NE(nullptr, record);
  EXPECT_EQ(nullptr, cfg_group_get_groupname(record.get()));
  EXPECT_EQ(0, cfg_group_get_enabled(record.get()));
  EXPECT_EQ(nullptr, group("groups-99"));
  EXPECT_EQ(nullptr, cfg_group_get_by_id(store, nullptr));
}

// Saved again, a value that was passed over would be lost.
TEST_F(Group, AKeyWithAnotherKindOfValueFailsTheLoad) {
  for (const char *key : {"groupname", "description", "mode", "enabled", "members"}) {
    cfg_elem *elem = add_group("g");
    const std::string id = id_of(elem);
    EXPECT_NE(nullptr, group(id));
    set(elem, key, 5);
    EXPECT_EQ(nullptr, group(id)) << key;
  }
}

TEST_F(Group, SavingANewOneMakesAPendingEntryThatGetsItsFinalIdAtTheCommit) {
  list_at("groups");
  const auto record = new_group("g");
  ASSERT_EQ(1, cfg_group_set_description(record.get(), "d"));
  ASSERT_EQ(1, cfg_group_set_mode(record.get(), "global"));
  ASSERT_EQ(1, cfg_group_save(record.get()));
  EXPECT_EQ("[+{description=\"d\" enabled=true groupname=\"g\" members=[] mode=\"global\"}]", dump("groups"));
  EXPECT_EQ('{', cfg_group_get_uuid(record.get())[0]);
  EXPECT_EQ(nullptr, find("g")) << "pending";
  commit();
  EXPECT_STREQ("groups-1", cfg_group_get_uuid(record.get()));
  EXPECT_NE(nullptr, find("g"));
}

TEST_F(Group, WithoutTheListANewOneCannotBeSavedAndKeepsNoId) {
  const auto record = new_group("g");
  EXPECT_EQ(0, cfg_group_save(record.get()));
  EXPECT_EQ(nullptr, cfg_group_get_uuid(record.get()));
}

TEST_F(Group, ASavedOneCanBeRenamed) {
  set(add_group("g"), "other", "kept");
  commit_and_reopen();
  const auto record = group("groups-1");
  ASSERT_EQ(1, cfg_group_set_groupname(record.get(), "h"));
  ASSERT_EQ(1, cfg_group_save(record.get()));
  EXPECT_EQ("[{enabled=false groupname=\"h\" members=[] other=\"kept\"}]", dump("groups"));
}

TEST_F(Group, OneWhoseElementIsGoneCannotBeSaved) {
  cfg_elem *elem = add_group("g");
  const auto record = group(id_of(elem));
  ASSERT_TRUE(cfg_delete_element(store, elem));
  EXPECT_EQ(0, cfg_group_save(record.get()));
}

TEST_F(Group, AFailedWriteEndsTheSaveWithTheMemberListEmptied) {
  add_user("u");
  cfg_elem *elem = add_group("g");
  set(elem, "mode", "global");
  add_references(elem, "members", {"users-1"});
  commit_and_reopen();
  const auto record = group("groups-1");
  ASSERT_EQ(1, cfg_group_set_mode(record.get(), records::unwritable().c_str()));
  ASSERT_EQ(1, cfg_group_set_groupname(record.get(), "h"));
  EXPECT_EQ(0, cfg_group_save(record.get()));
  EXPECT_EQ("[{groupname=\"h\" members=[] mode=\"global\"}]", dump("groups"));
  cfg_abandon(store);
  EXPECT_EQ("[{groupname=\"g\" members=[&users-1] mode=\"global\"}]", dump("groups"));
}

struct mode_case {
  const char *mode;
  bool keeps_global, keeps_smart;
};
class GroupMode : public Group, public testing::WithParamInterface<mode_case> {};
INSTANTIATE_TEST_SUITE_P(Of, GroupMode,
                         testing::Values(mode_case{"global", true, false},
                                         mode_case{"smart_group", false, true},
                                         mode_case{"Global", false, false}, mode_case{"x", false, false},
                                         mode_case{nullptr, true, true}),
                         [](const auto &tested) {
                           return std::string(tested.param.mode ? tested.param.mode : "none");
                         });

TEST_P(GroupMode, SavingDeletesWhatBelongsToTheOtherModes) {
  cfg_elem *elem = add_group("g");
  child_map(elem, "global_roles");
  child_map(elem, "smart_group");
  commit_and_reopen();
  const auto record = group("groups-1");
  if (GetParam().mode) {
    ASSERT_EQ(1, cfg_group_set_mode(record.get(), GetParam().mode));
  }
  ASSERT_EQ(1, cfg_group_save(record.get()));
  elem = cfg_get_by_id(store, "groups-1");
  EXPECT_EQ(GetParam().keeps_global, cfg_get_mapelem(elem, "global_roles") != nullptr);
  EXPECT_EQ(GetParam().keeps_smart, cfg_get_mapelem(elem, "smart_group") != nullptr);
}

TEST_F(Group, ANullDescriptionIsDeletedFromTheStoreAtOnceAndOthersAreNotWritten) {
  set(add_group("g"), "description", "d");
  commit_and_reopen();
  const auto record = group("groups-1");
  ASSERT_EQ(1, cfg_group_set_description(record.get(), "e"));
  EXPECT_EQ((texts{}), changes());
  EXPECT_EQ(1, cfg_group_set_description(record.get(), nullptr));
  EXPECT_EQ(nullptr, cfg_group_get_description(record.get()));
  EXPECT_EQ((texts{"- groups-1.description"}), changes());
  EXPECT_EQ(1, cfg_group_set_description(new_group("h").get(), nullptr)) << "nothing to delete";
}

TEST_F(Group, AnEmptyDescriptionLeavesTheStoredOne) {
  set(add_group("g"), "description", "d");
  commit_and_reopen();
  const auto record = group("groups-1");
  EXPECT_EQ(1, cfg_group_set_description(record.get(), ""));
  EXPECT_EQ(nullptr, cfg_group_get_description(record.get()));
  ASSERT_EQ(1, cfg_group_save(record.get()));
  EXPECT_STREQ("d", cfg_group_get_description(group("groups-1").get()));
}

TEST_F(Group, ADescriptionThatCannotBeDeletedIsToldOf) {
  set(add_group("g"), "description", "d");
  commit_and_reopen();
  const records::store_handle reader = open(CFG_OPEN_READ_ONLY);
  const owned<cfg_group> record(cfg_group_get_by_id(reader.get(), "groups-1"));
  EXPECT_EQ(0, cfg_group_set_description(record.get(), nullptr));
}

TEST_F(Group, IsFoundByTheExactNameTheFirstInListOrder) {
  entry_of("groups");
  add_group("a");
  add_group("b");
  add_group("b");
  commit_and_reopen();
  EXPECT_STREQ("groups-3", cfg_group_get_uuid(find("b").get()));
  for (const char *other : {"B", "", "ab"}) EXPECT_EQ(nullptr, find(other)) << other;
  EXPECT_EQ(nullptr, find(nullptr));
}

TEST_F(Group, NothingIsFoundWithoutGroups) {
  EXPECT_EQ(nullptr, find("a"));
  list_at("groups");
  EXPECT_EQ(nullptr, find("a"));
}

TEST_F(Group, AnyOneCanBeDeletedAdminToo) {
  add_group("admin");
  add_group("b");
  commit_and_reopen();
  const auto record = group("groups-1");
  cfg_group_delete(record.get());
  EXPECT_EQ("[{groupname=\"b\"}]", dump("groups"));
  EXPECT_STREQ("admin", cfg_group_get_groupname(record.get()));
  cfg_group_delete(record.get());
  cfg_group_delete(new_group("b").get());
  cfg_group_delete(nullptr);
  EXPECT_EQ("[{groupname=\"b\"}]", dump("groups"));
}

TEST_F(Group, NullGivesNothing) {
  EXPECT_EQ(nullptr, cfg_group_get_uuid(nullptr));
  EXPECT_EQ(nullptr, cfg_group_get_groupname(nullptr));
  EXPECT_EQ(nullptr, cfg_group_get_mode(nullptr));
  EXPECT_EQ(nullptr, cfg_group_get_description(nullptr));
  EXPECT_EQ(0, cfg_group_get_enabled(nullptr));
  EXPECT_EQ(0, cfg_group_set_groupname(nullptr, "g"));
  EXPECT_EQ(0, cfg_group_set_mode(nullptr, nullptr));
  EXPECT_EQ(0, cfg_group_set_description(nullptr, nullptr));
  EXPECT_EQ(0, cfg_group_set_enabled(nullptr, 1));
  cfg_group_free(nullptr);
}

using GroupList = Group;

TEST_F(GroupList, ShowsTheCommittedGroupsInListOrder) {
  for (const char *name : {"a", "b", "c"}) add_group(name);
  commit_and_reopen();
  const owned<cfg_group_list> list(cfg_group_list_new(store));
  ASSERT_EQ(3, cfg_group_list_count(list.get()));
  texts names;
  for (int32_t i = 0; i < 3; ++i)
    names.emplace_back(
        cfg_group_get_groupname(owned<cfg_group>(cfg_group_list_get_group(list.get(), i)).get()));
  EXPECT_EQ((texts{"a", "b", "c"}), names);
  for (const int32_t outside : {-1, 3, INT32_MIN, INT32_MAX})
    EXPECT_EQ(nullptr, cfg_group_list_get_group(list.get(), outside)) << outside;
}

TEST_F(GroupList, IsEmptyWithoutGroups) {
  EXPECT_EQ(0, cfg_group_list_count(owned<cfg_group_list>(cfg_group_list_new(store)).get()));
  list_at("groups");
  const owned<cfg_group_list> list(cfg_group_list_new(store));
  ASSERT_NE(nullptr, list);
  EXPECT_EQ(0, cfg_group_list_count(list.get()));
  EXPECT_EQ(0, cfg_group_list_count(nullptr));
  EXPECT_EQ(nullptr, cfg_group_list_get_group(nullptr, 0));
  cfg_group_list_free(nullptr);
}

}  // namespace
