/* Physical interfaces: the network devices of the appliance. */
#ifndef TWOBJECT_NET_PHYSIF_H
#define TWOBJECT_NET_PHYSIF_H

#include <twobject/common.h>

TW_BEGIN

/**
 * A physical interface, an ethernet port or a wireless adapter: the view of one element of the list
 * "system.net.physifs". The appliance's provisioning fills that list; interfaces are neither created nor
 * deleted here.
 */
typedef struct cfg_net_physif cfg_net_physif;

/** Media types; stored as "ethernet" and "wireless". */
enum { CFG_NET_PHYSIF_ETHERNET = 1, CFG_NET_PHYSIF_WIRELESS = 2 };

/** The text of a media type; NULL for any other value. Constant. */
TW_API const char *cfg_net_physif_media_type_to_string(int32_t media_type) TW_NOEXCEPT;
/** The media type of a text, compared without regard to case; 0 for NULL and any other text. */
TW_API int32_t cfg_net_physif_media_type_from_string(const char *text) TW_NOEXCEPT;

/** Number of interfaces; 0 without the list, -1 when its size cannot be read. */
TW_API int32_t cfg_get_net_physif_count(cfg *store) TW_NOEXCEPT;

/**
 * Loads an interface from its element. NULL when it lacks one of "name", "device", "enabled" and a known
 * "media"; when it is ethernet and has no "link_speed" in its map "ethernet"; and when it is wireless and
 * lacks a key of its map "wireless". The map of the other medium is not looked at.
 */
TW_API cfg_net_physif *cfg_net_physif_from_elem(cfg *store, cfg_elem *elem) TW_NOEXCEPT;
/** Loads the interface with an ID. */
TW_API cfg_net_physif *cfg_get_net_physif_by_id(cfg *store, const char *id) TW_NOEXCEPT;
/** Loads the interface at a 0-based index; NULL outside the list or when it cannot be loaded. */
TW_API cfg_net_physif *cfg_get_net_physif_by_index(cfg *store, int32_t index) TW_NOEXCEPT;

/** ID of the element. */
TW_API const char *cfg_net_physif_get_id(const cfg_net_physif *physif) TW_NOEXCEPT;

/** Display name: "name". */
TW_API const char *cfg_net_physif_get_name(const cfg_net_physif *physif) TW_NOEXCEPT;
TW_API int cfg_net_physif_set_name(cfg_net_physif *physif, const char *name) TW_NOEXCEPT;

/** The operating system's name of the device: "device". It belongs to the hardware and cannot be set. */
TW_API const char *cfg_net_physif_get_device(const cfg_net_physif *physif) TW_NOEXCEPT;

/** Whether the interface is in use: "enabled". Setting makes any value but 0 a 1. */
TW_API int32_t cfg_net_physif_get_enabled(const cfg_net_physif *physif) TW_NOEXCEPT;
TW_API int cfg_net_physif_set_enabled(cfg_net_physif *physif, int32_t enabled) TW_NOEXCEPT;

/** Free text: "description". */
TW_API const char *cfg_net_physif_get_description(const cfg_net_physif *physif) TW_NOEXCEPT;
TW_API int cfg_net_physif_set_description(cfg_net_physif *physif, const char *description) TW_NOEXCEPT;

/** What it is: "media". Any value can be set; one without text deletes the key on store. */
TW_API int32_t cfg_net_physif_get_media_type(const cfg_net_physif *physif) TW_NOEXCEPT;
TW_API int cfg_net_physif_set_media_type(cfg_net_physif *physif, int32_t media_type) TW_NOEXCEPT;

/** Largest packet in bytes: "mtu". Kept as it is set; 0 is stored as 0. */
TW_API int32_t cfg_net_physif_get_mtu(const cfg_net_physif *physif) TW_NOEXCEPT;
TW_API int cfg_net_physif_set_mtu(cfg_net_physif *physif, int32_t mtu) TW_NOEXCEPT;

/** Speed and duplex of an ethernet port: "ethernet.link_speed". */
TW_API const char *cfg_net_physif_get_ethernet_link_speed(const cfg_net_physif *physif) TW_NOEXCEPT;
TW_API int cfg_net_physif_set_ethernet_link_speed(cfg_net_physif *physif, const char *speed) TW_NOEXCEPT;

/** How a wireless adapter authenticates: "wireless.auth". */
TW_API const char *cfg_net_physif_get_wireless_auth(const cfg_net_physif *physif) TW_NOEXCEPT;
TW_API int cfg_net_physif_set_wireless_auth(cfg_net_physif *physif, const char *auth) TW_NOEXCEPT;

/** Further configuration of a wireless adapter: "wireless.config". */
TW_API const char *cfg_net_physif_get_wireless_config(const cfg_net_physif *physif) TW_NOEXCEPT;
TW_API int cfg_net_physif_set_wireless_config(cfg_net_physif *physif, const char *config) TW_NOEXCEPT;

/** Encryption of a wireless adapter: "wireless.encryption". */
TW_API const char *cfg_net_physif_get_wireless_encryption(const cfg_net_physif *physif) TW_NOEXCEPT;
TW_API int cfg_net_physif_set_wireless_encryption(cfg_net_physif *physif, const char *encryption) TW_NOEXCEPT;

/** Pre-shared key of the wireless network, a secret: "wireless.psk". */
TW_API const char *cfg_net_physif_get_wireless_psk(const cfg_net_physif *physif) TW_NOEXCEPT;
TW_API int cfg_net_physif_set_wireless_psk(cfg_net_physif *physif, const char *psk) TW_NOEXCEPT;

/** Name of the wireless network: "wireless.ssid". */
TW_API const char *cfg_net_physif_get_wireless_ssid(const cfg_net_physif *physif) TW_NOEXCEPT;
TW_API int cfg_net_physif_set_wireless_ssid(cfg_net_physif *physif, const char *ssid) TW_NOEXCEPT;

/** Regulatory domain of a wireless adapter: "wireless.regdomain". */
TW_API const char *cfg_net_physif_get_wireless_regdomain(const cfg_net_physif *physif) TW_NOEXCEPT;
TW_API int cfg_net_physif_set_wireless_regdomain(cfg_net_physif *physif, const char *domain) TW_NOEXCEPT;

/**
 * Writes the interface back into its element. The map of its own medium is made when it is absent. The map of
 * the other medium is written as well where it exists: its keys then follow the record's fields, which mostly
 * deletes them, and the map itself stays even when it is empty.
 * @return 1; 0 when the element is gone or a write fails. Aborts on NULL: "np && np->cfg".
 */
TW_API int cfg_net_physif_store(cfg_net_physif *physif) TW_NOEXCEPT;

/** Frees the record. NULL is allowed. */
TW_API void cfg_net_physif_free(cfg_net_physif *physif) TW_NOEXCEPT;

TW_END
#endif
