#include "allocation/world.hpp"

#include <gtest/gtest.h>
#include <openssl/ec.h>
#include <openssl/evp.h>
#include <openssl/pem.h>
#include <openssl/x509.h>
#include <twlog.h>

#include <cstdlib>
#include <filesystem>
#include <memory>

#include "records/pushes/push_fixture.hpp"

namespace allocation {
namespace {

std::string content(BIO *buffer) {
  char *chars = nullptr;
  const long length = BIO_get_mem_data(buffer, &chars);
  return {chars, static_cast<size_t>(length)};
}

struct Authority {
  std::string key, certificate;
};

// Gives the key away.
Authority self_signed(EVP_PKEY *raw) {
  using key_ptr = std::unique_ptr<EVP_PKEY, decltype(&EVP_PKEY_free)>;
  using x509_ptr = std::unique_ptr<X509, decltype(&X509_free)>;
  using bio_ptr = std::unique_ptr<BIO, decltype(&BIO_free)>;
  const key_ptr key(raw, EVP_PKEY_free);
  const x509_ptr certificate(X509_new(), X509_free);
  X509_set_version(certificate.get(), 2);
  X509_gmtime_adj(X509_getm_notBefore(certificate.get()), 0);
  X509_gmtime_adj(X509_getm_notAfter(certificate.get()), 86'400);
  X509_NAME_add_entry_by_txt(X509_get_subject_name(certificate.get()), "CN", MBSTRING_ASC,
                             reinterpret_cast<const unsigned char *>("Test authority"), -1, -1, 0);
  X509_set_issuer_name(certificate.get(), X509_get_subject_name(certificate.get()));
  X509_set_pubkey(certificate.get(), key.get());
  X509_sign(certificate.get(), key.get(), EVP_sha256());
  const bio_ptr key_pem(BIO_new(BIO_s_mem()), BIO_free), certificate_pem(BIO_new(BIO_s_mem()), BIO_free);
  PEM_write_bio_PrivateKey(key_pem.get(), key.get(), nullptr, nullptr, 0, nullptr, nullptr);
  PEM_write_bio_X509(certificate_pem.get(), certificate.get());
  return {content(key_pem.get()), content(certificate_pem.get())};
}

// Writes the store's content; every step must succeed.
class Seed {
 public:
  explicit Seed(cfg *handle) : store(handle) {}

  void write() {
    system();
    certificate_authority();
    const std::string certificate = one_certificate();
    const std::string value = bundle_tag();
    nodes(certificate, value);
    bundles(value, dummy_template());
    templates();
    network();
    services();
    https();
    smart_group();
    push();
    access();
    auth();
    check(cfg_commit(store, nullptr));
  }

 private:
  void check(int done) const {
    if (!done) throw std::runtime_error(cfg_error_text(store));
  }
  cfg_elem *map(cfg_elem *parent, const char *key) {
    cfg_elem *made = cfg_new_map(store);
    check(cfg_add_mapelem(store, parent, key, made));
    return made;
  }
  cfg_elem *list(cfg_elem *parent, const char *key) {
    cfg_elem *made = cfg_new_list(store);
    check(cfg_add_mapelem(store, parent, key, made));
    return made;
  }
  cfg_elem *entry(cfg_elem *list) {
    cfg_elem *made = cfg_new_map(store);
    check(cfg_add_listelem(store, list, made));
    return made;
  }
  void text(cfg_elem *map, const char *key, const std::string &value) {
    check(cfg_map_set_string(store, map, key, value.c_str()));
  }
  void number(cfg_elem *map, const char *key, int32_t value) {
    check(cfg_map_set_int(store, map, key, value));
  }
  void blob(cfg_elem *map, const char *key, const std::string &bytes) {
    check(cfg_map_set_blob(store, map, key, bytes.data(), bytes.size()));
  }
  void reference(cfg_elem *map, const char *key, const std::string &id) {
    check(cfg_map_set_reference(store, map, key, id.c_str()));
  }
  std::string id(cfg_elem *elem) {
    char *chars = nullptr;
    check(cfg_elem_uuid(elem, &chars));
    std::string copy(chars);
    std::free(chars);
    return copy;
  }

  void system() {
    cfg_elem *system = map(cfg_root(store), "system");
    text(system, "hostname", "appliance");
    text(system, "timezone", "Pacific/Auckland");
    number(system, "webui_session_timeout", 20);
    number(system, "cli_session_timeout", 30);
    number(map(system, "net"), "ssh_port", 22);
    cfg_elem *third_party = map(cfg_root(store), "system.third_party");
    number(third_party, "ping_interval", 40);
    number(third_party, "sync_interval", 50);
  }

  void certificate_authority() {
    cfg_elem *services = map(cfg_root(store), "services");
    number(map(map(services, "fhvpn"), "server"), "mtu", 1400);
    cfg_elem *ca = map(services, "ca");
    const Authority authority = self_signed(EVP_EC_gen("P-256"));
    blob(ca, "key", authority.key);
    blob(ca, "certificate", authority.certificate);
    blob(ca, "serial", "1A\n");
  }

  std::string one_certificate() {
    cfg_elem *made = entry(list(cfg_root(store), "certificates"));
    text(made, "common_name", "node one's common name");
    blob(made, "certificate", "node one's certificate");
    blob(made, "private_key", "node one's private key");
    return id(made);
  }

  std::string bundle_tag() {
    cfg_elem *tag = entry(list(map(cfg_root(store), "tags"), "node_tags"));
    text(tag, "name", "Bundle");
    cfg_elem *value = entry(list(tag, "values"));
    text(value, "value", "northern sites");
    return id(value);
  }

  void smart_group() {
    cfg_elem *group = entry(list(map(cfg_root(store), "smart_groups"), "nodes_groups"));
    text(group, "name", "all that is called n");
    text(group, "query", R"({"key":"name","op":"equal","string":"n"})");
  }

  void etags(cfg_elem *node) {
    cfg_elem *etags = list(node, "etags");
    for (const char *name : {"ports", "users"}) {
      cfg_elem *etag = entry(etags);
      text(etag, "name", name);
      text(etag, "status", "ok");
      number(etag, "version", 7);
    }
  }

  void truth(cfg_elem *map, const char *key) { check(cfg_map_set_bool(store, map, key, 1)); }

  // Two interfaces, users and groups, and all of the authentication settings.
  void reports(cfg_elem *node) {
    cfg_elem *interfaces = list(node, "interfaces"), *users = list(node, "users"),
             *groups = list(node, "groups");
    for (const std::string which : {"first", "second"}) {
      cfg_elem *interface = entry(interfaces);
      for (const char *key : {"name", "ipv4_address", "ipv6_address"})
        text(interface, key, which + " " + key);
      cfg_elem *user = entry(users);
      for (const char *key : {"username", "description"}) text(user, key, which + " " + key);
      number(user, "disabled", 1);
      texts(user, "groups", which);
      cfg_elem *group = entry(groups);
      for (const char *key : {"groupname", "description"}) text(group, key, which + " " + key);
      truth(group, "system");
      texts(group, "roles", which);
    }
    cfg_elem *auth = map(node, "auth");
    for (const char *key : {"auth_method", "auth_type"}) text(auth, key, std::string("the ") + key);
    truth(auth, "use_remote_groups");
    cfg_elem *radius = map(auth, "radius"), *tacacs = map(auth, "tacacs"), *ldap = map(auth, "ldap");
    for (const char *key : {"authenticationServers", "accountingServers", "password"})
      text(radius, key, std::string("radius's ") + key);
    for (const char *key : {"authenticationServers", "password", "method", "service"})
      text(tacacs, key, std::string("tacacs's ") + key);
    for (const char *key : {"authenticationServers", "password", "baseDN", "bindDN", "usernameAttribute",
                            "groupMembershipAttribute", "bindPassword"})
      text(ldap, key, std::string("ldap's ") + key);
  }
  void texts(cfg_elem *map, const char *key, const std::string &which) {
    cfg_elem *made = list(map, key);
    for (const char *end : {" of all", " again"})
      check(cfg_add_listelem(store, made, cfg_new_string(store, (which + end).c_str())));
  }

  // Two ports with every field.
  void ports(cfg_elem *node) {
    cfg_elem *ports = list(node, "ports");
    for (const char *csid : {"1", "2"}) {
      cfg_elem *port = entry(ports);
      text(port, "id", csid);
      for (const char *key :
           {"label", "attachedDeviceType", "mode", "hardwareType", "connection_method", "line_id"})
        text(port, key, std::string("port's ") + key);
      number(port, "remote_port", 7001);
      cfg_elem *hardware = map(port, "hardware");
      for (const char *key : {"protocol", "pinout"}) text(hardware, key, std::string("port's ") + key);
      cfg_elem *uart = map(map(port, "hardwareSettings"), "uart");
      for (const char *key : {"dataBits", "stopBits", "baud", "parity", "flowControl"})
        text(uart, key, std::string("port's ") + key);
      cfg_elem *logging = map(port, "logging");
      for (const char *key : {"level", "facility", "priority"})
        text(logging, key, std::string("port's ") + key);
      cfg_elem *nagios = map(port, "nagios");
      for (const char *key : {"enabled", "serialStatus", "portLogging"}) truth(nagios, key);
      text(nagios, "name", "port's name");
      cfg_elem *modes = map(port, "modeSettings");
      cfg_elem *console = map(modes, "consoleServer");
      for (const char *key : {"ssh", "tcp", "rfc2217", "webShell"}) truth(map(console, key), "enabled");
      cfg_elem *share = map(console, "portShare");
      for (const char *key : {"enabled", "encryption", "authentication"}) truth(share, key);
      text(share, "password", "port's share password");
      cfg_elem *telnet = map(console, "telnet");
      for (const char *key : {"enabled", "unauthenticated"}) truth(telnet, key);
      text(map(modes, "terminalServer"), "terminalType", "port's terminalType");
      cfg_elem *sdt = map(modes, "sdtServer");
      for (const char *key : {"username", "password"}) text(sdt, key, std::string("port's ") + key);
      cfg_elem *bridge = map(modes, "bridge");
      for (const char *key : {"rfc2217", "sshTunnel"}) truth(bridge, key);
      cfg_elem *server = map(bridge, "server");
      text(server, "address", "port's address");
      number(server, "port", 7002);
    }
  }

  cfg_elem *node(cfg_elem *nodes, const char *product) {
    cfg_elem *made = entry(nodes);
    text(made, "name", std::string("the name of a node: ") + product);
    text(made, "product", product);
    for (const char *key : {"status", "description", "mac_address", "fhvpn_address", "firmware_version",
                            "model", "serial_number"})
      text(made, key, std::string(product) + "'s " + key);
    check(cfg_map_set_bool(store, made, "approved", 1));
    etags(made);
    return made;
  }

  void nodes(const std::string &certificate, const std::string &tag_value) {
    cfg_elem *nodes = list(cfg_root(store), "nodes");
    cfg_elem *tarnwell = node(nodes, "tarnwell");
    reference(tarnwell, "bundle", "enrollment_bundles-1");
    reference(tarnwell, "cert", certificate);
    text(tarnwell, "package_password", "the package's password");
    reports(tarnwell);
    cfg_elem *ssh = map(tarnwell, "ssh");
    number(ssh, "port", 2222);
    text(ssh, "banner", "welcome");
    check(cfg_add_listelem(store, list(tarnwell, "tags"), cfg_new_reference(store, tag_value.c_str())));

    cfg_elem *generic = node(nodes, "generic");
    for (const char *key : {"address", "username", "password"})
      text(generic, key, std::string("generic's ") + key);
    text(generic, "connection_method", "ssh");
    number(generic, "port_count", 2);
    number(generic, "base_port", 3000);
    ports(generic);
    cfg_elem *labels = list(generic, "port_labels");
    for (const char *label : {"first port", "second port"})
      check(cfg_add_listelem(store, labels, cfg_new_string(store, label)));
  }

  std::string dummy_template() {
    cfg_elem *dummy = entry(list(cfg_root(store), "templates"));
    text(dummy, "name", "the template's name");
    text(dummy, "description", "the template's description");
    text(dummy, "template_type", "dummy");
    text(dummy, "dummy_field", "the template's text");
    return id(dummy);
  }

  cfg_elem *template_of(const char *type) {
    cfg_elem *made = entry(cfg_get_by_path(store, "templates"));
    text(made, "name", std::string("a template of type ") + type);
    text(made, "template_type", type);
    return made;
  }

  void templates() {
    cfg_elem *users = template_of("users_groups");
    text(users, "ug_operation_type", "user_add");
    cfg_elem *user = entry(list(users, "ug_user_changes"));
    for (const char *key : {"username", "description", "password"})
      text(user, key, std::string("the user's ") + key);
    number(user, "disabled", 1);
    texts(user, "groups", "the group");

    cfg_elem *groups = template_of("users_groups");
    text(groups, "ug_operation_type", "group_add");
    cfg_elem *group = entry(list(groups, "ug_group_changes"));
    for (const char *key : {"groupname", "description"}) text(group, key, std::string("the group's ") + key);
    texts(group, "roles", "the role");

    cfg_elem *membership = template_of("users_groups");
    text(membership, "ug_operation_type", "membership");
    texts(membership, "ug_membership_users", "the user");
    texts(membership, "ug_membership_groups", "the group");
    number(membership, "ug_add_membership", 1);

    cfg_elem *settings = template_of("auth");
    text(settings, "auth_mode", "the template's mode");
    cfg_elem *radius = map(settings, "radius");
    text(radius, "password", "the template's password");
    text(entry(list(radius, "accountingServers")), "hostname", "server.example");

    cfg_elem *script = template_of("script");
    blob(script, "script", "the template's script");
    text(script, "script_checksum", "the template's checksum");
    number(script, "script_timeout", 60);
  }

  void bundles(const std::string &tag_value, const std::string &dummy) {
    cfg_elem *enrollment = map(cfg_root(store), "enrollment");
    text(enrollment, "request_token", "the request token");
    cfg_elem *bundle = entry(list(enrollment, "bundles"));
    text(bundle, "name", "northern sites");
    text(bundle, "token", "the bundle's token");
    check(cfg_map_set_bool(store, bundle, "auto_approve", 1));
    check(
        cfg_add_listelem(store, list(bundle, "automatic_tags"), cfg_new_reference(store, tag_value.c_str())));
    check(cfg_add_listelem(store, list(bundle, "templates"), cfg_new_reference(store, dummy.c_str())));
  }

  void access() {
    text(entry(list(cfg_root(store), "acls")), "aclname", "the list's name");
    cfg_elem *role = entry(list(cfg_root(store), "roles"));
    text(role, "rolename", "FernhollowAdmin");
    cfg_elem *users = list(cfg_root(store), "users"), *groups = list(cfg_root(store), "groups");
    cfg_elem *member = user(users, "member"), *stranger = user(users, "stranger");
    cfg_elem *member_groups = list(member, "groups");
    list(stranger, "groups");
    for (const char *name : {"operators", "admin"}) {
      cfg_elem *group = entry(groups);
      text(group, "groupname", name);
      text(group, "description", std::string(name) + "' description");
      text(group, "mode", "global");
      check(cfg_map_set_bool(store, group, "enabled", 1));
      refer(list(group, "members"), member);
      refer(member_groups, group);
    }
    cfg_elem *operators = cfg_simple_get_listelem(store, groups, 0);
    cfg_elem *smart_group =
        cfg_simple_get_listelem(store, cfg_get_by_path(store, "smart_groups.nodes_groups"), 0);
    reference(map(operators, "global_roles"), "ref", id(role));
    cfg_elem *smart = map(operators, "smart_group");
    reference(smart, "roles_ref", id(role));
    reference(smart, "ref", id(smart_group));
  }

  cfg_elem *user(cfg_elem *users, const char *name) {
    cfg_elem *made = entry(users);
    text(made, "username", name);
    text(made, "description", std::string(name) + "'s description");
    text(made, "hashed_password", "$5$salt$hash");
    check(cfg_map_set_bool(store, made, "enabled", 1));
    check(cfg_map_set_bool(store, made, "no_password", 0));
    return made;
  }

  void refer(cfg_elem *list, cfg_elem *to) {
    check(cfg_add_listelem(store, list, cfg_new_reference(store, id(to).c_str())));
  }

  void auth() {
    cfg_elem *auth = map(cfg_root(store), "auth");
    text(auth, "mode", "auth's mode");
    cfg_elem *radius = map(auth, "radius"), *tacacs = map(auth, "tacacs"), *ldap = map(auth, "ldap");
    text(radius, "password", "radius' password");
    for (const char *key : {"password", "method", "service"})
      text(tacacs, key, std::string("tacacs' ") + key);
    for (const char *key :
         {"baseDN", "bindDN", "usernameAttribute", "groupMembershipAttribute", "bindPassword"})
      text(ldap, key, std::string("ldap's ") + key);
    for (cfg_elem *servers : {list(radius, "authenticationServers"), list(radius, "accountingServers"),
                              list(tacacs, "authenticationServers"), list(ldap, "authenticationServers")}) {
      cfg_elem *server = entry(servers);
      text(server, "hostname", "server.example");
      number(server, "port", 1812);
    }
  }

  void network() {
    cfg_elem *net = cfg_get_by_path(store, "system.net");
    cfg_elem *physifs = list(net, "physifs");
    cfg_elem *ethernet = physif(physifs, "eth0", "ethernet");
    text(map(ethernet, "ethernet"), "link_speed", "the link_speed");
    cfg_elem *wireless = map(physif(physifs, "wlan0", "wireless"), "wireless");
    for (const char *key : {"auth", "config", "encryption", "psk", "ssid", "regdomain"})
      text(wireless, key, std::string("the ") + key);

    cfg_elem *conn = entry(list(net, "conns"));
    text(conn, "name", "uplink");
    text(conn, "description", "the connection's description");
    check(cfg_map_set_bool(store, conn, "enabled", 1));
    text(conn, "role", "wan");
    text(conn, "mode", "dhcp");
    reference(conn, "physif", id(ethernet));
    cfg_elem *fixed = map(conn, "static");
    for (const char *key : {"address", "netmask", "broadcast", "gateway", "dns1", "dns2"})
      text(fixed, key, std::string("the ") + key);
    cfg_elem *dhcp = map(conn, "dhcp");
    for (const char *key : {"vendor_class", "udhcpc_script"}) text(dhcp, key, std::string("the ") + key);

    cfg_elem *endpoint = entry(list(net, "external_endpoints"));
    text(endpoint, "address", "gate.example");
    number(endpoint, "api_port", 443);
    number(endpoint, "vpn_port", 1194);
  }

  cfg_elem *physif(cfg_elem *physifs, const char *device, const char *media) {
    cfg_elem *made = entry(physifs);
    text(made, "name", "the interface's name");
    text(made, "device", device);
    text(made, "description", "the interface's description");
    check(cfg_map_set_bool(store, made, "enabled", 1));
    number(made, "mtu", 1500);
    text(made, "media", media);
    return made;
  }

  void services() {
    cfg_elem *services = cfg_get_by_path(store, "services");
    cfg_elem *ntp = map(services, "ntp");
    check(cfg_map_set_bool(store, ntp, "enabled", 1));
    check(
        cfg_add_listelem(store, list(ntp, "servers"), cfg_new_string(store, "a server of time, somewhere")));
    text(map(services, "consoleGateway"), "ssh_delimiter", "the delimiter");
    cfg_elem *flag = entry(list(cfg_root(store), "boot_flags"));
    text(flag, "name", "wipe");
    text(flag, "flag_type", "the flag's type");
    check(cfg_map_set_bool(store, flag, "is_set", 1));
  }

  void https() {
    cfg_elem *https = map(cfg_get_by_path(store, "services"), "https");
    const Authority web_server = self_signed(EVP_RSA_gen(512));  // quickly made: every test makes one
    blob(https, "certificate", web_server.certificate);
    blob(https, "private_key", web_server.key);
    cfg_elem *csr = map(https, "csr");
    for (const char *key :
         {"common_name", "org_unit", "organization", "locality", "state", "email", "challenge_password"})
      text(csr, key, key);
    text(csr, "country", "NZ");
    blob(csr, "private_key", "private_key");
    blob(csr, "csr", "csr");
    number(csr, "key_length", 2048);
  }

  void push() {
    cfg_elem *push = entry(list(cfg_root(store), "cfg_push_exec_ctxts"));
    text(push, "username", "alice of the night shift, the second of that name");
    text(push, "status", "preflight_ready");
    text(push, "disconnected_nodes_behaviour", "prompt");
    check(cfg_add_listelem(store, list(push, "templates"), cfg_new_reference(store, kTemplate)));
    cfg_elem *node = entry(list(push, "nodes"));
    reference(node, "node", kTarnwell);
    text(node, "status", "preflight_in_progress");
    check(cfg_map_set_bool(store, node, "apply_execution", 1));
    for (const char *phase : {"preflight_", "execution_"})
      for (const char *kind : {"changes", "warnings", "errors", "messages"}) {
        cfg_elem *message = entry(list(node, (std::string(phase) + kind).c_str()));
        number(message, "code", 3);
        number(message, "argc", 1);
        reference(message, "template", kTemplate);
        check(cfg_add_listelem(store, list(message, "args"),
                               cfg_new_string(store, "the argument of the message")));
      }
  }

  cfg *store;
};

std::string export_of(cfg *store) {
  std::string text;
  const auto append = [](void *context, const char *data, size_t length) {
    static_cast<std::string *>(context)->append(data, length);
    return 1;
  };
  return cfg_export(store, append, &text) ? text : std::string("export failed: ") + cfg_error_text(store);
}

// The store of this process in a directory of its own, opened once for its whole life.
class Directory {
 public:
  Directory() {
    twlog_set_max_priority(-1);  // every refused allocation is an error that someone would log
    std::string name = (std::filesystem::temp_directory_path() / "allocation-XXXXXX").string();
    if (!mkdtemp(name.data())) throw std::runtime_error("no temporary directory");
    path = name;
    cfg_failure failure{};
    handle = cfg_open((path + "/store").c_str(), CFG_OPEN_CREATE, &failure);
    if (!handle) throw std::runtime_error(failure.text);
    Seed(handle).write();
    text = export_of(handle);
  }
  ~Directory() {
    cfg_close(handle);
    std::error_code ignored;
    std::filesystem::remove_all(path, ignored);
  }
  Directory(const Directory &) = delete;
  Directory &operator=(const Directory &) = delete;

  cfg *open() const { return cfg_open((path + "/store").c_str(), 0, nullptr); }

  std::string text;

 private:
  std::string path;
  cfg *handle = nullptr;
};

const Directory &directory() {
  static const Directory only;
  return only;
}

}  // namespace

World::World()
    : store(directory().open()),
      node(cfg_get_node_by_id(store, kTarnwell)),
      generic(cfg_get_node_by_id(store, kGeneric)),
      port(cfg_get_port_by_id(store, kPort)),
      enrollment(cfg_enrollment_get_by_id(store, kTarnwell)),
      generic_enrollment(cfg_enrollment_get_by_id(store, kGeneric)),
      certificate(cfg_get_certificate_by_id(store, kCertificate)),
      csr(cfg_get_https_csr(store)),
      tags(cfg_get_tag_list(store, CFG_TAG_NODE)),
      tag(cfg_get_tag_by_id(store, kTag)),
      tag_value(cfg_get_tag_value_by_id(store, kTagValue)),
      group(cfg_smartgroup_get_by_id(store, "nodes", kSmartGroup)),
      templates(cfg_template_list_new(store)),
      dummy(cfg_template_get_by_id(store, kTemplate)),
      users_template(cfg_template_get_by_id(store, kUsersTemplate)),
      user_operation(cfg_ugt_get_user_operation(users_template, 0)),
      groups_template(cfg_template_get_by_id(store, kGroupsTemplate)),
      group_operation(cfg_ugt_get_group_operation(groups_template, 0)),
      membership_template(cfg_template_get_by_id(store, kMembershipTemplate)),
      auth_template(cfg_template_get_by_id(store, kAuthTemplate)),
      script_template(cfg_template_get_by_id(store, kScriptTemplate)),
      bundles(cfg_bundle_list_new(store)),
      bundle(cfg_bundle_get_by_id(store, kBundle)),
      ethernet(cfg_get_net_physif_by_id(store, kEthernet)),
      wireless(cfg_get_net_physif_by_id(store, kWireless)),
      conn(cfg_get_net_conn_by_id(store, kConn)),
      endpoint(cfg_net_get_external_endpoint_by_id(store, kEndpoint)),
      endpoints(cfg_net_get_external_endpoint_list(store)),
      ntp(cfg_get_ntp(store)),
      gateway(cfg_get_service_console_gateway(store)),
      boot_flag(cfg_boot_flag_get_by_id(store, kBootFlag)),
      push(cfg_push_exec_ctxt_get_by_id(store, kPush)),
      push_node(cfg_push_node_ctxt_get_by_id(store, kPushNode)),
      pushes(cfg_push_exec_ctxt_list_new(store)),
      role(cfg_role_get_by_id(store, kRole)),
      acl(cfg_acl_get_by_id(store, kAcl)),
      user(cfg_user_get_by_id(store, kUser)),
      stranger(cfg_user_get_by_id(store, kStranger)),
      user_group(cfg_group_get_by_id(store, kUserGroup)),
      auth(cfg_get_auth(store)),
      server(cfg_auth_get_radiusAuthenticationServer(auth, 0)) {
  if (!store || !node || !generic || !port || !enrollment || !generic_enrollment || !certificate || !csr ||
      !tags || !tag || !tag_value || !group || !templates || !dummy || !user_operation || !group_operation ||
      !membership_template || !auth_template || !script_template || !bundles || !bundle || !ethernet ||
      !wireless || !conn || !endpoint || !endpoints || !ntp || !gateway || !boot_flag || !push ||
      !push_node || !pushes || !role || !acl || !user || !stranger || !user_group || !auth || !server)
    throw std::runtime_error("the store of the test cannot be read");
}

World::~World() {
  cfg_node_free(node);
  cfg_node_free(generic);
  cfg_port_free(port);
  cfg_enrollment_free(enrollment);
  cfg_enrollment_free(generic_enrollment);
  free_whole(certificate);
  cfg_csr_free(csr);
  free_whole(tags);
  free_whole(tag);
  cfg_tag_value_free(tag_value);
  cfg_smartgroup_free(group);
  cfg_template_list_free(templates);
  free_whole(dummy);
  for (cfg_template *record :
       {users_template, groups_template, membership_template, auth_template, script_template})
    if (record) free_whole(record);
  cfg_role_free(role);
  cfg_acl_free(acl);
  cfg_user_free(user);
  cfg_user_free(stranger);
  cfg_group_free(user_group);
  cfg_auth_free(auth);
  cfg_auth_server_free(server);
  cfg_bundle_list_free(bundles);
  cfg_bundle_free(bundle);
  cfg_net_physif_free(ethernet);
  cfg_net_physif_free(wireless);
  cfg_net_conn_free(conn);
  cfg_net_external_endpoint_free(endpoint);
  cfg_net_external_endpoint_list_free(endpoints);
  cfg_ntp_free(ntp);
  cfg_service_console_gateway_free(gateway);
  cfg_boot_flag_free(boot_flag);
  if (push) records::free_push()(push);
  cfg_push_node_ctxt_free(push_node);
  cfg_push_exec_ctxt_list_free(pushes);
  cfg_close(store);
  cfg_close(unread);
}

void World::open_unread() { unread = directory().open(); }

bool World::store_is_as_before() {
  cfg_abandon(store);
  return export_of(store) == directory().text;
}

void free_whole(cfg_certificate *certificate) {
  cfg_certificate_free(certificate);
  std::free(certificate);
}

void free_whole(cfg_tag *tag) {
  char **values = tag_get_all_values(tag);
  cfg_tag_free(tag);
  std::free(static_cast<void *>(values));
}

void free_whole(cfg_tag_list *tags) {
  char **all = tag_list_get_all_tags(tags);
  const char *uuid = tag_list_get_uuid(tags);
  cfg_tag_list_free(tags);
  std::free(static_cast<void *>(all));
  std::free(const_cast<char *>(uuid));
}

void free_whole(cfg_template *record) {
  const void *left[] = {cfg_template_get_uuid(record), cfg_template_get_description(record),
                        cfg_dummy_template_get_dummy_field(record), cfg_script_template_get_script(record),
                        cfg_script_template_get_checksum(record)};
  cfg_auth *auth = cfg_template_get_auth(record);
  cfg_ugt_clear_user_operations(record);
  cfg_ugt_clear_group_operations(record);
  cfg_ugt_clear_membership_users(record);
  cfg_ugt_clear_membership_groups(record);
  cfg_template_free(record);
  cfg_auth_free(auth);
  for (const void *block : left) std::free(const_cast<void *>(block));
}

}  // namespace allocation
