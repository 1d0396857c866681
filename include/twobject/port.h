/* Ports: the serial ports of the managed nodes. */
#ifndef TWOBJECT_PORT_H
#define TWOBJECT_PORT_H

#include <twobject/common.h>
#include <twobject/node.h>

TW_BEGIN

/**
 * A serial port: the view of one element of a node's list "ports". Store keys are given as dotted paths below
 * that element. What the texts mean is settled between the node and whoever shows them: this record passes
 * them on unchanged, and of a key only a value of the documented kind counts; any other reads as absent.
 */
typedef struct cfg_port cfg_port;

/* ---- Creating, loading, saving ---- */

/**
 * A record with nothing but the handle; it has no element until it is saved. NULL when memory is short. A
 * NULL handle gives a record that can be filled and read but never saved.
 */
TW_API cfg_port *cfg_new_port(cfg *store) TW_NOEXCEPT;

/**
 * Loads a port.
 * @param id the element's ID, final or provisional
 * @return a record of the caller's; NULL when the element is missing, is no map or has no element two levels
 * above it, where a port's node is
 */
TW_API cfg_port *cfg_get_port_by_id(cfg *store, const char *id) TW_NOEXCEPT;

/** Number of entries of the list "ports" at the root of the store; 0 without it, -1 when unreadable. */
TW_API int32_t cfg_get_ports_count(cfg *store) TW_NOEXCEPT;

/**
 * Writes a port. A record without element first gets one, which belongs to no node until cfg_node_add_port()
 * and is lost when that does not happen before the commit. Written are, in this order, "label", "id", "mode",
 * "connection_method", "remote_port", "line_id" and, unless the baud rate is NULL, "baud", "parity",
 * "stopBits" and "dataBits" in "hardwareSettings"."uart" (the maps are made when missing). All other keys,
 * flow control among them, are left as they are.
 *
 * A port whose mode is "disabled" must belong to a node that can be loaded. When that node's product is
 * "generic", "acs6000", "acs8000", "acs_classic" or "cisco2900", the record first loses its connection
 * method, line and remote port, and so do the store's keys.
 * @return 1, or 0 for NULL (it does not abort), when the element is missing or at the first failed write
 */
TW_API int cfg_port_save(cfg_port *port) TW_NOEXCEPT;

/** Frees a record of the caller's; never one that cfg_node_get_port() gave. NULL is allowed. */
TW_API void cfg_port_free(cfg_port *port) TW_NOEXCEPT;

/**
 * Writes one key of a map in the port's store. A NULL text deletes the key, which succeeds even when it is
 * absent. 1, or 0 when the port is NULL or the write fails.
 */
TW_API int cfg_port_update_string(cfg_port *port, cfg_elem *map, const char *key,
                                  const char *text) TW_NOEXCEPT;

/* ---- The ports of a node ---- */

/*
 * A node's ports are read by the first query and then belong to the node's record. A node without ports has
 * nothing to remember: each query reads the store again.
 */

/** Number of the node's committed ports. */
TW_API int32_t cfg_node_get_port_count(cfg_node *node) TW_NOEXCEPT;
/**
 * The port at a 0-based index; NULL outside the list and for an entry that could not be loaded. It belongs to
 * the node and ends with it; it may be changed and saved.
 */
TW_API cfg_port *cfg_node_get_port(cfg_node *node, int32_t index) TW_NOEXCEPT;
/** The node's first port with this "id", compared exactly; NULL without one. Belongs to the node. */
TW_API cfg_port *cfg_node_get_port_by_csid(cfg_node *node, const char *csid) TW_NOEXCEPT;
/**
 * Appends the element of a new, saved port to the node's list "ports" as a pending entry. The record stays
 * the caller's, and the node's record does not notice.
 * @return 1, or 0 when the node's element, its list "ports" or the port's element is missing, or when the
 * port stands in a list already
 */
TW_API int cfg_node_add_port(cfg_node *node, const cfg_port *port) TW_NOEXCEPT;

/* ---- Identity and connection ---- */

/*
 * String setters answer 0 for a NULL port, and also, deliberately, when they are given the very pointer that
 * the field holds already, NULL for a NULL field included: the field is then unchanged.
 */

/** ID of the port's element; NULL in a new record until it is saved. */
TW_API const char *cfg_port_get_uuid(const cfg_port *port) TW_NOEXCEPT;
/** ID of the node that the port was loaded from; NULL in a record that was made new. */
TW_API const char *cfg_port_get_node_id(const cfg_port *port) TW_NOEXCEPT;

