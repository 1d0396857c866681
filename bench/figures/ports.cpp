// One port by its ID against a hand-packed record, and a node's ports as their number grows.
#include <lmdb.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <stdexcept>

#include "figures/figures.hpp"
#include "ours/own_store.hpp"
#include "peers/packed_record.hpp"
#include "peers/packed_store.hpp"

namespace bench {
namespace {

constexpr const char *kOurs = "ours";
constexpr std::uint32_t kPorts = 48, kFewPorts = 6;
constexpr std::size_t kLoadsPerRound = 250;

// The fields of a port as both sides keep them, in the order of the packed record.
using TextGetter = const char *(*)(const cfg_port *);
using NumberGetter = std::int32_t (*)(const cfg_port *);
struct PortText {
  const char *path;
  TextGetter get;
};
struct PortNumber {
  const char *path;
  bool truth;
  NumberGetter get;
};
constexpr PortText kTexts[] = {
    {"id", cfg_port_get_csid},
    {"label", cfg_port_get_label},
    {"attachedDeviceType", cfg_port_get_attachedDeviceType},
    {"mode", cfg_port_get_mode},
    {"hardwareType", cfg_port_get_hardwareType},
    {"connection_method", cfg_port_get_connection_method},
    {"line_id", cfg_port_get_line_id},
    {"hardware.protocol", cfg_port_get_hardware_protocol},
    {"hardware.pinout", cfg_port_get_hardware_pinout},
    {"hardwareSettings.uart.dataBits", cfg_port_get_hardware_uart_dataBits},
    {"hardwareSettings.uart.stopBits", cfg_port_get_hardware_uart_stopBits},
    {"hardwareSettings.uart.baud", cfg_port_get_hardware_uart_baud},
    {"hardwareSettings.uart.parity", cfg_port_get_hardware_uart_parity},
    {"hardwareSettings.uart.flowControl", cfg_port_get_hardware_uart_flowControl},
    {"logging.level", cfg_port_get_logging_level},
    {"logging.facility", cfg_port_get_logging_facility},
    {"logging.priority", cfg_port_get_logging_priority},
    {"nagios.name", cfg_port_get_nagios_name},
    {"modeSettings.consoleServer.portShare.password", cfg_port_get_mode_consoleServer_portShare_password},
    {"modeSettings.terminalServer.terminalType", cfg_port_get_mode_terminalServer_terminalType},
    {"modeSettings.sdtServer.username", cfg_port_get_mode_sdtServer_username},
    {"modeSettings.sdtServer.password", cfg_port_get_mode_sdtServer_password},
    {"modeSettings.bridge.server.address", cfg_port_get_mode_bridge_server_address},
};
constexpr PortNumber kNumbers[] = {
    {"nagios.enabled", true, cfg_port_get_nagios_enabled},
    {"nagios.serialStatus", true, cfg_port_get_nagios_serialStatus},
    {"nagios.portLogging", true, cfg_port_get_nagios_portLogging},
    {"modeSettings.consoleServer.ssh.enabled", true, cfg_port_get_mode_consoleServer_ssh_enabled},
    {"modeSettings.consoleServer.tcp.enabled", true, cfg_port_get_mode_consoleServer_tcp_enabled},
    {"modeSettings.consoleServer.portShare.enabled", true, cfg_port_get_mode_consoleServer_portShare_enabled},
    {"modeSettings.consoleServer.portShare.encryption", true,
     cfg_port_get_mode_consoleServer_portShare_encryption},
    {"modeSettings.consoleServer.portShare.authentication", true,
     cfg_port_get_mode_consoleServer_portShare_authentication},
    {"modeSettings.consoleServer.rfc2217.enabled", true, cfg_port_get_mode_consoleServer_rfc2217_enabled},
    {"modeSettings.consoleServer.webShell.enabled", true, cfg_port_get_mode_consoleServer_webShell_enabled},
    {"modeSettings.consoleServer.telnet.enabled", true, cfg_port_get_mode_consoleServer_telnet_enabled},
    {"modeSettings.consoleServer.telnet.unauthenticated", true,
     cfg_port_get_mode_consoleServer_telnet_unauthenticated},
    {"modeSettings.bridge.rfc2217", true, cfg_port_get_mode_bridge_rfc2217},
    {"modeSettings.bridge.sshTunnel", true, cfg_port_get_mode_bridge_sshTunnel},
    {"modeSettings.bridge.server.port", false, cfg_port_get_mode_bridge_server_port},
    {"remote_port", false, cfg_port_get_remote_port},
};

// What stands in a field of a port; both stores are filled from it and checked against it.
std::string text_of(std::uint32_t node, std::uint32_t port, std::size_t field) {
  return "p" + std::to_string(port) + " field " + std::to_string(field) + " of " + std::to_string(node);
}
std::int32_t number_of(std::uint32_t node, std::uint32_t port, const PortNumber &field) {
  const auto mixed = static_cast<std::int32_t>(node * 64 + port);
  return field.truth ? mixed % 2 : 3000 + mixed;
}

// A port as a C caller gets it from a hand-written library.
struct PortCopy {
  char *id, *node_id, *texts[std::size(kTexts)];
  std::int32_t numbers[std::size(kNumbers)];
};
void free_port_copy(PortCopy *port) {
  std::free(port->id);
  std::free(port->node_id);
  for (char *text : port->texts) std::free(text);
  std::free(port);
}

class PackedPorts {
 public:
  PackedPorts(const std::string &directory, std::uint32_t nodes) : env_(open_lmdb_environment(directory, 1)) {
    MDB_txn *txn = nullptr;
    require_lmdb(mdb_txn_begin(env_, nullptr, 0, &txn));
    require_lmdb(mdb_dbi_open(txn, "ports", MDB_CREATE | MDB_INTEGERKEY, &ports_));
    for (std::uint32_t node = 1; node <= nodes; ++node) {
      for (std::uint32_t port = 1; port <= kPorts; ++port) put(txn, node, port);
    }
    require_lmdb(mdb_txn_commit(txn));
    require_lmdb(mdb_txn_begin(env_, nullptr, MDB_RDONLY, &snapshot_));
  }
  ~PackedPorts() {
    mdb_txn_abort(snapshot_);
    mdb_env_close(env_);
  }
  PackedPorts(const PackedPorts &) = delete;
  PackedPorts &operator=(const PackedPorts &) = delete;

