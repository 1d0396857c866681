#include "condition.hpp"

#include <gtest/gtest.h>

#include <map>
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

// An entry of a collection, as a search would read it.
class Entry {
 public:
  void set(const std::string &key, cfg_kind kind, const std::string &text) { values_[key] = {kind, text}; }
  bool matches(const cfg_condition *condition) const {
    return twcfg::holds(*condition, [this](const std::string &key) {
      const auto found = values_.find(key);
      if (found == values_.end()) return cfg_value{CFG_NONE, 0, nullptr, 0};
      return cfg_value{found->second.kind, 0, found->second.text.data(), found->second.text.size()};
    });
  }
  bool matches_and_free(cfg_condition *condition) const {
    const bool result = matches(condition);
    cfg_free_conditions(condition);
    return result;
  }

 private:
  struct Value {
    cfg_kind kind;
    std::string text;
  };
  std::map<std::string, Value> values_;
};

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
  Entry entry;
  entry.set("name", CFG_STRING, "eth0");
  EXPECT_TRUE(entry.matches_and_free(condition));
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
  Entry entry;
  entry.set("name", CFG_STRING, "x");
  EXPECT_TRUE(entry.matches_and_free(node));
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

TEST(ConditionMeaning, StringEqualityNeedsKindAndEveryByte) {
  Entry entry;
  entry.set("name", CFG_STRING, "eth0");
  entry.set("ref", CFG_REFERENCE, "eth0");
  entry.set("blob", CFG_BLOB, "eth0");
  entry.set("nul", CFG_STRING, std::string("eth0\0x", 6));
  for (const char *key : {"ref", "blob", "nul", "absent"}) {
    EXPECT_FALSE(entry.matches_and_free(cfg_new_string_condition(key, CFG_OP_EQUAL, "eth0"))) << key;
    EXPECT_TRUE(entry.matches_and_free(cfg_new_string_condition(key, CFG_OP_NOT_EQUAL, "eth0"))) << key;
  }
  EXPECT_TRUE(entry.matches_and_free(cfg_new_string_condition("name", CFG_OP_EQUAL, "eth0")));
  EXPECT_FALSE(entry.matches_and_free(cfg_new_string_condition("name", CFG_OP_NOT_EQUAL, "eth0")));
  EXPECT_FALSE(entry.matches_and_free(cfg_new_string_condition("name", CFG_OP_EQUAL, "ETH0")));
  EXPECT_FALSE(entry.matches_and_free(cfg_new_string_condition("name", CFG_OP_EQUAL, "eth")));
  EXPECT_FALSE(entry.matches_and_free(cfg_new_string_condition("name", CFG_OP_EQUAL, "eth00")));
}

TEST(ConditionMeaning, ReferenceEqualityNeedsAReference) {
  Entry entry;
  entry.set("cert", CFG_REFERENCE, "certificates-3");
  entry.set("text", CFG_STRING, "certificates-3");
  EXPECT_TRUE(entry.matches_and_free(cfg_new_reference_condition("cert", CFG_OP_EQUAL, "certificates-3")));
  EXPECT_FALSE(
      entry.matches_and_free(cfg_new_reference_condition("cert", CFG_OP_NOT_EQUAL, "certificates-3")));
  EXPECT_TRUE(
      entry.matches_and_free(cfg_new_reference_condition("cert", CFG_OP_NOT_EQUAL, "certificates-4")));
  EXPECT_FALSE(entry.matches_and_free(cfg_new_reference_condition("text", CFG_OP_EQUAL, "certificates-3")));
  EXPECT_TRUE(
      entry.matches_and_free(cfg_new_reference_condition("none", CFG_OP_NOT_EQUAL, "certificates-3")));
}

TEST(ConditionMeaning, AbsentHoldsOnlyWithoutTheKey) {
  Entry entry;
  entry.set("empty", CFG_STRING, "");
  entry.set("map", CFG_MAP, "");
  EXPECT_TRUE(entry.matches_and_free(cfg_new_untyped_condition("revoke_time", CFG_OP_ABSENT)));
  EXPECT_FALSE(entry.matches_and_free(cfg_new_untyped_condition("empty", CFG_OP_ABSENT)));
  EXPECT_FALSE(entry.matches_and_free(cfg_new_untyped_condition("map", CFG_OP_ABSENT)));
}

TEST(ConditionMeaning, AnEmptyValueEqualsOnlyAnEmptyString) {
  Entry entry;
  entry.set("empty", CFG_STRING, "");
  EXPECT_TRUE(entry.matches_and_free(cfg_new_string_condition("empty", CFG_OP_EQUAL, "")));
  EXPECT_FALSE(entry.matches_and_free(cfg_new_string_condition("absent", CFG_OP_EQUAL, "")));
}

TEST(ConditionMeaning, AnAndNodeNeedsAllItsChildren) {
  Entry entry;
  entry.set("mode", CFG_STRING, "static");
  entry.set("name", CFG_STRING, "lan");
  EXPECT_TRUE(entry.matches_and_free(cfg_new_and_condition())) << "no children";
  cfg_condition *both = cfg_new_and_condition(), *inner = cfg_new_and_condition();
  ASSERT_EQ(cfg_condition_add_child(both, cfg_new_string_condition("mode", CFG_OP_EQUAL, "static")), 1);
  ASSERT_EQ(cfg_condition_add_child(both, inner), 1);
  ASSERT_EQ(cfg_condition_add_child(inner, cfg_new_string_condition("name", CFG_OP_NOT_EQUAL, "default")), 1);
  EXPECT_TRUE(entry.matches(both));
  entry.set("name", CFG_STRING, "default");
  EXPECT_FALSE(entry.matches(both));
  entry.set("name", CFG_STRING, "wan");
  entry.set("mode", CFG_STRING, "dhcp");
  EXPECT_FALSE(entry.matches_and_free(both));
}

TEST(ConditionIndexLeaf, IsTheFirstEqualityThatMustHold) {
  cfg_condition *top = cfg_new_and_condition(), *inner = cfg_new_and_condition();
  EXPECT_EQ(twcfg::index_leaf(*top), nullptr);
  ASSERT_EQ(cfg_condition_add_child(top, cfg_new_untyped_condition("revoke_time", CFG_OP_ABSENT)), 1);
  ASSERT_EQ(cfg_condition_add_child(top, cfg_new_string_condition("name", CFG_OP_NOT_EQUAL, "x")), 1);
  ASSERT_EQ(cfg_condition_add_child(top, inner), 1);
  EXPECT_EQ(twcfg::index_leaf(*top), nullptr);
  cfg_condition *wanted = cfg_new_reference_condition("cert", CFG_OP_EQUAL, "certificates-3");
  ASSERT_EQ(cfg_condition_add_child(inner, wanted), 1);
  ASSERT_EQ(cfg_condition_add_child(top, leaf()), 1);
  EXPECT_EQ(twcfg::index_leaf(*top), wanted);
  EXPECT_EQ(twcfg::index_leaf(*wanted), wanted);
  cfg_free_conditions(top);
}
