// Single actions: what they hold, and storing them.
#include <chrono>
#include <filesystem>

#include "action_fixture.hpp"

namespace action {
namespace {

using list = std::vector<uint64_t>;

int64_t now_ms() {
  const auto now = std::chrono::system_clock::now().time_since_epoch();
  return std::chrono::duration_cast<std::chrono::milliseconds>(now).count();
}

TEST_F(ActionTest, ANewActionIsEmpty) {
  const record fresh(twaction_new());
  EXPECT_EQ(twaction_get_id(fresh.get()), 0U);
  EXPECT_EQ(state_of(fresh), 0);
  EXPECT_STREQ(twaction_get_queue_name(fresh.get()), "");
  EXPECT_STREQ(twaction_get_node(fresh.get()), "");
  EXPECT_EQ(error_of(fresh), "none");
  EXPECT_EQ(twaction_get_created_ms(fresh.get()), 0);
  EXPECT_EQ(twaction_get_changed_ms(fresh.get()), 0);
  EXPECT_FALSE(std::filesystem::exists(directory())) << "nothing is stored yet";
}

TEST_F(ActionTest, WhatIsStoredIsFetchedByItsNumber) {
  const record made = make("enrollment", TWACTION_RETRYING);
  twaction_set_last_error(made.get(), "no answer");
  const int64_t before = now_ms();
  ASSERT_EQ(twaction_store(made.get()), 0);
  const int64_t after = now_ms();
  const record found = by_id(twaction_get_id(made.get()));
  ASSERT_NE(found, nullptr);
  EXPECT_EQ(twaction_get_id(found.get()), twaction_get_id(made.get()));
  EXPECT_EQ(state_of(found), TWACTION_RETRYING);
  EXPECT_STREQ(twaction_get_queue_name(found.get()), "enrollment");
  EXPECT_EQ(error_of(found), "no answer");
  EXPECT_GE(twaction_get_created_ms(found.get()), before);
  EXPECT_LE(twaction_get_created_ms(found.get()), after);
  EXPECT_EQ(twaction_get_changed_ms(found.get()), twaction_get_created_ms(found.get()));
}

TEST_F(ActionTest, StoringAgainChangesTheActionAndKeepsItsNumberAndBirth) {
  const record made = make("enrollment");
  ASSERT_EQ(twaction_store(made.get()), 0);
  const uint64_t id = twaction_get_id(made.get());
  const int64_t born = twaction_get_created_ms(made.get());
  ASSERT_EQ(twaction_set_state(made.get(), TWACTION_DONE), 0);
  ASSERT_EQ(twaction_store(made.get()), 0);
  ASSERT_EQ(twaction_set_state(made.get(), 99), 0);
  ASSERT_EQ(twaction_store(made.get()), 0) << "what was stored can be stored again";
  EXPECT_EQ(numbers(), list{id});
  EXPECT_EQ(state_of(by_id(id)), 99);
  EXPECT_EQ(twaction_get_created_ms(by_id(id).get()), born);
  EXPECT_GE(twaction_get_changed_ms(by_id(id).get()), born);
}

TEST_F(ActionTest, OfTwoWhoTakeAnActionOneIsTold) {
  const uint64_t id = add("nodes-1", "enrollment");
  const record first = by_id(id), second = by_id(id);
  twaction_set_state(first.get(), TWACTION_TAKEN);
  twaction_set_state(second.get(), TWACTION_TAKEN);
  twaction_set_last_error(second.get(), "of the second");
  EXPECT_EQ(twaction_store(first.get()), 0);
  EXPECT_EQ(twaction_store(second.get()), -ESTALE);
  EXPECT_EQ(error_of(by_id(id)), "none");
}

TEST_F(ActionTest, AnActionThatWasRemovedIsNotStoredAgain) {
  const uint64_t id = add("nodes-1", "enrollment");
  const record kept = by_id(id);
  ASSERT_EQ(twaction_remove(id), 0);
  EXPECT_EQ(twaction_store(kept.get()), -ESTALE);
  EXPECT_EQ(numbers(), list{});
  EXPECT_EQ(twaction_remove(id), -ENOENT);
}

TEST_F(ActionTest, ANumberIsNeverGivenTwice) {
  const uint64_t first = add("nodes-1", "a"), second = add("nodes-2", "a");
  ASSERT_EQ(twaction_remove(second), 0);
  const uint64_t third = add("nodes-3", "a");
  EXPECT_LT(first, second);
  EXPECT_LT(second, third);
}

TEST_F(ActionTest, AVisitTellsTheActionsOfAQueueOldestFirst) {
  list of_a, all;
  for (int i = 0; i < 60; ++i) {
    const bool a = i % 3 == 0;
    const record made = make(a ? "a" : "b");
    ASSERT_EQ(twaction_store(made.get()), 0);
    all.push_back(twaction_get_id(made.get()));
    if (a) of_a.push_back(all.back());
  }
  EXPECT_EQ(numbers("a"), of_a);
  EXPECT_EQ(numbers(), all);
  EXPECT_EQ(numbers("c"), list{});
}

TEST_F(ActionTest, AVisitOfNothingIsNoFailure) {
  EXPECT_EQ(numbers(), list{});
  EXPECT_FALSE(std::filesystem::exists(directory()));
}

TEST_F(ActionTest, AVisitorMayRemoveAndEndTheVisit) {
  for (const char *node : {"nodes-1", "nodes-2", "nodes-3"}) add(node, "a");
  EXPECT_EQ(
      twaction_visit(
          "a", [](void *, const twaction *one) { return twaction_remove(twaction_get_id(one)) == 0 ? 5 : 6; },
          nullptr),
      5);
  EXPECT_EQ(numbers().size(), 2U);
}

TEST_F(ActionTest, ALastErrorThatIsTooLongIsCutBetweenCharacters) {
  const record one(twaction_new());
  const std::string fits(TWACTION_ERROR_MAX, 'x');
  twaction_set_last_error(one.get(), fits.c_str());
  EXPECT_EQ(error_of(one), fits);
  twaction_set_last_error(one.get(), (fits + "x").c_str());
  EXPECT_EQ(error_of(one), fits);
  // The bound is in the middle of the umlaut.
  const std::string before(TWACTION_ERROR_MAX - 1, 'x');
  twaction_set_last_error(one.get(), (before + "\xc3\xa4").c_str());
  EXPECT_EQ(error_of(one), before);
}

TEST_F(ActionTest, NullAndAnEmptyTextMeanNoError) {
  for (const char *nothing : {static_cast<const char *>(nullptr), ""}) {
    const record one = make("a");
    twaction_set_last_error(one.get(), "an error");
    EXPECT_EQ(twaction_set_last_error(one.get(), nothing), 0);
    EXPECT_EQ(error_of(one), "none");
  }
}

TEST_F(ActionTest, SizesUpToTheBoundsAreTakenAndNoLargerOnes) {
  const std::string node(TWACTION_NODE_MAX, 'n'), queue(TWACTION_QUEUE_NAME_MAX, 'q');
  const uint64_t id = add(node.c_str(), queue.c_str());
  EXPECT_EQ(twaction_get_id(of_node(node.c_str(), queue.c_str()).get()), id);
  const record one(twaction_new());
  EXPECT_EQ(twaction_set_queue_name(one.get(), (queue + "q").c_str()), -EINVAL);
  EXPECT_EQ(twaction_set_queue_name(one.get(), ""), -EINVAL);
  EXPECT_EQ(twaction_associate_node(id, (node + "n").c_str()), -EINVAL);
  EXPECT_EQ(twaction_associate_node(id, ""), -EINVAL);
}

TEST_F(ActionTest, NullIsRefusedEverywhere) {
  const uint64_t id = add("nodes-1", "a");
  twaction *action = nullptr;
  int32_t state = 7;
  const char *text = "untouched";
  EXPECT_EQ(twaction_get_id(nullptr), 0U);
  EXPECT_EQ(twaction_get_state(nullptr, &state), -EINVAL);
  EXPECT_EQ(twaction_get_last_error(nullptr, &text), -EINVAL);
  EXPECT_EQ(twaction_get_queue_name(nullptr), nullptr);
  EXPECT_EQ(twaction_get_node(nullptr), nullptr);
  EXPECT_EQ(twaction_get_created_ms(nullptr), 0);
  EXPECT_EQ(twaction_get_changed_ms(nullptr), 0);
  EXPECT_EQ(twaction_set_state(nullptr, 1), -EINVAL);
  EXPECT_EQ(twaction_set_queue_name(nullptr, "a"), -EINVAL);
  EXPECT_EQ(twaction_set_last_error(nullptr, "a"), -EINVAL);
  EXPECT_EQ(twaction_store(nullptr), -EINVAL);
  EXPECT_EQ(twaction_associate_node(id, nullptr), -EINVAL);
  EXPECT_EQ(twaction_get_for_node(nullptr, "a", &action), -EINVAL);
  EXPECT_EQ(twaction_get_for_node("nodes-1", nullptr, &action), -EINVAL);
  EXPECT_EQ(twaction_get_for_node("nodes-1", "a", nullptr), -EINVAL);
  EXPECT_EQ(twaction_get_by_id(id, nullptr), -EINVAL);
  EXPECT_EQ(twaction_visit("a", nullptr, nullptr), -EINVAL);
  const record one = by_id(id);
  EXPECT_EQ(twaction_get_state(one.get(), nullptr), -EINVAL);
  EXPECT_EQ(twaction_get_last_error(one.get(), nullptr), -EINVAL);
  EXPECT_EQ(twaction_set_queue_name(one.get(), nullptr), -EINVAL);
  twaction_free(nullptr);
  EXPECT_EQ(state, 7);
  EXPECT_STREQ(text, "untouched");
  EXPECT_EQ(action, nullptr);
}

}  // namespace
}  // namespace action
