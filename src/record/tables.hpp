// The lists of rows of all families, for the dump that the tests compare.
#ifndef TW_RECORD_TABLES_HPP
#define TW_RECORD_TABLES_HPP

#include <span>

#include "record/row.hpp"

namespace tw {

// A list under the name that the dump of all tables gives it. Every family publishes its lists as
// `<name>_tables`, so that a changed key, order or rule shows in the tests as a changed line.
struct named_list {
  const char *name;
  const row_list &list;
  bool stores;

  constexpr named_list(const char *name_, const load_rows &rows) : name(name_), list(rows), stores(false) {}
  constexpr named_list(const char *name_, const store_rows &rows) : name(name_), list(rows), stores(true) {}
};
using tables = std::span<const named_list>;

extern const tables acl_tables;
extern const tables auth_protocol_tables;
extern const tables auth_server_tables;
extern const tables auth_tables;
extern const tables boot_flag_tables;
extern const tables bundle_tables;
extern const tables carried_auth_tables;
extern const tables certificate_tables;
extern const tables conn_tables;
extern const tables enrollment_tables;
extern const tables etag_tables;
extern const tables external_endpoint_tables;
extern const tables group_operation_tables;
extern const tables group_tables;
extern const tables https_csr_tables;
extern const tables node_auth_tables;
extern const tables node_group_tables;
extern const tables node_interface_tables;
extern const tables node_load_tables;
extern const tables node_save_tables;
extern const tables node_user_tables;
extern const tables physif_tables;
extern const tables port_tables;
extern const tables push_exec_ctxt_tables;
extern const tables push_node_ctxt_tables;
extern const tables role_tables;
extern const tables script_template_tables;
extern const tables smart_group_tables;
extern const tables tag_tables;
extern const tables tag_value_tables;
extern const tables template_tables;
extern const tables user_operation_tables;
extern const tables user_tables;
extern const tables users_groups_template_tables;

// All of them, in the order of the dump; one to a line, so that families can be added side by side.
// clang-format off
inline constexpr const tables *all_tables[] = {
    &certificate_tables,
    &https_csr_tables,
    &node_load_tables,
    &etag_tables,
    &node_save_tables,
    &node_interface_tables,
    &node_user_tables,
    &node_group_tables,
    &node_auth_tables,
    &port_tables,
    &enrollment_tables,
    &tag_tables,
    &tag_value_tables,
    &template_tables,
    &users_groups_template_tables,
    &user_operation_tables,
    &group_operation_tables,
    &script_template_tables,
    &boot_flag_tables,
    &conn_tables,
    &external_endpoint_tables,
    &physif_tables,
    &bundle_tables,
    &smart_group_tables,
    &push_exec_ctxt_tables,
    &push_node_ctxt_tables,
    &role_tables,
    &acl_tables,
    &user_tables,
    &group_tables,
    &auth_tables,
    &auth_protocol_tables,
    &auth_server_tables,
    &carried_auth_tables,
};
// clang-format on

}  // namespace tw

#endif
