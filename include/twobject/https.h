/* The appliance's own web server certificate, and the request for the next one. */
#ifndef TWOBJECT_HTTPS_H
#define TWOBJECT_HTTPS_H

#include <twobject/common.h>

TW_BEGIN

/* ---- The certificate ---- */

/**
 * Installs a certificate with its private key, PEM texts: the blobs "certificate" and "private_key" of
 * "services.https", which is made when it is missing. Neither text is looked into. The request in progress is
 * over then: its "csr" and "private_key" are deleted in "services.https.csr", whose other keys stay for the
 * next request.
 * @return 0 for a NULL, and when memory runs out. Otherwise 1, even when a write fails: the handle tells.
 */
TW_API int cfg_set_https_cert(cfg *store, const char *certificate, const char *private_key) TW_NOEXCEPT;

/** Bytes of each text of the details, its NUL included; a longer text is cut. */
enum { CFG_HTTPS_TEXT_SIZE = 128 };

/** What the installed certificate says. The one record that is read without getters; change nothing in it. */
typedef struct cfg_https_cert_details {
  char *certificate; /**< PEM text */
  char *private_key; /**< PEM text, wiped when the record is freed */
  /* The certificate's subject; "" for what it lacks. */
  char common_name[CFG_HTTPS_TEXT_SIZE];  /**< CN */
  char org_unit[CFG_HTTPS_TEXT_SIZE];     /**< OU */
  char organization[CFG_HTTPS_TEXT_SIZE]; /**< O */
  char locality[CFG_HTTPS_TEXT_SIZE];     /**< L */
  char state[CFG_HTTPS_TEXT_SIZE];        /**< ST */
  char country[CFG_HTTPS_TEXT_SIZE];      /**< C */
  char email[CFG_HTTPS_TEXT_SIZE];        /**< emailAddress */
  int32_t key_length;                     /**< bits of the private key, full bytes */
  /* The validity, in the form "Jan  2 03:04:05 2026 GMT". */
  char not_before[CFG_HTTPS_TEXT_SIZE]; /**< from when on */
  char not_after[CFG_HTTPS_TEXT_SIZE];  /**< until when */
} cfg_https_cert_details;

/**
 * Reads the installed certificate and its key. Whether one belongs to the other is not looked at.
 * @return a record of the caller's; NULL when one of the two is missing or cannot be parsed, when the key is
 * no RSA key or needs a pass phrase, and when the certificate has no subject
 */
TW_API cfg_https_cert_details *cfg_get_https_cert_details(cfg *store) TW_NOEXCEPT;
/** Frees the record with its two PEM texts. NULL is allowed. */
TW_API void cfg_free_https_cert_details(cfg_https_cert_details *details) TW_NOEXCEPT;

/** OpenSSL's ASN1_TIME. */
struct asn1_string_st;
/**
 * Prints a certificate time as the details have it: English month, day padded with a space, time of day,
 * year, GMT.
 * @param buffer CFG_HTTPS_TEXT_SIZE characters; "" for NULL and for a time that cannot be printed
 */
TW_API void time_to_string(const struct asn1_string_st *time, char *buffer) TW_NOEXCEPT;

/* ---- The request ---- */

/**
 * A certificate request in progress: the view of the map "services.https.csr". A text that a getter answered
 * stays good until the record is freed, also when its field is set or generated again.
 */
typedef struct cfg_csr cfg_csr;

/** An empty record. NULL when memory is short. */
TW_API cfg_csr *cfg_new_https_csr(cfg *store) TW_NOEXCEPT;
/**
 * Loads the request; an empty record when there is none. A key that holds a value of another kind reads as an
 * absent one. NULL when memory is short.
 */
TW_API cfg_csr *cfg_get_https_csr(cfg *store) TW_NOEXCEPT;

/** CN of the subject: "common_name", at most 64 characters in a request. */
TW_API const char *cfg_csr_get_common_name(const cfg_csr *csr) TW_NOEXCEPT;
TW_API int cfg_csr_set_common_name(cfg_csr *csr, const char *name) TW_NOEXCEPT;

/** OU of the subject: "org_unit", at most 64 characters in a request. */
TW_API const char *cfg_csr_get_org_unit(const cfg_csr *csr) TW_NOEXCEPT;
TW_API int cfg_csr_set_org_unit(cfg_csr *csr, const char *unit) TW_NOEXCEPT;

