#include "access/auth_settings.hpp"

#include "cli/fields.hpp"

namespace twctl {

namespace {

constexpr field<cfg_auth> fields[] = {
    text_field<cfg_auth_get_mode, cfg_auth_set_mode>("mode", "Mode"),
    shown_secret<cfg_auth_get_radiusPassword>("radius_password_set", "RADIUS password set"),
    shown_secret<cfg_auth_get_tacacsPassword>("tacacs_password_set", "TACACS+ password set"),
    text_field<cfg_auth_get_tacacsMethod, cfg_auth_set_tacacsMethod>("tacacs_method", "TACACS+ method"),
    text_field<cfg_auth_get_tacacsService, cfg_auth_set_tacacsService>("tacacs_service", "TACACS+ service"),
    text_field<cfg_auth_get_ldapBaseDN, cfg_auth_set_ldapBaseDN>("ldap_base_dn", "LDAP base DN"),
    text_field<cfg_auth_get_ldapBindDN, cfg_auth_set_ldapBindDN>("ldap_bind_dn", "LDAP bind DN"),
    shown_secret<cfg_auth_get_ldapBindPassword>("ldap_bind_password_set", "LDAP bind password set"),
    text_field<cfg_auth_get_ldapUsernameAttribute, cfg_auth_set_ldapUsernameAttribute>(
        "ldap_username_attribute", "LDAP user name attribute"),
    text_field<cfg_auth_get_ldapGroupMembershipAttribute, cfg_auth_set_ldapGroupMembershipAttribute>(
        "ldap_group_attribute", "LDAP group attribute"),
};

void set_secret(cfg_auth *auth, const secret_option &option, int (*set)(cfg_auth *, const char *)) {
  if (!option.given()) return;
  secret text = option.read();
  // Without a secret its key is to go, not to hold an empty text.
  require_set(set(auth, text.empty() ? nullptr : text.c_str()), option.name);
}

}  // namespace

void add_auth_secrets(CLI::App *verb, auth_secrets &secrets) {
  add_secret(verb, secrets.radius, "radius-password", "Secret shared with the RADIUS servers");
  add_secret(verb, secrets.tacacs, "tacacs-password", "Secret shared with the TACACS+ servers");
  add_secret(verb, secrets.ldap_bind, "ldap-bind-password", "Password of the LDAP bind DN");
}

std::vector<const char *> auth_field_names() { return settable(fields); }

void show_auth_fields(sheet &result, cfg_auth *auth) { show_fields(result, fields, auth); }

void set_auth_fields(cfg_auth *auth, const std::map<std::string, std::string> &values,
                     const auth_secrets &secrets) {
  set_fields(fields, auth, values);
  set_secret(auth, secrets.radius, cfg_auth_set_radiusPassword);
  set_secret(auth, secrets.tacacs, cfg_auth_set_tacacsPassword);
  set_secret(auth, secrets.ldap_bind, cfg_auth_set_ldapBindPassword);
}

}  // namespace twctl
