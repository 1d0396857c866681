// Pending entries that were appended whole: they can be read and changed before their commit like any others.
#include "twin.hpp"

namespace {

const Recipe &node() {
  static const Recipe recipe = map_of(
      {{"name", text("a node")},
       {"count", integer(7)},
       {"on", boolean(true)},
       {"off", boolean(false)},
       {"key", blob(std::string("\0\1\2", 3))},
       {"first", refer("nodes-1")},
       {"ssh", map_of({{"port", integer(22)}, {"more", named("deep")}})},
       {"ports", list_of({map_of({{"name", text("p1")}, {"on", boolean(true)}}), named("p2"), text("p3")})},
       {"a.b", text("dotted")},
       {"absent", Recipe{}},
       {"groups", list_of({})}});
  return recipe;
}

// Notes what a scan shows.
int note_entry(void *context, const char *id, const cfg_value *values) {
  auto &seen = *static_cast<std::vector<std::string> *>(context);
  EXPECT_TRUE(provisional(id));
  seen.emplace_back(!values ? "no map" : values[0].kind == CFG_STRING ? values[0].data : "no name");
  return 1;
}

}  // namespace

class ContentPendingTest : public TwinTest {
 protected:
  // Two pending nodes in each store; a step is then done with the first of them, before anything has read it.
  void with_pending_node(const std::function<void(const Filler &, cfg_elem *)> &step) {
    for (const char *list : {"nodes", "nodes-1.ports"}) {
      SCOPED_TRACE(list);
      both([&](const Filler &filler) {
        cfg_elem *entry = filler.append(list, node());
        ASSERT_NE(entry, nullptr) << cfg_error_text(filler.store);
        ASSERT_NE(filler.append(list, node()), nullptr);
        step(filler, entry);
      });
    }
  }
  // The same, committed with and without a look at the edit.
  void after_change(const std::function<void(const Filler &, cfg_elem *)> &change) {
    with_pending_node(change);
    if (HasFatalFailure()) return;
    commit_both();
    if (HasFatalFailure()) return;
    with_pending_node(change);
    if (HasFatalFailure()) return;
    expect_alike();
    both([](const Filler &filler) { check_tree(filler.store); });
    commit_both();
  }
};
STORE_TEST_ON_BOTH_ENGINES(ContentPendingTest);

TEST_P(ContentPendingTest, ReadsAsItsProvisionalId) {
  with_pending_node([](const Filler &filler, cfg_elem *entry) {
    const std::string id = text_of(entry);
    EXPECT_TRUE(provisional(id));
    EXPECT_EQ(id_of(entry), id);
    EXPECT_EQ(filler.at(id.c_str()), entry);
    EXPECT_EQ(cfg_elem_kind(entry), CFG_MAP);
  });
}

TEST_P(ContentPendingTest, BecomesACommittedEntryThatBothIdsName) {
  cfg_elem *entry = whole.append("nodes", node());
  const std::string before = text_of(entry);
  const std::string inside = before + ".ssh.port";
  ASSERT_TRUE(commits(store));
  EXPECT_EQ(id_of(entry), "nodes-3");
  EXPECT_EQ(text_of(entry), before);
  EXPECT_EQ(id_of(whole.at(before.c_str())), "nodes-3");
  EXPECT_EQ(dump(store, whole.at(inside.c_str())), "i22");
  EXPECT_EQ(string_at(store, entry, "name"), "a node");
  EXPECT_EQ(id_of(cfg_get_parent_elem(store, entry)), "nodes");
  ASSERT_EQ(cfg_map_set_string(store, entry, "name", "renamed"), 1);
  ASSERT_TRUE(commits(store));
  EXPECT_EQ(string_at(store, whole.at("nodes-3"), "name"), "renamed");
}

