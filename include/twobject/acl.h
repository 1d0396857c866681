/* Access-control lists, of which the store knows the names. */
#ifndef TWOBJECT_ACL_H
#define TWOBJECT_ACL_H

#include <twobject/common.h>

TW_BEGIN

/** An access-control list: the view of one element of the list "acls". */
typedef struct cfg_acl cfg_acl;

/**
 * A new record without element and, deliberately, without name: `aclname` must be there but is not taken
 * over; set it with cfg_acl_set_aclname(). NULL without a name. A NULL handle gives a record that cannot be
 * saved.
 */
TW_API cfg_acl *cfg_acl_new(cfg *store, const char *aclname) TW_NOEXCEPT;

/** Loads a record; NULL when the element is missing or has no "aclname". */
TW_API cfg_acl *cfg_acl_get_by_id(cfg *store, const char *id) TW_NOEXCEPT;

/** ID of the element, looked up anew: the final one once a commit has given it. NULL without element. */
TW_API const char *cfg_acl_get_uuid(cfg_acl *acl) TW_NOEXCEPT;

/** Name: "aclname". */
TW_API const char *cfg_acl_get_aclname(const cfg_acl *acl) TW_NOEXCEPT;
TW_API int cfg_acl_set_aclname(cfg_acl *acl, const char *aclname) TW_NOEXCEPT;

/**
 * Writes the name. A record without ID first joins "acls" as a pending entry and gets its ID. 1, or 0:
 * without a name or the list "acls", when the record's element is gone, or when the write fails.
 */
TW_API int cfg_acl_save(cfg_acl *acl) TW_NOEXCEPT;
/** Deletes the element, when there is one. The record stays. */
TW_API void cfg_acl_delete(cfg_acl *acl) TW_NOEXCEPT;
/** Frees the record. NULL is allowed. */
TW_API void cfg_acl_free(cfg_acl *acl) TW_NOEXCEPT;

TW_END
#endif
