// What becomes of descriptors, the process's own ones included, when the service is not as it should be.
#include <dirent.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/un.h>
#include <twobject/search.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <memory>
#include <set>

#include "search_service/jansson_blocks.hpp"
#include "search_service/search_service.hpp"
#include "socket_calls.hpp"

namespace {

using search_service::Scripted;

// The service runs in this process as well: its ends of connections bear the path as their own name, or are
// closed by its thread between being listed and being asked.
bool is_services(int fd) {
  sockaddr_un address{};
  socklen_t size = sizeof address;
  if (getsockname(fd, reinterpret_cast<sockaddr *>(&address), &size) != 0) return errno == EBADF;
  return address.sun_family == AF_UNIX && std::string(search_service::kPath) == address.sun_path;
}

// Those of the clients.
std::set<int> open_descriptors() {
  std::set<int> found;
  DIR *folder = opendir("/proc/self/fd");
  while (const dirent *entry = readdir(folder))
    if (const int fd = std::atoi(entry->d_name); !is_services(fd)) found.insert(fd);
  found.erase(dirfd(folder));
  closedir(folder);
  return found;
}

// The descriptors that were left open since the last look, closed now.
class Descriptors {
 public:
  int left_open() {
    int count = 0;
    for (const int fd : open_descriptors()) {
      if (before_.contains(fd)) continue;
      ++count;
      close(fd);
    }
    return count;
  }

 private:
  std::set<int> before_ = open_descriptors();
};

struct FreeCondition {
  void operator()(cfg_condition *condition) const { cfg_free_conditions(condition); }
};

char *create() {
  const std::unique_ptr<cfg_condition, FreeCondition> any(cfg_new_and_condition());
  return twsearch_create("nodes", any.get(), 0, nullptr);
}

int32_t get_fields() {
  char **array = nullptr;
  int32_t count = 0;
  const int32_t result = twsearch_get_fields("nodes", &array, &count);
  if (result) std::free(static_cast<void *>(array));
  return result;
}

int32_t fetch() {
  char **array = nullptr;
  int32_t count = 0;
  return twsearch_fetch("r", 0, 0, &array, &count, 0, nullptr);
}

constexpr char kEverything[] = R"({"result":true,"data":{"id":"r","count":0,"items":[],"fields":[]}})";

// Puts another descriptor, or none, in the place of standard input.
class StandardInput {
 public:
  explicit StandardInput(int replacement) : own_(fcntl(0, F_DUPFD_CLOEXEC, 3)) {
    if (replacement < 0)
      close(0);
    else
      dup2(replacement, 0);
  }
  ~StandardInput() {
    if (own_ >= 0) {
      dup2(own_, 0);
      close(own_);
    } else {
      close(0);
    }
  }
  StandardInput(const StandardInput &) = delete;
  StandardInput &operator=(const StandardInput &) = delete;

 private:
  int own_;
};

TEST(SearchClientWithoutService, EveryCallFailsInItsOwnWay) {
  const search_service::PathClaim nobody;
  EXPECT_EQ(twsearch_connect(), 0);
  EXPECT_EQ(create(), nullptr);
  EXPECT_EQ(get_fields(), 0);
  EXPECT_EQ(fetch(), -1);
}

TEST(SearchClientWithoutService, EachAttemptLeavesItsDescriptorOpenAndNoOther) {
  const search_service::PathClaim nobody;
  Descriptors descriptors;
  twsearch_connect();
  EXPECT_EQ(descriptors.left_open(), 1);
  create();
  EXPECT_EQ(descriptors.left_open(), 1);
  fetch();
  EXPECT_EQ(descriptors.left_open(), 1);
  get_fields();
  EXPECT_EQ(descriptors.left_open(), 1);
}

TEST(SearchClientWithoutService, TheSocketAtDescriptorZeroIsNeitherWrittenToNorReadNorClosed) {
  const search_service::PathClaim nobody;
  int ends[2];
  ASSERT_EQ(socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends), 0);
  const std::string waiting = std::string("\0\0\0\x21", 4) + R"({"result":true,"data":{"id":"r"}})";
  ASSERT_EQ(write(ends[1], waiting.data(), waiting.size()), static_cast<ssize_t>(waiting.size()));
  {
    const StandardInput input(ends[0]);
    EXPECT_EQ(create(), nullptr);
    EXPECT_EQ(fetch(), -1);
    EXPECT_EQ(get_fields(), 0);
    EXPECT_EQ(twsearch_connect(), 0);
    EXPECT_GE(fcntl(0, F_GETFD), 0);
    std::string still(waiting.size() + 1, '\0');
    still.resize(static_cast<std::size_t>(recv(0, still.data(), still.size(), MSG_DONTWAIT)));
    EXPECT_EQ(still, waiting);
  }
  char byte;
  EXPECT_EQ(recv(ends[1], &byte, 1, MSG_DONTWAIT), -1);
  EXPECT_EQ(errno, EAGAIN);
  close(ends[0]);
  close(ends[1]);
}

TEST(SearchClientWithoutService, AFileAtDescriptorZeroStaysAsItIs) {
  const search_service::PathClaim nobody;
  char name[] = "/tmp/descriptor-XXXXXX";
  const int file = mkstemp(name);
  unlink(name);
  ASSERT_EQ(write(file, "content", 7), 7);
  {
    const StandardInput input(file);
    EXPECT_EQ(create(), nullptr);
    EXPECT_GE(fcntl(0, F_GETFD), 0);
    EXPECT_EQ(lseek(0, 0, SEEK_CUR), 7);
    EXPECT_EQ(lseek(0, 0, SEEK_END), 7);
  }
  close(file);
}

