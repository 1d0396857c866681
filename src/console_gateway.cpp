// The console gateway service: its SSH delimiter.
#include <twobject/console_gateway.h>

#include "record/boundary.hpp"
#include "record/view.hpp"

struct cfg_service_console_gateway : tw::object_view {
  tw::text ssh_delimiter;
};

namespace {

using gateway = cfg_service_console_gateway;

constexpr char gateway_map[] = "services.consoleGateway";
constexpr char delimiter_path[] = "services.consoleGateway.ssh_delimiter";

// Kept as it is given: an empty delimiter is one.
int keep(gateway &record, const char *delimiter) noexcept {
  return record.ssh_delimiter.assign(delimiter, std::strlen(delimiter));
}

}  // namespace

cfg_service_console_gateway *cfg_get_service_console_gateway(cfg *store) noexcept {
  char *delimiter = nullptr;
  if (!cfg_string_value(cfg_get_by_path(store, delimiter_path), &delimiter)) return nullptr;
  auto record = tw::new_view<gateway>(store);
  if (record)
    record->ssh_delimiter.adopt(delimiter);
  else
    std::free(delimiter);
  return record.release();
}

const char *cfg_service_console_gateway_get_ssh_delim(const cfg_service_console_gateway *record) noexcept {
  return tw::get<&gateway::ssh_delimiter>(record);
}
int cfg_service_console_gateway_set_ssh_delim(cfg_service_console_gateway *record,
                                              const char *delimiter) noexcept {
  return record && delimiter && keep(*record, delimiter);
}

int cfg_service_console_gateway_update(cfg_service_console_gateway *record) noexcept {
  if (!record || !record->cfg) return 0;
  cfg_elem *map = tw::map_at(record->cfg, gateway_map);
  return map && tw::store_map_string(record->cfg, map, "ssh_delimiter", record->ssh_delimiter.c_str());
}

void cfg_service_console_gateway_free(cfg_service_console_gateway *record) noexcept { delete record; }
