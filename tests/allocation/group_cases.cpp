#include <cstdlib>
#include <string>

#include "allocation/cases.hpp"

namespace allocation {
namespace {

constexpr auto kRecord = &World::user_group;

// How many members a record lists.
int32_t members(cfg_group *group) {
  cfg_group_member_list *list = cfg_group_member_list_new(group);
  const int32_t count = cfg_group_get_member_count(list);
  cfg_group_member_list_free(list);
  return count;
}

bool whole(cfg_group *group) {
  if (!group) return false;
  EXPECT_STREQ(cfg_group_get_groupname(group), "operators");
  EXPECT_STREQ(cfg_group_get_mode(group), "global");
  EXPECT_EQ(cfg_group_get_enabled(group), 1);
  EXPECT_EQ(members(group), 1);
  return true;
}

bool loaded(World &, cfg_group *group) {
  const bool there = whole(group);
  cfg_group_free(group);
  return there;
}

template <class Call>
void load(Call call) {
  sweep(call, loaded);
}

// A new text of the caller's.
void text(char *(*get)(const cfg_group *), const char *expected) {
  sweep([=](World &w) { return get(w.user_group); },
        [=](World &, char *copy) {
          const bool there = copy != nullptr;
          if (there) EXPECT_STREQ(copy, expected);
          std::free(copy);
          return there;
        });
}

// A new role name, so that the role is made too; an existing role is never made a second time.
void set_roles(int (*set)(cfg_group *, const char *), char *(*get)(const cfg_group *), const char *name) {
  sweep([=](World &w) { return set(w.user_group, name); },
        [=](World &w, int done) {
          if (done) {
            char *now = get(w.user_group);
            EXPECT_STREQ(now, name);
            std::free(now);
          }
          int32_t made = 0;
          EXPECT_TRUE(cfg_list_future_size(cfg_get_by_path(w.store, "roles"), &made));
          if (name != kNew) EXPECT_EQ(made, 0);
          return done == 1;
        });
}

int set_smart_group(cfg_group *group, const char *name) {
  return cfg_group_set_smart_group_roles(group, name, kSmartGroup);
}

void save(bool anew) {
  sweep([](World &w) { return cfg_group_save(w.user_group); },
        [=](World &w, int saved) {
          if (saved) {
            cfg_group *again = cfg_group_get_by_id(w.store, cfg_group_get_uuid(w.user_group));
            EXPECT_STREQ(cfg_group_get_groupname(again), kNew);
            EXPECT_EQ(members(again), anew ? 1 : 2);
            cfg_group_free(again);
          }
          return saved == 1;
        },
        [=](World &w) {
          if (anew) {
            cfg_group_free(w.user_group);
            w.user_group = cfg_group_new(w.store, kNew);
          }
          ASSERT_EQ(cfg_group_set_groupname(w.user_group, kNew), 1);
          ASSERT_NE(cfg_group_load_member(w.user_group, w.stranger, 1), nullptr);
        });
}

// With the administrators' cascade: either all of it, or the user is no member.
void add_member() {
  sweep([](World &w) { return cfg_group_add_member(w.user_group, w.stranger); },
        [](World &w, int done) {
          EXPECT_EQ(members(w.user_group), done ? 2 : 1);
          if (done) {
            cfg_group *admin = cfg_group_get_by_id(w.store, kAdminGroup);
            EXPECT_EQ(members(admin), 2);
            cfg_group_free(admin);
            cfg_user *again = cfg_user_get_by_id(w.store, kStranger);
            EXPECT_EQ(cfg_user_get_groups_count(again), 1);
            cfg_user_free(again);
          }
          return done == 1;
        });
}

void delete_description() {
  sweep([](World &w) { return cfg_group_set_description(w.user_group, nullptr); },
        [](World &w, int done) {
          const bool there = cfg_get_mapelem(cfg_get_by_id(w.store, kUserGroup), "description") != nullptr;
          EXPECT_EQ(there, done != 1);
          return done == 1;
        });
}

template <class Call, class Verdict>
void with_list(Call call, Verdict succeeded) {
  cfg_group_list *list = nullptr;
  sweep([&](World &) { return call(list); },
        [&](World &w, auto result) {
          cfg_group_list_free(list);
          list = nullptr;
          return succeeded(w, result);
        },
        [&](World &w) { list = cfg_group_list_new(w.store); });
}

template <class Call, class Verdict>
void with_members(Call call, Verdict succeeded) {
  cfg_group_member_list *list = nullptr;
  sweep([&](World &) { return call(list); },
        [&](World &w, auto result) {
          cfg_group_member_list_free(list);
          list = nullptr;
          return succeeded(w, result);
        },
        [&](World &w) { list = cfg_group_member_list_new(w.user_group); });
}

const Case rows[] = {
    {"cfg_group_add_member", add_member},
    {"cfg_group_delete",
     [] {
       sweep(
           [](World &w) {
             cfg_group_delete(w.user_group);
             return 0;
           },
           [](World &w, int) { return cfg_get_by_id(w.store, kUserGroup) == nullptr; });
     }},
    {"cfg_group_delete_member",
     [] {
       sweep([](World &w) { return cfg_group_delete_member(w.user_group, w.user); },
             [](World &w, int done) {
               EXPECT_EQ(members(w.user_group), done ? 0 : 1);
               return done == 1;
             });
     }},
    {"cfg_group_free",
     [] {
       sweep(
           [](World &w) {
             cfg_group_free(w.user_group);
             w.user_group = nullptr;
             return 1;
           },
           gives(1));
     }},
    {"cfg_group_get_by_groupname",
     [] { load([](World &w) { return cfg_group_get_by_groupname(w.store, "operators"); }); }},
    {"cfg_group_get_by_id", [] { load([](World &w) { return cfg_group_get_by_id(w.store, kUserGroup); }); }},
    {"cfg_group_get_description",
     [] { text_getter(cfg_group_get_description, kRecord, "operators' description"); }},
    {"cfg_group_get_enabled", [] { number_getter(cfg_group_get_enabled, kRecord, 1); }},
    {"cfg_group_get_global_roles", [] { text(cfg_group_get_global_roles, "FernhollowAdmin"); }},
    {"cfg_group_get_groupname", [] { text_getter(cfg_group_get_groupname, kRecord, "operators"); }},
    {"cfg_group_get_member_count", [] { with_members(cfg_group_get_member_count, gives(1)); }},
    {"cfg_group_get_mode", [] { text_getter(cfg_group_get_mode, kRecord, "global"); }},
    {"cfg_group_get_smart_group", [] { text(cfg_group_get_smart_group, kSmartGroup); }},
    {"cfg_group_get_smart_group_roles", [] { text(cfg_group_get_smart_group_roles, "FernhollowAdmin"); }},
    {"cfg_group_get_uuid",
     [] { sweep([](World &w) { return cfg_group_get_uuid(w.user_group); }, gives_text(kUserGroup)); }},
    {"cfg_group_list_count", [] { with_list(cfg_group_list_count, gives(2)); }},
    {"cfg_group_list_free",
     [] {
       sweep(
           [](World &w) {
             cfg_group_list_free(cfg_group_list_new(w.store));
             return 1;
           },
           gives(1));
     }},
    {"cfg_group_list_get_group",
     [] { with_list([](const cfg_group_list *list) { return cfg_group_list_get_group(list, 0); }, loaded); }},
    {"cfg_group_list_new",
     [] {
       sweep([](World &w) { return cfg_group_list_new(w.store); },
             [](World &, cfg_group_list *list) {
               if (list) EXPECT_EQ(cfg_group_list_count(list), 2);
               cfg_group_list_free(list);
               return list != nullptr;
             });
     }},
    {"cfg_group_load_member",
     [] {
       sweep([](World &w) { return cfg_group_load_member(w.user_group, w.stranger, 1); },
             [](World &w, cfg_group_member *link) {
               EXPECT_EQ(members(w.user_group), link ? 2 : 1);
               return link != nullptr;
             });
     }},
    {"cfg_group_member_list_free",
     [] {
       sweep(
           [](World &w) {
             cfg_group_member_list_free(cfg_group_member_list_new(w.user_group));
             return 1;
           },
           gives(1));
     }},
    {"cfg_group_member_list_get_user",
     [] {
       with_members([](const cfg_group_member_list *list) { return cfg_group_member_list_get_user(list, 0); },
                    [](World &, cfg_user *user) {
                      const bool there = user != nullptr;
                      if (there) EXPECT_STREQ(cfg_user_get_username(user), "member");
                      cfg_user_free(user);
                      return there;
                    });
     }},
    {"cfg_group_member_list_new",
     [] {
       sweep([](World &w) { return cfg_group_member_list_new(w.user_group); },
             [](World &, cfg_group_member_list *list) {
               if (list) EXPECT_EQ(cfg_group_get_member_count(list), 1);
               cfg_group_member_list_free(list);
               return list != nullptr;
             });
     }},
    {"cfg_group_new",
     [] {
       sweep([](World &w) { return cfg_group_new(w.store, kNew); },
             [](World &, cfg_group *group) {
               const bool there = group != nullptr;
               if (there) EXPECT_STREQ(cfg_group_get_groupname(group), kNew);
               cfg_group_free(group);
               return there;
             });
     }},
    {"cfg_group_save",
     [] {
       save(false);
       save(true);
     }},
    {"cfg_group_set_description",
     [] {
       text_setter(cfg_group_set_description, cfg_group_get_description, kRecord);
       delete_description();
     }},
    {"cfg_group_set_enabled", [] { number_setter(cfg_group_set_enabled, cfg_group_get_enabled, kRecord); }},
    {"cfg_group_set_global_roles",
     [] {
       set_roles(cfg_group_set_global_roles, cfg_group_get_global_roles, kNew);
       set_roles(cfg_group_set_global_roles, cfg_group_get_global_roles, "FernhollowAdmin");
     }},
    {"cfg_group_set_groupname",
     [] { text_setter(cfg_group_set_groupname, cfg_group_get_groupname, kRecord); }},
    {"cfg_group_set_mode", [] { text_setter(cfg_group_set_mode, cfg_group_get_mode, kRecord); }},
    {"cfg_group_set_smart_group_roles",
     [] {
       set_roles(set_smart_group, cfg_group_get_smart_group_roles, kNew);
       set_roles(set_smart_group, cfg_group_get_smart_group_roles, "FernhollowAdmin");
     }},
};

}  // namespace

const std::span<const Case> group_cases = rows;

}  // namespace allocation
