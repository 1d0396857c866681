/* The live state of nodes, which other services of the appliance publish, and unenrolment. */
#ifndef TWOBJECT_NODE_RUNTIME_H
#define TWOBJECT_NODE_RUNTIME_H

#include <twobject/node.h>

TW_BEGIN

/*
 * The live state is read by the first getter below that is called on a record, all of it at once, and kept
 * with the record until cfg_node_runtime_set_connection_status() or cfg_node_free(). Where nothing was
 * published for the node, or the state cannot be read, nothing is kept: each getter answers its failure value
 * and the next one tries again.
 */

/** Whether a node is connected; published as "CONNECTED", "DISCONNECTED" and "NEVER_SEEN". */
typedef enum cfg_node_connection_status {
  CFG_NODE_CONNECTED = 0,
  CFG_NODE_DISCONNECTED = 1,
  CFG_NODE_NEVER_SEEN = 2,
  CFG_NODE_CONNECTION_UNKNOWN = 3 /**< any other text; published as "UNKNOWN" */
} cfg_node_connection_status;

/** Which job is recorded for a node. Of several the one that stands first here counts. */
typedef enum cfg_node_action_type {
  CFG_NODE_ACTION_UNENROLL = 2,     /**< queue "unenroll_node" */
  CFG_NODE_ACTION_ENROLLMENT = 1,   /**< queue "enrollment" */
  CFG_NODE_ACTION_REGISTRATION = 0, /**< queue "registration" */
  CFG_NODE_ACTION_NONE = 3
} cfg_node_action_type;

/** How far the recorded job has come. */
typedef enum cfg_node_action_status {
  CFG_NODE_ACTION_PENDING = 0,       /**< states 0 to 2 of the action; also where there is no action */
  CFG_NODE_ACTION_FINISHED = 1,      /**< states 3 and 4 */
  CFG_NODE_ACTION_FAILED = 2,        /**< state 5 */
  CFG_NODE_ACTION_STATUS_UNKNOWN = 3 /**< any other state, or none that can be read */
} cfg_node_action_status;

/** Connection status, a cfg_node_connection_status; 3 for NULL or when the live state cannot be read. */
TW_API int32_t cfg_node_runtime_get_connection_status(cfg_node *node) TW_NOEXCEPT;

/** Type of the recorded action, a cfg_node_action_type; 3 for NULL or when the live state cannot be read. */
TW_API int32_t cfg_node_runtime_get_action_type(cfg_node *node) TW_NOEXCEPT;

/**
 * Status of the recorded action, a cfg_node_action_status; 3 for NULL or when the live state cannot be read.
 * 0 when there is no action: read it together with the type.
 */
TW_API int32_t cfg_node_runtime_get_action_status(cfg_node *node) TW_NOEXCEPT;

/** The action's last error, borrowed; NULL without one, for NULL, or when the live state cannot be read. */
TW_API const char *cfg_node_runtime_get_action_error_message(cfg_node *node) TW_NOEXCEPT;

/** When the connection status was published, in seconds since the epoch (64 bits); 0 on failure. */
TW_API int64_t cfg_node_runtime_get_last_connection_change_time(cfg_node *node) TW_NOEXCEPT;

/** How many seconds that was before the live state was read (64 bits); 0 on failure. */
TW_API int64_t cfg_node_runtime_get_last_connection_change_delta(cfg_node *node) TW_NOEXCEPT;

/**
 * Publishes a connection status, a number that is none of cfg_node_connection_status as unknown, and lets go
 * of the live state that the record has kept. Whether the text could be published is not looked at; for a
 * record without element there is no place where it could be.
 * @return 1; 0 for NULL or when memory is short
 */
TW_API int cfg_node_runtime_set_connection_status(cfg_node *node, int32_t status) TW_NOEXCEPT;

/**
 * Asks for the node to be removed: records an action of the queue "unenroll_node" for it, then puts a job on
 * the work queue at 127.0.0.1, port 11300. The action stays behind when the job cannot be put.
 * @return 1 when the job was put, else 0
 */
TW_API int cfg_node_unenroll(cfg_node *node) TW_NOEXCEPT;

TW_END
#endif
