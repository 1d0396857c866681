// Templates that change users and groups.
#include "template_fixture.hpp"

namespace {

using records::heap_text;
using records::template_record;

const char *const texts[] = {nullptr,     "user_add",     "user_modify",  "user_remove",    "user_set_list",
                             "group_add", "group_modify", "group_remove", "group_set_list", "membership"};

class UsersGroupsTemplate : public records::TemplateTest {
 protected:
  void SetUp() override {
    TemplateTest::SetUp();
    list_at("templates");
  }
  // With two users, two groups and two names of each kind, whatever the operation.
  template_record full(int32_t operation) {
    template_record record = fresh("people", CFG_TEMPLATE_USERS_GROUPS);
    EXPECT_EQ(1, cfg_ugt_set_operation(record.get(), operation));
    for (const char *name : {"alice", "bob"}) {
      EXPECT_EQ(1, cfg_ugt_add_user_operation(record.get(), user(name)));
      EXPECT_EQ(1, cfg_ugt_add_membership_user(record.get(), name));
    }
    for (const char *name : {"admin", "users"}) {
      EXPECT_EQ(1, cfg_ugt_add_group_operation(record.get(), group(name)));
      EXPECT_EQ(1, cfg_ugt_add_membership_group(record.get(), name));
    }
    return record;
  }
  static cfg_ugt_user_operation *user(const char *name) {
    cfg_ugt_user_operation *made = cfg_ugt_new_user_operation();
    EXPECT_EQ(1, cfg_ugt_user_operation_set_username(made, name));
    return made;
  }
  static cfg_ugt_group_operation *group(const char *name) {
    cfg_ugt_group_operation *made = cfg_ugt_new_group_operation();
    EXPECT_EQ(1, cfg_ugt_group_operation_set_groupname(made, name));
    return made;
  }
  static const char *user_at(const template_record &record, int32_t index) {
    return cfg_ugt_user_operation_get_username(cfg_ugt_get_user_operation(record.get(), index));
  }
  static const char *group_at(const template_record &record, int32_t index) {
    return cfg_ugt_group_operation_get_groupname(cfg_ugt_get_group_operation(record.get(), index));
  }
  // Numbers of users, groups, and names of users and groups.
  static std::vector<int32_t> counts(const template_record &record) {
    return {cfg_ugt_get_user_operations_count(record.get()), cfg_ugt_get_group_operations_count(record.get()),
            cfg_ugt_get_membership_users_count(record.get()),
            cfg_ugt_get_membership_groups_count(record.get())};
  }
  std::string saved(const template_record &record) {
    EXPECT_EQ(1, cfg_template_save(record.get()));
    return dump(cfg_get_by_id(store, cfg_template_get_uuid(record.get())));
  }
};
using numbers = std::vector<int32_t>;

constexpr char user_list[] = R"([{groups=[] username="alice"} {groups=[] username="bob"}])";
constexpr char group_list[] = R"([{groupname="admin" roles=[]} {groupname="users" roles=[]}])";

// What a save of full() makes of an operation, its type and the keys that sort before the name excepted.
std::string whole(const std::string &type, const std::string &before, const std::string &behind) {
  return R"({name="people" template_type="users_groups")" + before + R"( ug_operation_type=")" + type + '"' +
         behind + "}";
}

TEST(UsersGroupsOperation, HasATextFromOneToNine) {
  for (int32_t type = 1; type <= 9; ++type) {
    EXPECT_STREQ(texts[type], cfg_ugt_op_type_to_string(type));
    EXPECT_EQ(type, cfg_ugt_string_to_op_type(texts[type]));
  }
}

TEST(UsersGroupsOperation, IsUnknownOutside) {
  for (const int32_t type : {0, 10, -1, INT32_MAX, INT32_MIN})
    EXPECT_STREQ("unknown", cfg_ugt_op_type_to_string(type)) << type;
}

TEST(UsersGroupsOperation, IsNoneForAnyTextThatIsNotExactlyOne) {
  for (const char *text : {"", "unknown", "User_add", "user_ad", "user_adds", " membership", "groups"})
    EXPECT_EQ(0, cfg_ugt_string_to_op_type(text)) << text;
  EXPECT_EQ(0, cfg_ugt_string_to_op_type(nullptr));
}

