#include "network/label.hpp"

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <cstring>
#include <memory>
#include <string_view>
#include <system_error>

namespace {

struct free_physif {
  void operator()(cfg_net_physif *physif) const noexcept { cfg_net_physif_free(physif); }
};

// The label gets into a shell's command, and a device's name comes from the store: only what device names are
// made of may pass. (The kernel itself takes names such as "$(id)".)
bool is_device_name(const char *device) noexcept {
  constexpr char allowed[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789._-:";
  return *device != '\0' && device[std::strspn(device, allowed)] == '\0';
}

// What stands behind the device. "static" and the number of the connection's ID, or "dhcp".
bool suffix_of(const cfg_net_conn *conn, char (&suffix)[32]) noexcept {
  switch (cfg_net_conn_get_mode(conn)) {
    case CFG_NET_CONN_DHCP:
      return std::snprintf(suffix, sizeof suffix, "dhcp") > 0;
    case CFG_NET_CONN_STATIC: {
      constexpr std::string_view front = "system_net_conns-";
      const char *text = cfg_net_conn_get_id(conn);
      const std::string_view id = text ? text : "";
      int number = 0;
      return id.starts_with(front) &&
             std::from_chars(id.data() + front.size(), id.data() + id.size(), number).ec == std::errc() &&
             std::snprintf(suffix, sizeof suffix, "static%d", number) > 0;
    }
    default:
      return false;
  }
}

}  // namespace

bool tw::label_of(cfg *store, const cfg_net_conn *conn, char (&label)[label_length + 1]) noexcept {
  const std::unique_ptr<cfg_net_physif, free_physif> physif(cfg_get_net_physif_by_net_conn(store, conn));
  const char *device = cfg_net_physif_get_device(physif.get());
  char suffix[32];
  if (!device || !is_device_name(device) || !suffix_of(conn, suffix)) return false;
  // The colon takes its place from the suffix, not from the device: a suffix that just fills the room behind
  // the device's name loses its last character. The addresses carry labels that were made in this way.
  const size_t room = label_length - std::min<size_t>(label_length, std::strlen(device));
  const size_t length = std::strlen(suffix);
  if (length > room) return false;
  const int kept = static_cast<int>(length == room ? length - 1 : length);
  std::snprintf(label, sizeof label, "%s:%.*s", device, kept, suffix);
  return true;
}
