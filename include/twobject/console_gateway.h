/* The console gateway service. */
#ifndef TWOBJECT_CONSOLE_GATEWAY_H
#define TWOBJECT_CONSOLE_GATEWAY_H

#include <twobject/common.h>

TW_BEGIN

/** The settings of the console gateway: the map "services.consoleGateway". */
typedef struct cfg_service_console_gateway cfg_service_console_gateway;

/** Loads the settings; NULL when "services.consoleGateway.ssh_delimiter" is absent or no string. */
TW_API cfg_service_console_gateway *cfg_get_service_console_gateway(cfg *store) TW_NOEXCEPT;

/**
 * What stands between user and port in an SSH login: "ssh_delimiter". Setting NULL fails and keeps the old
 * one; an empty string stays an empty string.
 */
TW_API const char *cfg_service_console_gateway_get_ssh_delim(const cfg_service_console_gateway *gateway)
    TW_NOEXCEPT;
TW_API int cfg_service_console_gateway_set_ssh_delim(cfg_service_console_gateway *gateway,
                                                     const char *delimiter) TW_NOEXCEPT;

/**
 * Writes the settings back. Without a map "services.consoleGateway", one is attached to the root under just
 * that key, the dot being part of it; look-ups by path find it there. 1; 0 for NULL or a failed write.
 */
TW_API int cfg_service_console_gateway_update(cfg_service_console_gateway *gateway) TW_NOEXCEPT;

/** Frees the record. NULL is allowed. */
TW_API void cfg_service_console_gateway_free(cfg_service_console_gateway *gateway) TW_NOEXCEPT;

TW_END
#endif
