// Maps: keys, their values, replacing and removing them.
#include "fixture.hpp"
#include "tree.hpp"

#include <cstdlib>
#include <cstring>

class MapTest : public StoreTest {
 protected:
  void SetUp() override {
    StoreTest::SetUp();
    map = make_map(store, "map");
    ASSERT_NE(map, nullptr);
  }
  // Commits and opens the store anew, so that what follows is read from what was stored.
  void commit_and_reopen() {
    ASSERT_TRUE(commits(store));
    reopen();
    map = cfg_get_by_path(store, "map");
    ASSERT_NE(map, nullptr);
  }
  cfg_elem *map = nullptr;
};
STORE_TEST_ON_BOTH_ENGINES(MapTest);

TEST_P(MapTest, KeepsValuesOfEveryKind) {
  const char blob[] = {'a', '\0', 'b', '\n', '\xff'};
  ASSERT_EQ(cfg_map_set_string(store, map, "string", "text with \"quotes\", \\ and \x01\x7f \xc3\xa4"), 1);
  ASSERT_EQ(cfg_map_set_string(store, map, "empty", ""), 1);
  ASSERT_EQ(cfg_map_set_int(store, map, "least", INT32_MIN), 1);
  ASSERT_EQ(cfg_map_set_int(store, map, "most", INT32_MAX), 1);
  ASSERT_EQ(cfg_map_set_int(store, map, "zero", 0), 1);
  ASSERT_EQ(cfg_map_set_bool(store, map, "false", 0), 1);
  ASSERT_EQ(cfg_map_set_bool(store, map, "true", 1), 1);
  ASSERT_EQ(cfg_map_set_bool(store, map, "seven", 7), 1);
  ASSERT_EQ(cfg_map_set_bool(store, map, "minus", -1), 1);
  ASSERT_EQ(cfg_map_set_blob(store, map, "blob", blob, sizeof blob), 1);
  ASSERT_EQ(cfg_map_set_blob(store, map, "no bytes", blob, 0), 1);
  ASSERT_EQ(cfg_map_set_reference(store, map, "reference", "nodes-12"), 1);
  for (bool committed : {false, true}) {
    if (committed) commit_and_reopen();
    EXPECT_EQ(string_at(store, map, "string"), "text with \"quotes\", \\ and \x01\x7f \xc3\xa4");
    EXPECT_EQ(string_at(store, map, "empty"), "");
    EXPECT_EQ(int_at(store, map, "least"), INT32_MIN);
    EXPECT_EQ(int_at(store, map, "most"), INT32_MAX);
    EXPECT_EQ(int_at(store, map, "zero"), 0);
    for (const char *key : {"false", "true", "seven", "minus"}) {
      std::int32_t value = 9;
      EXPECT_EQ(cfg_map_get_bool(store, map, key, &value), 1);
      EXPECT_EQ(value, strcmp(key, "false") == 0 ? 0 : 1) << key;
    }
    void *data = nullptr;
    std::size_t length = 0;
    ASSERT_EQ(cfg_map_get_blob(store, map, "blob", &data, &length), 1);
    ASSERT_EQ(length, sizeof blob);
    EXPECT_EQ(memcmp(data, blob, sizeof blob), 0);
    EXPECT_EQ(static_cast<char *>(data)[length], '\0');
    free(data);
    data = nullptr;
    ASSERT_EQ(cfg_map_get_blob(store, map, "no bytes", &data, &length), 1);
    ASSERT_NE(data, nullptr);
    EXPECT_EQ(length, 0U);
    EXPECT_EQ(*static_cast<char *>(data), '\0');
    free(data);
    EXPECT_EQ(reference_at(store, map, "reference"), "nodes-12");
    EXPECT_EQ(keys_of(map).size(), 12U);
  }
}

