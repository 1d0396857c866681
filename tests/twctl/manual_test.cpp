#include <sstream>

#include "harness.hpp"

namespace test {

class TwctlManual : public twctl_test {
 protected:
  /// The installed page, with its hyphens as they are typed.
  static std::string page() {
    std::string out = read_text(TWCTL_MANUAL);
    for (size_t at = out.find("\\-"); at != std::string::npos; at = out.find("\\-", at)) out.erase(at, 1);
    return out;
  }

  /// The first words of the lines in a part of a help text.
  static arguments words_of(const std::string &help, const std::string &heading) {
    arguments words;
    std::istringstream lines(help.substr(std::min(help.find("\n" + heading + ":\n"), help.size())));
    std::string line;
    std::getline(lines, line);
    std::getline(lines, line);
    while (std::getline(lines, line) && !line.empty())
      if (line.size() > 2 && line[2] != ' ') words.push_back(line.substr(2, line.find(' ', 2) - 2));
    return words;
  }

  void check(const arguments &command) {
    arguments asked = command;
    asked.push_back("--help");
    const std::string help = run(asked).out;
    std::string heading = ".SS \"twctl";
    for (const std::string &word : command) heading += " " + word;
    const size_t start = text.find(heading + " ");
    EXPECT_NE(start, std::string::npos) << heading;
    if (start == std::string::npos) return;
    const std::string section = text.substr(start, text.find("\n.S", start) - start);
    EXPECT_NE(section.find("\n" + help.substr(0, help.find('\n')) + "\n"), std::string::npos) << heading;
    for (const char *part : {"Options", "Positionals"})
      for (const std::string &word : words_of(help, part))
        EXPECT_TRUE(word == "-h,--help" || section.find("\\fB" + word + "\\fR") != std::string::npos)
            << heading << ": " << word;
  }

  const std::string text = page();
};

TEST_F(TwctlManual, IsWhatTheProgramPrints) { EXPECT_EQ(run({"--man-page"}).out, read_text(TWCTL_MANUAL)); }

TEST_F(TwctlManual, NamesEveryNounAndVerbWithItsOptions) {
  const arguments nouns = parts_of({}).nouns;
  EXPECT_GE(nouns.size(), 24U);
  for (const std::string &noun : nouns)
    EXPECT_NE(text.find(".TP\n\\fB" + noun + "\\fR\n"), std::string::npos) << noun;
  for (const arguments &command : all_commands()) check(command);
}

TEST_F(TwctlManual, NamesTheOptionsOfAllCommandsAndTheExitCodes) {
  for (const std::string &word : words_of(run({"--help"}).out, "Options"))
    EXPECT_NE(text.find("\\fB" + word + "\\fR"), std::string::npos) << word;
  EXPECT_NE(text.find("\nExit codes: 0 done"), std::string::npos);
}

TEST_F(TwctlManual, IsSoundForTroff) {
  if (run_program("sh", {"-c", "command -v man"}).code != 0) GTEST_SKIP() << "man is not installed";
  const outcome shown =
      run_program("sh", {"-c", "LC_ALL=C.UTF-8 man --warnings -l \"$0\" 2>&1 >/dev/null", TWCTL_MANUAL});
  EXPECT_EQ(shown.code, 0);
  EXPECT_EQ(shown.out, "");
}

}  // namespace test
