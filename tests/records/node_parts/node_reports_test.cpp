// Interfaces and users: what a node reports.
#include <twobject/node_group.h>
#include <twobject/node_interface.h>
#include <twobject/node_user.h>

#include "records/node_fixture.hpp"

namespace {

using records::node_record;

struct free_interface {
  void operator()(cfg_node_interface *record) const { cfg_node_interface_free(record); }
};
using interface_record = std::unique_ptr<cfg_node_interface, free_interface>;

class NodeReports : public records::NodeTest {
 protected:
  // A map that is appended to a node's list, which is made when it is missing.
  cfg_elem *entry(cfg_elem *node, const char *list_key) {
    cfg_elem *list = cfg_simple_get_mapelem(store, node, list_key);
    if (list == nullptr) list = child_list(node, list_key);
    cfg_elem *map = cfg_new_map(store);
    add(list, map);
    return map;
  }
  void add_interface(cfg_elem *node, const char *name) {
    cfg_elem *map = entry(node, "interfaces");
    set(map, "name", name);
    set(map, "ipv4_address", (std::string("v4 of ") + name).c_str());
    set(map, "ipv6_address", (std::string("v6 of ") + name).c_str());
  }
  void add_user(cfg_elem *node, const char *name, int32_t disabled, const std::vector<const char *> &groups) {
    cfg_elem *map = entry(node, "users");
    set(map, "username", name);
    set(map, "description", (std::string("about ") + name).c_str());
    set(map, "disabled", disabled);
    cfg_elem *list = child_list(map, "groups");
    for (const char *group : groups) add(list, group);
  }
  interface_record load_interface(const std::string &id) {
    return interface_record(cfg_get_node_interface_by_id(store, id.c_str()));
  }
};

TEST_F(NodeReports, InterfacesComeInListOrder) {
  cfg_elem *elem = add_node("n", "tarnwell");
  add_interface(elem, "net1");
  add_interface(elem, "net2");
  commit_and_reopen();
  const node_record node = load("nodes-1");
  ASSERT_EQ(2, cfg_node_get_interface_count(node.get()));
  for (int i = 0; i < 2; ++i) {
    const std::string name = "net" + std::to_string(i + 1);
    const cfg_node_interface *record = cfg_node_get_interface(node.get(), i);
    EXPECT_EQ("nodes-1_interfaces-" + std::to_string(i + 1), cfg_node_interface_get_uuid(record));
    EXPECT_STREQ("nodes-1", cfg_node_interface_get_node_uuid(record));
    EXPECT_EQ(name, cfg_node_interface_get_name(record));
    EXPECT_EQ("v4 of " + name, cfg_node_interface_get_ipv4_addr(record));
    EXPECT_EQ("v6 of " + name, cfg_node_interface_get_ipv6_addr(record));
  }
  for (const int32_t index : {-1, 2, INT32_MIN, INT32_MAX})
    EXPECT_EQ(nullptr, cfg_node_get_interface(node.get(), index)) << index;
}

TEST_F(NodeReports, AnInterfaceIsLoadedByItsId) {
  cfg_elem *elem = add_node("n", "generic");
  add_interface(elem, "net1");
  entry(elem, "interfaces");
  add(cfg_simple_get_mapelem(store, elem, "interfaces"), "no interface");
  map_at("lonely");
  commit_and_reopen();
  const interface_record first = load_interface("nodes-1_interfaces-1");
  EXPECT_STREQ("nodes-1_interfaces-1", cfg_node_interface_get_uuid(first.get()));
  EXPECT_STREQ("nodes-1", cfg_node_interface_get_node_uuid(first.get()));
  EXPECT_STREQ("net1", cfg_node_interface_get_name(first.get()));
  EXPECT_STREQ("v4 of net1", cfg_node_interface_get_ipv4_addr(first.get()));
  EXPECT_STREQ("v6 of net1", cfg_node_interface_get_ipv6_addr(first.get()));
  const interface_record bare = load_interface("nodes-1_interfaces-2");
  ASSERT_NE(nullptr, bare);
  EXPECT_EQ(nullptr, cfg_node_interface_get_name(bare.get()));
  EXPECT_EQ(nullptr, load_interface("nodes-1_interfaces-3")) << "no map";
  EXPECT_EQ(nullptr, load_interface("nodes-1_interfaces-4"));
  EXPECT_EQ(nullptr, load_interface("lonely")) << "directly below the root";
  EXPECT_EQ(nullptr, cfg_get_node_interface_by_id(store, nullptr));
  EXPECT_EQ(nullptr, cfg_get_node_interface_by_id(nullptr, "nodes-1_interfaces-1"));
}

TEST_F(NodeReports, ANewInterfaceIsEmpty) {
  const interface_record record(cfg_new_node_interface(store));
  ASSERT_NE(nullptr, record);
  for (const cfg_node_interface *nothing : {static_cast<const cfg_node_interface *>(record.get()),
                                            static_cast<const cfg_node_interface *>(nullptr)}) {
    EXPECT_EQ(nullptr, cfg_node_interface_get_uuid(nothing));
    EXPECT_EQ(nullptr, cfg_node_interface_get_node_uuid(nothing));
    EXPECT_EQ(nullptr, cfg_node_interface_get_name(nothing));
    EXPECT_EQ(nullptr, cfg_node_interface_get_ipv4_addr(nothing));
    EXPECT_EQ(nullptr, cfg_node_interface_get_ipv6_addr(nothing));
  }
  cfg_node_interface_free(nullptr);
}

TEST_F(NodeReports, UsersComeInListOrderWithTheirGroups) {
  cfg_elem *elem = add_node("n", "tarnwell");
  add_user(elem, "root", 0, {"admin", "users"});
  add_user(elem, "guest", 1, {});
  commit_and_reopen();
  const node_record node = load("nodes-1");
  ASSERT_EQ(2, cfg_node_get_node_user_count(node.get()));
  const cfg_node_user *root = cfg_node_get_node_user(node.get(), 0);
  EXPECT_STREQ("root", cfg_node_user_get_username(root));
  EXPECT_STREQ("about root", cfg_node_user_get_description(root));
  EXPECT_EQ(0, cfg_node_user_get_disabled(root));
  ASSERT_EQ(2, cfg_node_user_get_group_count(root));
  EXPECT_STREQ("admin", cfg_node_user_get_group(root, 0));
  EXPECT_STREQ("users", cfg_node_user_get_group(root, 1));
  for (const int32_t index : {-1, 2, INT32_MIN, INT32_MAX})
    EXPECT_EQ(nullptr, cfg_node_user_get_group(root, index)) << index;
  const cfg_node_user *guest = cfg_node_get_node_user(node.get(), 1);
  EXPECT_STREQ("guest", cfg_node_user_get_username(guest));
  EXPECT_EQ(1, cfg_node_user_get_disabled(guest));
  EXPECT_EQ(0, cfg_node_user_get_group_count(guest));
  EXPECT_EQ(nullptr, cfg_node_user_get_group(guest, 0));
  for (const int32_t index : {-1, 2, INT32_MIN, INT32_MAX})
    EXPECT_EQ(nullptr, cfg_node_get_node_user(node.get(), index)) << index;
}

TEST_F(NodeReports, AUserInVeryManyGroupsHasThemAll) {
  cfg_elem *elem = add_node("n", "tarnwell");
  std::vector<std::string> names;
  for (int i = 0; i < 300; ++i) names.push_back("group number " + std::to_string(i));
  std::vector<const char *> groups;
  for (const std::string &name : names) groups.push_back(name.c_str());
  add_user(elem, "root", 0, groups);
  commit_and_reopen();
  const node_record node = load("nodes-1");
  const cfg_node_user *root = cfg_node_get_node_user(node.get(), 0);
  ASSERT_EQ(300, cfg_node_user_get_group_count(root));
  for (int i = 0; i < 300; ++i)
    EXPECT_EQ(names[static_cast<std::size_t>(i)], cfg_node_user_get_group(root, i));
}

TEST_F(NodeReports, AreReadBeforeTheyAreCommittedToo) {
  cfg_elem *elem = add_node("n", "tarnwell");
  add_interface(elem, "net1");
  add_user(elem, "root", 0, {"admin"});
  const node_record node = load(elem);
  ASSERT_EQ(1, cfg_node_get_interface_count(node.get()));
  EXPECT_STREQ("net1", cfg_node_interface_get_name(cfg_node_get_interface(node.get(), 0)));
  EXPECT_EQ(id_of(elem), cfg_node_interface_get_node_uuid(cfg_node_get_interface(node.get(), 0)));
  ASSERT_EQ(1, cfg_node_get_node_user_count(node.get()));
  EXPECT_STREQ("admin", cfg_node_user_get_group(cfg_node_get_node_user(node.get(), 0), 0));
}

TEST_F(NodeReports, OnlyATarnwellNodeHasAny) {
  for (const char *product : {"generic", "acs6000", "acs8000", "cisco2900", "acs_classic", "Tarnwell",
                              static_cast<const char *>(nullptr)}) {
    SCOPED_TRACE(product == nullptr ? "none" : product);
    cfg_map_delete_key(store, cfg_root(store), "nodes");
    cfg_elem *elem = add_node("n", product);
    add_interface(elem, "net1");
    add_user(elem, "root", 0, {"admin"});
    set(entry(elem, "groups"), "groupname", "admin");
    const node_record node = load(elem);
    EXPECT_EQ(0, cfg_node_get_interface_count(node.get()));
    EXPECT_EQ(nullptr, cfg_node_get_interface(node.get(), 0));
    EXPECT_EQ(0, cfg_node_get_node_user_count(node.get()));
    EXPECT_EQ(nullptr, cfg_node_get_node_user(node.get(), 0));
    EXPECT_EQ(0, cfg_node_get_node_group_count(node.get()));
    EXPECT_EQ(nullptr, cfg_node_get_node_group(node.get(), 0));
  }
}

TEST_F(NodeReports, AreReadWithTheNodeAndNotLater) {
  cfg_elem *elem = add_node("n", "tarnwell");
  const node_record node = load(elem);
  add_interface(elem, "net1");
  add_user(elem, "root", 0, {"admin"});
  EXPECT_EQ(0, cfg_node_get_interface_count(node.get()));
  EXPECT_EQ(0, cfg_node_get_node_user_count(node.get()));
}

TEST_F(NodeReports, AnEntryThatIsNoMapLeavesAnEmptySlot) {
  cfg_elem *elem = add_node("n", "tarnwell");
  add(child_list(elem, "interfaces"), "text");
  add(child_list(elem, "users"), "text");
  add_interface(elem, "net1");
  add_user(elem, "root", 0, {});
  const node_record node = load(elem);
  ASSERT_EQ(2, cfg_node_get_interface_count(node.get()));
  EXPECT_EQ(nullptr, cfg_node_get_interface(node.get(), 0));
  EXPECT_STREQ("net1", cfg_node_interface_get_name(cfg_node_get_interface(node.get(), 1)));
  ASSERT_EQ(2, cfg_node_get_node_user_count(node.get()));
  EXPECT_EQ(nullptr, cfg_node_get_node_user(node.get(), 0));
  EXPECT_STREQ("root", cfg_node_user_get_username(cfg_node_get_node_user(node.get(), 1)));
}

TEST_F(NodeReports, ValuesOfAnotherKindReadAsAbsent) {
  cfg_elem *elem = add_node("n", "tarnwell");
  cfg_elem *interface = entry(elem, "interfaces");
  for (const char *key : {"name", "ipv4_address", "ipv6_address"}) set(interface, key, 1);
  cfg_elem *user = entry(elem, "users");
  for (const char *key : {"username", "description"}) set(user, key, 1);
  for (const char *key : {"disabled", "groups"}) set(user, key, "text");
  cfg_elem *mixed = entry(elem, "users");
  cfg_elem *groups = child_list(mixed, "groups");
  add(groups, "first");
  add(groups, cfg_new_map(store));
  add(groups, "third");
  const node_record node = load(elem);
  const cfg_node_interface *read = cfg_node_get_interface(node.get(), 0);
  ASSERT_NE(nullptr, read);
  EXPECT_EQ(nullptr, cfg_node_interface_get_name(read));
  EXPECT_EQ(nullptr, cfg_node_interface_get_ipv4_addr(read));
  EXPECT_EQ(nullptr, cfg_node_interface_get_ipv6_addr(read));
  const cfg_node_user *first = cfg_node_get_node_user(node.get(), 0);
  ASSERT_NE(nullptr, first);
  EXPECT_EQ(nullptr, cfg_node_user_get_username(first));
  EXPECT_EQ(nullptr, cfg_node_user_get_description(first));
  EXPECT_EQ(0, cfg_node_user_get_disabled(first));
  EXPECT_EQ(0, cfg_node_user_get_group_count(first));
  const cfg_node_user *second = cfg_node_get_node_user(node.get(), 1);
  ASSERT_EQ(3, cfg_node_user_get_group_count(second));
  EXPECT_STREQ("first", cfg_node_user_get_group(second, 0));
  EXPECT_EQ(nullptr, cfg_node_user_get_group(second, 1));
  EXPECT_STREQ("third", cfg_node_user_get_group(second, 2));
}

TEST_F(NodeReports, OfNoNodeAndNoUserAreNone) {
  EXPECT_EQ(0, cfg_node_get_interface_count(nullptr));
  EXPECT_EQ(nullptr, cfg_node_get_interface(nullptr, 0));
  EXPECT_EQ(0, cfg_node_get_node_user_count(nullptr));
  EXPECT_EQ(nullptr, cfg_node_get_node_user(nullptr, 0));
  EXPECT_EQ(nullptr, cfg_node_user_get_username(nullptr));
  EXPECT_EQ(nullptr, cfg_node_user_get_description(nullptr));
  EXPECT_EQ(0, cfg_node_user_get_disabled(nullptr));
  EXPECT_EQ(0, cfg_node_user_get_group_count(nullptr));
  EXPECT_EQ(nullptr, cfg_node_user_get_group(nullptr, 0));
  cfg_node_user_free(nullptr);
}

}  // namespace
