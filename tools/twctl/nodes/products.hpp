// The product kinds of nodes, and how inventories spell them.
#pragma once

#include <string>
#include <string_view>

namespace twctl {

/// How the appliance reaches nodes of a kind, which decides what an enrolment must say.
enum class reach {
  vpn,          ///< the node calls in over the appliance's own VPN
  credentials,  ///< address, user name, password
  generic       ///< address, connection method, credentials for ssh, port layout
};

struct product {
  const char *kind;  ///< the text of "product" in the store
  reach how;
};

/// The kind with exactly this name, or NULL.
const product *find_product(std::string_view kind);

/**
 * The kind that an inventory's text stands for, or NULL: a product kind itself, or a platform, device type or
 * model that belongs to one. Case, spaces and punctuation do not matter ("ACS 6048" and "acs-6048" are the
 * same).
 */
const product *recognise_product(std::string_view text);

/// "tarnwell, acs6000, ..." for messages and help.
std::string product_names();

}  // namespace twctl