TEST(SearchClientWithoutStandardInput, AConnectionWithNumberZeroCountsAsNoneExceptForCreate) {
  Scripted service(kEverything);
  const StandardInput input(-1);
  EXPECT_EQ(fetch(), -1);
  EXPECT_EQ(close(0), 0) << "the connection that was not used stays open";
  EXPECT_EQ(get_fields(), 0);
  EXPECT_EQ(close(0), 0);
  EXPECT_EQ(twsearch_connect(), 0);
  EXPECT_EQ(close(0), 0);
  char *id = create();
  EXPECT_STREQ(id, "r");
  std::free(id);
  EXPECT_EQ(fcntl(0, F_GETFD), -1) << "the search's connection is closed";
}

TEST(SearchClientWithoutStandardInput, TheAttemptBehindAnUnusedConnectionSucceeds) {
  Scripted service([](const std::string &) { return kEverything; });
  const StandardInput input(-1);
  EXPECT_EQ(fetch(), -1);
  EXPECT_EQ(fetch(), 0);
}

TEST(SearchClient, ARefusedHelloClosesTheConnection) {
  for (const char *refusal : {R"({"result":false})", R"({"result":1})", "{}"}) {
    Scripted service([&](const std::string &) { return refusal; });
    Descriptors descriptors;
    EXPECT_EQ(twsearch_connect(), 0) << refusal;
    EXPECT_EQ(create(), nullptr) << refusal;
    EXPECT_EQ(get_fields(), 0) << refusal;
    EXPECT_EQ(fetch(), -1) << refusal;
    EXPECT_EQ(descriptors.left_open(), 0) << refusal;
    for (const std::string &message : service.messages()) EXPECT_TRUE(search_service::is_hello(message));
  }
}

TEST(SearchClient, AServiceThatHangsUpInsteadOfAnsweringIsAFailureWithoutLostDescriptors) {
  for (const bool greets : {true, false}) {
    Scripted service([&](const std::string &message) -> std::optional<std::string> {
      if (greets && search_service::is_hello(message)) return search_service::kGreeting;
      return std::nullopt;
    });
    Descriptors descriptors;
    EXPECT_EQ(create(), nullptr);
    EXPECT_EQ(get_fields(), 0);
    EXPECT_EQ(fetch(), greets ? -2 : -1);
    EXPECT_EQ(descriptors.left_open(), 0);
  }
}

TEST(SearchClient, AHelloThatIsNeverAnsweredIsAFailureWhenTheTimeIsUp) {
  Scripted service([](const std::string &) { return ""; });
  socket_calls::Watch watch;
  watch.shorter_reply_time = {0, 20'000};
  Descriptors descriptors;
  EXPECT_EQ(create(), nullptr);
  EXPECT_EQ(get_fields(), 0);
  EXPECT_EQ(fetch(), -1);
  EXPECT_EQ(descriptors.left_open(), 0);
  EXPECT_EQ(watch.seen.reply_time.tv_sec, 60);
  EXPECT_EQ(watch.seen.reply_time.tv_usec, 0);
  EXPECT_EQ(watch.seen.reply_times_set, 3);
}

TEST(SearchClient, ARequestThatIsNeverAnsweredIsAFailureWhenTheTimeIsUp) {
  socket_calls::Watch watch;
  // The minute is cut short once the client waits for its greeting: it holds for the request, then.
  Scripted service([&](const std::string &message) -> std::optional<std::string> {
    if (!search_service::is_hello(message)) return "";
    const timeval soon{0, 500'000};
    EXPECT_EQ(setsockopt(watch.seen.fd, SOL_SOCKET, SO_RCVTIMEO, &soon, sizeof soon), 0);
    return search_service::kGreeting;
  });
  Descriptors descriptors;
  EXPECT_EQ(create(), nullptr);
  EXPECT_EQ(get_fields(), 0);
  EXPECT_EQ(fetch(), -2);
  EXPECT_EQ(descriptors.left_open(), 0);
}

TEST(SearchClient, ATimeLimitThatCannotBeSetIsAFailureThatLeavesTheDescriptorOpen) {
  Scripted service(kEverything);
  socket_calls::Watch watch;
  watch.refuse_reply_time = true;
  Descriptors descriptors;
  EXPECT_EQ(twsearch_connect(), 0);
  EXPECT_EQ(descriptors.left_open(), 1);
  EXPECT_EQ(create(), nullptr);
  EXPECT_EQ(descriptors.left_open(), 1);
  EXPECT_EQ(service.messages(), std::vector<std::string>());
}

TEST(SearchClient, AHelloThatCannotBeSentClosesTheConnectionAndLeavesItsOuterObject) {
  const std::size_t unsent = search_service::blocks_of_an_unsent_hello();
  Scripted service(kEverything);
  service.hang_up();
  socket_calls::Watch watch;
  watch.connected = [&] { service.wait_for_ended(service.connections() == 0 ? 1 : service.connections()); };
  Descriptors descriptors;
  const search_service::JanssonBlocks blocks;
  EXPECT_EQ(twsearch_connect(), 0);
  EXPECT_EQ(descriptors.left_open(), 0);
  EXPECT_GT(unsent, 0U);
  EXPECT_EQ(blocks.held(), unsent);
}

}  // namespace
