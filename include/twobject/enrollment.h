/* Enrollment settings: how a console server is taken under management. */
#ifndef TWOBJECT_ENROLLMENT_H
#define TWOBJECT_ENROLLMENT_H

#include <twobject/bundle.h>
#include <twobject/common.h>

TW_BEGIN

/**
 * The settings of one enrolment: a view of the element of "nodes" that a cfg_node (twobject/node.h) views as
 * well. Which settings are read and saved depends on the product kind, listed there.
 */
typedef struct cfg_enrollment cfg_enrollment;

/* ---- Creating, loading, saving ---- */

/**
 * A new record with status "Pending", not approved, without element. For the product "tarnwell" a package
 * password is generated: 64 characters from a-z, A-Z and 0-9, derived from the present second, so that
 * records made within one second share it.
 * @param product product kind, compared exactly; copied. NULL gives a record of no kind.
 * @return a record of the caller's, or NULL when memory is short. A NULL handle gives a record that can be
 * filled and read but never saved.
 */
TW_API cfg_enrollment *cfg_enrollment_new(cfg *store, const char *product) TW_NOEXCEPT;

/**
 * Reads the enrolment view of a node element.
 * @param id ID of the element, final or provisional
 * @return a record of the caller's; NULL when the element is missing and, for "tarnwell", while the appliance
 * has no CA certificate at "services.ca.certificate"
 */
TW_API cfg_enrollment *cfg_enrollment_get_by_id(cfg *store, const char *id) TW_NOEXCEPT;

/**
 * Writes the enrolment. A record without ID is given a new element first, a pending entry of "nodes", and the
 * element's provisional ID. Every product writes "status", "product" and "approved". Then
 * - "tarnwell": "name" (the element's ID, or "tempname" while that is provisional: such nodes get their
 *   display name later, through the node record), an empty map "ssh" when there is none, "package_password";
 * - "acs6000", "acs8000", "cisco2900", "acs_classic": "name", "address", "username", "password";
 * - "generic": "name", "address", "connection_method", for the method "ssh" also "username" and "password",
 *   then "port_count", "base_port" and "port_labels";
 * - any other product: nothing more.
 * @return 1, or 0 when "nodes" or the element is missing or a write fails
 */
TW_API int cfg_enrollment_save(cfg_enrollment *enrollment) TW_NOEXCEPT;

/** Deletes the node element, when the record has an ID and the element exists. The record stays. */
TW_API void cfg_enrollment_delete(cfg_enrollment *enrollment) TW_NOEXCEPT;

/** Frees the record with its certificate, texts and labels. NULL is allowed. */
TW_API void cfg_enrollment_free(cfg_enrollment *enrollment) TW_NOEXCEPT;

/**
 * Applies a bundle to the node that was enrolled: the node is approved as the bundle says, refers to the
 * bundle
 * ("bundle") and is given, as pending entries of "tags", the bundle's automatic tags and then the value of
 * the tag "Bundle" with the bundle's name. Tag and value are made and saved when there are none among the
 * committed ones: commit between two nodes, or each makes its own. Single tags that cannot be given are left
 * out.
 * @return 1, or 0 when the node cannot be loaded or saved; nothing is changed when it cannot be loaded
 */
TW_API int cfg_enrollment_set_bundle(cfg_enrollment *enrollment, cfg_bundle *bundle) TW_NOEXCEPT;

/* ---- Identity and state ---- */

/**
 * ID of the node element, looked up anew: once a commit has replaced a provisional ID, the record takes the
 * final one and answers it. NULL until the record is saved. The text lives until the next call of this
 * function.
 */
TW_API const char *cfg_enrollment_get_uuid(cfg_enrollment *enrollment) TW_NOEXCEPT;

/** Product kind: "product". */
TW_API const char *cfg_enrollment_get_product(const cfg_enrollment *enrollment) TW_NOEXCEPT;

/** Enrollment status: "status". The getter gives a heap copy that the caller frees, or NULL. */
TW_API char *cfg_enrollment_get_status(const cfg_enrollment *enrollment) TW_NOEXCEPT;
TW_API int cfg_enrollment_set_status(cfg_enrollment *enrollment, const char *status) TW_NOEXCEPT;

