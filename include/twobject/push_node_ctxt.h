/* Push node contexts: one node's share of a push. */
#ifndef TWOBJECT_PUSH_NODE_CTXT_H
#define TWOBJECT_PUSH_NODE_CTXT_H

#include <twconfig/message.h>
#include <twobject/common.h>

TW_BEGIN

/**
 * One node's share of a push: the view of one element of the list "nodes" of an execution context. It says
 * how far the push has come on the node and lists what the preflight check and the execution had to tell.
 */
typedef struct cfg_push_node_ctxt cfg_push_node_ctxt;

/**
 * How far a push has come on a node. These are not the numbers of cfg_push_exec_status: what both can be is
 * one less here.
 */
typedef enum cfg_push_node_status {
  CFG_PUSH_NODE_PREFLIGHT_READY = 0,       /**< "preflight_ready" */
  CFG_PUSH_NODE_PREFLIGHT_IN_PROGRESS = 1, /**< "preflight_in_progress" */
  CFG_PUSH_NODE_PREFLIGHT_COMPLETE = 2,    /**< "preflight_complete" */
  CFG_PUSH_NODE_EXECUTE_IN_PROGRESS = 3,   /**< "execute_in_progress" */
  CFG_PUSH_NODE_EXECUTE_COMPLETE = 4,      /**< "execute_complete" */
  CFG_PUSH_NODE_INVALID = 5                /**< no text; what NULL and any other text read as */
} cfg_push_node_status;

/** The status of a text, compared exactly; CFG_PUSH_NODE_INVALID for NULL and any other text. */
TW_API int32_t cfg_node_ctxt_status_string_to_enum(const char *text) TW_NOEXCEPT;
/** The text of a status, a constant; NULL for any value without one. */
TW_API const char *cfg_node_ctxt_status_enum_to_string(int32_t status) TW_NOEXCEPT;

/** A new, empty context without element. NULL when memory is short. */
TW_API cfg_push_node_ctxt *cfg_push_node_ctxt_new(cfg *store) TW_NOEXCEPT;
/**
 * Loads a context with the IDs of its messages. Whatever its keys hold, it loads: a missing or unknown
 * "status" reads as CFG_PUSH_NODE_INVALID, a missing list of messages as an empty one.
 * @return a record of the caller's; NULL when there is no such element, or nothing holds it
 */
TW_API cfg_push_node_ctxt *cfg_push_node_ctxt_get_by_id(cfg *store, const char *id) TW_NOEXCEPT;
/** Frees the context with all it has. NULL is allowed. Not for one that an execution context owns. */
TW_API void cfg_push_node_ctxt_free(cfg_push_node_ctxt *context) TW_NOEXCEPT;

/** ID of the element, looked up anew: the final one once a commit has given it. NULL without element. */
TW_API const char *cfg_push_node_ctxt_get_uuid(cfg_push_node_ctxt *context) TW_NOEXCEPT;

/**
 * Of a new context: ID of the execution context that it is to be saved into. Of a loaded one: ID of the list
 * that holds it. Setting NULL changes nothing and answers 0.
 */
TW_API const char *cfg_push_node_ctxt_get_parent_uuid(const cfg_push_node_ctxt *context) TW_NOEXCEPT;
TW_API int cfg_push_node_ctxt_set_parent_uuid(cfg_push_node_ctxt *context, const char *id) TW_NOEXCEPT;

/** ID of the node: the reference "node". Setting NULL changes nothing and answers 0. */
TW_API const char *cfg_push_node_ctxt_get_node(const cfg_push_node_ctxt *context) TW_NOEXCEPT;
TW_API int cfg_push_node_ctxt_set_node(cfg_push_node_ctxt *context, const char *id) TW_NOEXCEPT;

/** A cfg_push_node_status: "status"; CFG_PUSH_NODE_INVALID for NULL. Any value can be set, in any order. */
TW_API int32_t cfg_push_node_ctxt_get_status(const cfg_push_node_ctxt *context) TW_NOEXCEPT;
TW_API int cfg_push_node_ctxt_set_status(cfg_push_node_ctxt *context, int32_t status) TW_NOEXCEPT;

