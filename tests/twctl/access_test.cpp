// Users, groups, roles and access-control lists.
#include <twobject.h>

#include "harness.hpp"

namespace test {

class TwctlAccess : public twctl_test {
 protected:
  void SetUp() override { init(); }

  std::string groups_of(const std::string &user) {
    json shown = run_json({"user", "show", user});
    return shown["groups"].is_null() ? "" : shown["groups"].text();
  }
  std::string members_of(const std::string &group) {
    json shown = run_json({"group", "show", group});
    return shown["members"].is_null() ? "" : shown["members"].text();
  }
  /// The stored hash of a user's password; "" without one.
  std::string hash_of(const std::string &user) {
    open_store store = open_for_reading(store_path());
    std::string id = run_json({"user", "show", user})["id"].text();
    char *hash = nullptr;
    cfg_map_get_string(store.get(), cfg_get_by_id(store.get(), id.c_str()), "hashed_password", &hash);
    std::string text = hash ? hash : "";
    free(hash);
    return text;
  }
};

TEST_F(TwctlAccess, AUserIsAddedShownAndListed) {
  json added = run_json({"user", "add", "ada", "description=Ada, night shift", "enabled=no"});
  EXPECT_EQ(added.keys(), "id name dry_run revision change_count");
  json shown = run_json({"user", "show", "ada"});
  EXPECT_EQ(shown.keys(), "id name description enabled no_password groups");
  EXPECT_EQ(shown["id"].text(), added["id"].text());
  EXPECT_EQ(shown["description"].text(), "Ada, night shift");
  EXPECT_TRUE(shown["enabled"].is_false());
  EXPECT_TRUE(shown["groups"].is_null());
  run_json({"user", "set", added["id"].text(), "enabled=yes", "no_password=yes"});
  json list = run_json({"user", "list"})["users"];
  ASSERT_EQ(list.size(), 1u);
  EXPECT_EQ(list[0].keys(), "id name enabled no_password groups description");
  EXPECT_TRUE(list[0]["enabled"].is_true());
  EXPECT_TRUE(list[0]["no_password"].is_true());
}

TEST_F(TwctlAccess, APasswordIsHashedAndNeverShown) {
  write_text(path("secret"), "night-and-day\n");
  outcome added = run({"user", "add", "ada", "--password-file", path("secret")});
  EXPECT_EQ(added.code, 0) << added.err;
  EXPECT_NE(added.err.find("hashed_password: (hidden)"), std::string::npos) << added.err;
  std::string first = hash_of("ada");
  EXPECT_EQ(first.substr(0, 3), "$5$");
  outcome changed = run({"user", "set", "ada", "--password-file", "-"}, "another-one\n");
  EXPECT_EQ(changed.code, 0) << changed.err;
  EXPECT_NE(hash_of("ada"), first);
  for (const std::string &text : {added.out, added.err, changed.out, changed.err, everything()}) {
    EXPECT_EQ(text.find("night-and-day"), std::string::npos);
    EXPECT_EQ(text.find("another-one"), std::string::npos);
  }
  run_json({"user", "set", "ada", "--clear-password"});
  EXPECT_EQ(hash_of("ada"), "");
}

TEST_F(TwctlAccess, APasswordOnTheCommandLineIsRefused) {
  run_json({"user", "add", "ada"});
  for (const char *argument : {"password=x", "hashed_password=x"})
    EXPECT_EQ(run({"user", "set", "ada", argument}).code, 2) << argument;
  EXPECT_EQ(run({"user", "set", "ada", "--password-file", path("no-such-file")}).code, 3);
  EXPECT_EQ(run({"user", "set", "ada", "--password-file", "-"}, "\n").code, 5);
  EXPECT_EQ(run({"user", "set", "ada", "--clear-password", "--password-file", "-"}, "x\n").code, 2);
  EXPECT_EQ(hash_of("ada"), "");
}

TEST_F(TwctlAccess, MembershipIsKeptOnBothSides) {
  run_json({"group", "add", "day"});
  run_json({"group", "add", "night"});
  run_json({"user", "add", "ada", "--group", "day", "--group", "night"});
  run_json({"user", "add", "ben"});
  EXPECT_EQ(groups_of("ada"), "day;night");
  EXPECT_EQ(members_of("day"), "ada");
  run_json({"group", "set", "day", "--member", "ben", "--remove-member", "ada"});
  EXPECT_EQ(members_of("day"), "ben");
  EXPECT_EQ(groups_of("ada"), "night");
  EXPECT_EQ(groups_of("ben"), "day");
  run_json({"user", "set", "ben", "--group", "night", "--remove-group", "day"});
  EXPECT_EQ(members_of("day"), "");
  EXPECT_EQ(members_of("night"), "ada;ben");
  EXPECT_EQ(run({"group", "set", "day", "--remove-member", "ada"}).code, 3);
  EXPECT_EQ(run({"user", "set", "ben", "--group", "nobody"}).code, 3);
}

TEST_F(TwctlAccess, ANewGroupTakesItsMembersInOneCommit) {
  run_json({"user", "add", "ada"});
  run_json({"user", "add", "ben"});
  json added = run_json({"group", "add", "day", "--member", "ada", "--member", "ben"});
  EXPECT_EQ(added["revision"].number(), 4);
  EXPECT_EQ(run_json({"group", "list"})["groups"][0]["member_count"].number(), 2);
  EXPECT_EQ(groups_of("ada"), "day");
  EXPECT_EQ(groups_of("ben"), "day");
}

TEST_F(TwctlAccess, MembersOfAGroupOfAdministratorsAreAdministrators) {
  run_json({"group", "add", "admin"});
  run_json({"group", "add", "chiefs", "mode=global", "role=FernhollowAdmin"});
  run_json({"user", "add", "ada", "--group", "chiefs"});
  EXPECT_EQ(members_of("admin"), "ada");
  EXPECT_EQ(groups_of("ada"), "chiefs;admin");
}

TEST_F(TwctlAccess, WhoIsDeletedIsNotListedAnywhereAnyMore) {
  run_json({"group", "add", "day"});
  run_json({"group", "add", "night"});
  run_json({"user", "add", "ada", "--group", "day", "--group", "night"});
  run_json({"user", "add", "ben", "--group", "night"});
  EXPECT_EQ(run({"user", "delete", "ada"}).code, 2);
  run_json({"user", "delete", "ada", "--yes"});
  EXPECT_EQ(run_json({"group", "show", "day"})["member_count"].number(), 0);
  EXPECT_EQ(members_of("night"), "ben");
  run_json({"group", "delete", "night", "--yes"});
  EXPECT_EQ(groups_of("ben"), "");
  EXPECT_EQ(run({"group", "show", "night"}).code, 3);
}

TEST_F(TwctlAccess, RootIsNeverDeleted) {
  run_json({"user", "add", "root"});
  run_json({"group", "add", "day", "--member", "root"});
  std::string before = everything();
  EXPECT_EQ(run({"user", "delete", "root", "--yes"}).code, 5);
  EXPECT_EQ(everything(), before);
}

TEST_F(TwctlAccess, AGroupsRoleGoesAlongWithItsMode) {
  change_store(store_path(), [](cfg *store) {
    cfg_smartgroup *one = cfg_smartgroup_new(store, "nodes", "Berlin", "{}");
    EXPECT_EQ(cfg_smartgroup_save(one), 1);
    cfg_smartgroup_free(one);
  });
  run_json({"group", "add", "day", "mode=global", "role=NodeUser", "description=By day"});
  json shown = run_json({"group", "show", "day"});
  EXPECT_EQ(shown.keys(), "id name description enabled mode role smart_group members member_count");
  EXPECT_EQ(shown["role"].text(), "NodeUser");
  EXPECT_TRUE(shown["smart_group"].is_null());
  EXPECT_EQ(run_json({"role", "list"})["roles"].size(), 1u);
  run_json({"group", "set", "day", "mode=smart_group", "smart_group=Berlin", "description="});
  json limited = run_json({"group", "show", "day"});
  EXPECT_EQ(limited["mode"].text(), "smart_group");
  EXPECT_EQ(limited["role"].text(), "NodeUser");
  EXPECT_EQ(limited["smart_group"].text(), "Berlin");
  EXPECT_TRUE(limited["description"].is_null());
  run_json({"group", "set", "day", "role=NodeAdmin"});
  EXPECT_EQ(run_json({"group", "list"})["groups"][0]["role"].text(), "NodeAdmin");
  run_json({"group", "set", "day", "mode=global", "name=dusk"});
  json wide = run_json({"group", "show", "dusk"});
  EXPECT_EQ(wide["role"].text(), "NodeAdmin");
  EXPECT_TRUE(wide["smart_group"].is_null());
}

TEST_F(TwctlAccess, WhatAGroupCannotBeIsRefused) {
  run_json({"group", "add", "day", "mode=global"});
  run_json({"group", "add", "night"});
  std::string before = everything();
  EXPECT_EQ(run({"group", "add", "day"}).code, 4);
  EXPECT_EQ(run({"group", "set", "night", "name=day"}).code, 4);
  EXPECT_EQ(run({"group", "set", "night", "mode=Global"}).code, 5);
  EXPECT_EQ(run({"group", "set", "night", "role=NodeUser"}).code, 5) << "no mode";
  EXPECT_EQ(run({"group", "set", "day", "mode=smart_group", "role=NodeUser"}).code, 5) << "no smart group";
  EXPECT_EQ(run({"group", "set", "day", "mode=smart_group", "role=NodeUser", "smart_group=none"}).code, 3);
  EXPECT_EQ(run({"group", "add", "new", "--member", "nobody"}).code, 3);
  EXPECT_EQ(run({"group", "set", "day"}).code, 2);
  EXPECT_EQ(run({"group", "delete", "day"}).code, 2);
  EXPECT_EQ(everything(), before);
}

TEST_F(TwctlAccess, WhatAUserCannotBeIsRefused) {
  run_json({"user", "add", "ada"});
  std::string before = everything();
  EXPECT_EQ(run({"user", "add", "ada"}).code, 4);
  EXPECT_EQ(run({"user", "add", ""}).code, 5);
  EXPECT_EQ(run({"user", "set", "ada", "name=eve"}).code, 2);
  EXPECT_EQ(run({"user", "set", "ada", "enabled=perhaps"}).code, 5);
  EXPECT_EQ(run({"user", "set", "ada", "description="}).code, 5);
  EXPECT_EQ(run({"user", "set", "ada"}).code, 2);
  EXPECT_EQ(run({"user", "set", "eve", "enabled=no"}).code, 3);
  EXPECT_EQ(run({"user", "set", "ada", "enabled=no", "--dry-run"}).code, 0);
  EXPECT_EQ(run({"user", "delete", "ada", "--dry-run"}).code, 0);
  EXPECT_EQ(everything(), before);
}

TEST_F(TwctlAccess, RolesAndAccessControlListsAreAddedRenamedAndDeleted) {
  const std::pair<const char *, const char *> nouns[] = {{"role", "roles"}, {"acl", "acls"}};
  for (const auto &[noun, list] : nouns) {
    std::string id = run_json({noun, "add", "One"})["id"].text();
    run_json({noun, "add", "Two"});
    EXPECT_EQ(run_json({noun, "list"})[list][0].keys(), "id name");
    run_json({noun, "rename", "One", "First"});
    EXPECT_EQ(run_json({noun, "list"})[list][0]["name"].text(), "First");
    std::string before = everything();
    EXPECT_EQ(run({noun, "add", "Two"}).code, 4) << noun;
    EXPECT_EQ(run({noun, "rename", "First", "Two"}).code, 4) << noun;
    EXPECT_EQ(run({noun, "add", ""}).code, 5) << noun;
    EXPECT_EQ(run({noun, "delete", "Third", "--yes"}).code, 3) << noun;
    EXPECT_EQ(run({noun, "delete", "Two"}).code, 2) << noun;
    EXPECT_EQ(run({noun, "rename", "Two", "Third", "--dry-run"}).code, 0) << noun;
    EXPECT_EQ(everything(), before) << noun;
    run_json({noun, "delete", id, "--yes"});
    EXPECT_EQ(run_json({noun, "list"})[list].size(), 1u) << noun;
  }
}

TEST_F(TwctlAccess, ARoleThatAGroupHasIsNotDeleted) {
  run_json({"group", "add", "day", "mode=global", "role=NodeUser"});
  outcome refused = run({"role", "delete", "NodeUser", "--yes"});
  EXPECT_EQ(refused.code, 4);
  EXPECT_NE(refused.err.find("the group 'day'"), std::string::npos) << refused.err;
  run_json({"group", "set", "day", "role=NodeAdmin"});
  run_json({"role", "delete", "NodeUser", "--yes"});
}

}  // namespace test
