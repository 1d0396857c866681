// The group record, shared by the files of this folder.
#ifndef TW_GROUPS_GROUP_HPP
#define TW_GROUPS_GROUP_HPP

#include <twobject/group.h>

#include <forward_list>

#include "record/id_list.hpp"
#include "record/view.hpp"

// A view of the member's user element: its ID is the user's. It needs nothing else of the user, so stored
// members are not loaded, and one that cannot be loaded is not lost.
struct cfg_group_member : tw::object_view {
  cfg_user *unsaved = nullptr;  // whose ID it is to be, once the user has one; the caller's
  int32_t flag = 0;             // how it came, for the caller that made the link
};

// Roles are not among them: they are always asked of the store.
struct cfg_group : tw::object_view {
  tw::text groupname;
  tw::text description;
  tw::text mode;
  int32_t enabled = 0;
  std::forward_list<cfg_group_member> members;  // newest first
  std::forward_list<cfg_group_member> removed;  // callers may hold pointers to the links
};

struct cfg_group_list : tw::id_list {};
struct cfg_group_member_list : tw::id_list {};

namespace tw {

// The ID of the member's user as the store now names it; NULL while the user has none.
const char *member_id(cfg_group_member &member) noexcept;

}  // namespace tw

#endif
