#include <openssl/asn1.h>

#include <cstdlib>
#include <cstring>
#include <string>

#include "allocation/cases.hpp"
#include "allocation/ready_key.hpp"

namespace allocation {
namespace {

constexpr auto kRecord = &World::csr;

bool is_pem(const char *text, const char *label) {
  return text && std::strstr(text, (std::string("-----END ") + label + "-----\n").c_str());
}

int call_generate(World &w) { return cfg_csr_generate(w.csr); }

void without_key(World &w) { cfg_csr_delete_request(w.csr); }

// All of it; or no key, and a whole request at most.
void generate_with_a_new_key() {
  const ReadyKey ready;
  sweep(
      call_generate,
      [](World &w, int done) {
        const char *csr = cfg_csr_get_csr(w.csr), *key = cfg_csr_get_private_key(w.csr);
        if (csr || done) EXPECT_TRUE(is_pem(csr, "CERTIFICATE REQUEST"));
        if (done)
          EXPECT_TRUE(is_pem(key, "PRIVATE KEY"));
        else
          EXPECT_EQ(key, nullptr);
        return done == 1;
      },
      without_key);
}

void generate_with_a_supplied_key() {
  static const std::string supplied = [] {
    const World world;
    cfg_https_cert_details *details = cfg_get_https_cert_details(world.store);
    std::string key = details->private_key;
    cfg_free_https_cert_details(details);
    return key;
  }();
  sample_openssl(
      0, call_generate,
      [](World &w, int done) {
        EXPECT_EQ(cfg_csr_get_private_key(w.csr), supplied);
        const char *csr = cfg_csr_get_csr(w.csr);
        if (done)
          EXPECT_TRUE(is_pem(csr, "CERTIFICATE REQUEST"));
        else
          EXPECT_STREQ(csr, "csr");
        return done == 1;
      },
      [](World &w) { EXPECT_EQ(cfg_csr_set_private_key(w.csr, supplied.c_str()), 1); });
}

// A setter sets its text, or leaves what was there.
void setter(int (*set)(cfg_csr *, const char *), const char *(*get)(const cfg_csr *), const char *before) {
  sweep([=](World &w) { return set(w.csr, kNew); },
        [=](World &w, int done) {
          EXPECT_STREQ(get(w.csr), done ? kNew : before);
          return done == 1;
        });
}

void get_request() {
  sweep([](World &w) { return cfg_get_https_csr(w.store); },
        [](World &w, cfg_csr *csr) {
          const bool there = csr != nullptr;
          if (there) {
            for (const auto get :
                 {cfg_csr_get_common_name, cfg_csr_get_org_unit, cfg_csr_get_organization,
                  cfg_csr_get_locality, cfg_csr_get_state, cfg_csr_get_country, cfg_csr_get_email,
                  cfg_csr_get_challenge_password, cfg_csr_get_private_key, cfg_csr_get_csr})
              EXPECT_STREQ(get(csr), get(w.csr));
            EXPECT_EQ(cfg_csr_get_key_length(csr), 2048);
          }
          cfg_csr_free(csr);
          return there;
        });
}

void new_request() {
  sweep([](World &w) { return cfg_new_https_csr(w.store); },
        [](World &, cfg_csr *csr) {
          const bool there = csr != nullptr;
          cfg_csr_free(csr);
          return there;
        });
}

int call_save(World &w) { return cfg_save_https_csr(w.csr); }

// A save over what is there, which must not be taken for missing.
void save_again() {
  sweep(
      call_save,
      [](World &w, int saved) {
        EXPECT_TRUE(cfg_map_has(cfg_get_by_path(w.store, "services.https"), "certificate"));
        if (saved) EXPECT_FALSE(cfg_get_by_path(w.store, "services.https.csr.csr"));
        return saved == 1;
      },
      without_key);
}

// One that makes its maps.
void save_first() {
  sweep(
      call_save,
      [](World &w, int saved) {
        if (saved) EXPECT_TRUE(cfg_get_by_path(w.store, "services.https.csr.country"));
        return saved == 1;
      },
      [](World &w) { EXPECT_TRUE(cfg_map_delete_key(w.store, cfg_root(w.store), "services")); });
}

std::string blob(const World &w, const char *path) {
  void *data = nullptr;
  size_t length = 0;
  if (!cfg_blob_value(cfg_get_by_path(w.store, path), &data, &length)) return "none";
  std::string bytes(static_cast<char *>(data), length);
  std::free(data);
  return bytes;
}

void install() {
  sweep([](World &w) { return cfg_set_https_cert(w.store, kNew, "its key"); },
        [](World &w, int done) {
          if (done) {
            EXPECT_EQ(blob(w, "services.https.certificate"), kNew);
            EXPECT_EQ(blob(w, "services.https.private_key"), "its key");
            EXPECT_EQ(blob(w, "services.https.csr.csr"), "none");
            EXPECT_EQ(blob(w, "services.https.csr.private_key"), "none");
          }
          EXPECT_TRUE(cfg_get_by_path(w.store, "services.https.csr.country"));
          return done == 1;
        });
}

void get_details() {
  sample_openssl(
      3, [](World &w) { return cfg_get_https_cert_details(w.store); },
      [](World &w, cfg_https_cert_details *details) {
        const bool there = details != nullptr;
        if (there) {
          EXPECT_EQ(details->certificate, blob(w, "services.https.certificate"));
          EXPECT_EQ(details->private_key, blob(w, "services.https.private_key"));
          EXPECT_STREQ(details->common_name, "Test authority");
          EXPECT_EQ(details->key_length, 512);
          EXPECT_EQ(std::strlen(details->not_before), std::strlen("Jan  2 03:04:05 2026 GMT"));
          EXPECT_EQ(std::strlen(details->not_after), std::strlen("Jan  2 03:04:05 2026 GMT"));
        }
        cfg_free_https_cert_details(details);
        return there;
      });
}

void free_details() {
  cfg_https_cert_details *details = nullptr;
  sweep(
      [&](World &) {
        cfg_free_https_cert_details(details);
        return 1;
      },
      gives(1), [&](World &w) { details = cfg_get_https_cert_details(w.store); });
}

// "" is its failure.
void print_time() {
  static char text[CFG_HTTPS_TEXT_SIZE];
  static ASN1_TIME *const time = ASN1_TIME_set(nullptr, 1767323045);
  sweep(
      [](World &) -> const char * {
        time_to_string(time, text);
        return *text ? text : nullptr;
      },
      gives_text("Jan  2 03:04:05 2026 GMT"));
}

void release() {
  sweep(
      [](World &w) {
        cfg_csr_free(w.csr);
        w.csr = nullptr;
        return 1;
      },
      gives(1));
}

void delete_request() {
  sweep(
      [](World &w) {
        cfg_csr_delete_request(w.csr);
        return 1;
      },
      [](World &w, int) {
        EXPECT_EQ(cfg_csr_get_csr(w.csr), nullptr);
        EXPECT_EQ(cfg_csr_get_private_key(w.csr), nullptr);
        return true;
      });
}

const Case rows[] = {
    {"cfg_csr_delete_request", delete_request},
    {"cfg_csr_free", release},
    {"cfg_csr_generate",
     [] {
       generate_with_a_new_key();
       generate_with_a_supplied_key();
     }},
    {"cfg_csr_get_challenge_password",
     [] { text_getter(cfg_csr_get_challenge_password, kRecord, "challenge_password"); }},
    {"cfg_csr_get_common_name", [] { text_getter(cfg_csr_get_common_name, kRecord, "common_name"); }},
    {"cfg_csr_get_country", [] { text_getter(cfg_csr_get_country, kRecord, "NZ"); }},
    {"cfg_csr_get_csr", [] { text_getter(cfg_csr_get_csr, kRecord, "csr"); }},
    {"cfg_csr_get_email", [] { text_getter(cfg_csr_get_email, kRecord, "email"); }},
    {"cfg_csr_get_key_length", [] { number_getter(cfg_csr_get_key_length, kRecord, 2048); }},
    {"cfg_csr_get_locality", [] { text_getter(cfg_csr_get_locality, kRecord, "locality"); }},
    {"cfg_csr_get_org_unit", [] { text_getter(cfg_csr_get_org_unit, kRecord, "org_unit"); }},
    {"cfg_csr_get_organization", [] { text_getter(cfg_csr_get_organization, kRecord, "organization"); }},
    {"cfg_csr_get_private_key", [] { text_getter(cfg_csr_get_private_key, kRecord, "private_key"); }},
    {"cfg_csr_get_state", [] { text_getter(cfg_csr_get_state, kRecord, "state"); }},
    {"cfg_csr_set_challenge_password",
     [] { setter(cfg_csr_set_challenge_password, cfg_csr_get_challenge_password, "challenge_password"); }},
    {"cfg_csr_set_common_name",
     [] { setter(cfg_csr_set_common_name, cfg_csr_get_common_name, "common_name"); }},
    {"cfg_csr_set_country", [] { setter(cfg_csr_set_country, cfg_csr_get_country, "NZ"); }},
    {"cfg_csr_set_csr", [] { setter(cfg_csr_set_csr, cfg_csr_get_csr, "csr"); }},
    {"cfg_csr_set_email", [] { setter(cfg_csr_set_email, cfg_csr_get_email, "email"); }},
    {"cfg_csr_set_key_length",
     [] { number_setter(cfg_csr_set_key_length, cfg_csr_get_key_length, kRecord); }},
    {"cfg_csr_set_locality", [] { setter(cfg_csr_set_locality, cfg_csr_get_locality, "locality"); }},
    {"cfg_csr_set_org_unit", [] { setter(cfg_csr_set_org_unit, cfg_csr_get_org_unit, "org_unit"); }},
    {"cfg_csr_set_organization",
     [] { setter(cfg_csr_set_organization, cfg_csr_get_organization, "organization"); }},
    {"cfg_csr_set_private_key",
     [] { setter(cfg_csr_set_private_key, cfg_csr_get_private_key, "private_key"); }},
    {"cfg_csr_set_state", [] { setter(cfg_csr_set_state, cfg_csr_get_state, "state"); }},
    {"cfg_free_https_cert_details", free_details},
    {"cfg_get_https_cert_details", get_details},
    {"cfg_get_https_csr", get_request},
    {"cfg_new_https_csr", new_request},
    {"cfg_save_https_csr",
     [] {
       save_again();
       save_first();
     }},
    {"cfg_set_https_cert", install},
    {"time_to_string", print_time},
};

}  // namespace

const std::span<const Case> https_cases = rows;

}  // namespace allocation
