#include <cstring>

#include "allocation/cases.hpp"

namespace allocation {
namespace {

// A part of a node that was read with it; it is there whatever memory there is.
template <class Get>
void slot(Get get) {
  sweep(get, [](World &, auto *part) { return part != nullptr; });
}

// ---- Interfaces and users ----

bool whole(cfg_node_interface *record) {
  if (!record) return false;
  EXPECT_STREQ(cfg_node_interface_get_uuid(record), "nodes-1_interfaces-2");
  EXPECT_STREQ(cfg_node_interface_get_node_uuid(record), kTarnwell);
  EXPECT_STREQ(cfg_node_interface_get_ipv4_addr(record), "second ipv4_address");
  return true;
}

void interface_by_id() {
  sweep([](World &w) { return cfg_get_node_interface_by_id(w.store, "nodes-1_interfaces-2"); },
        [](World &, cfg_node_interface *record) {
          const bool there = whole(record);
          cfg_node_interface_free(record);
          return there;
        });
}

void new_interface() {
  sweep([](World &w) { return cfg_new_node_interface(w.store); },
        [](World &, cfg_node_interface *record) {
          const bool made = record != nullptr;
          cfg_node_interface_free(record);
          return made;
        });
}

void free_interface() {
  sweep(
      [](World &w) {
        cfg_node_interface_free(cfg_new_node_interface(w.store));
        return 1;
      },
      gives(1));
}

// No function hands out a user that is the caller's.
void free_user() {
  sweep(
      [](World &) {
        cfg_node_user_free(nullptr);
        return 1;
      },
      gives(1));
}

// ---- Groups ----

cfg_node_group *second(const World &w) { return cfg_node_get_node_group(w.node, 1); }

void set_description() {
  sweep([](World &w) { return cfg_node_group_set_description(second(w), kNew); },
        [](World &w, int done) {
          if (done) EXPECT_STREQ(cfg_node_group_get_description(second(w)), kNew);
          return done == 1;
        });
}

void add_role() {
  sweep([](World &w) { return cfg_node_group_add_role(second(w), kNew); },
        [](World &w, int done) {
          EXPECT_EQ(cfg_node_group_get_role_count(second(w)), done ? 3 : 2);
          if (done) EXPECT_STREQ(cfg_node_group_get_role(second(w), 2), kNew);
          return done == 1;
        });
}

void new_group() {
  sweep([](World &w) { return cfg_node_new_group(w.node, kNew); },
        [](World &w, cfg_node_group *group) {
          EXPECT_EQ(cfg_node_get_node_group_count(w.node), group ? 3 : 2);
          if (group) EXPECT_STREQ(cfg_node_group_get_groupname(group), kNew);
          return group != nullptr;
        });
}

void delete_group() {
  sweep(
      [](World &w) {
        cfg_node_group *group = second(w);
        const int done = cfg_node_delete_group(w.node, group);
        if (done) cfg_node_group_free(group);
        return done;
      },
      gives(1));
}

void free_group() {
  sweep(
      [](World &w) {
        cfg_node_group *group = second(w);
        if (!cfg_node_delete_group(w.node, group)) return 0;
        cfg_node_group_free(group);
        return cfg_node_get_node_group_count(w.node);
      },
      gives(int32_t{1}));
}

// Single writes may fail without the save failing: then the groups are not all there.
void save_groups() {
  sweep([](World &w) { return cfg_node_save_groups(w.node); },
        [](World &w, int saved) {
          if (!saved) return false;
          cfg_node *again = cfg_get_node_by_id(w.store, kTarnwell);
          const char *role = cfg_node_group_get_role(cfg_node_get_node_group(again, 1), 2);
          const bool complete = role && std::strcmp(role, kNew) == 0 &&
                                cfg_node_group_get_groupname(cfg_node_get_node_group(again, 0)) &&
                                cfg_node_group_get_system(cfg_node_get_node_group(again, 1)) == 1;
          cfg_node_free(again);
          return complete;
        },
        [](World &w) { EXPECT_EQ(cfg_node_group_add_role(second(w), kNew), 1); });
}

// ---- Tags ----

template <class Get>
void tag(Get get) {
  sweep(get, [](World &, cfg_tag_value *value) {
    if (value) EXPECT_STREQ(tag_value_get_value(value), "northern sites");
    const bool there = value != nullptr;
    cfg_tag_value_free(value);
    return there;
  });
}

void save_tag() {
  sweep([](World &w) { return cfg_node_save_tag(w.node, w.tag_value); },
        [](World &w, int done) {
          int32_t pending = -1;
          EXPECT_TRUE(cfg_list_future_size(
              cfg_simple_get_mapelem(w.store, cfg_get_by_id(w.store, kTarnwell), "tags"), &pending));
          EXPECT_EQ(pending, done);
          return done == 1;
        });
}

// ---- Authentication ----

void save_auth() {
  sweep([](World &w) { return cfg_node_save_auth(w.node); },
        [](World &w, int saved) {
          if (!saved) return false;
          cfg_node *again = cfg_get_node_by_id(w.store, kTarnwell);
          EXPECT_STREQ(cfg_node_get_ldap_bind_password(again), kNew);
          EXPECT_STREQ(cfg_node_get_tacacs_service(again), "tacacs's service");
          const bool removed = !cfg_node_get_radius_password(again);
          cfg_node_free(again);
          return removed;
        },
        [](World &w) {
          EXPECT_EQ(cfg_node_set_ldap_bind_password(w.node, kNew), 1);
          EXPECT_EQ(cfg_node_set_radius_password(w.node, nullptr), 1);
        });
}

void save_auth_that_makes_maps() {
  sweep(
      [](World &w) { return cfg_node_save_auth(w.node); },
      [](World &w, int saved) {
        if (!saved) return false;
        cfg_node *again = cfg_get_node_by_id(w.store, kTarnwell);
        EXPECT_STREQ(cfg_node_get_radius_password(again), "radius's password");
        EXPECT_STREQ(cfg_node_get_ldap_bind_password(again), "ldap's bindPassword");
        cfg_node_free(again);
        return true;
      },
      [](World &w) { EXPECT_TRUE(cfg_map_delete_key(w.store, cfg_get_by_id(w.store, kTarnwell), "auth")); });
}

constexpr auto kNode = &World::node;

const Case rows[] = {
    {"cfg_get_node_interface_by_id", interface_by_id},
    {"cfg_new_node_interface", new_interface},
    {"cfg_node_delete_group", delete_group},
    {"cfg_node_delete_tag",
     [] { sweep([](World &w) { return cfg_node_delete_tag(w.store, "nodes-1_tags-1"); }, gives(1)); }},
    {"cfg_node_get_auth_method", [] { text_getter(cfg_node_get_auth_method, kNode, "the auth_method"); }},
    {"cfg_node_get_auth_type", [] { text_getter(cfg_node_get_auth_type, kNode, "the auth_type"); }},
    {"cfg_node_get_interface", [] { slot([](World &w) { return cfg_node_get_interface(w.node, 1); }); }},
    {"cfg_node_get_interface_count",
     [] { sweep([](World &w) { return cfg_node_get_interface_count(w.node); }, gives(int32_t{2})); }},
    {"cfg_node_get_ldap_authentication_servers",
     [] { text_getter(cfg_node_get_ldap_authentication_servers, kNode, "ldap's authenticationServers"); }},
    {"cfg_node_get_ldap_base_dn", [] { text_getter(cfg_node_get_ldap_base_dn, kNode, "ldap's baseDN"); }},
    {"cfg_node_get_ldap_bind_dn", [] { text_getter(cfg_node_get_ldap_bind_dn, kNode, "ldap's bindDN"); }},
    {"cfg_node_get_ldap_bind_password",
     [] { text_getter(cfg_node_get_ldap_bind_password, kNode, "ldap's bindPassword"); }},
    {"cfg_node_get_ldap_group_attribute",
     [] { text_getter(cfg_node_get_ldap_group_attribute, kNode, "ldap's groupMembershipAttribute"); }},
    {"cfg_node_get_ldap_username_attribute",
     [] { text_getter(cfg_node_get_ldap_username_attribute, kNode, "ldap's usernameAttribute"); }},
    {"cfg_node_get_node_group", [] { slot([](World &w) { return cfg_node_get_node_group(w.node, 1); }); }},
    {"cfg_node_get_node_group_count",
     [] { sweep([](World &w) { return cfg_node_get_node_group_count(w.node); }, gives(int32_t{2})); }},
    {"cfg_node_get_node_user", [] { slot([](World &w) { return cfg_node_get_node_user(w.node, 1); }); }},
    {"cfg_node_get_node_user_count",
     [] { sweep([](World &w) { return cfg_node_get_node_user_count(w.node); }, gives(int32_t{2})); }},
    {"cfg_node_get_radius_accounting_servers",
     [] { text_getter(cfg_node_get_radius_accounting_servers, kNode, "radius's accountingServers"); }},
    {"cfg_node_get_radius_authentication_servers",
     [] {
       text_getter(cfg_node_get_radius_authentication_servers, kNode, "radius's authenticationServers");
     }},
    {"cfg_node_get_radius_password",
     [] { text_getter(cfg_node_get_radius_password, kNode, "radius's password"); }},
    {"cfg_node_get_tacacs_authentication_servers",
     [] {
       text_getter(cfg_node_get_tacacs_authentication_servers, kNode, "tacacs's authenticationServers");
     }},
    {"cfg_node_get_tacacs_method", [] { text_getter(cfg_node_get_tacacs_method, kNode, "tacacs's method"); }},
    {"cfg_node_get_tacacs_password",
     [] { text_getter(cfg_node_get_tacacs_password, kNode, "tacacs's password"); }},
    {"cfg_node_get_tacacs_service",
     [] { text_getter(cfg_node_get_tacacs_service, kNode, "tacacs's service"); }},
    {"cfg_node_get_tag", [] { tag([](World &w) { return cfg_node_get_tag(w.node, 0); }); }},
    {"cfg_node_get_tag_by_ref_uuid",
     [] { tag([](World &w) { return cfg_node_get_tag_by_ref_uuid(w.node, "nodes-1_tags-1"); }); }},
    {"cfg_node_get_tag_count",
     [] { sweep([](World &w) { return cfg_node_get_tag_count(w.node); }, gives(int32_t{1})); }},
    {"cfg_node_get_tag_ref_uuid",
     [] {
       sweep([](World &w) { return cfg_node_get_tag_ref_uuid(w.node, 0); }, gives_text("nodes-1_tags-1"));
     }},
    {"cfg_node_get_tag_ref_uuid_by_value",
     [] {
       sweep([](World &w) { return cfg_node_get_tag_ref_uuid_by_value(w.node, w.tag_value); },
             gives_text("nodes-1_tags-1"));
     }},
    {"cfg_node_get_use_remote_groups", [] { number_getter(cfg_node_get_use_remote_groups, kNode, 1); }},
    {"cfg_node_group_add_role", add_role},
    {"cfg_node_group_free", free_group},
    {"cfg_node_group_get_description",
     [] {
       sweep([](World &w) { return cfg_node_group_get_description(cfg_node_get_node_group(w.node, 1)); },
             gives_text("second description"));
     }},
    {"cfg_node_group_get_groupname",
     [] {
       sweep([](World &w) { return cfg_node_group_get_groupname(cfg_node_get_node_group(w.node, 1)); },
             gives_text("second groupname"));
     }},
    {"cfg_node_group_get_role",
     [] {
       sweep([](World &w) { return cfg_node_group_get_role(cfg_node_get_node_group(w.node, 1), 0); },
             gives_text("second of all"));
     }},
    {"cfg_node_group_get_role_count",
     [] {
       sweep([](World &w) { return cfg_node_group_get_role_count(cfg_node_get_node_group(w.node, 1)); },
             gives(int32_t{2}));
     }},
    {"cfg_node_group_get_system",
     [] {
       sweep([](World &w) { return cfg_node_group_get_system(cfg_node_get_node_group(w.node, 1)); },
             gives(int32_t{1}));
     }},
    {"cfg_node_group_set_description", set_description},
    {"cfg_node_group_set_system",
     [] {
       sweep([](World &w) { return cfg_node_group_set_system(cfg_node_get_node_group(w.node, 1), 0); },
             gives(1));
     }},
    {"cfg_node_interface_free", free_interface},
    {"cfg_node_interface_get_ipv4_addr",
     [] {
       sweep([](World &w) { return cfg_node_interface_get_ipv4_addr(cfg_node_get_interface(w.node, 1)); },
             gives_text("second ipv4_address"));
     }},
    {"cfg_node_interface_get_ipv6_addr",
     [] {
       sweep([](World &w) { return cfg_node_interface_get_ipv6_addr(cfg_node_get_interface(w.node, 1)); },
             gives_text("second ipv6_address"));
     }},
    {"cfg_node_interface_get_name",
     [] {
       sweep([](World &w) { return cfg_node_interface_get_name(cfg_node_get_interface(w.node, 1)); },
             gives_text("second name"));
     }},
    {"cfg_node_interface_get_node_uuid",
     [] {
       sweep([](World &w) { return cfg_node_interface_get_node_uuid(cfg_node_get_interface(w.node, 1)); },
             gives_text("nodes-1"));
     }},
    {"cfg_node_interface_get_uuid",
     [] {
       sweep([](World &w) { return cfg_node_interface_get_uuid(cfg_node_get_interface(w.node, 1)); },
             gives_text("nodes-1_interfaces-2"));
     }},
    {"cfg_node_new_group", new_group},
    {"cfg_node_save_auth",
     [] {
       save_auth();
       save_auth_that_makes_maps();
     }},
    {"cfg_node_save_groups", save_groups},
    {"cfg_node_save_tag", save_tag},
    {"cfg_node_set_auth_method",
     [] { text_setter(cfg_node_set_auth_method, cfg_node_get_auth_method, kNode); }},
    {"cfg_node_set_auth_type", [] { text_setter(cfg_node_set_auth_type, cfg_node_get_auth_type, kNode); }},
    {"cfg_node_set_ldap_authentication_servers",
     [] {
       text_setter(cfg_node_set_ldap_authentication_servers, cfg_node_get_ldap_authentication_servers, kNode);
     }},
    {"cfg_node_set_ldap_base_dn",
     [] { text_setter(cfg_node_set_ldap_base_dn, cfg_node_get_ldap_base_dn, kNode); }},
    {"cfg_node_set_ldap_bind_dn",
     [] { text_setter(cfg_node_set_ldap_bind_dn, cfg_node_get_ldap_bind_dn, kNode); }},
    {"cfg_node_set_ldap_bind_password",
     [] { text_setter(cfg_node_set_ldap_bind_password, cfg_node_get_ldap_bind_password, kNode); }},
    {"cfg_node_set_ldap_group_attribute",
     [] { text_setter(cfg_node_set_ldap_group_attribute, cfg_node_get_ldap_group_attribute, kNode); }},
    {"cfg_node_set_ldap_username_attribute",
     [] { text_setter(cfg_node_set_ldap_username_attribute, cfg_node_get_ldap_username_attribute, kNode); }},
    {"cfg_node_set_radius_accounting_servers",
     [] {
       text_setter(cfg_node_set_radius_accounting_servers, cfg_node_get_radius_accounting_servers, kNode);
     }},
    {"cfg_node_set_radius_authentication_servers",
     [] {
       text_setter(cfg_node_set_radius_authentication_servers, cfg_node_get_radius_authentication_servers,
                   kNode);
     }},
    {"cfg_node_set_radius_password",
     [] { text_setter(cfg_node_set_radius_password, cfg_node_get_radius_password, kNode); }},
    {"cfg_node_set_tacacs_authentication_servers",
     [] {
       text_setter(cfg_node_set_tacacs_authentication_servers, cfg_node_get_tacacs_authentication_servers,
                   kNode);
     }},
    {"cfg_node_set_tacacs_method",
     [] { text_setter(cfg_node_set_tacacs_method, cfg_node_get_tacacs_method, kNode); }},
    {"cfg_node_set_tacacs_password",
     [] { text_setter(cfg_node_set_tacacs_password, cfg_node_get_tacacs_password, kNode); }},
    {"cfg_node_set_tacacs_service",
     [] { text_setter(cfg_node_set_tacacs_service, cfg_node_get_tacacs_service, kNode); }},
    {"cfg_node_set_use_remote_groups",
     [] { sweep([](World &w) { return cfg_node_set_use_remote_groups(w.node, 0); }, gives(1)); }},
    {"cfg_node_update_tag",
     [] {
       sweep([](World &w) { return cfg_node_update_tag(w.store, "nodes-1_tags-1", w.tag_value); }, gives(1));
     }},
    {"cfg_node_user_free", free_user},
    {"cfg_node_user_get_description",
     [] {
       sweep([](World &w) { return cfg_node_user_get_description(cfg_node_get_node_user(w.node, 1)); },
             gives_text("second description"));
     }},
    {"cfg_node_user_get_disabled",
     [] {
       sweep([](World &w) { return cfg_node_user_get_disabled(cfg_node_get_node_user(w.node, 1)); },
             gives(int32_t{1}));
     }},
    {"cfg_node_user_get_group",
     [] {
       sweep([](World &w) { return cfg_node_user_get_group(cfg_node_get_node_user(w.node, 1), 0); },
             gives_text("second of all"));
     }},
    {"cfg_node_user_get_group_count",
     [] {
       sweep([](World &w) { return cfg_node_user_get_group_count(cfg_node_get_node_user(w.node, 1)); },
             gives(int32_t{2}));
     }},
    {"cfg_node_user_get_username",
     [] {
       sweep([](World &w) { return cfg_node_user_get_username(cfg_node_get_node_user(w.node, 1)); },
             gives_text("second username"));
     }},
};

}  // namespace

const std::span<const Case> node_part_cases = rows;

}  // namespace allocation
