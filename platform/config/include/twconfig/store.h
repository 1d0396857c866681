/* Life cycle of a store handle: open, commit, abandon, refresh, close; errors, status and commit log. */
#ifndef TWCONFIG_STORE_H
#define TWCONFIG_STORE_H

#include <twconfig/types.h>

CFG_BEGIN

/** Why a call failed. The numbers are stable. */
typedef enum cfg_code {
  CFG_OK = 0,
  CFG_E_ARGUMENT =
      1, /**< the call cannot mean anything: a NULL, a bad key, a wrong kind, an unknown option */
  CFG_E_NOT_FOUND = 2,  /**< no such store, element, key, commit */
  CFG_E_EXISTS = 3,     /**< something is there already and must not be replaced */
  CFG_E_CONFLICT = 4,   /**< another commit changed what this edit writes; nothing was changed */
  CFG_E_LIMIT = 5,      /**< a size or count is above what the store accepts */
  CFG_E_READ_ONLY = 6,  /**< the handle was opened for reading only */
  CFG_E_PERMISSION = 7, /**< the operating system refused access, or the files' owner or mode are unsafe */
  CFG_E_NO_SPACE = 8,   /**< disk or map full; nothing was changed, the edit is still there */
  CFG_E_IO = 9,         /**< the operating system reported an input/output error; nothing was changed */
  CFG_E_CORRUPT = 10,   /**< the store's files are damaged or truncated */
  CFG_E_VERSION = 11,   /**< the store was written by a newer format than this library knows */
  CFG_E_MEMORY = 12,    /**< out of memory */
  CFG_E_FORKED = 13,    /**< the handle belongs to the parent process */
  CFG_E_UNKNOWN = 14,   /**< the commit was handed over but its outcome is not known */
  CFG_E_FORMAT = 15     /**< a text (JSON, export file, condition) does not have the form it must have */
} cfg_code;

/** What a caller can do about a code. */
typedef enum cfg_advice {
  CFG_ADVICE_NONE = 0,           /**< CFG_OK: nothing to do */
  CFG_ADVICE_RETRY = 1,          /**< refresh, make the change again, commit again */
  CFG_ADVICE_FIX = 2,            /**< the caller or the operator has to change something first */
  CFG_ADVICE_GIVE_UP = 3,        /**< trying again will not help */
  CFG_ADVICE_OUTCOME_UNKNOWN = 4 /**< look the commit's token up before doing anything else */
} cfg_advice;

/** Where a call that has no handle yet (cfg_open) reports its failure. Owned by the caller. */
typedef struct cfg_failure {
  cfg_code code;  /**< why */
  char text[512]; /**< the same in words */
} cfg_failure;

/** Options of cfg_open(), or-ed together. */
enum {
  CFG_OPEN_CREATE = 1,   /**< make the directory (0700) and the store (0600) when they are missing */
  CFG_OPEN_READ_ONLY = 2 /**< changes are refused with CFG_E_READ_ONLY */
};

/**
 * Opens the store in directory `path`.
 * @param options CFG_OPEN_* or 0
 * @param failure receives code and text when the result is NULL; may be NULL
 * @return a handle to be released with cfg_close(), or NULL. Nothing is loaded at open.
 */
CFG_API cfg *cfg_open(const char *path, unsigned options, cfg_failure *failure) CFG_NOEXCEPT;

/**
 * Opens a store that lives in this process's memory. Handles with the same `name` share one store, which is
 * gone when the last of them is closed; NULL gives a store that nobody shares.
 */
CFG_API cfg *cfg_open_memory(const char *name, cfg_failure *failure) CFG_NOEXCEPT;

/** Drops the edit, releases the handle, every element handle and every borrowed ID. NULL is allowed. */
CFG_API void cfg_close(cfg *store) CFG_NOEXCEPT;

/** Who commits what for which reason; every member may be NULL. */
typedef struct cfg_commit_note {
  const char *who;   /**< author, at most 255 bytes; NULL: "uid:<number>" */
  const char *why;   /**< reason, at most 1023 bytes */
  const char *token; /**< names this very commit, at most 127 bytes: a token that is in the log already makes
                          cfg_commit() drop the edit and succeed without changing anything again */
} cfg_commit_note;

/**
 * Makes the edit durable in one atomic step and moves the handle to the newest revision, which holds this
 * commit and any that were made since. Pending list entries become committed entries, provisional IDs become
 * final ones (both forms are understood by cfg_get_by_id() until the handle is closed). An edit without
 * changes succeeds and makes no revision.
 * @return 1, or 0 with the edit kept as it was: CFG_E_CONFLICT (cfg_error_text() names the element, the
 * revision it was read at, the revision that changed it and that commit's author), CFG_E_NO_SPACE, ...
 */
CFG_API int cfg_commit(cfg *store, const cfg_commit_note *note) CFG_NOEXCEPT;

/** The revision of the last commit that was made through this handle; 0 when there was none. */
CFG_API uint64_t cfg_committed_revision(const cfg *store) CFG_NOEXCEPT;

/** Drops the edit and its messages; the snapshot stays. New elements that were never committed are gone. */
CFG_API void cfg_abandon(cfg *store) CFG_NOEXCEPT;

