// The bundle record, shared by the files of this folder.
#ifndef TW_BUNDLES_BUNDLE_HPP
#define TW_BUNDLES_BUNDLE_HPP

#include <twobject/bundle.h>

#include "record/tag_refs.hpp"
#include "record/text_array.hpp"
#include "record/view.hpp"

struct cfg_bundle : tw::object_view {
  tw::text name;
  tw::secret token;
  int32_t auto_approve = 0;
  tw::tag_refs automatic_tags{"automatic_tags"};
  tw::text_array nodes;      // their IDs
  tw::text_array templates;  // their IDs
};

namespace tw {

// Writes the list "templates" of a bundle's element anew.
bool store_templates(const cfg_bundle &bundle, cfg_elem *elem) noexcept;

}  // namespace tw

#endif
