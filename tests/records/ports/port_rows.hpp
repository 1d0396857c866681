// Every field of a port: its getter and its key, for tests that go over all of them.
#ifndef TW_TESTS_RECORDS_PORTS_PORT_ROWS_HPP
#define TW_TESTS_RECORDS_PORTS_PORT_ROWS_HPP

#include <twobject/port.h>

namespace records {

struct port_text {
  const char *path;
  const char *(*get)(const cfg_port *);
};
inline constexpr port_text port_texts[] = {
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

struct port_number {
  const char *path;
  int32_t (*get)(const cfg_port *);
};
inline constexpr port_number port_truths[] = {
    {"nagios.enabled", cfg_port_get_nagios_enabled},
    {"nagios.serialStatus", cfg_port_get_nagios_serialStatus},
    {"nagios.portLogging", cfg_port_get_nagios_portLogging},
    {"modeSettings.consoleServer.ssh.enabled", cfg_port_get_mode_consoleServer_ssh_enabled},
    {"modeSettings.consoleServer.tcp.enabled", cfg_port_get_mode_consoleServer_tcp_enabled},
    {"modeSettings.consoleServer.portShare.enabled", cfg_port_get_mode_consoleServer_portShare_enabled},
    {"modeSettings.consoleServer.portShare.encryption", cfg_port_get_mode_consoleServer_portShare_encryption},
    {"modeSettings.consoleServer.portShare.authentication",
     cfg_port_get_mode_consoleServer_portShare_authentication},
    {"modeSettings.consoleServer.rfc2217.enabled", cfg_port_get_mode_consoleServer_rfc2217_enabled},
    {"modeSettings.consoleServer.webShell.enabled", cfg_port_get_mode_consoleServer_webShell_enabled},
    {"modeSettings.consoleServer.telnet.enabled", cfg_port_get_mode_consoleServer_telnet_enabled},
    {"modeSettings.consoleServer.telnet.unauthenticated",
     cfg_port_get_mode_consoleServer_telnet_unauthenticated},
    {"modeSettings.bridge.rfc2217", cfg_port_get_mode_bridge_rfc2217},
    {"modeSettings.bridge.sshTunnel", cfg_port_get_mode_bridge_sshTunnel},
};
inline constexpr port_number port_integers[] = {
    {"modeSettings.bridge.server.port", cfg_port_get_mode_bridge_server_port},
    {"remote_port", cfg_port_get_remote_port},
};

}  // namespace records

#endif
