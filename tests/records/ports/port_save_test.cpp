// What a save of a port writes, deletes and leaves alone.
#include "port_fixture.hpp"

namespace {

using records::port_record;

class PortSave : public records::PortTest {
 protected:
  // A committed port with everything that a save may touch, and more, in a node of a product.
  std::string add_full_port(const char *product) {
    cfg_elem *port = add_port(add_node("n", product), "1");
    set(port, "label", "old label");
    set(port, "mode", "consoleServer");
    set(port, "connection_method", "ssh");
    set(port, "line_id", "7");
    set(port, "remote_port", 3001);
    set(port, "hardwareType", "usb");
    cfg_elem *uart = below(port, "hardwareSettings.uart");
    set(uart, "baud", "9600");
    set(uart, "flowControl", "none");
    commit_and_reopen();
    return "nodes-1_ports-1";
  }
  std::string saved(cfg_port *port) { return dump(cfg_get_by_id(store, cfg_port_get_uuid(port))); }
};

TEST_F(PortSave, WritesTheseKeysAndNoOther) {
  const port_record port = load_port(add_full_port("tarnwell"));
  cfg_port_set_csid(port.get(), "2");
  cfg_port_set_label(port.get(), "label");
  cfg_port_set_mode(port.get(), "terminalServer");
  cfg_port_set_connection_method(port.get(), "telnet");
  cfg_port_set_line_id(port.get(), "8");
  cfg_port_set_remote_port(port.get(), 4);
  cfg_port_set_hardware_uart_baud(port.get(), "115200");
  cfg_port_set_hardware_uart_dataBits(port.get(), "8");
  cfg_port_set_hardware_uart_stopBits(port.get(), "1");
  cfg_port_set_hardware_uart_parity(port.get(), "even");
  cfg_port_set_hardware_uart_flowControl(port.get(), "hardware");
  ASSERT_EQ(1, cfg_port_save(port.get()));
  EXPECT_EQ(
      "{connection_method=\"telnet\" hardwareSettings={uart={baud=\"115200\" dataBits=\"8\" "
      "flowControl=\"none\" parity=\"even\" stopBits=\"1\"}} hardwareType=\"usb\" id=\"2\" label=\"label\" "
      "line_id=\"8\" mode=\"terminalServer\" remote_port=4}",
      saved(port.get()));
}

TEST_F(PortSave, OfAnUnchangedPortChangesNothing) {
  const port_record port = load_port(add_full_port("tarnwell"));
  const std::string before = saved(port.get());
  ASSERT_EQ(1, cfg_port_save(port.get()));
  EXPECT_EQ(before, saved(port.get()));
}

TEST_F(PortSave, DeletesTheKeysOfClearedFields) {
  const port_record port = load_port(add_full_port("tarnwell"));
  cfg_port_set_csid(port.get(), "");
  cfg_port_set_label(port.get(), nullptr);
  cfg_port_set_mode(port.get(), "");
  cfg_port_set_connection_method(port.get(), "");
  cfg_port_delete_line_id(port.get());
  cfg_port_delete_remote_port(port.get());
  ASSERT_EQ(1, cfg_port_save(port.get()));
  EXPECT_EQ("{hardwareSettings={uart={baud=\"9600\" flowControl=\"none\"}} hardwareType=\"usb\"}",
            saved(port.get()));
}

TEST_F(PortSave, WithABaudRateDeletesTheFramingThatIsCleared) {
  const port_record port = load_port(add_full_port("tarnwell"));
  cfg_elem *uart = below(cfg_get_by_id(store, "nodes-1_ports-1"), "hardwareSettings.uart");
  for (const char *key : {"parity", "stopBits", "dataBits"}) set(uart, key, "stored since");
  ASSERT_EQ(1, cfg_port_save(port.get()));
  EXPECT_EQ("{baud=\"9600\" flowControl=\"none\"}", dump(uart));
}

TEST_F(PortSave, WithoutABaudRateLeavesTheFramingAlone) {
  const port_record port = load_port(add_full_port("tarnwell"));
  cfg_port_set_hardware_uart_baud(port.get(), "");
  cfg_port_set_hardware_uart_parity(port.get(), "odd");
  ASSERT_EQ(1, cfg_port_save(port.get()));
  EXPECT_EQ("{baud=\"9600\" flowControl=\"none\"}",
            dump(below(cfg_get_by_id(store, "nodes-1_ports-1"), "hardwareSettings.uart")));
}

TEST_F(PortSave, WithoutABaudRateMakesNoHardwareSettings) {
  cfg_elem *elem = add_port(add_node("n"), "1");
  const port_record port = load_port(elem);
  cfg_port_set_hardware_uart_parity(port.get(), "odd");
  ASSERT_EQ(1, cfg_port_save(port.get()));
  EXPECT_EQ("{id=\"1\"}", saved(port.get()));
  cfg_port_set_hardware_uart_baud(port.get(), "300");
  ASSERT_EQ(1, cfg_port_save(port.get()));
  EXPECT_EQ("{hardwareSettings={uart={baud=\"300\" parity=\"odd\"}} id=\"1\"}", saved(port.get()));
}

TEST_F(PortSave, DisablingAPortOfANodeReachedByCredentialsDropsItsConnection) {
  for (const char *product : {"generic", "acs6000", "acs8000", "acs_classic", "cisco2900"}) {
    SCOPED_TRACE(product);
    cfg_map_delete_key(store, cfg_root(store), "nodes");
    add_full_port(product);
    const records::node_record node(cfg_get_node_by_idx(store, 0));
    cfg_port *port = cfg_node_get_port(node.get(), 0);
    cfg_port_set_mode(port, "disabled");
    ASSERT_EQ(1, cfg_port_save(port));
    EXPECT_EQ(nullptr, cfg_port_get_connection_method(port));
    EXPECT_EQ(nullptr, cfg_port_get_line_id(port));
    EXPECT_EQ(0, cfg_port_get_remote_port(port));
    EXPECT_EQ(
        "{hardwareSettings={uart={baud=\"9600\" flowControl=\"none\"}} hardwareType=\"usb\" id=\"1\" "
        "label=\"old label\" mode=\"disabled\"}",
        saved(port));
  }
}

TEST_F(PortSave, DisablingAPortOfAnyOtherNodeKeepsItsConnection) {
  for (const char *product : {"tarnwell", "other", "Generic", static_cast<const char *>(nullptr)}) {
    SCOPED_TRACE(product == nullptr ? "none" : product);
    cfg_map_delete_key(store, cfg_root(store), "nodes");
    add_full_port(product);
    const records::node_record node(cfg_get_node_by_idx(store, 0));
    cfg_port *port = cfg_node_get_port(node.get(), 0);
    cfg_port_set_mode(port, "disabled");
    ASSERT_EQ(1, cfg_port_save(port));
    EXPECT_EQ(
        "{connection_method=\"ssh\" hardwareSettings={uart={baud=\"9600\" flowControl=\"none\"}} "
        "hardwareType=\"usb\" id=\"1\" label=\"old label\" line_id=\"7\" mode=\"disabled\" remote_port=3001}",
        saved(port));
  }
}

TEST_F(PortSave, OnlyTheExactModeDisabledDropsTheConnection) {
  const port_record port = load_port(add_full_port("generic"));
  for (const char *mode : {"Disabled", "disabled ", "disable"}) {
    cfg_port_set_mode(port.get(), mode);
    ASSERT_EQ(1, cfg_port_save(port.get()));
    EXPECT_STREQ("ssh", cfg_port_get_connection_method(port.get())) << mode;
  }
}

TEST_F(PortSave, ADisabledPortNeedsANodeThatCanBeLoaded) {
  const port_record port = load_port(add_full_port("generic"));
  cfg_port_set_mode(port.get(), "disabled");
  cfg_port_set_label(port.get(), "new label");
  erase(cfg_get_by_id(store, "nodes-1"), "status");
  EXPECT_EQ(0, cfg_port_save(port.get()));
  EXPECT_EQ(
      "{connection_method=\"ssh\" hardwareSettings={uart={baud=\"9600\" flowControl=\"none\"}} "
      "hardwareType=\"usb\" id=\"1\" label=\"new label\" line_id=\"7\" mode=\"disabled\" remote_port=3001}",
      saved(port.get()))
      << "what was written before the failure stays";
  const port_record fresh(cfg_new_port(store));
  cfg_port_set_mode(fresh.get(), "disabled");
  EXPECT_EQ(0, cfg_port_save(fresh.get())) << "a port of no node";
}

TEST_F(PortSave, MakesAnElementForANewPortOnce) {
  const port_record port(cfg_new_port(store));
  cfg_port_set_label(port.get(), "first");
  ASSERT_EQ(1, cfg_port_save(port.get()));
  ASSERT_NE(nullptr, cfg_port_get_uuid(port.get()));
  const std::string id = cfg_port_get_uuid(port.get());
  EXPECT_EQ("{label=\"first\"}", dump(cfg_get_by_id(store, id.c_str())));
  cfg_port_set_label(port.get(), "second");
  ASSERT_EQ(1, cfg_port_save(port.get()));
  EXPECT_EQ(id, cfg_port_get_uuid(port.get()));
  EXPECT_EQ("{label=\"second\"}", dump(cfg_get_by_id(store, id.c_str())));
}

TEST_F(PortSave, FailsWithoutRecordHandleOrElement) {
  EXPECT_EQ(0, cfg_port_save(nullptr));
  const port_record nowhere(cfg_new_port(nullptr));
  cfg_port_set_label(nowhere.get(), "label");
  EXPECT_EQ(0, cfg_port_save(nowhere.get()));
  EXPECT_EQ(nullptr, cfg_port_get_uuid(nowhere.get()));
  const port_record port = load_port(add_full_port("tarnwell"));
  cfg_delete_element(store, cfg_get_by_id(store, "nodes-1_ports-1"));
  EXPECT_EQ(0, cfg_port_save(port.get()));
}

TEST_F(PortSave, EndsAtTheFirstWriteThatFails) {
  // In the order in which the keys are written: what stands before the failure is new, the rest is old.
  const std::pair<int (*)(cfg_port *, const char *), const char *> steps[] = {
      {cfg_port_set_label, "label"},
      {cfg_port_set_csid, "id"},
      {cfg_port_set_mode, "mode"},
      {cfg_port_set_connection_method, "connection_method"},
      {cfg_port_set_line_id, "line_id"},
      {cfg_port_set_hardware_uart_baud, "hardwareSettings.uart.baud"},
      {cfg_port_set_hardware_uart_parity, "hardwareSettings.uart.parity"},
      {cfg_port_set_hardware_uart_stopBits, "hardwareSettings.uart.stopBits"},
      {cfg_port_set_hardware_uart_dataBits, "hardwareSettings.uart.dataBits"},
  };
  const std::string id = add_full_port("tarnwell");
  for (const auto &failing : steps) {
    SCOPED_TRACE(failing.second);
    cfg_abandon(store);
    const port_record port = load_port(id);
    for (const auto &step : steps) step.first(port.get(), "new");
    cfg_port_set_remote_port(port.get(), 3002);
    failing.first(port.get(), records::unwritable().c_str());
    EXPECT_EQ(0, cfg_port_save(port.get()));
    bool written = true;
    for (const auto &step : steps) {
      if (step.second == failing.second) written = false;
      const std::string now =
          dump(cfg_get_child_by_path(store, cfg_get_by_id(store, id.c_str()), step.second));
      EXPECT_EQ(written, now == "\"new\"") << step.second << " reads " << now.substr(0, 40);
      if (step.second != std::string("connection_method")) continue;
      EXPECT_EQ(written ? "3002" : "3001",
                dump(cfg_get_child_by_path(store, cfg_get_by_id(store, id.c_str()), "remote_port")))
          << "it follows the connection method";
    }
  }
}

TEST_F(PortSave, FailsWhenTheHardwareSettingsAreNoMap) {
  for (const char *key : {"hardwareSettings", "hardwareSettings.uart"}) {
    SCOPED_TRACE(key);
    cfg_map_delete_key(store, cfg_root(store), "nodes");
    cfg_elem *elem = add_port(add_node("n"), "1");
    if (std::string(key) == "hardwareSettings")
      set(elem, "hardwareSettings", "text");
    else
      set(below(elem, "hardwareSettings"), "uart", "text");
    const port_record port = load_port(elem);
    cfg_port_set_hardware_uart_baud(port.get(), "9600");
    EXPECT_EQ(0, cfg_port_save(port.get()));
    EXPECT_EQ("\"text\"", dump(cfg_get_child_by_path(store, elem, key)));
  }
}

TEST_F(PortSave, TheGenericWriterSetsAndDeletesAKey) {
  const port_record port(cfg_new_port(store));
  cfg_elem *map = map_at("somewhere");
  EXPECT_EQ(1, cfg_port_update_string(port.get(), map, "key", "text"));
  EXPECT_EQ("{key=\"text\"}", dump("somewhere"));
  EXPECT_EQ(1, cfg_port_update_string(port.get(), map, "key", nullptr));
  EXPECT_EQ(1, cfg_port_update_string(port.get(), map, "key", nullptr));
  EXPECT_EQ("{}", dump("somewhere"));
  EXPECT_EQ(0, cfg_port_update_string(nullptr, map, "key", "text"));
  EXPECT_EQ(0, cfg_port_update_string(nullptr, map, "key", nullptr));
  EXPECT_EQ(0, cfg_port_update_string(port.get(), nullptr, "key", "text"));
  EXPECT_EQ(0, cfg_port_update_string(port.get(), map, "key", records::unwritable().c_str()));
  EXPECT_EQ("{}", dump("somewhere"));
}

}  // namespace
