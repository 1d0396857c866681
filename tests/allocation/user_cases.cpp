#include <cstdlib>
#include <cstring>

#include "allocation/cases.hpp"

namespace allocation {
namespace {

constexpr auto kRecord = &World::user;

// A user who is loaded is loaded whole.
bool whole(cfg_user *user) {
  if (!user) return false;
  EXPECT_STREQ(cfg_user_get_username(user), "member");
  EXPECT_STREQ(cfg_user_get_description(user), "member's description");
  EXPECT_EQ(cfg_user_get_enabled(user), 1);
  EXPECT_EQ(cfg_user_get_groups_count(user), 2);
  EXPECT_STREQ(cfg_user_get_group(user), kUserGroup);
  EXPECT_STREQ(cfg_user_get_group(user), kAdminGroup);
  return true;
}

bool loaded(World &, cfg_user *user) {
  const bool there = whole(user);
  cfg_user_free(user);
  return there;
}

template <class Call>
void load(Call call) {
  sweep(call, loaded);
}

// Whether the store holds a hash for the user.
bool has_hash(World &w) {
  char *hash = nullptr;
  const bool there = cfg_map_get_string(w.store, cfg_get_by_id(w.store, cfg_user_get_uuid(w.user)),
                                        "hashed_password", &hash);
  if (there) EXPECT_EQ(std::strncmp(hash, "$5$", 3), 0);
  std::free(hash);
  return there;
}

void save(bool anew) {
  sweep([](World &w) { return cfg_user_save(w.user); },
        [=](World &w, int saved) {
          if (saved) {
            cfg_user *again = cfg_user_get_by_id(w.store, cfg_user_get_uuid(w.user));
            EXPECT_STREQ(cfg_user_get_username(again), anew ? kNew : "member");
            EXPECT_STREQ(cfg_user_get_description(again), kNew);
            EXPECT_EQ(cfg_user_get_groups_count(again), anew ? 1 : 3);
            EXPECT_EQ(cfg_user_get_enabled(again), 1);
            EXPECT_EQ(has_hash(w), !anew);
            cfg_user_free(again);
          }
          return saved == 1;
        },
        [=](World &w) {
          if (anew) {
            cfg_user_free(w.user);
            w.user = cfg_user_new(w.store, kNew);
          }
          ASSERT_EQ(cfg_user_set_description(w.user, kNew), 1);
          ASSERT_EQ(cfg_user_add_group(w.user, kNew), 1);
        });
}

// The call answers nothing; without memory the user has no hash afterwards.
void set_password() {
  sweep(
      [](World &w) {
        cfg_user_set_password(w.user, "clear");
        return 0;
      },
      [](World &w, int) {
        EXPECT_EQ(cfg_user_save(w.user), 1);
        return has_hash(w);
      });
}

void remove() {
  sweep([](World &w) { return cfg_user_delete(w.user); },
        [](World &w, int done) {
          EXPECT_EQ(cfg_get_by_id(w.store, kUser) == nullptr, done == 1);
          return done == 1;
        });
}

template <class Change>
void change(Change call, int32_t groups) {
  sweep(
      [=](World &w) {
        call(w.user);
        return 0;
      },
      [=](World &w, int) { return cfg_user_get_groups_count(w.user) == groups; });
}

template <class Call, class Verdict>
void with_list(Call call, Verdict succeeded) {
  cfg_user_list *list = nullptr;
  sweep([&](World &) { return call(list); },
        [&](World &w, auto result) {
          cfg_user_list_free(list);
          list = nullptr;
          return succeeded(w, result);
        },
        [&](World &w) { list = cfg_user_list_new(w.store); });
}

const Case rows[] = {
    {"cfg_user_add_group",
     [] {
       sweep([](World &w) { return cfg_user_add_group(w.user, kNew); },
             [](World &w, int done) {
               EXPECT_EQ(cfg_user_get_groups_count(w.user), done ? 3 : 2);
               return done == 1;
             });
     }},
    {"cfg_user_delete", remove},
    {"cfg_user_free",
     [] {
       sweep(
           [](World &w) {
             cfg_user_free(w.user);
             w.user = nullptr;
             return 1;
           },
           gives(1));
     }},
    {"cfg_user_free_groups", [] { change(cfg_user_free_groups, 0); }},
    {"cfg_user_get_by_id", [] { load([](World &w) { return cfg_user_get_by_id(w.store, kUser); }); }},
    {"cfg_user_get_by_username",
     [] { load([](World &w) { return cfg_user_get_by_username(w.store, "member"); }); }},
    {"cfg_user_get_description",
     [] { text_getter(cfg_user_get_description, kRecord, "member's description"); }},
    {"cfg_user_get_enabled", [] { number_getter(cfg_user_get_enabled, kRecord, 1); }},
    {"cfg_user_get_group",
     [] { sweep([](World &w) { return cfg_user_get_group(w.user); }, gives_text(kUserGroup)); }},
    {"cfg_user_get_groups_count", [] { number_getter(cfg_user_get_groups_count, kRecord, 2); }},
    {"cfg_user_get_no_password", [] { number_getter(cfg_user_get_no_password, kRecord, 0); }},
    {"cfg_user_get_username", [] { text_getter(cfg_user_get_username, kRecord, "member"); }},
    {"cfg_user_get_uuid",
     [] { sweep([](World &w) { return cfg_user_get_uuid(w.user); }, gives_text(kUser)); }},
    {"cfg_user_list_count", [] { with_list(cfg_user_list_count, gives(2)); }},
    {"cfg_user_list_free",
     [] {
       sweep(
           [](World &w) {
             cfg_user_list_free(cfg_user_list_new(w.store));
             return 1;
           },
           gives(1));
     }},
    {"cfg_user_list_get_user",
     [] { with_list([](const cfg_user_list *list) { return cfg_user_list_get_user(list, 0); }, loaded); }},
    {"cfg_user_list_new",
     [] {
       sweep([](World &w) { return cfg_user_list_new(w.store); },
             [](World &, cfg_user_list *list) {
               if (list) EXPECT_EQ(cfg_user_list_count(list), 2);
               cfg_user_list_free(list);
               return list != nullptr;
             });
     }},
    {"cfg_user_new",
     [] {
       sweep([](World &w) { return cfg_user_new(w.store, kNew); },
             [](World &, cfg_user *user) {
               const bool there = user != nullptr;
               if (there) EXPECT_STREQ(cfg_user_get_username(user), kNew);
               cfg_user_free(user);
               return there;
             });
     }},
    {"cfg_user_remove_group",
     [] { change([](cfg_user *user) { cfg_user_remove_group(user, kUserGroup); }, 1); }},
    {"cfg_user_save",
     [] {
       save(false);
       save(true);
     }},
    {"cfg_user_set_description",
     [] { text_setter(cfg_user_set_description, cfg_user_get_description, kRecord); }},
    {"cfg_user_set_enabled", [] { number_setter(cfg_user_set_enabled, cfg_user_get_enabled, kRecord); }},
    {"cfg_user_set_no_password",
     [] { number_setter(cfg_user_set_no_password, cfg_user_get_no_password, kRecord); }},
    {"cfg_user_set_password", set_password},
    {"cfg_user_set_username", [] { text_setter(cfg_user_set_username, cfg_user_get_username, kRecord); }},
};

}  // namespace

const std::span<const Case> user_cases = rows;

}  // namespace allocation
