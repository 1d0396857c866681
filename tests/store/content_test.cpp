// Whole elements of every kind, shape and size: what a commit makes of them is what single calls would have
// made.
#include "twin.hpp"

class ContentTest : public TwinTest {};
STORE_TEST_ON_BOTH_ENGINES(ContentTest);

namespace {

std::string bytes_of(std::size_t size) {
  std::string bytes(size, '\0');
  for (std::size_t i = 0; i < size; ++i) bytes[i] = static_cast<char>(i * 31);
  return bytes;
}

// Entries of about `bytes` bytes each.
Recipe list_of_texts(std::size_t count, std::size_t bytes) {
  std::vector<Recipe> entries;
  for (std::size_t i = 0; i < count; ++i)
    entries.push_back(text(std::to_string(i) + std::string(bytes, 't')));
  return list_of(std::move(entries));
}

Recipe chain(int levels, bool lists) {
  Recipe chain = lists ? list_of({text("the end")}) : named("the end");
  for (int level = 1; level < levels; ++level)
    chain =
        lists ? list_of({std::move(chain)}) : map_of({{"below", std::move(chain)}, {"n", integer(level)}});
  return chain;
}

}  // namespace

TEST_P(ContentTest, EveryKindInAMap) {
  expect_alike_everywhere({map_of({{"text", text("a text")},
                                   {"empty text", text("")},
                                   {"blob", blob(bytes_of(300))},
                                   {"empty blob", blob("")},
                                   {"reference", refer("nodes-1")},
                                   {"nowhere", refer("nobody is called this")},
                                   {"empty reference", refer("")},
                                   {"least", integer(INT32_MIN)},
                                   {"most", integer(INT32_MAX)},
                                   {"zero", integer(0)},
                                   {"yes", boolean(true)},
                                   {"no", boolean(false)},
                                   {"map", named("inner")},
                                   {"empty map", map_of({})},
                                   {"list", list_of({text("a"), named("b")})},
                                   {"empty list", list_of({})}})});
}

TEST_P(ContentTest, EveryKindThatSingleCallsPutIntoLists) {
  expect_alike_everywhere(
      {text("an entry"), text(""), refer("nodes-2"), map_of({}), list_of({}),
       list_of({text("a"), refer("nodes-1"), map_of({}), list_of({}), named("b"), list_of({text("c")})}),
       map_of({{"entries", list_of({text(""), refer(""), map_of({}), list_of({}), named("x")})}})});
}

// There are no single calls for these.
TEST_P(ContentTest, NumbersTruthValuesAndBlobsAreListEntriesToo) {
  const Recipe inner = list_of({integer(-7), boolean(true), boolean(false), blob(std::string("\0b", 2))});
  const Filler &filler = whole;
  for (const char *list : {"certs", "nodes-1.ports"}) {
    for (const Recipe &recipe : inner.items) ASSERT_NE(filler.append(list, recipe), nullptr);
    ASSERT_NE(filler.append(list, map_of({{"list", inner}})), nullptr);
  }
  ASSERT_EQ(filler.put(filler.at("map"), "list", inner), 1);
  ASSERT_TRUE(commits(store));
  reopen();
  EXPECT_EQ(
      dump(store, cfg_get_by_id(store, "certs")),
      "[certs-1:i-7,certs-2:b1,certs-3:b0,certs-4:x0062,"
      "certs-5:{'list':[certs-5_list-1:i-7,certs-5_list-2:b1,certs-5_list-3:b0,certs-5_list-4:x0062,],},]");
  EXPECT_EQ(dump(store, cfg_get_by_id(store, "nodes-1_ports-6.list")),
            "[nodes-1_ports-6_list-1:i-7,nodes-1_ports-6_list-2:b1,nodes-1_ports-6_list-3:b0,"
            "nodes-1_ports-6_list-4:x0062,]");
  EXPECT_EQ(dump(store, cfg_get_by_id(store, "map.list")),
            "[map_list-1:i-7,map_list-2:b1,map_list-3:b0,map_list-4:x0062,]");
  EXPECT_EQ(cfg_verify(store, nullptr, nullptr), 1);
  check_tree(store);
}