/** The ID that the node itself gives the port: "id". */
TW_API const char *cfg_port_get_csid(const cfg_port *port) TW_NOEXCEPT;
TW_API int cfg_port_set_csid(cfg_port *port, const char *csid) TW_NOEXCEPT;

/** Label: "label". */
TW_API const char *cfg_port_get_label(const cfg_port *port) TW_NOEXCEPT;
TW_API int cfg_port_set_label(cfg_port *port, const char *label) TW_NOEXCEPT;

/** Mode, for example "consoleServer"; "disabled" means something to cfg_port_save(): "mode". */
TW_API const char *cfg_port_get_mode(const cfg_port *port) TW_NOEXCEPT;
TW_API int cfg_port_set_mode(cfg_port *port, const char *mode) TW_NOEXCEPT;

/** How the port is reached: "connection_method". */
TW_API const char *cfg_port_get_connection_method(const cfg_port *port) TW_NOEXCEPT;
TW_API int cfg_port_set_connection_method(cfg_port *port, const char *method) TW_NOEXCEPT;

/** Line of the console server that the port is: "line_id". The last function clears it; 1, 0 for NULL. */
TW_API const char *cfg_port_get_line_id(const cfg_port *port) TW_NOEXCEPT;
TW_API int cfg_port_set_line_id(cfg_port *port, const char *line_id) TW_NOEXCEPT;
TW_API int cfg_port_delete_line_id(cfg_port *port) TW_NOEXCEPT;

/**
 * Network port by which the serial port is reached: "remote_port"; 0 means none and is saved as no key. The
 * last function sets 0; 1, 0 for NULL.
 */
TW_API int32_t cfg_port_get_remote_port(const cfg_port *port) TW_NOEXCEPT;
TW_API int cfg_port_set_remote_port(cfg_port *port, int32_t remote_port) TW_NOEXCEPT;
TW_API int cfg_port_delete_remote_port(cfg_port *port) TW_NOEXCEPT;

/* ---- Serial line ---- */

/* The settings of the line are texts as stored: a baud rate is "9600", not a number. */

/** Baud rate: "hardwareSettings.uart.baud". */
TW_API const char *cfg_port_get_hardware_uart_baud(const cfg_port *port) TW_NOEXCEPT;
TW_API int cfg_port_set_hardware_uart_baud(cfg_port *port, const char *baud) TW_NOEXCEPT;

/** Data bits: "hardwareSettings.uart.dataBits". */
TW_API const char *cfg_port_get_hardware_uart_dataBits(const cfg_port *port) TW_NOEXCEPT;
TW_API int cfg_port_set_hardware_uart_dataBits(cfg_port *port, const char *bits) TW_NOEXCEPT;

/** Stop bits: "hardwareSettings.uart.stopBits". */
TW_API const char *cfg_port_get_hardware_uart_stopBits(const cfg_port *port) TW_NOEXCEPT;
TW_API int cfg_port_set_hardware_uart_stopBits(cfg_port *port, const char *bits) TW_NOEXCEPT;

/** Parity: "hardwareSettings.uart.parity". */
TW_API const char *cfg_port_get_hardware_uart_parity(const cfg_port *port) TW_NOEXCEPT;
TW_API int cfg_port_set_hardware_uart_parity(cfg_port *port, const char *parity) TW_NOEXCEPT;

/** Flow control: "hardwareSettings.uart.flowControl". Never saved, although it can be set. */
TW_API const char *cfg_port_get_hardware_uart_flowControl(const cfg_port *port) TW_NOEXCEPT;
TW_API int cfg_port_set_hardware_uart_flowControl(cfg_port *port, const char *flow_control) TW_NOEXCEPT;

/* ---- What the node reports; never saved ---- */

