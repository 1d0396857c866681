/* Messages: what went wrong in an edit, told by the libraries to whoever made the edit. */
#ifndef TWCONFIG_MESSAGE_H
#define TWCONFIG_MESSAGE_H

#include <twconfig/types.h>

CFG_BEGIN

/** A message: a code and its arguments. */
typedef struct cfg_message cfg_message;

/** Codes of the messages that this library makes; other codes belong to those who store them. */
enum {
  CFG_MESSAGE_UNEXPECTED = 1,         /**< arguments: source file, line */
  CFG_MESSAGE_BAD_KEY = 2,            /**< a supplied private key could not be read */
  CFG_MESSAGE_CSR_GENERATE_FAILED = 3 /**< a certificate request could not be generated */
};

/**
 * Makes a message and takes over `args`, a heap array of `argc` heap strings (NULL entries are allowed).
 * NULL when argc is negative or above 1,024, or when args is NULL while argc is not 0; args is then released
 * all the same. Free with cfg_message_free().
 */
CFG_API cfg_message *cfg_new_message(int32_t code, int32_t argc, char **args) CFG_NOEXCEPT;
CFG_API void cfg_message_free(cfg_message *message) CFG_NOEXCEPT;
CFG_API int32_t cfg_message_get_code(const cfg_message *message) CFG_NOEXCEPT;
CFG_API int32_t cfg_message_get_argc(const cfg_message *message) CFG_NOEXCEPT;
/** The argument at an index, or NULL. Borrowed. */
CFG_API const char *cfg_message_get_arg(const cfg_message *message, int32_t index) CFG_NOEXCEPT;
/** The message in words; borrowed, never NULL for a message. */
CFG_API const char *cfg_message_get_text(const cfg_message *message) CFG_NOEXCEPT;

/** Add a message to the edit. 1 or 0. The messages are dropped by commit and abandon. */
CFG_API int cfg_message_add_unexpected(cfg *store, const char *file, int32_t line) CFG_NOEXCEPT;
CFG_API int cfg_message_add_bad_key(cfg *store) CFG_NOEXCEPT;
CFG_API int cfg_message_add_csr_generate_failed(cfg *store) CFG_NOEXCEPT;

/** Number of messages of the edit, and the message at an index (borrowed; NULL past the end). */
CFG_API int32_t cfg_get_message_count(const cfg *store) CFG_NOEXCEPT;
CFG_API const cfg_message *cfg_get_message(const cfg *store, int32_t index) CFG_NOEXCEPT;
/**
 * The text of the edit's first message; without one, the text of the handle's last error; else "". Never
 * NULL. Borrowed until the next call on the handle.
 */
CFG_API const char *cfg_get_first_message_string(const cfg *store) CFG_NOEXCEPT;

CFG_END
#endif
