// Every call survives NULL in each place, fails, and changes nothing.
#include "fixture.hpp"
#include "tree.hpp"

class NullTest : public StoreTest {
 protected:
  void SetUp() override {
    StoreTest::SetUp();
    map = make_map(store, "map");
    ASSERT_EQ(cfg_map_set_string(store, map, "string", "x"), 1);
    ASSERT_EQ(cfg_map_set_int(store, map, "int", 1), 1);
    ASSERT_EQ(cfg_map_set_bool(store, map, "bool", 1), 1);
    ASSERT_EQ(cfg_map_set_blob(store, map, "blob", "x", 1), 1);
    ASSERT_EQ(cfg_map_set_reference(store, map, "reference", "x"), 1);
    ASSERT_NE(append_named(store, make_list(store, "list"), "x"), nullptr);
    ASSERT_TRUE(commits(store));
    map = cfg_get_by_path(store, "map");
    list = cfg_get_by_path(store, "list");
    before = dump(store);
  }
  void TearDown() override {
    EXPECT_EQ(dump(store), before);
    EXPECT_EQ(cfg_has_changes(store), 0);
    StoreTest::TearDown();
  }
  cfg_elem *map = nullptr, *list = nullptr;
  std::string before;
};
STORE_TEST_ON_BOTH_ENGINES(NullTest);

TEST_P(NullTest, Navigation) {
  EXPECT_EQ(cfg_root(nullptr), nullptr);
  EXPECT_EQ(cfg_elem_uuid(map, nullptr), 0);
  char *id = nullptr;
  EXPECT_EQ(cfg_elem_uuid(nullptr, &id), 0);
  EXPECT_EQ(id, nullptr);
  EXPECT_EQ(cfg_get_mapelem(nullptr, "k"), nullptr);
  EXPECT_EQ(cfg_get_mapelem(map, nullptr), nullptr);
  EXPECT_EQ(cfg_simple_get_mapelem(nullptr, map, "int"), nullptr);
  EXPECT_EQ(cfg_simple_get_mapelem(store, nullptr, "int"), nullptr);
  EXPECT_EQ(cfg_simple_get_mapelem(store, map, nullptr), nullptr);
  EXPECT_EQ(cfg_get_listelem(nullptr, 0), nullptr);
  EXPECT_EQ(cfg_simple_get_listelem(nullptr, list, 0), nullptr);
  EXPECT_EQ(cfg_simple_get_listelem(store, nullptr, 0), nullptr);
  EXPECT_EQ(cfg_get_list(nullptr, list), 0);
  EXPECT_EQ(cfg_get_list(store, nullptr), 0);
  EXPECT_EQ(cfg_elem_kind(nullptr), CFG_NONE);
  EXPECT_EQ(cfg_map_has(nullptr, "int"), 0);
  EXPECT_EQ(cfg_map_has(map, nullptr), 0);
}

TEST_P(NullTest, Lists) {
  std::int32_t size = 77;
  EXPECT_EQ(cfg_list_size(nullptr, &size), 0);
  EXPECT_EQ(cfg_list_size(list, nullptr), 0);
  EXPECT_EQ(cfg_list_future_size(nullptr, &size), 0);
  EXPECT_EQ(cfg_list_future_size(list, nullptr), 0);
  EXPECT_EQ(size, 77);
  EXPECT_EQ(cfg_get_future_listelem(nullptr, 0), nullptr);
  cfg_elem *fresh = cfg_new_map(store);
  EXPECT_EQ(cfg_add_listelem(nullptr, list, fresh), 0);
  EXPECT_EQ(cfg_add_listelem(store, nullptr, fresh), 0);
  EXPECT_EQ(cfg_add_listelem(store, list, nullptr), 0);
  EXPECT_EQ(cfg_append_future_listelem(nullptr, list, fresh), 0);
  EXPECT_EQ(cfg_append_future_listelem(store, nullptr, fresh), 0);
  EXPECT_EQ(cfg_append_future_listelem(store, list, nullptr), 0);
  EXPECT_EQ(cfg_set_list(nullptr, list), nullptr);
  EXPECT_EQ(cfg_set_list(store, nullptr), nullptr);
}

