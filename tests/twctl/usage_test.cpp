#include "harness.hpp"

namespace test {

using TwctlUsage = twctl_test;

const arguments verbs[] = {
    {"init"},
    {"system", "get"},
    {"system", "set"},
    {"node", "enroll"},
    {"node", "list"},
    {"node", "show"},
    {"node", "set"},
    {"node", "delete"},
    {"fleet", "import"},
    {"cert", "issue"},
    {"cert", "show"},
    {"cert", "ca"},
    {"cert", "list"},
    {"cert", "revoke"},
    {"store", "export"},
    {"store", "import"},
    {"store", "verify"},
    {"store", "compact"},
    {"store", "status"},
    {"store", "log"},
};

TEST_F(TwctlUsage, EveryVerbHasHelpWithAnExample) {
  for (arguments verb : verbs) {
    std::string example = "  twctl " + verb[0] + (verb.size() > 1 ? " " + verb[1] : "");
    verb.push_back("--help");
    outcome result = run(verb);
    EXPECT_EQ(result.code, 0) << example;
    EXPECT_NE(result.out.find("Examples:\n" + example), std::string::npos) << result.out;
  }
}

TEST_F(TwctlUsage, WrongUsageIsExitCode2AndPointsToHelp) {
  for (const arguments &args :
       {arguments{}, arguments{"frobnicate"}, arguments{"node"}, arguments{"node", "list", "--colour"},
        arguments{"-o", "xml", "node", "list"}, arguments{"system", "set", "ssh_port"},
        arguments{"node", "list", "--limit", "-1"}, arguments{"node", "list", "extra"}}) {
    outcome result = run(args);
    EXPECT_EQ(result.code, 2) << result.err;
    EXPECT_EQ(result.out, "");
    EXPECT_NE(result.err.find("--help"), std::string::npos) << result.err;
  }
}

TEST_F(TwctlUsage, HelpTellsTheExitCodes) {
  outcome result = run({"--help"});
  EXPECT_EQ(result.code, 0);
  EXPECT_NE(result.out.find("3 not found"), std::string::npos);
}

TEST_F(TwctlUsage, GlobalOptionsMayStandBehindTheVerb) {
  init();
  EXPECT_EQ(run({"-o", "json", "node", "list"}).out, run({"node", "list", "-o", "json"}).out);
  EXPECT_EQ(run({"node", "list", "--store", path("missing")}).code, 3);
}

TEST_F(TwctlUsage, ErrorsAreJsonObjectsWhenJsonIsAskedFor) {
  init();
  outcome result = run({"node", "show", "nobody", "-o", "json"});
  EXPECT_EQ(result.code, 3);
  EXPECT_EQ(result.out, "");
  json error = json(result.err)["error"];
  EXPECT_EQ(error.keys(), "code exit what why hint");
  EXPECT_EQ(error["code"].text(), "not_found");
  EXPECT_EQ(error["exit"].number(), 3);
  EXPECT_EQ(error["what"].text(), "there is no node 'nobody'");
}

TEST_F(TwctlUsage, QuietKeepsTheChangesOffStandardError) {
  init();
  EXPECT_EQ(run({"system", "set", "ssh_port", "22", "--quiet"}).err, "");
  EXPECT_NE(run({"system", "set", "ssh_port", "23"}).err.find("= system.net.ssh_port: 22 -> 23\n"),
            std::string::npos);
}

TEST_F(TwctlUsage, AFullOutputIsAnError) {
  init();
  outcome result = run_program("/bin/sh", {"-c", "exec \"$0\" store status > /dev/full", TWCTL_BINARY});
  EXPECT_EQ(result.code, 6) << result.err;
}

}  // namespace test
