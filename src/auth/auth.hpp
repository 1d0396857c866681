// Authentication settings and what else reads and writes them, shared by the files of this folder. The mode
// stands under a key of its own in each place; all other settings are the same everywhere.
#ifndef TW_AUTH_AUTH_HPP
#define TW_AUTH_AUTH_HPP

#include <twobject/auth.h>

#include "record/text_array.hpp"
#include "record/view.hpp"

// There are such settings in several places, which know where: no ID.
struct cfg_auth {
  ::cfg *cfg = nullptr;
  tw::text mode;
  tw::text_array radius_authentication_servers;  // IDs, as those of the other three lists
  tw::text_array radius_accounting_servers;
  tw::secret radius_password;
  tw::text_array tacacs_authentication_servers;
  tw::secret tacacs_password;
  tw::text tacacs_method;
  tw::text tacacs_service;
  tw::text_array ldap_authentication_servers;
  tw::text ldap_base_dn;
  tw::text ldap_bind_dn;
  tw::text ldap_username_attribute;
  tw::text ldap_group_membership_attribute;
  tw::secret ldap_bind_password;
};

namespace tw {

// Reads the settings and server IDs, all but the mode, from the maps of the three protocols below `map`. What
// is missing or of another kind is NULL. False when `map` is no map or memory is short.
bool load_protocols(cfg_auth &auth, cfg_elem *map) noexcept;

// Writes them, all but the servers, to these maps, which are made when they are missing. False at the first
// key that cannot be written; a map that cannot be made is passed over.
bool store_protocols(const cfg_auth &auth, cfg_elem *map) noexcept;

}  // namespace tw

#endif