  PortCopy *load(const char *id) {
    char *end = nullptr;
    const auto node = static_cast<std::uint32_t>(std::strtoul(std::strchr(id, '-') + 1, &end, 10));
    std::uint32_t number = node * 64 + bench::number_of(id);
    MDB_val key{sizeof number, &number}, value;
    require_lmdb(mdb_get(snapshot_, ports_, &key, &value));
    auto *port = static_cast<PortCopy *>(allocate(sizeof(PortCopy)));
    port->id = copy_text(id);
    port->node_id = strndup(id, static_cast<std::size_t>(end - id));
    PackedReader in(value.mv_data);
    for (char *&text : port->texts) text = in.text_copy();
    for (std::int32_t &field : port->numbers) field = in.number<std::int32_t>();
    return port;
  }

 private:
  void put(MDB_txn *txn, std::uint32_t node, std::uint32_t port) {
    std::string bytes;
    for (std::size_t i = 0; i < std::size(kTexts); ++i) {
      const std::string text = text_of(node, port, i);
      const auto length = static_cast<std::uint16_t>(text.size());
      bytes.append(reinterpret_cast<const char *>(&length), sizeof length)
          .append(text.c_str(), text.size() + 1);
    }
    for (const PortNumber &field : kNumbers) {
      const std::int32_t number = number_of(node, port, field);
      bytes.append(reinterpret_cast<const char *>(&number), sizeof number);
    }
    std::uint32_t number = node * 64 + port;
    MDB_val key{sizeof number, &number}, value{bytes.size(), bytes.data()};
    require_lmdb(mdb_put(txn, ports_, &key, &value, MDB_APPEND));
  }

