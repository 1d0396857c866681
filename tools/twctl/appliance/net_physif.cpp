// twctl net physif: the appliance's network devices.
#include <fmt/format.h>

#include "appliance/networks.hpp"
#include "cli/fields.hpp"
#include "cli/secret_option.hpp"
#include "cli/text.hpp"
#include "commands.hpp"

namespace twctl {

namespace {

constexpr field<cfg_net_physif> fields[] = {
    shown_text<cfg_net_physif_get_id>("id", "ID"),
    text_field<cfg_net_physif_get_name, cfg_net_physif_set_name, require_label>("name", "Name"),
    shown_text<cfg_net_physif_get_device>("device", "Device"),
    truth_field<cfg_net_physif_get_enabled, cfg_net_physif_set_enabled>("enabled", "Enabled"),
    text_field<cfg_net_physif_get_description, cfg_net_physif_set_description>("description", "Description"),
    word_field<cfg_net_physif_get_media_type, cfg_net_physif_set_media_type,
               cfg_net_physif_media_type_to_string, CFG_NET_PHYSIF_ETHERNET, CFG_NET_PHYSIF_WIRELESS>(
        "media", "Media"),
    number_field<cfg_net_physif_get_mtu, cfg_net_physif_set_mtu, 0, 65535>("mtu", "MTU"),
    text_field<cfg_net_physif_get_ethernet_link_speed, cfg_net_physif_set_ethernet_link_speed>("link_speed",
                                                                                               "Link speed"),
    text_field<cfg_net_physif_get_wireless_ssid, cfg_net_physif_set_wireless_ssid>("ssid",
                                                                                   "Wireless network"),
    text_field<cfg_net_physif_get_wireless_auth, cfg_net_physif_set_wireless_auth>("auth", "Authentication"),
    text_field<cfg_net_physif_get_wireless_encryption, cfg_net_physif_set_wireless_encryption>("encryption",
                                                                                               "Encryption"),
    text_field<cfg_net_physif_get_wireless_regdomain, cfg_net_physif_set_wireless_regdomain>(
        "regdomain", "Regulatory domain"),
    text_field<cfg_net_physif_get_wireless_config, cfg_net_physif_set_wireless_config>("config",
                                                                                       "Configuration"),
    shown_secret<cfg_net_physif_get_wireless_psk>("psk_set", "Pre-shared key set"),
};

void list(const options &opts) {
  session work(opts, session::access::read);
  listing result("physifs", {{"id", "ID"},
                             {"name", "NAME"},
                             {"device", "DEVICE"},
                             {"enabled", "ENABLED"},
                             {"media", "MEDIA"},
                             {"mtu", "MTU", true}});
  for (const physif_record &one : all_physifs(work.store())) {
    if (!one) throw store_failure(work.store(), "cannot read an interface");
    result.add({cell_of(cfg_net_physif_get_id(one.get())), cell_of(cfg_net_physif_get_name(one.get())),
                cell_of(cfg_net_physif_get_device(one.get())), cfg_net_physif_get_enabled(one.get()) != 0,
                cell_of(cfg_net_physif_media_type_to_string(cfg_net_physif_get_media_type(one.get()))),
                unless_zero(cfg_net_physif_get_mtu(one.get()))});
  }
  result.print(opts);
}

void show(const options &opts, const std::string &reference) {
  session work(opts, session::access::read);
  sheet result;
  show_fields(result, fields, find_physif(work.store(), reference).get());
  result.print(opts);
}

struct set_arguments {
  std::string reference;
  std::vector<std::string> assignments;
  secret_option psk;
};

void set(const options &opts, const set_arguments &arguments) {
  auto values = read_assignments(arguments.assignments, settable(fields), arguments.psk.given());
  session work(opts, session::access::write);
  physif_record one = find_physif(work.store(), arguments.reference);
  set_fields(fields, one.get(), values);
  if (arguments.psk.given())
    require_set(cfg_net_physif_set_wireless_psk(one.get(), arguments.psk.read().c_str()), "psk");
  if (!cfg_net_physif_store(one.get())) throw store_failure(work.store(), "cannot save the interface");
  std::string id = cfg_net_physif_get_id(one.get());
  // An interface that lacks what its medium needs can be stored, but nobody could read it afterwards.
  if (!physif_record(cfg_get_net_physif_by_id(work.store(), id.c_str())))
    throw failure(exit_code::invalid_input, "the interface would be incomplete",
                  "ethernet needs link_speed; wireless needs ssid, auth, encryption, regdomain, config and a "
                  "pre-shared key");
  finish_entry(work, id, cfg_net_physif_get_name(one.get()), "Changed");
}

}  // namespace

physif_record find_physif(cfg *store, const std::string &reference) {
  if (reference.starts_with("system_net_physifs-"))
    if (physif_record one(cfg_get_net_physif_by_id(store, reference.c_str())); one) return one;
  for (physif_record one : all_physifs(store))
    if (view(cfg_net_physif_get_name(one.get())) == reference ||
        view(cfg_net_physif_get_device(one.get())) == reference)
      return one;
  not_found("interface", reference, "net physif");
}

void add_net_physif(CLI::App *net, const options &opts) {
  CLI::App *noun = net->add_subcommand("physif", "Network devices");
  noun->require_subcommand(1);
  constexpr const char *what_an_interface_is = "ID, name or device of an interface";

  CLI::App *verb = add_verb(noun, "list", "List the appliance's interfaces",
                            "  twctl net physif list\n  twctl net physif list -o json");
  verb->callback([&opts] { list(opts); });

  auto reference = std::make_shared<std::string>();
  verb = add_verb(noun, "show", "Show one interface", "  twctl net physif show eth0");
  verb->add_option("interface", *reference, what_an_interface_is)->required();
  verb->callback([&opts, reference] { show(opts, *reference); });

  auto arguments = std::make_shared<set_arguments>();
  verb = add_verb(noun, "set", "Change fields of an interface",
                  "  twctl net physif set eth0 mtu=1400 description='Uplink'\n"
                  "  twctl net physif set wlan0 ssid=depot auth=wpa2 --psk-file ./psk\n"
                  "  twctl net physif set eth1 enabled=no --dry-run\n"
                  "\nFields: " +
                      joined(settable(fields)));
  verb->add_option("interface", arguments->reference, what_an_interface_is)->required();
  verb->add_option("assignments", arguments->assignments, "FIELD=VALUE ...");
  add_secret(verb, arguments->psk, "psk", "Pre-shared key of the wireless network", false);
  verb->callback([&opts, arguments] { set(opts, *arguments); });
}

}  // namespace twctl
