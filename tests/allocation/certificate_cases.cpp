#include <cstdlib>
#include <cstring>
#include <string>

#include "allocation/cases.hpp"
#include "allocation/ready_key.hpp"

namespace allocation {
namespace {

std::string serial(const World &w) {
  void *data = nullptr;
  size_t length = 0;
  if (!cfg_blob_value(cfg_get_by_path(w.store, "services.ca.serial"), &data, &length)) return "";
  std::string text(static_cast<char *>(data), length);
  std::free(data);
  return text;
}

bool is_issued(const cfg_certificate *certificate) {
  const char *key = cfg_certificate_get_private_key(certificate),
             *cert = cfg_certificate_get_cert(certificate);
  return key && cert && std::strstr(key, "PRIVATE KEY-----\n") &&
         std::strstr(cert, "-----END CERTIFICATE-----\n");
}

cfg_certificate *call_new(World &w) { return cfg_certificate_new(w.store, "a new node"); }

// A new record is there with all that belongs to it and with the next serial stored, or not there at all.
bool is_new(World &w, cfg_certificate *made) {
  const bool there = made != nullptr;
  if (there) EXPECT_TRUE(is_issued(made));
  if (there) EXPECT_STREQ(cfg_certificate_get_common_name(made), "a new node");
  EXPECT_EQ(serial(w), there ? "1B\n" : "1A\n");
  free_whole(made);
  return there;
}

int call_generate(World &w) { return cfg_certificate_generate(w.certificate); }

bool is_issued_anew(World &w, int done) {
  if (done) EXPECT_TRUE(is_issued(w.certificate));
  EXPECT_EQ(serial(w), done ? "1B\n" : "1A\n");
  return done == 1;
}

// The generation of the key itself. It tries numbers until two are prime, each with many allocations: nobody
// knows beforehand how many there will be, so the steps grow.
void make_with_a_key_of_its_own() {
  const Refusals growing{Behind::granted, Whose::everybodys, [](long n) { return n + n / 3 + 1; },
                         100'000'000};
  EXPECT_GT(sweep(growing, call_new, is_new), 10);
}

void get_by_id() {
  sweep([](World &w) { return cfg_get_certificate_by_id(w.store, kCertificate); },
        [](World &, cfg_certificate *found) {
          const bool there = found != nullptr;
          if (there) {
            EXPECT_STREQ(cfg_certificate_get_id(found), kCertificate);
            EXPECT_STREQ(cfg_certificate_get_common_name(found), "node one's common name");
            EXPECT_STREQ(cfg_certificate_get_cert(found), "node one's certificate");
            EXPECT_STREQ(cfg_certificate_get_private_key(found), "node one's private key");
          }
          free_whole(found);
          return there;
        });
}

int32_t revoked_at(const World &w) {
  int32_t time = 0;
  return cfg_map_get_int(w.store, cfg_get_by_id(w.store, kCertificate), "revoke_time", &time) ? time : 0;
}

// Callers who revoke a certificate may rely on a 1.
void save_revocation() {
  sweep([](World &w) { return cfg_certificate_save(w.certificate); },
        [](World &w, int saved) {
          EXPECT_EQ(revoked_at(w) != 0, saved == 1);
          return saved == 1;
        },
        [](World &w) { EXPECT_EQ(cfg_certificate_expire_now(w.certificate), 1); });
}

// A certificate record without element.
void save_new() {
  const ReadyKey key;
  sweep([](World &w) { return cfg_certificate_save(w.certificate); },
        [](World &w, int saved) {
          int32_t pending = 0;
          EXPECT_TRUE(cfg_list_future_size(cfg_get_by_path(w.store, "certificates"), &pending));
          if (saved) {
            EXPECT_EQ(pending, 1);
            cfg_elem *made = cfg_get_by_id(w.store, cfg_certificate_get_id(w.certificate));
            for (const char *name : {"certificate", "private_key", "common_name"})
              EXPECT_TRUE(cfg_map_has(made, name)) << name;
          }
          return saved == 1;
        },
        [](World &w) {
          free_whole(w.certificate);
          w.certificate = cfg_certificate_new(w.store, "a new node");
          ASSERT_NE(w.certificate, nullptr);
        });
}

void revoke() {
  sweep([](World &w) { return cfg_certificate_expire_now(w.certificate); }, gives(1));
}

void release() {
  sweep(
      [](World &w) {
        cfg_certificate_free(w.certificate);
        return 1;
      },
      [](World &w, int) {
        EXPECT_EQ(cfg_certificate_get_id(w.certificate), nullptr);
        return true;
      });
}

constexpr auto kRecord = &World::certificate;

const Case rows[] = {
    {"cfg_certificate_expire_now", revoke},
    {"cfg_certificate_free", release},
    {"cfg_certificate_generate", [] { sample_openssl(5, call_generate, is_issued_anew); }},
    {"cfg_certificate_get_cert",
     [] { text_getter(cfg_certificate_get_cert, kRecord, "node one's certificate"); }},
    {"cfg_certificate_get_common_name",
     [] { text_getter(cfg_certificate_get_common_name, kRecord, "node one's common name"); }},
    {"cfg_certificate_get_id", [] { text_getter(cfg_certificate_get_id, kRecord, kCertificate); }},
    {"cfg_certificate_get_private_key",
     [] { text_getter(cfg_certificate_get_private_key, kRecord, "node one's private key"); }},
    {"cfg_certificate_new",
     [] {
       sample_openssl(5, call_new, is_new);
       make_with_a_key_of_its_own();
     }},
    {"cfg_certificate_save",
     [] {
       save_revocation();
       save_new();
     }},
    {"cfg_get_certificate_by_id", get_by_id},
};

}  // namespace

const std::span<const Case> certificate_cases = rows;

}  // namespace allocation
