// Sizes: what fits, what is refused, and that a refusal leaves everything as it was.
#include "fixture.hpp"
#include "tree.hpp"

#include <cstdlib>
#include <cstring>

class LimitTest : public StoreTest {};
STORE_TEST_ON_BOTH_ENGINES(LimitTest);

TEST_P(LimitTest, ValuesOfAMebibyteFit) {
  std::string text(1 << 20, 't');
  std::string bytes;
  for (int i = 0; i < (1 << 20); ++i) bytes += static_cast<char>(i * 7);
  cfg_elem *entry = append_named(store, make_list(store, "nodes"), "n");
  ASSERT_EQ(cfg_map_set_string(store, entry, "text", text.c_str()), 1) << cfg_error_text(store);
  ASSERT_EQ(cfg_map_set_blob(store, entry, "bytes", bytes.data(), bytes.size()), 1) << cfg_error_text(store);
  ASSERT_EQ(cfg_map_set_string(store, cfg_root(store), "text", text.c_str()), 1);
  ASSERT_TRUE(commits(store));
  reopen();
  entry = cfg_get_by_id(store, "nodes-1");
  EXPECT_TRUE(string_at(store, entry, "text") == text);
  EXPECT_TRUE(string_at(store, cfg_root(store), "text") == text);
  void *data = nullptr;
  std::size_t length = 0;
  ASSERT_EQ(cfg_map_get_blob(store, entry, "bytes", &data, &length), 1);
  ASSERT_EQ(length, bytes.size());
  EXPECT_EQ(memcmp(data, bytes.data(), length), 0);
  free(data);
  ASSERT_EQ(cfg_map_set_string(store, entry, "text", "small"), 1);
  ASSERT_TRUE(commits(store));
  EXPECT_EQ(string_at(store, entry, "text"), "small");
  EXPECT_EQ(cfg_verify(store, nullptr, nullptr), 1);
}

TEST_P(LimitTest, ValuesOfEverySizeAroundTheEdgesComeBack) {
  std::vector<std::size_t> sizes;
  for (std::size_t edge : {250U, 500U, 1000U, 2000U, 2048U, 4096U, 8192U, 16384U, 32768U, 65536U, 131072U})
    for (std::size_t around = edge - 20; around < edge + 20; ++around) sizes.push_back(around);
  cfg_elem *list = make_list(store, "sizes");
  for (std::size_t size : sizes) ASSERT_NE(append_named(store, list, std::string(size, 's')), nullptr);
  ASSERT_TRUE(commits(store));
  reopen();
  list = cfg_get_by_path(store, "sizes");
  for (std::size_t i = 0; i < sizes.size(); ++i)
    EXPECT_EQ(string_at(store, cfg_simple_get_listelem(store, list, static_cast<int>(i)), "name").size(),
              sizes[i]);
  check_tree(store);
  EXPECT_EQ(cfg_verify(store, nullptr, nullptr), 1);
}

TEST_P(LimitTest, AValueThatIsTooLargeIsRefused) {
  std::string huge(std::size_t{1} << 30, 'h');
  ASSERT_EQ(cfg_map_set_string(store, cfg_root(store), "k", "before"), 1);
  EXPECT_TRUE(failed_with(store, cfg_map_set_string(store, cfg_root(store), "k", huge.c_str()), CFG_E_LIMIT));
  EXPECT_TRUE(failed_with(store, cfg_map_set_blob(store, cfg_root(store), "k", huge.data(), huge.size()),
                          CFG_E_LIMIT));
  EXPECT_TRUE(failed_with(store, cfg_map_set_blob(store, cfg_root(store), "k", huge.data(), SIZE_MAX / 2),
                          CFG_E_LIMIT));
  EXPECT_TRUE(
      failed_with(store, cfg_map_set_reference(store, cfg_root(store), "k", huge.c_str()), CFG_E_LIMIT));
  EXPECT_EQ(cfg_new_string(store, huge.c_str()), nullptr);
  EXPECT_EQ(cfg_new_reference(store, huge.c_str()), nullptr);
  EXPECT_EQ(string_at(store, cfg_root(store), "k"), "before");
  ASSERT_TRUE(commits(store));
}

TEST_P(LimitTest, ThirtyLevelsFit) {
  cfg_elem *map = cfg_root(store);
  std::string path;
  for (int level = 0; level < 30; ++level) {
    map = level % 3 ? put_map(store, map, "m") : append_named(store, put_list(store, map, "l"), "n");
    ASSERT_NE(map, nullptr) << level;
  }
  ASSERT_TRUE(commits(store));
  std::string before = dump(store);
  check_tree(store);
  reopen();
  EXPECT_EQ(dump(store), before);
  check_tree(store);
  EXPECT_EQ(cfg_verify(store, nullptr, nullptr), 1);
}

