// Enrollment bundles: making, loading, saving, getters and setters.
#include "bundles/bundle.hpp"

#include "record/boundary.hpp"
#include "record/engine.hpp"
#include "record/owned_condition.hpp"
#include "record/tables.hpp"

namespace {

constexpr auto name_row = tw::string_row<&cfg_bundle::name>("name");
constexpr auto token_row = tw::string_row<&cfg_bundle::token>("token");
constexpr auto auto_approve_row = tw::bool_row<&cfg_bundle::auto_approve>("auto_approve");

constexpr tw::load_list load_keys({name_row, token_row, auto_approve_row});
constexpr tw::store_list save_keys({name_row, token_row, auto_approve_row});

constexpr tw::named_list lists[] = {{"bundle load", load_keys}, {"bundle save", save_keys}};

// A bundle joins its list at once, unlike other records: whoever makes it lists it and enrols nodes with it
// in the same edit.
cfg_elem *make_element(cfg_bundle &bundle) noexcept {
  cfg *store = bundle.cfg;
  cfg_elem *list = cfg_get_by_path(store, "enrollment.bundles");
  cfg_elem *elem = list ? cfg_new_map(store) : nullptr;
  tw::text id;
  if (!tw::take_uuid(id, elem) || !tw::need_list(store, elem, "automatic_tags") ||
      !cfg_add_listelem(store, list, elem))
    return nullptr;
  bundle.uuid = std::move(id);
  return elem;
}

}  // namespace

const tw::tables tw::bundle_tables = lists;

cfg_bundle *cfg_bundle_new(cfg *store, const char *name, const char *token, int32_t auto_approve) noexcept {
  if (!name || !token) return nullptr;
  auto bundle = tw::new_view<cfg_bundle>(store);
  if (!bundle || !bundle->name.set(name) || !bundle->token.set(token)) return nullptr;
  bundle->auto_approve = auto_approve != 0;
  return bundle.release();
}

cfg_bundle *cfg_bundle_get_by_id(cfg *store, const char *id) noexcept {
  cfg_elem *elem = cfg_get_by_id(store, id);
  auto bundle = tw::new_view<cfg_bundle>(store, elem);
  return bundle && tw::load(load_keys, *bundle, elem) ? bundle.release() : nullptr;
}

cfg_bundle *cfg_bundle_get_by_name(cfg *store, const char *name) noexcept {
  const tw::owned_condition named(cfg_new_string_condition("name", CFG_OP_EQUAL, name));
  if (!named) return nullptr;
  return cfg_bundle_get_by_id(store,
                              cfg_get_listelem(cfg_search(store, "enrollment_bundles", named.get()), 0));
}

int cfg_bundle_save(cfg_bundle *bundle) noexcept {
  TW_ASSERT(bundle && bundle->cfg, "src/bundles");
  cfg_elem *elem = bundle->uuid ? tw::element_of(*bundle) : make_element(*bundle);
  return elem && tw::store(save_keys, *bundle, bundle->cfg, elem) && tw::store_templates(*bundle, elem);
}

int cfg_bundle_delete(cfg_bundle *bundle) noexcept {
  return bundle && cfg_delete_element(bundle->cfg, tw::element_of(*bundle));
}

void cfg_bundle_free(cfg_bundle *bundle) noexcept { delete bundle; }

const char *cfg_bundle_get_uuid(cfg_bundle *bundle) noexcept {
  return bundle ? tw::refreshed_uuid(*bundle) : nullptr;
}

const char *cfg_bundle_get_name(const cfg_bundle *bundle) noexcept {
  return tw::get<&cfg_bundle::name>(bundle);
}
int cfg_bundle_set_name(cfg_bundle *bundle, const char *name) noexcept {
  return name && tw::replace<&cfg_bundle::name>(bundle, name);
}

const char *cfg_bundle_get_token(const cfg_bundle *bundle) noexcept {
  return tw::get<&cfg_bundle::token>(bundle);
}
int cfg_bundle_set_token(cfg_bundle *bundle, const char *token) noexcept {
  return token && tw::replace<&cfg_bundle::token>(bundle, token);
}

int32_t cfg_bundle_get_auto_approve(const cfg_bundle *bundle) noexcept {
  return tw::get<&cfg_bundle::auto_approve>(bundle);
}
int cfg_bundle_set_auto_approve(cfg_bundle *bundle, int32_t auto_approve) noexcept {
  return tw::set<&cfg_bundle::auto_approve>(bundle, auto_approve != 0);
}
