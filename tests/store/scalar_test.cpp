// Scalar elements: read and changed through their own handles.
#include "fixture.hpp"
#include "tree.hpp"

#include <cstdlib>
#include <cstring>

class ScalarTest : public StoreTest {
 protected:
  void SetUp() override {
    StoreTest::SetUp();
    map = make_map(store, "map");
    ASSERT_EQ(cfg_map_set_string(store, map, "string", "text"), 1);
    ASSERT_EQ(cfg_map_set_int(store, map, "int", -5), 1);
    ASSERT_EQ(cfg_map_set_bool(store, map, "bool", 1), 1);
    ASSERT_EQ(cfg_map_set_blob(store, map, "blob", "b\0b", 3), 1);
    ASSERT_EQ(cfg_map_set_reference(store, map, "reference", "nodes-1"), 1);
    ASSERT_NE(put_map(store, map, "map"), nullptr);
    ASSERT_NE(put_list(store, map, "list"), nullptr);
    commit_and_reopen();
  }
  void commit_and_reopen() {
    ASSERT_TRUE(commits(store));
    reopen();
    map = cfg_get_by_path(store, "map");
  }
  cfg_elem *at(const char *key) { return cfg_simple_get_mapelem(store, map, key); }
  static constexpr const char *kKeys[] = {"string", "int", "bool", "blob", "reference", "map", "list"};
  cfg_elem *map = nullptr;
};
STORE_TEST_ON_BOTH_ENGINES(ScalarTest);

TEST_P(ScalarTest, AReaderFitsItsKindOnly) {
  for (const std::string key : kKeys) {
    cfg_elem *elem = at(key.c_str());
    char marker[] = "untouched";
    char *text = marker, *id = marker;
    std::int32_t number = 77, truth = 77;
    void *data = marker;
    std::size_t length = 77;
    EXPECT_EQ(cfg_string_value(elem, &text), key == "string");
    EXPECT_STREQ(text, key == "string" ? "text" : "untouched");
    EXPECT_EQ(cfg_reference_value(elem, &id), key == "reference");
    EXPECT_STREQ(id, key == "reference" ? "nodes-1" : "untouched");
    EXPECT_EQ(cfg_int_value(elem, &number), key == "int");
    EXPECT_EQ(number, key == "int" ? -5 : 77);
    EXPECT_EQ(cfg_bool_value(elem, &truth), key == "bool");
    EXPECT_EQ(truth, key == "bool" ? 1 : 77);
    EXPECT_EQ(cfg_blob_value(elem, &data, &length), key == "blob");
    EXPECT_EQ(length, key == "blob" ? 3U : 77U);
    if (text != marker) free(text);
    if (id != marker) free(id);
    if (data != marker) {
      EXPECT_EQ(memcmp(data, "b\0b", 4), 0);
      free(data);
    }
  }
}

TEST_P(ScalarTest, AWriterFitsItsKindOnly) {
  for (const std::string key : kKeys) {
    cfg_elem *elem = at(key.c_str());
    EXPECT_EQ(cfg_set_string(store, elem, "changed"), key == "string") << key;
    EXPECT_EQ(cfg_set_blob(store, elem, "\0", 1), key == "blob") << key;
    EXPECT_EQ(cfg_set_reference(store, elem, "nodes-2"), key == "reference") << key;
  }
  EXPECT_TRUE(failed_with(store, cfg_set_string(store, at("int"), "x"), CFG_E_ARGUMENT));
  for (bool committed : {false, true}) {
    if (committed) commit_and_reopen();
    EXPECT_EQ(
        dump(store, map),
        "{'blob':x00,'bool':b1,'int':i-5,'list':[],'map':{},'reference':r'nodes-2','string':s'changed',}");
  }
}