TEST_P(LimitTest, ATreeThatIsTooDeepIsRefusedFromAbove) {
  ASSERT_EQ(cfg_map_set_int(store, cfg_root(store), "kept", 1), 1);
  cfg_elem *map = put_map(store, cfg_root(store), "deep");
  int level = 0;
  while (level < 100000) {
    cfg_elem *below = cfg_new_map(store);
    if (!cfg_add_mapelem(store, map, "m", below)) break;
    map = below;
    ++level;
  }
  ASSERT_LT(level, 100000);
  EXPECT_EQ(cfg_error_code(store), CFG_E_LIMIT) << cfg_error_text(store);
  ASSERT_TRUE(commits(store)) << level;
  std::string before = dump(store);
  check_tree(store);
  reopen();
  EXPECT_EQ(dump(store), before);
  std::string text = export_text(store);
  cfg *copy = another_store();
  EXPECT_EQ(import_text(copy, text), 1) << cfg_error_text(copy);
}

TEST_P(LimitTest, ATreeThatIsTooDeepIsRefusedFromBelow) {
  cfg_elem *map = cfg_new_map(store);
  int level = 0;
  while (level < 100000) {
    cfg_elem *above = cfg_new_map(store);
    if (!cfg_add_mapelem(store, above, "m", map)) break;
    map = above;
    ++level;
  }
  EXPECT_EQ(cfg_add_mapelem(store, cfg_root(store), "kept", cfg_new_map(store)), 1);
  if (cfg_add_mapelem(store, cfg_root(store), "deep", map)) {
    ASSERT_LT(level, 100000);
  } else {
    EXPECT_EQ(cfg_error_code(store), CFG_E_LIMIT) << cfg_error_text(store);
  }
  ASSERT_TRUE(commits(store)) << level << " levels";
  EXPECT_EQ(cfg_elem_kind(cfg_get_by_path(store, "kept")), CFG_MAP);
  check_tree(store);
}

TEST_P(LimitTest, TooDeepListsAreRefusedToo) {
  cfg_elem *list = put_list(store, cfg_root(store), "l");
  int level = 0;
  while (level < 100000) {
    cfg_elem *below = cfg_new_list(store);
    if (!cfg_append_future_listelem(store, list, below)) break;
    list = below;
    ++level;
  }
  ASSERT_LT(level, 100000);
  EXPECT_EQ(cfg_error_code(store), CFG_E_LIMIT) << cfg_error_text(store);
  ASSERT_TRUE(commits(store)) << level;
  check_tree(store);
}

TEST_P(LimitTest, AMapOfThousandsOfKeysFits) {
  cfg_elem *map = make_map(store, "map");
  for (int i = 0; i < 5000; ++i)
    ASSERT_EQ(cfg_map_set_int(store, map, ("k" + std::to_string(i)).c_str(), i), 1) << i;
  ASSERT_TRUE(commits(store));
  reopen();
  map = cfg_get_by_path(store, "map");
  for (int i = 0; i < 5000; ++i) ASSERT_EQ(int_at(store, map, ("k" + std::to_string(i)).c_str()), i);
  for (int i = 0; i < 5000; i += 3)
    ASSERT_EQ(cfg_map_delete_key(store, map, ("k" + std::to_string(i)).c_str()), 1);
  ASSERT_TRUE(commits(store));
  EXPECT_EQ(keys_of(map).size(), 3333U);
  for (int i = 0; i < 5000; ++i)
    ASSERT_EQ(int_at(store, map, ("k" + std::to_string(i)).c_str()), i % 3 ? i : INT64_MIN);
}

TEST_P(LimitTest, TextThatIsNoUtf8IsRefusedOrKept) {
  for (const char *text : {"\xff\xfe", "\xc3", "\xed\xa0\x80", "\xf5\x80\x80\x80", "a\x80z", "\xc0\xaf"}) {
    std::string written = kNothing;
    if (cfg_map_set_string(store, cfg_root(store), "k", text)) {
      written = text;
    } else {
      cfg_map_delete_key(store, cfg_root(store), "k");
      EXPECT_NE(cfg_error_code(store), CFG_OK);
    }
    ASSERT_TRUE(commits(store));
    EXPECT_EQ(string_at(store, cfg_root(store), "k"), written);
    std::string exported = export_text(store);
    cfg *copy = another_store();
    ASSERT_EQ(import_text(copy, exported), 1) << cfg_error_text(copy);
    EXPECT_EQ(string_at(copy, cfg_root(copy), "k"), written);
    ASSERT_TRUE(commits(copy));
    EXPECT_EQ(export_text(copy), exported);
  }
}