TEST_P(NullTest, MapReaders) {
  char *text = nullptr;
  std::int32_t number = 77;
  void *data = nullptr;
  std::size_t length = 77;
  EXPECT_EQ(cfg_map_get_string(nullptr, map, "string", &text), 0);
  EXPECT_EQ(cfg_map_get_string(store, nullptr, "string", &text), 0);
  EXPECT_EQ(cfg_map_get_string(store, map, nullptr, &text), 0);
  EXPECT_EQ(cfg_map_get_string(store, map, "string", nullptr), 0);
  EXPECT_EQ(cfg_map_get_int(nullptr, map, "int", &number), 0);
  EXPECT_EQ(cfg_map_get_int(store, nullptr, "int", &number), 0);
  EXPECT_EQ(cfg_map_get_int(store, map, nullptr, &number), 0);
  EXPECT_EQ(cfg_map_get_int(store, map, "int", nullptr), 0);
  EXPECT_EQ(cfg_map_get_bool(nullptr, map, "bool", &number), 0);
  EXPECT_EQ(cfg_map_get_bool(store, nullptr, "bool", &number), 0);
  EXPECT_EQ(cfg_map_get_bool(store, map, nullptr, &number), 0);
  EXPECT_EQ(cfg_map_get_bool(store, map, "bool", nullptr), 0);
  EXPECT_EQ(cfg_map_get_blob(nullptr, map, "blob", &data, &length), 0);
  EXPECT_EQ(cfg_map_get_blob(store, nullptr, "blob", &data, &length), 0);
  EXPECT_EQ(cfg_map_get_blob(store, map, nullptr, &data, &length), 0);
  EXPECT_EQ(cfg_map_get_blob(store, map, "blob", nullptr, &length), 0);
  EXPECT_EQ(cfg_map_get_blob(store, map, "blob", &data, nullptr), 0);
  EXPECT_EQ(cfg_map_get_reference(nullptr, map, "reference", &text), 0);
  EXPECT_EQ(cfg_map_get_reference(store, nullptr, "reference", &text), 0);
  EXPECT_EQ(cfg_map_get_reference(store, map, nullptr, &text), 0);
  EXPECT_EQ(cfg_map_get_reference(store, map, "reference", nullptr), 0);
  EXPECT_EQ(cfg_map_keys(nullptr, nullptr, &number), 0);
  EXPECT_EQ(cfg_map_keys(map, nullptr, nullptr), 0);
  EXPECT_EQ(text, nullptr);
  EXPECT_EQ(data, nullptr);
  EXPECT_EQ(number, 77);
  EXPECT_EQ(length, 77U);
}

TEST_P(NullTest, MapWriters) {
  EXPECT_EQ(cfg_map_set_string(nullptr, map, "k", "x"), 0);
  EXPECT_EQ(cfg_map_set_string(store, nullptr, "k", "x"), 0);
  EXPECT_EQ(cfg_map_set_string(store, map, nullptr, "x"), 0);
  EXPECT_EQ(cfg_map_set_string(store, map, "k", nullptr), 0);
  EXPECT_EQ(cfg_map_set_int(nullptr, map, "k", 1), 0);
  EXPECT_EQ(cfg_map_set_int(store, nullptr, "k", 1), 0);
  EXPECT_EQ(cfg_map_set_int(store, map, nullptr, 1), 0);
  EXPECT_EQ(cfg_map_set_bool(nullptr, map, "k", 1), 0);
  EXPECT_EQ(cfg_map_set_bool(store, nullptr, "k", 1), 0);
  EXPECT_EQ(cfg_map_set_bool(store, map, nullptr, 1), 0);
  EXPECT_EQ(cfg_map_set_blob(nullptr, map, "k", "x", 1), 0);
  EXPECT_EQ(cfg_map_set_blob(store, nullptr, "k", "x", 1), 0);
  EXPECT_EQ(cfg_map_set_blob(store, map, nullptr, "x", 1), 0);
  EXPECT_EQ(cfg_map_set_blob(store, map, "k", nullptr, 1), 0);
  EXPECT_EQ(cfg_map_set_reference(nullptr, map, "k", "x"), 0);
  EXPECT_EQ(cfg_map_set_reference(store, nullptr, "k", "x"), 0);
  EXPECT_EQ(cfg_map_set_reference(store, map, nullptr, "x"), 0);
  EXPECT_EQ(cfg_map_set_reference(store, map, "k", nullptr), 0);
  EXPECT_EQ(cfg_map_delete_key(nullptr, map, "int"), 0);
  EXPECT_EQ(cfg_map_delete_key(store, nullptr, "int"), 0);
  EXPECT_EQ(cfg_map_delete_key(store, map, nullptr), 0);
  cfg_elem *fresh = cfg_new_map(store);
  EXPECT_EQ(cfg_add_mapelem(nullptr, map, "k", fresh), 0);
  EXPECT_EQ(cfg_add_mapelem(store, nullptr, "k", fresh), 0);
  EXPECT_EQ(cfg_add_mapelem(store, map, nullptr, fresh), 0);
  EXPECT_EQ(cfg_add_mapelem(store, map, "k", nullptr), 0);
}