TEST_P(ContentPendingTest, IsCountedAsPendingOnly) {
  with_pending_node([](const Filler &filler, cfg_elem *entry) {
    cfg_elem *list = cfg_get_parent_elem(filler.store, entry);
    const int committed = id_of(list) == "nodes" ? 2 : 1;
    EXPECT_EQ(size_of(list), committed);
    EXPECT_EQ(pending_size_of(list), 2);
    EXPECT_EQ(cfg_get_future_listelem(list, 0), entry);
    EXPECT_NE(cfg_get_future_listelem(list, 1), nullptr);
    EXPECT_EQ(cfg_get_future_listelem(list, 2), nullptr);
    EXPECT_EQ(cfg_get_future_listelem(list, -1), nullptr);
    EXPECT_EQ(cfg_simple_get_listelem(filler.store, list, committed), nullptr);
    EXPECT_EQ(cfg_get_listelem(list, committed), nullptr);
    EXPECT_EQ(cfg_has_changes(filler.store), 1);
  });
  commit_both();
}

TEST_P(ContentPendingTest, ItsParentIsItsList) {
  with_pending_node([](const Filler &filler, cfg_elem *entry) {
    cfg_elem *list = cfg_get_parent_elem(filler.store, entry);
    EXPECT_EQ(cfg_elem_kind(list), CFG_LIST);
    EXPECT_EQ(cfg_get_future_listelem(list, 0), entry);
  });
  commit_both();
}

// Each way of reading it is the first.
TEST_P(ContentPendingTest, MapReadersSeeItsValues) {
  with_pending_node([](const Filler &filler, cfg_elem *entry) {
    EXPECT_EQ(string_at(filler.store, entry, "name"), "a node");
  });
  with_pending_node(
      [](const Filler &filler, cfg_elem *entry) { EXPECT_EQ(int_at(filler.store, entry, "count"), 7); });
  with_pending_node([](const Filler &filler, cfg_elem *entry) {
    std::int32_t value = -1;
    EXPECT_EQ(cfg_map_get_bool(filler.store, entry, "on", &value), 1);
    EXPECT_EQ(value, 1);
    EXPECT_EQ(cfg_map_get_bool(filler.store, entry, "off", &value), 1);
    EXPECT_EQ(value, 0);
  });
  with_pending_node([](const Filler &filler, cfg_elem *entry) {
    void *data = nullptr;
    std::size_t length = 0;
    ASSERT_EQ(cfg_map_get_blob(filler.store, entry, "key", &data, &length), 1);
    EXPECT_EQ(std::string(static_cast<char *>(data), length), std::string("\0\1\2", 3));
    free(data);
  });
  with_pending_node([](const Filler &filler, cfg_elem *entry) {
    EXPECT_EQ(reference_at(filler.store, entry, "first"), "nodes-1");
    EXPECT_EQ(string_at(filler.store, entry, "absent"), kNothing);
    EXPECT_EQ(string_at(filler.store, entry, "count"), kNothing);
  });
  with_pending_node([](const Filler &, cfg_elem *entry) {
    EXPECT_EQ(keys_of(entry), (std::vector<std::string>{"a.b", "count", "first", "groups", "key", "name",
                                                        "off", "on", "ports", "ssh"}));
  });
  with_pending_node([](const Filler &, cfg_elem *entry) {
    EXPECT_EQ(cfg_map_has(entry, "name"), 1);
    EXPECT_EQ(cfg_map_has(entry, "absent"), 0);
  });
  with_pending_node([](const Filler &filler, cfg_elem *entry) {
    EXPECT_EQ(id_of(filler.at(cfg_get_mapelem(entry, "ssh"))), cfg_get_mapelem(entry, "ssh"));
    EXPECT_EQ(cfg_get_mapelem(entry, "absent"), nullptr);
    EXPECT_EQ(cfg_simple_get_mapelem(filler.store, entry, "absent"), nullptr);
  });
  commit_both();
}

