#include <fcntl.h>
#include <gtest/gtest.h>
#include <twlog.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <regex>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

namespace {

// Takes stderr for the length of a test.
class Stderr {
 public:
  Stderr() : before_(dup(STDERR_FILENO)) {
    if (pipe(ends_) != 0 || dup2(ends_[1], STDERR_FILENO) < 0) abort();
    close(ends_[1]);
    fcntl(ends_[0], F_SETPIPE_SZ, 1 << 20);
  }
  ~Stderr() {
    restore();
    close(ends_[0]);
  }
  void restore() {
    if (before_ < 0) return;
    dup2(before_, STDERR_FILENO);
    close(before_);
    before_ = -1;
  }
  // All that was printed; stderr is the old one again.
  std::string text() {
    restore();
    std::string all;
    char chunk[4096];
    for (ssize_t length; (length = read(ends_[0], chunk, sizeof chunk)) > 0;)
      all.append(chunk, static_cast<std::size_t>(length));
    return all;
  }

 private:
  int before_;
  int ends_[2];
};

struct Received {
  std::string file, function, message;
  int line, priority;
};

void collect(void *context, const char *file, const char *function, int line, int priority,
             const char *message) {
  static_cast<std::vector<Received> *>(context)->push_back({file, function, message, line, priority});
}

// A sink for the length of a test.
class Sink {
 public:
  Sink() { EXPECT_EQ(twlog_set_sink(collect, &lines), 1); }
  ~Sink() { EXPECT_EQ(twlog_set_sink(nullptr, nullptr), 1); }
  std::vector<Received> lines;
};

void log_all_priorities() {
  for (int priority = -1; priority <= 8; ++priority)
    twlog_log_prio_codepos("f", "g", 1, priority, "%d", priority);
}

std::string shown_priorities(const std::string &text) {
  std::string result;
  std::istringstream lines(text);
  for (std::string line; std::getline(lines, line);) result += line.substr(line.rfind(' ') + 1) + " ";
  return result;
}

class Log : public testing::Test {
 protected:
  void SetUp() override { twlog_set_max_priority(6); }
};

}  // namespace

TEST_F(Log, PrintsOneLineToStderr) {
  Stderr output;
  twlog_log_prio_codepos("src/certificate", "build_csr", 77, 3, "Failed to %s: %d", "sign", 5);
  EXPECT_EQ(output.text(), std::string(program_invocation_short_name) + "[" + std::to_string(getpid()) +
                               "] error src/certificate:77 build_csr: Failed to sign: 5\n");
}

TEST_F(Log, DropsLineBreaksAtTheEndOfAMessage) {
  Sink sink;
  twlog_log_prio_codepos("f", "g", 1, 3, "Could not get it: %s\n", "a\nb");
  twlog_log_prio_codepos("f", "g", 1, 3, "\r\n\n");
  ASSERT_EQ(sink.lines.size(), 2u);
  EXPECT_EQ(sink.lines[0].message, "Could not get it: a\nb");
  EXPECT_EQ(sink.lines[1].message, "");
}

TEST_F(Log, KeepsErrno) {
  Stderr output;
  errno = ENOENT;
  const char *format = "%m (%d)";  // not ISO C, so not as a literal
  twlog_log_prio_codepos("f", "g", 1, 3, format, 7);
  EXPECT_EQ(errno, ENOENT);
  EXPECT_NE(output.text().find(strerror(ENOENT)), std::string::npos);
}

TEST_F(Log, NullTextsReadAsEmptyAndANullFormatLogsNothing) {
  Sink sink;
  const char *no_format = nullptr;
  twlog_log_prio_codepos(nullptr, nullptr, 0, 3, "%s", "m");
  twlog_log_prio_codepos("f", "g", 0, 3, no_format, 0);
  ASSERT_EQ(sink.lines.size(), 1u);
  EXPECT_EQ(sink.lines[0].file, "");
  EXPECT_EQ(sink.lines[0].function, "");
}

TEST_F(Log, CutsALongMessageBetweenCharacters) {
  Sink sink;
  const std::string fits(TWLOG_MESSAGE_MAX, 'x');
  twlog_log_prio_codepos("f", "g", 1, 3, "%s", fits.c_str());
  twlog_log_prio_codepos("f", "g", 1, 3, "%sx", fits.c_str());
  std::string wide = "x";
  while (wide.size() < 8000) wide += "ü";
  twlog_log_prio_codepos("f", "g", 1, 3, "%s", wide.c_str());
  ASSERT_EQ(sink.lines.size(), 3u);
  EXPECT_EQ(sink.lines[0].message, fits);
  EXPECT_EQ(sink.lines[1].message, fits.substr(3) + "...");
  EXPECT_EQ(sink.lines[2].message, wide.substr(0, 3997) + "...");
  twlog_log_prio_codepos("f", "g", 1, 3, "%s", ("x" + wide).c_str());
  EXPECT_EQ(sink.lines[3].message, ("x" + wide).substr(0, 3996) + "...");
}

