// Pending entries that were appended whole: they are changed before their commit like any others.
#include "pending_node.hpp"

class ContentChangeTest : public PendingNodeTest {};
STORE_TEST_ON_BOTH_ENGINES(ContentChangeTest);

TEST_P(ContentChangeTest, ValuesAreSetBeforeTheCommit) {
  after_change([](const Filler &filler, cfg_elem *entry) {
    ASSERT_EQ(cfg_map_set_string(filler.store, entry, "name", "renamed"), 1);
    ASSERT_EQ(cfg_map_set_int(filler.store, entry, "new", 5), 1);
    ASSERT_EQ(cfg_map_set_string(filler.store, entry, "count", "another kind"), 1);
  });
}

TEST_P(ContentChangeTest, ValuesInsideAreSetBeforeTheCommit) {
  after_change([](const Filler &filler, cfg_elem *entry) {
    const std::string id = text_of(entry);
    ASSERT_EQ(cfg_map_set_int(filler.store, filler.at((id + ".ssh").c_str()), "port", 2222), 1);
    ASSERT_EQ(cfg_set_string(filler.store, filler.at((id + ".ssh.more.name").c_str()), "deeper"), 1);
    ASSERT_EQ(cfg_set_blob(filler.store, filler.at((id + ".key").c_str()), "xyz", 3), 1);
    ASSERT_EQ(cfg_set_reference(filler.store, filler.at((id + ".first").c_str()), "nodes-2"), 1);
  });
}

TEST_P(ContentChangeTest, KeysAreDeletedBeforeTheCommit) {
  after_change([](const Filler &filler, cfg_elem *entry) {
    for (const char *key : {"name", "ports", "absent", "on"})
      ASSERT_EQ(cfg_map_delete_key(filler.store, entry, key), 1);
    EXPECT_EQ(cfg_map_has(entry, "name"), 0);
  });
}

TEST_P(ContentChangeTest, ItsListsGrowBeforeTheCommit) {
  after_change([](const Filler &filler, cfg_elem *entry) {
    cfg_elem *ports = cfg_simple_get_mapelem(filler.store, entry, "ports");
    ASSERT_NE(filler.append(ports, named("p4")), nullptr);
    ASSERT_EQ(cfg_add_listelem(filler.store, ports, cfg_new_string(filler.store, "p5")), 1);
    ASSERT_NE(append_string(filler.store, ports, "p6"), nullptr);
    EXPECT_EQ(size_of(ports), 4);
    EXPECT_EQ(pending_size_of(ports), 2);
  });
}

TEST_P(ContentChangeTest, InnerEntriesAreChangedAndDeletedBeforeTheCommit) {
  after_change([](const Filler &filler, cfg_elem *entry) {
    cfg_elem *ports = cfg_simple_get_mapelem(filler.store, entry, "ports");
    ASSERT_EQ(cfg_map_set_string(filler.store, cfg_simple_get_listelem(filler.store, ports, 1), "name", "q2"),
              1);
    ASSERT_EQ(cfg_delete_element(filler.store, cfg_simple_get_listelem(filler.store, ports, 0)), 1);
    EXPECT_EQ(size_of(ports), 2);
  });
}

TEST_P(ContentChangeTest, ItsListsAreEmptiedBeforeTheCommit) {
  after_change([](const Filler &filler, cfg_elem *entry) {
    cfg_elem *ports = cfg_simple_get_mapelem(filler.store, entry, "ports");
    ASSERT_NE(cfg_set_list(filler.store, ports), nullptr);
    ASSERT_NE(append_string(filler.store, ports, "refilled"), nullptr);
  });
}

TEST_P(ContentChangeTest, ItIsDeletedBeforeTheCommit) {
  after_change([](const Filler &filler, cfg_elem *entry) {
    const std::string id = text_of(entry);
    ASSERT_EQ(cfg_delete_element(filler.store, entry), 1);
    EXPECT_EQ(filler.at(id.c_str()), nullptr);
    EXPECT_EQ(filler.at((id + ".name").c_str()), nullptr);
    EXPECT_EQ(cfg_elem_kind(entry), CFG_NONE);
    EXPECT_EQ(cfg_map_set_int(filler.store, entry, "x", 1), 0);
    EXPECT_EQ(cfg_delete_element(filler.store, entry), 0);
  });
}

TEST_P(ContentChangeTest, WhenAllAreDeletedThereIsNoChange) {
  both([](const Filler &filler) {
    const std::uint64_t before = cfg_revision(filler.store);
    cfg_elem *entry = filler.append("nodes", node());
    ASSERT_EQ(cfg_delete_element(filler.store, entry), 1);
    EXPECT_EQ(cfg_has_changes(filler.store), 0);
    ASSERT_TRUE(commits(filler.store));
    EXPECT_EQ(cfg_revision(filler.store), before);
  });
}

