#include <twobject.h>

#include "harness.hpp"

namespace test {

class TwctlPort : public twctl_test {
 protected:
  void SetUp() override {
    init();
    run_json({"node", "enroll", "--product", "cisco2900", "--name", "lab-1", "--address", "10.0.0.7",
              "--connection", "ssh", "--username", "root", "--password-file", password()});
    run_json({"node", "enroll", "--product", "tarnwell", "--name", "rack-1"});
  }
  std::string password() {
    write_text(path("password"), "only-for-nodes\n");
    return path("password");
  }
  json port(const std::string &node, const std::string &reference) {
    return run_json({"port", "show", node, reference});
  }
};

TEST_F(TwctlPort, APortIsAddedWithItsFields) {
  json added = run_json({"port", "add", "lab-1", "5", "label=router", "mode=consoleServer",
                         "connection_method=ssh", "remote_port=3005", "line_id=tty5", "baud=9600",
                         "parity=none", "data_bits=8", "stop_bits=1"});
  EXPECT_EQ(added.keys(), "id name dry_run revision change_count");
  EXPECT_EQ(added["name"].text(), "router");
  json shown = port("lab-1", "5");
  EXPECT_EQ(shown["id"].text(), added["id"].text());
  EXPECT_EQ(shown["node_id"].text(), "nodes-1");
  EXPECT_EQ(shown["port"].text(), "5");
  EXPECT_EQ(shown["label"].text(), "router");
  EXPECT_EQ(shown["mode"].text(), "consoleServer");
  EXPECT_EQ(shown["connection_method"].text(), "ssh");
  EXPECT_EQ(shown["remote_port"].number(), 3005);
  EXPECT_EQ(shown["line_id"].text(), "tty5");
  EXPECT_EQ(shown["baud"].text(), "9600");
  EXPECT_EQ(shown["parity"].text(), "none");
  EXPECT_EQ(shown["data_bits"].text(), "8");
  EXPECT_EQ(shown["stop_bits"].text(), "1");
}

TEST_F(TwctlPort, APortIsFoundByItsIdLabelOrStoreId) {
  std::string id = run_json({"port", "add", "lab-1", "5", "label=router"})["id"].text();
  run_json({"port", "add", "lab-1", "router", "label=6"});
  EXPECT_EQ(port("lab-1", "router")["label"].text(), "6");  // the node's own ID comes first
  EXPECT_EQ(port("lab-1", "6")["port"].text(), "router");
  EXPECT_EQ(port("nodes-1", id)["port"].text(), "5");
  outcome missing = run({"port", "show", "lab-1", "7"});
  EXPECT_EQ(missing.code, 3);
  EXPECT_NE(missing.err.find("twctl port list nodes-1"), std::string::npos) << missing.err;
  EXPECT_EQ(run({"port", "show", "rack-1", "5"}).code, 3);
  EXPECT_EQ(run({"port", "show", "rack-9", "5"}).code, 3);
}

TEST_F(TwctlPort, PortsOfOneNodeOrOfAllAreListed) {
  run_json({"port", "add", "lab-1", "1", "label=router", "remote_port=3001", "baud=9600"});
  run_json({"port", "add", "lab-1", "2"});
  run_json({"port", "add", "rack-1", "1"});
  json all = run_json({"port", "list"})["ports"];
  ASSERT_EQ(all.size(), 3u);
  EXPECT_EQ(all[0].keys(), "id node port label mode connection_method remote_port baud");
  EXPECT_EQ(all[0]["node"].text(), "lab-1");
  EXPECT_EQ(all[0]["label"].text(), "router");
  EXPECT_EQ(all[0]["remote_port"].number(), 3001);
  EXPECT_EQ(all[0]["baud"].text(), "9600");
  EXPECT_TRUE(all[1]["remote_port"].is_null());
  EXPECT_EQ(all[2]["node"].text(), "rack-1");
  EXPECT_EQ(run_json({"port", "list", "rack-1"})["ports"].size(), 1u);
  EXPECT_EQ(run({"port", "list", "rack-9"}).code, 3);
}

TEST_F(TwctlPort, SetChangesWhatItNamesAndAnEmptyValueClears) {
  run_json({"port", "add", "lab-1", "5", "label=router", "remote_port=3005", "baud=9600", "parity=none"});
  run_json({"port", "set", "lab-1", "5", "label=switch", "remote_port="});
  json shown = port("lab-1", "5");
  EXPECT_EQ(shown["label"].text(), "switch");
  EXPECT_TRUE(shown["remote_port"].is_null());
  EXPECT_EQ(shown["baud"].text(), "9600");
  EXPECT_EQ(shown["parity"].text(), "none");
  run_json({"port", "set", "lab-1", "5", "label="});
  EXPECT_TRUE(port("lab-1", "5")["label"].is_null());
}

TEST_F(TwctlPort, DisablingAPortOfANodeWithCredentialsDropsHowItIsReached) {
  run_json({"port", "add", "lab-1", "5", "connection_method=ssh", "remote_port=3005"});
  run_json({"port", "set", "lab-1", "5", "mode=disabled"});
  json shown = port("lab-1", "5");
  EXPECT_EQ(shown["mode"].text(), "disabled");
  EXPECT_TRUE(shown["connection_method"].is_null());
  EXPECT_TRUE(shown["remote_port"].is_null());
}

TEST_F(TwctlPort, WhatCannotBeKeptIsRefusedAndNothingIsWritten) {
  run_json({"port", "add", "lab-1", "5"});
  run_json({"port", "add", "lab-1", "6"});
  std::string before = everything();
  EXPECT_EQ(run({"port", "set", "lab-1", "5", "parity=none"}).code, 5);
  EXPECT_EQ(run({"port", "set", "lab-1", "5", "remote_port=70000"}).code, 5);
  EXPECT_EQ(run({"port", "set", "lab-1", "5", "remote_port=0"}).code, 5);
  EXPECT_EQ(run({"port", "set", "lab-1", "5", "port="}).code, 5);
  EXPECT_EQ(run({"port", "set", "lab-1", "5", "port=6"}).code, 4);
  EXPECT_EQ(run({"port", "set", "lab-1", "5", "flow_control=none"}).code, 2);
  EXPECT_EQ(run({"port", "set", "lab-1", "5"}).code, 2);
  EXPECT_EQ(run({"port", "add", "lab-1", "5"}).code, 4);
  EXPECT_EQ(run({"port", "add", "lab-1", "7", "port=8"}).code, 2);
  EXPECT_EQ(run({"port", "add", "lab-1", "7", "mode=disabled"}).code, 5);
  EXPECT_EQ(run({"port", "add", "rack-9", "7"}).code, 3);
  EXPECT_EQ(everything(), before);
}

TEST_F(TwctlPort, ADryRunShowsTheChangesAndWritesNothing) {
  run_json({"port", "add", "lab-1", "5", "label=router"});
  std::string before = everything();
  outcome dry = run({"port", "set", "lab-1", "5", "label=switch", "--dry-run"});
  EXPECT_EQ(dry.code, 0);
  EXPECT_NE(dry.out.find("switch"), std::string::npos) << dry.out;
  EXPECT_NE(dry.out.find("nothing was written"), std::string::npos) << dry.out;
  json added = run_json({"port", "add", "rack-1", "1", "--dry-run"});
  EXPECT_TRUE(added["dry_run"].is_true());
  EXPECT_TRUE(added["revision"].is_null());
  EXPECT_EQ(everything(), before);
}

TEST_F(TwctlPort, PasswordsOfPortsAreNotShown) {
  std::string id = run_json({"port", "add", "lab-1", "5"})["id"].text();
  change_store(store_path(), [&](cfg *store) {
    cfg_elem *modes = cfg_new_map(store), *sdt = cfg_new_map(store);
    ASSERT_TRUE(cfg_add_mapelem(store, cfg_get_by_id(store, id.c_str()), "modeSettings", modes));
    ASSERT_TRUE(cfg_add_mapelem(store, modes, "sdtServer", sdt));
    ASSERT_TRUE(cfg_map_set_string(store, sdt, "username", "operator"));
    ASSERT_TRUE(cfg_map_set_string(store, sdt, "password", "kept-to-itself"));
  });
  outcome shown = run({"port", "show", "lab-1", "5", "-o", "json"});
  EXPECT_EQ(json(shown.out)["sdt_username"].text(), "operator");
  EXPECT_TRUE(json(shown.out)["sdt_password_set"].is_true());
  EXPECT_EQ((shown.out + shown.err).find("kept-to-itself"), std::string::npos);
}

}  // namespace test
