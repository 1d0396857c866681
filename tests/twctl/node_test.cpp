#include <twobject.h>

#include "harness.hpp"

namespace test {

class TwctlNode : public twctl_test {
 protected:
  void SetUp() override { init(); }

  std::string enroll(arguments args, const std::string &password = "") {
    args.insert(args.begin(), {"node", "enroll"});
    if (!password.empty()) args.insert(args.end(), {"--password-file", "-"});
    outcome result = run(args, password);
    EXPECT_EQ(result.code, 0) << result.err;
    return result.out.substr(0, result.out.find('\n'));
  }
  json show(const std::string &reference) { return run_json({"node", "show", reference}); }
  long long revision() { return run_json({"store", "status"})["revision"].number(); }
};

TEST_F(TwctlNode, EnrollPrintsTheNewIdAlone) {
  outcome result = run({"node", "enroll", "--product", "tarnwell", "--name", "rack-1"});
  EXPECT_EQ(result.code, 0) << result.err;
  EXPECT_EQ(result.out, "nodes-1\n");
}

TEST_F(TwctlNode, ATarnwellNodeGetsItsDisplayNameInOneCommit) {
  EXPECT_EQ(
      enroll({"--product", "tarnwell", "--name", "rack-1", "--serial", "S1", "--description", "by the door"}),
      "nodes-1");
  EXPECT_EQ(revision(), 2);
  json node = show("nodes-1");
  EXPECT_EQ(node["name"].text(), "rack-1");
  EXPECT_EQ(node["status"].text(), "Pending");
  EXPECT_EQ(node["serial_number"].text(), "S1");
  EXPECT_EQ(node["description"].text(), "by the door");
  EXPECT_TRUE(node["approved"].is_false());
  EXPECT_EQ(node["ssh_port"].number(), 22);
}

TEST_F(TwctlNode, ATarnwellNodeWithoutNameIsNamedAfterItsId) {
  EXPECT_EQ(enroll({"--product", "tarnwell", "--approve"}), "nodes-1");
  json node = show("nodes-1");
  EXPECT_EQ(node["name"].text(), "nodes-1");
  EXPECT_TRUE(node["approved"].is_true());
}

TEST_F(TwctlNode, ACredentialNodeKeepsItsAddressAndCredentials) {
  std::string id =
      enroll({"--product", "acs8000", "--name", "a", "--address", "10.0.0.5", "--username", "admin"},
             "pa55-word-x\n");
  json node = show(id);
  EXPECT_EQ(node["address"].text(), "10.0.0.5");
  EXPECT_EQ(node["username"].text(), "admin");
  EXPECT_TRUE(node["password_set"].is_true());
  open_store store = open_for_reading(store_path());
  cfg_node *record = cfg_get_node_by_name(store.get(), "a");
  EXPECT_STREQ(cfg_node_get_password(record), "pa55-word-x");
  cfg_node_free(record);
}

TEST_F(TwctlNode, AGenericNodeKeepsItsPortLayout) {
  std::string id =
      enroll({"--product", "generic", "--name", "g", "--address", "hub.example.net", "--connection", "telnet",
              "--port-count", "3", "--base-port", "7001", "--port-label", "router", "--port-label", "pdu"});
  json node = show(id);
  EXPECT_EQ(node["connection_method"].text(), "telnet");
  EXPECT_EQ(node["port_count"].number(), 3);
  EXPECT_EQ(node["base_port"].number(), 7001);
  EXPECT_EQ(node["port_labels"].text(), "router;pdu;Port 3");
}

TEST_F(TwctlNode, APasswordIsNeitherPrintedNorTakenFromTheCommandLine) {
  arguments args = {"node",      "enroll",   "--product",  "cisco2900", "--name",          "c",
                    "--address", "10.0.0.6", "--username", "admin",     "--password-file", path("secret")};
  write_text(path("secret"), "xyzzy-secret\n");
  arguments dry = args;
  dry.push_back("--dry-run");
  for (const outcome &result :
       {run(dry), run(args), run({"node", "show", "c"}), run({"-o", "json", "node", "show", "c"}),
        run({"node", "set", "c", "address=10.0.0.9"}), run({"node", "list", "-o", "json"}),
        run({"store", "log", "2"})}) {
    EXPECT_EQ(result.code, 0) << result.err;
    EXPECT_EQ((result.out + result.err).find("xyzzy-secret"), std::string::npos) << result.out << result.err;
  }
  EXPECT_EQ(run({"node", "set", "c", "password=other"}).code, 2);
  EXPECT_EQ(run({"node", "enroll", "--product", "acs6000", "--name", "d", "--password", "x"}).code, 2);
}

TEST_F(TwctlNode, APackagePasswordIsInNoOutput) {
  outcome dry = run({"-o", "json", "node", "enroll", "--product", "tarnwell", "--name", "r", "--dry-run"});
  outcome done = run({"node", "enroll", "--product", "tarnwell", "--name", "r"});
  EXPECT_NE(dry.out.find("(hidden)"), std::string::npos);
  open_store store = open_for_reading(store_path());
  cfg_enrollment *record = cfg_enrollment_get_by_id(store.get(), "nodes-1");
  ASSERT_NE(record, nullptr);
  std::string password = cfg_enrollment_get_package_password(record);
  cfg_enrollment_free(record);
  ASSERT_EQ(password.size(), 64u);
  EXPECT_EQ((done.out + done.err + run({"node", "show", "r"}).out).find(password), std::string::npos);
  EXPECT_NE(done.err.find("package_password: (hidden)"), std::string::npos) << done.err;
}

TEST_F(TwctlNode, WithoutTerminalAndPasswordFileTheEnrolmentIsRefused) {
  outcome result = run({"node", "enroll", "--product", "acs6000", "--name", "a", "--address", "10.0.0.5",
                        "--username", "admin"});
  EXPECT_EQ(result.code, 2);
  EXPECT_NE(result.err.find("--password-file"), std::string::npos) << result.err;
}

TEST_F(TwctlNode, AnEnrolmentThatCannotWorkNamesEveryProblem) {
  std::string before = everything();
  outcome result = run({"node", "enroll", "--product", "generic", "--address", "10.0.0.300", "--connection",
                        "telnet", "--port-count", "0", "--base-port", "70000", "--mac-address", "xx"});
  EXPECT_EQ(result.code, 5);
  for (const char *part : {"name is missing", "'10.0.0.300'", "port count", "base port", "MAC address"})
    EXPECT_NE(result.err.find(part), std::string::npos) << part << "\n" << result.err;
  EXPECT_EQ(run({"node", "enroll", "--product", "acs9000", "--name", "x"}).code, 5);
  EXPECT_EQ(everything(), before);
}

TEST_F(TwctlNode, ASecondNodeWithTheSameNameOrSerialIsAConflict) {
  enroll({"--product", "tarnwell", "--name", "rack-1", "--serial", "S1"});
  EXPECT_EQ(run({"node", "enroll", "--product", "tarnwell", "--name", "rack-1"}).code, 4);
  EXPECT_EQ(run({"node", "enroll", "--product", "tarnwell", "--name", "rack-2", "--serial", "S1"}).code, 4);
  EXPECT_EQ(run_json({"node", "list"})["nodes"].size(), 1u);
}

TEST_F(TwctlNode, ANodeIsFoundByIdNameSerialNumberAndVpnAddress) {
  enroll({"--product", "tarnwell", "--name", "rack-1", "--serial", "S1"});
  ASSERT_EQ(run({"node", "set", "rack-1", "fhvpn_address=192.168.128.2"}).code, 0);
  for (const char *reference : {"nodes-1", "rack-1", "S1", "192.168.128.2"})
    EXPECT_EQ(show(reference)["id"].text(), "nodes-1") << reference;
  for (const char *reference : {"nodes-2", "rack", "", "users-1"})
    EXPECT_EQ(run({"node", "show", reference}).code, 3) << reference;
}

TEST_F(TwctlNode, ListFiltersByProductStatusApprovalAndText) {
  enroll({"--product", "tarnwell", "--name", "berlin-1", "--approve"});
  enroll({"--product", "tarnwell", "--name", "oslo-1"});
  enroll({"--product", "acs8000", "--name", "berlin-2", "--address", "10.0.0.5", "--username", "u"}, "p\n");
  auto names = [&](arguments filter) {
    filter.insert(filter.begin(), {"node", "list"});
    json nodes = run_json(filter)["nodes"];
    std::string result;
    for (int i = 0; nodes[i].valid(); i++) result += nodes[i]["name"].text() + " ";
    return result;
  };
  EXPECT_EQ(names({}), "berlin-1 oslo-1 berlin-2 ");
  EXPECT_EQ(names({"--product", "tarnwell"}), "berlin-1 oslo-1 ");
  EXPECT_EQ(names({"--approved", "yes"}), "berlin-1 ");
  EXPECT_EQ(names({"--approved", "no"}), "oslo-1 berlin-2 ");
  EXPECT_EQ(names({"--match", "BERLIN"}), "berlin-1 berlin-2 ");
  EXPECT_EQ(names({"--match", "BERLIN", "--product", "acs8000"}), "berlin-2 ");
  EXPECT_EQ(names({"--status", "pending", "--limit", "2"}), "berlin-1 oslo-1 ");
  EXPECT_EQ(names({"--status", "Enrolled"}), "");
}

TEST_F(TwctlNode, ListShowsTheColumnsThatAreAskedFor) {
  enroll({"--product", "tarnwell", "--name", "berlin-1"});
  EXPECT_EQ(run({"node", "list", "--columns", "name,id"}).out, "NAME     ID\nberlin-1 nodes-1\n");
  EXPECT_EQ(run_json({"node", "list"})["nodes"][0].keys(),
            "id name product status approved address serial_number model");
  EXPECT_EQ(run({"node", "list", "--columns", "name,password"}).code, 2);
}

TEST_F(TwctlNode, AnEmptyListIsAnEmptyJsonArray) {
  EXPECT_EQ(run({"node", "list", "-o", "json"}).out, "{\n  \"nodes\": []\n}\n");
}

TEST_F(TwctlNode, SetChangesSeveralFieldsInOneCommitAndClearsWithAnEmptyValue) {
  enroll({"--product", "tarnwell", "--name", "rack-1", "--serial", "S1", "--model", "M"});
  outcome result =
      run({"node", "set", "rack-1", "name=rack-2", "serial_number=S=2", "model=", "ssh_port=2200"});
  EXPECT_EQ(result.code, 0) << result.err;
  EXPECT_EQ(revision(), 3);
  json node = show("nodes-1");
  EXPECT_EQ(node["name"].text(), "rack-2");
  EXPECT_EQ(node["serial_number"].text(), "S=2");
  EXPECT_TRUE(node["model"].is_null());
  EXPECT_EQ(node["ssh_port"].number(), 2200);
}

TEST_F(TwctlNode, ChangingHowANodeIsReachedKeepsItsApprovalAndPassword) {
  enroll({"--product", "acs8000", "--name", "a", "--address", "10.0.0.5", "--username", "u", "--approve"},
         "first\n");
  ASSERT_EQ(run({"node", "set", "a", "address=10.0.0.6", "username=root"}).code, 0);
  json node = show("a");
  EXPECT_TRUE(node["approved"].is_true());
  EXPECT_EQ(node["address"].text(), "10.0.0.6");
  EXPECT_EQ(node["username"].text(), "root");
  auto password = [&] {
    open_store store = open_for_reading(store_path());
    cfg_node *record = cfg_get_node_by_name(store.get(), "a");
    std::string text = cfg_node_get_password(record);
    cfg_node_free(record);
    return text;
  };
  EXPECT_EQ(password(), "first");
  ASSERT_EQ(run({"node", "set", "a", "--password-file", "-"}, "second\n").code, 0);
  EXPECT_EQ(password(), "second");
}

TEST_F(TwctlNode, SetRefusesFieldsThatTheProductKindDoesNotHave) {
  enroll({"--product", "tarnwell", "--name", "t"});
  enroll({"--product", "acs8000", "--name", "a", "--address", "10.0.0.5", "--username", "u"}, "p\n");
  std::string before = everything();
  for (const arguments &args :
       {arguments{"t", "address=10.0.0.1"}, arguments{"a", "description=x"}, arguments{"a", "ssh_port=22"},
        arguments{"a", "connection_method=ssh"}, arguments{"t", "name="}, arguments{"t", "approved=perhaps"},
        arguments{"t", "ssh_port=0"}})
    EXPECT_EQ(run({"node", "set", args[0], args[1]}).code, 5) << args[1];
  for (const char *wrong : {"colour=red", "name"})
    EXPECT_EQ(run({"node", "set", "t", wrong}).code, 2) << wrong;
  EXPECT_EQ(run({"node", "set", "t"}).code, 2);
  EXPECT_EQ(everything(), before);
}

TEST_F(TwctlNode, SettingWhatIsSetAlreadyMakesNoCommit) {
  enroll({"--product", "tarnwell", "--name", "t", "--model", "M"});
  outcome result = run({"node", "set", "t", "model=M"});
  EXPECT_EQ(result.code, 0);
  EXPECT_EQ(result.out, "nodes-1 is like that already.\n");
  EXPECT_EQ(revision(), 2);
}

TEST_F(TwctlNode, DeleteNeedsAConfirmation) {
  enroll({"--product", "tarnwell", "--name", "t"});
  outcome unasked = run({"node", "delete", "t"});
  EXPECT_EQ(unasked.code, 2);
  EXPECT_NE(unasked.err.find("--yes"), std::string::npos);
  EXPECT_EQ(run({"node", "delete", "t", "--dry-run"}).code, 0);
  EXPECT_EQ(show("t")["id"].text(), "nodes-1");
  EXPECT_EQ(run({"node", "delete", "t", "--yes"}).out, "Deleted nodes-1 (t).\n");
  EXPECT_EQ(run({"node", "show", "t"}).code, 3);
  EXPECT_EQ(enroll({"--product", "tarnwell", "--name", "t"}), "nodes-2") << "an ID is never given out again";
}

TEST_F(TwctlNode, ANameWithControlCharactersInTheStoreDoesNotReachTheTerminal) {
  {
    cfg *store = cfg_open(store_path().c_str(), 0, nullptr);
    cfg_elem *node = cfg_new_map(store);
    cfg_map_set_string(store, node, "name", "evil\x1b[31m");
    cfg_map_set_string(store, node, "status", "Pending");
    ASSERT_TRUE(cfg_append_future_listelem(store, cfg_get_by_path(store, "nodes"), node));
    ASSERT_TRUE(cfg_commit(store, nullptr));
    cfg_close(store);
  }
  for (const outcome &result :
       {run({"node", "list"}), run({"node", "show", "nodes-1"}), run({"node", "set", "nodes-1", "name=x"})}) {
    EXPECT_EQ(result.code, 0) << result.err;
    EXPECT_EQ((result.out + result.err).find('\x1b'), std::string::npos);
    EXPECT_NE((result.out + result.err).find("evil\\x1b"), std::string::npos) << result.out << result.err;
  }
}

}  // namespace test
