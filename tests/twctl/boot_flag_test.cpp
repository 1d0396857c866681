#include "harness.hpp"

namespace test {

class TwctlBoot : public twctl_test {
 protected:
  void SetUp() override { init(); }
};

TEST_F(TwctlBoot, AFlagIsSetUnlessToldOtherwise) {
  std::string id = run_json({"bootflag", "add", "reset", "once"})["id"].text();
  run_json({"bootflag", "add", "verbose", "permanent", "is_set=no"});
  json flags = run_json({"bootflag", "list"})["flags"];
  ASSERT_EQ(flags.size(), 2u);
  EXPECT_EQ(flags[0].keys(), "id name flag_type is_set");
  EXPECT_EQ(flags[0]["id"].text(), id);
  EXPECT_TRUE(flags[0]["is_set"].is_true());
  EXPECT_TRUE(flags[1]["is_set"].is_false());
}

TEST_F(TwctlBoot, AFlagIsChanged) {
  std::string id = run_json({"bootflag", "add", "reset", "once"})["id"].text();
  run_json({"bootflag", "set", "reset", "name=restart", "flag_type=twice", "is_set=no"});
  json shown = run_json({"bootflag", "show", "restart"});
  EXPECT_EQ(shown["id"].text(), id);
  EXPECT_EQ(shown["flag_type"].text(), "twice");
  EXPECT_TRUE(shown["is_set"].is_false());
}

TEST_F(TwctlBoot, WhatAFlagCannotBeIsRefused) {
  run_json({"bootflag", "add", "reset", "once"});
  run_json({"bootflag", "add", "verbose", "once"});
  std::string before = everything();
  EXPECT_EQ(run({"bootflag", "add", "reset", "once"}).code, 4);
  EXPECT_EQ(run({"bootflag", "set", "verbose", "name=reset"}).code, 4);
  EXPECT_EQ(run({"bootflag", "add", "new", ""}).code, 5);
  EXPECT_EQ(run({"bootflag", "set", "reset", "flag_type="}).code, 5);
  EXPECT_EQ(run({"bootflag", "set", "reset", "is_set=perhaps"}).code, 5);
  EXPECT_EQ(run({"bootflag", "show", "RESET"}).code, 3);
  EXPECT_EQ(run({"bootflag", "set", "reset", "is_set=no", "--dry-run"}).code, 0);
  EXPECT_EQ(run({"bootflag", "add", "new", "once", "--dry-run"}).code, 0);
  EXPECT_EQ(everything(), before);
}

TEST_F(TwctlBoot, TheConsoleGatewaysDelimiterIsSetAlsoForTheFirstTime) {
  EXPECT_TRUE(run_json({"console-gateway", "show"})["ssh_delimiter"].is_null());
  for (const char *delimiter : {":", "::"}) {
    EXPECT_EQ(run_json({"console-gateway", "set", std::string("ssh_delimiter=") + delimiter}).keys(),
              "ssh_delimiter dry_run revision change_count");
    EXPECT_EQ(run_json({"console-gateway", "show"})["ssh_delimiter"].text(), delimiter);
  }
  std::string before = everything();
  EXPECT_EQ(run({"console-gateway", "set", "ssh_delimiter="}).code, 5);
  EXPECT_EQ(run({"console-gateway", "set", "ssh_delimiter=+", "--dry-run"}).code, 0);
  EXPECT_EQ(run({"console-gateway", "set", "delimiter=+"}).code, 2);
  EXPECT_EQ(everything(), before);
}

}  // namespace test
