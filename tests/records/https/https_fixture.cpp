#include "https_fixture.hpp"

#include <openssl/pem.h>
#include <openssl/rsa.h>
#include <unistd.h>

#include <filesystem>
#include <map>

namespace records {
namespace {

struct free_bio {
  void operator()(BIO *bio) const { BIO_free(bio); }
};
using memory = std::unique_ptr<BIO, free_bio>;

}  // namespace

request_object request_from(const char *pem) {
  if (pem == nullptr) return nullptr;
  const memory bio(BIO_new_mem_buf(pem, -1));
  return request_object(PEM_read_bio_X509_REQ(bio.get(), nullptr, nullptr, nullptr));
}

std::string pem_of(EVP_PKEY *raw) {
  const key_object key(raw);
  const memory bio(BIO_new(BIO_s_mem()));
  EXPECT_EQ(1, PEM_write_bio_PrivateKey(bio.get(), key.get(), nullptr, nullptr, 0, nullptr, nullptr));
  char *data = nullptr;
  const long length = BIO_get_mem_data(bio.get(), &data);
  return std::string(data, static_cast<std::size_t>(length));
}

const std::string &rsa_key(unsigned bits) {
  static std::map<unsigned, std::string> made;
  std::string &pem = made[bits];
  if (pem.empty()) pem = pem_of(EVP_RSA_gen(bits));
  return pem;
}

std::vector<text_field> text_fields() {
  std::vector<text_field> all(std::begin(subject_fields), std::end(subject_fields));
  all.insert(all.end(), std::begin(other_fields), std::end(other_fields));
  return all;
}

csr_record HttpsTest::filled() {
  csr_record csr(cfg_new_https_csr(store));
  EXPECT_EQ(1, cfg_csr_set_common_name(csr.get(), "appliance.example"));
  EXPECT_EQ(1, cfg_csr_set_org_unit(csr.get(), "Operations"));
  EXPECT_EQ(1, cfg_csr_set_organization(csr.get(), "Example Ltd"));
  EXPECT_EQ(1, cfg_csr_set_locality(csr.get(), "Wellington"));
  EXPECT_EQ(1, cfg_csr_set_state(csr.get(), "Te Whanganui-a-Tara"));
  EXPECT_EQ(1, cfg_csr_set_country(csr.get(), "NZ"));
  EXPECT_EQ(1, cfg_csr_set_email(csr.get(), "ops@example.com"));
  EXPECT_EQ(1, cfg_csr_set_key_length(csr.get(), 1024));
  return csr;
}

std::vector<int32_t> HttpsTest::messages() {
  std::vector<int32_t> codes;
  for (int32_t i = 0; i < cfg_get_message_count(store); ++i)
    codes.push_back(cfg_message_get_code(cfg_get_message(store, i)));
  return codes;
}

std::string HttpsTest::file(const std::string &name, const std::string &content) {
  const std::filesystem::path path =
      std::filesystem::temp_directory_path() / ("https-" + std::to_string(getpid()) + "-" + name);
  std::ofstream(path) << content;
  files_.push_back(path.string());
  return path.string();
}

void HttpsTest::TearDown() {
  for (const std::string &path : files_) std::filesystem::remove(path);
  StoreTest::TearDown();
}

}  // namespace records
