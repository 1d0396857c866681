// The live status of a connection, as the runtime information daemon knows it.
#include <twinfod.h>
#include <twmisc.h>

#include "network/conn.hpp"
#include "record/boundary.hpp"
#include "record/enumeration.hpp"
#include "record/heap_string.hpp"

namespace {

using runtime = tw::conn_runtime;

constexpr const char *status_texts[] = {"unknown", "down", "starting", "stopping", "running", "reloading"};
constexpr tw::enumeration statuses{.texts = status_texts, .first = CFG_NET_CONN_UNKNOWN};

// The connection manager publishes more words than there are states. The first that a value contains decides,
// in this order: "started" is down because "start" stands before "up", and "stopping" never gets to "up".
struct status_word {
  const char *word;
  int32_t status;
};
constexpr status_word status_words[] = {
    {"starting", CFG_NET_CONN_STARTING}, {"test", CFG_NET_CONN_STARTING}, {"down", CFG_NET_CONN_DOWN},
    {"start", CFG_NET_CONN_DOWN},        {"stop", CFG_NET_CONN_STOPPING}, {"up", CFG_NET_CONN_RUNNING},
};

int32_t status_of(const char *value) noexcept {
  for (const status_word &entry : status_words)
    if (std::strstr(value, entry.word)) return entry.status;
  return CFG_NET_CONN_UNKNOWN;
}

// All values are asked of one state of the daemon, so that they belong together.
class daemon_state {
 public:
  daemon_state() noexcept : state_(infod_get_multiple_start()) {}
  ~daemon_state() { infod_get_multiple_end(state_); }
  daemon_state(const daemon_state &) = delete;
  daemon_state &operator=(const daemon_state &) = delete;

  explicit operator bool() const noexcept { return state_ != nullptr; }

  // The value of a key, and when it was published; NULL when it cannot be read.
  tw::heap_string get(const char *key, int64_t &time_ms) const noexcept {
    char *value = nullptr;
    return tw::heap_string(infod_get_multiple_extended(state_, key, &value, &time_ms) == 0 ? value : nullptr);
  }

 private:
  infod_multiple *state_;
};

bool fill_status(runtime &block, const daemon_state &daemon, const char *name) noexcept {
  int64_t time_ms = 0;
  tw::heap_string value = daemon.get("conman.internal.reloading", time_ms);
  if (value && std::strstr(value.get(), "true")) {
    block.status = CFG_NET_CONN_RELOADING;
  } else {
    char *key = nullptr;
    if (!twmisc_replace_heap_string(&key, "conman.network-local-conn-%s.status", name)) return false;
    value = daemon.get(tw::heap_string(key).get(), time_ms);
    if (!value) return false;
    block.status = status_of(value.get());
  }
  block.last_status_change = time_ms / 1000;
  return true;
}

// One item of the lease that the DHCP client of a device has got.
bool fill_lease(tw::text &field, const daemon_state &daemon, const char *device, const char *item) noexcept {
  char *key = nullptr;
  if (!twmisc_replace_heap_string(&key, "udhcpc.%s.%s", device, item)) return false;
  int64_t time_ms = 0;
  const tw::heap_string value = daemon.get(tw::heap_string(key).get(), time_ms);
  if (!value) return false;
  const char *trimmed = tw::trim(value.get());
  return field.assign(trimmed, std::strlen(trimmed));
}

// What cannot be read ends it, and what was read stays: the getters answer with that from then on.
void fill(runtime &block, const cfg_net_conn &conn) noexcept {
  const daemon_state daemon;
  if (!daemon || !fill_status(block, daemon, conn.name.c_str()) || conn.mode != CFG_NET_CONN_DHCP) return;
  cfg_net_physif *physif = cfg_get_net_physif_by_net_conn(conn.cfg, &conn);
  if (const char *device = cfg_net_physif_get_device(physif)) {
    static_cast<void>(fill_lease(block.dhcp_address, daemon, device, "ip") &&
                      fill_lease(block.dhcp_netmask, daemon, device, "subnet") &&
                      fill_lease(block.dhcp_gateway, daemon, device, "router") &&
                      fill_lease(block.dhcp_dns, daemon, device, "dns"));
  }
  cfg_net_physif_free(physif);
}

// The record's block, filled when this is the first time that it is asked for.
const runtime *runtime_of(cfg_net_conn *conn) noexcept {
  if (!conn) return nullptr;
  if (!conn->runtime) {
    conn->runtime.reset(new (std::nothrow) runtime);
    if (conn->runtime) fill(*conn->runtime, *conn);
  }
  return conn->runtime.get();
}

}  // namespace

const char *cfg_net_conn_runtime_status_to_string(int32_t status) noexcept {
  const char *text = statuses.to_string(status);
  return text ? text : status_texts[CFG_NET_CONN_UNKNOWN];
}

int32_t cfg_net_conn_runtime_get_status(cfg_net_conn *conn) noexcept {
  return tw::get<&runtime::status>(runtime_of(conn));
}
int64_t cfg_net_conn_runtime_get_last_status_change(cfg_net_conn *conn) noexcept {
  const runtime *block = runtime_of(conn);
  return block ? block->last_status_change : 0;
}
const char *cfg_net_conn_runtime_get_dhcp_address(cfg_net_conn *conn) noexcept {
  return tw::get<&runtime::dhcp_address>(runtime_of(conn));
}
const char *cfg_net_conn_runtime_get_dhcp_netmask(cfg_net_conn *conn) noexcept {
  return tw::get<&runtime::dhcp_netmask>(runtime_of(conn));
}
const char *cfg_net_conn_runtime_get_dhcp_gateway(cfg_net_conn *conn) noexcept {
  return tw::get<&runtime::dhcp_gateway>(runtime_of(conn));
}
const char *cfg_net_conn_runtime_get_dhcp_dns(cfg_net_conn *conn) noexcept {
  return tw::get<&runtime::dhcp_dns>(runtime_of(conn));
}
