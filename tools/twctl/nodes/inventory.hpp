// Inventory files: device exports in CSV or JSON, read whole and checked before anything is written.
#pragma once

#include <array>
#include <deque>
#include <string>
#include <string_view>
#include <vector>

#include "cli/records.hpp"
#include "cli/secret.hpp"
#include "nodes/device.hpp"

namespace twctl {

/// What an inventory can say about a device. Columns are matched by name, see inventory.cpp.
enum class column : size_t {
  product,
  platform,
  type,
  manufacturer,
  role,
  status,
  name,
  serial,
  address,
  username,
  password,
  connection_method,
  port_count,
  base_port,
  port_labels,
  mac_address,
  firmware,
  model,
  description,
  approved,
  count
};

/// Something that is wrong at a place of the file.
struct remark {
  size_t where;
  std::string text;
};

struct inventory_entry {
  size_t where;  ///< line of a CSV file, number of the object in a JSON file, counted from 1
  std::array<std::string_view, static_cast<size_t>(column::count)> values;
  std::string_view operator[](column one) const { return values[static_cast<size_t>(one)]; }
};

struct inventory {
  const char *unit = "line";                 ///< what `where` counts: "line" or "entry"
  std::vector<inventory_entry> entries;      ///< point into the members below
  std::vector<remark> remarks;               ///< rows that could not be read
  std::vector<std::string> ignored_columns;  ///< names of columns that mean nothing here

  secret text;
  json_value tree;
  std::deque<std::string> made;
};

/// Reads the file `path` ("-": standard input). JSON when its first character is '[' or '{', CSV otherwise.
inventory read_inventory(const std::string &path);

/// What applies to every device of an import unless its own row says otherwise.
struct import_defaults {
  std::string role;  ///< only devices of this role; empty: all
  std::string username;
  secret password;
  bool approved = false;
};

struct fleet {
  struct member {
    size_t where;
    device description;
  };
  std::vector<member> devices;
  std::vector<remark> problems;  ///< in file order
  size_t skipped = 0;            ///< other roles, and devices that are not in service
};

/// Turns an inventory into devices that can be enrolled, or tells what is wrong, duplicates included.
fleet check_inventory(const inventory &source, const import_defaults &defaults, const known_nodes &known);

}  // namespace twctl
