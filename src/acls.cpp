// Access-control lists: their names.
#include <twobject/acl.h>

#include "record/boundary.hpp"
#include "record/engine.hpp"
#include "record/tables.hpp"
#include "record/view.hpp"

struct cfg_acl : tw::object_view {
  tw::text aclname;
};

namespace {

constexpr auto aclname = tw::string_row<&cfg_acl::aclname>("aclname");
constexpr tw::load_list load_keys({mandatory(aclname)});
constexpr tw::store_list save_keys({aclname});

constexpr tw::named_list lists[] = {{"acl load", load_keys}, {"acl save", save_keys}};

}  // namespace

const tw::tables tw::acl_tables = lists;

// The name is not taken over: callers set it when they know it, and tell by the missing one that they have
// not.
cfg_acl *cfg_acl_new(cfg *store, const char *name) noexcept {
  return name ? tw::new_view<cfg_acl>(store).release() : nullptr;
}

cfg_acl *cfg_acl_get_by_id(cfg *store, const char *id) noexcept {
  cfg_elem *elem = cfg_get_by_id(store, id);
  auto acl = tw::new_view<cfg_acl>(store, elem);
  return acl && tw::load(load_keys, *acl, elem) ? acl.release() : nullptr;
}

const char *cfg_acl_get_uuid(cfg_acl *acl) noexcept { return acl ? tw::refreshed_uuid(*acl) : nullptr; }

const char *cfg_acl_get_aclname(const cfg_acl *acl) noexcept { return tw::get<&cfg_acl::aclname>(acl); }
int cfg_acl_set_aclname(cfg_acl *acl, const char *name) noexcept {
  return tw::replace<&cfg_acl::aclname>(acl, name);
}

int cfg_acl_save(cfg_acl *acl) noexcept {
  TW_ASSERT(acl && acl->cfg, "src/acls");
  if (!acl->aclname) return 0;  // it could never be loaded again
  cfg_elem *elem = tw::element_to_save(*acl, "acls");
  return elem && tw::store(save_keys, *acl, acl->cfg, elem);
}

void cfg_acl_delete(cfg_acl *acl) noexcept {
  if (acl) cfg_delete_element(acl->cfg, tw::element_of(*acl));
}

void cfg_acl_free(cfg_acl *acl) noexcept { delete acl; }