TEST_P(ContentTest, AnyNumberButZeroIsTrue) {
  Recipe truth = map_of({{"a", boolean(true)}, {"b", boolean(true)}, {"c", boolean(false)}});
  truth.items[0].number = 77;
  truth.items[1].number = INT32_MIN;
  ASSERT_NE(whole.append("nodes", truth), nullptr);
  ASSERT_NE(whole.append("nodes-1.ports", truth), nullptr);
  ASSERT_TRUE(commits(store));
  EXPECT_EQ(dump(store, whole.at("nodes-3")), "{'a':b1,'b':b1,'c':b0,}");
  EXPECT_EQ(dump(store, whole.at("nodes-1_ports-2")), "{'a':b1,'b':b1,'c':b0,}");
}

TEST_P(ContentTest, MapsOfMapsOfListsAndListsOfLists) {
  const Recipe lists = list_of({list_of({text("a"), list_of({text("b")})}), list_of({}), named("c")});
  const Recipe maps = map_of(
      {{"a",
        map_of({{"b", map_of({{"list", lists}, {"c", named("deep")}})}, {"list", list_of({text("x")})}})},
       {"list", list_of({map_of({{"list", lists}, {"m", map_of({{"list", lists}})}})})}});
  expect_alike_everywhere({lists, maps, map_of({{"lists", list_of({lists, maps, lists})}}), named("plain")});
}

TEST_P(ContentTest, ThirtyLevels) { expect_alike_everywhere({chain(30, false), chain(30, true)}); }

TEST_P(ContentTest, AbsentKeysAreNotThere) {
  const Recipe absent;
  expect_alike_everywhere(
      {map_of({{"a", absent}, {"b", text("b")}, {"c", absent}}), map_of({{"a", absent}, {"b", absent}}),
       map_of({{"map", map_of({{"a", absent}, {"b", integer(1)}})}, {"list", absent}, {"name", text("n")}})});
}

TEST_P(ContentTest, OneKeySetWithDifferentAbsencesInOneEdit) {
  std::vector<Recipe> recipes;
  // More than the store remembers.
  for (unsigned present = 0; present < 128; ++present) {
    Recipe map = map_of({{"a", text("a")},
                         {"b", integer(2)},
                         {"c", list_of({text("c")})},
                         {"d", named("d")},
                         {"e", boolean(true)},
                         {"f", blob("f")},
                         {"g", list_of({named("g")})}});
    for (unsigned i = 0; i < map.items.size(); ++i)
      if ((present >> i & 1) == 0) map.items[i] = {};
    recipes.push_back(std::move(map));
  }
  expect_alike_everywhere(recipes);
}

TEST_P(ContentTest, OneKeySetWithOtherKindsUnderItsKeys) {
  const std::vector<Recipe> kinds = {text("t"),
                                     integer(1),
                                     boolean(true),
                                     blob("b"),
                                     refer("map"),
                                     list_of({}),
                                     list_of({text("x")}),
                                     named("n"),
                                     map_of({}),
                                     text("again"),
                                     Recipe{},
                                     named("m"),
                                     list_of({named("e")}),
                                     boolean(false)};
  std::vector<Recipe> recipes;
  for (std::size_t i = 0; i < kinds.size(); ++i)
    recipes.push_back(map_of({{"first", kinds[i]}, {"second", kinds[(i * 5 + 3) % kinds.size()]}}));
  expect_alike_everywhere(recipes);
}

TEST_P(ContentTest, OneKeySetNestedInItself) {
  Recipe nested = map_of({{"name", text("innermost")}, {"below", {}}, {"list", {}}});
  for (int level = 0; level < 4; ++level) {
    const Recipe inner = nested;
    nested = map_of(
        {{"name", text("level")}, {"below", inner}, {"list", level % 2 ? list_of({inner}) : Recipe{}}});
  }
  expect_alike_everywhere({nested});
}

TEST_P(ContentTest, TwoKeySetsWithTheSameKeysInAnotherOrder) {
  expect_alike_everywhere(
      {map_of({{"a", text("1")}, {"b", integer(2)}, {"c", named("3")}}),
       map_of({{"c", named("1")}, {"a", text("2")}, {"b", integer(3)}}),
       map_of({{"b", integer(1)}, {"c", named("2")}, {"a", text("3")}, {"d", Recipe{}}})});
}

TEST_P(ContentTest, MoreKeysThanMapsOfOneShapeHave) {
  for (const int count : {63, 64, 65, 200}) {
    SCOPED_TRACE(count);
    Recipe wide{.kind = CFG_MAP};
    for (int i = 0; i < count; ++i) {
      wide.keys.push_back("key " + std::to_string(i * 7919 % 1000));
      wide.items.push_back(i % 3 ? text(std::to_string(i)) : integer(i));
    }
    // So many keys, of which few are there.
    Recipe sparse = wide;
    for (std::size_t i = 0; i < sparse.items.size(); ++i)
      if (i % 10 != 0) sparse.items[i] = {};
    expect_alike_everywhere({wide, sparse, map_of({{"wide", wide}, {"list", list_of({wide, sparse})}})});
    if (HasFailure()) return;
  }
}

