// The node record, shared by the files of this folder.
#ifndef TW_NODES_NODE_HPP
#define TW_NODES_NODE_HPP

#include <twobject/node.h>

#include <vector>

#include "nodes/node_group.hpp"
#include "nodes/node_interface.hpp"
#include "nodes/node_user.hpp"
#include "nodes/port.hpp"
#include "nodes/port_labels.hpp"
#include "nodes/product.hpp"
#include "nodes/runtime.hpp"
#include "record/owned_certificate.hpp"
#include "record/tag_refs.hpp"
#include "record/view.hpp"

// An entry of the list that could not be read leaves an etag without ID in its place.
struct cfg_etag {
  tw::text_block *texts = nullptr;  // its node's
  tw::text uuid;
  tw::text name;
  tw::text status;
  int32_t version = 0;
};

struct cfg_node : tw::object_view {
  tw::text_block texts;  // those of its interfaces, users, groups and etags as well
  tw::text name;
  tw::text product;
  tw::text description;
  tw::text status;
  tw::text bundle_id;
  tw::text mac_address;
  tw::text fhvpn_address;
  tw::port_slots ports;  // read by the first query
  tw::tag_refs tag_refs{"tags"};
  std::unique_ptr<tw::node_runtime> runtime;  // NULL until it is asked for
  uint32_t ssh_port = 0;
  int32_t approved = 0;
  const char *certificate_id = nullptr;  // the store's own bytes, of use only while the node is loaded
  tw::owned_certificate certificate;
  tw::text model;
  tw::text firmware_version;
  tw::text enrollment_bundle;  // answered once and then kept, never saved
  tw::text serial_number;
  tw::interface_slots interfaces;
  tw::user_slots node_users;
  tw::group_slots node_groups;
  std::vector<cfg_etag> etags;
  tw::text auth_method;
  tw::text auth_type;
  int32_t use_remote_groups = 0;
  tw::text radius_authentication_servers;
  tw::text radius_accounting_servers;
  tw::secret radius_password;
  tw::text tacacs_authentication_servers;
  tw::secret tacacs_password;
  tw::text tacacs_method;
  tw::text tacacs_service;
  tw::text ldap_authentication_servers;
  tw::secret ldap_password;
  tw::text ldap_base_dn;
  tw::text ldap_bind_dn;
  tw::text ldap_username_attribute;
  tw::text ldap_group_attribute;
  tw::secret ldap_bind_password;
  uint32_t base_port = 0;
  int32_t port_label_count = 0;
  tw::text address;
  tw::port_labels port_labels;
  tw::text connection_method;
  tw::text username;
  tw::secret password;
};

namespace tw {

// Loads the node behind an element; NULL when the element is NULL or has no "name" or no "status".
std::unique_ptr<cfg_node> load_node(cfg *store, cfg_elem *elem) noexcept;

// Reads the entries of the list "etags" below a node's element. False without memory.
bool load_etags(cfg_node &node, cfg_elem *elem) noexcept;

// Reads a node's map "auth". False without memory.
bool load_node_auth(cfg_node &node, const cfg_value &map) noexcept;

}  // namespace tw

#endif
