#include "authority.hpp"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <openssl/bn.h>
#include <openssl/pem.h>
#include <openssl/rsa.h>
#include <openssl/x509v3.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>

namespace records {
namespace {

struct free_bio {
  void operator()(BIO *bio) const { BIO_free_all(bio); }
};
using memory = std::unique_ptr<BIO, free_bio>;

std::string text_of(BIO *bio) {
  char *data = nullptr;
  const long length = BIO_get_mem_data(bio, &data);
  return std::string(data, static_cast<std::size_t>(length));
}

memory reading(const std::string &pem) {
  return memory(BIO_new_mem_buf(pem.data(), static_cast<int>(pem.size())));
}

authority self_signed(EVP_PKEY *raw) {
  const key_object key(raw);
  const certificate_object certificate(X509_new());
  X509 *x509 = certificate.get();
  EXPECT_EQ(1, X509_set_version(x509, 2));
  EXPECT_EQ(1, ASN1_INTEGER_set(X509_get_serialNumber(x509), 1));
  X509_gmtime_adj(X509_getm_notBefore(x509), -2 * 86400);
  X509_gmtime_adj(X509_getm_notAfter(x509), 20L * 365 * 86400);
  X509_NAME *name = X509_get_subject_name(x509);
  for (const auto &[field, value] :
       {std::pair{"C", "NZ"}, {"O", "Testers"}, {"OU", "Lab"}, {"CN", "Test CA"}})
    EXPECT_EQ(1, X509_NAME_add_entry_by_txt(name, field, MBSTRING_ASC,
                                            reinterpret_cast<const unsigned char *>(value), -1, -1, 0));
  EXPECT_EQ(1, X509_set_issuer_name(x509, name));
  EXPECT_EQ(1, X509_set_pubkey(x509, key.get()));
  X509_EXTENSION *constraints =
      X509V3_EXT_conf_nid(nullptr, nullptr, NID_basic_constraints, "critical,CA:TRUE");
  EXPECT_EQ(1, X509_add_ext(x509, constraints, -1));
  X509_EXTENSION_free(constraints);
  EXPECT_LT(0, X509_sign(x509, key.get(), EVP_sha256()));

  const memory key_pem(BIO_new(BIO_s_mem())), certificate_pem(BIO_new(BIO_s_mem()));
  EXPECT_EQ(1, PEM_write_bio_PrivateKey(key_pem.get(), key.get(), nullptr, nullptr, 0, nullptr, nullptr));
  EXPECT_EQ(1, PEM_write_bio_X509(certificate_pem.get(), x509));
  return {text_of(key_pem.get()), text_of(certificate_pem.get())};
}

}  // namespace

const authority &rsa_authority() {
  static const authority made = self_signed(EVP_RSA_gen(2048));
  return made;
}

const authority &elliptic_authority() {
  static const authority made = self_signed(EVP_EC_gen("P-256"));
  return made;
}

key_object key_from(const std::string &pem) {
  const memory bio = reading(pem);
  return key_object(PEM_read_bio_PrivateKey(bio.get(), nullptr, nullptr, nullptr));
}

certificate_object certificate_from(const std::string &pem) {
  const memory bio = reading(pem);
  return certificate_object(PEM_read_bio_X509(bio.get(), nullptr, nullptr, nullptr));
}

std::string encrypted(const std::string &key_pem) {
  const key_object key = key_from(key_pem);
  const memory bio(BIO_new(BIO_s_mem()));
  unsigned char phrase[] = "secret phrase";
  EXPECT_EQ(1, PEM_write_bio_PKCS8PrivateKey(bio.get(), key.get(), EVP_aes_128_cbc(),
                                             reinterpret_cast<char *>(phrase), sizeof phrase - 1, nullptr,
                                             nullptr));
  return text_of(bio.get());
}

std::string hexadecimal(const ASN1_INTEGER *number) {
  BIGNUM *big = ASN1_INTEGER_to_BN(number, nullptr);
  char *digits = BN_bn2hex(big);
  std::string text = digits;
  OPENSSL_free(digits);
  BN_free(big);
  const std::size_t first = text.find_first_not_of('0');
  return first == std::string::npos ? "0" : text.substr(first);
}

std::string run_openssl(const std::vector<std::string> &arguments) {
  std::vector<std::string> words(1, OPENSSL_PROGRAM);
  words.insert(words.end(), arguments.begin(), arguments.end());
  std::vector<char *> argv;
  for (std::string &word : words) argv.push_back(word.data());
  argv.push_back(nullptr);

  int ends[2];
  if (pipe(ends) != 0) return "no pipe";
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
  posix_spawn_file_actions_adddup2(&actions, ends[1], STDOUT_FILENO);
  posix_spawn_file_actions_adddup2(&actions, ends[1], STDERR_FILENO);
  posix_spawn_file_actions_addclose(&actions, ends[0]);
  posix_spawn_file_actions_addclose(&actions, ends[1]);
  pid_t child = 0;
  const int spawned = posix_spawn(&child, OPENSSL_PROGRAM, &actions, nullptr, argv.data(), environ);
  posix_spawn_file_actions_destroy(&actions);
  close(ends[1]);
  std::string output;
  char chunk[4096];
  for (ssize_t length; (length = read(ends[0], chunk, sizeof chunk)) > 0;)
    output.append(chunk, static_cast<std::size_t>(length));
  close(ends[0]);
  int status = 0;
  if (spawned != 0 || waitpid(child, &status, 0) != child || !WIFEXITED(status)) return output + "not run";
  return output + "exit " + std::to_string(WEXITSTATUS(status));
}

}  // namespace records
