#include "ours/own_store.hpp"

#include <cstdio>
#include <cstdlib>
#include <stdexcept>

namespace bench {
namespace {

// Builds one map of a node; every refused call ends the program.
class MapBuilder {
 public:
  MapBuilder(cfg *store, cfg_elem *map) : store_(store), map_(map) { require_store(store, map != nullptr); }
  MapBuilder &text(const char *key, const std::string &value) {
    require_store(store_, cfg_map_set_string(store_, map_, key, value.c_str()) != 0);
    return *this;
  }
  MapBuilder &reference(const char *key, const char *id) {
    require_store(store_, cfg_map_set_reference(store_, map_, key, id) != 0);
    return *this;
  }
  MapBuilder &blob(const char *key, const std::string &value) {
    require_store(store_, cfg_map_set_blob(store_, map_, key, value.data(), value.size()) != 0);
    return *this;
  }
  MapBuilder &number(const char *key, std::int32_t value) {
    require_store(store_, cfg_map_set_int(store_, map_, key, value) != 0);
    return *this;
  }
  MapBuilder &truth(const char *key, bool value) {
    require_store(store_, cfg_map_set_bool(store_, map_, key, value) != 0);
    return *this;
  }
  MapBuilder map(const char *key) { return {store_, attach(key, cfg_new_map(store_))}; }
  // A list of maps, each filled by `fill(builder, item)`.
  template <class Items, class Fill>
  MapBuilder &list(const char *key, const Items &items, Fill fill) {
    cfg_elem *list = attach(key, cfg_new_list(store_));
    for (const auto &item : items) {
      cfg_elem *entry = cfg_new_map(store_);
      require_store(store_, cfg_append_future_listelem(store_, list, entry) != 0);
      MapBuilder builder(store_, entry);
      fill(builder, item);
    }
    return *this;
  }
  MapBuilder &texts(const char *key, const std::vector<std::string> &texts) {
    cfg_elem *list = attach(key, cfg_new_list(store_));
    for (const std::string &text : texts) {
      cfg_elem *entry = cfg_new_string(store_, text.c_str());
      require_store(store_, cfg_append_future_listelem(store_, list, entry) != 0);
    }
    return *this;
  }

 private:
  cfg_elem *attach(const char *key, cfg_elem *element) {
    require_store(store_, cfg_add_mapelem(store_, map_, key, element) != 0);
    return element;
  }
  cfg *store_;
  cfg_elem *map_;
};

void fill_node(MapBuilder &map, const Node &node) {
  for (std::size_t i = 0; i < kNodeTexts; ++i)
    if (i != kBundle) map.text(kNodeKeys[i], node.texts[i]);
  map.reference(kNodeKeys[kBundle], node.texts[kBundle].c_str());
  map.truth("approved", node.approved);
  map.map("ssh").number("port", static_cast<std::int32_t>(node.ssh_port));
  map.list("etags", node.etags, [](MapBuilder &entry, const Etag &etag) {
    entry.text("name", etag.name).number("version", etag.version).text("status", etag.status);
  });
  map.list("interfaces", node.interfaces, [](MapBuilder &entry, const Interface &in) {
    entry.text("name", in.name).text("ipv4_address", in.ipv4_address).text("ipv6_address", in.ipv6_address);
  });
  map.list("users", node.users, [](MapBuilder &entry, const User &user) {
    entry.text("username", user.username).text("description", user.description);
    entry.number("disabled", user.disabled).texts("groups", user.groups);
  });
  map.list("groups", node.groups, [](MapBuilder &entry, const Group &group) {
    entry.text("groupname", group.groupname).text("description", group.description);
    entry.truth("system", group.system).texts("roles", group.roles);
  });
  MapBuilder auth = map.map("auth");
  auth.truth("use_remote_groups", node.use_remote_groups);
  std::string group;
  MapBuilder part = auth;
  for (std::size_t i = 0; i < kAuthTexts; ++i) {
    if (group != kAuthGroups[i]) part = auth.map(kAuthGroups[i]);
    group = kAuthGroups[i];
    part.text(kAuthKeys[i], node.auth[i]);
  }
}

}  // namespace

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
  MapBuilder root(handle_, cfg_root(handle_));
  root.texts("nodes", {}).texts("certificates", {});
  root.map("enrollment").list("bundles", make_nodes(kBundles), [](MapBuilder &entry, const Node &node) {
    entry.text("name", "bundle of " + node.id);
  });
  root.map("system").text("hostname", kHostname);
  commit("collections");
}

void OwnStore::commit(const char *why) {
  const cfg_commit_note note = {"bench", why, nullptr};
  require_store(handle_, cfg_commit(handle_, &note) != 0);
}

void OwnStore::add_node(cfg_elem *nodes, cfg_elem *certificates, const Node &node) {
  cfg_elem *certificate = cfg_new_map(handle_);
  require_store(handle_, cfg_append_future_listelem(handle_, certificates, certificate) != 0);
  MapBuilder record(handle_, certificate);
  record.blob("certificate", node.certificate.certificate).blob("private_key", node.certificate.private_key);
  record.text("common_name", node.certificate.common_name);
  if (node.certificate.revoke_time != 0) record.number("revoke_time", node.certificate.revoke_time);

  cfg_elem *element = cfg_new_map(handle_);
  require_store(handle_, cfg_append_future_listelem(handle_, nodes, element) != 0);
  MapBuilder map(handle_, element);
  fill_node(map, node);
  // A new element's handle reads as its ID.
  map.reference("cert", reinterpret_cast<const char *>(certificate));
}

void OwnStore::append(std::span<const Node> nodes) {
  cfg_elem *list = cfg_get_by_path(handle_, "nodes");
  cfg_elem *certificates = cfg_get_by_path(handle_, "certificates");
  for (const Node &node : nodes) add_node(list, certificates, node);
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
