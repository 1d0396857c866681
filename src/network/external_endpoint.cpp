// External endpoints: the addresses at which nodes reach the appliance from outside.
#include <twobject/external_endpoint.h>

#include "record/boundary.hpp"
#include "record/engine.hpp"
#include "record/tables.hpp"
#include "record/text_array.hpp"
#include "record/view.hpp"

struct cfg_net_external_endpoint : tw::object_view {
  tw::text address;
  int32_t api_port = 0;
  int32_t delete_api_port = 0;
  int32_t vpn_port = 0;
  int32_t delete_vpn_port = 0;
};

struct cfg_net_external_endpoint_list {
  tw::text_array ids;
};

namespace {

using endpoint = cfg_net_external_endpoint;

constexpr char endpoints[] = "system.net.external_endpoints";

// An endpoint is what it has: nothing is needed for loading one.
constexpr auto address = lenient(tw::string_row<&endpoint::address>("address"));
constexpr auto api_port = lenient(tw::int_row<&endpoint::api_port>("api_port"));
constexpr auto vpn_port = lenient(tw::int_row<&endpoint::vpn_port>("vpn_port"));

constexpr tw::load_list load_endpoint({address, api_port, vpn_port});

constexpr tw::named_list lists[] = {{"external endpoint load", load_endpoint}};

// Writes a port or deletes its key. The number of values that were written.
int write_port(const endpoint &record, cfg_elem *elem, const tw::row_data &port, bool drop) noexcept {
  if (!drop) return port.store(record.cfg, elem, port.key, &record);
  cfg_map_delete_key(record.cfg, elem, port.key);
  return 0;
}

// Writes the address and what is to stay of the ports. The number of values that were written.
int write(const endpoint &record, cfg_elem *elem, bool drop_api_port, bool drop_vpn_port) noexcept {
  // Not by its row, to which deleting the key of a NULL address would be a success.
  int written = cfg_map_set_string(record.cfg, elem, address.key, record.address.c_str());
  written += write_port(record, elem, api_port, drop_api_port);
  written += write_port(record, elem, vpn_port, drop_vpn_port);
  return written;
}

}  // namespace

const tw::tables tw::external_endpoint_tables = lists;

cfg_net_external_endpoint_list *cfg_net_get_external_endpoint_list(cfg *store) noexcept {
  cfg_elem *list = cfg_get_by_path(store, endpoints);
  if (!list) return nullptr;
  std::unique_ptr<cfg_net_external_endpoint_list> result(new (std::nothrow) cfg_net_external_endpoint_list);
  return result && result->ids.append_ids(list) ? result.release() : nullptr;
}
int32_t cfg_net_external_endpoint_count(const cfg_net_external_endpoint_list *list) noexcept {
  return list ? list->ids.count() : 0;
}
const char *cfg_net_get_external_endpoint(const cfg_net_external_endpoint_list *list,
                                          int32_t index) noexcept {
  return list ? list->ids.at(index) : nullptr;
}
void cfg_net_external_endpoint_list_free(cfg_net_external_endpoint_list *list) noexcept { delete list; }

cfg_net_external_endpoint *cfg_net_external_endpoint_new(cfg *store) noexcept {
  return store ? tw::new_view<endpoint>(store).release() : nullptr;
}
cfg_net_external_endpoint *cfg_net_get_external_endpoint_by_id(cfg *store, const char *id) noexcept {
  cfg_elem *elem = cfg_get_by_id(store, id);
  auto record = tw::new_view<endpoint>(store, elem);
  if (!record) return nullptr;
  // An entry that is no map has no keys to read.
  return cfg_elem_kind(elem) != CFG_MAP || tw::load(load_endpoint, *record, elem) ? record.release()
                                                                                  : nullptr;
}

const char *cfg_net_external_endpoint_get_uuid(const cfg_net_external_endpoint *record) noexcept {
  return tw::get<&endpoint::uuid>(record);
}

const char *cfg_net_external_endpoint_get_address(const cfg_net_external_endpoint *record) noexcept {
  return tw::get<&endpoint::address>(record);
}
// Kept as it is given: an empty address stays empty.
int cfg_net_external_endpoint_set_address(cfg_net_external_endpoint *record, const char *text) noexcept {
  return record && text && record->address.assign(text, std::strlen(text));
}

int32_t cfg_net_external_endpoint_get_api_port(const cfg_net_external_endpoint *record) noexcept {
  return tw::get<&endpoint::api_port>(record);
}
int cfg_net_external_endpoint_set_api_port(cfg_net_external_endpoint *record, int32_t port) noexcept {
  return tw::set<&endpoint::api_port>(record, port);
}

int32_t cfg_net_external_endpoint_get_vpn_port(const cfg_net_external_endpoint *record) noexcept {
  return tw::get<&endpoint::vpn_port>(record);
}
int cfg_net_external_endpoint_set_vpn_port(cfg_net_external_endpoint *record, int32_t port) noexcept {
  return tw::set<&endpoint::vpn_port>(record, port);
}

// Setting a port does not take these back: callers delete a port and still show the old one in the record.
int cfg_net_external_endpoint_delete_api_port(cfg_net_external_endpoint *record) noexcept {
  return tw::set<&endpoint::delete_api_port>(record, 1);
}
int cfg_net_external_endpoint_delete_vpn_port(cfg_net_external_endpoint *record) noexcept {
  return tw::set<&endpoint::delete_vpn_port>(record, 1);
}

// Once there is an element the save counts as done: what could not be written is found by the commit.
int cfg_net_external_endpoint_save(cfg_net_external_endpoint *record) noexcept {
  if (!record || !record->cfg) return 0;
  cfg_elem *elem = record->uuid ? tw::element_of(*record) : tw::append_new_element(*record, endpoints);
  if (!elem) return 0;
  write(*record, elem, record->delete_api_port != 0, record->delete_vpn_port != 0);
  return 1;
}

int cfg_net_update_external_endpoint(cfg_net_external_endpoint *record, int32_t delete_api_port,
                                     int32_t delete_vpn_port) noexcept {
  cfg_elem *elem = record ? tw::element_of(*record) : nullptr;
  return elem && write(*record, elem, delete_api_port != 0, delete_vpn_port != 0) > 0;
}

int cfg_net_external_endpoint_delete(cfg_net_external_endpoint *record) noexcept {
  return record && cfg_delete_element(record->cfg, tw::element_of(*record));
}

void cfg_net_external_endpoint_free(cfg_net_external_endpoint *record) noexcept { delete record; }
