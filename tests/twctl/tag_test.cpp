#include <twobject.h>

#include "harness.hpp"

namespace test {

class TwctlTag : public twctl_test {
 protected:
  void SetUp() override { init(); }

  /// Runs a command that must succeed.
  outcome done(const arguments &args) {
    outcome result = run(args);
    EXPECT_EQ(result.code, 0) << result.err;
    return result;
  }
  std::string values_of(const std::string &tag) {
    json values = run_json({"tag", "show", tag})["values"];
    std::string texts;
    for (size_t i = 0; i < values.size(); i++)
      texts += (i ? "," : "") + values[static_cast<int>(i)]["value"].text();
    return texts;
  }
};

TEST_F(TwctlTag, ATagIsAddedWithItsValuesInOneCommit) {
  json added = run_json({"tag", "add", "Site", "Berlin", "New York"});
  EXPECT_EQ(added.keys(), "id name dry_run revision change_count");
  EXPECT_EQ(added["revision"].number(), 2);
  EXPECT_EQ(values_of("Site"), "Berlin,New York");
  json tags = run_json({"tag", "list"})["tags"];
  ASSERT_EQ(tags.size(), 1u);
  EXPECT_EQ(tags[0].keys(), "id name value_count");
  EXPECT_EQ(tags[0]["id"].text(), added["id"].text());
  EXPECT_EQ(tags[0]["value_count"].number(), 2);
  open_store store = open_for_reading(store_path());
  EXPECT_NE(cfg_get_by_id(store.get(), added["id"].text().c_str()), nullptr);
}

TEST_F(TwctlTag, ADryRunShowsTheChangesAndWritesNothing) {
  done({"tag", "add", "Site", "Berlin"});
  std::string before = everything();
  for (const arguments &args : {arguments{"tag", "add", "Floor", "1"},
                                {"tag", "rename", "Site", "Place"},
                                {"tag", "delete", "Site"},
                                {"tag", "value", "add", "Site", "Lima"},
                                {"tag", "value", "rename", "Site", "Berlin", "Bonn"},
                                {"tag", "value", "delete", "Site", "Berlin"}}) {
    arguments dry = args;
    dry.push_back("--dry-run");
    EXPECT_NE(done(dry).out.find("nothing was written"), std::string::npos) << args[1];
  }
  EXPECT_EQ(everything(), before);
}

TEST_F(TwctlTag, ATagAndAValueAreFoundByNameAndById) {
  done({"tag", "add", "Site", "Berlin"});
  std::string tag = run_json({"tag", "list"})["tags"][0]["id"].text();
  std::string value = run_json({"tag", "show", tag})["values"][0]["id"].text();
  done({"tag", "value", "rename", tag, value, "Bonn"});
  EXPECT_EQ(values_of("Site"), "Bonn");
  done({"tag", "rename", tag, "Place"});
  EXPECT_EQ(values_of("Place"), "Bonn");
  EXPECT_EQ(run({"tag", "show", "Site"}).code, 3);
}

TEST_F(TwctlTag, AValueOfAnotherTagIsNotTouched) {
  done({"tag", "add", "Site", "Berlin"});
  done({"tag", "add", "Floor", "1"});
  std::string other = run_json({"tag", "show", "Floor"})["values"][0]["id"].text();
  EXPECT_EQ(run({"tag", "value", "delete", "Site", other, "--yes"}).code, 3);
  EXPECT_EQ(values_of("Floor"), "1");
}

TEST_F(TwctlTag, NamesThatExistAreConflicts) {
  done({"tag", "add", "Site", "Berlin"});
  done({"tag", "add", "Floor"});
  std::string before = everything();
  EXPECT_EQ(run({"tag", "add", "Site"}).code, 4);
  EXPECT_EQ(run({"tag", "rename", "Floor", "Site"}).code, 4);
  EXPECT_EQ(run({"tag", "value", "add", "Site", "Berlin"}).code, 4);
  EXPECT_EQ(run({"tag", "add", "Rack", "1", "1"}).code, 2);
  EXPECT_EQ(everything(), before);
}

TEST_F(TwctlTag, UnusableNamesAreInvalidInput) {
  EXPECT_EQ(run({"tag", "add", ""}).code, 5);
  EXPECT_EQ(run({"tag", "add", "a=b"}).code, 5);
  EXPECT_EQ(run({"tag", "add", "Site", "line\nend"}).code, 5);
}

TEST_F(TwctlTag, DeletingIsConfirmedAndTakesTheValuesAlong) {
  done({"tag", "add", "Site", "Berlin", "Lima"});
  outcome refused = run({"tag", "delete", "Site"});
  EXPECT_EQ(refused.code, 2);
  EXPECT_NE(refused.err.find("--yes"), std::string::npos) << refused.err;
  done({"tag", "value", "delete", "Site", "Berlin", "--yes"});
  EXPECT_EQ(values_of("Site"), "Lima");
  done({"tag", "delete", "Site", "--yes"});
  EXPECT_EQ(run_json({"tag", "list"})["tags"].size(), 0u);
  EXPECT_EQ(run({"tag", "delete", "Site", "--yes"}).code, 3);
}

}  // namespace test
