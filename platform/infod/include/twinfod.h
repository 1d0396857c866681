/*
 * libtwinfod: the appliance's live state. What runs on the appliance publishes texts under keys such as
 * "nodes.nodes-12.status.connection_status", and any process reads them, with the time of their publishing.
 *
 * There is no server: the state is a file in the directory that the environment variable TW_INFOD_DIR names,
 * /run/twinfod without it, opened at the first call and kept open. It is made when something is published
 * first, its directory for its owner alone. The state is gone when the directory is, usually at a reboot, and
 * sound as long as it is there, whoever is killed. Any thread may call, and a child of fork() goes on as its
 * parent would.
 *
 * An int result is 0, or a negative errno number: -ENOENT (no such key, or nothing was published yet),
 * -EINVAL (a NULL, or a size out of bounds), -ENOMEM, -ENOSPC, -EACCES, -EBADMSG (the file is damaged), ...
 * Out-parameters are written only on success. Texts that are handed out are heap copies that the caller
 * frees.
 */
#ifndef TWINFOD_H
#define TWINFOD_H

#include <stdint.h>

#ifdef __cplusplus
#define TWINFOD_NOEXCEPT noexcept
extern "C" {
#else
#define TWINFOD_NOEXCEPT
#endif
#define TWINFOD_API __attribute__((visibility("default")))

/** The longest key, which has at least one byte, and the longest text, in bytes. */
enum { INFOD_KEY_MAX = 511, INFOD_TEXT_MAX = 65535 };

/** Kinds of values: a number that the publisher chooses for its readers. */
enum { INFOD_KIND_STATUS = 2 /**< one word of a fixed set */ };

/**
 * Publishes a text under a key, in the place of what was there. Its time stamp is the present time.
 * @param text may be empty
 * @param kind any number
 */
TWINFOD_API int infod_push_text(const char *key, const char *text, int32_t kind) TWINFOD_NOEXCEPT;

/**
 * The newest text of a key.
 * @param time_ms when it was published, in milliseconds since the epoch; may be NULL
 */
TWINFOD_API int infod_get_extended(const char *key, char **text, int64_t *time_ms) TWINFOD_NOEXCEPT;

/** The state at one moment, for the reading of several keys that must fit together. */
typedef struct infod_multiple infod_multiple;

/**
 * The state as it is now; later changes do not show in it. It keeps old pages of the file in use: end it
 * soon. NULL on failure; a state in which nothing was published yet is none. A child of fork() cannot read in
 * what its parent has started (-EBADF) and may end it.
 */
TWINFOD_API infod_multiple *infod_get_multiple_start(void) TWINFOD_NOEXCEPT;
/** As infod_get_extended(). -EINVAL for a NULL state. */
TWINFOD_API int infod_get_multiple_extended(infod_multiple *multiple, const char *key, char **text,
                                            int64_t *time_ms) TWINFOD_NOEXCEPT;
/** Lets go of the state. NULL is allowed. */
TWINFOD_API void infod_get_multiple_end(infod_multiple *multiple) TWINFOD_NOEXCEPT;

/** One value; the strings are borrowed for the length of the call. */
typedef struct infod_value {
  const char *key, *text; /**< what was published, and under which key */
  int32_t kind;           /**< the publisher's number for it */
  int64_t time_ms;        /**< when, in milliseconds since the epoch */
} infod_value;
/** Answers other than 0 to end the visit. */
typedef int (*infod_visitor)(void *context, const infod_value *value);

/**
 * Calls `visit` for every key that begins with `prefix` ("" for all), in byte order, on the state as it is
 * now.
 * @return 0, what `visit` ended it with, or a failure
 */
TWINFOD_API int infod_visit(const char *prefix, infod_visitor visit, void *context) TWINFOD_NOEXCEPT;

/** Removes every key that begins with `prefix`, which has at least one byte. That there is none is no
 * failure. */
TWINFOD_API int infod_remove(const char *prefix) TWINFOD_NOEXCEPT;

#ifdef __cplusplus
}
#endif
#endif