/**
 * Moves the handle to the newest revision, keeping the edit (conflicts are found at commit). Search results
 * are released. 1, or 0 with the handle and the edit where they were.
 */
CFG_API int cfg_refresh(cfg *store) CFG_NOEXCEPT;

/**
 * Lets go of the snapshot of a handle without changes, so that an idle process does not keep old pages in
 * use; the next call reads the newest revision. Search results are released. Fails when there is an edit.
 */
CFG_API int cfg_park(cfg *store) CFG_NOEXCEPT;

/** The revision that the handle reads; 0 for an empty store or on failure. */
CFG_API uint64_t cfg_revision(cfg *store) CFG_NOEXCEPT;

/** 1 when the edit holds a change that a commit would write. */
CFG_API int cfg_has_changes(cfg *store) CFG_NOEXCEPT;

/** Code and text of the last failed call on this handle. The text is borrowed until the next call. */
CFG_API cfg_code cfg_error_code(const cfg *store) CFG_NOEXCEPT;
CFG_API const char *cfg_error_text(const cfg *store) CFG_NOEXCEPT;

/** A constant name for a code ("conflict"), and what to do about it. */
CFG_API const char *cfg_code_text(cfg_code code) CFG_NOEXCEPT;
CFG_API cfg_advice cfg_code_advice(cfg_code code) CFG_NOEXCEPT;

/** One change of an edit or of a commit. All strings are borrowed for the length of the callback. */
typedef struct cfg_change {
  char op;              /**< '+' added, '-' removed, '=' value set */
  const char *id;       /**< the element's ID */
  cfg_kind kind;        /**< kind after the change, before it for '-'; CFG_NONE in the commit log */
  const char *old_text; /**< old value in words, NULL when there was none; always NULL in the commit log */
  const char *new_text; /**< new value in words, NULL when there is none; always NULL in the commit log */
} cfg_change;
typedef int (*cfg_change_visitor)(void *context, const cfg_change *change);

/** Calls `visit` for every change of the edit, in ID order per record, until it returns 0. Returns 1, 0 on
 * failure. */
CFG_API int cfg_visit_changes(cfg *store, cfg_change_visitor visit, void *context) CFG_NOEXCEPT;

/** One commit of the log. Strings are borrowed for the length of the callback. */
typedef struct cfg_commit_info {
  uint64_t revision;             /**< that it made */
  int64_t time_ms;               /**< milliseconds since the epoch */
  const char *who, *why, *token; /**< its note; "" for what it lacks */
} cfg_commit_info;
typedef int (*cfg_commit_visitor)(void *context, const cfg_commit_info *commit);

/** Calls `visit` for each commit from the newest down to revision `oldest` (0: all that are kept). */
CFG_API int cfg_visit_log(cfg *store, uint64_t oldest, cfg_commit_visitor visit, void *context) CFG_NOEXCEPT;
/** Calls `visit` with op and ID of every change that the commit `revision` made, a new element and all that
 * is in it being one change; 0 when it is not in the log.
 */
CFG_API int cfg_visit_commit(cfg *store, uint64_t revision, cfg_change_visitor visit,
                             void *context) CFG_NOEXCEPT;
/** Looks a commit's token up. 1 and its revision, or 0 when no kept commit carries it. */
CFG_API int cfg_find_commit(cfg *store, const char *token, uint64_t *revision) CFG_NOEXCEPT;

/** Sizes and readers of the store. */
typedef struct cfg_reader_info {
  int64_t pid;       /**< its process */
  uint64_t revision; /**< the snapshot it holds */
  int64_t age_ms; /**< how long it has held it; for a reader in another process, how long ago its snapshot was
                       replaced by a newer revision (0: it reads the newest; -1: longer than the log tells) */
} cfg_reader_info;
typedef struct cfg_status_info {
  const char *engine;          /**< "lmdb" or "memory" */
  uint64_t revision;           /**< newest revision */
  uint64_t records;            /**< stored values */
  uint64_t used_bytes;         /**< bytes in use by them */
  uint64_t file_bytes;         /**< size of the data file */
  uint64_t map_bytes;          /**< address space reserved */
  uint64_t oldest_log;         /**< oldest revision kept in the commit log */
  uint32_t reader_count;       /**< entries in `readers` */
  cfg_reader_info readers[64]; /**< the first of those that hold a snapshot */
} cfg_status_info;
CFG_API int cfg_status(cfg *store, cfg_status_info *out) CFG_NOEXCEPT;

/** A problem found by cfg_verify(). `where` is an ID or a key of the engine. */
typedef int (*cfg_problem_visitor)(void *context, const char *where, const char *problem);
/** Reads every record of the store and checks its form. 1 when nothing is wrong, 0 otherwise. */
CFG_API int cfg_verify(cfg *store, cfg_problem_visitor visit, void *context) CFG_NOEXCEPT;

/**
 * Writes a compact copy of the newest revision into the new directory `path`. Free pages, which may still
 * hold deleted secrets, are not copied. To compact a store, copy it, stop its users and swap the directories.
 */
CFG_API int cfg_compact(cfg *store, const char *path) CFG_NOEXCEPT;

CFG_END
#endif
