// The store's reads below a map that make no handles: loaders of sub-maps and small lists stand on them.
#include <vector>

#include "kit/fixture.hpp"

namespace {

constexpr const char *keys[] = {"name", "port"};
constexpr cfg_keyset set{keys, 2};

struct seen {
  std::vector<std::string> ids;
  std::vector<std::string> names;
  size_t stop_after = SIZE_MAX;

  static int visit(void *context, const char *id, const cfg_value *values) {
    auto &self = *static_cast<seen *>(context);
    self.ids.emplace_back(id);
    self.names.emplace_back(!values ? "<no map>" : values[0].kind == CFG_STRING ? values[0].data : "<none>");
    return self.ids.size() < self.stop_after;
  }
};

class ChildRead : public kit::StoreTest {
 protected:
  void SetUp() override {
    StoreTest::SetUp();
    cfg_elem *nodes = list_at("nodes");
    node = cfg_new_map(store.get());
    ASSERT_TRUE(cfg_add_listelem(store.get(), nodes, node));
    ssh = cfg_new_map(store.get());
    ASSERT_TRUE(cfg_add_mapelem(store.get(), node, "ssh", ssh));
    ASSERT_TRUE(cfg_map_set_int(store.get(), ssh, "port", 22));
    for (const char *key : {"etags", "odd.key-1"}) {
      cfg_elem *list = cfg_new_list(store.get());
      ASSERT_TRUE(cfg_add_mapelem(store.get(), node, key, list));
      for (const char *name : {"a", "b", "c"}) ASSERT_TRUE(cfg_add_listelem(store.get(), list, named(name)));
    }
    commit();
  }

  cfg_elem *named(const char *name) {
    cfg_elem *map = cfg_new_map(store.get());
    EXPECT_TRUE(cfg_map_set_string(store.get(), map, "name", name));
    return map;
  }

  // The IDs by the calls that give out handles.
  std::vector<std::string> ids_of(cfg_elem *map, const char *key) {
    std::vector<std::string> ids;
    cfg_elem *list = cfg_simple_get_mapelem(store.get(), map, key);
    for (int32_t i = 0; const char *id = cfg_get_listelem(list, i); ++i) ids.emplace_back(id);
    return ids;
  }

