/* One JSON value each way over a connected stream socket: the wire of the search service. */
#ifndef TWCONFIG_TRANSPORT_H
#define TWCONFIG_TRANSPORT_H

#include <jansson.h>
#include <twconfig/types.h>

CFG_BEGIN

/** The largest message, in bytes of JSON text. */
enum { CFG_TRANSPORT_MAX = 16 * 1024 * 1024 };

/*
 * A message is its length as 4 bytes, most significant first, and then that many bytes of compact UTF-8 JSON.
 * Both calls touch sockets only: a descriptor that is none (a file, a pipe, standard input) makes them fail
 * with nothing read and nothing written. They honour the socket's SO_SNDTIMEO and SO_RCVTIMEO, for the whole
 * message, and raise no SIGPIPE. After a failure in mid-message the connection is out of step: close it.
 */

/** Sends one value, which stays the caller's. 1 or 0. */
CFG_API int cfg_send(int socket, const json_t *value) CFG_NOEXCEPT;
/** Receives one value, a new reference; NULL on time-out, end of stream, a bad length or bad JSON. */
CFG_API json_t *cfg_receive(int socket) CFG_NOEXCEPT;

CFG_END
#endif
