/* Boot flags: named switches that the appliance looks at when it starts. */
#ifndef TWOBJECT_BOOT_FLAG_H
#define TWOBJECT_BOOT_FLAG_H

#include <twobject/common.h>

TW_BEGIN

/** A boot flag: the view of one element of the list "boot_flags". */
typedef struct cfg_boot_flag cfg_boot_flag;

/**
 * A new flag, not yet saved, that is set unless the caller clears it. NULL when memory is short or one of the
 * texts is NULL.
 */
TW_API cfg_boot_flag *cfg_boot_flag_new(cfg *store, const char *name, const char *flag_type) TW_NOEXCEPT;

/** Loads the flag with an ID; NULL when there is no such element. Missing keys leave NULL or 0. */
TW_API cfg_boot_flag *cfg_boot_flag_get_by_id(cfg *store, const char *id) TW_NOEXCEPT;
/** The first flag of the list with exactly this name, or NULL. Flags saved in the same edit are found. */
TW_API cfg_boot_flag *cfg_boot_flag_get_by_name(cfg *store, const char *name) TW_NOEXCEPT;

/** ID of the element; NULL until the flag is saved. */
TW_API const char *cfg_boot_flag_get_uuid(const cfg_boot_flag *flag) TW_NOEXCEPT;

/** Its name: "name". Setting NULL changes nothing and is no failure; an empty string stays one. */
TW_API const char *cfg_boot_flag_get_name(const cfg_boot_flag *flag) TW_NOEXCEPT;
TW_API int cfg_boot_flag_set_name(cfg_boot_flag *flag, const char *name) TW_NOEXCEPT;

/** Its type, not interpreted here: "flag_type". Set like the name. */
TW_API const char *cfg_boot_flag_get_flag_type(const cfg_boot_flag *flag) TW_NOEXCEPT;
TW_API int cfg_boot_flag_set_flag_type(cfg_boot_flag *flag, const char *flag_type) TW_NOEXCEPT;

/** Whether it is set: "is_set". Kept as it is given, saved as a truth value. */
TW_API int32_t cfg_boot_flag_get_isset(const cfg_boot_flag *flag) TW_NOEXCEPT;
TW_API int cfg_boot_flag_set_isset(cfg_boot_flag *flag, int32_t is_set) TW_NOEXCEPT;

/**
 * Saves the flag. A new one joins "boot_flags" at once, not as a pending entry: the same edit finds it by its
 * name. 1; 0 for NULL, without name or type, without the list, when the element is gone or a write fails.
 */
TW_API int cfg_boot_flag_save(cfg_boot_flag *flag) TW_NOEXCEPT;

/** Frees the record. NULL is allowed. */
TW_API void cfg_boot_flag_free(cfg_boot_flag *flag) TW_NOEXCEPT;

TW_END
#endif
