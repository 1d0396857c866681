// Saving, loading and deleting enrolments.
#include "enrollment_fixture.hpp"

namespace {

using records::enrollment_record;
using records::node_record;
using records::unwritable;

const char *const by_credentials[] = {"acs6000", "acs8000", "cisco2900", "acs_classic"};

void fill(cfg_enrollment *enrollment) {
  cfg_enrollment_set_name(enrollment, "N");
  cfg_enrollment_set_address(enrollment, "A");
  cfg_enrollment_set_credentials(enrollment, "U", "P");
  cfg_enrollment_set_connection_method(enrollment, "ssh");
  cfg_enrollment_set_base_port(enrollment, 7001);
  cfg_enrollment_set_port_count_field(enrollment, 2);
  cfg_enrollment_set_port_label(enrollment, 1, "switch");
  cfg_enrollment_set_auto_approve(enrollment, 1);
}

class EnrollmentSave : public records::EnrollmentTest {
 protected:
  void SetUp() override {
    EnrollmentTest::SetUp();
    list_at("nodes");
    commit();
  }
  enrollment_record filled(const char *product) {
    enrollment_record enrollment = make(product);
    fill(enrollment.get());
    return enrollment;
  }
  int32_t pending() {
    int32_t size = -1;
    EXPECT_TRUE(cfg_list_future_size(cfg_get_by_path(store, "nodes"), &size));
    return size;
  }
};

TEST_F(EnrollmentSave, ATarnwellNodeIsNamedTempnameBeforeTheCommit) {
  const enrollment_record enrollment = filled("tarnwell");
  EXPECT_EQ(1, cfg_enrollment_save(enrollment.get()));
  EXPECT_EQ('{', cfg_enrollment_get_uuid(enrollment.get())[0]);
  EXPECT_EQ(std::string(R"({approved=true name="tempname" package_password=")") +
                cfg_enrollment_get_package_password(enrollment.get()) +
                R"(" product="tarnwell" ssh={} status="Pending"})",
            stored(enrollment));
}

TEST_F(EnrollmentSave, ATarnwellNodeIsNamedByItsIdOnceItIsCommittedAndSavedAgain) {
  const enrollment_record enrollment = filled("tarnwell");
  ASSERT_EQ(1, cfg_enrollment_save(enrollment.get()));
  commit();
  EXPECT_STREQ("tempname", cfg_node_get_name(load("nodes-1").get()));
  ASSERT_STREQ("nodes-1", cfg_enrollment_get_uuid(enrollment.get()));
  EXPECT_EQ(1, cfg_enrollment_save(enrollment.get()));
  EXPECT_STREQ("nodes-1", cfg_node_get_name(load("nodes-1").get()));
  commit_and_reopen();
  EXPECT_EQ(1, cfg_get_nodes_count(store));
}

TEST_F(EnrollmentSave, SavingAgainBeforeTheCommitUsesTheSameElementAndTheNameTempname) {
  const enrollment_record enrollment = filled("tarnwell");
  ASSERT_EQ(1, cfg_enrollment_save(enrollment.get()));
  cfg_enrollment_set_status(enrollment.get(), "Second");
  ASSERT_EQ(1, cfg_enrollment_save(enrollment.get()));
  EXPECT_EQ(1, pending());
  const node_record node = load(cfg_enrollment_get_uuid(enrollment.get()));
  EXPECT_STREQ("tempname", cfg_node_get_name(node.get()));
  EXPECT_STREQ("Second", cfg_node_get_status(node.get()));
}

TEST_F(EnrollmentSave, ANewElementIsPendingUntilTheCommit) {
  for (const char *product : {"tarnwell", "acs6000", "generic", "unknown"})
    EXPECT_EQ(1, cfg_enrollment_save(filled(product).get()));
  EXPECT_EQ(4, pending());
  EXPECT_EQ(0, cfg_get_nodes_count(store));
  EXPECT_EQ(nullptr, node_record(cfg_get_node_by_name(store, "N")));
  commit();
  EXPECT_EQ(0, pending());
  EXPECT_EQ(4, cfg_get_nodes_count(store));
}

