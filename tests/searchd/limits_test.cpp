// What one client can take from the others.
#include <chrono>
#include <thread>

#include "searchd/fleet.hpp"
#include "searchd/searchd_process.hpp"

namespace searchd_tests {
namespace {

class SearchdLimits : public Fleet {};

constexpr char kFields[] = R"({"method":"get_fields","data":{"object":"nodes"}})";
constexpr char kNoFields[] = R"({"result":true,"data":{"fields":[]}})";
constexpr char kTooLong[] = R"({"result":false,"error":"a message of this length is not taken"})";

TEST_F(SearchdLimits, AMessageThatIsTooLongOrEmptyIsAnsweredAndEndsTheConnection) {
  Searchd searchd(store_path(), socket_path(), {"--max-message", "2000"});
  for (const std::string &length :
       {std::string("\0\0\x07\xd1", 4), std::string("\xff\xff\xff\xff", 4), std::string(4, '\0')}) {
    Client client(searchd.socket());
    client.send_bytes(length);
    EXPECT_EQ(client.receive(), kTooLong);
    EXPECT_TRUE(client.closed_by_peer());
  }
  Client client(searchd.socket());
  EXPECT_EQ(client.ask(kFields + std::string(2000 - sizeof kFields + 1, ' ')), kNoFields);
  EXPECT_EQ(client.ask(kFields + std::string(2001 - sizeof kFields + 1, ' ')), kTooLong);
}

TEST_F(SearchdLimits, ASlowClientKeepsNobodyWaitingAndIsLetGoAfterItsTime) {
  Searchd searchd(store_path(), socket_path(), {"--client-time", "1"});
  Client silent(searchd.socket(), false), slow(searchd.socket()), quick(searchd.socket());
  const std::string message = framed(kFields);
  slow.send_bytes(message.substr(0, 10));
  EXPECT_EQ(quick.ask(kFields), kNoFields);
  EXPECT_TRUE(slow.closed_by_peer());
  EXPECT_TRUE(silent.closed_by_peer());
}

TEST_F(SearchdLimits, AClientThatTakesNoRepliesIsLetGo) {
  Searchd searchd(store_path(), socket_path(), {"--client-time", "1"});
  Client greedy(searchd.socket());
  std::string requests;
  for (int i = 0; i < 1000; ++i) requests += framed(kFields);
  for (int i = 0; i < 200; ++i) greedy.send_bytes(requests);  // waits, and ends with the connection
  Client other(searchd.socket());
  EXPECT_EQ(other.ask(kFields), kNoFields);
}

TEST_F(SearchdLimits, ClientsBeyondTheLimitWaitForAPlace) {
  Searchd searchd(store_path(), socket_path(), {"--max-clients", "1", "--client-time", "1"});
  Client idle(searchd.socket());
  Client waiting(searchd.socket());  // is greeted once the idle one has lost its place
  EXPECT_EQ(waiting.ask(kFields), kNoFields);
  EXPECT_TRUE(idle.closed_by_peer());
}

TEST_F(SearchdLimits, TheOldestResultMakesRoom) {
  Searchd searchd(store_path(), socket_path(), {"--max-results", "2"});
  Client client(searchd.socket());
  const auto get = [&](const std::string &id) {
    return client.ask(R"({"method":"get","data":{"id":")" + id + R"(","offset":0,"limit":0}})");
  };
  const std::string first = client.search("nodes", R"({"and":[]})"),
                    second = client.search("nodes", R"({"and":[]})");
  EXPECT_NE(first, second);
  EXPECT_EQ(get(first), R"({"result":true,"data":{"count":0,"items":[]}})");
  const std::string third = client.search("nodes", R"({"and":[]})");
  EXPECT_EQ(get(first), R"({"result":false,"error":"there is no such result, or no longer"})");
  EXPECT_EQ(get(second), R"({"result":true,"data":{"count":0,"items":[]}})");
  EXPECT_EQ(get(third), R"({"result":true,"data":{"count":0,"items":[]}})");
}

TEST_F(SearchdLimits, AnOldResultIsGone) {
  Searchd searchd(store_path(), socket_path(), {"--result-age", "1"});
  Client client(searchd.socket());
  const std::string id = client.search("nodes", R"({"and":[]})");
  std::this_thread::sleep_for(std::chrono::milliseconds(1100));
  EXPECT_EQ(client.ask(R"({"method":"get","data":{"id":")" + id + R"(","offset":0,"limit":0}})"),
            R"({"result":false,"error":"there is no such result, or no longer"})");
}

TEST_F(SearchdLimits, ManyDifferentKeysDoNotChangeWhatIsFound) {
  set(node("a"), "serial_number", "s");
  commit();
  Searchd searchd(store_path(), socket_path());
  Client client(searchd.socket());
  for (int i = 0; i < 300; ++i) {
    EXPECT_EQ(client.find("nodes", equal("key" + std::to_string(i % 150), "s")), "");
    ASSERT_EQ(client.find("nodes", equal("serial_number", "s")), "nodes-1");
  }
}

}  // namespace
}  // namespace searchd_tests