TEST_P(ScalarTest, ABorrowedReadGivesTheSame) {
  cfg_value value{};
  ASSERT_EQ(cfg_elem_read(at("string"), &value), 1);
  EXPECT_EQ(value.kind, CFG_STRING);
  EXPECT_STREQ(value.data, "text");
  EXPECT_EQ(value.length, 4U);
  EXPECT_EQ(value.number, 0);
  ASSERT_EQ(cfg_elem_read(at("int"), &value), 1);
  EXPECT_EQ(value.kind, CFG_INT);
  EXPECT_EQ(value.number, -5);
  EXPECT_EQ(value.data, nullptr);
  ASSERT_EQ(cfg_elem_read(at("bool"), &value), 1);
  EXPECT_EQ(value.kind, CFG_BOOL);
  EXPECT_EQ(value.number, 1);
  ASSERT_EQ(cfg_elem_read(at("blob"), &value), 1);
  EXPECT_EQ(value.kind, CFG_BLOB);
  EXPECT_EQ(std::string(value.data, value.length), std::string("b\0b", 3));
  ASSERT_EQ(cfg_elem_read(at("reference"), &value), 1);
  EXPECT_EQ(value.kind, CFG_REFERENCE);
  EXPECT_STREQ(value.data, "nodes-1");
  ASSERT_EQ(cfg_elem_read(at("map"), &value), 1);
  EXPECT_EQ(value.kind, CFG_MAP);
  EXPECT_EQ(value.data, nullptr);
  ASSERT_EQ(cfg_elem_read(at("list"), &value), 1);
  EXPECT_EQ(value.kind, CFG_LIST);
  EXPECT_EQ(cfg_elem_read(nullptr, &value), 0);
  EXPECT_EQ(cfg_elem_read(at("list"), nullptr), 0);
}

TEST_P(ScalarTest, SettingTheSameValueIsNoChange) {
  EXPECT_EQ(cfg_set_string(store, at("string"), "text"), 1);
  EXPECT_EQ(cfg_set_blob(store, at("blob"), "b\0b", 3), 1);
  EXPECT_EQ(cfg_set_reference(store, at("reference"), "nodes-1"), 1);
  EXPECT_EQ(cfg_map_set_string(store, map, "string", "text"), 1);
  EXPECT_EQ(cfg_map_set_int(store, map, "int", -5), 1);
  EXPECT_EQ(cfg_map_set_bool(store, map, "bool", 2), 1);
  EXPECT_EQ(cfg_map_set_blob(store, map, "blob", "b\0b", 3), 1);
  EXPECT_EQ(cfg_map_set_reference(store, map, "reference", "nodes-1"), 1);
  EXPECT_EQ(cfg_has_changes(store), 0);
  std::uint64_t before = cfg_revision(store);
  ASSERT_TRUE(commits(store));
  EXPECT_EQ(cfg_revision(store), before);
}

TEST_P(ScalarTest, SettingBackIsNoChange) {
  ASSERT_EQ(cfg_map_set_int(store, map, "int", 1), 1);
  EXPECT_EQ(cfg_has_changes(store), 1);
  ASSERT_EQ(cfg_map_set_int(store, map, "int", -5), 1);
  EXPECT_EQ(cfg_has_changes(store), 0);
  ASSERT_EQ(cfg_map_set_int(store, map, "new", 1), 1);
  EXPECT_EQ(cfg_has_changes(store), 1);
  ASSERT_EQ(cfg_map_delete_key(store, map, "new"), 1);
  EXPECT_EQ(cfg_has_changes(store), 0);
}

TEST_P(ScalarTest, OneByteDecidesBetweenValues) {
  ASSERT_EQ(cfg_set_blob(store, at("blob"), "b\0c", 3), 1);
  EXPECT_EQ(cfg_has_changes(store), 1);
  cfg_abandon(store);
  ASSERT_EQ(cfg_set_blob(store, at("blob"), "b\0b\0", 4), 1);
  EXPECT_EQ(cfg_has_changes(store), 1);
  cfg_abandon(store);
  ASSERT_EQ(cfg_map_set_blob(store, map, "string", "text", 4), 1);  // the same bytes, another kind
  EXPECT_EQ(cfg_has_changes(store), 1);
  cfg_abandon(store);
  ASSERT_EQ(cfg_map_set_int(store, map, "bool", 1), 1);
  EXPECT_EQ(cfg_has_changes(store), 1);
  cfg_abandon(store);
  ASSERT_EQ(cfg_map_set_reference(store, map, "string", "text"), 1);
  EXPECT_EQ(cfg_has_changes(store), 1);
}

TEST_P(ScalarTest, ADeletedScalarIsGone) {
  cfg_elem *text = at("string");
  EXPECT_EQ(cfg_delete_element(store, text), 1);
  EXPECT_EQ(cfg_elem_kind(text), CFG_NONE);
  EXPECT_EQ(cfg_map_has(map, "string"), 0);
  commit_and_reopen();
  EXPECT_EQ(at("string"), nullptr);
  EXPECT_EQ(keys_of(map).size(), 6U);
}
