// What a port's load takes from the store.
#include "port_fixture.hpp"
#include "port_rows.hpp"

namespace {

using records::port_record;

class PortLoad : public records::PortTest {
 protected:
  // Where a key of a dotted path stands: its map, made when missing, and its last key.
  std::pair<cfg_elem *, std::string> place(cfg_elem *port, const std::string &path) {
    const std::size_t dot = path.rfind('.');
    if (dot == std::string::npos) return {port, path};
    return {below(port, path.substr(0, dot)), path.substr(dot + 1)};
  }
  void fill(cfg_elem *port) {
    for (const auto &field : records::port_texts) {
      const auto [map, key] = place(port, field.path);
      set(map, key.c_str(), (std::string("text of ") + field.path).c_str());
    }
    for (const auto &field : records::port_truths) {
      const auto [map, key] = place(port, field.path);
      set_bool(map, key.c_str(), true);
    }
    int32_t number = 7000;
    for (const auto &field : records::port_integers) {
      const auto [map, key] = place(port, field.path);
      set(map, key.c_str(), ++number);
    }
  }
  void expect_full(const cfg_port *port) {
    ASSERT_NE(nullptr, port);
    for (const auto &field : records::port_texts)
      EXPECT_EQ(std::string("text of ") + field.path, field.get(port)) << field.path;
    for (const auto &field : records::port_truths) EXPECT_EQ(1, field.get(port)) << field.path;
    EXPECT_EQ(7001, cfg_port_get_mode_bridge_server_port(port));
    EXPECT_EQ(7002, cfg_port_get_remote_port(port));
  }
};

TEST_F(PortLoad, ReadsEveryFieldFromItsOwnKey) {
  fill(add_port(add_node("n", "tarnwell")));
  commit_and_reopen();
  const port_record port = load_port("nodes-1_ports-1");
  expect_full(port.get());
  EXPECT_STREQ("nodes-1_ports-1", cfg_port_get_uuid(port.get()));
  EXPECT_STREQ("nodes-1", cfg_port_get_node_id(port.get()));
}

TEST_F(PortLoad, ThroughItsNodeReadsTheSame) {
  cfg_elem *node = add_node("n", "generic");
  add_port(node, "1");
  fill(add_port(node));
  commit_and_reopen();
  const records::node_record owner = load("nodes-1");
  const cfg_port *port = cfg_node_get_port(owner.get(), 1);
  expect_full(port);
  EXPECT_STREQ("nodes-1_ports-2", cfg_port_get_uuid(port));
  EXPECT_STREQ("nodes-1", cfg_port_get_node_id(port));
}

TEST_F(PortLoad, ReadsAnEditThatIsNotCommittedYet) {
  cfg_elem *elem = add_port(add_node("n"));
  fill(elem);
  expect_full(load_port(elem).get());
  commit();
  cfg_elem *committed = cfg_get_by_id(store, "nodes-1_ports-1");
  set(below(committed, "hardwareSettings.uart"), "baud", "115200");
  set_bool(below(committed, "modeSettings.bridge"), "rfc2217", false);
  const port_record port = load_port("nodes-1_ports-1");
  EXPECT_STREQ("115200", cfg_port_get_hardware_uart_baud(port.get()));
  EXPECT_EQ(0, cfg_port_get_mode_bridge_rfc2217(port.get()));
  EXPECT_EQ(1, cfg_port_get_mode_bridge_sshTunnel(port.get()));
}

TEST_F(PortLoad, OfABarePortLeavesEverythingEmpty) {
  const port_record port = load_port(add_port(add_node("n")));
  ASSERT_NE(nullptr, port);
  for (const auto &field : records::port_texts) EXPECT_EQ(nullptr, field.get(port.get())) << field.path;
  for (const auto &field : records::port_truths) EXPECT_EQ(0, field.get(port.get())) << field.path;
  for (const auto &field : records::port_integers) EXPECT_EQ(0, field.get(port.get())) << field.path;
}

TEST_F(PortLoad, TakesAValueOfAnotherKindForAbsent) {
  cfg_elem *elem = add_port(add_node("n"), "the csid");
  for (const auto &field : records::port_texts) {
    if (std::string(field.path) == "id") continue;
    const auto [map, key] = place(elem, field.path);
    set(map, key.c_str(), 5);
  }
  for (const auto &field : records::port_truths) {
    const auto [map, key] = place(elem, field.path);
    set(map, key.c_str(), "yes");
  }
  for (const auto &field : records::port_integers) {
    const auto [map, key] = place(elem, field.path);
    set(map, key.c_str(), "9");
  }
  const port_record port = load_port(elem);
  ASSERT_NE(nullptr, port);
  EXPECT_STREQ("the csid", cfg_port_get_csid(port.get()));
  for (const auto &field : records::port_texts) {
    if (std::string(field.path) == "id") continue;
    EXPECT_EQ(nullptr, field.get(port.get())) << field.path;
  }
  for (const auto &field : records::port_truths) EXPECT_EQ(0, field.get(port.get())) << field.path;
  for (const auto &field : records::port_integers) EXPECT_EQ(0, field.get(port.get())) << field.path;
}

TEST_F(PortLoad, TakesAnythingButAMapForAnAbsentMap) {
  cfg_elem *elem = add_port(add_node("n"), "the csid");
  for (const char *key : {"hardware", "hardwareSettings", "logging"}) set(elem, key, "text");
  child_list(elem, "nagios");
  cfg_elem *modes = child_map(elem, "modeSettings");
  for (const char *key : {"consoleServer", "terminalServer"}) set(modes, key, 1);
  child_list(modes, "sdtServer");
  set_bool(modes, "bridge", true);
  const port_record port = load_port(elem);
  ASSERT_NE(nullptr, port);
  EXPECT_STREQ("the csid", cfg_port_get_csid(port.get()));
  EXPECT_EQ(nullptr, cfg_port_get_hardware_uart_baud(port.get()));
  EXPECT_EQ(0, cfg_port_get_mode_bridge_sshTunnel(port.get()));
}

TEST_F(PortLoad, NeedsAMapWithAnElementTwoLevelsAbove) {
  cfg_elem *node = add_node("n");
  cfg_elem *ports = child_list(node, "ports");
  add(ports, "a text");
  map_at("lonely");
  commit_and_reopen();
  EXPECT_EQ(nullptr, load_port("nodes-1_ports-2"));
  EXPECT_EQ(nullptr, load_port("nodes-1_ports-1")) << "no map";
  EXPECT_EQ(nullptr, load_port("lonely")) << "directly below the root";
  EXPECT_EQ(nullptr, load_port(".")) << "the root itself";
  EXPECT_EQ(nullptr, load_port(cfg_new_map(store))) << "attached nowhere";
  EXPECT_EQ(nullptr, cfg_get_port_by_id(store, nullptr));
  EXPECT_EQ(nullptr, cfg_get_port_by_id(nullptr, "nodes-1_ports-1"));
}

TEST_F(PortLoad, CountsTheListAtTheRootOfTheStore) {
  EXPECT_EQ(0, cfg_get_ports_count(store));
  EXPECT_EQ(0, cfg_get_ports_count(nullptr));
  entry_of("ports");
  entry_of("ports");
  EXPECT_EQ(2, cfg_get_ports_count(store));
  cfg_elem *list = cfg_get_by_path(store, "ports");
  ASSERT_TRUE(cfg_append_future_listelem(store, list, cfg_new_map(store)));
  EXPECT_EQ(2, cfg_get_ports_count(store)) << "a pending entry is not counted";
  set(cfg_root(store), "ports", "no list");
  EXPECT_EQ(-1, cfg_get_ports_count(store));
}

}  // namespace
