// The socket's path: had, kept, left, and taken from nobody.
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <csignal>
#include <fstream>

#include "searchd/fleet.hpp"
#include "searchd/searchd_process.hpp"

namespace searchd_tests {
namespace {

class SearchdSocket : public Fleet {
 protected:
  bool there() const {
    struct stat found;
    return lstat(socket_path().c_str(), &found) == 0;
  }
};

TEST_F(SearchdSocket, IsForItsUserAloneAndGoneAfterTheEnd) {
  for (const int signal : {SIGTERM, SIGINT}) {
    Searchd searchd(store_path(), socket_path());
    struct stat found;
    ASSERT_EQ(lstat(socket_path().c_str(), &found), 0);
    EXPECT_TRUE(S_ISSOCK(found.st_mode));
    EXPECT_EQ(found.st_mode & 0777, 0600U);
    EXPECT_EQ(searchd.end(signal), 0);
    EXPECT_FALSE(there());
  }
}

TEST_F(SearchdSocket, OfAKilledServerIsReplaced) {
  Searchd killed(store_path(), socket_path());
  EXPECT_EQ(killed.end(SIGKILL), -SIGKILL);
  EXPECT_TRUE(there());
  Searchd searchd(store_path(), socket_path());
  Client client(searchd.socket());
  EXPECT_EQ(client.find("nodes", R"({"and":[]})"), "");
}

TEST_F(SearchdSocket, OfARunningServerIsLeftToIt) {
  Searchd first(store_path(), socket_path());
  Searchd second(store_path(), socket_path());
  EXPECT_FALSE(second.runs());
  EXPECT_EQ(second.wait(), 1);
  Client client(first.socket());
  EXPECT_EQ(client.find("nodes", R"({"and":[]})"), "");
}

TEST_F(SearchdSocket, WhatIsNoSocketIsLeftAlone) {
  std::ofstream(socket_path()) << "content";
  Searchd searchd(store_path(), socket_path());
  EXPECT_EQ(searchd.wait(), 1);
  std::string content;
  std::ifstream(socket_path()) >> content;
  EXPECT_EQ(content, "content");
  ASSERT_EQ(unlink(socket_path().c_str()), 0);
  ASSERT_EQ(symlink("/nowhere", socket_path().c_str()), 0);
  Searchd again(store_path(), socket_path());
  EXPECT_EQ(again.wait(), 1);
  EXPECT_TRUE(there());
}

TEST_F(SearchdSocket, OfAnotherUserIsLeftAlone) {
  if (geteuid() != 0) GTEST_SKIP() << "only root can make another user's socket";
  { Searchd(store_path(), socket_path()).end(SIGKILL); }
  ASSERT_EQ(chown(socket_path().c_str(), 65534, 65534), 0);
  Searchd searchd(store_path(), socket_path());
  EXPECT_EQ(searchd.wait(), 1);
  EXPECT_TRUE(there());
}

TEST_F(SearchdSocket, AnotherUsersClientIsTurnedAwayUnread) {
  if (geteuid() != 0) GTEST_SKIP() << "only root can become another user";
  Searchd searchd(store_path(), socket_path());
  ASSERT_EQ(chmod(socket_path().c_str(), 0666), 0);
  ASSERT_EQ(chmod(socket_path().substr(0, socket_path().rfind('/')).c_str(), 0755), 0);
  ASSERT_EQ(seteuid(65534), 0);
  Client stranger(searchd.socket(), false);
  ASSERT_EQ(seteuid(0), 0);
  EXPECT_TRUE(stranger.closed_by_peer());
  Client client(searchd.socket());
  EXPECT_EQ(client.find("nodes", R"({"and":[]})"), "");
}

TEST_F(SearchdSocket, AServerThatLostItsPathLeavesWhatIsThereNow) {
  Searchd searchd(store_path(), socket_path());
  ASSERT_EQ(unlink(socket_path().c_str()), 0);
  std::ofstream(socket_path()) << "content";
  EXPECT_EQ(searchd.end(SIGTERM), 0);
  EXPECT_TRUE(there());
}

TEST_F(SearchdSocket, WithoutStoreNothingIsServed) {
  Searchd searchd(store_path() + "/none", socket_path());
  EXPECT_EQ(searchd.wait(), 1);
  EXPECT_FALSE(there());
}

}  // namespace
}  // namespace searchd_tests
