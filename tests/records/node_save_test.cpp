// What a node's save writes, deletes, and leaves alone; the generic writers.
#include "node_fixture.hpp"

namespace {

using records::node_record;
using records::unwritable;
using records::unwritable_id;

class NodeSave : public records::NodeTest {
 protected:
  // A committed, loaded node of a product kind.
  node_record saved_node(const char *product) {
    add_node("n", product);
    commit_and_reopen();
    return load("nodes-1");
  }
  std::string stored() { return dump(cfg_get_by_id(store, "nodes-1")); }
  static void fill(cfg_node *node) {
    cfg_node_set_name(node, "N");
    cfg_node_set_bundle_id(node, "enrollment_bundles-1");
    cfg_node_set_description(node, "D");
    cfg_node_set_status(node, "S");
    cfg_node_set_mac_address(node, "MA");
    cfg_node_set_fhvpn_address(node, "F");
    cfg_node_set_firmware_version(node, "V");
    cfg_node_set_model(node, "M");
    cfg_node_set_serial_number(node, "SN");
    cfg_node_set_enrollment_bundle(node, "never saved");
    cfg_node_set_ssh_port(node, 2200);
    cfg_node_set_approved(node, 1);
  }
};

TEST_F(NodeSave, ATarnwellNodeIsWrittenWithDescriptionVpnAddressAndSshPort) {
  const node_record node = saved_node("tarnwell");
  fill(node.get());
  EXPECT_EQ(1, cfg_node_save(node.get()));
  EXPECT_EQ(
      R"({approved=true bundle=&enrollment_bundles-1 description="D" fhvpn_address="F" firmware_version="V" )"
      R"(mac_address="MA" model="M" name="N" product="tarnwell" serial_number="SN" ssh={port=2200} status="S"})",
      stored());
}

TEST_F(NodeSave, OtherNodesAreWrittenWithoutDescriptionVpnAddressAndSshPort) {
  for (const char *product : {"acs6000", "acs8000", "cisco2900", "acs_classic", "generic", "other"}) {
    SCOPED_TRACE(product);
    cfg_elem *elem = add_node("n", product);
    const std::string id = id_of(elem);
    const node_record node = load(id);
    fill(node.get());
    EXPECT_EQ(1, cfg_node_save(node.get()));
    EXPECT_EQ(
        R"({approved=true bundle=&enrollment_bundles-1 firmware_version="V" mac_address="MA" model="M" )"
        R"(name="N" product=")" +
            std::string(product) + R"(" serial_number="SN" status="S"})",
        dump(cfg_get_by_id(store, id.c_str())));
  }
}

TEST_F(NodeSave, ANodeWithoutProductIsWrittenLikeTheOthers) {
  const node_record node = saved_node(nullptr);
  fill(node.get());
  EXPECT_EQ(1, cfg_node_save(node.get()));
  EXPECT_EQ(R"({approved=true bundle=&enrollment_bundles-1 firmware_version="V" mac_address="MA" model="M" )"
            R"(name="N" serial_number="SN" status="S"})",
            stored());
}

TEST_F(NodeSave, ClearedFieldsDeleteTheirKeys) {
  cfg_elem *elem = add_node("n", "tarnwell");
  for (const char *key :
       {"description", "mac_address", "fhvpn_address", "firmware_version", "model", "serial_number"})
    set(elem, key, "old");
  set_reference(elem, "bundle", "enrollment_bundles-1");
  commit_and_reopen();
  const node_record node = load("nodes-1");
  cfg_node_set_description(node.get(), "");
  cfg_node_set_mac_address(node.get(), nullptr);
  cfg_node_set_fhvpn_address(node.get(), "");
  cfg_node_set_firmware_version(node.get(), "");
  cfg_node_set_model(node.get(), "");
  cfg_node_set_serial_number(node.get(), "");
  cfg_node_set_bundle_id(node.get(), "");
  EXPECT_EQ(1, cfg_node_save(node.get()));
  EXPECT_EQ(R"({approved=false name="n" product="tarnwell" ssh={port=0} status="Enrolled"})", stored());
}

TEST_F(NodeSave, ClearedNameAndStatusDeleteTheirKeysToo) {
  const node_record node = saved_node("generic");
  cfg_node_set_name(node.get(), "");
  cfg_node_set_status(node.get(), "");
  EXPECT_EQ(1, cfg_node_save(node.get()));
  EXPECT_EQ(R"({approved=false product="generic"})", stored());
  EXPECT_EQ(nullptr, load("nodes-1"));
}

