// Loading and saving the request in progress.
#include "https_fixture.hpp"

namespace {

using records::csr_record;
using records::subject_fields;
using records::text_field;
using records::text_fields;
using records::unwritable;

class CsrStore : public records::HttpsTest {
 protected:
  // A stored request in which every text is its own key.
  void add_request() {
    cfg_elem *map = map_at("services.https.csr");
    for (const text_field &field : text_fields()) {
      const std::string key = field.key;
      if (key == "private_key" || key == "csr")
        set_blob(map, field.key, key);
      else
        set(map, field.key, field.key);
    }
    set(map, "key_length", 2048);
    commit_and_reopen();
  }
};

const std::string subject_of_all =
    "common_name=\"common_name\" country=\"country\" csr=<csr> email=\"email\" key_length=2048 "
    "locality=\"locality\" org_unit=\"org_unit\" organization=\"organization\" private_key=<private_key> "
    "state=\"state\"}";

TEST_F(CsrStore, ALoadReadsEveryKey) {
  add_request();
  const csr_record csr = load();
  for (const text_field &field : text_fields()) EXPECT_STREQ(field.key, field.get(csr.get()));
  EXPECT_EQ(2048, cfg_csr_get_key_length(csr.get()));
}

TEST_F(CsrStore, AStoreWithoutRequestGivesAnEmptyRecord) {
  for (const char *path : {"", "services", "services.https"}) {
    map_at(path);
    const csr_record csr = load();
    ASSERT_NE(nullptr, csr) << path;
    for (const text_field &field : text_fields()) EXPECT_EQ(nullptr, field.get(csr.get())) << field.key;
    EXPECT_EQ(0, cfg_csr_get_key_length(csr.get()));
  }
}

TEST_F(CsrStore, AKeyThatIsAbsentReadsAsNullOrZero) {
  for (const text_field &absent : text_fields()) {
    add_request();
    erase(map_at("services.https.csr"), absent.key);
    const csr_record csr = load();
    for (const text_field &field : text_fields())
      EXPECT_STREQ(field.key == absent.key ? nullptr : field.key, field.get(csr.get())) << absent.key;
    cfg_abandon(store);
  }
  erase(map_at("services.https.csr"), "key_length");
  EXPECT_EQ(0, cfg_csr_get_key_length(load().get()));
}

TEST_F(CsrStore, AKeyOfAnotherKindReadsAsAnAbsentOne) {
  for (const text_field &broken : text_fields()) {
    add_request();
    set(map_at("services.https.csr"), broken.key, 7);
    const csr_record csr = load();
    ASSERT_NE(nullptr, csr);
    for (const text_field &field : text_fields())
      EXPECT_STREQ(field.key == broken.key ? nullptr : field.key, field.get(csr.get())) << broken.key;
    cfg_abandon(store);
  }
  set(map_at("services.https.csr"), "key_length", "many");
  EXPECT_EQ(0, cfg_csr_get_key_length(load().get()));
}

TEST_F(CsrStore, WhatIsNoMapGivesAnEmptyRecord) {
  set(map_at("services.https"), "csr", "a text");
  const csr_record csr = load();
  ASSERT_NE(nullptr, csr);
  EXPECT_EQ(nullptr, cfg_csr_get_common_name(csr.get()));
}

TEST_F(CsrStore, NoHandleGivesAnEmptyRecord) {
  const csr_record csr(cfg_get_https_csr(nullptr));
  ASSERT_NE(nullptr, csr);
  EXPECT_EQ(nullptr, cfg_csr_get_common_name(csr.get()));
}

TEST_F(CsrStore, ALoadChangesNothing) {
  load();
  EXPECT_EQ("{}", dump(""));
  EXPECT_EQ(std::vector<std::string>{}, changes());
}

TEST_F(CsrStore, ASaveMakesTheMapsAndWritesWhatIsSet) {
  for (const char *path : {"", "services", "services.https", "services.https.csr"}) {
    map_at(path);
    commit();
    const csr_record csr(cfg_new_https_csr(store));
    for (const text_field &field : text_fields()) EXPECT_EQ(1, field.set(csr.get(), field.key));
    EXPECT_EQ(1, cfg_csr_set_key_length(csr.get(), 2048));
    EXPECT_EQ(1, cfg_save_https_csr(csr.get()));
    EXPECT_EQ("{services={https={csr={challenge_password=\"challenge_password\" " + subject_of_all + "}}}",
              dump(""))
        << path;
    cfg_abandon(store);
  }
}

TEST_F(CsrStore, ASaveIsReadBackAfterTheCommit) {
  const csr_record csr = filled();
  EXPECT_EQ(1, cfg_csr_set_private_key(csr.get(), "the key\n"));
  EXPECT_EQ(1, cfg_csr_set_csr(csr.get(), "the request\n"));
  EXPECT_EQ(1, cfg_save_https_csr(csr.get()));
  EXPECT_EQ("the key\n", blob_at("services.https.csr.private_key"));
  EXPECT_EQ("the request\n", blob_at("services.https.csr.csr"));
  commit_and_reopen();
  const csr_record again = load();
  for (const text_field &field : text_fields())
    EXPECT_STREQ(field.get(csr.get()), field.get(again.get())) << field.key;
  EXPECT_EQ(1024, cfg_csr_get_key_length(again.get()));
}

TEST_F(CsrStore, ASaveWithoutChallengePasswordRemovesTheStoredOne) {
  add_request();
  const csr_record csr = load();
  EXPECT_EQ(1, cfg_csr_set_challenge_password(csr.get(), nullptr));
  EXPECT_EQ(1, cfg_save_https_csr(csr.get()));
  EXPECT_EQ("{" + subject_of_all, dump("services.https.csr"));
}

TEST_F(CsrStore, ASaveOfADeletedRequestRemovesTheStoredRequestAndKey) {
  add_request();
  const csr_record csr = load();
  cfg_csr_delete_request(csr.get());
  EXPECT_EQ(1, cfg_save_https_csr(csr.get()));
  EXPECT_EQ("none", dump("services.https.csr.csr"));
  EXPECT_EQ("none", dump("services.https.csr.private_key"));
  EXPECT_EQ("\"common_name\"", dump("services.https.csr.common_name"));
}

TEST_F(CsrStore, ASaveLeavesWhatIsStoredOfASubjectTextThatIsNull) {
  add_request();
  const csr_record csr = load();
  for (const text_field &field : subject_fields) EXPECT_EQ(1, field.set(csr.get(), nullptr));
  EXPECT_EQ(1, cfg_save_https_csr(csr.get()));
  EXPECT_EQ("{challenge_password=\"challenge_password\" " + subject_of_all, dump("services.https.csr"));
}

TEST_F(CsrStore, AnEmptyRecordSavesItsKeyLengthAlone) {
  EXPECT_EQ(1, cfg_save_https_csr(csr_record(cfg_new_https_csr(store)).get()));
  EXPECT_EQ("{services={https={csr={key_length=0}}}}", dump(""));
}

TEST_F(CsrStore, ASaveLeavesTheInstalledCertificate) {
  set_blob(map_at("services.https"), "certificate", "installed");
  EXPECT_EQ(1, cfg_save_https_csr(csr_record(cfg_new_https_csr(store)).get()));
  EXPECT_EQ("{certificate=<installed> csr={key_length=0}}", dump("services.https"));
}

TEST_F(CsrStore, ASavePassesOverTextsThatCannotBeWritten) {
  for (const text_field &field : text_fields()) {
    const csr_record csr(cfg_new_https_csr(store));
    for (const text_field &other : text_fields()) EXPECT_EQ(1, other.set(csr.get(), other.key));
    EXPECT_EQ(1, field.set(csr.get(), unwritable().c_str()));
    EXPECT_EQ(1, cfg_csr_set_key_length(csr.get(), 2048));
    EXPECT_EQ(1, cfg_save_https_csr(csr.get())) << field.key;
    for (const text_field &other : text_fields())
      EXPECT_EQ(other.key == field.key, dump(std::string("services.https.csr.") + other.key) == "none")
          << field.key << ", " << other.key;
    EXPECT_EQ("2048", dump("services.https.csr.key_length"));
    cfg_abandon(store);
  }
}

TEST_F(CsrStore, ASaveFailsWhereTheKeyLengthCannotBeWritten) {
  set(map_at("services.https"), "csr", "a text");
  EXPECT_EQ(0, cfg_save_https_csr(filled().get()));
  EXPECT_EQ("\"a text\"", dump("services.https.csr"));
  cfg_abandon(store);
  set(map_at("services"), "https", "a text");
  EXPECT_EQ(0, cfg_save_https_csr(filled().get()));
  EXPECT_EQ("\"a text\"", dump("services.https"));
}

TEST_F(CsrStore, ASaveAddsNoMessage) {
  EXPECT_EQ(1, cfg_save_https_csr(filled().get()));
  EXPECT_EQ(std::vector<int32_t>{}, messages());
}

TEST(CsrStoreDeathTest, SavingNullOrARecordWithoutHandleAborts) {
  const char *const assertion = "src/https: cfg_save_https_csr: Assertion `csr && csr->cfg' failed";
  EXPECT_DEATH(cfg_save_https_csr(nullptr), assertion);
  EXPECT_DEATH(cfg_save_https_csr(cfg_new_https_csr(nullptr)), assertion);
}

}  // namespace