  cfg_elem *node = nullptr;
  cfg_elem *ssh = nullptr;
};

TEST_F(ChildRead, ReadsTheMapUnderAKey) {
  cfg_value values[2];
  ASSERT_EQ(1, cfg_child_read(node, "ssh", &set, values));
  EXPECT_EQ(CFG_NONE, values[0].kind);
  EXPECT_EQ(22, values[1].number);
}

TEST_F(ChildRead, SeesTheEdit) {
  ASSERT_TRUE(cfg_map_set_int(store.get(), ssh, "port", 2022));
  cfg_value values[2];
  ASSERT_EQ(1, cfg_child_read(node, "ssh", &set, values));
  EXPECT_EQ(2022, values[1].number);
  ASSERT_TRUE(cfg_map_delete_key(store.get(), node, "ssh"));
  EXPECT_EQ(0, cfg_child_read(node, "ssh", &set, values));
}

TEST_F(ChildRead, FailsWithoutSuchAMap) {
  cfg_value values[2];
  EXPECT_EQ(0, cfg_child_read(node, "snmp", &set, values));
  EXPECT_EQ(0, cfg_child_read(node, "etags", &set, values));
  EXPECT_EQ(0, cfg_child_read(nullptr, "ssh", &set, values));
  EXPECT_EQ(0, cfg_child_read(node, nullptr, &set, values));
  EXPECT_EQ(0, cfg_child_read(node, "ssh", nullptr, values));
  EXPECT_EQ(0, cfg_child_read(node, "ssh", &set, nullptr));
}

TEST_F(ChildRead, AScanGivesTheEntriesWithTheirIds) {
  for (const char *key : {"etags", "odd.key-1"}) {
    seen entries;
    ASSERT_EQ(1, cfg_child_scan(node, key, &set, seen::visit, &entries)) << key;
    EXPECT_EQ((std::vector<std::string>{"a", "b", "c"}), entries.names) << key;
    EXPECT_EQ(ids_of(node, key), entries.ids) << key;
  }
}

TEST_F(ChildRead, AScanOfACollectionGivesItsIds) {
  seen entries;
  ASSERT_EQ(1, cfg_child_scan(root, "nodes", &set, seen::visit, &entries));
  EXPECT_EQ(std::vector<std::string>{"nodes-1"}, entries.ids);
}

TEST_F(ChildRead, AScanWithinAScanLeavesItsIdAlone) {
  struct scans {
    cfg_elem *node;
    std::vector<std::string> outer;
    seen inner;
  } both{node, {}, {}};
  const auto visit = [](void *context, const char *id, const cfg_value *) {
    auto &self = *static_cast<scans *>(context);
    const std::string before = id;
    EXPECT_EQ(1, cfg_child_scan(self.node, "odd.key-1", &set, seen::visit, &self.inner));
    EXPECT_EQ(before, id);
    self.outer.emplace_back(id);
    return 1;
  };
  ASSERT_EQ(1, cfg_child_scan(node, "etags", &set, visit, &both));
  EXPECT_EQ(ids_of(node, "etags"), both.outer);
  EXPECT_EQ(9U, both.inner.ids.size());
  both.inner.ids.resize(3);
  EXPECT_EQ(ids_of(node, "odd.key-1"), both.inner.ids);
}

TEST_F(ChildRead, AScanSeesTheEditAsListReadsDo) {
  cfg_elem *etags = cfg_simple_get_mapelem(store.get(), node, "etags");
  ASSERT_TRUE(cfg_delete_element(store.get(), cfg_simple_get_listelem(store.get(), etags, 1)));
  ASSERT_TRUE(cfg_add_listelem(store.get(), etags, named("d")));
  ASSERT_TRUE(cfg_append_future_listelem(store.get(), etags, named("pending")));
  seen entries;
  ASSERT_EQ(1, cfg_child_scan(node, "etags", &set, seen::visit, &entries));
  EXPECT_EQ((std::vector<std::string>{"a", "c", "d"}), entries.names);
  EXPECT_EQ(ids_of(node, "etags"), entries.ids);
}

TEST_F(ChildRead, AScanEndsWhenTheVisitorSaysSo) {
  seen entries;
  entries.stop_after = 2;
  EXPECT_EQ(1, cfg_child_scan(node, "etags", &set, seen::visit, &entries));
  EXPECT_EQ(2U, entries.ids.size());
}

TEST_F(ChildRead, AnEntryThatIsNoMapHasNoValues) {
  cfg_elem *list = list_at("mixed");
  ASSERT_TRUE(cfg_add_listelem(store.get(), list, named("a")));
  ASSERT_TRUE(cfg_add_listelem(store.get(), list, cfg_new_string(store.get(), "text")));
  ASSERT_TRUE(cfg_add_listelem(store.get(), list, cfg_new_map(store.get())));
  commit();
  seen entries;
  ASSERT_EQ(1, cfg_child_scan(root, "mixed", &set, seen::visit, &entries));
  EXPECT_EQ((std::vector<std::string>{"a", "<no map>", "<none>"}), entries.names);
}

TEST_F(ChildRead, AScanFailsWithoutSuchAList) {
  seen entries;
  EXPECT_EQ(0, cfg_child_scan(node, "none", &set, seen::visit, &entries));
  EXPECT_EQ(0, cfg_child_scan(node, "ssh", &set, seen::visit, &entries));
  EXPECT_EQ(0, cfg_child_scan(nullptr, "etags", &set, seen::visit, &entries));
  EXPECT_EQ(0, cfg_child_scan(node, nullptr, &set, seen::visit, &entries));
  EXPECT_EQ(0, cfg_child_scan(node, "etags", &set, nullptr, &entries));
  EXPECT_TRUE(entries.ids.empty());
}

}  // namespace
