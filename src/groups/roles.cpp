// The roles of a group: references in the store, written and read at once.
#include <twconfig/message.h>
#include <twconfig/read.h>
#include <twobject/role.h>

#include <cstring>

#include "groups/group.hpp"
#include "record/memory_watch.hpp"

namespace {

constexpr char global_roles[] = "global_roles";
constexpr char smart_group[] = "smart_group";
constexpr char role_ref[] = "ref";              // in the map "global_roles"
constexpr char smart_role_ref[] = "roles_ref";  // in the map "smart_group"
constexpr char smart_group_ref[] = "ref";

struct role_release {
  void operator()(cfg_role *role) const noexcept { cfg_role_free(role); }
};
using owned_role = std::unique_ptr<cfg_role, role_release>;

// The committed role of this name, or a new one, which joins the roles.
owned_role need_role(cfg *store, const char *name) noexcept {
  const tw::memory_watch memory;
  owned_role role(cfg_role_get_by_rolename(store, name));
  if (role || memory.ran_short()) return role;
  role.reset(cfg_role_new(store, name));
  return role && cfg_role_save(role.get()) ? std::move(role) : nullptr;
}

// The ID that a reference holds in one of the group's maps, borrowed from the store; NULL without it.
const char *referred(const cfg_group *group, const char *map, const cfg_keyset &key) noexcept {
  cfg_value reference;
  if (!group || !cfg_child_read(tw::element_of(*group), map, &key, &reference)) return nullptr;
  return reference.kind == CFG_REFERENCE ? reference.data : nullptr;
}

constexpr const char *role_keys[] = {role_ref};
constexpr const char *smart_role_keys[] = {smart_role_ref};
constexpr const char *smart_group_keys[] = {smart_group_ref};
constexpr cfg_keyset to_role{role_keys, 1};
constexpr cfg_keyset to_smart_role{smart_role_keys, 1};
constexpr cfg_keyset to_smart_group{smart_group_keys, 1};

char *copy(const char *text) noexcept { return text ? strdup(text) : nullptr; }

char *role_name(const cfg_group *group, const char *map, const cfg_keyset &key) noexcept {
  const char *id = referred(group, map, key);
  const owned_role role(id ? cfg_role_get_by_id(group->cfg, id) : nullptr);
  return copy(cfg_role_get_rolename(role.get()));
}

}  // namespace

// Whether there is a group to attach it to is not asked: callers that set up a group's roles before they save
// it rely on the role being there afterwards, and set it again.
int cfg_group_set_global_roles(cfg_group *group, const char *rolename) noexcept {
  if (!group || !group->cfg) return 0;
  cfg *store = group->cfg;
  if (!rolename) {
    cfg_message_add_unexpected(store, "src/groups", __LINE__);
    return 0;
  }
  const tw::memory_watch memory;
  const owned_role role = need_role(store, rolename);
  if (!role) return 0;
  cfg_elem *map = cfg_new_map(store);
  if (cfg_map_set_reference(store, map, role_ref, cfg_role_get_uuid(role.get())))
    cfg_add_mapelem(store, tw::element_of(*group), global_roles, map);
  return !memory.ran_short();
}

int cfg_group_set_smart_group_roles(cfg_group *group, const char *rolename, const char *smart) noexcept {
  if (!group || !group->cfg) return 0;
  cfg *store = group->cfg;
  if (!rolename || !smart) {
    cfg_message_add_unexpected(store, "src/groups", __LINE__);
    return 0;
  }
  if (!cfg_get_by_id(store, smart)) return 0;
  const owned_role role = need_role(store, rolename);
  cfg_elem *elem = role ? tw::element_of(*group) : nullptr;
  if (!elem) return 0;
  cfg_elem *map = cfg_new_map(store);
  return cfg_map_set_reference(store, map, smart_role_ref, cfg_role_get_uuid(role.get())) &&
         cfg_map_set_reference(store, map, smart_group_ref, smart) &&
         cfg_add_mapelem(store, elem, smart_group, map);
}

char *cfg_group_get_global_roles(const cfg_group *group) noexcept {
  return role_name(group, global_roles, to_role);
}
char *cfg_group_get_smart_group_roles(const cfg_group *group) noexcept {
  return role_name(group, smart_group, to_smart_role);
}
char *cfg_group_get_smart_group(const cfg_group *group) noexcept {
  return copy(referred(group, smart_group, to_smart_group));
}
