// Bulk reads: what cfg_map_read() and cfg_list_scan() give is what the plain readers give.
#include "fixture.hpp"
#include "tree.hpp"

class ReadTest : public StoreTest {
 protected:
  struct Row {
    int index;
    std::vector<std::pair<cfg_kind, std::string>> values;
    bool operator==(const Row &) const = default;
  };
  static int keep(void *context, std::int32_t index, const cfg_value *values) {
    auto *rows = static_cast<std::vector<Row> *>(context);
    Row row{index, {}};
    for (int i = 0; i < 3; ++i)
      row.values.emplace_back(values[i].kind, values[i].data ? std::string(values[i].data, values[i].length)
                                                             : std::to_string(values[i].number));
    rows->push_back(row);
    return 1;
  }
  std::vector<Row> scan(cfg_elem *list) {
    std::vector<Row> rows;
    EXPECT_EQ(cfg_list_scan(list, &keys(), keep, &rows), 1);
    return rows;
  }
  static const cfg_keyset &keys() { return keyset_of({"name", "n", "a.b"}); }
  // The same rows by cfg_map_read() of each entry.
  std::vector<Row> read_each(cfg_elem *list) {
    std::vector<Row> rows;
    for (int i = 0; cfg_elem *entry = cfg_simple_get_listelem(store, list, i); ++i) {
      cfg_value values[3] = {};
      cfg_map_read(entry, &keys(), values);
      keep(&rows, i, values);
    }
    return rows;
  }
};
STORE_TEST_ON_BOTH_ENGINES(ReadTest);

TEST_P(ReadTest, AScanAgreesWithPlainReadsThroughoutAnEdit) {
  cfg_elem *list = make_list(store, "nodes");
  auto agree = [&](std::size_t size) {
    list = cfg_get_by_path(store, "nodes");
    std::vector<Row> rows = scan(list);
    EXPECT_EQ(rows.size(), size);
    EXPECT_EQ(rows, read_each(list));
  };
  agree(0);
  for (int i = 0; i < 40; ++i) {
    cfg_elem *entry = append_named(store, list, "node " + std::to_string(i));
    if (i % 2) {
      ASSERT_EQ(cfg_map_set_int(store, entry, "n", i), 1);
    }
    if (i % 3 == 0) {
      ASSERT_EQ(cfg_map_set_blob(store, entry, "a.b", "\0\1", 2), 1);
    }
    if (i % 5 == 0) {
      ASSERT_NE(put_list(store, entry, "ports"), nullptr);
    }
  }
  agree(0);
  ASSERT_EQ(cfg_append_future_listelem(store, list, cfg_new_string(store, "no map")), 1);
  ASSERT_TRUE(commits(store));
  agree(41);
  std::vector<Row> rows = scan(list);
  EXPECT_EQ(rows[3].values[0], (std::pair<cfg_kind, std::string>(CFG_STRING, "node 3")));
  EXPECT_EQ(rows[3].values[1], (std::pair<cfg_kind, std::string>(CFG_INT, "3")));
  EXPECT_EQ(rows[3].values[2], (std::pair<cfg_kind, std::string>(CFG_BLOB, std::string("\0\1", 2))));
  EXPECT_EQ(rows[4].values[1].first, CFG_NONE);
  for (const auto &[kind, text] : rows[40].values) EXPECT_EQ(kind, CFG_NONE);
  ASSERT_EQ(cfg_map_set_string(store, cfg_get_by_id(store, "nodes-7"), "name", "changed"), 1);
  ASSERT_EQ(cfg_map_set_bool(store, cfg_get_by_id(store, "nodes-8"), "n", 1), 1);
  ASSERT_EQ(cfg_map_delete_key(store, cfg_get_by_id(store, "nodes-9"), "name"), 1);
  ASSERT_EQ(cfg_delete_element(store, cfg_get_by_id(store, "nodes-10")), 1);
  cfg_elem *added = cfg_new_map(store);
  ASSERT_EQ(cfg_map_set_int(store, added, "n", 99), 1);
  ASSERT_EQ(cfg_add_listelem(store, list, added), 1);
  agree(41);
  EXPECT_EQ(scan(list)[6].values[0].second, "changed");
  EXPECT_EQ(scan(list)[40].values[1].second, "99");
  ASSERT_TRUE(commits(store));
  agree(41);
  reopen();
  agree(41);
}