TEST_F(UsersGroupsTemplate, IsNewWithoutOperationAndAddsMemberships) {
  const template_record record = fresh("people", CFG_TEMPLATE_USERS_GROUPS);
  EXPECT_EQ(CFG_UGT_NONE, cfg_ugt_get_operation(record.get()));
  EXPECT_EQ((numbers{0, 0, 0, 0}), counts(record));
  EXPECT_EQ(1, cfg_ugt_get_add_membership(record.get()));
}

TEST_F(UsersGroupsTemplate, OfAnyOtherTypeAddsNoMemberships) {
  for (const int32_t type : {0, 2, 3, 4, 5, 6})
    EXPECT_EQ(0, cfg_ugt_get_add_membership(fresh("other", type).get())) << type;
}

TEST_F(UsersGroupsTemplate, WithoutOperationSavesUnknownAndNothingElse) {
  for (const int32_t none : {0, 10, -1}) {
    const template_record record = full(none);
    EXPECT_EQ(whole("unknown", "", ""), saved(record)) << none;
    const template_record again = load(cfg_template_get_uuid(record.get()));
    EXPECT_EQ(CFG_UGT_NONE, cfg_ugt_get_operation(again.get()));
    EXPECT_EQ((numbers{0, 0, 0, 0}), counts(again));
  }
}

TEST_F(UsersGroupsTemplate, OfUsersSavesAndReadsUsersInOrder) {
  for (int32_t type = CFG_UGT_USER_ADD; type <= CFG_UGT_USER_SET_LIST; ++type) {
    const template_record record = full(type);
    EXPECT_EQ(whole(texts[type], "", std::string(" ug_user_changes=") + user_list), saved(record));
    const template_record again = load(cfg_template_get_uuid(record.get()));
    EXPECT_EQ(type, cfg_ugt_get_operation(again.get()));
    EXPECT_EQ((numbers{2, 0, 0, 0}), counts(again));
    EXPECT_STREQ("alice", user_at(again, 0));
    EXPECT_STREQ("bob", user_at(again, 1));
    EXPECT_EQ(0, cfg_ugt_get_add_membership(again.get()));
  }
}

TEST_F(UsersGroupsTemplate, OfGroupsSavesAndReadsGroupsInOrder) {
  for (int32_t type = CFG_UGT_GROUP_ADD; type <= CFG_UGT_GROUP_SET_LIST; ++type) {
    const template_record record = full(type);
    EXPECT_EQ(whole(texts[type], std::string(" ug_group_changes=") + group_list, ""), saved(record));
    const template_record again = load(cfg_template_get_uuid(record.get()));
    EXPECT_EQ(type, cfg_ugt_get_operation(again.get()));
    EXPECT_EQ((numbers{0, 2, 0, 0}), counts(again));
    EXPECT_STREQ("admin", group_at(again, 0));
    EXPECT_STREQ("users", group_at(again, 1));
  }
}

TEST_F(UsersGroupsTemplate, OfMembershipsSavesAndReadsNamesAndTheFlag) {
  for (const int32_t add : {1, 0}) {
    const template_record record = full(CFG_UGT_MEMBERSHIP);
    ASSERT_EQ(1, cfg_ugt_set_add_membership(record.get(), add));
    EXPECT_EQ(R"({name="people" template_type="users_groups" ug_add_membership=)" + std::to_string(add) +
                  R"( ug_membership_groups=["admin" "users"] ug_membership_users=["alice" "bob"])"
                  R"( ug_operation_type="membership"})",
              saved(record));
    const template_record again = load(cfg_template_get_uuid(record.get()));
    EXPECT_EQ(CFG_UGT_MEMBERSHIP, cfg_ugt_get_operation(again.get()));
    EXPECT_EQ((numbers{0, 0, 2, 2}), counts(again));
    EXPECT_STREQ("bob", cfg_ugt_get_membership_user(again.get(), 1));
    EXPECT_STREQ("users", cfg_ugt_get_membership_group(again.get(), 1));
    EXPECT_EQ(add, cfg_ugt_get_add_membership(again.get()));
  }
}

