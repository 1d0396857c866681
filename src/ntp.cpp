// The appliance's NTP client: its switch, and its servers entry by entry.
#include <twobject/ntp.h>

#include "record/boundary.hpp"
#include "record/memory_watch.hpp"
#include "record/text_array.hpp"
#include "record/view.hpp"

struct cfg_ntp : tw::object_view {  // the ID is that of "services.ntp"
  int32_t enabled = 0;
  tw::text_array server_ids;
};

namespace {

using ntp = cfg_ntp;

constexpr char ntp_map[] = "services.ntp";
constexpr char servers_list[] = "services.ntp.servers";

cfg_elem *server_elem(const ntp *record, int32_t index) noexcept {
  const char *id = cfg_get_ntp_server_uuid(record, index);
  return id ? cfg_get_by_id(record->cfg, id) : nullptr;
}

// The list of servers, made inside "services.ntp" when it is absent.
cfg_elem *need_servers(cfg *store) noexcept {
  if (cfg_elem *servers = cfg_get_by_path(store, servers_list)) return servers;
  cfg_elem *servers = cfg_new_list(store);
  return cfg_add_mapelem(store, cfg_get_by_path(store, ntp_map), "servers", servers) ? servers : nullptr;
}

}  // namespace

cfg_ntp *cfg_new_ntp(cfg *store) noexcept { return tw::new_view<ntp>(store).release(); }

cfg_ntp *cfg_get_ntp(cfg *store) noexcept {
  const tw::memory_watch memory;
  auto record = tw::new_view<ntp>(store);
  if (!record) return nullptr;
  if (cfg_elem *map = cfg_get_by_path(store, ntp_map)) {
    if (!tw::take_uuid(record->uuid, map)) return nullptr;
    cfg_map_get_bool(store, map, "enabled", &record->enabled);
    if (!record->server_ids.append_ids(cfg_get_by_path(store, servers_list))) return nullptr;
  }
  return memory.ran_short() ? nullptr : record.release();
}

const char *cfg_get_ntp_id(const cfg_ntp *record) noexcept { return tw::get<&ntp::uuid>(record); }

int32_t cfg_get_ntp_enabled(const cfg_ntp *record) noexcept { return tw::get<&ntp::enabled>(record); }
void cfg_set_ntp_enabled(cfg_ntp *record, int32_t enabled) noexcept {
  tw::set<&ntp::enabled>(record, enabled);
}

int32_t cfg_get_ntp_server_count(const cfg_ntp *record) noexcept {
  return record ? record->server_ids.count() : 0;
}
// Callers stay below the count; what is outside is answered like an entry that is gone.
const char *cfg_get_ntp_server_uuid(const cfg_ntp *record, int32_t index) noexcept {
  return record ? record->server_ids.at(index) : nullptr;
}

char *cfg_get_ntp_server_value(const cfg_ntp *record, int32_t index) noexcept {
  char *server = nullptr;
  return cfg_string_value(server_elem(record, index), &server) ? server : nullptr;
}
int cfg_set_ntp_server_value(cfg_ntp *record, int32_t index, const char *server) noexcept {
  return record && cfg_set_string(record->cfg, server_elem(record, index), server);
}
int cfg_delete_ntp_server(cfg_ntp *record, int32_t index) noexcept {
  return record && cfg_delete_element(record->cfg, server_elem(record, index));
}
// Callers count on 1: what could not be appended, they see when they load the settings anew.
int cfg_create_ntp_server(cfg_ntp *record, const char *server) noexcept {
  if (!record) return 0;
  cfg_append_future_listelem(record->cfg, need_servers(record->cfg), cfg_new_string(record->cfg, server));
  return 1;
}

int cfg_ntp_save(cfg_ntp *record) noexcept {
  if (!record) return 0;
  cfg_elem *map = nullptr;
  if (record->uuid) {
    map = tw::element_of(*record);
  } else {
    // The new map's ID is not the record's: callers tell by it whether the settings existed when they loaded.
    map = cfg_new_map(record->cfg);
    if (!cfg_add_mapelem(record->cfg, cfg_get_by_path(record->cfg, "services"), "ntp", map)) return 0;
  }
  return cfg_map_set_bool(record->cfg, map, "enabled", record->enabled != 0);
}

void cfg_ntp_free(cfg_ntp *record) noexcept { delete record; }
