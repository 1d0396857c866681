/* The C++ face of tags and their values. */
#ifndef TWOBJECT_TAGS_HPP
#define TWOBJECT_TAGS_HPP

#include <twobject/tag.h>
#include <twobject/owner.hpp>

namespace twobject {

/// Frees a tag with the array of its values' IDs, which cfg_tag_free() leaves to whoever asked for it.
inline void release_tag(cfg_tag *tag) noexcept {
  char **const values = tag_get_all_values(tag);
  cfg_tag_free(tag);
  release_heap(values);
}

/// Frees a list of tags with the array of their IDs and the text of its own, which cfg_tag_list_free()
/// leaves.
inline void release_tag_list(cfg_tag_list *list) noexcept {
  char **const tags = tag_list_get_all_tags(list);
  const char *const id = tag_list_get_uuid(list);
  cfg_tag_list_free(list);
  release_heap(tags);
  release_heap(id);
}

using tag_record = owner<cfg_tag, release_tag>;
using tag_value_record = owner<cfg_tag_value, cfg_tag_value_free>;
using tag_list = owner<cfg_tag_list, release_tag_list>;

/// Loads the tags of a list; NULL for one that cannot be loaded.
inline auto entries(const cfg_tag_list *list) {
  return indexed(tag_list_get_num_tags(list),
                 [list](int32_t i) { return tag_record(cfg_tag_list_get_tag(list, i)); });
}

/// Loads the values of a tag that were committed when it was loaded; NULL for one that cannot be loaded.
inline auto values(const cfg_tag *tag) {
  return indexed(tag_get_num_values(tag),
                 [tag](int32_t i) { return tag_value_record(cfg_tag_get_value(tag, i)); });
}

}  // namespace twobject

#endif
