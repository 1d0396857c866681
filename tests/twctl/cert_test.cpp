#include <sys/stat.h>
#include <unistd.h>

#include <set>

#include "harness.hpp"

namespace test {

class TwctlCert : public twctl_test {
 protected:
  void SetUp() override { init(); }

  void enroll(const std::string &name) {
    outcome result = run({"node", "enroll", "--product", "tarnwell", "--name", name});
    ASSERT_EQ(result.code, 0) << result.err;
  }
  json issue(const std::string &node, arguments more = {}) {
    arguments args{"cert", "issue", "--node", node};
    args.insert(args.end(), more.begin(), more.end());
    return run_json(args);
  }
};

TEST_F(TwctlCert, AnIssuedCertificateVerifiesAgainstTheAuthority) {
  enroll("rack-1");
  json issued = issue("rack-1", {"--cn", "rack-1.lab"});
  EXPECT_EQ(issued["id"].text(), "certificates-1");
  EXPECT_EQ(issued["node_id"].text(), "nodes-1");
  EXPECT_EQ(issued["serial"].text(), "01");
  write_text(path("ca.pem"), run({"cert", "ca", "--pem"}).out);
  write_text(path("cert.pem"), run({"cert", "show", "rack-1.lab", "--pem"}).out);
  outcome verified = run_program("openssl", {"verify", "-CAfile", path("ca.pem"), path("cert.pem")});
  EXPECT_EQ(verified.code, 0) << verified.err;
  EXPECT_NE(verified.out.find(": OK"), std::string::npos) << verified.out;
}

TEST_F(TwctlCert, IssuingGivesTheNodeItsCertificateInTheSameCommit) {
  enroll("rack-1");
  json issued = issue("rack-1");
  EXPECT_EQ(issued["revision"].number(), 3);
  EXPECT_EQ(issued["common_name"].text(), "nodes-1") << "the node's ID is the default";
  json node = run_json({"node", "show", "rack-1"});
  EXPECT_EQ(node["certificate_id"].text(), "certificates-1");
  EXPECT_EQ(node["certificate_cn"].text(), "nodes-1");
}

TEST_F(TwctlCert, ShowAgreesWithOpenssl) {
  enroll("rack-1");
  issue("rack-1", {"--cn", "rack-1.lab"});
  json shown = run_json({"cert", "show", "certificates-1"});
  EXPECT_EQ(shown.keys(),
            "id common_name subject issuer serial not_before not_after fingerprint_sha256 revoked_at");
  write_text(path("cert.pem"), run({"cert", "show", "certificates-1", "--pem"}).out);
  outcome text = run_program("openssl", {"x509", "-in", path("cert.pem"), "-noout", "-subject", "-serial",
                                         "-fingerprint", "-sha256"});
  EXPECT_NE(text.out.find("subject=" + shown["subject"].text() + "\n"), std::string::npos) << text.out;
  EXPECT_NE(text.out.find("serial=" + shown["serial"].text() + "\n"), std::string::npos) << text.out;
  EXPECT_NE(text.out.find("Fingerprint=" + shown["fingerprint_sha256"].text() + "\n"), std::string::npos)
      << text.out;
  EXPECT_EQ(shown["issuer"].text(), "CN = Appliance Node CA");
  EXPECT_TRUE(shown["revoked_at"].is_null());
}

TEST_F(TwctlCert, ThePrivateKeyGoesOnlyIntoANewFileOfMode0600) {
  enroll("rack-1");
  outcome issued = run({"cert", "issue", "--node", "rack-1"});
  outcome shown = run({"cert", "show", "certificates-1", "--private-key", path("key.pem")});
  EXPECT_EQ(shown.code, 0) << shown.err;
  struct stat info;
  ASSERT_EQ(stat(path("key.pem").c_str(), &info), 0);
  EXPECT_EQ(info.st_mode & 0777u, 0600u);
  outcome listed = run({"-o", "json", "cert", "list"}),
          pem = run({"cert", "show", "certificates-1", "--pem"});
  for (const outcome &result : {issued, shown, listed, pem})
    EXPECT_EQ((result.out + result.err).find("PRIVATE"), std::string::npos);
  write_text(path("cert.pem"), pem.out);
  outcome from_key = run_program("openssl", {"pkey", "-in", path("key.pem"), "-pubout"});
  outcome from_certificate = run_program("openssl", {"x509", "-in", path("cert.pem"), "-noout", "-pubkey"});
  EXPECT_EQ(from_key.out, from_certificate.out);
  EXPECT_NE(from_key.out, "");
  EXPECT_EQ(run({"cert", "show", "certificates-1", "--private-key", path("key.pem")}).code, 4)
      << "nothing is replaced";
  ASSERT_EQ(symlink(path("elsewhere").c_str(), path("link").c_str()), 0);
  EXPECT_EQ(run({"cert", "show", "certificates-1", "--private-key", path("link")}).code, 4);
  EXPECT_NE(access(path("elsewhere").c_str(), F_OK), 0);
}

TEST_F(TwctlCert, ConcurrentIssuersGetDistinctSerialNumbers) {
  constexpr int issuers = 6;
  for (int i = 0; i < issuers; i++) enroll("rack-" + std::to_string(i));
  std::vector<running> programs;
  for (int i = 0; i < issuers; i++)
    programs.push_back(
        start({"-o", "json", "cert", "issue", "--attempts", "200", "--node", "rack-" + std::to_string(i)}));
  std::set<std::string> serials;
  for (running &program : programs) {
    outcome result = program.wait();
    EXPECT_EQ(result.code, 0) << result.err;
    serials.insert(json(result.out)["serial"].text());
  }
  EXPECT_EQ(serials, (std::set<std::string>{"01", "02", "03", "04", "05", "06"}));
  EXPECT_EQ(run_json({"cert", "list"})["certificates"].size(), size_t{issuers});
}

TEST_F(TwctlCert, ADryRunIssuesNothingAndKeepsTheSerialNumber) {
  enroll("rack-1");
  std::string before = everything();
  outcome result = run({"cert", "issue", "--node", "rack-1", "--dry-run"});
  EXPECT_EQ(result.code, 0) << result.err;
  EXPECT_NE(result.out.find("+ nodes-1.cert: "), std::string::npos) << result.out;
  EXPECT_NE(result.out.find("= services.ca.serial: <"), std::string::npos) << result.out;
  EXPECT_EQ((result.out + result.err).find("BEGIN"), std::string::npos);
  EXPECT_EQ(everything(), before);
}

TEST_F(TwctlCert, ANodeThatHoldsAValidCertificateKeepsItUnlessItIsReplaced) {
  enroll("rack-1");
  issue("rack-1", {"--cn", "rack-1.lab"});
  EXPECT_EQ(run({"cert", "issue", "--node", "rack-1"}).code, 4);
  json replaced = issue("rack-1", {"--cn", "rack-1.lab", "--replace"});
  EXPECT_EQ(replaced["serial"].text(), "02");
  json list = run_json({"cert", "list"})["certificates"];
  ASSERT_EQ(list.size(), 2u);
  EXPECT_EQ(list[0].keys(), "id common_name serial not_after revoked_at node_id");
  EXPECT_FALSE(list[0]["revoked_at"].is_null());
  EXPECT_TRUE(list[0]["node_id"].is_null());
  EXPECT_TRUE(list[1]["revoked_at"].is_null());
  EXPECT_EQ(list[1]["node_id"].text(), "nodes-1");
  EXPECT_EQ(run_json({"cert", "show", "rack-1.lab"})["id"].text(), "certificates-2")
      << "the valid one has the name";
}

TEST_F(TwctlCert, ACommonNameBelongsToOneValidCertificate) {
  enroll("rack-1");
  enroll("rack-2");
  issue("rack-1", {"--cn", "x.lab"});
  EXPECT_EQ(run({"cert", "issue", "--node", "rack-2", "--cn", "x.lab"}).code, 4);
  ASSERT_EQ(run({"cert", "revoke", "x.lab", "--yes"}).code, 0);
  EXPECT_EQ(issue("rack-2", {"--cn", "x.lab"})["serial"].text(), "02");
}

TEST_F(TwctlCert, RevokingIsConfirmedKeptAndHarmlessTwice) {
  enroll("rack-1");
  issue("rack-1");
  EXPECT_EQ(run({"cert", "revoke", "certificates-1"}).code, 2);
  EXPECT_EQ(run({"cert", "revoke", "certificates-1", "--dry-run"}).code, 0);
  EXPECT_TRUE(run_json({"cert", "show", "certificates-1"})["revoked_at"].is_null());
  EXPECT_EQ(run({"cert", "revoke", "certificates-1", "--yes"}).out, "Revoked certificates-1.\n");
  std::string time = run_json({"cert", "show", "certificates-1"})["revoked_at"].text();
  EXPECT_EQ(time.size(), std::string("2026-01-01T00:00:00Z").size()) << time;
  EXPECT_EQ(run({"cert", "revoke", "certificates-1", "--yes"}).out, "certificates-1 is revoked already.\n");
  EXPECT_EQ(run_json({"cert", "show", "certificates-1"})["revoked_at"].text(), time);
}

TEST_F(TwctlCert, WhatCannotBeIssuedIsRefusedWithItsReason) {
  enroll("rack-1");
  ASSERT_EQ(run({"node", "enroll", "--product", "acs8000", "--name", "a", "--address", "10.0.0.5",
                 "--username", "u", "--password-file", "-"},
                "p\n")
                .code,
            0);
  std::string before = everything();
  EXPECT_EQ(run({"cert", "issue", "--node", "a"}).code, 5);
  EXPECT_EQ(run({"cert", "issue", "--node", "nobody"}).code, 3);
  EXPECT_EQ(run({"cert", "issue", "--node", "rack-1", "--cn", std::string(65, 'x')}).code, 5);
  EXPECT_EQ(run({"cert", "show", "certificates-7"}).code, 3);
  EXPECT_EQ(run({"cert", "revoke", "nobody", "--yes"}).code, 3);
  EXPECT_EQ(everything(), before);
}

TEST_F(TwctlCert, WithoutAuthorityNothingIsIssued) {
  enroll("rack-1");
  cfg *store = cfg_open(store_path().c_str(), 0, nullptr);
  ASSERT_TRUE(cfg_map_delete_key(store, cfg_get_by_path(store, "services.ca"), "serial"));
  ASSERT_TRUE(cfg_commit(store, nullptr));
  cfg_close(store);
  outcome result = run({"cert", "issue", "--node", "rack-1"});
  EXPECT_EQ(result.code, 3);
  EXPECT_NE(result.err.find("services.ca.serial"), std::string::npos) << result.err;
}

}  // namespace test
