// Contents and places that whole elements are refused for: the call says why, and nothing has changed.
#include "twin.hpp"

#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cstring>

namespace {

constexpr const char *kOneKey[] = {"key"};
constexpr cfg_keyset kOne = {kOneKey, 1};

cfg_content of(cfg_kind kind, const char *data, std::size_t length) {
  return {kind, 0, data, length, nullptr, nullptr};
}
cfg_content list_with(const cfg_content *items, std::size_t count) {
  return {CFG_LIST, 0, nullptr, count, nullptr, items};
}
cfg_content map_with(const cfg_keyset *keys, const cfg_content *items) {
  return {CFG_MAP, 0, nullptr, 0, keys, items};
}

// So many elements below one another, each a map or each a list but the last.
class Tower {
 public:
  explicit Tower(int levels, bool lists = false) : levels_(static_cast<std::size_t>(levels)) {
    parts_[0] = of(CFG_STRING, "top", 3);
    for (std::size_t i = 1; i < levels_; ++i)
      parts_[i] = lists ? list_with(&parts_[i - 1], 1) : map_with(&kOne, &parts_[i - 1]);
  }
  Tower(const Tower &) = delete;
  Tower &operator=(const Tower &) = delete;
  const cfg_content *get() const { return &parts_[levels_ - 1]; }

 private:
  std::size_t levels_;
  std::array<cfg_content, 100> parts_{};
};

}  // namespace

class ContentRefusalTest : public TwinTest {
 protected:
  // As it stands, in a list of a map and in a map of a list; appended and put.
  void expect_refused_anywhere(const cfg_content &bad, cfg_code code, bool at_top = true) {
    const cfg_content in_list[] = {of(CFG_STRING, "before", 6), bad, of(CFG_STRING, "behind", 6)};
    const cfg_content list = list_with(in_list, 3);
    const cfg_content map = map_with(&kOne, &list);
    const cfg_content inner = map_with(&kOne, &bad);
    const cfg_content lists = list_with(&inner, 1);
    int kind = 0;  // may be none of the enumeration's
    std::memcpy(&kind, &bad.kind, sizeof kind);
    if (at_top) expect_refused_content(&bad, code);
    if (kind != CFG_NONE) expect_refused_content(&inner, code);  // a map may lack a key
    expect_refused_content(&list, code);
    expect_refused_content(&map, code);
    if (kind != CFG_NONE) expect_refused_content(&lists, code);
  }
  void expect_refused_content(const cfg_content *content, cfg_code code) {
    for (const char *list : {"nodes", "certs", "nodes-1.ports", "labels"})
      expect_nothing(code, [&] { return cfg_append_content(store, whole.at(list), content) != nullptr; });
    expect_nothing(code, [&] { return cfg_append_content(store, loose_list_, content) != nullptr; });
    for (const char *map : {"map", "nodes-1", "nodes-1_ports-1", "."}) {
      for (const char *key : {"kept", "new key"})
        expect_nothing(code, [&] { return cfg_put_content(store, whole.at(map), key, content) != 0; });
    }
  }
  // The call fails with a code, in a clean edit and in one that holds changes; neither is another after that.
  template <class Call>
  void expect_nothing(cfg_code code, const Call &call) {
    loose_list_ = cfg_new_list(store);
    EXPECT_TRUE(failed_with(store, call() ? 1 : 0, code));
    EXPECT_EQ(cfg_has_changes(store), 0);
    ASSERT_NE(whole.append("certs", named("pending")), nullptr);
    ASSERT_NE(whole.append("nodes-1.ports", named("pending")), nullptr);
    EXPECT_TRUE(failed_with(store, call() ? 1 : 0, code));
    EXPECT_EQ(pending_size_of(whole.at("nodes")), 0);
    EXPECT_EQ(pending_size_of(whole.at("certs")), 1);
    EXPECT_EQ(pending_size_of(whole.at("nodes-1.ports")), 1);
    EXPECT_EQ(pending_size_of(loose_list_), 0);
    cfg_abandon(store);
    EXPECT_EQ(cfg_has_changes(store), 0);
    EXPECT_EQ(dump(store), before_);
    loose_list_ = cfg_new_list(store);
  }
  void SetUp() override {
    TwinTest::SetUp();
    before_ = dump(store);
    loose_list_ = cfg_new_list(store);
  }
  void TearDown() override {
    // What was refused has left nothing behind that would come to light later.
    cfg_abandon(store);
    EXPECT_EQ(dump(store), before_);
    both([](const Filler &filler) { ASSERT_NE(filler.append("nodes", named("at last")), nullptr); });
    commit_both();
    StoreTest::TearDown();
  }
  std::string before_;
  cfg_elem *loose_list_ = nullptr;
};
STORE_TEST_ON_BOTH_ENGINES(ContentRefusalTest);

