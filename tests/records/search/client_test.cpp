// What the client says on the wire, and what it makes of the answers.
#include <gtest/gtest.h>
#include <sys/un.h>
#include <twconfig/transport.h>
#include <twobject/search.h>
#include <unistd.h>

#include <cstdlib>
#include <memory>

#include "search_service/jansson_blocks.hpp"
#include "search_service/search_service.hpp"
#include "socket_calls.hpp"

namespace {

using search_service::JanssonBlocks;
using search_service::Scripted;
using Messages = std::vector<std::string>;

std::string hello() {
  return R"({"method":"hello","data":{"client_name":"src/search-)" + std::to_string(getpid()) + R"("}})";
}

struct Free {
  void operator()(void *block) const { std::free(block); }
  void operator()(cfg_condition *condition) const { cfg_free_conditions(condition); }
};
using Condition = std::unique_ptr<cfg_condition, Free>;

Condition name_is(const char *value) {
  return Condition(cfg_new_string_condition("name", CFG_OP_EQUAL, value));
}

std::optional<std::string> create(const char *object, cfg_condition *condition, int32_t verb = 0,
                                  const char *secctxt = nullptr) {
  const std::unique_ptr<char, Free> id(twsearch_create(object, condition, verb, secctxt));
  return id ? std::optional<std::string>(id.get()) : std::nullopt;
}

// Takes an array over.
std::vector<std::string> taken(char **array, int32_t count) {
  std::vector<std::string> strings;
  for (int32_t i = 0; i < count; ++i) {
    strings.emplace_back(array[i]);
    std::free(array[i]);
  }
  std::free(static_cast<void *>(array));
  return strings;
}

// Out-parameters that say whether they were written.
struct Outputs {
  char *mark = nullptr;
  char **array = &mark;
  int32_t count = -77;
  bool untouched() const { return array == &mark && count == -77; }
};

// ---- Messages ----

TEST(SearchClient, ConnectingSaysHelloInTheNameOfThisProcessAndNothingElse) {
  Scripted service(search_service::kGreeting);
  const int fd = twsearch_connect();
  ASSERT_GT(fd, 0);
  EXPECT_EQ(service.messages(), Messages({hello()}));
  EXPECT_EQ(close(fd), 0);
}

TEST(SearchClient, ConnectsAStreamSocketToTheWholeZeroedAddress) {
  Scripted service(search_service::kGreeting);
  socket_calls::Watch watch;
  close(twsearch_connect());
  EXPECT_EQ(watch.seen.domain, AF_UNIX);
  EXPECT_EQ(watch.seen.type, SOCK_STREAM | SOCK_CLOEXEC);
  EXPECT_EQ(watch.seen.protocol, 1);
  EXPECT_EQ(watch.seen.address_size, 110U);
  sockaddr_un expected{};
  expected.sun_family = AF_UNIX;
  std::string(search_service::kPath).copy(expected.sun_path, sizeof expected.sun_path);
  EXPECT_EQ(watch.seen.address, std::string(reinterpret_cast<const char *>(&expected), sizeof expected));
}

TEST(SearchClient, AConnectionWaitsAMinuteForAReplyAndHasNoTimeLimitForSending) {
  Scripted service(search_service::kGreeting);
  const int fd = twsearch_connect();
  timeval receiving{}, sending{};
  socklen_t size = sizeof receiving;
  ASSERT_EQ(getsockopt(fd, SOL_SOCKET, SO_RCVTIMEO, &receiving, &size), 0);
  ASSERT_EQ(getsockopt(fd, SOL_SOCKET, SO_SNDTIMEO, &sending, &size), 0);
  EXPECT_EQ(receiving.tv_sec, 60);
  EXPECT_EQ(receiving.tv_usec, 0);
  EXPECT_EQ(sending.tv_sec, 0);
  EXPECT_EQ(sending.tv_usec, 0);
  close(fd);
}

TEST(SearchClient, GetFieldsAsksForAnObjectTypesFields) {
  Scripted service(R"({"result":true,"data":{"fields":["name","tag:Bundle"]}})");
  Outputs out;
  ASSERT_EQ(twsearch_get_fields("nodes", &out.array, &out.count), 1);
  EXPECT_EQ(taken(out.array, out.count), (std::vector<std::string>{"name", "tag:Bundle"}));
  EXPECT_EQ(service.messages(), Messages({hello(), R"({"method":"get_fields","data":{"object":"nodes"}})"}));
}

TEST(SearchClient, CreateSendsTheConditionTreeAndTheObjectType) {
  Scripted service(R"({"result":true,"data":{"id":"result-7"}})");
  const Condition all(cfg_new_and_condition());
  ASSERT_TRUE(cfg_condition_add_child(all.get(), name_is("n\"1").release()));
  ASSERT_TRUE(cfg_condition_add_child(all.get(), cfg_new_untyped_condition("revoke_time", CFG_OP_ABSENT)));
  EXPECT_EQ(create("nodes", all.get()), "result-7");
  EXPECT_EQ(service.messages(),
            Messages({hello(),
                      R"({"method":"search","data":{"conditions":{"and":[)"
                      R"({"key":"name","op":"equal","string":"n\"1"},{"key":"revoke_time","op":"absent"}]},)"
                      R"("object":"nodes"}})"}));
}

