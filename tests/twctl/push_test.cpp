#include <twobject.h>

#include "harness.hpp"

namespace test {

class TwctlPush : public twctl_test {
 protected:
  void SetUp() override {
    init();
    for (const char *name : {"rack-1", "rack-2", "rack-3"})
      run_json({"node", "enroll", "--product", "tarnwell", "--name", name});
    run_json({"template", "create", "Ports", "--kind", "ports"});
    run_json({"template", "create", "Trial", "--kind", "dummy"});
  }
  json created() {
    return run_json({"push", "create", "--template", "Ports", "--template", "Trial", "--node", "rack-2",
                     "--node", "rack-1", "--who", "ada"});
  }
  /// Makes a map for a message in a list of the first node's share, as the services that run pushes do.
  void tell(const char *list, int32_t code, const char *argument) {
    change_store(store_path(), [&](cfg *store) {
      cfg_elem *share = cfg_get_by_id(store, first_share_.c_str());
      cfg_elem *messages = cfg_simple_get_mapelem(store, share, list);
      if (!messages) {
        messages = cfg_new_list(store);
        cfg_add_mapelem(store, share, list, messages);
      }
      cfg_elem *message = cfg_new_map(store), *args = cfg_new_list(store);
      cfg_map_set_int(store, message, "code", code);
      cfg_map_set_int(store, message, "argc", 1);
      cfg_add_mapelem(store, message, "template", cfg_new_reference(store, "templates-2"));
      cfg_add_listelem(store, args, cfg_new_string(store, argument));
      cfg_add_mapelem(store, message, "args", args);
      cfg_add_listelem(store, messages, message);
    });
  }
  void find_first_share() {
    open_store store = open_for_reading(store_path());
    cfg_push_exec_ctxt *push = cfg_push_exec_ctxt_get_by_id(store.get(), "cfg_push_exec_ctxts-1");
    first_share_ = cfg_push_node_ctxt_get_uuid(cfg_push_exec_ctxt_get_node_ctxt(push, 0));
    cfg_push_exec_ctxt_dispose(push);
  }

