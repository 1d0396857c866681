// twctl auth server and twctl template server: the servers that are asked whether a login is right, those of
// the appliance and those of a template.
#include <fmt/format.h>

#include "cli/fields.hpp"
#include "cli/text.hpp"
#include "commands.hpp"
#include "pushes/templates.hpp"

namespace twctl {

namespace {

/// A list of servers: what is typed for it, where it stands, and how the library reads it.
struct server_kind {
  const char *name;
  const char *parent;  ///< key, in "auth", of the map that holds the list
  const char *list;
  int32_t (*count)(const cfg_auth *);
  cfg_auth_server *(*get)(const cfg_auth *, int32_t);
};

constexpr server_kind kinds[] = {
    {"radius", "radius", "authenticationServers", cfg_auth_get_radiusAuthenticationServerCount,
     cfg_auth_get_radiusAuthenticationServer},
    {"radius-accounting", "radius", "accountingServers", cfg_auth_get_radiusAccountingServerCount,
     cfg_auth_get_radiusAccountingServer},
    {"tacacs", "tacacs", "authenticationServers", cfg_auth_get_tacacsAuthenticationServerCount,
     cfg_auth_get_tacacsAuthenticationServer},
    {"ldap", "ldap", "authenticationServers", cfg_auth_get_ldapAuthenticationServerCount,
     cfg_auth_get_ldapAuthenticationServer},
};

std::vector<std::string> kind_names() {
  std::vector<std::string> names;
  for (const server_kind &kind : kinds) names.emplace_back(kind.name);
  return names;
}

/// The kind of a name that the command line has checked.
const server_kind &kind_named(const std::string &name) {
  for (const server_kind &kind : kinds)
    if (name == kind.name) return kind;
  throw failure(exit_code::usage, fmt::format("there is no kind '{}'", printable(name)));
}

/// Settings, and the map in the store that they stand in.
struct place {
  auth_record own;          ///< the appliance's settings, or
  template_record carrier;  ///< the template that has others
  cfg_auth *auth = nullptr;
  cfg_elem *map = nullptr;
};

/// The settings of the template that is named, or the appliance's own.
place find_place(cfg *store, const std::string &carrier) {
  place found;
  if (carrier.empty()) {
    found.own.reset(cfg_get_auth(store));
    found.auth = found.own.get();
    found.map = cfg_get_by_path(store, "auth");
    if (!found.auth)
      throw failure(exit_code::not_found, "the store has no map 'auth'", "", "'twctl init' makes it");
  } else {
    found.carrier = find_template(store, carrier);
    found.auth = cfg_template_get_auth(found.carrier.get());
    found.map = cfg_get_by_id(store, cfg_template_get_uuid(found.carrier.get()));
    if (!found.auth)
      throw failure(exit_code::invalid_input,
                    fmt::format("'{}' is no template of authentication settings", printable(carrier)));
  }
  return found;
}

/// A server of a kind by its ID or host name; empty when there is none.
auth_server_record look_up(const cfg_auth *auth, const server_kind &kind, const std::string &reference) {
  for (int32_t i = 0; i < kind.count(auth); i++) {
    auth_server_record one(kind.get(auth, i));
    if (reference == view(cfg_auth_get_server_uuid(one.get())) ||
        reference == view(cfg_auth_get_server_hostname(one.get())))
      return one;
  }
  return nullptr;
}

auth_server_record find_server(const cfg_auth *auth, const server_kind &kind, const std::string &reference) {
  return require_found(look_up(auth, kind, reference), fmt::format("{} server", kind.name).c_str(), reference,
                       "auth server");
}

void require_new(const cfg_auth *auth, const server_kind &kind, const std::string &hostname) {
  require_host(hostname, "hostname");
  require_free(cfg_auth_get_server_uuid(look_up(auth, kind, hostname).get()), hostname);
}

/// The port that an assignment gives; 0, which stands for none, for nothing.
int32_t port_of(const std::string &text) { return text.empty() ? 0 : require_number(text, "port", 1, 65535); }

void list(const options &opts, const std::string &carrier, const std::string &only) {
  session work(opts, session::access::read);
  place where = find_place(work.store(), carrier);
  listing result("servers", {{"id", "ID"}, {"kind", "KIND"}, {"hostname", "HOST"}, {"port", "PORT", true}});
  for (const server_kind &kind : kinds) {
    if (!only.empty() && only != kind.name) continue;
    for (int32_t i = 0; i < kind.count(where.auth); i++) {
      auth_server_record one(kind.get(where.auth, i));
      if (!one) throw store_failure(work.store(), "cannot read a server");
      result.add({cell_of(cfg_auth_get_server_uuid(one.get())), cell_of(kind.name),
                  cell_of(cfg_auth_get_server_hostname(one.get())),
                  unless_zero(cfg_auth_get_server_port(one.get()))});
    }
  }
  result.print(opts);
}

struct change_arguments {
  std::string carrier, kind, reference;
  std::vector<std::string> assignments;
};

/// The map that holds a kind's list; one that is missing is made.
cfg_elem *parent_of(cfg *store, cfg_elem *map, const server_kind &kind) {
  cfg_elem *parent = cfg_simple_get_mapelem(store, map, kind.parent);
  if (parent) return parent;
  parent = cfg_new_map(store);
  if (!cfg_add_mapelem(store, map, kind.parent, parent))
    throw store_failure(store, fmt::format("cannot add the map '{}'", kind.parent));
  return parent;
}

void add(const options &opts, const change_arguments &arguments) {
  auto values = read_assignments(arguments.assignments, {"port"}, true);
  const server_kind &kind = kind_named(arguments.kind);
  session work(opts, session::access::write);
  place where = find_place(work.store(), arguments.carrier);
  require_new(where.auth, kind, arguments.reference);
  int32_t port = port_of(values["port"]);
  if (!cfg_auth_create_server(where.auth, parent_of(work.store(), where.map, kind), kind.list,
                              arguments.reference.c_str(), port, port == 0))
    throw store_failure(work.store(), "cannot add the server");
  finish_entry(work, "", arguments.reference, "Added");
}

void set(const options &opts, const change_arguments &arguments) {
  auto values = read_assignments(arguments.assignments, {"hostname", "port"});
  const server_kind &kind = kind_named(arguments.kind);
  session work(opts, session::access::write);
  place where = find_place(work.store(), arguments.carrier);
  auth_server_record one = find_server(where.auth, kind, arguments.reference);
  if (auto name = values.find("hostname"); name != values.end()) {
    if (name->second != view(cfg_auth_get_server_hostname(one.get())))
      require_new(where.auth, kind, name->second);
    require_set(cfg_auth_set_server_hostname(one.get(), name->second.c_str()), "hostname");
  }
  if (auto port = values.find("port"); port != values.end())
    require_set(cfg_auth_set_server_port(one.get(), port_of(port->second)), "port");
  if (!cfg_auth_update_server(one.get(), cfg_auth_get_server_port(one.get()) == 0))
    throw store_failure(work.store(), "cannot save the server");
  finish_entry(work, cfg_auth_get_server_uuid(one.get()), cfg_auth_get_server_hostname(one.get()), "Changed");
}

void remove(const options &opts, const change_arguments &arguments) {
  session work(opts, session::access::write);
  place where = find_place(work.store(), arguments.carrier);
  auth_server_record one = find_server(where.auth, kind_named(arguments.kind), arguments.reference);
  std::string id = cfg_auth_get_server_uuid(one.get());
  std::string name(view(cfg_auth_get_server_hostname(one.get())));
  confirm_delete(opts, fmt::format("the {} server '{}'", arguments.kind, name));
  if (!cfg_auth_delete_server(one.get())) throw store_failure(work.store(), "cannot delete the server");
  finish_entry(work, id, name, "Deleted");
}

}  // namespace

void add_auth_server(CLI::App *parent, const options &opts, bool in_template) {
  CLI::App *noun = parent->add_subcommand("server", "The servers that are asked");
  noun->require_subcommand(1);
  constexpr const char *what_a_server_is = "ID or host name of a server";
  CLI::IsMember is_kind(kind_names());
  std::string command = in_template ? "  twctl template server {} 'Branch logins'" : "  twctl auth server {}";
  auto example = [&](const char *verb, const char *arguments) {
    return fmt::format(fmt::runtime(command), verb) + arguments;
  };
  auto arguments = std::make_shared<change_arguments>();
  auto begin = [&](const char *name, const char *what, const std::string &examples) {
    CLI::App *verb = add_verb(noun, name, what, examples);
    if (in_template)
      verb->add_option("template", arguments->carrier, "ID or name of a template of the kind auth")
          ->required();
    return verb;
  };

  auto only = std::make_shared<std::string>();
  CLI::App *verb =
      begin("list", "List servers", example("list", "\n") + example("list", " --kind ldap -o json"));
  verb->add_option("--kind", *only, "Only these")->check(is_kind);
  verb->callback([&opts, arguments, only] { list(opts, arguments->carrier, *only); });

  verb = begin("add", "Add a server",
               example("add", " radius 10.0.0.9\n") + example("add", " ldap ldap.example port=636"));
  verb->add_option("kind", arguments->kind, "What it is asked for")->required()->check(is_kind);
  verb->add_option("hostname", arguments->reference, "IP address or host name")->required();
  verb->add_option("assignments", arguments->assignments, "port=PORT");
  verb->callback([&opts, arguments] { add(opts, *arguments); });

  verb =
      begin("set", "Change a server",
            example("set", " ldap ldap.example hostname=ldap2.example port=\n") + "\nFields: hostname, port");
  verb->add_option("kind", arguments->kind, "What it is asked for")->required()->check(is_kind);
  verb->add_option("server", arguments->reference, what_a_server_is)->required();
  verb->add_option("assignments", arguments->assignments, "FIELD=VALUE ...")->required();
  verb->callback([&opts, arguments] { set(opts, *arguments); });

  verb = begin("delete", "Delete a server", example("delete", " radius 10.0.0.9 --yes"));
  verb->add_option("kind", arguments->kind, "What it is asked for")->required()->check(is_kind);
  verb->add_option("server", arguments->reference, what_a_server_is)->required();
  verb->callback([&opts, arguments] { remove(opts, *arguments); });
}

}  // namespace twctl
