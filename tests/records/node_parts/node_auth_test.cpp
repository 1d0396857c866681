// Authentication settings of nodes.
#include <twobject/node_auth.h>

#include "records/node_fixture.hpp"

namespace {

using records::node_record;

struct auth_field {
  const char *path;  // below "auth"
  int (*set)(cfg_node *, const char *);
  const char *(*get)(const cfg_node *);
};
// In the order in which they are written.
constexpr auth_field fields[] = {
    {"auth_method", cfg_node_set_auth_method, cfg_node_get_auth_method},
    {"auth_type", cfg_node_set_auth_type, cfg_node_get_auth_type},
    {"radius.authenticationServers", cfg_node_set_radius_authentication_servers,
     cfg_node_get_radius_authentication_servers},
    {"radius.accountingServers", cfg_node_set_radius_accounting_servers,
     cfg_node_get_radius_accounting_servers},
    {"radius.password", cfg_node_set_radius_password, cfg_node_get_radius_password},
    {"tacacs.authenticationServers", cfg_node_set_tacacs_authentication_servers,
     cfg_node_get_tacacs_authentication_servers},
    {"tacacs.password", cfg_node_set_tacacs_password, cfg_node_get_tacacs_password},
    {"tacacs.method", cfg_node_set_tacacs_method, cfg_node_get_tacacs_method},
    {"tacacs.service", cfg_node_set_tacacs_service, cfg_node_get_tacacs_service},
    {"ldap.baseDN", cfg_node_set_ldap_base_dn, cfg_node_get_ldap_base_dn},
    {"ldap.bindDN", cfg_node_set_ldap_bind_dn, cfg_node_get_ldap_bind_dn},
    {"ldap.authenticationServers", cfg_node_set_ldap_authentication_servers,
     cfg_node_get_ldap_authentication_servers},
    {"ldap.usernameAttribute", cfg_node_set_ldap_username_attribute, cfg_node_get_ldap_username_attribute},
    {"ldap.groupMembershipAttribute", cfg_node_set_ldap_group_attribute, cfg_node_get_ldap_group_attribute},
    {"ldap.bindPassword", cfg_node_set_ldap_bind_password, cfg_node_get_ldap_bind_password},
};

class NodeAuth : public records::NodeTest {
 protected:
  cfg_elem *map_of(cfg_elem *auth, const std::string &path) {
    const std::size_t dot = path.find('.');
    if (dot == std::string::npos) return auth;
    const std::string key = path.substr(0, dot);
    cfg_elem *map = cfg_simple_get_mapelem(store, auth, key.c_str());
    return map != nullptr ? map : child_map(auth, key.c_str());
  }
  static std::string last_key(const std::string &path) { return path.substr(path.find('.') + 1); }
  // "nodes-1" with every setting.
  void add_full_node(const char *product) {
    cfg_elem *auth = child_map(add_node("n", product), "auth");
    for (const auth_field &field : fields)
      set(map_of(auth, field.path), last_key(field.path).c_str(), (std::string("the ") + field.path).c_str());
    set_bool(auth, "use_remote_groups", true);
    set(map_of(auth, "ldap."), "password", "plain");
    commit_and_reopen();
  }
  cfg_elem *auth() { return cfg_simple_get_mapelem(store, cfg_get_by_id(store, "nodes-1"), "auth"); }
  std::string stored(const char *path) { return dump(cfg_get_child_by_path(store, auth(), path)); }
};

TEST_F(NodeAuth, EveryFieldIsReadFromItsKey) {
  add_full_node("tarnwell");
  const node_record node = load("nodes-1");
  for (const auth_field &field : fields)
    EXPECT_EQ(std::string("the ") + field.path, field.get(node.get())) << field.path;
  EXPECT_EQ(1, cfg_node_get_use_remote_groups(node.get()));
}

TEST_F(NodeAuth, OtherProductsHaveNone) {
  for (const char *product : {"generic", "cisco2900", static_cast<const char *>(nullptr)}) {
    cfg_map_delete_key(store, cfg_root(store), "nodes");
    add_full_node(product);
    const node_record node(cfg_get_node_by_idx(store, 0));
    for (const auth_field &field : fields) EXPECT_EQ(nullptr, field.get(node.get())) << field.path;
    EXPECT_EQ(0, cfg_node_get_use_remote_groups(node.get()));
  }
}

TEST_F(NodeAuth, WhatIsNoTextOrNoMapReadsAsAbsent) {
  cfg_elem *elem = add_node("n", "tarnwell");
  cfg_elem *auth = child_map(elem, "auth");
  set(auth, "auth_method", 1);
  set(auth, "use_remote_groups", "yes");
  set(auth, "radius", "text");
  child_list(auth, "tacacs");
  set(child_map(auth, "ldap"), "baseDN", 5);
  set(map_of(auth, "ldap."), "bindDN", "dn");
  node_record node = load(elem);
  ASSERT_NE(nullptr, node);
  for (const auth_field &field : fields) {
    if (std::string(field.path) == "ldap.bindDN")
      EXPECT_STREQ("dn", field.get(node.get()));
    else
      EXPECT_EQ(nullptr, field.get(node.get())) << field.path;
  }
  EXPECT_EQ(0, cfg_node_get_use_remote_groups(node.get()));
  set(elem, "auth", "text");
  node = load(elem);
  ASSERT_NE(nullptr, node);
  EXPECT_EQ(nullptr, cfg_node_get_ldap_bind_dn(node.get()));
}

TEST_F(NodeAuth, SettersKeepACopyAndClear) {
  const node_record node(cfg_new_node(store));
  for (const auth_field &field : fields) {
    SCOPED_TRACE(field.path);
    std::string text = "first";
    EXPECT_EQ(1, field.set(node.get(), text.c_str()));
    text = "changed";
    EXPECT_STREQ("first", field.get(node.get()));
    EXPECT_EQ(1, field.set(node.get(), field.get(node.get()))) << "the pointer that the field holds";
    EXPECT_STREQ("first", field.get(node.get()));
    EXPECT_EQ(1, field.set(node.get(), nullptr));
    EXPECT_EQ(nullptr, field.get(node.get()));
    EXPECT_EQ(1, field.set(node.get(), field.path));
    EXPECT_EQ(1, field.set(node.get(), ""));
    EXPECT_EQ(nullptr, field.get(node.get()));
    EXPECT_EQ(1, field.set(node.get(), field.path));
  }
  for (const auth_field &field : fields) EXPECT_STREQ(field.path, field.get(node.get()));
  EXPECT_EQ(1, cfg_node_set_use_remote_groups(node.get(), 9));
  EXPECT_EQ(1, cfg_node_get_use_remote_groups(node.get()));
  EXPECT_EQ(1, cfg_node_set_use_remote_groups(node.get(), 0));
  EXPECT_EQ(0, cfg_node_get_use_remote_groups(node.get()));
}

TEST_F(NodeAuth, OfNoNodeIsNothing) {
  for (const auth_field &field : fields) {
    EXPECT_EQ(nullptr, field.get(nullptr)) << field.path;
    EXPECT_EQ(0, field.set(nullptr, "text")) << field.path;
  }
  EXPECT_EQ(0, cfg_node_get_use_remote_groups(nullptr));
  EXPECT_EQ(0, cfg_node_set_use_remote_groups(nullptr, 1));
  EXPECT_EQ(0, cfg_node_save_auth(nullptr));
}

TEST_F(NodeAuth, ASaveWritesEveryFieldAndLeavesTheRest) {
  add_full_node("tarnwell");
  set(map_of(auth(), "radius."), "timeout", 5);
  const node_record node = load("nodes-1");
  for (const auth_field &field : fields) field.set(node.get(), "new");
  cfg_node_set_use_remote_groups(node.get(), 0);
  ASSERT_EQ(1, cfg_node_save_auth(node.get()));
  EXPECT_EQ(
      "{auth_method=\"new\" auth_type=\"new\" ldap={authenticationServers=\"new\" baseDN=\"new\" "
      "bindDN=\"new\" bindPassword=\"new\" groupMembershipAttribute=\"new\" password=\"plain\" "
      "usernameAttribute=\"new\"} radius={accountingServers=\"new\" authenticationServers=\"new\" "
      "password=\"new\" timeout=5} tacacs={authenticationServers=\"new\" method=\"new\" password=\"new\" "
      "service=\"new\"} use_remote_groups=false}",
      dump(auth()));
}

TEST_F(NodeAuth, ASaveDeletesTheKeysOfClearedFields) {
  add_full_node("tarnwell");
  const node_record node = load("nodes-1");
  for (const auth_field &field : fields) field.set(node.get(), "");
  ASSERT_EQ(1, cfg_node_save_auth(node.get()));
  EXPECT_EQ("{ldap={password=\"plain\"} radius={} tacacs={} use_remote_groups=true}", dump(auth()));
}

TEST_F(NodeAuth, ASaveMakesTheMapsThatAreMissing) {
  add_node("n", "tarnwell");
  commit_and_reopen();
  const node_record node = load("nodes-1");
  cfg_node_set_radius_password(node.get(), "secret");
  ASSERT_EQ(1, cfg_node_save_auth(node.get()));
  EXPECT_EQ("{ldap={} radius={password=\"secret\"} tacacs={} use_remote_groups=false}", dump(auth()));
  commit_and_reopen();
  EXPECT_STREQ("secret", cfg_node_get_radius_password(load("nodes-1").get()));
}

TEST_F(NodeAuth, ASaveEndsAtTheFirstWriteThatFails) {
  add_full_node("tarnwell");
  for (const auth_field &failing : fields) {
    SCOPED_TRACE(failing.path);
    cfg_abandon(store);
    const node_record node = load("nodes-1");
    for (const auth_field &field : fields) field.set(node.get(), "new");
    cfg_node_set_use_remote_groups(node.get(), 0);
    failing.set(node.get(), records::unwritable().c_str());
    EXPECT_EQ(0, cfg_node_save_auth(node.get()));
    bool written = true;
    for (const auth_field &field : fields) {
      if (field.path == failing.path) written = false;
      EXPECT_EQ(written, stored(field.path) == "\"new\"") << field.path;
      if (std::string(field.path) != "auth_type") continue;
      EXPECT_EQ(written ? "false" : "true", stored("use_remote_groups")) << "it follows the type";
    }
  }
}

TEST_F(NodeAuth, ASaveFailsWithoutElementAndWhenAMapIsNone) {
  const node_record fresh(cfg_new_node(store));
  EXPECT_EQ(0, cfg_node_save_auth(fresh.get()));
  add_full_node("tarnwell");
  const node_record node = load("nodes-1");
  for (const char *key : {"radius", "tacacs", "ldap"}) {
    cfg_abandon(store);
    set(auth(), key, "text");
    EXPECT_EQ(0, cfg_node_save_auth(node.get())) << key;
    EXPECT_EQ("\"text\"", stored(key));
  }
  cfg_abandon(store);
  cfg_delete_element(store, cfg_get_by_id(store, "nodes-1"));
  EXPECT_EQ(0, cfg_node_save_auth(node.get()));
}

}  // namespace