/** Whether the execution is to be applied to the node: "apply_execution". Kept as it is set. */
TW_API int32_t cfg_push_node_ctxt_get_apply_execution(const cfg_push_node_ctxt *context) TW_NOEXCEPT;
TW_API int cfg_push_node_ctxt_set_apply_execution(cfg_push_node_ctxt *context, int32_t apply) TW_NOEXCEPT;

/**
 * Writes status, node and "apply_execution"; messages are written by the functions below. A new context joins
 * the list "nodes" of its parent as a pending entry; the list is made when there is none.
 * @return 1; 0 for NULL, without element or parent, without a node, or when one of the first two writes fails
 */
TW_API int cfg_push_node_ctxt_save(cfg_push_node_ctxt *context) TW_NOEXCEPT;

/*
 * Messages. A context has eight lists of them: changes, warnings, errors and plain messages, of the preflight
 * check and of the execution each ("preflight_changes", ..., "execution_messages"). Four functions for each:
 *
 * - The count of the messages that were committed when the context was loaded; 0 for NULL.
 * - The ID of the message at a 0-based index below that count, borrowed; NULL outside.
 * - Adding a message writes it to the store at once, as a pending entry: a number that says what it is, the
 *   strings that belong into its text, and the ID of the template that it is about. 1; 0 for NULL, for a
 *   context without element or one whose element lacks the list (the store gives new contexts their lists),
 *   and when a value cannot be written; nothing is added then. The context's own count does not change.
 * - Deleting a message removes its element from the store. 1 for an index below the count, also when the
 *   element is gone already; else 0. The context's own IDs and count stay until it is loaded again.
 */

/** Messages of the list "preflight_changes". */
TW_API int32_t cfg_push_node_ctxt_get_preflight_change_count(const cfg_push_node_ctxt *context) TW_NOEXCEPT;
TW_API const char *cfg_push_node_ctxt_get_preflight_change(const cfg_push_node_ctxt *context,
                                                           int32_t index) TW_NOEXCEPT;
TW_API int cfg_push_node_ctxt_add_preflight_change(cfg_push_node_ctxt *context, int32_t code, int32_t argc,
                                                   const char *const *args,
                                                   const char *template_id) TW_NOEXCEPT;
TW_API int cfg_push_node_ctxt_delete_preflight_change(cfg_push_node_ctxt *context, int32_t index) TW_NOEXCEPT;

/** Messages of the list "preflight_warnings". */
TW_API int32_t cfg_push_node_ctxt_get_preflight_warning_count(const cfg_push_node_ctxt *context) TW_NOEXCEPT;
TW_API const char *cfg_push_node_ctxt_get_preflight_warning(const cfg_push_node_ctxt *context,
                                                            int32_t index) TW_NOEXCEPT;
TW_API int cfg_push_node_ctxt_add_preflight_warning(cfg_push_node_ctxt *context, int32_t code, int32_t argc,
                                                    const char *const *args,
                                                    const char *template_id) TW_NOEXCEPT;
TW_API int cfg_push_node_ctxt_delete_preflight_warning(cfg_push_node_ctxt *context,
                                                       int32_t index) TW_NOEXCEPT;

/** Messages of the list "preflight_errors". */
TW_API int32_t cfg_push_node_ctxt_get_preflight_error_count(const cfg_push_node_ctxt *context) TW_NOEXCEPT;
TW_API const char *cfg_push_node_ctxt_get_preflight_error(const cfg_push_node_ctxt *context,
                                                          int32_t index) TW_NOEXCEPT;
TW_API int cfg_push_node_ctxt_add_preflight_error(cfg_push_node_ctxt *context, int32_t code, int32_t argc,
                                                  const char *const *args,
                                                  const char *template_id) TW_NOEXCEPT;
TW_API int cfg_push_node_ctxt_delete_preflight_error(cfg_push_node_ctxt *context, int32_t index) TW_NOEXCEPT;

/** Messages of the list "preflight_messages". */
TW_API int32_t cfg_push_node_ctxt_get_preflight_message_count(const cfg_push_node_ctxt *context) TW_NOEXCEPT;
TW_API const char *cfg_push_node_ctxt_get_preflight_message(const cfg_push_node_ctxt *context,
                                                            int32_t index) TW_NOEXCEPT;