TEST_F(NodeSave, ADescriptionOfAnotherProductIsNeitherWrittenNorDeleted) {
  cfg_elem *elem = add_node("n", "generic");
  set(elem, "description", "kept");
  set(elem, "fhvpn_address", "kept");
  commit_and_reopen();
  const node_record node = load("nodes-1");
  cfg_node_set_description(node.get(), "");
  cfg_node_set_fhvpn_address(node.get(), "changed");
  EXPECT_EQ(1, cfg_node_save(node.get()));
  EXPECT_EQ(
      R"({approved=false description="kept" fhvpn_address="kept" name="n" product="generic" status="Enrolled"})",
      stored());
}

TEST_F(NodeSave, KeysOfOtherWritersAreLeftUntouched) {
  for (const char *product : {"tarnwell", "generic", "acs6000"}) {
    SCOPED_TRACE(product);
    cfg_elem *elem = add_node("n", product);
    for (const char *key :
         {"address", "username", "password", "connection_method", "package_password", "extra"})
      set(elem, key, "kept");
    set(elem, "port_count", 2);
    set(elem, "base_port", 7);
    set_reference(elem, "cert", "certificates-9");
    for (const char *key : {"port_labels", "users", "groups", "interfaces", "etags", "tags", "ports"})
      add(child_list(elem, key), "kept");
    set(child_map(elem, "auth"), "auth_type", "local");
    set(child_map(elem, "ssh"), "kept", "beside the port");
    const std::string id = id_of(elem);
    const node_record node = load(id);
    cfg_node_set_credentials(node.get(), "changed", "changed");
    cfg_node_set_connection_method(node.get(), "changed");
    cfg_node_set_base_port(node.get(), 99);
    cfg_node_set_port_count_field(node.get(), 5);
    EXPECT_EQ(1, cfg_node_save(node.get()));
    const bool tarnwell = std::string(product) == "tarnwell";
    EXPECT_EQ(
        std::string(R"({address="kept" approved=false auth={auth_type="local"} base_port=7 )") +
            R"(cert=&certificates-9 connection_method="kept" etags=["kept"] extra="kept" groups=["kept"] )" +
            R"(interfaces=["kept"] name="n" package_password="kept" password="kept" port_count=2 )" +
            R"(port_labels=["kept"] ports=["kept"] product=")" + product +
            R"(" ssh={kept="beside the port")" + (tarnwell ? " port=0" : "") +
            R"(} status="Enrolled" tags=["kept"] username="kept" users=["kept"]})",
        dump(cfg_get_by_id(store, id.c_str())));
  }
}

TEST_F(NodeSave, WritesOfTheRecordsOwnNodeOnly) {
  add_node("other", "tarnwell");
  add_node("n", "tarnwell");
  commit_and_reopen();
  const node_record node = load("nodes-2");
  fill(node.get());
  ASSERT_EQ(1, cfg_node_save(node.get()));
  for (const std::string &change : changes()) EXPECT_NE(std::string::npos, change.find(" nodes-2")) << change;
  commit_and_reopen();
  EXPECT_EQ(R"({name="other" product="tarnwell" status="Enrolled"})", dump(cfg_get_by_id(store, "nodes-1")));
  EXPECT_STREQ("N", cfg_node_get_name(load("nodes-2").get()));
}

TEST_F(NodeSave, SavingWhatWasLoadedAndCommittedGivesTheSameRecordAgain) {
  const node_record node = saved_node("tarnwell");
  fill(node.get());
  cfg_node_set_ssh_port(node.get(), 4294967295U);
  ASSERT_EQ(1, cfg_node_save(node.get()));
  commit_and_reopen();
  const node_record again = load("nodes-1");
  ASSERT_NE(nullptr, again);
  EXPECT_STREQ("N", cfg_node_get_name(again.get()));
  EXPECT_STREQ("enrollment_bundles-1", cfg_node_get_bundle_id(again.get()));
  EXPECT_STREQ("D", cfg_node_get_description(again.get()));
  EXPECT_STREQ("S", cfg_node_get_status(again.get()));
  EXPECT_STREQ("MA", cfg_node_get_mac_address(again.get()));
  EXPECT_STREQ("F", cfg_node_get_fhvpn_address(again.get()));
  EXPECT_STREQ("V", cfg_node_get_firmware_version(again.get()));
  EXPECT_STREQ("M", cfg_node_get_model(again.get()));
  EXPECT_STREQ("SN", cfg_node_get_serial_number(again.get()));
  EXPECT_EQ(4294967295U, cfg_node_get_ssh_port(again.get()));
  EXPECT_EQ(1, cfg_node_get_approved(again.get()));
  EXPECT_STREQ("Global", cfg_node_get_enrollment_bundle(again.get()));
}

