#include "access/members.hpp"

#include <fmt/format.h>

#include <algorithm>

#include "cli/failure.hpp"
#include "cli/text.hpp"

namespace twctl {

namespace {

void save(cfg *store, cfg_user *user) {
  if (!cfg_user_save(user))
    throw store_failure(store, fmt::format("cannot save the user '{}'", view(cfg_user_get_username(user))));
}

void save(cfg *store, cfg_group *group) {
  if (!cfg_group_save(group))
    throw store_failure(store,
                        fmt::format("cannot save the group '{}'", view(cfg_group_get_groupname(group))));
}

}  // namespace

std::vector<std::string> groups_of(cfg_user *user) {
  std::vector<std::string> ids;
  for (int32_t i = 0, count = cfg_user_get_groups_count(user); i < count; i++)
    ids.emplace_back(cfg_user_get_group(user));
  return ids;
}

void join_group(cfg *store, cfg_user *user, cfg_group *group) {
  // The user first: only one that has an ID can be listed by a group. Adding a member to a group of
  // administrators makes it one of the group "admin", too, and saves the user again with that.
  if (!cfg_user_add_group(user, cfg_group_get_uuid(group)))
    throw failure(exit_code::failure, "cannot add the group to the user");
  save(store, user);
  if (!cfg_group_add_member(group, user)) throw store_failure(store, "cannot add the member");
  save(store, group);
}

void leave_group(cfg *store, cfg_user *user, cfg_group *group) {
  std::string id = cfg_group_get_uuid(group);
  std::vector<std::string> groups = groups_of(user);
  bool listed = std::find(groups.begin(), groups.end(), id) != groups.end();
  // Either side may be alone in what it says.
  if (!cfg_group_delete_member(group, user) && !listed)
    throw failure(exit_code::not_found,
                  fmt::format("'{}' is no member of '{}'", printable(view(cfg_user_get_username(user))),
                              printable(view(cfg_group_get_groupname(group)))));
  cfg_user_remove_group(user, id.c_str());
  save(store, user);
  save(store, group);
}

void forget_user(cfg *store, cfg_user *user) {
  group_list groups(cfg_group_list_new(store));
  for (int32_t i = 0; i < cfg_group_list_count(groups.get()); i++) {
    group_record group(cfg_group_list_get_group(groups.get(), i));
    if (cfg_group_delete_member(group.get(), user)) save(store, group.get());
  }
}

void forget_group(cfg *store, cfg_group *group) {
  std::string id = cfg_group_get_uuid(group);
  user_list users(cfg_user_list_new(store));
  for (int32_t i = 0; i < cfg_user_list_count(users.get()); i++) {
    user_record user(cfg_user_list_get_user(users.get(), i));
    int32_t count = cfg_user_get_groups_count(user.get());
    cfg_user_remove_group(user.get(), id.c_str());
    if (cfg_user_get_groups_count(user.get()) != count) save(store, user.get());
  }
}

}  // namespace twctl
