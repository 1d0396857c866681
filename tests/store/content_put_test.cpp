// Whole elements that are put under a key: they replace what was there.
#include "twin.hpp"

namespace {

const Recipe &settings() {
  static const Recipe recipe = map_of({{"name", text("settings")},
                                       {"port", integer(22)},
                                       {"list", list_of({named("a"), text("b")})},
                                       {"more", map_of({{"list", list_of({text("c")})}})}});
  return recipe;
}

}  // namespace

class ContentPutTest : public TwinTest {};
STORE_TEST_ON_BOTH_ENGINES(ContentPutTest);

TEST_P(ContentPutTest, ReplacesWhateverIsStoredUnderTheKey) {
  const std::vector<Recipe> kinds = {text("t"),        integer(1), boolean(true),         blob("b"),
                                     refer("nodes-1"), settings(), list_of({named("e")}), map_of({}),
                                     list_of({}),      text("u")};
  for (const char *map : {"map", "nodes-1", "nodes-1_ports-1", "."}) {
    for (const Recipe &before : kinds) {
      for (const Recipe &after : kinds) {
        both([&](const Filler &filler) {
          ASSERT_EQ(filler.put(filler.at(map), "key", before), 1);
          ASSERT_TRUE(commits(filler.store));
          ASSERT_EQ(filler.put(filler.at(map), "key", after), 1);
        });
        expect_alike();
        both([](const Filler &filler) { ASSERT_TRUE(commits(filler.store)); });
        ASSERT_TRUE(same_text(export_text(store), export_text(single.store))) << map;
      }
    }
  }
  EXPECT_EQ(cfg_verify(store, nullptr, nullptr), 1);
  check_tree(store);
}

TEST_P(ContentPutTest, TheKeyIsTakenLiterally) {
  both([](const Filler &filler) {
    ASSERT_EQ(filler.put(filler.at("map"), "a.b", settings()), 1);
    ASSERT_EQ(filler.put(cfg_root(filler.store), "map.kept", text("literal")), 1);
    ASSERT_EQ(filler.put(filler.at("nodes-1"), "ssh.port", integer(5)), 1);
  });
  expect_alike();
  commit_both();
  EXPECT_EQ(int_at(store, whole.at("map"), "kept"), 1);
  EXPECT_EQ(string_at(store, cfg_root(store), "map.kept"), "literal");
  EXPECT_EQ(int_at(store, whole.at("nodes-1.ssh"), "port"), 22);
  EXPECT_EQ(string_at(store, whole.at("map.a~2eb"), "name"), "settings");
}

TEST_P(ContentPutTest, IntoNewMapsAndPendingEntries) {
  both([](const Filler &filler) {
    cfg_elem *fresh = cfg_new_map(filler.store);
    ASSERT_EQ(filler.put(fresh, "settings", settings()), 1);
    ASSERT_EQ(filler.put(fresh, "text", text("t")), 1);
    ASSERT_EQ(filler.put(fresh, "text", integer(2)), 1);
    ASSERT_EQ(filler.put(cfg_get_child_by_path(filler.store, fresh, "settings.more"), "again", settings()),
              1);
    ASSERT_EQ(cfg_append_future_listelem(filler.store, filler.at("nodes"), fresh), 1);
    cfg_elem *pending = filler.append("nodes", settings());
    ASSERT_EQ(filler.put(pending, "list", settings()), 1);
    ASSERT_EQ(filler.put(pending, "new", list_of({settings()})), 1);
    cfg_elem *loose = cfg_new_map(filler.store);
    ASSERT_EQ(filler.put(loose, "never attached", settings()), 1);
  });
  expect_alike();
  commit_both();
}

TEST_P(ContentPutTest, HandlesOfWhatWasReplacedLeadToThePlace) {
  both([](const Filler &filler) {
    ASSERT_EQ(filler.put(filler.at("map"), "key", settings()), 1);
    ASSERT_TRUE(commits(filler.store));
    cfg_elem *place = filler.at("map.key");
    cfg_elem *entry = filler.at("map_key_list-1");
    ASSERT_NE(entry, nullptr);
    ASSERT_EQ(filler.put(filler.at("map"), "key", map_of({{"name", text("replaced")}})), 1);
    ASSERT_TRUE(commits(filler.store));
    EXPECT_EQ(string_at(filler.store, place, "name"), "replaced");
    EXPECT_EQ(cfg_elem_kind(entry), CFG_NONE);
  });
}

TEST_P(ContentPutTest, TheScalarThatIsStoredIsNoChange) {
  const Recipe values = map_of({{"text", text("t")},
                                {"empty", text("")},
                                {"number", integer(7)},
                                {"truth", boolean(true)},
                                {"blob", blob(std::string("\0b", 2))},
                                {"reference", refer("nodes-1")}});
  both([&](const Filler &filler) {
    ASSERT_EQ(filler.put(filler.at("map"), "values", values), 1);
    ASSERT_NE(filler.append("nodes", values), nullptr);
    ASSERT_TRUE(commits(filler.store));
    const std::uint64_t before = cfg_revision(filler.store);
    for (const char *map : {"map.values", "nodes-3"}) {
      for (std::size_t i = 0; i < values.keys.size(); ++i)
        ASSERT_EQ(filler.put(filler.at(map), values.keys[i].c_str(), values.items[i]), 1);
    }
    EXPECT_EQ(cfg_has_changes(filler.store), 0);
    // Another value and back again.
    ASSERT_EQ(filler.put(filler.at("nodes-3"), "text", text("other")), 1);
    EXPECT_EQ(cfg_has_changes(filler.store), 1);
    ASSERT_EQ(filler.put(filler.at("nodes-3"), "text", text("t")), 1);
    EXPECT_EQ(cfg_has_changes(filler.store), 0);
    ASSERT_EQ(filler.put(filler.at("nodes-3"), "number", boolean(true)), 1);
    EXPECT_EQ(cfg_has_changes(filler.store), 1);
    ASSERT_EQ(filler.put(filler.at("nodes-3"), "number", integer(7)), 1);
    ASSERT_TRUE(commits(filler.store));
    EXPECT_EQ(cfg_revision(filler.store), before);
  });
  Recipe truth = boolean(true);
  truth.number = 5;
  ASSERT_EQ(whole.put(whole.at("nodes-3"), "truth", truth), 1);
  EXPECT_EQ(cfg_has_changes(store), 0);
}

