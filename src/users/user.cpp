// The user record: making, freeing, fields, groups, and the list of all users.
#include "users/user.hpp"

#include "record/boundary.hpp"

cfg_user *cfg_user_new(cfg *store, const char *username) noexcept {
  if (!username) return nullptr;
  auto user = tw::new_view<cfg_user>(store);
  if (!user || !user->username.set(username)) return nullptr;
  user->enabled = 1;  // a stored user that does not say so is disabled
  return user.release();
}

void cfg_user_free(cfg_user *user) noexcept { delete user; }

const char *cfg_user_get_uuid(cfg_user *user) noexcept { return user ? tw::refreshed_uuid(*user) : nullptr; }

const char *cfg_user_get_username(const cfg_user *user) noexcept {
  return tw::get<&cfg_user::username>(user);
}
int cfg_user_set_username(cfg_user *user, const char *username) noexcept {
  return tw::replace<&cfg_user::username>(user, username);
}

const char *cfg_user_get_description(const cfg_user *user) noexcept {
  return tw::get<&cfg_user::description>(user);
}
int cfg_user_set_description(cfg_user *user, const char *description) noexcept {
  return tw::replace<&cfg_user::description>(user, description);
}

int32_t cfg_user_get_enabled(const cfg_user *user) noexcept { return tw::get<&cfg_user::enabled>(user); }
int cfg_user_set_enabled(cfg_user *user, int32_t enabled) noexcept {
  return tw::set<&cfg_user::enabled>(user, enabled);
}

int32_t cfg_user_get_no_password(const cfg_user *user) noexcept {
  return tw::get<&cfg_user::no_password>(user);
}
int cfg_user_set_no_password(cfg_user *user, int32_t no_password) noexcept {
  return tw::set<&cfg_user::no_password>(user, no_password);
}

int cfg_user_add_group(cfg_user *user, const char *group) noexcept {
  return user && group && user->groups.add(group);
}
void cfg_user_remove_group(cfg_user *user, const char *group) noexcept {
  if (user && group) user->groups.remove(group);
}
void cfg_user_free_groups(cfg_user *user) noexcept {
  if (user) user->groups.clear();
}
int32_t cfg_user_get_groups_count(const cfg_user *user) noexcept { return user ? user->groups.count() : 0; }
const char *cfg_user_get_group(cfg_user *user) noexcept { return user ? user->groups.next() : nullptr; }

cfg_user_list *cfg_user_list_new(cfg *store) noexcept {
  return tw::new_id_list<cfg_user_list>(store, "users").release();
}
int32_t cfg_user_list_count(const cfg_user_list *list) noexcept { return tw::entry_count(list); }
cfg_user *cfg_user_list_get_user(const cfg_user_list *list, int32_t index) noexcept {
  return tw::load_entry(list, index, cfg_user_get_by_id);
}
void cfg_user_list_free(cfg_user_list *list) noexcept { delete list; }
