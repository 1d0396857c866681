// The node record: making, freeing, getters and setters.
#include "nodes/node.hpp"

#include "nodes/set_text.hpp"
#include "record/boundary.hpp"

using tw::set_text;

namespace {

// What a node is reached with is kept as it is given: "" stays "", for a login without password. Only NULL
// clears.
template <bool Wiped>
bool copy(tw::basic_text<Wiped> &field, const char *text) noexcept {
  if (text) return field.assign(text, std::strlen(text));
  field.clear();
  return true;
}

}  // namespace

cfg_node *cfg_new_node(cfg *store) noexcept { return tw::new_view<cfg_node>(store).release(); }

void cfg_node_free(cfg_node *node) noexcept { delete node; }

const char *cfg_node_get_uuid(const cfg_node *node) noexcept { return tw::get<&cfg_node::uuid>(node); }

const char *cfg_node_get_name(const cfg_node *node) noexcept { return tw::get<&cfg_node::name>(node); }
int cfg_node_set_name(cfg_node *node, const char *name) noexcept {
  return set_text<&cfg_node::name>(node, name);
}

const char *cfg_node_get_product(const cfg_node *node) noexcept { return tw::get<&cfg_node::product>(node); }

const char *cfg_node_get_description(const cfg_node *node) noexcept {
  return tw::get<&cfg_node::description>(node);
}
int cfg_node_set_description(cfg_node *node, const char *description) noexcept {
  return set_text<&cfg_node::description>(node, description);
}

const char *cfg_node_get_status(const cfg_node *node) noexcept { return tw::get<&cfg_node::status>(node); }
int cfg_node_set_status(cfg_node *node, const char *status) noexcept {
  return set_text<&cfg_node::status>(node, status);
}

const char *cfg_node_get_bundle_id(const cfg_node *node) noexcept {
  return tw::get<&cfg_node::bundle_id>(node);
}
int cfg_node_set_bundle_id(cfg_node *node, const char *bundle_id) noexcept {
  return set_text<&cfg_node::bundle_id>(node, bundle_id);
}

int32_t cfg_node_get_approved(const cfg_node *node) noexcept { return tw::get<&cfg_node::approved>(node); }
int cfg_node_set_approved(cfg_node *node, int32_t approved) noexcept {
  return tw::set<&cfg_node::approved>(node, approved);
}

int cfg_node_set_enrollment_bundle(cfg_node *node, const char *bundle) noexcept {
  return set_text<&cfg_node::enrollment_bundle>(node, bundle);
}

const char *cfg_node_get_mac_address(const cfg_node *node) noexcept {
  return tw::get<&cfg_node::mac_address>(node);
}
int cfg_node_set_mac_address(cfg_node *node, const char *mac_address) noexcept {
  return set_text<&cfg_node::mac_address>(node, mac_address);
}

const char *cfg_node_get_fhvpn_address(const cfg_node *node) noexcept {
  return tw::get<&cfg_node::fhvpn_address>(node);
}
int cfg_node_set_fhvpn_address(cfg_node *node, const char *address) noexcept {
  return set_text<&cfg_node::fhvpn_address>(node, address);
}

const char *cfg_node_get_firmware_version(const cfg_node *node) noexcept {
  return tw::get<&cfg_node::firmware_version>(node);
}
int cfg_node_set_firmware_version(cfg_node *node, const char *version) noexcept {
  return set_text<&cfg_node::firmware_version>(node, version);
}

const char *cfg_node_get_model(const cfg_node *node) noexcept { return tw::get<&cfg_node::model>(node); }
int cfg_node_set_model(cfg_node *node, const char *model) noexcept {
  return set_text<&cfg_node::model>(node, model);
}

const char *cfg_node_get_serial_number(const cfg_node *node) noexcept {
  return tw::get<&cfg_node::serial_number>(node);
}
int cfg_node_set_serial_number(cfg_node *node, const char *serial_number) noexcept {
  return set_text<&cfg_node::serial_number>(node, serial_number);
}

uint32_t cfg_node_get_ssh_port(const cfg_node *node) noexcept { return tw::get<&cfg_node::ssh_port>(node); }
int cfg_node_set_ssh_port(cfg_node *node, uint32_t port) noexcept {
  return tw::set<&cfg_node::ssh_port>(node, port);
}

cfg_certificate *cfg_node_get_cert_object(const cfg_node *node) noexcept {
  return node ? node->certificate.get() : nullptr;
}
const char *cfg_node_get_cert_cn(const cfg_node *node) noexcept {
  return cfg_certificate_get_common_name(cfg_node_get_cert_object(node));
}
const char *cfg_node_get_cert(const cfg_node *node) noexcept {
  return cfg_certificate_get_cert(cfg_node_get_cert_object(node));
}
const char *cfg_node_get_key(const cfg_node *node) noexcept {
  return cfg_certificate_get_private_key(cfg_node_get_cert_object(node));
}

const char *cfg_node_get_address(const cfg_node *node) noexcept { return tw::get<&cfg_node::address>(node); }

const char *cfg_node_get_connection_method(const cfg_node *node) noexcept {
  return tw::get<&cfg_node::connection_method>(node);
}
int cfg_node_set_connection_method(cfg_node *node, const char *method) noexcept {
  return node && copy(node->connection_method, method);
}

const char *cfg_node_get_username(const cfg_node *node) noexcept {
  return tw::get<&cfg_node::username>(node);
}
const char *cfg_node_get_password(const cfg_node *node) noexcept {
  return tw::get<&cfg_node::password>(node);
}
int cfg_node_set_credentials(cfg_node *node, const char *username, const char *password) noexcept {
  // Both are copied before either is let go of: they may be given in exchange for one another.
  tw::text new_username;
  tw::secret new_password;
  if (!node || !copy(new_username, username) || !copy(new_password, password)) return 0;
  node->username = std::move(new_username);
  node->password = std::move(new_password);
  return 1;
}

uint32_t cfg_node_get_base_port(const cfg_node *node) noexcept { return tw::get<&cfg_node::base_port>(node); }
void cfg_node_set_base_port(cfg_node *node, uint32_t base_port) noexcept {
  tw::set<&cfg_node::base_port>(node, base_port);
}

int32_t cfg_node_get_port_count_field(const cfg_node *node) noexcept {
  return tw::get<&cfg_node::port_label_count>(node);
}
int cfg_node_set_port_count_field(cfg_node *node, int32_t count) noexcept {
  return tw::guarded([&] {
    return node && node->port_labels.number(count) && tw::set<&cfg_node::port_label_count>(node, count);
  });
}

const char *cfg_node_get_port_label(const cfg_node *node, int32_t index) noexcept {
  return node ? node->port_labels.get(node->port_label_count, index) : nullptr;
}
int cfg_node_set_port_label(cfg_node *node, int32_t index, const char *label) noexcept {
  return tw::guarded([&] { return node && node->port_labels.set(node->port_label_count, index, label); });
}
