// Roles: names that groups refer to.
#include <twobject/role.h>

#include <twconfig/message.h>

#include "record/boundary.hpp"
#include "record/engine.hpp"
#include "record/id_list.hpp"
#include "record/tables.hpp"
#include "record/text_search.hpp"
#include "record/view.hpp"

struct cfg_role : tw::object_view {
  tw::text rolename;
};

struct cfg_role_list : tw::id_list {};

namespace {

constexpr char roles[] = "roles";

constexpr auto rolename = tw::string_row<&cfg_role::rolename>("rolename");
constexpr tw::load_list load_keys({mandatory(rolename)});
constexpr tw::store_list save_keys({rolename});

constexpr tw::named_list lists[] = {{"role load", load_keys}, {"role save", save_keys}};

cfg_role *load(cfg *store, cfg_elem *elem) noexcept {
  auto role = tw::new_view<cfg_role>(store, elem);
  return role && tw::load(load_keys, *role, elem) ? role.release() : nullptr;
}

}  // namespace

const tw::tables tw::role_tables = lists;

cfg_role *cfg_role_new(cfg *store, const char *name) noexcept {
  if (!name) return nullptr;
  auto role = tw::new_view<cfg_role>(store);
  return role && role->rolename.set(name) ? role.release() : nullptr;
}

cfg_role *cfg_role_get_by_id(cfg *store, const char *id) noexcept {
  return load(store, cfg_get_by_id(store, id));
}
cfg_role *cfg_role_get_by_rolename(cfg *store, const char *name) noexcept {
  return load(store, tw::find_by_text(store, roles, load_keys.keys, name));
}

const char *cfg_role_get_uuid(cfg_role *role) noexcept { return role ? tw::refreshed_uuid(*role) : nullptr; }

const char *cfg_role_get_rolename(const cfg_role *role) noexcept {
  return tw::get<&cfg_role::rolename>(role);
}
int cfg_role_set_rolename(cfg_role *role, const char *name) noexcept {
  if (!role) return 0;
  if (name) return tw::replace<&cfg_role::rolename>(role, name);
  cfg_message_add_unexpected(role->cfg, "src/roles", __LINE__);
  return 0;
}

int cfg_role_save(cfg_role *role) noexcept {
  TW_ASSERT(role && role->cfg, "src/roles");
  if (!role->rolename) return 0;  // it could never be loaded again
  cfg_elem *elem = tw::element_to_save(*role, roles);
  return elem && tw::store(save_keys, *role, role->cfg, elem);
}

void cfg_role_delete(cfg_role *role) noexcept {
  if (role) cfg_delete_element(role->cfg, tw::element_of(*role));
}

void cfg_role_free(cfg_role *role) noexcept { delete role; }

cfg_role_list *cfg_role_list_new(cfg *store) noexcept {
  return tw::new_id_list<cfg_role_list>(store, roles).release();
}
int32_t cfg_role_list_count(const cfg_role_list *list) noexcept { return tw::entry_count(list); }
cfg_role *cfg_role_list_get_role(const cfg_role_list *list, int32_t index) noexcept {
  return tw::load_entry(list, index, cfg_role_get_by_id);
}
void cfg_role_list_free(cfg_role_list *list) noexcept { delete list; }
