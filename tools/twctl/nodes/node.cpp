// twctl node: enrolling, changing and deleting one node.
#include <fmt/format.h>

#include <optional>

#include "cli/failure.hpp"
#include "cli/secret_option.hpp"
#include "cli/session.hpp"
#include "cli/text.hpp"
#include "commands.hpp"
#include "nodes/device.hpp"
#include "nodes/nodes.hpp"

namespace twctl {

namespace {

struct enroll_arguments {
  device description;
  std::string product, password_file;
};

void require_new(cfg *store, const device &one) {
  node_record same_name(one.name.empty() ? nullptr : cfg_get_node_by_name(store, one.name.c_str()));
  node_record same_serial(one.serial.empty() ? nullptr
                                             : cfg_get_node_by_serial_number(store, one.serial.c_str()));
  const cfg_node *same = same_name ? same_name.get() : same_serial.get();
  if (same)
    throw failure(exit_code::conflict,
                  fmt::format("a node with this {} exists already", same_name ? "name" : "serial number"),
                  fmt::format("it is {}", cfg_node_get_uuid(same)),
                  fmt::format("see 'twctl node show {}'", cfg_node_get_uuid(same)));
}

/**
 * The library names a "tarnwell" node after its ID, which only a commit can give: without a name of the
 * user's the enrolment is saved a second time.
 */
void name_after_id(session &work, cfg_enrollment *enrollment, outcome &result) {
  std::string id = cfg_enrollment_get_uuid(enrollment);
  if (!cfg_enrollment_save(enrollment))
    throw store_failure(work.store(), fmt::format("cannot name '{}'", id));
  outcome second = work.commit(fmt::format("name {} after its ID", id));
  result.revision = second.revision;
  result.changes.insert(result.changes.end(), second.changes.begin(), second.changes.end());
}

void enroll_one(const options &opts, enroll_arguments &arguments) {
  device &one = arguments.description;
  one.kind = find_product(arguments.product);
  // Nobody is asked for a password in vain.
  std::vector<std::string> problems = problems_but_password(one);
  if (problems.empty() && needs_password(one)) {
    one.password = read_password(arguments.password_file,
                                 fmt::format("Password of {} on {}", one.username, one.address));
    problems = problems_of(one);
  }
  if (!problems.empty()) {
    std::string why;
    for (const std::string &problem : problems) why += (why.empty() ? "" : "; ") + problem;
    throw failure(exit_code::invalid_input, "this node cannot be enrolled", why,
                  "see 'twctl node enroll --help'");
  }
  session work(opts, session::access::write);
  require_new(work.store(), one);
  enrollment_record enrollment = enroll(work.store(), one);
  outcome result = work.commit(fmt::format("enroll {}", one.name.empty() ? one.kind->kind : one.name));
  if (!result.dry_run && one.name.empty()) name_after_id(work, enrollment.get(), result);
  std::string id = result.dry_run ? std::string() : cfg_enrollment_get_uuid(enrollment.get());
  std::string name = one.name.empty() ? id : one.name;
  sheet details;
  details.add("id", "ID", unless_empty(id));
  details.add("name", "Name", unless_empty(name));
  details.add("product", "Product", cell_of(one.kind->kind));
  work.report(result, id, details.json());
}

/// A field that 'node set' can change: through the node record, or through the enrolment.
struct field {
  const char *name;
  int (*set_on_node)(cfg_node *, const char *);
  int (*set_on_enrollment)(cfg_enrollment *, const char *);
  bool (*accepts)(std::string_view);
  bool may_be_empty;
  bool tarnwell_only;
};

bool is_truth(std::string_view text) { return parse_truth(text).has_value(); }
bool is_port(std::string_view text) {
  std::optional<int64_t> port = parse_number(text);
  return port && *port >= 1 && *port <= 65535;
}
bool is_method(std::string_view text) { return text == "ssh" || text == "telnet"; }
int set_approved(cfg_node *node, const char *text) { return cfg_node_set_approved(node, *parse_truth(text)); }
int set_ssh_port(cfg_node *node, const char *text) {
  return cfg_node_set_ssh_port(node, static_cast<uint32_t>(*parse_number(text)));
}
int set_username(cfg_enrollment *enrollment, const char *text) {
  secret password(view(cfg_enrollment_get_password(enrollment)));
  return cfg_enrollment_set_credentials(enrollment, text, password.c_str());
}

constexpr field fields[] = {
    {"name", cfg_node_set_name, nullptr, is_label, false, false},
    {"status", cfg_node_set_status, nullptr, is_label, false, false},
    {"approved", set_approved, nullptr, is_truth, false, false},
    {"bundle_id", cfg_node_set_bundle_id, nullptr, is_label, true, false},
    {"serial_number", cfg_node_set_serial_number, nullptr, is_label, true, false},
    {"model", cfg_node_set_model, nullptr, is_label, true, false},
    {"firmware_version", cfg_node_set_firmware_version, nullptr, is_label, true, false},
    {"mac_address", cfg_node_set_mac_address, nullptr, is_mac_address, true, false},
    {"description", cfg_node_set_description, nullptr, is_label, true, true},
    {"fhvpn_address", cfg_node_set_fhvpn_address, nullptr, is_host, true, true},
    {"ssh_port", set_ssh_port, nullptr, is_port, false, true},
    {"address", nullptr, cfg_enrollment_set_address, is_host, false, false},
    {"connection_method", nullptr, cfg_enrollment_set_connection_method, is_method, false, false},
    {"username", nullptr, set_username, is_label, false, false},
};

std::string field_names() {
  std::string names;
  for (const field &one : fields) names += (names.empty() ? "" : ", ") + std::string(one.name);
  return names;
}

struct assignment {
  const field *target;
  std::string value;
};

assignment parse_assignment(const std::string &text) {
  size_t equals = text.find('=');
  std::string name = text.substr(0, equals);
  if (equals == std::string::npos)
    throw failure(exit_code::usage, fmt::format("'{}' is no FIELD=VALUE", printable(text)), "",
                  "for example name=hub-7");
  if (name == "password")
    throw failure(exit_code::usage, "a password cannot be given on the command line",
                  "every user of the machine can read it there",
                  "use --password-file FILE, or --password to be asked");
  for (const field &one : fields) {
    if (name != one.name) continue;
    std::string value = text.substr(equals + 1);
    if (value.empty() ? !one.may_be_empty : !one.accepts(value))
      throw failure(exit_code::invalid_input, fmt::format("'{}' is no value for {}", printable(value), name));
    return {&one, value};
  }
  throw failure(exit_code::usage, fmt::format("there is no field '{}'", printable(name)), "",
                "the fields are " + field_names());
}

struct set_arguments {
  std::string reference;
  std::vector<std::string> assignments;
  secret_option password;
};

/// Changes how the appliance reaches a node. Only the enrolment writes these fields.
void change_reach(cfg *store, const cfg_node *node, const std::vector<assignment> &assignments,
                  const secret *password) {
  enrollment_record enrollment(cfg_enrollment_get_by_id(store, cfg_node_get_uuid(node)));
  if (!enrollment) throw store_failure(store, "cannot read the node's enrolment");
  // Saving an enrolment writes the node's approval from its own flag, which loading leaves at "no".
  cfg_enrollment_set_auto_approve(enrollment.get(), cfg_node_get_approved(node));
  for (const assignment &one : assignments)
    if (one.target->set_on_enrollment) one.target->set_on_enrollment(enrollment.get(), one.value.c_str());
  if (password) {
    std::string username(view(cfg_enrollment_get_username(enrollment.get())));
    cfg_enrollment_set_credentials(enrollment.get(), username.c_str(), password->c_str());
  }
  if (!cfg_enrollment_save(enrollment.get())) throw store_failure(store, "cannot save the node's enrolment");
}

void require_fitting(const product *kind, const field &one) {
  bool on_enrollment = one.set_on_enrollment != nullptr;
  bool method = one.set_on_enrollment == cfg_enrollment_set_connection_method;
  bool fits = one.tarnwell_only ? kind && kind->how == reach::vpn
              : method          ? kind && kind->how == reach::generic
              : on_enrollment   ? kind && kind->how != reach::vpn
                                : true;
  if (!fits)
    throw failure(exit_code::invalid_input, fmt::format("{} cannot be set on this node", one.name),
                  "its product kind does not have this field");
}

void set_fields(const options &opts, const set_arguments &arguments) {
  std::vector<assignment> assignments;
  bool reach_changes = false;
  for (const std::string &text : arguments.assignments) {
    assignments.push_back(parse_assignment(text));
    reach_changes = reach_changes || assignments.back().target->set_on_enrollment;
  }
  bool new_password = arguments.password.given();
  if (assignments.empty() && !new_password)
    throw failure(exit_code::usage, "nothing to set", "",
                  "give FIELD=VALUE; the fields are " + field_names());
  secret password;
  if (new_password) password = arguments.password.read();

  session work(opts, session::access::write);
  node_record node = find_node(work.store(), arguments.reference);
  std::string id = cfg_node_get_uuid(node.get());
  const product *kind = find_product(view(cfg_node_get_product(node.get())));
  for (const assignment &one : assignments) require_fitting(kind, *one.target);
  if (new_password && (!kind || kind->how == reach::vpn))
    throw failure(exit_code::invalid_input, "this node has no password",
                  "nodes of its product kind call in by themselves");
  if (reach_changes || new_password)
    change_reach(work.store(), node.get(), assignments, new_password ? &password : nullptr);
  for (const assignment &one : assignments)
    if (one.target->set_on_node) one.target->set_on_node(node.get(), one.value.c_str());
  if (!cfg_node_save(node.get())) throw store_failure(work.store(), fmt::format("cannot save {}", id));
  outcome result = work.commit(fmt::format("change {}", id));
  sheet details;
  details.add("id", "ID", id);
  work.report(
      result,
      result.changes.empty() ? fmt::format("{} is like that already.", id) : fmt::format("Changed {}.", id),
      details.json());
}

void delete_node(const options &opts, const std::string &reference) {
  session work(opts, session::access::write);
  node_record node = find_node(work.store(), reference);
  std::string id = cfg_node_get_uuid(node.get()), name = cfg_node_get_name(node.get());
  if (!opts.yes && !opts.dry_run && !confirm(fmt::format("Delete {} ({})?", id, printable(name))))
    throw failure(exit_code::failure, "nothing was deleted", "it was not confirmed");
  if (!cfg_delete_element(work.store(), cfg_get_by_id(work.store(), id.c_str())))
    throw store_failure(work.store(), fmt::format("cannot delete {}", id));
  outcome result = work.commit(fmt::format("delete {} ({})", id, printable(name)));
  sheet details;
  details.add("id", "ID", id);
  details.add("name", "Name", name);
  work.report(result, fmt::format("Deleted {} ({}).", id, printable(name)), details.json());
}

void add_enroll(CLI::App *noun, const options &opts) {
  auto arguments = std::make_shared<enroll_arguments>();
  device &one = arguments->description;
  one.connection_method = "ssh";
  CLI::App *verb = add_verb(
      noun, "enroll", "Enroll a node and print its ID",
      "  twctl node enroll --product tarnwell --name rack-12\n"
      "  twctl node enroll --product acs8000 --name lab-1 --address 10.0.0.5 --username admin\n"
      "  twctl node enroll --product generic --name old-1 --address 10.0.0.9 --connection telnet \\\n"
      "      --port-count 8 --base-port 7001 --port-label router --port-label switch");
  verb->add_option("--product", arguments->product, "Product kind: " + product_names())->required();
  verb->add_option("--name", one.name, "Display name; a tarnwell node without one is named after its ID");
  verb->add_option("--address", one.address, "IP address or host name (all but tarnwell)");
  verb->add_option("--username", one.username, "User name on the node (all but tarnwell)");
  verb->add_option("--password-file", arguments->password_file,
                   "File whose first line is the password, - for standard input; without it you are asked");
  verb->add_option("--connection", one.connection_method, "generic: ssh or telnet")->capture_default_str();
  verb->add_option("--port-count", one.port_count, "generic: number of serial ports");
  verb->add_option("--base-port", one.base_port, "generic: TCP port of the first serial port");
  verb->add_option("--port-label", one.port_labels, "generic: label of the next port; may be repeated")
      ->allow_extra_args(false);
  verb->add_option("--serial", one.serial, "Serial number");
  verb->add_option("--model", one.model, "Model");
  verb->add_option("--mac-address", one.mac_address, "MAC address");
  verb->add_option("--firmware", one.firmware, "Firmware version");
  verb->add_option("--description", one.description, "Free text (tarnwell)");
  verb->add_flag("--approve", one.approved, "Approve the node at once");
  verb->callback([&opts, arguments] { enroll_one(opts, *arguments); });
}

void add_list(CLI::App *noun, const options &opts) {
  auto filter = std::make_shared<node_filter>();
  CLI::App *verb = add_verb(noun, "list", "List nodes",
                            "  twctl node list --product generic --limit 20\n"
                            "  twctl node list --match berlin --columns id,name,address\n"
                            "  twctl node list --approved no -o json");
  verb->add_option("--product", filter->product, "Only this product kind");
  verb->add_option("--status", filter->status, "Only this enrollment status");
  verb->add_option("--approved", filter->approved, "Only approved nodes (yes) or the others (no)")
      ->check(CLI::IsMember({"yes", "no"}));
  verb->add_option("--match", filter->match, "Only nodes with this text in any column");
  add_limit(verb, filter->limit);
  verb->add_option("--columns", filter->columns, "Which columns, in which order: " + node_columns());
  verb->callback([&opts, filter] { list_nodes(opts, *filter); });
}

}  // namespace

void add_node(CLI::App &program, const options &opts) {
  CLI::App *noun = program.add_subcommand("node", "Nodes: the managed console servers");
  noun->require_subcommand(1);
  add_enroll(noun, opts);
  add_list(noun, opts);

  auto reference = std::make_shared<std::string>();
  constexpr const char *what_a_node_is = "ID, name, serial number or VPN address";
  CLI::App *verb = add_verb(noun, "show", "Show one node",
                            "  twctl node show nodes-12\n"
                            "  twctl node show rack-12 -o json");
  verb->add_option("node", *reference, what_a_node_is)->required();
  verb->callback([&opts, reference] { show_node(opts, *reference); });

  auto arguments = std::make_shared<set_arguments>();
  verb = add_verb(noun, "set", "Change fields of a node",
                  "  twctl node set rack-12 name=rack-13 description='Moved to Berlin'\n"
                  "  twctl node set nodes-12 approved=yes --dry-run\n"
                  "  twctl node set lab-1 username=root --password-file ./secret\n"
                  "  twctl node set lab-1 serial_number=            (an empty value clears the field)\n"
                  "\n"
                  "Fields: " +
                      field_names());
  verb->add_option("node", arguments->reference, what_a_node_is)->required();
  verb->add_option("assignments", arguments->assignments, "FIELD=VALUE ...");
  add_secret(verb, arguments->password, "password", "New password", false);
  verb->callback([&opts, arguments] { set_fields(opts, *arguments); });

  verb = add_verb(noun, "delete", "Delete a node",
                  "  twctl node delete rack-12\n"
                  "  twctl node delete nodes-12 --yes --reason 'scrapped'");
  verb->add_option("node", *reference, what_a_node_is)->required();
  verb->callback([&opts, reference] { delete_node(opts, *reference); });

  add_node_live(noun, opts);
}

}  // namespace twctl
