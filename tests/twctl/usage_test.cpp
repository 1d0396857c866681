#include <sstream>

#include "harness.hpp"

namespace test {

using TwctlUsage = twctl_test;

TEST_F(TwctlUsage, EveryVerbHasHelpWithAnExampleThatIsOneOfItsOwn) {
  const std::vector<arguments> commands = all_commands();
  EXPECT_GE(commands.size(), 110u);
  for (arguments command : commands) {
    const std::string name = words_of(command);
    command.push_back("--help");
    outcome result = run(command);
    EXPECT_EQ(result.code, 0) << name;
    const size_t examples = result.out.find("\nExamples:\n");
    ASSERT_NE(examples, std::string::npos) << name;
    EXPECT_NE(result.out.find("  twctl " + name, examples), std::string::npos) << result.out;
    EXPECT_EQ(result.out.find(" \n"), std::string::npos) << name << ": a blank at the end of a line";
  }
}

TEST_F(TwctlUsage, ANounsHelpNamesItsVerbsAndLeadsToTheirs) {
  for (const arguments &noun : {arguments{"node"}, arguments{"tag", "value"}}) {
    arguments asked = noun;
    asked.push_back("--help");
    const outcome result = run(asked);
    EXPECT_NE(result.out.find("Usage: twctl " + words_of(noun) + " [OPTIONS] VERB\n"), std::string::npos)
        << result.out;
    EXPECT_NE(result.out.find("'twctl " + words_of(noun) + " VERB --help'"), std::string::npos) << result.out;
    EXPECT_EQ(result.out.find("Exit codes"), std::string::npos)
        << "what all nouns share stands in 'twctl --help'";
  }
}

TEST_F(TwctlUsage, AWrongWordIsNamedAndWhatCouldStandThereToo) {
  struct {
    arguments args;
    std::string what, hint;
  } const cases[] = {
      {{}, "'twctl' is not complete", "one of init, system, "},
      {{"nod"}, "'twctl' does not know 'nod'", "one of init, system, "},
      {{"acl", "create", "x"},
       "'twctl acl' does not know 'create'",
       "one of list, add, rename, delete; see "},
      {{"net"},
       "'twctl net' is not complete",
       "one of physif, conn, endpoint, address; see 'twctl net --help'"},
      {{"node", "list", "extra"}, "'twctl node list' takes no 'extra'", "see 'twctl node list --help'"},
      {{"node", "--colour"}, "'twctl node' has no option '--colour'", "see 'twctl node --help'"},
      {{"node", "list", "--limit", "x"},
       "--limit: Value x not in range 1 to 2147483647",
       "see 'twctl node list"},
      {{"-o", "xml", "node", "list"}, "--output: 'xml' is neither table nor json", "--help"},
      {{"node", "show"}, "node is required", "see 'twctl node show --help'"},
  };
  for (const auto &one : cases) {
    const outcome result = run(one.args);
    EXPECT_EQ(result.code, 2) << words_of(one.args);
    EXPECT_NE(result.err.find("twctl: " + one.what + "\n"), std::string::npos) << result.err;
    EXPECT_NE(result.err.find(one.hint), std::string::npos) << result.err;
  }
}

TEST_F(TwctlUsage, TheReadmeListsEveryNounWithItsVerbs) {
  const std::string page = read_text(std::string(SOURCE_DIRECTORY) + "/tools/twctl/README.md");
  for (const arguments &command : all_commands()) {
    std::istringstream lines(page);
    std::string row;
    const auto is_of_noun = [&] {
      const std::string nouns = row.substr(0, row.find(" | "));
      return row.starts_with("| `") && nouns.find("`" + command[0] + "`") != std::string::npos;
    };
    while (std::getline(lines, row) && !is_of_noun()) {
    }
    ASSERT_TRUE(is_of_noun()) << words_of(command);
    for (size_t i = 1; i < command.size(); i++)
      EXPECT_TRUE(row.find("`" + command[i] + "`") != std::string::npos ||
                  row.find(" " + command[i] + "`") != std::string::npos ||
                  row.find("`" + command[i] + " ") != std::string::npos)
          << words_of(command);
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
