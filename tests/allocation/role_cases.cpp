#include "allocation/cases.hpp"

namespace allocation {
namespace {

constexpr auto kRecord = &World::role;

bool loaded(World &, cfg_role *role) {
  const bool there = role != nullptr;
  if (there) EXPECT_STREQ(cfg_role_get_rolename(role), "FernhollowAdmin");
  cfg_role_free(role);
  return there;
}

void save(bool anew) {
  sweep([](World &w) { return cfg_role_save(w.role); },
        [](World &w, int saved) {
          if (saved) {
            cfg_role *again = cfg_role_get_by_id(w.store, cfg_role_get_uuid(w.role));
            EXPECT_STREQ(cfg_role_get_rolename(again), kNew);
            cfg_role_free(again);
          }
          return saved == 1;
        },
        [=](World &w) {
          if (!anew) {
            ASSERT_EQ(cfg_role_set_rolename(w.role, kNew), 1);
            return;
          }
          cfg_role_free(w.role);
          w.role = cfg_role_new(w.store, kNew);
        });
}

void remove() {
  sweep(
      [](World &w) {
        cfg_role_delete(w.role);
        return 0;
      },
      [](World &w, int) { return cfg_get_by_id(w.store, kRole) == nullptr; });
}

template <class Call, class Verdict>
void with_list(Call call, Verdict succeeded) {
  cfg_role_list *list = nullptr;
  sweep([&](World &) { return call(list); },
        [&](World &w, auto result) {
          cfg_role_list_free(list);
          list = nullptr;
          return succeeded(w, result);
        },
        [&](World &w) { list = cfg_role_list_new(w.store); });
}

const Case rows[] = {
    {"cfg_role_delete", remove},
    {"cfg_role_free",
     [] {
       sweep(
           [](World &w) {
             cfg_role_free(w.role);
             w.role = nullptr;
             return 1;
           },
           gives(1));
     }},
    {"cfg_role_get_by_id",
     [] { sweep([](World &w) { return cfg_role_get_by_id(w.store, kRole); }, loaded); }},
    {"cfg_role_get_by_rolename",
     [] { sweep([](World &w) { return cfg_role_get_by_rolename(w.store, "FernhollowAdmin"); }, loaded); }},
    {"cfg_role_get_rolename", [] { text_getter(cfg_role_get_rolename, kRecord, "FernhollowAdmin"); }},
    {"cfg_role_get_uuid",
     [] { sweep([](World &w) { return cfg_role_get_uuid(w.role); }, gives_text(kRole)); }},
    {"cfg_role_list_count", [] { with_list(cfg_role_list_count, gives(1)); }},
    {"cfg_role_list_free",
     [] {
       sweep(
           [](World &w) {
             cfg_role_list_free(cfg_role_list_new(w.store));
             return 1;
           },
           gives(1));
     }},
    {"cfg_role_list_get_role",
     [] { with_list([](const cfg_role_list *list) { return cfg_role_list_get_role(list, 0); }, loaded); }},
    {"cfg_role_list_new",
     [] {
       sweep([](World &w) { return cfg_role_list_new(w.store); },
             [](World &, cfg_role_list *list) {
               if (list) EXPECT_EQ(cfg_role_list_count(list), 1);
               cfg_role_list_free(list);
               return list != nullptr;
             });
     }},
    {"cfg_role_new",
     [] {
       sweep([](World &w) { return cfg_role_new(w.store, kNew); },
             [](World &, cfg_role *role) {
               const bool there = role != nullptr;
               if (there) EXPECT_STREQ(cfg_role_get_rolename(role), kNew);
               cfg_role_free(role);
               return there;
             });
     }},
    {"cfg_role_save",
     [] {
       save(false);
       save(true);
     }},
    {"cfg_role_set_rolename", [] { text_setter(cfg_role_set_rolename, cfg_role_get_rolename, kRecord); }},
};

}  // namespace

const std::span<const Case> role_cases = rows;

}  // namespace allocation
