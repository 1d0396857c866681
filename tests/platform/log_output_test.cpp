#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <map>
#include <string>

#include "journal.hpp"
#include "line.hpp"

namespace {

using namespace std::string_literals;
using twlog::Line;
using twlog::Outcome;

std::string prefix() {
  return std::string(program_invocation_short_name) + "[" + std::to_string(getpid()) + "] ";
}

std::string printed(const Line &line) { return std::string(twlog::PrintedLine(line).text()); }

Line message(std::string_view text) { return {"src/users", "f", 120, 3, text}; }

std::string after_prefix(std::string_view text) {
  const std::string whole = printed(message(text)), start = prefix() + "error src/users:120 f: ";
  return whole.substr(0, start.size()) == start ? whole.substr(start.size()) : "bad start: " + whole;
}

std::string read_all(int fd) {
  std::string all(1 << 20, '\0');
  const ssize_t length = read(fd, all.data(), all.size());
  all.resize(length > 0 ? static_cast<std::size_t>(length) : 0);
  return all;
}

class Pipe {
 public:
  Pipe() {
    if (pipe(ends_) != 0) abort();
  }
  ~Pipe() {
    close_reader();
    close(ends_[1]);
  }
  int reader() const { return ends_[0]; }
  int writer() const { return ends_[1]; }
  void close_reader() {
    if (ends_[0] >= 0) close(ends_[0]);
    ends_[0] = -1;
  }
  // Leaves the writer blocking, as an ordinary stderr is. Returns how many bytes are in the pipe.
  std::size_t fill() {
    fcntl(writer(), F_SETFL, O_NONBLOCK);
    std::size_t count = 0;
    while (write(writer(), "#", 1) == 1) ++count;
    fcntl(writer(), F_SETFL, 0);
    return count;
  }

 private:
  int ends_[2];
};

// A journal of our own: a datagram socket in a directory that goes with it.
class Journal : public testing::Test {
 protected:
  void SetUp() override {
    const char *base = getenv("TMPDIR");
    directory_ = std::string(base ? base : "/tmp") + "/twlog-XXXXXX";
    ASSERT_NE(mkdtemp(directory_.data()), nullptr);
    path_ = directory_ + "/socket";
    sockaddr_un address{AF_UNIX, {}};
    ASSERT_LT(path_.size(), sizeof address.sun_path);
    path_.copy(address.sun_path, path_.size());
    socket_ = socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    ASSERT_EQ(bind(socket_, reinterpret_cast<sockaddr *>(&address), sizeof address), 0);
  }
  void TearDown() override {
    close(socket_);
    unlink(path_.c_str());
    rmdir(directory_.c_str());
  }
  const char *path() const { return path_.c_str(); }
  void stop() { close(socket_); }

  // The next datagram's fields, in the protocol's form with lengths.
  std::map<std::string, std::string> fields() {
    std::string data(65536, '\0');
    const ssize_t length = recv(socket_, data.data(), data.size(), MSG_DONTWAIT);
    data.resize(length > 0 ? static_cast<std::size_t>(length) : 0);
    std::map<std::string, std::string> result;
    for (std::size_t at = 0; at < data.size();) {
      const std::size_t name_end = data.find('\n', at);
      if (name_end == std::string::npos || name_end + 9 > data.size()) return {{"broken", data}};
      std::size_t size = 0;
      for (std::size_t i = 8; i > 0; --i) size = size << 8 | static_cast<unsigned char>(data[name_end + i]);
      if (name_end + 9 + size >= data.size() || data[name_end + 9 + size] != '\n') return {{"broken", data}};
      result[data.substr(at, name_end - at)] = data.substr(name_end + 9, size);
      at = name_end + 9 + size + 1;
    }
    return result;
  }

 private:
  std::string directory_, path_;
  int socket_ = -1;
};

}  // namespace

TEST(PrintedLine, NamesProgramPriorityAndPosition) {
  EXPECT_EQ(printed({"src/users", "cfg_user_save", 120, 3, "no room"}),
            prefix() + "error src/users:120 cfg_user_save: no room\n");
  const char *const names[] = {"emergency", "alert",  "critical",    "error",
                               "warning",   "notice", "information", "debug"};
  for (int priority = 0; priority < 8; ++priority)
    EXPECT_EQ(printed({"", "", -1, priority, ""}), prefix() + names[priority] + " :-1 : \n");
}

