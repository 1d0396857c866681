#include "condition.hpp"

#include <gtest/gtest.h>

#include <map>
#include <string>

namespace {

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
  ASSERT_EQ(cfg_condition_add_child(top, cfg_new_string_condition("name", CFG_OP_EQUAL, "x")), 1);
  EXPECT_EQ(twcfg::index_leaf(*top), wanted);
  EXPECT_EQ(twcfg::index_leaf(*wanted), wanted);
  cfg_free_conditions(top);
}
