// Network connections: the addressing of the appliance's interfaces.
#include "network/conn.hpp"

#include "network/sub_map.hpp"
#include "record/boundary.hpp"
#include "record/tables.hpp"

namespace {

using conn = cfg_net_conn;

constexpr char conns[] = "system.net.conns";

constexpr const char *role_texts[] = {"wan", "lan", "wlan", "oobfo", "cellular", "dialout"};
constexpr tw::enumeration roles{.texts = role_texts, .any_case = true};
constexpr const char *mode_texts[] = {"static", "dhcp"};
constexpr tw::enumeration modes{.texts = mode_texts, .any_case = true};

constexpr auto name = tw::string_row<&conn::name>("name");
constexpr auto enabled = tw::bool_row<&conn::enabled>("enabled");
constexpr auto description = tw::string_row<&conn::description>("description");
constexpr auto role = tw::known_enum_row<&conn::role, roles>("role");
constexpr auto mode = tw::known_enum_row<&conn::mode, modes>("mode");
constexpr auto physif = mandatory(tw::reference_row<&conn::physif_id>("physif"));
constexpr auto address = tw::string_row<&conn::static_address>("address");
constexpr auto netmask = tw::string_row<&conn::static_netmask>("netmask");
constexpr auto broadcast = tw::string_row<&conn::static_broadcast>("broadcast");
constexpr auto gateway = tw::string_row<&conn::static_gateway>("gateway");
constexpr auto dns1 = tw::string_row<&conn::static_dns1>("dns1");
constexpr auto dns2 = tw::string_row<&conn::static_dns2>("dns2");
constexpr auto vendor_class = tw::string_row<&conn::dhcp_vendor_class>("vendor_class");
constexpr auto udhcpc_script = tw::string_row<&conn::dhcp_udhcpc_script>("udhcpc_script");

constexpr tw::load_list load_common({mandatory(name), mandatory(enabled), description, role, mode, physif});
constexpr tw::load_list load_static({address, netmask, broadcast, gateway, dns1, dns2});
constexpr tw::load_list load_dhcp({vendor_class, udhcpc_script});
constexpr tw::store_list save_common({enabled, name, description, role, mode, physif});
constexpr tw::store_list save_dhcp({vendor_class, udhcpc_script});
constexpr tw::store_list save_static({address, netmask, broadcast, gateway, dns1, dns2});

constexpr tw::named_list lists[] = {
    {"connection load", load_common},         {"connection load, \"static\"", load_static},
    {"connection load, \"dhcp\"", load_dhcp}, {"connection save", save_common},
    {"connection save, \"dhcp\"", save_dhcp}, {"connection save, \"static\"", save_static},
};

// A sub-map that is not there leaves its fields empty; one that is there must be readable.
template <std::size_t N>
bool load_sub_map(const tw::load_list<conn, N> &list, conn &record, cfg_elem *elem, const char *key) {
  cfg_elem *map = cfg_simple_get_mapelem(record.cfg, elem, key);
  return cfg_elem_kind(map) != CFG_MAP || tw::load(list, record, map);
}

bool has_static_field(const conn &c) {
  return c.static_address || c.static_netmask || c.static_broadcast || c.static_gateway || c.static_dns1 ||
         c.static_dns2;
}

bool has_dhcp_field(const conn &c) { return c.dhcp_vendor_class || c.dhcp_udhcpc_script; }

// Unlike those of a physical interface, a sub-map that is no longer needed goes once it is empty. One whose
// keys cannot be listed goes as well.
template <std::size_t N>
bool store_or_drop(const tw::store_list<conn, N> &list, const conn &record, cfg_elem *elem, const char *key,
                   bool needed) noexcept {
  cfg_elem *map = nullptr;
  if (!tw::store_sub_map(list, record, elem, key, needed, &map)) return false;
  if (needed || !map) return true;
  int32_t keys = 0;
  return (cfg_map_keys(map, nullptr, &keys) && keys > 0) || tw::delete_map_key(record.cfg, elem, key);
}

}  // namespace

const tw::tables tw::conn_tables = lists;

const char *cfg_net_conn_role_to_string(int32_t value) noexcept { return roles.to_string(value); }
int32_t cfg_net_conn_role_from_string(const char *text) noexcept { return roles.from_string(text); }

const char *cfg_net_conn_mode_to_string(int32_t value) noexcept { return modes.to_string(value); }
int32_t cfg_net_conn_mode_from_string(const char *text) noexcept { return modes.from_string(text); }

int32_t cfg_get_net_conn_count(cfg *store) noexcept { return tw::collection_count(store, conns); }

cfg_net_conn *cfg_net_conn_from_elem(cfg *store, cfg_elem *elem) noexcept {
  if (!store) return nullptr;
  const tw::memory_watch memory;
  auto record = tw::new_view<conn>(store, elem);
  const bool loaded = record && tw::load(load_common, *record, elem) &&
                      load_sub_map(load_static, *record, elem, "static") &&
                      load_sub_map(load_dhcp, *record, elem, "dhcp");
  return loaded && !memory.ran_short() ? record.release() : nullptr;
}
cfg_net_conn *cfg_get_net_conn_by_id(cfg *store, const char *id) noexcept {
  return cfg_net_conn_from_elem(store, cfg_get_by_id(store, id));
}
cfg_net_conn *cfg_get_net_conn_by_index(cfg *store, int32_t index) noexcept {
  return cfg_net_conn_from_elem(store, tw::collection_entry(store, conns, index));
}

