// What only a terminal sees: colours, questions, the password prompt.
#include <pty.h>
#include <sys/wait.h>
#include <termios.h>
#include <twobject.h>
#include <unistd.h>

#include "harness.hpp"

namespace test {

class TwctlOnATerminal : public twctl_test {
 protected:
  void SetUp() override { init(); }

  /// Runs twctl on a terminal of its own; types `answer` once `question` has appeared.
  outcome run_on_terminal(const arguments &args, const std::string &question = "",
                          const std::string &answer = "") {
    arguments all{TWCTL_BINARY};
    all.insert(all.end(), args.begin(), args.end());
    std::vector<char *> argv, envp;
    for (std::string &text : all) argv.push_back(text.data());
    for (std::string &text : environment_) envp.push_back(text.data());
    argv.push_back(nullptr);
    envp.push_back(nullptr);
    int terminal = -1;
    pid_t pid = forkpty(&terminal, nullptr, nullptr, nullptr);
    if (pid == 0) {
      execve(argv[0], argv.data(), envp.data());
      _exit(127);
    }
    outcome result;
    bool answered = question.empty();
    char buffer[4096];
    for (ssize_t count = 0; (count = read(terminal, buffer, sizeof buffer)) > 0;) {
      result.out.append(buffer, static_cast<size_t>(count));
      if (!answered && result.out.find(question) != std::string::npos) {
        answered = true;
        std::string line = answer + "\n";
        EXPECT_EQ(write(terminal, line.data(), line.size()), static_cast<ssize_t>(line.size()));
      }
    }
    termios modes{};
    echo_ = tcgetattr(terminal, &modes) == 0 && (modes.c_lflag & ECHO);
    int status = 0;
    if (waitpid(pid, &status, 0) == pid && WIFEXITED(status)) result.code = WEXITSTATUS(status);
    close(terminal);
    return result;
  }

  bool echo_ = false;  ///< whether the terminal echoed when the last program had ended
};

TEST_F(TwctlOnATerminal, ADiffIsColouredUnlessNoColorIsSet) {
  arguments args{"system", "set", "hostname", "hub", "--dry-run"};
  outcome coloured = run_on_terminal(args);
  EXPECT_EQ(coloured.code, 0);
  EXPECT_NE(coloured.out.find("\x1b[32m+ system.hostname"), std::string::npos) << coloured.out;
  environment_.push_back("NO_COLOR=1");
  outcome plain = run_on_terminal(args);
  EXPECT_EQ(plain.out.find('\x1b'), std::string::npos) << plain.out;
  EXPECT_NE(plain.out.find("+ system.hostname"), std::string::npos);
}

TEST_F(TwctlOnATerminal, OutputThatIsNoTerminalHasNoColour) {
  EXPECT_EQ(run({"system", "set", "hostname", "hub", "--dry-run"}).out.find('\x1b'), std::string::npos);
}

TEST_F(TwctlOnATerminal, APasswordIsAskedForWithoutEcho) {
  outcome result = run_on_terminal({"node", "enroll", "--product", "acs8000", "--name", "a", "--address",
                                    "10.0.0.5", "--username", "admin"},
                                   "Password of admin on 10.0.0.5: ", "typed-secret");
  EXPECT_EQ(result.code, 0) << result.out;
  EXPECT_EQ(result.out.find("typed-secret"), std::string::npos) << result.out;
  open_store store = open_for_reading(store_path());
  cfg_node *node = cfg_get_node_by_name(store.get(), "a");
  EXPECT_STREQ(cfg_node_get_password(node), "typed-secret");
  cfg_node_free(node);
}

TEST_F(TwctlOnATerminal, AnInterruptAtThePasswordPromptGivesTheEchoBackAndWritesNothing) {
  outcome result = run_on_terminal({"node", "enroll", "--product", "acs8000", "--name", "a", "--address",
                                    "10.0.0.5", "--username", "admin"},
                                   "Password of", "half\x03");
  EXPECT_EQ(result.code, -1) << "ended by the signal";
  EXPECT_TRUE(echo_);
  EXPECT_EQ(run({"node", "show", "a"}).code, 3);
}

TEST_F(TwctlOnATerminal, AQuestionThatIsNotAnsweredWithYesChangesNothing) {
  ASSERT_EQ(run({"node", "enroll", "--product", "tarnwell", "--name", "t"}).code, 0);
  outcome kept = run_on_terminal({"node", "delete", "t"}, "[y/N]", "");
  EXPECT_EQ(kept.code, 1) << kept.out;
  EXPECT_EQ(run({"node", "show", "t"}).code, 0);
  outcome deleted = run_on_terminal({"node", "delete", "t"}, "[y/N]", "y");
  EXPECT_EQ(deleted.code, 0) << deleted.out;
  EXPECT_EQ(run({"node", "show", "t"}).code, 3);
}

}  // namespace test
