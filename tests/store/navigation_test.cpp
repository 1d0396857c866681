// Paths, IDs, parents: the ways to reach an element.
#include "fixture.hpp"
#include "tree.hpp"

#include <cstdlib>

class NavigationTest : public StoreTest {
 protected:
  void SetUp() override {
    StoreTest::SetUp();
    cfg_elem *physif = make_map(store, "system.net.physif");
    ASSERT_EQ(cfg_map_set_int(store, physif, "mtu", 1500), 1);
    cfg_elem *conns = make_list(store, "system.net.conns");
    ASSERT_NE(append_named(store, conns, "wan"), nullptr);
    ASSERT_NE(append_named(store, conns, "lan"), nullptr);
    ASSERT_TRUE(commits(store));
  }
  std::string by_path(const char *path) { return id_of(cfg_get_by_path(store, path)); }
};
STORE_TEST_ON_BOTH_ENGINES(NavigationTest);

TEST_P(NavigationTest, AnEmptyStoreHasAnEmptyRootMap) {
  cfg *empty = another_store();
  EXPECT_EQ(cfg_elem_kind(cfg_root(empty)), CFG_MAP);
  EXPECT_EQ(keys_of(cfg_root(empty)), std::vector<std::string>{});
  EXPECT_EQ(cfg_get_parent_elem(empty, cfg_root(empty)), nullptr);
  EXPECT_EQ(cfg_revision(empty), 0U);
  EXPECT_EQ(check_tree(empty).size(), 1U);
}

TEST_P(NavigationTest, CommittedElementsAreNamedByTheirPlace) {
  EXPECT_EQ(by_path("system"), "system");
  EXPECT_EQ(by_path("system.net"), "system.net");
  EXPECT_EQ(by_path("system.net.physif.mtu"), "system.net.physif.mtu");
  EXPECT_EQ(by_path("system.net.conns"), "system.net.conns");
  cfg_elem *conns = cfg_get_by_path(store, "system.net.conns");
  EXPECT_EQ(ids_in(conns), (std::vector<std::string>{"system_net_conns-1", "system_net_conns-2"}));
  cfg_elem *entry = cfg_get_by_id(store, "system_net_conns-2");
  EXPECT_EQ(string_at(store, entry, "name"), "lan");
  EXPECT_STREQ(cfg_get_mapelem(entry, "name"), "system_net_conns-2.name");
}

TEST_P(NavigationTest, APathGivesNothingWhenAStepIsMissing) {
  for (const char *path : {"nothing", "system.nothing", "system.nothing.mtu", "system.net.physif.mtu.x",
                           "system.net.conns.0", "system.net.conns.name", "system.", ".system", "system..net",
                           ".", "..", " system", "system ", "System"})
    EXPECT_EQ(cfg_get_by_path(store, path), nullptr) << path;
  EXPECT_EQ(cfg_get_by_path(store, nullptr), nullptr);
  EXPECT_EQ(cfg_get_by_path(nullptr, "system"), nullptr);
}

TEST_P(NavigationTest, AChildPathStartsAtItsElement) {
  cfg_elem *net = cfg_get_by_path(store, "system.net");
  EXPECT_EQ(id_of(cfg_get_child_by_path(store, net, "physif.mtu")), "system.net.physif.mtu");
  EXPECT_EQ(id_of(cfg_get_child_by_path(store, net, "conns")), "system.net.conns");
  EXPECT_EQ(cfg_get_child_by_path(store, net, "system"), nullptr);
  EXPECT_EQ(cfg_get_child_by_path(store, net, "net"), nullptr);
  EXPECT_EQ(cfg_get_child_by_path(store, net, nullptr), nullptr);
  EXPECT_EQ(cfg_get_child_by_path(store, nullptr, "physif"), nullptr);
  EXPECT_EQ(cfg_get_child_by_path(nullptr, net, "physif"), nullptr);
  EXPECT_EQ(cfg_get_child_by_path(store, cfg_get_by_path(store, "system.net.conns"), "name"), nullptr);
  EXPECT_EQ(cfg_get_child_by_path(store, cfg_get_by_path(store, "system.net.physif.mtu"), "x"), nullptr);
  cfg_elem *entry = cfg_get_by_id(store, "system_net_conns-1");
  EXPECT_EQ(id_of(cfg_get_child_by_path(store, entry, "name")), "system_net_conns-1.name");
}