TEST_P(ContentTest, KeysWithDotsAndOtherSigns) {
  const std::string longest(255, 'k');
  const Recipe odd = map_of({{"a.b", text("dotted")},
                             {".", integer(1)},
                             {"..", named("dots")},
                             {"{x}", text("braces")},
                             {"n-1", text("hyphen")},
                             {"k~1", text("tilde")},
                             {"[2]", list_of({text("brackets")})},
                             {"\xc3\xa4", text("two bytes")},
                             {longest, text("longest")},
                             {" ", boolean(true)}});
  expect_alike_everywhere({odd, map_of({{"x.y", map_of({{"a.b", list_of({odd})}})}})});
}

TEST_P(ContentTest, TextsAndBlobsAroundSixtyFourKibibytes) {
  std::vector<Recipe> recipes;
  for (const std::size_t size : {65535U, 65536U, 70000U}) {
    recipes.push_back(map_of({{"text", text(std::string(size, 'u'))}, {"n", integer(1)}}));
    recipes.push_back(map_of({{"list", list_of({text(std::string(size, 'v'))})}}));
  }
  recipes.push_back(text(std::string(65536, 't')));
  recipes.push_back(map_of({{"blob", blob(bytes_of(65536))}}));
  expect_alike_everywhere(recipes);
}

TEST_P(ContentTest, RecordsOfEverySizeAroundTheEdges) {
  std::vector<Recipe> recipes;
  for (const std::size_t edge : {1900U, 32768U, 65536U}) {
    for (std::size_t size = edge - 48; size < edge + 8; size += 3)
      recipes.push_back(map_of({{"name", text(std::string(size, 's'))}, {"n", integer(1)}}));
  }
  recipes.push_back(map_of({{"name", text(std::string(1 << 20, 's'))}, {"list", list_of_texts(3, 500)}}));
  both([&](const Filler &filler) {
    for (const Recipe &recipe : recipes) ASSERT_NE(filler.append("nodes", recipe), nullptr);
  });
  commit_both();
}

TEST_P(ContentTest, ListsThatMoveIntoRecordsOfTheirOwn) {
  std::vector<Recipe> recipes;
  // A record around its target, with a list around the size that is worth moving.
  for (const std::size_t plain : {1000U, 1500U, 1590U, 1600U, 1620U, 1640U, 1660U, 1680U, 1700U, 3000U}) {
    for (const std::size_t bytes : {20U, 200U, 215U, 222U, 228U, 231U, 234U, 237U, 240U, 260U, 900U})
      recipes.push_back(
          map_of({{"plain", text(std::string(plain, 'p'))}, {"list", list_of_texts(1, bytes)}}));
  }
  recipes.push_back(
      map_of({{"a", list_of_texts(3, 300)}, {"b", list_of_texts(2, 300)}, {"c", list_of_texts(4, 300)}}));
  recipes.push_back(map_of({{"outer", list_of({map_of({{"inner", list_of_texts(20, 200)}}), named("x")})}}));
  recipes.push_back(map_of({{"m", map_of({{"list", list_of_texts(20, 200)}})}}));
  recipes.push_back(map_of({{"list", list_of_texts(2000, 40)}, {"after", integer(1)}}));
  both([&](const Filler &filler) {
    for (const Recipe &recipe : recipes) ASSERT_NE(filler.append("nodes", recipe), nullptr);
    for (const Recipe &recipe : recipes) ASSERT_NE(filler.append("nodes-1.ports", recipe), nullptr);
  });
  commit_both();
  if (HasFailure()) return;
  // They go on like any others.
  both([&](const Filler &filler) {
    for (int number = 3; number <= 12; ++number) {
      const std::string list = "nodes-" + std::to_string(number) + ".list";
      for (const Recipe &recipe : {named("later"), list_of_texts(5, 300)})
        ASSERT_NE(filler.append(list.c_str(), recipe), nullptr);
      ASSERT_EQ(cfg_delete_element(filler.store,
                                   filler.at(("nodes-" + std::to_string(number) + "_list-1").c_str())),
                1);
    }
  });
  commit_both();
}

