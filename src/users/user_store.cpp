// Users in the store: loading, saving and deleting.
#include "record/boundary.hpp"
#include "record/engine.hpp"
#include "record/memory_watch.hpp"
#include "record/references.hpp"
#include "record/tables.hpp"
#include "record/text_search.hpp"
#include "users/user.hpp"

namespace {

constexpr char users[] = "users";

bool load_groups(void *record, const cfg_value &list) {
  auto *user = static_cast<cfg_user *>(record);
  return tw::each_reference(user->cfg, list, [=](const char *id) { return user->groups.add(id); });
}

constexpr auto username = tw::string_row<&cfg_user::username>("username");
constexpr auto description = tw::kept_string_row<&cfg_user::description>("description");
constexpr auto hashed_password = tw::string_row<&cfg_user::hashed_password>("hashed_password");
constexpr auto enabled = tw::bool_row<&cfg_user::enabled>("enabled");
constexpr auto no_password = tw::bool_row<&cfg_user::no_password>("no_password");
constexpr auto groups = tw::hook_row<cfg_user>("groups", CFG_LIST, load_groups, "load_groups");

constexpr tw::load_list load_keys({mandatory(username), description, hashed_password, enabled, no_password,
                                   groups});
constexpr tw::store_list save_new({username});
constexpr tw::store_list save_texts({description, hashed_password});
constexpr tw::store_list save_flags({enabled, no_password});

constexpr tw::named_list lists[] = {
    {"user load", load_keys},
    {"user save, new record", save_new},
    {"user save, before \"groups\"", save_texts},
    {"user save, after \"groups\"", save_flags},
};

constexpr const char *name_keys[] = {"username"};
constexpr cfg_keyset by_name{name_keys, 1};

cfg_user *load(cfg *store, cfg_elem *elem) noexcept {
  auto user = tw::new_view<cfg_user>(store, elem);
  return user && tw::load(load_keys, *user, elem) ? user.release() : nullptr;
}

// The name is written here and nowhere else: a saved user keeps it. The element joins the list with its name,
// so that no failure leaves a user who could not be loaded.
cfg_elem *make_element(cfg_user &user) noexcept {
  cfg_elem *list = cfg_get_by_path(user.cfg, users);
  if (!list || !user.username) return nullptr;
  cfg_elem *elem = cfg_new_map(user.cfg);
  return tw::store(save_new, user, user.cfg, elem) ? tw::append_element(user, list, elem) : nullptr;
}

bool save_groups(const cfg_user &user, cfg_elem *elem) noexcept {
  cfg_elem *list = cfg_set_list(user.cfg, tw::need_list(user.cfg, elem, "groups"));
  return list && user.groups.each([&](const char *id) { return tw::add_reference(user.cfg, list, id); });
}

bool is_root(const char *name) noexcept { return tw::same(name, "root"); }

// Whether the store knows the element as that of "root", however the record calls it.
bool is_stored_root(cfg_elem *elem) noexcept {
  cfg_value name;
  return cfg_map_read(elem, &by_name, &name) && name.kind == CFG_STRING && is_root(name.data);
}

}  // namespace

const tw::tables tw::user_tables = lists;

cfg_user *cfg_user_get_by_id(cfg *store, const char *id) noexcept {
  return load(store, cfg_get_by_id(store, id));
}
cfg_user *cfg_user_get_by_username(cfg *store, const char *name) noexcept {
  return load(store, tw::find_by_text(store, users, by_name, name));
}

int cfg_user_save(cfg_user *user) noexcept {
  TW_ASSERT(user && user->cfg, "src/users");
  cfg_elem *elem = user->uuid ? tw::element_of(*user) : make_element(*user);
  return elem && tw::store(save_texts, *user, user->cfg, elem) && save_groups(*user, elem) &&
         tw::store(save_flags, *user, user->cfg, elem);
}

// Without "root" nobody could repair the appliance from its console.
int cfg_user_delete(cfg_user *user) noexcept {
  if (!user || is_root(user->username.c_str())) return 0;
  const tw::memory_watch memory;
  cfg_elem *elem = tw::element_of(*user);
  if (is_stored_root(elem) || memory.ran_short()) return 0;
  return !elem || cfg_delete_element(user->cfg, elem);
}
