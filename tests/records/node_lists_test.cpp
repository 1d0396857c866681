// Etags, and the enrollment bundle that is told by tags.
#include "node_fixture.hpp"

namespace {

using records::node_record;

class NodeEtags : public records::NodeTest {
 protected:
  // An etag that is appended to the node's list, which is made when it is missing.
  void add_etag(cfg_elem *node, const char *name, int32_t version, const char *status) {
    cfg_elem *list = cfg_simple_get_mapelem(store, node, "etags");
    if (list == nullptr) list = child_list(node, "etags");
    cfg_elem *etag = cfg_new_map(store);
    set(etag, "name", name);
    set(etag, "version", version);
    set(etag, "status", status);
    add(list, etag);
  }
};

TEST_F(NodeEtags, ComeInListOrderWithTheirIds) {
  for (const char *product : {"tarnwell", "generic"}) {
    SCOPED_TRACE(product);
    cfg_map_delete_key(store, cfg_root(store), "nodes");
    cfg_elem *elem = add_node("n", product);
    add_etag(elem, "ports", 3, "current");
    add_etag(elem, "users", -4, "stale");
    commit_and_reopen();
    const node_record node(cfg_get_node_by_idx(store, 0));
    ASSERT_EQ(2, cfg_node_get_etag_count(node.get()));
    const cfg_etag *first = cfg_node_get_etag(node.get(), 0);
    const cfg_etag *second = cfg_node_get_etag(node.get(), 1);
    EXPECT_STREQ("ports", cfg_etag_get_name(first));
    EXPECT_EQ(3, cfg_etag_get_version(first));
    EXPECT_STREQ("current", cfg_etag_get_status(first));
    EXPECT_EQ(std::string(cfg_node_get_uuid(node.get())) + "_etags-1", cfg_etag_get_uuid(first));
    EXPECT_STREQ("users", cfg_etag_get_name(second));
    EXPECT_EQ(-4, cfg_etag_get_version(second));
    EXPECT_STREQ("stale", cfg_etag_get_status(second));
    EXPECT_EQ(std::string(cfg_node_get_uuid(node.get())) + "_etags-2", cfg_etag_get_uuid(second));
    for (const int32_t index : {-1, 2, INT32_MIN, INT32_MAX})
      EXPECT_EQ(nullptr, cfg_node_get_etag(node.get(), index)) << index;
  }
}

TEST_F(NodeEtags, TheFirstOfANameGivesVersionAndStatus) {
  cfg_elem *elem = add_node("n", "tarnwell");
  add_etag(elem, "a", 1, "s1");
  add_etag(elem, "b", 2, "s2");
  add_etag(elem, "b", 3, "s3");
  const node_record node = load(elem);
  EXPECT_EQ(2, cfg_node_get_etag_version(node.get(), "b"));
  EXPECT_STREQ("s2", cfg_node_get_etag_status(node.get(), "b"));
  EXPECT_EQ(1, cfg_node_get_etag_version(node.get(), "a"));
  for (const char *other : {"A", "c", "", "bb"}) {
    EXPECT_EQ(0, cfg_node_get_etag_version(node.get(), other)) << other;
    EXPECT_EQ(nullptr, cfg_node_get_etag_status(node.get(), other)) << other;
  }
  EXPECT_EQ(0, cfg_node_get_etag_version(node.get(), nullptr));
  EXPECT_EQ(nullptr, cfg_node_get_etag_status(node.get(), nullptr));
}

TEST_F(NodeEtags, OfATarnwellNodeAreReadWithTheNode) {
  cfg_elem *elem = add_node("n", "tarnwell");
  add_etag(elem, "a", 1, "s");
  const node_record node = load(elem);
  add_etag(elem, "b", 2, "s");
  EXPECT_EQ(1, cfg_node_get_etag_count(node.get()));
  EXPECT_EQ(0, cfg_node_get_etag_version(node.get(), "b"));
}

TEST_F(NodeEtags, OfOtherNodesAreReadByTheFirstQueryAndThenKept) {
  cfg_elem *elem = add_node("n", "generic");
  add_etag(elem, "a", 1, "s");
  const node_record node = load(elem);
  add_etag(elem, "b", 2, "s");
  EXPECT_EQ(2, cfg_node_get_etag_version(node.get(), "b"));
  add_etag(elem, "c", 3, "s");
  EXPECT_EQ(2, cfg_node_get_etag_count(node.get()));
  EXPECT_EQ(0, cfg_node_get_etag_version(node.get(), "c"));
}

TEST_F(NodeEtags, EveryKindOfQueryReadsThem) {
  cfg_elem *elem = add_node("n", "acs6000");
  add_etag(elem, "a", 7, "s");
  EXPECT_EQ(1, cfg_node_get_etag_count(load(elem).get()));
  const node_record by_index = load(elem);
  EXPECT_STREQ("a", cfg_etag_get_name(cfg_node_get_etag(by_index.get(), 0)));
  EXPECT_EQ(7, cfg_node_get_etag_version(load(elem).get(), "a"));
  const node_record by_status = load(elem);
  EXPECT_STREQ("s", cfg_node_get_etag_status(by_status.get(), "a"));
}

TEST_F(NodeEtags, ANodeWithoutEtagsReadsTheStoreAgainOnEachQuery) {
  for (const char *product : {"tarnwell", "generic"}) {
    SCOPED_TRACE(product);
    cfg_elem *elem = add_node("n", product);
    const node_record node = load(elem);
    EXPECT_EQ(0, cfg_node_get_etag_count(node.get()));
    EXPECT_EQ(nullptr, cfg_node_get_etag(node.get(), 0));
    child_list(elem, "etags");
    EXPECT_EQ(0, cfg_node_get_etag_count(node.get()));
    add_etag(elem, "late", 5, "s");
    EXPECT_EQ(5, cfg_node_get_etag_version(node.get(), "late"));
    EXPECT_EQ(1, cfg_node_get_etag_count(node.get()));
  }
}

TEST_F(NodeEtags, KeysThatAreMissingReadAsNullAndZero) {
  cfg_elem *elem = add_node("n", "tarnwell");
  add(child_list(elem, "etags"), cfg_new_map(store));
  add_etag(elem, "b", 2, "s");
  const node_record node = load(elem);
  ASSERT_EQ(2, cfg_node_get_etag_count(node.get()));
  const cfg_etag *bare = cfg_node_get_etag(node.get(), 0);
  ASSERT_NE(nullptr, bare);
  EXPECT_EQ(nullptr, cfg_etag_get_name(bare));
  EXPECT_EQ(nullptr, cfg_etag_get_status(bare));
  EXPECT_EQ(0, cfg_etag_get_version(bare));
  EXPECT_NE(nullptr, cfg_etag_get_uuid(bare));
  EXPECT_EQ(2, cfg_node_get_etag_version(node.get(), "b"));
}

TEST_F(NodeEtags, AnEntryThatIsNoMapIsCountedAndDoesNotHideTheNext) {
  cfg_elem *elem = add_node("n", "tarnwell");
  add(child_list(elem, "etags"), "text");
  add_etag(elem, "b", 2, "s");
  const node_record node = load(elem);
  EXPECT_EQ(2, cfg_node_get_etag_count(node.get()));
  EXPECT_EQ(nullptr, cfg_etag_get_name(cfg_node_get_etag(node.get(), 0)));
  EXPECT_EQ(2, cfg_node_get_etag_version(node.get(), "b"));
}

TEST_F(NodeEtags, PendingEntriesAreNotSeen) {
  cfg_elem *elem = add_node("n", "tarnwell");
  add_etag(elem, "a", 1, "s");
  cfg_elem *pending = cfg_new_map(store);
  set(pending, "name", "b");
  ASSERT_TRUE(cfg_append_future_listelem(store, cfg_simple_get_mapelem(store, elem, "etags"), pending));
  EXPECT_EQ(1, cfg_node_get_etag_count(load(elem).get()));
}

TEST_F(NodeEtags, NullRecordsGiveZeroAndNull) {
  EXPECT_EQ(0, cfg_node_get_etag_count(nullptr));
  EXPECT_EQ(nullptr, cfg_node_get_etag(nullptr, 0));
  EXPECT_EQ(0, cfg_node_get_etag_version(nullptr, "a"));
  EXPECT_EQ(nullptr, cfg_node_get_etag_status(nullptr, "a"));
  EXPECT_EQ(nullptr, cfg_etag_get_uuid(nullptr));
  EXPECT_EQ(nullptr, cfg_etag_get_name(nullptr));
  EXPECT_EQ(nullptr, cfg_etag_get_status(nullptr));
  EXPECT_EQ(0, cfg_etag_get_version(nullptr));
}

class NodeBundle : public records::NodeTest {
 protected:
  void SetUp() override {
    NodeTest::SetUp();
    node = add_node("n", "tarnwell");
    tags = child_list(node, "tags");
  }
  // The value's element, in a new tag.
  cfg_elem *add_value(const char *tag_name, const char *text) {
    cfg_elem *tag = entry_of("tags.node_tags");
    set(tag, "name", tag_name);
    cfg_elem *value = cfg_new_map(store);
    set(value, "value", text);
    add(child_list(tag, "values"), value);
    return value;
  }
  void tag_with(cfg_elem *value) { add(tags, cfg_new_reference(store, id_of(value).c_str())); }
  std::string bundle() { return cfg_node_get_enrollment_bundle(load(node).get()); }

