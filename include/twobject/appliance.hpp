/* The C++ face of the appliance's own network and services. */
#ifndef TWOBJECT_APPLIANCE_HPP
#define TWOBJECT_APPLIANCE_HPP

#include <twobject/boot_flag.h>
#include <twobject/console_gateway.h>
#include <twobject/external_endpoint.h>
#include <twobject/https.h>
#include <twobject/net_address.h>
#include <twobject/net_conn.h>
#include <twobject/net_physif.h>
#include <twobject/ntp.h>
#include <twobject/system.h>
#include <twobject/store.hpp>

namespace twobject {

using boot_flag_record = owner<cfg_boot_flag, cfg_boot_flag_free>;
using conn_record = owner<cfg_net_conn, cfg_net_conn_free>;
using gateway_record = owner<cfg_service_console_gateway, cfg_service_console_gateway_free>;
using csr_record = owner<cfg_csr, cfg_csr_free>;
using endpoint_record = owner<cfg_net_external_endpoint, cfg_net_external_endpoint_free>;
using endpoint_list = owner<cfg_net_external_endpoint_list, cfg_net_external_endpoint_list_free>;
using https_certificate_record = owner<cfg_https_cert_details, cfg_free_https_cert_details>;
using ntp_record = owner<cfg_ntp, cfg_ntp_free>;
using physif_record = owner<cfg_net_physif, cfg_net_physif_free>;

/// Loads all physical interfaces, and all network connections; NULL for one that cannot be loaded.
inline auto physifs(cfg *store) {
  return indexed(cfg_get_net_physif_count(store),
                 [store](int32_t i) { return physif_record(cfg_get_net_physif_by_index(store, i)); });
}
inline auto conns(cfg *store) {
  return indexed(cfg_get_net_conn_count(store),
                 [store](int32_t i) { return conn_record(cfg_get_net_conn_by_index(store, i)); });
}

/// Loads the endpoints of a list from the store, which the list does not know; NULL for one that is gone.
inline auto entries(cfg *store, const cfg_net_external_endpoint_list *list) {
  return indexed(cfg_net_external_endpoint_count(list), [store, list](int32_t i) {
    return endpoint_record(
        cfg_net_get_external_endpoint_by_id(store, cfg_net_get_external_endpoint(list, i)));
  });
}

/// The host names or addresses of the NTP servers, copies; NULL for an entry that is gone.
inline auto servers(const cfg_ntp *ntp) {
  return indexed(cfg_get_ntp_server_count(ntp),
                 [ntp](int32_t i) { return heap_text(cfg_get_ntp_server_value(ntp, i)); });
}

/// The label of the connection of this name; NULL without.
inline heap_text interface_name(cfg *store, const char *conn) noexcept {
  return heap_text(cfg_get_interface_name_from_conn_name(store, conn));
}
/// The labels of the connections for which a condition holds, a space before each; NULL when they cannot be
/// had.
inline heap_text interface_names(cfg *store, condition_tree condition) noexcept {
  const bool any = cfg_get_by_path(store, "system.net.conns") != nullptr;
  heap_text names(cfg_get_interfaces_list_from_condition(store, condition.get()));
  // The C function has freed the tree when there is nothing to search.
  if (!any) static_cast<void>(condition.release());
  return names;
}
/// The same for the connections of a mode, "dhcp" or "static".
inline heap_text interface_names(cfg *store, const char *mode) noexcept {
  return heap_text(cfg_get_interfaces_list_from_mode(store, mode));
}

/// The appliance's address as the operating system has it, and the one that nodes are to use; NULL without.
inline heap_text address_from_os(cfg *store) noexcept {
  return heap_text(cfg_net_external_address_from_os(store));
}
inline heap_text external_address(cfg *store) noexcept {
  return heap_text(cfg_net_get_external_address_from_cfg_or_os(store));
}

}  // namespace twobject

#endif