  MDB_env *env_;
  MDB_dbi ports_ = 0;
  MDB_txn *snapshot_ = nullptr;
};

// The map and the last key of a dotted path below a port.
cfg_elem *map_for(cfg *store, cfg_elem *map, std::string &key) {
  for (std::size_t dot = key.find('.'); dot != std::string::npos; dot = key.find('.')) {
    const std::string step = key.substr(0, dot);
    cfg_elem *child = cfg_simple_get_mapelem(store, map, step.c_str());
    if (child == nullptr) {
      child = cfg_new_map(store);
      require_store(store, cfg_add_mapelem(store, map, step.c_str(), child) != 0);
    }
    map = child;
    key.erase(0, dot + 1);
  }
  return map;
}

void add_port(cfg *store, cfg_elem *list, std::uint32_t node, std::uint32_t port) {
  cfg_elem *elem = cfg_new_map(store);
  require_store(store, cfg_append_future_listelem(store, list, elem) != 0);
  for (std::size_t i = 0; i < std::size(kTexts); ++i) {
    std::string key = kTexts[i].path;
    cfg_elem *map = map_for(store, elem, key);
    require_store(store, cfg_map_set_string(store, map, key.c_str(), text_of(node, port, i).c_str()) != 0);
  }
  for (const PortNumber &field : kNumbers) {
    std::string key = field.path;
    cfg_elem *map = map_for(store, elem, key);
    const std::int32_t number = number_of(node, port, field);
    require_store(store, (field.truth ? cfg_map_set_bool(store, map, key.c_str(), number)
                                      : cfg_map_set_int(store, map, key.c_str(), number)) != 0);
  }
}

// Nodes 1 to `nodes` with 48 ports each, and as many behind them with 6.
void fill(cfg *store, std::uint32_t nodes) {
  cfg_elem *list = cfg_get_by_path(store, "nodes");
  for (std::uint32_t n = 1; n <= 2 * nodes; ++n) {
    cfg_elem *node = cfg_new_map(store), *ports = cfg_new_list(store);
    require_store(store,
                  cfg_append_future_listelem(store, list, node) != 0 &&
                      cfg_map_set_string(store, node, "name", ("node " + std::to_string(n)).c_str()) != 0 &&
                      cfg_map_set_string(store, node, "status", "Enrolled") != 0 &&
                      cfg_add_mapelem(store, node, "ports", ports) != 0);
    for (std::uint32_t port = 1; port <= (n <= nodes ? kPorts : kFewPorts); ++port)
      add_port(store, ports, n, port);
    // In pieces: one edit holds all that it adds in memory.
    if (n % 100 == 0 || n == 2 * nodes) require_store(store, cfg_commit(store, nullptr) != 0);
    list = cfg_get_by_path(store, "nodes");
  }
}

void check(cfg *store, PackedPorts &packed, std::uint32_t node, std::uint32_t port, const std::string &id) {
  cfg_port *ours = cfg_get_port_by_id(store, id.c_str());
  PortCopy *theirs = packed.load(id.c_str());
  require_store(store, ours != nullptr);
  bool right = std::strcmp(cfg_port_get_node_id(ours), theirs->node_id) == 0;
  for (std::size_t i = 0; i < std::size(kTexts); ++i) {
    const std::string text = text_of(node, port, i);
    right = right && text == kTexts[i].get(ours) && text == theirs->texts[i];
  }
  for (std::size_t i = 0; i < std::size(kNumbers); ++i) {
    const std::int32_t number = number_of(node, port, kNumbers[i]);
    right = right && number == kNumbers[i].get(ours) && number == theirs->numbers[i];
  }
  cfg_port_free(ours);
  free_port_copy(theirs);
  if (!right) throw std::runtime_error("port " + id + " is not loaded as it was stored");
}

void load_all_ports(cfg *store, std::uint32_t node, std::uint32_t count) {
  cfg_node *record = cfg_get_node_by_id(store, ("nodes-" + std::to_string(node)).c_str());
  require_store(store,
                record != nullptr && cfg_node_get_port_count(record) == static_cast<std::int32_t>(count));
  cfg_node_free(record);
}

}  // namespace

void measure_ports(const Settings &settings, Table &table) {
  const std::uint32_t nodes = settings.port_nodes;
  OwnStore own(settings.workspace.directory("ports"));
  fill(own.handle(), nodes);
  PackedPorts packed(settings.workspace.directory("packed-ports"), nodes);
  std::vector<std::string> ids;
  for (std::uint32_t node = 1; node <= nodes; ++node) {
    for (std::uint32_t port = 1; port <= kPorts; ++port) {
      ids.push_back("nodes-" + std::to_string(node) + "_ports-" + std::to_string(port));
      check(own.handle(), packed, node, port, ids.back());
    }
  }
  lock_mapped_files(settings.workspace.path());
  const auto id_at = [&](std::size_t round, std::size_t turn) {
    return ids[((round * kLoadsPerRound + turn) * 7919) % ids.size()].c_str();
  };
  Contest one;
  one.enter(kOurs, [&](std::size_t round) {
    for (std::size_t i = 0; i < kLoadsPerRound; ++i)
      cfg_port_free(cfg_get_port_by_id(own.handle(), id_at(round, i)));
  });
  one.enter("LMDB, hand-packed", [&](std::size_t round) {
    for (std::size_t i = 0; i < kLoadsPerRound; ++i) free_port_copy(packed.load(id_at(round, i)));
  });
  one.run(settings.rounds(200), kLoadsPerRound);
  table.compare("port by id, " + std::to_string(ids.size()) + " ports", one, kOurs, "LMDB, hand-packed",
                at_most(1.5), Contest::processor);

  Contest growth;
  const std::uint32_t turns = std::min<std::uint32_t>(nodes, 50);
  const auto enter = [&](const char *name, std::uint32_t first, std::uint32_t count) {
    for (std::uint32_t i = 1; i <= nodes; ++i) load_all_ports(own.handle(), first + i, count);
    growth.enter(name, [&own, nodes, turns, first, count](std::size_t round) {
      for (std::uint32_t i = 0; i < turns; ++i)
        load_all_ports(own.handle(), first + 1 + (static_cast<std::uint32_t>(round) * turns + i) * 7 % nodes,
                       count);
    });
  };
  enter("a node's 48 ports", 0, kPorts);
  enter("ours, 6 ports", nodes, kFewPorts);
  growth.run(settings.rounds(100), turns);
  // Eight times as many ports: linear, with a fifth for the caches.
  table.compare("a node's 48 ports, growth", growth, "a node's 48 ports", "ours, 6 ports",
                at_most(1.2 * kPorts / kFewPorts), Contest::processor);
}

}  // namespace bench
