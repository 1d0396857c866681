// The keys that a node record both reads (load.cpp) and writes (save.cpp). Those of one direction only stand
// in that direction's file.
#ifndef TW_NODES_NODE_ROWS_HPP
#define TW_NODES_NODE_ROWS_HPP

#include "nodes/node.hpp"
#include "record/row.hpp"

// Of an optional key only a value of the right kind counts: "name" and "status" alone decide whether a node
// can be loaded. The look-ups rely on it; they judge nodes that they pass over by these two keys.
namespace tw::node_rows {

inline constexpr auto name = mandatory(string_row<&cfg_node::name>("name"));
inline constexpr auto status = mandatory(string_row<&cfg_node::status>("status"));
inline constexpr auto bundle = lenient(reference_row<&cfg_node::bundle_id>("bundle"));
inline constexpr auto description = lenient(string_row<&cfg_node::description>("description"));
inline constexpr auto mac_address = lenient(string_row<&cfg_node::mac_address>("mac_address"));
inline constexpr auto fhvpn_address = lenient(string_row<&cfg_node::fhvpn_address>("fhvpn_address"));
inline constexpr auto firmware_version = lenient(string_row<&cfg_node::firmware_version>("firmware_version"));
inline constexpr auto model = lenient(string_row<&cfg_node::model>("model"));
inline constexpr auto serial_number = lenient(string_row<&cfg_node::serial_number>("serial_number"));
inline constexpr auto approved = lenient(bool_row<&cfg_node::approved>("approved"));
inline constexpr auto ssh_port = lenient(int_row<&cfg_node::ssh_port>("port"));  // in the map "ssh"

}  // namespace tw::node_rows

#endif
