// The group record: making, freeing, fields, and the list of all groups.
#include "groups/group.hpp"

#include <twconfig/message.h>

#include "record/boundary.hpp"
#include "record/memory_watch.hpp"

namespace {

// The setters of texts that a group is not to be without: NULL keeps the old one and is told in a message.
template <auto Member>
int set_needed(cfg_group *group, const char *value, int line) noexcept {
  if (!group) return 0;
  if (value) return tw::replace<Member>(group, value);
  cfg_message_add_unexpected(group->cfg, "src/groups", line);
  return 0;
}

}  // namespace

cfg_group *cfg_group_new(cfg *store, const char *groupname) noexcept {
  if (!groupname) return nullptr;
  auto group = tw::new_view<cfg_group>(store);
  if (!group || !group->groupname.set(groupname)) return nullptr;
  group->enabled = 1;
  return group.release();
}

void cfg_group_free(cfg_group *group) noexcept { delete group; }

const char *cfg_group_get_uuid(cfg_group *group) noexcept {
  return group ? tw::refreshed_uuid(*group) : nullptr;
}

const char *cfg_group_get_groupname(const cfg_group *group) noexcept {
  return tw::get<&cfg_group::groupname>(group);
}
int cfg_group_set_groupname(cfg_group *group, const char *groupname) noexcept {
  return set_needed<&cfg_group::groupname>(group, groupname, __LINE__);
}

const char *cfg_group_get_mode(const cfg_group *group) noexcept { return tw::get<&cfg_group::mode>(group); }
int cfg_group_set_mode(cfg_group *group, const char *mode) noexcept {
  return set_needed<&cfg_group::mode>(group, mode, __LINE__);
}

const char *cfg_group_get_description(const cfg_group *group) noexcept {
  return tw::get<&cfg_group::description>(group);
}
int cfg_group_set_description(cfg_group *group, const char *description) noexcept {
  if (!group) return 0;
  if (description) return tw::replace<&cfg_group::description>(group, description);
  // A save leaves the description of which the record has none, so this is the way to be rid of it: at once.
  group->description.clear();
  const tw::memory_watch memory;
  cfg_elem *elem = tw::element_of(*group);
  return elem ? tw::delete_map_key(group->cfg, elem, "description") : !memory.ran_short();
}

int32_t cfg_group_get_enabled(const cfg_group *group) noexcept { return tw::get<&cfg_group::enabled>(group); }
int cfg_group_set_enabled(cfg_group *group, int32_t enabled) noexcept {
  return tw::set<&cfg_group::enabled>(group, enabled);
}

cfg_group_list *cfg_group_list_new(cfg *store) noexcept {
  return tw::new_id_list<cfg_group_list>(store, "groups").release();
}
int32_t cfg_group_list_count(const cfg_group_list *list) noexcept { return tw::entry_count(list); }
cfg_group *cfg_group_list_get_group(const cfg_group_list *list, int32_t index) noexcept {
  return tw::load_entry(list, index, cfg_group_get_by_id);
}
void cfg_group_list_free(cfg_group_list *list) noexcept { delete list; }