TEST_F(UsersGroupsTemplate, IsReadAfterTheCommitWithAllOfAUser) {
  const template_record record = fresh("people", CFG_TEMPLATE_USERS_GROUPS);
  cfg_ugt_set_operation(record.get(), CFG_UGT_USER_ADD);
  cfg_ugt_user_operation *alice = user("alice");
  cfg_ugt_user_operation_set_password(alice, "as it was given");
  cfg_ugt_user_operation_set_disabled(alice, 1);
  cfg_ugt_user_operation_add_group(alice, "admin");
  ASSERT_EQ(1, cfg_ugt_add_user_operation(record.get(), alice));
  ASSERT_EQ(1, cfg_template_save(record.get()));
  commit();
  const template_record again = load("templates-1");
  const cfg_ugt_user_operation *read = cfg_ugt_get_user_operation(again.get(), 0);
  EXPECT_STREQ("as it was given", cfg_ugt_user_operation_get_password(read));
  EXPECT_EQ(1, cfg_ugt_user_operation_get_disabled(read));
  EXPECT_STREQ("admin", cfg_ugt_user_operation_get_group(read, 0));
}

TEST_F(UsersGroupsTemplate, WithoutEntriesSavesEmptyLists) {
  for (const int32_t type : {CFG_UGT_USER_REMOVE, CFG_UGT_GROUP_REMOVE, CFG_UGT_MEMBERSHIP}) {
    const template_record record = fresh("people", CFG_TEMPLATE_USERS_GROUPS);
    cfg_ugt_set_operation(record.get(), type);
    const std::string all = saved(record);
    const char *list = type == CFG_UGT_MEMBERSHIP    ? "ug_membership_groups=[] ug_membership_users=[]"
                       : type == CFG_UGT_USER_REMOVE ? "ug_user_changes=[]"
                                                     : "ug_group_changes=[]";
    EXPECT_NE(std::string::npos, all.find(list)) << all;
    EXPECT_EQ((numbers{0, 0, 0, 0}), counts(load(cfg_template_get_uuid(record.get()))));
  }
}

TEST_F(UsersGroupsTemplate, SavedAgainReplacesItsLists) {
  const template_record record = full(CFG_UGT_USER_ADD);
  ASSERT_EQ(1, cfg_template_save(record.get()));
  commit();
  cfg_ugt_clear_user_operations(record.get());
  cfg_ugt_add_user_operation(record.get(), user("carol"));
  EXPECT_EQ(whole("user_add", "", R"( ug_user_changes=[{groups=[] username="carol"}])"), saved(record));
  commit();
  EXPECT_EQ((numbers{1, 0, 0, 0}), counts(load("templates-1")));
}

TEST_F(UsersGroupsTemplate, ChangedToAnotherOperationKeepsTheFormerKeys) {
  const template_record record = full(CFG_UGT_USER_ADD);
  ASSERT_EQ(1, cfg_template_save(record.get()));
  ASSERT_EQ(1, cfg_ugt_set_operation(record.get(), CFG_UGT_MEMBERSHIP));
  EXPECT_EQ(std::string(R"({name="people" template_type="users_groups" ug_add_membership=1)"
                        R"( ug_membership_groups=["admin" "users"] ug_membership_users=["alice" "bob"])"
                        R"( ug_operation_type="membership" ug_user_changes=)") +
                user_list + "}",
            saved(record));
  EXPECT_EQ((numbers{0, 0, 2, 2}), counts(load(cfg_template_get_uuid(record.get()))));
}

TEST_F(UsersGroupsTemplate, IsReadWithoutItsLists) {
  cfg_elem *elem = add_template("people", "users_groups");
  for (int32_t type = 1; type <= 9; ++type) {
    set(elem, "ug_operation_type", texts[type]);
    const template_record record = load(elem);
    EXPECT_EQ(type, cfg_ugt_get_operation(record.get()));
    EXPECT_EQ((numbers{0, 0, 0, 0}), counts(record)) << type;
    EXPECT_EQ(0, cfg_ugt_get_add_membership(record.get()));
  }
}

TEST_F(UsersGroupsTemplate, IsReadWhateverItsKeysHold) {
  cfg_elem *elem = add_template("people", "users_groups");
  const template_record bare = load(elem);
  ASSERT_NE(nullptr, bare);
  EXPECT_EQ(CFG_UGT_NONE, cfg_ugt_get_operation(bare.get()));
  for (const char *key : {"ug_user_changes", "ug_group_changes", "ug_membership_users",
                          "ug_membership_groups", "ug_operation_type"})
    set(elem, key, 7);
  set(elem, "ug_add_membership", "yes");
  EXPECT_EQ(CFG_UGT_NONE, cfg_ugt_get_operation(load(elem).get()));
  for (int32_t type = 1; type <= 9; ++type) {
    set(elem, "ug_operation_type", texts[type]);
    const template_record record = load(elem);
    ASSERT_NE(nullptr, record) << type;
    EXPECT_EQ((numbers{0, 0, 0, 0}), counts(record)) << type;
  }
}