TEST_P(ContentChangeTest, ItGoesWithItsList) {
  for (const char *list : {"nodes-1.ports", "certs", "nodes"}) {
    both([&](const Filler &filler) {
      const std::string id = text_of(filler.append(list, node()));
      ASSERT_NE(cfg_set_list(filler.store, filler.at(list)), nullptr);
      EXPECT_EQ(pending_size_of(filler.at(list)), 0);
      EXPECT_EQ(filler.at(id.c_str()), nullptr);
      EXPECT_EQ(filler.at((id + ".name").c_str()), nullptr);
      ASSERT_NE(filler.append(list, node()), nullptr);
    });
    commit_both();
  }
  both([](const Filler &filler) {
    cfg_elem *entry = filler.append("nodes", node());
    ASSERT_EQ(cfg_delete_element(filler.store, filler.at("nodes")), 1);
    EXPECT_EQ(cfg_elem_kind(entry), CFG_NONE);
    ASSERT_NE(filler.append(put_list(filler.store, cfg_root(filler.store), "nodes"), node()), nullptr);
  });
  commit_both();
}

TEST_P(ContentChangeTest, AnAttachedEntryIsNotAttachedAgain) {
  with_pending_node([](const Filler &filler, cfg_elem *entry) {
    EXPECT_EQ(cfg_append_future_listelem(filler.store, filler.at("certs"), entry), 0);
    EXPECT_EQ(cfg_add_listelem(filler.store, filler.at("certs"), entry), 0);
    EXPECT_EQ(cfg_add_mapelem(filler.store, filler.at("map"), "again", entry), 0);
  });
  commit_both();
}

TEST_P(ContentChangeTest, AnotherHandleSeesItAfterTheCommitOnly) {
  cfg *other = another_handle();
  const std::string before = dump(other);
  cfg_elem *entry = whole.append("nodes", node());
  const std::string id = text_of(entry);
  EXPECT_EQ(dump(other), before);
  EXPECT_EQ(cfg_get_by_id(other, id.c_str()), nullptr);
  ASSERT_TRUE(commits(store));
  ASSERT_EQ(cfg_refresh(other), 1);
  EXPECT_EQ(cfg_get_by_id(other, id.c_str()), nullptr);
  EXPECT_EQ(dump(other, cfg_get_by_id(other, "nodes-3")), dump(store, entry));
}

TEST_P(ContentChangeTest, NothingIsLeftOfAnAbandonedEdit) {
  for (int round = 0; round < 3; ++round) {
    with_pending_node([&](const Filler &filler, cfg_elem *entry) {
      const std::string id = text_of(entry);
      if (round == 1) {
        EXPECT_EQ(string_at(filler.store, entry, "name"), "a node");
      }
      ASSERT_EQ(filler.put(filler.at("map"), "put", node()), 1);
      cfg_abandon(filler.store);
      EXPECT_EQ(filler.at(id.c_str()), nullptr);
      EXPECT_EQ(cfg_has_changes(filler.store), 0);
      EXPECT_EQ(pending_size_of(filler.at("nodes")), 0);
    });
    expect_alike();
    EXPECT_EQ(dump(store, whole.at("map")), round ? dump(single.store, single.at("map")) : "{'kept':i1,}");
    // The same key sets in the next edit.
    with_pending_node([](const Filler &, cfg_elem *) {});
    commit_both();
    if (HasFailure()) return;
  }
}

TEST_P(ContentChangeTest, ImportsReplaceItLikeAnyOtherEntry) {
  const std::string text = export_text(single.store);
  with_pending_node([&](const Filler &filler, cfg_elem *entry) {
    ASSERT_EQ(import_text(filler.store, text), 1) << cfg_error_text(filler.store);
    EXPECT_EQ(cfg_elem_kind(entry), CFG_NONE);
    ASSERT_NE(filler.append("nodes", named("after the import")), nullptr);
  });
  commit_both();
}

