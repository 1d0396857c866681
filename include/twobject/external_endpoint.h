/* External endpoints: the addresses at which nodes reach the appliance from outside. */
#ifndef TWOBJECT_EXTERNAL_ENDPOINT_H
#define TWOBJECT_EXTERNAL_ENDPOINT_H

#include <twobject/common.h>

TW_BEGIN

/** An endpoint: the view of one element of the list "system.net.external_endpoints". */
typedef struct cfg_net_external_endpoint cfg_net_external_endpoint;
/** The IDs of all endpoints. */
typedef struct cfg_net_external_endpoint_list cfg_net_external_endpoint_list;

/** The IDs of the committed endpoints, in list order; NULL when there is no such list in the store. */
TW_API cfg_net_external_endpoint_list *cfg_net_get_external_endpoint_list(cfg *store) TW_NOEXCEPT;
TW_API int32_t cfg_net_external_endpoint_count(const cfg_net_external_endpoint_list *list) TW_NOEXCEPT;
/** The ID at a 0-based index, borrowed from the list; NULL outside it. */
TW_API const char *cfg_net_get_external_endpoint(const cfg_net_external_endpoint_list *list,
                                                 int32_t index) TW_NOEXCEPT;
/** Frees the list with its IDs. NULL is allowed. */
TW_API void cfg_net_external_endpoint_list_free(cfg_net_external_endpoint_list *list) TW_NOEXCEPT;

/** A new, empty endpoint; NULL without a handle. */
TW_API cfg_net_external_endpoint *cfg_net_external_endpoint_new(cfg *store) TW_NOEXCEPT;
/** Loads the endpoint with an ID; NULL when there is no such element. Missing keys leave NULL or 0. */
TW_API cfg_net_external_endpoint *cfg_net_get_external_endpoint_by_id(cfg *store, const char *id) TW_NOEXCEPT;

/** ID of the element; NULL until the endpoint is saved. */
TW_API const char *cfg_net_external_endpoint_get_uuid(const cfg_net_external_endpoint *endpoint) TW_NOEXCEPT;

/**
 * Host name or IP address, not interpreted here: "address". Setting NULL fails and keeps the old one; an
 * empty string stays an empty string.
 */
TW_API const char *cfg_net_external_endpoint_get_address(const cfg_net_external_endpoint *endpoint)
    TW_NOEXCEPT;
TW_API int cfg_net_external_endpoint_set_address(cfg_net_external_endpoint *endpoint,
                                                 const char *address) TW_NOEXCEPT;

/** TCP port of the API: "api_port"; 0 when the endpoint has none. */
TW_API int32_t cfg_net_external_endpoint_get_api_port(const cfg_net_external_endpoint *endpoint) TW_NOEXCEPT;
TW_API int cfg_net_external_endpoint_set_api_port(cfg_net_external_endpoint *endpoint,
                                                  int32_t port) TW_NOEXCEPT;
/** Port of the VPN: "vpn_port"; 0 when the endpoint has none. */
TW_API int32_t cfg_net_external_endpoint_get_vpn_port(const cfg_net_external_endpoint *endpoint) TW_NOEXCEPT;
TW_API int cfg_net_external_endpoint_set_vpn_port(cfg_net_external_endpoint *endpoint,
                                                  int32_t port) TW_NOEXCEPT;
/**
 * From now on each save of the record deletes the port's key, whatever port is set afterwards: there is no
 * way back but loading the endpoint anew. 1; 0 for NULL.
 */
TW_API int cfg_net_external_endpoint_delete_api_port(cfg_net_external_endpoint *endpoint) TW_NOEXCEPT;
TW_API int cfg_net_external_endpoint_delete_vpn_port(cfg_net_external_endpoint *endpoint) TW_NOEXCEPT;

/**
 * Saves the endpoint; a new one joins the list as a pending entry. 1 once it has an element, whether or not
 * its keys could be written; 0 for NULL, without handle, list or element.
 */
TW_API int cfg_net_external_endpoint_save(cfg_net_external_endpoint *endpoint) TW_NOEXCEPT;
/**
 * Writes an endpoint that exists: its address, and each port unless its flag says to delete the key. What was
 * asked for with cfg_net_external_endpoint_delete_api_port() and its sibling does not count here.
 * @return 1 when at least one value was written, deletions not counted; else 0
 */
TW_API int cfg_net_update_external_endpoint(cfg_net_external_endpoint *endpoint, int32_t delete_api_port,
                                            int32_t delete_vpn_port) TW_NOEXCEPT;
/** Deletes the element. The record stays. 1; 0 for NULL or when the element is gone. */
TW_API int cfg_net_external_endpoint_delete(cfg_net_external_endpoint *endpoint) TW_NOEXCEPT;
/** Frees the record. NULL is allowed. */
TW_API void cfg_net_external_endpoint_free(cfg_net_external_endpoint *endpoint) TW_NOEXCEPT;

TW_END
#endif
