/* Tags of nodes: references to tag values. */
#ifndef TWOBJECT_NODE_TAG_H
#define TWOBJECT_NODE_TAG_H

#include <twobject/common.h>
#include <twobject/node.h>
#include <twobject/tag.h>

TW_BEGIN

/*
 * A node of any product carries references to tag values in its list "tags". They are read by the first
 * query, the committed ones first and the pending ones behind them, and then kept in the record. A node
 * without tags has nothing to remember: each query reads the store again.
 */

/** Number of the node's tags, pending ones included. */
TW_API int32_t cfg_node_get_tag_count(cfg_node *node) TW_NOEXCEPT;
/**
 * Loads the value behind the tag at a 0-based index; the record is the caller's (cfg_tag_value_free()). NULL
 * outside the list and when the value cannot be loaded.
 */
TW_API cfg_tag_value *cfg_node_get_tag(cfg_node *node, int32_t index) TW_NOEXCEPT;
/** ID of the reference at a 0-based index, borrowed from the node's record; NULL outside the list. */
TW_API const char *cfg_node_get_tag_ref_uuid(cfg_node *node, int32_t index) TW_NOEXCEPT;
/** Loads the value behind a reference, for the caller; NULL when the reference is none of the node's. */
TW_API cfg_tag_value *cfg_node_get_tag_by_ref_uuid(cfg_node *node, const char *ref) TW_NOEXCEPT;
/** ID of the node's first reference to a value, borrowed from the node's record; NULL without one. */
TW_API const char *cfg_node_get_tag_ref_uuid_by_value(cfg_node *node, const cfg_tag_value *value) TW_NOEXCEPT;

/**
 * Appends a reference to a saved value to the node's list "tags" as a pending entry. Records of the node that
 * have read their tags do not notice. 1, or 0 when the node's element, its list or the value's ID is missing.
 */
TW_API int cfg_node_save_tag(cfg_node *node, const cfg_tag_value *value) TW_NOEXCEPT;
/** Lets a reference lead to another value. 1, or 0 when there is no such reference or no value. */
TW_API int cfg_node_update_tag(cfg *store, const char *ref, const cfg_tag_value *value) TW_NOEXCEPT;
/** Deletes a reference. 1, or 0 when there is no such reference. */
TW_API int cfg_node_delete_tag(cfg *store, const char *ref) TW_NOEXCEPT;

TW_END
#endif
