// Pending entries that were appended whole: they are read before their commit like any others.
#include "pending_node.hpp"

namespace {

// Notes what a scan shows.
int note_entry(void *context, const char *id, const cfg_value *values) {
  auto &seen = *static_cast<std::vector<std::string> *>(context);
  EXPECT_TRUE(provisional(id));
  seen.emplace_back(!values ? "no map" : values[0].kind == CFG_STRING ? values[0].data : "no name");
  return 1;
}

}  // namespace

class ContentPendingTest : public PendingNodeTest {};
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
