// Who uses the face alone leaves nothing behind. Beside each owner that gives back more than the C
// interface's own free function does stands what that leaves: the proof that these tests see what is left.
#include <gtest/gtest.h>

#include <functional>
#include <twobject.hpp>

#include "allocation/failing_allocator.hpp"
#include "allocation/world.hpp"
#include "search_service/search_service.hpp"

namespace {

using namespace twobject;
using namespace allocation;

using use = std::function<void(cfg *store)>;

void on_a_store_of_its_own(const use &records) {
  const World world;
  records(world.store);
}

// How many blocks a use of the C interface leaves behind. What is made once for the process must be there,
// which the same use of the face sees to.
std::size_t left_by_c(const use &records) {
  Watch watch;
  on_a_store_of_its_own(records);
  const std::size_t left = watch.left();
  watch.give_back();
  return left;
}

// The same for the face, in which a leak stays one for the sanitizer as well.
std::size_t left_by_face(const use &records) {
  on_a_store_of_its_own(records);
  const Watch watch;
  on_a_store_of_its_own(records);
  return watch.left();
}

TEST(Leftover, ACertificateIsGivenBackWithItsBlock) {
  EXPECT_EQ(left_by_face([](cfg *store) {
              const certificate_record record(cfg_get_certificate_by_id(store, kCertificate));
              ASSERT_NE(record, nullptr);
            }),
            0U);
  EXPECT_EQ(
      left_by_c([](cfg *store) { cfg_certificate_free(cfg_get_certificate_by_id(store, kCertificate)); }),
      1U);
}

TEST(Leftover, ATagIsGivenBackWithTheArrayOfItsValues) {
  EXPECT_EQ(left_by_face([](cfg *store) {
              const tag_record tag(cfg_get_tag_by_id(store, kTag));
              ASSERT_NE(tag_get_all_values(tag.get()), nullptr);
              for (const tag_value_record &value : values(tag.get())) ASSERT_NE(value, nullptr);
            }),
            0U);
  EXPECT_EQ(left_by_c([](cfg *store) { cfg_tag_free(cfg_get_tag_by_id(store, kTag)); }), 1U);
}

TEST(Leftover, AListOfTagsIsGivenBackWithItsArrayAndItsId) {
  EXPECT_EQ(left_by_face([](cfg *store) {
              const tag_list list(cfg_get_tag_list(store, CFG_TAG_NODE));
              for (const tag_record &tag : entries(list.get())) ASSERT_NE(tag, nullptr);
            }),
            0U);
  EXPECT_EQ(left_by_c([](cfg *store) { cfg_tag_list_free(cfg_get_tag_list(store, CFG_TAG_NODE)); }), 2U);
}

TEST(Leftover, ATemplateIsGivenBackWithAllOfItsTexts) {
  EXPECT_EQ(left_by_face([](cfg *store) {
              const template_record record(cfg_template_get_by_id(store, kTemplate));
              ASSERT_STREQ(cfg_dummy_template_get_dummy_field(record.get()), "the template's text");
              const template_list list(cfg_template_list_new(store));
              for (const template_record &each : entries(list.get())) ASSERT_NE(each, nullptr);
            }),
            0U);
  // ID, description and what a dummy carries.
  EXPECT_EQ(left_by_c([](cfg *store) { cfg_template_free(cfg_template_get_by_id(store, kTemplate)); }), 3U);
}

TEST(Leftover, ATemplateOfEachTypeIsGivenBackWithWhatItCarries) {
  for (const char *id :
       {kUsersTemplate, kGroupsTemplate, kMembershipTemplate, kAuthTemplate, kScriptTemplate}) {
    EXPECT_EQ(left_by_face([&](cfg *store) {
                const template_record record(cfg_template_get_by_id(store, id));
                ASSERT_NE(record, nullptr);
              }),
              0U)
        << id;
    EXPECT_GT(left_by_c([&](cfg *store) { cfg_template_free(cfg_template_get_by_id(store, id)); }), 2U) << id;
  }
}

TEST(Leftover, AUserOrAGroupGoesToItsTemplateOrStaysTheOwners) {
  EXPECT_EQ(left_by_face([](cfg *store) {
              const template_record record(cfg_template_new(store, "new", CFG_TEMPLATE_USERS_GROUPS));
              user_operation_record user(cfg_ugt_new_user_operation());
              group_operation_record group(cfg_ugt_new_group_operation());
              ASSERT_TRUE(cfg_ugt_user_operation_set_username(user.get(), "a new user"));
              ASSERT_TRUE(add_user_operation(record.get(), user));
              ASSERT_TRUE(add_group_operation(record.get(), group));
              ASSERT_EQ(user_operations(record.get()).size(), 1U);
              ASSERT_EQ(group_operations(record.get()).size(), 1U);
              user_operation_record late(cfg_ugt_new_user_operation());
              ASSERT_FALSE(add_user_operation(nullptr, late));
              ASSERT_NE(late, nullptr);
            }),
            0U);
  EXPECT_EQ(left_by_c([](cfg *) { cfg_ugt_free_user_operation(cfg_ugt_new_user_operation()); }), 1U);
}

TEST(Leftover, ATemplateAndAPushMayEndAfterTheirStore) {
  EXPECT_EQ(left_by_face([](cfg *) {
              store_handle store(cfg_open_memory(nullptr, nullptr));
              ASSERT_NE(store, nullptr);
              const template_record record(cfg_template_new(store.get(), "one", CFG_TEMPLATE_DUMMY));
              const push_record push(cfg_push_exec_ctxt_new(store.get()));
              ASSERT_TRUE(cfg_push_exec_ctxt_add_template(push.get(), kTemplate));
              store.reset();
            }),
            0U);
}

TEST(Leftover, APushIsGivenBackWithTheTextsOfItsTemplatesAndNodes) {
  EXPECT_EQ(left_by_face([](cfg *store) {
              const push_record push(cfg_push_exec_ctxt_get_by_id(store, kPush));
              for (cfg_push_node_ctxt *context : nodes(push.get())) ASSERT_NE(context, nullptr);
              const push_list list(cfg_push_exec_ctxt_list_new(store));
              for (const push_record &each : entries(list.get())) ASSERT_NE(each, nullptr);
            }),
            0U);
  // Two of the template, three of the node context, and one for each of its eight messages.
  EXPECT_EQ(left_by_c([](cfg *store) {
              cfg_push_exec_ctxt *push = cfg_push_exec_ctxt_get_by_id(store, kPush);
              cfg_push_exec_ctxt_populate_nodes(push);
              cfg_push_exec_ctxt_free(push);
            }),
            13U);
}

TEST(Leftover, NodesThatAreRemovedFromAPushAreGivenBackWithTheirTexts) {
  EXPECT_EQ(left_by_face([](cfg *store) {
              const push_record push(cfg_push_exec_ctxt_get_by_id(store, kPush));
              ASSERT_EQ(remove_nodes(push.get()), 1);
            }),
            0U);
  EXPECT_EQ(left_by_c([](cfg *store) {
              const push_record push(cfg_push_exec_ctxt_get_by_id(store, kPush));
              cfg_push_exec_ctxt_populate_nodes(push.get());
              ASSERT_EQ(cfg_push_exec_ctxt_remove_nodes(push.get()), 1);
            }),
            11U);
}

TEST(Leftover, ANodeContextGoesToItsPushOrStaysTheOwners) {
  EXPECT_EQ(left_by_face([](cfg *store) {
              const push_record push(cfg_push_exec_ctxt_new(store));
              push_node_record context(cfg_push_node_ctxt_new(store));
              ASSERT_TRUE(cfg_push_node_ctxt_set_node(context.get(), kTarnwell));
              ASSERT_TRUE(add_node(push.get(), context));
              ASSERT_EQ(context, nullptr);
              remove_nodes(push.get());
              push_node_record late(cfg_push_node_ctxt_new(store));
              ASSERT_FALSE(add_node(push.get(), late));
              ASSERT_NE(late, nullptr);
            }),
            0U);
}

TEST(Leftover, AListOfSmartGroupsIsGivenBackWithItsArray) {
  EXPECT_EQ(left_by_face([](cfg *store) {
              const smartgroup_list list(cfg_smartgroup_list_new(store, "nodes"));
              for (const smartgroup_record &group : entries(list.get())) ASSERT_NE(group, nullptr);
            }),
            0U);
  EXPECT_EQ(left_by_c([](cfg *store) { cfg_smartgroup_list_free(cfg_smartgroup_list_new(store, "nodes")); }),
            1U);
}

TEST(Leftover, WhatTheSearchServiceFindsIsGivenBack) {
  const search_service::Scripted service(std::string(
      R"({"result":true,"data":{"id":"r","count":9,"fields":["a","b"],"items":["nodes-1","nodes-2"]}})"));
  EXPECT_EQ(left_by_face([](cfg *store) {
              const smartgroup_record group(cfg_smartgroup_get_by_id(store, "nodes", kSmartGroup));
              ASSERT_EQ(members(group.get()).size(), 2);  // whatever number the service tells
              ASSERT_EQ(search_fields("nodes")->size(), 2);
              const heap_text id = search(group.get());
              const search_result found = fetch(id.get());
              ASSERT_EQ(found.status, 2);
              ASSERT_EQ(found.total, 9);
              ASSERT_STREQ(found.ids[1], "nodes-2");
            }),
            0U);
}

TEST(Leftover, NodesAreGivenBackWithTheirPartsAndArrays) {
  EXPECT_EQ(left_by_face([](cfg *store) {
              for (const node_record &node : nodes(store)) {
                ASSERT_NE(node, nullptr);
                for (const cfg_port *port : ports(node.get())) ASSERT_NE(port, nullptr);
                for (const tag_value_record &value : tags(node.get())) ASSERT_NE(value, nullptr);
              }
              const char *const both[] = {kGeneric, kTarnwell};
              ASSERT_EQ(nodes_by_id(store, both)->size(), 2U);
              const char *const damaged[] = {kGeneric, kTag};
              ASSERT_FALSE(nodes_by_id(store, damaged));
              const node_record node(cfg_get_node_by_id(store, kTarnwell));
              const node_group_record group = take_group(node.get(), cfg_node_get_node_group(node.get(), 0));
              ASSERT_NE(group, nullptr);
              ASSERT_EQ(take_group(node.get(), group.get()), nullptr);  // it is the node's no longer
              const port_record port(cfg_get_port_by_id(store, kPort));
              const node_interface_record interface(cfg_new_node_interface(store));
              const enrollment_record enrollment(cfg_enrollment_get_by_id(store, kTarnwell));
              ASSERT_NE(status(enrollment.get()), nullptr);
            }),
            0U);
}

TEST(Leftover, BundlesAreGivenBackWithWhatTheyReferTo) {
  EXPECT_EQ(left_by_face([](cfg *store) {
              const bundle_list list(cfg_bundle_list_new(store));
              for (const bundle_record &bundle : entries(list.get())) {
                for (const tag_value_record &value : automatic_tags(bundle.get())) ASSERT_NE(value, nullptr);
                for (const template_record &each : templates(bundle.get())) ASSERT_NE(each, nullptr);
              }
              ASSERT_NE(request_token(store), nullptr);
            }),
            0U);
}

TEST(Leftover, UsersAndGroupsAreGivenBackTogether) {
  EXPECT_EQ(left_by_face([](cfg *store) {
              const user_record fresh(cfg_user_new(store, "fresh"));
              const group_record group(cfg_group_get_by_id(store, kUserGroup));
              ASSERT_NE(cfg_group_load_member(group.get(), fresh.get(), 1), nullptr);
              const group_member_list links(cfg_group_member_list_new(group.get()));
              ASSERT_EQ(cfg_group_get_member_count(links.get()), 2);
              for (const user_record &user : entries(links.get())) static_cast<void>(user);
              const user_list users(cfg_user_list_new(store));
              for (const user_record &user : entries(users.get())) ASSERT_NE(user, nullptr);
              const group_list groups(cfg_group_list_new(store));
              for (const group_record &each : entries(groups.get())) ASSERT_NE(each, nullptr);
              const role_list roles(cfg_role_list_new(store));
              for (const role_record &role : entries(roles.get())) ASSERT_NE(role, nullptr);
              ASSERT_NE(global_role(group.get()), nullptr);
              ASSERT_NE(smart_group_role(group.get()), nullptr);
              ASSERT_NE(smart_group(group.get()), nullptr);
              const acl_record acl(cfg_acl_get_by_id(store, kAcl));
            }),
            0U);
}

TEST(Leftover, AuthenticationIsGivenBackWithItsServers) {
  EXPECT_EQ(left_by_face([](cfg *store) {
              const auth_record auth(cfg_get_auth(store));
              std::size_t servers = 0;
              for (const auth_server_record &one : radius_authentication_servers(auth.get()))
                servers += !!one;
              for (const auth_server_record &one : radius_accounting_servers(auth.get())) servers += !!one;
              for (const auth_server_record &one : tacacs_authentication_servers(auth.get()))
                servers += !!one;
              for (const auth_server_record &one : ldap_authentication_servers(auth.get())) servers += !!one;
              ASSERT_EQ(servers, 4U);
            }),
            0U);
}

TEST(Leftover, TheAppliancesOwnRecordsAreGivenBack) {
  EXPECT_EQ(left_by_face([](cfg *store) {
              for (const physif_record &physif : physifs(store)) ASSERT_NE(physif, nullptr);
              for (const conn_record &conn : conns(store)) ASSERT_NE(conn, nullptr);
              const endpoint_list list(cfg_net_get_external_endpoint_list(store));
              for (const endpoint_record &endpoint : entries(store, list.get())) ASSERT_NE(endpoint, nullptr);
              const ntp_record ntp(cfg_get_ntp(store));
              for (const heap_text &server : servers(ntp.get())) ASSERT_NE(server, nullptr);
              const gateway_record gateway(cfg_get_service_console_gateway(store));
              const csr_record csr(cfg_get_https_csr(store));
              ASSERT_NE(csr, nullptr);
              const https_certificate_record details(cfg_get_https_cert_details(store));
              const boot_flag_record flag(cfg_boot_flag_get_by_name(store, "wipe"));
              ASSERT_NE(flag, nullptr);
              ASSERT_NE(text_from(cfg_system_get_hostname, store), nullptr);
              ASSERT_NE(interface_name(store, "uplink"), nullptr);
              ASSERT_NE(interface_names(store, "dhcp"), nullptr);
            }),
            0U);
}

TEST(Leftover, AConditionIsGivenBackWhetherOrNotThereAreConnectionsToSearch) {
  const auto named = [] { return condition_tree(cfg_new_string_condition("name", CFG_OP_EQUAL, "uplink")); };
  EXPECT_EQ(left_by_face([&](cfg *store) { ASSERT_NE(interface_names(store, named()), nullptr); }), 0U);
  EXPECT_EQ(left_by_face([&](cfg *) {
              const store_handle empty(cfg_open_memory(nullptr, nullptr));
              ASSERT_EQ(interface_names(empty.get(), named()), nullptr);
            }),
            0U);
}

TEST(Leftover, MessagesAreGivenBack) {
  EXPECT_EQ(left_by_face([](cfg *store) {
              const push_node_record context(cfg_push_node_ctxt_get_by_id(store, kPushNode));
              for (const message_list &list : message_lists) {
                std::size_t found = 0;
                for (const auto id : message_ids(context.get(), list)) {
                  ASSERT_NE(message(store, id->data()), nullptr);
                  ++found;
                }
                ASSERT_EQ(found, 1U);
              }
            }),
            0U);
}

}  // namespace
