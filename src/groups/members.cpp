// The members of a group.
#include <cstdlib>
#include <iterator>

#include "groups/group.hpp"
#include "record/boundary.hpp"
#include "record/memory_watch.hpp"

namespace {

struct group_release {
  void operator()(cfg_group *group) const noexcept { cfg_group_free(group); }
};
using owned_group = std::unique_ptr<cfg_group, group_release>;

bool has_member(cfg_group &group, const char *id) noexcept {
  for (cfg_group_member &member : group.members) {
    if (tw::same(tw::member_id(member), id)) return true;
  }
  return false;
}

bool holds_administrators(const cfg_group &group) noexcept {
  char *name = cfg_group_get_global_roles(&group);
  const bool result = tw::same(name, "FernhollowAdmin");
  std::free(name);
  return result;
}

// Whoever is in a group of administrators is in the group "admin" too; an appliance without one has no use
// for that. A user without element is saved before: the save of "admin" would fail at it with the members
// gone.
bool make_administrator(cfg *store, cfg_user *user) noexcept {
  const tw::memory_watch memory;
  const owned_group admin(cfg_group_get_by_groupname(store, "admin"));
  if (!admin) return !memory.ran_short();
  if (!cfg_user_get_uuid(user) && !cfg_user_save(user)) return false;
  return cfg_group_add_member(admin.get(), user) &&
         cfg_user_add_group(user, cfg_group_get_uuid(admin.get())) && cfg_group_save(admin.get()) &&
         cfg_user_save(user);
}

}  // namespace

const char *tw::member_id(cfg_group_member &member) noexcept {
  if (!member.uuid && member.unsaved && member.uuid.set(cfg_user_get_uuid(member.unsaved)) && member.uuid)
    member.unsaved = nullptr;
  return refreshed_uuid(member);
}

cfg_group_member *cfg_group_load_member(cfg_group *group, cfg_user *user, int32_t flag) noexcept {
  if (!group || !user) return nullptr;
  return tw::guarded([=]() -> cfg_group_member * {
    cfg_group_member &link = group->members.emplace_front();
    link.cfg = group->cfg;
    link.flag = flag;
    const char *id = cfg_user_get_uuid(user);
    if (!id) link.unsaved = user;
    if (link.uuid.set(id)) return &link;
    group->members.pop_front();
    return nullptr;
  });
}

int cfg_group_add_member(cfg_group *group, cfg_user *user) noexcept {
  if (!group || !user) return 0;
  const char *id = cfg_user_get_uuid(user);
  if (id && has_member(*group, id)) return 1;
  if (!cfg_group_load_member(group, user, 1)) return 0;
  if (tw::same(group->groupname.c_str(), "admin")) return 1;
  const tw::memory_watch memory;
  const bool administrators = holds_administrators(*group);
  if (!memory.ran_short() && (!administrators || make_administrator(group->cfg, user))) return 1;
  group->members.pop_front();  // a second attempt is to begin anew
  return 0;
}

int cfg_group_delete_member(cfg_group *group, cfg_user *user) noexcept {
  const char *id = group ? cfg_user_get_uuid(user) : nullptr;
  if (!id) return 0;
  int found = 0;
  for (auto before = group->members.before_begin(); std::next(before) != group->members.end();) {
    if (tw::same(tw::member_id(*std::next(before)), id)) {
      group->removed.splice_after(group->removed.before_begin(), group->members, before);
      found = 1;
    } else {
      ++before;
    }
  }
  return found;
}

cfg_group_member_list *cfg_group_member_list_new(cfg_group *group) noexcept {
  const tw::memory_watch memory;
  auto list = group ? tw::new_view<cfg_group_member_list>(group->cfg) : nullptr;
  if (!list) return nullptr;
  for (cfg_group_member &member : group->members) list->ids.append(tw::member_id(member));
  return memory.ran_short() ? nullptr : list.release();
}
int32_t cfg_group_get_member_count(const cfg_group_member_list *list) noexcept {
  return tw::entry_count(list);
}
cfg_user *cfg_group_member_list_get_user(const cfg_group_member_list *list, int32_t index) noexcept {
  return tw::load_entry(list, index, cfg_user_get_by_id);
}
void cfg_group_member_list_free(cfg_group_member_list *list) noexcept { delete list; }
