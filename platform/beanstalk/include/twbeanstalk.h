/*
 * libtwbeanstalk: a client of the work queue beanstalkd, in its text protocol.
 *
 * A call waits at most the connection's time-out, 5 seconds unless set otherwise, for the server to take the
 * command and to answer it. What the server says is not trusted: a reply that is no reply, too long or late
 * ends the connection, and further calls on it fail with -ENOTCONN. A connection belongs to one thread at a
 * time. Programs that the process starts do not inherit it, and no signal is raised when the server is gone.
 *
 * An int result is 0, or a negative errno number:
 *   -EINVAL     an argument that cannot be meant: a NULL, a tube name that the server would not take, a size
 *   -ENOENT     the server has no such job (any more), or it is another connection's
 *   -EMSGSIZE   the job is larger than the server, or this library, takes
 *   -EBUSY      the server takes no new jobs at present
 *   -ENOBUFS    the server is out of memory; a job that was put or released may have been buried
 *   -ENOMEM     this process is out of memory
 * and, with the connection ended, -ETIMEDOUT, -EPROTO (the reply is none), -ECONNRESET, -EPIPE and whatever
 * else the system says of a broken connection.
 */
#ifndef TWBEANSTALK_H
#define TWBEANSTALK_H

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
#define TWBEANSTALK_NOEXCEPT noexcept
extern "C" {
#else
#define TWBEANSTALK_NOEXCEPT
#endif
#define TWBEANSTALK_API __attribute__((visibility("default")))

/** The largest body that is put or handed out, in bytes; and the server's own limit unless set otherwise. */
enum { BS_BODY_MAX = 65535 };
/** The longest name of a tube, in bytes. */
enum { BS_TUBE_MAX = 200 };

/** A connection to a server. */
typedef struct bs_connection bs_connection;

/**
 * Connects. NULL on failure, with errno saying why: EINVAL for what is no numeric address.
 * @param address an IPv4 or IPv6 address in digits; names are not looked up
 */
TWBEANSTALK_API bs_connection *bs_connect(const char *address, uint16_t port) TWBEANSTALK_NOEXCEPT;
/** Ends the connection; the server makes the jobs that it had reserved available again. NULL is allowed. */
TWBEANSTALK_API void bs_disconnect(bs_connection *connection) TWBEANSTALK_NOEXCEPT;
/** How long a call waits for the server from now on; at least one millisecond. */
TWBEANSTALK_API int bs_set_timeout(bs_connection *connection, uint32_t milliseconds) TWBEANSTALK_NOEXCEPT;

/** Selects the tube that jobs are put on; "default" at first. */
TWBEANSTALK_API int bs_use(bs_connection *connection, const char *tube) TWBEANSTALK_NOEXCEPT;
/**
 * Puts a job on the tube in use.
 * @param priority 0 is the most urgent
 * @param delay seconds until the job may be reserved
 * @param ttr seconds that a worker has for it
 * @param body any bytes, at most BS_BODY_MAX
 * @return the number of the job, or a negative errno number
 */
TWBEANSTALK_API int64_t bs_put(bs_connection *connection, uint32_t priority, uint32_t delay, uint32_t ttr,
                               const void *body, size_t length) TWBEANSTALK_NOEXCEPT;

/** Adds a tube to those that jobs are reserved from; "default" is one of them at first. */
TWBEANSTALK_API int bs_watch(bs_connection *connection, const char *tube) TWBEANSTALK_NOEXCEPT;
/** Takes a tube from them; the last one cannot be taken (-EPERM). */
TWBEANSTALK_API int bs_ignore(bs_connection *connection, const char *tube) TWBEANSTALK_NOEXCEPT;

/** A reserved job. */
typedef struct bs_job {
  int64_t id;    /**< its number */
  char *body;    /**< a heap copy with a NUL behind its `length` bytes (not counted), freed by the caller */
  size_t length; /**< in bytes */
} bs_job;

/**
 * Reserves a job: it is this connection's until it is deleted, released or buried, or its time is over.
 * @param timeout seconds to wait for one, beyond the connection's time-out
 * @param job written on success
 * @return -EAGAIN when there was no job in time; -EDEADLK, without waiting, when the time of a job that is
 * reserved already is about to end; -EMSGSIZE when a job was reserved whose body is larger than BS_BODY_MAX:
 * `job` then has its number and no body
 */
TWBEANSTALK_API int bs_reserve(bs_connection *connection, uint32_t timeout, bs_job *job) TWBEANSTALK_NOEXCEPT;

/** Removes a job. */
TWBEANSTALK_API int bs_delete(bs_connection *connection, int64_t id) TWBEANSTALK_NOEXCEPT;
/** Gives a reserved job back, to be reserved again after `delay` seconds. */
TWBEANSTALK_API int bs_release(bs_connection *connection, int64_t id, uint32_t priority,
                               uint32_t delay) TWBEANSTALK_NOEXCEPT;
/** Puts a reserved job aside, until someone looks at it. */
TWBEANSTALK_API int bs_bury(bs_connection *connection, int64_t id, uint32_t priority) TWBEANSTALK_NOEXCEPT;
/** Starts the time of a reserved job anew. */
TWBEANSTALK_API int bs_touch(bs_connection *connection, int64_t id) TWBEANSTALK_NOEXCEPT;

#ifdef __cplusplus
}
#endif
#endif
