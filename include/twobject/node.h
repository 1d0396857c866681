/* Nodes: the remote console servers that the appliance manages. */
#ifndef TWOBJECT_NODE_H
#define TWOBJECT_NODE_H

#include <twobject/certificate.h>
#include <twobject/common.h>

TW_BEGIN

/**
 * A managed node: the view of one element of the list "nodes".
 *
 * What a node holds depends on its product, compared exactly:
 * - "tarnwell": the appliance maker's own console servers: etags, certificate and SSH port
 * - "acs6000", "acs8000", "cisco2900", "acs_classic": reached by address, user name and password
 * - "generic": address, user name, password, connection method, port count, base port and port labels
 * Any other product, and a node without one, has the common fields only.
 */
typedef struct cfg_node cfg_node;

/** A version tag of a node: one entry of its list "etags". Part of the node's record, never freed alone. */
typedef struct cfg_etag cfg_etag;

/* ---- Creating, loading, looking up ---- */

/**
 * A record with nothing but the handle; it has no element. NULL when memory is short. A NULL handle gives a
 * record that can be filled and read but never saved.
 */
TW_API cfg_node *cfg_new_node(cfg *store) TW_NOEXCEPT;

/**
 * Loads a node.
 * @param id the element's ID, final or provisional
 * @return a record of the caller's; NULL when the element is missing or has no "name" or no "status" text.
 * These two alone decide: any other key that holds a value of another kind than its field reads as absent.
 */
TW_API cfg_node *cfg_get_node_by_id(cfg *store, const char *id) TW_NOEXCEPT;

/** Number of nodes; 0 without the list "nodes", -1 when its size cannot be read. */
TW_API int32_t cfg_get_nodes_count(cfg *store) TW_NOEXCEPT;

/** Loads the node at a 0-based index of "nodes"; NULL outside the list or when it cannot be loaded. */
TW_API cfg_node *cfg_get_node_by_idx(cfg *store, int32_t index) TW_NOEXCEPT;

/**
 * The first node, in list order, whose name, serial number or VPN address equals the text exactly. The search
 * ends with NULL at a node that cannot be loaded ("name" or "status" missing), even when a later one matches.
 */
TW_API cfg_node *cfg_get_node_by_name(cfg *store, const char *name) TW_NOEXCEPT;
TW_API cfg_node *cfg_get_node_by_serial_number(cfg *store, const char *serial_number) TW_NOEXCEPT;
TW_API cfg_node *cfg_get_node_by_fhvpn_address(cfg *store, const char *address) TW_NOEXCEPT;

/**
 * The node that holds the certificate with this common name. NULL unless exactly one certificate that is not
 * revoked has the name and exactly one node holds it.
 */
TW_API cfg_node *cfg_get_node_by_cert_cn(cfg *store, const char *common_name) TW_NOEXCEPT;

/**
 * Loads several nodes at once, in the order of their IDs. IDs that name nothing are left out.
 * @return a heap array of count + 1 entries that ends with NULL: free each node with cfg_node_free() and the
 * array with free(). NULL when `ids` is NULL, `count` negative, memory short, or any one node cannot be
 * loaded.
 */
TW_API cfg_node **cfg_get_nodes_by_id(cfg *store, const char *const *ids, int32_t count) TW_NOEXCEPT;

/**
 * Writes the record back into its element; never creates one (cfg_enrollment_save() does). Written are, in
 * this order, "name", "bundle", "status", "approved"; for "tarnwell" also "description", "fhvpn_address" and
 * "ssh"."port" ("ssh" is created when missing); for all "firmware_version", "model", "serial_number",
 * "mac_address". All other keys are left as they are.
 * @return 1, or 0 when the element is missing or at the first failed write
 */
TW_API int cfg_node_save(cfg_node *node) TW_NOEXCEPT;

/** Frees the record and everything it owns, its certificate record included. NULL is allowed. */
TW_API void cfg_node_free(cfg_node *node) TW_NOEXCEPT;

/* ---- Identity and state ---- */

/*
 * String setters of this section and the next answer 0 for a NULL node, and also, deliberately, when they are
 * given the very pointer that the field holds already, NULL for a NULL field included: the field is then
 * unchanged.
 */

/** ID that the element had when the node was loaded; NULL in a new record. */
TW_API const char *cfg_node_get_uuid(const cfg_node *node) TW_NOEXCEPT;

