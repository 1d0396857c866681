// Ports: making, freeing, getters and setters. port_store.cpp reads and writes them.
#include "nodes/port.hpp"

#include "nodes/set_text.hpp"
#include "record/boundary.hpp"

using tw::set_text;

cfg_port *cfg_new_port(cfg *store) noexcept { return tw::new_view<cfg_port>(store).release(); }

void cfg_port_free(cfg_port *port) noexcept { delete port; }

const char *cfg_port_get_uuid(const cfg_port *port) noexcept { return tw::get<&cfg_port::uuid>(port); }
const char *cfg_port_get_node_id(const cfg_port *port) noexcept { return tw::get<&cfg_port::node_id>(port); }

const char *cfg_port_get_csid(const cfg_port *port) noexcept { return tw::get<&cfg_port::csid>(port); }
int cfg_port_set_csid(cfg_port *port, const char *csid) noexcept {
  return set_text<&cfg_port::csid>(port, csid);
}

const char *cfg_port_get_label(const cfg_port *port) noexcept { return tw::get<&cfg_port::label>(port); }
int cfg_port_set_label(cfg_port *port, const char *label) noexcept {
  return set_text<&cfg_port::label>(port, label);
}

const char *cfg_port_get_attachedDeviceType(const cfg_port *port) noexcept {
  return tw::get<&cfg_port::attachedDeviceType>(port);
}

const char *cfg_port_get_mode(const cfg_port *port) noexcept { return tw::get<&cfg_port::mode>(port); }
int cfg_port_set_mode(cfg_port *port, const char *mode) noexcept {
  return set_text<&cfg_port::mode>(port, mode);
}

const char *cfg_port_get_hardwareType(const cfg_port *port) noexcept {
  return tw::get<&cfg_port::hardwareType>(port);
}

const char *cfg_port_get_connection_method(const cfg_port *port) noexcept {
  return tw::get<&cfg_port::connection_method>(port);
}
int cfg_port_set_connection_method(cfg_port *port, const char *method) noexcept {
  return set_text<&cfg_port::connection_method>(port, method);
}

const char *cfg_port_get_line_id(const cfg_port *port) noexcept { return tw::get<&cfg_port::line_id>(port); }
int cfg_port_set_line_id(cfg_port *port, const char *line_id) noexcept {
  return set_text<&cfg_port::line_id>(port, line_id);
}
int cfg_port_delete_line_id(cfg_port *port) noexcept {
  return tw::replace<&cfg_port::line_id>(port, nullptr);
}

const char *cfg_port_get_hardware_protocol(const cfg_port *port) noexcept {
  return tw::get<&cfg_port::hardware_protocol>(port);
}

const char *cfg_port_get_hardware_pinout(const cfg_port *port) noexcept {
  return tw::get<&cfg_port::hardware_pinout>(port);
}

const char *cfg_port_get_hardware_uart_dataBits(const cfg_port *port) noexcept {
  return tw::get<&cfg_port::uart_dataBits>(port);
}
int cfg_port_set_hardware_uart_dataBits(cfg_port *port, const char *bits) noexcept {
  return set_text<&cfg_port::uart_dataBits>(port, bits);
}

const char *cfg_port_get_hardware_uart_stopBits(const cfg_port *port) noexcept {
  return tw::get<&cfg_port::uart_stopBits>(port);
}
int cfg_port_set_hardware_uart_stopBits(cfg_port *port, const char *bits) noexcept {
  return set_text<&cfg_port::uart_stopBits>(port, bits);
}

const char *cfg_port_get_hardware_uart_baud(const cfg_port *port) noexcept {
  return tw::get<&cfg_port::uart_baud>(port);
}
int cfg_port_set_hardware_uart_baud(cfg_port *port, const char *baud) noexcept {
  return set_text<&cfg_port::uart_baud>(port, baud);
}

const char *cfg_port_get_hardware_uart_parity(const cfg_port *port) noexcept {
  return tw::get<&cfg_port::uart_parity>(port);
}
int cfg_port_set_hardware_uart_parity(cfg_port *port, const char *parity) noexcept {
  return set_text<&cfg_port::uart_parity>(port, parity);
}

const char *cfg_port_get_hardware_uart_flowControl(const cfg_port *port) noexcept {
  return tw::get<&cfg_port::uart_flowControl>(port);
}
int cfg_port_set_hardware_uart_flowControl(cfg_port *port, const char *flow_control) noexcept {
  return set_text<&cfg_port::uart_flowControl>(port, flow_control);
}

const char *cfg_port_get_logging_level(const cfg_port *port) noexcept {
  return tw::get<&cfg_port::logging_level>(port);
}

