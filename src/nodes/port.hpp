// The port record, shared by the files that work on it.
#ifndef TW_NODES_PORT_HPP
#define TW_NODES_PORT_HPP

#include <twobject/port.h>

#include <vector>

#include "record/view.hpp"

struct cfg_port : tw::object_view {
  tw::text_block texts;
  tw::text node_id;
  tw::text csid;
  tw::text label;
  tw::text attachedDeviceType;
  tw::text mode;
  tw::text hardwareType;
  tw::text connection_method;
  tw::text line_id;
  tw::text hardware_protocol;
  tw::text hardware_pinout;
  tw::text uart_dataBits;
  tw::text uart_stopBits;
  tw::text uart_baud;
  tw::text uart_parity;
  tw::text uart_flowControl;
  tw::text logging_level;
  tw::text logging_facility;
  tw::text logging_priority;
  int32_t nagios_enabled = 0;
  int32_t nagios_serialStatus = 0;
  int32_t nagios_portLogging = 0;
  tw::text nagios_name;
  int32_t consoleServer_ssh_enabled = 0;
  int32_t consoleServer_tcp_enabled = 0;
  int32_t consoleServer_portShare_enabled = 0;
  int32_t consoleServer_portShare_encryption = 0;
  int32_t consoleServer_portShare_authentication = 0;
  tw::secret consoleServer_portShare_password;
  int32_t consoleServer_rfc2217_enabled = 0;
  int32_t consoleServer_webShell_enabled = 0;
  int32_t consoleServer_telnet_enabled = 0;
  int32_t consoleServer_telnet_unauthenticated = 0;
  tw::text terminalServer_terminalType;
  tw::text sdtServer_username;
  tw::secret sdtServer_password;
  tw::text bridge_server_address;
  int32_t bridge_server_port = 0;
  int32_t bridge_rfc2217 = 0;
  int32_t bridge_sshTunnel = 0;
  int32_t remote_port = 0;
};

namespace tw {

// A port stands in its slot at an address of its own: callers keep pointers to it.
using port_slots = std::vector<std::unique_ptr<cfg_port>>;

// Loads the committed entries of the list "ports" below a node's element; entries that cannot be loaded leave
// empty slots. False, with `ports` unchanged, without memory.
bool load_ports(port_slots &ports, cfg *store, cfg_elem *node) noexcept;

}  // namespace tw

#endif
