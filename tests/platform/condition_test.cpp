#include <gtest/gtest.h>
#include <twconfig/condition.h>

#include <cstdlib>
#include <string>

namespace {

cfg_condition *leaf() { return cfg_new_string_condition("name", CFG_OP_EQUAL, "x"); }

// `levels` and-nodes, one below the other; `lowest` is the last of them.
cfg_condition *chain(int levels, cfg_condition **lowest) {
  cfg_condition *top = cfg_new_and_condition();
  *lowest = top;
  for (int i = 1; i < levels; ++i) {
    cfg_condition *next = cfg_new_and_condition();
    EXPECT_EQ(cfg_condition_add_child(*lowest, next), 1);
    *lowest = next;
  }
  return top;
}

// The tree as text, freed.
std::string text(cfg_condition *condition) {
  json_t *json = condition_to_json(condition);
  cfg_free_conditions(condition);
  char *dumped = json_dumps(json, JSON_COMPACT);
  json_decref(json);
  std::string result = dumped ? dumped : "";
  free(dumped);
  return result;
}

}  // namespace

TEST(ConditionMakers, RefuseNullAndOperatorsThatDoNotFit) {
  EXPECT_EQ(cfg_new_string_condition(nullptr, CFG_OP_EQUAL, "x"), nullptr);
  EXPECT_EQ(cfg_new_string_condition("k", CFG_OP_EQUAL, nullptr), nullptr);
  EXPECT_EQ(cfg_new_reference_condition(nullptr, CFG_OP_EQUAL, "x"), nullptr);
  EXPECT_EQ(cfg_new_reference_condition("k", CFG_OP_EQUAL, nullptr), nullptr);
  EXPECT_EQ(cfg_new_untyped_condition(nullptr, CFG_OP_ABSENT), nullptr);
  for (const int32_t op : {INT32_MIN, -1, 0, 3, 10, static_cast<int32_t>(CFG_OP_ABSENT), 12, INT32_MAX}) {
    EXPECT_EQ(cfg_new_string_condition("k", op, "x"), nullptr) << op;
    EXPECT_EQ(cfg_new_reference_condition("k", op, "x"), nullptr) << op;
  }
  for (const int32_t op : {INT32_MIN, -1, 0, 1, 2, 3, 10, 12, INT32_MAX})
    EXPECT_EQ(cfg_new_untyped_condition("k", op), nullptr) << op;
}

TEST(ConditionMakers, CopyTheirArguments) {
  char key[] = "name", value[] = "eth0";
  cfg_condition *condition = cfg_new_string_condition(key, CFG_OP_EQUAL, value);
  key[0] = value[0] = '#';
  EXPECT_EQ(text(condition), R"({"key":"name","op":"equal","string":"eth0"})");
}

TEST(ConditionTree, RefusesNullAndLeavesAsNodes) {
  cfg_condition *node = cfg_new_and_condition(), *one = leaf(), *other = leaf();
  EXPECT_EQ(cfg_condition_add_child(nullptr, one), 0);
  EXPECT_EQ(cfg_condition_add_child(node, nullptr), 0);
  EXPECT_EQ(cfg_condition_add_child(nullptr, nullptr), 0);
  EXPECT_EQ(cfg_condition_add_child(one, other), 0);
  EXPECT_EQ(cfg_condition_add_child(one, node), 0);
  cfg_free_conditions(node);  // what was refused stayed the caller's
  cfg_free_conditions(one);
  cfg_free_conditions(other);
}

TEST(ConditionTree, RefusesANodeBelowItself) {
  cfg_condition *lowest = nullptr;
  cfg_condition *top = chain(5, &lowest);
  EXPECT_EQ(cfg_condition_add_child(top, top), 0);
  EXPECT_EQ(cfg_condition_add_child(lowest, top), 0);
  EXPECT_EQ(cfg_condition_add_child(lowest, lowest), 0);
  cfg_free_conditions(top);
}

