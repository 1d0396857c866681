// What users-groups templates carry.
#include <cstdlib>

#include "allocation/cases.hpp"

namespace allocation {
namespace {

constexpr auto kUsers = &World::users_template;
constexpr auto kGroups = &World::groups_template;
constexpr auto kMembership = &World::membership_template;
constexpr auto kUserOperation = &World::user_operation;
constexpr auto kGroupOperation = &World::group_operation;

bool whole(const cfg_ugt_user_operation *user) {
  EXPECT_STREQ(cfg_ugt_user_operation_get_username(user), "the user's username");
  EXPECT_STREQ(cfg_ugt_user_operation_get_description(user), "the user's description");
  EXPECT_STREQ(cfg_ugt_user_operation_get_password(user), "the user's password");
  EXPECT_EQ(cfg_ugt_user_operation_get_disabled(user), 1);
  EXPECT_EQ(cfg_ugt_user_operation_get_groups_count(user), 2);
  EXPECT_STREQ(cfg_ugt_user_operation_get_group(user, 1), "the group again");
  return true;
}

bool whole(const cfg_ugt_group_operation *group) {
  EXPECT_STREQ(cfg_ugt_group_operation_get_groupname(group), "the group's groupname");
  EXPECT_STREQ(cfg_ugt_group_operation_get_description(group), "the group's description");
  EXPECT_EQ(cfg_ugt_group_operation_get_roles_count(group), 2);
  EXPECT_STREQ(cfg_ugt_group_operation_get_role(group, 1), "the role again");
  return true;
}

using allocation::free_whole;  // of templates
void free_whole(cfg_ugt_user_operation *user) {
  cfg_ugt_free_user_operation(user);
  std::free(user);
}
void free_whole(cfg_ugt_group_operation *group) {
  cfg_ugt_free_group_operation(group);
  std::free(group);
}

bool whole_users(const cfg_template *record) {
  EXPECT_EQ(cfg_ugt_get_operation(record), CFG_UGT_USER_ADD);
  EXPECT_EQ(cfg_ugt_get_user_operations_count(record), 1);
  return whole(cfg_ugt_get_user_operation(record, 0));
}
bool whole_groups(const cfg_template *record) {
  EXPECT_EQ(cfg_ugt_get_operation(record), CFG_UGT_GROUP_ADD);
  EXPECT_EQ(cfg_ugt_get_group_operations_count(record), 1);
  return whole(cfg_ugt_get_group_operation(record, 0));
}
bool whole_membership(const cfg_template *record) {
  EXPECT_EQ(cfg_ugt_get_operation(record), CFG_UGT_MEMBERSHIP);
  EXPECT_EQ(cfg_ugt_get_membership_users_count(record), 2);
  EXPECT_STREQ(cfg_ugt_get_membership_user(record, 1), "the user again");
  EXPECT_EQ(cfg_ugt_get_membership_groups_count(record), 2);
  EXPECT_STREQ(cfg_ugt_get_membership_group(record, 1), "the group again");
  EXPECT_EQ(cfg_ugt_get_add_membership(record), 1);
  return true;
}

// Reads a template in the store, by its ID and into a record that has nothing yet.
void load(const char *id, bool (*whole)(const cfg_template *)) {
  sweep([=](World &w) { return cfg_template_get_by_id(w.store, id); },
        [=](World &, cfg_template *record) {
          const bool there = record && whole(record);
          if (record) free_whole(record);
          return there;
        });
  cfg_elem *map = nullptr;
  cfg_template *fresh = nullptr;
  sweep([&](World &) { return cfg_ugt_load_from_config(fresh, map); },
        [&](World &, int done) {
          const bool there = done == 1 && whole(fresh);
          free_whole(fresh);
          return there;
        },
        [&](World &w) {
          map = cfg_get_by_id(w.store, id);
          fresh = cfg_template_new(w.store, kNew, CFG_TEMPLATE_DUMMY);
        });
}

template <class Operation>
void load(Operation *(*read)(cfg *, cfg_elem *), const char *id) {
  cfg_elem *map = nullptr;
  sweep([&](World &w) { return read(w.store, map); },
        [](World &, Operation *operation) {
          const bool there = operation && whole(operation);
          if (operation) free_whole(operation);
          return there;
        },
        [&](World &w) { map = cfg_get_by_id(w.store, id); });
}

void save(cfg_template *World::*record, const char *id, bool (*whole)(const cfg_template *)) {
  cfg_elem *map = nullptr;
  sweep([&](World &w) { return cfg_ugt_save_to_config(w.*record, map); },
        [&](World &w, int done) {
          if (done) {
            cfg_template *again = cfg_template_get_by_id(w.store, id);
            whole(again);
            free_whole(again);
          }
          return done == 1;
        },
        [&](World &w) { map = cfg_get_by_id(w.store, id); });
}

template <class Operation>
void save(cfg_elem *(*write)(cfg *, const Operation *), Operation *World::*record,
          Operation *(*read)(cfg *, cfg_elem *)) {
  sweep([=](World &w) { return write(w.store, w.*record); },
        [=](World &w, cfg_elem *map) {
          if (!map) return false;
          Operation *again = read(w.store, map);
          whole(again);
          free_whole(again);
          return true;
        });
}

template <class Operation>
void make(Operation *(*call)()) {
  sweep([=](World &) { return call(); },
        [](World &, Operation *made) {
          const bool there = made != nullptr;
          std::free(made);
          return there;
        });
}

// An operation that a template could not take is still the caller's.
template <class Operation>
void add(int (*call)(cfg_template *, Operation *), int32_t (*count)(const cfg_template *),
         cfg_template *World::*record, Operation *(*make)()) {
  Operation *made = nullptr;
  sweep([&](World &w) { return call(w.*record, made); },
        [&](World &w, int done) {
          EXPECT_EQ(count(w.*record), done ? 2 : 1);
          if (!done) free_whole(made);
          return done == 1;
        },
        [&](World &) { made = make(); });
}

template <class Record>
void add_name(int (*call)(Record *, const char *), int32_t (*count)(const Record *),
              const char *(*at)(const Record *, int32_t), Record *World::*record) {
  sweep([=](World &w) { return call(w.*record, kNew); },
        [=](World &w, int done) {
          EXPECT_EQ(count(w.*record), done ? 3 : 2);
          if (done) EXPECT_STREQ(at(w.*record, 2), kNew);
          return done == 1;
        });
}

template <class Record>
void empty(void (*call)(Record *), int32_t (*count)(const Record *), Record *World::*record) {
  sweep(
      [=](World &w) {
        call(w.*record);
        return 1;
      },
      [=](World &w, int) {
        EXPECT_EQ(count(w.*record), 0);
        return true;
      });
}

template <class Record, class Value>
void entry(Value (*at)(const Record *, int32_t), Record *World::*record) {
  sweep([=](World &w) { return at(w.*record, 0); }, [](World &, Value found) { return found != nullptr; });
}

const Case rows[] = {
    {"cfg_ugt_add_group_operation",
     [] {
       add(cfg_ugt_add_group_operation, cfg_ugt_get_group_operations_count, kGroups,
           cfg_ugt_new_group_operation);
     }},
    {"cfg_ugt_add_membership_group",
     [] {
       add_name(cfg_ugt_add_membership_group, cfg_ugt_get_membership_groups_count,
                cfg_ugt_get_membership_group, kMembership);
     }},
    {"cfg_ugt_add_membership_user",
     [] {
       add_name(cfg_ugt_add_membership_user, cfg_ugt_get_membership_users_count, cfg_ugt_get_membership_user,
                kMembership);
     }},
    {"cfg_ugt_add_user_operation",
     [] {
       add(cfg_ugt_add_user_operation, cfg_ugt_get_user_operations_count, kUsers, cfg_ugt_new_user_operation);
     }},
    {"cfg_ugt_clear_group_operations",
     [] { empty(cfg_ugt_clear_group_operations, cfg_ugt_get_group_operations_count, kGroups); }},
    {"cfg_ugt_clear_membership_groups",
     [] { empty(cfg_ugt_clear_membership_groups, cfg_ugt_get_membership_groups_count, kMembership); }},
    {"cfg_ugt_clear_membership_users",
     [] { empty(cfg_ugt_clear_membership_users, cfg_ugt_get_membership_users_count, kMembership); }},
    {"cfg_ugt_clear_user_operations",
     [] { empty(cfg_ugt_clear_user_operations, cfg_ugt_get_user_operations_count, kUsers); }},
    {"cfg_ugt_free_group_operation",
     [] { empty(cfg_ugt_free_group_operation, cfg_ugt_group_operation_get_roles_count, kGroupOperation); }},
    {"cfg_ugt_free_user_operation",
     [] { empty(cfg_ugt_free_user_operation, cfg_ugt_user_operation_get_groups_count, kUserOperation); }},
    {"cfg_ugt_get_add_membership",
     [] { number_getter(cfg_ugt_get_add_membership, kMembership, int32_t{1}); }},
    {"cfg_ugt_get_group_operation", [] { entry(cfg_ugt_get_group_operation, kGroups); }},
    {"cfg_ugt_get_group_operations_count",
     [] { number_getter(cfg_ugt_get_group_operations_count, kGroups, int32_t{1}); }},
    {"cfg_ugt_get_membership_group", [] { entry(cfg_ugt_get_membership_group, kMembership); }},
    {"cfg_ugt_get_membership_groups_count",
     [] { number_getter(cfg_ugt_get_membership_groups_count, kMembership, int32_t{2}); }},
    {"cfg_ugt_get_membership_user", [] { entry(cfg_ugt_get_membership_user, kMembership); }},
    {"cfg_ugt_get_membership_users_count",
     [] { number_getter(cfg_ugt_get_membership_users_count, kMembership, int32_t{2}); }},
    {"cfg_ugt_get_operation",
     [] { number_getter(cfg_ugt_get_operation, kGroups, int32_t{CFG_UGT_GROUP_ADD}); }},
    {"cfg_ugt_get_user_operation", [] { entry(cfg_ugt_get_user_operation, kUsers); }},
    {"cfg_ugt_get_user_operations_count",
     [] { number_getter(cfg_ugt_get_user_operations_count, kUsers, int32_t{1}); }},
    {"cfg_ugt_group_operation_add_role",
     [] {
       add_name(cfg_ugt_group_operation_add_role, cfg_ugt_group_operation_get_roles_count,
                cfg_ugt_group_operation_get_role, kGroupOperation);
     }},
    {"cfg_ugt_group_operation_clear_roles",
     [] {
       empty(cfg_ugt_group_operation_clear_roles, cfg_ugt_group_operation_get_roles_count, kGroupOperation);
     }},
    {"cfg_ugt_group_operation_get_description",
     [] {
       text_getter(cfg_ugt_group_operation_get_description, kGroupOperation, "the group's description");
     }},
    {"cfg_ugt_group_operation_get_groupname",
     [] { text_getter(cfg_ugt_group_operation_get_groupname, kGroupOperation, "the group's groupname"); }},
    {"cfg_ugt_group_operation_get_role", [] { entry(cfg_ugt_group_operation_get_role, kGroupOperation); }},
    {"cfg_ugt_group_operation_get_roles_count",
     [] { number_getter(cfg_ugt_group_operation_get_roles_count, kGroupOperation, int32_t{2}); }},
    {"cfg_ugt_group_operation_set_description",
     [] {
       text_setter(cfg_ugt_group_operation_set_description, cfg_ugt_group_operation_get_description,
                   kGroupOperation);
     }},
    {"cfg_ugt_group_operation_set_groupname",
     [] {
       text_setter(cfg_ugt_group_operation_set_groupname, cfg_ugt_group_operation_get_groupname,
                   kGroupOperation);
     }},
    {"cfg_ugt_load_from_config",
     [] {
       load(kUsersTemplate, whole_users);
       load(kGroupsTemplate, whole_groups);
       load(kMembershipTemplate, whole_membership);
     }},
    {"cfg_ugt_load_group_operation_from_config",
     [] { load(cfg_ugt_load_group_operation_from_config, "templates-3_ug_group_changes-1"); }},
    {"cfg_ugt_load_user_operation_from_config",
     [] { load(cfg_ugt_load_user_operation_from_config, "templates-2_ug_user_changes-1"); }},
    {"cfg_ugt_new_group_operation", [] { make(cfg_ugt_new_group_operation); }},
    {"cfg_ugt_new_setup",
     [] {
       sweep([](World &w) { return cfg_ugt_new_setup(w.users_template); },
             [](World &w, int done) {
               EXPECT_EQ(cfg_ugt_get_user_operations_count(w.users_template), 0);
               return done == 1;
             });
     }},
    {"cfg_ugt_new_user_operation", [] { make(cfg_ugt_new_user_operation); }},
    {"cfg_ugt_op_type_to_string",
     [] { sweep([](World &) { return cfg_ugt_op_type_to_string(9); }, gives_text("membership")); }},
    {"cfg_ugt_save_group_operation_to_config",
     [] {
       save(cfg_ugt_save_group_operation_to_config, kGroupOperation,
            cfg_ugt_load_group_operation_from_config);
     }},
    {"cfg_ugt_save_to_config",
     [] {
       save(kUsers, kUsersTemplate, whole_users);
       save(kGroups, kGroupsTemplate, whole_groups);
       save(kMembership, kMembershipTemplate, whole_membership);
     }},
    {"cfg_ugt_save_user_operation_to_config",
     [] {
       save(cfg_ugt_save_user_operation_to_config, kUserOperation, cfg_ugt_load_user_operation_from_config);
     }},
    {"cfg_ugt_set_add_membership",
     [] { number_setter(cfg_ugt_set_add_membership, cfg_ugt_get_add_membership, kMembership); }},
    {"cfg_ugt_set_operation", [] { number_setter(cfg_ugt_set_operation, cfg_ugt_get_operation, kUsers); }},
    {"cfg_ugt_string_to_op_type",
     [] { sweep([](World &) { return cfg_ugt_string_to_op_type("membership"); }, gives(int32_t{9})); }},
    {"cfg_ugt_user_operation_add_group",
     [] {
       add_name(cfg_ugt_user_operation_add_group, cfg_ugt_user_operation_get_groups_count,
                cfg_ugt_user_operation_get_group, kUserOperation);
     }},
    {"cfg_ugt_user_operation_clear_groups",
     [] {
       empty(cfg_ugt_user_operation_clear_groups, cfg_ugt_user_operation_get_groups_count, kUserOperation);
     }},
    {"cfg_ugt_user_operation_get_description",
     [] { text_getter(cfg_ugt_user_operation_get_description, kUserOperation, "the user's description"); }},
    {"cfg_ugt_user_operation_get_disabled",
     [] { number_getter(cfg_ugt_user_operation_get_disabled, kUserOperation, int32_t{1}); }},
    {"cfg_ugt_user_operation_get_group", [] { entry(cfg_ugt_user_operation_get_group, kUserOperation); }},
    {"cfg_ugt_user_operation_get_groups_count",
     [] { number_getter(cfg_ugt_user_operation_get_groups_count, kUserOperation, int32_t{2}); }},
    {"cfg_ugt_user_operation_get_password",
     [] { text_getter(cfg_ugt_user_operation_get_password, kUserOperation, "the user's password"); }},
    {"cfg_ugt_user_operation_get_username",
     [] { text_getter(cfg_ugt_user_operation_get_username, kUserOperation, "the user's username"); }},
    {"cfg_ugt_user_operation_set_description",
     [] {
       text_setter(cfg_ugt_user_operation_set_description, cfg_ugt_user_operation_get_description,
                   kUserOperation);
     }},
    {"cfg_ugt_user_operation_set_disabled",
     [] {
       number_setter(cfg_ugt_user_operation_set_disabled, cfg_ugt_user_operation_get_disabled,
                     kUserOperation);
     }},
    {"cfg_ugt_user_operation_set_password",
     [] {
       text_setter(cfg_ugt_user_operation_set_password, cfg_ugt_user_operation_get_password, kUserOperation);
     }},
    {"cfg_ugt_user_operation_set_username",
     [] {
       text_setter(cfg_ugt_user_operation_set_username, cfg_ugt_user_operation_get_username, kUserOperation);
     }},
};

}  // namespace

const std::span<const Case> users_groups_cases = rows;

}  // namespace allocation
