// twctl ntp: how the appliance's clock is set.
#include <fmt/format.h>

#include "cli/fields.hpp"
#include "cli/text.hpp"
#include "commands.hpp"

namespace twctl {

namespace {

/// The settings; those of a store without them are made, in the handle's edit, when `make` says so.
ntp_record load(cfg *store, bool make) {
  ntp_record ntp(cfg_get_ntp(store));
  if (make && !cfg_get_ntp_id(ntp.get())) {
    if (!cfg_ntp_save(ntp.get()))
      throw store_failure(store, "cannot make the settings (is there a map 'services'?)");
    ntp.reset(cfg_get_ntp(store));
  }
  return ntp;
}

void show(const options &opts) {
  session work(opts, session::access::read);
  ntp_record ntp = load(work.store(), false);
  std::string servers;
  for (int32_t i = 0; i < cfg_get_ntp_server_count(ntp.get()); i++)
    servers += (i ? ";" : "") + take(cfg_get_ntp_server_value(ntp.get(), i));
  sheet result;
  result.add("enabled", "Enabled", cfg_get_ntp_enabled(ntp.get()) != 0);
  result.add("servers", "Servers", unless_empty(servers));
  result.print(opts);
}

void set(const options &opts, const std::vector<std::string> &assignments) {
  bool enabled = require_truth(read_assignments(assignments, {"enabled"}).at("enabled"), "enabled");
  session work(opts, session::access::write);
  ntp_record ntp = load(work.store(), false);
  cfg_set_ntp_enabled(ntp.get(), enabled);
  if (!cfg_ntp_save(ntp.get()))
    throw store_failure(work.store(), "cannot save the settings (is there a map 'services'?)");
  outcome result = work.commit(enabled ? "enable ntp" : "disable ntp");
  sheet details;
  details.add("enabled", "Enabled", enabled);
  work.report(result, enabled ? "The clock is set by NTP." : "The clock is not set by NTP.", details.json());
}

void list_servers(const options &opts) {
  session work(opts, session::access::read);
  ntp_record ntp = load(work.store(), false);
  listing result("servers", {{"id", "ID"}, {"server", "SERVER"}});
  for (int32_t i = 0; i < cfg_get_ntp_server_count(ntp.get()); i++)
    result.add({cell_of(cfg_get_ntp_server_uuid(ntp.get(), i)),
                unless_empty(take(cfg_get_ntp_server_value(ntp.get(), i)))});
  result.print(opts);
}

/// The index of a server by its ID or text; -1 when there is none.
int32_t index_of(const cfg_ntp *ntp, const std::string &reference) {
  for (int32_t i = 0; i < cfg_get_ntp_server_count(ntp); i++)
    if (reference == cfg_get_ntp_server_uuid(ntp, i) || reference == take(cfg_get_ntp_server_value(ntp, i)))
      return i;
  return -1;
}

int32_t find_server(const cfg_ntp *ntp, const std::string &reference) {
  int32_t index = index_of(ntp, reference);
  if (index < 0) not_found("NTP server", reference, "ntp server");
  return index;
}

void require_new(const cfg_ntp *ntp, const std::string &server) {
  require_host(server, "an NTP server");
  int32_t index = index_of(ntp, server);
  if (index >= 0) require_free(cfg_get_ntp_server_uuid(ntp, index), server);
}

void add_server(const options &opts, const std::string &server) {
  session work(opts, session::access::write);
  ntp_record ntp = load(work.store(), true);
  require_new(ntp.get(), server);
  // The call answers 1 whatever becomes of the server: only the edit tells.
  cfg_create_ntp_server(ntp.get(), server.c_str());
  if (!cfg_has_changes(work.store())) throw store_failure(work.store(), "cannot add the server");
  finish_entry(work, "", server, "Added");
}

void set_server(const options &opts, const std::string &reference, const std::string &server) {
  session work(opts, session::access::write);
  ntp_record ntp = load(work.store(), false);
  int32_t index = find_server(ntp.get(), reference);
  std::string id = cfg_get_ntp_server_uuid(ntp.get(), index);
  if (take(cfg_get_ntp_server_value(ntp.get(), index)) != server) require_new(ntp.get(), server);
  if (!cfg_set_ntp_server_value(ntp.get(), index, server.c_str()))
    throw store_failure(work.store(), "cannot change the server");
  finish_entry(work, id, server, "Changed to");
}

void remove_server(const options &opts, const std::string &reference) {
  session work(opts, session::access::write);
  ntp_record ntp = load(work.store(), false);
  int32_t index = find_server(ntp.get(), reference);
  std::string id = cfg_get_ntp_server_uuid(ntp.get(), index);
  std::string server = take(cfg_get_ntp_server_value(ntp.get(), index));
  confirm_delete(opts, fmt::format("the NTP server '{}'", server));
  if (!cfg_delete_ntp_server(ntp.get(), index)) throw store_failure(work.store(), "cannot delete the server");
  finish_entry(work, id, server, "Deleted");
}

void add_server_verbs(CLI::App *ntp, const options &opts) {
  CLI::App *noun = ntp->add_subcommand("server", "The servers that are asked");
  noun->require_subcommand(1);
  constexpr const char *what_a_server_is = "ID or address of a server";
  auto reference = std::make_shared<std::string>();
  auto server = std::make_shared<std::string>();

  CLI::App *verb =
      add_verb(noun, "list", "List servers", "  twctl ntp server list\n  twctl ntp server list -o json");
  verb->callback([&opts] { list_servers(opts); });

  verb = add_verb(noun, "add", "Add a server", "  twctl ntp server add 0.pool.example");
  verb->add_option("server", *server, "IP address or host name")->required();
  verb->callback([&opts, server] { add_server(opts, *server); });

  verb = add_verb(noun, "set", "Put another server into a server's place",
                  "  twctl ntp server set 0.pool.example 10.0.0.1");
  verb->add_option("server", *reference, what_a_server_is)->required();
  verb->add_option("new", *server, "IP address or host name")->required();
  verb->callback([&opts, reference, server] { set_server(opts, *reference, *server); });

  verb = add_verb(noun, "delete", "Delete a server", "  twctl ntp server delete 0.pool.example --yes");
  verb->add_option("server", *reference, what_a_server_is)->required();
  verb->callback([&opts, reference] { remove_server(opts, *reference); });
}

}  // namespace

void add_ntp(CLI::App &program, const options &opts) {
  CLI::App *noun = program.add_subcommand("ntp", "NTP: how the appliance's clock is set");
  noun->require_subcommand(1);

  CLI::App *verb = add_verb(noun, "show", "Show the settings", "  twctl ntp show\n  twctl ntp show -o json");
  verb->callback([&opts] { show(opts); });

  auto assignments = std::make_shared<std::vector<std::string>>();
  verb = add_verb(noun, "set", "Switch NTP on or off", "  twctl ntp set enabled=yes\n\nFields: enabled");
  verb->add_option("assignments", *assignments, "enabled=yes or enabled=no")->required();
  verb->callback([&opts, assignments] { set(opts, *assignments); });

  add_server_verbs(noun, opts);
}

}  // namespace twctl
