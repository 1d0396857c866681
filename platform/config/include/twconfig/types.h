/* The types and marks that all headers of libtwconfig share. */
#ifndef TWCONFIG_TYPES_H
#define TWCONFIG_TYPES_H

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
#define CFG_BEGIN extern "C" {
#define CFG_END }
#define CFG_NOEXCEPT noexcept
#else
#define CFG_BEGIN
#define CFG_END
#define CFG_NOEXCEPT
#endif
#define CFG_API __attribute__((visibility("default")))

CFG_BEGIN

/** An open store: one snapshot of it and the caller's edit in progress. */
typedef struct cfg cfg;

/**
 * One element of the store. The pointer also reads as the element's ID text:
 * `(const char *)elem` is the ID that the element had when the handle was given out.
 * Owned by the store handle; never freed by the caller.
 */
typedef struct cfg_elem cfg_elem;

/** What an element is. */
typedef enum cfg_kind {
  CFG_NONE = 0, /**< no element, or an element that is gone */
  CFG_MAP = 1,
  CFG_LIST = 2,
  CFG_STRING = 3,
  CFG_INT = 4,
  CFG_BOOL = 5,
  CFG_BLOB = 6,
  CFG_REFERENCE = 7
} cfg_kind;

CFG_END
#endif