TEST_P(ContentChangeTest, NodesOfAPushHaveTheirListsOfMessages) {
  both([](const Filler &filler) {
    cfg_elem *pushes = make_list(filler.store, "cfg_push_exec_ctxts");
    cfg_elem *push = filler.append(pushes, map_of({{"name", text("a push")}, {"nodes", list_of({})}}));
    cfg_elem *nodes = cfg_simple_get_mapelem(filler.store, push, "nodes");
    for (const Recipe &recipe :
         {named("n"), map_of({}), text("no map"), list_of({named("x")}),
          map_of({{"execution_errors", text("no list")}, {"preflight_changes", list_of({named("kept")})}})}) {
      cfg_elem *entry = filler.append(nodes, recipe);
      ASSERT_NE(entry, nullptr) << cfg_error_text(filler.store);
      EXPECT_EQ(cfg_map_has(entry, "execution_messages"), recipe.kind == CFG_MAP ? 1 : 0);
    }
  });
  commit_both();
  both([](const Filler &filler) {
    EXPECT_EQ(keys_of(filler.at("cfg_push_exec_ctxts-1_nodes-2")),
              (std::vector<std::string>{"execution_changes", "execution_errors", "execution_messages",
                                        "execution_warnings", "preflight_changes", "preflight_errors",
                                        "preflight_messages", "preflight_warnings"}));
    // Into the list of a committed push, first while it stands in the push and then as one of records.
    for (int round = 0; round < 3; ++round) {
      for (int i = 0; i < 60; ++i)
        ASSERT_NE(filler.append("cfg_push_exec_ctxts-1.nodes", named(std::to_string(i))), nullptr);
      ASSERT_TRUE(commits(filler.store));
    }
    EXPECT_EQ(keys_of(filler.at("cfg_push_exec_ctxts-1_nodes-185")).size(), 9U);
  });
  // A push that is appended with its nodes: these are entries that were there from the start.
  both([](const Filler &filler) {
    ASSERT_NE(filler.append("cfg_push_exec_ctxts", map_of({{"nodes", list_of({named("a"), named("b")})}})),
              nullptr);
    ASSERT_NE(filler.append("nodes", map_of({{"nodes", list_of({named("c")})}})), nullptr);
  });
  commit_both();
  EXPECT_EQ(keys_of(whole.at("cfg_push_exec_ctxts-2_nodes-1")), std::vector<std::string>{"name"});
}

TEST_P(ContentChangeTest, ListsThatWouldNameTheirEntriesAlikeAreRefused) {
  const Recipe entries = list_of({text("x")});
  const Recipe recipes[] = {
      map_of({{"a.b", entries}, {"a_b", entries}}),
      map_of({{"a.b", list_of({})}, {"a_b", list_of({})}}),
      map_of({{"a_b", entries}, {"a", map_of({{"b", entries}})}}),
      map_of({{"a", map_of({{"b_c", entries}})}, {"a_b", map_of({{"c", entries}})}}),
      map_of({{"list", list_of({map_of({{"a.b", entries}, {"a_b", entries}})})}}),
      map_of({{"m", map_of({{"a.b", entries}, {"a_b", list_of({})}})}}),
  };
  for (const char *list : {"nodes", "nodes-1.ports", "certs"}) {
    for (const Recipe &recipe : recipes) {
      both([&](const Filler &filler) {
        ASSERT_NE(filler.append(list, recipe), nullptr);
        ASSERT_NE(filler.append("nodes", node()), nullptr);
      });
      expect_refused(CFG_E_ARGUMENT);
      both([](const Filler &filler) { cfg_abandon(filler.store); });
      if (HasFailure()) return;
    }
  }
  // These do not.
  expect_alike_everywhere({map_of({{"a.b", text("t")}, {"a_b", entries}}),
                           map_of({{"a.b", map_of({})}, {"a_b", entries}}),
                           map_of({{"a", list_of({map_of({{"b", entries}})})}, {"a_b", entries}}),
                           map_of({{"a.b", map_of({{"c", entries}})}, {"a_b", map_of({{"d", entries}})}})});
}

TEST_P(ContentChangeTest, SuchListsAreRefusedUnderKeysThatHeldTextsBefore) {
  both([](const Filler &filler) {
    ASSERT_NE(filler.append("nodes", map_of({{"a.b", text("x")}, {"a_b", text("y")}})), nullptr);
    ASSERT_NE(filler.append("nodes", map_of({{"a.b", text("x")}, {"a_b", list_of({text("y")})}})), nullptr);
    ASSERT_NE(filler.append("nodes", map_of({{"a.b", list_of({text("x")})}, {"a_b", list_of({text("y")})}})),
              nullptr);
  });
  expect_refused(CFG_E_ARGUMENT);
}

TEST_P(ContentChangeTest, ARefusedNameIsMendedInTheSameEdit) {
  both([](const Filler &filler) {
    ASSERT_NE(filler.append("nodes", node()), nullptr);
    cfg_elem *entry =
        filler.append("nodes", map_of({{"a.b", list_of({text("x")})}, {"a_b", list_of({text("y")})}}));
    ASSERT_NE(filler.append("nodes", named("behind")), nullptr);
    ASSERT_TRUE(refuses_commit(filler.store, CFG_E_ARGUMENT));
    ASSERT_EQ(cfg_map_delete_key(filler.store, entry, "a.b"), 1);
  });
  commit_both();
}