/** Display name: "name". */
TW_API const char *cfg_node_get_name(const cfg_node *node) TW_NOEXCEPT;
TW_API int cfg_node_set_name(cfg_node *node, const char *name) TW_NOEXCEPT;

/** Product kind: "product". Set at enrolment only. */
TW_API const char *cfg_node_get_product(const cfg_node *node) TW_NOEXCEPT;

/** Free text: "description". Saved for "tarnwell" only. */
TW_API const char *cfg_node_get_description(const cfg_node *node) TW_NOEXCEPT;
TW_API int cfg_node_set_description(cfg_node *node, const char *description) TW_NOEXCEPT;

/** Enrollment status, for example "Pending": "status". */
TW_API const char *cfg_node_get_status(const cfg_node *node) TW_NOEXCEPT;
TW_API int cfg_node_set_status(cfg_node *node, const char *status) TW_NOEXCEPT;

/** ID of the enrollment bundle: the reference "bundle". */
TW_API const char *cfg_node_get_bundle_id(const cfg_node *node) TW_NOEXCEPT;
TW_API int cfg_node_set_bundle_id(cfg_node *node, const char *bundle_id) TW_NOEXCEPT;

/** Whether the node is approved: "approved". Kept as it is set; any value but 0 is saved as true. */
TW_API int32_t cfg_node_get_approved(const cfg_node *node) TW_NOEXCEPT;
TW_API int cfg_node_set_approved(cfg_node *node, int32_t approved) TW_NOEXCEPT;

/**
 * Name of the enrollment bundle by which the node was tagged: the text of the last of its tag values whose
 * tag is named "Bundle", or "Global" without one. Read on first use and then kept in the record; a text that
 * is set is answered instead. Never saved. NULL for a NULL node or when memory is short.
 */
TW_API const char *cfg_node_get_enrollment_bundle(cfg_node *node) TW_NOEXCEPT;
TW_API int cfg_node_set_enrollment_bundle(cfg_node *node, const char *bundle) TW_NOEXCEPT;

/* ---- The device ---- */

/** MAC address: "mac_address". */
TW_API const char *cfg_node_get_mac_address(const cfg_node *node) TW_NOEXCEPT;
TW_API int cfg_node_set_mac_address(cfg_node *node, const char *mac_address) TW_NOEXCEPT;

/** Address of the node inside the appliance's own VPN: "fhvpn_address". Saved for "tarnwell" only. */
TW_API const char *cfg_node_get_fhvpn_address(const cfg_node *node) TW_NOEXCEPT;
TW_API int cfg_node_set_fhvpn_address(cfg_node *node, const char *address) TW_NOEXCEPT;

/** Version of the node's firmware: "firmware_version". */
TW_API const char *cfg_node_get_firmware_version(const cfg_node *node) TW_NOEXCEPT;
TW_API int cfg_node_set_firmware_version(cfg_node *node, const char *version) TW_NOEXCEPT;

/** Model of the device: "model". */
TW_API const char *cfg_node_get_model(const cfg_node *node) TW_NOEXCEPT;
TW_API int cfg_node_set_model(cfg_node *node, const char *model) TW_NOEXCEPT;

/** Serial number: "serial_number". */
TW_API const char *cfg_node_get_serial_number(const cfg_node *node) TW_NOEXCEPT;
TW_API int cfg_node_set_serial_number(cfg_node *node, const char *serial_number) TW_NOEXCEPT;

/** SSH port of the node, "tarnwell" only: "port" in the map "ssh"; 0 when absent. */
TW_API uint32_t cfg_node_get_ssh_port(const cfg_node *node) TW_NOEXCEPT;
TW_API int cfg_node_set_ssh_port(cfg_node *node, uint32_t port) TW_NOEXCEPT;

/* ---- Certificate, "tarnwell" only ---- */

/**
 * The certificate record behind the reference "cert", or NULL. It belongs to the node and ends with it;
 * cfg_certificate_expire_now() and cfg_certificate_save() may be used on it.
 */
TW_API cfg_certificate *cfg_node_get_cert_object(const cfg_node *node) TW_NOEXCEPT;
/** Common name, certificate and private key (PEM) of that record; NULL without one. */
TW_API const char *cfg_node_get_cert_cn(const cfg_node *node) TW_NOEXCEPT;
TW_API const char *cfg_node_get_cert(const cfg_node *node) TW_NOEXCEPT;
TW_API const char *cfg_node_get_key(const cfg_node *node) TW_NOEXCEPT;

