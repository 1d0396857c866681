// twctl net endpoint: the addresses at which nodes reach the appliance from outside.
#include <fmt/format.h>

#include "cli/fields.hpp"
#include "cli/text.hpp"
#include "commands.hpp"

namespace twctl {

namespace {

/// Sets a port; nothing takes it away, and its key with the next save.
template <auto Set, auto Delete>
void write_port(cfg_net_external_endpoint *endpoint, const std::string &text, const std::string &name) {
  require_set(text.empty() ? Delete(endpoint) : Set(endpoint, require_number(text, name, 1, 65535)), name);
}

constexpr field<cfg_net_external_endpoint> fields[] = {
    shown_text<cfg_net_external_endpoint_get_uuid>("id", "ID"),
    text_field<cfg_net_external_endpoint_get_address, cfg_net_external_endpoint_set_address, require_host>(
        "address", "Address"),
    {"api_port", "API port",
     [](cfg_net_external_endpoint *one) { return unless_zero(cfg_net_external_endpoint_get_api_port(one)); },
     write_port<cfg_net_external_endpoint_set_api_port, cfg_net_external_endpoint_delete_api_port>},
    {"vpn_port", "VPN port",
     [](cfg_net_external_endpoint *one) { return unless_zero(cfg_net_external_endpoint_get_vpn_port(one)); },
     write_port<cfg_net_external_endpoint_set_vpn_port, cfg_net_external_endpoint_delete_vpn_port>},
};

std::vector<endpoint_record> all_endpoints(cfg *store) {
  std::vector<endpoint_record> records;
  endpoint_list ids(cfg_net_get_external_endpoint_list(store));
  for (int32_t i = 0; i < cfg_net_external_endpoint_count(ids.get()); i++) {
    records.emplace_back(
        cfg_net_get_external_endpoint_by_id(store, cfg_net_get_external_endpoint(ids.get(), i)));
    if (!records.back()) throw store_failure(store, "cannot read an endpoint");
  }
  return records;
}

endpoint_record with_address(cfg *store, const std::string &address) {
  for (endpoint_record &one : all_endpoints(store))
    if (view(cfg_net_external_endpoint_get_address(one.get())) == address) return std::move(one);
  return nullptr;
}

endpoint_record find_endpoint(cfg *store, const std::string &reference) {
  endpoint_record one;
  if (reference.starts_with("system_net_external_endpoints-"))
    one.reset(cfg_net_get_external_endpoint_by_id(store, reference.c_str()));
  if (!one) one = with_address(store, reference);
  return require_found(std::move(one), "endpoint", reference, "net endpoint");
}

void require_new(cfg *store, const std::string &address) {
  require_free(cfg_net_external_endpoint_get_uuid(with_address(store, address).get()), address);
}

void list(const options &opts) {
  session work(opts, session::access::read);
  listing result(
      "endpoints",
      {{"id", "ID"}, {"address", "ADDRESS"}, {"api_port", "API PORT", true}, {"vpn_port", "VPN PORT", true}});
  for (const endpoint_record &one : all_endpoints(work.store())) list_fields(result, fields, one.get());
  result.print(opts);
}

void show(const options &opts, const std::string &reference) {
  session work(opts, session::access::read);
  sheet result;
  show_fields(result, fields, find_endpoint(work.store(), reference).get());
  result.print(opts);
}

void save(session &work, cfg_net_external_endpoint *one, const char *done) {
  if (!cfg_net_external_endpoint_save(one))
    throw store_failure(work.store(),
                        "cannot save the endpoint (is there a list 'system.net.external_endpoints'?)");
  finish_entry(work, cfg_net_external_endpoint_get_uuid(one), cfg_net_external_endpoint_get_address(one),
               done);
}

/// A new endpoint saves a port that was not given as 0: its key must go.
void add(const options &opts, const std::string &address, const std::vector<std::string> &assignments) {
  auto values = read_assignments(assignments, {"api_port", "vpn_port"}, true);
  values.emplace("address", address);
  for (const char *port : {"api_port", "vpn_port"}) values.emplace(port, "");
  session work(opts, session::access::write);
  require_new(work.store(), address);
  endpoint_record one(cfg_net_external_endpoint_new(work.store()));
  set_fields(fields, one.get(), values);
  save(work, one.get(), "Added");
}

void set(const options &opts, const std::string &reference, const std::vector<std::string> &assignments) {
  auto values = read_assignments(assignments, settable(fields));
  session work(opts, session::access::write);
  endpoint_record one = find_endpoint(work.store(), reference);
  if (auto address = values.find("address");
      address != values.end() && address->second != view(cfg_net_external_endpoint_get_address(one.get())))
    require_new(work.store(), address->second);
  // A port that is not there reads as 0, and would be saved as that.
  if (!cfg_net_external_endpoint_get_api_port(one.get())) values.emplace("api_port", "");
  if (!cfg_net_external_endpoint_get_vpn_port(one.get())) values.emplace("vpn_port", "");
  set_fields(fields, one.get(), values);
  save(work, one.get(), "Changed");
}

void remove(const options &opts, const std::string &reference) {
  session work(opts, session::access::write);
  endpoint_record one = find_endpoint(work.store(), reference);
  std::string id = cfg_net_external_endpoint_get_uuid(one.get());
  std::string address(view(cfg_net_external_endpoint_get_address(one.get())));
  confirm_delete(opts, fmt::format("the endpoint '{}'", address));
  if (!cfg_net_external_endpoint_delete(one.get()))
    throw store_failure(work.store(), "cannot delete the endpoint");
  finish_entry(work, id, address, "Deleted");
}

}  // namespace

void add_net_endpoint(CLI::App *net, const options &opts) {
  CLI::App *noun = net->add_subcommand("endpoint", "Addresses at which nodes reach the appliance");
  noun->require_subcommand(1);
  constexpr const char *what_an_endpoint_is = "ID or address of an endpoint";

  CLI::App *verb = add_verb(noun, "list", "List endpoints",
                            "  twctl net endpoint list\n  twctl net endpoint list -o json");
  verb->callback([&opts] { list(opts); });

  auto reference = std::make_shared<std::string>();
  verb = add_verb(noun, "show", "Show one endpoint", "  twctl net endpoint show hub.example");
  verb->add_option("endpoint", *reference, what_an_endpoint_is)->required();
  verb->callback([&opts, reference] { show(opts, *reference); });

  auto assignments = std::make_shared<std::vector<std::string>>();
  verb = add_verb(noun, "add", "Add an endpoint",
                  "  twctl net endpoint add hub.example\n"
                  "  twctl net endpoint add 203.0.113.9 api_port=8443 vpn_port=1194");
  verb->add_option("address", *reference, "IP address or host name")->required();
  verb->add_option("assignments", *assignments, "api_port=PORT, vpn_port=PORT");
  verb->callback([&opts, reference, assignments] { add(opts, *reference, *assignments); });

  verb = add_verb(noun, "set", "Change an endpoint",
                  "  twctl net endpoint set hub.example api_port=443\n"
                  "  twctl net endpoint set hub.example vpn_port=      (an empty value clears the field)\n"
                  "\nFields: " +
                      joined(settable(fields)));
  verb->add_option("endpoint", *reference, what_an_endpoint_is)->required();
  verb->add_option("assignments", *assignments, "FIELD=VALUE ...")->required();
  verb->callback([&opts, reference, assignments] { set(opts, *reference, *assignments); });

  verb = add_verb(noun, "delete", "Delete an endpoint", "  twctl net endpoint delete hub.example --yes");
  verb->add_option("endpoint", *reference, what_an_endpoint_is)->required();
  verb->callback([&opts, reference] { remove(opts, *reference); });
}

}  // namespace twctl
