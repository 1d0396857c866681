// The roles of groups, which are written and read at once.
#include "access_fixture.hpp"

namespace {

using records::owned;
using records::texts;

class GroupRoles : public records::AccessTest {
 protected:
  void SetUp() override {
    AccessTest::SetUp();
    add_group("g");
    add_role("Operator");
    set(entry_of("smart_groups"), "name", "s");
    commit_and_reopen();
    record = group("groups-1");
  }
  // "NULL" for none.
  static std::string text(char *given) {
    const records::heap_text owned_text(given);
    return given == nullptr ? "NULL" : given;
  }
  std::string global() { return text(cfg_group_get_global_roles(record.get())); }
  std::string smart_role() { return text(cfg_group_get_smart_group_roles(record.get())); }
  std::string smart_group() { return text(cfg_group_get_smart_group(record.get())); }

  owned<cfg_group> record;
};

TEST_F(GroupRoles, TheGlobalRoleIsInTheStoreAtOnce) {
  EXPECT_EQ("NULL", global());
  ASSERT_EQ(1, cfg_group_set_global_roles(record.get(), "Operator"));
  EXPECT_EQ("[{global_roles={ref=&roles-1} groupname=\"g\"}]", dump("groups"));
  EXPECT_EQ("Operator", global());
  EXPECT_EQ("[{rolename=\"Operator\"}]", dump("roles")) << "no second one";
}

TEST_F(GroupRoles, AnotherGlobalRoleReplacesTheFirst) {
  add_role("Viewer");
  commit();
  ASSERT_EQ(1, cfg_group_set_global_roles(record.get(), "Operator"));
  ASSERT_EQ(1, cfg_group_set_global_roles(record.get(), "Viewer"));
  EXPECT_EQ("Viewer", global());
  EXPECT_EQ("[{global_roles={ref=&roles-2} groupname=\"g\"}]", dump("groups"));
}

TEST_F(GroupRoles, ARoleIsMadeWhenItsNameIsFirstUsed) {
  ASSERT_EQ(1, cfg_group_set_global_roles(record.get(), "Auditor"));
  EXPECT_EQ("[{rolename=\"Operator\"} +{rolename=\"Auditor\"}]", dump("roles"));
  EXPECT_EQ("Auditor", global());
  commit_and_reopen();
  EXPECT_EQ("[{global_roles={ref=&roles-2} groupname=\"g\"}]", dump("groups"));
}

TEST_F(GroupRoles, ANameThatDiffersInLetterCaseIsAnotherRole) {
  ASSERT_EQ(1, cfg_group_set_global_roles(record.get(), "operator"));
  EXPECT_EQ("[{rolename=\"Operator\"} +{rolename=\"operator\"}]", dump("roles"));
}

TEST_F(GroupRoles, ARoleThatCannotBeMadeFailsTheSetter) {
  erase(cfg_root(store), "roles");
  EXPECT_EQ(0, cfg_group_set_global_roles(record.get(), "Operator"));
  EXPECT_EQ(0, cfg_group_set_smart_group_roles(record.get(), "Operator", "smart_groups-1"));
  list_at("roles");
  EXPECT_EQ(0, cfg_group_set_global_roles(record.get(), ""));
  EXPECT_EQ("[{groupname=\"g\"}]", dump("groups"));
}

TEST_F(GroupRoles, OfAGroupThatWasNeverSavedTheRoleIsMadeAndNothingElse) {
  const auto unsaved = new_group("h");
  EXPECT_EQ(1, cfg_group_set_global_roles(unsaved.get(), "Auditor"));
  EXPECT_EQ("[{rolename=\"Operator\"} +{rolename=\"Auditor\"}]", dump("roles"));
  EXPECT_EQ("[{groupname=\"g\"}]", dump("groups"));
  EXPECT_EQ(nullptr, cfg_group_get_global_roles(unsaved.get()));
  EXPECT_EQ(0, cfg_group_set_smart_group_roles(unsaved.get(), "Operator", "smart_groups-1"));
}

TEST_F(GroupRoles, OfAPendingGroupAreTheStoredOnesAtOnceAndAfterTheCommit) {
  record = new_group("h");
  ASSERT_EQ(1, cfg_group_save(record.get()));
  ASSERT_EQ(1, cfg_group_set_global_roles(record.get(), "Auditor"));
  EXPECT_EQ("Auditor", global());
  ASSERT_EQ(1, cfg_group_set_mode(record.get(), "global"));
  ASSERT_EQ(1, cfg_group_save(record.get()));
  commit_and_reopen();
  record = group("groups-2");
  EXPECT_EQ("Auditor", global());
  EXPECT_EQ("{enabled=true global_roles={ref=&roles-2} groupname=\"h\" members=[] mode=\"global\"}",
            dump(cfg_get_by_id(store, "groups-2")));
}

TEST_F(GroupRoles, OfTheOtherModeAreGoneWithTheSaveAndNotBefore) {
  ASSERT_EQ(1, cfg_group_set_global_roles(record.get(), "Operator"));
  ASSERT_EQ(1, cfg_group_set_smart_group_roles(record.get(), "Operator", "smart_groups-1"));
  ASSERT_EQ(1, cfg_group_set_mode(record.get(), "global"));
  EXPECT_EQ("Operator", smart_role());
  ASSERT_EQ(1, cfg_group_save(record.get()));
  EXPECT_EQ("Operator", global());
  EXPECT_EQ("NULL", smart_role());
  EXPECT_EQ("NULL", smart_group());
}

TEST_F(GroupRoles, NullNamesLeaveAMessage) {
  EXPECT_EQ(0, cfg_group_set_global_roles(record.get(), nullptr));
  EXPECT_EQ((texts{"src/groups"}), messages());
  EXPECT_EQ(0, cfg_group_set_smart_group_roles(record.get(), nullptr, "smart_groups-1"));
  EXPECT_EQ(0, cfg_group_set_smart_group_roles(record.get(), "Operator", nullptr));
  EXPECT_EQ((texts{"src/groups", "src/groups", "src/groups"}), messages());
  EXPECT_EQ((texts{}), changes());
}

TEST_F(GroupRoles, ThoseForASmartGroupAreInTheStoreAtOnce) {
  EXPECT_EQ("NULL", smart_role());
  EXPECT_EQ("NULL", smart_group());
  ASSERT_EQ(1, cfg_group_set_smart_group_roles(record.get(), "Operator", "smart_groups-1"));
  EXPECT_EQ("[{groupname=\"g\" smart_group={ref=&smart_groups-1 roles_ref=&roles-1}}]", dump("groups"));
  EXPECT_EQ("Operator", smart_role());
  EXPECT_EQ("smart_groups-1", smart_group());
  EXPECT_EQ("NULL", global());
}

TEST_F(GroupRoles, ASmartGroupThatDoesNotExistFailsBeforeARoleIsMade) {
  EXPECT_EQ(0, cfg_group_set_smart_group_roles(record.get(), "Auditor", "smart_groups-9"));
  EXPECT_EQ((texts{}), changes());
}

TEST_F(GroupRoles, AGroupThatIsGoneFailsTheSmartSetterWithTheRoleMade) {
  cfg_group_delete(record.get());
  EXPECT_EQ(0, cfg_group_set_smart_group_roles(record.get(), "Auditor", "smart_groups-1"));
  EXPECT_EQ("[{rolename=\"Operator\"} +{rolename=\"Auditor\"}]", dump("roles"));
  EXPECT_EQ(1, cfg_group_set_global_roles(record.get(), "Operator")) << "the role exists";
}

TEST_F(GroupRoles, AreReadWhateverTheMode) {
  ASSERT_EQ(1, cfg_group_set_global_roles(record.get(), "Operator"));
  ASSERT_EQ(1, cfg_group_set_smart_group_roles(record.get(), "Operator", "smart_groups-1"));
  for (const char *mode : {"global", "smart_group", "x"}) {
    set(cfg_get_by_id(store, "groups-1"), "mode", mode);
    record = group("groups-1");
    EXPECT_EQ("Operator", global()) << mode;
    EXPECT_EQ("Operator", smart_role()) << mode;
    EXPECT_EQ("smart_groups-1", smart_group()) << mode;
  }
}

TEST_F(GroupRoles, AnyMissingLinkReadsAsNull) {
  const auto element = [&] { return cfg_get_by_id(store, "groups-1"); };
  const auto map = [&](const char *key) { return cfg_simple_get_mapelem(store, element(), key); };
  ASSERT_EQ(1, cfg_group_set_global_roles(record.get(), "Operator"));
  ASSERT_EQ(1, cfg_group_set_smart_group_roles(record.get(), "Operator", "smart_groups-1"));
  erase(cfg_get_by_id(store, "roles-1"), "rolename");
  EXPECT_EQ("NULL", global());
  EXPECT_EQ("NULL", smart_role());
  ASSERT_TRUE(cfg_delete_element(store, cfg_get_by_id(store, "roles-1")));
  EXPECT_EQ("NULL", global());
  EXPECT_EQ("NULL", smart_role());
  set(map("global_roles"), "ref", "roles-1");
  EXPECT_EQ("NULL", global()) << "a string is no reference";
  set(map("smart_group"), "ref", 5);
  EXPECT_EQ("NULL", smart_group());
  erase(map("smart_group"), "ref");
  EXPECT_EQ("NULL", smart_group());
  set(element(), "smart_group", "no map");
  EXPECT_EQ("NULL", smart_group());
  cfg_group_delete(record.get());
  EXPECT_EQ("NULL", global());
}

TEST_F(GroupRoles, ASmartGroupIsToldByItsIdAlsoWhenItIsGone) {
  ASSERT_EQ(1, cfg_group_set_smart_group_roles(record.get(), "Operator", "smart_groups-1"));
  ASSERT_TRUE(cfg_delete_element(store, cfg_get_by_id(store, "smart_groups-1")));
  EXPECT_EQ("smart_groups-1", smart_group());
}

TEST_F(GroupRoles, NullGivesNothing) {
  EXPECT_EQ(0, cfg_group_set_global_roles(nullptr, "Operator"));
  EXPECT_EQ(0, cfg_group_set_smart_group_roles(nullptr, "Operator", "smart_groups-1"));
  EXPECT_EQ(nullptr, cfg_group_get_global_roles(nullptr));
  EXPECT_EQ(nullptr, cfg_group_get_smart_group_roles(nullptr));
  EXPECT_EQ(nullptr, cfg_group_get_smart_group(nullptr));
  const owned<cfg_group> without(cfg_group_new(nullptr, "g"));
  EXPECT_EQ(0, cfg_group_set_global_roles(without.get(), "Operator"));
  EXPECT_EQ(0, cfg_group_set_smart_group_roles(without.get(), "Operator", "smart_groups-1"));
  EXPECT_EQ(nullptr, cfg_group_get_global_roles(without.get()));
}

}  // namespace
