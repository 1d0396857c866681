/* Certificate records: client certificates that the appliance's own certificate authority issues to nodes. */
#ifndef TWOBJECT_CERTIFICATE_H
#define TWOBJECT_CERTIFICATE_H

#include <twobject/common.h>

TW_BEGIN

/** A certificate with its private key: the view of one element of the list "certificates". */
typedef struct cfg_certificate cfg_certificate;

/**
 * Makes a record and issues its certificate at once with cfg_certificate_generate(). The record is not saved.
 * @param common_name the certificate's CN, at most 64 characters; copied
 * @return a record of the caller's, or NULL when the certificate cannot be issued: never without a handle or
 * a common name
 */
TW_API cfg_certificate *cfg_certificate_new(cfg *store, const char *common_name) TW_NOEXCEPT;

/**
 * Issues a certificate for the record's common name: a new 2048-bit RSA key, a request for it, signed with
 * the authority's key under "services.ca" for 3650 days from now (and valid from one day back, for nodes
 * whose clock is behind). Sets the record's private key and certificate and advances "services.ca.serial" in
 * the caller's edit, whether or not the record is saved later. Steps are logged at debug, failures at error
 * priority.
 * @return 1, or 0. After a failure the record may hold a new private key without a matching certificate, and,
 * when only the serial could not be stored, both; the stored serial is then unchanged. Do not save it.
 */
TW_API int cfg_certificate_generate(cfg_certificate *certificate) TW_NOEXCEPT;

/**
 * Reads a certificate record.
 * @param id the element's ID
 * @return a record of the caller's; NULL when the element is missing. All its keys are optional.
 */
TW_API cfg_certificate *cfg_get_certificate_by_id(cfg *store, const char *id) TW_NOEXCEPT;

/** ID of the element; NULL until the record is saved. */
TW_API const char *cfg_certificate_get_id(const cfg_certificate *certificate) TW_NOEXCEPT;
/** Common name that the certificate was issued for: "common_name". */
TW_API const char *cfg_certificate_get_common_name(const cfg_certificate *certificate) TW_NOEXCEPT;
/** The certificate as PEM text: the blob "certificate". */
TW_API const char *cfg_certificate_get_cert(const cfg_certificate *certificate) TW_NOEXCEPT;
/** The unencrypted private key as PEM text: the blob "private_key". */
TW_API const char *cfg_certificate_get_private_key(const cfg_certificate *certificate) TW_NOEXCEPT;

/**
 * Marks the certificate as revoked now: sets "revoke_time", seconds since the epoch, in the record. Nothing
 * is saved. 1; 0 for NULL.
 */
TW_API int cfg_certificate_expire_now(cfg_certificate *certificate) TW_NOEXCEPT;

/**
 * Saves the record. A record without ID is appended to "certificates" as a pending entry, gets its ID and is
 * written whole. Of a record with ID only "revoke_time" is written (deleted while it is not revoked): an
 * issued certificate, its key and its name never change.
 * @return 0 when memory runs out, for a new record without certificate or key, and when "certificates" is
 * missing or a write of these fails: an entry that was begun stays in the edit, which the caller abandons,
 * and the record keeps its ID. Otherwise 1, for a record with ID even when its element is gone.
 */
TW_API int cfg_certificate_save(cfg_certificate *certificate) TW_NOEXCEPT;

/**
 * Frees and wipes what the record owns, but not the record's own block: pointers to it stay valid, every
 * getter then answers NULL, and freeing it again is harmless. An owner that is sure to hold the last pointer
 * may give the remaining block to free(). NULL is allowed.
 */
TW_API void cfg_certificate_free(cfg_certificate *certificate) TW_NOEXCEPT;

TW_END
#endif