TW_API int cfg_push_node_ctxt_add_preflight_message(cfg_push_node_ctxt *context, int32_t code, int32_t argc,
                                                    const char *const *args,
                                                    const char *template_id) TW_NOEXCEPT;
TW_API int cfg_push_node_ctxt_delete_preflight_message(cfg_push_node_ctxt *context,
                                                       int32_t index) TW_NOEXCEPT;

/** Messages of the list "execution_changes". */
TW_API int32_t cfg_push_node_ctxt_get_execution_change_count(const cfg_push_node_ctxt *context) TW_NOEXCEPT;
TW_API const char *cfg_push_node_ctxt_get_execution_change(const cfg_push_node_ctxt *context,
                                                           int32_t index) TW_NOEXCEPT;
TW_API int cfg_push_node_ctxt_add_execution_change(cfg_push_node_ctxt *context, int32_t code, int32_t argc,
                                                   const char *const *args,
                                                   const char *template_id) TW_NOEXCEPT;
TW_API int cfg_push_node_ctxt_delete_execution_change(cfg_push_node_ctxt *context, int32_t index) TW_NOEXCEPT;

/** Messages of the list "execution_warnings". */
TW_API int32_t cfg_push_node_ctxt_get_execution_warning_count(const cfg_push_node_ctxt *context) TW_NOEXCEPT;
TW_API const char *cfg_push_node_ctxt_get_execution_warning(const cfg_push_node_ctxt *context,
                                                            int32_t index) TW_NOEXCEPT;
TW_API int cfg_push_node_ctxt_add_execution_warning(cfg_push_node_ctxt *context, int32_t code, int32_t argc,
                                                    const char *const *args,
                                                    const char *template_id) TW_NOEXCEPT;
TW_API int cfg_push_node_ctxt_delete_execution_warning(cfg_push_node_ctxt *context,
                                                       int32_t index) TW_NOEXCEPT;

/** Messages of the list "execution_errors". */
TW_API int32_t cfg_push_node_ctxt_get_execution_error_count(const cfg_push_node_ctxt *context) TW_NOEXCEPT;
TW_API const char *cfg_push_node_ctxt_get_execution_error(const cfg_push_node_ctxt *context,
                                                          int32_t index) TW_NOEXCEPT;
TW_API int cfg_push_node_ctxt_add_execution_error(cfg_push_node_ctxt *context, int32_t code, int32_t argc,
                                                  const char *const *args,
                                                  const char *template_id) TW_NOEXCEPT;
TW_API int cfg_push_node_ctxt_delete_execution_error(cfg_push_node_ctxt *context, int32_t index) TW_NOEXCEPT;

/** Messages of the list "execution_messages". */
TW_API int32_t cfg_push_node_ctxt_get_execution_message_count(const cfg_push_node_ctxt *context) TW_NOEXCEPT;
TW_API const char *cfg_push_node_ctxt_get_execution_message(const cfg_push_node_ctxt *context,
                                                            int32_t index) TW_NOEXCEPT;
TW_API int cfg_push_node_ctxt_add_execution_message(cfg_push_node_ctxt *context, int32_t code, int32_t argc,
                                                    const char *const *args,
                                                    const char *template_id) TW_NOEXCEPT;
TW_API int cfg_push_node_ctxt_delete_execution_message(cfg_push_node_ctxt *context,
                                                       int32_t index) TW_NOEXCEPT;

/**
 * Makes a message that can be shown of a message's element. The stored number of arguments counts, not the
 * length of their list: what the list lacks is NULL.
 * @return a message for cfg_message_free(); NULL when there is no such element or it has no "args", for a
 * negative number of arguments and for more than 1,024
 */
TW_API cfg_message *get_config_message_from_uuid(cfg *store, const char *id) TW_NOEXCEPT;
/** ID of the template that a message is about, a heap string; NULL when there is none. */
TW_API char *get_template_uuid_from_message_uuid(cfg *store, const char *id) TW_NOEXCEPT;

TW_END
#endif
