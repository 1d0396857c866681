#include <twinfod.h>
#include <twobject.h>

#include "harness.hpp"

namespace test {

class TwctlNodeLive : public twctl_test {
 protected:
  void SetUp() override {
    own_directory("TW_INFOD_DIR");
    own_directory("TW_ACTION_DIR");
    init();
    run_json({"tag", "add", "Site", "Berlin", "Lima"});
    run_json({"node", "enroll", "--product", "tarnwell", "--name", "rack-1"});
    run_json({"node", "enroll", "--product", "tarnwell", "--name", "rack-2"});
  }
  std::string tags() {
    json list = run_json({"node", "tag", "rack-1"})["tags"];
    std::string texts;
    for (int i = 0; i < static_cast<int>(list.size()); i++)
      texts += list[i]["tag"].text() + "=" + list[i]["value"].text() + " ";
    return texts;
  }
};

TEST_F(TwctlNodeLive, StatusShowsWhatWasPublishedForANode) {
  ASSERT_EQ(infod_push_text("nodes.nodes-1.status.connection_status", "CONNECTED", INFOD_KIND_STATUS), 0);
  json nodes = run_json({"node", "status"})["nodes"];
  ASSERT_EQ(nodes.size(), 2u);
  EXPECT_EQ(nodes[0].keys(), "id name connection since action action_status action_error");
  EXPECT_EQ(nodes[0]["connection"].text(), "connected");
  EXPECT_EQ(nodes[0]["since"].text().size(), std::string("2026-01-31T10:20:30Z").size());
  EXPECT_TRUE(nodes[0]["action"].is_null());
  EXPECT_TRUE(nodes[0]["action_status"].is_null());
  EXPECT_EQ(nodes[1]["connection"].text(), "unknown");
  EXPECT_TRUE(nodes[1]["since"].is_null());
  EXPECT_EQ(run_json({"node", "status", "rack-1"})["nodes"].size(), 1u);
  EXPECT_EQ(run({"node", "status", "rack-9"}).code, 3);
}

TEST_F(TwctlNodeLive, AStateIsPublishedForOneNodeUnlessItIsADryRun) {
  auto connection = [&](arguments args) { return run_json(args)["nodes"][0]["connection"].text(); };
  EXPECT_EQ(connection({"node", "status", "rack-2", "--publish", "connected", "--dry-run"}), "unknown");
  EXPECT_EQ(connection({"node", "status", "rack-2", "--publish", "connected"}), "connected");
  EXPECT_EQ(connection({"node", "status", "rack-2", "--publish", "never-seen"}), "never seen");
  EXPECT_EQ(connection({"node", "status", "rack-2", "--publish", "disconnected"}), "disconnected");
  EXPECT_EQ(connection({"node", "status", "rack-1"}), "unknown");
  EXPECT_EQ(run({"node", "status", "--publish", "connected"}).code, 2);
  EXPECT_EQ(run({"node", "status", "rack-2", "--publish", "gone"}).code, 2);
}

TEST_F(TwctlNodeLive, ATagThatIsGivenTwiceIsCarriedOnce) {
  run_json({"node", "tag", "rack-1", "--add", "Site=Berlin", "--add", "Site=Berlin"});
  EXPECT_EQ(tags(), "Site=Berlin ");
  EXPECT_EQ(run({"node", "tag", "rack-1", "--remove", "Site=Berlin", "--remove", "Site=Berlin"}).code, 3);
  run_json({"node", "tag", "rack-1", "--remove", "Site=Berlin", "--add", "Site=Berlin"});
  EXPECT_EQ(tags(), "Site=Berlin ");
}

TEST_F(TwctlNodeLive, TagsAreAddedAndTakenAway) {
  EXPECT_EQ(tags(), "");
  run_json({"node", "tag", "rack-1", "--add", "Site=Berlin", "--add", "Site=Lima"});
  EXPECT_EQ(tags(), "Site=Berlin Site=Lima ");
  run_json({"node", "tag", "rack-1", "--remove", "Site=Berlin"});
  EXPECT_EQ(tags(), "Site=Lima ");
  std::string before = everything();
  run_json({"node", "tag", "rack-1", "--add", "Site=Lima"});
  EXPECT_EQ(run({"node", "tag", "rack-1", "--add", "Site=Berlin", "--dry-run"}).code, 0);
  EXPECT_EQ(run({"node", "tag", "rack-1", "--remove", "Site=Berlin"}).code, 3);
  EXPECT_EQ(run({"node", "tag", "rack-1", "--add", "Site=Rome"}).code, 3);
  EXPECT_EQ(everything(), before);
}

TEST_F(TwctlNodeLive, ApprovingWithABundleGivesItsTags) {
  std::string bundle = run_json({"bundle", "create", "B", "--tag", "Site=Berlin"})["id"].text();
  json done = run_json({"node", "approve", "rack-1", "--bundle", "B"});
  EXPECT_EQ(done.keys(), "id name dry_run revision change_count");
  json node = run_json({"node", "show", "rack-1"});
  EXPECT_TRUE(node["approved"].is_true());
  EXPECT_EQ(node["bundle_id"].text(), bundle);
  EXPECT_EQ(tags(), "Site=Berlin Bundle=B ");
}

TEST_F(TwctlNodeLive, ApprovingAlone) {
  std::string before = everything();
  EXPECT_EQ(run({"node", "approve", "rack-2", "--dry-run"}).code, 0);
  EXPECT_EQ(run({"node", "approve", "rack-2", "--bundle", "none"}).code, 3);
  EXPECT_EQ(everything(), before);
  run_json({"node", "approve", "rack-2"});
  EXPECT_TRUE(run_json({"node", "show", "rack-2"})["approved"].is_true());
  EXPECT_TRUE(run_json({"node", "show", "rack-1"})["approved"].is_false());
}

TEST_F(TwctlNodeLive, UnenrolmentIsConfirmedAndADryRunAsksNobody) {
  EXPECT_EQ(run({"node", "unenroll", "rack-1"}).code, 2);
  json dry = run_json({"node", "unenroll", "rack-1", "--dry-run"});
  EXPECT_TRUE(dry["dry_run"].is_true());
  EXPECT_TRUE(run_json({"node", "status", "rack-1"})["nodes"][0]["action"].is_null());
}

}  // namespace test
