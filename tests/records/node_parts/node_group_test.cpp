// Groups of nodes: read, changed and written as a whole list.
#include <twobject/node_group.h>

#include "records/node_fixture.hpp"

namespace {

using records::node_record;

struct free_group {
  void operator()(cfg_node_group *group) const { cfg_node_group_free(group); }
};
using group_record = std::unique_ptr<cfg_node_group, free_group>;

class NodeGroups : public records::NodeTest {
 protected:
  void add_group(cfg_elem *node, const char *name, bool system, const std::vector<const char *> &roles) {
    cfg_elem *list = cfg_simple_get_mapelem(store, node, "groups");
    if (list == nullptr) list = child_list(node, "groups");
    cfg_elem *group = cfg_new_map(store);
    set(group, "groupname", name);
    set(group, "description", (std::string("about ") + name).c_str());
    set_bool(group, "system", system);
    cfg_elem *role_list = child_list(group, "roles");
    for (const char *role : roles) add(role_list, role);
    add(list, group);
  }
  // "nodes-1", a tarnwell node with the groups a, b and c.
  node_record three_groups() {
    cfg_elem *elem = add_node("n", "tarnwell");
    add_group(elem, "a", true, {"admin", "pmshell"});
    add_group(elem, "b", false, {});
    add_group(elem, "c", false, {"ports"});
    commit_and_reopen();
    return load("nodes-1");
  }
  std::string stored() {
    return dump(cfg_simple_get_mapelem(store, cfg_get_by_id(store, "nodes-1"), "groups"));
  }
  std::string names(const cfg_node *node) {
    std::string all;
    for (int32_t i = 0; i < cfg_node_get_node_group_count(node); ++i)
      all += cfg_node_group_get_groupname(cfg_node_get_node_group(node, i));
    return all;
  }
};

TEST_F(NodeGroups, ComeInListOrderWithTheirRoles) {
  const node_record node = three_groups();
  ASSERT_EQ(3, cfg_node_get_node_group_count(node.get()));
  const cfg_node_group *a = cfg_node_get_node_group(node.get(), 0);
  EXPECT_STREQ("a", cfg_node_group_get_groupname(a));
  EXPECT_STREQ("about a", cfg_node_group_get_description(a));
  EXPECT_EQ(1, cfg_node_group_get_system(a));
  ASSERT_EQ(2, cfg_node_group_get_role_count(a));
  EXPECT_STREQ("admin", cfg_node_group_get_role(a, 0));
  EXPECT_STREQ("pmshell", cfg_node_group_get_role(a, 1));
  for (const int32_t index : {-1, 2, INT32_MIN, INT32_MAX})
    EXPECT_EQ(nullptr, cfg_node_group_get_role(a, index)) << index;
  const cfg_node_group *b = cfg_node_get_node_group(node.get(), 1);
  EXPECT_EQ(0, cfg_node_group_get_system(b));
  EXPECT_EQ(0, cfg_node_group_get_role_count(b));
  EXPECT_EQ(nullptr, cfg_node_group_get_role(b, 0));
  for (const int32_t index : {-1, 3, INT32_MIN, INT32_MAX})
    EXPECT_EQ(nullptr, cfg_node_get_node_group(node.get(), index)) << index;
}

TEST_F(NodeGroups, AGroupWithoutRolesHasNone) {
  cfg_elem *elem = add_node("n", "tarnwell");
  cfg_elem *group = cfg_new_map(store);
  add(child_list(elem, "groups"), group);
  add(cfg_simple_get_mapelem(store, elem, "groups"), "no group");
  const node_record node = load(elem);
  ASSERT_EQ(2, cfg_node_get_node_group_count(node.get()));
  const cfg_node_group *bare = cfg_node_get_node_group(node.get(), 0);
  ASSERT_NE(nullptr, bare);
  EXPECT_EQ(nullptr, cfg_node_group_get_groupname(bare));
  EXPECT_EQ(0, cfg_node_group_get_role_count(bare));
  EXPECT_EQ(nullptr, cfg_node_get_node_group(node.get(), 1)) << "an entry that is no map";
}

TEST_F(NodeGroups, ANewGroupStandsBehindTheOthersAndIsSaved) {
  const node_record node = three_groups();
  std::string name = "ops";
  cfg_node_group *group = cfg_node_new_group(node.get(), name.c_str());
  name = "changed";
  ASSERT_NE(nullptr, group);
  EXPECT_STREQ("ops", cfg_node_group_get_groupname(group));
  EXPECT_EQ(group, cfg_node_get_node_group(node.get(), 3));
  EXPECT_EQ(1, cfg_node_group_add_role(group, "admin"));
  EXPECT_EQ(1, cfg_node_group_set_description(group, "operators"));
  ASSERT_EQ(1, cfg_node_save_groups(node.get()));
  EXPECT_EQ(
      "[{description=\"about a\" groupname=\"a\" roles=[\"admin\" \"pmshell\"] system=true} "
      "{description=\"about b\" groupname=\"b\" roles=[] system=false} "
      "{description=\"about c\" groupname=\"c\" roles=[\"ports\"] system=false} "
      "{description=\"operators\" groupname=\"ops\" roles=[\"admin\"] system=false}]",
      stored());
  const std::string before = stored();
  commit_and_reopen();
  EXPECT_EQ(before, stored());
  EXPECT_EQ("abcops", names(load("nodes-1").get()));
}

TEST_F(NodeGroups, GroupsKeepTheirAddressWhileOthersComeAndGo) {
  const node_record node = three_groups();
  const cfg_node_group *c = cfg_node_get_node_group(node.get(), 2);
  for (int i = 0; i < 100; ++i) ASSERT_NE(nullptr, cfg_node_new_group(node.get(), "x"));
  const group_record a(cfg_node_get_node_group(node.get(), 0));
  ASSERT_EQ(1, cfg_node_delete_group(node.get(), a.get()));
  EXPECT_EQ(c, cfg_node_get_node_group(node.get(), 1));
  EXPECT_STREQ("c", cfg_node_group_get_groupname(c));
}

TEST_F(NodeGroups, ADeletedGroupIsTheCallersAndLeavesNoGap) {
  const node_record node = three_groups();
  const group_record b(cfg_node_get_node_group(node.get(), 1));
  EXPECT_EQ(1, cfg_node_delete_group(node.get(), b.get()));
  EXPECT_EQ("ac", names(node.get()));
  EXPECT_STREQ("b", cfg_node_group_get_groupname(b.get()));
  ASSERT_EQ(1, cfg_node_save_groups(node.get()));
  EXPECT_EQ(
      "[{description=\"about a\" groupname=\"a\" roles=[\"admin\" \"pmshell\"] system=true} "
      "{description=\"about c\" groupname=\"c\" roles=[\"ports\"] system=false}]",
      stored());
}

TEST_F(NodeGroups, ADeletedGroupOutlivesItsNode) {
  node_record node = three_groups();
  const group_record b(cfg_node_get_node_group(node.get(), 1));
  ASSERT_EQ(1, cfg_node_delete_group(node.get(), b.get()));
  node.reset();
  EXPECT_STREQ("b", cfg_node_group_get_groupname(b.get()));
  EXPECT_STREQ("about b", cfg_node_group_get_description(b.get()));
  EXPECT_EQ(1, cfg_node_group_add_role(b.get(), "late"));
  EXPECT_STREQ("late", cfg_node_group_get_role(b.get(), cfg_node_group_get_role_count(b.get()) - 1));
}

TEST_F(NodeGroups, DeletingAGroupOfNoneOrAnotherNodeChangesNothing) {
  const node_record node = three_groups();
  const node_record other = load("nodes-1");
  EXPECT_EQ(0, cfg_node_delete_group(node.get(), cfg_node_get_node_group(other.get(), 0)));
  EXPECT_EQ(0, cfg_node_delete_group(node.get(), nullptr));
  EXPECT_EQ(0, cfg_node_delete_group(nullptr, cfg_node_get_node_group(node.get(), 0)));
  EXPECT_EQ("abc", names(node.get()));
  EXPECT_EQ("abc", names(other.get()));
}

TEST_F(NodeGroups, FieldsCanBeSet) {
  const node_record node(cfg_new_node(store));
  cfg_node_group *group = cfg_node_new_group(node.get(), "g");
  EXPECT_EQ(1, cfg_node_group_set_description(group, "first"));
  EXPECT_EQ(1, cfg_node_group_set_description(group, "second"));
  EXPECT_STREQ("second", cfg_node_group_get_description(group));
  EXPECT_EQ(1, cfg_node_group_set_description(group, nullptr));
  EXPECT_EQ(nullptr, cfg_node_group_get_description(group));
  EXPECT_EQ(1, cfg_node_group_set_system(group, 7));
  EXPECT_EQ(1, cfg_node_group_get_system(group));
  EXPECT_EQ(1, cfg_node_group_set_system(group, 0));
  EXPECT_EQ(0, cfg_node_group_get_system(group));
  EXPECT_EQ(1, cfg_node_group_add_role(group, "r1"));
  EXPECT_EQ(1, cfg_node_group_add_role(group, "r2"));
  EXPECT_EQ(0, cfg_node_group_add_role(group, nullptr));
  EXPECT_EQ(2, cfg_node_group_get_role_count(group));
  EXPECT_STREQ("r2", cfg_node_group_get_role(group, 1));
}

TEST_F(NodeGroups, ANewGroupNeedsANodeAndAName) {
  EXPECT_EQ(nullptr, cfg_node_new_group(nullptr, "g"));
  const node_record node(cfg_new_node(store));
  EXPECT_EQ(nullptr, cfg_node_new_group(node.get(), nullptr));
  EXPECT_EQ(0, cfg_node_get_node_group_count(node.get()));
}

TEST_F(NodeGroups, SavingNoneEmptiesTheStoredList) {
  const node_record node = three_groups();
  while (cfg_node_get_node_group_count(node.get()) > 0) {
    const group_record group(cfg_node_get_node_group(node.get(), 0));
    ASSERT_EQ(1, cfg_node_delete_group(node.get(), group.get()));
  }
  ASSERT_EQ(1, cfg_node_save_groups(node.get()));
  EXPECT_EQ("[]", stored());
}

TEST_F(NodeGroups, SavingNeedsTheNodesElement) {
  EXPECT_EQ(0, cfg_node_save_groups(nullptr));
  const node_record fresh(cfg_new_node(store));
  EXPECT_EQ(0, cfg_node_save_groups(fresh.get()));
  const node_record node = three_groups();
  cfg_delete_element(store, cfg_get_by_id(store, "nodes-1"));
  EXPECT_EQ(0, cfg_node_save_groups(node.get()));
}

TEST_F(NodeGroups, ARefusedTextCostsNeitherTheOtherGroupsNorTheResult) {
  const node_record node = three_groups();
  cfg_node_group_set_description(cfg_node_get_node_group(node.get(), 0), records::unwritable().c_str());
  ASSERT_EQ(1, cfg_node_save_groups(node.get()));
  EXPECT_EQ(
      "[{groupname=\"a\" roles=[\"admin\" \"pmshell\"] system=true} "
      "{description=\"about b\" groupname=\"b\" roles=[] system=false} "
      "{description=\"about c\" groupname=\"c\" roles=[\"ports\"] system=false}]",
      stored());
}

TEST_F(NodeGroups, OfNoNodeAndNoGroupAreNone) {
  EXPECT_EQ(0, cfg_node_get_node_group_count(nullptr));
  EXPECT_EQ(nullptr, cfg_node_get_node_group(nullptr, 0));
  EXPECT_EQ(nullptr, cfg_node_group_get_groupname(nullptr));
  EXPECT_EQ(nullptr, cfg_node_group_get_description(nullptr));
  EXPECT_EQ(0, cfg_node_group_get_system(nullptr));
  EXPECT_EQ(0, cfg_node_group_get_role_count(nullptr));
  EXPECT_EQ(nullptr, cfg_node_group_get_role(nullptr, 0));
  EXPECT_EQ(0, cfg_node_group_set_description(nullptr, "d"));
  EXPECT_EQ(0, cfg_node_group_set_system(nullptr, 1));
  EXPECT_EQ(0, cfg_node_group_add_role(nullptr, "r"));
  cfg_node_group_free(nullptr);
}

}  // namespace