TEST_F(NodeSave, AnyApprovalButZeroIsStoredAsTrue) {
  const node_record node = saved_node("generic");
  for (const int32_t approved : {2, -1}) {
    cfg_node_set_approved(node.get(), approved);
    ASSERT_EQ(1, cfg_node_save(node.get()));
    EXPECT_EQ(1, cfg_node_get_approved(load("nodes-1").get()));
  }
  cfg_node_set_approved(node.get(), 0);
  ASSERT_EQ(1, cfg_node_save(node.get()));
  EXPECT_EQ(0, cfg_node_get_approved(load("nodes-1").get()));
}

TEST_F(NodeSave, NeverCreatesAnElement) {
  add_node("n");
  commit_and_reopen();
  const node_record fresh(cfg_new_node(store));
  fill(fresh.get());
  EXPECT_EQ(0, cfg_node_save(fresh.get()));
  const node_record deleted = load("nodes-1");
  ASSERT_TRUE(cfg_delete_element(store, cfg_get_by_id(store, "nodes-1")));
  EXPECT_EQ(0, cfg_node_save(deleted.get()));
  EXPECT_EQ("{nodes=[]}", dump(""));
}

TEST_F(NodeSave, AReadOnlyHandleRefuses) {
  add_node("n", "tarnwell");
  commit();
  const records::store_handle reader = open(CFG_OPEN_READ_ONLY);
  const node_record node(cfg_get_node_by_id(reader.get(), "nodes-1"));
  ASSERT_NE(nullptr, node);
  EXPECT_EQ(0, cfg_node_save(node.get()));
}

// The texts in the order in which they are written, and what a save that fails at each has written before.
TEST_F(NodeSave, StopsAtTheFirstFailedWriteAndKeepsTheEarlierOnes) {
  const struct {
    int (*spoil)(cfg_node *, const char *) noexcept;
    const char *stored;
  } steps[] = {
      {cfg_node_set_name, R"({name="n" product="tarnwell" status="Enrolled"})"},
      {cfg_node_set_bundle_id, R"({name="N" product="tarnwell" status="Enrolled"})"},
      {cfg_node_set_status,
       R"({bundle=&enrollment_bundles-1 name="N" product="tarnwell" status="Enrolled"})"},
      {cfg_node_set_description,
       R"({approved=true bundle=&enrollment_bundles-1 name="N" product="tarnwell" status="S"})"},
      {cfg_node_set_fhvpn_address,
       R"({approved=true bundle=&enrollment_bundles-1 description="D" name="N" product="tarnwell" status="S"})"},
      {cfg_node_set_firmware_version,
       R"({approved=true bundle=&enrollment_bundles-1 description="D" fhvpn_address="F" name="N" )"
       R"(product="tarnwell" ssh={port=2200} status="S"})"},
      {cfg_node_set_model,
       R"({approved=true bundle=&enrollment_bundles-1 description="D" fhvpn_address="F" firmware_version="V" )"
       R"(name="N" product="tarnwell" ssh={port=2200} status="S"})"},
      {cfg_node_set_serial_number,
       R"({approved=true bundle=&enrollment_bundles-1 description="D" fhvpn_address="F" firmware_version="V" )"
       R"(model="M" name="N" product="tarnwell" ssh={port=2200} status="S"})"},
      {cfg_node_set_mac_address,
       R"({approved=true bundle=&enrollment_bundles-1 description="D" fhvpn_address="F" firmware_version="V" )"
       R"(model="M" name="N" product="tarnwell" serial_number="SN" ssh={port=2200} status="S"})"},
  };
  for (const auto &step : steps) {
    const std::string id = id_of(add_node("n", "tarnwell"));
    const node_record node = load(id);
    fill(node.get());
    const std::string spoilt = step.spoil == cfg_node_set_bundle_id ? unwritable_id() : unwritable();
    ASSERT_EQ(1, step.spoil(node.get(), spoilt.c_str()));
    EXPECT_EQ(0, cfg_node_save(node.get()));
    EXPECT_EQ(step.stored, dump(cfg_get_by_id(store, id.c_str())));
  }
}

