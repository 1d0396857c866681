// A console server that is to be enrolled: what is asked of its description, and the enrolment itself.
#pragma once

#include <cstdint>
#include <string>
#include <unordered_set>
#include <vector>

#include "cli/records.hpp"
#include "cli/secret.hpp"
#include "nodes/products.hpp"

namespace twctl {

struct device {
  const product *kind = nullptr;
  std::string name, address, username;
  secret password;
  std::string connection_method;  ///< "generic": ssh or telnet
  int64_t port_count = 0;         ///< "generic"
  int64_t base_port = 0;          ///< "generic": TCP port of the first serial port
  std::vector<std::string> port_labels;
  std::string serial, model, mac_address, firmware, description;
  bool approved = false;
};

/**
 * What is wrong with a description, in sentences that name the field; empty when it can be enrolled. A
 * "tarnwell" node may go without a name, all others need what their kind is reached by.
 */
std::vector<std::string> problems_of(const device &one);
/// The same without the password, for those who read it only when all else is right.
std::vector<std::string> problems_but_password(const device &one);

/// Is a node of this kind, and of this connection method, reached with a user name and a password?
bool needs_password(const device &one);

bool is_mac_address(std::string_view text);

/**
 * Adds the device to the handle's edit: the enrolment, and what only the node record can write (the display
 * name of a "tarnwell" node, serial number, model). One commit then makes all of it real.
 * @return the enrolment record, whose ID is provisional until the commit
 */
enrollment_record enroll(cfg *store, const device &one);

/// The names and serial numbers that the store's nodes have.
struct known_nodes {
  std::unordered_set<std::string> names, serials;
};
known_nodes read_known_nodes(cfg *store);

}  // namespace twctl