TEST_P(ReadTest, OneKeySetServesMapsOfManyShapes) {
  cfg_elem *list = make_list(store, "nodes");
  for (int shape = 0; shape < 300; ++shape) {
    cfg_elem *entry = append_named(store, list, "s" + std::to_string(shape));
    for (int bit = 0; bit < 9; ++bit) {
      if ((shape >> bit) & 1) {
        ASSERT_EQ(cfg_map_set_int(store, entry, ("key" + std::to_string(bit)).c_str(), bit), 1);
      }
    }
    if (shape % 4 == 0) {
      ASSERT_EQ(cfg_map_set_int(store, entry, "n", shape), 1);
    }
  }
  ASSERT_TRUE(commits(store));
  list = cfg_get_by_path(store, "nodes");
  std::vector<Row> rows = scan(list);
  ASSERT_EQ(rows.size(), 300U);
  EXPECT_EQ(rows, read_each(list));
  for (int shape = 0; shape < 300; ++shape) {
    const Row &row = rows[static_cast<std::size_t>(shape)];
    EXPECT_EQ(row.values[0].second, "s" + std::to_string(shape));
    EXPECT_EQ(row.values[1].first, shape % 4 == 0 ? CFG_INT : CFG_NONE);
  }
  check_tree(store);
}

TEST_P(ReadTest, AKeySetReadsNestedMapsAndNewMapsToo) {
  cfg_elem *map = make_map(store, "a.b");
  ASSERT_EQ(cfg_map_set_string(store, map, "name", "nested"), 1);
  cfg_value values[3];
  for (bool committed : {false, true}) {
    if (committed) {
      ASSERT_TRUE(commits(store));
      map = cfg_get_by_path(store, "a.b");
    }
    ASSERT_EQ(cfg_map_read(map, &keys(), values), 1);
    EXPECT_EQ(std::string(values[0].data, values[0].length), "nested");
    EXPECT_EQ(values[1].kind, CFG_NONE);
  }
  ASSERT_EQ(cfg_map_read(cfg_root(store), &keyset_of({"a", "b"}), values), 1);
  EXPECT_EQ(values[0].kind, CFG_MAP);
  EXPECT_EQ(values[1].kind, CFG_NONE);
}

namespace {

const std::vector<std::string> kOneKey = {"inner"};

// The value of the key "inner" of a map.
cfg_value inner_of(cfg_elem *map) {
  static const cfg_keyset &set = keyset_of(kOneKey);
  cfg_value value{};
  EXPECT_EQ(cfg_map_read(map, &set, &value), 1);
  return value;
}

// The texts of a list's entries in order; "-" stands for an entry that is no string.
std::vector<std::string> texts_in(cfg *store, const cfg_value &list) {
  std::vector<std::string> texts;
  EXPECT_EQ(cfg_value_scan(
                store, &list,
                [](void *context, const cfg_value *entry) {
                  static_cast<std::vector<std::string> *>(context)->push_back(
                      entry->kind == CFG_STRING ? std::string(entry->data, entry->length) : "-");
                  return 1;
                },
                &texts),
            1);
  return texts;
}

// The "name" of a list's entries in order; "-" stands for an entry that is no map.
std::vector<std::string> names_in(cfg *store, const cfg_value &list) {
  static const char *const name[] = {"name"};
  static const cfg_keyset set{name, 1};
  std::vector<std::string> names;
  EXPECT_EQ(cfg_value_scan_maps(
                store, &list, &set,
                [](void *context, const cfg_value *values) {
                  static_cast<std::vector<std::string> *>(context)->push_back(
                      values == nullptr ? "-" : std::string(values[0].data, values[0].length));
                  return 1;
                },
                &names),
            1);
  return names;
}

}  // namespace

