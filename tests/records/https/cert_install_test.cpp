// Installing a certificate.
#include "https_fixture.hpp"

namespace {

using records::csr_record;
using records::unwritable;

class CertInstall : public records::HttpsTest {};

TEST_F(CertInstall, WritesBothTextsAsBlobsWithoutNul) {
  for (const char *path : {"", "services", "services.https"}) {
    map_at(path);
    commit();
    EXPECT_EQ(1, cfg_set_https_cert(store, "the certificate\n", "the key\n"));
    EXPECT_EQ("{services={https={certificate=<the certificate\n> private_key=<the key\n>}}}", dump(""))
        << path;
    cfg_abandon(store);
  }
}

TEST_F(CertInstall, ReplacesWhatIsInstalled) {
  EXPECT_EQ(1, cfg_set_https_cert(store, "first", "first key"));
  commit_and_reopen();
  EXPECT_EQ(1, cfg_set_https_cert(store, "second", "second key"));
  commit_and_reopen();
  EXPECT_EQ("{certificate=<second> private_key=<second key>}", dump("services.https"));
}

TEST_F(CertInstall, EndsTheRequestInProgressAndKeepsItsOtherFields) {
  const csr_record csr = filled();
  EXPECT_EQ(1, cfg_csr_set_challenge_password(csr.get(), "challenge"));
  EXPECT_EQ(1, cfg_csr_set_private_key(csr.get(), "the request's key"));
  EXPECT_EQ(1, cfg_csr_set_csr(csr.get(), "the request"));
  EXPECT_EQ(1, cfg_save_https_csr(csr.get()));
  commit_and_reopen();
  EXPECT_EQ(1, cfg_set_https_cert(store, "the certificate", "the key"));
  EXPECT_EQ(
      "{challenge_password=\"challenge\" common_name=\"appliance.example\" country=\"NZ\" "
      "email=\"ops@example.com\" key_length=1024 locality=\"Wellington\" org_unit=\"Operations\" "
      "organization=\"Example Ltd\" state=\"Te Whanganui-a-Tara\"}",
      dump("services.https.csr"));
  EXPECT_EQ("the certificate", blob_at("services.https.certificate"));
  EXPECT_EQ("the key", blob_at("services.https.private_key"));
}

TEST_F(CertInstall, WithoutRequestInProgressMakesNone) {
  EXPECT_EQ(1, cfg_set_https_cert(store, "the certificate", "the key"));
  EXPECT_EQ("none", dump("services.https.csr"));
}

TEST_F(CertInstall, LooksIntoNeitherText) {
  EXPECT_EQ(1, cfg_set_https_cert(store, "no certificate", ""));
  EXPECT_EQ("{certificate=<no certificate> private_key=<>}", dump("services.https"));
}

TEST_F(CertInstall, AnswersOneForWritesThatFail) {
  EXPECT_EQ(1, cfg_set_https_cert(store, unwritable().c_str(), "the key"));
  EXPECT_EQ("{private_key=<the key>}", dump("services.https"));
  cfg_abandon(store);
  EXPECT_EQ(1, cfg_set_https_cert(store, "the certificate", unwritable().c_str()));
  EXPECT_EQ("{certificate=<the certificate>}", dump("services.https"));
  cfg_abandon(store);
  set(map_at("services"), "https", "a text");
  EXPECT_EQ(1, cfg_set_https_cert(store, "the certificate", "the key"));
  EXPECT_EQ("\"a text\"", dump("services.https"));
}

TEST_F(CertInstall, OfNullDoesNothing) {
  set_blob(map_at("services.https.csr"), "csr", "the request");
  commit();
  EXPECT_EQ(0, cfg_set_https_cert(store, nullptr, "the key"));
  EXPECT_EQ(0, cfg_set_https_cert(store, "the certificate", nullptr));
  EXPECT_EQ(0, cfg_set_https_cert(store, nullptr, nullptr));
  EXPECT_EQ(0, cfg_set_https_cert(nullptr, "the certificate", "the key"));
  EXPECT_EQ(std::vector<std::string>{}, changes());
}

}  // namespace