TEST(SearchClient, CreateSendsTheSecurityContextWithTheVerb) {
  Scripted service(R"({"result":true,"data":{"id":"r"}})");
  EXPECT_EQ(create("nodes", name_is("n").get(), -3, "alice"), "r");
  EXPECT_EQ(service.messages().back(),
            R"({"method":"search","data":{"conditions":{"key":"name","op":"equal","string":"n"},)"
            R"("object":"nodes"},"secctxt":"alice","verb":-3})");
}

TEST(SearchClient, FetchSendsIdOffsetAndLimitUnchanged) {
  Scripted service(R"({"result":true,"data":{"count":0,"items":[]}})");
  Outputs out;
  EXPECT_EQ(twsearch_fetch("result-7", 5, 20, &out.array, &out.count, 0, nullptr), 0);
  EXPECT_EQ(twsearch_fetch("", INT32_MIN, -1, &out.array, &out.count, 0, nullptr), 0);
  EXPECT_EQ(service.messages(),
            Messages({hello(), R"({"method":"get","data":{"id":"result-7","offset":5,"limit":20}})", hello(),
                      R"({"method":"get","data":{"id":"","offset":-2147483648,"limit":-1}})"}));
}

TEST(SearchClient, FetchSendsTheSecurityContextWithTheVerb) {
  Scripted service(R"({"result":true,"data":{"count":0,"items":[]}})");
  Outputs out;
  EXPECT_EQ(twsearch_fetch("r", 0, 0, &out.array, &out.count, 2147483647, ""), 0);
  EXPECT_EQ(service.messages().back(),
            R"({"method":"get","data":{"id":"r","offset":0,"limit":0},"secctxt":"","verb":2147483647})");
}

TEST(SearchClient, AVerbWithoutSecurityContextIsNotSent) {
  Scripted service(R"({"result":true,"data":{"id":"r","count":0}})");
  Outputs out;
  EXPECT_EQ(create("nodes", name_is("n").get(), 9), "r");
  EXPECT_EQ(service.messages().back(),
            R"({"method":"search","data":{"conditions":{"key":"name","op":"equal","string":"n"},)"
            R"("object":"nodes"}})");
  EXPECT_EQ(twsearch_fetch("r", 0, 0, &out.array, &out.count, 9, nullptr), 0);
  EXPECT_EQ(service.messages().back(), R"({"method":"get","data":{"id":"r","offset":0,"limit":0}})");
}

TEST(SearchClient, EachCallHasAConnectionOfItsOwnAndClosesIt) {
  Scripted service(R"({"result":true,"data":{"id":"r","count":0,"fields":[]}})");
  Outputs out;
  EXPECT_EQ(create("nodes", name_is("n").get()), "r");
  EXPECT_EQ(twsearch_fetch("r", 0, 0, &out.array, &out.count, 0, nullptr), 0);
  EXPECT_EQ(twsearch_get_fields("nodes", &out.array, &out.count), 1);
  std::free(static_cast<void *>(out.array));
  service.wait_for_ended(3);
  EXPECT_EQ(service.connections(), 3);
}

TEST(SearchClient, WhatTheCallerLeavesOutIsLeftOutOfTheRequest) {
  Scripted service(R"({"result":false})");
  Outputs out;
  EXPECT_EQ(create(nullptr, nullptr), std::nullopt);
  EXPECT_EQ(service.messages().back(), R"({"method":"search","data":{}})");
  EXPECT_EQ(twsearch_fetch(nullptr, 1, 2, &out.array, &out.count, 0, nullptr), -2);
  EXPECT_EQ(service.messages().back(), R"({"method":"get","data":{"offset":1,"limit":2}})");
  EXPECT_EQ(twsearch_get_fields(nullptr, &out.array, &out.count), 0);
  EXPECT_EQ(service.messages().back(), R"({"method":"get_fields","data":{}})");
}