/* ---- Reaching a credential-based node ---- */

/*
 * These are read for the products that are reached by credentials. cfg_node_save() does not write them.
 * Unlike other string setters, those of this section keep "" as it is; only NULL clears.
 */

/** Network address: "address". */
TW_API const char *cfg_node_get_address(const cfg_node *node) TW_NOEXCEPT;

/** How a "generic" node is reached, for example "ssh": "connection_method". */
TW_API const char *cfg_node_get_connection_method(const cfg_node *node) TW_NOEXCEPT;
TW_API int cfg_node_set_connection_method(cfg_node *node, const char *method) TW_NOEXCEPT;

/** Credentials: "username" and "password". The setter replaces both. */
TW_API const char *cfg_node_get_username(const cfg_node *node) TW_NOEXCEPT;
TW_API const char *cfg_node_get_password(const cfg_node *node) TW_NOEXCEPT;
TW_API int cfg_node_set_credentials(cfg_node *node, const char *username, const char *password) TW_NOEXCEPT;

/** Number of the first port of a "generic" node: "base_port". */
TW_API uint32_t cfg_node_get_base_port(const cfg_node *node) TW_NOEXCEPT;
TW_API void cfg_node_set_base_port(cfg_node *node, uint32_t base_port) TW_NOEXCEPT;

/**
 * Configured number of serial ports of a "generic" node: "port_count". The setter replaces all labels by
 * "Port 1" to "Port n" (none for n below 1); 0, with the record unchanged, when memory is short or n is above
 * 65536.
 */
TW_API int32_t cfg_node_get_port_count_field(const cfg_node *node) TW_NOEXCEPT;
TW_API int cfg_node_set_port_count_field(cfg_node *node, int32_t count) TW_NOEXCEPT;

/**
 * Label of the port at a 0-based index: an entry of the list "port_labels". NULL outside the port count and
 * for a port without label. The setter ignores an index outside the port count and a NULL text, answering 0;
 * "" is a label like any other.
 */
TW_API const char *cfg_node_get_port_label(const cfg_node *node, int32_t index) TW_NOEXCEPT;
TW_API int cfg_node_set_port_label(cfg_node *node, int32_t index, const char *label) TW_NOEXCEPT;

/* ---- Etags ---- */

/*
 * Etags are read with a "tarnwell" node, and on the first query for every other. A node without etags has
 * nothing to remember: each query reads the store again and sees etags that have been added meanwhile.
 */

/** Number of the node's etags. */
TW_API int32_t cfg_node_get_etag_count(cfg_node *node) TW_NOEXCEPT;
/**
 * The etag at a 0-based index; NULL outside the list and for an entry that could not be read. It belongs to
 * the node and ends with it.
 */
TW_API cfg_etag *cfg_node_get_etag(cfg_node *node, int32_t index) TW_NOEXCEPT;
/** Version and status of the node's first etag of this name; 0 and NULL without one. */
TW_API int32_t cfg_node_get_etag_version(cfg_node *node, const char *name) TW_NOEXCEPT;
TW_API const char *cfg_node_get_etag_status(cfg_node *node, const char *name) TW_NOEXCEPT;

/** ID of the etag's element. */
TW_API const char *cfg_etag_get_uuid(const cfg_etag *etag) TW_NOEXCEPT;
/** Name: "name". */
TW_API const char *cfg_etag_get_name(const cfg_etag *etag) TW_NOEXCEPT;
/** Status: "status". */
TW_API const char *cfg_etag_get_status(const cfg_etag *etag) TW_NOEXCEPT;
/** Version: "version". */
TW_API int32_t cfg_etag_get_version(const cfg_etag *etag) TW_NOEXCEPT;

/* ---- Generic writers ---- */

/**
 * Write one key of a map in the node's store. A NULL value deletes the key, which succeeds even when it is
 * absent. 1, or 0 when the node is NULL or the write fails.
 */
TW_API int cfg_node_update_string(cfg_node *node, cfg_elem *map, const char *key,
                                  const char *text) TW_NOEXCEPT;
TW_API int cfg_node_update_reference(cfg_node *node, cfg_elem *map, const char *key,
                                     const char *id) TW_NOEXCEPT;
TW_API int cfg_node_update_blob(cfg_node *node, cfg_elem *map, const char *key, const void *data,
                                size_t length) TW_NOEXCEPT;

TW_END
#endif