TEST_P(ContentRefusalTest, WithoutAHandleAPlaceOrAContent) {
  const cfg_content good = of(CFG_STRING, "x", 1);
  cfg_elem *list = whole.at("nodes");
  cfg_elem *map = whole.at("map");
  EXPECT_EQ(cfg_append_content(nullptr, list, &good), nullptr);
  EXPECT_EQ(cfg_put_content(nullptr, map, "key", &good), 0);
  EXPECT_TRUE(failed_with(store, cfg_append_content(store, nullptr, &good) != nullptr, CFG_E_ARGUMENT));
  EXPECT_TRUE(failed_with(store, cfg_append_content(store, list, nullptr) != nullptr, CFG_E_ARGUMENT));
  EXPECT_TRUE(failed_with(store, cfg_put_content(store, nullptr, "key", &good), CFG_E_ARGUMENT));
  EXPECT_TRUE(failed_with(store, cfg_put_content(store, map, nullptr, &good), CFG_E_ARGUMENT));
  EXPECT_TRUE(failed_with(store, cfg_put_content(store, map, "key", nullptr), CFG_E_ARGUMENT));
  EXPECT_EQ(cfg_has_changes(store), 0);
}

TEST_P(ContentRefusalTest, NoElement) { expect_refused_anywhere({}, CFG_E_ARGUMENT); }

// As a caller in C may come to have them.
TEST_P(ContentRefusalTest, NumbersThatAreNoKind) {
  for (const int number : {99, -1, 8}) {
    cfg_content content = of(CFG_STRING, "x", 1);
    static_assert(sizeof content.kind == sizeof number);
    std::memcpy(&content.kind, &number, sizeof number);
    expect_refused_anywhere(content, CFG_E_ARGUMENT);
  }
}

TEST_P(ContentRefusalTest, MapsWithoutKeysOrItems) {
  const cfg_content item = of(CFG_STRING, "x", 1);
  expect_refused_anywhere(map_with(nullptr, &item), CFG_E_ARGUMENT);
  static constexpr cfg_keyset missing = {nullptr, 1};
  expect_refused_anywhere(map_with(&missing, &item), CFG_E_ARGUMENT);
  expect_refused_anywhere(map_with(&kOne, nullptr), CFG_E_ARGUMENT);
  expect_refused_anywhere(list_with(nullptr, 1), CFG_E_ARGUMENT);
  expect_refused_anywhere(list_with(nullptr, SIZE_MAX), CFG_E_LIMIT);
}

TEST_P(ContentRefusalTest, KeysThatNoMapHas) {
  static const std::string too_long(256, 'k');
  static const char *const null_key[] = {"a", nullptr, "c"};
  static const char *const empty_key[] = {"a", "", "c"};
  static const char *const long_key[] = {"a", too_long.c_str(), "c"};
  static const char *const twice[] = {"a", "c", "a"};
  static constexpr cfg_keyset sets[] = {{null_key, 3}, {empty_key, 3}, {long_key, 3}, {twice, 3}};
  const cfg_content item = of(CFG_STRING, "x", 1);
  const cfg_content items[] = {item, item, item};
  // Also when the key is one that the map lacks.
  const cfg_content absent[] = {item, {}, {}};
  for (const cfg_keyset &set : sets) {
    for (int round = 0; round < 2; ++round) expect_refused_anywhere(map_with(&set, items), CFG_E_ARGUMENT);
    expect_refused_anywhere(map_with(&set, absent), CFG_E_ARGUMENT);
  }
}

// Reading allows what writing does not.
TEST_P(ContentRefusalTest, ASetWithOneKeyTwiceThatWasReadWith) {
  static const char *const twice[] = {"kept", "kept"};
  static constexpr cfg_keyset set = {twice, 2};
  cfg_value values[2] = {};
  const cfg_content items[] = {of(CFG_STRING, "x", 1), of(CFG_STRING, "y", 1)};
  ASSERT_EQ(cfg_map_read(whole.at("map"), &set, values), 1);
  expect_refused_anywhere(map_with(&set, items), CFG_E_ARGUMENT);
  ASSERT_EQ(cfg_map_read(whole.at("map"), &set, values), 1);
  EXPECT_EQ(values[0].number, 1);
  EXPECT_EQ(values[1].number, 1);
}

