// Certificate times in words.
#include <twobject/https.h>

#include "record/openssl.hpp"

void time_to_string(const ASN1_TIME *time, char *buffer) noexcept {
  if (!buffer) return;
  buffer[0] = '\0';
  const tw::bio_ptr words = time ? tw::new_buffer() : nullptr;
  if (!words || !ASN1_TIME_print(words.get(), time)) return;
  const int length = BIO_read(words.get(), buffer, CFG_HTTPS_TEXT_SIZE - 1);
  if (length > 0) buffer[length] = '\0';
}
