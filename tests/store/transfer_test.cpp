// The whole store as text: stable, complete, and refused as a whole when it is not right.
#include "fixture.hpp"
#include "tree.hpp"

#include <jansson.h>

#include <cstring>

class TransferTest : public StoreTest {
 protected:
  void SetUp() override {
    StoreTest::SetUp();
    cfg_elem *list = make_list(store, "nodes");
    for (const char *name : {"n1", "n2", "n3", "n4"}) {
      cfg_elem *entry = append_named(store, list, name);
      cfg_elem *ports = put_list(store, entry, "ports");
      for (const char *port : {"p1", "p2"}) ASSERT_NE(append_named(store, ports, port), nullptr);
    }
    ASSERT_TRUE(commits(store));
    ASSERT_EQ(cfg_delete_element(store, cfg_get_by_id(store, "nodes-2")), 1);
    ASSERT_EQ(cfg_delete_element(store, cfg_get_by_id(store, "nodes-4")), 1);
    ASSERT_EQ(cfg_delete_element(store, cfg_get_by_id(store, "nodes-3_ports-2")), 1);
    cfg_elem *map = make_map(store, "a.b");
    ASSERT_EQ(
        cfg_map_set_string(store, map, "string", "\"quoted\" \\ \x01\x1f\x7f \xc3\xa4 \xf0\x9f\x98\x80"), 1);
    ASSERT_EQ(cfg_map_set_string(store, map, "", "x"), 0);
    ASSERT_EQ(cfg_map_set_string(store, map, "empty", ""), 1);
    ASSERT_EQ(cfg_map_set_int(store, map, "least", INT32_MIN), 1);
    ASSERT_EQ(cfg_map_set_int(store, map, "most", INT32_MAX), 1);
    ASSERT_EQ(cfg_map_set_bool(store, map, "false", 0), 1);
    ASSERT_EQ(cfg_map_set_bool(store, map, "true", 1), 1);
    std::string bytes;
    for (int i = 0; i < 256; ++i) bytes += static_cast<char>(i);
    for (std::size_t length : {std::size_t{0}, std::size_t{1}, std::size_t{2}, std::size_t{3}, bytes.size()})
      ASSERT_EQ(cfg_map_set_blob(store, map, ("blob" + std::to_string(length)).c_str(), bytes.data(), length),
                1);
    ASSERT_EQ(cfg_map_set_reference(store, map, "reference", "nodes-3"), 1);
    ASSERT_NE(put_map(store, map, "empty map"), nullptr);
    ASSERT_NE(put_list(store, map, "empty list"), nullptr);
    for (const char *key :
         {"a.b", "{", "~", "\"", "\\", "\n", "$", "type", "value", "next", "map", "list", "entries"})
      ASSERT_EQ(cfg_map_set_int(store, put_map(store, map, key), key, 1), 1) << key;
    cfg_elem *words = make_list(store, "words");
    ASSERT_NE(append_string(store, words, "x"), nullptr);
    ASSERT_EQ(cfg_append_future_listelem(store, words, cfg_new_reference(store, "nodes-1")), 1);
    cfg_elem *inner = cfg_new_list(store);
    ASSERT_EQ(cfg_append_future_listelem(store, words, inner), 1);
    ASSERT_NE(append_string(store, inner, "y"), nullptr);
    ASSERT_TRUE(commits(store));
  }
};
STORE_TEST_ON_BOTH_ENGINES(TransferTest);

TEST_P(TransferTest, ExportImportExportIsByteEqual) {
  std::string text = export_text(store);
  ASSERT_FALSE(text.empty());
  EXPECT_EQ(export_text(store), text);
  for (std::size_t piece : {std::size_t{1}, std::size_t{7}, std::size_t{100000000}}) {
    cfg *copy = another_store();
    ASSERT_EQ(import_text(copy, text, piece), 1) << cfg_error_text(copy);
    EXPECT_EQ(dump(copy), dump(store));
    ASSERT_TRUE(commits(copy));
    EXPECT_EQ(dump(copy), dump(store));
    EXPECT_EQ(export_text(copy), text);
    EXPECT_EQ(check_tree(copy), check_tree(store));
    EXPECT_EQ(cfg_verify(copy, nullptr, nullptr), 1);
  }
}

TEST_P(TransferTest, AnEmptyStoreIsExportedAndImportedToo) {
  std::string text = export_text(another_store());
  ASSERT_FALSE(text.empty());
  ASSERT_EQ(import_text(store, text), 1);
  ASSERT_TRUE(commits(store));
  EXPECT_EQ(dump(store), "{}");
  cfg *copy = another_store();
  ASSERT_EQ(import_text(copy, text), 1);
  ASSERT_TRUE(commits(copy));
  EXPECT_EQ(export_text(copy), text);
}

