// twctl auth: how logins are checked.
#include <fmt/format.h>

#include "access/auth_settings.hpp"
#include "cli/entries.hpp"
#include "cli/failure.hpp"
#include "commands.hpp"

namespace twctl {

namespace {

void show(const options &opts) {
  session work(opts, session::access::read);
  auth_record auth(cfg_get_auth(work.store()));
  if (!auth) throw failure(exit_code::not_found, "the store has no map 'auth'");
  sheet result;
  show_auth_fields(result, auth.get());
  result.print(opts);
}

struct set_arguments {
  std::vector<std::string> assignments;
  auth_secrets secrets;
};

void set(const options &opts, const set_arguments &arguments) {
  auto values = read_assignments(arguments.assignments, auth_field_names(), arguments.secrets.given());
  session work(opts, session::access::write);
  auth_record auth(cfg_get_auth(work.store()));
  if (!auth) throw failure(exit_code::not_found, "the store has no map 'auth'", "", "'twctl init' makes it");
  set_auth_fields(auth.get(), values, arguments.secrets);
  if (!cfg_auth_update(auth.get())) throw store_failure(work.store(), "cannot save the settings");
  outcome result = work.commit("change the authentication settings");
  work.report(result, "Changed the authentication settings.");
}

}  // namespace

void add_auth(CLI::App &program, const options &opts) {
  CLI::App *noun = program.add_subcommand("auth", "Authentication: how logins are checked, and by whom");
  noun->require_subcommand(1);

  CLI::App *verb =
      add_verb(noun, "show", "Show the settings", "  twctl auth show\n  twctl auth show -o json");
  verb->callback([&opts] { show(opts); });

  auto arguments = std::make_shared<set_arguments>();
  verb = add_verb(noun, "set", "Change the settings",
                  "  twctl auth set mode=radius --radius-password\n"
                  "  twctl auth set mode=ldap ldap_base_dn=dc=lab,dc=example ldap_username_attribute=uid\n"
                  "  twctl auth set tacacs_service= --clear-tacacs-password --dry-run\n"
                  "\nFields: " +
                      joined(auth_field_names()));
  verb->add_option("assignments", arguments->assignments, "FIELD=VALUE ...");
  add_auth_secrets(verb, arguments->secrets);
  verb->callback([&opts, arguments] { set(opts, *arguments); });

  add_auth_server(noun, opts, false);
}

}  // namespace twctl