TEST_F(UsersGroupsTemplate, EntriesThatAreNoMapsAreReadAsEmptyOperations) {
  cfg_elem *elem = add_template("people", "users_groups");
  set(elem, "ug_operation_type", "user_add");
  cfg_elem *list = child_list(elem, "ug_user_changes");
  add(list, "no map");
  add(list, cfg_new_map(store));
  set(cfg_simple_get_listelem(store, list, 1), "username", "alice");
  const template_record record = load(elem);
  ASSERT_EQ((numbers{2, 0, 0, 0}), counts(record));
  EXPECT_EQ(nullptr, user_at(record, 0));
  EXPECT_STREQ("alice", user_at(record, 1));
}

TEST_F(UsersGroupsTemplate, ReadAgainWithoutTheOperationChangesNothing) {
  const template_record record = full(CFG_UGT_USER_ADD);
  cfg_elem *map = map_at("elsewhere");
  EXPECT_EQ(1, cfg_ugt_load_from_config(record.get(), map));
  EXPECT_EQ(CFG_UGT_USER_ADD, cfg_ugt_get_operation(record.get()));
  EXPECT_EQ((numbers{2, 2, 2, 2}), counts(record));
  set(map, "ug_operation_type", "no operation");
  EXPECT_EQ(1, cfg_ugt_load_from_config(record.get(), map));
  EXPECT_EQ(CFG_UGT_NONE, cfg_ugt_get_operation(record.get()));
  EXPECT_EQ((numbers{2, 2, 2, 2}), counts(record));
  set(map, "ug_operation_type", "user_add");
  EXPECT_EQ(1, cfg_ugt_load_from_config(record.get(), map));
  EXPECT_EQ((numbers{0, 2, 2, 2}), counts(record));
  set(map, "ug_operation_type", "group_add");
  EXPECT_EQ(1, cfg_ugt_load_from_config(record.get(), map));
  EXPECT_EQ((numbers{0, 0, 2, 2}), counts(record));
  set(map, "ug_operation_type", "membership");
  EXPECT_EQ(1, cfg_ugt_load_from_config(record.get(), map));
  EXPECT_EQ((numbers{0, 0, 0, 0}), counts(record));
}

TEST_F(UsersGroupsTemplate, CanBeWrittenToAnyMap) {
  cfg_elem *map = map_at("elsewhere");
  EXPECT_EQ(1, cfg_ugt_save_to_config(full(CFG_UGT_GROUP_MODIFY).get(), map));
  EXPECT_EQ(std::string("{ug_group_changes=") + group_list + R"( ug_operation_type="group_modify"})",
            dump(map));
}

TEST_F(UsersGroupsTemplate, OnlyATemplateOfThatTypeReadsAndWritesThem) {
  const template_record other = fresh("other", CFG_TEMPLATE_PORTS);
  cfg_ugt_set_operation(other.get(), CFG_UGT_USER_ADD);
  EXPECT_EQ(R"({name="other" template_type="ports"})", saved(other));
  cfg_elem *elem = add_template("other", "network");
  set(elem, "ug_operation_type", "user_add");
  EXPECT_EQ(CFG_UGT_NONE, cfg_ugt_get_operation(load(elem).get()));
}

TEST_F(UsersGroupsTemplate, ATextThatTheStoreDoesNotTakeIsLeftOut) {
  const template_record record = fresh("people", CFG_TEMPLATE_USERS_GROUPS);
  cfg_ugt_set_operation(record.get(), CFG_UGT_MEMBERSHIP);
  for (const char *name : {"alice", records::unwritable().c_str(), "bob"})
    ASSERT_EQ(1, cfg_ugt_add_membership_user(record.get(), name));
  EXPECT_EQ(1, cfg_template_save(record.get()));
  const template_record again = load(cfg_template_get_uuid(record.get()));
  ASSERT_EQ((numbers{0, 0, 2, 0}), counts(again));
  EXPECT_STREQ("bob", cfg_ugt_get_membership_user(again.get(), 1));
}

