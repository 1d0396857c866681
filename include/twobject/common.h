/* The types, marks and rules that all headers of libtwobject share. */
#ifndef TWOBJECT_COMMON_H
#define TWOBJECT_COMMON_H

#include <stddef.h>
#include <stdint.h>
#include <twconfig/types.h>

#ifdef __cplusplus
#define TW_BEGIN extern "C" {
#define TW_END }
#define TW_NOEXCEPT noexcept
#else
#define TW_BEGIN
#define TW_END
#define TW_NOEXCEPT
#endif
#define TW_API __attribute__((visibility("default")))

/*
 * Rules that hold for every function of this library. A header repeats a rule only where it departs from it.
 *
 *  1. Store handle. The caller opens, commits, abandons and closes the store (twconfig/store.h); this library
 *     never does. A record keeps the handle that it was read from: use the record while the handle is open.
 *     Freeing a record touches no handle and may be done after the handle is closed.
 *  2. Results. A pointer is NULL on failure. An int that reports success is 1, and 0 on failure. A count is 0
 *     for a collection that does not exist, and all ones (-1 as int32_t) when its size cannot be read. There
 *     is no error variable; the store handle tells why a store call failed.
 *  3. Out-parameters are written only on success.
 *  4. Records. What a lookup, list or constructor returns belongs to the caller until it is given to the
 *     family's free function. A record is a copy: it does not notice later changes in the store.
 *  5. Strings. A `const char *` that is returned is borrowed from the record: never free it; it lives until
 *     that field is set again or the record is freed. A `char *`, returned or handed out, is a heap copy that
 *     the caller releases with free(). Strings that are passed in are copied.
 *  6. NULL. Getters, setters, look-ups and free functions accept NULL and give NULL or 0, or do nothing. What
 *     a constructor makes of NULL stands with it.
 *  7. Programming errors. A save or store function that is given a NULL record, or one without a store
 *     handle, prints the failed expression, the source file and the function to standard error and aborts, in
 *     every kind of build. Nothing else in this library aborts on what a caller passes.
 *  8. Empty strings. A string setter turns "" into NULL, and saving a NULL string deletes its key: records
 *     never write empty strings.
 *  9. Keys. An optional key that is absent reads as NULL or 0; one that holds a value of another kind makes
 *     the look-up of the record fail. The keys that a record cannot be without are named at its look-up.
 * 10. Saving writes key after key and stops at the first write that fails. Nothing is rolled back: the caller
 *     abandons the edit. A new element joins its list as a pending entry, which ordinary list reads see after
 *     the commit.
 * 11. Integers are 32 bits wide unless a header says so. Truth values are int32_t, 0 or 1.
 * 12. Threads. A handle and the records read from it belong to one thread at a time. The library starts no
 *     threads and keeps no state between calls.
 * 13. Secrets (passwords, private keys) are wiped from memory when their record lets go of them. They appear
 *     in no message of this library.
 * 14. No exception leaves the library; running out of memory is a failure like any other.
 */

#endif
