// What searchd answers.
#include "searchd/fleet.hpp"
#include "searchd/searchd_process.hpp"

namespace searchd_tests {
namespace {

constexpr char kAll[] = R"({"and":[]})";

class SearchdProtocol : public Fleet {
 protected:
  // nodes-1 "a" north, nodes-2 "b" south, nodes-3 "a" without tag, nodes-4 "c" north and of the other tag.
  void SetUp() override {
    Fleet::SetUp();
    const std::string bundle = tag("Bundle"), room = tag("Room");
    const std::string north = value(bundle, "north"), south = value(bundle, "south"),
                      cellar = value(room, "north");
    const std::string first = node("a"), second = node("b"), third = node("a"), fourth = node("c");
    give(first, north);
    give(second, south);
    give(fourth, north);
    give(fourth, cellar);
    set(third, "status", "Enrolled");
    set(third, "password", "secret");
    commit();
    north_ = "tags_node_tags-1_values-1";
  }
  std::string north_;
};

TEST_F(SearchdProtocol, WantsHelloBeforeAnythingElse) {
  Searchd searchd(store_path(), socket_path());
  Client client(searchd.socket(), false);
  EXPECT_EQ(client.ask(R"({"method":"get_fields","data":{"object":"nodes"}})"),
            R"({"result":false,"error":"say hello first"})");
  EXPECT_EQ(client.ask(R"({"method":"hello","data":{"client_name":"test-1"}})"),
            R"({"result":true,"data":{}})");
  EXPECT_EQ(client.ask(R"({"method":"get_fields","data":{"object":"nodes"}})"),
            R"({"result":true,"data":{"fields":["name","status","tag:Bundle","tag:Room"]}})");
}

TEST_F(SearchdProtocol, FindsEntriesInListOrder) {
  Searchd searchd(store_path(), socket_path());
  Client client(searchd.socket());
  for (int round = 0; round < 4; ++round) {  // with and without the indexes that come with asking again
    EXPECT_EQ(client.find("nodes", kAll), "nodes-1 nodes-2 nodes-3 nodes-4");
    EXPECT_EQ(client.find("nodes", equal("name", "a")), "nodes-1 nodes-3");
    EXPECT_EQ(client.find("nodes", differs("name", "a")), "nodes-2 nodes-4");
    EXPECT_EQ(client.find("nodes", absent("status")), "nodes-1 nodes-2 nodes-4");
    EXPECT_EQ(client.find("nodes", equal("tag:Bundle", "north")), "nodes-1 nodes-4");
    EXPECT_EQ(client.find("nodes", equal("tag:Room", "north")), "nodes-4");
    EXPECT_EQ(client.find("nodes", differs("tag:Bundle", "north")), "nodes-2 nodes-3");
    EXPECT_EQ(client.find("nodes", absent("tag:Bundle")), "nodes-3");
    EXPECT_EQ(client.find("nodes", absent("tag:Unheard")), "nodes-1 nodes-2 nodes-3 nodes-4");
    EXPECT_EQ(client.find("nodes", equal("tag:Bundle", "nowhere")), "");
    EXPECT_EQ(client.find("nodes", R"({"key":"tag:Bundle","op":"equal","reference":")" + north_ + R"("})"),
              "nodes-1 nodes-4");
    EXPECT_EQ(client.find("nodes", R"({"key":"tag:Room","op":"equal","reference":")" + north_ + R"("})"), "");
    EXPECT_EQ(client.find("nodes", both(equal("tag:Bundle", "north"), equal("name", "a"))), "nodes-1");
    EXPECT_EQ(client.find("nodes", both(equal("tag:Bundle", "north"), differs("name", "a"))), "nodes-4");
    EXPECT_EQ(client.find("nodes", both(absent("tag:Room"), differs("name", "a"))), "nodes-2");
    EXPECT_EQ(client.find("nodes", both(equal("tag:Room", "north"), equal("tag:Bundle", "north"))),
              "nodes-4");
  }
  EXPECT_EQ(client.find("tags_node_tags", equal("name", "Room")), "tags_node_tags-2");
}

TEST_F(SearchdProtocol, GetGivesAPartOfTheResultAndTheCountOfTheWhole) {
  Searchd searchd(store_path(), socket_path());
  Client client(searchd.socket());
  const std::string id = client.search("nodes", kAll);
  const auto get = [&](const char *offset, const char *limit) {
    return client.ask(R"({"method":"get","data":{"id":")" + id + R"(","offset":)" + offset + R"(,"limit":)" +
                      limit + "}}");
  };
  EXPECT_EQ(get("0", "0"),
            R"({"result":true,"data":{"count":4,"items":["nodes-1","nodes-2","nodes-3","nodes-4"]}})");
  EXPECT_EQ(get("1", "2"), R"({"result":true,"data":{"count":4,"items":["nodes-2","nodes-3"]}})");
  EXPECT_EQ(get("3", "0"), R"({"result":true,"data":{"count":4,"items":["nodes-4"]}})");
  EXPECT_EQ(get("3", "9223372036854775807"), R"({"result":true,"data":{"count":4,"items":["nodes-4"]}})");
  EXPECT_EQ(get("9223372036854775807", "1"), R"({"result":true,"data":{"count":4,"items":[]}})");
  EXPECT_EQ(get("-1", "0"), R"({"result":false,"error":"\"offset\" is missing or no number from 0 up"})");
  EXPECT_EQ(get("0", "1.5"), R"({"result":false,"error":"\"limit\" is missing or no number from 0 up"})");
}

