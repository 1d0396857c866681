// What smart groups ask of the search service, and what they make of its answers.
#include <gtest/gtest.h>
#include <twobject/smart_groups.h>

#include <cstdlib>
#include <memory>

#include "search_service/search_service.hpp"

namespace {

using search_service::Scripted;

struct Free {
  void operator()(cfg_smartgroup *group) const { cfg_smartgroup_free(group); }
  void operator()(char *text) const { std::free(text); }
};
using Group = std::unique_ptr<cfg_smartgroup, Free>;
using Text = std::unique_ptr<char, Free>;

Group group(const char *query = R"({"op":"equal","string":"n","key":"name"})") {
  return Group(cfg_smartgroup_new(nullptr, "nodes", "group", query));
}

// Answers a search with one reply and a get with the other.
Scripted::Answer answers(std::string search, std::string get) {
  return [search = std::move(search), get = std::move(get)](const std::string &message) {
    if (search_service::is_hello(message)) return std::string(search_service::kGreeting);
    return message.starts_with(R"({"method":"search")") ? search : get;
  };
}

constexpr char kFound[] = R"({"result":true,"data":{"id":"r-1"}})";

struct Members {
  char *mark = nullptr;
  char **array = &mark;
};

TEST(SmartGroupSearch, SendsTheQueryForTheGroupsTypeWithoutSecurityContext) {
  Scripted service(answers(kFound, ""));
  EXPECT_STREQ(Text(cfg_smartgroup_create_search(group().get())).get(), "r-1");
  EXPECT_EQ(service.messages().back(),
            R"({"method":"search","data":{"conditions":{"key":"name","op":"equal","string":"n"},)"
            R"("object":"nodes"}})");
}

TEST(SmartGroupSearch, EvaluatingFetchesTheWholeResult) {
  Scripted service(answers(kFound, R"({"result":true,"data":{"count":2,"items":["nodes-1","nodes-2"]}})"));
  Members members;
  ASSERT_EQ(cfg_smartgroup_evaluate(group().get(), &members.array), 2);
  EXPECT_EQ(service.messages().back(), R"({"method":"get","data":{"id":"r-1","offset":0,"limit":0}})");
  EXPECT_STREQ(Text(members.array[0]).get(), "nodes-1");
  EXPECT_STREQ(Text(members.array[1]).get(), "nodes-2");
  std::free(static_cast<void *>(members.array));
}

TEST(SmartGroupSearch, EvaluatingGivesTheServicesCountAndAnArrayThatEndsWithNull) {
  Scripted service(answers(kFound, R"({"result":true,"data":{"count":7,"items":["nodes-1"]}})"));
  Members members;
  ASSERT_EQ(cfg_smartgroup_evaluate(group().get(), &members.array), 7);
  EXPECT_STREQ(Text(members.array[0]).get(), "nodes-1");
  EXPECT_EQ(members.array[1], nullptr);
  std::free(static_cast<void *>(members.array));
}

TEST(SmartGroupSearch, NoMatchIsZeroWithoutArray) {
  Scripted service(answers(kFound, R"({"result":true,"data":{"count":0,"items":[]}})"));
  Members members;
  EXPECT_EQ(cfg_smartgroup_evaluate(group().get(), &members.array), 0);
  EXPECT_EQ(members.array, nullptr);
}

TEST(SmartGroupSearch, EveryFailureIsZeroWithTheArrayUntouched) {
  Members members;
  {
    Scripted service(answers(R"({"result":false})", ""));
    EXPECT_EQ(cfg_smartgroup_create_search(group().get()), nullptr);
    EXPECT_EQ(cfg_smartgroup_evaluate(group().get(), &members.array), 0);
  }
  {
    Scripted service(answers(kFound, R"({"result":false,"data":{"count":3,"items":["nodes-1"]}})"));
    EXPECT_EQ(cfg_smartgroup_evaluate(group().get(), &members.array), 0);
    EXPECT_EQ(cfg_smartgroup_evaluate(group().get(), nullptr), 0);
  }
  const search_service::PathClaim nobody;
  EXPECT_EQ(cfg_smartgroup_evaluate(group().get(), &members.array), 0);
  EXPECT_EQ(members.array, &members.mark);
}

TEST(SmartGroupSearch, WithoutGroupOrQueryTheServiceIsNotAsked) {
  Scripted service(answers(kFound, ""));
  const Group unasked = group();
  EXPECT_EQ(cfg_smartgroup_set_query(unasked.get(), nullptr), 1);
  Members members;
  EXPECT_EQ(cfg_smartgroup_create_search(unasked.get()), nullptr);
  EXPECT_EQ(cfg_smartgroup_evaluate(unasked.get(), &members.array), 0);
  EXPECT_EQ(cfg_smartgroup_create_search(nullptr), nullptr);
  EXPECT_EQ(cfg_smartgroup_evaluate(nullptr, &members.array), 0);
  EXPECT_EQ(members.array, &members.mark);
  EXPECT_EQ(service.connections(), 0);
}

TEST(SmartGroupSearch, AQueryThatIsNoConditionIsSentAsNone) {
  Scripted service(answers(R"({"result":false})", ""));
  EXPECT_EQ(cfg_smartgroup_create_search(group("nonsense").get()), nullptr);
  EXPECT_EQ(service.messages().back(), R"({"method":"search","data":{"object":"nodes"}})");
}

}  // namespace
