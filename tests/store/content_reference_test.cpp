// References to new elements in elements that are written whole: a commit gives them the final IDs.
#include "twin.hpp"

namespace {

Recipe referring_to(const std::vector<std::string> &ids) {
  Recipe map = map_of({{"name", text("refers")}});
  std::vector<Recipe> entries;
  for (std::size_t i = 0; i < ids.size(); ++i) {
    map.keys.push_back("to " + std::to_string(i));
    map.items.push_back(refer(ids[i]));
    entries.push_back(refer(ids[i]));
  }
  map.keys.emplace_back("list");
  map.items.push_back(list_of(entries));
  return map;
}

Recipe target(const std::string &name) {
  return map_of({{"name", text(name)},
                 {"key", integer(1)},
                 {"map", named("inner")},
                 {"list", list_of({named("first"), named("second"), text("third")})}});
}

}  // namespace

class ContentReferenceTest : public TwinTest {};
STORE_TEST_ON_BOTH_ENGINES(ContentReferenceTest);

TEST_P(ContentReferenceTest, ToSoManyElementsAppendedBefore) {
  for (const std::size_t count : {1U, 3U, 4U, 7U, 8U, 20U}) {
    SCOPED_TRACE(count);
    both([&](const Filler &filler) {
      std::vector<std::string> ids;
      for (std::size_t i = 0; i < count; ++i)
        ids.emplace_back(text_of(filler.append(i % 2 ? "nodes" : "certs", target(std::to_string(i)))));
      ASSERT_NE(filler.append("nodes", referring_to(ids)), nullptr);
      ASSERT_NE(filler.append("certs", referring_to({ids.back()})), nullptr);
      ASSERT_NE(filler.append("nodes-1.ports", referring_to(ids)), nullptr);
      ASSERT_EQ(filler.put(filler.at("map"), "refers", referring_to(ids)), 1);
      ASSERT_EQ(filler.put(filler.at("map"), "reference", refer(ids.back())), 1);
      ASSERT_NE(filler.append("labels", refer(ids.front())), nullptr);
    });
    commit_both();
    if (HasFailure()) return;
  }
  EXPECT_EQ(reference_at(store, whole.at("nodes-3"), "to 0"), "certs-1");
}

TEST_P(ContentReferenceTest, ToElementsThatAreAttachedLater) {
  both([](const Filler &filler) {
    std::vector<cfg_elem *> later;
    std::vector<std::string> ids;
    for (int i = 0; i < 5; ++i) {
      later.push_back(cfg_new_map(filler.store));
      ids.emplace_back(text_of(later.back()));
    }
    ASSERT_NE(filler.append("nodes", referring_to(ids)), nullptr);
    ASSERT_NE(filler.append("certs", referring_to({ids[0]})), nullptr);
    ASSERT_EQ(cfg_append_future_listelem(filler.store, filler.at("nodes"), later[0]), 1);
    ASSERT_EQ(cfg_append_future_listelem(filler.store, filler.at("certs"), later[1]), 1);
    ASSERT_EQ(cfg_add_listelem(filler.store, filler.at("nodes-1.ports"), later[2]), 1);
    ASSERT_EQ(cfg_add_mapelem(filler.store, filler.at("map"), "x.y", later[3]), 1);
    ASSERT_EQ(cfg_add_mapelem(filler.store, later[1], "below", later[4]), 1);
  });
  commit_both();
  EXPECT_EQ(dump(store, whole.at("nodes-3.list")),
            "[nodes-3_list-1:r'nodes-4',nodes-3_list-2:r'certs-2',nodes-3_list-3:r'nodes-1_ports-2',"
            "nodes-3_list-4:r'map.x~2ey',nodes-3_list-5:r'certs-2.below',]");
}

