#include "harness.hpp"

namespace test {

class TwctlCompletion : public twctl_test {
 protected:
  const std::string script = std::string(SOURCE_DIRECTORY) + "/packaging/completion/twctl";

  /// What completing the last of the words offers, joined by spaces.
  std::string offers(const arguments &words) {
    arguments args{
        "--norc", "-c",
        "source \"$0\"; COMP_WORDS=(\"$@\"); COMP_CWORD=$(($# - 1)); _twctl; echo \"${COMPREPLY[*]}\"",
        script, "twctl"};
    args.insert(args.end(), words.begin(), words.end());
    outcome result = run_program("bash", args);
    EXPECT_EQ(result.code, 0) << result.err;
    return result.out.substr(0, result.out.find('\n'));
  }
};

TEST_F(TwctlCompletion, TheScriptIsSoundBash) {
  outcome result = run_program("bash", {"-n", script});
  EXPECT_EQ(result.code, 0) << result.err;
}

TEST_F(TwctlCompletion, NounsVerbsAndValuesAreOffered) {
  EXPECT_EQ(offers({"no"}), "node");
  EXPECT_EQ(offers({"tag", "value", "re"}), "rename");
  EXPECT_EQ(offers({"net", "end"}), "endpoint");
  EXPECT_EQ(offers({"push", "message", "last", "--kind", "e"}), "error");
  EXPECT_EQ(offers({"template", "server", "add", "Logins", "l"}), "ldap");
  EXPECT_EQ(offers({"user", "set", "ada", "--remove-group", "day", "en"}), "enabled=");
  EXPECT_EQ(offers({"auth", "server", "add", "ra"}), "radius radius-accounting");
  EXPECT_EQ(offers({"auth", "server", "list", "--kind", "l"}), "ldap");
  EXPECT_EQ(offers({"https", "c"}), "cert csr");
  EXPECT_EQ(offers({"https", "csr", "new", "--key", "k", "cou"}), "country=");
  EXPECT_EQ(offers({"net", "endpoint", "de"}), "delete");
  EXPECT_EQ(offers({"net", "conn", "set", "default-conn-1", "ad"}), "address=");
  EXPECT_EQ(offers({"template", "create", "T", "--kind", "p"}), "ports");
  EXPECT_EQ(offers({"bundle", "token", "--remove", "--req"}), "--request");
  EXPECT_EQ(offers({"services", "sta"}), "start status");
  EXPECT_EQ(offers({"node", "en"}), "enroll");
  EXPECT_EQ(offers({"port", "set", "rack-1", "3", "pa"}), "parity=");
  EXPECT_EQ(offers({"smart"}), "smartgroup");
  EXPECT_EQ(offers({"--dry-run", "cert", "re"}), "revoke");
  EXPECT_EQ(offers({"node", "enroll", "--product", "acs"}), "acs6000 acs8000 acs_classic");
  EXPECT_EQ(offers({"-o", ""}), "table json");
  EXPECT_EQ(offers({"system", "set", "ssh"}), "ssh_port");
  EXPECT_EQ(offers({"--store", "x", "store", "ver"}), "verify");
  EXPECT_EQ(offers({"node", "set", "rack-1", "ser"}), "serial_number=");
}

TEST_F(TwctlCompletion, EveryOptionOfEveryVerbIsOffered) {
  const std::vector<arguments> verbs = {{"push", "create"},
                                        {"push", "set"},
                                        {"push", "status"},
                                        {"push", "message"},
                                        {"template", "server", "list"},
                                        {"template", "change", "user"},
                                        {"template", "change", "group"},
                                        {"template", "change", "membership"},
                                        {"net", "physif", "list"},
                                        {"net", "physif", "show"},
                                        {"net", "physif", "set"},
                                        {"net", "conn", "list"},
                                        {"net", "conn", "set"},
                                        {"net", "endpoint", "add"},
                                        {"net", "endpoint", "set"},
                                        {"net", "address", "list"},
                                        {"net", "address", "show"},
                                        {"ntp", "set"},
                                        {"ntp", "server", "add"},
                                        {"console-gateway", "set"},
                                        {"bootflag", "add"},
                                        {"bootflag", "set"},
                                        {"https", "cert", "show"},
                                        {"https", "cert", "install"},
                                        {"https", "csr", "new"},
                                        {"https", "csr", "show"},
                                        {"https", "csr", "delete"},

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
                                        {"node", "status"},
                                        {"node", "approve"},
                                        {"node", "tag"},
                                        {"node", "unenroll"},
                                        {"port", "list"},
                                        {"port", "show"},
                                        {"port", "set"},
                                        {"port", "add"},
                                        {"smartgroup", "list"},
                                        {"smartgroup", "show"},
                                        {"smartgroup", "nodes"},
                                        {"smartgroup", "create"},
                                        {"smartgroup", "set"},
                                        {"smartgroup", "delete"},
                                        {"tag", "list"},
                                        {"tag", "show"},
                                        {"tag", "add"},
                                        {"tag", "rename"},
                                        {"tag", "delete"},
                                        {"bundle", "list"},
                                        {"bundle", "show"},
                                        {"bundle", "create"},
                                        {"bundle", "set"},
                                        {"bundle", "delete"},
                                        {"bundle", "nodes"},
                                        {"bundle", "token"},
                                        {"template", "list"},
                                        {"template", "show"},
                                        {"template", "create"},
                                        {"template", "set"},
                                        {"template", "delete"},
                                        {"services", "start"},
                                        {"services", "status"},
                                        {"services", "stop"},
                                        {"store", "compact"},
                                        {"store", "status"},
                                        {"store", "log"}};
  for (const arguments &verb : verbs) {
    arguments help_of = verb, options_of = verb;
    help_of.push_back("--help");
    options_of.push_back("--");
    std::string help = run(help_of).out;
    std::string offered = " " + offers(options_of) + " ";
    for (size_t at = help.find("\n  "); at != std::string::npos; at = help.find("\n  ", at + 1)) {
      size_t start = help.find("--", at), end = help.find_first_of(" ,\n=", start);
      if (start == std::string::npos || start > help.find('\n', at + 1) || help[at + 3] != '-') continue;
      std::string option = help.substr(start, end - start);
      EXPECT_NE(offered.find(" " + option + " "), std::string::npos)
          << verb.front() << " ... " << verb.back() << " " << option;
    }
  }
}

}  // namespace test
