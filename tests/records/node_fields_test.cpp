// Getters and setters of the node record, in memory.
#include "node_fixture.hpp"

namespace {

using records::node_record;

struct text_field {
  const char *name;
  const char *(*get)(const cfg_node *) noexcept;
  int (*set)(cfg_node *, const char *) noexcept;
};
const text_field text_fields[] = {
    {"name", cfg_node_get_name, cfg_node_set_name},
    {"bundle_id", cfg_node_get_bundle_id, cfg_node_set_bundle_id},
    {"description", cfg_node_get_description, cfg_node_set_description},
    {"status", cfg_node_get_status, cfg_node_set_status},
    {"mac_address", cfg_node_get_mac_address, cfg_node_set_mac_address},
    {"fhvpn_address", cfg_node_get_fhvpn_address, cfg_node_set_fhvpn_address},
    {"firmware_version", cfg_node_get_firmware_version, cfg_node_set_firmware_version},
    {"model", cfg_node_get_model, cfg_node_set_model},
    {"serial_number", cfg_node_get_serial_number, cfg_node_set_serial_number},
    {"enrollment_bundle",
     [](const cfg_node *node) noexcept {
       return cfg_node_get_enrollment_bundle(const_cast<cfg_node *>(node));
     },
     cfg_node_set_enrollment_bundle},
};

class NodeText : public records::NodeTest, public testing::WithParamInterface<text_field> {
 protected:
  void SetUp() override {
    NodeTest::SetUp();
    node.reset(cfg_new_node(store));
    ASSERT_NE(nullptr, node);
  }
  const char *get() const { return GetParam().get(node.get()); }
  int set_to(const char *text) { return GetParam().set(node.get(), text); }
  // What the getter answers for a cleared field.
  const char *cleared() const {
    return GetParam().set == cfg_node_set_enrollment_bundle ? "Global" : nullptr;
  }
  node_record node;
};
INSTANTIATE_TEST_SUITE_P(Field, NodeText, testing::ValuesIn(text_fields),
                         [](const auto &tested) { return std::string(tested.param.name); });

TEST_P(NodeText, KeepsACopyOfWhatIsSet) {
  std::string text = "one";
  EXPECT_EQ(1, set_to(text.c_str()));
  text = "two";
  EXPECT_STREQ("one", get());
  EXPECT_EQ(1, set_to(text.c_str()));
  EXPECT_STREQ("two", get());
}

TEST_P(NodeText, EmptyAndNullTextsClear) {
  EXPECT_EQ(1, set_to("x"));
  EXPECT_EQ(1, set_to(""));
  EXPECT_STREQ(cleared(), get());
  EXPECT_EQ(1, set_to("x"));
  EXPECT_EQ(1, set_to(nullptr));
  EXPECT_STREQ(cleared(), get());
}

TEST_P(NodeText, SettingThePointerThatIsHeldAnswersZeroAndKeepsTheText) {
  EXPECT_EQ(1, set_to("x"));
  const char *held = get();
  EXPECT_EQ(0, set_to(held));
  EXPECT_EQ(held, get());
  EXPECT_STREQ("x", get());
}

TEST_P(NodeText, SettingNullWhereNothingIsHeldAnswersZero) { EXPECT_EQ(0, set_to(nullptr)); }

TEST_P(NodeText, SettingAnEqualTextElsewhereAnswersOne) {
  EXPECT_EQ(1, set_to("x"));
  const std::string equal = "x";
  EXPECT_EQ(1, set_to(equal.c_str()));
  EXPECT_STREQ("x", get());
}

TEST_P(NodeText, NullRecordsGiveZeroAndNull) {
  EXPECT_EQ(0, GetParam().set(nullptr, "x"));
  EXPECT_EQ(0, GetParam().set(nullptr, nullptr));
  EXPECT_EQ(nullptr, GetParam().get(nullptr));
}

TEST_P(NodeText, NoOtherFieldIsTouched) {
  for (const text_field &field : text_fields) EXPECT_EQ(1, field.set(node.get(), field.name));
  EXPECT_EQ(1, set_to("changed"));
  for (const text_field &field : text_fields)
    EXPECT_STREQ(field.name == GetParam().name ? "changed" : field.name, field.get(node.get()));
}

TEST_P(NodeText, TheStoreIsUntouchedUntilASave) {
  EXPECT_EQ(1, set_to("x"));
  EXPECT_EQ(0, cfg_has_changes(store));
}

class NodeFields : public records::NodeTest {
 protected:
  void SetUp() override {
    NodeTest::SetUp();
    node.reset(cfg_new_node(store));
    ASSERT_NE(nullptr, node);
  }
  node_record node;
};

TEST_F(NodeFields, ANewRecordHasNothing) {
  const cfg_node *fresh = node.get();
  for (auto *get :
       {cfg_node_get_uuid, cfg_node_get_name, cfg_node_get_product, cfg_node_get_description,
        cfg_node_get_status, cfg_node_get_bundle_id, cfg_node_get_mac_address, cfg_node_get_fhvpn_address,
        cfg_node_get_firmware_version, cfg_node_get_model, cfg_node_get_serial_number,
        cfg_node_get_connection_method, cfg_node_get_address, cfg_node_get_username, cfg_node_get_password,
        cfg_node_get_cert_cn, cfg_node_get_cert, cfg_node_get_key})
    EXPECT_EQ(nullptr, get(fresh));
  EXPECT_EQ(nullptr, cfg_node_get_cert_object(fresh));
  EXPECT_EQ(0U, cfg_node_get_ssh_port(fresh));
  EXPECT_EQ(0U, cfg_node_get_base_port(fresh));
  EXPECT_EQ(0, cfg_node_get_approved(fresh));
  EXPECT_EQ(0, cfg_node_get_port_count_field(fresh));
  EXPECT_EQ(nullptr, cfg_node_get_port_label(fresh, 0));
  EXPECT_EQ(0, cfg_node_get_etag_count(node.get()));
  EXPECT_EQ("{}", dump(""));
}

TEST_F(NodeFields, NullRecordsGiveZeroAndNull) {
  for (auto *get : {cfg_node_get_uuid, cfg_node_get_product, cfg_node_get_connection_method,
                    cfg_node_get_address, cfg_node_get_username, cfg_node_get_password, cfg_node_get_cert_cn,
                    cfg_node_get_cert, cfg_node_get_key})
    EXPECT_EQ(nullptr, get(nullptr));
  EXPECT_EQ(nullptr, cfg_node_get_cert_object(nullptr));
  EXPECT_EQ(0U, cfg_node_get_ssh_port(nullptr));
  EXPECT_EQ(0, cfg_node_set_ssh_port(nullptr, 22));
  EXPECT_EQ(0, cfg_node_get_approved(nullptr));
  EXPECT_EQ(0, cfg_node_set_approved(nullptr, 1));
  EXPECT_EQ(0U, cfg_node_get_base_port(nullptr));
  cfg_node_set_base_port(nullptr, 1);
  EXPECT_EQ(0, cfg_node_set_connection_method(nullptr, "ssh"));
  EXPECT_EQ(0, cfg_node_set_credentials(nullptr, "u", "p"));
  EXPECT_EQ(0, cfg_node_get_port_count_field(nullptr));
  EXPECT_EQ(0, cfg_node_set_port_count_field(nullptr, 2));
  EXPECT_EQ(nullptr, cfg_node_get_port_label(nullptr, 0));
  EXPECT_EQ(0, cfg_node_set_port_label(nullptr, 0, "x"));
  cfg_node_free(nullptr);
}

TEST_F(NodeFields, NumbersAreKeptAsTheyAreSet) {
  for (const uint32_t value : {0U, 22U, 65536U, 4294967295U}) {
    EXPECT_EQ(1, cfg_node_set_ssh_port(node.get(), value));
    EXPECT_EQ(value, cfg_node_get_ssh_port(node.get()));
    cfg_node_set_base_port(node.get(), value);
    EXPECT_EQ(value, cfg_node_get_base_port(node.get()));
  }
  for (const int32_t value : {1, 0, 2, -1}) {
    EXPECT_EQ(1, cfg_node_set_approved(node.get(), value));
    EXPECT_EQ(value, cfg_node_get_approved(node.get()));
  }
}

TEST_F(NodeFields, TheConnectionMethodIsCopiedAndClearedByNull) {
  EXPECT_EQ(1, cfg_node_set_connection_method(node.get(), "ssh"));
  EXPECT_STREQ("ssh", cfg_node_get_connection_method(node.get()));
  EXPECT_EQ(1, cfg_node_set_connection_method(node.get(), "telnet"));
  EXPECT_STREQ("telnet", cfg_node_get_connection_method(node.get()));
  EXPECT_EQ(1, cfg_node_set_connection_method(node.get(), nullptr));
  EXPECT_EQ(nullptr, cfg_node_get_connection_method(node.get()));
}

TEST_F(NodeFields, WhatANodeIsReachedWithIsKeptAsItIsGivenTheEmptyTextToo) {
  EXPECT_EQ(1, cfg_node_set_connection_method(node.get(), ""));
  EXPECT_STREQ("", cfg_node_get_connection_method(node.get()));
  EXPECT_EQ(1, cfg_node_set_credentials(node.get(), "u", ""));
  EXPECT_STREQ("u", cfg_node_get_username(node.get()));
  EXPECT_STREQ("", cfg_node_get_password(node.get()));
  EXPECT_EQ(1, cfg_node_set_credentials(node.get(), "", "p"));
  EXPECT_STREQ("", cfg_node_get_username(node.get()));
  EXPECT_STREQ("p", cfg_node_get_password(node.get()));
}

TEST_F(NodeFields, CredentialsAreReplacedTogether) {
  EXPECT_EQ(1, cfg_node_set_credentials(node.get(), "u", "p"));
  EXPECT_EQ(1, cfg_node_set_credentials(node.get(), "v", nullptr));
  EXPECT_STREQ("v", cfg_node_get_username(node.get()));
  EXPECT_EQ(nullptr, cfg_node_get_password(node.get()));
  EXPECT_EQ(1, cfg_node_set_credentials(node.get(), nullptr, "q"));
  EXPECT_EQ(nullptr, cfg_node_get_username(node.get()));
  EXPECT_STREQ("q", cfg_node_get_password(node.get()));
}

TEST_F(NodeFields, TheTextsThatAreHeldMayBeSetAgain) {
  cfg_node_set_connection_method(node.get(), "ssh");
  EXPECT_EQ(1, cfg_node_set_connection_method(node.get(), cfg_node_get_connection_method(node.get())));
  EXPECT_STREQ("ssh", cfg_node_get_connection_method(node.get()));
  cfg_node_set_credentials(node.get(), "u", "p");
  EXPECT_EQ(1, cfg_node_set_credentials(node.get(), cfg_node_get_username(node.get()),
                                        cfg_node_get_password(node.get())));
  EXPECT_STREQ("u", cfg_node_get_username(node.get()));
  EXPECT_STREQ("p", cfg_node_get_password(node.get()));
  cfg_node_set_port_count_field(node.get(), 1);
  EXPECT_EQ(1, cfg_node_set_port_label(node.get(), 0, cfg_node_get_port_label(node.get(), 0)));
  EXPECT_STREQ("Port 1", cfg_node_get_port_label(node.get(), 0));
}

TEST_F(NodeFields, UserNameAndPasswordMayBeExchanged) {
  cfg_node_set_credentials(node.get(), "u", "p");
  EXPECT_EQ(1, cfg_node_set_credentials(node.get(), cfg_node_get_password(node.get()),
                                        cfg_node_get_username(node.get())));
  EXPECT_STREQ("p", cfg_node_get_username(node.get()));
  EXPECT_STREQ("u", cfg_node_get_password(node.get()));
}

TEST_F(NodeFields, APortCountOfThreeGivesLabelsPort1ToPort3) {
  EXPECT_EQ(1, cfg_node_set_port_count_field(node.get(), 3));
  EXPECT_EQ(3, cfg_node_get_port_count_field(node.get()));
  EXPECT_STREQ("Port 1", cfg_node_get_port_label(node.get(), 0));
  EXPECT_STREQ("Port 2", cfg_node_get_port_label(node.get(), 1));
  EXPECT_STREQ("Port 3", cfg_node_get_port_label(node.get(), 2));
  EXPECT_EQ(nullptr, cfg_node_get_port_label(node.get(), 3));
  EXPECT_EQ(nullptr, cfg_node_get_port_label(node.get(), -1));
}

TEST_F(NodeFields, ANewPortCountMakesAllLabelsAfresh) {
  cfg_node_set_port_count_field(node.get(), 2);
  cfg_node_set_port_label(node.get(), 0, "mine");
  EXPECT_EQ(1, cfg_node_set_port_count_field(node.get(), 2));
  EXPECT_STREQ("Port 1", cfg_node_get_port_label(node.get(), 0));
  EXPECT_EQ(1, cfg_node_set_port_count_field(node.get(), 12));
  EXPECT_STREQ("Port 12", cfg_node_get_port_label(node.get(), 11));
  EXPECT_EQ(1, cfg_node_set_port_count_field(node.get(), 1));
  EXPECT_EQ(nullptr, cfg_node_get_port_label(node.get(), 1));
}

TEST_F(NodeFields, PortCountsBelowOneLeaveNoLabels) {
  for (const int32_t count : {0, -1, INT32_MIN}) {
    cfg_node_set_port_count_field(node.get(), 2);
    EXPECT_EQ(1, cfg_node_set_port_count_field(node.get(), count));
    EXPECT_EQ(count, cfg_node_get_port_count_field(node.get()));
    EXPECT_EQ(nullptr, cfg_node_get_port_label(node.get(), 0));
    EXPECT_EQ(0, cfg_node_set_port_label(node.get(), 0, "x"));
  }
}

TEST_F(NodeFields, PortCountsAbove65536AreRefusedAndChangeNothing) {
  cfg_node_set_port_count_field(node.get(), 1);
  for (const int32_t count : {65537, INT32_MAX}) {
    EXPECT_EQ(0, cfg_node_set_port_count_field(node.get(), count));
    EXPECT_EQ(1, cfg_node_get_port_count_field(node.get()));
    EXPECT_STREQ("Port 1", cfg_node_get_port_label(node.get(), 0));
  }
  EXPECT_EQ(1, cfg_node_set_port_count_field(node.get(), 65536));
  EXPECT_STREQ("Port 65536", cfg_node_get_port_label(node.get(), 65535));
}

TEST_F(NodeFields, ALabelIsReplacedByACopy) {
  cfg_node_set_port_count_field(node.get(), 2);
  std::string label = "router";
  EXPECT_EQ(1, cfg_node_set_port_label(node.get(), 1, label.c_str()));
  label = "switch";
  EXPECT_STREQ("router", cfg_node_get_port_label(node.get(), 1));
  EXPECT_STREQ("Port 1", cfg_node_get_port_label(node.get(), 0));
}

TEST_F(NodeFields, LabelsOutsideTheCountAndNullTextsAreIgnored) {
  cfg_node_set_port_count_field(node.get(), 2);
  for (const int32_t index : {-1, 2, INT32_MIN, INT32_MAX})
    EXPECT_EQ(0, cfg_node_set_port_label(node.get(), index, "x")) << index;
  EXPECT_EQ(0, cfg_node_set_port_label(node.get(), 0, nullptr));
  EXPECT_STREQ("Port 1", cfg_node_get_port_label(node.get(), 0));
  EXPECT_STREQ("Port 2", cfg_node_get_port_label(node.get(), 1));
}

TEST_F(NodeFields, ARecordWithoutHandleCanBeFilledAndRead) {
  const node_record homeless(cfg_new_node(nullptr));
  ASSERT_NE(nullptr, homeless);
  EXPECT_EQ(1, cfg_node_set_name(homeless.get(), "n"));
  EXPECT_STREQ("n", cfg_node_get_name(homeless.get()));
  EXPECT_EQ(0, cfg_node_get_etag_count(homeless.get()));
  EXPECT_EQ(nullptr, cfg_node_get_etag(homeless.get(), 0));
  EXPECT_STREQ("Global", cfg_node_get_enrollment_bundle(homeless.get()));
}

}  // namespace
