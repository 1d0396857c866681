/* Templates that carry authentication settings. */
#ifndef TWOBJECT_TEMPLATE_AUTH_H
#define TWOBJECT_TEMPLATE_AUTH_H

#include <twobject/auth.h>
#include <twobject/common.h>
#include <twobject/template.h>

TW_BEGIN

/*
 * What a template of type CFG_TEMPLATE_AUTH carries: settings like the appliance's own (twobject/auth.h),
 * below the template's map and under the same keys, but for the mode, which stands under "auth_mode". Servers
 * are added with cfg_auth_create_server(), with the template's map as the parent, and deleted with
 * cfg_auth_delete_server().
 */

/**
 * The template's settings, to be read and changed with the functions of twobject/auth.h. They belong to the
 * template; cfg_template_free() leaves them to the caller, who then releases them with cfg_auth_free().
 * @return NULL for NULL and when the template was neither made nor loaded with the type CFG_TEMPLATE_AUTH
 */
TW_API cfg_auth *cfg_template_get_auth(const cfg_template *record) TW_NOEXCEPT;

/* ---- What the template functions do for this type ---- */

/** Gives the template new, empty settings; former ones are freed. 1, or 0 for NULL or when memory is short.
 */
TW_API int cfg_auth_new_setup(cfg_template *record) TW_NOEXCEPT;
/**
 * Gives the template the settings and the IDs of all committed servers that stand below a map. Former ones
 * are freed. Keys that are absent or of another kind read as NULL.
 * @return 1; 0 with nothing changed for NULL, for what is no map and when memory is short
 */
TW_API int cfg_auth_load_from_config(cfg_template *record, cfg_elem *map) TW_NOEXCEPT;
/**
 * Writes the settings below a map: the mode, then the maps "tacacs", "radius" and "ldap", each made when it
 * is missing. The first value that the store does not take ends the save, and so does a mode that is NULL:
 * nothing is written then. Servers are not written here. Does not abort on NULL.
 * @return 1, also when the save ended early; 0 for NULL, without settings and when memory is short
 */
TW_API int cfg_auth_save_to_config(cfg_template *record, cfg_elem *map) TW_NOEXCEPT;

TW_END
#endif
