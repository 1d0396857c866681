// What getters, setters and free functions of a request do.
#include "https_fixture.hpp"
#include "wiping.hpp"

namespace {

using records::csr_record;
using records::text_field;
using records::text_fields;
using records::WipingWatch;

class CsrFields : public records::HttpsTest {};

TEST_F(CsrFields, ANewRecordIsEmpty) {
  const csr_record csr(cfg_new_https_csr(store));
  ASSERT_NE(nullptr, csr);
  for (const text_field &field : text_fields()) EXPECT_EQ(nullptr, field.get(csr.get())) << field.key;
  EXPECT_EQ(0, cfg_csr_get_key_length(csr.get()));
  EXPECT_EQ("{}", dump(""));
}

TEST_F(CsrFields, ASetterChangesItsOwnFieldAlone) {
  for (const text_field &field : text_fields()) {
    const csr_record csr(cfg_new_https_csr(store));
    EXPECT_EQ(1, field.set(csr.get(), "a text")) << field.key;
    for (const text_field &other : text_fields())
      EXPECT_STREQ(other.key == field.key ? "a text" : nullptr, other.get(csr.get()))
          << field.key << " set, " << other.key << " read";
    EXPECT_EQ(0, cfg_csr_get_key_length(csr.get()));
  }
}

TEST_F(CsrFields, ASetterStoresACopy) {
  for (const text_field &field : text_fields()) {
    const csr_record csr(cfg_new_https_csr(store));
    std::string text = "a text";
    EXPECT_EQ(1, field.set(csr.get(), text.c_str()));
    text = "others";
    EXPECT_STREQ("a text", field.get(csr.get())) << field.key;
  }
}

TEST_F(CsrFields, WhatAGetterAnsweredStaysGoodWhenTheFieldIsSetAgain) {
  for (const text_field &field : text_fields()) {
    const csr_record csr(cfg_new_https_csr(store));
    EXPECT_EQ(1, field.set(csr.get(), "first"));
    const char *first = field.get(csr.get());
    EXPECT_EQ(1, field.set(csr.get(), "second"));
    const char *second = field.get(csr.get());
    EXPECT_EQ(1, field.set(csr.get(), nullptr));
    EXPECT_STREQ("first", first) << field.key;
    EXPECT_STREQ("second", second) << field.key;
    EXPECT_EQ(nullptr, field.get(csr.get())) << field.key;
  }
}

TEST_F(CsrFields, AFieldCanBeSetToTheTextThatItHolds) {
  for (const text_field &field : text_fields()) {
    const csr_record csr(cfg_new_https_csr(store));
    EXPECT_EQ(1, field.set(csr.get(), "a text"));
    EXPECT_EQ(1, field.set(csr.get(), field.get(csr.get())));
    EXPECT_STREQ("a text", field.get(csr.get())) << field.key;
  }
}

TEST_F(CsrFields, AnEmptyTextClears) {
  for (const text_field &field : text_fields()) {
    const csr_record csr(cfg_new_https_csr(store));
    EXPECT_EQ(1, field.set(csr.get(), "a text"));
    EXPECT_EQ(1, field.set(csr.get(), ""));
    EXPECT_EQ(nullptr, field.get(csr.get())) << field.key;
  }
}

TEST_F(CsrFields, TheKeyLengthIsKeptAsItIsSet) {
  const csr_record csr(cfg_new_https_csr(store));
  for (const int32_t bits : {2048, 0, 1, -1, INT32_MIN, INT32_MAX}) {
    EXPECT_EQ(1, cfg_csr_set_key_length(csr.get(), bits));
    EXPECT_EQ(bits, cfg_csr_get_key_length(csr.get()));
  }
}

TEST_F(CsrFields, DeletingTheRequestClearsItAndItsKeyAlone) {
  const csr_record csr(cfg_new_https_csr(store));
  for (const text_field &field : text_fields()) EXPECT_EQ(1, field.set(csr.get(), "a text"));
  EXPECT_EQ(1, cfg_csr_set_key_length(csr.get(), 2048));
  cfg_csr_delete_request(csr.get());
  for (const text_field &field : text_fields()) {
    const std::string key = field.key;
    EXPECT_STREQ(key == "csr" || key == "private_key" ? nullptr : "a text", field.get(csr.get())) << key;
  }
  EXPECT_EQ(2048, cfg_csr_get_key_length(csr.get()));
  cfg_csr_delete_request(csr.get());
  EXPECT_EQ(nullptr, cfg_csr_get_csr(csr.get()));
}

TEST_F(CsrFields, KeysAndPasswordsAreWipedWhenTheRecordIsFreed) {
  for (const text_field &field : records::other_fields) {
    csr_record csr(cfg_new_https_csr(store));
    EXPECT_EQ(1, field.set(csr.get(), "what nobody else may know"));
    const WipingWatch watch("what nobody else may know");
    csr.reset();
    EXPECT_EQ(1, watch.count()) << field.key;
  }
}

TEST_F(CsrFields, SoAreThoseThatWereReplaced) {
  for (const text_field &field : records::other_fields) {
    csr_record csr(cfg_new_https_csr(store));
    EXPECT_EQ(1, field.set(csr.get(), "what nobody else may know"));
    EXPECT_EQ(1, field.set(csr.get(), "another"));
    const WipingWatch watch("what nobody else may know");
    csr.reset();
    EXPECT_EQ(1, watch.count()) << field.key;
  }
}

TEST_F(CsrFields, ADeletedRequestIsWipedAtOnce) {
  const csr_record csr(cfg_new_https_csr(store));
  EXPECT_EQ(1, cfg_csr_set_private_key(csr.get(), "what nobody else may know"));
  const WipingWatch watch("what nobody else may know");
  cfg_csr_delete_request(csr.get());
  EXPECT_EQ(1, watch.count());
}

TEST_F(CsrFields, NullIsAnsweredWithNullOrZero) {
  for (const text_field &field : text_fields()) {
    EXPECT_EQ(nullptr, field.get(nullptr)) << field.key;
    EXPECT_EQ(0, field.set(nullptr, "a text")) << field.key;
  }
  EXPECT_EQ(0, cfg_csr_get_key_length(nullptr));
  EXPECT_EQ(0, cfg_csr_set_key_length(nullptr, 1));
  cfg_csr_delete_request(nullptr);
  cfg_csr_free(nullptr);
}

}  // namespace