TEST_F(UsersGroupsTemplate, OperationsAndNamesAreFoundByIndexOnly) {
  const template_record record = full(CFG_UGT_USER_ADD);
  for (const int32_t outside : {2, -1, INT32_MAX, INT32_MIN}) {
    EXPECT_EQ(nullptr, cfg_ugt_get_user_operation(record.get(), outside));
    EXPECT_EQ(nullptr, cfg_ugt_get_group_operation(record.get(), outside));
    EXPECT_EQ(nullptr, cfg_ugt_get_membership_user(record.get(), outside));
    EXPECT_EQ(nullptr, cfg_ugt_get_membership_group(record.get(), outside));
  }
}

TEST_F(UsersGroupsTemplate, AnOperationThatWasAddedIsTheTemplatesAndCanBeChanged) {
  const template_record record = full(CFG_UGT_USER_ADD);
  cfg_ugt_user_operation *carol = user("carol");
  ASSERT_EQ(1, cfg_ugt_add_user_operation(record.get(), carol));
  EXPECT_EQ(carol, cfg_ugt_get_user_operation(record.get(), 2));
  cfg_ugt_user_operation_set_username(carol, "caroline");
  EXPECT_STREQ("caroline", user_at(record, 2));
}

TEST_F(UsersGroupsTemplate, EachListIsClearedAlone) {
  const template_record record = full(CFG_UGT_USER_ADD);
  cfg_ugt_clear_user_operations(record.get());
  EXPECT_EQ((numbers{0, 2, 2, 2}), counts(record));
  cfg_ugt_clear_group_operations(record.get());
  EXPECT_EQ((numbers{0, 0, 2, 2}), counts(record));
  cfg_ugt_clear_membership_users(record.get());
  EXPECT_EQ((numbers{0, 0, 0, 2}), counts(record));
  cfg_ugt_clear_membership_groups(record.get());
  EXPECT_EQ((numbers{0, 0, 0, 0}), counts(record));
  ASSERT_EQ(1, cfg_ugt_add_membership_user(record.get(), "again"));
  EXPECT_STREQ("again", cfg_ugt_get_membership_user(record.get(), 0));
}

TEST_F(UsersGroupsTemplate, SetUpAnewIsEmptyAndAddsMemberships) {
  const template_record record = full(CFG_UGT_MEMBERSHIP);
  cfg_ugt_set_add_membership(record.get(), 0);
  EXPECT_EQ(1, cfg_ugt_new_setup(record.get()));
  EXPECT_EQ(CFG_UGT_NONE, cfg_ugt_get_operation(record.get()));
  EXPECT_EQ((numbers{0, 0, 0, 0}), counts(record));
  EXPECT_EQ(1, cfg_ugt_get_add_membership(record.get()));
}

TEST_F(UsersGroupsTemplate, NumbersAreKeptAsTheyAreSet) {
  const template_record record = fresh("people", CFG_TEMPLATE_USERS_GROUPS);
  for (const int32_t value : {7, 10, -1, 0}) {
    EXPECT_EQ(1, cfg_ugt_set_operation(record.get(), value));
    EXPECT_EQ(value, cfg_ugt_get_operation(record.get()));
    EXPECT_EQ(1, cfg_ugt_set_add_membership(record.get(), value));
    EXPECT_EQ(value, cfg_ugt_get_add_membership(record.get()));
  }
}

TEST_F(UsersGroupsTemplate, FreeingTheTemplateLeavesOperationsAndNames) {
  cfg_template *record = full(CFG_UGT_USER_ADD).release();
  cfg_ugt_user_operation *users[] = {cfg_ugt_get_user_operation(record, 0),
                                     cfg_ugt_get_user_operation(record, 1)};
  cfg_ugt_group_operation *groups[] = {cfg_ugt_get_group_operation(record, 0),
                                       cfg_ugt_get_group_operation(record, 1)};
  std::vector<heap_text> names;
  for (int32_t i = 0; i < 2; ++i) {
    names.emplace_back(const_cast<char *>(cfg_ugt_get_membership_user(record, i)));
    names.emplace_back(const_cast<char *>(cfg_ugt_get_membership_group(record, i)));
  }
  cfg_template_free(record);
  EXPECT_STREQ("bob", cfg_ugt_user_operation_get_username(users[1]));
  EXPECT_STREQ("admin", cfg_ugt_group_operation_get_groupname(groups[0]));
  EXPECT_STREQ("alice", names[0].get());
  EXPECT_STREQ("users", names[3].get());
  for (cfg_ugt_user_operation *one : users) {
    cfg_ugt_free_user_operation(one);
    std::free(one);
  }
  for (cfg_ugt_group_operation *one : groups) {
    cfg_ugt_free_group_operation(one);
    std::free(one);
  }
}