TEST_F(Log, AMessageThatCannotBeFormattedIsSaidSo) {
  Sink sink;
  const wchar_t impossible[] = {static_cast<wchar_t>(0x7fffffff), 0};
  twlog_log_prio_codepos("f", "g", 1, 3, "%ls", impossible);
  ASSERT_EQ(sink.lines.size(), 1u);
  EXPECT_EQ(sink.lines[0].message, "(a message that cannot be formatted)");
}

TEST_F(Log, DebugLinesAreNotPrintedUnlessAskedFor) {
  {
    Stderr output;
    log_all_priorities();
    EXPECT_EQ(shown_priorities(output.text()), "-1 0 1 2 3 4 5 6 ");
  }
  {
    Stderr output;
    twlog_set_max_priority(7);
    log_all_priorities();
    EXPECT_EQ(shown_priorities(output.text()), "-1 0 1 2 3 4 5 6 7 8 ");
  }
}

TEST_F(Log, ShowsLinesUpToTheHighestPriorityNumber) {
  for (const auto &[highest, shown] : {std::pair{3, "-1 0 1 2 3 "}, {0, "-1 0 "}, {-1, ""}, {-100, ""}}) {
    Stderr output;
    twlog_set_max_priority(highest);
    log_all_priorities();
    EXPECT_EQ(shown_priorities(output.text()), shown) << highest;
  }
}

TEST_F(Log, TheSinkGetsAllPrioritiesAndStderrNothing) {
  Stderr output;
  {
    Sink sink;
    twlog_set_max_priority(-1);
    log_all_priorities();
    ASSERT_EQ(sink.lines.size(), 10u);
    const int expected[] = {0, 0, 1, 2, 3, 4, 5, 6, 7, 7};
    for (std::size_t i = 0; i < 10; ++i) EXPECT_EQ(sink.lines[i].priority, expected[i]);
    twlog_log_prio_codepos("src/x", "fn", 12, 4, "m");
    EXPECT_EQ(sink.lines[10].file, "src/x");
    EXPECT_EQ(sink.lines[10].function, "fn");
    EXPECT_EQ(sink.lines[10].line, 12);
  }
  twlog_set_max_priority(6);
  twlog_log_prio_codepos("f", "g", 1, 6, "back");
  EXPECT_EQ(shown_priorities(output.text()), "back ");
}

TEST_F(Log, ASinkThatLogsOrReplacesItselfIsRefused) {
  static int calls, replaced;
  calls = replaced = 0;
  const auto before = twlog_dropped();
  ASSERT_EQ(twlog_set_sink(
                [](void *, const char *, const char *, int, int, const char *) {
                  ++calls;
                  replaced += twlog_set_sink(nullptr, nullptr);
                  twlog_log_prio_codepos("f", "g", 1, 3, "again");
                },
                nullptr),
            1);
  twlog_log_prio_codepos("f", "g", 1, 3, "once");
  EXPECT_EQ(calls, 1);
  EXPECT_EQ(replaced, 0);
  EXPECT_EQ(twlog_dropped(), before + 1);
  EXPECT_EQ(twlog_set_sink(nullptr, nullptr), 1);
}

