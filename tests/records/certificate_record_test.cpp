// Reading, saving, revoking and releasing certificate records.
#include <ctime>

#include "certificate_fixture.hpp"

namespace {

using records::certificate_record;
using records::rsa_authority;

class CertificateRecord : public records::CertificateTest {
 protected:
  // A committed certificate element, with ID certificates-1.
  void add_element() {
    cfg_elem *entry = entry_of("certificates");
    set(entry, "common_name", "cn");
    set_blob(entry, "certificate", "CERT");
    set_blob(entry, "private_key", "KEY");
    commit();
  }
  certificate_record load(const char *id = "certificates-1") {
    return certificate_record(cfg_get_certificate_by_id(store, id));
  }
  // A freshly issued record, and the list that it can be saved in.
  certificate_record fresh() {
    add_authority(rsa_authority());
    list_at("certificates");
    commit();
    return issue("node-7");
  }
};

TEST_F(CertificateRecord, IsReadFromItsElement) {
  add_element();
  commit_and_reopen();
  const certificate_record record = load();
  ASSERT_NE(nullptr, record);
  EXPECT_STREQ("certificates-1", cfg_certificate_get_id(record.get()));
  EXPECT_STREQ("cn", cfg_certificate_get_common_name(record.get()));
  EXPECT_STREQ("CERT", cfg_certificate_get_cert(record.get()));
  EXPECT_STREQ("KEY", cfg_certificate_get_private_key(record.get()));
}

TEST_F(CertificateRecord, AllKeysOfTheElementAreOptional) {
  const certificate_record record = load(id_of(entry_of("certificates")).c_str());
  ASSERT_NE(nullptr, record);
  EXPECT_NE(nullptr, cfg_certificate_get_id(record.get()));
  EXPECT_EQ(nullptr, cfg_certificate_get_common_name(record.get()));
  EXPECT_EQ(nullptr, cfg_certificate_get_cert(record.get()));
  EXPECT_EQ(nullptr, cfg_certificate_get_private_key(record.get()));
}

TEST_F(CertificateRecord, AKeyOfAnotherKindFailsTheLoad) {
  for (const char *key : {"certificate", "private_key", "common_name", "revoke_time"}) {
    cfg_elem *entry = entry_of("certificates");
    set_bool(entry, key, true);
    EXPECT_EQ(nullptr, load(id_of(entry).c_str())) << key;
  }
}

TEST_F(CertificateRecord, UnknownAndNullIdsAndHandlesGiveNothing) {
  add_element();
  EXPECT_EQ(nullptr, load("certificates-9"));
  EXPECT_EQ(nullptr, load(nullptr));
  EXPECT_EQ(nullptr, cfg_get_certificate_by_id(nullptr, "certificates-1"));
}

TEST_F(CertificateRecord, ANewRecordIsAppendedAsPendingEntryAndWrittenWhole) {
  const certificate_record record = fresh();
  ASSERT_NE(nullptr, record);
  EXPECT_EQ(1, cfg_certificate_save(record.get()));
  ASSERT_NE(nullptr, cfg_certificate_get_id(record.get()));
  EXPECT_EQ('{', cfg_certificate_get_id(record.get())[0]);
  const std::string whole = std::string("{certificate=<") + cfg_certificate_get_cert(record.get()) +
                            "> common_name=\"node-7\" private_key=<" +
                            cfg_certificate_get_private_key(record.get()) + ">}";
  EXPECT_EQ("[+" + whole + "]", dump("certificates"));
  const std::string provisional = cfg_certificate_get_id(record.get());
  commit();
  EXPECT_EQ("[" + whole + "]", dump("certificates"));
  EXPECT_STREQ("certificates-1", cfg_certificate_get_id(load(provisional.c_str()).get()));
  commit_and_reopen();
  const certificate_record again = load();
  ASSERT_NE(nullptr, again);
  EXPECT_STREQ(cfg_certificate_get_cert(record.get()), cfg_certificate_get_cert(again.get()));
  EXPECT_STREQ(cfg_certificate_get_private_key(record.get()), cfg_certificate_get_private_key(again.get()));
  EXPECT_STREQ("node-7", cfg_certificate_get_common_name(again.get()));
}

TEST_F(CertificateRecord, SavingANewRecordTwiceMakesOneElement) {
  const certificate_record record = fresh();
  ASSERT_EQ(1, cfg_certificate_save(record.get()));
  EXPECT_EQ(1, cfg_certificate_save(record.get()));
  commit();
  EXPECT_EQ(1, cfg_certificate_save(record.get()));
  commit();
  int32_t size = 0;
  ASSERT_TRUE(cfg_list_size(cfg_get_by_path(store, "certificates"), &size));
  EXPECT_EQ(1, size);
}

TEST_F(CertificateRecord, ANewRecordNeedsTheList) {
  const certificate_record record = fresh();
  erase(cfg_root(store), "certificates");
  EXPECT_EQ(0, cfg_certificate_save(record.get()));
  EXPECT_EQ(nullptr, cfg_certificate_get_id(record.get()));
  EXPECT_EQ("none", dump("certificates"));
}

TEST_F(CertificateRecord, ARecordThatIsRevokedBeforeItsFirstSaveIsWrittenWithItsRevokeTime) {
  const certificate_record record = fresh();
  const auto before = static_cast<int32_t>(time(nullptr));
  EXPECT_EQ(1, cfg_certificate_expire_now(record.get()));
  EXPECT_EQ(1, cfg_certificate_save(record.get()));
  int32_t revoked = 0;
  ASSERT_TRUE(cfg_map_get_int(store, cfg_get_by_id(store, cfg_certificate_get_id(record.get())),
                              "revoke_time", &revoked));
  EXPECT_LE(before, revoked);
  EXPECT_GE(static_cast<int32_t>(time(nullptr)), revoked);
}

TEST_F(CertificateRecord, RevokingIsNotSavedByItself) {
  add_element();
  const certificate_record record = load();
  EXPECT_EQ(1, cfg_certificate_expire_now(record.get()));
  EXPECT_EQ(0, cfg_has_changes(store));
}

TEST_F(CertificateRecord, SavingARevokedRecordWritesItsRevokeTimeAndNothingElse) {
  add_element();
  const certificate_record record = load();
  const auto before = static_cast<int32_t>(time(nullptr));
  ASSERT_EQ(1, cfg_certificate_expire_now(record.get()));
  EXPECT_EQ(1, cfg_certificate_save(record.get()));
  EXPECT_EQ(std::vector<std::string>{"+ certificates-1.revoke_time"}, changes());
  int32_t revoked = 0;
  ASSERT_TRUE(cfg_map_get_int(store, cfg_get_by_id(store, "certificates-1"), "revoke_time", &revoked));
  EXPECT_LE(before, revoked);
  EXPECT_GE(static_cast<int32_t>(time(nullptr)), revoked);
}

TEST_F(CertificateRecord, ARevokedRecordStaysRevokedWhenItIsLoadedAndSaved) {
  add_element();
  set(cfg_get_by_id(store, "certificates-1"), "revoke_time", 1700000000);
  commit_and_reopen();
  EXPECT_EQ(1, cfg_certificate_save(load().get()));
  EXPECT_EQ(R"({certificate=<CERT> common_name="cn" private_key=<KEY> revoke_time=1700000000})",
            dump(cfg_get_by_id(store, "certificates-1")));
}

TEST_F(CertificateRecord, SavingARecordThatIsNotRevokedRemovesTheKey) {
  add_element();
  const certificate_record record = load();
  set(cfg_get_by_id(store, "certificates-1"), "revoke_time", 1700000000);
  EXPECT_EQ(1, cfg_certificate_save(record.get()));
  EXPECT_EQ(R"({certificate=<CERT> common_name="cn" private_key=<KEY>})",
            dump(cfg_get_by_id(store, "certificates-1")));
}

TEST_F(CertificateRecord, CertificateKeyAndNameOfAnElementAreNeverRewritten) {
  add_authority(rsa_authority());
  add_element();
  const certificate_record record = load();
  ASSERT_EQ(1, cfg_certificate_generate(record.get()));
  EXPECT_EQ(1, cfg_certificate_save(record.get()));
  EXPECT_EQ(R"({certificate=<CERT> common_name="cn" private_key=<KEY>})",
            dump(cfg_get_by_id(store, "certificates-1")));
}

TEST_F(CertificateRecord, SavingDoesNotCheckThatTheElementExists) {
  add_element();
  const certificate_record record = load();
  ASSERT_TRUE(cfg_delete_element(store, cfg_get_by_id(store, "certificates-1")));
  EXPECT_EQ(1, cfg_certificate_save(record.get()));
  cfg_certificate_expire_now(record.get());
  EXPECT_EQ(1, cfg_certificate_save(record.get()));
  EXPECT_EQ("{certificates=[]}", dump(""));
}

TEST_F(CertificateRecord, FreeingReleasesTheFieldsButNotTheBlock) {
  const certificate_record record = fresh();
  ASSERT_EQ(1, cfg_certificate_save(record.get()));
  cfg_certificate_free(record.get());
  EXPECT_EQ(nullptr, cfg_certificate_get_id(record.get()));
  EXPECT_EQ(nullptr, cfg_certificate_get_common_name(record.get()));
  EXPECT_EQ(nullptr, cfg_certificate_get_cert(record.get()));
  EXPECT_EQ(nullptr, cfg_certificate_get_private_key(record.get()));
  cfg_certificate_free(record.get());
}

TEST_F(CertificateRecord, NullRecordsGiveZeroAndNull) {
  EXPECT_EQ(nullptr, cfg_certificate_get_id(nullptr));
  EXPECT_EQ(nullptr, cfg_certificate_get_common_name(nullptr));
  EXPECT_EQ(nullptr, cfg_certificate_get_cert(nullptr));
  EXPECT_EQ(nullptr, cfg_certificate_get_private_key(nullptr));
  EXPECT_EQ(0, cfg_certificate_expire_now(nullptr));
  cfg_certificate_free(nullptr);
}

TEST_F(CertificateRecord, SavingReadingAndRevokingLogNothing) {
  const certificate_record record = fresh();
  log_lines();
  cfg_certificate_save(record.get());
  cfg_certificate_expire_now(record.get());
  cfg_certificate_save(record.get());
  load(cfg_certificate_get_id(record.get()));
  erase(cfg_root(store), "certificates");
  const certificate_record unsaved = issue();
  log_lines();
  EXPECT_EQ(0, cfg_certificate_save(unsaved.get()));
  EXPECT_EQ(std::vector<std::string>{}, log_lines());
}

}  // namespace