TEST_F(EnrollmentSave, TheProvisionalIdIsReplacedByTheFinalOneAfterTheCommit) {
  const enrollment_record enrollment = filled("generic");
  ASSERT_EQ(1, cfg_enrollment_save(enrollment.get()));
  const std::string provisional = cfg_enrollment_get_uuid(enrollment.get());
  EXPECT_EQ('{', provisional[0]);
  EXPECT_EQ(provisional, cfg_enrollment_get_uuid(enrollment.get()));
  commit();
  EXPECT_STREQ("nodes-1", cfg_enrollment_get_uuid(enrollment.get()));
  EXPECT_STREQ("nodes-1", cfg_enrollment_get_uuid(enrollment.get()));
}

TEST_F(EnrollmentSave, SavingAfterTheCommitFindsTheElementWithoutAskingForTheIdFirst) {
  const enrollment_record enrollment = filled("acs6000");
  ASSERT_EQ(1, cfg_enrollment_save(enrollment.get()));
  commit();
  cfg_enrollment_set_name(enrollment.get(), "again");
  EXPECT_EQ(1, cfg_enrollment_save(enrollment.get()));
  EXPECT_EQ(0, pending());
  EXPECT_STREQ("again", cfg_node_get_name(load("nodes-1").get()));
}

TEST_F(EnrollmentSave, TheIdOfAnElementThatIsGoneStaysAsItWas) {
  const enrollment_record enrollment = filled("generic");
  ASSERT_EQ(1, cfg_enrollment_save(enrollment.get()));
  commit();
  ASSERT_STREQ("nodes-1", cfg_enrollment_get_uuid(enrollment.get()));
  cfg_enrollment_delete(enrollment.get());
  EXPECT_STREQ("nodes-1", cfg_enrollment_get_uuid(enrollment.get()));
  EXPECT_EQ(0, cfg_enrollment_save(enrollment.get()));
}

TEST_F(EnrollmentSave, NodesReachedByCredentialsAreWrittenWithThem) {
  for (const char *product : by_credentials) {
    const enrollment_record enrollment = filled(product);
    EXPECT_EQ(1, cfg_enrollment_save(enrollment.get()));
    EXPECT_EQ(R"({address="A" approved=true name="N" password="P" product=")" + std::string(product) +
                  R"(" status="Pending" username="U"})",
              stored(enrollment));
  }
}

TEST_F(EnrollmentSave, AGenericNodeReachedBySshIsWrittenWithCredentialsAndPorts) {
  const enrollment_record enrollment = filled("generic");
  EXPECT_EQ(1, cfg_enrollment_save(enrollment.get()));
  commit();
  EXPECT_EQ(
      R"({address="A" approved=true base_port=7001 connection_method="ssh" name="N" password="P" port_count=2 )"
      R"(port_labels=["Port 1" "switch"] product="generic" status="Pending" username="U"})",
      stored(enrollment));
}

TEST_F(EnrollmentSave, AGenericNodeReachedOtherwiseIsWrittenWithoutCredentials) {
  for (const char *method : {"telnet", "SSH", "ssh2", "ss", "ssh "}) {
    const enrollment_record enrollment = filled("generic");
    cfg_enrollment_set_connection_method(enrollment.get(), method);
    EXPECT_EQ(1, cfg_enrollment_save(enrollment.get()));
    commit();
    EXPECT_EQ(
        R"({address="A" approved=true base_port=7001 connection_method=")" + std::string(method) +
            R"(" name="N" port_count=2 port_labels=["Port 1" "switch"] product="generic" status="Pending"})",
        stored(enrollment));
  }
}