/** O of the subject: "organization", at most 64 characters in a request. */
TW_API const char *cfg_csr_get_organization(const cfg_csr *csr) TW_NOEXCEPT;
TW_API int cfg_csr_set_organization(cfg_csr *csr, const char *organization) TW_NOEXCEPT;

/** L of the subject: "locality", at most 128 characters in a request. */
TW_API const char *cfg_csr_get_locality(const cfg_csr *csr) TW_NOEXCEPT;
TW_API int cfg_csr_set_locality(cfg_csr *csr, const char *locality) TW_NOEXCEPT;

/** ST of the subject: "state", at most 128 characters in a request. */
TW_API const char *cfg_csr_get_state(const cfg_csr *csr) TW_NOEXCEPT;
TW_API int cfg_csr_set_state(cfg_csr *csr, const char *state) TW_NOEXCEPT;

/** C of the subject: "country", two characters in a request. */
TW_API const char *cfg_csr_get_country(const cfg_csr *csr) TW_NOEXCEPT;
TW_API int cfg_csr_set_country(cfg_csr *csr, const char *country) TW_NOEXCEPT;

/** emailAddress of the subject: "email", at most 128 ASCII characters in a request. */
TW_API const char *cfg_csr_get_email(const cfg_csr *csr) TW_NOEXCEPT;
TW_API int cfg_csr_set_email(cfg_csr *csr, const char *email) TW_NOEXCEPT;

/**
 * The password that whoever asks for a revocation must know: "challenge_password"; NULL when a request is to
 * have none. It stands in the request in clear.
 */
TW_API const char *cfg_csr_get_challenge_password(const cfg_csr *csr) TW_NOEXCEPT;
TW_API int cfg_csr_set_challenge_password(cfg_csr *csr, const char *password) TW_NOEXCEPT;

/** The request's private key as unencrypted PEM text: the blob "private_key". NULL until it is generated. */
TW_API const char *cfg_csr_get_private_key(const cfg_csr *csr) TW_NOEXCEPT;
TW_API int cfg_csr_set_private_key(cfg_csr *csr, const char *private_key) TW_NOEXCEPT;

/** The request as PEM text: the blob "csr". NULL until it is generated. */
TW_API const char *cfg_csr_get_csr(const cfg_csr *csr) TW_NOEXCEPT;
TW_API int cfg_csr_set_csr(cfg_csr *csr, const char *request) TW_NOEXCEPT;

/** Bits of a key that is to be generated: "key_length". */
TW_API int32_t cfg_csr_get_key_length(const cfg_csr *csr) TW_NOEXCEPT;
TW_API int cfg_csr_set_key_length(cfg_csr *csr, int32_t bits) TW_NOEXCEPT;

/**
 * Generates the request and sets it in the record; nothing is saved. Its key is the record's private key, or
 * else a new RSA key of "key_length" bits, 512 to 8,192, which the record then has. All seven texts of the
 * subject are required. The subject lists C, emailAddress, CN, O, OU, ST and L in this order; a challenge
 * password becomes an attribute. The request asks for a critical key usage, digitalSignature and
 * keyEncipherment, and for the Netscape type client, email. A text of more than 16,383 characters is cut
 * there.
 *
 * The request is signed with SHA-1, which those who built the library can change (the CMake option
 * TW_CSR_DIGEST). Where OpenSSL, or the policy that it is run under, refuses the digest, no request can be
 * generated.
 * @return 1; or 0 with a message in the store's edit: CFG_MESSAGE_BAD_KEY when the record's private key
 * cannot be read or needs a pass phrase, CFG_MESSAGE_CSR_GENERATE_FAILED for everything else. The record is
 * then what it was, but for this: when only the new key could not be kept, it has the new request already.
 */
TW_API int cfg_csr_generate(cfg_csr *csr) TW_NOEXCEPT;

/** Drops the record's request and private key, which are wiped. Nothing is saved. */
TW_API void cfg_csr_delete_request(cfg_csr *csr) TW_NOEXCEPT;

/**
 * Writes the record to "services.https.csr"; maps on the way are made when they are missing. A subject text
 * that is NULL leaves what is stored; a NULL challenge password, private key or request deletes its key.
 * Failed writes are passed over: what tells is "key_length", which is written last.
 * @return 1; 0 when "key_length" cannot be written or memory runs out
 */
TW_API int cfg_save_https_csr(cfg_csr *csr) TW_NOEXCEPT;

/** Frees the record. NULL is allowed. */
TW_API void cfg_csr_free(cfg_csr *csr) TW_NOEXCEPT;

TW_END
#endif
