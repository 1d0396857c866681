#include "nodes/inventory.hpp"

#include <fmt/format.h>
#include <malloc.h>
#include <openssl/crypto.h>

#include <algorithm>
#include <cstdlib>
#include <map>
#include <optional>

#include "cli/failure.hpp"
#include "cli/text.hpp"
#include "nodes/csv.hpp"

namespace twctl {

namespace {

constexpr size_t file_limit = 64 * 1024 * 1024;
constexpr size_t most_devices = 100'000;
constexpr size_t most_columns = 256;

/// Column names as exports spell them, folded to lower-case letters and digits. When several columns of a
/// file mean the same, the first one that is not empty in a row counts.
struct column_name {
  const char *name;
  column meaning;
};
constexpr column_name column_names[] = {
    {"product", column::product},
    {"productkind", column::product},
    {"platform", column::platform},
    {"type", column::type},
    {"devicetype", column::type},
    {"manufacturer", column::manufacturer},
    {"role", column::role},
    {"devicerole", column::role},
    {"status", column::status},
    {"name", column::name},
    {"serial", column::serial},
    {"serialnumber", column::serial},
    {"address", column::address},
    {"ipaddress", column::address},
    {"primaryip", column::address},
    {"primaryip4", column::address},
    {"primaryip6", column::address},
    {"ipv4address", column::address},
    {"ipv6address", column::address},
    {"username", column::username},
    {"password", column::password},
    {"connectionmethod", column::connection_method},
    {"portcount", column::port_count},
    {"baseport", column::base_port},
    {"portlabels", column::port_labels},
    {"macaddress", column::mac_address},
    {"firmware", column::firmware},
    {"firmwareversion", column::firmware},
    {"model", column::model},
    {"description", column::description},
    {"approved", column::approved},
};

std::optional<column> meaning_of(std::string_view header) {
  std::string name = folded(header);
  for (const column_name &one : column_names)
    if (name == one.name) return one.meaning;
  return std::nullopt;
}

/// Keeps a value unless an earlier column with the same meaning had one.
void keep(inventory_entry &entry, column meaning, std::string_view value) {
  std::string_view &slot = entry.values[static_cast<size_t>(meaning)];
  if (slot.empty()) slot = meaning == column::password ? value : trim(value);
}

void read_csv(inventory &result) {
  std::vector<csv_row> rows = parse_csv(result.text, most_devices + 1, most_columns);
  if (rows.empty())
    throw failure(exit_code::invalid_input, "the file is empty", "its first line must name the columns");
  const csv_row header = std::move(rows.front());
  if (!header.problem.empty())
    throw failure(exit_code::invalid_input, "the line with the column names cannot be read", header.problem);
  std::vector<std::optional<column>> meanings;
  bool has_name = false;
  for (std::string_view cell : header.cells) {
    meanings.push_back(meaning_of(cell));
    if (!meanings.back()) result.ignored_columns.emplace_back(trim(cell));
    has_name = has_name || meanings.back() == column::name;
  }
  if (!has_name)
    throw failure(exit_code::invalid_input, "the file has no column 'name'",
                  "its first line must name the columns", "export the devices with their column names");
  for (size_t i = 1; i < rows.size(); i++) {
    csv_row &row = rows[i];
    if (row.problem.empty() && row.cells.size() != header.cells.size())
      row.problem = fmt::format("{} cells where the first line names {} columns", row.cells.size(),
                                header.cells.size());
    if (!row.problem.empty()) {
      result.remarks.push_back({row.line, row.problem});
      continue;
    }
    inventory_entry entry{row.line, {}};
    for (size_t c = 0; c < row.cells.size(); c++)
      if (meanings[c]) keep(entry, *meanings[c], row.cells[c]);
    result.entries.push_back(entry);
  }
}

/// Freed JSON may have held passwords.
void wipe_and_free(void *block) {
  if (block) OPENSSL_cleanse(block, malloc_usable_size(block));
  std::free(block);
}

/**
 * A JSON value as the text that a CSV cell would hold. Nested objects, as the inventory's own interface gives
 * them ({"name": ..., "slug": ...}), stand for their most telling member.
 */
std::string_view text_of(inventory &result, const json_t *value) {
  static constexpr const char *telling[] = {"value", "address", "slug", "model", "name", "label", "display"};
  if (json_is_string(value)) return {json_string_value(value), json_string_length(value)};
  if (json_is_integer(value)) return result.made.emplace_back(std::to_string(json_integer_value(value)));
  if (json_is_boolean(value)) return json_is_true(value) ? "yes" : "no";
  if (json_is_array(value)) {
    std::string joined;
    size_t index = 0;
    json_t *item = nullptr;
    json_array_foreach(value, index, item) {
      if (index) joined += ';';
      joined += view(json_string_value(item));
    }
    return result.made.emplace_back(std::move(joined));
  }
  for (const char *key : telling)
    if (const json_t *member = json_object_get(value, key); json_is_string(member))
      return text_of(result, member);
  return {};
}

void read_json(inventory &result) {
  json_set_alloc_funcs(std::malloc, wipe_and_free);
  json_error_t problem;
  result.tree.reset(json_loadb(result.text.data(), result.text.size(), JSON_REJECT_DUPLICATES, &problem));
  if (!result.tree)
    throw failure(exit_code::invalid_input, "the file is no JSON",
                  fmt::format("line {}: {}", problem.line, problem.text));
  const json_t *devices = result.tree.get();
  if (json_is_object(devices)) devices = json_object_get(devices, "results");
  if (!json_is_array(devices))
    throw failure(exit_code::invalid_input, "the file holds no list of devices",
                  "expected is an array of objects, or an object with such an array under \"results\"");
  if (json_array_size(devices) > most_devices)
    throw failure(exit_code::invalid_input, "the file has too many devices",
                  fmt::format("at most {} are read", most_devices), "split the file");
  result.unit = "entry";
  std::map<std::string, bool> ignored;
  size_t index = 0;
  json_t *item = nullptr;
  json_array_foreach(devices, index, item) {
    if (!json_is_object(item)) {
      result.remarks.push_back({index + 1, "not an object"});
      continue;
    }
    inventory_entry entry{index + 1, {}};
    const char *key = nullptr;
    json_t *value = nullptr;
    json_object_foreach(item, key, value) {
      if (std::optional<column> meaning = meaning_of(key))
        keep(entry, *meaning, text_of(result, value));
      else
        ignored[key] = true;
    }
    result.entries.push_back(entry);
  }
  for (const auto &[name, seen] : ignored) result.ignored_columns.push_back(name);
}

/// Devices that an inventory lists but that are not there to be managed.
bool is_out_of_service(std::string_view status) {
  std::string word = lower(status);
  return word == "inventory" || word == "decommissioning" || word == "decommissioned";
}

/**
 * Which product kind a row is about: "product" when it is given, and then it must be known; else the first of
 * platform, type, and manufacturer with type that is known.
 */
const product *product_of(const inventory_entry &entry, std::string &problem) {
  if (std::string_view named = entry[column::product]; !named.empty()) {
    const product *found = recognise_product(named);
    if (!found)
      problem = fmt::format("product '{}' is not known (known: {})", printable(named), product_names());
    return found;
  }
  std::string both = fmt::format("{} {}", entry[column::manufacturer], entry[column::type]);
  for (std::string_view text : {entry[column::platform], entry[column::type], std::string_view(both)})
    if (const product *found = recognise_product(text)) return found;
  problem = fmt::format("neither product, platform ('{}') nor type ('{}') names a product kind (known: {})",
                        printable(entry[column::platform]), printable(entry[column::type]), product_names());
  return nullptr;
}

std::vector<std::string> split(std::string_view text, char separator) {
  std::vector<std::string> parts;
  while (!text.empty()) {
    size_t end = std::min(text.find(separator), text.size());
    parts.emplace_back(trim(text.substr(0, end)));
    text.remove_prefix(std::min(end + 1, text.size()));
  }
  return parts;
}

int64_t number_or(std::string_view text, int64_t otherwise, const char *what,
                  std::vector<std::string> &problems) {
  if (text.empty()) return otherwise;
  std::optional<int64_t> number = parse_number(text);
  if (!number) problems.push_back(fmt::format("{} '{}' is no whole number", what, printable(text)));
  return number.value_or(otherwise);
}

device describe(const inventory_entry &entry, const import_defaults &defaults,
                std::vector<std::string> &problems) {
  device one;
  std::string problem;
  one.kind = product_of(entry, problem);
  if (!problem.empty()) problems.push_back(problem);
  one.name = entry[column::name];
  one.address = entry[column::address].substr(0, entry[column::address].find('/'));  // "10.0.0.5/24"
  one.username =
      entry[column::username].empty() ? std::string_view(defaults.username) : entry[column::username];
  one.password = entry[column::password].empty() ? defaults.password : secret(entry[column::password]);
  one.serial = entry[column::serial];
  one.model = entry[column::model].empty() ? entry[column::type] : entry[column::model];
  one.mac_address = lower(entry[column::mac_address]);
  one.firmware = entry[column::firmware];
  one.description = entry[column::description];
  one.approved = defaults.approved;
  if (std::string_view text = entry[column::approved]; !text.empty()) {
    std::optional<bool> approved = parse_truth(text);
    if (!approved) problems.push_back(fmt::format("approved '{}' is neither yes nor no", printable(text)));
    one.approved = approved.value_or(false);
  }
  if (one.kind && one.kind->how == reach::generic) {
    one.connection_method =
        entry[column::connection_method].empty() ? "ssh" : lower(entry[column::connection_method]);
    one.port_count = number_or(entry[column::port_count], 0, "port count", problems);
    one.base_port = number_or(entry[column::base_port], 0, "base port", problems);
    one.port_labels = split(entry[column::port_labels], ';');
  }
  return one;
}

/// Finds texts that must be unique, in the file and against the store.
class uniqueness {
 public:
  uniqueness(const char *what, const std::unordered_set<std::string> &stored)
      : what_(what), stored_(stored) {}