TEST_F(EnrollmentSave, AGenericNodeWithoutMethodIsNotReachedBySsh) {
  const enrollment_record enrollment = filled("generic");
  cfg_enrollment_set_connection_method(enrollment.get(), nullptr);
  EXPECT_EQ(1, cfg_enrollment_save(enrollment.get()));
  commit();
  EXPECT_EQ(R"({address="A" approved=true base_port=7001 name="N" port_count=2 )"
            R"(port_labels=["Port 1" "switch"] product="generic" status="Pending"})",
            stored(enrollment));
}

TEST_F(EnrollmentSave, CredentialsOfAnEarlierSshMethodAreLeftInTheStore) {
  const enrollment_record enrollment = filled("generic");
  ASSERT_EQ(1, cfg_enrollment_save(enrollment.get()));
  cfg_enrollment_set_connection_method(enrollment.get(), "telnet");
  cfg_enrollment_set_credentials(enrollment.get(), "changed", "changed");
  ASSERT_EQ(1, cfg_enrollment_save(enrollment.get()));
  commit();
  const node_record node = load("nodes-1");
  EXPECT_STREQ("U", cfg_node_get_username(node.get()));
  EXPECT_STREQ("P", cfg_node_get_password(node.get()));
}

TEST_F(EnrollmentSave, PortLabelsAreReplacedAsAWhole) {
  const auto labels = [&] {
    return dump(cfg_get_child_by_path(store, cfg_get_by_id(store, "nodes-1"), "port_labels"));
  };
  const enrollment_record enrollment = filled("generic");
  ASSERT_EQ(1, cfg_enrollment_save(enrollment.get()));
  commit();
  cfg_enrollment_set_port_count_field(enrollment.get(), 1);
  ASSERT_EQ(1, cfg_enrollment_save(enrollment.get()));
  commit();
  EXPECT_EQ(R"(["Port 1"])", labels());
  cfg_enrollment_set_port_count_field(enrollment.get(), 0);
  ASSERT_EQ(1, cfg_enrollment_save(enrollment.get()));
  commit();
  EXPECT_EQ("[]", labels());
}

TEST_F(EnrollmentSave, OtherProductsAreWrittenWithStatusProductAndApprovalOnly) {
  for (const char *product : {"unknown", "Generic", "TARNWELL"}) {
    const enrollment_record enrollment = filled(product);
    EXPECT_EQ(1, cfg_enrollment_save(enrollment.get()));
    EXPECT_EQ(R"({approved=true product=")" + std::string(product) + R"(" status="Pending"})",
              stored(enrollment));
  }
  for (const char *product : {static_cast<const char *>(nullptr), ""}) {
    const enrollment_record enrollment = filled(product);
    EXPECT_EQ(1, cfg_enrollment_save(enrollment.get()));
    EXPECT_EQ(R"({approved=true status="Pending"})", stored(enrollment));
  }
}

TEST_F(EnrollmentSave, ClearedTextsDeleteTheirKeys) {
  const enrollment_record credentials = filled("acs8000");
  const enrollment_record generic = filled("generic");
  for (const enrollment_record *enrollment : {&credentials, &generic}) {
    ASSERT_EQ(1, cfg_enrollment_save(enrollment->get()));
    cfg_enrollment_set_name(enrollment->get(), nullptr);
    cfg_enrollment_set_address(enrollment->get(), "");
    cfg_enrollment_set_credentials(enrollment->get(), nullptr, "");
    cfg_enrollment_set_status(enrollment->get(), nullptr);
    EXPECT_EQ(1, cfg_enrollment_save(enrollment->get()));
  }
  EXPECT_EQ(R"({approved=true product="acs8000"})", stored(credentials));
  commit();
  EXPECT_EQ(
      R"({approved=true base_port=7001 connection_method="ssh" port_count=2 port_labels=["Port 1" "switch"] )"
      R"(product="generic"})",
      stored(generic));
}

