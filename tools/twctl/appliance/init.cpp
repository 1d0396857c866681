// twctl init: a new store, ready for the appliance's services.
#include <fmt/format.h>

#include "appliance/ca.hpp"
#include "appliance/layout.hpp"
#include "cli/failure.hpp"
#include "cli/session.hpp"
#include "cli/text.hpp"
#include "commands.hpp"

namespace twctl {

namespace {

constexpr size_t longest_common_name = 64;

void require_empty(cfg *store, const options &opts) {
  int32_t keys = 0;
  if (!cfg_map_keys(cfg_root(store), nullptr, &keys)) throw store_failure(store, "cannot read the store");
  if (keys != 0)
    throw failure(
        exit_code::conflict, fmt::format("the store '{}' is initialised already", printable(opts.store)),
        "it holds a configuration", "use another --store, or 'twctl store status' to look at this one");
}

void store_authority(cfg *store, const std::string &common_name) {
  static constexpr std::string_view first_serial = "01\n";
  authority ca = make_authority(common_name);
  cfg_elem *map = cfg_get_by_path(store, "services.ca");
  if (!cfg_map_set_blob(store, map, "key", ca.key.data(), ca.key.size()) ||
      !cfg_map_set_blob(store, map, "certificate", ca.certificate.data(), ca.certificate.size()) ||
      !cfg_map_set_blob(store, map, "serial", first_serial.data(), first_serial.size()))
    throw store_failure(store, "cannot store the certificate authority");
}

void init(const options &opts, const std::string &common_name) {
  if (trim(common_name).empty() || common_name.size() > longest_common_name || !is_utf8(common_name) ||
      has_control(common_name))
    throw failure(exit_code::invalid_input, "the authority's subject cannot be used",
                  fmt::format("it must be 1 to {} printable characters", longest_common_name));
  session work(opts, session::access::create);
  require_empty(work.store(), opts);
  lay_out(work.store());
  store_authority(work.store(), common_name);
  outcome result = work.commit("initialise the store");
  sheet details;
  details.add("store", "Store", opts.store);
  details.add("ca_subject", "CA subject", "CN = " + common_name);
  work.report(result,
              fmt::format("Initialised the store '{}' with the certificate authority '{}'.",
                          printable(opts.store), common_name),
              details.json());
}

}  // namespace

void add_init(CLI::App &program, const options &opts) {
  auto common_name = std::make_shared<std::string>("Appliance Node CA");
  CLI::App *verb =
      add_verb(&program, "init", "Create a store with its base layout and a certificate authority",
               "  twctl init --store ./store\n"
               "  twctl init --ca-subject 'Lab Node CA' --reason 'new appliance'");
  verb->add_option("--ca-subject", *common_name, "Common name of the certificate authority")
      ->capture_default_str();
  verb->callback([&opts, common_name] { init(opts, *common_name); });
}

}  // namespace twctl