TEST_P(ContentPutTest, AListUnderTheSameKeyNeverGivesANumberOutAgain) {
  for (const char *map : {"map", ".", "nodes-1", "nodes-1_ports-1"}) {
    both([&](const Filler &filler) {
      for (int round = 0; round < 4; ++round) {
        ASSERT_EQ(filler.put(filler.at(map), "list", list_of({text("never committed")})), 1);
        ASSERT_EQ(filler.put(filler.at(map), "list", list_of({text("a"), text("b"), text("c")})), 1);
        ASSERT_TRUE(commits(filler.store));
        std::vector<std::int64_t> numbers;
        for (const std::string &id : ids_in(cfg_simple_get_mapelem(filler.store, filler.at(map), "list")))
          numbers.push_back(number_of(id));
        EXPECT_EQ(numbers, (std::vector<std::int64_t>{3 * round + 1, 3 * round + 2, 3 * round + 3})) << map;
      }
    });
  }
}

TEST_P(ContentPutTest, NumbersGoOnInsideWhatIsReplaced) {
  for (int round = 0; round < 3; ++round) {
    both([](const Filler &filler) {
      cfg_elem *nodes = cfg_simple_get_mapelem(filler.store, cfg_root(filler.store), "nodes");
      ASSERT_EQ(filler.put(cfg_simple_get_listelem(filler.store, nodes, 1), "key", settings()), 1);
      ASSERT_EQ(filler.put(filler.at("map"), "key", settings()), 1);
      ASSERT_TRUE(commits(filler.store));
      ASSERT_EQ(filler.put(filler.at("map"), "key", text("no map")), 1);
      ASSERT_EQ(filler.put(cfg_simple_get_listelem(filler.store, nodes, 1), "key", list_of({text("l")})), 1);
      ASSERT_NE(filler.append(nodes, settings()), nullptr);
    });
    commit_both();
    both([](const Filler &filler) {
      ASSERT_EQ(filler.put(cfg_root(filler.store), "nodes", list_of({settings(), named("n"), named("m")})),
                1);
      ASSERT_EQ(filler.put(filler.at("map"), "key", settings()), 1);
    });
    commit_both();
    if (HasFailure()) return;
  }
}

TEST_P(ContentPutTest, ADistantListIsReplacedWhole) {
  const Recipe large = map_of({{"list", list_of(std::vector<Recipe>(30, text(std::string(200, 't'))))}});
  for (const Recipe &after :
       {large, map_of({{"list", list_of({text("small")})}}), map_of({{"list", text("no list")}})}) {
    both([&](const Filler &filler) {
      ASSERT_NE(filler.append("nodes", large), nullptr);
      ASSERT_EQ(filler.put(filler.at("nodes-2"), "large", large), 1);
      ASSERT_TRUE(commits(filler.store));
      const std::string last = ids_in(filler.at("nodes")).back();
      ASSERT_EQ(filler.put(filler.at(last.c_str()), "list", after.items[0]), 1);
      ASSERT_EQ(filler.put(filler.at("nodes-2"), "large", after), 1);
    });
    commit_both();
    if (HasFailure()) return;
  }
}

TEST_P(ContentPutTest, SixteenThousandKeysAreTheMost) {
  constexpr int most = 16384;
  Recipe wide{.kind = CFG_MAP};
  for (int i = 0; i < most; ++i) {
    wide.keys.push_back("k" + std::to_string(i));
    wide.items.push_back(integer(i));
  }
  ASSERT_EQ(whole.put(whole.at("map"), "wide", wide), 1) << cfg_error_text(store);
  ASSERT_TRUE(commits(store));
  cfg_elem *map = whole.at("map.wide");
  EXPECT_EQ(keys_of(map).size(), static_cast<std::size_t>(most));
  EXPECT_TRUE(failed_with(store, cfg_put_content(store, map, "one more", Content(integer(1))), CFG_E_LIMIT));
  EXPECT_EQ(cfg_put_content(store, map, "k5", Content(integer(55))), 1);
  wide.keys.emplace_back("one more");
  wide.items.push_back(integer(1));
  EXPECT_TRUE(
      failed_with(store, cfg_put_content(store, whole.at("map"), "wider", Content(wide)), CFG_E_LIMIT));
  EXPECT_EQ(cfg_map_has(whole.at("map"), "wider"), 0);
  ASSERT_TRUE(commits(store));
  EXPECT_EQ(int_at(store, map, "k5"), 55);
}