/**
 * Whether the node is approved, 0 or 1. Read from "auto_approve" but written to "approved", the flag that the
 * node record reads. Any value but 0 is kept as 1.
 */
TW_API int32_t cfg_enrollment_get_auto_approve(const cfg_enrollment *enrollment) TW_NOEXCEPT;
TW_API int cfg_enrollment_set_auto_approve(cfg_enrollment *enrollment, int32_t auto_approve) TW_NOEXCEPT;

/** Display name: "name". Saved for every product but "tarnwell". */
TW_API const char *cfg_enrollment_get_name(const cfg_enrollment *enrollment) TW_NOEXCEPT;
TW_API int cfg_enrollment_set_name(cfg_enrollment *enrollment, const char *name) TW_NOEXCEPT;

/* ---- Certificates and the enrolment package ---- */

/** The node's certificate and private key as PEM texts, from the reference "cert"; NULL without. */
TW_API const char *cfg_enrollment_get_cert(const cfg_enrollment *enrollment) TW_NOEXCEPT;
TW_API const char *cfg_enrollment_get_key(const cfg_enrollment *enrollment) TW_NOEXCEPT;

/** The appliance's CA certificate as PEM text; NULL in a new record and for other products than "tarnwell".
 */
TW_API const char *cfg_enrollment_get_ca(const cfg_enrollment *enrollment) TW_NOEXCEPT;

/**
 * Password that protects the node's enrolment package, for "tarnwell": "package_password". Deleting it clears
 * the record's copy (1; 0 for NULL); the next save then removes the key.
 */
TW_API const char *cfg_enrollment_get_package_password(const cfg_enrollment *enrollment) TW_NOEXCEPT;
TW_API int cfg_enrollment_delete_package_password(cfg_enrollment *enrollment) TW_NOEXCEPT;

/* ---- Reaching a credential-based node ---- */

/** Network address: "address". */
TW_API const char *cfg_enrollment_get_address(const cfg_enrollment *enrollment) TW_NOEXCEPT;
TW_API int cfg_enrollment_set_address(cfg_enrollment *enrollment, const char *address) TW_NOEXCEPT;

/** How a "generic" node is reached, for example "ssh" or "telnet": "connection_method". */
TW_API const char *cfg_enrollment_get_connection_method(const cfg_enrollment *enrollment) TW_NOEXCEPT;
TW_API int cfg_enrollment_set_connection_method(cfg_enrollment *enrollment, const char *method) TW_NOEXCEPT;

/** Credentials: "username" and "password". The setter replaces both; NULL clears. */
TW_API const char *cfg_enrollment_get_username(const cfg_enrollment *enrollment) TW_NOEXCEPT;
TW_API const char *cfg_enrollment_get_password(const cfg_enrollment *enrollment) TW_NOEXCEPT;
TW_API int cfg_enrollment_set_credentials(cfg_enrollment *enrollment, const char *username,
                                          const char *password) TW_NOEXCEPT;

/* ---- Ports of a "generic" node ---- */

/** Number of the first port: "base_port". */
TW_API uint32_t cfg_enrollment_get_base_port(const cfg_enrollment *enrollment) TW_NOEXCEPT;
TW_API int cfg_enrollment_set_base_port(cfg_enrollment *enrollment, uint32_t base_port) TW_NOEXCEPT;

/**
 * Configured number of serial ports: "port_count". The setter replaces all labels by "Port 1" to "Port n"
 * (none for n below 1); 0, with the record unchanged, when memory is short or n is above 65536.
 */
TW_API int32_t cfg_enrollment_get_port_count_field(const cfg_enrollment *enrollment) TW_NOEXCEPT;
TW_API int cfg_enrollment_set_port_count_field(cfg_enrollment *enrollment, int32_t count) TW_NOEXCEPT;

/**
 * Label of the port at a 0-based index: an entry of the list "port_labels". NULL outside the port count. The
 * setter ignores an index outside the port count and a NULL text, answering 0; "" is a label like any other.
 */
TW_API const char *cfg_enrollment_get_port_label(const cfg_enrollment *enrollment, int32_t index) TW_NOEXCEPT;
TW_API int cfg_enrollment_set_port_label(cfg_enrollment *enrollment, int32_t index,
                                         const char *label) TW_NOEXCEPT;

TW_END
#endif
