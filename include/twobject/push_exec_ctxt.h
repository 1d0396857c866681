/* Push execution contexts: one push of templates to nodes. */
#ifndef TWOBJECT_PUSH_EXEC_CTXT_H
#define TWOBJECT_PUSH_EXEC_CTXT_H

#include <twobject/common.h>
#include <twobject/push_node_ctxt.h>

TW_BEGIN

/**
 * One push of templates to nodes: the view of one element of the list "cfg_push_exec_ctxts". Other services
 * run the push; the record says who started it, how far it has come, and what it carries where.
 */
typedef struct cfg_push_exec_ctxt cfg_push_exec_ctxt;
/** A template of a push: its ID, and once it is saved that of the reference to it. Part of the push's record.
 */
typedef struct cfg_push_exec_template cfg_push_exec_template;
/** The IDs of all pushes. */
typedef struct cfg_push_exec_ctxt_list cfg_push_exec_ctxt_list;

/** How far a push has come. */
typedef enum cfg_push_exec_status {
  CFG_PUSH_EXEC_UNCONFIGURED = 0,          /**< "unconfigured" */
  CFG_PUSH_EXEC_PREFLIGHT_READY = 1,       /**< "preflight_ready" */
  CFG_PUSH_EXEC_PREFLIGHT_IN_PROGRESS = 2, /**< "preflight_in_progress" */
  CFG_PUSH_EXEC_PREFLIGHT_COMPLETE = 3,    /**< "preflight_complete" */
  CFG_PUSH_EXEC_EXECUTE_IN_PROGRESS = 4,   /**< "execute_in_progress" */
  CFG_PUSH_EXEC_EXECUTE_COMPLETE = 5,      /**< "execute_complete" */
  CFG_PUSH_EXEC_INVALID = 6                /**< no text; what NULL and any other text read as */
} cfg_push_exec_status;

/** What a push does with nodes that are not connected. */
typedef enum cfg_push_disconnected_behaviour {
  CFG_PUSH_DISCONNECTED_SKIP = 0,   /**< "skip" */
  CFG_PUSH_DISCONNECTED_PROMPT = 1, /**< "prompt" */
  CFG_PUSH_DISCONNECTED_APPLY = 2,  /**< "apply" */
  CFG_PUSH_DISCONNECTED_INVALID = 3 /**< no text; what NULL and any other text read as */
} cfg_push_disconnected_behaviour;

/** Texts are compared exactly; those of values are constants, NULL for a value without one. */
TW_API int32_t cfg_exec_ctxt_status_string_to_enum(const char *text) TW_NOEXCEPT;
TW_API const char *cfg_exec_ctxt_status_enum_to_string(int32_t status) TW_NOEXCEPT;
TW_API int32_t cfg_exec_ctxt_disconn_behaviour_string_to_enum(const char *text) TW_NOEXCEPT;
TW_API const char *cfg_exec_ctxt_disconn_behaviour_enum_to_string(int32_t behaviour) TW_NOEXCEPT;

/** A new, empty push without element. NULL when memory is short. */
TW_API cfg_push_exec_ctxt *cfg_push_exec_ctxt_new(cfg *store) TW_NOEXCEPT;
/**
 * Loads a push with its templates; its nodes are loaded when they are first asked for. Whatever its keys
 * hold, it loads: a missing or unknown "status" or "disconnected_nodes_behaviour" reads as the invalid value.
 * @return a record of the caller's; NULL when there is no such element
 */
TW_API cfg_push_exec_ctxt *cfg_push_exec_ctxt_get_by_id(cfg *store, const char *id) TW_NOEXCEPT;
/**
 * Frees the push, but not the texts of its templates, nor those of its node contexts (their IDs, nodes,
 * parents and the IDs of their messages): callers keep them beyond the push's life. NULL is allowed.
 */
TW_API void cfg_push_exec_ctxt_free(cfg_push_exec_ctxt *push) TW_NOEXCEPT;
/** Frees the push with all that cfg_push_exec_ctxt_free() leaves, for who has kept none of it. NULL is
 * allowed. */
TW_API void cfg_push_exec_ctxt_dispose(cfg_push_exec_ctxt *push) TW_NOEXCEPT;

/** ID of the element, looked up anew: the final one once a commit has given it. NULL without element. */
TW_API const char *cfg_push_exec_ctxt_get_uuid(cfg_push_exec_ctxt *push) TW_NOEXCEPT;
/** The store handle that the push works on. */
TW_API cfg *cfg_push_exec_ctxt_get_cfg(const cfg_push_exec_ctxt *push) TW_NOEXCEPT;
TW_API cfg *cfg_push_exec_ctxt_get_config(const cfg_push_exec_ctxt *push) TW_NOEXCEPT;

/** Who started the push: "username". Setting NULL changes nothing and answers 0. */
TW_API const char *cfg_push_exec_ctxt_get_username(const cfg_push_exec_ctxt *push) TW_NOEXCEPT;
TW_API int cfg_push_exec_ctxt_set_username(cfg_push_exec_ctxt *push, const char *username) TW_NOEXCEPT;

