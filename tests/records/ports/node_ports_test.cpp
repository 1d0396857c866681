// The ports of a node: lazily read, found, added.
#include "port_fixture.hpp"

namespace {

using records::node_record;
using records::port_record;

class NodePorts : public records::PortTest {};

TEST_F(NodePorts, ComeInListOrderForEveryProduct) {
  for (const char *product : {"tarnwell", "generic", "cisco2900", static_cast<const char *>(nullptr)}) {
    SCOPED_TRACE(product == nullptr ? "none" : product);
    cfg_map_delete_key(store, cfg_root(store), "nodes");
    cfg_elem *elem = add_node("n", product);
    for (const char *csid : {"b", "a", "c"}) add_port(elem, csid);
    commit_and_reopen();
    const node_record node(cfg_get_node_by_idx(store, 0));
    ASSERT_EQ(3, cfg_node_get_port_count(node.get()));
    EXPECT_STREQ("b", cfg_port_get_csid(cfg_node_get_port(node.get(), 0)));
    EXPECT_STREQ("a", cfg_port_get_csid(cfg_node_get_port(node.get(), 1)));
    EXPECT_STREQ("c", cfg_port_get_csid(cfg_node_get_port(node.get(), 2)));
    for (const int32_t index : {-1, 3, INT32_MIN, INT32_MAX})
      EXPECT_EQ(nullptr, cfg_node_get_port(node.get(), index)) << index;
  }
}

TEST_F(NodePorts, OfALongListAreAllThere) {
  cfg_elem *elem = add_node("n");
  for (int i = 0; i < 200; ++i) set(add_port(elem, std::to_string(i).c_str()), "label", "a label to fill it");
  commit_and_reopen();
  const node_record node = load("nodes-1");
  ASSERT_EQ(200, cfg_node_get_port_count(node.get()));
  for (int i = 0; i < 200; ++i) {
    const cfg_port *port = cfg_node_get_port(node.get(), i);
    ASSERT_NE(nullptr, port) << i;
    EXPECT_EQ(std::to_string(i), cfg_port_get_csid(port));
    EXPECT_EQ("nodes-1_ports-" + std::to_string(i + 1), cfg_port_get_uuid(port));
  }
}

TEST_F(NodePorts, AreReadByTheFirstQueryAndThenKept) {
  cfg_elem *elem = add_node("n");
  add_port(elem, "1");
  const node_record node = load(elem);
  add_port(elem, "2");
  cfg_port *first = cfg_node_get_port(node.get(), 0);
  add_port(elem, "3");
  EXPECT_EQ(2, cfg_node_get_port_count(node.get()));
  EXPECT_EQ(first, cfg_node_get_port(node.get(), 0));
  EXPECT_EQ(nullptr, cfg_node_get_port_by_csid(node.get(), "3"));
}

TEST_F(NodePorts, ThatAreNoneAreAskedForAgain) {
  cfg_elem *elem = add_node("n");
  const node_record node = load(elem);
  EXPECT_EQ(0, cfg_node_get_port_count(node.get()));
  EXPECT_EQ(nullptr, cfg_node_get_port(node.get(), 0));
  child_list(elem, "ports");
  EXPECT_EQ(0, cfg_node_get_port_count(node.get()));
  add_port(elem, "1");
  EXPECT_NE(nullptr, cfg_node_get_port_by_csid(node.get(), "1"));
  EXPECT_EQ(1, cfg_node_get_port_count(node.get()));
}

TEST_F(NodePorts, AnEntryThatIsNoMapLeavesAnEmptySlot) {
  cfg_elem *elem = add_node("n");
  add_port(elem, "1");
  add(cfg_simple_get_mapelem(store, elem, "ports"), "no port");
  add_port(elem, "3");
  const node_record node = load(elem);
  ASSERT_EQ(3, cfg_node_get_port_count(node.get()));
  EXPECT_EQ(nullptr, cfg_node_get_port(node.get(), 1));
  EXPECT_EQ(cfg_node_get_port(node.get(), 2), cfg_node_get_port_by_csid(node.get(), "3"));
}

TEST_F(NodePorts, AKeyThatHoldsNoListHasNoPorts) {
  cfg_elem *elem = add_node("n");
  set(elem, "ports", "text");
  EXPECT_EQ(0, cfg_node_get_port_count(load(elem).get()));
}

TEST_F(NodePorts, TheFirstOfACsidIsFound) {
  cfg_elem *elem = add_node("n");
  add_port(elem);
  add_port(elem, "a");
  set(add_port(elem, "b"), "label", "first");
  set(add_port(elem, "b"), "label", "second");
  const node_record node = load(elem);
  EXPECT_STREQ("first", cfg_port_get_label(cfg_node_get_port_by_csid(node.get(), "b")));
  for (const char *other : {"B", "", "bb", "c"})
    EXPECT_EQ(nullptr, cfg_node_get_port_by_csid(node.get(), other)) << other;
  EXPECT_EQ(nullptr, cfg_node_get_port_by_csid(node.get(), nullptr));
}

TEST_F(NodePorts, OfNoNodeAreNone) {
  EXPECT_EQ(0, cfg_node_get_port_count(nullptr));
  EXPECT_EQ(nullptr, cfg_node_get_port(nullptr, 0));
  EXPECT_EQ(nullptr, cfg_node_get_port_by_csid(nullptr, "1"));
  const node_record fresh(cfg_new_node(store));
  EXPECT_EQ(0, cfg_node_get_port_count(fresh.get()));
  const node_record nowhere(cfg_new_node(nullptr));
  EXPECT_EQ(nullptr, cfg_node_get_port(nowhere.get(), 0));
}

TEST_F(NodePorts, AnAddedPortIsSeenAfterTheCommit) {
  cfg_elem *elem = add_node("n");
  add_port(elem, "1");
  commit_and_reopen();
  const node_record node = load("nodes-1");
  const port_record port(cfg_new_port(store));
  cfg_port_set_csid(port.get(), "2");
  ASSERT_EQ(1, cfg_port_save(port.get()));
  ASSERT_EQ(1, cfg_node_add_port(node.get(), port.get()));
  EXPECT_EQ("[{id=\"1\"} +{id=\"2\"}]",
            dump(cfg_simple_get_mapelem(store, cfg_get_by_id(store, "nodes-1"), "ports")));
  EXPECT_EQ(1, cfg_node_get_port_count(load("nodes-1").get()));
  commit();
  const node_record after = load("nodes-1");
  ASSERT_EQ(2, cfg_node_get_port_count(after.get()));
  EXPECT_STREQ("nodes-1_ports-2", cfg_port_get_uuid(cfg_node_get_port(after.get(), 1)));
  EXPECT_EQ(1, cfg_port_save(port.get())) << "the record still knows its element by the provisional ID";
}

TEST_F(NodePorts, AnAddedPortHasANodeForADisabledSave) {
  cfg_elem *elem = add_node("n", "generic");
  child_list(elem, "ports");
  const node_record node = load(elem);
  const port_record port(cfg_new_port(store));
  cfg_port_set_connection_method(port.get(), "ssh");
  ASSERT_EQ(1, cfg_port_save(port.get()));
  ASSERT_EQ(1, cfg_node_add_port(node.get(), port.get()));
  cfg_port_set_mode(port.get(), "disabled");
  ASSERT_EQ(1, cfg_port_save(port.get()));
  EXPECT_EQ("{mode=\"disabled\"}", dump(cfg_get_by_id(store, cfg_port_get_uuid(port.get()))));
}

TEST_F(NodePorts, AddingNeedsBothElementsAndTheList) {
  cfg_elem *elem = add_node("n");
  const node_record node = load(elem);
  const port_record unsaved(cfg_new_port(store));
  const port_record saved(cfg_new_port(store));
  ASSERT_EQ(1, cfg_port_save(saved.get()));
  EXPECT_EQ(0, cfg_node_add_port(node.get(), saved.get())) << "no list";
  child_list(elem, "ports");
  EXPECT_EQ(0, cfg_node_add_port(node.get(), unsaved.get()));
  EXPECT_EQ(0, cfg_node_add_port(node.get(), nullptr));
  EXPECT_EQ(0, cfg_node_add_port(nullptr, saved.get()));
  const node_record fresh(cfg_new_node(store));
  EXPECT_EQ(0, cfg_node_add_port(fresh.get(), saved.get()));
  EXPECT_EQ(1, cfg_node_add_port(node.get(), saved.get()));
  EXPECT_EQ(0, cfg_node_add_port(node.get(), saved.get())) << "it stands in the list already";
  EXPECT_EQ("[+{}]", dump(cfg_simple_get_mapelem(store, elem, "ports")));
}

}  // namespace
