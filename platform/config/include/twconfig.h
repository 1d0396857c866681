/*
 * libtwconfig: the configuration store of the appliance.
 *
 * A store is a tree of typed elements (map, list, string, integer, boolean, blob, reference). A process
 * opens a handle on it, reads one consistent snapshot, collects changes in an edit of its own and commits
 * them in one atomic, durable step. Several processes work on one store at once.
 *
 * Rules that hold for every function of this library:
 *
 *  1. Success is nonzero (1), failure is 0 or NULL. The reason stands in the handle: cfg_error_code(),
 *     cfg_error_text(). Out-parameters are written only on success.
 *  2. A NULL handle, element, map, list, key or out-parameter makes the call fail; it never crashes.
 *  3. Strings, blobs and arrays handed out through out-parameters are heap copies: free() them.
 *     IDs and element handles that are returned are borrowed: they live until cfg_close().
 *  4. A handle is used by one thread at a time. Different handles may be used by different threads.
 *     A handle must not be used in a child after fork(): every call then fails with CFG_E_FORKED.
 *  5. Integers are 32 bits wide. Keys are 1 to 255 bytes, element nesting is at most 64 deep, a string or
 *     blob is at most 16 MiB.
 */
#ifndef TWCONFIG_H
#define TWCONFIG_H

#include <twconfig/condition.h>
#include <twconfig/content.h>
#include <twconfig/element.h>
#include <twconfig/layout.h>
#include <twconfig/message.h>
#include <twconfig/read.h>
#include <twconfig/store.h>
#include <twconfig/transfer.h>
#include <twconfig/transport.h>

#endif