// What lies inside a new entry is named through it, whether the one that refers is written before or after
// it.
TEST_P(ContentReferenceTest, ToPlacesInsideANewEntry) {
  for (const char *list : {"nodes", "certs", "nodes-1.ports"}) {
    for (const char *other : {"nodes", "certs", "nodes-1.ports", "map"}) {
      SCOPED_TRACE(std::string(list) + " from " + other);
      both([&](const Filler &filler) {
        const std::string id = text_of(filler.append(list, target("a target")));
        const Recipe refers =
            referring_to({id + ".key", id + ".map.name", id + ".list", id + ".nothing", id});
        if (filler.at(other) == filler.at("map")) {
          ASSERT_EQ(filler.put(filler.at("map"), list, refers), 1);
        } else {
          ASSERT_NE(filler.append(other, refers), nullptr);
        }
        ASSERT_NE(filler.append(list, target("another")), nullptr);
      });
      commit_both();
      if (HasFailure()) return;
    }
  }
}

// These may be named before the commit, so that they are to be found behind it.
TEST_P(ContentReferenceTest, ToMapsAndListsInsideANewEntryNameTheirPlaces) {
  both([](const Filler &filler) {
    cfg_elem *entry = filler.append("nodes", target("a target"));
    const std::string map = cfg_get_mapelem(entry, "map");
    const std::string list = cfg_get_mapelem(entry, "list");
    ASSERT_NE(filler.append("certs", referring_to({map, list})), nullptr);
    ASSERT_TRUE(commits(filler.store));
    EXPECT_EQ(reference_at(filler.store, filler.at("certs-1"), "to 0"), "nodes-3.map");
    EXPECT_EQ(reference_at(filler.store, filler.at("certs-1"), "to 1"), "nodes-3.list");
  });
}

TEST_P(ContentReferenceTest, ToValuesInsideANewEntryNameTheirPlaces) {
  both([](const Filler &filler) {
    cfg_elem *entry = filler.append("nodes", target("a target"));
    const std::string key = cfg_get_mapelem(entry, "key");
    ASSERT_NE(filler.append("certs", referring_to({key})), nullptr);
    ASSERT_TRUE(commits(filler.store));
    EXPECT_EQ(reference_at(filler.store, filler.at("certs-1"), "to 0"), "nodes-3.key");
  });
}

TEST_P(ContentReferenceTest, FromRecordsThatArePlannedBeforeTheTarget) {
  both([](const Filler &filler) {
    cfg_elem *early = filler.append("nodes", named("early"));
    cfg_elem *entry = filler.append("nodes", target("a target"));
    const std::string id = text_of(entry);
    ASSERT_EQ(cfg_map_set_reference(filler.store, early, "to", (id + ".list").c_str()), 1);
    ASSERT_EQ(cfg_map_set_reference(filler.store, early, "to key", (id + ".key").c_str()), 1);
    ASSERT_NE(filler.append("nodes", target("another")), nullptr);
  });
  commit_both();
  both([](const Filler &filler) {
    EXPECT_EQ(reference_at(filler.store, filler.at("nodes-3"), "to"), "nodes-4.list");
    EXPECT_EQ(names_in(filler.store, filler.at("nodes-4.list")),
              (std::vector<std::string>{"first", "second", kNothing}));
  });
}

TEST_P(ContentReferenceTest, FromTheRootToPlacesInsideANewEntry) {
  both([](const Filler &filler) {
    const std::string id = text_of(filler.append("nodes", target("a target")));
    ASSERT_EQ(cfg_map_set_reference(filler.store, filler.at("map"), "to", (id + ".list").c_str()), 1);
    ASSERT_NE(filler.append("nodes", target("another")), nullptr);
  });
  commit_both();
  EXPECT_EQ(reference_at(store, whole.at("map"), "to"), "nodes-3.list");
}