TEST(ConditionTree, AChildHasOneOwner) {
  cfg_condition *first = cfg_new_and_condition(), *second = cfg_new_and_condition(), *child = leaf();
  EXPECT_EQ(cfg_condition_add_child(first, child), 1);
  EXPECT_EQ(cfg_condition_add_child(first, child), 0);
  EXPECT_EQ(cfg_condition_add_child(second, child), 0);
  cfg_free_conditions(second);
  cfg_free_conditions(first);
}

TEST(ConditionTree, FreeingANodeThatHasAnOwnerLeavesItToTheOwner) {
  cfg_condition *node = cfg_new_and_condition(), *child = leaf();
  ASSERT_EQ(cfg_condition_add_child(node, child), 1);
  cfg_free_conditions(child);
  EXPECT_EQ(text(node), R"({"and":[{"key":"name","op":"equal","string":"x"}]})");
  cfg_free_conditions(nullptr);
}

TEST(ConditionTree, HasAtMost32Levels) {
  cfg_condition *lowest = nullptr;
  cfg_condition *top = chain(31, &lowest);
  cfg_condition *one = leaf();
  ASSERT_EQ(cfg_condition_add_child(lowest, one), 1);
  cfg_condition *above = cfg_new_and_condition();
  EXPECT_EQ(cfg_condition_add_child(above, top), 0) << "33 levels, grown at the top";
  cfg_condition *node = cfg_new_and_condition();
  ASSERT_EQ(cfg_condition_add_child(lowest, node), 1);
  one = leaf();
  EXPECT_EQ(cfg_condition_add_child(node, one), 0) << "33 levels, grown at the bottom";
  cfg_free_conditions(one);
  cfg_free_conditions(above);
  cfg_free_conditions(top);
}

TEST(ConditionTree, CountsTheLevelsOfBothTreesThatAreJoined) {
  cfg_condition *upper_end = nullptr, *lower_end = nullptr;
  cfg_condition *upper = chain(16, &upper_end), *lower = chain(17, &lower_end);
  EXPECT_EQ(cfg_condition_add_child(upper_end, lower), 0);
  cfg_free_conditions(lower);
  lower = chain(16, &lower_end);
  EXPECT_EQ(cfg_condition_add_child(upper_end, lower), 1);
  cfg_condition *one = leaf();
  EXPECT_EQ(cfg_condition_add_child(lower_end, one), 0);
  EXPECT_EQ(cfg_condition_add_child(upper_end, one), 1);
  cfg_free_conditions(upper);
}

TEST(ConditionTree, HasAtMost4096Nodes) {
  cfg_condition *top = cfg_new_and_condition(), *inner = cfg_new_and_condition();
  ASSERT_EQ(cfg_condition_add_child(top, inner), 1);
  for (int i = 2; i < 4096; ++i) ASSERT_EQ(cfg_condition_add_child(inner, leaf()), 1) << i;
  cfg_condition *one = leaf();
  EXPECT_EQ(cfg_condition_add_child(top, one), 0);
  EXPECT_EQ(cfg_condition_add_child(inner, one), 0);
  cfg_condition *above = cfg_new_and_condition();
  EXPECT_EQ(cfg_condition_add_child(above, top), 0);
  cfg_free_conditions(above);
  cfg_free_conditions(one);
  cfg_free_conditions(top);
}

TEST(ConditionTree, CountsTheNodesOfTreesThatAreJoined) {
  cfg_condition *top = cfg_new_and_condition();
  for (int i = 0; i < 1365; ++i) {  // 1 + 1365 * 3 = 4096
    cfg_condition *three = cfg_new_and_condition();
    ASSERT_EQ(cfg_condition_add_child(three, leaf()), 1);
    ASSERT_EQ(cfg_condition_add_child(three, leaf()), 1);
    ASSERT_EQ(cfg_condition_add_child(top, three), 1) << i;
  }
  cfg_condition *one = leaf();
  EXPECT_EQ(cfg_condition_add_child(top, one), 0);
  cfg_free_conditions(one);
  cfg_free_conditions(top);
}