TEST_P(MapTest, AReaderFailsOnAnAbsentKeyAndLeavesItsResultAlone) {
  char *text = nullptr;
  char marker[] = "untouched";
  text = marker;
  void *data = marker;
  std::size_t length = 77;
  std::int32_t number = 77;
  EXPECT_EQ(cfg_map_get_string(store, map, "none", &text), 0);
  EXPECT_EQ(cfg_map_get_reference(store, map, "none", &text), 0);
  EXPECT_EQ(cfg_map_get_int(store, map, "none", &number), 0);
  EXPECT_EQ(cfg_map_get_bool(store, map, "none", &number), 0);
  EXPECT_EQ(cfg_map_get_blob(store, map, "none", &data, &length), 0);
  EXPECT_EQ(text, marker);
  EXPECT_EQ(data, marker);
  EXPECT_EQ(length, 77U);
  EXPECT_EQ(number, 77);
  EXPECT_EQ(cfg_get_mapelem(map, "none"), nullptr);
  EXPECT_EQ(cfg_simple_get_mapelem(store, map, "none"), nullptr);
  EXPECT_EQ(cfg_map_has(map, "none"), 0);
}

TEST_P(MapTest, AReaderFailsOnAnotherKind) {
  ASSERT_EQ(cfg_map_set_string(store, map, "string", "1"), 1);
  ASSERT_EQ(cfg_map_set_int(store, map, "int", 1), 1);
  ASSERT_EQ(cfg_map_set_bool(store, map, "bool", 1), 1);
  ASSERT_EQ(cfg_map_set_blob(store, map, "blob", "1", 1), 1);
  ASSERT_EQ(cfg_map_set_reference(store, map, "reference", "1"), 1);
  ASSERT_NE(put_map(store, map, "map"), nullptr);
  ASSERT_NE(put_list(store, map, "list"), nullptr);
  for (bool committed : {false, true}) {
    if (committed) commit_and_reopen();
    for (const std::string &key : keys_of(map)) {
      char *text = nullptr;
      std::int32_t number = 0;
      void *data = nullptr;
      std::size_t length = 0;
      const char *name = key.c_str();
      EXPECT_EQ(cfg_map_get_string(store, map, name, &text), key == "string") << key;
      free(text);
      text = nullptr;
      EXPECT_EQ(cfg_map_get_reference(store, map, name, &text), key == "reference") << key;
      free(text);
      EXPECT_EQ(cfg_map_get_int(store, map, name, &number), key == "int") << key;
      EXPECT_EQ(cfg_map_get_bool(store, map, name, &number), key == "bool") << key;
      EXPECT_EQ(cfg_map_get_blob(store, map, name, &data, &length), key == "blob") << key;
      free(data);
    }
  }
}

TEST_P(MapTest, AWriterReplacesAnyKind) {
  using Set = int (*)(cfg *, cfg_elem *);
  static constexpr Set writers[] = {
      [](cfg *s, cfg_elem *m) { return cfg_map_set_string(s, m, "k", "text"); },
      [](cfg *s, cfg_elem *m) { return cfg_map_set_int(s, m, "k", 42); },
      [](cfg *s, cfg_elem *m) { return cfg_map_set_bool(s, m, "k", 1); },
      [](cfg *s, cfg_elem *m) { return cfg_map_set_blob(s, m, "k", "\x01\x02", 2); },
      [](cfg *s, cfg_elem *m) { return cfg_map_set_reference(s, m, "k", "some-1"); },
      [](cfg *s, cfg_elem *m) { return cfg_add_mapelem(s, m, "k", cfg_new_map(s)); },
      [](cfg *s, cfg_elem *m) { return cfg_add_mapelem(s, m, "k", cfg_new_list(s)); },
  };
  const char *written[] = {"s'text'", "i42", "b1", "x0102", "r'some-1'", "{}", "[]"};
  for (int rounds = 0; rounds < 2; ++rounds)
    for (std::size_t before = 0; before < 7; ++before)
      for (std::size_t after = 0; after < 7; ++after) {
        ASSERT_EQ(writers[before](store, map), 1);
        if (rounds) commit_and_reopen();
        ASSERT_EQ(writers[after](store, map), 1);
        EXPECT_EQ(dump(store, map), std::string("{'k':") + written[after] + ",}");
        if (rounds) commit_and_reopen();
        EXPECT_EQ(dump(store, map), std::string("{'k':") + written[after] + ",}");
      }
}

