// Physical interfaces: the network devices of the appliance.
#include <twobject/net_physif.h>

#include "network/sub_map.hpp"
#include "record/boundary.hpp"
#include "record/tables.hpp"

struct cfg_net_physif : tw::object_view {
  tw::text name;
  tw::text device;
  int32_t enabled = 0;
  tw::text description;
  int32_t media_type = 0;
  int32_t mtu = 0;
  tw::text link_speed;
  tw::text auth;
  tw::text config;
  tw::text encryption;
  tw::secret psk;
  tw::text ssid;
  tw::text regdomain;
};

namespace {

using physif = cfg_net_physif;

constexpr char physifs[] = "system.net.physifs";

constexpr const char *media_texts[] = {"ethernet", "wireless"};
constexpr tw::enumeration media_types{.texts = media_texts, .any_case = true};

constexpr auto name = tw::string_row<&physif::name>("name");
constexpr auto device = tw::string_row<&physif::device>("device");
constexpr auto enabled = tw::bool_row<&physif::enabled>("enabled");
constexpr auto description = tw::string_row<&physif::description>("description");
constexpr auto mtu = tw::int_row<&physif::mtu>("mtu");
constexpr auto media = tw::known_enum_row<&physif::media_type, media_types>("media");
constexpr auto link_speed = mandatory(tw::string_row<&physif::link_speed>("link_speed"));
constexpr auto auth = mandatory(tw::string_row<&physif::auth>("auth"));
constexpr auto config = mandatory(tw::string_row<&physif::config>("config"));
constexpr auto encryption = mandatory(tw::string_row<&physif::encryption>("encryption"));
constexpr auto psk = mandatory(tw::string_row<&physif::psk>("psk"));
constexpr auto ssid = mandatory(tw::string_row<&physif::ssid>("ssid"));
constexpr auto regdomain = mandatory(tw::string_row<&physif::regdomain>("regdomain"));

constexpr tw::load_list load_common({mandatory(name), mandatory(device), mandatory(enabled), description, mtu,
                                     media});
constexpr tw::load_list load_ethernet({link_speed});
constexpr tw::load_list load_wireless({auth, config, encryption, psk, ssid, regdomain});
constexpr tw::store_list save_common({enabled, name, device, description, mtu, media});
constexpr tw::store_list save_ethernet({link_speed});
constexpr tw::store_list save_wireless({auth, config, encryption, psk, ssid, regdomain});

constexpr tw::named_list lists[] = {
    {"physical interface load", load_common},
    {"physical interface load, \"ethernet\"", load_ethernet},
    {"physical interface load, \"wireless\"", load_wireless},
    {"physical interface save", save_common},
    {"physical interface save, \"ethernet\"", save_ethernet},
    {"physical interface save, \"wireless\"", save_wireless},
};

}  // namespace

const tw::tables tw::physif_tables = lists;

const char *cfg_net_physif_media_type_to_string(int32_t media_type) noexcept {
  return media_types.to_string(media_type);
}
int32_t cfg_net_physif_media_type_from_string(const char *text) noexcept {
  return media_types.from_string(text);
}

int32_t cfg_get_net_physif_count(cfg *store) noexcept { return tw::collection_count(store, physifs); }

cfg_net_physif *cfg_net_physif_from_elem(cfg *store, cfg_elem *elem) noexcept {
  if (!store) return nullptr;
  auto record = tw::new_view<physif>(store, elem);
  if (!record || !tw::load(load_common, *record, elem)) return nullptr;
  const bool loaded = record->media_type == CFG_NET_PHYSIF_ETHERNET
                          ? tw::load_below(load_ethernet, *record, elem, "ethernet")
                          : tw::load_below(load_wireless, *record, elem, "wireless");
  return loaded ? record.release() : nullptr;
}
cfg_net_physif *cfg_get_net_physif_by_id(cfg *store, const char *id) noexcept {
  return cfg_net_physif_from_elem(store, cfg_get_by_id(store, id));
}
cfg_net_physif *cfg_get_net_physif_by_index(cfg *store, int32_t index) noexcept {
  return cfg_net_physif_from_elem(store, tw::collection_entry(store, physifs, index));
}

const char *cfg_net_physif_get_id(const cfg_net_physif *record) noexcept {
  return tw::get<&physif::uuid>(record);
}

const char *cfg_net_physif_get_name(const cfg_net_physif *record) noexcept {
  return tw::get<&physif::name>(record);
}
int cfg_net_physif_set_name(cfg_net_physif *record, const char *text) noexcept {
  return tw::replace<&physif::name>(record, text);
}

