// The settings that a template carries, below the template's map.
#include "auth/auth.hpp"
#include "record/auth_settings.hpp"
#include "record/engine.hpp"
#include "record/tables.hpp"

namespace {

// Not "mode": a template has had a key of its own from the start, and stored templates keep it.
constexpr auto mode = tw::string_row<&cfg_auth::mode>("auth_mode");

constexpr tw::load_list load_mode({lenient(mode)});
constexpr tw::store_list save_mode({mode});

constexpr tw::named_list lists[] = {
    {"auth load, of a template", load_mode},
    {"auth save, of a template", save_mode},
};

}  // namespace

const tw::tables tw::carried_auth_tables = lists;

tw::owned_auth tw::new_auth(cfg *store) noexcept { return owned_auth(new_view<cfg_auth>(store).release()); }

tw::owned_auth tw::load_auth(cfg *store, cfg_elem *map) noexcept {
  owned_auth auth = new_auth(store);
  if (!auth || !load(load_mode, *auth, map) || !load_protocols(*auth, map)) return nullptr;
  return auth;
}

void tw::store_auth(const cfg_auth &auth, cfg_elem *map) noexcept {
  // Settings without a mode are not finished, and nodes must not get the half of them: what is stored stays.
  if (auth.mode && store(save_mode, auth, auth.cfg, map)) store_protocols(auth, map);
}
