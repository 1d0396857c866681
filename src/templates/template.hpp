// The template record, shared by the files of this folder.
#ifndef TW_TEMPLATES_TEMPLATE_HPP
#define TW_TEMPLATES_TEMPLATE_HPP

#include <twobject/template.h>

#include "record/auth_settings.hpp"
#include "record/view.hpp"
#include "templates/operations.hpp"

// One record for templates of every type: what a type does not carry stays empty.
struct cfg_template : tw::object_view {
  tw::text name;
  tw::text description;
  int32_t template_type = 0;

  tw::text dummy_field;

  int32_t operation = 0;
  tw::operations<cfg_ugt_user_operation> user_operations;
  tw::operations<cfg_ugt_group_operation> group_operations;
  tw::text_array membership_users;
  tw::text_array membership_groups;
  int32_t add_membership = 0;

  tw::owned_auth auth;

  tw::text script;         // bytes, NULs among them
  int32_t script_end = 0;  // how many they are, whatever size says
  tw::text checksum;
  int32_t size = 0;
  int32_t timeout = 0;
  int32_t timeout_deleted = 0;
};

#endif
