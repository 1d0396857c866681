#include <set>
#include <sstream>

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

TEST_F(TwctlCompletion, TheNounsAndVerbsAreThoseOfTheProgram) {
  std::vector<arguments> nouns = {{}};
  for (const std::string &noun : parts_of({}).nouns) nouns.push_back({noun});
  for (size_t i = 0; i < nouns.size(); i++) {
    const arguments noun = nouns[i];
    const parts below = parts_of(noun);
    std::set<std::string> expected(below.verbs.begin(), below.verbs.end());
    expected.insert(below.nouns.begin(), below.nouns.end());
    if (expected.empty()) continue;  // "init" and "search" have no verbs
    if (!noun.empty())
      for (const std::string &deeper : below.nouns) nouns.push_back({noun[0], deeper});
    arguments asked = noun;
    asked.emplace_back();
    std::istringstream words(offers(asked));
    std::set<std::string> offered;
    for (std::string word; words >> word;)
      if (!word.starts_with("-")) offered.insert(word);
    EXPECT_EQ(offered, expected) << words_of(noun);
  }
}

TEST_F(TwctlCompletion, EveryOptionOfEveryVerbIsOffered) {
  for (const arguments &verb : all_commands()) {
    arguments help_of = verb, options_of = verb;
    help_of.push_back("--help");
    options_of.push_back("--");
    const std::string help = run(help_of).out;
    const std::string offered = " " + offers(options_of) + " ";
    for (size_t at = help.find("\n  "); at != std::string::npos; at = help.find("\n  ", at + 1)) {
      size_t start = help.find("--", at), end = help.find_first_of(" ,\n=", start);
      if (start == std::string::npos || start > help.find('\n', at + 1) || help[at + 3] != '-') continue;
      const std::string option = help.substr(start, end - start);
      EXPECT_NE(offered.find(" " + option + " "), std::string::npos) << words_of(verb) << " " << option;
    }
  }
}

/// An option with a value must not make the completion take the value for a noun, a verb or an argument.
TEST_F(TwctlCompletion, TheValueOfEveryOptionIsPassedOver) {
  for (const arguments &verb : all_commands()) {
    arguments help_of = verb;
    help_of.push_back("--help");
    const std::string help = run(help_of).out;
    for (size_t at = help.find("\n  --"); at != std::string::npos; at = help.find("\n  --", at + 1)) {
      const size_t end = help.find_first_of(" \n=", at + 3);
      const std::string option = help.substr(at + 3, end - at - 3), kind = help.substr(end + 1, 4);
      if (kind != "TEXT" && kind != "INT:" && kind != "INT " && kind != "UINT") continue;
      arguments plain = verb, with_value = {option, "value"};
      plain.emplace_back();
      if (words_of(verb) == "bundle token") continue;  // its --remove takes no value, that of 'node tag' does
      with_value.insert(with_value.begin(), verb.begin(), verb.end());
      with_value.emplace_back();
      EXPECT_EQ(offers(with_value), offers(plain)) << words_of(verb) << " " << option;
    }
  }
}

}  // namespace test
