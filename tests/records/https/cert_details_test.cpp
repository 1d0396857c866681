// What the installed certificate says.
#include <openssl/err.h>
#include <openssl/pem.h>
#include <openssl/rsa.h>

#include <cstring>

#include "https_fixture.hpp"
#include "wiping.hpp"

namespace {

using records::certificate_object;
using records::csr_record;
using records::details_record;
using records::key_object;
using records::rsa_key;

struct entry {
  int nid;
  std::string value;
};

const std::vector<entry> whole_subject = {{NID_countryName, "NZ"},
                                          {NID_stateOrProvinceName, "Te Whanganui-a-Tara"},
                                          {NID_localityName, "Wellington"},
                                          {NID_organizationName, "Example Ltd"},
                                          {NID_commonName, "web.example"},
                                          {NID_organizationalUnitName, "Operations"},
                                          {NID_pkcs9_emailAddress, "ops@example.com"}};

// A certificate as PEM, its subject taken as it is: no length of a text is refused.
std::string certificate(const std::vector<entry> &subject, const std::string &key_pem,
                        const char *not_before = "20260102030405Z",
                        const char *not_after = "20360430235959Z") {
  const key_object key = records::key_from(key_pem);
  const certificate_object made(X509_new());
  X509_set_version(made.get(), 2);
  ASN1_INTEGER_set(X509_get_serialNumber(made.get()), 1);
  for (const entry &each : subject)
    EXPECT_EQ(1, X509_NAME_add_entry_by_NID(X509_get_subject_name(made.get()), each.nid, V_ASN1_UTF8STRING,
                                            reinterpret_cast<const unsigned char *>(each.value.data()),
                                            static_cast<int>(each.value.size()), -1, 0));
  EXPECT_EQ(1, ASN1_TIME_set_string_X509(X509_getm_notBefore(made.get()), not_before));
  EXPECT_EQ(1, ASN1_TIME_set_string_X509(X509_getm_notAfter(made.get()), not_after));
  X509_set_pubkey(made.get(), key.get());
  EXPECT_LT(0, X509_sign(made.get(), key.get(), EVP_sha256()));
  BIO *bio = BIO_new(BIO_s_mem());
  EXPECT_EQ(1, PEM_write_bio_X509(bio, made.get()));
  char *data = nullptr;
  const long length = BIO_get_mem_data(bio, &data);
  std::string pem(data, static_cast<std::size_t>(length));
  BIO_free(bio);
  return pem;
}

class CertDetails : public records::HttpsTest {
 protected:
  void install(const std::string &certificate_pem, const std::string &key_pem = rsa_key(1024)) {
    ASSERT_EQ(1, cfg_set_https_cert(store, certificate_pem.c_str(), key_pem.c_str()));
  }
};

TEST_F(CertDetails, AreReadBackWhole) {
  const std::string pem = certificate(whole_subject, rsa_key(1024));
  install(pem);
  commit_and_reopen();
  const details_record read = details();
  ASSERT_NE(nullptr, read);
  EXPECT_STREQ(pem.c_str(), read->certificate);
  EXPECT_STREQ(rsa_key(1024).c_str(), read->private_key);
  EXPECT_STREQ("web.example", read->common_name);
  EXPECT_STREQ("Operations", read->org_unit);
  EXPECT_STREQ("Example Ltd", read->organization);
  EXPECT_STREQ("Wellington", read->locality);
  EXPECT_STREQ("Te Whanganui-a-Tara", read->state);
  EXPECT_STREQ("NZ", read->country);
  EXPECT_STREQ("ops@example.com", read->email);
  EXPECT_EQ(1024, read->key_length);
  EXPECT_STREQ("Jan  2 03:04:05 2026 GMT", read->not_before);
  EXPECT_STREQ("Apr 30 23:59:59 2036 GMT", read->not_after);
}

TEST_F(CertDetails, FieldsStandInTheirPromisedOrderAndSize) {
  using details = cfg_https_cert_details;
  const std::size_t texts = 2 * sizeof(char *);
  EXPECT_EQ(0U, offsetof(details, certificate));
  EXPECT_EQ(sizeof(char *), offsetof(details, private_key));
  EXPECT_EQ(texts, offsetof(details, common_name));
  EXPECT_EQ(texts + 1 * 128, offsetof(details, org_unit));
  EXPECT_EQ(texts + 2 * 128, offsetof(details, organization));
  EXPECT_EQ(texts + 3 * 128, offsetof(details, locality));
  EXPECT_EQ(texts + 4 * 128, offsetof(details, state));
  EXPECT_EQ(texts + 5 * 128, offsetof(details, country));
  EXPECT_EQ(texts + 6 * 128, offsetof(details, email));
  EXPECT_EQ(texts + 7 * 128, offsetof(details, key_length));
  EXPECT_EQ(texts + 7 * 128 + 4, offsetof(details, not_before));
  EXPECT_EQ(texts + 8 * 128 + 4, offsetof(details, not_after));
}

TEST_F(CertDetails, AnAttributeThatTheSubjectLacksReadsEmpty) {
  using text = char(cfg_https_cert_details::*)[128];
  const std::pair<int, text> attributes[] = {
      {NID_commonName, &cfg_https_cert_details::common_name},
      {NID_organizationalUnitName, &cfg_https_cert_details::org_unit},
      {NID_organizationName, &cfg_https_cert_details::organization},
      {NID_localityName, &cfg_https_cert_details::locality},
      {NID_stateOrProvinceName, &cfg_https_cert_details::state},
      {NID_countryName, &cfg_https_cert_details::country},
      {NID_pkcs9_emailAddress, &cfg_https_cert_details::email},
  };
  for (const auto &[lacking, field] : attributes) {
    std::vector<entry> subject;
    for (const entry &each : whole_subject)
      if (each.nid != lacking) subject.push_back(each);
    install(certificate(subject, rsa_key(1024)));
    const details_record read = details();
    ASSERT_NE(nullptr, read);
    for (const auto &[nid, other] : attributes)
      EXPECT_EQ(nid == lacking, std::strlen(read.get()->*other) == 0) << OBJ_nid2sn(nid);
  }
}

TEST_F(CertDetails, ATextFillsItsBufferAndIsCutThere) {
  for (const std::size_t length : {std::size_t{127}, std::size_t{128}, std::size_t{1000}}) {
    std::vector<entry> subject;
    for (const entry &each : whole_subject)
      subject.push_back({each.nid, std::string(length - 1, 'x') + std::to_string(subject.size())});
    install(certificate(subject, rsa_key(1024)));
    const details_record read = details();
    ASSERT_NE(nullptr, read);
    for (const char *text : {read->common_name, read->org_unit, read->organization, read->locality,
                             read->state, read->country, read->email}) {
      EXPECT_EQ(127U, std::strlen(text));
      EXPECT_EQ(length == 127, text[126] != 'x');
    }
    EXPECT_EQ(1024, read->key_length);
  }
}

TEST_F(CertDetails, OfSeveralAttributesOfOneKindTheFirstIsRead) {
  install(certificate({{NID_organizationalUnitName, "first"}, {NID_organizationalUnitName, "second"}},
                      rsa_key(1024)));
  EXPECT_STREQ("first", details()->org_unit);
}

TEST_F(CertDetails, TheKeyLengthIsThatOfTheModulusInWholeBytes) {
  const std::string pem = certificate(whole_subject, rsa_key(1024));
  for (const auto &[bits, told] : {std::pair{512U, 512}, {1023U, 1024}, {2048U, 2048}}) {
    install(pem, rsa_key(bits));
    EXPECT_EQ(told, details()->key_length);
  }
}

TEST_F(CertDetails, TimesAgreeWithWhatTheOpensslProgramPrints) {
  const std::string pem = certificate(whole_subject, rsa_key(1024), "19991231235959Z", "20510711120000Z");
  install(pem);
  const details_record read = details();
  EXPECT_EQ("notBefore=" + std::string(read->not_before) + "\nnotAfter=" + read->not_after + "\nexit 0",
            records::run_openssl({"x509", "-noout", "-dates", "-in", file("certificate", pem)}));
  EXPECT_STREQ("Dec 31 23:59:59 1999 GMT", read->not_before);
}

TEST_F(CertDetails, AreNoneWhenATextIsMissingOrOfAnotherKind) {
  EXPECT_EQ(nullptr, details());
  const std::string pem = certificate(whole_subject, rsa_key(1024));
  for (const char *key : {"certificate", "private_key"}) {
    install(pem);
    ASSERT_NE(nullptr, details());
    erase(map_at("services.https"), key);
    EXPECT_EQ(nullptr, details()) << key;
    set(map_at("services.https"), key, pem.c_str());
    EXPECT_EQ(nullptr, details()) << key;
  }
}

TEST_F(CertDetails, AreNoneWhenATextCannotBeParsed) {
  const std::string pem = certificate(whole_subject, rsa_key(1024));
  for (const std::string &broken :
       {std::string("no PEM"), std::string(), pem.substr(0, pem.size() / 2),
        std::string("-----BEGIN CERTIFICATE-----\nAAAA\n-----END CERTIFICATE-----\n")}) {
    install(broken);
    EXPECT_EQ(nullptr, details());
    install(pem, broken);
    EXPECT_EQ(nullptr, details());
  }
  install(rsa_key(1024), pem);  // one in the place of the other
  EXPECT_EQ(nullptr, details());
  EXPECT_EQ(0UL, ERR_peek_error());
}

TEST_F(CertDetails, AreNoneWhenTheKeyNeedsAPassPhrase) {
  install(certificate(whole_subject, rsa_key(1024)), records::encrypted(rsa_key(1024)));
  EXPECT_EQ(nullptr, details());
}

TEST_F(CertDetails, AreNoneWhenTheKeyIsNoRsaKey) {
  const std::string elliptic = records::pem_of(EVP_EC_gen("P-256"));
  install(certificate(whole_subject, elliptic), elliptic);
  EXPECT_EQ(nullptr, details());
}

TEST_F(CertDetails, AreNoneWhenTheCertificateHasNoSubject) {
  install(certificate({}, rsa_key(1024)));
  EXPECT_EQ(nullptr, details());
}

TEST_F(CertDetails, WhetherKeyAndCertificateBelongTogetherIsNotLookedAt) {
  install(certificate(whole_subject, rsa_key(1024)), rsa_key(2048));
  const details_record read = details();
  ASSERT_NE(nullptr, read);
  EXPECT_EQ(2048, read->key_length);
}

TEST_F(CertDetails, ReadingThemChangesNothingAndAddsNoMessage) {
  install("no PEM");
  commit();
  EXPECT_EQ(nullptr, details());
  EXPECT_EQ(std::vector<std::string>{}, changes());
  EXPECT_EQ(std::vector<int32_t>{}, messages());
}

TEST_F(CertDetails, TheKeyIsWipedWhenTheyAreFreed) {
  install(certificate(whole_subject, rsa_key(1024)));
  details_record read = details();
  const records::WipingWatch watch(rsa_key(1024));
  read.reset();
  EXPECT_EQ(1, watch.count());
}

TEST_F(CertDetails, NullIsHarmless) {
  EXPECT_EQ(nullptr, cfg_get_https_cert_details(nullptr));
  cfg_free_https_cert_details(nullptr);
}

using asn1_time = std::unique_ptr<ASN1_TIME, decltype(&ASN1_TIME_free)>;

std::string printed(const ASN1_TIME *time) {
  char out[128];
  std::memset(out, 'x', sizeof out);
  time_to_string(time, out);
  return std::string(out, strnlen(out, sizeof out));
}

TEST(TimeToString, PrintsMonthPaddedDayTimeYearAndZone) {
  const asn1_time time(ASN1_TIME_set(nullptr, 1767323045), ASN1_TIME_free);
  EXPECT_EQ("Jan  2 03:04:05 2026 GMT", printed(time.get()));
}

TEST(TimeToString, OfNullOrATimeThatCannotBePrintedIsEmpty) {
  EXPECT_EQ("", printed(nullptr));
  const asn1_time time(ASN1_TIME_new(), ASN1_TIME_free);
  EXPECT_EQ("", printed(time.get()));
  time_to_string(time.get(), nullptr);
}

TEST(TimeToString, FillsItsBufferAndIsCutThere) {
  const asn1_time time(ASN1_STRING_type_new(V_ASN1_GENERALIZEDTIME), ASN1_TIME_free);
  const std::string text = "20260102030405." + std::string(200, '1') + "Z";
  EXPECT_EQ(1, ASN1_STRING_set(time.get(), text.data(), static_cast<int>(text.size())));
  EXPECT_EQ("Jan  2 03:04:05." + std::string(111, '1'), printed(time.get()));
}

// The whole way: a request with a new key, the answer of an authority, and what is then shown.
TEST_F(CertDetails, AreThoseOfTheRequestThatWasAnswered) {
  const csr_record csr = filled();
  ASSERT_EQ(1, cfg_csr_generate(csr.get()));
  ASSERT_EQ(1, cfg_save_https_csr(csr.get()));
  commit_and_reopen();
  const csr_record waiting = load();
  const std::string answer = file("answer", "");
  EXPECT_EQ(0U, records::run_openssl({"x509", "-req", "-in", file("csr", cfg_csr_get_csr(waiting.get())),
                                      "-CA", file("ca", records::rsa_authority().certificate), "-CAkey",
                                      file("ca-key", records::rsa_authority().key), "-set_serial", "7",
                                      "-days", "10", "-out", answer})
                    .find("Certificate request self-signature ok"));
  std::ifstream in(answer);
  const std::string issued((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
  install(issued, cfg_csr_get_private_key(waiting.get()));
  commit_and_reopen();
  const details_record read = details();
  ASSERT_NE(nullptr, read);
  EXPECT_STREQ("appliance.example", read->common_name);
  EXPECT_STREQ("Operations", read->org_unit);
  EXPECT_STREQ("Example Ltd", read->organization);
  EXPECT_STREQ("Wellington", read->locality);
  EXPECT_STREQ("Te Whanganui-a-Tara", read->state);
  EXPECT_STREQ("NZ", read->country);
  EXPECT_STREQ("ops@example.com", read->email);
  EXPECT_EQ(1024, read->key_length);
  EXPECT_EQ(1, X509_check_private_key(records::certificate_from(read->certificate).get(),
                                      records::key_from(read->private_key).get()));
  EXPECT_EQ(nullptr, cfg_csr_get_csr(load().get()));
}

}  // namespace