TEST_P(ContentRefusalTest, KeysThatPutDoesNotTake) {
  const cfg_content good = of(CFG_STRING, "x", 1);
  const std::string longest(255, 'k');
  const std::string too_long(256, 'k');
  for (const char *map : {"map", "nodes-1", "."}) {
    expect_nothing(CFG_E_ARGUMENT, [&] { return cfg_put_content(store, whole.at(map), "", &good) != 0; });
    expect_nothing(CFG_E_ARGUMENT,
                   [&] { return cfg_put_content(store, whole.at(map), too_long.c_str(), &good) != 0; });
    EXPECT_EQ(cfg_put_content(store, whole.at(map), longest.c_str(), &good), 1);
    cfg_abandon(store);
  }
}

TEST_P(ContentRefusalTest, ValuesWithoutData) {
  for (const cfg_kind kind : {CFG_STRING, CFG_REFERENCE, CFG_BLOB}) {
    expect_refused_anywhere(of(kind, nullptr, 0), CFG_E_ARGUMENT);
    expect_refused_anywhere(of(kind, nullptr, 5), CFG_E_ARGUMENT);
  }
}

TEST_P(ContentRefusalTest, TextsWithANul) {
  for (const cfg_kind kind : {CFG_STRING, CFG_REFERENCE}) {
    expect_refused_anywhere(of(kind, "a\0b", 3), CFG_E_ARGUMENT);
    expect_refused_anywhere(of(kind, "\0", 1), CFG_E_ARGUMENT);
    expect_refused_anywhere(of(kind, "ab", 3), CFG_E_ARGUMENT);
  }
}

TEST_P(ContentRefusalTest, ValuesThatAreTooLong) {
  const std::string huge((16U << 20) + 1, 'h');
  expect_refused_content(Content(named(huge)), CFG_E_LIMIT);
  for (const cfg_kind kind : {CFG_STRING, CFG_BLOB})
    expect_refused_anywhere(of(kind, huge.data(), huge.size()), CFG_E_LIMIT);
  expect_refused_anywhere(of(CFG_BLOB, huge.data(), SIZE_MAX), CFG_E_LIMIT);
  expect_refused_anywhere(of(CFG_REFERENCE, huge.data(), 4097), CFG_E_LIMIT);
}

TEST_P(ContentRefusalTest, NothingOfTheLongestValuesThatAreTaken) {
  const std::string largest(16U << 20, 'h');
  cfg_elem *entry = whole.append("nodes", named(largest));
  ASSERT_NE(entry, nullptr) << cfg_error_text(store);
  EXPECT_EQ(string_at(store, entry, "name").size(), largest.size());
  EXPECT_EQ(whole.put(whole.at("map"), "blob", blob(largest)), 1);
  EXPECT_NE(whole.append("nodes", map_of({{"to", refer(std::string(4096, 'r'))}})), nullptr);
}

TEST_P(ContentRefusalTest, WhatIsNestedTooDeep) {
  for (const bool lists : {false, true}) {
    for (const int levels : {65, 66, 99}) {
      const Tower tower(levels, lists);
      expect_refused_content(tower.get(), CFG_E_LIMIT);
    }
  }
}

// However deep a place is, it takes as many levels from one call as from single ones.
TEST_P(ContentRefusalTest, NestingEndsWhereItEndsForSingleCalls) {
  both([](const Filler &filler) {
    cfg_elem *map = filler.at("map");
    for (int level = 0; level < 20; ++level) map = put_map(filler.store, map, "m");
    ASSERT_NE(put_list(filler.store, map, "list"), nullptr);
    cfg_elem *entry = filler.append("nodes", named("deep"));
    for (int level = 0; level < 20; ++level) entry = put_map(filler.store, entry, "m");
    ASSERT_NE(put_list(filler.store, entry, "list"), nullptr);
    ASSERT_TRUE(commits(filler.store));
  });
  const auto deep = [](const std::string &front) {
    std::string id = front;
    for (int level = 0; level < 20; ++level) id += ".m";
    return id + ".list";
  };
  const std::string places[] = {"nodes", "nodes-1.ports", "labels", deep("map"), deep("nodes-3")};
  for (const std::string &place : places) {
    for (const bool lists : {false, true}) {
      for (int levels = 36; levels <= 66; ++levels) {
        SCOPED_TRACE(place + " " + std::to_string(levels) + (lists ? " lists" : " maps"));
        Recipe recipe = text("top");
        for (int i = 1; i < levels; ++i) recipe = lists ? list_of({recipe}) : map_of({{"key", recipe}});
        const Tower tower(levels, lists);
        const bool appended = cfg_append_content(store, whole.at(place.c_str()), tower.get()) != nullptr;
        const bool singly = single.append(single.at(place.c_str()), recipe) != nullptr;
        ASSERT_EQ(appended, singly);
        const std::string map = place.substr(0, place.rfind('.'));
        if (map == place) continue;
        ASSERT_EQ(cfg_put_content(store, whole.at(map.c_str()), "list 2", tower.get()),
                  single.put(single.at(map.c_str()), "list 2", recipe));
      }
    }
    both([](const Filler &filler) { ASSERT_TRUE(commits(filler.store)) << cfg_error_text(filler.store); });
    ASSERT_TRUE(same_text(export_text(store), export_text(single.store)));
  }
  ASSERT_EQ(cfg_verify(store, nullptr, nullptr), 1);
  check_tree(store);
  before_ = dump(store);
}