TEST_P(MapTest, DeletingAKeyRemovesWhatIsBelow) {
  cfg_elem *deep = make_map(store, "map.a.b");
  ASSERT_EQ(cfg_map_set_int(store, deep, "x", 1), 1);
  commit_and_reopen();
  EXPECT_EQ(cfg_map_delete_key(store, map, "a"), 1);
  EXPECT_EQ(cfg_get_by_path(store, "map.a"), nullptr);
  EXPECT_EQ(cfg_get_by_id(store, "map.a.b.x"), nullptr);
  EXPECT_EQ(keys_of(map), std::vector<std::string>{});
  commit_and_reopen();
  EXPECT_EQ(cfg_get_by_id(store, "map.a.b"), nullptr);
  EXPECT_EQ(keys_of(map), std::vector<std::string>{});
}

TEST_P(MapTest, DeletingAnAbsentKeyIsNoFailureAndNoChange) {
  commit_and_reopen();
  EXPECT_EQ(cfg_map_delete_key(store, map, "none"), 1);
  EXPECT_EQ(cfg_has_changes(store), 0);
}

TEST_P(MapTest, ADottedKeyIsOneKey) {
  ASSERT_NE(put_map(store, map, "services.consoleGateway"), nullptr);
  ASSERT_EQ(cfg_map_set_int(store, map, "a.b.c", 3), 1);
  for (bool committed : {false, true}) {
    if (committed) commit_and_reopen();
    EXPECT_EQ(keys_of(map), (std::vector<std::string>{"a.b.c", "services.consoleGateway"}));
    EXPECT_EQ(int_at(store, map, "a.b.c"), 3);
    EXPECT_EQ(cfg_get_mapelem(map, "services"), nullptr);
    EXPECT_EQ(cfg_get_mapelem(map, "a"), nullptr);
  }
}

TEST_P(MapTest, KeysCanBeCountedWithoutGettingThem) {
  std::int32_t count = -1;
  EXPECT_EQ(cfg_map_keys(map, nullptr, &count), 1);
  EXPECT_EQ(count, 0);
  ASSERT_EQ(cfg_map_set_int(store, map, "a", 1), 1);
  ASSERT_EQ(cfg_map_set_int(store, map, "b", 1), 1);
  EXPECT_EQ(cfg_map_keys(map, nullptr, &count), 1);
  EXPECT_EQ(count, 2);
  commit_and_reopen();
  EXPECT_EQ(cfg_map_keys(map, nullptr, &count), 1);
  EXPECT_EQ(count, 2);
  ASSERT_EQ(cfg_map_delete_key(store, map, "a"), 1);
  EXPECT_EQ(cfg_map_keys(map, nullptr, &count), 1);
  EXPECT_EQ(count, 1);
  EXPECT_EQ(cfg_map_keys(cfg_get_by_path(store, "map.b"), nullptr, &count), 0);
  EXPECT_EQ(cfg_map_keys(cfg_new_list(store), nullptr, &count), 0);
}

TEST_P(MapTest, OnlyAMapTakesKeys) {
  cfg_elem *list = put_list(store, map, "list");
  ASSERT_EQ(cfg_map_set_int(store, map, "int", 1), 1);
  commit_and_reopen();
  list = cfg_get_by_path(store, "map.list");
  cfg_elem *number = cfg_get_by_path(store, "map.int");
  for (cfg_elem *elem : {list, number}) {
    EXPECT_TRUE(failed_with(store, cfg_map_set_string(store, elem, "k", "x"), CFG_E_ARGUMENT));
    EXPECT_TRUE(failed_with(store, cfg_map_set_int(store, elem, "k", 1), CFG_E_ARGUMENT));
    EXPECT_TRUE(failed_with(store, cfg_map_set_bool(store, elem, "k", 1), CFG_E_ARGUMENT));
    EXPECT_TRUE(failed_with(store, cfg_map_set_blob(store, elem, "k", "x", 1), CFG_E_ARGUMENT));
    EXPECT_TRUE(failed_with(store, cfg_map_set_reference(store, elem, "k", "x"), CFG_E_ARGUMENT));
    EXPECT_TRUE(failed_with(store, cfg_add_mapelem(store, elem, "k", cfg_new_map(store)), CFG_E_ARGUMENT));
    EXPECT_EQ(cfg_map_delete_key(store, elem, "k"), 0);
    EXPECT_EQ(cfg_get_mapelem(elem, "k"), nullptr);
    EXPECT_EQ(cfg_simple_get_mapelem(store, elem, "k"), nullptr);
    EXPECT_EQ(cfg_map_has(elem, "k"), 0);
  }
  EXPECT_EQ(cfg_has_changes(store), 0);
}

