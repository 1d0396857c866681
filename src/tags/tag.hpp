// Tags and their values, shared by the files of this folder.
#ifndef TW_TAGS_TAG_HPP
#define TW_TAGS_TAG_HPP

#include <twobject/tag.h>

#include "record/text_array.hpp"
#include "record/view.hpp"

struct cfg_tag : tw::object_view {
  tw::text name;
  tw::text_array values;  // IDs of the values
};

struct cfg_tag_value : tw::object_view {
  tw::text value;
};

namespace tw {

// Loads the tag behind an element; NULL when the element is NULL or has no "name".
std::unique_ptr<cfg_tag> load_tag(cfg *store, cfg_elem *elem) noexcept;

}  // namespace tw

#endif