TEST_F(NodeSave, AnSshKeyThatIsNoMapFailsBeforeTheFirmwareVersion) {
  cfg_elem *elem = add_node("n", "tarnwell");
  set(elem, "ssh", "text");
  commit_and_reopen();
  const node_record node = load("nodes-1");
  fill(node.get());
  EXPECT_EQ(0, cfg_node_save(node.get()));
  EXPECT_EQ(R"({approved=true bundle=&enrollment_bundles-1 description="D" fhvpn_address="F" name="N" )"
            R"(product="tarnwell" ssh="text" status="S"})",
            stored());
}

class NodeWriters : public NodeSave {
 protected:
  void SetUp() override {
    NodeSave::SetUp();
    node.reset(cfg_new_node(store));
    map = map_at("m");
  }
  node_record node;
  cfg_elem *map = nullptr;
};

TEST_F(NodeWriters, WriteTheirKinds) {
  EXPECT_EQ(1, cfg_node_update_string(node.get(), map, "s", "text"));
  EXPECT_EQ(1, cfg_node_update_reference(node.get(), map, "r", "nodes-1"));
  EXPECT_EQ(1, cfg_node_update_blob(node.get(), map, "b", "a\0b", 3));
  using namespace std::string_literals;
  EXPECT_EQ("{b=<a\0b> r=&nodes-1 s=\"text\"}"s, dump("m"));
}

TEST_F(NodeWriters, ReplaceWhatIsThere) {
  set(map, "k", 5);
  EXPECT_EQ(1, cfg_node_update_string(node.get(), map, "k", "text"));
  EXPECT_EQ(R"({k="text"})", dump("m"));
  EXPECT_EQ(1, cfg_node_update_reference(node.get(), map, "k", "nodes-1"));
  EXPECT_EQ(R"({k=&nodes-1})", dump("m"));
  EXPECT_EQ(1, cfg_node_update_blob(node.get(), map, "k", "x", 1));
  EXPECT_EQ(R"({k=<x>})", dump("m"));
}

TEST_F(NodeWriters, NullValuesDeleteTheKeyAndGiveOneAlsoWhenItIsAbsent) {
  for (int round = 0; round < 2; ++round) {
    EXPECT_EQ(1, cfg_node_update_string(node.get(), map, "s", nullptr));
    EXPECT_EQ(1, cfg_node_update_reference(node.get(), map, "r", nullptr));
    EXPECT_EQ(1, cfg_node_update_blob(node.get(), map, "b", nullptr, 7));
    EXPECT_EQ("{}", dump("m"));
    for (const char *key : {"s", "r", "b"}) set(map, key, "x");
  }
}

TEST_F(NodeWriters, AnEmptyTextIsWrittenAsItIs) {
  EXPECT_EQ(1, cfg_node_update_string(node.get(), map, "s", ""));
  EXPECT_EQ(R"({s=""})", dump("m"));
}

TEST_F(NodeWriters, ANullNodeGivesZeroAndChangesNothing) {
  set(map, "k", "kept");
  EXPECT_EQ(0, cfg_node_update_string(nullptr, map, "k", "text"));
  EXPECT_EQ(0, cfg_node_update_string(nullptr, map, "k", nullptr));
  EXPECT_EQ(0, cfg_node_update_reference(nullptr, map, "k", "nodes-1"));
  EXPECT_EQ(0, cfg_node_update_reference(nullptr, map, "k", nullptr));
  EXPECT_EQ(0, cfg_node_update_blob(nullptr, map, "k", "x", 1));
  EXPECT_EQ(0, cfg_node_update_blob(nullptr, map, "k", nullptr, 0));
  EXPECT_EQ(R"({k="kept"})", dump("m"));
}

TEST_F(NodeWriters, ANullMapAndAFailedWriteGiveZero) {
  EXPECT_EQ(0, cfg_node_update_string(node.get(), nullptr, "k", "text"));
  EXPECT_EQ(0, cfg_node_update_reference(node.get(), nullptr, "k", "nodes-1"));
  EXPECT_EQ(0, cfg_node_update_blob(node.get(), nullptr, "k", "x", 1));
  EXPECT_EQ(0, cfg_node_update_string(node.get(), map, "k", unwritable().c_str()));
  EXPECT_EQ(0, cfg_node_update_reference(node.get(), map, "k", unwritable_id().c_str()));
  EXPECT_EQ(0, cfg_node_update_blob(node.get(), map, "k", unwritable().data(), unwritable().size()));
  EXPECT_EQ("{}", dump("m"));
}

}  // namespace