TEST_F(EnrollmentSave, DeletingThePackagePasswordAndSavingRemovesTheKey) {
  const enrollment_record enrollment = make("tarnwell");
  ASSERT_EQ(1, cfg_enrollment_save(enrollment.get()));
  commit();
  ASSERT_NE(std::string::npos, stored(enrollment).find("package_password"));
  cfg_enrollment_delete_package_password(enrollment.get());
  EXPECT_EQ(1, cfg_enrollment_save(enrollment.get()));
  EXPECT_EQ(R"({approved=false name="nodes-1" product="tarnwell" ssh={} status="Pending"})",
            stored(enrollment));
}

TEST_F(EnrollmentSave, AnSshMapThatIsThereIsLeftAlone) {
  const enrollment_record enrollment = make("tarnwell");
  ASSERT_EQ(1, cfg_enrollment_save(enrollment.get()));
  set(cfg_simple_get_mapelem(store, cfg_get_by_id(store, cfg_enrollment_get_uuid(enrollment.get())), "ssh"),
      "port", 2222);
  ASSERT_EQ(1, cfg_enrollment_save(enrollment.get()));
  commit();
  EXPECT_EQ(2222U, cfg_node_get_ssh_port(load("nodes-1").get()));
}

TEST_F(EnrollmentSave, KeysOfOtherWritersAreLeftUntouched) {
  const enrollment_record enrollment = make("tarnwell");
  cfg_enrollment_delete_package_password(enrollment.get());
  ASSERT_EQ(1, cfg_enrollment_save(enrollment.get()));
  cfg_elem *elem = cfg_get_by_id(store, cfg_enrollment_get_uuid(enrollment.get()));
  set(elem, "description", "kept");
  set(elem, "address", "kept");
  set(elem, "auto_approve", "kept");
  set_reference(elem, "cert", "certificates-1");
  ASSERT_EQ(1, cfg_enrollment_save(enrollment.get()));
  EXPECT_EQ(R"({address="kept" approved=false auto_approve="kept" cert=&certificates-1 description="kept" )"
            R"(name="tempname" product="tarnwell" ssh={} status="Pending"})",
            stored(enrollment));
}

TEST_F(EnrollmentSave, ApprovalIsWrittenAsATruthValue) {
  const enrollment_record enrollment = make("unknown");
  for (const int32_t approve : {0, 1, 2, -1}) {
    cfg_enrollment_set_auto_approve(enrollment.get(), approve);
    ASSERT_EQ(1, cfg_enrollment_save(enrollment.get()));
    EXPECT_EQ(std::string("{approved=") + (approve != 0 ? "true" : "false") +
                  R"( product="unknown" status="Pending"})",
              stored(enrollment));
  }
}

TEST_F(EnrollmentSave, WithoutNodesNothingIsSavedAndTheRecordGetsNoId) {
  erase(cfg_root(store), "nodes");
  for (const char *product : {"tarnwell", "generic"}) {
    const enrollment_record enrollment = filled(product);
    EXPECT_EQ(0, cfg_enrollment_save(enrollment.get()));
    EXPECT_EQ(nullptr, cfg_enrollment_get_uuid(enrollment.get()));
    EXPECT_EQ("{}", dump(""));
    list_at("nodes");
    EXPECT_EQ(1, cfg_enrollment_save(enrollment.get()));
    erase(cfg_root(store), "nodes");
  }
}

TEST_F(EnrollmentSave, AReadOnlyHandleRefuses) {
  const records::store_handle reader = open(CFG_OPEN_READ_ONLY);
  const enrollment_record enrollment(cfg_enrollment_new(reader.get(), "generic"));
  EXPECT_EQ(0, cfg_enrollment_save(enrollment.get()));
}

