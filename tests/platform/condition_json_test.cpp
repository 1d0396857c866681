#include <gtest/gtest.h>
#include <twconfig/condition.h>

#include <cstdlib>
#include <random>
#include <string>

namespace {

std::string dump(const cfg_condition *condition) {
  json_t *json = condition_to_json(condition);
  if (!json) return "NULL";
  char *text = json_dumps(json, JSON_COMPACT);
  json_decref(json);
  std::string result = text ? text : "no text";
  free(text);
  return result;
}

std::string dump_and_free(cfg_condition *condition) {
  std::string text = dump(condition);
  cfg_free_conditions(condition);
  return text;
}

// What a text reads as, written again.
std::string again(const std::string &text) { return dump_and_free(json_dump_to_condition(text.c_str(), 0)); }

std::string nested(int levels) {  // and-nodes only
  std::string text;
  for (int i = 1; i < levels; ++i) text += R"({"and":[)";
  text += R"({"and":[]})";
  for (int i = 1; i < levels; ++i) text += "]}";
  return text;
}

std::string wide(int nodes) {
  std::string text = R"({"and":[)";
  for (int i = 1; i < nodes; ++i) {
    if (i > 1) text += ',';
    text += R"({"and":[]})";
  }
  return text + "]}";
}

cfg_condition *random_tree(std::mt19937 &random, int levels) {
  static const char *const texts[] = {"",  "name",         "system.net.conns", "tag:Bundle",   "\"quoted\\\"",
                                      "ü", "\x01\n\t\x7f", "𝄞 clef",           "{\"and\":[]}", "/"};
  const auto text = [&] { return texts[random() % std::size(texts)]; };
  const auto op = [&] { return random() % 2 ? CFG_OP_EQUAL : CFG_OP_NOT_EQUAL; };
  switch (levels > 1 ? random() % 5 : random() % 3) {
    case 0:
      return cfg_new_string_condition(text(), op(), text());
    case 1:
      return cfg_new_reference_condition(text(), op(), text());
    case 2:
      return cfg_new_untyped_condition(text(), CFG_OP_ABSENT);
    default:
      break;
  }
  cfg_condition *node = cfg_new_and_condition();
  for (auto count = random() % 5; count > 0; --count)
    EXPECT_EQ(cfg_condition_add_child(node, random_tree(random, levels - 1)), 1);
  return node;
}

}  // namespace

TEST(ConditionJson, HasOneFormPerKindOfNode) {
  EXPECT_EQ(dump_and_free(cfg_new_string_condition("name", CFG_OP_EQUAL, "x")),
            R"({"key":"name","op":"equal","string":"x"})");
  EXPECT_EQ(dump_and_free(cfg_new_reference_condition("cert", CFG_OP_NOT_EQUAL, "certificates-3")),
            R"({"key":"cert","op":"not_equal","reference":"certificates-3"})");
  EXPECT_EQ(dump_and_free(cfg_new_untyped_condition("revoke_time", CFG_OP_ABSENT)),
            R"({"key":"revoke_time","op":"absent"})");
  EXPECT_EQ(dump_and_free(cfg_new_and_condition()), R"({"and":[]})");
  cfg_condition *node = cfg_new_and_condition();
  ASSERT_EQ(cfg_condition_add_child(node, cfg_new_and_condition()), 1);
  ASSERT_EQ(cfg_condition_add_child(node, cfg_new_untyped_condition("k", CFG_OP_ABSENT)), 1);
  EXPECT_EQ(dump_and_free(node), R"({"and":[{"and":[]},{"key":"k","op":"absent"}]})");
  EXPECT_EQ(condition_to_json(nullptr), nullptr);
}

TEST(ConditionJson, WritingLeavesTheTreeToTheCaller) {
  cfg_condition *node = cfg_new_and_condition();
  ASSERT_EQ(cfg_condition_add_child(node, cfg_new_untyped_condition("k", CFG_OP_ABSENT)), 1);
  EXPECT_EQ(dump(node), dump(node));
  EXPECT_EQ(cfg_condition_add_child(node, cfg_new_and_condition()), 1);
  EXPECT_EQ(dump_and_free(node), R"({"and":[{"key":"k","op":"absent"},{"and":[]}]})");
}

