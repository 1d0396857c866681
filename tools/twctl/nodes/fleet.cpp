// twctl fleet: many console servers at once.
#include <fmt/format.h>

#include <algorithm>

#include "cli/failure.hpp"
#include "cli/progress.hpp"
#include "cli/session.hpp"
#include "cli/text.hpp"
#include "commands.hpp"
#include "nodes/inventory.hpp"

namespace twctl {

namespace {

struct import_arguments {
  std::string file, role, username, password_file;
  bool approved = false, progress = false;
};

[[noreturn]] void refuse(const options &opts, const inventory &source, const fleet &checked,
                         const std::string &file) {
  if (opts.json()) {
    json_value errors = new_array();
    for (const remark &one : checked.problems) {
      json_value error = new_object();
      put(error.get(), source.unit, static_cast<int64_t>(one.where));
      put(error.get(), "message", one.text);
      append(errors.get(), std::move(error));
    }
    json_value result = new_object();
    put(result.get(), "errors", std::move(errors));
    print_json(result);
  } else {
    for (const remark &one : checked.problems)
      fmt::print(stderr, "{} {}: {}\n", source.unit, one.where, one.text);
  }
  throw failure(exit_code::invalid_input, fmt::format("nothing was imported from '{}'", printable(file)),
                fmt::format("{} problem{} found", checked.problems.size(),
                            checked.problems.size() == 1 ? " was" : "s were"),
                "correct the file and import it again");
}

void import(const options &opts, const import_arguments &arguments) {
  import_defaults defaults{arguments.role, arguments.username, {}, arguments.approved};
  if (!arguments.password_file.empty())
    defaults.password = read_password(arguments.password_file, "Password");
  inventory source = read_inventory(arguments.file);
  session work(opts, session::access::write);
  if (!source.ignored_columns.empty()) {
    std::string names;
    for (const std::string &name : source.ignored_columns)
      names += (names.empty() ? "" : ", ") + printable(name);
    work.note(fmt::format("Columns that nodes have no use for: {}", names));
  }
  fleet checked = check_inventory(source, defaults, read_known_nodes(work.store()));
  if (!checked.problems.empty()) refuse(opts, source, checked, arguments.file);

  std::vector<enrollment_record> enrolled;
  {
    progress shown("Importing", checked.devices.size(), arguments.progress);
    for (const fleet::member &one : checked.devices) {
      enrolled.push_back(enroll(work.store(), one.description));
      shown.step();
    }
  }
  outcome result = work.commit(fmt::format("import {} nodes", enrolled.size()));
  auto call_in = [](const fleet::member &one) { return one.description.kind->how == reach::vpn; };
  if (std::count_if(checked.devices.begin(), checked.devices.end(), call_in) > 1)
    work.note("Note: tarnwell nodes that are enrolled within one second share their package password.");
  json_value details = new_object();
  put(details.get(), "imported", static_cast<int64_t>(enrolled.size()));
  put(details.get(), "skipped", static_cast<int64_t>(checked.skipped));
  if (opts.json() && !result.dry_run) {
    json_value nodes = new_array();
    for (size_t i = 0; i < enrolled.size(); i++) {
      sheet node;
      node.add("id", "", cell_of(cfg_enrollment_get_uuid(enrolled[i].get())));
      node.add("name", "", checked.devices[i].description.name);
      node.add("product", "", cell_of(cfg_enrollment_get_product(enrolled[i].get())));
      append(nodes.get(), node.json());
    }
    put(details.get(), "nodes", std::move(nodes));
  }
  work.report(result, fmt::format("Imported {} nodes, skipped {}.", enrolled.size(), checked.skipped),
              std::move(details));
}

}  // namespace

void add_fleet(CLI::App &program, const options &opts) {
  CLI::App *noun = program.add_subcommand("fleet", "Many nodes at once");
  noun->require_subcommand(1);
  auto arguments = std::make_shared<import_arguments>();
  CLI::App *verb = add_verb(
      noun, "import", "Enroll all devices of an inventory file, in one commit or not at all",
      "  twctl fleet import devices.csv --dry-run\n"
      "  twctl fleet import devices.csv --role console-server --approve\n"
      "  twctl fleet import devices.json --username admin --password-file ./secret\n"
      "\n"
      "The file is CSV whose first line names the columns, or JSON: an array of objects, or an object with "
      "such\n"
      "an array under \"results\". Order, case and punctuation of the column names do not matter.\n"
      "  product kind       product, else platform, else type (device_type), else manufacturer with type:\n"
      "                     tarnwell, acs6000, acs8000, cisco2900, acs_classic, generic, or a model of "
      "these\n"
      "  every node         name, serial, model (else type), mac_address, firmware, description, approved\n"
      "  all but tarnwell   address (primary_ip4, ip_address; a /prefix is dropped), username, password\n"
      "  generic            connection_method (ssh, telnet), port_count, base_port, port_labels (a;b;c)\n"
      "Devices whose status is inventory, decommissioning or decommissioned are skipped. Columns with other\n"
      "names are ignored. When any row is wrong, every wrong row is told by its line and nothing is "
      "written.");
  verb->add_option("file", arguments->file, "CSV or JSON file; - for standard input")->required();
  verb->add_option("--role", arguments->role, "Import devices of this role only");
  verb->add_option("--username", arguments->username, "User name where a row has none");
  verb->add_option("--password-file", arguments->password_file,
                   "File with the password where a row has none");
  verb->add_flag("--approve", arguments->approved, "Approve the nodes unless their row says otherwise");
  verb->add_flag("--progress", arguments->progress, "Show progress even when standard error is no terminal");
  verb->callback([&opts, arguments] { import(opts, *arguments); });
}

}  // namespace twctl