TEST(SearchClient, ATextThatIsNotUtf8FailsTheCallAndNothingIsSentWithoutIt) {
  Scripted service(R"({"result":true,"data":{"id":"r","count":0,"fields":[]}})");
  Outputs out;
  EXPECT_EQ(create("nodes", name_is("n").get(), 0, "\xff"), std::nullopt);
  EXPECT_EQ(create("nodes", name_is("\xff").get()), std::nullopt);
  EXPECT_EQ(create("\xff", name_is("n").get()), std::nullopt);
  EXPECT_EQ(twsearch_fetch("r", 0, 0, &out.array, &out.count, 0, "\xff"), -2);
  EXPECT_EQ(twsearch_fetch("\xff", 0, 0, &out.array, &out.count, 0, nullptr), -2);
  EXPECT_EQ(twsearch_get_fields("\xff", &out.array, &out.count), 0);
  service.wait_for_ended(6);
  EXPECT_EQ(service.messages(), Messages(6, hello()));
  EXPECT_TRUE(out.untouched());
}

TEST(SearchClient, AnOutParameterThatIsNullIsAFailureWithoutAQuestion) {
  Scripted service(R"({"result":true,"data":{"count":0,"fields":[]}})");
  Outputs out;
  EXPECT_EQ(twsearch_fetch("r", 0, 0, nullptr, &out.count, 0, nullptr), -2);
  EXPECT_EQ(twsearch_fetch("r", 0, 0, &out.array, nullptr, 0, nullptr), -2);
  EXPECT_EQ(twsearch_get_fields("nodes", nullptr, &out.count), 0);
  EXPECT_EQ(twsearch_get_fields("nodes", &out.array, nullptr), 0);
  EXPECT_TRUE(out.untouched());
  EXPECT_EQ(service.connections(), 0);
}

// ---- Answers ----

TEST(SearchClient, OnlyJsonTrueIsSuccess) {
  for (const char *result : {"1", "false", "null", "\"true\"", "[true]", "{}", "1.0"}) {
    Scripted service(std::string(R"({"data":{"id":"r","count":1,"items":["a"],"fields":["f"]},"result":)") +
                     result + "}");
    Outputs out;
    EXPECT_EQ(create("nodes", name_is("n").get()), std::nullopt) << result;
    EXPECT_EQ(twsearch_fetch("r", 0, 0, &out.array, &out.count, 0, nullptr), -2) << result;
    EXPECT_EQ(twsearch_get_fields("nodes", &out.array, &out.count), 0) << result;
    EXPECT_TRUE(out.untouched()) << result;
  }
}

TEST(SearchClient, AReplyThatIsNoObjectOrHasNoResultIsAFailure) {
  for (const char *reply :
       {"{}", "[]", "true", R"({"data":{"id":"r","count":1,"items":["a"]}})", "nonsense"}) {
    Scripted service(reply);
    Outputs out;
    EXPECT_EQ(create("nodes", name_is("n").get()), std::nullopt) << reply;
    EXPECT_EQ(twsearch_fetch("r", 0, 0, &out.array, &out.count, 0, nullptr), -2) << reply;
    EXPECT_EQ(twsearch_get_fields("nodes", &out.array, &out.count), 0) << reply;
    EXPECT_TRUE(out.untouched()) << reply;
  }
}

TEST(SearchClient, CreateWithoutAnIdInTheReplyIsNull) {
  for (const char *data : {R"({"id":7})", R"({})", R"([])"}) {
    Scripted service(std::string(R"({"result":true,"data":)") + data + "}");
    EXPECT_EQ(create("nodes", name_is("n").get()), std::nullopt) << data;
  }
  Scripted service(R"({"result":true})");
  EXPECT_EQ(create("nodes", name_is("n").get()), std::nullopt);
}

TEST(SearchClient, FetchGivesTheStringsOfThisPageAndTheServicesCount) {
  Scripted service(R"({"result":true,"data":{"count":4711,"items":["nodes-1","nodes-\u00e9",""]}})");
  Outputs out;
  ASSERT_EQ(twsearch_fetch("r", 0, 3, &out.array, &out.count, 0, nullptr), 3);
  EXPECT_EQ(out.count, 4711);
  EXPECT_EQ(out.array[3], nullptr);
  EXPECT_EQ(taken(out.array, 3), (std::vector<std::string>{"nodes-1", "nodes-é", ""}));
}