// The texts in the order in which they are written; each save fails at one of them.
TEST_F(EnrollmentSave, StopsAtTheFirstFailedWriteAndKeepsTheEarlierOnes) {
  using setter = int (*)(cfg_enrollment *, const char *) noexcept;
  const setter username = [](cfg_enrollment *e, const char *text) noexcept {
    return cfg_enrollment_set_credentials(e, text, "P");
  };
  const setter password = [](cfg_enrollment *e, const char *text) noexcept {
    return cfg_enrollment_set_credentials(e, "U", text);
  };
  const struct {
    const char *product;
    setter spoil;
    const char *stored;
  } steps[] = {
      {"acs6000", cfg_enrollment_set_status, "{}"},
      {"acs6000", cfg_enrollment_set_name, R"({approved=true product="acs6000" status="Pending"})"},
      {"acs6000", cfg_enrollment_set_address,
       R"({approved=true name="N" product="acs6000" status="Pending"})"},
      {"acs6000", username, R"({address="A" approved=true name="N" product="acs6000" status="Pending"})"},
      {"acs6000", password,
       R"({address="A" approved=true name="N" product="acs6000" status="Pending" username="U"})"},
      {"generic", cfg_enrollment_set_status, "{}"},
      {"generic", cfg_enrollment_set_name, R"({approved=true product="generic" status="Pending"})"},
      {"generic", cfg_enrollment_set_address,
       R"({approved=true name="N" product="generic" status="Pending"})"},
      {"generic", cfg_enrollment_set_connection_method,
       R"({address="A" approved=true name="N" product="generic" status="Pending"})"},
      {"generic", username,
       R"({address="A" approved=true connection_method="ssh" name="N" product="generic" status="Pending"})"},
      {"generic", password,
       R"({address="A" approved=true connection_method="ssh" name="N" product="generic" status="Pending" )"
       R"(username="U"})"},
  };
  int number = 0;
  for (const auto &step : steps) {
    SCOPED_TRACE(number++);
    const enrollment_record enrollment = filled(step.product);
    ASSERT_EQ(1, step.spoil(enrollment.get(), unwritable().c_str()));
    EXPECT_EQ(0, cfg_enrollment_save(enrollment.get()));
    EXPECT_EQ(step.stored, stored(enrollment));
  }
  const enrollment_record enrollment = filled(unwritable().c_str());
  EXPECT_EQ(0, cfg_enrollment_save(enrollment.get()));
  EXPECT_EQ(R"({status="Pending"})", stored(enrollment));
}

TEST_F(EnrollmentSave, ALabelThatCannotBeWrittenFailsTheSave) {
  const enrollment_record enrollment = filled("generic");
  ASSERT_EQ(1, cfg_enrollment_set_port_label(enrollment.get(), 0, unwritable().c_str()));
  EXPECT_EQ(0, cfg_enrollment_save(enrollment.get()));
}

class EnrollmentLoad : public records::EnrollmentTest {
 protected:
  // An element with every key that any kind of enrolment reads.
  cfg_elem *add_full(const char *product) {
    cfg_elem *elem = add_node("N", product);
    set(elem, "status", "Enrolled");
    set_bool(elem, "auto_approve", true);
    set(elem, "package_password", "PP");
    for (const char *key : {"address", "username", "password", "connection_method"}) set(elem, key, key);
    set(elem, "port_count", 3);
    set(elem, "base_port", 7001);
    add(child_list(elem, "port_labels"), "first");
    set_reference(elem, "cert", id_of(add_certificate("cn")));
    return elem;
  }
  void add_ca(std::string_view bytes = "CA certificate") {
    set_blob(map_at("services.ca"), "certificate", bytes);
  }
  void expect_common(const enrollment_record &enrollment, const char *product) {
    ASSERT_NE(nullptr, enrollment);
    EXPECT_STREQ("nodes-1", cfg_enrollment_get_uuid(enrollment.get()));
    EXPECT_STREQ(product, cfg_enrollment_get_product(enrollment.get()));
    EXPECT_STREQ("N", cfg_enrollment_get_name(enrollment.get()));
    EXPECT_EQ("Enrolled", status_of(enrollment));
    EXPECT_EQ(1, cfg_enrollment_get_auto_approve(enrollment.get()));
    EXPECT_STREQ("certificate of cn", cfg_enrollment_get_cert(enrollment.get()));
    EXPECT_STREQ("key of cn", cfg_enrollment_get_key(enrollment.get()));
  }
  void expect_no_tarnwell_content(const enrollment_record &enrollment) {
    EXPECT_EQ(nullptr, cfg_enrollment_get_package_password(enrollment.get()));
    EXPECT_EQ(nullptr, cfg_enrollment_get_ca(enrollment.get()));
  }
  void expect_no_credentials(const enrollment_record &enrollment) {
    EXPECT_EQ(nullptr, cfg_enrollment_get_address(enrollment.get()));
    EXPECT_EQ(nullptr, cfg_enrollment_get_username(enrollment.get()));
    EXPECT_EQ(nullptr, cfg_enrollment_get_password(enrollment.get()));
  }
  void expect_no_generic_content(const enrollment_record &enrollment) {
    EXPECT_EQ(nullptr, cfg_enrollment_get_connection_method(enrollment.get()));
    EXPECT_EQ(0, cfg_enrollment_get_port_count_field(enrollment.get()));
    EXPECT_EQ(0U, cfg_enrollment_get_base_port(enrollment.get()));
    EXPECT_EQ(nullptr, cfg_enrollment_get_port_label(enrollment.get(), 0));
  }
};

