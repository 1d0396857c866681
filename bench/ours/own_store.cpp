#include "ours/own_store.hpp"

#include <cstdio>
#include <cstdlib>
#include <stdexcept>

#include "ours/node_content.hpp"

namespace bench {

void require_store(cfg *store, bool succeeded) {
  if (succeeded) return;
  std::fprintf(stderr, "bench: our store refused a call: %s\n", cfg_error_text(store));
  std::exit(1);
}

OwnStore::OwnStore(const std::string &directory) {
  cfg_failure failure = {};
  handle_ = cfg_open(directory.c_str(), CFG_OPEN_CREATE, &failure);
  if (handle_ == nullptr) throw std::runtime_error(failure.text);
  if (cfg_get_by_path(handle_, "nodes") == nullptr) make_collections();
}

void OwnStore::make_collections() {
  cfg_elem *root = cfg_root(handle_);
  const auto put = [&](cfg_elem *map, const char *key, const cfg_content &content) {
    require_store(handle_, cfg_put_content(handle_, map, key, &content) != 0);
  };
  for (const char *list : {"nodes", "certificates"}) put(root, list, empty_list());
  cfg_elem *enrollment = cfg_new_map(handle_);
  require_store(handle_, cfg_add_mapelem(handle_, root, "enrollment", enrollment) != 0);
  put(enrollment, "bundles", empty_list());
  cfg_elem *bundles = cfg_get_by_path(handle_, "enrollment.bundles");
  for (const Node &node : make_nodes(kBundles)) {
    cfg_elem *bundle = cfg_new_map(handle_);
    require_store(handle_, cfg_append_future_listelem(handle_, bundles, bundle) != 0);
    put(bundle, "name", text_content("bundle of " + node.id));
  }
  cfg_elem *system = cfg_new_map(handle_);
  require_store(handle_, cfg_add_mapelem(handle_, root, "system", system) != 0);
  put(system, "hostname", text_content(kHostname));
  commit("collections");
}

void OwnStore::commit(const char *why) {
  const cfg_commit_note note = {"bench", why, nullptr};
  require_store(handle_, cfg_commit(handle_, &note) != 0);
}

void OwnStore::append(std::span<const Node> nodes) {
  cfg_elem *list = cfg_get_by_path(handle_, "nodes");
  cfg_elem *certificates = cfg_get_by_path(handle_, "certificates");
  NodeContent contents;
  const auto add = [&](cfg_elem *to, const cfg_content &content) {
    cfg_elem *entry = cfg_append_content(handle_, to, &content);
    require_store(handle_, entry != nullptr);
    return reinterpret_cast<const char *>(entry);  // a new element's handle reads as its ID
  };
  for (const Node &node : nodes)
    add(list, contents.node(node, add(certificates, contents.certificate(node.certificate))));
  commit("import");
}

void OwnStore::change_description(const char *id, const std::string &description) {
  cfg_node *node = cfg_get_node_by_id(handle_, id);
  require_store(handle_, node != nullptr && cfg_node_set_description(node, description.c_str()) != 0 &&
                             cfg_node_save(node) != 0);
  cfg_node_free(node);
  commit("description");
}

void OwnStore::enroll(std::span<const Node> nodes) {
  for (const Node &node : nodes) {
    cfg_enrollment *enrollment = cfg_enrollment_new(handle_, node.texts[kProduct].c_str());
    require_store(handle_, enrollment != nullptr);
    cfg_enrollment_set_status(enrollment, node.texts[kStatus].c_str());
    cfg_enrollment_set_auto_approve(enrollment, node.approved);
    cfg_enrollment_delete_package_password(enrollment);
    require_store(handle_, cfg_enrollment_save(enrollment) != 0);
    cfg_node *record = cfg_get_node_by_id(handle_, cfg_enrollment_get_uuid(enrollment));
    require_store(handle_, record != nullptr);
    using Setter = int (*)(cfg_node *, const char *);
    static constexpr std::array<Setter, kNodeTexts> setters = {
        cfg_node_set_name,          cfg_node_set_status,           nullptr,
        cfg_node_set_description,   cfg_node_set_bundle_id,        cfg_node_set_mac_address,
        cfg_node_set_fhvpn_address, cfg_node_set_firmware_version, cfg_node_set_model,
        cfg_node_set_serial_number};
    for (std::size_t i = 0; i < kNodeTexts; ++i)
      if (setters[i] != nullptr) require_store(handle_, setters[i](record, node.texts[i].c_str()) != 0);
    cfg_node_set_ssh_port(record, node.ssh_port);
    require_store(handle_, cfg_node_save(record) != 0);
    cfg_node_free(record);
    cfg_enrollment_free(enrollment);
  }
  commit("enrolment");
}

Node enrolled_part(const Node &node) {
  Node part;
  part.number = node.number;
  part.id = node.id;
  part.texts = node.texts;
  part.approved = node.approved;
  part.ssh_port = node.ssh_port;
  return part;
}

namespace {

char *copy_or_null(const char *text) { return text == nullptr ? nullptr : copy_text(text); }

void copy_auth(const cfg_node *node, NodeCopy &copy) {
  using Getter = const char *(*)(const cfg_node *);
  // In the order of kAuthKeys. LDAP's plain password has no getter.
  static constexpr std::array<Getter, kAuthTexts> getters = {cfg_node_get_auth_method,
                                                             cfg_node_get_auth_type,
                                                             cfg_node_get_radius_authentication_servers,
                                                             cfg_node_get_radius_accounting_servers,
                                                             cfg_node_get_radius_password,
                                                             cfg_node_get_tacacs_password,
                                                             cfg_node_get_tacacs_authentication_servers,
                                                             cfg_node_get_tacacs_method,
                                                             cfg_node_get_tacacs_service,
                                                             nullptr,
                                                             cfg_node_get_ldap_authentication_servers,
                                                             cfg_node_get_ldap_base_dn,
                                                             cfg_node_get_ldap_bind_dn,
                                                             cfg_node_get_ldap_username_attribute,
                                                             cfg_node_get_ldap_group_attribute,
                                                             cfg_node_get_ldap_bind_password};
  for (std::size_t i = 0; i < kAuthTexts; ++i)
    if (getters[i] != nullptr) copy.auth[i] = copy_or_null(getters[i](node));
  copy.use_remote_groups = cfg_node_get_use_remote_groups(node);
}

void copy_parts(const cfg_node *node, NodeCopy &copy) {
  resize(copy.interfaces, static_cast<std::size_t>(cfg_node_get_interface_count(node)));
  for (std::size_t i = 0; i < copy.interfaces.count; ++i) {
    const cfg_node_interface *in = cfg_node_get_interface(node, static_cast<std::int32_t>(i));
    copy.interfaces.items[i] = {
        copy_or_null(cfg_node_interface_get_node_uuid(in)), copy_or_null(cfg_node_interface_get_uuid(in)),
        copy_or_null(cfg_node_interface_get_name(in)), copy_or_null(cfg_node_interface_get_ipv4_addr(in)),
        copy_or_null(cfg_node_interface_get_ipv6_addr(in))};
  }
  resize(copy.users, static_cast<std::size_t>(cfg_node_get_node_user_count(node)));
  for (std::size_t i = 0; i < copy.users.count; ++i) {
    const cfg_node_user *user = cfg_node_get_node_user(node, static_cast<std::int32_t>(i));
    UserCopy &out = copy.users.items[i];
    out.username = copy_or_null(cfg_node_user_get_username(user));
    out.description = copy_or_null(cfg_node_user_get_description(user));
    out.disabled = cfg_node_user_get_disabled(user);
    resize(out.groups, static_cast<std::size_t>(cfg_node_user_get_group_count(user)));
    for (std::size_t n = 0; n < out.groups.count; ++n)
      out.groups.items[n] = copy_or_null(cfg_node_user_get_group(user, static_cast<std::int32_t>(n)));
  }
  resize(copy.groups, static_cast<std::size_t>(cfg_node_get_node_group_count(node)));
  for (std::size_t i = 0; i < copy.groups.count; ++i) {
    const cfg_node_group *group = cfg_node_get_node_group(node, static_cast<std::int32_t>(i));
    GroupCopy &out = copy.groups.items[i];
    out.groupname = copy_or_null(cfg_node_group_get_groupname(group));
    out.description = copy_or_null(cfg_node_group_get_description(group));
    out.system = cfg_node_group_get_system(group);
    resize(out.roles, static_cast<std::size_t>(cfg_node_group_get_role_count(group)));
    for (std::size_t n = 0; n < out.roles.count; ++n)
      out.roles.items[n] = copy_or_null(cfg_node_group_get_role(group, static_cast<std::int32_t>(n)));
  }
  copy_auth(node, copy);
}

}  // namespace

NodeCopy *copy_of(cfg_node *node) {
  NodeCopy *copy = new_node_copy();
  copy->id = copy_text(cfg_node_get_uuid(node));
  using Getter = const char *(*)(const cfg_node *);
  static constexpr std::array<Getter, kNodeTexts> getters = {
      cfg_node_get_name,          cfg_node_get_status,           cfg_node_get_product,
      cfg_node_get_description,   cfg_node_get_bundle_id,        cfg_node_get_mac_address,
      cfg_node_get_fhvpn_address, cfg_node_get_firmware_version, cfg_node_get_model,
      cfg_node_get_serial_number};
  for (std::size_t i = 0; i < kNodeTexts; ++i)
    if (const char *text = getters[i](node)) copy->texts[i] = copy_text(text);
  copy->approved = cfg_node_get_approved(node);
  copy->ssh_port = cfg_node_get_ssh_port(node);
  resize(copy->etags, static_cast<std::size_t>(cfg_node_get_etag_count(node)));
  for (std::size_t i = 0; i < copy->etags.count; ++i) {
    const cfg_etag *etag = cfg_node_get_etag(node, static_cast<std::int32_t>(i));
    copy->etags.items[i] = {copy_text(cfg_etag_get_uuid(etag)), copy_text(cfg_etag_get_name(etag)),
                            copy_text(cfg_etag_get_status(etag)), cfg_etag_get_version(etag)};
  }
  copy_parts(node, *copy);
  const cfg_certificate *certificate = cfg_node_get_cert_object(node);
  if (certificate == nullptr) return copy;
  copy->certificate = static_cast<CertificateCopy *>(allocate(sizeof(CertificateCopy)));
  *copy->certificate = {copy_text(cfg_certificate_get_id(certificate)),
                        copy_text(cfg_certificate_get_common_name(certificate)),
                        copy_text(cfg_certificate_get_cert(certificate)),
                        copy_text(cfg_certificate_get_private_key(certificate)), 0};
  return copy;
}

void OwnReader::check(const char *who, const Node &node) {
  cfg_node *loaded = cfg_get_node_by_id(store_, node.id.c_str());
  require_store(store_, loaded != nullptr);
  NodeCopy *copy = copy_of(loaded);
  // The interface has no getters for these two.
  if (copy->certificate != nullptr) copy->certificate->revoke_time = node.certificate.revoke_time;
  copy->auth[kLdapPassword] = copy_text(node.auth[kLdapPassword].c_str());
  require_equal(who, *copy, node, set_);
  free_node_copy(copy);
  cfg_node_free(loaded);
}

}  // namespace bench
