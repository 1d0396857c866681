// The record of a network connection.
#ifndef TW_NETWORK_CONN_HPP
#define TW_NETWORK_CONN_HPP

#include <twobject/net_conn.h>

#include "record/view.hpp"

namespace tw {

// What the runtime information daemon knows of a connection.
struct conn_runtime {
  int32_t status = CFG_NET_CONN_UNKNOWN;
  int64_t last_status_change = 0;
  text dhcp_address;
  text dhcp_netmask;
  text dhcp_gateway;
  text dhcp_dns;
};

}  // namespace tw

struct cfg_net_conn : tw::object_view {
  tw::text name;
  int32_t enabled = 0;
  tw::text description;
  int32_t role = 0;
  int32_t mode = 0;
  tw::text physif_id;
  tw::text static_address;
  tw::text static_netmask;
  tw::text static_broadcast;
  tw::text static_gateway;
  tw::text static_dns1;
  tw::text static_dns2;
  tw::text dhcp_udhcpc_script;
  tw::text dhcp_vendor_class;
  std::unique_ptr<tw::conn_runtime> runtime;  // filled by the first runtime getter
};

#endif
