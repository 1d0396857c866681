#include <twobject.h>

#include "harness.hpp"

namespace test {

class TwctlNodeParts : public twctl_test {
 protected:
  void SetUp() override {
    init();
    run_json({"tag", "add", "Site", "Berlin"});
    run_json({"node", "enroll", "--product", "tarnwell", "--name", "rack-1"});
  }
};

cfg_elem *entry_of(cfg *store, cfg_elem *parent, const char *key) {
  cfg_elem *list = cfg_simple_get_mapelem(store, parent, key), *entry = cfg_new_map(store);
  if (!list) {
    EXPECT_TRUE(cfg_add_mapelem(store, parent, key, list = cfg_new_list(store)));
  }
  EXPECT_TRUE(cfg_add_listelem(store, list, entry));
  return entry;
}

void text_in(cfg *store, cfg_elem *parent, const char *list, const char *text) {
  cfg_elem *texts = cfg_new_list(store);
  EXPECT_TRUE(cfg_add_mapelem(store, parent, list, texts));
  EXPECT_TRUE(cfg_add_listelem(store, texts, cfg_new_string(store, text)));
}

TEST_F(TwctlNodeParts, WhatANodeReportsAndCarriesIsShown) {
  change_store(store_path(), [](cfg *store) {
    cfg_elem *node = cfg_get_by_id(store, "nodes-1");
    cfg_elem *interface = entry_of(store, node, "interfaces");
    cfg_map_set_string(store, interface, "name", "eth0");
    cfg_map_set_string(store, interface, "ipv4_address", "10.0.0.3");
    cfg_elem *user = entry_of(store, node, "users");
    cfg_map_set_string(store, user, "username", "root");
    text_in(store, user, "groups", "admin");
    cfg_elem *group = entry_of(store, node, "groups");
    cfg_map_set_string(store, group, "groupname", "admin");
    text_in(store, group, "roles", "Administrator");
  });
  run_json({"node", "tag", "rack-1", "--add", "Site=Berlin"});
  run_json({"port", "add", "rack-1", "1", "label=router"});
  run_json({"port", "add", "rack-1", "2"});
  json shown = run_json({"node", "show", "rack-1"});
  EXPECT_EQ(shown["tags"].text(), "Site=Berlin");
  EXPECT_EQ(shown["ports"].text(), "1 router;2");
  EXPECT_EQ(shown["interfaces"].text(), "eth0 10.0.0.3");
  EXPECT_EQ(shown["users"].text(), "root (admin)");
  EXPECT_EQ(shown["groups"].text(), "admin (Administrator)");
}

TEST_F(TwctlNodeParts, AuthenticationIsShownWithoutItsPasswords) {
  change_store(store_path(), [](cfg *store) {
    cfg_node *node = cfg_get_node_by_id(store, "nodes-1");
    cfg_node_set_auth_method(node, "RADIUS");
    cfg_node_set_use_remote_groups(node, 1);
    cfg_node_set_radius_authentication_servers(node, "10.0.0.9");
    cfg_node_set_radius_password(node, "kept-to-itself");
    EXPECT_EQ(cfg_node_save_auth(node), 1);
    cfg_node_free(node);
  });
  outcome shown = run({"node", "show", "rack-1", "-o", "json"});
  json node(shown.out);
  EXPECT_EQ(node["auth_method"].text(), "RADIUS");
  EXPECT_TRUE(node["use_remote_groups"].is_true());
  EXPECT_EQ(node["radius_authentication_servers"].text(), "10.0.0.9");
  EXPECT_TRUE(node["radius_password_set"].is_true());
  EXPECT_TRUE(node["ldap_bind_password_set"].is_false());
  EXPECT_EQ((shown.out + shown.err).find("kept-to-itself"), std::string::npos);
}

TEST_F(TwctlNodeParts, ANodeWithoutPartsShowsNone) {
  json shown = run_json({"node", "show", "rack-1"});
  for (const char *part :
       {"tags", "ports", "interfaces", "users", "groups", "auth_method", "use_remote_groups"})
    EXPECT_TRUE(shown[part].is_null()) << part;
}

}  // namespace test