  void check(const std::string &text, size_t where, const char *unit, std::vector<std::string> &problems) {
    if (text.empty()) return;
    if (stored_.count(text))
      problems.push_back(fmt::format("a node with the {} '{}' exists already", what_, printable(text)));
    auto [first, is_new] = seen_.emplace(text, where);
    if (!is_new)
      problems.push_back(
          fmt::format("the {} '{}' stands in {} {} already", what_, printable(text), unit, first->second));
  }

 private:
  const char *what_;
  const std::unordered_set<std::string> &stored_;
  std::map<std::string, size_t> seen_;
};

}  // namespace

inventory read_inventory(const std::string &path) {
  inventory result;
  result.text = read_file(path, file_limit);
  std::string_view start = trim(result.text.view().substr(0, 4096));
  if (start.starts_with('[') || start.starts_with('{'))
    read_json(result);
  else
    read_csv(result);
  return result;
}

fleet check_inventory(const inventory &source, const import_defaults &defaults, const known_nodes &known) {
  fleet result;
  result.problems = source.remarks;
  uniqueness names("name", known.names), serials("serial number", known.serials);
  for (const inventory_entry &entry : source.entries) {
    bool other_role = !defaults.role.empty() && folded(defaults.role) != folded(entry[column::role]);
    if (other_role || is_out_of_service(entry[column::status])) {
      result.skipped++;
      continue;
    }
    std::vector<std::string> problems;
    device one = describe(entry, defaults, problems);
    if (one.kind) {
      // In a list of many, a node without a name could not be told from the others.
      if (one.kind->how == reach::vpn && one.name.empty()) problems.emplace_back("name is missing");
      for (std::string &problem : problems_of(one)) problems.push_back(std::move(problem));
    }
    names.check(one.name, entry.where, source.unit, problems);
    serials.check(one.serial, entry.where, source.unit, problems);
    for (std::string &problem : problems) result.problems.push_back({entry.where, std::move(problem)});
    result.devices.push_back({entry.where, std::move(one)});
  }
  std::stable_sort(result.problems.begin(), result.problems.end(),
                   [](const remark &a, const remark &b) { return a.where < b.where; });
  return result;
}

}  // namespace twctl
