// Who may search for what.
#include "searchd/fleet.hpp"
#include "searchd/searchd_process.hpp"

namespace searchd_tests {
namespace {

class SearchdAccess : public Fleet {
 protected:
  void SetUp() override {
    Fleet::SetUp();
    set(node("a"), "password", "secret");
    commit();
  }
};

std::string search_as(Client &client, const std::string &members, const std::string &object = "nodes") {
  const std::string reply = client.ask(R"({"method":"search",)" + members + R"("data":{"object":")" + object +
                                       R"(","conditions":{"and":[]}}})");
  const std::size_t id = reply.find(R"("id":")");
  return id == std::string::npos ? reply : reply.substr(id + 6, 32);
}

std::string get_as(Client &client, const std::string &members, const std::string &id) {
  return client.ask(R"({"method":"get",)" + members + R"("data":{"id":")" + id +
                    R"(","offset":0,"limit":0}})");
}

constexpr char kAlice[] = R"("secctxt":"alice","verb":0,)";
constexpr char kBob[] = R"("secctxt":"bob","verb":0,)";
constexpr char kFound[] = R"({"result":true,"data":{"count":1,"items":["nodes-1"]}})";
constexpr char kNone[] = R"({"result":false,"error":"there is no such result, or no longer"})";

TEST_F(SearchdAccess, AResultBelongsToTheContextThatSearched) {
  Searchd searchd(store_path(), socket_path());
  Client client(searchd.socket()), other(searchd.socket());
  const std::string alices = search_as(client, kAlice), own = search_as(client, "");
  EXPECT_EQ(get_as(other, kAlice, alices), kFound);
  EXPECT_EQ(get_as(client, kBob, alices), kNone);
  EXPECT_EQ(get_as(client, "", alices), kNone);
  EXPECT_EQ(get_as(other, "", own), kFound);
  EXPECT_EQ(get_as(client, kAlice, own), kNone);
}

TEST_F(SearchdAccess, AContextMayOnlyViewNodes) {
  Searchd searchd(store_path(), socket_path());
  Client client(searchd.socket());
  EXPECT_EQ(search_as(client, kAlice, "tags_node_tags"),
            R"({"result":false,"error":"the security context may not search this object type"})");
  EXPECT_EQ(search_as(client, "", "tags_node_tags").size(), 32U);
  EXPECT_EQ(search_as(client, R"("secctxt":"alice","verb":1,)"),
            R"({"result":false,"error":"a security context can only view: verb 0"})");
  EXPECT_EQ(search_as(client, R"("secctxt":"","verb":0,)"),
            R"({"result":false,"error":"the security context is empty"})");
  EXPECT_EQ(search_as(client, R"("secctxt":")" + std::string(256, 'x') + R"(","verb":0,)"),
            R"({"result":false,"error":"the security context is too long"})");
  for (const char *half :
       {R"("secctxt":"alice",)", R"("verb":0,)", R"("secctxt":7,"verb":0,)", R"("secctxt":null,)"})
    EXPECT_EQ(search_as(client, half),
              R"({"result":false,"error":"\"secctxt\", a string, and \"verb\", an integer, come together"})");
}

TEST_F(SearchdAccess, KeysOfSecretsAreNeitherSearchedNorTold) {
  Searchd searchd(store_path(), socket_path());
  Client client(searchd.socket());
  for (const char *key :
       {"password", "ssh.password", "package_password", "private_key", "auth.ldap.bindPassword"})
    EXPECT_EQ(client.find("nodes", both(equal("name", "a"), equal(key, "secret"))),
              R"({"result":false,"error":"this key cannot be searched"})");
  EXPECT_EQ(client.ask(R"({"method":"get_fields","data":{"object":"nodes"}})"),
            R"({"result":true,"data":{"fields":["name"]}})");
}

}  // namespace
}  // namespace searchd_tests
