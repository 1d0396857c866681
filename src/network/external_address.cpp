// Where the appliance is reached from outside: as configured, or as the operating system has it.
#include <arpa/inet.h>
#include <twobject/external_endpoint.h>
#include <twobject/net_address.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>

#include "record/heap_string.hpp"
#include "record/memory_watch.hpp"
#include "record/text.hpp"

namespace {

constexpr char default_static[] = "default-conn-1";
constexpr char default_dhcp[] = "default-conn-2";

// The first label that has an address decides, so the order of the four lists is the order of preference.
constexpr char by_label[] =
    "for i in %s%s %s %s; do ip address show label $i| head -n 1|awk '{if($2 !=\"\") print $2 }'; done "
    "|cut -d'/' -f1";
constexpr char by_default_route[] =
    "ip route get `ip -4 route list 0/0 | head -n 1 | cut -d ' ' -f 3` | head -n 1 | awk '{print $5}'";

using line = char[1024];

const char *or_empty(const tw::heap_string &text) noexcept { return text ? text.get() : ""; }

// The name of a default connection, if it is in the mode that makes it one.
tw::heap_string default_name(cfg *store, const char *name, const char *mode) noexcept {
  if (!tw::same(cfg_get_conn_mode_from_conn_name(store, name), mode)) return nullptr;
  return tw::heap_string(cfg_get_interface_name_from_conn_name(store, name));
}

// Runs a command and keeps its first line, without its end. 1 with a line, 0 without or with an empty one, -1
// when the shell cannot be started.
int first_line(const char *command, line &out) noexcept {
  const std::unique_ptr<FILE, int (*)(FILE *)> pipe(popen(command, "re"), pclose);
  if (!pipe) return -1;
  if (!std::fgets(out, sizeof out, pipe.get())) return 0;
  out[std::strcspn(out, "\n")] = '\0';
  return *out != '\0';
}

// The first line that the labels' addresses give; the same results as first_line().
int address_by_label(cfg *store, line &out) noexcept {
  const tw::heap_string dhcp(cfg_get_interfaces_list_from_mode_exclude_default(store, "dhcp", default_dhcp));
  const tw::heap_string fixed(
      cfg_get_interfaces_list_from_mode_exclude_default(store, "static", default_static));
  const tw::heap_string last_dhcp = default_name(store, default_dhcp, "dhcp");
  const tw::heap_string last_fixed = default_name(store, default_static, "static");
  char command[513];
  const int length = std::snprintf(command, sizeof command, by_label, or_empty(dhcp), or_empty(fixed),
                                   or_empty(last_dhcp), or_empty(last_fixed));
  if (length < 0) return -1;
  // More labels than a command has room for: half a command is none, and finds nothing.
  return length < static_cast<int>(sizeof command) ? first_line(command, out) : 0;
}

}  // namespace

char *cfg_net_external_address_from_os(cfg *store) noexcept {
  line address;
  int found = address_by_label(store, address);
  if (found == 0) found = first_line(by_default_route, address);
  in_addr parsed;
  return found == 1 && inet_pton(AF_INET, address, &parsed) == 1 ? strdup(address) : nullptr;
}

char *cfg_net_get_external_address_from_cfg_or_os(cfg *store) noexcept {
  const tw::memory_watch memory;
  cfg_net_external_endpoint_list *list = cfg_net_get_external_endpoint_list(store);
  cfg_net_external_endpoint *first =
      cfg_net_get_external_endpoint_by_id(store, cfg_net_get_external_endpoint(list, 0));
  const char *address = cfg_net_external_endpoint_get_address(first);
  // An endpoint that memory was too short to read is not passed over.
  char *result = nullptr;
  if (address)
    result = strdup(address);
  else if (!memory.ran_short())
    result = cfg_net_external_address_from_os(store);
  cfg_net_external_endpoint_free(first);
  cfg_net_external_endpoint_list_free(list);
  return result;
}
