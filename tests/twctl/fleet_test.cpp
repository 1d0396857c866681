#include <twobject.h>

#include "harness.hpp"

namespace test {

constexpr const char *header =
    "name,device_role,manufacturer,device_type,serial,asset_tag,site,status,platform,primary_ip4,username,"
    "password,"
    "connection_method,port_count,base_port\n";

class TwctlFleet : public twctl_test {
 protected:
  void SetUp() override { init(); }

  outcome import(const std::string &text, arguments more = {}) {
    arguments args{"fleet", "import", "-"};
    args.insert(args.end(), more.begin(), more.end());
    return run(args, text);
  }
  json nodes() { return run_json({"node", "list"})["nodes"]; }
  /// Imports a text that must be refused and gives the error text; the store must stay as it was.
  std::string refused(const std::string &text) {
    std::string before = everything();
    outcome result = import(text);
    EXPECT_EQ(result.code, 5) << result.out << result.err;
    EXPECT_EQ(result.out, "");
    EXPECT_EQ(everything(), before);
    return result.err;
  }
};

TEST_F(TwctlFleet, TheSampleFilesAreImported) {
  outcome csv = run({"fleet", "import", std::string(SOURCE_DIRECTORY) + "/examples/devices.csv"});
  EXPECT_EQ(csv.code, 0) << csv.err;
  EXPECT_EQ(csv.out, "Imported 6 nodes, skipped 0.\n");
  outcome json_file = run({"fleet", "import", std::string(SOURCE_DIRECTORY) + "/examples/devices.json"});
  EXPECT_EQ(json_file.code, 0) << json_file.err;
  EXPECT_EQ(nodes().size(), 9u);
}

TEST_F(TwctlFleet, AnImportIsOneCommitWithEveryProductKind) {
  outcome made = run_program(std::string(SOURCE_DIRECTORY) + "/examples/make-inventory", {"60"});
  ASSERT_EQ(made.code, 0);
  json result = run_json({"fleet", "import", "-"}, made.out);
  EXPECT_EQ(result["imported"].number(), 60);
  EXPECT_EQ(result["skipped"].number(), 0);
  EXPECT_EQ(result["revision"].number(), 2);
  EXPECT_EQ(result["nodes"].size(), 60u);
  EXPECT_EQ(result["nodes"][0].keys(), "id name product");
  EXPECT_EQ(result["nodes"][0]["id"].text(), "nodes-1");
  for (const char *product : {"tarnwell", "acs6000", "acs8000", "cisco2900", "acs_classic", "generic"})
    EXPECT_EQ(run_json({"node", "list", "--product", product})["nodes"].size(), 10u) << product;
  EXPECT_EQ(run_json({"store", "status"})["revision"].number(), 2);
}

TEST_F(TwctlFleet, ColumnsMayComeInAnyOrderAndSpellingWithUnknownOnesBetween) {
  outcome result = import(
      "Serial Number,Colour,IP Address,NAME,Platform,Username,Password\n"
      "S1,red,10.0.0.5/24,hub-1,ACS-8000,admin,pw\n");
  EXPECT_EQ(result.code, 0) << result.err;
  EXPECT_NE(result.err.find("Colour"), std::string::npos) << "ignored columns are told";
  json node = run_json({"node", "show", "hub-1"});
  EXPECT_EQ(node["product"].text(), "acs8000");
  EXPECT_EQ(node["address"].text(), "10.0.0.5");
  EXPECT_EQ(node["serial_number"].text(), "S1");
}

TEST_F(TwctlFleet, ProductBeatsPlatformAndPlatformBeatsType) {
  outcome result = import(
      "name,product,platform,type,address,username,password\n"
      "a,acs6000,acs8000,2911,10.0.0.1,u,p\n"
      "b,,acs8000,cisco2911,10.0.0.2,u,p\n"
      "c,,some os,cisco 2911,10.0.0.3,u,p\n");
  EXPECT_EQ(result.code, 0) << result.err;
  EXPECT_EQ(nodes()[0]["product"].text(), "acs6000");
  EXPECT_EQ(nodes()[1]["product"].text(), "acs8000");
  EXPECT_EQ(nodes()[2]["product"].text(), "cisco2900");
}

TEST_F(TwctlFleet, ManufacturerAndTypeTogetherNameAProduct) {
  EXPECT_EQ(import("name,manufacturer,type,address,username,password\na,Cisco,2911,10.0.0.1,u,p\n").code, 0);
  EXPECT_EQ(nodes()[0]["product"].text(), "cisco2900");
  EXPECT_EQ(nodes()[0]["model"].text(), "2911");
}

TEST_F(TwctlFleet, QuotedCellsMayHoldCommasQuotesAndLineEnds) {
  std::string text =
      "\xef\xbb\xbfname,platform,description\r\n"
      "\"rack 1, top \"\"left\"\"\",tarnwell,\"plain\"\r\n"
      "\r\n"
      "rack-2,tarnwell,\r\n";
  outcome result = import(text);
  EXPECT_EQ(result.code, 0) << result.err;
  EXPECT_EQ(nodes()[0]["name"].text(), "rack 1, top \"left\"");
  EXPECT_EQ(nodes()[1]["name"].text(), "rack-2");
}

TEST_F(TwctlFleet, EveryBadRowIsReportedWithItsLineAndNothingIsWritten) {
  std::string error = refused(std::string(header) +
                              "ok-1,cs,T,TW,S1,,,active,tarnwell,,,,,,\n"                  // line 2
                              ",cs,T,TW,S2,,,active,tarnwell,,,,,,\n"                      // line 3
                              "b-1,cs,X,Y,S3,,,active,,10.0.0.1,u,p,,,\n"                  // line 4
                              "b-2,cs,X,Y,S4,,,active,acs8000,10.0.0.999,u,p,,,\n"         // line 5
                              "b-3,cs,X,Y,S5,,,active,acs8000,10.0.0.3,u,,,,\n"            // line 6
                              "b-4,cs,X,Y,S6,,,active,generic,10.0.0.4,,,telnet,x,7001\n"  // line 7
                              "b-5,too,short\n"                                            // line 8
                              "\"b-6\"junk,cs,X,Y,S7,,,active,tarnwell,,,,,,\n"            // line 9
                              "ok-1,cs,T,TW,S8,,,active,tarnwell,,,,,,\n"                  // line 10
                              "ok-2,cs,T,TW,S1,,,active,tarnwell,,,,,,\n");                // line 11
  for (const char *part :
       {"line 3: name is missing\n", "line 4: neither product, platform ('') nor type ('Y')",
        "line 5: '10.0.0.999'", "line 6: password is missing\n", "line 7: port count 'x'",
        "line 8: 3 cells where the first line names 15", "line 9: text behind the end of a quoted cell\n",
        "line 10: the name 'ok-1' stands in line 2 already\n",
        "line 11: the serial number 'S1' stands in line 2 already\n"})
    EXPECT_NE(error.find(part), std::string::npos) << part << "\n" << error;
  EXPECT_EQ(error.find("line 2:"), std::string::npos) << error;
}

TEST_F(TwctlFleet, LineNumbersCountLinesInsideQuotes) {
  std::string error =
      refused("name,platform,comments\nrack-1,tarnwell,\"one\ntwo\nthree\"\nrack-2,nothing,\n");
  EXPECT_NE(error.find("line 5: neither"), std::string::npos) << error;
}

TEST_F(TwctlFleet, BadRowsAreReportedAsJson) {
  outcome result = run({"-o", "json", "fleet", "import", "-"}, "name,platform\n,tarnwell\na,unknown\n");
  EXPECT_EQ(result.code, 5);
  json errors = json(result.out)["errors"];
  ASSERT_EQ(errors.size(), 2u) << result.out;
  EXPECT_EQ(errors[0]["line"].number(), 2);
  EXPECT_EQ(errors[0]["message"].text(), "name is missing");
  EXPECT_EQ(errors[1]["line"].number(), 3);
  json error = json(result.err)["error"];
  EXPECT_EQ(error["code"].text(), "invalid_input");
  EXPECT_EQ(error["exit"].number(), 5);
}

TEST_F(TwctlFleet, NamesAndSerialNumbersOfTheStoreAreNotImportedAgain) {
  ASSERT_EQ(import("name,platform,serial\nrack-1,tarnwell,S1\n").code, 0);
  std::string error = refused("name,platform,serial\nrack-1,tarnwell,S2\nrack-2,tarnwell,S1\n");
  EXPECT_NE(error.find("line 2: a node with the name 'rack-1' exists already"), std::string::npos) << error;
  EXPECT_NE(error.find("line 3: a node with the serial number 'S1' exists already"), std::string::npos)
      << error;
}

TEST_F(TwctlFleet, OtherRolesAndDevicesOutOfServiceAreSkipped) {
  outcome result = import(
      "name,role,status,platform\n"
      "a,Console Server,active,tarnwell\n"
      "b,router,active,unknown\n"
      "c,console-server,decommissioning,tarnwell\n",
      {"--role", "console-server"});
  EXPECT_EQ(result.code, 0) << result.err;
  EXPECT_EQ(result.out, "Imported 1 nodes, skipped 2.\n");
}

TEST_F(TwctlFleet, DefaultsApplyWhereARowSaysNothing) {
  write_text(path("secret"), "common-pw\n");
  outcome result = import(
      "name,platform,address,username,password,approved\n"
      "a,acs8000,10.0.0.1,,,\n"
      "b,acs8000,10.0.0.2,own,own-pw,no\n",
      {"--username", "admin", "--password-file", path("secret"), "--approve"});
  ASSERT_EQ(result.code, 0) << result.err;
  open_store store = open_for_reading(store_path());
  cfg_node *a = cfg_get_node_by_name(store.get(), "a"), *b = cfg_get_node_by_name(store.get(), "b");
  EXPECT_STREQ(cfg_node_get_username(a), "admin");
  EXPECT_STREQ(cfg_node_get_password(a), "common-pw");
  EXPECT_EQ(cfg_node_get_approved(a), 1);
  EXPECT_STREQ(cfg_node_get_username(b), "own");
  EXPECT_STREQ(cfg_node_get_password(b), "own-pw");
  EXPECT_EQ(cfg_node_get_approved(b), 0);
  cfg_node_free(a);
  cfg_node_free(b);
}

TEST_F(TwctlFleet, PasswordsOfAFileAreInNoOutput) {
  std::string good = "name,platform,address,username,password\na,acs8000,10.0.0.1,u,hunter2-secret\n";
  std::string bad = good + "a,acs8000,10.0.0.999,u,hunter2-secret\n";
  for (const outcome &result :
       {import(bad), import(good, {"--dry-run"}), import(good, {"-o", "json", "--dry-run"}), import(good)})
    EXPECT_EQ((result.out + result.err).find("hunter2"), std::string::npos) << result.out << result.err;
  EXPECT_EQ(nodes().size(), 1u);
}

TEST_F(TwctlFleet, ADryRunShowsTheNodesAndWritesNothing) {
  std::string before = everything();
  outcome result = import("name,platform\nrack-1,tarnwell\n", {"--dry-run"});
  EXPECT_EQ(result.code, 0);
  EXPECT_NE(result.out.find("+ nodes[new 1].name: \"rack-1\"\n"), std::string::npos) << result.out;
  EXPECT_EQ(everything(), before);
}

TEST_F(TwctlFleet, JsonMayBeAnArrayOrHaveItUnderResults) {
  EXPECT_EQ(import("[{\"name\":\"a\",\"platform\":{\"name\":\"Tarnwell\",\"slug\":\"tarnwell\"}}]").code, 0);
  EXPECT_EQ(
      import("{\"count\":1,\"results\":[{\"name\":\"b\",\"product\":\"generic\",\"address\":\"10.0.0.1\","
             "\"connection_method\":\"telnet\",\"port_count\":2,\"base_port\":7001,\"port_labels\":[\"x\","
             "\"y\"]}]}")
          .code,
      0);
  EXPECT_EQ(run_json({"node", "show", "b"})["port_labels"].text(), "x;y");
}

TEST_F(TwctlFleet, BadJsonEntriesAreReportedByTheirNumber) {
  std::string error =
      refused("[{\"name\":\"a\",\"product\":\"tarnwell\"}, 7, {\"name\":\"b\",\"product\":\"x\"}]");
  EXPECT_NE(error.find("entry 2: not an object"), std::string::npos) << error;
  EXPECT_NE(error.find("entry 3: product 'x' is not known"), std::string::npos) << error;
}

TEST_F(TwctlFleet, FilesThatAreNoInventoryAreRefused) {
  for (const char *text :
       {"", "\n\n", "a,b,c\n1,2,3\n", "[1", "{\"results\":7}", "{}", "name,platform\n\"a,tarnwell\n"})
    EXPECT_EQ(import(text).code, 5) << text;
  EXPECT_EQ(run({"fleet", "import", path("missing.csv")}).code, 3);
  EXPECT_EQ(nodes().size(), 0u);
}

TEST_F(TwctlFleet, ATextThatIsNotUtf8IsRefused) {
  std::string error = refused("name,platform\nrack-\xff,tarnwell\n");
  EXPECT_NE(error.find("line 2: name"), std::string::npos) << error;
}

TEST_F(TwctlFleet, MoreDevicesThanTheLimitAreRefused) {
  std::string text = "name,platform\n";
  for (int i = 0; i < 100'001; i++) text += "r" + std::to_string(i) + ",tarnwell\n";
  EXPECT_NE(refused(text).find("too many rows"), std::string::npos);
}

TEST_F(TwctlFleet, ProgressIsShownOnlyWhenAskedForWithoutATerminal) {
  outcome made = run_program(std::string(SOURCE_DIRECTORY) + "/examples/make-inventory", {"20"});
  EXPECT_EQ(import(made.out, {"--dry-run"}).err.find("Importing"), std::string::npos);
  EXPECT_NE(import(made.out, {"--dry-run", "--progress"}).err.find("Importing: 20/20\n"), std::string::npos);
}

}  // namespace test
