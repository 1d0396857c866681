// What is logged, and what is left, when no certificate can be issued.
#include <regex>

#include "certificate_fixture.hpp"

namespace {

using records::certificate_record;
using records::elliptic_authority;
using records::rsa_authority;

class CertificateFailure : public records::CertificateTest {
 protected:
  void SetUp() override {
    CertificateTest::SetUp();
    add_authority(rsa_authority(), "1A\n");
  }
  cfg_elem *ca() { return map_at("services.ca"); }
  // Nothing is issued, the serial stays, and these lines follow those of the steps that went well.
  void expect_failure(const std::vector<std::string> &expected, const char *common_name = "node",
                      std::size_t steps_before = 4) {
    const std::string before = dump("");
    EXPECT_EQ(nullptr, issue(common_name));
    EXPECT_EQ(before, dump(""));
    EXPECT_EQ(0, cfg_get_message_count(store));
    std::vector<std::string> lines = log_lines();
    ASSERT_EQ(steps_before + expected.size(), lines.size()) << testing::PrintToString(lines);
    for (std::size_t i = 0; i < steps_before; ++i) EXPECT_EQ(records::lines_of_a_success[i], lines[i]);
    for (std::size_t i = 0; i < expected.size(); ++i)
      EXPECT_TRUE(std::regex_match(lines[steps_before + i], std::regex(expected[i])))
          << lines[steps_before + i] << "\nis not of the form\n"
          << expected[i];
  }
};

// The text of OpenSSL's latest error.
const char *const any_error = "error:(?!0+:)[0-9A-F]+:.*";

TEST_F(CertificateFailure, ANameOf65CharactersFailsTheSubject) {
  expect_failure(
      {std::string("3 build_csr: Failed to build X509 subject name: ") + any_error + "string too long",
       "3 build_csr: Failed to build CSR"},
      std::string(65, 'n').c_str(), 3);
}

TEST_F(CertificateFailure, AVeryLongNameFailsTheSubject) {
  expect_failure({std::string("3 build_csr: Failed to build X509 subject name: ") + any_error,
                  "3 build_csr: Failed to build CSR"},
                 std::string(100000, 'n').c_str(), 3);
}

TEST_F(CertificateFailure, AnEmptyNameFailsTheSubject) {
  expect_failure({std::string("3 build_csr: Failed to build X509 subject name: ") + any_error,
                  "3 build_csr: Failed to build CSR"},
                 "", 3);
}

TEST_F(CertificateFailure, ANullNameFailsTheRequestAtOnce) {
  expect_failure({"3 build_csr: Failed to build CSR"}, nullptr, 3);
}

TEST_F(CertificateFailure, AMissingElementOfTheAuthorityIsToldBeforeAnySigning) {
  for (const char *key : {"key", "certificate", "serial"}) {
    SCOPED_TRACE(key);
    erase(ca(), key);
    expect_failure({"3 cfg_certificate_generate: Could not get CA blob elements: .*"});
    cfg_abandon(store);
  }
}

TEST_F(CertificateFailure, WithoutAuthorityNothingIsIssued) {
  erase(cfg_root(store), "services");
  expect_failure({"3 cfg_certificate_generate: Could not get CA blob elements: .*"});
}

TEST_F(CertificateFailure, TheMissingElementsLineTellsTheStoresFirstMessage) {
  erase(ca(), "serial");
  ASSERT_TRUE(cfg_message_add_unexpected(store, "src/users", 12));
  const std::string message = cfg_get_first_message_string(store);
  EXPECT_EQ(nullptr, issue());
  EXPECT_EQ("3 cfg_certificate_generate: Could not get CA blob elements: " + message, log_lines().back());
}

TEST_F(CertificateFailure, EmptyBlobsOfTheAuthorityAreNotLoaded) {
  for (const auto &[key, what] :
       {std::pair{"key", "CA key"}, {"certificate", "CA certificate"}, {"serial", "CA serial"}}) {
    SCOPED_TRACE(key);
    set_blob(ca(), key, "");
    expect_failure({std::string("3 cfg_certificate_generate: Failed to load ") + what + " into BIO"});
    cfg_abandon(store);
  }
}

TEST_F(CertificateFailure, ElementsOfAnotherKindAreNotLoaded) {
  for (const auto &[key, what] :
       {std::pair{"key", "CA key"}, {"certificate", "CA certificate"}, {"serial", "CA serial"}}) {
    SCOPED_TRACE(key);
    set(ca(), key, "1A");
    expect_failure({std::string("3 cfg_certificate_generate: Failed to load ") + what + " into BIO"});
    cfg_abandon(store);
  }
}

TEST_F(CertificateFailure, TheKeyIsLoadedBeforeTheCertificateAndThatBeforeTheSerial) {
  set_blob(ca(), "key", "");
  set_blob(ca(), "certificate", "");
  set_blob(ca(), "serial", "");
  expect_failure({"3 cfg_certificate_generate: Failed to load CA key into BIO"});
  set_blob(ca(), "key", rsa_authority().key);
  expect_failure({"3 cfg_certificate_generate: Failed to load CA certificate into BIO"});
}

TEST_F(CertificateFailure, AKeyThatIsNoKeyIsShownAsNullPointer) {
  for (const std::string &key : {std::string("garbage"), rsa_authority().certificate,
                                 rsa_authority().key.substr(0, 200), std::string(100000, '-')}) {
    set_blob(ca(), "key", key);
    expect_failure({std::string("3 sign_csr: Failed to read BIOs for signing input "
                                "\\(0x[0-9a-f]+, \\(nil\\), 0x[0-9a-f]+\\): ") +
                        any_error,
                    "3 cfg_certificate_generate: Failed to sign CSR"});
  }
}

TEST_F(CertificateFailure, AnEncryptedKeyIsRefusedWithoutAskingForAPassPhrase) {
  set_blob(ca(), "key", records::encrypted(rsa_authority().key));
  expect_failure({std::string("3 sign_csr: Failed to read BIOs for signing input "
                              "\\(0x[0-9a-f]+, \\(nil\\), 0x[0-9a-f]+\\): ") +
                      any_error,
                  "3 cfg_certificate_generate: Failed to sign CSR"});
}

TEST_F(CertificateFailure, ACertificateThatIsNoneIsShownAsNullPointer) {
  for (const std::string &certificate :
       {std::string("garbage"), rsa_authority().key, rsa_authority().certificate.substr(0, 300)}) {
    set_blob(ca(), "certificate", certificate);
    expect_failure({std::string("3 sign_csr: Failed to read BIOs for signing input "
                                "\\(0x[0-9a-f]+, 0x[0-9a-f]+, \\(nil\\)\\): ") +
                        any_error,
                    "3 cfg_certificate_generate: Failed to sign CSR"});
  }
}

TEST_F(CertificateFailure, KeyAndCertificateOfTheAuthorityMayBothBeBad) {
  set_blob(ca(), "key", "garbage");
  set_blob(ca(), "certificate", "garbage");
  expect_failure({std::string("3 sign_csr: Failed to read BIOs for signing input "
                              "\\(0x[0-9a-f]+, \\(nil\\), \\(nil\\)\\): ") +
                      any_error,
                  "3 cfg_certificate_generate: Failed to sign CSR"});
}

TEST_F(CertificateFailure, ATextThatIsNoSerialIsShownInTheParseMessage) {
  for (const char *text : {"zz", "1Az", "1A b", "1A,", "G", "1A-", "x1A"}) {
    SCOPED_TRACE(text);
    set_serial(text);
    expect_failure({std::string("3 sign_csr: Failed to parse CA serial '") + text + "'",
                    "3 cfg_certificate_generate: Failed to sign CSR"});
  }
}

TEST_F(CertificateFailure, OnlyTheFirstLineIsASerial) {
  set_serial("zz\n1A\n");
  expect_failure(
      {"3 sign_csr: Failed to parse CA serial 'zz\n?'", "3 cfg_certificate_generate: Failed to sign CSR"});
}

TEST_F(CertificateFailure, SerialsOutOfRangeAreRefused) {
  for (const std::string &text : {std::string("10000000000000000"), std::string("FFFFFFFFFFFFFFFFF"),
                                  std::string(30, 'F'), "1" + std::string(29, '0')}) {
    SCOPED_TRACE(text);
    set_serial(text);
    expect_failure({"3 sign_csr: Failed to parse CA serial '" + text + "'",
                    "3 cfg_certificate_generate: Failed to sign CSR"});
  }
}

TEST_F(CertificateFailure, ALongerSerialIsCutAt30CharactersAndThenOutOfRange) {
  set_serial(std::string(31, 'F') + "\n");
  expect_failure({"3 sign_csr: Failed to parse CA serial '" + std::string(30, 'F') + "'",
                  "3 cfg_certificate_generate: Failed to sign CSR"});
  set_serial(std::string(100000, '1'));
  expect_failure({"3 sign_csr: Failed to parse CA serial '" + std::string(30, '1') + "'",
                  "3 cfg_certificate_generate: Failed to sign CSR"});
}

TEST_F(CertificateFailure, ASerialThatCannotBeStoredFailsAfterTheRecordIsFilled) {
  cfg_elem *entry = entry_of("certificates");
  set(entry, "common_name", "node");
  set_blob(entry, "certificate", "old certificate");
  set_blob(entry, "private_key", "old key");
  commit();
  const records::store_handle reader = open(CFG_OPEN_READ_ONLY);
  const certificate_record record(cfg_get_certificate_by_id(reader.get(), "certificates-1"));
  ASSERT_NE(nullptr, record);
  EXPECT_EQ(0, cfg_certificate_generate(record.get()));
  std::vector<std::string> lines = log_lines();
  ASSERT_EQ(5U, lines.size()) << testing::PrintToString(lines);
  EXPECT_EQ(std::string("3 cfg_certificate_generate: Failed to store updated CA serial: ") +
                cfg_get_first_message_string(reader.get()),
            lines.back());
  EXPECT_EQ(1,
            X509_check_private_key(records::certificate_from(cfg_certificate_get_cert(record.get())).get(),
                                   records::key_from(cfg_certificate_get_private_key(record.get())).get()));
  EXPECT_EQ("1A\n", serial());
  EXPECT_EQ(nullptr, cfg_certificate_new(reader.get(), "node"));
}

TEST_F(CertificateFailure, AFailedIssueKeepsTheCertificateOfTheRecord) {
  const certificate_record record = issue();
  ASSERT_NE(nullptr, record);
  const std::string certificate = cfg_certificate_get_cert(record.get());
  set_serial("zz");
  EXPECT_EQ(0, cfg_certificate_generate(record.get()));
  EXPECT_EQ(certificate, cfg_certificate_get_cert(record.get()));
  EXPECT_EQ("zz", serial());
}

TEST_F(CertificateFailure, AFailureDoesNotSpoilTheNextIssue) {
  set_serial("zz");
  EXPECT_EQ(nullptr, issue());
  set_serial("1A\n");
  log_lines();
  EXPECT_NE(nullptr, issue());
  EXPECT_EQ(records::lines_of_a_success, log_lines());
}

TEST_F(CertificateFailure, NullHandlesAndRecordsIssueNothing) {
  EXPECT_EQ(nullptr, cfg_certificate_new(nullptr, "node"));
  EXPECT_EQ(0, cfg_certificate_generate(nullptr));
}

}  // namespace
