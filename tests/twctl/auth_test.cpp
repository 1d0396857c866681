#include <twobject.h>

#include "harness.hpp"

namespace test {

class TwctlAuth : public twctl_test {
 protected:
  void SetUp() override { init(); }
};

TEST_F(TwctlAuth, EveryFieldIsSetAndReadBack) {
  const std::pair<const char *, const char *> fields[] = {{"mode", "ldap"},
                                                          {"tacacs_method", "pap"},
                                                          {"tacacs_service", "raccess"},
                                                          {"ldap_base_dn", "dc=lab,dc=example"},
                                                          {"ldap_bind_dn", "cn=reader,dc=example"},
                                                          {"ldap_username_attribute", "uid"},
                                                          {"ldap_group_attribute", "memberOf"}};
  arguments set{"auth", "set"};
  for (const auto &[name, value] : fields) set.push_back(std::string(name) + "=" + value);
  EXPECT_EQ(run_json(set).keys(), "dry_run revision change_count");
  json shown = run_json({"auth", "show"});
  EXPECT_EQ(shown.keys(),
            "mode radius_password_set tacacs_password_set tacacs_method tacacs_service ldap_base_dn "
            "ldap_bind_dn ldap_bind_password_set ldap_username_attribute ldap_group_attribute");
  for (const auto &[name, value] : fields) EXPECT_EQ(shown[name].text(), value) << name;
  run_json({"auth", "set", "tacacs_service="});
  EXPECT_TRUE(run_json({"auth", "show"})["tacacs_service"].is_null());
}

TEST_F(TwctlAuth, SecretsComeFromFilesAndAreNeverShown) {
  const std::pair<const char *, const char *> secrets[] = {{"radius-password", "radius_password_set"},
                                                           {"tacacs-password", "tacacs_password_set"},
                                                           {"ldap-bind-password", "ldap_bind_password_set"}};
  for (const auto &[option, field] : secrets) {
    EXPECT_TRUE(run_json({"auth", "show"})[field].is_false());
    write_text(path("secret"), std::string("hush-") + option + "\n");
    outcome set = run({"auth", "set", std::string("--") + option + "-file", path("secret")});
    EXPECT_EQ(set.code, 0) << set.err;
    EXPECT_NE(set.err.find("(hidden)"), std::string::npos) << set.err;
    EXPECT_EQ((set.out + set.err).find("hush-"), std::string::npos) << set.err;
    json shown = run_json({"auth", "show"});
    EXPECT_TRUE(shown[field].is_true()) << option;
  }
  open_store store = open_for_reading(store_path());
  cfg_auth *auth = cfg_get_auth(store.get());
  EXPECT_STREQ(cfg_auth_get_radiusPassword(auth), "hush-radius-password");
  EXPECT_STREQ(cfg_auth_get_tacacsPassword(auth), "hush-tacacs-password");
  EXPECT_STREQ(cfg_auth_get_ldapBindPassword(auth), "hush-ldap-bind-password");
  cfg_auth_free(auth);
  EXPECT_EQ(run({"auth", "show"}).out.find("hush-"), std::string::npos);
  run_json({"auth", "set", "--clear-tacacs-password"});
  EXPECT_TRUE(run_json({"auth", "show"})["tacacs_password_set"].is_false());
  EXPECT_TRUE(run_json({"auth", "show"})["radius_password_set"].is_true());
}

TEST_F(TwctlAuth, ServersOfEachKindAreAddedChangedAndDeleted) {
  const char *const kinds[] = {"radius", "radius-accounting", "tacacs", "ldap"};
  for (const char *kind : kinds) run_json({"auth", "server", "add", kind, std::string(kind) + ".example"});
  json servers = run_json({"auth", "server", "list"})["servers"];
  ASSERT_EQ(servers.size(), 4u);
  EXPECT_EQ(servers[0].keys(), "id kind hostname port");
  for (int i = 0; i < 4; i++) {
    EXPECT_EQ(servers[i]["kind"].text(), kinds[i]);
    EXPECT_EQ(servers[i]["hostname"].text(), std::string(kinds[i]) + ".example");
    EXPECT_TRUE(servers[i]["port"].is_null());
  }
  run_json({"auth", "server", "add", "ldap", "10.0.0.9", "port=636"});
  run_json({"auth", "server", "set", "ldap", "10.0.0.9", "hostname=10.0.0.8"});
  json ldap = run_json({"auth", "server", "list", "--kind", "ldap"})["servers"];
  ASSERT_EQ(ldap.size(), 2u);
  EXPECT_EQ(ldap[1]["hostname"].text(), "10.0.0.8");
  EXPECT_EQ(ldap[1]["port"].number(), 636);
  run_json({"auth", "server", "set", "ldap", ldap[1]["id"].text(), "port="});
  EXPECT_TRUE(run_json({"auth", "server", "list", "--kind", "ldap"})["servers"][1]["port"].is_null());
  EXPECT_EQ(run({"auth", "server", "delete", "ldap", "10.0.0.8"}).code, 2);
  run_json({"auth", "server", "delete", "ldap", "10.0.0.8", "--yes"});
  EXPECT_EQ(run_json({"auth", "server", "list"})["servers"].size(), 4u);
}

TEST_F(TwctlAuth, WhatCannotBeIsRefusedAndChangesNothing) {
  run_json({"auth", "server", "add", "ldap", "a.example"});
  run_json({"auth", "server", "add", "ldap", "b.example"});
  std::string before = everything();
  EXPECT_EQ(run({"auth", "server", "add", "ldap", "a.example"}).code, 4);
  EXPECT_EQ(run({"auth", "server", "set", "ldap", "b.example", "hostname=a.example"}).code, 4);
  EXPECT_EQ(run({"auth", "server", "set", "ldap", "b.example", "hostname="}).code, 5);
  EXPECT_EQ(run({"auth", "server", "set", "ldap", "b.example", "port=0"}).code, 5);
  EXPECT_EQ(run({"auth", "server", "add", "ldap", "not a host"}).code, 5);
  EXPECT_EQ(run({"auth", "server", "add", "kerberos", "a.example"}).code, 2);
  EXPECT_EQ(run({"auth", "server", "delete", "radius", "a.example", "--yes"}).code, 3);
  EXPECT_EQ(run({"auth", "set"}).code, 2);
  EXPECT_EQ(run({"auth", "set", "radius_password=x"}).code, 2);
  EXPECT_EQ(run({"auth", "set", "mode=radius", "--dry-run"}).code, 0);
  EXPECT_EQ(run({"auth", "server", "add", "ldap", "c.example", "--dry-run"}).code, 0);
  EXPECT_EQ(run({"auth", "server", "delete", "ldap", "a.example", "--dry-run"}).code, 0);
  EXPECT_EQ(everything(), before);
}

}  // namespace test
