// A certificate request with a new key, against the generation of that key alone.
#define OPENSSL_SUPPRESS_DEPRECATED  // the only way to put random numbers of one's own into OpenSSL 3.0
#include <openssl/evp.h>
#include <openssl/pem.h>
#include <openssl/rand.h>
#include <openssl/rsa.h>
#include <twobject/https.h>

#include <memory>
#include <random>
#include <stdexcept>

#include "figures/figures.hpp"

namespace bench {
namespace {

constexpr int kBits = 2048;

// Two generations of a key differ by a factor of ten, by how soon a prime number is found. So that not chance
// is compared, both competitors are given the same random numbers in each round, and make the same key.
class Dice {
 public:
  Dice() {
    static const RAND_METHOD method = {nullptr, bytes, nullptr, nullptr, bytes, status};
    if (!RAND_set_rand_method(&method)) throw std::runtime_error("OpenSSL keeps its own random numbers");
  }
  ~Dice() { RAND_set_rand_method(nullptr); }
  Dice(const Dice &) = delete;
  Dice &operator=(const Dice &) = delete;

  static void begin(std::size_t round) { numbers.seed(round); }

 private:
  static int bytes(unsigned char *out, int count) {
    for (int i = 0; i < count; ++i) out[i] = static_cast<unsigned char>(numbers());
    return 1;
  }
  static int status() { return 1; }

  static inline std::mt19937 numbers;
};

using owned_key = std::unique_ptr<EVP_PKEY, decltype(&EVP_PKEY_free)>;
using owned_csr = std::unique_ptr<cfg_csr, decltype(&cfg_csr_free)>;

owned_key make_key() { return {EVP_RSA_gen(kBits), EVP_PKEY_free}; }

owned_csr make_request() {
  owned_csr csr(cfg_new_https_csr(nullptr), cfg_csr_free);
  for (const auto set : {cfg_csr_set_common_name, cfg_csr_set_org_unit, cfg_csr_set_organization,
                         cfg_csr_set_locality, cfg_csr_set_state, cfg_csr_set_email})
    set(csr.get(), "appliance.example");
  cfg_csr_set_country(csr.get(), "NZ");
  cfg_csr_set_key_length(csr.get(), kBits);
  if (!cfg_csr_generate(csr.get())) throw std::runtime_error("the request cannot be generated");
  return csr;
}

// That the same numbers make the same key: otherwise the rounds compare nothing.
void check() {
  Dice::begin(0);
  const owned_key key = make_key();
  Dice::begin(0);
  const owned_csr csr = make_request();
  BIO *pem = BIO_new_mem_buf(cfg_csr_get_private_key(csr.get()), -1);
  const owned_key made(PEM_read_bio_PrivateKey(pem, nullptr, nullptr, nullptr), EVP_PKEY_free);
  BIO_free(pem);
  if (EVP_PKEY_eq(key.get(), made.get()) != 1)
    throw std::runtime_error("the request's key is not the one that was made alone");
}

}  // namespace

void measure_requests(const Settings &settings, Table &table) {
  const Dice dice;
  check();
  Contest contest;
  contest.enter(
      "ours", [](std::size_t) { make_request(); }, Dice::begin);
  contest.enter(
      "its 2048-bit key alone", [](std::size_t) { make_key(); }, Dice::begin);
  contest.run(settings.rounds(60), 1);
  table.compare("certificate request with a new key", contest, "ours", "its 2048-bit key alone",
                at_most(1.05), Contest::processor);
}

}  // namespace bench