TEST_F(EnrollmentLoad, ATarnwellEnrolmentHasPasswordAndCaCertificate) {
  add_full("tarnwell");
  add_ca();
  commit_and_reopen();
  const enrollment_record enrollment = load_enrollment("nodes-1");
  expect_common(enrollment, "tarnwell");
  EXPECT_STREQ("PP", cfg_enrollment_get_package_password(enrollment.get()));
  EXPECT_STREQ("CA certificate", cfg_enrollment_get_ca(enrollment.get()));
  expect_no_credentials(enrollment);
  expect_no_generic_content(enrollment);
}

TEST_F(EnrollmentLoad, ATarnwellEnrolmentCannotBeLoadedWithoutCaCertificate) {
  add_full("tarnwell");
  commit_and_reopen();
  EXPECT_EQ(nullptr, load_enrollment("nodes-1"));
  map_at("services.ca");
  EXPECT_EQ(nullptr, load_enrollment("nodes-1"));
  add_ca();
  EXPECT_NE(nullptr, load_enrollment("nodes-1"));
}

TEST_F(EnrollmentLoad, TheCaCertificateEndsWithItsLastByte) {
  add_full("tarnwell");
  add_ca(std::string_view("CA certificateXYZ", 14));
  commit_and_reopen();
  EXPECT_STREQ("CA certificate", cfg_enrollment_get_ca(load_enrollment("nodes-1").get()));
}

TEST_F(EnrollmentLoad, OtherVendorsEnrolmentsHaveCredentialsAndNothingElse) {
  for (const char *product : by_credentials) {
    SCOPED_TRACE(product);
    const std::string id = id_of(add_full(product));
    const enrollment_record enrollment = load_enrollment(id);
    ASSERT_NE(nullptr, enrollment);
    EXPECT_STREQ("address", cfg_enrollment_get_address(enrollment.get()));
    EXPECT_STREQ("username", cfg_enrollment_get_username(enrollment.get()));
    EXPECT_STREQ("password", cfg_enrollment_get_password(enrollment.get()));
    EXPECT_STREQ("certificate of cn", cfg_enrollment_get_cert(enrollment.get()));
    expect_no_tarnwell_content(enrollment);
    expect_no_generic_content(enrollment);
  }
}

TEST_F(EnrollmentLoad, AGenericEnrolmentHasCredentialsMethodAndPorts) {
  add_full("generic");
  commit_and_reopen();
  const enrollment_record enrollment = load_enrollment("nodes-1");
  expect_common(enrollment, "generic");
  EXPECT_STREQ("address", cfg_enrollment_get_address(enrollment.get()));
  EXPECT_STREQ("username", cfg_enrollment_get_username(enrollment.get()));
  EXPECT_STREQ("password", cfg_enrollment_get_password(enrollment.get()));
  EXPECT_STREQ("connection_method", cfg_enrollment_get_connection_method(enrollment.get()));
  EXPECT_EQ(3, cfg_enrollment_get_port_count_field(enrollment.get()));
  EXPECT_EQ(7001U, cfg_enrollment_get_base_port(enrollment.get()));
  EXPECT_STREQ("first", cfg_enrollment_get_port_label(enrollment.get(), 0));
  EXPECT_EQ(nullptr, cfg_enrollment_get_port_label(enrollment.get(), 1));
  EXPECT_EQ(nullptr, cfg_enrollment_get_port_label(enrollment.get(), 2));
  expect_no_tarnwell_content(enrollment);
}