cfg_net_physif *cfg_get_net_physif_by_net_conn(cfg *store, const cfg_net_conn *record) noexcept {
  return record ? cfg_get_net_physif_by_id(store, record->physif_id.c_str()) : nullptr;
}

const char *cfg_net_conn_get_id(const cfg_net_conn *record) noexcept { return tw::get<&conn::uuid>(record); }

const char *cfg_net_conn_get_name(const cfg_net_conn *record) noexcept {
  return tw::get<&conn::name>(record);
}
int cfg_net_conn_set_name(cfg_net_conn *record, const char *text) noexcept {
  return tw::replace<&conn::name>(record, text);
}

int32_t cfg_net_conn_get_enabled(const cfg_net_conn *record) noexcept {
  return tw::get<&conn::enabled>(record);
}
int cfg_net_conn_set_enabled(cfg_net_conn *record, int32_t value) noexcept {
  return tw::set<&conn::enabled>(record, value != 0);
}

const char *cfg_net_conn_get_description(const cfg_net_conn *record) noexcept {
  return tw::get<&conn::description>(record);
}
int cfg_net_conn_set_description(cfg_net_conn *record, const char *text) noexcept {
  return tw::replace<&conn::description>(record, text);
}

int32_t cfg_net_conn_get_role(const cfg_net_conn *record) noexcept { return tw::get<&conn::role>(record); }
int cfg_net_conn_set_role(cfg_net_conn *record, int32_t value) noexcept {
  return tw::set<&conn::role>(record, value);
}

int32_t cfg_net_conn_get_mode(const cfg_net_conn *record) noexcept { return tw::get<&conn::mode>(record); }
int cfg_net_conn_set_mode(cfg_net_conn *record, int32_t value) noexcept {
  return tw::set<&conn::mode>(record, value);
}

const char *cfg_net_conn_get_physif_id(const cfg_net_conn *record) noexcept {
  return tw::get<&conn::physif_id>(record);
}
int cfg_net_conn_set_physif_id(cfg_net_conn *record, const char *id) noexcept {
  return tw::replace<&conn::physif_id>(record, id);
}

const char *cfg_net_conn_get_static_address(const cfg_net_conn *record) noexcept {
  return tw::get<&conn::static_address>(record);
}
int cfg_net_conn_set_static_address(cfg_net_conn *record, const char *text) noexcept {
  return tw::replace<&conn::static_address>(record, text);
}

const char *cfg_net_conn_get_static_netmask(const cfg_net_conn *record) noexcept {
  return tw::get<&conn::static_netmask>(record);
}
int cfg_net_conn_set_static_netmask(cfg_net_conn *record, const char *text) noexcept {
  return tw::replace<&conn::static_netmask>(record, text);
}

const char *cfg_net_conn_get_static_broadcast(const cfg_net_conn *record) noexcept {
  return tw::get<&conn::static_broadcast>(record);
}
int cfg_net_conn_set_static_broadcast(cfg_net_conn *record, const char *text) noexcept {
  return tw::replace<&conn::static_broadcast>(record, text);
}

const char *cfg_net_conn_get_static_gateway(const cfg_net_conn *record) noexcept {
  return tw::get<&conn::static_gateway>(record);
}
int cfg_net_conn_set_static_gateway(cfg_net_conn *record, const char *text) noexcept {
  return tw::replace<&conn::static_gateway>(record, text);
}

const char *cfg_net_conn_get_static_dns1(const cfg_net_conn *record) noexcept {
  return tw::get<&conn::static_dns1>(record);
}
int cfg_net_conn_set_static_dns1(cfg_net_conn *record, const char *text) noexcept {
  return tw::replace<&conn::static_dns1>(record, text);
}

const char *cfg_net_conn_get_static_dns2(const cfg_net_conn *record) noexcept {
  return tw::get<&conn::static_dns2>(record);
}
int cfg_net_conn_set_static_dns2(cfg_net_conn *record, const char *text) noexcept {
  return tw::replace<&conn::static_dns2>(record, text);
}

const char *cfg_net_conn_get_dhcp_vendor_class(const cfg_net_conn *record) noexcept {
  return tw::get<&conn::dhcp_vendor_class>(record);
}
int cfg_net_conn_set_dhcp_vendor_class(cfg_net_conn *record, const char *text) noexcept {
  return tw::replace<&conn::dhcp_vendor_class>(record, text);
}

const char *cfg_net_conn_get_dhcp_udhcpc_script(const cfg_net_conn *record) noexcept {
  return tw::get<&conn::dhcp_udhcpc_script>(record);
}
int cfg_net_conn_set_dhcp_udhcpc_script(cfg_net_conn *record, const char *text) noexcept {
  return tw::replace<&conn::dhcp_udhcpc_script>(record, text);
}

int cfg_net_conn_store(cfg_net_conn *nc) noexcept {
  TW_ASSERT(nc && nc->cfg, "src/network");
  cfg_elem *elem = tw::element_of(*nc);
  if (!elem || !tw::store(save_common, *nc, nc->cfg, elem)) return 0;
  return store_or_drop(save_dhcp, *nc, elem, "dhcp", nc->mode == CFG_NET_CONN_DHCP || has_dhcp_field(*nc)) &&
         store_or_drop(save_static, *nc, elem, "static",
                       nc->mode == CFG_NET_CONN_STATIC || has_static_field(*nc));
}

void cfg_net_conn_free(cfg_net_conn *record) noexcept { delete record; }