TEST_P(TransferTest, AnExportIsWellFormedJsonInUtf8) {
  std::string text = export_text(store);
  json_error_t error;
  json_t *json = json_loadb(text.data(), text.size(), JSON_REJECT_DUPLICATES | JSON_ALLOW_NUL, &error);
  ASSERT_NE(json, nullptr) << error.text << " at " << error.position;
  EXPECT_TRUE(json_is_object(json));
  json_decref(json);
}

TEST_P(TransferTest, AnExportLeavesTheEditOut) {
  std::string text = export_text(store);
  ASSERT_EQ(cfg_map_set_int(store, cfg_root(store), "new", 1), 1);
  ASSERT_NE(append_named(store, cfg_get_by_path(store, "nodes"), "new"), nullptr);
  ASSERT_EQ(cfg_delete_element(store, cfg_get_by_id(store, "nodes-1")), 1);
  EXPECT_EQ(export_text(store), text);
  EXPECT_EQ(cfg_has_changes(store), 1);
}

TEST_P(TransferTest, TheTextDoesNotDependOnTheOrderOfWriting) {
  cfg *one = another_store();
  cfg *two = another_store();
  const char *keys[] = {"b", "a", "c", "aa", "B", "\xc3\xa4"};
  for (const char *key : keys) ASSERT_EQ(cfg_map_set_int(one, cfg_root(one), key, 1), 1);
  for (int i = 5; i >= 0; --i) {
    ASSERT_EQ(cfg_map_set_int(two, cfg_root(two), keys[i], 1), 1);
    ASSERT_TRUE(commits(two));
  }
  ASSERT_TRUE(commits(one));
  EXPECT_EQ(export_text(one), export_text(two));
}

TEST_P(TransferTest, AnImportReplacesEverythingAtCommit) {
  std::string text = export_text(store);
  std::string before = dump(store);
  ASSERT_EQ(cfg_map_set_int(store, cfg_root(store), "extra", 1), 1);
  ASSERT_EQ(cfg_map_delete_key(store, cfg_root(store), "words"), 1);
  ASSERT_NE(append_named(store, cfg_get_by_path(store, "nodes"), "extra"), nullptr);
  ASSERT_TRUE(commits(store));
  std::string other = dump(store);
  ASSERT_EQ(cfg_map_set_int(store, cfg_root(store), "pending", 1), 1);
  ASSERT_EQ(import_text(store, text), 1);
  EXPECT_EQ(dump(store), before);
  EXPECT_EQ(dump(another_handle()), other);
  cfg_abandon(store);
  EXPECT_EQ(dump(store), other);
  ASSERT_EQ(import_text(store, text), 1);
  ASSERT_TRUE(commits(store));
  EXPECT_EQ(dump(store), before);
  reopen();
  EXPECT_EQ(dump(store), before);
  EXPECT_EQ(cfg_verify(store, nullptr, nullptr), 1);
  check_tree(store);
}

TEST_P(TransferTest, AnImportCanBeEditedBeforeItsCommit) {
  std::string text = export_text(store);
  cfg *copy = another_store();
  ASSERT_EQ(import_text(copy, text), 1);
  ASSERT_EQ(cfg_map_set_string(copy, cfg_get_by_id(copy, "nodes-1"), "name", "edited"), 1);
  ASSERT_NE(append_named(copy, cfg_get_by_path(copy, "nodes"), "appended"), nullptr);
  ASSERT_EQ(cfg_delete_element(copy, cfg_get_by_id(copy, "nodes-3")), 1);
  ASSERT_TRUE(commits(copy));
  EXPECT_EQ(names_in(copy, cfg_get_by_path(copy, "nodes")), (std::vector<std::string>{"edited", "appended"}));
  EXPECT_EQ(ids_in(cfg_get_by_path(copy, "nodes")).back(), "nodes-5");
}

TEST_P(TransferTest, ATextThatEndsEarlyIsRefusedAnywhere) {
  cfg *small = another_store();
  ASSERT_NE(append_named(small, make_list(small, "l"), "x"), nullptr);
  ASSERT_EQ(cfg_map_set_blob(small, cfg_root(small), "b", "abc", 3), 1);
  ASSERT_TRUE(commits(small));
  std::string text = export_text(small);
  while (!text.empty() && (text.back() == '\n' || text.back() == ' ')) text.pop_back();
  ASSERT_EQ(cfg_map_set_int(store, cfg_root(store), "pending", 1), 1);
  std::string before = dump(store);
  for (std::size_t length = 0; length < text.size(); ++length) {
    ASSERT_TRUE(failed_with(store, import_text(store, text.substr(0, length)), CFG_E_FORMAT)) << length;
    ASSERT_EQ(dump(store), before) << length;
  }
  EXPECT_EQ(import_text(store, text), 1);
}

