// What a load takes from the store, for every product kind.
#include "node_fixture.hpp"

namespace {

using records::node_record;

class NodeLoad : public records::NodeTest {
 protected:
  // A node that has every key that any product kind reads.
  cfg_elem *add_full_node(const char *product) {
    cfg_elem *node = add_node("name", product);
    for (const char *key : {"description", "mac_address", "fhvpn_address", "firmware_version", "model",
                            "serial_number", "address", "username", "password", "connection_method"})
      set(node, key, (std::string("the ") + key).c_str());
    set_reference(node, "bundle", "enrollment_bundles-3");
    set_bool(node, "approved", true);
    set(child_map(node, "ssh"), "port", 2222);
    set(node, "port_count", 2);
    set(node, "base_port", 7001);
    cfg_elem *labels = child_list(node, "port_labels");
    add(labels, "first");
    add(labels, "second");
    cfg_elem *etag = cfg_new_map(store);
    set(etag, "name", "ports");
    set(etag, "version", 12);
    set(etag, "status", "current");
    add(child_list(node, "etags"), etag);
    set_reference(node, "cert", id_of(add_certificate("node-cn")));
    return node;
  }
  // The full node of a product kind, loaded from committed data.
  node_record loaded(const char *product) {
    cfg_elem *node = add_full_node(product);
    const std::string provisional = id_of(node);
    commit();
    const std::string id = id_of(cfg_get_by_id(store, provisional.c_str()));
    commit_and_reopen();
    return load(id);
  }
  void expect_common(const cfg_node *node, const char *product) {
    ASSERT_NE(nullptr, node);
    EXPECT_STREQ("nodes-1", cfg_node_get_uuid(node));
    EXPECT_STREQ("name", cfg_node_get_name(node));
    EXPECT_STREQ("Enrolled", cfg_node_get_status(node));
    EXPECT_STREQ(product, cfg_node_get_product(node));
    EXPECT_STREQ("enrollment_bundles-3", cfg_node_get_bundle_id(node));
    EXPECT_STREQ("the description", cfg_node_get_description(node));
    EXPECT_STREQ("the mac_address", cfg_node_get_mac_address(node));
    EXPECT_STREQ("the fhvpn_address", cfg_node_get_fhvpn_address(node));
    EXPECT_STREQ("the firmware_version", cfg_node_get_firmware_version(node));
    EXPECT_STREQ("the model", cfg_node_get_model(node));
    EXPECT_STREQ("the serial_number", cfg_node_get_serial_number(node));
    EXPECT_EQ(1, cfg_node_get_approved(node));
  }
  void expect_no_tarnwell_content(const cfg_node *node) {
    EXPECT_EQ(nullptr, cfg_node_get_cert_object(node));
    EXPECT_EQ(nullptr, cfg_node_get_cert_cn(node));
    EXPECT_EQ(nullptr, cfg_node_get_cert(node));
    EXPECT_EQ(nullptr, cfg_node_get_key(node));
    EXPECT_EQ(0U, cfg_node_get_ssh_port(node));
  }
  void expect_no_credentials(const cfg_node *node) {
    EXPECT_EQ(nullptr, cfg_node_get_address(node));
    EXPECT_EQ(nullptr, cfg_node_get_username(node));
    EXPECT_EQ(nullptr, cfg_node_get_password(node));
  }
  void expect_no_generic_content(const cfg_node *node) {
    EXPECT_EQ(nullptr, cfg_node_get_connection_method(node));
    EXPECT_EQ(0, cfg_node_get_port_count_field(node));
    EXPECT_EQ(0U, cfg_node_get_base_port(node));
    EXPECT_EQ(nullptr, cfg_node_get_port_label(node, 0));
  }
  // The labels of a generic node whose list "port_labels" was just made.
  cfg_elem *add_generic(int32_t port_count) {
    cfg_elem *node = add_node("g", "generic");
    set(node, "port_count", port_count);
    return node;
  }
};

TEST_F(NodeLoad, ATarnwellNodeHasCertificateSshPortAndEtagsAndNoCredentials) {
  const node_record node = loaded("tarnwell");
  expect_common(node.get(), "tarnwell");
  ASSERT_NE(nullptr, cfg_node_get_cert_object(node.get()));
  EXPECT_STREQ("certificates-1", cfg_certificate_get_id(cfg_node_get_cert_object(node.get())));
  EXPECT_STREQ("node-cn", cfg_node_get_cert_cn(node.get()));
  EXPECT_STREQ("certificate of node-cn", cfg_node_get_cert(node.get()));
  EXPECT_STREQ("key of node-cn", cfg_node_get_key(node.get()));
  EXPECT_EQ(2222U, cfg_node_get_ssh_port(node.get()));
  EXPECT_EQ(1, cfg_node_get_etag_count(node.get()));
  expect_no_credentials(node.get());
  expect_no_generic_content(node.get());
}

TEST_F(NodeLoad, OtherVendorsNodesHaveCredentialsAndNothingElse) {
  for (const char *product : {"acs6000", "acs8000", "cisco2900", "acs_classic"}) {
    SCOPED_TRACE(product);
    cfg_map_delete_key(store, cfg_root(store), "nodes");
    add_full_node(product);
    commit_and_reopen();
    const node_record node(cfg_get_node_by_idx(store, 0));
    ASSERT_NE(nullptr, node);
    EXPECT_STREQ(product, cfg_node_get_product(node.get()));
    EXPECT_STREQ("the address", cfg_node_get_address(node.get()));
    EXPECT_STREQ("the username", cfg_node_get_username(node.get()));
    EXPECT_STREQ("the password", cfg_node_get_password(node.get()));
    EXPECT_STREQ("the description", cfg_node_get_description(node.get()));
    expect_no_tarnwell_content(node.get());
    expect_no_generic_content(node.get());
  }
}

TEST_F(NodeLoad, AGenericNodeHasCredentialsMethodAndPorts) {
  const node_record node = loaded("generic");
  expect_common(node.get(), "generic");
  EXPECT_STREQ("the address", cfg_node_get_address(node.get()));
  EXPECT_STREQ("the username", cfg_node_get_username(node.get()));
  EXPECT_STREQ("the password", cfg_node_get_password(node.get()));
  EXPECT_STREQ("the connection_method", cfg_node_get_connection_method(node.get()));
  EXPECT_EQ(2, cfg_node_get_port_count_field(node.get()));
  EXPECT_EQ(7001U, cfg_node_get_base_port(node.get()));
  EXPECT_STREQ("first", cfg_node_get_port_label(node.get(), 0));
  EXPECT_STREQ("second", cfg_node_get_port_label(node.get(), 1));
  EXPECT_EQ(nullptr, cfg_node_get_port_label(node.get(), 2));
  expect_no_tarnwell_content(node.get());
}

TEST_F(NodeLoad, ProductsAreComparedWholeAndWithRegardToCase) {
  for (const char *product : {"Tarnwell", "tarnwell ", "tarnwel", "tarnwell2", "GENERIC", "generic-2", "acs",
                              "acs60000", "ACS6000", "cisco", "acs_classic_"}) {
    SCOPED_TRACE(product);
    cfg_map_delete_key(store, cfg_root(store), "nodes");
    const std::string id = id_of(add_full_node(product));
    const node_record node = load(id);
    ASSERT_NE(nullptr, node);
    EXPECT_STREQ(product, cfg_node_get_product(node.get()));
    EXPECT_STREQ("the model", cfg_node_get_model(node.get()));
    expect_no_tarnwell_content(node.get());
    expect_no_credentials(node.get());
    expect_no_generic_content(node.get());
  }
}

TEST_F(NodeLoad, ANodeWithoutProductIsOfNoKind) {
  const node_record node = loaded(nullptr);
  expect_common(node.get(), nullptr);
  expect_no_tarnwell_content(node.get());
  expect_no_credentials(node.get());
  expect_no_generic_content(node.get());
}

TEST_F(NodeLoad, NameAndStatusAloneMakeANode) {
  for (const char *product : {"tarnwell", "acs8000", "generic"}) {
    SCOPED_TRACE(product);
    const node_record node = load(add_node("bare", product));
    ASSERT_NE(nullptr, node);
    EXPECT_STREQ("bare", cfg_node_get_name(node.get()));
    EXPECT_EQ(nullptr, cfg_node_get_bundle_id(node.get()));
    EXPECT_EQ(nullptr, cfg_node_get_description(node.get()));
    EXPECT_EQ(nullptr, cfg_node_get_mac_address(node.get()));
    EXPECT_EQ(nullptr, cfg_node_get_fhvpn_address(node.get()));
    EXPECT_EQ(nullptr, cfg_node_get_firmware_version(node.get()));
    EXPECT_EQ(nullptr, cfg_node_get_model(node.get()));
    EXPECT_EQ(nullptr, cfg_node_get_serial_number(node.get()));
    EXPECT_EQ(0, cfg_node_get_approved(node.get()));
    EXPECT_EQ(0, cfg_node_get_etag_count(node.get()));
    expect_no_tarnwell_content(node.get());
    expect_no_credentials(node.get());
    expect_no_generic_content(node.get());
  }
}

TEST_F(NodeLoad, ANodeWithoutNameOrStatusCannotBeLoaded) {
  for (const char *missing : {"name", "status"})
    for (const char *product : {"tarnwell", "acs6000", "generic", "other"}) {
      SCOPED_TRACE(std::string(missing) + " of " + product);
      cfg_elem *node = add_node("n", product);
      ASSERT_NE(nullptr, load(node));
      erase(node, missing);
      EXPECT_EQ(nullptr, load(node));
      set(node, missing, 5);  // of another kind: no text to read
      EXPECT_EQ(nullptr, load(node));
      erase(node, missing);
      child_map(node, missing);
      EXPECT_EQ(nullptr, load(node));
      erase(node, missing);
      set_reference(node, missing, "nodes-1");
      EXPECT_EQ(nullptr, load(node));
    }
}

TEST_F(NodeLoad, EmptyNameAndStatusAreTextsAndLoad) {
  cfg_elem *elem = add_node("", "tarnwell");
  set(elem, "status", "");
  const node_record node = load(elem);
  ASSERT_NE(nullptr, node);
  EXPECT_STREQ("", cfg_node_get_name(node.get()));
  EXPECT_STREQ("", cfg_node_get_status(node.get()));
}

TEST_F(NodeLoad, NothingIsLoadedForUnknownAndNullIdsAndHandles) {
  add_node("n");
  EXPECT_EQ(nullptr, cfg_get_node_by_id(store, "nodes-99"));
  EXPECT_EQ(nullptr, cfg_get_node_by_id(store, ""));
  EXPECT_EQ(nullptr, cfg_get_node_by_id(store, nullptr));
  EXPECT_EQ(nullptr, cfg_get_node_by_id(nullptr, "nodes-1"));
}

TEST_F(NodeLoad, AnElementThatIsNoMapIsNoNode) {
  cfg_elem *list = list_at("nodes");
  add(list, "text");
  add(list, cfg_new_list(store));
  EXPECT_EQ(nullptr, load(cfg_simple_get_listelem(store, list, 0)));
  EXPECT_EQ(nullptr, load(cfg_simple_get_listelem(store, list, 1)));
  EXPECT_EQ(nullptr, load(list));
}

TEST_F(NodeLoad, APendingNodeLoadsByItsProvisionalId) {
  cfg_elem *list = list_at("nodes");
  cfg_elem *pending = cfg_new_map(store);
  ASSERT_TRUE(cfg_append_future_listelem(store, list, pending));
  set(pending, "name", "p");
  set(pending, "status", "Pending");
  const node_record node = load(pending);
  ASSERT_NE(nullptr, node);
  EXPECT_EQ('{', cfg_node_get_uuid(node.get())[0]);
  commit();
  const node_record again = load(cfg_node_get_uuid(node.get()));
  ASSERT_NE(nullptr, again);
  EXPECT_STREQ("nodes-1", cfg_node_get_uuid(again.get()));
}

TEST_F(NodeLoad, OptionalKeysOfAnotherKindReadAsAbsent) {
  for (const char *product : {"tarnwell", "acs_classic", "generic"}) {
    SCOPED_TRACE(product);
    cfg_elem *elem = add_full_node(product);
    for (const char *key :
         {"description", "mac_address", "fhvpn_address", "firmware_version", "model", "serial_number",
          "address", "username", "password", "connection_method", "bundle"})
      set(elem, key, 1);
    for (const char *key : {"approved", "port_count", "base_port", "ssh", "etags", "cert", "port_labels"})
      set(elem, key, "text");
    const node_record node = load(elem);
    ASSERT_NE(nullptr, node);
    EXPECT_EQ(nullptr, cfg_node_get_bundle_id(node.get()));
    EXPECT_EQ(nullptr, cfg_node_get_description(node.get()));
    EXPECT_EQ(nullptr, cfg_node_get_mac_address(node.get()));
    EXPECT_EQ(nullptr, cfg_node_get_fhvpn_address(node.get()));
    EXPECT_EQ(nullptr, cfg_node_get_firmware_version(node.get()));
    EXPECT_EQ(nullptr, cfg_node_get_model(node.get()));
    EXPECT_EQ(nullptr, cfg_node_get_serial_number(node.get()));
    EXPECT_EQ(0, cfg_node_get_approved(node.get()));
    EXPECT_EQ(0, cfg_node_get_etag_count(node.get()));
    EXPECT_EQ(nullptr, cfg_node_get_etag(node.get(), 0));
    expect_no_tarnwell_content(node.get());
    expect_no_credentials(node.get());
    expect_no_generic_content(node.get());
  }
}

TEST_F(NodeLoad, AReferenceToAMissingCertificateLeavesTheNodeWithoutOne) {
  cfg_elem *elem = add_node("n", "tarnwell");
  set_reference(elem, "cert", "certificates-77");
  set(child_map(elem, "ssh"), "port", 22);
  const node_record node = load(elem);
  ASSERT_NE(nullptr, node);
  EXPECT_EQ(nullptr, cfg_node_get_cert_object(node.get()));
  EXPECT_EQ(nullptr, cfg_node_get_cert(node.get()));
  EXPECT_EQ(22U, cfg_node_get_ssh_port(node.get()));
}

TEST_F(NodeLoad, AnSshMapWithoutPortReadsAsPortZero) {
  cfg_elem *elem = add_node("n", "tarnwell");
  set(child_map(elem, "ssh"), "other", 22);
  EXPECT_EQ(0U, cfg_node_get_ssh_port(load(elem).get()));
}

TEST_F(NodeLoad, APortBeyondTheSignedRangeComesBackUnsigned) {
  cfg_elem *elem = add_node("n", "tarnwell");
  set(child_map(elem, "ssh"), "port", -1);
  EXPECT_EQ(4294967295U, cfg_node_get_ssh_port(load(elem).get()));
  cfg_elem *generic = add_node("g", "generic");
  set(generic, "base_port", -2);
  EXPECT_EQ(4294967294U, cfg_node_get_base_port(load(generic).get()));
}

TEST_F(NodeLoad, LabelsBeyondThePortCountAreNotRead) {
  cfg_elem *elem = add_generic(1);
  cfg_elem *labels = child_list(elem, "port_labels");
  add(labels, "one");
  add(labels, "two");
  const node_record node = load(elem);
  EXPECT_EQ(1, cfg_node_get_port_count_field(node.get()));
  EXPECT_STREQ("one", cfg_node_get_port_label(node.get(), 0));
  EXPECT_EQ(nullptr, cfg_node_get_port_label(node.get(), 1));
}

TEST_F(NodeLoad, PortsWithoutLabelEntryHaveNoLabel) {
  cfg_elem *elem = add_generic(4);
  cfg_elem *labels = child_list(elem, "port_labels");
  add(labels, "one");
  add(labels, cfg_new_map(store));
  add(labels, "three");
  const node_record node = load(elem);
  EXPECT_EQ(4, cfg_node_get_port_count_field(node.get()));
  EXPECT_STREQ("one", cfg_node_get_port_label(node.get(), 0));
  EXPECT_EQ(nullptr, cfg_node_get_port_label(node.get(), 1));
  EXPECT_STREQ("three", cfg_node_get_port_label(node.get(), 2));
  EXPECT_EQ(nullptr, cfg_node_get_port_label(node.get(), 3));
}

TEST_F(NodeLoad, WithoutThePortLabelListAllLabelsAreMissing) {
  const node_record node = load(add_generic(2));
  EXPECT_EQ(2, cfg_node_get_port_count_field(node.get()));
  EXPECT_EQ(nullptr, cfg_node_get_port_label(node.get(), 0));
  EXPECT_EQ(nullptr, cfg_node_get_port_label(node.get(), 1));
}

TEST_F(NodeLoad, AMissingLabelCanBeSetInTheRecord) {
  const node_record node = load(add_generic(2));
  EXPECT_EQ(1, cfg_node_set_port_label(node.get(), 1, "mine"));
  EXPECT_STREQ("mine", cfg_node_get_port_label(node.get(), 1));
  EXPECT_EQ(nullptr, cfg_node_get_port_label(node.get(), 0));
}

TEST_F(NodeLoad, AbsurdPortCountsOfTheStoreAreKeptAndHarmless) {
  for (const int32_t count : {-1, INT32_MIN, INT32_MAX}) {
    cfg_elem *elem = add_generic(count);
    add(child_list(elem, "port_labels"), "one");
    const node_record node = load(elem);
    ASSERT_NE(nullptr, node);
    EXPECT_EQ(count, cfg_node_get_port_count_field(node.get()));
    EXPECT_EQ(nullptr, cfg_node_get_port_label(node.get(), -1));
    EXPECT_EQ(nullptr, cfg_node_get_port_label(node.get(), INT32_MIN));
    EXPECT_EQ(nullptr, cfg_node_get_port_label(node.get(), INT32_MAX));
    if (count > 0)
      EXPECT_STREQ("one", cfg_node_get_port_label(node.get(), 0));
    else
      EXPECT_EQ(nullptr, cfg_node_get_port_label(node.get(), 0));
  }
}

TEST_F(NodeLoad, ARecordDoesNotNoticeLaterChangesInTheStore) {
  cfg_elem *elem = add_node("before", "tarnwell");
  const node_record node = load(elem);
  set(elem, "name", "after");
  EXPECT_STREQ("before", cfg_node_get_name(node.get()));
}

TEST_F(NodeLoad, ARecordOutlivesItsHandleForFreeing) {
  node_record node = loaded("tarnwell");
  handle.reset();
  EXPECT_STREQ("name", cfg_node_get_name(node.get()));
  node.reset();
}

TEST_F(NodeLoad, CountingNodesTellsMissingListsFromUnreadableOnes) {
  EXPECT_EQ(0, cfg_get_nodes_count(store));
  list_at("nodes");
  EXPECT_EQ(0, cfg_get_nodes_count(store));
  add_node("a");
  add_node("b");
  EXPECT_EQ(2, cfg_get_nodes_count(store));
  erase(cfg_root(store), "nodes");
  map_at("nodes");
  EXPECT_EQ(-1, cfg_get_nodes_count(store));
  EXPECT_EQ(nullptr, cfg_get_node_by_idx(store, 0));
  EXPECT_EQ(nullptr, cfg_get_node_by_name(store, "a"));
}

TEST_F(NodeLoad, TheCountIncludesNodesThatCannotBeLoaded) {
  add_node("a");
  erase(add_node("b"), "status");
  EXPECT_EQ(2, cfg_get_nodes_count(store));
}

TEST_F(NodeLoad, LoadingByIndexFollowsTheListAndEndsOutsideIt) {
  EXPECT_EQ(nullptr, cfg_get_node_by_idx(store, 0));
  add_node("a");
  erase(add_node("b"), "name");
  add_node("c");
  commit_and_reopen();
  EXPECT_STREQ("a", cfg_node_get_name(node_record(cfg_get_node_by_idx(store, 0)).get()));
  EXPECT_EQ(nullptr, cfg_get_node_by_idx(store, 1));
  EXPECT_STREQ("c", cfg_node_get_name(node_record(cfg_get_node_by_idx(store, 2)).get()));
  for (const int32_t index : {-1, 3, INT32_MIN, INT32_MAX})
    EXPECT_EQ(nullptr, cfg_get_node_by_idx(store, index)) << index;
  EXPECT_EQ(nullptr, cfg_get_node_by_idx(nullptr, 0));
}

}  // namespace
