#include "allocation/cases.hpp"

namespace allocation {
namespace {

constexpr auto kRecord = &World::auth;
constexpr auto kServer = &World::server;

bool whole(const cfg_auth_server *server) {
  if (!server) return false;
  EXPECT_STREQ(cfg_auth_get_server_hostname(server), "server.example");
  EXPECT_EQ(cfg_auth_get_server_port(server), 1812);
  return true;
}

bool whole(const cfg_auth *auth) {
  if (!auth) return false;
  EXPECT_STREQ(cfg_auth_get_mode(auth), "auth's mode");
  EXPECT_STREQ(cfg_auth_get_radiusPassword(auth), "radius' password");
  EXPECT_STREQ(cfg_auth_get_tacacsService(auth), "tacacs' service");
  EXPECT_STREQ(cfg_auth_get_ldapBindPassword(auth), "ldap's bindPassword");
  EXPECT_EQ(cfg_auth_get_radiusAuthenticationServerCount(auth), 1);
  EXPECT_EQ(cfg_auth_get_radiusAccountingServerCount(auth), 1);
  EXPECT_EQ(cfg_auth_get_tacacsAuthenticationServerCount(auth), 1);
  EXPECT_EQ(cfg_auth_get_ldapAuthenticationServerCount(auth), 1);
  return true;
}

void server(cfg_auth_server *(*get)(const cfg_auth *, int32_t)) {
  sweep([=](World &w) { return get(w.auth, 0); },
        [](World &, cfg_auth_server *found) {
          const bool there = whole(found);
          cfg_auth_server_free(found);
          return there;
        });
}

// With the maps of the store, or with "auth" gone.
void update(bool anew) {
  sweep([](World &w) { return cfg_auth_update(w.auth); },
        [](World &w, int done) {
          if (done) {
            cfg_auth *again = cfg_get_auth(w.store);
            EXPECT_STREQ(cfg_auth_get_mode(again), kNew);
            EXPECT_STREQ(cfg_auth_get_radiusPassword(again), kNew);
            EXPECT_STREQ(cfg_auth_get_ldapBindPassword(again), kNew);
            EXPECT_STREQ(cfg_auth_get_tacacsMethod(again), "tacacs' method");
            cfg_auth_free(again);
          }
          return done == 1;
        },
        [=](World &w) {
          if (anew) EXPECT_TRUE(cfg_map_delete_key(w.store, cfg_root(w.store), "auth"));
          EXPECT_EQ(cfg_auth_set_mode(w.auth, kNew), 1);
          EXPECT_EQ(cfg_auth_set_radiusPassword(w.auth, kNew), 1);
          EXPECT_EQ(cfg_auth_set_ldapBindPassword(w.auth, kNew), 1);
        });
}

void create(bool first) {
  cfg_elem *radius = nullptr;
  sweep([&](World &w) { return cfg_auth_create_server(w.auth, radius, "accountingServers", kNew, 49, 0); },
        [&](World &w, int done) {
          cfg_elem *list = cfg_simple_get_mapelem(w.store, radius, "accountingServers");
          int32_t committed = 0, pending = 0;
          cfg_list_size(list, &committed);
          cfg_list_future_size(list, &pending);
          EXPECT_EQ(committed, first ? 0 : 1);
          EXPECT_EQ(pending, done);
          return done == 1;
        },
        [&](World &w) {
          radius = cfg_get_by_path(w.store, "auth.radius");
          if (first) EXPECT_TRUE(cfg_map_delete_key(w.store, radius, "accountingServers"));
        });
}

void update_server(int omit_port) {
  sweep([=](World &w) { return cfg_auth_update_server(w.server, omit_port); },
        [=](World &w, int done) {
          if (done) {
            cfg_auth_server *again = cfg_auth_get_radiusAuthenticationServer(w.auth, 0);
            EXPECT_STREQ(cfg_auth_get_server_hostname(again), kNew);
            EXPECT_EQ(cfg_auth_get_server_port(again), omit_port ? 0 : 49);
            cfg_auth_server_free(again);
          }
          return done == 1;
        },
        [](World &w) {
          EXPECT_EQ(cfg_auth_set_server_hostname(w.server, kNew), 1);
          EXPECT_EQ(cfg_auth_set_server_port(w.server, 49), 1);
        });
}

void delete_server() {
  sweep([](World &w) { return cfg_auth_delete_server(w.server); },
        [](World &w, int done) {
          EXPECT_EQ(cfg_get_by_id(w.store, cfg_auth_get_server_uuid(w.server)) == nullptr, done == 1);
          return done == 1;
        });
}

const Case rows[] = {
    {"cfg_auth_create_server",
     [] {
       create(false);
       create(true);
     }},
    {"cfg_auth_delete_server", delete_server},
    {"cfg_auth_free",
     [] {
       sweep(
           [](World &w) {
             cfg_auth_free(w.auth);
             w.auth = nullptr;
             return 1;
           },
           gives(1));
     }},
    {"cfg_auth_get_ldapAuthenticationServer", [] { server(cfg_auth_get_ldapAuthenticationServer); }},
    {"cfg_auth_get_ldapAuthenticationServerCount",
     [] { number_getter(cfg_auth_get_ldapAuthenticationServerCount, kRecord, 1); }},
    {"cfg_auth_get_ldapBaseDN", [] { text_getter(cfg_auth_get_ldapBaseDN, kRecord, "ldap's baseDN"); }},
    {"cfg_auth_get_ldapBindDN", [] { text_getter(cfg_auth_get_ldapBindDN, kRecord, "ldap's bindDN"); }},
    {"cfg_auth_get_ldapBindPassword",
     [] { text_getter(cfg_auth_get_ldapBindPassword, kRecord, "ldap's bindPassword"); }},
    {"cfg_auth_get_ldapGroupMembershipAttribute",
     [] {
       text_getter(cfg_auth_get_ldapGroupMembershipAttribute, kRecord, "ldap's groupMembershipAttribute");
     }},
    {"cfg_auth_get_ldapUsernameAttribute",
     [] { text_getter(cfg_auth_get_ldapUsernameAttribute, kRecord, "ldap's usernameAttribute"); }},
    {"cfg_auth_get_mode", [] { text_getter(cfg_auth_get_mode, kRecord, "auth's mode"); }},
    {"cfg_auth_get_radiusAccountingServer", [] { server(cfg_auth_get_radiusAccountingServer); }},
    {"cfg_auth_get_radiusAccountingServerCount",
     [] { number_getter(cfg_auth_get_radiusAccountingServerCount, kRecord, 1); }},
    {"cfg_auth_get_radiusAuthenticationServer", [] { server(cfg_auth_get_radiusAuthenticationServer); }},
    {"cfg_auth_get_radiusAuthenticationServerCount",
     [] { number_getter(cfg_auth_get_radiusAuthenticationServerCount, kRecord, 1); }},
    {"cfg_auth_get_radiusPassword",
     [] { text_getter(cfg_auth_get_radiusPassword, kRecord, "radius' password"); }},
    {"cfg_auth_get_server_hostname",
     [] { text_getter(cfg_auth_get_server_hostname, kServer, "server.example"); }},
    {"cfg_auth_get_server_port", [] { number_getter(cfg_auth_get_server_port, kServer, 1812); }},
    {"cfg_auth_get_server_uuid",
     [] { text_getter(cfg_auth_get_server_uuid, kServer, "auth_radius_authenticationServers-1"); }},
    {"cfg_auth_get_tacacsAuthenticationServer", [] { server(cfg_auth_get_tacacsAuthenticationServer); }},
    {"cfg_auth_get_tacacsAuthenticationServerCount",
     [] { number_getter(cfg_auth_get_tacacsAuthenticationServerCount, kRecord, 1); }},
    {"cfg_auth_get_tacacsMethod", [] { text_getter(cfg_auth_get_tacacsMethod, kRecord, "tacacs' method"); }},
    {"cfg_auth_get_tacacsPassword",
     [] { text_getter(cfg_auth_get_tacacsPassword, kRecord, "tacacs' password"); }},
    {"cfg_auth_get_tacacsService",
     [] { text_getter(cfg_auth_get_tacacsService, kRecord, "tacacs' service"); }},
    {"cfg_auth_server_free",
     [] {
       sweep(
           [](World &w) {
             cfg_auth_server_free(w.server);
             w.server = nullptr;
             return 1;
           },
           gives(1));
     }},
    {"cfg_auth_set_ldapBaseDN",
     [] { text_setter(cfg_auth_set_ldapBaseDN, cfg_auth_get_ldapBaseDN, kRecord); }},
    {"cfg_auth_set_ldapBindDN",
     [] { text_setter(cfg_auth_set_ldapBindDN, cfg_auth_get_ldapBindDN, kRecord); }},
    {"cfg_auth_set_ldapBindPassword",
     [] { text_setter(cfg_auth_set_ldapBindPassword, cfg_auth_get_ldapBindPassword, kRecord); }},
    {"cfg_auth_set_ldapGroupMembershipAttribute",
     [] {
       text_setter(cfg_auth_set_ldapGroupMembershipAttribute, cfg_auth_get_ldapGroupMembershipAttribute,
                   kRecord);
     }},
    {"cfg_auth_set_ldapUsernameAttribute",
     [] { text_setter(cfg_auth_set_ldapUsernameAttribute, cfg_auth_get_ldapUsernameAttribute, kRecord); }},
    {"cfg_auth_set_mode", [] { text_setter(cfg_auth_set_mode, cfg_auth_get_mode, kRecord); }},
    {"cfg_auth_set_radiusPassword",
     [] { text_setter(cfg_auth_set_radiusPassword, cfg_auth_get_radiusPassword, kRecord); }},
    {"cfg_auth_set_server_hostname",
     [] { text_setter(cfg_auth_set_server_hostname, cfg_auth_get_server_hostname, kServer); }},
    {"cfg_auth_set_server_port",
     [] { number_setter(cfg_auth_set_server_port, cfg_auth_get_server_port, kServer); }},
    {"cfg_auth_set_tacacsMethod",
     [] { text_setter(cfg_auth_set_tacacsMethod, cfg_auth_get_tacacsMethod, kRecord); }},
    {"cfg_auth_set_tacacsPassword",
     [] { text_setter(cfg_auth_set_tacacsPassword, cfg_auth_get_tacacsPassword, kRecord); }},
    {"cfg_auth_set_tacacsService",
     [] { text_setter(cfg_auth_set_tacacsService, cfg_auth_get_tacacsService, kRecord); }},
    {"cfg_auth_update",
     [] {
       update(false);
       update(true);
     }},
    {"cfg_auth_update_server",
     [] {
       update_server(0);
       update_server(1);
     }},
    {"cfg_get_auth",
     [] {
       sweep([](World &w) { return cfg_get_auth(w.store); },
             [](World &, cfg_auth *auth) {
               const bool there = whole(auth);
               cfg_auth_free(auth);
               return there;
             });
     }},
};

}  // namespace

const std::span<const Case> auth_cases = rows;

}  // namespace allocation
