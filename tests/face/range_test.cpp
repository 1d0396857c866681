// Ranges give what the counts and getters of the C interface give, in their order.
#include <gtest/gtest.h>

#include <string>
#include <twobject.hpp>
#include <vector>

#include "allocation/world.hpp"

namespace {

using namespace twobject;
using namespace allocation;

class Range : public testing::Test {
 protected:
  World world;
  cfg *store = world.store;
};

using texts = std::vector<std::string>;

TEST_F(Range, NodesAreLoadedInTheOrderOfTheStore) {
  texts ids;
  for (const node_record &node : nodes(store)) ids.emplace_back(cfg_node_get_uuid(node.get()));
  EXPECT_EQ(ids, (texts{kTarnwell, kGeneric}));
}

TEST_F(Range, NodesByIdComeInTheOrderOfTheirIdsWithoutThoseThatNameNothing) {
  const char *const ids[] = {kGeneric, "nodes-77", kTarnwell};
  const auto found = nodes_by_id(store, ids);
  ASSERT_TRUE(found);
  ASSERT_EQ(found->size(), 2U);
  EXPECT_STREQ(cfg_node_get_uuid((*found)[0].get()), kGeneric);
  EXPECT_STREQ(cfg_node_get_uuid((*found)[1].get()), kTarnwell);
}

TEST_F(Range, PartsOfANodeAreItsOwnAndNotCopies) {
  int32_t index = 0;
  for (cfg_port *port : ports(world.generic)) EXPECT_EQ(port, cfg_node_get_port(world.generic, index++));
  EXPECT_EQ(index, 2);
  texts names;
  for (const cfg_node_user *user : users(world.node)) names.emplace_back(cfg_node_user_get_username(user));
  for (const cfg_node_group *group : groups(world.node))
    names.emplace_back(cfg_node_group_get_groupname(group));
  for (const cfg_node_interface *interface : interfaces(world.node))
    names.emplace_back(cfg_node_interface_get_name(interface));
  for (const cfg_etag *etag : etags(world.node)) names.emplace_back(cfg_etag_get_name(etag));
  EXPECT_EQ(names, (texts{"first username", "second username", "first groupname", "second groupname",
                          "first name", "second name", "ports", "users"}));
}

TEST_F(Range, TextsWithinRecordsAreBorrowed) {
  texts labels;
  for (const auto label : port_labels(world.generic)) labels.emplace_back(label.value_or("none"));
  EXPECT_EQ(labels, (texts{"first port", "second port"}));
  ASSERT_EQ(cfg_enrollment_set_port_count_field(world.generic_enrollment, 1), 1);
  labels.clear();
  for (const auto label : port_labels(world.generic_enrollment)) labels.emplace_back(label.value_or("none"));
  EXPECT_EQ(labels, (texts{"Port 1"}));
  texts names;
  for (const auto role : roles(cfg_node_get_node_group(world.node, 1))) names.emplace_back(*role);
  for (const auto group : groups(cfg_node_get_node_user(world.node, 0))) names.emplace_back(*group);
  EXPECT_EQ(names, (texts{"second of all", "second again", "first of all", "first again"}));
}

TEST_F(Range, TheGroupsOfAUserComeEachOnce) {
  EXPECT_EQ(group_ids(world.user), (texts{kUserGroup, kAdminGroup}));
  cfg_user_get_group(world.user);  // the record now stands behind its first group
  EXPECT_EQ(group_ids(world.user).size(), 2U);
  EXPECT_EQ(group_ids(world.stranger), texts());
}

TEST_F(Range, TheTemplatesAndMessagesOfAPushAreNamedByTheirIds) {
  texts ids;
  for (const auto id : template_ids(world.push)) ids.emplace_back(*id);
  EXPECT_EQ(ids, texts{kTemplate});
  EXPECT_EQ(message_ids(world.push_node, preflight_errors).size(), 1U);
  EXPECT_EQ(*message_ids(world.push_node, preflight_errors)[0],
            cfg_push_node_ctxt_get_preflight_error(world.push_node, 0));
  EXPECT_EQ(*message_ids(world.push_node, execution_changes)[0],
            cfg_push_node_ctxt_get_execution_change(world.push_node, 0));
}

TEST_F(Range, EntriesAreReadWhenTheRangeIsWalkedThrough) {
  const role_list list(cfg_role_list_new(store));
  const auto range = entries(list.get());
  ASSERT_EQ(range.size(), 1U);
  EXPECT_NE(range[0], nullptr);
  cfg_role_delete(world.role);
  EXPECT_EQ(range[0], nullptr);  // an entry that cannot be loaded any more
}

TEST_F(Range, NothingIsARangeWithoutEntries) {
  EXPECT_TRUE(nodes(static_cast<cfg *>(nullptr)).empty());
  EXPECT_TRUE(ports(nullptr).empty());
  EXPECT_TRUE(entries(static_cast<const cfg_user_list *>(nullptr)).empty());
  EXPECT_TRUE(indexed(-1, [](int32_t i) { return i; }).empty());
}

TEST_F(Range, OutParametersBecomeValues) {
  EXPECT_STREQ(text_from(cfg_system_get_hostname, store).get(), "appliance");
  EXPECT_EQ(number_from(cfg_net_get_ssh_port, store), 22);
  EXPECT_EQ(text_from(cfg_system_get_hostname, static_cast<cfg *>(nullptr)), nullptr);
  EXPECT_EQ(number_from(cfg_net_get_ssh_port, static_cast<cfg *>(nullptr)), std::nullopt);
}

TEST_F(Range, TheKeysOfAMapAreToldOrThatTheyCannotBe) {
  const auto keys = map_keys(cfg_get_by_path(store, "services.ca"));
  ASSERT_TRUE(keys);
  texts sorted(keys->begin(), keys->end());
  std::ranges::sort(sorted);
  EXPECT_EQ(sorted, (texts{"certificate", "key", "serial"}));
  EXPECT_FALSE(map_keys(cfg_get_by_path(store, "nodes")));
}

}  // namespace
