#include "record/request.hpp"

namespace tw {
namespace {

bool add_entry(X509_NAME *name, const subject_entry &entry) noexcept {
  const auto *value = reinterpret_cast<const unsigned char *>(entry.value);
  return X509_NAME_add_entry_by_txt(name, entry.type, MBSTRING_ASC, value, -1, -1, 0) == 1;
}

bool push_extension(STACK_OF(X509_EXTENSION) * list, int nid, const char *value) noexcept {
  X509_EXTENSION *extension = X509V3_EXT_conf_nid(nullptr, nullptr, nid, value);
  if (extension && sk_X509_EXTENSION_push(list, extension) > 0) return true;
  X509_EXTENSION_free(extension);
  return false;
}

}  // namespace

// The public exponent is OpenSSL's own choice, 65537. The key is generated in its container, so there is no
// step of its own that puts it there and could fail.
bool generate_rsa_key(EVP_PKEY *container, int bits) noexcept {
  const pkey_ctx_ptr generator(EVP_PKEY_CTX_new_from_name(nullptr, "RSA", nullptr));
  return generator && EVP_PKEY_keygen_init(generator.get()) > 0 &&
         EVP_PKEY_CTX_set_rsa_keygen_bits(generator.get(), bits) > 0 &&
         EVP_PKEY_generate(generator.get(), &container) > 0;
}

bool add_subject(X509_REQ *request, std::span<const subject_entry> entries) noexcept {
  X509_NAME *name = X509_REQ_get_subject_name(request);
  bool good = name != nullptr;
  for (const subject_entry &entry : entries) good &= add_entry(name, entry);
  return good;
}

bool add_extensions(X509_REQ *request) noexcept {
  const extensions_ptr list(sk_X509_EXTENSION_new_null());
  return list && push_extension(list.get(), NID_key_usage, "critical,digitalSignature,keyEncipherment") &&
         push_extension(list.get(), NID_netscape_cert_type, "client,email") &&
         X509_REQ_add_extensions(request, list.get()) == 1;
}

}  // namespace tw
