#include <twobject.h>

#include "harness.hpp"

namespace test {

class TwctlSmartgroup : public twctl_test {
 protected:
  void SetUp() override { init(); }
  std::string query(const std::string &group) {
    return run_json({"smartgroup", "show", group})["query"].text();
  }
};

TEST_F(TwctlSmartgroup, AGroupIsCreatedShownAndListed) {
  json created = run_json({"smartgroup", "create", "Waiting", "status=Pending"});
  EXPECT_EQ(created.keys(), "id name dry_run revision change_count");
  EXPECT_EQ(created["id"].text(), "smart_groups_nodes_groups-1");
  json shown = run_json({"smartgroup", "show", "Waiting"});
  EXPECT_EQ(shown.keys(), "id name query");
  json condition(shown["query"].text());
  EXPECT_TRUE(condition.valid()) << shown["query"].text();
  EXPECT_EQ(run_json({"smartgroup", "show", created["id"].text()})["name"].text(), "Waiting");
  json list = run_json({"smartgroup", "list"})["smartgroups"];
  ASSERT_EQ(list.size(), 1u);
  EXPECT_EQ(list[0].keys(), "id name query");
  EXPECT_EQ(list[0]["query"].text(), shown["query"].text());
}

TEST_F(TwctlSmartgroup, AConditionMayBeGivenAsJson) {
  run_json({"smartgroup", "create", "One", R"({"key": "name", "op": "equal", "string": "rack-1"})"});
  json condition(query("One"));
  EXPECT_EQ(condition["key"].text(), "name");
  EXPECT_EQ(condition["string"].text(), "rack-1");
}

TEST_F(TwctlSmartgroup, SetChangesNameOrConditionsAndKeepsTheOther) {
  std::string id = run_json({"smartgroup", "create", "Waiting", "status=Pending"})["id"].text();
  std::string before = query("Waiting");
  run_json({"smartgroup", "set", "Waiting", "--name", "To be approved"});
  EXPECT_EQ(query("To be approved"), before);
  run_json({"smartgroup", "set", "To be approved", "status=Pending", "product=tarnwell"});
  json shown = run_json({"smartgroup", "show", id});
  EXPECT_EQ(shown["name"].text(), "To be approved");
  EXPECT_NE(shown["query"].text(), before);
}

TEST_F(TwctlSmartgroup, DeletingIsConfirmed) {
  run_json({"smartgroup", "create", "Waiting", "status=Pending"});
  EXPECT_EQ(run({"smartgroup", "delete", "Waiting"}).code, 2);
  run_json({"smartgroup", "delete", "Waiting", "--yes"});
  EXPECT_EQ(run({"smartgroup", "show", "Waiting"}).code, 3);
  EXPECT_EQ(run_json({"smartgroup", "list"})["smartgroups"].size(), 0u);
}

TEST_F(TwctlSmartgroup, WhatIsWrongIsRefusedAndNothingIsWritten) {
  run_json({"smartgroup", "create", "Waiting", "status=Pending"});
  run_json({"smartgroup", "create", "Other", "status=Enrolled"});
  std::string before = everything();
  EXPECT_EQ(run({"smartgroup", "create", "Waiting", "status=Pending"}).code, 4);
  EXPECT_EQ(run({"smartgroup", "create", "Third", "status"}).code, 5);
  EXPECT_EQ(run({"smartgroup", "create", "Third", "{}"}).code, 5);
  EXPECT_EQ(run({"smartgroup", "create", "Third"}).code, 2);
  EXPECT_EQ(run({"smartgroup", "create", "a\nb", "status=Pending"}).code, 5);
  EXPECT_EQ(run({"smartgroup", "set", "Waiting"}).code, 2);
  EXPECT_EQ(run({"smartgroup", "set", "Waiting", "--name", "Other"}).code, 4);
  EXPECT_EQ(run({"smartgroup", "set", "None", "--name", "Third"}).code, 3);
  EXPECT_EQ(run({"smartgroup", "delete", "None", "--yes"}).code, 3);
  EXPECT_EQ(run({"smartgroup", "nodes", "None"}).code, 3);
  EXPECT_EQ(run({"smartgroup", "create", "Third", "status=Pending", "--dry-run"}).code, 0);
  EXPECT_EQ(run({"smartgroup", "delete", "Waiting", "--dry-run"}).code, 0);
  EXPECT_EQ(everything(), before);
}

}  // namespace test