TEST_P(ContentPendingTest, BulkReadsSeeItsValues) {
  const cfg_keyset &set = keyset_of({"key", "nothing", "name", "count", "ports", "on", "first"});
  with_pending_node([&](const Filler &, cfg_elem *entry) {
    std::vector<cfg_value> values(set.count);
    ASSERT_EQ(cfg_map_read(entry, &set, values.data()), 1);
    EXPECT_EQ(values[0].length, 3U);
    EXPECT_EQ(values[1].kind, CFG_NONE);
    EXPECT_STREQ(values[2].data, "a node");
    EXPECT_EQ(values[3].number, 7);
    EXPECT_EQ(values[4].kind, CFG_LIST);
    EXPECT_EQ(values[5].number, 1);
    EXPECT_STREQ(values[6].data, "nodes-1");
  });
  with_pending_node([](const Filler &, cfg_elem *entry) {
    const cfg_keyset &ssh = keyset_of({"port", "more"});
    std::vector<cfg_value> values(ssh.count);
    ASSERT_EQ(cfg_child_read(entry, "ssh", &ssh, values.data()), 1);
    EXPECT_EQ(values[0].number, 22);
    EXPECT_EQ(values[1].kind, CFG_MAP);
    EXPECT_EQ(cfg_child_read(entry, "name", &ssh, values.data()), 0);
  });
  with_pending_node([](const Filler &, cfg_elem *entry) {
    std::vector<std::string> seen;
    ASSERT_EQ(cfg_child_scan(entry, "ports", &keyset_of({"name"}), note_entry, &seen), 1);
    EXPECT_EQ(seen, (std::vector<std::string>{"p1", "p2", "no map"}));
    EXPECT_EQ(cfg_child_scan(entry, "ssh", &keyset_of({"name"}), note_entry, &seen), 0);
  });
  with_pending_node([](const Filler &, cfg_elem *entry) {
    cfg_value value{};
    ASSERT_EQ(cfg_elem_read(entry, &value), 1);
    EXPECT_EQ(value.kind, CFG_MAP);
  });
  with_pending_node([](const Filler &filler, cfg_elem *entry) {
    const cfg_keyset &lists = keyset_of({"ports"});
    cfg_value list{};
    ASSERT_EQ(cfg_map_read(entry, &lists, &list), 1);
    cfg_value entries[4] = {};
    ASSERT_EQ(cfg_value_entries(filler.store, &list, entries, 4), 3);
    cfg_value name{};
    ASSERT_EQ(cfg_value_read(filler.store, &entries[1], &keyset_of({"name"}), &name), 1);
    EXPECT_STREQ(name.data, "p2");
    EXPECT_STREQ(entries[2].data, "p3");
  });
  commit_both();
}

TEST_P(ContentPendingTest, PathsAndIdsLeadIntoIt) {
  with_pending_node([](const Filler &filler, cfg_elem *entry) {
    EXPECT_EQ(dump(filler.store, cfg_get_child_by_path(filler.store, entry, "ssh.more.name")), "s'deep'");
    EXPECT_EQ(dump(filler.store, cfg_get_child_by_path(filler.store, entry, "a.b")), "s'dotted'");
    EXPECT_EQ(cfg_get_child_by_path(filler.store, entry, "ssh.nothing"), nullptr);
  });
  with_pending_node([](const Filler &filler, cfg_elem *entry) {
    EXPECT_EQ(dump(filler.store, filler.at((std::string(text_of(entry)) + ".ssh.port").c_str())), "i22");
    EXPECT_EQ(filler.at((std::string(text_of(entry)) + ".absent").c_str()), nullptr);
  });
  with_pending_node([](const Filler &filler, cfg_elem *entry) {
    const std::string name = std::string(text_of(entry)) + ".name";
    const char *ids[] = {text_of(entry), name.c_str(), "nodes-1"};
    cfg_elem **elems = cfg_get_by_ids(filler.store, ids, 3);
    ASSERT_NE(elems, nullptr);
    EXPECT_EQ(elems[0], entry);
    EXPECT_EQ(dump(filler.store, elems[1]), "s'a node'");
    EXPECT_NE(elems[2], nullptr);
    free(elems);
  });
  with_pending_node([](const Filler &filler, cfg_elem *entry) {
    cfg_elem *port = cfg_get_child_by_path(filler.store, entry, "ssh.port");
    EXPECT_EQ(cfg_get_parent_elem(filler.store, cfg_get_parent_elem(filler.store, port)), entry);
  });
  commit_both();
}