TEST(ConditionJson, MembersMayComeInAnyOrderAndWithSpace) {
  EXPECT_EQ(again("\n { \"string\" : \"x\", \"op\":\"equal\" ,\"key\":\"\\u0041\" } \t"),
            R"({"key":"A","op":"equal","string":"x"})");
}

TEST(ConditionJson, RandomTreesSurviveTheWayThroughText) {
  std::mt19937 random(20250607);
  for (int i = 0; i < 500; ++i) {
    cfg_condition *tree = random_tree(random, 1 + i % 6);
    const std::string text = dump(tree);
    EXPECT_NE(text, "NULL");
    EXPECT_EQ(again(text), text);
    cfg_free_conditions(tree);
  }
}

TEST(ConditionJson, RefusesWhateverIsNotExactlyACondition) {
  const std::string refused[] = {"",
                                 " ",
                                 "null",
                                 "true",
                                 "1",
                                 "\"x\"",
                                 "[]",
                                 "{}",
                                 "[{}]",
                                 R"({"and":null})",
                                 R"({"and":{}})",
                                 R"({"and":"x"})",
                                 R"({"and":[null]})",
                                 R"({"and":[[]]})",
                                 R"({"and":["and"]})",
                                 R"({"and":[{}]})",
                                 R"({"and":[1]})",
                                 R"({"and":[],"key":"k"})",
                                 R"({"and":[],"or":[]})",
                                 R"({"and":[],"and":[]})",
                                 R"({"AND":[]})",
                                 R"({"or":[]})",
                                 R"({"key":"k"})",
                                 R"({"op":"equal"})",
                                 R"({"key":"k","op":"equal"})",
                                 R"({"key":"k","string":"x"})",
                                 R"({"op":"equal","string":"x"})",
                                 R"({"key":1,"op":"equal","string":"x"})",
                                 R"({"key":null,"op":"equal","string":"x"})",
                                 R"({"key":"k","op":1,"string":"x"})",
                                 R"({"key":"k","op":"Equal","string":"x"})",
                                 R"({"key":"k","op":"","string":"x"})",
                                 R"({"key":"k","op":"like","string":"x"})",
                                 R"({"key":"k","op":"equal","string":1})",
                                 R"({"key":"k","op":"equal","string":null})",
                                 R"({"key":"k","op":"equal","reference":["x"]})",
                                 R"({"key":"k","op":"equal","value":"x"})",
                                 R"({"key":"k","op":"equal","string":"x","reference":"y"})",
                                 R"({"key":"k","op":"equal","string":"x","more":0})",
                                 R"({"key":"k","key":"k","op":"equal","string":"x"})",
                                 R"({"key":"k","op":"equal","string":"x","string":"x"})",
                                 R"({"key":"k","op":"absent","string":"x"})",
                                 R"({"key":"k","op":"absent","value":null})",
                                 R"({"op":"absent","string":"x"})",
                                 R"({"key":null,"op":"absent"})",
                                 R"({"key":"k","op":"absent")",
                                 R"({"key":"k","op":"absent"}})",
                                 R"({"key":"k","op":"absent"} x)",
                                 R"({"key":"k","op":"absent"}{"key":"k","op":"absent"})",
                                 R"({"key":"k","op":"absent",})",
                                 R"({'key':'k','op':'absent'})",
                                 R"({"key":"a\u0000b","op":"absent"})",
                                 R"({"key":"k","op":"equal","string":"\u0000"})",
                                 R"({"key":"\ud800","op":"absent"})",
                                 "{\"key\":\"\xff\",\"op\":\"absent\"}",
                                 "{\"key\":\"\xc0\x80\",\"op\":\"absent\"}",
                                 "{\"key\":\"a\nb\",\"op\":\"absent\"}",
                                 "\xef\xbb\xbf{\"key\":\"k\",\"op\":\"absent\"}",
                                 R"({"and":[{"key":"k","op":"absent"},]})",
                                 R"({"and":[{"key":"k","op":"absent"} {"and":[]}]})",
                                 R"({"and":[{"key":"k","op":"absent"},{"and":[{"key":"k"}]}]})"};
  for (const std::string &text : refused) EXPECT_EQ(json_dump_to_condition(text.c_str(), 0), nullptr) << text;
  EXPECT_EQ(json_dump_to_condition(nullptr, 0), nullptr);
}