TEST_F(EnrollmentLoad, OtherProductsHaveTheCommonFieldsOnly) {
  add_full("Tarnwell");
  commit_and_reopen();
  const enrollment_record enrollment = load_enrollment("nodes-1");
  expect_common(enrollment, "Tarnwell");
  expect_no_tarnwell_content(enrollment);
  expect_no_credentials(enrollment);
  expect_no_generic_content(enrollment);
}

TEST_F(EnrollmentLoad, AnElementWithoutAnyKeyLoads) {
  const enrollment_record enrollment = load_enrollment(id_of(entry_of("nodes")));
  ASSERT_NE(nullptr, enrollment);
  EXPECT_EQ(nullptr, cfg_enrollment_get_product(enrollment.get()));
  EXPECT_EQ(nullptr, cfg_enrollment_get_name(enrollment.get()));
  EXPECT_EQ("none", status_of(enrollment));
  EXPECT_EQ(0, cfg_enrollment_get_auto_approve(enrollment.get()));
  EXPECT_EQ(nullptr, cfg_enrollment_get_cert(enrollment.get()));
  EXPECT_EQ(nullptr, cfg_enrollment_get_key(enrollment.get()));
}

TEST_F(EnrollmentLoad, UnknownAndNullIdsAndHandlesGiveNothing) {
  add_full("generic");
  EXPECT_EQ(nullptr, load_enrollment("nodes-99"));
  EXPECT_EQ(nullptr, cfg_enrollment_get_by_id(store, nullptr));
  EXPECT_EQ(nullptr, cfg_enrollment_get_by_id(nullptr, "nodes-1"));
}

TEST_F(EnrollmentLoad, ApprovalIsReadFromAutoApproveAndWrittenToApproved) {
  cfg_elem *elem = add_node("N", "acs6000");
  set_bool(elem, "approved", true);
  set_bool(elem, "auto_approve", false);
  commit_and_reopen();
  enrollment_record enrollment = load_enrollment("nodes-1");
  EXPECT_EQ(0, cfg_enrollment_get_auto_approve(enrollment.get()));
  cfg_enrollment_set_auto_approve(enrollment.get(), 1);
  ASSERT_EQ(1, cfg_enrollment_save(enrollment.get()));
  EXPECT_EQ(R"({approved=true auto_approve=false name="N" product="acs6000" status="Enrolled"})",
            stored(enrollment));
  commit_and_reopen();
  EXPECT_EQ(0, cfg_enrollment_get_auto_approve(load_enrollment("nodes-1").get()));
  EXPECT_EQ(1, cfg_node_get_approved(load("nodes-1").get()));
  // An enrolment that is loaded and saved as it is takes the approval away again.
  enrollment = load_enrollment("nodes-1");
  ASSERT_EQ(1, cfg_enrollment_save(enrollment.get()));
  EXPECT_EQ(0, cfg_node_get_approved(load("nodes-1").get()));
}

TEST_F(EnrollmentLoad, ALoadedTarnwellEnrolmentSavesItsIdAsNameOverADisplayName) {
  add_full("tarnwell");
  add_ca();
  commit_and_reopen();
  const enrollment_record enrollment = load_enrollment("nodes-1");
  cfg_enrollment_set_name(enrollment.get(), "display name");
  ASSERT_EQ(1, cfg_enrollment_save(enrollment.get()));
  EXPECT_STREQ("nodes-1", cfg_node_get_name(load("nodes-1").get()));
}