TEST_P(MapTest, AttachingReplacesWhatWasThere) {
  cfg_elem *old = put_map(store, map, "k");
  ASSERT_EQ(cfg_map_set_int(store, old, "x", 1), 1);
  commit_and_reopen();
  cfg_elem *fresh = cfg_new_map(store);
  ASSERT_EQ(cfg_map_set_int(store, fresh, "y", 2), 1);
  ASSERT_EQ(cfg_add_mapelem(store, map, "k", fresh), 1);
  EXPECT_EQ(dump(store, map), "{'k':{'y':i2,},}");
  commit_and_reopen();
  EXPECT_EQ(dump(store, map), "{'k':{'y':i2,},}");
  EXPECT_EQ(cfg_get_by_id(store, "map.k.x"), nullptr);
}

TEST_P(MapTest, OnlyAnUnattachedElementCanBeAttached) {
  cfg_elem *once = cfg_new_map(store);
  ASSERT_EQ(cfg_add_mapelem(store, map, "once", once), 1);
  EXPECT_EQ(cfg_add_mapelem(store, map, "twice", once), 0);
  EXPECT_EQ(cfg_add_mapelem(store, map, "once", once), 0);
  EXPECT_EQ(cfg_add_mapelem(store, map, "root", cfg_root(store)), 0);
  EXPECT_EQ(cfg_add_mapelem(store, map, "self", map), 0);
  cfg_elem *upper = cfg_new_map(store);
  cfg_elem *lower = cfg_new_map(store);
  ASSERT_EQ(cfg_add_mapelem(store, upper, "lower", lower), 1);
  EXPECT_EQ(cfg_add_mapelem(store, lower, "upper", upper), 0);
  EXPECT_EQ(cfg_add_mapelem(store, upper, "self", upper), 0);
  EXPECT_EQ(cfg_add_mapelem(store, map, "null", nullptr), 0);
  EXPECT_EQ(dump(store, map), "{'once':{},}");
  commit_and_reopen();
  EXPECT_EQ(dump(store, map), "{'once':{},}");
}

TEST_P(MapTest, AttachesAWholeTreeAtOnce) {
  cfg_elem *top = cfg_new_map(store);
  cfg_elem *middle = cfg_new_map(store);
  cfg_elem *list = cfg_new_list(store);
  ASSERT_EQ(cfg_add_mapelem(store, middle, "list", list), 1);
  ASSERT_EQ(cfg_append_future_listelem(store, list, cfg_new_string(store, "one")), 1);
  ASSERT_EQ(cfg_map_set_int(store, middle, "n", 5), 1);
  ASSERT_EQ(cfg_add_mapelem(store, top, "middle", middle), 1);
  ASSERT_EQ(cfg_add_mapelem(store, map, "top", top), 1);
  ASSERT_EQ(cfg_map_set_int(store, middle, "later", 6), 1);
  commit_and_reopen();
  EXPECT_EQ(dump(store, map),
            "{'top':{'middle':{'later':i6,'list':[map_top_middle_list-1:s'one',],'n':i5,},},}");
}

TEST_P(MapTest, ScalarsAndReferencesCanBeAttached) {
  ASSERT_EQ(cfg_add_mapelem(store, map, "s", cfg_new_string(store, "text")), 1);
  ASSERT_EQ(cfg_add_mapelem(store, map, "r", cfg_new_reference(store, "x-1")), 1);
  EXPECT_EQ(dump(store, map), "{'r':r'x-1','s':s'text',}");
  commit_and_reopen();
  EXPECT_EQ(dump(store, map), "{'r':r'x-1','s':s'text',}");
}

