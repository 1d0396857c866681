// What script and authentication templates carry.
#include <cstring>

#include "allocation/cases.hpp"

namespace allocation {
namespace {

constexpr auto kScript = &World::script_template;
constexpr auto kAuth = &World::auth_template;
constexpr char kText[] = "#!/bin/sh\necho a script that is no longer than it must be\n";

bool whole_script(const cfg_template *record) {
  EXPECT_EQ(cfg_script_template_get_size(record), 21);
  EXPECT_STREQ(static_cast<const char *>(cfg_script_template_get_script(record)), "the template's script");
  EXPECT_STREQ(cfg_script_template_get_checksum(record), "the template's checksum");
  EXPECT_EQ(cfg_script_template_get_timeout(record), 60);
  return true;
}

bool whole_auth(const cfg_template *record) {
  const cfg_auth *auth = cfg_template_get_auth(record);
  EXPECT_STREQ(cfg_auth_get_mode(auth), "the template's mode");
  EXPECT_STREQ(cfg_auth_get_radiusPassword(auth), "the template's password");
  EXPECT_EQ(cfg_auth_get_radiusAccountingServerCount(auth), 1);
  return true;
}

// Reads what a template in the store carries into a record that has nothing yet.
void load(int (*read)(cfg_template *, cfg_elem *), const char *id, bool (*whole)(const cfg_template *)) {
  cfg_elem *map = nullptr;
  cfg_template *fresh = nullptr;
  sweep([&](World &) { return read(fresh, map); },
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

// Loads a whole template by its ID.
void load_by_id(const char *id, bool (*whole)(const cfg_template *)) {
  sweep([=](World &w) { return cfg_template_get_by_id(w.store, id); },
        [=](World &, cfg_template *record) {
          const bool there = record && whole(record);
          if (record) free_whole(record);
          return there;
        });
}

void save_script() {
  cfg_elem *map = nullptr;
  sweep([&](World &w) { return cfg_script_template_save_to_config(w.script_template, map); },
        [&](World &w, int done) {
          if (done) {
            cfg_value value{};
            EXPECT_TRUE(cfg_elem_read(cfg_simple_get_mapelem(w.store, map, "script"), &value));
            EXPECT_EQ(std::string(value.data, value.length), kText);
            EXPECT_FALSE(cfg_map_has(map, "script_timeout"));
          }
          return done == 1;
        },
        [&](World &w) {
          map = cfg_get_by_id(w.store, kScriptTemplate);
          EXPECT_EQ(cfg_script_template_set_script(w.script_template, kText, sizeof kText - 1), 1);
          EXPECT_EQ(cfg_script_template_delete_timeout(w.script_template), 1);
        });
}

void save_auth() {
  cfg_elem *map = nullptr;
  sweep([&](World &w) { return cfg_auth_save_to_config(w.auth_template, map); },
        [&](World &w, int done) {
          if (done) {
            cfg_value value{};
            EXPECT_TRUE(cfg_elem_read(cfg_get_child_by_path(w.store, map, "ldap.bindPassword"), &value));
            EXPECT_STREQ(value.data, kNew);
          }
          return done == 1;
        },
        [&](World &w) {
          map = cfg_get_by_id(w.store, kAuthTemplate);
          EXPECT_EQ(cfg_auth_set_ldapBindPassword(cfg_template_get_auth(w.auth_template), kNew), 1);
        });
}

// A script that cannot be taken over leaves the former one.
void set_script() {
  sweep([](World &w) { return cfg_script_template_set_script(w.script_template, kText, sizeof kText - 1); },
        [](World &w, int done) {
          if (!done) {
            whole_script(w.script_template);
          } else {
            EXPECT_STREQ(static_cast<const char *>(cfg_script_template_get_script(w.script_template)), kText);
            EXPECT_EQ(std::strlen(cfg_script_template_get_checksum(w.script_template)), 40U);
          }
          return done == 1;
        });
}

const Case rows[] = {
    {"cfg_auth_load_from_config",
     [] {
       load(cfg_auth_load_from_config, kAuthTemplate, whole_auth);
       load_by_id(kAuthTemplate, whole_auth);
     }},
    {"cfg_auth_new_setup",
     [] {
       sweep([](World &w) { return cfg_auth_new_setup(w.auth_template); },
             [](World &w, int done) {
               if (done)
                 EXPECT_EQ(cfg_auth_get_mode(cfg_template_get_auth(w.auth_template)), nullptr);
               else
                 whole_auth(w.auth_template);
               return done == 1;
             });
     }},
    {"cfg_auth_save_to_config", save_auth},
    {"cfg_script_template_delete_timeout",
     [] { sweep([](World &w) { return cfg_script_template_delete_timeout(w.script_template); }, gives(1)); }},
    {"cfg_script_template_get_checksum",
     [] { text_getter(cfg_script_template_get_checksum, kScript, "the template's checksum"); }},
    {"cfg_script_template_get_script",
     [] {
       sweep([](World &w) { return cfg_script_template_get_script(w.script_template); },
             [](World &w, const void *script) { return script && whole_script(w.script_template); });
     }},
    {"cfg_script_template_get_size",
     [] { number_getter(cfg_script_template_get_size, kScript, int32_t{21}); }},
    {"cfg_script_template_get_timeout",
     [] { number_getter(cfg_script_template_get_timeout, kScript, int32_t{60}); }},
    {"cfg_script_template_load_from_config",
     [] {
       load(cfg_script_template_load_from_config, kScriptTemplate, whole_script);
       load_by_id(kScriptTemplate, whole_script);
     }},
    {"cfg_script_template_new_setup",
     [] {
       sweep([](World &w) { return cfg_script_template_new_setup(w.script_template); },
             [](World &w, int done) {
               EXPECT_EQ(cfg_script_template_get_script(w.script_template), nullptr);
               return done == 1;
             });
     }},
    {"cfg_script_template_save_to_config", save_script},
    {"cfg_script_template_set_checksum",
     [] { text_setter(cfg_script_template_set_checksum, cfg_script_template_get_checksum, kScript); }},
    {"cfg_script_template_set_script", set_script},
    {"cfg_script_template_set_size",
     [] { number_setter(cfg_script_template_set_size, cfg_script_template_get_size, kScript); }},
    {"cfg_script_template_set_timeout",
     [] { number_setter(cfg_script_template_set_timeout, cfg_script_template_get_timeout, kScript); }},
    {"cfg_template_get_auth",
     [] {
       sweep([](World &w) { return cfg_template_get_auth(w.*kAuth); },
             [](World &, const cfg_auth *auth) { return auth != nullptr; });
     }},
};

}  // namespace

const std::span<const Case> template_data_cases = rows;

}  // namespace allocation
