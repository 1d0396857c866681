#include "harness.hpp"

namespace test {

class TwctlNtp : public twctl_test {
 protected:
  void SetUp() override { init(); }
  std::string servers() {
    json list = run_json({"ntp", "server", "list"})["servers"];
    std::string texts;
    for (int i = 0; i < static_cast<int>(list.size()); i++) texts += list[i]["server"].text() + " ";
    return texts;
  }
};

TEST_F(TwctlNtp, NtpIsSwitchedOnAndOff) {
  EXPECT_TRUE(run_json({"ntp", "show"})["enabled"].is_false());
  EXPECT_EQ(run_json({"ntp", "set", "enabled=yes"}).keys(), "enabled dry_run revision change_count");
  EXPECT_TRUE(run_json({"ntp", "show"})["enabled"].is_true());
  run_json({"ntp", "set", "enabled=no"});
  EXPECT_TRUE(run_json({"ntp", "show"})["enabled"].is_false());
}

TEST_F(TwctlNtp, ServersAreAddedChangedAndDeleted) {
  run_json({"ntp", "server", "add", "a.example"});
  run_json({"ntp", "server", "add", "b.example"});
  EXPECT_EQ(servers(), "a.example b.example ");
  run_json({"ntp", "server", "set", "a.example", "10.0.0.1"});
  EXPECT_EQ(servers(), "10.0.0.1 b.example ");
  json shown = run_json({"ntp", "show"});
  EXPECT_EQ(shown.keys(), "enabled servers");
  EXPECT_EQ(shown["servers"].text(), "10.0.0.1;b.example");
  std::string id = run_json({"ntp", "server", "list"})["servers"][0]["id"].text();
  run_json({"ntp", "server", "delete", id, "--yes"});
  EXPECT_EQ(servers(), "b.example ");
}

TEST_F(TwctlNtp, AStoreWithoutSettingsGetsThemWithTheFirstServer) {
  change_store(store_path(),
               [](cfg *store) { cfg_map_delete_key(store, cfg_get_by_path(store, "services"), "ntp"); });
  EXPECT_TRUE(run_json({"ntp", "show"})["servers"].is_null());
  run_json({"ntp", "server", "add", "a.example"});
  EXPECT_EQ(servers(), "a.example ");
  EXPECT_TRUE(run_json({"ntp", "show"})["enabled"].is_false());
}

TEST_F(TwctlNtp, WhatCannotBeIsRefusedAndChangesNothing) {
  run_json({"ntp", "server", "add", "a.example"});
  run_json({"ntp", "server", "add", "b.example"});
  std::string before = everything();
  EXPECT_EQ(run({"ntp", "server", "add", "a.example"}).code, 4);
  EXPECT_EQ(run({"ntp", "server", "set", "b.example", "a.example"}).code, 4);
  EXPECT_EQ(run({"ntp", "server", "add", "not a host"}).code, 5);
  EXPECT_EQ(run({"ntp", "server", "set", "c.example", "d.example"}).code, 3);
  EXPECT_EQ(run({"ntp", "server", "delete", "c.example", "--yes"}).code, 3);
  EXPECT_EQ(run({"ntp", "server", "delete", "a.example"}).code, 2);
  EXPECT_EQ(run({"ntp", "set", "enabled=perhaps"}).code, 5);
  EXPECT_EQ(run({"ntp", "set", "on=yes"}).code, 2);
  for (const arguments &args : {arguments{"ntp", "set", "enabled=yes"},
                                {"ntp", "server", "add", "c.example"},
                                {"ntp", "server", "set", "a.example", "c.example"},
                                {"ntp", "server", "delete", "a.example"}}) {
    arguments dry = args;
    dry.push_back("--dry-run");
    EXPECT_NE(run(dry).out.find("Dry run: 1 change, nothing was written"), std::string::npos) << args[2];
  }
  EXPECT_EQ(everything(), before);
}

}  // namespace test
