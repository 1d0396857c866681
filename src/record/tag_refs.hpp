// References to tag values, in a list below an element: what nodes and enrollment bundles carry.
#ifndef TW_RECORD_TAG_REFS_HPP
#define TW_RECORD_TAG_REFS_HPP

#include <twobject/tag.h>

#include "record/text_array.hpp"
#include "record/view.hpp"

namespace tw {

// The IDs of a record's reference elements, read when they are first asked for: the committed ones, then the
// pending ones, as the list will be after the commit. "None" is not remembered: an empty list is read again
// at each query. `owner` is the record that this is a member of.
class tag_refs {
 public:
  // `key` is the list's key in the owner's element, a constant.
  explicit tag_refs(const char *key) noexcept : key_(key) {}

  std::int32_t count(const object_view &owner) noexcept { return read(owner).count(); }
  // ID of the reference at an index; NULL outside the list.
  const char *id(const object_view &owner, std::int32_t index) noexcept { return read(owner).at(index); }
  // The value behind the reference at an index, loaded for the caller; NULL outside the list.
  cfg_tag_value *value(const object_view &owner, std::int32_t index) noexcept;
  // The value behind a reference, when that is one of these.
  cfg_tag_value *value_behind(const object_view &owner, const char *id) noexcept;
  // ID of the first reference that leads to this value, or NULL.
  const char *find(const object_view &owner, const cfg_tag_value *value) noexcept;

  // Appends a reference to a value to the owner's list in the store, as a pending entry. 1, or 0 without
  // element, list or value.
  int append(const object_view &owner, const cfg_tag_value *value) const noexcept;

 private:
  const text_array &read(const object_view &owner) noexcept;

  const char *key_;
  text_array ids_;
};

// Lets a reference lead to another value; deletes one. 1, or 0 without such a reference or value.
int update_tag_ref(cfg *store, const char *id, const cfg_tag_value *value) noexcept;
int delete_tag_ref(cfg *store, const char *id) noexcept;

}  // namespace tw

#endif