/** A cfg_push_exec_status: "status"; CFG_PUSH_EXEC_INVALID for NULL. Any value can be set, in any order. */
TW_API int32_t cfg_push_exec_ctxt_get_status(const cfg_push_exec_ctxt *push) TW_NOEXCEPT;
TW_API int cfg_push_exec_ctxt_set_status(cfg_push_exec_ctxt *push, int32_t status) TW_NOEXCEPT;

/** A cfg_push_disconnected_behaviour: "disconnected_nodes_behaviour"; the invalid one for NULL. */
TW_API int32_t cfg_push_exec_ctxt_get_disconnected_behaviour(const cfg_push_exec_ctxt *push) TW_NOEXCEPT;
TW_API int cfg_push_exec_ctxt_set_disconnected_behaviour(cfg_push_exec_ctxt *push,
                                                         int32_t behaviour) TW_NOEXCEPT;

/* ---- Templates: references in the list "templates" ---- */

/** Number of templates. */
TW_API int32_t cfg_push_exec_ctxt_get_num_templates(const cfg_push_exec_ctxt *push) TW_NOEXCEPT;
/** The template at a 0-based index, borrowed; NULL outside. */
TW_API cfg_push_exec_template *cfg_push_exec_ctxt_get_template(cfg_push_exec_ctxt *push,
                                                               int32_t index) TW_NOEXCEPT;
/** The ID of the template at a 0-based index; NULL outside. */
TW_API const char *cfg_push_exec_ctxt_get_template_uuid(const cfg_push_exec_ctxt *push,
                                                        int32_t index) TW_NOEXCEPT;
/** Adds a template to the record. 1; 0 for NULL, and once the templates have been removed. */
TW_API int cfg_push_exec_ctxt_add_template(cfg_push_exec_ctxt *push, const char *template_id) TW_NOEXCEPT;
/**
 * Removes all templates from the record, for good; what is stored stays stored. The number that was removed,
 * but 1 for NULL.
 */
TW_API int32_t cfg_push_exec_ctxt_remove_templates(cfg_push_exec_ctxt *push) TW_NOEXCEPT;
/** Stores a template of the push as a pending entry, once. 1; 0 for NULL or when it cannot be stored. */
TW_API int cfg_push_exec_ctxt_save_template(cfg_push_exec_ctxt *push,
                                            cfg_push_exec_template *entry) TW_NOEXCEPT;

/* ---- Nodes: maps in the list "nodes", each a cfg_push_node_ctxt ---- */

/** Loads the nodes, once: the functions below do so themselves. A push that has no list of nodes is tried
 * again the next time. */
TW_API void cfg_push_exec_ctxt_populate_nodes(cfg_push_exec_ctxt *push) TW_NOEXCEPT;
/** Number of nodes. */
TW_API int32_t cfg_push_exec_ctxt_get_num_nodes(cfg_push_exec_ctxt *push) TW_NOEXCEPT;
/** The node context at a 0-based index; it stays the push's. NULL outside, and for one that cannot be loaded.
 */
TW_API cfg_push_node_ctxt *cfg_push_exec_ctxt_get_node_ctxt(cfg_push_exec_ctxt *push,
                                                            int32_t index) TW_NOEXCEPT;
/** Gives a node context to the push. 1; 0, with the context still the caller's, for NULL, without memory and
 * once the nodes have been removed. */
TW_API int cfg_push_exec_ctxt_add_node(cfg_push_exec_ctxt *push, cfg_push_node_ctxt *node) TW_NOEXCEPT;
/**
 * Removes all nodes from the record, for good; what is stored stays stored. Frees the contexts, but not their
 * texts. The number that was removed, 0 for NULL.
 */
TW_API int32_t cfg_push_exec_ctxt_remove_nodes(cfg_push_exec_ctxt *push) TW_NOEXCEPT;

/**
 * Saves the push; a new one joins its list as a pending entry. User name (unless it is NULL), status and
 * behaviour are always written, node contexts and templates only when `whole` is not 0.
 * @return 1; 0 for NULL, without list or element, and when a write or a node context's save fails
 */
TW_API int cfg_push_exec_ctxt_save(cfg_push_exec_ctxt *push, int32_t whole) TW_NOEXCEPT;

/* ---- All pushes ---- */

/** The IDs of the committed pushes, in list order. NULL when memory is short. */
TW_API cfg_push_exec_ctxt_list *cfg_push_exec_ctxt_list_new(cfg *store) TW_NOEXCEPT;
TW_API int32_t cfg_push_exec_ctxt_list_count(const cfg_push_exec_ctxt_list *list) TW_NOEXCEPT;
/** Loads the push at a 0-based index; NULL outside the list or when it cannot be loaded. */
TW_API cfg_push_exec_ctxt *cfg_push_exec_ctxt_list_get_execution(const cfg_push_exec_ctxt_list *list,
                                                                 int32_t index) TW_NOEXCEPT;
/** Frees the list with its IDs. NULL is allowed. */
TW_API void cfg_push_exec_ctxt_list_free(cfg_push_exec_ctxt_list *list) TW_NOEXCEPT;

TW_END
#endif