TEST_P(MapTest, HoldsHundredsOfOddKeys) {
  std::vector<std::string> odd = {"a",
                                  "a.b",
                                  "a_b",
                                  "a-b",
                                  "a-1",
                                  "a-1.b",
                                  "a.b-1",
                                  "~",
                                  "~0",
                                  "~1",
                                  "a~b",
                                  "{",
                                  "{x}",
                                  "{1}",
                                  "}",
                                  "[0]",
                                  "a b",
                                  " ",
                                  "  ",
                                  "\t",
                                  "\n",
                                  "\x01",
                                  "\x7f",
                                  "%",
                                  "%2e",
                                  "%00",
                                  "\\",
                                  "\\.",
                                  "/",
                                  "a/b",
                                  "\"",
                                  "'",
                                  "$",
                                  ".",
                                  "..",
                                  "-",
                                  "--1",
                                  "-1",
                                  "0",
                                  "1",
                                  "_",
                                  "__",
                                  "\xc3\xa4",
                                  "\xe2\x82\xac",
                                  "\xf0\x9f\x98\x80",
                                  "null",
                                  "true",
                                  "A",
                                  "map",
                                  "name",
                                  std::string(255, 'k')};
  for (int i = 0; i < 500; ++i) odd.push_back("key" + std::to_string(i));
  int value = 0;
  for (const std::string &key : odd) ASSERT_EQ(cfg_map_set_int(store, map, key.c_str(), value++), 1) << key;
  for (bool committed : {false, true}) {
    if (committed) commit_and_reopen();
    value = 0;
    for (const std::string &key : odd) EXPECT_EQ(int_at(store, map, key.c_str()), value++) << key;
    EXPECT_EQ(keys_of(map).size(), odd.size());
    EXPECT_EQ(check_tree(store).size(), odd.size() + 2);
  }
  for (std::size_t i = 0; i < odd.size(); i += 2)
    ASSERT_EQ(cfg_map_delete_key(store, map, odd[i].c_str()), 1);
  commit_and_reopen();
  for (std::size_t i = 0; i < odd.size(); ++i)
    EXPECT_EQ(int_at(store, map, odd[i].c_str()), i % 2 ? static_cast<std::int64_t>(i) : INT64_MIN) << odd[i];
}

TEST_P(MapTest, ABadKeyIsRefused) {
  ASSERT_EQ(cfg_map_set_int(store, map, "good", 1), 1);
  commit_and_reopen();
  std::string longest(255, 'x');
  std::string too_long(256, 'x');
  for (const char *key : {"", too_long.c_str(), static_cast<const char *>(nullptr)}) {
    EXPECT_EQ(cfg_map_set_string(store, map, key, "x"), 0);
    EXPECT_EQ(cfg_map_set_int(store, map, key, 1), 0);
    EXPECT_EQ(cfg_map_set_bool(store, map, key, 1), 0);
    EXPECT_EQ(cfg_map_set_blob(store, map, key, "x", 1), 0);
    EXPECT_EQ(cfg_map_set_reference(store, map, key, "x"), 0);
    EXPECT_EQ(cfg_add_mapelem(store, map, key, cfg_new_map(store)), 0);
    EXPECT_EQ(cfg_get_mapelem(map, key), nullptr);
    EXPECT_EQ(cfg_simple_get_mapelem(store, map, key), nullptr);
    EXPECT_EQ(cfg_map_has(map, key), 0);
  }
  EXPECT_TRUE(failed_with(store, cfg_map_set_int(store, map, "", 1), CFG_E_ARGUMENT));
  EXPECT_EQ(cfg_has_changes(store), 0);
  EXPECT_EQ(cfg_map_set_int(store, map, longest.c_str(), 1), 1);
  commit_and_reopen();
  EXPECT_EQ(int_at(store, map, longest.c_str()), 1);
}

TEST_P(MapTest, ANullValueIsRefusedAndChangesNothing) {
  ASSERT_EQ(cfg_map_set_int(store, map, "k", 1), 1);
  commit_and_reopen();
  EXPECT_TRUE(failed_with(store, cfg_map_set_string(store, map, "k", nullptr), CFG_E_ARGUMENT));
  EXPECT_TRUE(failed_with(store, cfg_map_set_reference(store, map, "k", nullptr), CFG_E_ARGUMENT));
  EXPECT_TRUE(failed_with(store, cfg_map_set_blob(store, map, "k", nullptr, 1), CFG_E_ARGUMENT));
  EXPECT_EQ(int_at(store, map, "k"), 1);
  EXPECT_EQ(cfg_has_changes(store), 0);
}
