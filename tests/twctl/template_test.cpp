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
  EXPECT_EQ(run({"template", "create", "Three", "--kind", "script"}).code, 2);
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

}  // namespace test
