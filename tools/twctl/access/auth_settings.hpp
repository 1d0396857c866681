// Authentication settings, which the appliance has and templates carry: their fields and their secrets.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "cli/output.hpp"
#include "cli/records.hpp"
#include "cli/secret_option.hpp"

namespace twctl {

/// The secrets that a verb can change.
struct auth_secrets {
  secret_option radius, tacacs, ldap_bind;
  bool given() const { return radius.given() || tacacs.given() || ldap_bind.given(); }
};
void add_auth_secrets(CLI::App *verb, auth_secrets &secrets);

/// The names of the fields that are set by FIELD=VALUE.
std::vector<const char *> auth_field_names();
void show_auth_fields(sheet &result, cfg_auth *auth);
/// Puts fields and secrets into the record, checked.
void set_auth_fields(cfg_auth *auth, const std::map<std::string, std::string> &values,
                     const auth_secrets &secrets);

}  // namespace twctl
