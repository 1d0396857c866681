/* The appliance's NTP client. */
#ifndef TWOBJECT_NTP_H
#define TWOBJECT_NTP_H

#include <twobject/common.h>

TW_BEGIN

/**
 * The NTP settings: the switch of the map "services.ntp" and the IDs of the entries of its list "servers".
 * The servers' texts are read and written straight in the store, entry by entry; the record's IDs and count
 * stay what they were when it was loaded.
 */
typedef struct cfg_ntp cfg_ntp;

/** An empty record: no ID, disabled, no servers. NULL when memory is short. */
TW_API cfg_ntp *cfg_new_ntp(cfg *store) TW_NOEXCEPT;
/** Loads the settings; the empty record when there is no "services.ntp". NULL when memory is short. */
TW_API cfg_ntp *cfg_get_ntp(cfg *store) TW_NOEXCEPT;

/** ID of the map "services.ntp"; NULL when it did not exist. */
TW_API const char *cfg_get_ntp_id(const cfg_ntp *ntp) TW_NOEXCEPT;

/** Whether the client runs: "enabled". Kept as it is set, saved as a truth value. */
TW_API int32_t cfg_get_ntp_enabled(const cfg_ntp *ntp) TW_NOEXCEPT;
TW_API void cfg_set_ntp_enabled(cfg_ntp *ntp, int32_t enabled) TW_NOEXCEPT;

/** Number of server entries that were committed when the record was loaded. */
TW_API int32_t cfg_get_ntp_server_count(const cfg_ntp *ntp) TW_NOEXCEPT;
/** ID of the server entry at a 0-based index below the count; the index is not tested. */
TW_API const char *cfg_get_ntp_server_uuid(const cfg_ntp *ntp, int32_t index) TW_NOEXCEPT;

/** A heap copy of a server's text, its host name or address; NULL when the entry is gone. */
TW_API char *cfg_get_ntp_server_value(const cfg_ntp *ntp, int32_t index) TW_NOEXCEPT;
/** Replaces a server's text in the caller's edit. 1; 0 when the entry is gone. */
TW_API int cfg_set_ntp_server_value(cfg_ntp *ntp, int32_t index, const char *server) TW_NOEXCEPT;
/** Deletes a server's entry in the caller's edit. 1; 0 when the entry is gone already. */
TW_API int cfg_delete_ntp_server(cfg_ntp *ntp, int32_t index) TW_NOEXCEPT;
/**
 * Appends a server as a pending entry, making the list "servers" when "services.ntp" has none. Always 1, even
 * when nothing can be appended (there is no "services.ntp": save first); 0 for a NULL record only.
 */
TW_API int cfg_create_ntp_server(cfg_ntp *ntp, const char *server) TW_NOEXCEPT;

/**
 * Writes "enabled". A record without ID first attaches a new map as "services.ntp"; the record does not take
 * its ID, load it anew for that. 1; 0 for NULL, without the map "services" or when the element is gone.
 */
TW_API int cfg_ntp_save(cfg_ntp *ntp) TW_NOEXCEPT;

/** Frees the record. NULL is allowed. */
TW_API void cfg_ntp_free(cfg_ntp *ntp) TW_NOEXCEPT;

TW_END
#endif
