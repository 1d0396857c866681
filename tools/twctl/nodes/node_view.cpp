// Listing, finding and showing nodes.
#include <fmt/format.h>

#include <algorithm>
#include <exception>
#include <optional>

#include "cli/failure.hpp"
#include "cli/text.hpp"
#include "nodes/nodes.hpp"

namespace twctl {

namespace {

/// What a list can show. The first entry is the node's ID, which is no key of the store; no secret is listed.
constexpr heading columns[] = {
    {"id", "ID"},
    {"name", "NAME"},
    {"product", "PRODUCT"},
    {"status", "STATUS"},
    {"approved", "APPROVED"},
    {"address", "ADDRESS"},
    {"fhvpn_address", "VPN ADDRESS"},
    {"serial_number", "SERIAL"},
    {"model", "MODEL"},
    {"firmware_version", "FIRMWARE"},
    {"mac_address", "MAC"},
    {"port_count", "PORTS", true},
};
constexpr size_t column_count = std::size(columns);
constexpr const char *usual_columns = "id,name,product,status,approved,address,serial_number,model";

cell cell_of(const cfg_value &value) {
  switch (value.kind) {
    case CFG_STRING:
      return std::string(value.data, value.length);
    case CFG_INT:
      return int64_t{value.number};
    case CFG_BOOL:
      return value.number != 0;
    default:
      return {};
  }
}

std::vector<size_t> chosen_columns(const std::string &names) {
  std::vector<size_t> chosen;
  std::string_view rest = names.empty() ? usual_columns : std::string_view(names);
  while (!rest.empty()) {
    size_t end = std::min(rest.find(','), rest.size());
    std::string_view name = trim(rest.substr(0, end));
    auto found =
        std::find_if(columns, columns + column_count, [&](const heading &one) { return name == one.key; });
    if (found == columns + column_count)
      throw failure(exit_code::usage, fmt::format("there is no column '{}'", printable(name)), "",
                    "the columns are " + node_columns());
    chosen.push_back(static_cast<size_t>(found - columns));
    rest.remove_prefix(std::min(end + 1, rest.size()));
  }
  return chosen;
}

/// One pass over the list of nodes that reads only what is listed, without loading whole records.
class node_scan {
 public:
  node_scan(const node_filter &filter, cfg_elem *nodes, listing &result)
      : filter_(filter), nodes_(nodes), result_(result), chosen_(chosen_columns(filter.columns)) {}

  void run(cfg *store) {
    static const char *const keys[] = {
        "name",          "product", "status",           "approved",    "address",   "fhvpn_address",
        "serial_number", "model",   "firmware_version", "mac_address", "port_count"};
    static_assert(std::size(keys) + 1 == column_count, "every column but the ID is a key");
    static const cfg_keyset set = {keys, std::size(keys)};
    int done = cfg_list_scan(nodes_, &set, visit, this);
    if (problem_) std::rethrow_exception(problem_);
    if (!done) throw store_failure(store, "cannot list the nodes");
  }

 private:
  static int visit(void *context, int32_t index, const cfg_value *values) noexcept {
    auto *self = static_cast<node_scan *>(context);
    try {
      return self->take(index, values);
    } catch (...) {
      self->problem_ = std::current_exception();
      return 0;
    }
  }

  int take(int32_t index, const cfg_value *values) {
    std::vector<cell> all{twctl::cell_of(cfg_get_listelem(nodes_, index))};
    for (size_t i = 1; i < column_count; i++) all.push_back(cell_of(values[i - 1]));
    if (!fits(all)) return 1;
    std::vector<cell> row;
    row.reserve(chosen_.size());
    for (size_t column : chosen_) row.push_back(all[column]);
    result_.add(std::move(row));
    return filter_.limit == 0 || result_.size() < filter_.limit;
  }

  bool fits(const std::vector<cell> &all) const {
    auto text = [&](size_t column) {
      const auto *value = std::get_if<std::string>(&all[column]);
      return value ? std::string_view(*value) : std::string_view();
    };
    const auto *approved = std::get_if<bool>(&all[4]);
    if (!filter_.product.empty() && text(2) != filter_.product) return false;
    if (!filter_.status.empty() && lower(text(3)) != lower(filter_.status)) return false;
    if (!filter_.approved.empty() && (approved && *approved) != (filter_.approved == "yes")) return false;
    if (filter_.match.empty()) return true;
    std::string wanted = lower(filter_.match);
    for (size_t column = 0; column < column_count; column++)
      if (lower(text(column)).find(wanted) != std::string::npos) return true;
    return false;
  }

