// Roles and the list of all roles.
#include "access_fixture.hpp"

namespace {

using records::owned;
using records::texts;

class Role : public records::AccessTest {
 protected:
  owned<cfg_role> load(const char *id) { return owned<cfg_role>(cfg_role_get_by_id(store, id)); }
  owned<cfg_role> find(const char *name) { return owned<cfg_role>(cfg_role_get_by_rolename(store, name)); }
};

TEST_F(Role, ANewRoleHasItsNameAndNoId) {
  const owned<cfg_role> role(cfg_role_new(store, "Operator"));
  EXPECT_STREQ("Operator", cfg_role_get_rolename(role.get()));
  EXPECT_EQ(nullptr, cfg_role_get_uuid(role.get()));
  EXPECT_EQ(nullptr, cfg_role_new(store, nullptr));
}

TEST_F(Role, SavingANewOneMakesAPendingEntryThatGetsItsFinalIdAtTheCommit) {
  list_at("roles");
  const owned<cfg_role> role(cfg_role_new(store, "Operator"));
  ASSERT_EQ(1, cfg_role_save(role.get()));
  EXPECT_EQ("[+{rolename=\"Operator\"}]", dump("roles"));
  EXPECT_EQ('{', cfg_role_get_uuid(role.get())[0]);
  EXPECT_EQ(nullptr, find("Operator")) << "pending";
  commit();
  EXPECT_STREQ("roles-1", cfg_role_get_uuid(role.get()));
  EXPECT_EQ("[{rolename=\"Operator\"}]", dump("roles"));
}

TEST_F(Role, WithoutTheListANewOneCannotBeSavedAndKeepsNoId) {
  const owned<cfg_role> role(cfg_role_new(store, "Operator"));
  EXPECT_EQ(0, cfg_role_save(role.get()));
  EXPECT_EQ(nullptr, cfg_role_get_uuid(role.get()));
  list_at("roles");
  EXPECT_EQ(1, cfg_role_save(role.get())) << "once there is a list";
}

TEST_F(Role, SavingAnExistingOneWritesItsName) {
  set(add_role("old"), "other", "kept");
  commit_and_reopen();
  const auto role = load("roles-1");
  EXPECT_EQ(1, cfg_role_set_rolename(role.get(), "new"));
  ASSERT_EQ(1, cfg_role_save(role.get()));
  EXPECT_EQ("[{other=\"kept\" rolename=\"new\"}]", dump("roles"));
  EXPECT_EQ((texts{"= roles-1.rolename"}), changes());
}

TEST_F(Role, OneWhoseElementIsGoneCannotBeSaved) {
  cfg_elem *elem = add_role("r");
  const auto role = load(id_of(elem).c_str());
  ASSERT_NE(nullptr, role);
  ASSERT_TRUE(cfg_delete_element(store, elem));
  EXPECT_EQ(0, cfg_role_save(role.get()));
}

TEST_F(Role, OneWhoseNameWasTakenAwayIsNotSaved) {
  add_role("r");
  commit_and_reopen();
  const auto role = load("roles-1");
  EXPECT_EQ(1, cfg_role_set_rolename(role.get(), ""));
  EXPECT_EQ(nullptr, cfg_role_get_rolename(role.get()));
  EXPECT_EQ(0, cfg_role_save(role.get()));
  EXPECT_EQ((texts{}), changes());
}

TEST_F(Role, AFailedWriteFailsTheSave) {
  add_role("r");
  commit_and_reopen();
  const auto role = load("roles-1");
  ASSERT_EQ(1, cfg_role_set_rolename(role.get(), records::unwritable().c_str()));
  EXPECT_EQ(0, cfg_role_save(role.get()));
}

TEST_F(Role, SettingNullKeepsTheNameAndLeavesAMessage) {
  const owned<cfg_role> role(cfg_role_new(store, "r"));
  EXPECT_EQ(0, cfg_role_set_rolename(role.get(), nullptr));
  EXPECT_STREQ("r", cfg_role_get_rolename(role.get()));
  EXPECT_EQ((texts{"src/roles"}), messages());
}

TEST_F(Role, SettingOnNullDoesNothing) {
  EXPECT_EQ(0, cfg_role_set_rolename(nullptr, "r"));
  EXPECT_EQ(0, cfg_role_set_rolename(nullptr, nullptr));
  EXPECT_EQ((texts{}), messages());
}

TEST_F(Role, AnElementWithoutNameCannotBeLoaded) {
  cfg_elem *elem = add_role("r");
  const std::string id = id_of(elem);
  EXPECT_NE(nullptr, load(id.c_str()));
  set(elem, "rolename", 5);
  EXPECT_EQ(nullptr, load(id.c_str()));
  erase(elem, "rolename");
  EXPECT_EQ(nullptr, load(id.c_str()));
  EXPECT_EQ(nullptr, load("roles-99"));
  EXPECT_EQ(nullptr, load(nullptr));
}

TEST_F(Role, IsFoundByItsExactNameTheFirstInListOrder) {
  add_role("a");
  add_role("b");
  add_role("b");
  commit_and_reopen();
  EXPECT_STREQ("roles-2", cfg_role_get_uuid(find("b").get()));
  for (const char *other : {"B", "", "ab", "b "}) EXPECT_EQ(nullptr, find(other)) << other;
  EXPECT_EQ(nullptr, find(nullptr));
}

TEST_F(Role, NothingIsFoundWithoutRoles) {
  EXPECT_EQ(nullptr, find("a"));
  list_at("roles");
  EXPECT_EQ(nullptr, find("a"));
}

TEST_F(Role, ElementsWithoutNameArePassedOver) {
  entry_of("roles");
  set(entry_of("roles"), "rolename", 5);
  add(cfg_get_by_path(store, "roles"), "just text");
  add_role("a");
  commit_and_reopen();
  EXPECT_STREQ("roles-4", cfg_role_get_uuid(find("a").get()));
}

TEST_F(Role, DeletingRemovesTheElementAndLeavesTheRecord) {
  add_role("a");
  add_role("b");
  commit_and_reopen();
  const auto role = load("roles-1");
  cfg_role_delete(role.get());
  EXPECT_EQ("[{rolename=\"b\"}]", dump("roles"));
  EXPECT_STREQ("a", cfg_role_get_rolename(role.get()));
  cfg_role_delete(role.get());
  cfg_role_delete(owned<cfg_role>(cfg_role_new(store, "b")).get());
  cfg_role_delete(nullptr);
  EXPECT_EQ("[{rolename=\"b\"}]", dump("roles"));
}

TEST_F(Role, GroupsThatReferToADeletedRoleAreNotTouched) {
  cfg_elem *role = add_role("a");
  set_reference(child_map(add_group("g"), "global_roles"), "ref", id_of(role));
  commit_and_reopen();
  cfg_role_delete(load("roles-1").get());
  EXPECT_EQ("[{global_roles={ref=&roles-1} groupname=\"g\"}]", dump("groups"));
}

TEST_F(Role, NullGivesNothing) {
  EXPECT_EQ(nullptr, cfg_role_get_uuid(nullptr));
  EXPECT_EQ(nullptr, cfg_role_get_rolename(nullptr));
  cfg_role_free(nullptr);
}

using RoleList = Role;

TEST_F(RoleList, ShowsTheCommittedRolesInListOrder) {
  for (const char *name : {"a", "b", "c"}) add_role(name);
  commit_and_reopen();
  const owned<cfg_role> pending(cfg_role_new(store, "d"));
  ASSERT_EQ(1, cfg_role_save(pending.get()));
  const owned<cfg_role_list> list(cfg_role_list_new(store));
  ASSERT_EQ(3, cfg_role_list_count(list.get()));
  texts names;
  for (int32_t i = 0; i < 3; ++i) {
    const owned<cfg_role> role(cfg_role_list_get_role(list.get(), i));
    names.emplace_back(cfg_role_get_rolename(role.get()));
  }
  EXPECT_EQ((texts{"a", "b", "c"}), names);
  for (const int32_t outside : {-1, 3, INT32_MIN, INT32_MAX})
    EXPECT_EQ(nullptr, cfg_role_list_get_role(list.get(), outside)) << outside;
}

TEST_F(RoleList, ShowsWhatWasThereWhenItWasMade) {
  add_role("a");
  add_role("b");
  commit_and_reopen();
  const owned<cfg_role_list> list(cfg_role_list_new(store));
  cfg_role_delete(load("roles-1").get());
  EXPECT_EQ(2, cfg_role_list_count(list.get()));
  EXPECT_EQ(nullptr, cfg_role_list_get_role(list.get(), 0));
  EXPECT_STREQ("b", cfg_role_get_rolename(owned<cfg_role>(cfg_role_list_get_role(list.get(), 1)).get()));
}

TEST_F(RoleList, IsEmptyWithoutRoles) {
  EXPECT_EQ(0, cfg_role_list_count(owned<cfg_role_list>(cfg_role_list_new(store)).get()));
  list_at("roles");
  const owned<cfg_role_list> list(cfg_role_list_new(store));
  ASSERT_NE(nullptr, list);
  EXPECT_EQ(0, cfg_role_list_count(list.get()));
  EXPECT_EQ(nullptr, cfg_role_list_get_role(list.get(), 0));
  EXPECT_EQ(0, cfg_role_list_count(nullptr));
  EXPECT_EQ(nullptr, cfg_role_list_get_role(nullptr, 0));
  cfg_role_list_free(nullptr);
}

}  // namespace
