/*
 * libtwlog: log lines with source position, function and priority.
 *
 * A line goes to exactly one place: to the sink when one is set; else to the journal when stderr is connected
 * to it (as systemd does for services); else to stderr. No function blocks on an output: a line that cannot
 * be taken at once is dropped and counted. Any thread may log at any time.
 *
 * Priorities are those of syslog: 0 emergency, 1 alert, 2 critical, 3 error, 4 warning, 5 notice, 6
 * information, 7 debug. The journal and stderr get lines up to the highest priority number that is asked for:
 * 6 unless the environment variable TWLOG_LEVEL (a digit, 0 to 7, read when the library is loaded) or
 * twlog_set_max_priority() says otherwise.
 */
#ifndef TWLOG_H
#define TWLOG_H

#include <stdint.h>

#ifdef __cplusplus
#define TWLOG_NOEXCEPT noexcept
extern "C" {
#else
#define TWLOG_NOEXCEPT
#endif
#define TWLOG_API __attribute__((visibility("default")))

/** The longest message, in bytes; a longer one is cut and ends with "...". */
enum { TWLOG_MESSAGE_MAX = 4000 };

/**
 * Logs one message. errno is the same afterwards (and may be printed with %m). Line breaks at the message's
 * end are dropped; on stderr, those within it and all other control characters are written as escapes, so
 * that a line is a line whatever was logged.
 * @param file source file such as "src/users"; NULL reads as ""
 * @param function name of the function that logs; NULL reads as ""
 * @param priority 0 to 7; a number outside is brought to the nearer end
 * @param format as for printf; NULL logs nothing
 */
TWLOG_API void twlog_log_prio_codepos(const char *file, const char *function, int line, int priority,
                                      const char *format, ...) TWLOG_NOEXCEPT
    __attribute__((format(printf, 5, 6)));

/** Takes one line; the strings are never NULL and live until it returns. It must not throw. */
typedef void (*twlog_sink)(void *context, const char *file, const char *function, int line, int priority,
                           const char *message);
/**
 * Sends all lines of the process to `sink`, whatever their priority (it filters for itself), and nowhere
 * else; NULL brings back journal and stderr. The sink is called by the thread that logs, one call at a time.
 * When this returns, the former sink is not running and is not called again. What a sink itself logs is
 * dropped.
 * @return 1, or 0 when called from within a sink
 */
TWLOG_API int twlog_set_sink(twlog_sink sink, void *context) TWLOG_NOEXCEPT;

/** The highest priority number that reaches journal and stderr: 7 shows all, -1 nothing. Not for sinks. */
TWLOG_API void twlog_set_max_priority(int priority) TWLOG_NOEXCEPT;

/** How many lines of this process were lost because no output could take them at once. */
TWLOG_API uint64_t twlog_dropped(void) TWLOG_NOEXCEPT;

#ifdef __cplusplus
}
#endif
#endif
