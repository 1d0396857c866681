// The template record, shared by the files of this folder.
#ifndef TW_TEMPLATES_TEMPLATE_HPP
#define TW_TEMPLATES_TEMPLATE_HPP

#include <twobject/template.h>

#include "record/view.hpp"

// One record for templates of every type: what a type does not carry stays empty.
struct cfg_template : tw::object_view {
  tw::text name;
  tw::text description;
  int32_t template_type = 0;
  tw::text dummy_field;
};

#endif