const char *cfg_port_get_logging_facility(const cfg_port *port) noexcept {
  return tw::get<&cfg_port::logging_facility>(port);
}

const char *cfg_port_get_logging_priority(const cfg_port *port) noexcept {
  return tw::get<&cfg_port::logging_priority>(port);
}

int32_t cfg_port_get_nagios_enabled(const cfg_port *port) noexcept {
  return tw::get<&cfg_port::nagios_enabled>(port);
}

int32_t cfg_port_get_nagios_serialStatus(const cfg_port *port) noexcept {
  return tw::get<&cfg_port::nagios_serialStatus>(port);
}

int32_t cfg_port_get_nagios_portLogging(const cfg_port *port) noexcept {
  return tw::get<&cfg_port::nagios_portLogging>(port);
}

const char *cfg_port_get_nagios_name(const cfg_port *port) noexcept {
  return tw::get<&cfg_port::nagios_name>(port);
}

int32_t cfg_port_get_mode_consoleServer_ssh_enabled(const cfg_port *port) noexcept {
  return tw::get<&cfg_port::consoleServer_ssh_enabled>(port);
}

int32_t cfg_port_get_mode_consoleServer_tcp_enabled(const cfg_port *port) noexcept {
  return tw::get<&cfg_port::consoleServer_tcp_enabled>(port);
}

int32_t cfg_port_get_mode_consoleServer_portShare_enabled(const cfg_port *port) noexcept {
  return tw::get<&cfg_port::consoleServer_portShare_enabled>(port);
}

int32_t cfg_port_get_mode_consoleServer_portShare_encryption(const cfg_port *port) noexcept {
  return tw::get<&cfg_port::consoleServer_portShare_encryption>(port);
}

int32_t cfg_port_get_mode_consoleServer_portShare_authentication(const cfg_port *port) noexcept {
  return tw::get<&cfg_port::consoleServer_portShare_authentication>(port);
}

const char *cfg_port_get_mode_consoleServer_portShare_password(const cfg_port *port) noexcept {
  return tw::get<&cfg_port::consoleServer_portShare_password>(port);
}

int32_t cfg_port_get_mode_consoleServer_rfc2217_enabled(const cfg_port *port) noexcept {
  return tw::get<&cfg_port::consoleServer_rfc2217_enabled>(port);
}

int32_t cfg_port_get_mode_consoleServer_webShell_enabled(const cfg_port *port) noexcept {
  return tw::get<&cfg_port::consoleServer_webShell_enabled>(port);
}

int32_t cfg_port_get_mode_consoleServer_telnet_enabled(const cfg_port *port) noexcept {
  return tw::get<&cfg_port::consoleServer_telnet_enabled>(port);
}

int32_t cfg_port_get_mode_consoleServer_telnet_unauthenticated(const cfg_port *port) noexcept {
  return tw::get<&cfg_port::consoleServer_telnet_unauthenticated>(port);
}

const char *cfg_port_get_mode_terminalServer_terminalType(const cfg_port *port) noexcept {
  return tw::get<&cfg_port::terminalServer_terminalType>(port);
}

const char *cfg_port_get_mode_sdtServer_username(const cfg_port *port) noexcept {
  return tw::get<&cfg_port::sdtServer_username>(port);
}

const char *cfg_port_get_mode_sdtServer_password(const cfg_port *port) noexcept {
  return tw::get<&cfg_port::sdtServer_password>(port);
}

const char *cfg_port_get_mode_bridge_server_address(const cfg_port *port) noexcept {
  return tw::get<&cfg_port::bridge_server_address>(port);
}

int32_t cfg_port_get_mode_bridge_server_port(const cfg_port *port) noexcept {
  return tw::get<&cfg_port::bridge_server_port>(port);
}

int32_t cfg_port_get_mode_bridge_rfc2217(const cfg_port *port) noexcept {
  return tw::get<&cfg_port::bridge_rfc2217>(port);
}

int32_t cfg_port_get_mode_bridge_sshTunnel(const cfg_port *port) noexcept {
  return tw::get<&cfg_port::bridge_sshTunnel>(port);
}

int32_t cfg_port_get_remote_port(const cfg_port *port) noexcept {
  return tw::get<&cfg_port::remote_port>(port);
}
int cfg_port_set_remote_port(cfg_port *port, int32_t remote_port) noexcept {
  return tw::set<&cfg_port::remote_port>(port, remote_port);
}
int cfg_port_delete_remote_port(cfg_port *port) noexcept { return cfg_port_set_remote_port(port, 0); }
