#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <sys/un.h>
#include <twconfig/transport.h>
#include <unistd.h>

#include <atomic>
#include <csignal>
#include <cstdlib>
#include <string>
#include <string_view>
#include <thread>

namespace {

using namespace std::string_literals;

// Two connected sockets; what is still open at the end is closed.
class Transport : public testing::Test {
 protected:
  void SetUp() override { ASSERT_EQ(socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends_), 0); }
  void TearDown() override {
    close_end(0);
    close_end(1);
  }
  void close_end(int which) {
    if (ends_[which] >= 0) close(ends_[which]);
    ends_[which] = -1;
  }
  int here() const { return ends_[0]; }
  int peer() const { return ends_[1]; }

  void limit(int fd, int option, int milliseconds) {
    const timeval time{milliseconds / 1000, milliseconds % 1000 * 1000};
    ASSERT_EQ(setsockopt(fd, SOL_SOCKET, option, &time, sizeof time), 0);
  }
  void write_raw(std::string_view bytes) {
    ASSERT_EQ(send(peer(), bytes.data(), bytes.size(), MSG_NOSIGNAL), static_cast<ssize_t>(bytes.size()));
  }
  // What waits to be read at the peer, without waiting for more.
  std::string raw_at_peer() {
    std::string bytes(65536, '\0');
    const ssize_t length = recv(peer(), bytes.data(), bytes.size(), MSG_DONTWAIT);
    bytes.resize(length > 0 ? static_cast<std::size_t>(length) : 0);
    return bytes;
  }

 private:
  int ends_[2] = {-1, -1};
};

std::string framed(std::string_view body) {
  std::string message;
  for (int shift = 24; shift >= 0; shift -= 8) message += static_cast<char>(body.size() >> shift & 0xff);
  return message.append(body);
}

// The value as text, released; "NULL" for none.
std::string text(json_t *json) {
  if (!json) return "NULL";
  char *dumped = json_dumps(json, JSON_COMPACT | JSON_ENCODE_ANY);
  json_decref(json);
  std::string result = dumped ? dumped : "";
  free(dumped);
  return result;
}

int send_text(int fd, const char *json) {
  json_t *value = json_loads(json, JSON_DECODE_ANY, nullptr);
  const int result = cfg_send(fd, value);
  json_decref(value);
  return result;
}

json_t *string_of(std::size_t length) {
  const std::string content(length, 'x');
  return json_stringn(content.data(), content.size());
}

constexpr std::size_t kLongest = CFG_TRANSPORT_MAX - 2;  // of a string, whose quotes count

}  // namespace

TEST_F(Transport, AMessageIsItsLengthAndCompactJson) {
  EXPECT_EQ(send_text(here(), R"({"method": "search", "data": [1, "ü"]})"), 1);
  EXPECT_EQ(raw_at_peer(), framed(R"({"method":"search","data":[1,"ü"]})"));
  EXPECT_EQ(send_text(here(), "7"), 1);
  EXPECT_EQ(raw_at_peer(), "\0\0\0\1"s + "7");
}

TEST_F(Transport, CarriesEveryKindOfValue) {
  for (const char *value : {"null", "true", "false", "0", "-9223372036854775808", "1.5", R"("")", R"("a\nb")",
                            "[]", "{}", R"({"a":[{"b":[null]}]})"}) {
    EXPECT_EQ(send_text(here(), value), 1) << value;
    EXPECT_EQ(text(cfg_receive(peer())), value);
  }
}

TEST_F(Transport, StaysInStepOverManyMessagesBothWays) {
  for (int i = 0; i < 100; ++i) {
    EXPECT_EQ(send_text(here(), std::to_string(i).c_str()), 1);
    EXPECT_EQ(send_text(peer(), std::to_string(-i).c_str()), 1);
  }
  for (int i = 0; i < 100; ++i) {
    EXPECT_EQ(text(cfg_receive(peer())), std::to_string(i));
    EXPECT_EQ(text(cfg_receive(here())), std::to_string(-i));
  }
}

TEST_F(Transport, SendingLeavesTheValueToTheCaller) {
  json_t *value = json_pack("[i]", 3);
  EXPECT_EQ(cfg_send(here(), value), 1);
  EXPECT_EQ(value->refcount, 1u);
  EXPECT_EQ(text(value), "[3]");
}

TEST_F(Transport, ANullValueSendsNothing) {
  EXPECT_EQ(cfg_send(here(), nullptr), 0);
  EXPECT_EQ(raw_at_peer(), "");
}

TEST_F(Transport, CarriesAMessageOfTheLargestSize) {
  json_t *sent = string_of(kLongest);
  std::thread sender([&] { EXPECT_EQ(cfg_send(here(), sent), 1); });
  json_t *received = cfg_receive(peer());
  sender.join();
  EXPECT_EQ(json_equal(sent, received), 1);
  json_decref(sent);
  json_decref(received);
}

TEST_F(Transport, AMessageAboveTheLargestSizeSendsNothing) {
  json_t *value = string_of(kLongest + 1);
  EXPECT_EQ(cfg_send(here(), value), 0);
  EXPECT_EQ(raw_at_peer(), "");
  json_decref(value);
}

