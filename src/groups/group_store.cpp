// Groups in the store: loading, saving and deleting.
#include "groups/group.hpp"
#include "record/engine.hpp"
#include "record/references.hpp"
#include "record/tables.hpp"
#include "record/text_search.hpp"

namespace {

constexpr char groups[] = "groups";
constexpr char members[] = "members";

// New links go to the head, so the record holds the stored list from its end; a save, which begins at the
// head, turns it round. Nobody depends on the order.
bool load_members(void *record, const cfg_value &list) {
  auto *group = static_cast<cfg_group *>(record);
  return tw::each_reference(group->cfg, list, [=](const char *id) {
    cfg_group_member &link = group->members.emplace_front();
    link.cfg = group->cfg;
    return link.uuid.set(id);
  });
}

constexpr auto groupname = tw::string_row<&cfg_group::groupname>("groupname");
constexpr auto description = tw::kept_string_row<&cfg_group::description>("description");
constexpr auto mode = tw::kept_string_row<&cfg_group::mode>("mode");
constexpr auto enabled = tw::bool_row<&cfg_group::enabled>("enabled");

// A group without a name can be loaded, too: someone has to be able to give it one.
constexpr tw::load_list load_keys({groupname, description, mode, enabled,
                                   tw::hook_row<cfg_group>(members, CFG_LIST, load_members, "load_members")});
constexpr tw::store_list save_texts({groupname, description, mode});
constexpr tw::store_list save_flag({enabled});

constexpr tw::named_list lists[] = {
    {"group load", load_keys},
    {"group save, before the roles of other modes", save_texts},
    {"group save, before \"members\"", save_flag},
};

constexpr const char *name_keys[] = {"groupname"};
constexpr cfg_keyset by_name{name_keys, 1};

cfg_group *load(cfg *store, cfg_elem *elem) noexcept {
  auto group = tw::new_view<cfg_group>(store, elem);
  return group && tw::load(load_keys, *group, elem) ? group.release() : nullptr;
}

// A group has the roles of its mode alone. One without mode keeps what it has.
bool delete_other_roles(const cfg_group &group, cfg_elem *elem) noexcept {
  const char *own = group.mode.c_str();
  if (!own) return true;
  return (tw::same(own, "global") || tw::delete_map_key(group.cfg, elem, "global_roles")) &&
         (tw::same(own, "smart_group") || tw::delete_map_key(group.cfg, elem, "smart_group"));
}

bool save_members(cfg_group &group, cfg_elem *list) noexcept {
  for (cfg_group_member &member : group.members) {
    if (!tw::add_reference(group.cfg, list, tw::member_id(member))) return false;
  }
  return true;
}

}  // namespace

const tw::tables tw::group_tables = lists;

cfg_group *cfg_group_get_by_id(cfg *store, const char *id) noexcept {
  return load(store, cfg_get_by_id(store, id));
}
cfg_group *cfg_group_get_by_groupname(cfg *store, const char *name) noexcept {
  return load(store, tw::find_by_text(store, groups, by_name, name));
}

// The member list is replaced before anything else is written and refilled at the end. A save that fails in
// between leaves it empty in the edit, as it leaves everything that it wrote: callers abandon that edit.
int cfg_group_save(cfg_group *group) noexcept {
  TW_ASSERT(group && group->cfg, "src/groups");
  cfg_elem *elem = tw::element_to_save(*group, groups);
  cfg_elem *list = cfg_new_list(group->cfg);
  return list && cfg_add_mapelem(group->cfg, elem, members, list) &&
         tw::store(save_texts, *group, group->cfg, elem) && delete_other_roles(*group, elem) &&
         tw::store(save_flag, *group, group->cfg, elem) && save_members(*group, list);
}

void cfg_group_delete(cfg_group *group) noexcept {
  if (group) cfg_delete_element(group->cfg, tw::element_of(*group));
}
