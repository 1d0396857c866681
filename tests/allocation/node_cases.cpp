#include "allocation/cases.hpp"

#include <cstdlib>
#include <cstring>

namespace allocation {
namespace {

constexpr char kName[] = "the name of a node: tarnwell";
constexpr char kOldMacAddress[] = "tarnwell's mac_address";

// Whether a node is there; one that is there must be there whole.
bool whole(cfg_node *node, const char *id) {
  if (!node) return false;
  EXPECT_STREQ(cfg_node_get_uuid(node), id);
  EXPECT_EQ(cfg_node_get_approved(node), 1);
  EXPECT_NE(cfg_node_get_name(node), nullptr);
  EXPECT_NE(cfg_node_get_serial_number(node), nullptr);
  if (std::strcmp(id, kTarnwell) == 0) {
    EXPECT_STREQ(cfg_node_get_bundle_id(node), "enrollment_bundles-1");
    EXPECT_EQ(cfg_node_get_ssh_port(node), 2222U);
    EXPECT_STREQ(cfg_node_interface_get_ipv6_addr(cfg_node_get_interface(node, 1)), "second ipv6_address");
    EXPECT_STREQ(cfg_node_user_get_group(cfg_node_get_node_user(node, 1), 1), "second again");
    EXPECT_STREQ(cfg_node_group_get_role(cfg_node_get_node_group(node, 1), 1), "second again");
    EXPECT_STREQ(cfg_node_get_ldap_bind_password(node), "ldap's bindPassword");
  } else {
    EXPECT_STREQ(cfg_node_get_password(node), "generic's password");
    EXPECT_STREQ(cfg_node_get_port_label(node, 1), "second port");
    EXPECT_EQ(cfg_node_get_base_port(node), 3000U);
  }
  EXPECT_EQ(cfg_node_get_etag_count(node), 2);
  if (std::strcmp(id, kTarnwell) != 0) return true;
  EXPECT_STREQ(cfg_node_get_key(node), "node one's private key");
  EXPECT_STREQ(cfg_node_get_cert_cn(node), "node one's common name");
  return true;
}

template <class Call>
void look_up(Call call, const char *id) {
  sweep(call, [=](World &, cfg_node *found) {
    const bool there = whole(found, id);
    cfg_node_free(found);
    return there;
  });
}

void nodes_by_id() {
  static const char *const ids[] = {kTarnwell, "nodes-999", kGeneric};
  sweep([](World &w) { return cfg_get_nodes_by_id(w.store, ids, 3); },
        [](World &, cfg_node **nodes) {
          if (!nodes) return false;
          EXPECT_TRUE(whole(nodes[0], kTarnwell) && whole(nodes[1], kGeneric));
          for (cfg_node **node = nodes; *node; ++node) cfg_node_free(*node);
          std::free(nodes);
          return true;
        });
}

// Never 0: that is a store without nodes.
void count() {
  sweep([](World &w) { return cfg_get_nodes_count(w.unread); },
        [](World &, int32_t nodes) {
          if (nodes != 2) EXPECT_EQ(nodes, -1);
          return nodes == 2;
        },
        [](World &w) { w.open_unread(); });
}

void new_node() {
  sweep([](World &w) { return cfg_new_node(w.store); },
        [](World &, cfg_node *node) {
          const bool made = node != nullptr;
          cfg_node_free(node);
          return made;
        });
}

void free_node() {
  sweep(
      [](World &w) {
        cfg_node_free(w.node);
        w.node = nullptr;
        return 1;
      },
      gives(1));
}

// Saves a node with changes of every kind.
void save() {
  sweep([](World &w) { return cfg_node_save(w.node); },
        [](World &w, int saved) {
          if (saved != 1) return false;
          cfg_node *again = cfg_get_node_by_id(w.store, kTarnwell);
          EXPECT_TRUE(whole(again, kTarnwell));
          EXPECT_STREQ(cfg_node_get_mac_address(again), kNew);
          EXPECT_EQ(cfg_node_get_description(again), nullptr);
          cfg_node_free(again);
          return true;
        },
        [](World &w) {
          EXPECT_EQ(cfg_node_set_mac_address(w.node, kNew), 1);
          EXPECT_EQ(cfg_node_set_description(w.node, nullptr), 1);
        });
}

// A node of a store in which it has no map for its SSH port yet.
void save_that_makes_a_map() {
  sweep([](World &w) { return cfg_node_save(w.node); },
        [](World &w, int saved) {
          if (saved) EXPECT_TRUE(cfg_get_mapelem(cfg_get_by_id(w.store, kTarnwell), "ssh"));
          return saved == 1;
        },
        [](World &w) { EXPECT_TRUE(cfg_map_delete_key(w.store, cfg_get_by_id(w.store, kTarnwell), "ssh")); });
}

// A map that is there is never taken for missing and replaced: what else is in it stays.
void save_that_finds_a_map() {
  sweep([](World &w) { return cfg_node_save(w.node); },
        [](World &w, int saved) {
          cfg_elem *ssh = cfg_get_child_by_path(w.store, cfg_get_by_id(w.store, kTarnwell), "ssh");
          EXPECT_TRUE(cfg_map_has(ssh, "banner"));
          return saved == 1;
        },
        [](World &w) { EXPECT_EQ(cfg_node_set_ssh_port(w.node, 2022), 1); });
}

void bundle_name() {
  sweep([](World &w) { return cfg_node_get_enrollment_bundle(w.node); }, gives_text("northern sites"));
  sweep([](World &w) { return cfg_node_get_enrollment_bundle(w.generic); }, gives_text("Global"));
}

void set_bundle_name() {
  sweep([](World &w) { return cfg_node_set_enrollment_bundle(w.node, kNew); },
        [](World &w, int done) {
          EXPECT_STREQ(cfg_node_get_enrollment_bundle(w.node), done ? kNew : "northern sites");
          return done == 1;
        });
}

void credentials() {
  sweep([](World &w) { return cfg_node_set_credentials(w.generic, kNew, kNew); },
        [](World &w, int done) {
          if (done) {
            EXPECT_STREQ(cfg_node_get_username(w.generic), kNew);
            EXPECT_STREQ(cfg_node_get_password(w.generic), kNew);
          }
          return done == 1;
        });
}

void base_port() {
  sweep(
      [](World &w) {
        cfg_node_set_base_port(w.generic, 7);
        return 1;
      },
      [](World &w, int) {
        EXPECT_EQ(cfg_node_get_base_port(w.generic), 7U);
        return true;
      });
}

void port_count() {
  sweep([](World &w) { return cfg_node_set_port_count_field(w.generic, 3); },
        [](World &w, int done) {
          EXPECT_EQ(cfg_node_get_port_count_field(w.generic), done ? 3 : 2);
          EXPECT_STREQ(cfg_node_get_port_label(w.generic, 1), done ? "Port 2" : "second port");
          return done == 1;
        });
}

void port_label() {
  sweep([](World &w) { return cfg_node_set_port_label(w.generic, 1, kNew); },
        [](World &w, int done) {
          EXPECT_STREQ(cfg_node_get_port_label(w.generic, 0), "first port");
          if (done) EXPECT_STREQ(cfg_node_get_port_label(w.generic, 1), kNew);
          return done == 1;
        });
}

// Etags of a node that is no "tarnwell" are read by the first query for them.
template <class Value>
void etag_query(Value (*query)(cfg_node *, const char *), Value expected) {
  sweep([=](World &w) { return query(w.generic, "users"); }, gives(expected));
}

void etag_status_query() {
  sweep([](World &w) { return cfg_node_get_etag_status(w.generic, "users"); }, gives_text("ok"));
}

void etag() {
  sweep([](World &w) { return cfg_node_get_etag(w.generic, 1); },
        [](World &, const cfg_etag *etag) {
          if (etag) EXPECT_STREQ(cfg_etag_get_name(etag), "users");
          return etag != nullptr;
        });
}

template <class Value, class Verdict>
void etag_field(Value (*get)(const cfg_etag *), Verdict verdict) {
  sweep([=](World &w) { return get(cfg_node_get_etag(w.node, 1)); }, verdict);
}

void certificate_object() {
  sweep([](World &w) { return cfg_node_get_cert_object(w.node); },
        [](World &, cfg_certificate *certificate) {
          EXPECT_STREQ(cfg_certificate_get_common_name(certificate), "node one's common name");
          return certificate != nullptr;
        });
}

cfg_elem *element(const World &w) { return cfg_get_by_id(w.store, kTarnwell); }

cfg_value written(const World &w) {
  static const char *const keys[] = {"a new key"};
  static const cfg_keyset set{keys, 1};
  cfg_value value{};
  EXPECT_EQ(cfg_map_read(element(w), &set, &value), 1);
  return value;
}

template <class Call>
void update(Call call, cfg_kind kind) {
  sweep([=](World &w) { return call(w.node, element(w)); },
        [=](World &w, int done) {
          const cfg_value value = written(w);
          EXPECT_EQ(value.kind, done ? kind : CFG_NONE);
          if (done) EXPECT_EQ(std::string_view(value.data, value.length), kNew);
          return done == 1;
        });
}

constexpr auto kNode = &World::node;
constexpr auto kPlain = &World::generic;

const Case rows[] = {
    {"cfg_etag_get_name", [] { etag_field(cfg_etag_get_name, gives_text("users")); }},
    {"cfg_etag_get_status", [] { etag_field(cfg_etag_get_status, gives_text("ok")); }},
    {"cfg_etag_get_uuid", [] { etag_field(cfg_etag_get_uuid, gives_text("nodes-1_etags-2")); }},
    {"cfg_etag_get_version", [] { etag_field(cfg_etag_get_version, gives(int32_t{7})); }},
    {"cfg_get_node_by_cert_cn",
     [] {
       look_up([](World &w) { return cfg_get_node_by_cert_cn(w.store, "node one's common name"); },
               kTarnwell);
     }},
    {"cfg_get_node_by_fhvpn_address",
     [] {
       look_up([](World &w) { return cfg_get_node_by_fhvpn_address(w.store, "generic's fhvpn_address"); },
               kGeneric);
     }},
    {"cfg_get_node_by_id",
     [] {
       look_up([](World &w) { return cfg_get_node_by_id(w.store, kTarnwell); }, kTarnwell);
       look_up([](World &w) { return cfg_get_node_by_id(w.store, kGeneric); }, kGeneric);
     }},
    {"cfg_get_node_by_idx",
     [] { look_up([](World &w) { return cfg_get_node_by_idx(w.store, 1); }, kGeneric); }},
    {"cfg_get_node_by_name",
     [] { look_up([](World &w) { return cfg_get_node_by_name(w.store, kName); }, kTarnwell); }},
    {"cfg_get_node_by_serial_number",
     [] {
       look_up([](World &w) { return cfg_get_node_by_serial_number(w.store, "generic's serial_number"); },
               kGeneric);
     }},
    {"cfg_get_nodes_by_id", nodes_by_id},
    {"cfg_get_nodes_count", count},
    {"cfg_new_node", new_node},
    {"cfg_node_free", free_node},
    {"cfg_node_get_address", [] { text_getter(cfg_node_get_address, kPlain, "generic's address"); }},
    {"cfg_node_get_approved", [] { number_getter(cfg_node_get_approved, kNode, 1); }},
    {"cfg_node_get_base_port", [] { number_getter(cfg_node_get_base_port, kPlain, 3000U); }},
    {"cfg_node_get_bundle_id", [] { text_getter(cfg_node_get_bundle_id, kNode, "enrollment_bundles-1"); }},
    {"cfg_node_get_cert", [] { text_getter(cfg_node_get_cert, kNode, "node one's certificate"); }},
    {"cfg_node_get_cert_cn", [] { text_getter(cfg_node_get_cert_cn, kNode, "node one's common name"); }},
    {"cfg_node_get_cert_object", certificate_object},
    {"cfg_node_get_connection_method", [] { text_getter(cfg_node_get_connection_method, kPlain, "ssh"); }},
    {"cfg_node_get_description",
     [] { text_getter(cfg_node_get_description, kNode, "tarnwell's description"); }},
    {"cfg_node_get_enrollment_bundle", bundle_name},
    {"cfg_node_get_etag", etag},
    {"cfg_node_get_etag_count",
     [] { sweep([](World &w) { return cfg_node_get_etag_count(w.generic); }, gives(int32_t{2})); }},
    {"cfg_node_get_etag_status", etag_status_query},
    {"cfg_node_get_etag_version", [] { etag_query(cfg_node_get_etag_version, int32_t{7}); }},
    {"cfg_node_get_fhvpn_address",
     [] { text_getter(cfg_node_get_fhvpn_address, kNode, "tarnwell's fhvpn_address"); }},
    {"cfg_node_get_firmware_version",
     [] { text_getter(cfg_node_get_firmware_version, kNode, "tarnwell's firmware_version"); }},
    {"cfg_node_get_key", [] { text_getter(cfg_node_get_key, kNode, "node one's private key"); }},
    {"cfg_node_get_mac_address", [] { text_getter(cfg_node_get_mac_address, kNode, kOldMacAddress); }},
    {"cfg_node_get_model", [] { text_getter(cfg_node_get_model, kNode, "tarnwell's model"); }},
    {"cfg_node_get_name", [] { text_getter(cfg_node_get_name, kNode, kName); }},
    {"cfg_node_get_password", [] { text_getter(cfg_node_get_password, kPlain, "generic's password"); }},
    {"cfg_node_get_port_count_field", [] { number_getter(cfg_node_get_port_count_field, kPlain, 2); }},
    {"cfg_node_get_port_label",
     [] { sweep([](World &w) { return cfg_node_get_port_label(w.generic, 0); }, gives_text("first port")); }},
    {"cfg_node_get_product", [] { text_getter(cfg_node_get_product, kNode, "tarnwell"); }},
    {"cfg_node_get_serial_number",
     [] { text_getter(cfg_node_get_serial_number, kNode, "tarnwell's serial_number"); }},
    {"cfg_node_get_ssh_port", [] { number_getter(cfg_node_get_ssh_port, kNode, 2222U); }},
    {"cfg_node_get_status", [] { text_getter(cfg_node_get_status, kNode, "tarnwell's status"); }},
    {"cfg_node_get_username", [] { text_getter(cfg_node_get_username, kPlain, "generic's username"); }},
    {"cfg_node_get_uuid", [] { text_getter(cfg_node_get_uuid, kNode, kTarnwell); }},
    {"cfg_node_save",
     [] {
       save();
       save_that_makes_a_map();
       save_that_finds_a_map();
     }},
    {"cfg_node_set_approved", [] { number_setter(cfg_node_set_approved, cfg_node_get_approved, kNode); }},
    {"cfg_node_set_base_port", base_port},
    {"cfg_node_set_bundle_id", [] { text_setter(cfg_node_set_bundle_id, cfg_node_get_bundle_id, kNode); }},
    {"cfg_node_set_connection_method",
     [] { text_setter(cfg_node_set_connection_method, cfg_node_get_connection_method, kPlain); }},
    {"cfg_node_set_credentials", credentials},
    {"cfg_node_set_description",
     [] { text_setter(cfg_node_set_description, cfg_node_get_description, kNode); }},
    {"cfg_node_set_enrollment_bundle", set_bundle_name},
    {"cfg_node_set_fhvpn_address",
     [] { text_setter(cfg_node_set_fhvpn_address, cfg_node_get_fhvpn_address, kNode); }},
    {"cfg_node_set_firmware_version",
     [] { text_setter(cfg_node_set_firmware_version, cfg_node_get_firmware_version, kNode); }},
    {"cfg_node_set_mac_address",
     [] { text_setter(cfg_node_set_mac_address, cfg_node_get_mac_address, kNode); }},
    {"cfg_node_set_model", [] { text_setter(cfg_node_set_model, cfg_node_get_model, kNode); }},
    {"cfg_node_set_name", [] { text_setter(cfg_node_set_name, cfg_node_get_name, kNode); }},
    {"cfg_node_set_port_count_field", port_count},
    {"cfg_node_set_port_label", port_label},
    {"cfg_node_set_serial_number",
     [] { text_setter(cfg_node_set_serial_number, cfg_node_get_serial_number, kNode); }},
    {"cfg_node_set_ssh_port", [] { number_setter(cfg_node_set_ssh_port, cfg_node_get_ssh_port, kNode); }},
    {"cfg_node_set_status", [] { text_setter(cfg_node_set_status, cfg_node_get_status, kNode); }},
    {"cfg_node_update_blob",
     [] {
       update(
           [](cfg_node *node, cfg_elem *map) {
             return cfg_node_update_blob(node, map, "a new key", kNew, std::size(kNew) - 1);
           },
           CFG_BLOB);
     }},
    {"cfg_node_update_reference",
     [] {
       update([](cfg_node *node,
                 cfg_elem *map) { return cfg_node_update_reference(node, map, "a new key", kNew); },
              CFG_REFERENCE);
     }},
    {"cfg_node_update_string",
     [] {
       update(
           [](cfg_node *node, cfg_elem *map) { return cfg_node_update_string(node, map, "a new key", kNew); },
           CFG_STRING);
     }},
};

}  // namespace

const std::span<const Case> node_cases = rows;

}  // namespace allocation