TEST_F(Transport, NonBlockingSocketsWaitAsBlockingOnesDo) {
  for (const int fd : {here(), peer()}) ASSERT_EQ(fcntl(fd, F_SETFL, fcntl(fd, F_GETFL) | O_NONBLOCK), 0);
  json_t *sent = string_of(4 << 20);
  json_t *received = nullptr;
  std::thread receiver([&] { received = cfg_receive(peer()); });
  EXPECT_EQ(cfg_send(here(), sent), 1);
  receiver.join();
  EXPECT_EQ(json_equal(sent, received), 1);
  json_decref(sent);
  json_decref(received);
}

TEST_F(Transport, RefusesBadLengthsWithoutWaitingForABody) {
  for (const std::string &header : {"\0\0\0\0"s, "\1\0\0\1"s, "\x7f\xff\xff\xff"s, "\xff\xff\xff\xff"s}) {
    write_raw(header);
    EXPECT_EQ(cfg_receive(here()), nullptr);  // the peer is open and silent: waiting would never end
  }
}

TEST_F(Transport, RefusesWhatIsNotStrictJson) {
  for (const std::string &body :
       {" "s, "x"s, "{"s, "[1,]"s, "1 2"s, "{} {}"s, "[] x"s, R"({"a":1,"a":2})"s, "\"\xff\""s,
        R"("\u0000")"s, "[1]\0"s, "\"a\0b\""s, "\xef\xbb\xbf[]"s, "'a'"s, "1e999"s, "NaN"s,
        "99999999999999999999"s, std::string(100'000, '[')}) {
    write_raw(framed(body));
    EXPECT_EQ(text(cfg_receive(here())), "NULL") << body.substr(0, 40);
  }
  write_raw(framed(" [1] "));  // each refused message was taken whole
  EXPECT_EQ(text(cfg_receive(here())), "[1]");
}

TEST_F(Transport, AStreamThatEndsInMidMessageGivesNull) {
  const std::string whole = framed("[1,2,3]");
  for (std::size_t cut = 0; cut < whole.size(); ++cut) {
    int pair[2];
    ASSERT_EQ(socketpair(AF_UNIX, SOCK_STREAM, 0, pair), 0);
    ASSERT_EQ(write(pair[1], whole.data(), cut), static_cast<ssize_t>(cut));
    close(pair[1]);
    EXPECT_EQ(cfg_receive(pair[0]), nullptr) << cut;
    close(pair[0]);
  }
}

TEST_F(Transport, AMessageInSingleBytesArrivesWhole) {
  std::thread writer([&] {
    for (const char byte : framed(R"({"slow":[true]})")) write_raw({&byte, 1});
  });
  EXPECT_EQ(text(cfg_receive(here())), R"({"slow":[true]})");
  writer.join();
}

TEST_F(Transport, ReceivingEndsAtTheTimeOut) {
  limit(here(), SO_RCVTIMEO, 20);
  EXPECT_EQ(cfg_receive(here()), nullptr) << "nothing comes";
  write_raw("\0\0\0\2["s);
  EXPECT_EQ(cfg_receive(here()), nullptr) << "half a message comes";
}

TEST_F(Transport, APeerThatDripsBytesCannotStretchTheTimeOut) {
  limit(here(), SO_RCVTIMEO, 100);
  std::atomic<bool> stop{false};
  std::thread dripper([&] {
    write_raw("\1\0\0\0"s);  // 16 MiB, a byte each millisecond: four hours
    while (!stop) {
      write_raw("[");
      usleep(1000);
    }
  });
  EXPECT_EQ(cfg_receive(here()), nullptr);
  stop = true;
  dripper.join();
}

TEST_F(Transport, APeerThatReadsInDripsCannotStretchTheTimeOut) {
  limit(here(), SO_SNDTIMEO, 100);
  std::atomic<bool> stop{false};
  std::thread reader([&] {
    char byte;
    while (!stop) {
      (void)!recv(peer(), &byte, 1, MSG_DONTWAIT);
      usleep(1000);
    }
  });
  json_t *value = string_of(kLongest);
  EXPECT_EQ(cfg_send(here(), value), 0);
  stop = true;
  reader.join();
  json_decref(value);
}

TEST_F(Transport, SendingEndsAtTheTimeOut) {
  limit(here(), SO_SNDTIMEO, 20);
  json_t *value = string_of(kLongest);
  EXPECT_EQ(cfg_send(here(), value), 0);
  json_decref(value);
}

TEST_F(Transport, AVeryLongTimeOutIsOne) {
  const timeval time{4'000'000'000'000, 0};
  ASSERT_EQ(setsockopt(here(), SOL_SOCKET, SO_RCVTIMEO, &time, sizeof time), 0);
  std::thread writer([&] {
    usleep(20'000);
    write_raw(framed("[]"));
  });
  EXPECT_EQ(text(cfg_receive(here())), "[]");
  writer.join();
}

TEST_F(Transport, APeerThatIsGoneRaisesNoSignal) {
  close_end(1);
  EXPECT_EQ(send_text(here(), "[]"), 0);
  EXPECT_EQ(cfg_receive(here()), nullptr);
}

TEST_F(Transport, SignalsDoNotEndAMessage) {
  static std::atomic<int> signals{0};
  signals = 0;
  struct sigaction action {
  }, before;
  action.sa_handler = [](int) { ++signals; };  // without SA_RESTART
  ASSERT_EQ(sigaction(SIGUSR1, &action, &before), 0);
  const pthread_t receiver = pthread_self();
  std::thread writer([&] {
    const std::string message = framed("[1]");
    for (const char byte : message) {
      for (int i = 0; i < 5; ++i) {
        pthread_kill(receiver, SIGUSR1);
        usleep(500);
      }
      write_raw({&byte, 1});
    }
  });
  EXPECT_EQ(text(cfg_receive(here())), "[1]");
  writer.join();
  EXPECT_GT(signals, 0);
  sigaction(SIGUSR1, &before, nullptr);
}

TEST_F(Transport, AFileIsNotTouched) {
  FILE *file = tmpfile();
  ASSERT_NE(file, nullptr);
  const int fd = fileno(file);
  const std::string content = framed("[1]");
  ASSERT_EQ(write(fd, content.data(), content.size()), static_cast<ssize_t>(content.size()));
  ASSERT_EQ(lseek(fd, 0, SEEK_SET), 0);
  EXPECT_EQ(cfg_receive(fd), nullptr);
  EXPECT_EQ(send_text(fd, "[]"), 0);
  EXPECT_EQ(lseek(fd, 0, SEEK_CUR), 0);
  char read_back[32];
  EXPECT_EQ(std::string(read_back, static_cast<std::size_t>(read(fd, read_back, sizeof read_back))), content);
  fclose(file);
}

TEST_F(Transport, APipeIsNotTouched) {
  int pipe_ends[2];
  ASSERT_EQ(pipe(pipe_ends), 0);
  const std::string content = framed("[1]");
  ASSERT_EQ(write(pipe_ends[1], content.data(), content.size()), static_cast<ssize_t>(content.size()));
  EXPECT_EQ(cfg_receive(pipe_ends[0]), nullptr);
  EXPECT_EQ(send_text(pipe_ends[1], "[]"), 0);
  close(pipe_ends[1]);
  char read_back[32];
  EXPECT_EQ(std::string(read_back, static_cast<std::size_t>(read(pipe_ends[0], read_back, sizeof read_back))),
            content);
  close(pipe_ends[0]);
}

TEST_F(Transport, StandardInputIsNotRead) {
  int pipe_ends[2];
  ASSERT_EQ(pipe(pipe_ends), 0);
  const int before = dup(STDIN_FILENO);
  ASSERT_EQ(dup2(pipe_ends[0], STDIN_FILENO), STDIN_FILENO);
  ASSERT_EQ(write(pipe_ends[1], "\0\0\0\2[]", 6), 6);
  EXPECT_EQ(cfg_receive(0), nullptr);
  EXPECT_EQ(send_text(0, "[]"), 0);
  char read_back[32];
  EXPECT_EQ(read(STDIN_FILENO, read_back, sizeof read_back), 6);
  if (before >= 0) dup2(before, STDIN_FILENO);
  for (const int fd : {before, pipe_ends[0], pipe_ends[1]}) close(fd);
}

TEST_F(Transport, NoDescriptorAtAllFails) {
  const int closed = dup(here());
  close(closed);
  for (const int fd : {-1, closed, 1 << 30}) {
    EXPECT_EQ(cfg_receive(fd), nullptr);
    EXPECT_EQ(send_text(fd, "[]"), 0);
  }
}

TEST_F(Transport, DatagramSocketsAreNotTouched) {
  int pair[2];
  ASSERT_EQ(socketpair(AF_UNIX, SOCK_DGRAM, 0, pair), 0);
  ASSERT_EQ(send(pair[1], "\0\0\0\2[]", 6, 0), 6);
  EXPECT_EQ(cfg_receive(pair[0]), nullptr);
  EXPECT_EQ(send_text(pair[0], "[]"), 0);
  char read_back[32];
  EXPECT_EQ(recv(pair[0], read_back, sizeof read_back, MSG_DONTWAIT), 6);
  EXPECT_EQ(recv(pair[1], read_back, sizeof read_back, MSG_DONTWAIT), -1);
  close(pair[0]);
  close(pair[1]);
}

TEST_F(Transport, AnUnconnectedSocketFailsAtOnce) {
  const int fd = socket(AF_UNIX, SOCK_STREAM, 0);
  EXPECT_EQ(cfg_receive(fd), nullptr);
  EXPECT_EQ(send_text(fd, "[]"), 0);
  sockaddr_un any{AF_UNIX, {}};
  ASSERT_EQ(bind(fd, reinterpret_cast<sockaddr *>(&any), sizeof(sa_family_t)), 0);
  ASSERT_EQ(listen(fd, 1), 0);
  EXPECT_EQ(cfg_receive(fd), nullptr);  // listening, it would never become readable
  close(fd);
}