TEST_P(ContentTest, ThousandsOfEntriesInOneEditAndMoreInTheNext) {
  for (int round = 0; round < 3; ++round) {
    both([&](const Filler &filler) {
      for (int i = 0; i < 700; ++i) {
        const std::string name = std::to_string(round) + " " + std::to_string(i);
        ASSERT_NE(filler.append("nodes", map_of({{"name", text(name)},
                                                 {"round", integer(round)},
                                                 {"new in " + std::to_string(round), boolean(true)},
                                                 {"ports", list_of({named(name), named("p")})}})),
                  nullptr);
      }
    });
    commit_both();
    if (HasFailure()) return;
  }
  EXPECT_EQ(size_of(whole.at("nodes")), 2102);
}

TEST_P(ContentTest, TextThatIsNoUtf8IsTakenAsSingleCallsTakeIt) {
  for (const char *odd : {"\xff\xfe", "\xc3", "\xed\xa0\x80", "a\x80z"}) {
    both([&](const Filler &filler) {
      ASSERT_NE(filler.append("nodes", map_of({{"odd", text(odd)}, {"to", refer(odd)}})), nullptr);
    });
  }
  commit_both();
}

// The handle knows key sets by their address, whatever they were used for first.
TEST_P(ContentTest, AKeySetReadsAndWrites) {
  const Recipe recipe = map_of({{"z", text("1")}, {"name", text("2")}, {"a", integer(3)}});
  const cfg_keyset &set = keyset_of(recipe.keys);
  std::vector<cfg_value> values(set.count);
  for (int round = 0; round < 3; ++round) {
    ASSERT_EQ(cfg_map_read(whole.at("nodes-1"), &set, values.data()), 1);
    EXPECT_EQ(values[0].kind, CFG_NONE);
    EXPECT_STREQ(values[1].data, "one");
    EXPECT_EQ(values[2].kind, CFG_NONE);
    cfg_elem *entry = whole.append("nodes", recipe);
    ASSERT_EQ(cfg_map_read(entry, &set, values.data()), 1);
    EXPECT_STREQ(values[0].data, "1");
    ASSERT_NE(single.append("nodes", recipe), nullptr);
    commit_both();
    ASSERT_EQ(cfg_map_read(entry, &set, values.data()), 1);
    EXPECT_STREQ(values[0].data, "1");
    EXPECT_STREQ(values[1].data, "2");
    EXPECT_EQ(values[2].number, 3);
  }
}

// The sets of a library that is loaded may stand where those of one stood that is unloaded.
TEST_P(ContentTest, AnotherKeySetInThePlaceOfAKnownOne) {
  static const char *const first[] = {"a", "b"}, *const second[] = {"c", "d", "e"},
                           *const twice[] = {"f", "f"};
  cfg_keyset set = {first, 2};
  const cfg_content one{CFG_INT, 1, nullptr, 0, nullptr, nullptr};
  const cfg_content items[] = {one, one, one};
  const cfg_content content{CFG_MAP, 0, nullptr, 0, &set, items};
  ASSERT_NE(cfg_append_content(store, whole.at("nodes"), &content), nullptr);
  set.keys = second;
  ASSERT_NE(cfg_append_content(store, whole.at("nodes"), &content), nullptr);
  set.count = 3;
  ASSERT_NE(cfg_append_content(store, whole.at("nodes"), &content), nullptr);
  set = {twice, 2};
  for (int round = 0; round < 2; ++round)
    EXPECT_EQ(cfg_append_content(store, whole.at("nodes"), &content), nullptr);
  ASSERT_TRUE(commits(store));
  EXPECT_EQ(dump(store, whole.at("nodes-3")), "{'a':i1,'b':i1,}");
  EXPECT_EQ(dump(store, whole.at("nodes-4")), "{'c':i1,'d':i1,}");
  EXPECT_EQ(dump(store, whole.at("nodes-5")), "{'c':i1,'d':i1,'e':i1,}");
}

