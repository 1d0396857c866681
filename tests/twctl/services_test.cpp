// The commands that need the services, with the real ones: searches, smart groups, nodes of bundles,
// unenrolment.
#include <sys/un.h>

#include <fstream>

#include "beanstalk/server.hpp"
#include "harness.hpp"
#include "search_service/search_service.hpp"

namespace test {

/// Whether a process still works. One that has ended may wait a while until the system's first process
/// collects it, and can be sent signals until then.
bool runs(pid_t pid) {
  std::ifstream file("/proc/" + std::to_string(pid) + "/stat");
  std::string line;
  std::getline(file, line);
  const size_t end = line.rfind(") ");
  return end != std::string::npos && line[end + 2] != 'Z';
}

/// The queue's port and the search service's socket are one for the machine: while a test has them, no other
/// test of whatever tree does.
class TwctlServices : public twctl_test {
 protected:
  void SetUp() override {
    own_directory("TW_INFOD_DIR");
    own_directory("TW_ACTION_DIR");
    init();
    run_json({"tag", "add", "Site", "Berlin", "Lima"});
    run_json({"bundle", "create", "B", "--tag", "Site=Berlin"});
    for (const char *name : {"rack-1", "rack-2", "rack-3"})
      run_json({"node", "enroll", "--product", "tarnwell", "--name", name});
    run_json({"node", "tag", "rack-1", "--add", "Site=Berlin"});
    run_json({"node", "tag", "rack-2", "--add", "Site=Lima"});
  }
  void TearDown() override {
    // Also those of another store: should they have started against all expectation, nobody else stops them.
    for (const std::string &store : {store_path(), path("other")})
      run({"--store", store, "services", "stop"});
  }

  json start() { return run_json({"services", "start"})["services"]; }
  std::string states(const arguments &args) {
    json services = run_json(args)["services"];
    std::string text;
    for (int i = 0; i < static_cast<int>(services.size()); i++)
      text += services[i]["name"].text() + " " + services[i]["state"].text() + "; ";
    return text;
  }
  /// The names of the nodes that a command lists.
  std::string names(const arguments &args) {
    json nodes = run_json(args)["nodes"];
    std::string text;
    for (int i = 0; i < static_cast<int>(nodes.size()); i++) text += nodes[i]["name"].text() + " ";
    return text;
  }