TEST_P(ContentPendingTest, ItsListsReadAtOnce) {
  with_pending_node([](const Filler &filler, cfg_elem *entry) {
    cfg_elem *ports = cfg_simple_get_mapelem(filler.store, entry, "ports");
    EXPECT_EQ(cfg_get_list(filler.store, ports), 1);
    EXPECT_EQ(size_of(ports), 3);
    EXPECT_EQ(pending_size_of(ports), 0);
    EXPECT_EQ(ids_in(ports).size(), 3U);
    for (const std::string &id : ids_in(ports)) {
      EXPECT_TRUE(provisional(id));
      EXPECT_EQ(cfg_get_parent_elem(filler.store, filler.at(id.c_str())), ports);
    }
    EXPECT_EQ(names_in(filler.store, ports), (std::vector<std::string>{"p1", "p2", kNothing}));
    cfg_elem *groups = cfg_simple_get_mapelem(filler.store, entry, "groups");
    EXPECT_EQ(size_of(groups), 0);
    EXPECT_EQ(pending_size_of(groups), 0);
  });
  commit_both();
}

TEST_P(ContentPendingTest, InnerEntriesThatWereReadAreGivenFinalIdsToo) {
  std::vector<cfg_elem *> read;
  with_pending_node([&](const Filler &filler, cfg_elem *entry) {
    cfg_elem *ports = cfg_simple_get_mapelem(filler.store, entry, "ports");
    for (int i = 0; i < 3; ++i) read.push_back(cfg_simple_get_listelem(filler.store, ports, i));
    read.push_back(cfg_get_child_by_path(filler.store, entry, "ssh.more"));
  });
  commit_both();
  const char *ids[] = {"nodes-3_ports-1", "nodes-3_ports-2", "nodes-3_ports-3", "nodes-3.ssh.more"};
  ASSERT_EQ(read.size(), 16U);
  for (std::size_t i = 0; i < 8; ++i) EXPECT_EQ(id_of(read[i]), ids[i % 4]);
  EXPECT_EQ(id_of(read[8]), "nodes-1_ports-2_ports-1");
}

TEST_P(ContentPendingTest, TheDryRunTellsOfEverythingInIt) {
  with_pending_node([](const Filler &filler, cfg_elem *) {
    const std::string text = edit_text(filler.store);
    EXPECT_NE(text.find("+{}.ssh.more.name|3||deep"), std::string::npos) << text;
    EXPECT_NE(text.find("+{}.key|6||<3 bytes>"), std::string::npos) << text;
  });
  expect_alike();
  commit_both();
}

TEST_P(ContentPendingTest, TheCommitLogCallsItOneChange) {
  ASSERT_NE(whole.append("nodes", node()), nullptr);
  ASSERT_TRUE(commits(store));
  EXPECT_EQ(log_text(store, cfg_committed_revision(store)), "+nodes-3|0||\n");
}

TEST_P(ContentPendingTest, ValuesAreSetBeforeTheCommit) {
  after_change([](const Filler &filler, cfg_elem *entry) {
    ASSERT_EQ(cfg_map_set_string(filler.store, entry, "name", "renamed"), 1);
    ASSERT_EQ(cfg_map_set_int(filler.store, entry, "new", 5), 1);
    ASSERT_EQ(cfg_map_set_string(filler.store, entry, "count", "another kind"), 1);
  });
}

TEST_P(ContentPendingTest, ValuesInsideAreSetBeforeTheCommit) {
  after_change([](const Filler &filler, cfg_elem *entry) {
    const std::string id = text_of(entry);
    ASSERT_EQ(cfg_map_set_int(filler.store, filler.at((id + ".ssh").c_str()), "port", 2222), 1);
    ASSERT_EQ(cfg_set_string(filler.store, filler.at((id + ".ssh.more.name").c_str()), "deeper"), 1);
    ASSERT_EQ(cfg_set_blob(filler.store, filler.at((id + ".key").c_str()), "xyz", 3), 1);
    ASSERT_EQ(cfg_set_reference(filler.store, filler.at((id + ".first").c_str()), "nodes-2"), 1);
  });
}

TEST_P(ContentPendingTest, KeysAreDeletedBeforeTheCommit) {
  after_change([](const Filler &filler, cfg_elem *entry) {
    for (const char *key : {"name", "ports", "absent", "on"})
      ASSERT_EQ(cfg_map_delete_key(filler.store, entry, key), 1);
    EXPECT_EQ(cfg_map_has(entry, "name"), 0);
  });
}