  std::string first_share_;
};

TEST_F(TwctlPush, APushIsMadeReadyWithItsTemplatesAndNodesInOneCommit) {
  json push = created();
  EXPECT_EQ(push.keys(), "id dry_run revision change_count");
  EXPECT_EQ(push["id"].text(), "cfg_push_exec_ctxts-1");
  json shown = run_json({"push", "show", "last"});
  EXPECT_EQ(shown.keys(), "id username status disconnected_nodes templates node_count");
  EXPECT_EQ(shown["id"].text(), push["id"].text());
  EXPECT_EQ(shown["username"].text(), "ada");
  EXPECT_EQ(shown["status"].text(), "preflight_ready");
  EXPECT_EQ(shown["disconnected_nodes"].text(), "skip");
  EXPECT_EQ(shown["templates"].text(), "Ports;Trial");
  EXPECT_EQ(shown["node_count"].number(), 2);
  json list = run_json({"push", "list"})["pushes"];
  ASSERT_EQ(list.size(), 1u);
  EXPECT_EQ(list[0].keys(), "id username status templates node_count");
}

TEST_F(TwctlPush, StatusTellsHowFarEachNodeIs) {
  created();
  run_json({"push", "set", "last", "status=preflight_in_progress"});
  run_json({"push", "set", "last", "--node", "rack-1", "status=preflight_complete", "apply=yes"});
  json nodes = run_json({"push", "status", "last"})["nodes"];
  ASSERT_EQ(nodes.size(), 2u);
  EXPECT_EQ(nodes[0].keys(),
            "node_id name status apply preflight_changes preflight_warnings preflight_errors "
            "preflight_messages execution_changes execution_warnings execution_errors execution_messages");
  EXPECT_EQ(nodes[0]["name"].text(), "rack-2");
  EXPECT_EQ(nodes[0]["status"].text(), "preflight_ready");
  EXPECT_TRUE(nodes[0]["apply"].is_false());
  EXPECT_EQ(nodes[1]["name"].text(), "rack-1");
  EXPECT_EQ(nodes[1]["status"].text(), "preflight_complete");
  EXPECT_TRUE(nodes[1]["apply"].is_true());
  std::string table = run({"push", "status", "last"}).out;
  EXPECT_EQ(table.find("cfg_push_exec_ctxts-1: preflight_in_progress; 2 nodes: 1 preflight_ready, 1 "
                       "preflight_complete\n"),
            0u)
      << table;
  EXPECT_EQ(run_json({"push", "status", "last", "--node", "rack-1"})["nodes"].size(), 1u);
  EXPECT_EQ(run({"push", "status", "last", "--node", "rack-3"}).code, 3);
}

TEST_F(TwctlPush, MessagesAreCountedAndTold) {
  created();
  find_first_share();
  tell("preflight_warnings", 7, "disk is almost full");
  tell("preflight_warnings", 8, "clock is off");
  tell("execution_errors", 9, "no answer");
  json nodes = run_json({"push", "status", "last"})["nodes"];
  EXPECT_EQ(nodes[0]["preflight_warnings"].number(), 2);
  EXPECT_EQ(nodes[0]["execution_errors"].number(), 1);
  EXPECT_EQ(nodes[0]["preflight_errors"].number(), 0);
  EXPECT_EQ(nodes[1]["preflight_warnings"].number(), 0);
  std::string table = run({"push", "status", "last"}).out;
  EXPECT_NE(table.find("2 warnings"), std::string::npos) << table;
  EXPECT_NE(table.find("1 error"), std::string::npos) << table;
  json messages = run_json({"push", "message", "last"})["messages"];
  ASSERT_EQ(messages.size(), 3u);
  EXPECT_EQ(messages[0].keys(), "id node phase kind template code text");
  EXPECT_EQ(messages[0]["node"].text(), "rack-2");
  EXPECT_EQ(messages[0]["phase"].text(), "preflight");
  EXPECT_EQ(messages[0]["kind"].text(), "warning");
  EXPECT_EQ(messages[0]["template"].text(), "Trial");
  EXPECT_EQ(messages[0]["code"].number(), 7);
  EXPECT_NE(messages[0]["text"].text().find("disk is almost full"), std::string::npos);
  EXPECT_EQ(messages[2]["phase"].text(), "execution");
  EXPECT_EQ(run_json({"push", "message", "last", "--kind", "error"})["messages"].size(), 1u);
  EXPECT_EQ(run_json({"push", "message", "last", "--phase", "preflight"})["messages"].size(), 2u);
  EXPECT_EQ(run_json({"push", "message", "last", "--node", "rack-1"})["messages"].size(), 0u);
}

TEST_F(TwctlPush, APushOutlivesItsTemplatesAndNodes) {
  created();
  run_json({"template", "delete", "Trial", "--yes"});
  run_json({"node", "delete", "rack-2", "--yes"});
  EXPECT_EQ(run_json({"push", "show", "last"})["templates"].text(), "Ports;templates-2");
  EXPECT_EQ(run_json({"push", "status", "last"})["nodes"][0]["name"].text(), "nodes-2");
}

TEST_F(TwctlPush, TheNewestPushIsTheLast) {
  EXPECT_EQ(run({"push", "show", "last"}).code, 3);
  created();
  run_json({"push", "create", "--template", "Trial", "--node", "rack-3", "disconnected_nodes=apply"});
  json shown = run_json({"push", "show", "last"});
  EXPECT_EQ(shown["id"].text(), "cfg_push_exec_ctxts-2");
  EXPECT_EQ(shown["disconnected_nodes"].text(), "apply");
  EXPECT_EQ(run_json({"push", "show", "cfg_push_exec_ctxts-1"})["username"].text(), "ada");
}

TEST_F(TwctlPush, WhatCannotBeIsRefusedAndChangesNothing) {
  created();
  std::string before = everything();
  EXPECT_EQ(run({"push", "create", "--template", "Ports"}).code, 2);
  EXPECT_EQ(run({"push", "create", "--node", "rack-1"}).code, 2);
  EXPECT_EQ(run({"push", "create", "--template", "Ports", "--node", "rack-1", "--node", "nodes-1"}).code, 2);
  EXPECT_EQ(run({"push", "create", "--template", "None", "--node", "rack-1"}).code, 3);
  EXPECT_EQ(run({"push", "create", "--template", "Ports", "--node", "rack-9"}).code, 3);
  EXPECT_EQ(run({"push", "create", "--template", "Ports", "--node", "rack-1", "disconnected_nodes=no"}).code,
            5);
  EXPECT_EQ(run({"push", "set", "last", "status=done"}).code, 5);
  EXPECT_EQ(run({"push", "set", "last", "apply=yes"}).code, 2) << "a node's field";
  EXPECT_EQ(run({"push", "set", "last", "--node", "rack-1", "status=unconfigured"}).code, 5);
  EXPECT_EQ(run({"push", "set", "last", "--node", "rack-3", "apply=yes"}).code, 3);
  EXPECT_EQ(run({"push", "set", "last", "--node", "rack-1", "apply=yes", "--dry-run"}).code, 0);
  EXPECT_EQ(run({"push", "create", "--template", "Ports", "--node", "rack-1", "--dry-run"}).code, 0);
  EXPECT_EQ(everything(), before);
}

}  // namespace test
