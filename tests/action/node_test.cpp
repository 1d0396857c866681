// Which action a node has.
#include "action_fixture.hpp"

namespace action {
namespace {

TEST_F(ActionTest, AnAssociatedActionIsThatOfItsNodeAndQueue) {
  const uint64_t id = add("nodes-1", "enrollment", TWACTION_DONE);
  const record found = of_node("nodes-1", "enrollment");
  ASSERT_NE(found, nullptr);
  EXPECT_EQ(twaction_get_id(found.get()), id);
  EXPECT_EQ(state_of(found), TWACTION_DONE);
  EXPECT_STREQ(twaction_get_node(found.get()), "nodes-1");
  twaction *none = nullptr;
  EXPECT_EQ(twaction_get_for_node("nodes-1", "unenroll_node", &none), -ENOENT);
  EXPECT_EQ(twaction_get_for_node("nodes-2", "enrollment", &none), -ENOENT);
  EXPECT_EQ(twaction_get_for_node("nodes-", "1enrollment", &none), -ENOENT);
  EXPECT_EQ(none, nullptr);
}

TEST_F(ActionTest, WithoutAssociationItIsNoNodes) {
  const record made = make("enrollment");
  ASSERT_EQ(twaction_store(made.get()), 0);
  EXPECT_EQ(of_node("nodes-1", "enrollment"), nullptr);
}

TEST_F(ActionTest, ANodeHasAnActionForEachQueue) {
  const uint64_t first = add("nodes-1", "enrollment"), second = add("nodes-1", "unenroll_node");
  EXPECT_EQ(twaction_get_id(of_node("nodes-1", "enrollment").get()), first);
  EXPECT_EQ(twaction_get_id(of_node("nodes-1", "unenroll_node").get()), second);
}

TEST_F(ActionTest, ANewerActionTakesThePlaceOfTheOlderOne) {
  const uint64_t first = add("nodes-1", "enrollment");
  const record kept = by_id(first);
  const uint64_t second = add("nodes-1", "enrollment");
  EXPECT_EQ(twaction_get_id(of_node("nodes-1", "enrollment").get()), second);
  EXPECT_EQ(numbers(), std::vector<uint64_t>{second});
  EXPECT_EQ(twaction_store(kept.get()), -ESTALE) << "whoever works on the older one is told";
}

TEST_F(ActionTest, AssociatingTwiceIsAssociatingOnce) {
  const uint64_t id = add("nodes-1", "enrollment");
  EXPECT_EQ(twaction_associate_node(id, "nodes-1"), 0);
  EXPECT_EQ(twaction_get_id(of_node("nodes-1", "enrollment").get()), id);
  EXPECT_EQ(numbers(), std::vector<uint64_t>{id});
}

TEST_F(ActionTest, AnActionMovesToAnotherNode) {
  const uint64_t id = add("nodes-1", "enrollment");
  EXPECT_EQ(twaction_associate_node(id, "nodes-2"), 0);
  EXPECT_EQ(of_node("nodes-1", "enrollment"), nullptr);
  EXPECT_EQ(twaction_get_id(of_node("nodes-2", "enrollment").get()), id);
}

TEST_F(ActionTest, AnActionMovesToAnotherQueue) {
  const uint64_t id = add("nodes-1", "enrollment");
  const record one = by_id(id);
  ASSERT_EQ(twaction_set_queue_name(one.get(), "registration"), 0);
  ASSERT_EQ(twaction_store(one.get()), 0);
  EXPECT_EQ(of_node("nodes-1", "enrollment"), nullptr);
  EXPECT_EQ(twaction_get_id(of_node("nodes-1", "registration").get()), id);
}

TEST_F(ActionTest, ARemovedActionIsNoNodesAnyMore) {
  ASSERT_EQ(twaction_remove(add("nodes-1", "enrollment")), 0);
  EXPECT_EQ(of_node("nodes-1", "enrollment"), nullptr);
  const uint64_t next = add("nodes-1", "enrollment");
  EXPECT_EQ(twaction_get_id(of_node("nodes-1", "enrollment").get()), next);
}

TEST_F(ActionTest, WhatIsNotStoredCannotBeAssociated) {
  EXPECT_EQ(twaction_associate_node(0, "nodes-1"), -ENOENT);
  add("nodes-1", "enrollment");
  EXPECT_EQ(twaction_associate_node(99, "nodes-1"), -ENOENT);
  EXPECT_NE(of_node("nodes-1", "enrollment"), nullptr);
}

}  // namespace
}  // namespace action