TEST_P(TransferTest, ATextThatIsDamagedIsRefusedOrReadWhole) {
  cfg *small = another_store();
  cfg_elem *entry = append_named(small, make_list(small, "l"), "x");
  ASSERT_EQ(cfg_map_set_reference(small, entry, "r", "l-1"), 1);
  ASSERT_EQ(cfg_map_set_blob(small, cfg_root(small), "b", "abc", 3), 1);
  ASSERT_EQ(cfg_map_set_int(small, cfg_root(small), "i", 123), 1);
  ASSERT_TRUE(commits(small));
  std::string text = export_text(small);
  std::string before = dump(store);
  int refused = 0;
  for (std::size_t at = 0; at < text.size(); ++at)
    for (char damage : {'\0', '"', '}', ']', '{', '-', '9', 'x', '\xff', '~'}) {
      if (text[at] == damage) continue;
      std::string damaged = text;
      damaged[at] = damage;
      if (import_text(store, damaged) == 0) {
        ++refused;
        ASSERT_NE(cfg_error_code(store), CFG_OK);
        ASSERT_EQ(dump(store), before) << damaged;
      } else {
        check_tree(store);
        cfg_abandon(store);
        ASSERT_EQ(dump(store), before) << damaged;
      }
    }
  EXPECT_GT(refused, 100);
}

TEST_P(TransferTest, WhatIsNoExportIsRefused) {
  std::string good = export_text(store);
  std::string before = dump(store);
  for (const std::string &text :
       {std::string(), std::string("{}"), std::string("[]"), std::string("null"), std::string("1"),
        std::string("{"), std::string("not json"), std::string("\0", 1), good + "x", good + good, good + "{}",
        "x" + good, std::string(100000, '['), std::string(100000, '{'),
        std::string("{\"a\":") + std::string(100000, '[')}) {
    EXPECT_TRUE(failed_with(store, import_text(store, text), CFG_E_FORMAT)) << text.substr(0, 50);
    EXPECT_EQ(dump(store), before);
    EXPECT_EQ(cfg_has_changes(store), 0);
  }
}

TEST_P(TransferTest, ASourceThatFailsFailsTheImport) {
  std::string before = dump(store);
  cfg_import_source fails = [](void *, char *, std::size_t) { return static_cast<std::size_t>(-1); };
  EXPECT_EQ(cfg_import(store, fails, nullptr), 0);
  EXPECT_NE(cfg_error_code(store), CFG_OK);
  EXPECT_EQ(dump(store), before);
  cfg_import_source overflows = [](void *, char *, std::size_t size) { return size + 1; };
  EXPECT_EQ(cfg_import(store, overflows, nullptr), 0);
  EXPECT_EQ(dump(store), before);
}

TEST_P(TransferTest, ASinkCanEndTheExport) {
  int calls = 0;
  cfg_export_sink ends = [](void *context, const char *, std::size_t) {
    ++*static_cast<int *>(context);
    return 0;
  };
  cfg_export(store, ends, &calls);
  EXPECT_EQ(calls, 1);
}

TEST_P(TransferTest, NullArgumentsFail) {
  cfg_export_sink sink = [](void *, const char *, std::size_t) { return 1; };
  cfg_import_source source = [](void *, char *, std::size_t) { return std::size_t{0}; };
  EXPECT_EQ(cfg_export(nullptr, sink, nullptr), 0);
  EXPECT_EQ(cfg_export(store, nullptr, nullptr), 0);
  EXPECT_EQ(cfg_import(nullptr, source, nullptr), 0);
  EXPECT_EQ(cfg_import(store, nullptr, nullptr), 0);
  EXPECT_EQ(cfg_has_changes(store), 0);
}

TEST_P(TransferTest, ALargeStoreGoesThrough) {
  cfg_elem *list = make_list(store, "large");
  for (int i = 0; i < 3000; ++i) {
    cfg_elem *entry = append_named(store, list, std::string(static_cast<std::size_t>(i % 300), 'n'));
    ASSERT_NE(append_string(store, put_list(store, entry, "tags"), "t"), nullptr);
  }
  ASSERT_EQ(cfg_map_set_blob(store, cfg_root(store), "big", std::string(1 << 20, '\xee').data(), 1 << 20), 1);
  ASSERT_TRUE(commits(store));
  std::string text = export_text(store);
  cfg *copy = another_store();
  ASSERT_EQ(import_text(copy, text, 65536), 1) << cfg_error_text(copy);
  ASSERT_TRUE(commits(copy));
  EXPECT_EQ(export_text(copy), text);
  EXPECT_EQ(cfg_verify(copy, nullptr, nullptr), 1);
}