  cfg_elem *node = nullptr;
  cfg_elem *tags = nullptr;
};

TEST_F(NodeBundle, IsGlobalWithoutTags) {
  EXPECT_EQ("Global", bundle());
  erase(node, "tags");
  EXPECT_EQ("Global", bundle());
}

TEST_F(NodeBundle, IsTheTextOfTheValueOfTheTagBundle) {
  tag_with(add_value("Location", "Bellrig"));
  EXPECT_EQ("Global", bundle());
  tag_with(add_value("Bundle", "north"));
  tag_with(add_value("Rack", "7"));
  EXPECT_EQ("north", bundle());
  const std::string provisional = id_of(node);
  commit();
  EXPECT_EQ("north", bundle());
  commit_and_reopen();
  EXPECT_STREQ("north", cfg_node_get_enrollment_bundle(load("nodes-1").get()));
}

TEST_F(NodeBundle, IsTheLastOfSeveral) {
  tag_with(add_value("Bundle", "first"));
  tag_with(add_value("Bundle", "last"));
  tag_with(add_value("Other", "x"));
  EXPECT_EQ("last", bundle());
}

TEST_F(NodeBundle, TheTagsNameIsComparedExactly) {
  for (const char *name : {"bundle", "BUNDLE", "Bundles", "Bundl", ""}) tag_with(add_value(name, "x"));
  EXPECT_EQ("Global", bundle());
}

TEST_F(NodeBundle, ValuesThatTheNodeDoesNotReferToDoNotCount) {
  add_value("Bundle", "someone else's");
  EXPECT_EQ("Global", bundle());
}

TEST_F(NodeBundle, PendingTagsFollowTheCommittedOnes) {
  tag_with(add_value("Bundle", "committed"));
  ASSERT_TRUE(cfg_append_future_listelem(
      store, tags, cfg_new_reference(store, id_of(add_value("Bundle", "pending")).c_str())));
  EXPECT_EQ("pending", bundle());
}

TEST_F(NodeBundle, AReferenceThatLeadsNowhereIsPassedOver) {
  tag_with(add_value("Bundle", "good"));
  add(tags, cfg_new_reference(store, "tags_node_tags-9_values-9"));
  add(tags, "no reference");
  EXPECT_EQ("good", bundle());
}

TEST_F(NodeBundle, IsReadOnceAndThenKept) {
  const node_record record = load(node);
  EXPECT_STREQ("Global", cfg_node_get_enrollment_bundle(record.get()));
  tag_with(add_value("Bundle", "later"));
  EXPECT_STREQ("Global", cfg_node_get_enrollment_bundle(record.get()));
  EXPECT_EQ("later", bundle());
}

TEST_F(NodeBundle, ATextThatIsSetIsAnsweredInstead) {
  tag_with(add_value("Bundle", "by tag"));
  const node_record record = load(node);
  EXPECT_EQ(1, cfg_node_set_enrollment_bundle(record.get(), "by hand"));
  EXPECT_STREQ("by hand", cfg_node_get_enrollment_bundle(record.get()));
  EXPECT_EQ(1, cfg_node_set_enrollment_bundle(record.get(), ""));
  EXPECT_STREQ("by tag", cfg_node_get_enrollment_bundle(record.get()));
}

TEST_F(NodeBundle, HoldsForEveryProduct) {
  tag_with(add_value("Bundle", "b"));
  for (const char *product : {"generic", "acs6000", "unknown"}) {
    set(node, "product", product);
    EXPECT_EQ("b", bundle()) << product;
  }
}

}  // namespace