TEST_P(ContentTest, WhatIsGivenIsCopied) {
  std::string name = "as given", bytes = "bytes", id = "nodes-1",
              pending_id = text_of(whole.append("certs", named("c")));
  for (const auto &[list, key] : {std::pair{"nodes", "first"}, std::pair{"nodes-1.ports", "second"}}) {
    std::string name_now = name, bytes_now = bytes, id_now = id, pending_now = pending_id;
    cfg_content entries[] = {{CFG_STRING, 0, name_now.data(), name_now.size(), nullptr, nullptr},
                             {CFG_REFERENCE, 0, pending_now.data(), pending_now.size(), nullptr, nullptr}};
    cfg_content items[] = {{CFG_STRING, 0, name_now.data(), name_now.size(), nullptr, nullptr},
                           {CFG_BLOB, 0, bytes_now.data(), bytes_now.size(), nullptr, nullptr},
                           {CFG_REFERENCE, 0, id_now.data(), id_now.size(), nullptr, nullptr},
                           {CFG_REFERENCE, 0, pending_now.data(), pending_now.size(), nullptr, nullptr},
                           {CFG_LIST, 0, nullptr, 2, nullptr, entries}};
    const cfg_content content{CFG_MAP, 0, nullptr, 0, &keyset_of({"name", "blob", "id", "new", "list"}),
                              items};
    ASSERT_NE(cfg_append_content(store, whole.at(list), &content), nullptr);
    ASSERT_EQ(cfg_put_content(store, whole.at("map"), key, &content), 1);
    for (std::string *buffer : {&name_now, &bytes_now, &id_now, &pending_now})
      buffer->assign(buffer->size(), '#');
    for (cfg_content &item : items) item = {};
    for (cfg_content &entry : entries) entry = {};
  }
  ASSERT_TRUE(commits(store));
  for (const char *map : {"nodes-3", "nodes-1_ports-2", "map.first", "map.second"}) {
    cfg_elem *elem = whole.at(map);
    EXPECT_EQ(string_at(store, elem, "name"), "as given") << map;
    EXPECT_EQ(dump(store, cfg_simple_get_mapelem(store, elem, "blob")), "x6279746573");
    EXPECT_EQ(reference_at(store, elem, "id"), "nodes-1");
    EXPECT_EQ(reference_at(store, elem, "new"), "certs-1");
    cfg_elem *list = cfg_simple_get_mapelem(store, elem, "list");
    EXPECT_EQ(dump(store, cfg_simple_get_listelem(store, list, 0)), "s'as given'");
    EXPECT_EQ(dump(store, cfg_simple_get_listelem(store, list, 1)), "r'certs-1'");
  }
}

// Where it ends is said by its length: no NUL need follow.
TEST_P(ContentTest, ATextIsAsLongAsItIsSaidToBe) {
  const char letters[] = "abcdef";
  const cfg_content items[] = {{CFG_STRING, 0, letters, 3, nullptr, nullptr},
                               {CFG_REFERENCE, 0, letters + 1, 2, nullptr, nullptr},
                               {CFG_BLOB, 0, letters + 2, 4, nullptr, nullptr}};
  const cfg_content content{CFG_MAP, 0, nullptr, 0, &keyset_of({"s", "r", "b"}), items};
  ASSERT_NE(cfg_append_content(store, whole.at("nodes"), &content), nullptr);
  ASSERT_EQ(cfg_put_content(store, whole.at("map"), "m", &content), 1);
  ASSERT_TRUE(commits(store));
  EXPECT_EQ(dump(store, whole.at("nodes-3")), "{'b':x63646566,'r':r'bc','s':s'abc',}");
  EXPECT_EQ(dump(store, whole.at("map.m")), "{'b':x63646566,'r':r'bc','s':s'abc',}");
}

// Every entry brings keys of its own: there are more kinds of maps than a store has numbers for.
TEST_P(ContentTest, MoreKindsOfMapsThanTheStoreNumbers) {
  constexpr int kinds = (1 << 16) + 50;
  for (int i = 0; i < kinds; ++i) {
    const std::string key = "k" + std::to_string(i);
    const Recipe recipe = map_of({{key, integer(i)}});
    ASSERT_NE(whole.append("nodes", recipe), nullptr);
  }
  ASSERT_TRUE(commits(store));
  ASSERT_NE(whole.append("nodes", map_of({{"one", integer(1)}, {"more", text("x")}})), nullptr);
  ASSERT_NE(whole.append("nodes", named("the last")), nullptr);
  ASSERT_TRUE(commits(store));
  EXPECT_EQ(cfg_verify(store, nullptr, nullptr), 1);
  reopen();
  cfg_elem *list = cfg_get_by_path(store, "nodes");
  ASSERT_EQ(size_of(list), 2 + kinds + 2);
  for (int i = 0; i < kinds; ++i) {
    const std::string key = "k" + std::to_string(i);
    ASSERT_EQ(int_at(store, cfg_simple_get_listelem(store, list, 2 + i), key.c_str()), i);
  }
  EXPECT_EQ(dump(store, cfg_simple_get_listelem(store, list, 2 + kinds)), "{'more':s'x','one':i1,}");
}
