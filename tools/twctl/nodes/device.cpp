#include "nodes/device.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <exception>

#include "cli/failure.hpp"
#include "cli/text.hpp"

namespace twctl {

namespace {

constexpr int64_t most_ports = 1024;
constexpr int64_t highest_port = 65535;

void check_generic(const device &one, std::vector<std::string> &problems) {
  if (one.connection_method != "ssh" && one.connection_method != "telnet")
    problems.push_back(
        fmt::format("connection method '{}' is neither ssh nor telnet", printable(one.connection_method)));
  if (one.port_count < 1 || one.port_count > most_ports)
    problems.push_back(fmt::format("port count must be 1 to {}", most_ports));
  else if (one.port_labels.size() > static_cast<size_t>(one.port_count))
    problems.push_back(fmt::format("{} port labels for {} ports", one.port_labels.size(), one.port_count));
  if (one.base_port < 1 || one.base_port > highest_port)
    problems.push_back(fmt::format("base port must be 1 to {}", highest_port));
  else if (one.port_count <= most_ports && one.base_port + one.port_count - 1 > highest_port)
    problems.push_back(fmt::format("the ports from {} on would pass {}", one.base_port, highest_port));
  for (const std::string &label : one.port_labels)
    if (!is_label(label))
      problems.emplace_back("a port label is empty, too long or holds control characters");
}

/// A setter of the record kit answers 0 when it has no memory; a node setter also when nothing changes.
void require(int done, const char *what) {
  if (!done) throw failure(exit_code::failure, fmt::format("cannot set the {}", what), "out of memory");
}

void fill(cfg_enrollment *enrollment, const device &one) {
  require(cfg_enrollment_set_auto_approve(enrollment, one.approved), "approval");
  require(cfg_enrollment_set_name(enrollment, one.name.c_str()), "name");
  if (one.kind->how == reach::vpn) return;
  require(cfg_enrollment_set_address(enrollment, one.address.c_str()), "address");
  require(cfg_enrollment_set_credentials(enrollment, one.username.c_str(), one.password.c_str()),
          "credentials");
  if (one.kind->how != reach::generic) return;
  require(cfg_enrollment_set_connection_method(enrollment, one.connection_method.c_str()),
          "connection method");
  require(cfg_enrollment_set_port_count_field(enrollment, static_cast<int32_t>(one.port_count)),
          "port count");
  require(cfg_enrollment_set_base_port(enrollment, static_cast<uint32_t>(one.base_port)), "base port");
  for (size_t i = 0; i < one.port_labels.size(); i++)
    require(cfg_enrollment_set_port_label(enrollment, static_cast<int32_t>(i), one.port_labels[i].c_str()),
            "port label");
}

/// Fields that the enrolment does not write. An empty one is left as it is.
void complete(cfg *store, const char *id, const device &one) {
  constexpr uint32_t usual_ssh_port = 22;
  node_record node(cfg_get_node_by_id(store, id));
  if (!node) throw store_failure(store, fmt::format("cannot read the new node '{}'", printable(one.name)));
  auto set = [&](int (*setter)(cfg_node *, const char *), const std::string &value, const char *what) {
    if (!value.empty()) require(setter(node.get(), value.c_str()), what);
  };
  set(cfg_node_set_name, one.name, "name");
  set(cfg_node_set_serial_number, one.serial, "serial number");
  set(cfg_node_set_model, one.model, "model");
  set(cfg_node_set_mac_address, one.mac_address, "MAC address");
  set(cfg_node_set_firmware_version, one.firmware, "firmware version");
  set(cfg_node_set_description, one.description, "description");
  if (one.kind->how == reach::vpn) require(cfg_node_set_ssh_port(node.get(), usual_ssh_port), "SSH port");
  if (!cfg_node_save(node.get()))
    throw store_failure(store, fmt::format("cannot save '{}'", printable(one.name)));
}

}  // namespace

bool is_mac_address(std::string_view text) {
  if (text.size() != 17) return false;
  for (size_t i = 0; i < text.size(); i++) {
    bool separator = i % 3 == 2;
    if (separator ? text[i] != ':' && text[i] != '-' : !isxdigit(static_cast<unsigned char>(text[i])))
      return false;
  }
  return true;
}

bool needs_password(const device &one) {
  return one.kind && (one.kind->how == reach::credentials ||
                      (one.kind->how == reach::generic && one.connection_method == "ssh"));
}

std::vector<std::string> problems_of(const device &one) {
  std::vector<std::string> problems = problems_but_password(one);
  if (needs_password(one) && one.password.empty())
    problems.emplace_back("password is missing");
  else if (needs_password(one) && !is_label(one.password.view()))
    problems.emplace_back("password is too long, not UTF-8 or holds control characters");
  return problems;
}

std::vector<std::string> problems_but_password(const device &one) {
  std::vector<std::string> problems;
  if (!one.kind) return {fmt::format("the product kind is not known (known: {})", product_names())};
  auto check_label = [&](const std::string &value, const char *what, bool needed) {
    if (value.empty() ? needed : !is_label(value))
      problems.push_back(value.empty()
                             ? fmt::format("{} is missing", what)
                             : fmt::format("{} is too long, not UTF-8 or holds control characters", what));
  };
  check_label(one.name, "name", one.kind->how != reach::vpn);
  check_label(one.serial, "serial number", false);
  check_label(one.model, "model", false);
  check_label(one.firmware, "firmware version", false);
  check_label(one.description, "description", false);
  if (!one.mac_address.empty() && !is_mac_address(one.mac_address))
    problems.push_back(fmt::format("'{}' is no MAC address (aa:bb:cc:dd:ee:ff)", printable(one.mac_address)));
  if (one.kind->how != reach::vpn) {
    if (one.address.empty())
      problems.emplace_back("address is missing");
    else if (!is_host(one.address))
      problems.push_back(fmt::format("'{}' is no IP address or host name", printable(one.address)));
  }
  if (needs_password(one)) check_label(one.username, "user name", true);
  if (one.kind->how == reach::generic) check_generic(one, problems);
  return problems;
}

enrollment_record enroll(cfg *store, const device &one) {
  enrollment_record enrollment(cfg_enrollment_new(store, one.kind->kind));
  if (!enrollment) throw failure(exit_code::failure, "cannot make an enrolment", "out of memory");
  fill(enrollment.get(), one);
  if (!cfg_enrollment_save(enrollment.get()))
    throw store_failure(store, fmt::format("cannot enroll '{}'", printable(one.name)));
  std::string id = cfg_enrollment_get_uuid(enrollment.get());
  complete(store, id.c_str(), one);
  return enrollment;
}

known_nodes read_known_nodes(cfg *store) {
  static const char *const keys[] = {"name", "serial_number"};
  static const cfg_keyset set = {keys, std::size(keys)};
  struct scan {
    known_nodes known;
    std::exception_ptr problem;
  } result;
  auto visit = [](void *context, int32_t, const cfg_value *values) noexcept {
    auto *target = static_cast<scan *>(context);
    try {
      if (values[0].kind == CFG_STRING) target->known.names.emplace(values[0].data, values[0].length);
      if (values[1].kind == CFG_STRING) target->known.serials.emplace(values[1].data, values[1].length);
      return 1;
    } catch (...) {
      target->problem = std::current_exception();
      return 0;
    }
  };
  cfg_elem *nodes = cfg_get_by_path(store, "nodes");
  if (!nodes)
    throw failure(exit_code::not_found, "the store has no list of nodes", "",
                  "was it made with 'twctl init'?");
  int done = cfg_list_scan(nodes, &set, visit, &result);
  if (result.problem) std::rethrow_exception(result.problem);
  if (!done) throw store_failure(store, "cannot read the nodes");
  return std::move(result.known);
}

}  // namespace twctl