TEST_F(UsersGroupsTemplate, ManyOperationsKeepTheirOrder) {
  const template_record record = fresh("people", CFG_TEMPLATE_USERS_GROUPS);
  cfg_ugt_set_operation(record.get(), CFG_UGT_USER_SET_LIST);
  for (int32_t i = 0; i < 1000; ++i)
    ASSERT_EQ(1, cfg_ugt_add_user_operation(record.get(), user(("user" + std::to_string(i)).c_str())));
  ASSERT_EQ(1, cfg_template_save(record.get()));
  commit();
  const template_record again = load("templates-1");
  ASSERT_EQ((numbers{1000, 0, 0, 0}), counts(again));
  for (int32_t i = 0; i < 1000; ++i) ASSERT_STREQ(("user" + std::to_string(i)).c_str(), user_at(again, i));
}

TEST_F(UsersGroupsTemplate, NullDoesNothing) {
  cfg_elem *map = map_at("elsewhere");
  const template_record record = full(CFG_UGT_USER_ADD);
  cfg_template *none = nullptr;
  EXPECT_EQ(0, cfg_ugt_new_setup(none));
  EXPECT_EQ(0, cfg_ugt_get_operation(none));
  EXPECT_EQ(0, cfg_ugt_set_operation(none, 1));
  EXPECT_EQ(0, cfg_ugt_get_add_membership(none));
  EXPECT_EQ(0, cfg_ugt_set_add_membership(none, 1));
  cfg_ugt_user_operation *alice = user("alice");
  EXPECT_EQ(0, cfg_ugt_add_user_operation(none, alice));
  EXPECT_EQ(0, cfg_ugt_add_user_operation(record.get(), nullptr));
  cfg_ugt_free_user_operation(alice);
  std::free(alice);
  cfg_ugt_group_operation *admin = group("admin");
  EXPECT_EQ(0, cfg_ugt_add_group_operation(none, admin));
  EXPECT_EQ(0, cfg_ugt_add_group_operation(record.get(), nullptr));
  cfg_ugt_free_group_operation(admin);
  std::free(admin);
  EXPECT_EQ(0, cfg_ugt_add_membership_user(none, "x"));
  EXPECT_EQ(0, cfg_ugt_add_membership_user(record.get(), nullptr));
  EXPECT_EQ(0, cfg_ugt_add_membership_group(none, "x"));
  EXPECT_EQ(0, cfg_ugt_add_membership_group(record.get(), nullptr));
  EXPECT_EQ((numbers{2, 2, 2, 2}), counts(record));
  EXPECT_EQ(0, cfg_ugt_get_user_operations_count(none));
  EXPECT_EQ(0, cfg_ugt_get_group_operations_count(none));
  EXPECT_EQ(0, cfg_ugt_get_membership_users_count(none));
  EXPECT_EQ(0, cfg_ugt_get_membership_groups_count(none));
  EXPECT_EQ(nullptr, cfg_ugt_get_user_operation(none, 0));
  EXPECT_EQ(nullptr, cfg_ugt_get_group_operation(none, 0));
  EXPECT_EQ(nullptr, cfg_ugt_get_membership_user(none, 0));
  EXPECT_EQ(nullptr, cfg_ugt_get_membership_group(none, 0));
  cfg_ugt_clear_user_operations(none);
  cfg_ugt_clear_group_operations(none);
  cfg_ugt_clear_membership_users(none);
  cfg_ugt_clear_membership_groups(none);
  EXPECT_EQ(0, cfg_ugt_load_from_config(none, map));
  EXPECT_EQ(0, cfg_ugt_load_from_config(record.get(), nullptr));
  EXPECT_EQ(0, cfg_ugt_save_to_config(none, map));
  EXPECT_EQ(0, cfg_ugt_save_to_config(record.get(), nullptr));
  EXPECT_EQ("{}", dump(map));
}

}  // namespace
