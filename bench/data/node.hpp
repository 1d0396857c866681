// The one description of the benchmark's data. Every competitor is filled from it and checked against it, so
// that nobody stores, loads or copies more or less than the others.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace bench {

// The texts that stand directly in a node, in the order in which competitors keep them.
enum NodeText : std::size_t {
  kName,
  kStatus,
  kProduct,
  kDescription,
  kBundle,
  kMacAddress,
  kFhvpnAddress,
  kFirmwareVersion,
  kModel,
  kSerialNumber,
  kNodeTexts
};
inline constexpr std::array<const char *, kNodeTexts> kNodeKeys = {
    "name",        "status",        "product",          "description", "bundle",
    "mac_address", "fhvpn_address", "firmware_version", "model",       "serial_number"};

// The texts of a node's own authentication settings: those of the auth map itself, and those of the groups in
// it, "radius", "tacacs" and "ldap", each beginning where the one before it ends.
inline constexpr std::size_t kAuthTexts = 16;
inline constexpr std::array<std::size_t, 4> kAuthGroupBegins = {2, 5, 9, kAuthTexts};
inline constexpr std::array<const char *, kAuthTexts> kAuthKeys = {
    "auth_method", "auth_type",         "authenticationServers",    "accountingServers",
    "password",    "password",          "authenticationServers",    "method",
    "service",     "password",          "authenticationServers",    "baseDN",
    "bindDN",      "usernameAttribute", "groupMembershipAttribute", "bindPassword"};

inline constexpr std::size_t kLdapPassword = 9;  // read and kept, but nobody can ask for it

struct Etag {
  std::string id, name, status;
  std::int32_t version = 0;
};
struct Interface {
  std::string id, name, ipv4_address, ipv6_address;
};
struct User {
  std::string username, description;
  std::int32_t disabled = 0;
  std::vector<std::string> groups;
};
struct Group {
  std::string groupname, description;
  bool system = false;
  std::vector<std::string> roles;
};
struct Certificate {
  std::string id, common_name, certificate, private_key;
  std::int32_t revoke_time = 0;
};

struct Node {
  std::uint32_t number = 0;  // "nodes-<number>", counted from 1
  std::string id;
  std::array<std::string, kNodeTexts> texts;
  bool approved = false;
  std::uint32_t ssh_port = 0;
  std::vector<Etag> etags;
  Certificate certificate;
  // Loaded only in the whole set (see FieldSet).
  std::vector<Interface> interfaces;
  std::vector<User> users;
  std::vector<Group> groups;
  bool use_remote_groups = false;
  std::array<std::string, kAuthTexts> auth;
};

// What a load reads and copies. All of a node is always stored.
enum class FieldSet {
  common,  // texts, approved, ssh port, etags, certificate
  whole    // and interfaces, users, groups, authentication
};
// The set that libtwobject's node loader reads at present; the figures compare everyone on this set.
inline constexpr FieldSet kLoadedByNodeLoader = FieldSet::whole;

inline constexpr std::uint32_t kBundles = 4;

// The node with this number; always the same for the same number.
Node make_node(std::uint32_t number);
std::vector<Node> make_nodes(std::uint32_t count);

// Another description for the node, different for every `turn` and always of the same length.
std::string changed_description(std::uint32_t turn);

// The decimal number behind the last '-' of an ID.
std::uint32_t number_of(const char *id);

}  // namespace bench