TEST_P(ReadTest, AMapThatWasReadAsAValueIsReadFurther) {
  cfg_elem *outer = make_map(store, "outer");
  cfg_elem *inner = make_map(store, "outer.inner");
  ASSERT_EQ(cfg_map_set_int(store, make_map(store, "outer.inner.inner"), "n", 7), 1);
  ASSERT_EQ(cfg_map_set_string(store, inner, "name", "first"), 1);
  const auto agree = [&](const char *name) {
    const cfg_value map = inner_of(cfg_get_by_path(store, "outer"));
    ASSERT_EQ(map.kind, CFG_MAP);
    cfg_value values[3];
    ASSERT_EQ(cfg_value_read(store, &map, &keys(), values), 1);
    EXPECT_STREQ(values[0].data, name);
    EXPECT_EQ(values[1].kind, CFG_NONE);
    cfg_value below;
    ASSERT_EQ(cfg_value_read(store, &map, &keyset_of(kOneKey), &below), 1);
    ASSERT_EQ(cfg_value_read(store, &below, &keys(), values), 1);
    EXPECT_EQ(values[1].number, 7);
  };
  agree("first");
  ASSERT_TRUE(commits(store));
  agree("first");
  ASSERT_EQ(cfg_map_set_string(store, cfg_get_by_path(store, "outer.inner"), "name", "second"), 1);
  agree("second");
  ASSERT_EQ(cfg_map_delete_key(store, outer, "inner"), 1);
  EXPECT_EQ(inner_of(outer).kind, CFG_NONE);
}

TEST_P(ReadTest, AListThatWasReadAsAValueShowsWhatListReadsShow) {
  cfg_elem *node = append_named(store, make_list(store, "nodes"), "node");
  ASSERT_TRUE(commits(store));
  node = cfg_get_by_id(store, "nodes-1");
  std::vector<std::string> expected;
  ASSERT_NE(put_list(store, node, "inner"), nullptr);
  // The later rounds are long enough for a list with records of its own.
  for (const std::size_t size : {0U, 1U, 3U, 200U}) {
    cfg_elem *list = cfg_simple_get_mapelem(store, node, "inner");
    while (expected.size() < size) {
      expected.push_back("the text of entry " + std::to_string(expected.size()));
      ASSERT_EQ(cfg_add_listelem(store, list, cfg_new_string(store, expected.back().c_str())), 1);
    }
    EXPECT_EQ(texts_in(store, inner_of(node)), expected);
    ASSERT_TRUE(commits(store));
    EXPECT_EQ(texts_in(store, inner_of(node)), expected);
    reopen();
    node = cfg_get_by_id(store, "nodes-1");
    EXPECT_EQ(texts_in(store, inner_of(node)), expected);
  }
  cfg_elem *list = cfg_simple_get_mapelem(store, node, "inner");
  ASSERT_EQ(cfg_delete_element(store, cfg_simple_get_listelem(store, list, 1)), 1);
  ASSERT_EQ(cfg_set_string(store, cfg_simple_get_listelem(store, list, 0), "changed"), 1);
  ASSERT_EQ(cfg_add_listelem(store, list, cfg_new_map(store)), 1);
  ASSERT_NE(append_string(store, list, "pending"), nullptr);
  expected.erase(expected.begin() + 1);
  expected.front() = "changed";
  expected.push_back("-");
  EXPECT_EQ(texts_in(store, inner_of(node)), expected);
}