TEST_P(ContentReferenceTest, ToInnerEntriesThatWereReadOfANewEntry) {
  both([](const Filler &filler) {
    cfg_elem *entry = filler.append("nodes", target("a target"));
    std::vector<std::string> ids = ids_in(cfg_simple_get_mapelem(filler.store, entry, "list"));
    ASSERT_EQ(ids.size(), 3U);
    ASSERT_NE(filler.append("nodes", referring_to(ids)), nullptr);
    ASSERT_NE(filler.append("certs", referring_to(ids)), nullptr);
  });
  commit_both();
  EXPECT_EQ(reference_at(store, whole.at("certs-1"), "to 1"), "nodes-3_list-2");
}

TEST_P(ContentReferenceTest, ToItself) {
  both([](const Filler &filler) {
    cfg_elem *entry = filler.append("nodes", target("a target"));
    ASSERT_EQ(cfg_map_set_reference(filler.store, entry, "self", text_of(entry)), 1);
  });
  commit_both();
  EXPECT_EQ(reference_at(store, whole.at("nodes-3"), "self"), "nodes-3");
}

// The numbers in provisional IDs count up, so that an entry's own ID can be known before it is made.
TEST_P(ContentReferenceTest, ToItselfFromTheStart) {
  const auto number_in = [](const std::string &id) { return std::stoi(id.substr(id.rfind('-') + 1)); };
  const auto next_number = [&] { return number_in(text_of(cfg_new_map(store))) + 1; };
  for (const char *tail : {"", ".name"}) {
    // An entry that refers to nothing tells how many IDs such a call takes before that of the entry.
    const int first = next_number();
    const std::string probe =
        text_of(whole.append("nodes", referring_to({std::string("{nobody}") + tail, "{nobody}"})));
    const int before = number_in(probe) - first;
    const std::string own =
        probe.substr(0, probe.rfind('-') + 1) + std::to_string(next_number() + before) + "}";
    cfg_elem *entry = whole.append("nodes", referring_to({own + tail, own}));
    ASSERT_EQ(text_of(entry), own);
    ASSERT_NE(whole.append("nodes", named("behind")), nullptr);
    ASSERT_TRUE(commits(store));
    const std::string final = id_of(entry);
    reopen();
    whole.store = store;
    EXPECT_EQ(reference_at(store, whole.at(final.c_str()), "to 0"), final + tail);
    EXPECT_EQ(reference_at(store, whole.at(final.c_str()), "to 1"), final);
    EXPECT_EQ(string_at(store, whole.at(final.c_str()), "name"), "refers");
    EXPECT_EQ(cfg_verify(store, nullptr, nullptr), 1);
    check_tree(store);
  }
}

// The provisional IDs take three times the room of the final ones: all of them together do not fit into a
// record for which the final ones are small enough.
TEST_P(ContentReferenceTest, ToOneNewElementThousandsOfTimes) {
  const auto filled = [](std::size_t maps, const Recipe &value) {
    std::vector<std::pair<std::string, Recipe>> inner, outer;
    for (int i = 0; i < 60; ++i) inner.emplace_back("to " + std::to_string(i), value);
    for (std::size_t i = 0; i < maps; ++i) outer.emplace_back("map " + std::to_string(i), map_of(inner));
    return map_of(outer);
  };
  for (const std::size_t maps : {20U, 30U, 38U}) {
    SCOPED_TRACE(maps);
    both([&](const Filler &filler) {
      const std::string id = text_of(filler.append("certs", named("c")));
      ASSERT_NE(filler.append("nodes", filled(maps, refer(id))), nullptr);
    });
    expect_alike();
    commit_both();
  }
}