/** Kind of the device behind the port: "attachedDeviceType". */
TW_API const char *cfg_port_get_attachedDeviceType(const cfg_port *port) TW_NOEXCEPT;
/** Kind of the port: "hardwareType". */
TW_API const char *cfg_port_get_hardwareType(const cfg_port *port) TW_NOEXCEPT;
/** Protocol of the line: "hardware.protocol". */
TW_API const char *cfg_port_get_hardware_protocol(const cfg_port *port) TW_NOEXCEPT;
/** Pinout of the socket: "hardware.pinout". */
TW_API const char *cfg_port_get_hardware_pinout(const cfg_port *port) TW_NOEXCEPT;
/** Logging of the port: "logging.level". */
TW_API const char *cfg_port_get_logging_level(const cfg_port *port) TW_NOEXCEPT;
/** Its syslog facility: "logging.facility". */
TW_API const char *cfg_port_get_logging_facility(const cfg_port *port) TW_NOEXCEPT;
/** Its syslog priority: "logging.priority". */
TW_API const char *cfg_port_get_logging_priority(const cfg_port *port) TW_NOEXCEPT;
/** Whether Nagios watches the port: "nagios.enabled". */
TW_API int32_t cfg_port_get_nagios_enabled(const cfg_port *port) TW_NOEXCEPT;
/** Whether Nagios is told the serial status: "nagios.serialStatus". */
TW_API int32_t cfg_port_get_nagios_serialStatus(const cfg_port *port) TW_NOEXCEPT;
/** Whether Nagios is told of port logging: "nagios.portLogging". */
TW_API int32_t cfg_port_get_nagios_portLogging(const cfg_port *port) TW_NOEXCEPT;
/** Name of the port in Nagios: "nagios.name". */
TW_API const char *cfg_port_get_nagios_name(const cfg_port *port) TW_NOEXCEPT;

/* Mode "consoleServer": which of its services are on, and how port sharing is guarded. */

/** "modeSettings.consoleServer.ssh.enabled". */
TW_API int32_t cfg_port_get_mode_consoleServer_ssh_enabled(const cfg_port *port) TW_NOEXCEPT;
/** "modeSettings.consoleServer.tcp.enabled". */
TW_API int32_t cfg_port_get_mode_consoleServer_tcp_enabled(const cfg_port *port) TW_NOEXCEPT;
/** "modeSettings.consoleServer.rfc2217.enabled". */
TW_API int32_t cfg_port_get_mode_consoleServer_rfc2217_enabled(const cfg_port *port) TW_NOEXCEPT;
/** "modeSettings.consoleServer.webShell.enabled". */
TW_API int32_t cfg_port_get_mode_consoleServer_webShell_enabled(const cfg_port *port) TW_NOEXCEPT;
/** "modeSettings.consoleServer.telnet.enabled". */
TW_API int32_t cfg_port_get_mode_consoleServer_telnet_enabled(const cfg_port *port) TW_NOEXCEPT;
/** Telnet without authentication: "modeSettings.consoleServer.telnet.unauthenticated". */
TW_API int32_t cfg_port_get_mode_consoleServer_telnet_unauthenticated(const cfg_port *port) TW_NOEXCEPT;
/** "modeSettings.consoleServer.portShare.enabled". */
TW_API int32_t cfg_port_get_mode_consoleServer_portShare_enabled(const cfg_port *port) TW_NOEXCEPT;
/** "modeSettings.consoleServer.portShare.encryption". */
TW_API int32_t cfg_port_get_mode_consoleServer_portShare_encryption(const cfg_port *port) TW_NOEXCEPT;
/** "modeSettings.consoleServer.portShare.authentication". */
TW_API int32_t cfg_port_get_mode_consoleServer_portShare_authentication(const cfg_port *port) TW_NOEXCEPT;
/** A secret: "modeSettings.consoleServer.portShare.password". */
TW_API const char *cfg_port_get_mode_consoleServer_portShare_password(const cfg_port *port) TW_NOEXCEPT;

/** Mode "terminalServer": type of the terminal, "modeSettings.terminalServer.terminalType". */
TW_API const char *cfg_port_get_mode_terminalServer_terminalType(const cfg_port *port) TW_NOEXCEPT;
/** Mode "sdtServer": user name, "modeSettings.sdtServer.username", and password (a secret),
 * "modeSettings.sdtServer.password". */
TW_API const char *cfg_port_get_mode_sdtServer_username(const cfg_port *port) TW_NOEXCEPT;
TW_API const char *cfg_port_get_mode_sdtServer_password(const cfg_port *port) TW_NOEXCEPT;
/**
 * Mode "bridge": the other end ("modeSettings.bridge.server.address", "modeSettings.bridge.server.port"), and
 * whether it is spoken to by RFC 2217 ("modeSettings.bridge.rfc2217") and through a tunnel
 * ("modeSettings.bridge.sshTunnel").
 */
TW_API const char *cfg_port_get_mode_bridge_server_address(const cfg_port *port) TW_NOEXCEPT;
TW_API int32_t cfg_port_get_mode_bridge_server_port(const cfg_port *port) TW_NOEXCEPT;
TW_API int32_t cfg_port_get_mode_bridge_rfc2217(const cfg_port *port) TW_NOEXCEPT;
TW_API int32_t cfg_port_get_mode_bridge_sshTunnel(const cfg_port *port) TW_NOEXCEPT;

TW_END
#endif