TEST_P(ReadTest, TheMapsOfAListValueAreReadWithAKeySet) {
  append_named(store, make_list(store, "nodes"), "node");
  ASSERT_TRUE(commits(store));
  cfg_elem *node = cfg_get_by_id(store, "nodes-1");
  ASSERT_NE(put_list(store, node, "inner"), nullptr);
  std::vector<std::string> expected;
  // The last round is long enough for a list with records of its own.
  for (const std::size_t size : {0U, 1U, 3U, 200U}) {
    cfg_elem *list = cfg_simple_get_mapelem(store, node, "inner");
    while (expected.size() < size) {
      expected.push_back("the name of entry " + std::to_string(expected.size()));
      ASSERT_NE(append_named(store, list, expected.back().c_str()), nullptr);
    }
    ASSERT_TRUE(commits(store));
    EXPECT_EQ(names_in(store, inner_of(node)), expected);
    reopen();
    node = cfg_get_by_id(store, "nodes-1");
    EXPECT_EQ(names_in(store, inner_of(node)), expected);
  }
  cfg_elem *list = cfg_simple_get_mapelem(store, node, "inner");
  ASSERT_EQ(cfg_delete_element(store, cfg_simple_get_listelem(store, list, 1)), 1);
  ASSERT_EQ(cfg_map_set_string(store, cfg_simple_get_listelem(store, list, 0), "name", "changed"), 1);
  ASSERT_EQ(cfg_add_listelem(store, list, cfg_new_string(store, "no map")), 1);
  ASSERT_NE(append_named(store, list, "pending"), nullptr);
  expected.erase(expected.begin() + 1);
  expected.front() = "changed";
  expected.push_back("-");
  EXPECT_EQ(names_in(store, inner_of(node)), expected);
}

TEST_P(ReadTest, AScanOfAListValuesMapsEndsWhenTheVisitorSaysSo) {
  cfg_elem *list = put_list(store, make_map(store, "outer"), "inner");
  for (const char *name : {"a", "b", "c"}) ASSERT_NE(append_named(store, list, name), nullptr);
  ASSERT_TRUE(commits(store));
  const cfg_value value = inner_of(cfg_get_by_path(store, "outer"));
  int calls = 0;
  const auto second = [](void *context, const cfg_value *) {
    return ++*static_cast<int *>(context) < 2 ? 1 : 0;
  };
  EXPECT_EQ(cfg_value_scan_maps(store, &value, &keys(), second, &calls), 1);
  EXPECT_EQ(calls, 2);
}

TEST_P(ReadTest, AScanOfAListValueEndsWhenTheVisitorSaysSo) {
  cfg_elem *map = make_map(store, "outer");
  cfg_elem *list = put_list(store, map, "inner");
  for (const char *text : {"a", "b", "c"}) ASSERT_NE(append_string(store, list, text), nullptr);
  ASSERT_TRUE(commits(store));
  const cfg_value value = inner_of(cfg_get_by_path(store, "outer"));
  int calls = 0;
  const auto second = [](void *context, const cfg_value *) {
    return ++*static_cast<int *>(context) < 2 ? 1 : 0;
  };
  EXPECT_EQ(cfg_value_scan(store, &value, second, &calls), 1);
  EXPECT_EQ(calls, 2);
}

TEST_P(ReadTest, TheEntriesOfAListValueAreReadAsFarAsThereIsRoom) {
  cfg_elem *map = make_map(store, "outer");
  cfg_elem *list = put_list(store, map, "inner");
  for (const char *text : {"a", "b"}) ASSERT_NE(append_string(store, list, text), nullptr);
  ASSERT_EQ(cfg_append_future_listelem(store, list, cfg_new_map(store)), 1);
  ASSERT_TRUE(commits(store));
  const cfg_value value = inner_of(cfg_get_by_path(store, "outer"));
  cfg_value entries[4] = {};
  ASSERT_EQ(cfg_value_entries(store, &value, entries, 2), 3);
  EXPECT_EQ(std::string(entries[1].data, entries[1].length), "b");
  EXPECT_EQ(entries[2].kind, CFG_NONE);
  ASSERT_EQ(cfg_value_entries(store, &value, entries, 4), 3);
  EXPECT_EQ(std::string(entries[0].data, entries[0].length), "a");
  EXPECT_EQ(entries[2].kind, CFG_MAP);
  EXPECT_EQ(entries[3].kind, CFG_NONE);
  EXPECT_EQ(cfg_value_entries(store, &value, entries, 0), 3);
}