TEST_P(ContentReferenceTest, ToFinalIdsOfEveryLength) {
  both([](const Filler &filler) {
    cfg_elem *map = filler.at("map");
    for (int level = 0; level < 15; ++level) {
      for (const std::size_t length :
           {20U, 40U, 45U, 46U, 47U, 48U, 49U, 50U, 51U, 52U, 53U, 54U, 60U, 255U}) {
        const std::string key(length, 'k');
        ASSERT_EQ(filler.put(map, key.c_str(), map_of({{"list", list_of({})}})), 1);
        cfg_elem *list = cfg_get_child_by_path(filler.store, map, (key + ".list").c_str());
        const std::string id = text_of(filler.append(list, named("far")));
        ASSERT_NE(filler.append("nodes", referring_to({id})), nullptr) << cfg_error_text(filler.store);
        ASSERT_NE(filler.append("certs", referring_to({id, id, id, "nodes-1"})), nullptr);
      }
      map = put_map(filler.store, map, std::string(255, 'm').c_str());
    }
  });
  commit_both();
  const std::string longest = reference_at(store, whole.at("nodes-212"), "to 0");
  EXPECT_GT(longest.size(), 3800U);
  EXPECT_EQ(dump(store, whole.at(longest.c_str())), "{'name':s'far',}");
}

// A dot in a key takes three bytes of an ID.
TEST_P(ContentReferenceTest, ToFinalIdsAboutTheLongestThatThereAre) {
  for (const std::size_t dots : {70U, 85U, 86U, 87U, 88U, 89U, 100U}) {
    SCOPED_TRACE(dots);
    both([&](const Filler &filler) {
      cfg_elem *map = filler.at("map");
      for (int level = 0; level < 5; ++level) {
        map = put_map(filler.store, map, std::string(255, '.').c_str());
        ASSERT_NE(map, nullptr);
      }
      cfg_elem *far = cfg_new_map(filler.store);
      const std::string id = text_of(far);
      EXPECT_EQ(cfg_add_mapelem(filler.store, map, std::string(dots, '.').c_str(), far), 1);
      for (int i = 0; i < 3; ++i) ASSERT_NE(filler.append("nodes", referring_to({id, id, id})), nullptr);
    });
    EXPECT_EQ(cfg_commit(store, nullptr), cfg_commit(single.store, nullptr))
        << cfg_error_text(store) << " / " << cfg_error_text(single.store);
    EXPECT_TRUE(same_text(export_text(store), export_text(single.store)));
    both([](const Filler &filler) { cfg_abandon(filler.store); });
  }
}

TEST_P(ContentReferenceTest, ToElementsThatNeverGetAnId) {
  both([](const Filler &filler) {
    const std::string loose = text_of(cfg_new_map(filler.store));
    cfg_elem *deleted = filler.append("certs", target("deleted"));
    const std::string gone = text_of(deleted);
    ASSERT_NE(filler.append("nodes", referring_to({loose, gone, gone + ".key", loose + ".key"})), nullptr);
    ASSERT_NE(filler.append("certs", referring_to({gone})), nullptr);
    ASSERT_EQ(cfg_delete_element(filler.store, deleted), 1);
    ASSERT_NE(filler.append("certs", referring_to({loose})), nullptr);
    ASSERT_TRUE(commits(filler.store));
    EXPECT_EQ(reference_at(filler.store, filler.at("nodes-3"), "to 0"), loose);
    EXPECT_EQ(reference_at(filler.store, filler.at("nodes-3"), "to 1"), gone);
    EXPECT_EQ(reference_at(filler.store, filler.at("nodes-3"), "to 2"), gone + ".key");
    EXPECT_EQ(reference_at(filler.store, filler.at("nodes-3"), "to 3"), loose + ".key");
    EXPECT_EQ(reference_at(filler.store, filler.at("certs-1"), "to 0"), gone);
    EXPECT_EQ(reference_at(filler.store, filler.at("certs-2"), "to 0"), loose);
    EXPECT_EQ(cfg_verify(filler.store, nullptr, nullptr), 1);
  });
}

TEST_P(ContentReferenceTest, ToWhatOnlyLooksLikeANewElement) {
  expect_alike_everywhere(
      {referring_to({"{", "{}", "{x}", "{x}.y", "{0123456789abcdef-1}", "{" + std::string(4095, 'x')}),
       referring_to({std::string(4096, 'r')})});
}