TEST_P(NullTest, CreatingAndChanging) {
  EXPECT_EQ(cfg_new_map(nullptr), nullptr);
  EXPECT_EQ(cfg_new_list(nullptr), nullptr);
  EXPECT_EQ(cfg_new_string(nullptr, "x"), nullptr);
  EXPECT_EQ(cfg_new_string(store, nullptr), nullptr);
  EXPECT_EQ(cfg_new_reference(nullptr, "x"), nullptr);
  EXPECT_EQ(cfg_new_reference(store, nullptr), nullptr);
  cfg_elem *text = cfg_get_by_path(store, "map.string");
  cfg_elem *blob = cfg_get_by_path(store, "map.blob");
  cfg_elem *reference = cfg_get_by_path(store, "map.reference");
  EXPECT_EQ(cfg_set_string(nullptr, text, "y"), 0);
  EXPECT_EQ(cfg_set_string(store, nullptr, "y"), 0);
  EXPECT_EQ(cfg_set_string(store, text, nullptr), 0);
  EXPECT_EQ(cfg_set_blob(nullptr, blob, "y", 1), 0);
  EXPECT_EQ(cfg_set_blob(store, nullptr, "y", 1), 0);
  EXPECT_EQ(cfg_set_blob(store, blob, nullptr, 1), 0);
  EXPECT_EQ(cfg_set_reference(nullptr, reference, "y"), 0);
  EXPECT_EQ(cfg_set_reference(store, nullptr, "y"), 0);
  EXPECT_EQ(cfg_set_reference(store, reference, nullptr), 0);
  EXPECT_EQ(cfg_delete_element(nullptr, text), 0);
  EXPECT_EQ(cfg_delete_element(store, nullptr), 0);
}

TEST_P(NullTest, ScalarReaders) {
  char *text = nullptr;
  std::int32_t number = 77;
  void *data = nullptr;
  std::size_t length = 77;
  EXPECT_EQ(cfg_string_value(nullptr, &text), 0);
  EXPECT_EQ(cfg_int_value(nullptr, &number), 0);
  EXPECT_EQ(cfg_bool_value(nullptr, &number), 0);
  EXPECT_EQ(cfg_blob_value(nullptr, &data, &length), 0);
  EXPECT_EQ(cfg_reference_value(nullptr, &text), 0);
  EXPECT_EQ(cfg_string_value(cfg_get_by_path(store, "map.string"), nullptr), 0);
  EXPECT_EQ(cfg_int_value(cfg_get_by_path(store, "map.int"), nullptr), 0);
  EXPECT_EQ(cfg_bool_value(cfg_get_by_path(store, "map.bool"), nullptr), 0);
  EXPECT_EQ(cfg_blob_value(cfg_get_by_path(store, "map.blob"), nullptr, &length), 0);
  EXPECT_EQ(cfg_blob_value(cfg_get_by_path(store, "map.blob"), &data, nullptr), 0);
  EXPECT_EQ(cfg_reference_value(cfg_get_by_path(store, "map.reference"), nullptr), 0);
  EXPECT_EQ(text, nullptr);
  EXPECT_EQ(data, nullptr);
  EXPECT_EQ(number, 77);
  EXPECT_EQ(length, 77U);
}

TEST_P(NullTest, LifeCycle) {
  cfg_close(nullptr);
  EXPECT_EQ(cfg_commit(nullptr, nullptr), 0);
  cfg_abandon(nullptr);
  EXPECT_EQ(cfg_refresh(nullptr), 0);
  EXPECT_EQ(cfg_park(nullptr), 0);
  EXPECT_EQ(cfg_revision(nullptr), 0U);
  EXPECT_EQ(cfg_has_changes(nullptr), 0);
  EXPECT_NE(cfg_error_text(nullptr), nullptr);
  cfg_status_info status{};
  EXPECT_EQ(cfg_status(nullptr, &status), 0);
  EXPECT_EQ(cfg_status(store, nullptr), 0);
  EXPECT_EQ(cfg_verify(nullptr, nullptr, nullptr), 0);
  EXPECT_EQ(cfg_compact(nullptr, "x"), 0);
  EXPECT_EQ(cfg_compact(store, nullptr), 0);
}

TEST_P(NullTest, Messages) {
  EXPECT_EQ(cfg_message_add_unexpected(nullptr, "src/users", 1), 0);
  EXPECT_EQ(cfg_message_add_bad_key(nullptr), 0);
  EXPECT_EQ(cfg_message_add_csr_generate_failed(nullptr), 0);
  EXPECT_EQ(cfg_get_message_count(nullptr), 0);
  EXPECT_EQ(cfg_get_message(nullptr, 0), nullptr);
  EXPECT_STREQ(cfg_get_first_message_string(nullptr), "");
  cfg_message_free(nullptr);
}

// An element belongs to the handle that gave it out.
TEST_P(NullTest, AnElementOfAnotherHandleIsNotTakenIn) {
  cfg *other = another_store();
  cfg_elem *foreign = cfg_new_map(other);
  EXPECT_EQ(cfg_add_mapelem(store, map, "k", foreign), 0);
  EXPECT_EQ(cfg_add_listelem(store, list, foreign), 0);
  EXPECT_EQ(cfg_append_future_listelem(store, list, foreign), 0);
  EXPECT_EQ(dump(other), "{}");
}