TEST(PrintedLine, IsOneLineWithoutControlCharacters) {
  EXPECT_EQ(after_prefix("a\nb\rc\td\x1b[31m\x7f"s + '\0' + "\x01"), R"(a\nb\x0dc\x09d\x1b[31m\x7f\x00\x01)"
                                                                     "\n");
  EXPECT_EQ(after_prefix("a\xc2\x9b"
                         "31mb\xc2\x80\xc2\x9f"),
            R"(a\x9b31mb\x80\x9f)"
            "\n");
  EXPECT_EQ(printed({"a\nb", "c\nd", 1, 3, "m"}), prefix() + R"(error a\nb:1 c\nd: m)"
                                                             "\n");
}

TEST(PrintedLine, LeavesOtherTextAlone) {
  EXPECT_EQ(after_prefix("ü 漢 \xc2\xa0 100% \\n \xff\xc2"), "ü 漢 \xc2\xa0 100% \\n \xff\xc2\n");
}

TEST(PrintedLine, FitsIntoOnePieceOfAPipe) {
  for (const char fill : {'x', '\n', '\x01'}) {
    for (const std::size_t size : {4000u, 4096u, 8192u, 100'000u}) {
      const std::string line = printed(message(std::string(size, fill)));
      EXPECT_LE(line.size(), 4096u);
      EXPECT_EQ(line.back(), '\n');
      EXPECT_EQ(line.substr(line.size() - 4) == "...\n", size > 4000 || fill != 'x') << size;
    }
  }
  const std::string huge(10'000, 'x');
  EXPECT_LE(printed({huge, huge, 1, 3, huge}).size(), 4096u);
}

TEST(Print, WritesTheLineToAPipeOrFile) {
  Pipe pipe;
  EXPECT_EQ(twlog::print(pipe.writer(), message("m")), Outcome::written);
  EXPECT_EQ(read_all(pipe.reader()), printed(message("m")));
  FILE *file = tmpfile();
  const int fd = fileno(file);
  fcntl(fd, F_SETFD, 0);
  EXPECT_EQ(twlog::print(fd, message("1")), Outcome::written);
  EXPECT_EQ(twlog::print(fd, message("2")), Outcome::written);
  lseek(fd, 0, SEEK_SET);
  EXPECT_EQ(read_all(fd), printed(message("1")) + printed(message("2")));
  fclose(file);
}

TEST(Print, DropsTheLineWhenThePipeIsFull) {
  Pipe pipe;
  const std::size_t filled = pipe.fill();
  EXPECT_EQ(twlog::print(pipe.writer(), message("lost")), Outcome::dropped);  // waiting would never end
  EXPECT_EQ(fcntl(pipe.writer(), F_GETFL) & O_NONBLOCK, 0) << "the flags are everybody's";
  EXPECT_EQ(read_all(pipe.reader()), std::string(filled, '#'));
  EXPECT_EQ(twlog::print(pipe.writer(), message("kept")), Outcome::written);
}

TEST(Print, DropsTheLineWhenNobodyReadsThePipe) {
  Pipe pipe;
  pipe.close_reader();
  EXPECT_EQ(twlog::print(pipe.writer(), message("lost")), Outcome::dropped);  // SIGPIPE would end the test
}

TEST(Print, DropsTheLineWhenTheSocketIsFullOrClosed) {
  int pair[2];
  ASSERT_EQ(socketpair(AF_UNIX, SOCK_STREAM, 0, pair), 0);
  EXPECT_EQ(twlog::print(pair[0], message("m")), Outcome::written);
  EXPECT_EQ(read_all(pair[1]), printed(message("m")));
  while (send(pair[0], "#", 1, MSG_DONTWAIT) == 1) continue;
  EXPECT_EQ(twlog::print(pair[0], message("lost")), Outcome::dropped);
  close(pair[1]);
  EXPECT_EQ(twlog::print(pair[0], message("lost")), Outcome::dropped);
  close(pair[0]);
}

TEST(Print, AFullDeviceDropsTheLine) {
  const int fd = open("/dev/full", O_WRONLY);
  EXPECT_EQ(twlog::print(fd, message("lost")), Outcome::dropped);
  close(fd);
}

TEST(Print, NeverWritesIntoADescriptorThatIsNoStderr) {
  FILE *file = tmpfile();
  const int fd = fileno(file);
  ASSERT_EQ(fcntl(fd, F_SETFD, FD_CLOEXEC), 0);
  EXPECT_EQ(twlog::print(fd, message("m")), Outcome::no_output);
  EXPECT_EQ(lseek(fd, 0, SEEK_END), 0);
  fclose(file);
  EXPECT_EQ(twlog::print(-1, message("m")), Outcome::no_output);
}

TEST_F(Journal, GetsOneDatagramWithAllFields) {
  EXPECT_EQ(twlog::send_to_journal(path(), {"src/users", "cfg_user_save", 120, 3, "first\nsecond"}),
            Outcome::written);
  const std::map<std::string, std::string> expected = {{"PRIORITY", "3"},
                                                       {"SYSLOG_IDENTIFIER", program_invocation_short_name},
                                                       {"MESSAGE", "first\nsecond"},
                                                       {"CODE_LINE", "120"},
                                                       {"CODE_FILE", "src/users"},
                                                       {"CODE_FUNC", "cfg_user_save"}};
  EXPECT_EQ(fields(), expected);
}

TEST_F(Journal, AMessageCannotAddFields) {
  EXPECT_EQ(twlog::send_to_journal(path(), message("x\nPRIORITY=0\n\nCODE_FILE\n")), Outcome::written);
  const auto received = fields();
  EXPECT_EQ(received.at("MESSAGE"), "x\nPRIORITY=0\n\nCODE_FILE\n");
  EXPECT_EQ(received.at("PRIORITY"), "3");
  EXPECT_EQ(received.size(), 6u);
}

TEST_F(Journal, AFieldThatIsTooLongIsLeftOut) {
  const std::string huge(100'000, 'x');
  EXPECT_EQ(twlog::send_to_journal(path(), {huge, huge, 1, 3, "m"}), Outcome::written);
  const auto received = fields();
  EXPECT_EQ(received.at("MESSAGE"), "m");
  EXPECT_EQ(received.count("CODE_FILE"), 0u);
}

TEST_F(Journal, AFullQueueDropsTheLine) {
  Outcome outcome = Outcome::written;
  for (int i = 0; i < 100'000 && outcome == Outcome::written; ++i)
    outcome = twlog::send_to_journal(path(), message("m"));
  EXPECT_EQ(outcome, Outcome::dropped);
}

TEST_F(Journal, WithoutAJournalThereIsNoOutput) {
  EXPECT_EQ(twlog::send_to_journal((path() + "-none"s).c_str(), message("m")), Outcome::no_output);
  EXPECT_EQ(twlog::send_to_journal(std::string(200, 'x').c_str(), message("m")), Outcome::no_output);
  stop();
  EXPECT_EQ(twlog::send_to_journal(path(), message("m")), Outcome::no_output);
}

TEST(JournalStream, IsTheDescriptorThatTheVariableNames) {
  Pipe pipe, other;
  struct stat status;
  ASSERT_EQ(fstat(pipe.writer(), &status), 0);
  const std::string name = std::to_string(status.st_dev) + ":" + std::to_string(status.st_ino);
  EXPECT_TRUE(twlog::JournalStream(name.c_str()).is(pipe.writer()));
  EXPECT_FALSE(twlog::JournalStream(name.c_str()).is(other.writer()));
  EXPECT_FALSE(twlog::JournalStream(name.c_str()).is(-1));
}

TEST(JournalStream, AVariableWithoutMeaningNamesNothing) {
  Pipe pipe;
  for (const char *variable : {"", ":", "8", "8:", "x:y", "0:0"})
    EXPECT_FALSE(twlog::JournalStream(variable).is(pipe.writer())) << variable;
  EXPECT_FALSE(twlog::JournalStream(nullptr).is(pipe.writer()));
}