TEST(SearchClient, FetchOfNothingSetsItemsToNullAndStillTheCount) {
  for (const char *data :
       {R"({"count":12,"items":[]})", R"({"count":12})", R"({"count":12,"items":"nodes-1"})"}) {
    Scripted service(std::string(R"({"result":true,"data":)") + data + "}");
    Outputs out;
    EXPECT_EQ(twsearch_fetch("r", 0, 0, &out.array, &out.count, 0, nullptr), 0) << data;
    EXPECT_EQ(out.array, nullptr) << data;
    EXPECT_EQ(out.count, 12) << data;
  }
}

TEST(SearchClient, FetchCutsTheServicesCountTo32BitsAndReadsAMissingOneAsZero) {
  for (const auto &[count, expected] :
       {std::pair{"4294967301", 5}, {"-1", -1}, {"2147483648", INT32_MIN}, {"\"3\"", 0}}) {
    Scripted service(std::string(R"({"result":true,"data":{"items":[],"count":)") + count + "}}");
    Outputs out;
    EXPECT_EQ(twsearch_fetch("r", 0, 0, &out.array, &out.count, 0, nullptr), 0);
    EXPECT_EQ(out.count, expected) << count;
  }
  Scripted service(R"({"result":true})");
  Outputs out;
  EXPECT_EQ(twsearch_fetch("r", 0, 0, &out.array, &out.count, 0, nullptr), 0);
  EXPECT_EQ(out.count, 0);
}

TEST(SearchClient, AnItemThatIsNoStringMakesTheReplyAFailure) {
  Scripted service(R"({"result":true,"data":{"count":2,"items":["a",5],"fields":[null]}})");
  Outputs out;
  EXPECT_EQ(twsearch_fetch("r", 0, 0, &out.array, &out.count, 0, nullptr), -2);
  EXPECT_EQ(twsearch_get_fields("nodes", &out.array, &out.count), 0);
  EXPECT_TRUE(out.untouched());
}

TEST(SearchClient, AnEmptyListOfFieldsIsAnArrayWithoutEntries) {
  for (const char *data : {R"({"fields":[]})", "{}"}) {
    Scripted service(std::string(R"({"result":true,"data":)") + data + "}");
    Outputs out;
    EXPECT_EQ(twsearch_get_fields("nodes", &out.array, &out.count), 1) << data;
    EXPECT_EQ(out.count, 0) << data;
    EXPECT_NE(out.array, nullptr) << data;
    std::free(static_cast<void *>(out.array));
  }
}

TEST(SearchClient, AReplyCountsEvenWhenTheRequestCouldNotBeSent) {
  Scripted service(search_service::kGreeting);
  service.reply_unasked(R"({"result":true,"data":{"id":"r","count":3,"items":["a"],"fields":["f"]}})");
  Outputs out;
  EXPECT_EQ(create("nodes", name_is("n").get()), "r");
  EXPECT_EQ(twsearch_fetch("r", 0, 0, &out.array, &out.count, 0, nullptr), 1);
  EXPECT_EQ(taken(out.array, 1), (std::vector<std::string>{"a"}));
  EXPECT_EQ(twsearch_get_fields("nodes", &out.array, &out.count), 1);
  EXPECT_EQ(taken(out.array, 1), (std::vector<std::string>{"f"}));
  EXPECT_EQ(service.messages(), Messages(3, hello()));
}

TEST(SearchClient, RepliesThatAreReadLeaveNoMemoryBehind) {
  Scripted service(R"({"result":true,"data":{"id":"r","count":2,"items":["a","b"],"fields":["f"]}})");
  const JanssonBlocks blocks;
  Outputs out;
  EXPECT_EQ(create("nodes", name_is("n").get(), 1, "alice"), "r");
  EXPECT_EQ(twsearch_fetch("r", 0, 0, &out.array, &out.count, 1, "alice"), 2);
  taken(out.array, 2);
  EXPECT_EQ(twsearch_get_fields("nodes", &out.array, &out.count), 1);
  taken(out.array, 1);
  EXPECT_EQ(create("nodes", name_is("\xff").get(), 1, "alice"), std::nullopt);
  EXPECT_EQ(blocks.held(), 0U);
}

}  // namespace