 private:
  const queue::FixedPort port_;
  const search_service::PathClaim socket_;
};

TEST_F(TwctlServices, TheyAreStartedOnceSeenAndStopped) {
  EXPECT_EQ(states({"services", "status"}), "beanstalkd stopped; searchd stopped; unenrolld stopped; ");
  EXPECT_EQ(states({"services", "start", "--dry-run"}),
            "beanstalkd would be started; searchd would be started; unenrolld would be started; ");
  EXPECT_EQ(states({"services", "status"}), "beanstalkd stopped; searchd stopped; unenrolld stopped; ");
  json started = start();
  ASSERT_EQ(started.size(), 3u);
  EXPECT_EQ(started[0].keys(), "name state pid log");
  for (int i = 0; i < 3; i++) {
    EXPECT_EQ(started[i]["state"].text(), "started");
    EXPECT_TRUE(runs(static_cast<pid_t>(started[i]["pid"].number())));
  }
  EXPECT_EQ(states({"services", "start"}), "beanstalkd running; searchd running; unenrolld running; ");
  EXPECT_EQ(states({"services", "stop"}), "unenrolld stopped; searchd stopped; beanstalkd stopped; ");
  for (int i = 0; i < 3; i++) EXPECT_FALSE(runs(static_cast<pid_t>(started[i]["pid"].number())));
  EXPECT_EQ(states({"services", "stop"}),
            "unenrolld was not running; searchd was not running; beanstalkd was not running; ");
}

TEST_F(TwctlServices, AnotherStoresServicesAreLeftAlone) {
  start();
  init("other");
  EXPECT_EQ(run({"--store", path("other"), "services", "start"}).code, 4);
  EXPECT_EQ(states({"services", "status"}), "beanstalkd running; searchd running; unenrolld running; ");
  EXPECT_EQ(run({"--store", path("none"), "services", "start"}).code, 3);
}

TEST_F(TwctlServices, SearchesFindNodesByKeysAndTags) {
  start();
  EXPECT_EQ(names({"search", "name=rack-2"}), "rack-2 ");
  EXPECT_EQ(names({"search", "product=tarnwell"}), "rack-1 rack-2 rack-3 ");
  EXPECT_EQ(names({"search", "tag:Site=Berlin"}), "rack-1 ");
  EXPECT_EQ(names({"search", "product=tarnwell", "name!=rack-1"}), "rack-2 rack-3 ");
  EXPECT_EQ(names({"search", "!description", "tag:Site=Lima"}), "rack-2 ");
  EXPECT_EQ(names({"search", R"({"key": "name", "op": "equal", "string": "rack-3"})"}), "rack-3 ");
  EXPECT_EQ(names({"search", "name=rack-9"}), "");
  EXPECT_EQ(run_json({"search", "name=rack-2"})["nodes"][0].keys(), "id name product status address");
  outcome some = run({"search", "product=tarnwell", "--limit", "2"});
  EXPECT_EQ(some.code, 0);
  EXPECT_NE(some.err.find("2 of 3 shown."), std::string::npos) << some.err;
  EXPECT_EQ(run({"search", "password=x"}).code, 5);
  EXPECT_EQ(run({"search", "name"}).code, 5);
  EXPECT_EQ(run({"search"}).code, 2);
}

TEST_F(TwctlServices, ASmartGroupHasTheNodesThatMatchWhenOneAsks) {
  start();
  run_json({"smartgroup", "create", "Berlin", "tag:Site=Berlin"});
  EXPECT_EQ(names({"smartgroup", "nodes", "Berlin"}), "rack-1 ");
  run_json({"node", "tag", "rack-3", "--add", "Site=Berlin"});
  EXPECT_EQ(names({"smartgroup", "nodes", "Berlin"}), "rack-1 rack-3 ");
  EXPECT_EQ(names({"smartgroup", "nodes", "Berlin", "--limit", "1"}), "rack-1 ");
}

TEST_F(TwctlServices, ABundleListsTheNodesThatWereEnrolledWithIt) {
  start();
  EXPECT_EQ(names({"bundle", "nodes", "B"}), "");
  run_json({"node", "approve", "rack-2", "--bundle", "B"});
  EXPECT_EQ(names({"bundle", "nodes", "B"}), "rack-2 ");
  EXPECT_EQ(run_json({"bundle", "nodes", "B"})["nodes"][0].keys(), "id name status");
  EXPECT_EQ(run({"bundle", "nodes", "none"}).code, 3);
}

TEST_F(TwctlServices, AnUnenrolledNodeIsGoneAndItsCertificateRevoked) {
  start();
  run_json({"cert", "issue", "--node", "rack-1"});
  json done = run_json({"node", "unenroll", "rack-1", "--yes", "--wait", "60"});
  EXPECT_EQ(done.keys(), "id name dry_run removed");
  EXPECT_TRUE(done["removed"].is_true());
  EXPECT_EQ(names({"node", "list"}), "rack-2 rack-3 ");
  json certificates = run_json({"cert", "list"})["certificates"];
  ASSERT_EQ(certificates.size(), 1u);
  EXPECT_FALSE(certificates[0]["revoked_at"].is_null());
  EXPECT_TRUE(certificates[0]["node_id"].is_null());
}

TEST_F(TwctlServices, WithoutThemTheCommandsFailAndSayHowToStartThem) {
  run_json({"smartgroup", "create", "Berlin", "tag:Site=Berlin"});
  for (const arguments &args : {arguments{"search", "name=rack-1"},
                                {"smartgroup", "nodes", "Berlin"},
                                {"bundle", "nodes", "B"},
                                {"node", "unenroll", "rack-1", "--yes"}}) {
    outcome result = run(args);
    EXPECT_EQ(result.code, 1) << args[0];
    EXPECT_NE(result.err.find("twctl services start"), std::string::npos) << result.err;
  }
  EXPECT_EQ(names({"node", "list"}), "rack-1 rack-2 rack-3 ");
}

}  // namespace test
