/* The client of the search service: condition trees evaluated by the service, which keeps the results. */
#ifndef TWOBJECT_SEARCH_H
#define TWOBJECT_SEARCH_H

#include <twconfig/condition.h>
#include <twobject/common.h>

TW_BEGIN

/*
 * Each call opens a connection of its own to the service's socket "/tmp/twsearch-server.sock", introduces
 * this process, sends one request, reads one reply and closes. A call waits at most 60 seconds for each
 * reply. Nothing is kept between calls, so that they may run on several threads at once. When the service is
 * not there, the descriptor of the attempt stays open: whoever waits for the service should not ask in a
 * loop.
 *
 * Object types are the names of collections, such as "nodes". NULL for a text argument leaves it out of the
 * request, which the service then answers with an error. A text that is not UTF-8 cannot be sent at all and
 * makes the call fail. NULL for an out-parameter is a failure.
 *
 * `secctxt` is the security context in whose name the service is asked, and `verb` goes with it: neither is
 * sent when `secctxt` is NULL.
 */

/**
 * A connected socket that the service has greeted; the caller closes it. 0 when there is none. A descriptor 0
 * cannot be told from that: a process that wants to be found keeps its standard input open.
 */
TW_API int twsearch_connect(void) TW_NOEXCEPT;

/**
 * The keys by which objects of a type can be searched.
 * @param fields receives a heap array of heap strings: free each, then the array
 * @param count receives its length
 */
TW_API int32_t twsearch_get_fields(const char *object, char ***fields, int32_t *count) TW_NOEXCEPT;

/**
 * Searches objects of a type. The service keeps the result for a while, for twsearch_fetch().
 * @param conditions stays the caller's
 * @return the ID of the result, a heap string, or NULL
 */
TW_API char *twsearch_create(const char *object, cfg_condition *conditions, int32_t verb,
                             const char *secctxt) TW_NOEXCEPT;

/**
 * Reads a result or a part of it. Offset 0 with limit 0 is the whole.
 * @param items receives the IDs of the objects found: a heap array of heap strings with NULL behind the last
 * (free each, then the array), or NULL when there are none
 * @param count receives the number that the service reports for the whole result
 * @return the number of IDs in `items`; -1 without a connection; -2 when the service reports no success
 */
TW_API int32_t twsearch_fetch(const char *id, int32_t offset, int32_t limit, char ***items, int32_t *count,
                              int32_t verb, const char *secctxt) TW_NOEXCEPT;

TW_END
#endif
