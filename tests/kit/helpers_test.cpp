#include "record/helpers.hpp"

#include "kit/fixture.hpp"

namespace {

using tw::text;

TEST(SetString, TheNetworkOneAcceptsTheFieldsOwnPointerAsSuccess) {
  text field;
  ASSERT_EQ(1, tw::_set_string(&field, "eth0"));
  const char *held = field.c_str();
  EXPECT_EQ(1, tw::_set_string(&field, held));
  EXPECT_EQ(held, field.c_str());
}

TEST(SetString, TheNodeOneReportsTheFieldsOwnPointerAsUnchanged) {
  text field;
  ASSERT_EQ(1, tw::set_string(&field, "node"));
  const char *held = field.c_str();
  EXPECT_EQ(0, tw::set_string(&field, held));
  EXPECT_EQ(held, field.c_str());
  EXPECT_STREQ("node", field.c_str());
}

TEST(SetString, AnEqualStringElsewhereIsAChange) {
  text field;
  ASSERT_EQ(1, tw::set_string(&field, "node"));
  EXPECT_EQ(1, tw::set_string(&field, std::string("node").c_str()));
}

TEST(SetString, EmptyAndNullClear) {
  text field;
  ASSERT_EQ(1, tw::_set_string(&field, "a"));
  EXPECT_EQ(1, tw::_set_string(&field, ""));
  EXPECT_EQ(nullptr, field.c_str());
  ASSERT_EQ(1, tw::set_string(&field, "a"));
  EXPECT_EQ(1, tw::set_string(&field, nullptr));
  EXPECT_EQ(nullptr, field.c_str());
}

TEST(SetString, ClearingAClearFieldIsUnchangedToTheNodeOneOnly) {
  text field;
  EXPECT_EQ(1, tw::_set_string(&field, nullptr));
  EXPECT_EQ(0, tw::set_string(&field, nullptr));
  EXPECT_EQ(1, tw::set_string(&field, ""));
}

TEST(SetStringDeathTest, ANullFieldAborts) {
  EXPECT_DEATH(tw::_set_string(static_cast<text *>(nullptr), "a"), "src/network: _set_string: .*`dest'");
  EXPECT_DEATH(tw::set_string(static_cast<text *>(nullptr), "a"), "src/nodes: set_string: .*`dest'");
}

TEST(Trim, CutsBothEndsInPlace) {
  char chars[] = " \t10.0.0.1 \r\n";
  char *trimmed = tw::trim(chars);
  EXPECT_STREQ("10.0.0.1", trimmed);
  EXPECT_EQ(chars + 2, trimmed);
}

TEST(Trim, KeepsInnerBlanksAndEmptiesBlankText) {
  char inner[] = "a b";
  EXPECT_STREQ("a b", tw::trim(inner));
  char blank[] = " \v\f ";
  EXPECT_STREQ("", tw::trim(blank));
  char empty[] = "";
  EXPECT_STREQ("", tw::trim(empty));
}

class Helpers : public kit::StoreTest {};

TEST_F(Helpers, WritersWriteAndNullDeletes) {
  cfg_elem *map = map_at("m");
  EXPECT_EQ(1, tw::store_map_string(store.get(), map, "s", "text"));
  EXPECT_EQ(1, tw::store_map_reference(store.get(), map, "r", "nodes-1"));
  EXPECT_EQ(1, tw::store_map_blob(store.get(), map, "b", "ab\0c", 4));
  EXPECT_EQ("text", string_in(map, "s"));
  char *id = nullptr;
  ASSERT_EQ(1, cfg_map_get_reference(store.get(), map, "r", &id));
  EXPECT_STREQ("nodes-1", id);
  std::free(id);
  void *data = nullptr;
  size_t length = 0;
  ASSERT_EQ(1, cfg_map_get_blob(store.get(), map, "b", &data, &length));
  EXPECT_EQ(std::string("ab\0c", 4), std::string(static_cast<char *>(data), length));
  std::free(data);

  for (int round = 0; round < 2; ++round) {  // the second time the keys are absent already
    EXPECT_EQ(1, tw::store_map_string(store.get(), map, "s", nullptr));
    EXPECT_EQ(1, tw::store_map_reference(store.get(), map, "r", nullptr));
    EXPECT_EQ(1, tw::store_map_blob(store.get(), map, "b", nullptr, 0));
    for (const char *key : {"s", "r", "b"}) EXPECT_EQ(nullptr, cfg_get_mapelem(map, key)) << key;
  }
}

TEST_F(Helpers, WhatIsNoMapHasNothingToDelete) {
  ASSERT_TRUE(cfg_map_set_int(store.get(), root, "number", 1));
  for (cfg_elem *elem :
       {static_cast<cfg_elem *>(nullptr), cfg_simple_get_mapelem(store.get(), root, "number")}) {
    EXPECT_EQ(1, tw::store_map_string(store.get(), elem, "s", nullptr));
    EXPECT_EQ(1, tw::store_map_reference(store.get(), elem, "r", nullptr));
    EXPECT_EQ(1, tw::store_map_blob(store.get(), elem, "b", nullptr, 0));
  }
}

TEST_F(Helpers, WritingIntoNoMapFails) {
  EXPECT_EQ(0, tw::store_map_string(store.get(), nullptr, "s", "text"));
  EXPECT_EQ(0, tw::store_map_reference(store.get(), nullptr, "r", "nodes-1"));
  EXPECT_EQ(0, tw::store_map_blob(store.get(), nullptr, "b", "x", 1));
}

TEST_F(Helpers, ChildReadersReadBelowADottedPath) {
  cfg_elem *map = map_at("m");
  cfg_elem *inner = cfg_new_map(store.get());
  ASSERT_TRUE(cfg_add_mapelem(store.get(), map, "uart", inner));
  ASSERT_TRUE(cfg_map_set_string(store.get(), inner, "baud", "9600"));
  ASSERT_TRUE(cfg_map_set_int(store.get(), inner, "port", -7));
  ASSERT_TRUE(cfg_map_set_bool(store.get(), inner, "on", 1));
  text baud;
  int32_t port = 0;
  int32_t on = 0;
  EXPECT_EQ(1, tw::get_child_string(store.get(), map, "uart.baud", &baud));
  EXPECT_EQ(1, tw::get_child_int(store.get(), map, "uart.port", &port));
  EXPECT_EQ(1, tw::get_child_bool(store.get(), map, "uart.on", &on));
  EXPECT_STREQ("9600", baud.c_str());
  EXPECT_EQ(-7, port);
  EXPECT_EQ(1, on);
}

TEST_F(Helpers, ChildReadersClearTheOutputWhenTheChildIsMissing) {
  cfg_elem *map = map_at("m");
  text baud;
  ASSERT_TRUE(baud.set("old"));
  int32_t number = 9;
  int32_t flag = 1;
  EXPECT_EQ(0, tw::get_child_string(store.get(), map, "uart.baud", &baud));
  EXPECT_EQ(0, tw::get_child_int(store.get(), map, "uart.port", &number));
  EXPECT_EQ(0, tw::get_child_bool(store.get(), map, "uart.on", &flag));
  EXPECT_EQ(nullptr, baud.c_str());
  EXPECT_EQ(0, number);
  EXPECT_EQ(0, flag);
}

TEST_F(Helpers, ChildReadersLeaveTheOutputAloneWhenTheKindIsWrong) {
  cfg_elem *map = map_at("m");
  ASSERT_TRUE(cfg_map_set_int(store.get(), map, "n", 1));
  ASSERT_TRUE(cfg_map_set_string(store.get(), map, "s", "x"));
  text held;
  ASSERT_TRUE(held.set("old"));
  int32_t number = 9;
  int32_t flag = 1;
  EXPECT_EQ(0, tw::get_child_string(store.get(), map, "n", &held));
  EXPECT_EQ(0, tw::get_child_int(store.get(), map, "s", &number));
  EXPECT_EQ(0, tw::get_child_bool(store.get(), map, "s", &flag));
  EXPECT_STREQ("old", held.c_str());
  EXPECT_EQ(9, number);
  EXPECT_EQ(1, flag);
}

}  // namespace
