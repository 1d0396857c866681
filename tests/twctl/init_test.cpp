#include <sys/stat.h>

#include <filesystem>

#include "harness.hpp"

namespace test {

using TwctlInit = twctl_test;

TEST_F(TwctlInit, InitMakesEveryBaseListInOneCommit) {
  ASSERT_EQ(run({"init"}).code, 0);
  open_store store = open_for_reading(store_path());
  for (const char *path :
       {"system.net.physifs", "system.net.conns", "system.net.external_endpoints", "services.ntp.servers",
        "nodes", "certificates", "users", "groups", "roles", "acls", "templates", "tags.node_tags",
        "smart_groups.nodes_groups", "enrollment.bundles", "cfg_push_exec_ctxts", "boot_flags",
        "auth.radius.authenticationServers"})
    EXPECT_EQ(cfg_elem_kind(cfg_get_by_path(store.get(), path)), CFG_LIST) << path;
  for (const char *path : {"services.https", "services.fhvpn.server", "auth.tacacs", "auth.ldap"})
    EXPECT_EQ(cfg_elem_kind(cfg_get_by_path(store.get(), path)), CFG_MAP) << path;
  EXPECT_EQ(cfg_revision(store.get()), 1u);
}

TEST_F(TwctlInit, TheStoreIsPrivateToItsOwner) {
  ASSERT_EQ(run({"init"}).code, 0);
  struct stat info;
  ASSERT_EQ(stat(store_path().c_str(), &info), 0);
  EXPECT_EQ(info.st_mode & 0777u, 0700u);
}

TEST_F(TwctlInit, InitRefusesAnInitialisedStoreAndLeavesItAlone) {
  init();
  std::string before = everything();
  outcome again = run({"init"});
  EXPECT_EQ(again.code, 4);
  EXPECT_NE(again.err.find("is initialised already"), std::string::npos) << again.err;
  EXPECT_EQ(everything(), before);
}

TEST_F(TwctlInit, ADryRunShowsTheLayoutAndMakesNoStore) {
  outcome result = run({"init", "--dry-run"});
  EXPECT_EQ(result.code, 0) << result.err;
  EXPECT_NE(result.out.find("+ certificates (list)\n"), std::string::npos) << result.out;
  EXPECT_NE(result.out.find("nothing was written"), std::string::npos);
  EXPECT_FALSE(std::filesystem::exists(store_path()));
}

TEST_F(TwctlInit, TheAuthorityIsASelfSignedCaWithItsSubjectFor20Years) {
  json result = run_json({"init", "--ca-subject", "Lab CA"});
  EXPECT_EQ(result["ca_subject"].text(), "CN = Lab CA");
  EXPECT_EQ(result["revision"].number(), 1);
  outcome pem = run({"cert", "ca", "--pem"});
  ASSERT_EQ(pem.code, 0) << pem.err;
  write_text(path("ca.pem"), pem.out);
  outcome text = run_program("openssl", {"x509", "-in", path("ca.pem"), "-noout", "-text"});
  ASSERT_EQ(text.code, 0) << text.err;
  for (const char *part : {"Subject: CN = Lab CA", "Issuer: CN = Lab CA", "Public-Key: (3072 bit)", "CA:TRUE",
                           "Certificate Sign", "sha256WithRSAEncryption"})
    EXPECT_NE(text.out.find(part), std::string::npos) << part << "\n" << text.out;
  long long twenty_years_less_two_days = (20LL * 365 + 3) * 86400;
  EXPECT_EQ(run_program("openssl", {"x509", "-in", path("ca.pem"), "-noout", "-checkend",
                                    std::to_string(twenty_years_less_two_days)})
                .code,
            0);
  EXPECT_EQ(run_program("openssl", {"verify", "-CAfile", path("ca.pem"), path("ca.pem")}).code, 0);
}

TEST_F(TwctlInit, TheFirstSerialNumberIsOne) {
  init();
  open_store store = open_for_reading(store_path());
  void *data = nullptr;
  size_t length = 0;
  ASSERT_TRUE(cfg_blob_value(cfg_get_by_path(store.get(), "services.ca.serial"), &data, &length));
  EXPECT_EQ(std::string(static_cast<char *>(data), length), "01\n");
  free(data);
}

TEST_F(TwctlInit, TheAuthoritysKeyIsInNoOutput) {
  outcome result = run({"init"});
  for (const std::string &text : {result.out, result.err}) EXPECT_EQ(text.find("PRIVATE"), std::string::npos);
  EXPECT_NE(result.err.find("+ services.ca.key: <"), std::string::npos) << result.err;
}

TEST_F(TwctlInit, ASubjectThatIsEmptyTooLongOrUnprintableIsRefused) {
  for (const std::string &subject :
       {std::string(), std::string("  "), std::string(65, 'x'), std::string("a\nb")}) {
    outcome result = run({"init", "--ca-subject", subject});
    EXPECT_EQ(result.code, 5) << subject;
  }
  EXPECT_FALSE(std::filesystem::exists(store_path()));
}

}  // namespace test
