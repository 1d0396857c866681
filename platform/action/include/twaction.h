/*
 * libtwaction: the jobs that the appliance does for its nodes, as records that last: what was asked for, how
 * far it has come, and what went wrong. The job itself travels on a work queue; the record is what people see
 * of it, and what the job's worker keeps up to date.
 *
 * An action names the queue that its job is put on and, once it is associated, one node. A node has at most
 * one action of a queue: the newest.
 *
 * The records are in the directory that the environment variable TW_ACTION_DIR names,
 * /var/lib/twobject/actions without it. It is made, for its owner alone, when the first action is stored.
 * Every change is on disk when its call returns. Any number of processes and threads may call at once; one
 * twaction belongs to one thread at a time.
 *
 * An int result is 0, or a negative errno number: -ENOENT (no such action), -EINVAL (a NULL, or a size out of
 * bounds), -ESTALE (below), -ENOMEM, -ENOSPC, -EACCES, -EBADMSG (the file is damaged), ... Out-parameters are
 * written only on success.
 */
#ifndef TWACTION_H
#define TWACTION_H

#include <stdint.h>

#ifdef __cplusplus
#define TWACTION_NOEXCEPT noexcept
extern "C" {
#else
#define TWACTION_NOEXCEPT
#endif
#define TWACTION_API __attribute__((visibility("default")))

/** An action in memory: a copy, which does not notice later changes. */
typedef struct twaction twaction;

/** How far an action has come. Other numbers can be kept as well. */
enum {
  TWACTION_NEW = 0,           /**< asked for; its job is on the queue or about to be put there */
  TWACTION_TAKEN = 1,         /**< a worker has begun */
  TWACTION_RETRYING = 2,      /**< an attempt has failed, the last error says why; another will follow */
  TWACTION_DONE = 3,          /**< done */
  TWACTION_NOTHING_TO_DO = 4, /**< done without work: all was as it should be */
  TWACTION_FAILED = 5         /**< given up; the last error says why */
};

/** The longest texts, in bytes. */
enum { TWACTION_NODE_MAX = 380, TWACTION_QUEUE_NAME_MAX = 127, TWACTION_ERROR_MAX = 1023 };

/** A new action in memory: state TWACTION_NEW, no texts, no ID. NULL when memory is short. */
TWACTION_API twaction *twaction_new(void) TWACTION_NOEXCEPT;
/** Frees the action in memory; the stored one stays. NULL is allowed. */
TWACTION_API void twaction_free(twaction *action) TWACTION_NOEXCEPT;

/** Number of the stored action, never used again for another; 0 before it is stored and for NULL. */
TWACTION_API uint64_t twaction_get_id(const twaction *action) TWACTION_NOEXCEPT;

/** The state; a TWACTION_ number. Setters change the action in memory only. */
TWACTION_API int twaction_get_state(const twaction *action, int32_t *state) TWACTION_NOEXCEPT;
TWACTION_API int twaction_set_state(twaction *action, int32_t state) TWACTION_NOEXCEPT;

/** The name of its work queue, borrowed from the action; "" without one, NULL for NULL. */
TWACTION_API const char *twaction_get_queue_name(const twaction *action) TWACTION_NOEXCEPT;
TWACTION_API int twaction_set_queue_name(twaction *action, const char *name) TWACTION_NOEXCEPT;

/** Why the last attempt failed, borrowed from the action; NULL in `text` when there is no error. */
TWACTION_API int twaction_get_last_error(const twaction *action, const char **text) TWACTION_NOEXCEPT;
/** NULL and "" mean that there is none. A text that is too long is cut between two characters. */
TWACTION_API int twaction_set_last_error(twaction *action, const char *text) TWACTION_NOEXCEPT;

/** The node it is associated with, borrowed from the action; "" without one, NULL for NULL. */
TWACTION_API const char *twaction_get_node(const twaction *action) TWACTION_NOEXCEPT;
/** When it was first stored and when it was last, in milliseconds since the epoch; 0 before and for NULL. */
TWACTION_API int64_t twaction_get_created_ms(const twaction *action) TWACTION_NOEXCEPT;
TWACTION_API int64_t twaction_get_changed_ms(const twaction *action) TWACTION_NOEXCEPT;

/**
 * Stores the action. A new one gets its ID. One that was fetched is stored only if nobody has stored it
 * since: of two workers that take the same action one gets -ESTALE, and so does whoever stores an action that
 * a newer one of the same node and queue has replaced, or that was removed.
 */
TWACTION_API int twaction_store(twaction *action) TWACTION_NOEXCEPT;

/**
 * Makes a stored action that of a node. An earlier one of the node and the same queue is removed.
 * @param node the ID of the node
 */
TWACTION_API int twaction_associate_node(uint64_t id, const char *node) TWACTION_NOEXCEPT;

/** Fetches the action of a node for a queue. The caller frees it with twaction_free(). */
TWACTION_API int twaction_get_for_node(const char *node, const char *queue_name,
                                       twaction **action) TWACTION_NOEXCEPT;
/** Fetches an action by its number. The caller frees it with twaction_free(). */
TWACTION_API int twaction_get_by_id(uint64_t id, twaction **action) TWACTION_NOEXCEPT;

/** Is given an action, borrowed for the length of the call. Answers other than 0 to end the visit. */
typedef int (*twaction_visitor)(void *context, const twaction *action);
/**
 * Calls `visit` for every stored action of a queue (NULL: of all), oldest first, as they are now. `visit` may
 * store and remove actions.
 * @return 0, what `visit` ended it with, or a failure; 0 when nothing was stored yet
 */
TWACTION_API int twaction_visit(const char *queue_name, twaction_visitor visit,
                                void *context) TWACTION_NOEXCEPT;

/** Removes a stored action. */
TWACTION_API int twaction_remove(uint64_t id) TWACTION_NOEXCEPT;

#ifdef __cplusplus
}
#endif
#endif