const char *cfg_net_physif_get_device(const cfg_net_physif *record) noexcept {
  return tw::get<&physif::device>(record);
}

int32_t cfg_net_physif_get_enabled(const cfg_net_physif *record) noexcept {
  return tw::get<&physif::enabled>(record);
}
int cfg_net_physif_set_enabled(cfg_net_physif *record, int32_t value) noexcept {
  return tw::set<&physif::enabled>(record, value != 0);
}

const char *cfg_net_physif_get_description(const cfg_net_physif *record) noexcept {
  return tw::get<&physif::description>(record);
}
int cfg_net_physif_set_description(cfg_net_physif *record, const char *text) noexcept {
  return tw::replace<&physif::description>(record, text);
}

int32_t cfg_net_physif_get_media_type(const cfg_net_physif *record) noexcept {
  return tw::get<&physif::media_type>(record);
}
int cfg_net_physif_set_media_type(cfg_net_physif *record, int32_t media_type) noexcept {
  return tw::set<&physif::media_type>(record, media_type);
}

int32_t cfg_net_physif_get_mtu(const cfg_net_physif *record) noexcept {
  return tw::get<&physif::mtu>(record);
}
int cfg_net_physif_set_mtu(cfg_net_physif *record, int32_t bytes) noexcept {
  return tw::set<&physif::mtu>(record, bytes);
}

const char *cfg_net_physif_get_ethernet_link_speed(const cfg_net_physif *record) noexcept {
  return tw::get<&physif::link_speed>(record);
}
int cfg_net_physif_set_ethernet_link_speed(cfg_net_physif *record, const char *text) noexcept {
  return tw::replace<&physif::link_speed>(record, text);
}

const char *cfg_net_physif_get_wireless_auth(const cfg_net_physif *record) noexcept {
  return tw::get<&physif::auth>(record);
}
int cfg_net_physif_set_wireless_auth(cfg_net_physif *record, const char *text) noexcept {
  return tw::replace<&physif::auth>(record, text);
}

const char *cfg_net_physif_get_wireless_config(const cfg_net_physif *record) noexcept {
  return tw::get<&physif::config>(record);
}
int cfg_net_physif_set_wireless_config(cfg_net_physif *record, const char *text) noexcept {
  return tw::replace<&physif::config>(record, text);
}

const char *cfg_net_physif_get_wireless_encryption(const cfg_net_physif *record) noexcept {
  return tw::get<&physif::encryption>(record);
}
int cfg_net_physif_set_wireless_encryption(cfg_net_physif *record, const char *text) noexcept {
  return tw::replace<&physif::encryption>(record, text);
}

const char *cfg_net_physif_get_wireless_psk(const cfg_net_physif *record) noexcept {
  return tw::get<&physif::psk>(record);
}
int cfg_net_physif_set_wireless_psk(cfg_net_physif *record, const char *text) noexcept {
  return tw::replace<&physif::psk>(record, text);
}

const char *cfg_net_physif_get_wireless_ssid(const cfg_net_physif *record) noexcept {
  return tw::get<&physif::ssid>(record);
}
int cfg_net_physif_set_wireless_ssid(cfg_net_physif *record, const char *text) noexcept {
  return tw::replace<&physif::ssid>(record, text);
}

const char *cfg_net_physif_get_wireless_regdomain(const cfg_net_physif *record) noexcept {
  return tw::get<&physif::regdomain>(record);
}
int cfg_net_physif_set_wireless_regdomain(cfg_net_physif *record, const char *text) noexcept {
  return tw::replace<&physif::regdomain>(record, text);
}

// Unlike those of a connection, an interface's emptied sub-maps stay: callers find the map of a medium that
// was once set up.
int cfg_net_physif_store(cfg_net_physif *np) noexcept {
  TW_ASSERT(np && np->cfg, "src/network");
  cfg_elem *elem = tw::element_of(*np);
  if (!elem || !tw::store(save_common, *np, np->cfg, elem)) return 0;
  cfg_elem *map = nullptr;
  return tw::store_sub_map(save_ethernet, *np, elem, "ethernet", np->media_type == CFG_NET_PHYSIF_ETHERNET,
                           &map) &&
         tw::store_sub_map(save_wireless, *np, elem, "wireless", np->media_type == CFG_NET_PHYSIF_WIRELESS,
                           &map);
}

void cfg_net_physif_free(cfg_net_physif *record) noexcept { delete record; }
