// Authentication settings that the record of another family carries: a template's. They read and write more
// than the public functions of the settings do, so the family that has them lends this out.
#ifndef TW_RECORD_AUTH_SETTINGS_HPP
#define TW_RECORD_AUTH_SETTINGS_HPP

#include <twobject/auth.h>

#include <memory>

namespace tw {

struct auth_release {
  void operator()(cfg_auth *auth) const noexcept { cfg_auth_free(auth); }
};
using owned_auth = std::unique_ptr<cfg_auth, auth_release>;

// Empty settings; NULL without memory.
owned_auth new_auth(cfg *store) noexcept;
// The settings below a map; NULL when it is no map and without memory.
owned_auth load_auth(cfg *store, cfg_elem *map) noexcept;
// Writes them there, up to the first value that is not taken.
void store_auth(const cfg_auth &auth, cfg_elem *map) noexcept;

}  // namespace tw

#endif
