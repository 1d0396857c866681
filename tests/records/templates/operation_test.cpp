// Single users and groups of users-groups templates.
#include "template_fixture.hpp"

namespace {

struct free_operation {
  void operator()(cfg_ugt_user_operation *user) const {
    cfg_ugt_free_user_operation(user);
    std::free(user);
  }
  void operator()(cfg_ugt_group_operation *group) const {
    cfg_ugt_free_group_operation(group);
    std::free(group);
  }
};
using user_record = std::unique_ptr<cfg_ugt_user_operation, free_operation>;
using group_record = std::unique_ptr<cfg_ugt_group_operation, free_operation>;

class Operation : public records::StoreTest {
 protected:
  std::string saved(const user_record &user) {
    return dump(cfg_ugt_save_user_operation_to_config(store, user.get()));
  }
  std::string saved(const group_record &group) {
    return dump(cfg_ugt_save_group_operation_to_config(store, group.get()));
  }
  user_record user_from(cfg_elem *map) {
    return user_record(cfg_ugt_load_user_operation_from_config(store, map));
  }
  group_record group_from(cfg_elem *map) {
    return group_record(cfg_ugt_load_group_operation_from_config(store, map));
  }
};
class UserOperation : public Operation {};
class GroupOperation : public Operation {};

user_record new_user() { return user_record(cfg_ugt_new_user_operation()); }
group_record new_group() { return group_record(cfg_ugt_new_group_operation()); }

user_record full_user() {
  user_record user = new_user();
  EXPECT_EQ(1, cfg_ugt_user_operation_set_username(user.get(), "alice"));
  EXPECT_EQ(1, cfg_ugt_user_operation_set_description(user.get(), "of the night shift"));
  EXPECT_EQ(1, cfg_ugt_user_operation_set_password(user.get(), "as it was given"));
  EXPECT_EQ(1, cfg_ugt_user_operation_set_disabled(user.get(), 1));
  EXPECT_EQ(1, cfg_ugt_user_operation_add_group(user.get(), "admin"));
  EXPECT_EQ(1, cfg_ugt_user_operation_add_group(user.get(), "users"));
  return user;
}
constexpr char whole_user[] = R"({description="of the night shift" disabled=1 groups=["admin" "users"])"
                              R"( password="as it was given" username="alice"})";

group_record full_group() {
  group_record group = new_group();
  EXPECT_EQ(1, cfg_ugt_group_operation_set_groupname(group.get(), "operators"));
  EXPECT_EQ(1, cfg_ugt_group_operation_set_description(group.get(), "who operate"));
  EXPECT_EQ(1, cfg_ugt_group_operation_add_role(group.get(), "reader"));
  EXPECT_EQ(1, cfg_ugt_group_operation_add_role(group.get(), "writer"));
  return group;
}
constexpr char whole_group[] =
    R"({description="who operate" groupname="operators" roles=["reader" "writer"]})";

TEST_F(UserOperation, IsNewWithoutAnything) {
  const user_record user = new_user();
  ASSERT_NE(nullptr, user);
  EXPECT_EQ(nullptr, cfg_ugt_user_operation_get_username(user.get()));
  EXPECT_EQ(nullptr, cfg_ugt_user_operation_get_description(user.get()));
  EXPECT_EQ(nullptr, cfg_ugt_user_operation_get_password(user.get()));
  EXPECT_EQ(0, cfg_ugt_user_operation_get_disabled(user.get()));
  EXPECT_EQ(0, cfg_ugt_user_operation_get_groups_count(user.get()));
  EXPECT_EQ(nullptr, cfg_ugt_user_operation_get_group(user.get(), 0));
}

TEST_F(UserOperation, WithoutAnythingIsSavedAsAnEmptyListOfGroups) {
  EXPECT_EQ("{groups=[]}", saved(new_user()));
}

TEST_F(UserOperation, IsSavedWithWhatIsSet) {
  EXPECT_EQ(whole_user, saved(full_user()));
  const user_record user = full_user();
  cfg_ugt_user_operation_set_disabled(user.get(), 0);
  cfg_ugt_user_operation_set_description(user.get(), "");
  cfg_ugt_user_operation_set_password(user.get(), nullptr);
  EXPECT_EQ(R"({groups=["admin" "users"] username="alice"})", saved(user));
}

TEST_F(UserOperation, IsSavedToANewMapThatIsAttachedNowhere) {
  const user_record user = full_user();
  cfg_elem *first = cfg_ugt_save_user_operation_to_config(store, user.get());
  cfg_elem *second = cfg_ugt_save_user_operation_to_config(store, user.get());
  EXPECT_NE(first, second);
  EXPECT_EQ(nullptr, cfg_get_parent_elem(store, first));
}

TEST_F(UserOperation, IsReadBack) {
  cfg_elem *map = cfg_ugt_save_user_operation_to_config(store, full_user().get());
  const user_record user = user_from(map);
  ASSERT_NE(nullptr, user);
  EXPECT_STREQ("alice", cfg_ugt_user_operation_get_username(user.get()));
  EXPECT_STREQ("of the night shift", cfg_ugt_user_operation_get_description(user.get()));
  EXPECT_STREQ("as it was given", cfg_ugt_user_operation_get_password(user.get()));
  EXPECT_EQ(1, cfg_ugt_user_operation_get_disabled(user.get()));
  ASSERT_EQ(2, cfg_ugt_user_operation_get_groups_count(user.get()));
  EXPECT_STREQ("admin", cfg_ugt_user_operation_get_group(user.get(), 0));
  EXPECT_STREQ("users", cfg_ugt_user_operation_get_group(user.get(), 1));
  EXPECT_EQ(whole_user, saved(user));
}

TEST_F(UserOperation, IsReadWhateverTheMapHolds) {
  cfg_elem *map = map_at("user");
  EXPECT_EQ("{groups=[]}", saved(user_from(map)));
  for (const char *key : {"username", "description", "password", "groups"}) set(map, key, 7);
  set(map, "disabled", "yes");
  EXPECT_EQ("{groups=[]}", saved(user_from(map)));
  add(child_list(map, "groups"), "first");
  add(cfg_get_by_path(store, "user.groups"), cfg_new_map(store));
  add(cfg_get_by_path(store, "user.groups"), "third");
  const user_record user = user_from(map);
  ASSERT_EQ(3, cfg_ugt_user_operation_get_groups_count(user.get()));
  EXPECT_EQ(nullptr, cfg_ugt_user_operation_get_group(user.get(), 1));
  EXPECT_STREQ("third", cfg_ugt_user_operation_get_group(user.get(), 2));
  EXPECT_EQ(R"({groups=["first" "third"]})", saved(user));
  EXPECT_EQ("{groups=[]}", saved(user_from(list_at("no.map"))));
}

TEST_F(UserOperation, WhatTheStoreDoesNotTakeIsLeftOut) {
  const user_record user = full_user();
  cfg_ugt_user_operation_set_username(user.get(), records::unwritable().c_str());
  cfg_ugt_user_operation_clear_groups(user.get());
  for (const char *group : {"first", records::unwritable().c_str(), "last"})
    EXPECT_EQ(1, cfg_ugt_user_operation_add_group(user.get(), group));
  EXPECT_EQ(
      R"({description="of the night shift" disabled=1 groups=["first" "last"] password="as it was given"})",
      saved(user));
}

TEST_F(UserOperation, TextsAreReplacedAndCleared) {
  const user_record user = new_user();
  const struct {
    int (*set)(cfg_ugt_user_operation *, const char *);
    const char *(*get)(const cfg_ugt_user_operation *);
  } fields[] = {
      {cfg_ugt_user_operation_set_username, cfg_ugt_user_operation_get_username},
      {cfg_ugt_user_operation_set_description, cfg_ugt_user_operation_get_description},
      {cfg_ugt_user_operation_set_password, cfg_ugt_user_operation_get_password},
  };
  for (const auto &field : fields) {
    EXPECT_EQ(1, field.set(user.get(), "first"));
    EXPECT_EQ(1, field.set(user.get(), "second"));
    EXPECT_STREQ("second", field.get(user.get()));
    EXPECT_EQ(1, field.set(user.get(), field.get(user.get())));
    EXPECT_STREQ("second", field.get(user.get()));
    EXPECT_EQ(1, field.set(user.get(), ""));
    EXPECT_EQ(nullptr, field.get(user.get()));
    EXPECT_EQ(0, field.set(nullptr, "x"));
    EXPECT_EQ(nullptr, field.get(nullptr));
  }
}

TEST_F(UserOperation, DisabledIsKeptAsItIsSet) {
  const user_record user = new_user();
  for (const int32_t value : {1, 2, -1, 0}) {
    EXPECT_EQ(1, cfg_ugt_user_operation_set_disabled(user.get(), value));
    EXPECT_EQ(value, cfg_ugt_user_operation_get_disabled(user.get()));
    EXPECT_EQ(value == 0 ? "{groups=[]}" : "{disabled=" + std::to_string(value) + " groups=[]}", saved(user));
  }
}

TEST_F(UserOperation, GroupsAreClearedAndAddedAgain) {
  const user_record user = full_user();
  EXPECT_EQ(nullptr, cfg_ugt_user_operation_get_group(user.get(), 2));
  EXPECT_EQ(nullptr, cfg_ugt_user_operation_get_group(user.get(), -1));
  cfg_ugt_user_operation_clear_groups(user.get());
  EXPECT_EQ(0, cfg_ugt_user_operation_get_groups_count(user.get()));
  EXPECT_EQ(nullptr, cfg_ugt_user_operation_get_group(user.get(), 0));
  EXPECT_EQ(1, cfg_ugt_user_operation_add_group(user.get(), "again"));
  EXPECT_STREQ("again", cfg_ugt_user_operation_get_group(user.get(), 0));
  EXPECT_EQ(0, cfg_ugt_user_operation_add_group(user.get(), nullptr));
  EXPECT_EQ(1, cfg_ugt_user_operation_get_groups_count(user.get()));
}

TEST_F(UserOperation, IsEmptyAndUsableAfterItWasFreed) {
  const user_record user = full_user();
  cfg_ugt_free_user_operation(user.get());
  EXPECT_EQ("{groups=[]}", saved(user));
  cfg_ugt_free_user_operation(user.get());
  EXPECT_EQ(1, cfg_ugt_user_operation_set_username(user.get(), "bob"));
  EXPECT_STREQ("bob", cfg_ugt_user_operation_get_username(user.get()));
}

TEST_F(UserOperation, NullDoesNothing) {
  cfg_elem *map = map_at("user");
  EXPECT_EQ(nullptr, cfg_ugt_load_user_operation_from_config(nullptr, map));
  EXPECT_EQ(nullptr, cfg_ugt_load_user_operation_from_config(store, nullptr));
  EXPECT_EQ(nullptr, cfg_ugt_save_user_operation_to_config(nullptr, new_user().get()));
  EXPECT_EQ(nullptr, cfg_ugt_save_user_operation_to_config(store, nullptr));
  EXPECT_EQ(0, cfg_ugt_user_operation_get_disabled(nullptr));
  EXPECT_EQ(0, cfg_ugt_user_operation_set_disabled(nullptr, 1));
  EXPECT_EQ(0, cfg_ugt_user_operation_get_groups_count(nullptr));
  EXPECT_EQ(nullptr, cfg_ugt_user_operation_get_group(nullptr, 0));
  EXPECT_EQ(0, cfg_ugt_user_operation_add_group(nullptr, "x"));
  cfg_ugt_user_operation_clear_groups(nullptr);
  cfg_ugt_free_user_operation(nullptr);
}

TEST_F(GroupOperation, IsNewWithoutAnything) {
  const group_record group = new_group();
  ASSERT_NE(nullptr, group);
  EXPECT_EQ(nullptr, cfg_ugt_group_operation_get_groupname(group.get()));
  EXPECT_EQ(nullptr, cfg_ugt_group_operation_get_description(group.get()));
  EXPECT_EQ(0, cfg_ugt_group_operation_get_roles_count(group.get()));
  EXPECT_EQ("{roles=[]}", saved(group));
}

TEST_F(GroupOperation, IsSavedAndReadBack) {
  cfg_elem *map = cfg_ugt_save_group_operation_to_config(store, full_group().get());
  EXPECT_EQ(whole_group, dump(map));
  EXPECT_EQ(nullptr, cfg_get_parent_elem(store, map));
  const group_record group = group_from(map);
  ASSERT_NE(nullptr, group);
  EXPECT_STREQ("operators", cfg_ugt_group_operation_get_groupname(group.get()));
  EXPECT_STREQ("who operate", cfg_ugt_group_operation_get_description(group.get()));
  ASSERT_EQ(2, cfg_ugt_group_operation_get_roles_count(group.get()));
  EXPECT_STREQ("reader", cfg_ugt_group_operation_get_role(group.get(), 0));
  EXPECT_STREQ("writer", cfg_ugt_group_operation_get_role(group.get(), 1));
  EXPECT_EQ(nullptr, cfg_ugt_group_operation_get_role(group.get(), 2));
  EXPECT_EQ(nullptr, cfg_ugt_group_operation_get_role(group.get(), -1));
  EXPECT_EQ(whole_group, saved(group));
}

TEST_F(GroupOperation, IsReadWhateverTheMapHolds) {
  cfg_elem *map = map_at("group");
  EXPECT_EQ("{roles=[]}", saved(group_from(map)));
  for (const char *key : {"groupname", "description", "roles"}) set(map, key, 7);
  EXPECT_EQ("{roles=[]}", saved(group_from(map)));
}

TEST_F(GroupOperation, TextsAreReplacedAndCleared) {
  const group_record group = new_group();
  const struct {
    int (*set)(cfg_ugt_group_operation *, const char *);
    const char *(*get)(const cfg_ugt_group_operation *);
  } fields[] = {
      {cfg_ugt_group_operation_set_groupname, cfg_ugt_group_operation_get_groupname},
      {cfg_ugt_group_operation_set_description, cfg_ugt_group_operation_get_description},
  };
  for (const auto &field : fields) {
    EXPECT_EQ(1, field.set(group.get(), "first"));
    EXPECT_EQ(1, field.set(group.get(), "second"));
    EXPECT_STREQ("second", field.get(group.get()));
    EXPECT_EQ(1, field.set(group.get(), nullptr));
    EXPECT_EQ(nullptr, field.get(group.get()));
    EXPECT_EQ(0, field.set(nullptr, "x"));
    EXPECT_EQ(nullptr, field.get(nullptr));
  }
}

TEST_F(GroupOperation, RolesAreClearedAndItIsEmptyAfterItWasFreed) {
  const group_record group = full_group();
  cfg_ugt_group_operation_clear_roles(group.get());
  EXPECT_EQ(R"({description="who operate" groupname="operators" roles=[]})", saved(group));
  cfg_ugt_free_group_operation(group.get());
  EXPECT_EQ("{roles=[]}", saved(group));
}

TEST_F(GroupOperation, NullDoesNothing) {
  cfg_elem *map = map_at("group");
  EXPECT_EQ(nullptr, cfg_ugt_load_group_operation_from_config(nullptr, map));
  EXPECT_EQ(nullptr, cfg_ugt_load_group_operation_from_config(store, nullptr));
  EXPECT_EQ(nullptr, cfg_ugt_save_group_operation_to_config(nullptr, new_group().get()));
  EXPECT_EQ(nullptr, cfg_ugt_save_group_operation_to_config(store, nullptr));
  EXPECT_EQ(0, cfg_ugt_group_operation_get_roles_count(nullptr));
  EXPECT_EQ(nullptr, cfg_ugt_group_operation_get_role(nullptr, 0));
  EXPECT_EQ(0, cfg_ugt_group_operation_add_role(nullptr, "x"));
  EXPECT_EQ(0, cfg_ugt_group_operation_add_role(full_group().get(), nullptr));
  cfg_ugt_group_operation_clear_roles(nullptr);
  cfg_ugt_free_group_operation(nullptr);
}

}  // namespace
