#include "data/node.hpp"

#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace bench {
namespace {

template <class... Args>
std::string format(const char *pattern, Args... args) {
  char text[160];
  std::snprintf(text, sizeof text, pattern, args...);
  return text;
}

// PEM-like text of about `size` bytes: the stores do not parse it, its length and its line feeds are what
// matters.
std::string pem(const char *label, std::uint32_t seed, std::size_t size) {
  static constexpr char digits[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::string text = format("-----BEGIN %s-----\n", label);
  const std::string end = format("-----END %s-----\n", label);
  std::uint32_t state = seed * 2654435761U + 1;
  std::size_t column = 0;
  while (text.size() + end.size() + 1 < size) {
    state = state * 1664525U + 1013904223U;
    text += ++column % 65 == 0 ? '\n' : digits[state >> 26];
  }
  return text + "\n" + end;
}

Certificate make_certificate(std::uint32_t n) {
  return {.id = format("certificates-%u", n),
          .common_name = format("node-%06u.fhvpn.example.net", n),
          .certificate = pem("CERTIFICATE", n, 2048),
          .private_key = pem("PRIVATE KEY", ~n, 1704),
          .revoke_time = n % 50 == 0 ? 1750000000 + static_cast<std::int32_t>(n) : 0};
}

}  // namespace

Node make_node(std::uint32_t n) {
  static constexpr std::array sites = {"syd", "ams", "bne", "sjc", "lhr", "fra"};
  const char *site = sites[n % sites.size()];
  const std::string id = format("nodes-%u", n);
  Node node;
  node.number = n;
  node.id = id;
  node.texts[kName] = format("console-%s-rack%02u-%06u", site, n % 40, n);
  node.texts[kStatus] = "Enrolled";
  node.texts[kProduct] = "tarnwell";
  node.texts[kDescription] =
      format("Out-of-band access, %s hall %u, row %02u, rack %02u", site, n % 5, n % 24, n % 40);
  node.texts[kBundle] = format("enrollment_bundles-%u", n % kBundles + 1);
  node.texts[kMacAddress] = format("00:13:c6:%02x:%02x:%02x", (n >> 16) & 255, (n >> 8) & 255, n & 255);
  node.texts[kFhvpnAddress] = format("192.168.%u.%u", 128 + ((n >> 8) & 127), n & 255);
  node.texts[kFirmwareVersion] = format("5.%u.%u", n % 4, n % 7);
  node.texts[kModel] = n % 2 ? "TW7148-2-LMV" : "TW7116-2-DAC";
  node.texts[kSerialNumber] = format("7148041%09u", n);
  node.approved = n % 10 != 0;
  node.ssh_port = 22 + n % 3;
  static constexpr std::array etag_names = {"config", "ports", "users_groups"};
  for (std::uint32_t i = 0; i < 3; ++i)
    node.etags.push_back({.id = format("nodes-%u_etags-%u", n, i + 1),
                          .name = etag_names[i],
                          .status = n % 20 ? "synchronised" : "pending",
                          .version = static_cast<std::int32_t>(n * 3 + i)});
  node.certificate = make_certificate(n);
  for (std::uint32_t i = 0; i < 2; ++i) {
    node.interfaces.push_back(
        {.id = format("nodes-%u_interfaces-%u", n, i + 1),
         .name = i ? "Network - Secondary" : "Network - Primary",
         .ipv4_address = format("10.%u.%u.%u", i + 1, (n >> 8) & 255, n & 255),
         .ipv6_address = format("fd00:%u::213:c6ff:fe%02x:%04x", i + 1, n >> 16, n & 65535)});
    node.users.push_back({.username = i ? "operator" : "root",
                          .description = i ? "Shift operator" : "System wide SuperUser account",
                          .disabled = static_cast<std::int32_t>(n % 13 == 0),
                          .groups = {"admin", i ? "operators" : "users"}});
    node.groups.push_back(
        {.groupname = i ? "operators" : "admin",
         .description = i ? "May use the ports of the hall" : "Unlimited configuration and management access",
         .system = i == 0,
         .roles = {i ? "ports-user" : "admin", "pmshell"}});
  }
  node.use_remote_groups = n % 3 == 0;
  const std::string servers = format("10.20.%u.5,10.20.%u.6", n % 8, n % 8);
  node.auth = {"RADIUS",
               "Local",
               servers,
               servers,
               "correct-horse-battery",
               "staple-of-the-hour",
               servers,
               "PAP",
               "raccess",
               "not-the-bind-password",
               servers,
               "dc=fernhollow,dc=example,dc=net",
               "cn=console,ou=services,dc=fernhollow,dc=example,dc=net",
               "sAMAccountName",
               "memberOf",
               "seven-bridges-road"};
  return node;
}

std::vector<Node> make_nodes(std::uint32_t count) {
  std::vector<Node> nodes;
  nodes.reserve(count);
  for (std::uint32_t n = 1; n <= count; ++n) nodes.push_back(make_node(n));
  return nodes;
}

std::string changed_description(std::uint32_t turn) {
  return format("Moved to another rack, work order %08u", turn);
}

std::uint32_t number_of(const char *id) {
  const char *dash = std::strrchr(id, '-');
  return dash == nullptr ? 0 : static_cast<std::uint32_t>(std::strtoul(dash + 1, nullptr, 10));
}

}  // namespace bench
