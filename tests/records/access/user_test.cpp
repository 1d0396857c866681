// User records: fields, loading, saving, deleting, and the list of all users.
#include "access_fixture.hpp"

namespace {

using records::owned;
using records::texts;

class User : public records::AccessTest {
 protected:
  // A user with a value under every key.
  cfg_elem *add_whole(const char *name) {
    cfg_elem *elem = add_user(name);
    set(elem, "description", "d");
    set(elem, "hashed_password", "$5$salt$hash");
    set_bool(elem, "enabled", true);
    set_bool(elem, "no_password", true);
    add_references(elem, "groups", {"groups-2", "groups-1"});
    return elem;
  }
  owned<cfg_user> find(const char *name) { return owned<cfg_user>(cfg_user_get_by_username(store, name)); }
};

TEST_F(User, ANewOneIsEnabledAndOtherwiseEmpty) {
  const auto record = new_user("u");
  EXPECT_STREQ("u", cfg_user_get_username(record.get()));
  EXPECT_EQ(nullptr, cfg_user_get_uuid(record.get()));
  EXPECT_EQ(nullptr, cfg_user_get_description(record.get()));
  EXPECT_EQ(1, cfg_user_get_enabled(record.get()));
  EXPECT_EQ(0, cfg_user_get_no_password(record.get()));
  EXPECT_EQ(0, cfg_user_get_groups_count(record.get()));
  EXPECT_EQ(nullptr, new_user(nullptr));
}

TEST_F(User, FieldsAreKeptAsTheyAreSet) {
  const auto record = new_user("u");
  EXPECT_EQ(1, cfg_user_set_username(record.get(), "v"));
  EXPECT_STREQ("v", cfg_user_get_username(record.get()));
  EXPECT_EQ(1, cfg_user_set_username(record.get(), cfg_user_get_username(record.get())));
  EXPECT_STREQ("v", cfg_user_get_username(record.get()));
  EXPECT_EQ(1, cfg_user_set_description(record.get(), "d"));
  EXPECT_STREQ("d", cfg_user_get_description(record.get()));
  EXPECT_EQ(1, cfg_user_set_description(record.get(), ""));
  EXPECT_EQ(nullptr, cfg_user_get_description(record.get()));
  EXPECT_EQ(1, cfg_user_set_enabled(record.get(), 7));
  EXPECT_EQ(7, cfg_user_get_enabled(record.get()));
  EXPECT_EQ(1, cfg_user_set_no_password(record.get(), -1));
  EXPECT_EQ(-1, cfg_user_get_no_password(record.get()));
}

TEST_F(User, ReadsEveryKey) {
  add_whole("u");
  commit_and_reopen();
  const auto record = user("users-1");
  ASSERT_NE(nullptr, record);
  EXPECT_STREQ("users-1", cfg_user_get_uuid(record.get()));
  EXPECT_STREQ("u", cfg_user_get_username(record.get()));
  EXPECT_STREQ("d", cfg_user_get_description(record.get()));
  EXPECT_EQ(1, cfg_user_get_enabled(record.get()));
  EXPECT_EQ(1, cfg_user_get_no_password(record.get()));
  EXPECT_EQ((texts{"groups-2", "groups-1"}), groups_of(record.get()));
}

TEST_F(User, OneWithNothingButANameReadsAsDisabled) {
  add_user("u");
  commit_and_reopen();
  const auto record = user("users-1");
  ASSERT_NE(nullptr, record);
  EXPECT_EQ(nullptr, cfg_user_get_description(record.get()));
  EXPECT_EQ(0, cfg_user_get_enabled(record.get()));
  EXPECT_EQ(0, cfg_user_get_no_password(record.get()));
  EXPECT_EQ(0, cfg_user_get_groups_count(record.get()));
}

TEST_F(User, OneWithoutNameCannotBeRead) {
  cfg_elem *elem = add_whole("u");
  const std::string id = id_of(elem);
  erase(elem, "username");
  EXPECT_EQ(nullptr, user(id));
  set(elem, "username", 5);
  EXPECT_EQ(nullptr, user(id));
  EXPECT_EQ(nullptr, user("users-99"));
  EXPECT_EQ(nullptr, cfg_user_get_by_id(store, nullptr));
  EXPECT_EQ(nullptr, cfg_user_get_by_id(nullptr, "users-1"));
}

// Saved again, a value that was passed over would be lost.
TEST_F(User, AKeyWithAnotherKindOfValueFailsTheLoad) {
  for (const char *key : {"description", "hashed_password", "enabled", "no_password", "groups"}) {
    cfg_elem *elem = add_whole("u");
    const std::string id = id_of(elem);
    EXPECT_NE(nullptr, user(id));
    set(elem, key, 5);
    EXPECT_EQ(nullptr, user(id)) << key;
  }
}

TEST_F(User, SavingANewOneMakesAPendingEntryThatGetsItsFinalIdAtTheCommit) {
  list_at("users");
  const auto record = new_user("u");
  ASSERT_EQ(1, cfg_user_set_description(record.get(), "d"));
  ASSERT_EQ(1, cfg_user_set_no_password(record.get(), 5));
  ASSERT_EQ(1, cfg_user_add_group(record.get(), "groups-1"));
  ASSERT_EQ(1, cfg_user_save(record.get()));
  EXPECT_EQ("[+{description=\"d\" enabled=true groups=[&groups-1] no_password=true username=\"u\"}]",
            dump("users"));
  EXPECT_EQ('{', cfg_user_get_uuid(record.get())[0]);
  EXPECT_EQ(nullptr, find("u")) << "pending";
  commit();
  EXPECT_STREQ("users-1", cfg_user_get_uuid(record.get()));
  EXPECT_NE(nullptr, find("u"));
}

TEST_F(User, WithoutTheListANewOneCannotBeSavedAndKeepsNoId) {
  const auto record = new_user("u");
  EXPECT_EQ(0, cfg_user_save(record.get()));
  EXPECT_EQ(nullptr, cfg_user_get_uuid(record.get()));
  list_at("users");
  EXPECT_EQ(1, cfg_user_save(record.get())) << "once there is a list";
}

TEST_F(User, OneWhoseNameCannotBeWrittenNeverJoinsTheList) {
  list_at("users");
  for (const std::string &name : {records::unwritable(), std::string()}) {
    const auto record = new_user("u");
    ASSERT_EQ(1, cfg_user_set_username(record.get(), name.c_str()));
    EXPECT_EQ(0, cfg_user_save(record.get()));
    EXPECT_EQ(nullptr, cfg_user_get_uuid(record.get()));
    EXPECT_EQ("[]", dump("users"));
  }
}

TEST_F(User, ASavedOneIsNeverRenamed) {
  add_whole("u");
  commit_and_reopen();
  const auto record = user("users-1");
  ASSERT_EQ(1, cfg_user_set_username(record.get(), "v"));
  ASSERT_EQ(1, cfg_user_save(record.get()));
  EXPECT_STREQ("u", cfg_user_get_username(user("users-1").get()));
}

TEST_F(User, SavingWritesWhatChangedAndTheGroupsAnew) {
  set(add_whole("u"), "other", "kept");
  commit_and_reopen();
  const auto record = user("users-1");
  ASSERT_EQ(1, cfg_user_set_description(record.get(), "e"));
  ASSERT_EQ(1, cfg_user_set_enabled(record.get(), 0));
  ASSERT_EQ(1, cfg_user_set_no_password(record.get(), 0));
  cfg_user_remove_group(record.get(), "groups-2");
  ASSERT_EQ(1, cfg_user_add_group(record.get(), "groups-3"));
  ASSERT_EQ(1, cfg_user_save(record.get()));
  EXPECT_EQ(
      "[{description=\"e\" enabled=false groups=[&groups-1 &groups-3] hashed_password=\"$5$salt$hash\" "
      "no_password=false other=\"kept\" username=\"u\"}]",
      dump("users"));
}

TEST_F(User, ANullDescriptionLeavesTheStoredOne) {
  add_whole("u");
  commit_and_reopen();
  const auto record = user("users-1");
  ASSERT_EQ(1, cfg_user_set_description(record.get(), nullptr));
  ASSERT_EQ(1, cfg_user_save(record.get()));
  EXPECT_STREQ("d", cfg_user_get_description(user("users-1").get()));
}

TEST_F(User, AnUnchangedOneCanBeLoadedAndSavedAgainWithinTheEdit) {
  add_whole("u");
  commit_and_reopen();
  const std::string before = dump("users");
  for (int i = 0; i < 3; ++i) ASSERT_EQ(1, cfg_user_save(user("users-1").get()));
  EXPECT_EQ(before, dump("users"));
  commit_and_reopen();
  EXPECT_EQ(before, dump("users"));
}

TEST_F(User, TheListOfGroupsIsMadeWhenItIsMissing) {
  add_user("u");
  commit_and_reopen();
  ASSERT_EQ(1, cfg_user_save(user("users-1").get()));
  EXPECT_EQ("[{enabled=false groups=[] no_password=false username=\"u\"}]", dump("users"));
}

TEST_F(User, AGroupThatCannotBeReferredToFailsTheSaveInTheMiddle) {
  add_user("u");
  commit_and_reopen();
  const auto record = user("users-1");
  ASSERT_EQ(1, cfg_user_add_group(record.get(), "groups-1"));
  ASSERT_EQ(1, cfg_user_add_group(record.get(), records::unwritable_id().c_str()));
  ASSERT_EQ(1, cfg_user_add_group(record.get(), "groups-2"));
  ASSERT_EQ(1, cfg_user_set_enabled(record.get(), 1));
  EXPECT_EQ(0, cfg_user_save(record.get()));
  EXPECT_EQ("[{groups=[&groups-1] username=\"u\"}]", dump("users")) << "what stands behind is not written";
}

TEST_F(User, EachFailedWriteEndsTheSave) {
  add_user("u");
  commit_and_reopen();
  const auto record = user("users-1");
  ASSERT_EQ(1, cfg_user_set_description(record.get(), records::unwritable().c_str()));
  EXPECT_EQ(0, cfg_user_save(record.get()));
  EXPECT_EQ("[{username=\"u\"}]", dump("users"));
  const records::store_handle reader = open(CFG_OPEN_READ_ONLY);
  EXPECT_EQ(0, cfg_user_save(owned<cfg_user>(cfg_user_get_by_id(reader.get(), "users-1")).get()));
}

TEST_F(User, OneWhoseElementIsGoneCannotBeSaved) {
  cfg_elem *elem = add_user("u");
  const auto record = user(id_of(elem));
  ASSERT_TRUE(cfg_delete_element(store, elem));
  EXPECT_EQ(0, cfg_user_save(record.get()));
}

TEST_F(User, IsFoundByTheExactNameTheFirstInListOrder) {
  add_user("a");
  add_user("b");
  add_user("b");
  commit_and_reopen();
  EXPECT_STREQ("users-2", cfg_user_get_uuid(find("b").get()));
  for (const char *other : {"B", "", "ab", "b "}) EXPECT_EQ(nullptr, find(other)) << other;
  EXPECT_EQ(nullptr, find(nullptr));
}

TEST_F(User, NothingIsFoundWithoutUsers) {
  EXPECT_EQ(nullptr, find("a"));
  list_at("users");
  EXPECT_EQ(nullptr, find("a"));
}

TEST_F(User, TheFirstOfTheNameIsTheAnswerAlsoWhenItCannotBeLoaded) {
  entry_of("users");
  set(add_user("a"), "enabled", "yes");
  add_user("a");
  commit_and_reopen();
  EXPECT_EQ(nullptr, find("a"));
}

TEST_F(User, DeletingRemovesTheElementAndLeavesTheRecord) {
  add_user("a");
  add_user("b");
  commit_and_reopen();
  const auto record = user("users-1");
  EXPECT_EQ(1, cfg_user_delete(record.get()));
  EXPECT_EQ("[{username=\"b\"}]", dump("users"));
  EXPECT_STREQ("a", cfg_user_get_username(record.get()));
  EXPECT_EQ(1, cfg_user_delete(record.get())) << "gone already";
  EXPECT_EQ(1, cfg_user_delete(new_user("c").get())) << "never saved";
  EXPECT_EQ(0, cfg_user_delete(nullptr));
  EXPECT_EQ("[{username=\"b\"}]", dump("users"));
}

TEST_F(User, RootIsNeverDeleted) {
  add_user("root");
  commit_and_reopen();
  EXPECT_EQ(0, cfg_user_delete(user("users-1").get()));
  EXPECT_EQ(0, cfg_user_delete(new_user("root").get()));
  EXPECT_EQ((texts{}), changes());
}

TEST_F(User, RootIsNotDeletedUnderAnotherNameEither) {
  add_user("root");
  commit_and_reopen();
  const auto record = user("users-1");
  ASSERT_EQ(1, cfg_user_set_username(record.get(), "nobody"));
  EXPECT_EQ(0, cfg_user_delete(record.get()));
  EXPECT_EQ((texts{}), changes());
}

TEST_F(User, NamesThatResembleRootAreDeleted) {
  for (const char *name : {"Root", "ROOT", "root2", "roo", " root"}) {
    cfg_elem *elem = add_user(name);
    EXPECT_EQ(1, cfg_user_delete(user(id_of(elem)).get())) << name;
    EXPECT_EQ(CFG_NONE, cfg_elem_kind(elem)) << name;
  }
}

TEST_F(User, NullGivesNothing) {
  EXPECT_EQ(nullptr, cfg_user_get_uuid(nullptr));
  EXPECT_EQ(nullptr, cfg_user_get_username(nullptr));
  EXPECT_EQ(nullptr, cfg_user_get_description(nullptr));
  EXPECT_EQ(0, cfg_user_get_enabled(nullptr));
  EXPECT_EQ(0, cfg_user_get_no_password(nullptr));
  EXPECT_EQ(0, cfg_user_set_username(nullptr, "u"));
  EXPECT_EQ(0, cfg_user_set_description(nullptr, "d"));
  EXPECT_EQ(0, cfg_user_set_enabled(nullptr, 1));
  EXPECT_EQ(0, cfg_user_set_no_password(nullptr, 1));
  cfg_user_free(nullptr);
}

using UserList = User;

TEST_F(UserList, ShowsTheCommittedUsersInListOrder) {
  for (const char *name : {"a", "b", "c"}) add_user(name);
  commit_and_reopen();
  const auto pending = new_user("d");
  ASSERT_EQ(1, cfg_user_save(pending.get()));
  ASSERT_EQ(1, cfg_user_delete(user("users-2").get()));
  const owned<cfg_user_list> list(cfg_user_list_new(store));
  ASSERT_EQ(2, cfg_user_list_count(list.get()));
  EXPECT_STREQ("a", cfg_user_get_username(owned<cfg_user>(cfg_user_list_get_user(list.get(), 0)).get()));
  EXPECT_STREQ("users-3", cfg_user_get_uuid(owned<cfg_user>(cfg_user_list_get_user(list.get(), 1)).get()));
  for (const int32_t outside : {-1, 2, INT32_MIN, INT32_MAX})
    EXPECT_EQ(nullptr, cfg_user_list_get_user(list.get(), outside)) << outside;
}

TEST_F(UserList, IsEmptyWithoutUsers) {
  EXPECT_EQ(0, cfg_user_list_count(owned<cfg_user_list>(cfg_user_list_new(store)).get()));
  list_at("users");
  const owned<cfg_user_list> list(cfg_user_list_new(store));
  ASSERT_NE(nullptr, list);
  EXPECT_EQ(0, cfg_user_list_count(list.get()));
  EXPECT_EQ(nullptr, cfg_user_list_get_user(list.get(), 0));
  EXPECT_EQ(0, cfg_user_list_count(nullptr));
  EXPECT_EQ(nullptr, cfg_user_list_get_user(nullptr, 0));
  cfg_user_list_free(nullptr);
}

}  // namespace
