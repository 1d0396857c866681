/* libtwmisc: small helpers that several programs of the appliance share. */
#ifndef TWMISC_H
#define TWMISC_H

#ifdef __cplusplus
#define TWMISC_NOEXCEPT noexcept
extern "C" {
#else
#define TWMISC_NOEXCEPT
#endif
#define TWMISC_API __attribute__((visibility("default")))

/**
 * Formats a new heap string and puts it in the place of `*target`, which is freed. The old string may be an
 * argument of the format: it is freed only when the new one is complete.
 * @param target a variable that holds a heap string or NULL; the caller frees what is in it at the end
 * @param format as for printf
 * @return 1, or 0 with `*target` unchanged: NULL target or format, a format that fails, no memory
 */
TWMISC_API int twmisc_replace_heap_string(char **target, const char *format, ...) TWMISC_NOEXCEPT
    __attribute__((format(printf, 2, 3)));

#ifdef __cplusplus
}
#endif
#endif