TEST_P(NavigationTest, AKeyWithDotsIsFoundByPath) {
  cfg_elem *system = cfg_get_by_path(store, "system");
  for (const char *key : {"third_party", "net.physif.extra", "a.", ".b", "c..d", "."})
    ASSERT_NE(put_map(store, system, key), nullptr) << key;
  cfg_elem *dotted = put_map(store, cfg_root(store), "system.third_party");
  ASSERT_EQ(cfg_map_set_int(store, dotted, "ping_interval", 30), 1);
  for (bool committed : {false, true}) {
    if (committed) {
      ASSERT_TRUE(commits(store));
      reopen();
    }
    // "system" holds "third_party" too, but without "ping_interval": the look-up has to try the other way.
    cfg_elem *interval = cfg_get_by_path(store, "system.third_party.ping_interval");
    std::int32_t value = 0;
    EXPECT_EQ(cfg_int_value(interval, &value), 1);
    EXPECT_EQ(value, 30);
    EXPECT_EQ(cfg_elem_kind(cfg_get_by_path(store, "system.net.physif.extra")), CFG_MAP);
    EXPECT_EQ(cfg_elem_kind(cfg_get_by_path(store, "system.net.physif.mtu")), CFG_INT);
    for (const char *path : {"system.a.", "system..b", "system.c..d", "system.."})
      EXPECT_EQ(cfg_elem_kind(cfg_get_by_path(store, path)), CFG_MAP) << path;
    EXPECT_EQ(cfg_get_by_path(store, "system.net.physif.extra.x"), nullptr);
  }
}

TEST_P(NavigationTest, APathWithManyDotsIsAnsweredSoon) {
  // Every split of "a.a.a...": a look-up that tries all of them would not come back.
  cfg_elem *map = cfg_root(store);
  std::string path;
  for (int depth = 0; depth < 20; ++depth) {
    ASSERT_NE(put_map(store, map, "a.a"), nullptr);
    map = put_map(store, map, "a");
    ASSERT_NE(map, nullptr);
    path += "a.";
  }
  EXPECT_EQ(cfg_get_by_path(store, (path + path + "b").c_str()), nullptr);
  EXPECT_NE(cfg_get_by_path(store, path.substr(0, path.size() - 1).c_str()), nullptr);
}

TEST_P(NavigationTest, AnUnknownIdGivesNothing) {
  for (const char *id : {"",
                         "nothing",
                         "{",
                         "{}",
                         "{1}",
                         "system_net_conns-0",
                         "system_net_conns-3",
                         "system_net_conns-01",
                         "system_net_conns-+1",
                         "system_net_conns- 1",
                         "system_net_conns--1",
                         "system_net_conns-",
                         "system_net_conns-4294967297",
                         "system_net_conns-18446744073709551617",
                         "system_net_conns-1 ",
                         "system_net_conns-1.",
                         "system_net_conns-1.nothing",
                         "system_net-1",
                         "system_net_conns_-1",
                         "-1",
                         "system.",
                         ".system",
                         "system.net."})
    EXPECT_EQ(cfg_get_by_id(store, id), nullptr) << id;
  EXPECT_EQ(cfg_get_by_id(store, std::string(100000, 'x').c_str()), nullptr);
  EXPECT_EQ(cfg_get_by_id(store, std::string(100000, '.').c_str()), nullptr);
  EXPECT_EQ(cfg_get_by_id(store, ("system_net_conns-" + std::string(100000, '1')).c_str()), nullptr);
  EXPECT_EQ(cfg_get_by_id(store, nullptr), nullptr);
  EXPECT_EQ(cfg_get_by_id(nullptr, "system"), nullptr);
}

TEST_P(NavigationTest, ManyIdsAreLookedUpInOrderLeavingOutUnknownOnes) {
  const char *ids[] = {"system_net_conns-2", "nothing", "system_net_conns-1", nullptr, "system",
                       "system_net_conns-2"};
  cfg_elem **found = cfg_get_by_ids(store, ids, 6);
  ASSERT_NE(found, nullptr);
  EXPECT_EQ(id_of(found[0]), "system_net_conns-2");
  EXPECT_EQ(id_of(found[1]), "system_net_conns-1");
  EXPECT_EQ(id_of(found[2]), "system");
  EXPECT_EQ(id_of(found[3]), "system_net_conns-2");
  EXPECT_EQ(found[4], nullptr);
  free(found);
  cfg_elem **none = cfg_get_by_ids(store, ids, 0);
  ASSERT_NE(none, nullptr);
  EXPECT_EQ(none[0], nullptr);
  free(none);
  EXPECT_EQ(cfg_get_by_ids(store, nullptr, 1), nullptr);
  EXPECT_EQ(cfg_get_by_ids(store, ids, -1), nullptr);
  EXPECT_EQ(cfg_get_by_ids(nullptr, ids, 1), nullptr);
}

