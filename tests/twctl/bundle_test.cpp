#include <twobject.h>

#include "harness.hpp"

namespace test {

class TwctlBundle : public twctl_test {
 protected:
  void SetUp() override {
    init();
    run_json({"tag", "add", "Site", "Berlin", "Lima"});
    run_json({"template", "create", "Ports", "--kind", "ports"});
    run_json({"template", "create", "Net", "--kind", "network"});
  }
  std::string field(const std::string &bundle, const char *name) {
    return run_json({"bundle", "show", bundle})[name].text();
  }
  std::string token() {
    outcome result = run({"bundle", "token", "B"});
    EXPECT_EQ(result.code, 0) << result.err;
    return result.out;
  }
};

TEST_F(TwctlBundle, ABundleIsCreatedWholeInOneCommit) {
  json made =
      run_json({"bundle", "create", "B", "auto_approve=yes", "--tag", "Site=Berlin", "--template", "Ports"});
  EXPECT_EQ(made["revision"].number(), 5);
  json shown = run_json({"bundle", "show", made["id"].text()});
  EXPECT_EQ(shown.keys(), "id name auto_approve token_set tags templates");
  EXPECT_TRUE(shown["auto_approve"].is_true());
  EXPECT_TRUE(shown["token_set"].is_true());
  EXPECT_EQ(shown["tags"].text(), "Site=Berlin");
  EXPECT_EQ(shown["templates"].text(), "Ports");
  EXPECT_EQ(run_json({"bundle", "list"})["bundles"].size(), 1u);
}

TEST_F(TwctlBundle, SetKeepsWhatItDoesNotName) {
  run_json({"bundle", "create", "B", "auto_approve=yes", "--tag", "Site=Berlin", "--template", "Ports"});
  std::string before = token();
  run_json({"bundle", "set", "B", "name=C"});
  EXPECT_EQ(field("C", "tags"), "Site=Berlin");
  EXPECT_EQ(field("C", "templates"), "Ports");
  EXPECT_EQ(run({"bundle", "token", "C"}).out, before);
}

TEST_F(TwctlBundle, TagsAndTemplatesAreAddedAndTakenAway) {
  run_json({"bundle", "create", "B", "--tag", "Site=Berlin", "--template", "Ports"});
  run_json({"bundle", "set", "B", "--tag", "Site=Lima", "--template", "Net"});
  EXPECT_EQ(field("B", "tags"), "Site=Berlin;Site=Lima");
  EXPECT_EQ(field("B", "templates"), "Ports;Net");
  run_json({"bundle", "set", "B", "--remove-tag", "Site=Berlin", "--remove-template", "Ports"});
  EXPECT_EQ(field("B", "tags"), "Site=Lima");
  EXPECT_EQ(field("B", "templates"), "Net");
  run_json({"bundle", "set", "B", "--remove-template", "Net"});
  EXPECT_TRUE(run_json({"bundle", "show", "B"})["templates"].is_null());
  run_json({"bundle", "set", "B", "--tag", "Site=Lima"});
  EXPECT_EQ(field("B", "tags"), "Site=Lima");
  std::string before = everything();
  EXPECT_EQ(run({"bundle", "set", "B", "--remove-tag", "Site=Berlin"}).code, 3);
  EXPECT_EQ(run({"bundle", "set", "B", "--tag", "Site=Rome"}).code, 3);
  EXPECT_EQ(run({"bundle", "set", "B", "--tag", "Site"}).code, 2);
  EXPECT_EQ(run({"bundle", "set", "B", "--template", "None"}).code, 3);
  EXPECT_EQ(run({"bundle", "set", "B"}).code, 2);
  EXPECT_EQ(everything(), before);
}

TEST_F(TwctlBundle, OnlyTheTokenCommandShowsTheToken) {
  write_text(path("token"), "only-for-nodes\n");
  std::string seen;
  for (const arguments &args :
       {arguments{"bundle", "create", "B", "--token-file", path("token"), "--dry-run"},
        {"bundle", "create", "B", "--token-file", path("token")},
        {"bundle", "show", "B"},
        {"bundle", "list", "-o", "json"},
        {"bundle", "token", "--request", "--token-file", path("token")},
        {"bundle", "token", "B", "--renew", "--dry-run", "-o", "json"}}) {
    outcome result = run(args);
    EXPECT_EQ(result.code, 0) << result.err;
    seen += result.out + result.err;
  }
  EXPECT_EQ(seen.find("only-for-nodes"), std::string::npos) << seen;
  EXPECT_EQ(token(), "only-for-nodes\n");
  EXPECT_EQ(run_json({"bundle", "token", "--request"})["token"].text(), "only-for-nodes");
}

TEST_F(TwctlBundle, ATokenThatIsMadeUpIsNewEachTime) {
  run_json({"bundle", "create", "B"});
  std::string first = token();
  EXPECT_EQ(first.size(), 41u);
  EXPECT_EQ(first.find_first_not_of("0123456789abcdef\n"), std::string::npos) << first;
  EXPECT_EQ(run({"bundle", "token", "B", "--renew"}).code, 0);
  EXPECT_NE(token(), first);
}

TEST_F(TwctlBundle, TheRequestTokenCanBeRemovedABundlesCannot) {
  EXPECT_EQ(run({"bundle", "token", "--request"}).code, 3);
  EXPECT_EQ(run({"bundle", "token", "--request", "--renew"}).code, 0);
  EXPECT_EQ(run({"bundle", "token", "--request"}).code, 0);
  EXPECT_EQ(run({"bundle", "token", "--request", "--remove"}).code, 0);
  EXPECT_EQ(run({"bundle", "token", "--request"}).code, 3);
  run_json({"bundle", "create", "B"});
  EXPECT_EQ(run({"bundle", "token", "B", "--remove"}).code, 2);
  EXPECT_EQ(run({"bundle", "token"}).code, 2);
}

TEST_F(TwctlBundle, DeletingIsConfirmed) {
  run_json({"bundle", "create", "B"});
  EXPECT_EQ(run({"bundle", "create", "B"}).code, 4);
  EXPECT_EQ(run({"bundle", "delete", "B"}).code, 2);
  EXPECT_EQ(run({"bundle", "delete", "B", "--yes"}).code, 0);
  EXPECT_EQ(run({"bundle", "show", "B"}).code, 3);
}

}  // namespace test
