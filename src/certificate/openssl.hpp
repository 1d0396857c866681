// What this folder does with OpenSSL's buffers and errors, and the one way it logs.
#ifndef TW_CERTIFICATE_OPENSSL_HPP
#define TW_CERTIFICATE_OPENSSL_HPP

#include <syslog.h>
#include <twlog.h>

#include <array>

#include "record/assertion.hpp"
#include "record/openssl.hpp"

namespace tw {

struct bytes {
  const char *data;
  size_t length;
};

// All that is left in a buffer that was filled before.
inline bytes content_of(BIO *buffer) noexcept {
  char *data = nullptr;
  const long length = BIO_get_mem_data(buffer, &data);
  TW_ASSERT(data && length > 0, "src/certificate");
  return {data, static_cast<size_t>(length)};
}

// The text of the thread's most recent OpenSSL error.
struct openssl_error {
  std::array<char, 256> chars{};
  openssl_error() noexcept { ERR_error_string_n(ERR_peek_last_error(), chars.data(), chars.size()); }
  const char *text() const noexcept { return chars.data(); }
};

// Each phase of issuing logs under its own name, also where the line stands outside the phase's function:
// those who read the journal follow a phase by it.
#define CERTIFICATE_LOG_AS(phase, priority, ...) \
  twlog_log_prio_codepos("src/certificate", phase, __LINE__, priority, __VA_ARGS__)
#define CERTIFICATE_LOG(priority, ...) CERTIFICATE_LOG_AS(__func__, priority, __VA_ARGS__)

}  // namespace tw

#endif