TEST_F(SearchdProtocol, ABadRequestIsAnsweredWithAnErrorAndTheConnectionGoesOn) {
  Searchd searchd(store_path(), socket_path());
  Client client(searchd.socket());
  for (
      const char *bad : {
          "nonsense",
          "{",
          "[]",
          "null",
          "{}",
          R"({"method":"search"})",
          R"({"method":7,"data":{}})",
          R"({"method":"search","data":[]})",
          R"({"method":"search","data":{"object":"nodes"}})",
          R"({"method":"search","data":{"conditions":{"and":[]}}})",
          R"({"method":"drop","data":{}})",
          R"({"method":"search","data":{"object":"nodes","conditions":{"key":"name","op":"like","string":"a"}}})",
          R"({"method":"search","data":{"object":"unheard_of","conditions":{"and":[]}}})",
          R"({"method":"search","data":{"object":"unheard_of","conditions":{"key":"tag:Bundle","op":"equal","string":"north"}}})",
          R"({"method":"search","data":{"object":"","conditions":{"and":[]}}})",
          R"({"method":"search","data":{"object":"tags","conditions":{"and":[]}}})",
          R"({"method":"search","method":"get","data":{}})",
          R"({"method":"get","data":{"offset":0,"limit":0}})",
          R"({"method":"get","data":{"id":"unheard_of","offset":0,"limit":0}})",
          R"({"method":"get_fields","data":{}})",
      }) {
    const std::string reply = client.ask(bad);
    EXPECT_TRUE(reply.starts_with(R"({"result":false,"error":")")) << bad << " " << reply;
  }
  EXPECT_EQ(client.find("nodes", equal("name", "b")), "nodes-2");
}

TEST_F(SearchdProtocol, ASearchSeesEveryCommitBeforeIt) {
  Searchd searchd(store_path(), socket_path());
  Client client(searchd.socket());
  const std::string north = equal("tag:Bundle", "north");
  EXPECT_EQ(client.find("nodes", north), "nodes-1 nodes-4");
  give("nodes-3", north_);
  commit();
  EXPECT_EQ(client.find("nodes", north), "nodes-1 nodes-3 nodes-4");
  erase("nodes-1");
  commit();
  EXPECT_EQ(client.find("nodes", north), "nodes-3 nodes-4");
  set(north_, "value", "northern");
  commit();
  EXPECT_EQ(client.find("nodes", north), "");
  EXPECT_EQ(client.find("nodes", equal("tag:Bundle", "northern")), "nodes-3 nodes-4");
  set("tags_node_tags-1", "name", "Site");
  commit();
  EXPECT_EQ(client.find("nodes", equal("tag:Site", "northern")), "nodes-3 nodes-4");
  erase("tags_node_tags-1");
  commit();
  EXPECT_EQ(client.find("nodes", equal("tag:Site", "northern")), "");
  EXPECT_EQ(client.find("nodes", equal("tag:Room", "north")), "nodes-4");
  ASSERT_TRUE(cfg_map_delete_key(store, cfg_root(store), "nodes"));
  commit();
  EXPECT_EQ(client.find("nodes", equal("tag:Room", "north")),
            R"({"result":false,"error":"there is no such object type"})");
  ASSERT_TRUE(cfg_add_mapelem(store, cfg_root(store), "nodes", cfg_new_list(store)));
  commit();
  const std::string again = node("again");
  give(again, "tags_node_tags-2_values-1");
  commit();
  EXPECT_EQ(client.find("nodes", equal("tag:Room", "north")), "nodes-5");
}

TEST_F(SearchdProtocol, AResultStaysAsItWasFound) {
  Searchd searchd(store_path(), socket_path());
  Client client(searchd.socket());
  const std::string id = client.search("nodes", equal("name", "a"));
  erase("nodes-1");
  commit();
  EXPECT_EQ(client.ask(R"({"method":"get","data":{"id":")" + id + R"(","offset":0,"limit":0}})"),
            R"({"result":true,"data":{"count":2,"items":["nodes-1","nodes-3"]}})");
}

TEST_F(SearchdProtocol, RequestsMayBeSentBehindOneAnother) {
  Searchd searchd(store_path(), socket_path());
  Client client(searchd.socket());
  std::string requests;
  for (int i = 0; i < 1000; ++i) requests += framed(R"({"method":"get_fields","data":{"object":"nodes"}})");
  client.send_bytes(requests);
  for (int i = 0; i < 1000; ++i)
    ASSERT_EQ(client.receive(),
              R"({"result":true,"data":{"fields":["name","status","tag:Bundle","tag:Room"]}})");
}

}  // namespace
}  // namespace searchd_tests
