#include <cstring>

#include "allocation/cases.hpp"

namespace allocation {
namespace {

// Whether a port is there; one that is there must be there whole.
bool whole(const cfg_port *port) {
  if (!port) return false;
  EXPECT_STREQ(cfg_port_get_uuid(port), kPort);
  EXPECT_STREQ(cfg_port_get_node_id(port), kGeneric);
  EXPECT_STREQ(cfg_port_get_csid(port), "1");
  EXPECT_STREQ(cfg_port_get_hardware_pinout(port), "port's pinout");
  EXPECT_STREQ(cfg_port_get_hardware_uart_flowControl(port), "port's flowControl");
  EXPECT_STREQ(cfg_port_get_mode_sdtServer_password(port), "port's password");
  EXPECT_STREQ(cfg_port_get_mode_bridge_server_address(port), "port's address");
  EXPECT_EQ(cfg_port_get_mode_bridge_server_port(port), 7002);
  EXPECT_EQ(cfg_port_get_remote_port(port), 7001);
  return true;
}

void by_id() {
  sweep([](World &w) { return cfg_get_port_by_id(w.store, kPort); },
        [](World &, cfg_port *port) {
          const bool there = whole(port);
          cfg_port_free(port);
          return there;
        });
}

// The ports of a node are read by the first query.
template <class Query>
void of_the_node(Query query) {
  sweep(query, [](World &, cfg_port *port) { return whole(port); });
}

void root_count() {
  sweep([](World &w) { return cfg_get_ports_count(w.store); }, gives(int32_t{3}),
        [](World &w) {
          cfg_elem *list = cfg_new_list(w.store);
          for (int i = 0; i < 3; ++i) EXPECT_TRUE(cfg_add_listelem(w.store, list, cfg_new_map(w.store)));
          EXPECT_TRUE(cfg_add_mapelem(w.store, cfg_root(w.store), "ports", list));
        });
}

void new_port() {
  sweep([](World &w) { return cfg_new_port(w.store); },
        [](World &, cfg_port *port) {
          const bool made = port != nullptr;
          cfg_port_free(port);
          return made;
        });
}

void free_port() {
  sweep(
      [](World &w) {
        cfg_port_free(w.port);
        w.port = nullptr;
        return 1;
      },
      gives(1));
}

void delete_line() {
  sweep([](World &w) { return cfg_port_delete_line_id(w.port); },
        [](World &w, int done) {
          EXPECT_EQ(cfg_port_get_line_id(w.port), nullptr);
          return done == 1;
        });
}

void delete_remote_port() {
  sweep([](World &w) { return cfg_port_delete_remote_port(w.port); },
        [](World &w, int done) {
          EXPECT_EQ(cfg_port_get_remote_port(w.port), 0);
          return done == 1;
        });
}

// A save that writes, deletes and makes maps. The removal of a key is not checked by a save.
void save() {
  sweep([](World &w) { return cfg_port_save(w.port); },
        [](World &w, int saved) {
          if (!saved) return false;
          cfg_port *again = cfg_get_port_by_id(w.store, kPort);
          EXPECT_STREQ(cfg_port_get_label(again), kNew);
          EXPECT_STREQ(cfg_port_get_hardware_uart_dataBits(again), "port's dataBits");
          const bool removed = !cfg_port_get_line_id(again);
          cfg_port_free(again);
          return removed;
        },
        [](World &w) {
          EXPECT_EQ(cfg_port_set_label(w.port, kNew), 1);
          EXPECT_EQ(cfg_port_delete_line_id(w.port), 1);
          EXPECT_TRUE(cfg_map_delete_key(w.store, cfg_get_by_id(w.store, kPort), "hardwareSettings"));
        });
}

void save_new() {
  sweep([](World &w) { return cfg_port_save(w.port); },
        [](World &w, int saved) {
          if (saved) EXPECT_TRUE(cfg_get_by_id(w.store, cfg_port_get_uuid(w.port)));
          return saved == 1;
        },
        [](World &w) {
          cfg_port_free(w.port);
          w.port = cfg_new_port(w.store);
          EXPECT_EQ(cfg_port_set_label(w.port, kNew), 1);
        });
}

// A disabled port looks at its node, and drops its connection.
void save_disabled() {
  sweep([](World &w) { return cfg_port_save(w.port); },
        [](World &w, int saved) {
          if (!saved) return false;
          cfg_port *again = cfg_get_port_by_id(w.store, kPort);
          const bool removed = !cfg_port_get_connection_method(again) && !cfg_port_get_line_id(again) &&
                               cfg_port_get_remote_port(again) == 0;
          cfg_port_free(again);
          return removed;
        },
        [](World &w) { EXPECT_EQ(cfg_port_set_mode(w.port, "disabled"), 1); });
}

void add() {
  sweep([](World &w) { return cfg_node_add_port(w.generic, w.port); },
        [](World &w, int done) {
          int32_t pending = -1;
          EXPECT_TRUE(cfg_list_future_size(
              cfg_simple_get_mapelem(w.store, cfg_get_by_id(w.store, kGeneric), "ports"), &pending));
          EXPECT_EQ(pending, done);
          return done == 1;
        },
        [](World &w) {
          cfg_port_free(w.port);
          w.port = cfg_new_port(w.store);
          EXPECT_EQ(cfg_port_save(w.port), 1);
        });
}

void update() {
  sweep(
      [](World &w) {
        return cfg_port_update_string(w.port, cfg_get_by_id(w.store, kPort), "a new key", kNew);
      },
      [](World &w, int done) {
        const bool there = cfg_map_has(cfg_get_by_id(w.store, kPort), "a new key");
        EXPECT_EQ(there, done == 1);
        return done == 1;
      });
}

constexpr auto kThePort = &World::port;

const Case rows[] = {
    {"cfg_get_port_by_id", by_id},
    {"cfg_get_ports_count", root_count},
    {"cfg_new_port", new_port},
    {"cfg_node_add_port", add},
    {"cfg_node_get_port", [] { of_the_node([](World &w) { return cfg_node_get_port(w.generic, 0); }); }},
    {"cfg_node_get_port_by_csid",
     [] { of_the_node([](World &w) { return cfg_node_get_port_by_csid(w.generic, "1"); }); }},
    {"cfg_node_get_port_count",
     [] { sweep([](World &w) { return cfg_node_get_port_count(w.generic); }, gives(int32_t{2})); }},
    {"cfg_port_delete_line_id", delete_line},
    {"cfg_port_delete_remote_port", delete_remote_port},
    {"cfg_port_free", free_port},
    {"cfg_port_get_attachedDeviceType",
     [] { text_getter(cfg_port_get_attachedDeviceType, kThePort, "port's attachedDeviceType"); }},
    {"cfg_port_get_connection_method",
     [] { text_getter(cfg_port_get_connection_method, kThePort, "port's connection_method"); }},
    {"cfg_port_get_csid", [] { text_getter(cfg_port_get_csid, kThePort, "1"); }},
    {"cfg_port_get_hardwareType",
     [] { text_getter(cfg_port_get_hardwareType, kThePort, "port's hardwareType"); }},
    {"cfg_port_get_hardware_pinout",
     [] { text_getter(cfg_port_get_hardware_pinout, kThePort, "port's pinout"); }},
    {"cfg_port_get_hardware_protocol",
     [] { text_getter(cfg_port_get_hardware_protocol, kThePort, "port's protocol"); }},
    {"cfg_port_get_hardware_uart_baud",
     [] { text_getter(cfg_port_get_hardware_uart_baud, kThePort, "port's baud"); }},
    {"cfg_port_get_hardware_uart_dataBits",
     [] { text_getter(cfg_port_get_hardware_uart_dataBits, kThePort, "port's dataBits"); }},
    {"cfg_port_get_hardware_uart_flowControl",
     [] { text_getter(cfg_port_get_hardware_uart_flowControl, kThePort, "port's flowControl"); }},
    {"cfg_port_get_hardware_uart_parity",
     [] { text_getter(cfg_port_get_hardware_uart_parity, kThePort, "port's parity"); }},
    {"cfg_port_get_hardware_uart_stopBits",
     [] { text_getter(cfg_port_get_hardware_uart_stopBits, kThePort, "port's stopBits"); }},
    {"cfg_port_get_label", [] { text_getter(cfg_port_get_label, kThePort, "port's label"); }},
    {"cfg_port_get_line_id", [] { text_getter(cfg_port_get_line_id, kThePort, "port's line_id"); }},
    {"cfg_port_get_logging_facility",
     [] { text_getter(cfg_port_get_logging_facility, kThePort, "port's facility"); }},
    {"cfg_port_get_logging_level", [] { text_getter(cfg_port_get_logging_level, kThePort, "port's level"); }},
    {"cfg_port_get_logging_priority",
     [] { text_getter(cfg_port_get_logging_priority, kThePort, "port's priority"); }},
    {"cfg_port_get_mode", [] { text_getter(cfg_port_get_mode, kThePort, "port's mode"); }},
    {"cfg_port_get_mode_bridge_rfc2217",
     [] { number_getter(cfg_port_get_mode_bridge_rfc2217, kThePort, 1); }},
    {"cfg_port_get_mode_bridge_server_address",
     [] { text_getter(cfg_port_get_mode_bridge_server_address, kThePort, "port's address"); }},
    {"cfg_port_get_mode_bridge_server_port",
     [] { number_getter(cfg_port_get_mode_bridge_server_port, kThePort, 7002); }},
    {"cfg_port_get_mode_bridge_sshTunnel",
     [] { number_getter(cfg_port_get_mode_bridge_sshTunnel, kThePort, 1); }},
    {"cfg_port_get_mode_consoleServer_portShare_authentication",
     [] { number_getter(cfg_port_get_mode_consoleServer_portShare_authentication, kThePort, 1); }},
    {"cfg_port_get_mode_consoleServer_portShare_enabled",
     [] { number_getter(cfg_port_get_mode_consoleServer_portShare_enabled, kThePort, 1); }},
    {"cfg_port_get_mode_consoleServer_portShare_encryption",
     [] { number_getter(cfg_port_get_mode_consoleServer_portShare_encryption, kThePort, 1); }},
    {"cfg_port_get_mode_consoleServer_portShare_password",
     [] {
       text_getter(cfg_port_get_mode_consoleServer_portShare_password, kThePort, "port's share password");
     }},
    {"cfg_port_get_mode_consoleServer_rfc2217_enabled",
     [] { number_getter(cfg_port_get_mode_consoleServer_rfc2217_enabled, kThePort, 1); }},
    {"cfg_port_get_mode_consoleServer_ssh_enabled",
     [] { number_getter(cfg_port_get_mode_consoleServer_ssh_enabled, kThePort, 1); }},
    {"cfg_port_get_mode_consoleServer_tcp_enabled",
     [] { number_getter(cfg_port_get_mode_consoleServer_tcp_enabled, kThePort, 1); }},
    {"cfg_port_get_mode_consoleServer_telnet_enabled",
     [] { number_getter(cfg_port_get_mode_consoleServer_telnet_enabled, kThePort, 1); }},
    {"cfg_port_get_mode_consoleServer_telnet_unauthenticated",
     [] { number_getter(cfg_port_get_mode_consoleServer_telnet_unauthenticated, kThePort, 1); }},
    {"cfg_port_get_mode_consoleServer_webShell_enabled",
     [] { number_getter(cfg_port_get_mode_consoleServer_webShell_enabled, kThePort, 1); }},
    {"cfg_port_get_mode_sdtServer_password",
     [] { text_getter(cfg_port_get_mode_sdtServer_password, kThePort, "port's password"); }},
    {"cfg_port_get_mode_sdtServer_username",
     [] { text_getter(cfg_port_get_mode_sdtServer_username, kThePort, "port's username"); }},
    {"cfg_port_get_mode_terminalServer_terminalType",
     [] { text_getter(cfg_port_get_mode_terminalServer_terminalType, kThePort, "port's terminalType"); }},
    {"cfg_port_get_nagios_enabled", [] { number_getter(cfg_port_get_nagios_enabled, kThePort, 1); }},
    {"cfg_port_get_nagios_name", [] { text_getter(cfg_port_get_nagios_name, kThePort, "port's name"); }},
    {"cfg_port_get_nagios_portLogging", [] { number_getter(cfg_port_get_nagios_portLogging, kThePort, 1); }},
    {"cfg_port_get_nagios_serialStatus",
     [] { number_getter(cfg_port_get_nagios_serialStatus, kThePort, 1); }},
    {"cfg_port_get_node_id", [] { text_getter(cfg_port_get_node_id, kThePort, kGeneric); }},
    {"cfg_port_get_remote_port", [] { number_getter(cfg_port_get_remote_port, kThePort, 7001); }},
    {"cfg_port_get_uuid", [] { text_getter(cfg_port_get_uuid, kThePort, kPort); }},
    {"cfg_port_save",
     [] {
       save();
       save_new();
       save_disabled();
     }},
    {"cfg_port_set_connection_method",
     [] { text_setter(cfg_port_set_connection_method, cfg_port_get_connection_method, kThePort); }},
    {"cfg_port_set_csid", [] { text_setter(cfg_port_set_csid, cfg_port_get_csid, kThePort); }},
    {"cfg_port_set_hardware_uart_baud",
     [] { text_setter(cfg_port_set_hardware_uart_baud, cfg_port_get_hardware_uart_baud, kThePort); }},
    {"cfg_port_set_hardware_uart_dataBits",
     [] { text_setter(cfg_port_set_hardware_uart_dataBits, cfg_port_get_hardware_uart_dataBits, kThePort); }},
    {"cfg_port_set_hardware_uart_flowControl",
     [] {
       text_setter(cfg_port_set_hardware_uart_flowControl, cfg_port_get_hardware_uart_flowControl, kThePort);
     }},
    {"cfg_port_set_hardware_uart_parity",
     [] { text_setter(cfg_port_set_hardware_uart_parity, cfg_port_get_hardware_uart_parity, kThePort); }},
    {"cfg_port_set_hardware_uart_stopBits",
     [] { text_setter(cfg_port_set_hardware_uart_stopBits, cfg_port_get_hardware_uart_stopBits, kThePort); }},
    {"cfg_port_set_label", [] { text_setter(cfg_port_set_label, cfg_port_get_label, kThePort); }},
    {"cfg_port_set_line_id", [] { text_setter(cfg_port_set_line_id, cfg_port_get_line_id, kThePort); }},
    {"cfg_port_set_mode", [] { text_setter(cfg_port_set_mode, cfg_port_get_mode, kThePort); }},
    {"cfg_port_set_remote_port",
     [] { number_setter(cfg_port_set_remote_port, cfg_port_get_remote_port, kThePort); }},
    {"cfg_port_update_string", update},
};

}  // namespace

const std::span<const Case> port_cases = rows;

}  // namespace allocation