TEST_F(EnrollmentLoad, WhatIsSavedIsLoadedAgain) {
  list_at("nodes");
  for (const char *product : {"generic", "acs_classic"}) {
    SCOPED_TRACE(product);
    const enrollment_record made = make(product);
    fill(made.get());
    ASSERT_EQ(1, cfg_enrollment_save(made.get()));
    commit();
    const enrollment_record loaded = load_enrollment(cfg_enrollment_get_uuid(made.get()));
    ASSERT_NE(nullptr, loaded);
    EXPECT_STREQ("N", cfg_enrollment_get_name(loaded.get()));
    EXPECT_STREQ("A", cfg_enrollment_get_address(loaded.get()));
    EXPECT_STREQ("U", cfg_enrollment_get_username(loaded.get()));
    EXPECT_STREQ("P", cfg_enrollment_get_password(loaded.get()));
    EXPECT_EQ("Pending", status_of(loaded));
    if (std::string(product) != "generic") continue;
    EXPECT_STREQ("ssh", cfg_enrollment_get_connection_method(loaded.get()));
    EXPECT_EQ(2, cfg_enrollment_get_port_count_field(loaded.get()));
    EXPECT_STREQ("Port 1", cfg_enrollment_get_port_label(loaded.get(), 0));
    EXPECT_STREQ("switch", cfg_enrollment_get_port_label(loaded.get(), 1));
  }
}

TEST_F(EnrollmentLoad, PortsWithoutLabelAreSavedWithoutOne) {
  add_full("generic");  // three ports, one label
  commit_and_reopen();
  const enrollment_record enrollment = load_enrollment("nodes-1");
  EXPECT_EQ(1, cfg_enrollment_save(enrollment.get()));
  commit_and_reopen();
  const enrollment_record again = load_enrollment("nodes-1");
  ASSERT_NE(nullptr, again);
  EXPECT_EQ(3, cfg_enrollment_get_port_count_field(again.get()));
  EXPECT_STREQ("first", cfg_enrollment_get_port_label(again.get(), 0));
}

TEST_F(EnrollmentLoad, DeletingRemovesTheElementAndKeepsTheRecord) {
  add_full("generic");
  add_node("other", "generic");
  commit_and_reopen();
  const enrollment_record enrollment = load_enrollment("nodes-1");
  cfg_enrollment_delete(enrollment.get());
  EXPECT_STREQ("N", cfg_enrollment_get_name(enrollment.get()));
  EXPECT_EQ(nullptr, cfg_get_by_id(store, "nodes-1"));
  cfg_enrollment_delete(enrollment.get());
  commit_and_reopen();
  EXPECT_EQ(1, cfg_get_nodes_count(store));
  EXPECT_STREQ("other", cfg_node_get_name(node_record(cfg_get_node_by_idx(store, 0)).get()));
  EXPECT_EQ("certificates-1", id_of(cfg_get_by_id(store, "certificates-1")));
}

TEST_F(EnrollmentLoad, DeletingAnUnsavedOrPendingEnrolmentLeavesNothing) {
  list_at("nodes");
  const enrollment_record unsaved = make("generic");
  cfg_enrollment_delete(unsaved.get());
  EXPECT_EQ("{nodes=[]}", dump(""));
  const enrollment_record pending = make("tarnwell");
  ASSERT_EQ(1, cfg_enrollment_save(pending.get()));
  cfg_enrollment_delete(pending.get());
  commit_and_reopen();
  EXPECT_EQ("{nodes=[]}", dump(""));
}

TEST_F(EnrollmentLoad, DeletingACommittedEnrolmentByItsProvisionalIdWorks) {
  list_at("nodes");
  const enrollment_record enrollment = make("generic");
  ASSERT_EQ(1, cfg_enrollment_save(enrollment.get()));
  commit();
  cfg_enrollment_delete(enrollment.get());
  commit_and_reopen();
  EXPECT_EQ("{nodes=[]}", dump(""));
}

}  // namespace
