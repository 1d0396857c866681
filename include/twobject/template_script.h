/* Templates that carry a script to run on nodes. */
#ifndef TWOBJECT_TEMPLATE_SCRIPT_H
#define TWOBJECT_TEMPLATE_SCRIPT_H

#include <twobject/common.h>
#include <twobject/template.h>

TW_BEGIN

/*
 * What a template of type CFG_TEMPLATE_SCRIPT carries. cfg_template_new() and cfg_template_get_by_id() set it
 * up and read it for that type alone; the record of any other type has no script and zeroes here. Where a key
 * is absent or of another kind, its field reads as NULL or 0.
 */

/* ---- The script ---- */

/**
 * Takes a copy of the script: `size` bytes, NULs among them included. Its checksum and size are set with it.
 * @return 1; 0 with nothing changed for NULL, a negative size and when memory is short
 */
TW_API int cfg_script_template_set_script(cfg_template *record, const void *script, int32_t size) TW_NOEXCEPT;
/**
 * The script: the blob "script". Borrowed, and a heap block: it is one of those that cfg_template_free()
 * leaves to the caller, who releases it with free().
 */
TW_API const void *cfg_script_template_get_script(const cfg_template *record) TW_NOEXCEPT;

/**
 * SHA-1 of the script in 40 lower-case hexadecimal digits: "script_checksum". It is kept as it is set or
 * stored, and neither a load nor a save computes it anew.
 */
TW_API const char *cfg_script_template_get_checksum(const cfg_template *record) TW_NOEXCEPT;
TW_API int cfg_script_template_set_checksum(cfg_template *record, const char *checksum) TW_NOEXCEPT;

/**
 * Size of the script in bytes, which a load reads from the blob. A size that is set is kept as it is; a save
 * then writes that many of the script's bytes, and all of them when it has not so many.
 */
TW_API int32_t cfg_script_template_get_size(const cfg_template *record) TW_NOEXCEPT;
TW_API int cfg_script_template_set_size(cfg_template *record, int32_t size) TW_NOEXCEPT;

/**
 * How long the script may run on a node: "script_timeout", in the unit of the service that runs it. A save
 * writes it always, 0 included: a template that was stored without the key gets it with its next save.
 */
TW_API int32_t cfg_script_template_get_timeout(const cfg_template *record) TW_NOEXCEPT;
TW_API int cfg_script_template_set_timeout(cfg_template *record, int32_t timeout) TW_NOEXCEPT;
/** Makes every later save of this record delete "script_timeout", whatever is set before or after. */
TW_API int cfg_script_template_delete_timeout(cfg_template *record) TW_NOEXCEPT;

/* ---- What the template functions do for this type ---- */

/** Makes the record one without script, checksum, size and time-out. 1, or 0 for NULL. */
TW_API int cfg_script_template_new_setup(cfg_template *record) TW_NOEXCEPT;
/**
 * Reads the script's keys from a template's map. Without "script_checksum" the record has none afterwards;
 * what else is absent stays as it was. 1, or 0 for NULL and when memory is short.
 */
TW_API int cfg_script_template_load_from_config(cfg_template *record, cfg_elem *map) TW_NOEXCEPT;
/**
 * Writes "script" (left as it is without a script), "script_checksum" (NULL deletes it) and "script_timeout"
 * to a template's map. Does not abort on NULL.
 * @return 1, also when the store did not take one of the values; 0 for NULL and when memory is short
 */
TW_API int cfg_script_template_save_to_config(cfg_template *record, cfg_elem *map) TW_NOEXCEPT;

TW_END
#endif
