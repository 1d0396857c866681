/* The whole store as JSON text: export and import. */
#ifndef TWCONFIG_TRANSFER_H
#define TWCONFIG_TRANSFER_H

#include <twconfig/types.h>

CFG_BEGIN

/** Takes the next bytes of the text; returns 0 to end the export. */
typedef int (*cfg_export_sink)(void *context, const char *data, size_t length);
/**
 * Writes the handle's snapshot as JSON, keys sorted, list entries with their numbers, each list with the
 * number that it gives out next. Exporting, importing and exporting again gives the same bytes. The edit is
 * not included. The text holds every secret of the store: the caller protects it.
 */
CFG_API int cfg_export(cfg *store, cfg_export_sink sink, void *context) CFG_NOEXCEPT;

/** Fills `buffer` with up to `size` bytes; returns how many, 0 at the end, (size_t)-1 on failure. */
typedef size_t (*cfg_import_source)(void *context, char *buffer, size_t size);
/**
 * Replaces the content of the edit with an exported text: a commit then makes it the store's content. Numbers
 * of list entries are kept, and a list never gives out a number again that the export or this store has used.
 * On failure (CFG_E_FORMAT, cfg_error_text() says where) the edit is as it was.
 */
CFG_API int cfg_import(cfg *store, cfg_import_source source, void *context) CFG_NOEXCEPT;

CFG_END
#endif
