#include "harness.hpp"

namespace test {

class TwctlTemplate : public twctl_test {
 protected:
  void SetUp() override { init(); }
};

TEST_F(TwctlTemplate, EveryKindIsCreatedAndShown) {
  for (const char *kind : {"ports", "network", "dummy"}) {
    json made =
        run_json({"template", "create", std::string("T-") + kind, "--kind", kind, "description=for tests"});
    json shown = run_json({"template", "show", made["id"].text()});
    EXPECT_EQ(shown.keys(), "id name kind description dummy_field");
    EXPECT_EQ(shown["name"].text(), std::string("T-") + kind);
    EXPECT_EQ(shown["kind"].text(), kind);
    EXPECT_EQ(shown["description"].text(), "for tests");
    EXPECT_TRUE(shown["dummy_field"].is_null());
  }
  EXPECT_EQ(run_json({"template", "list"})["templates"].size(), 3u);
}

TEST_F(TwctlTemplate, SetChangesOnlyWhatItNamesAndClearsWithAnEmptyValue) {
  run_json({"template", "create", "Trial", "--kind", "dummy", "description=a", "dummy_field=b"});
  run_json({"template", "set", "Trial", "name=Try", "description="});
  json shown = run_json({"template", "show", "Try"});
  EXPECT_EQ(shown["kind"].text(), "dummy");
  EXPECT_EQ(shown["dummy_field"].text(), "b");
  EXPECT_TRUE(shown["description"].is_null());
  EXPECT_EQ(run({"template", "show", "Trial"}).code, 3);
}

TEST_F(TwctlTemplate, WhatCannotBeIsRefusedAndChangesNothing) {
  run_json({"template", "create", "One", "--kind", "ports"});
  run_json({"template", "create", "Two", "--kind", "ports"});
  std::string before = everything();
  EXPECT_EQ(run({"template", "create", "One", "--kind", "ports"}).code, 4);
  EXPECT_EQ(run({"template", "set", "Two", "name=One"}).code, 4);
  EXPECT_EQ(run({"template", "set", "Two", "name="}).code, 5);
  EXPECT_EQ(run({"template", "set", "Two", "dummy_field=x"}).code, 5);
  EXPECT_EQ(run({"template", "set", "Two", "kind=dummy"}).code, 2);
  EXPECT_EQ(run({"template", "set", "Two", "description=a", "description=b"}).code, 2);
  EXPECT_EQ(run({"template", "create", "Three", "--kind", "scripts"}).code, 2);
  EXPECT_EQ(run({"template", "create", "Three", "--kind", "auth"}).code, 5) << "no mode";
  EXPECT_EQ(run({"template", "set", "Two", "timeout=5"}).code, 5) << "another kind's field";
  EXPECT_EQ(run({"template", "set", "Two", "--script", "-"}, "x").code, 5);
  EXPECT_EQ(run({"template", "set", "Two", "--clear-radius-password"}).code, 5);
  EXPECT_EQ(run({"template", "server", "list", "Two"}).code, 5);
  EXPECT_EQ(run({"template", "change", "list", "Two"}).code, 5);
  EXPECT_EQ(run({"template", "set", "Four", "description=x"}).code, 3);
  EXPECT_EQ(run({"template", "set", "Two", "description=x", "--dry-run"}).code, 0);
  EXPECT_EQ(run({"template", "delete", "Two", "--dry-run"}).code, 0);
  EXPECT_EQ(run({"template", "delete", "Two"}).code, 2);
  EXPECT_EQ(everything(), before);
}

TEST_F(TwctlTemplate, ADeletedTemplateIsGone) {
  run_json({"template", "create", "One", "--kind", "ports"});
  EXPECT_EQ(run({"template", "delete", "One", "--yes"}).code, 0);
  EXPECT_EQ(run_json({"template", "list"})["templates"].size(), 0u);
}

TEST_F(TwctlTemplate, AScriptIsReadFromAFileAndWrittenToOne) {
  const std::string script("#!/bin/sh\necho a\0b\n", 19);
  write_text(path("script"), script);
  run_json({"template", "create", "Upgrade", "--kind", "script", "--script", path("script"), "timeout=600"});
  json shown = run_json({"template", "show", "Upgrade"});
  EXPECT_EQ(shown.keys(), "id name kind description dummy_field size checksum timeout");
  EXPECT_EQ(shown["size"].number(), 19);
  EXPECT_EQ(shown["checksum"].text().size(), 40u);
  EXPECT_EQ(shown["timeout"].number(), 600);
  EXPECT_EQ(run({"template", "show", "Upgrade", "--script", path("copy")}).code, 0);
  EXPECT_EQ(read_text(path("copy")), script);
  EXPECT_EQ(run({"template", "show", "Upgrade", "--script", path("copy")}).code, 4) << "nothing is replaced";
  EXPECT_EQ(run({"template", "show", "Upgrade", "--script", "-"}).out, script);
  run({"template", "set", "Upgrade", "--script", "-", "timeout="}, "true\n");
  json changed = run_json({"template", "show", "Upgrade"});
  EXPECT_EQ(changed["size"].number(), 5);
  EXPECT_EQ(changed["checksum"].text(), "724ba28f4a9a1b472057ff99511ed393a45552e1");
  EXPECT_TRUE(changed["timeout"].is_null());
  EXPECT_EQ(run({"template", "create", "Empty", "--kind", "script", "--script", path("none")}).code, 3);
}

TEST_F(TwctlTemplate, AuthenticationSettingsAreCarriedWithTheirServers) {
  write_text(path("secret"), "hush\n");
  outcome made = run({"template", "create", "Logins", "--kind", "auth", "mode=radius",
                      "tacacs_service=raccess", "--radius-password-file", path("secret")});
  EXPECT_EQ(made.code, 0) << made.err;
  EXPECT_EQ((made.out + made.err).find("hush"), std::string::npos) << made.err;
  json shown = run_json({"template", "show", "Logins"});
  EXPECT_EQ(shown["mode"].text(), "radius");
  EXPECT_EQ(shown["tacacs_service"].text(), "raccess");
  EXPECT_TRUE(shown["radius_password_set"].is_true());
  EXPECT_TRUE(shown["ldap_bind_password_set"].is_false());
  run_json({"template", "server", "add", "Logins", "radius", "10.0.0.9", "port=1812"});
  run_json({"template", "server", "add", "Logins", "ldap", "ldap.example"});
  run_json({"template", "server", "set", "Logins", "ldap", "ldap.example", "port=636"});
  json servers = run_json({"template", "server", "list", "Logins"})["servers"];
  ASSERT_EQ(servers.size(), 2u);
  EXPECT_EQ(servers[0]["kind"].text(), "radius");
  EXPECT_EQ(servers[0]["port"].number(), 1812);
  EXPECT_EQ(servers[1]["port"].number(), 636);
  EXPECT_EQ(run_json({"auth", "server", "list"})["servers"].size(), 0u) << "not the appliance's";
  run_json({"template", "set", "Logins", "mode=ldap", "--clear-radius-password"});
  EXPECT_TRUE(run_json({"template", "show", "Logins"})["radius_password_set"].is_false());
  run_json({"template", "server", "delete", "Logins", "radius", "10.0.0.9", "--yes"});
  EXPECT_EQ(run_json({"template", "server", "list", "Logins"})["servers"].size(), 1u);
}

TEST_F(TwctlTemplate, AnOperationOnUsersListsItsUsers) {
  run_json({"template", "create", "Night", "--kind", "users_groups", "operation=user_add"});
  write_text(path("secret"), "hush\n");
  outcome added = run({"template", "change", "user", "Night", "ada", "description=Ada", "--group", "day",
                       "--group", "night", "--password-file", path("secret")});
  EXPECT_EQ(added.code, 0) << added.err;
  EXPECT_EQ((added.out + added.err).find("hush"), std::string::npos) << added.err;
  run_json({"template", "change", "user", "Night", "ben", "disabled=yes"});
  json changes = run_json({"template", "change", "list", "Night"})["changes"];
  ASSERT_EQ(changes.size(), 2u);
  EXPECT_EQ(changes[0].keys(), "type name description disabled password_set groups roles");
  EXPECT_EQ(changes[0]["type"].text(), "user");
  EXPECT_EQ(changes[0]["name"].text(), "ada");
  EXPECT_EQ(changes[0]["groups"].text(), "day;night");
  EXPECT_TRUE(changes[0]["password_set"].is_true());
  EXPECT_TRUE(changes[1]["disabled"].is_true());
  EXPECT_TRUE(changes[1]["password_set"].is_false());
  EXPECT_EQ(run({"template", "change", "group", "Night", "day"}).code, 5) << "an operation on users";
  EXPECT_EQ(run({"template", "change", "clear", "Night"}).code, 2);
  run_json({"template", "change", "clear", "Night", "--yes"});
  EXPECT_EQ(run_json({"template", "change", "list", "Night"})["changes"].size(), 0u);
}

TEST_F(TwctlTemplate, OperationsOnGroupsAndMembershipsListTheirs) {
  run_json({"template", "create", "Groups", "--kind", "users_groups", "operation=group_modify"});
  run_json(
      {"template", "change", "group", "Groups", "day", "description=By day", "--role", "a", "--role", "b"});
  json groups = run_json({"template", "change", "list", "Groups"})["changes"];
  ASSERT_EQ(groups.size(), 1u);
  EXPECT_EQ(groups[0]["type"].text(), "group");
  EXPECT_EQ(groups[0]["roles"].text(), "a;b");
  EXPECT_EQ(groups[0]["description"].text(), "By day");
  EXPECT_EQ(run({"template", "change", "membership", "Groups", "--user", "ada"}).code, 5);
  run_json(
      {"template", "create", "Leave", "--kind", "users_groups", "operation=membership", "add_membership=no"});
  run_json({"template", "change", "membership", "Leave", "--user", "ada", "--user", "ben", "--group", "day"});
  json members = run_json({"template", "change", "list", "Leave"})["changes"];
  ASSERT_EQ(members.size(), 3u);
  EXPECT_EQ(members[1]["name"].text(), "ben");
  EXPECT_EQ(members[1]["type"].text(), "member");
  EXPECT_EQ(members[2]["type"].text(), "group of members");
  json shown = run_json({"template", "show", "Leave"});
  EXPECT_EQ(shown.keys(), "id name kind description dummy_field operation add_membership");
  EXPECT_EQ(shown["operation"].text(), "membership");
  EXPECT_TRUE(shown["add_membership"].is_false());
  EXPECT_EQ(run({"template", "set", "Leave", "operation=forget"}).code, 5);
}

}  // namespace test