TEST_P(ReadTest, AValueThatIsNoMapOrListIsNotReadFurther) {
  cfg_elem *map = make_map(store, "outer");
  ASSERT_NE(put_list(store, map, "inner"), nullptr);
  const cfg_value list = inner_of(map);
  const cfg_value none{};
  const cfg_value number{CFG_INT, 5, nullptr, 0};
  const cfg_value placeless{CFG_MAP, 0, nullptr, 0};
  const cfg_value placeless_list{CFG_LIST, 0, nullptr, 0};
  const auto visit = [](void *, const cfg_value *) { return 1; };
  cfg_value values[3];
  for (const cfg_value *wrong : {&list, &none, &number, &placeless})
    EXPECT_EQ(cfg_value_read(store, wrong, &keys(), values), 0);
  for (const cfg_value *wrong : {&none, &number, &placeless, &placeless_list})
    EXPECT_EQ(cfg_value_scan(store, wrong, visit, nullptr), 0);
  for (const cfg_value *wrong : {&none, &number, &placeless, &placeless_list})
    EXPECT_EQ(cfg_value_entries(store, wrong, values, 3), -1);
  for (const cfg_value *wrong : {&none, &number, &placeless, &placeless_list})
    EXPECT_EQ(cfg_value_scan_maps(store, wrong, &keys(), visit, nullptr), 0);
  EXPECT_EQ(cfg_value_scan_maps(nullptr, &list, &keys(), visit, nullptr), 0);
  EXPECT_EQ(cfg_value_scan_maps(store, nullptr, &keys(), visit, nullptr), 0);
  EXPECT_EQ(cfg_value_scan_maps(store, &list, nullptr, visit, nullptr), 0);
  EXPECT_EQ(cfg_value_scan_maps(store, &list, &keys(), nullptr, nullptr), 0);
  EXPECT_EQ(cfg_value_entries(nullptr, &list, values, 3), -1);
  EXPECT_EQ(cfg_value_entries(store, nullptr, values, 3), -1);
  EXPECT_EQ(cfg_value_entries(store, &list, nullptr, 3), -1);
  EXPECT_EQ(cfg_value_read(nullptr, &list, &keys(), values), 0);
  EXPECT_EQ(cfg_value_read(store, nullptr, &keys(), values), 0);
  EXPECT_EQ(cfg_value_read(store, &list, nullptr, values), 0);
  EXPECT_EQ(cfg_value_read(store, &list, &keys(), nullptr), 0);
  EXPECT_EQ(cfg_value_scan(nullptr, &list, visit, nullptr), 0);
  EXPECT_EQ(cfg_value_scan(store, nullptr, visit, nullptr), 0);
  EXPECT_EQ(cfg_value_scan(store, &list, nullptr, nullptr), 0);
}

namespace {

std::vector<std::string> ids_by_index(cfg_elem *list) {
  std::vector<std::string> ids;
  int32_t size = 0;
  EXPECT_EQ(cfg_list_size(list, &size), 1);
  for (int32_t i = 0; i < size; ++i) ids.emplace_back(cfg_get_listelem(list, i));
  return ids;
}

std::vector<std::string> ids_visited(cfg_elem *list) {
  std::vector<std::string> ids;
  EXPECT_EQ(cfg_list_ids(
                list,
                [](void *context, int32_t index, const char *id) {
                  auto &seen = *static_cast<std::vector<std::string> *>(context);
                  EXPECT_EQ(static_cast<std::size_t>(index), seen.size());
                  seen.emplace_back(id);
                  return 1;
                },
                &ids),
            1);
  return ids;
}

}  // namespace