// Nothing is found behind such an ID; looking for it must not disturb a record that is yet to be written.
TEST_P(ContentReferenceTest, ToWhatOnlyBeginsLikeANewElement) {
  both([](const Filler &filler) {
    const std::string cert = text_of(filler.append("certs", target("c")));
    const std::string node = text_of(filler.append("nodes", target("n")));
    std::vector<std::string> ids;
    for (const char *tail : {"x", "_list-1", "-1", "{", "}"}) {
      ids.push_back(cert + tail);
      ASSERT_NE(filler.append("nodes", referring_to({ids.back()})), nullptr);
      ASSERT_NE(filler.append("certs", referring_to({node + tail})), nullptr);
    }
    ASSERT_TRUE(commits(filler.store));
    for (std::size_t i = 0; i < ids.size(); ++i)
      EXPECT_EQ(reference_at(filler.store, filler.at(("nodes-" + std::to_string(4 + i)).c_str()), "to 0"),
                ids[i]);
  });
  expect_alike();
  check_tree(store);
}

TEST_P(ContentReferenceTest, ToElementsOfAnEarlierEdit) {
  both([](const Filler &filler) {
    cfg_elem *entry = filler.append("certs", target("early"));
    const std::string id = text_of(entry);
    ASSERT_TRUE(commits(filler.store));
    ASSERT_NE(filler.append("nodes", referring_to({id, id + ".key", id + ".list"})), nullptr);
    ASSERT_NE(filler.append("nodes", referring_to({text_of(filler.append("certs", named("late")))})),
              nullptr);
    ASSERT_TRUE(commits(filler.store));
    ASSERT_EQ(cfg_delete_element(filler.store, filler.at("certs-1")), 1);
    ASSERT_NE(filler.append("nodes", named("no reference")), nullptr);
  });
  commit_both();
  EXPECT_EQ(reference_at(store, whole.at("nodes-3"), "to 1"), "certs-1.key");
}

TEST_P(ContentReferenceTest, ToPlacesThatWereFoundBeforeTheirCommit) {
  both([](const Filler &filler) {
    cfg_elem *entry = filler.append("certs", target("early"));
    std::vector<std::string> ids = ids_in(cfg_simple_get_mapelem(filler.store, entry, "list"));
    ids.push_back(std::string(text_of(entry)) + ".key");
    ASSERT_NE(filler.at(ids.back().c_str()), nullptr);
    ASSERT_TRUE(commits(filler.store));
    ASSERT_NE(filler.append("nodes", referring_to(ids)), nullptr);
  });
  commit_both();
  EXPECT_EQ(reference_at(store, whole.at("nodes-3"), "to 1"), "certs-1_list-2");
  EXPECT_EQ(reference_at(store, whole.at("nodes-3"), "to 3"), "certs-1.key");
}

TEST_P(ContentReferenceTest, TextsThatLookLikeNewElementsAreLeftAlone) {
  const std::string id = text_of(whole.append("certs", named("c")));
  ASSERT_NE(whole.append("nodes", map_of({{"text", text(id)}, {"blob", blob(id)}, {"to", refer(id)}})),
            nullptr);
  ASSERT_TRUE(commits(store));
  EXPECT_EQ(string_at(store, whole.at("nodes-3"), "text"), id);
  EXPECT_EQ(reference_at(store, whole.at("nodes-3"), "to"), "certs-1");
}

TEST_P(ContentReferenceTest, ReadAsTheyWereGivenUntilTheCommit) {
  const std::string id = text_of(whole.append("certs", named("c")));
  cfg_elem *entry = whole.append("nodes", referring_to({id, "nodes-1"}));
  EXPECT_EQ(reference_at(store, entry, "to 0"), id);
  EXPECT_EQ(reference_at(store, entry, "to 1"), "nodes-1");
  ASSERT_TRUE(commits(store));
  EXPECT_EQ(reference_at(store, entry, "to 0"), "certs-1");
}