TEST_F(Log, AReplacedSinkIsNotRunningAnyMore) {
  struct State {
    std::atomic<bool> inside{false}, leave{false}, left{false};
  } state;
  ASSERT_EQ(twlog_set_sink(
                [](void *context, const char *, const char *, int, int, const char *) {
                  auto &shared = *static_cast<State *>(context);
                  shared.inside = true;
                  while (!shared.leave) std::this_thread::yield();
                  shared.left = true;
                },
                &state),
            1);
  std::thread logger([] { twlog_log_prio_codepos("f", "g", 1, 3, "m"); });
  while (!state.inside) std::this_thread::yield();
  std::atomic<bool> started{false};
  bool left_before_return = false;
  std::thread replacer([&] {
    started = true;
    twlog_set_sink(nullptr, nullptr);
    left_before_return = state.left;
  });
  while (!started) std::this_thread::yield();
  usleep(10'000);
  state.leave = true;
  replacer.join();
  logger.join();
  EXPECT_TRUE(left_before_return);
}

TEST_F(Log, AFullStderrDropsAndCountsLines) {
  int ends[2];
  ASSERT_EQ(pipe2(ends, O_NONBLOCK), 0);
  while (write(ends[1], "#", 1) == 1) continue;
  ASSERT_EQ(fcntl(ends[1], F_SETFL, 0), 0);
  const int before = dup(STDERR_FILENO);
  dup2(ends[1], STDERR_FILENO);
  const auto dropped_before = twlog_dropped();
  for (int i = 0; i < 3; ++i) twlog_log_prio_codepos("f", "g", 1, 3, "lost");
  twlog_log_prio_codepos("f", "g", 1, 7, "not asked for, so not lost");
  dup2(before, STDERR_FILENO);
  EXPECT_EQ(twlog_dropped(), dropped_before + 3);
  for (const int fd : {before, ends[0], ends[1]}) close(fd);
}

TEST_F(Log, AClosedStderrIsNoHarm) {
  const int before = dup(STDERR_FILENO);
  close(STDERR_FILENO);
  errno = ENOENT;
  twlog_log_prio_codepos("f", "g", 1, 3, "m");
  EXPECT_EQ(errno, ENOENT) << "kept when the output fails as well";
  const int taken = open("/dev/null", O_RDWR | O_CLOEXEC);
  EXPECT_EQ(taken, STDERR_FILENO) << "nothing else may have taken the number";
  dup2(before, STDERR_FILENO);
  close(before);
}

TEST_F(Log, LinesOfManyThreadsStayWhole) {
  constexpr int kThreads = 4, kLines = 200;
  Stderr output;
  const auto dropped_before = twlog_dropped();
  std::vector<std::thread> threads;
  for (int thread = 0; thread < kThreads; ++thread)
    threads.emplace_back([thread] {
      for (int i = 0; i < kLines; ++i) twlog_log_prio_codepos("f", "g", thread, 5, "<%d>", i);
    });
  for (std::thread &thread : threads) thread.join();
  const auto dropped = twlog_dropped() - dropped_before;
  const std::regex whole(R"(\S+\[\d+\] notice f:\d g: <\d+>)");
  std::istringstream lines(output.text());
  std::uint64_t count = 0;
  for (std::string line; std::getline(lines, line); ++count)
    EXPECT_TRUE(std::regex_match(line, whole)) << line;
  EXPECT_EQ(count + dropped, static_cast<std::uint64_t>(kThreads * kLines));
  EXPECT_GT(count, 0u);
}

TEST_F(Log, ASinkIsCalledByOneThreadAtATime) {
  constexpr int kThreads = 4, kLines = 200;
  Sink sink;  // its vector has no lock of its own
  std::vector<std::thread> threads;
  for (int thread = 0; thread < kThreads; ++thread)
    threads.emplace_back([] {
      for (int i = 0; i < kLines; ++i) twlog_log_prio_codepos("f", "g", i, 7, "m");
    });
  for (std::thread &thread : threads) thread.join();
  EXPECT_EQ(sink.lines.size(), static_cast<std::size_t>(kThreads * kLines));
}

// The variable is read when the library is loaded, so each case is a new process.
class LogLevel : public testing::TestWithParam<std::pair<const char *, const char *>> {
 protected:
  void SetUp() override { GTEST_FLAG_SET(death_test_style, "threadsafe"); }
  void TearDown() override { unsetenv("TWLOG_LEVEL"); }
};

TEST_P(LogLevel, ComesFromTheEnvironment) {
  const auto &[level, shown] = GetParam();
  setenv("TWLOG_LEVEL", level, 1);
  EXPECT_EXIT(
      {
        Stderr output;
        log_all_priorities();
        const std::string text = shown_priorities(output.text());
        fprintf(stderr, "<%s>", text.c_str());
        _exit(0);
      },
      testing::ExitedWithCode(0), "<" + std::string(shown) + ">");
}

INSTANTIATE_TEST_SUITE_P(Levels, LogLevel,
                         testing::Values(std::pair{"7", "-1 0 1 2 3 4 5 6 7 8 "}, std::pair{"0", "-1 0 "},
                                         std::pair{"4", "-1 0 1 2 3 4 "}, std::pair{"", "-1 0 1 2 3 4 5 6 "},
                                         std::pair{"8", "-1 0 1 2 3 4 5 6 "},
                                         std::pair{"77", "-1 0 1 2 3 4 5 6 "},
                                         std::pair{"debug", "-1 0 1 2 3 4 5 6 "}));