TEST(ConditionJson, RefusesFlags) {
  EXPECT_EQ(json_dump_to_condition(R"({"and":[]})", 1), nullptr);
  EXPECT_EQ(json_dump_to_condition(R"({"and":[]})", -1), nullptr);
  EXPECT_EQ(again(R"({"and":[]})"), R"({"and":[]})");
}

TEST(ConditionJson, HoldsTheLimitsOfTrees) {
  EXPECT_EQ(again(nested(32)), nested(32));
  EXPECT_EQ(json_dump_to_condition(nested(33).c_str(), 0), nullptr);
  EXPECT_EQ(json_dump_to_condition(nested(900).c_str(), 0), nullptr);
  EXPECT_EQ(again(wide(4096)), wide(4096));
  EXPECT_EQ(json_dump_to_condition(wide(4097).c_str(), 0), nullptr);
}

TEST(ConditionJson, HoldsTheLimitOfTextAtTheByte) {
  const std::string text = R"({"and":[]})";
  const std::string largest = text + std::string((1 << 20) - text.size(), ' ');
  EXPECT_EQ(again(largest), text);
  EXPECT_EQ(json_dump_to_condition((largest + ' ').c_str(), 0), nullptr);
}

TEST(ConditionJson, RefusesHostileTextOfTheLargestSize) {
  constexpr std::size_t size = 1 << 20;
  EXPECT_EQ(json_dump_to_condition(std::string(size, '[').c_str(), 0), nullptr);
  std::string text;
  while (text.size() < size - 16) text += R"({"and":[)";
  EXPECT_EQ(json_dump_to_condition(text.c_str(), 0), nullptr);
  EXPECT_EQ(json_dump_to_condition(std::string(size, '"').c_str(), 0), nullptr);
  text = R"({"and":[)";
  while (text.size() < size - 16) text += "[],";
  EXPECT_EQ(json_dump_to_condition((text + "[]]}").c_str(), 0), nullptr);
  text = "{";
  for (int i = 0; text.size() < size - 32; ++i) text += "\"" + std::to_string(i) + "\":0,";
  EXPECT_EQ(json_dump_to_condition((text + "\"x\":0}").c_str(), 0), nullptr);
  EXPECT_EQ(json_dump_to_condition(
                (R"({"key":"k","op":"equal","string":)" + std::string(size - 64, '9') + "}").c_str(), 0),
            nullptr);
}

TEST(ConditionJson, ATreeThatIsNotUtf8HasNoJsonForm) {
  EXPECT_EQ(dump_and_free(cfg_new_string_condition("k", CFG_OP_EQUAL, "\xff")), "NULL");
  EXPECT_EQ(dump_and_free(cfg_new_reference_condition("\xc3", CFG_OP_EQUAL, "x")), "NULL");
  EXPECT_EQ(dump_and_free(cfg_new_untyped_condition("\x80", CFG_OP_ABSENT)), "NULL");
  cfg_condition *node = cfg_new_and_condition();
  ASSERT_EQ(cfg_condition_add_child(node, cfg_new_and_condition()), 1);
  ASSERT_EQ(cfg_condition_add_child(node, cfg_new_string_condition("k", CFG_OP_EQUAL, "\xff")), 1);
  EXPECT_EQ(dump_and_free(node), "NULL");
}
