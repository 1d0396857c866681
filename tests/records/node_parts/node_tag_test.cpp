// Tags of nodes: references to tag values, pending ones included.
#include <twobject/node_tag.h>

#include "records/node_fixture.hpp"

namespace {

using records::node_record;

struct free_value {
  void operator()(cfg_tag_value *value) const { cfg_tag_value_free(value); }
};
using value_record = std::unique_ptr<cfg_tag_value, free_value>;

class NodeTags : public records::NodeTest {
 protected:
  // "tags_node_tags-1" with the values "one", "two" and "three", and "nodes-1" with an empty list of tags.
  void SetUp() override {
    NodeTest::SetUp();
    cfg_elem *tag = entry_of("tags.node_tags");
    set(tag, "name", "Site");
    cfg_elem *values = child_list(tag, "values");
    for (const char *text : {"one", "two", "three"}) {
      cfg_elem *value = cfg_new_map(store);
      set(value, "value", text);
      add(values, value);
    }
    child_list(add_node("n", "generic"), "tags");
    commit_and_reopen();
  }
  static std::string value_id(int number) { return "tags_node_tags-1_values-" + std::to_string(number); }
  value_record value(int number) {
    return value_record(cfg_get_tag_value_by_id(store, value_id(number).c_str()));
  }
  cfg_elem *tags() { return cfg_simple_get_mapelem(store, cfg_get_by_id(store, "nodes-1"), "tags"); }
  // A committed reference to a value.
  void add_tag(const std::string &id) { add(tags(), cfg_new_reference(store, id.c_str())); }
  static const char *text(const value_record &record) { return tag_value_get_value(record.get()); }
  value_record tag(const node_record &node, int32_t index) {
    return value_record(cfg_node_get_tag(node.get(), index));
  }
};

TEST_F(NodeTags, LeadToTheirValuesInListOrder) {
  add_tag(value_id(2));
  add_tag(value_id(1));
  commit_and_reopen();
  const node_record node = load("nodes-1");
  ASSERT_EQ(2, cfg_node_get_tag_count(node.get()));
  EXPECT_STREQ("two", text(tag(node, 0)));
  EXPECT_STREQ("one", text(tag(node, 1)));
  EXPECT_STREQ("nodes-1_tags-1", cfg_node_get_tag_ref_uuid(node.get(), 0));
  EXPECT_STREQ("nodes-1_tags-2", cfg_node_get_tag_ref_uuid(node.get(), 1));
  for (const int32_t index : {-1, 2, INT32_MIN, INT32_MAX}) {
    EXPECT_EQ(nullptr, tag(node, index)) << index;
    EXPECT_EQ(nullptr, cfg_node_get_tag_ref_uuid(node.get(), index)) << index;
  }
}

TEST_F(NodeTags, PendingOnesAreCountedBehindTheCommittedOnes) {
  add_tag(value_id(3));
  commit_and_reopen();
  const node_record writer = load("nodes-1");
  EXPECT_EQ(1, cfg_node_save_tag(writer.get(), value(1).get()));
  EXPECT_EQ(1, cfg_node_save_tag(writer.get(), value(2).get()));
  EXPECT_EQ("[&" + value_id(3) + " +&" + value_id(1) + " +&" + value_id(2) + "]", dump(tags()));
  const node_record node = load("nodes-1");
  ASSERT_EQ(3, cfg_node_get_tag_count(node.get()));
  EXPECT_STREQ("three", text(tag(node, 0)));
  EXPECT_STREQ("one", text(tag(node, 1)));
  EXPECT_STREQ("two", text(tag(node, 2)));
  EXPECT_EQ('{', cfg_node_get_tag_ref_uuid(node.get(), 2)[0]) << "a provisional ID";
  commit_and_reopen();
  const node_record after = load("nodes-1");
  ASSERT_EQ(3, cfg_node_get_tag_count(after.get()));
  EXPECT_STREQ("two", text(tag(after, 2)));
  EXPECT_STREQ("nodes-1_tags-3", cfg_node_get_tag_ref_uuid(after.get(), 2));
}

TEST_F(NodeTags, AreReadByTheFirstQueryAndThenKept) {
  const node_record node = load("nodes-1");
  EXPECT_EQ(0, cfg_node_get_tag_count(node.get()));
  EXPECT_EQ(1, cfg_node_save_tag(node.get(), value(1).get()));
  EXPECT_EQ(1, cfg_node_get_tag_count(node.get())) << "no tags are not remembered";
  EXPECT_EQ(1, cfg_node_save_tag(node.get(), value(2).get()));
  EXPECT_EQ(1, cfg_node_get_tag_count(node.get())) << "one tag is";
}

TEST_F(NodeTags, AReferenceIsFoundAmongTheNodesOwn) {
  add_tag(value_id(1));
  add_tag(value_id(2));
  set_reference(cfg_root(store), "stranger", value_id(3));
  commit_and_reopen();
  const node_record node = load("nodes-1");
  const value_record found(cfg_node_get_tag_by_ref_uuid(node.get(), "nodes-1_tags-2"));
  EXPECT_STREQ("two", text(found));
  for (const char *other : {"nodes-1_tags-3", "stranger", "", static_cast<const char *>(nullptr)})
    EXPECT_EQ(nullptr, cfg_node_get_tag_by_ref_uuid(node.get(), other));
}

TEST_F(NodeTags, AValueLeadsToTheFirstReferenceToIt) {
  for (const int number : {1, 2, 2}) add_tag(value_id(number));
  commit_and_reopen();
  const node_record node = load("nodes-1");
  EXPECT_STREQ("nodes-1_tags-2", cfg_node_get_tag_ref_uuid_by_value(node.get(), value(2).get()));
  EXPECT_STREQ("nodes-1_tags-1", cfg_node_get_tag_ref_uuid_by_value(node.get(), value(1).get()));
  EXPECT_EQ(nullptr, cfg_node_get_tag_ref_uuid_by_value(node.get(), value(3).get()));
  EXPECT_EQ(nullptr, cfg_node_get_tag_ref_uuid_by_value(node.get(), nullptr));
}

TEST_F(NodeTags, ThatLeadNowhereAreCountedButGiveNoValue) {
  add_tag("tags_node_tags-1_values-99");
  add(tags(), "no reference");
  add_tag(value_id(1));
  commit_and_reopen();
  const node_record node = load("nodes-1");
  ASSERT_EQ(3, cfg_node_get_tag_count(node.get()));
  EXPECT_EQ(nullptr, tag(node, 0));
  EXPECT_EQ(nullptr, tag(node, 1));
  EXPECT_STREQ("one", text(tag(node, 2)));
  EXPECT_EQ(nullptr, cfg_node_get_tag_by_ref_uuid(node.get(), "nodes-1_tags-1"));
  EXPECT_STREQ("nodes-1_tags-3", cfg_node_get_tag_ref_uuid_by_value(node.get(), value(1).get()));
}

TEST_F(NodeTags, AReferenceCanBeLedElsewhereAndDeleted) {
  add_tag(value_id(1));
  commit_and_reopen();
  EXPECT_EQ(1, cfg_node_update_tag(store, "nodes-1_tags-1", value(2).get()));
  EXPECT_EQ("[&" + value_id(2) + "]", dump(tags()));
  EXPECT_EQ(0, cfg_node_update_tag(store, "nodes-1_tags-1", nullptr));
  EXPECT_EQ(0, cfg_node_update_tag(store, "nodes-1_tags-2", value(1).get()));
  EXPECT_EQ(0, cfg_node_update_tag(store, nullptr, value(1).get()));
  EXPECT_EQ(0, cfg_node_update_tag(nullptr, "nodes-1_tags-1", value(1).get()));
  EXPECT_EQ(0, cfg_node_delete_tag(store, "nodes-1_tags-2"));
  EXPECT_EQ(0, cfg_node_delete_tag(store, nullptr));
  EXPECT_EQ(0, cfg_node_delete_tag(nullptr, "nodes-1_tags-1"));
  EXPECT_EQ(0, cfg_node_delete_tag(store, "nodes-1")) << "no reference";
  EXPECT_EQ("[&" + value_id(2) + "]", dump(tags()));
  EXPECT_EQ(1, cfg_node_delete_tag(store, "nodes-1_tags-1"));
  EXPECT_EQ("[]", dump(tags()));
}

TEST_F(NodeTags, SavingNeedsElementListAndSavedValue) {
  const node_record node = load("nodes-1");
  EXPECT_EQ(0, cfg_node_save_tag(nullptr, value(1).get()));
  EXPECT_EQ(0, cfg_node_save_tag(node.get(), nullptr));
  const value_record unsaved(cfg_tag_value_new(store, "text"));
  EXPECT_EQ(0, cfg_node_save_tag(node.get(), unsaved.get()));
  const node_record fresh(cfg_new_node(store));
  EXPECT_EQ(0, cfg_node_save_tag(fresh.get(), value(1).get()));
  EXPECT_EQ("[]", dump(tags()));
  erase(cfg_get_by_id(store, "nodes-1"), "tags");
  EXPECT_EQ(0, cfg_node_save_tag(node.get(), value(1).get()));
  EXPECT_EQ("none", dump(tags()));
}

TEST_F(NodeTags, OfNoNodeAreNone) {
  EXPECT_EQ(0, cfg_node_get_tag_count(nullptr));
  EXPECT_EQ(nullptr, cfg_node_get_tag(nullptr, 0));
  EXPECT_EQ(nullptr, cfg_node_get_tag_ref_uuid(nullptr, 0));
  EXPECT_EQ(nullptr, cfg_node_get_tag_by_ref_uuid(nullptr, "nodes-1_tags-1"));
  EXPECT_EQ(nullptr, cfg_node_get_tag_ref_uuid_by_value(nullptr, value(1).get()));
  const node_record fresh(cfg_new_node(store));
  EXPECT_EQ(0, cfg_node_get_tag_count(fresh.get()));
  EXPECT_EQ(nullptr, cfg_node_get_tag(fresh.get(), 0));
}

}  // namespace