TEST_P(ContentRefusalTest, PlacesThatAreNoListOrNoMap) {
  const cfg_content good = of(CFG_STRING, "x", 1);
  for (const char *place : {"map", "map.kept", "nodes-1", ".", "labels-1"})
    expect_nothing(CFG_E_ARGUMENT,
                   [&] { return cfg_append_content(store, whole.at(place), &good) != nullptr; });
  for (const char *place : {"nodes", "map.kept", "nodes-1.ports", "labels-1"})
    expect_nothing(CFG_E_ARGUMENT,
                   [&] { return cfg_put_content(store, whole.at(place), "key", &good) != 0; });
}

TEST_P(ContentRefusalTest, PlacesThatAreGone) {
  cfg_elem *list = whole.append("nodes", map_of({{"list", list_of({})}}));
  list = cfg_simple_get_mapelem(store, list, "list");
  cfg_elem *map = cfg_new_map(store);
  cfg_abandon(store);
  const cfg_content good = of(CFG_STRING, "x", 1);
  expect_nothing(CFG_E_ARGUMENT, [&] { return cfg_append_content(store, list, &good) != nullptr; });
  expect_nothing(CFG_E_ARGUMENT, [&] { return cfg_put_content(store, map, "key", &good) != 0; });
}

TEST_P(ContentRefusalTest, PlacesOfAnotherHandle) {
  cfg *other = another_handle();
  const cfg_content good = of(CFG_STRING, "x", 1);
  cfg_elem *list = cfg_get_by_id(other, "nodes");
  cfg_elem *map = cfg_get_by_id(other, "map");
  EXPECT_TRUE(failed_with(store, cfg_append_content(store, list, &good) != nullptr, CFG_E_ARGUMENT));
  EXPECT_TRUE(failed_with(store, cfg_put_content(store, map, "key", &good), CFG_E_ARGUMENT));
  EXPECT_EQ(cfg_has_changes(store), 0);
  EXPECT_EQ(cfg_has_changes(other), 0);
  EXPECT_EQ(pending_size_of(list), 0);
}

TEST_P(ContentRefusalTest, TheResultOfASearch) {
  cfg_condition *all = cfg_new_and_condition();
  cfg_elem *result = cfg_search(store, "nodes", all);
  cfg_free_conditions(all);
  ASSERT_NE(result, nullptr) << cfg_error_text(store);
  ASSERT_EQ(size_of(result), 2);
  const cfg_content good = of(CFG_STRING, "x", 1);
  EXPECT_TRUE(failed_with(store, cfg_append_content(store, result, &good) != nullptr, CFG_E_ARGUMENT));
  EXPECT_EQ(cfg_has_changes(store), 0);
}

TEST_P(ContentRefusalTest, AHandleOfTheParentProcess) {
  cfg_elem *list = whole.at("nodes");
  cfg_elem *map = whole.at("map");
  const cfg_content good = of(CFG_STRING, "x", 1);
  const pid_t child = fork();
  ASSERT_GE(child, 0);
  if (child == 0) {
    bool refused = cfg_append_content(store, list, &good) == nullptr && cfg_error_code(store) == CFG_E_FORKED;
    refused =
        refused && cfg_put_content(store, map, "key", &good) == 0 && cfg_error_code(store) == CFG_E_FORKED;
    _exit(refused ? 0 : 1);
  }
  int status = -1;
  ASSERT_EQ(waitpid(child, &status, 0), child);
  EXPECT_EQ(status, 0);
}