TEST_P(NavigationTest, AnElementKnowsItsParent) {
  auto parent = [&](const char *id) { return id_of(cfg_get_parent_elem(store, cfg_get_by_id(store, id))); };
  EXPECT_EQ(parent("system.net.physif.mtu"), "system.net.physif");
  EXPECT_EQ(parent("system_net_conns-1.name"), "system_net_conns-1");
  EXPECT_EQ(parent("system_net_conns-1"), "system.net.conns");
  EXPECT_EQ(id_of(cfg_get_parent_elem(store, cfg_get_by_id(store, "system"))), id_of(cfg_root(store)));
  EXPECT_EQ(cfg_get_parent_elem(store, cfg_new_map(store)), nullptr);
  EXPECT_EQ(cfg_get_parent_elem(store, nullptr), nullptr);
  EXPECT_EQ(cfg_get_parent_elem(nullptr, cfg_get_by_id(store, "system")), nullptr);
}

TEST_P(NavigationTest, TheRootIsFoundByItsOwnId) {
  std::string id = id_of(cfg_root(store));
  EXPECT_NE(id, kNothing);
  EXPECT_EQ(cfg_elem_kind(cfg_get_by_id(store, id.c_str())), id.empty() ? CFG_NONE : CFG_MAP);
}

TEST_P(NavigationTest, KindsAreTold) {
  cfg_elem *map = make_map(store, "kinds");
  ASSERT_EQ(cfg_map_set_string(store, map, "string", "x"), 1);
  ASSERT_EQ(cfg_map_set_int(store, map, "int", 1), 1);
  ASSERT_EQ(cfg_map_set_bool(store, map, "bool", 1), 1);
  ASSERT_EQ(cfg_map_set_blob(store, map, "blob", "x", 1), 1);
  ASSERT_EQ(cfg_map_set_reference(store, map, "reference", "x"), 1);
  ASSERT_NE(put_map(store, map, "map"), nullptr);
  ASSERT_NE(put_list(store, map, "list"), nullptr);
  for (bool committed : {false, true}) {
    if (committed) {
      ASSERT_TRUE(commits(store));
      reopen();
    }
    auto kind = [&](const char *path) { return cfg_elem_kind(cfg_get_by_path(store, path)); };
    EXPECT_EQ(kind("kinds.string"), CFG_STRING);
    EXPECT_EQ(kind("kinds.int"), CFG_INT);
    EXPECT_EQ(kind("kinds.bool"), CFG_BOOL);
    EXPECT_EQ(kind("kinds.blob"), CFG_BLOB);
    EXPECT_EQ(kind("kinds.reference"), CFG_REFERENCE);
    EXPECT_EQ(kind("kinds.map"), CFG_MAP);
    EXPECT_EQ(kind("kinds.list"), CFG_LIST);
    EXPECT_EQ(kind("kinds.none"), CFG_NONE);
    EXPECT_EQ(cfg_get_list(store, cfg_get_by_path(store, "kinds.list")), 1);
    EXPECT_EQ(cfg_get_list(store, cfg_get_by_path(store, "kinds.map")), 0);
    EXPECT_EQ(cfg_get_list(store, cfg_get_by_path(store, "kinds.string")), 0);
    EXPECT_EQ(cfg_get_list(store, nullptr), 0);
  }
  EXPECT_EQ(cfg_elem_kind(nullptr), CFG_NONE);
  EXPECT_EQ(cfg_elem_kind(cfg_new_map(store)), CFG_MAP);
  EXPECT_EQ(cfg_elem_kind(cfg_new_list(store)), CFG_LIST);
  EXPECT_EQ(cfg_elem_kind(cfg_new_string(store, "")), CFG_STRING);
  EXPECT_EQ(cfg_elem_kind(cfg_new_reference(store, "x")), CFG_REFERENCE);
}

TEST_P(NavigationTest, TheWholeTreeIsConsistent) {
  ASSERT_NE(append_named(store, cfg_get_by_path(store, "system.net.conns"), "pending"), nullptr);
  // The root, 3 maps, "mtu", the list, 3 entries each with "name".
  EXPECT_EQ(check_tree(store).size(), 12U);
}

TEST_P(NavigationTest, ExpectingAnElementChangesNothing) {
  const std::string before = dump(store);
  const cfg_code code = cfg_error_code(store);
  std::vector<std::string> ids = {"", "{", "{nobody}", "nodes-99", "no such ID", std::string(5000, 'x')};
  for (const auto &[id, kind] : check_tree(store)) ids.push_back(id);
  for (int turn = 0; turn < 3; ++turn)
    for (const std::string &id : ids)
      for (int call = 0; call <= turn; ++call) cfg_expect(store, id.c_str());
  cfg_expect(store, nullptr);
  cfg_expect(nullptr, "nodes-1");
  EXPECT_EQ(cfg_error_code(store), code);
  EXPECT_EQ(cfg_has_changes(store), 0);
  EXPECT_EQ(dump(store), before);
}