TEST_P(ReadTest, TheIdsOfAListAreThoseOfItsIndexes) {
  make_list(store, "nodes");
  const auto agree = [&](const char *path) {
    cfg_elem *list = cfg_get_by_path(store, path);
    EXPECT_EQ(ids_visited(list), ids_by_index(list)) << path;
  };
  // The last round is long enough for a list with records of its own.
  for (const int more : {0, 2, 300}) {
    cfg_elem *list = cfg_get_by_path(store, "nodes");
    for (int i = 0; i < more; ++i) ASSERT_NE(append_named(store, list, "node"), nullptr);
    agree("nodes");
    ASSERT_TRUE(commits(store));
    agree("nodes");
  }
  cfg_elem *dotted = put_list(store, cfg_get_by_id(store, "nodes-2"), "a.b");
  ASSERT_NE(append_string(store, dotted, "text"), nullptr);
  ASSERT_TRUE(commits(store));
  dotted = cfg_simple_get_mapelem(store, cfg_get_by_id(store, "nodes-2"), "a.b");
  EXPECT_EQ(ids_visited(dotted), ids_by_index(dotted));
  ASSERT_EQ(cfg_delete_element(store, cfg_get_by_id(store, "nodes-1")), 1);
  ASSERT_EQ(cfg_add_listelem(store, cfg_get_by_path(store, "nodes"), cfg_new_map(store)), 1);
  agree("nodes");
}

TEST_P(ReadTest, AVisitOfIdsEndsWhenTheVisitorSaysSoAndOfNoListNeverBegins) {
  cfg_elem *list = make_list(store, "nodes");
  for (int i = 0; i < 3; ++i) ASSERT_NE(append_named(store, list, "node"), nullptr);
  ASSERT_TRUE(commits(store));
  int calls = 0;
  const auto second = [](void *context, int32_t, const char *) {
    return ++*static_cast<int *>(context) < 2 ? 1 : 0;
  };
  EXPECT_EQ(cfg_list_ids(cfg_get_by_path(store, "nodes"), second, &calls), 1);
  EXPECT_EQ(calls, 2);
  EXPECT_EQ(cfg_list_ids(cfg_root(store), second, &calls), 0);
  EXPECT_EQ(cfg_list_ids(nullptr, second, &calls), 0);
  EXPECT_EQ(cfg_list_ids(cfg_get_by_path(store, "nodes"), nullptr, &calls), 0);
  EXPECT_EQ(calls, 2);
}

TEST_P(ReadTest, TheSameKeyMayBeAskedForTwice) {
  ASSERT_EQ(cfg_map_set_int(store, cfg_root(store), "k", 5), 1);
  ASSERT_TRUE(commits(store));
  cfg_value values[3];
  ASSERT_EQ(cfg_map_read(cfg_root(store), &keyset_of({"k", "x", "k"}), values), 1);
  EXPECT_EQ(values[0].number, 5);
  EXPECT_EQ(values[1].kind, CFG_NONE);
  EXPECT_EQ(values[2].number, 5);
}

TEST_P(ReadTest, OnlyAMapIsReadAndOnlyAListIsScanned) {
  cfg_elem *list = make_list(store, "nodes");
  ASSERT_NE(append_named(store, list, "x"), nullptr);
  ASSERT_EQ(cfg_map_set_int(store, cfg_root(store), "n", 1), 1);
  ASSERT_TRUE(commits(store));
  list = cfg_get_by_path(store, "nodes");
  cfg_value values[3];
  std::vector<Row> rows;
  EXPECT_EQ(cfg_map_read(list, &keys(), values), 0);
  EXPECT_EQ(cfg_map_read(cfg_get_by_path(store, "n"), &keys(), values), 0);
  EXPECT_EQ(cfg_map_read(nullptr, &keys(), values), 0);
  EXPECT_EQ(cfg_map_read(cfg_root(store), nullptr, values), 0);
  EXPECT_EQ(cfg_map_read(cfg_root(store), &keys(), nullptr), 0);
  EXPECT_EQ(cfg_list_scan(cfg_root(store), &keys(), keep, &rows), 0);
  EXPECT_EQ(cfg_list_scan(cfg_get_by_path(store, "n"), &keys(), keep, &rows), 0);
  EXPECT_EQ(cfg_list_scan(nullptr, &keys(), keep, &rows), 0);
  EXPECT_EQ(cfg_list_scan(list, nullptr, keep, &rows), 0);
  EXPECT_EQ(cfg_list_scan(list, &keys(), nullptr, &rows), 0);
  EXPECT_TRUE(rows.empty());
}