TEST_P(ContentPendingTest, ItsListsGrowBeforeTheCommit) {
  after_change([](const Filler &filler, cfg_elem *entry) {
    cfg_elem *ports = cfg_simple_get_mapelem(filler.store, entry, "ports");
    ASSERT_NE(filler.append(ports, named("p4")), nullptr);
    ASSERT_EQ(cfg_add_listelem(filler.store, ports, cfg_new_string(filler.store, "p5")), 1);
    ASSERT_NE(append_string(filler.store, ports, "p6"), nullptr);
    EXPECT_EQ(size_of(ports), 4);
    EXPECT_EQ(pending_size_of(ports), 2);
  });
}

TEST_P(ContentPendingTest, InnerEntriesAreChangedAndDeletedBeforeTheCommit) {
  after_change([](const Filler &filler, cfg_elem *entry) {
    cfg_elem *ports = cfg_simple_get_mapelem(filler.store, entry, "ports");
    ASSERT_EQ(cfg_map_set_string(filler.store, cfg_simple_get_listelem(filler.store, ports, 1), "name", "q2"),
              1);
    ASSERT_EQ(cfg_delete_element(filler.store, cfg_simple_get_listelem(filler.store, ports, 0)), 1);
    EXPECT_EQ(size_of(ports), 2);
  });
}

TEST_P(ContentPendingTest, ItsListsAreEmptiedBeforeTheCommit) {
  after_change([](const Filler &filler, cfg_elem *entry) {
    cfg_elem *ports = cfg_simple_get_mapelem(filler.store, entry, "ports");
    ASSERT_NE(cfg_set_list(filler.store, ports), nullptr);
    ASSERT_NE(append_string(filler.store, ports, "refilled"), nullptr);
  });
}

TEST_P(ContentPendingTest, ItIsDeletedBeforeTheCommit) {
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

TEST_P(ContentPendingTest, WhenAllAreDeletedThereIsNoChange) {
  both([](const Filler &filler) {
    const std::uint64_t before = cfg_revision(filler.store);
    cfg_elem *entry = filler.append("nodes", node());
    ASSERT_EQ(cfg_delete_element(filler.store, entry), 1);
    EXPECT_EQ(cfg_has_changes(filler.store), 0);
    ASSERT_TRUE(commits(filler.store));
    EXPECT_EQ(cfg_revision(filler.store), before);
  });
}

TEST_P(ContentPendingTest, ItGoesWithItsList) {
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

TEST_P(ContentPendingTest, AnAttachedEntryIsNotAttachedAgain) {
  with_pending_node([](const Filler &filler, cfg_elem *entry) {
    EXPECT_EQ(cfg_append_future_listelem(filler.store, filler.at("certs"), entry), 0);
    EXPECT_EQ(cfg_add_listelem(filler.store, filler.at("certs"), entry), 0);
    EXPECT_EQ(cfg_add_mapelem(filler.store, filler.at("map"), "again", entry), 0);
  });
  commit_both();
}

TEST_P(ContentPendingTest, AnotherHandleSeesItAfterTheCommitOnly) {
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

TEST_P(ContentPendingTest, NothingIsLeftOfAnAbandonedEdit) {
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

TEST_P(ContentPendingTest, ImportsReplaceItLikeAnyOtherEntry) {
  const std::string text = export_text(single.store);
  with_pending_node([&](const Filler &filler, cfg_elem *entry) {
    ASSERT_EQ(import_text(filler.store, text), 1) << cfg_error_text(filler.store);
    EXPECT_EQ(cfg_elem_kind(entry), CFG_NONE);
    ASSERT_NE(filler.append("nodes", named("after the import")), nullptr);
  });
  commit_both();
}

TEST_P(ContentPendingTest, NodesOfAPushHaveTheirListsOfMessages) {
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

TEST_P(ContentPendingTest, ListsThatWouldNameTheirEntriesAlikeAreRefused) {
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

TEST_P(ContentPendingTest, ARefusedNameIsMendedInTheSameEdit) {
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