  const node_filter &filter_;
  cfg_elem *nodes_;
  listing &result_;
  std::vector<size_t> chosen_;
  std::exception_ptr problem_;
};

}  // namespace

std::string node_columns() {
  std::string names;
  for (const heading &one : columns) names += (names.empty() ? "" : ",") + std::string(one.key);
  return names;
}

node_record find_node(cfg *store, const std::string &reference) {
  const char *text = reference.c_str();
  node_record node;
  if (reference.starts_with("nodes-")) node.reset(cfg_get_node_by_id(store, text));
  for (auto look_up : {cfg_get_node_by_name, cfg_get_node_by_serial_number, cfg_get_node_by_fhvpn_address})
    if (!node) node.reset(look_up(store, text));
  if (!node)
    throw failure(exit_code::not_found, fmt::format("there is no node '{}'", printable(reference)),
                  "it is no node's ID, name, serial number or VPN address", "see 'twctl node list'");
  return node;
}

void need_list(cfg *store, const cfg_node *node, const char *key) {
  cfg_elem *element = cfg_get_by_id(store, cfg_node_get_uuid(node));
  if (cfg_simple_get_mapelem(store, element, key)) return;
  if (!cfg_add_mapelem(store, element, key, cfg_new_list(store)))
    throw store_failure(store, fmt::format("cannot make the node's list '{}'", key));
}

void list_nodes(const options &opts, const node_filter &filter) {
  std::vector<heading> headings;
  for (size_t column : chosen_columns(filter.columns)) headings.push_back(columns[column]);
  listing result("nodes", std::move(headings));
  session work(opts, session::access::read);
  cfg_elem *nodes = cfg_get_by_path(work.store(), "nodes");
  if (nodes) node_scan(filter, nodes, result).run(work.store());
  result.print(opts);
}

void show_node(const options &opts, const std::string &reference) {
  session work(opts, session::access::read);
  node_record node = find_node(work.store(), reference);
  const cfg_node *n = node.get();
  sheet result;
  result.add("id", "ID", cell_of(cfg_node_get_uuid(n)));
  result.add("name", "Name", cell_of(cfg_node_get_name(n)));
  result.add("product", "Product", cell_of(cfg_node_get_product(n)));
  result.add("status", "Status", cell_of(cfg_node_get_status(n)));
  result.add("approved", "Approved", cfg_node_get_approved(n) != 0);
  result.add("description", "Description", cell_of(cfg_node_get_description(n)));
  result.add("bundle_id", "Bundle ID", cell_of(cfg_node_get_bundle_id(n)));
  result.add("serial_number", "Serial number", cell_of(cfg_node_get_serial_number(n)));
  result.add("model", "Model", cell_of(cfg_node_get_model(n)));
  result.add("firmware_version", "Firmware", cell_of(cfg_node_get_firmware_version(n)));
  result.add("mac_address", "MAC address", cell_of(cfg_node_get_mac_address(n)));
  result.add("fhvpn_address", "VPN address", cell_of(cfg_node_get_fhvpn_address(n)));
  result.add("ssh_port", "SSH port", unless_zero(cfg_node_get_ssh_port(n)));
  const cfg_certificate *certificate = cfg_node_get_cert_object(n);
  result.add("certificate_id", "Certificate ID", cell_of(cfg_certificate_get_id(certificate)));
  result.add("certificate_cn", "Certificate CN", cell_of(cfg_certificate_get_common_name(certificate)));
  result.add("address", "Address", cell_of(cfg_node_get_address(n)));
  result.add("connection_method", "Connection", cell_of(cfg_node_get_connection_method(n)));
  result.add("username", "User name", cell_of(cfg_node_get_username(n)));
  result.add("password_set", "Password set", cfg_node_get_password(n) != nullptr);
  int32_t ports = cfg_node_get_port_count_field(n);
  result.add("port_count", "Ports", unless_zero(ports));
  result.add("base_port", "Base port", unless_zero(cfg_node_get_base_port(n)));
  std::string labels;
  for (int32_t i = 0; i < ports; i++)
    labels += fmt::format("{}{}", i ? ";" : "", view(cfg_node_get_port_label(n, i)));
  result.add("port_labels", "Port labels", unless_empty(labels));
  show_parts(result, node.get());
  result.print(opts);
}

}  // namespace twctl
