#include "allocation/cases.hpp"

namespace allocation {
namespace {

constexpr auto kRecord = &World::acl;

void save(bool anew) {
  sweep([](World &w) { return cfg_acl_save(w.acl); },
        [](World &w, int saved) {
          if (saved) {
            cfg_acl *again = cfg_acl_get_by_id(w.store, cfg_acl_get_uuid(w.acl));
            EXPECT_STREQ(cfg_acl_get_aclname(again), kNew);
            cfg_acl_free(again);
          }
          return saved == 1;
        },
        [=](World &w) {
          if (anew) {
            cfg_acl_free(w.acl);
            w.acl = cfg_acl_new(w.store, kNew);
          }
          ASSERT_EQ(cfg_acl_set_aclname(w.acl, kNew), 1);
        });
}

const Case rows[] = {
    {"cfg_acl_delete",
     [] {
       sweep(
           [](World &w) {
             cfg_acl_delete(w.acl);
             return 0;
           },
           [](World &w, int) { return cfg_get_by_id(w.store, kAcl) == nullptr; });
     }},
    {"cfg_acl_free",
     [] {
       sweep(
           [](World &w) {
             cfg_acl_free(w.acl);
             w.acl = nullptr;
             return 1;
           },
           gives(1));
     }},
    {"cfg_acl_get_aclname", [] { text_getter(cfg_acl_get_aclname, kRecord, "the list's name"); }},
    {"cfg_acl_get_by_id",
     [] {
       sweep([](World &w) { return cfg_acl_get_by_id(w.store, kAcl); },
             [](World &, cfg_acl *acl) {
               const bool there = acl != nullptr;
               if (there) EXPECT_STREQ(cfg_acl_get_aclname(acl), "the list's name");
               cfg_acl_free(acl);
               return there;
             });
     }},
    {"cfg_acl_get_uuid", [] { sweep([](World &w) { return cfg_acl_get_uuid(w.acl); }, gives_text(kAcl)); }},
    {"cfg_acl_new",
     [] {
       sweep([](World &w) { return cfg_acl_new(w.store, kNew); },
             [](World &, cfg_acl *acl) {
               cfg_acl_free(acl);
               return acl != nullptr;
             });
     }},
    {"cfg_acl_save",
     [] {
       save(false);
       save(true);
     }},
    {"cfg_acl_set_aclname", [] { text_setter(cfg_acl_set_aclname, cfg_acl_get_aclname, kRecord); }},
};

}  // namespace

const std::span<const Case> acl_cases = rows;

}  // namespace allocation
