// Users, groups and roles in a store, and records of them that free themselves.
#ifndef TW_TESTS_RECORDS_ACCESS_ACCESS_FIXTURE_HPP
#define TW_TESTS_RECORDS_ACCESS_ACCESS_FIXTURE_HPP

#include <twobject.h>

#include "records/store_fixture.hpp"

namespace records {

struct free_record {
  void operator()(cfg_user *user) const { cfg_user_free(user); }
  void operator()(cfg_user_list *list) const { cfg_user_list_free(list); }
  void operator()(cfg_group *group) const { cfg_group_free(group); }
  void operator()(cfg_group_list *list) const { cfg_group_list_free(list); }
  void operator()(cfg_group_member_list *list) const { cfg_group_member_list_free(list); }
  void operator()(cfg_role *role) const { cfg_role_free(role); }
  void operator()(cfg_role_list *list) const { cfg_role_list_free(list); }
  void operator()(cfg_acl *acl) const { cfg_acl_free(acl); }
  void operator()(cfg_auth *auth) const { cfg_auth_free(auth); }
  void operator()(cfg_auth_server *server) const { cfg_auth_server_free(server); }
};
template <class Record>
using owned = std::unique_ptr<Record, free_record>;

class AccessTest : public StoreTest {
 protected:
  /** A committed user or group (once the edit is) with nothing but a name. */
  cfg_elem *add_user(const char *name) { return named("users", "username", name); }
  cfg_elem *add_group(const char *name) { return named("groups", "groupname", name); }
  cfg_elem *add_role(const char *name) { return named("roles", "rolename", name); }
  /** A list of references under a key. */
  void add_references(cfg_elem *map, const char *key, std::initializer_list<const char *> ids) {
    cfg_elem *list = child_list(map, key);
    for (const char *id : ids) add(list, cfg_new_reference(store, id));
  }

  owned<cfg_user> user(const std::string &id) {
    return owned<cfg_user>(cfg_user_get_by_id(store, id.c_str()));
  }
  owned<cfg_group> group(const std::string &id) {
    return owned<cfg_group>(cfg_group_get_by_id(store, id.c_str()));
  }
  owned<cfg_user> new_user(const char *name) { return owned<cfg_user>(cfg_user_new(store, name)); }
  owned<cfg_group> new_group(const char *name) { return owned<cfg_group>(cfg_group_new(store, name)); }

  /** All groups of a user, from where the record's cursor stands. */
  static std::vector<std::string> groups_of(cfg_user *user) {
    std::vector<std::string> ids;
    for (int32_t left = cfg_user_get_groups_count(user); left > 0; --left)
      ids.emplace_back(cfg_user_get_group(user));
    return ids;
  }
  /** The names of a group's members; "?" for one that cannot be loaded. */
  static std::vector<std::string> members_of(cfg_group *group) {
    std::vector<std::string> names;
    const owned<cfg_group_member_list> list(cfg_group_member_list_new(group));
    for (int32_t i = 0; i < cfg_group_get_member_count(list.get()); ++i) {
      const owned<cfg_user> member(cfg_group_member_list_get_user(list.get(), i));
      names.emplace_back(member ? cfg_user_get_username(member.get()) : "?");
    }
    return names;
  }
  /** The edit's messages: the source file of each "unexpected" one, "code N" of others. */
  std::vector<std::string> messages() {
    std::vector<std::string> sources;
    for (int32_t i = 0; i < cfg_get_message_count(store); ++i) {
      const cfg_message *message = cfg_get_message(store, i);
      const int32_t code = cfg_message_get_code(message);
      sources.push_back(code == CFG_MESSAGE_UNEXPECTED ? cfg_message_get_arg(message, 0)
                                                       : "code " + std::to_string(code));
    }
    return sources;
  }

 private:
  cfg_elem *named(const char *list, const char *key, const char *name) {
    cfg_elem *entry = entry_of(list);
    set(entry, key, name);
    return entry;
  }
};

using texts = std::vector<std::string>;

}  // namespace records

#endif
