// Smart groups: saved searches over the objects of one type.
#include <twobject/search.h>
#include <twobject/smart_groups.h>

#include <array>
#include <cstdio>

#include "record/boundary.hpp"
#include "record/engine.hpp"
#include "record/memory_watch.hpp"
#include "record/owned_condition.hpp"
#include "record/tables.hpp"
#include "record/text_array.hpp"
#include "record/view.hpp"

struct cfg_smartgroup : tw::object_view {
  tw::text type;  // not stored: the list that holds the group tells it
  tw::text name;
  tw::text query;
};

struct cfg_smartgroup_list : tw::object_view {
  tw::text_array groups;  // their IDs
  tw::text type;
};

namespace {

constexpr auto name_row = tw::string_row<&cfg_smartgroup::name>("name");
constexpr auto query_row = tw::string_row<&cfg_smartgroup::query>("query");
constexpr tw::load_list load_keys({mandatory(name_row), mandatory(query_row)});
constexpr tw::store_list save_keys({name_row, query_row});

constexpr tw::named_list lists[] = {{"smart group load", load_keys}, {"smart group save", save_keys}};

// Where a type's groups are. The list lies at a path with a dot, a search spells the same with an underscore.
// A long type is cut here, in both spellings at the same place.
constexpr char stored_at[] = "smart_groups.%s_groups";
constexpr char searched_as[] = "smart_groups_%s_groups";
using path = std::array<char, 128>;

path path_of(const char *format, const char *type) noexcept {
  path text;
  std::snprintf(text.data(), text.size(), format, type);
  return text;
}

bool copy(tw::text &to, const char *from) noexcept { return to.assign(from, std::strlen(from)); }

// Unlike other records a group joins its list at once: the list of groups shows it before the commit.
cfg_elem *new_element(cfg_smartgroup &group) noexcept {
  return tw::add_new_element(group, path_of(stored_at, group.type.c_str()).data());
}

}  // namespace

const tw::tables tw::smart_group_tables = lists;

cfg_smartgroup *cfg_smartgroup_new(cfg *store, const char *type, const char *name,
                                   const char *query) noexcept {
  if (!type || !name || !query) return nullptr;
  auto group = tw::new_view<cfg_smartgroup>(store);
  if (!group || !copy(group->type, type) || !group->name.set(name) || !group->query.set(query))
    return nullptr;
  return group.release();
}

cfg_smartgroup *cfg_smartgroup_get_by_id(cfg *store, const char *type, const char *id) noexcept {
  if (!type) return nullptr;
  cfg_elem *elem = cfg_get_by_id(store, id);
  auto group = tw::new_view<cfg_smartgroup>(store, elem);
  if (!group || !copy(group->type, type) || !tw::load(load_keys, *group, elem)) return nullptr;
  return group.release();
}

cfg_smartgroup *cfg_smartgroup_get_by_name(cfg *store, const char *type, const char *name) noexcept {
  if (!type) return nullptr;
  const tw::owned_condition named(cfg_new_string_condition("name", CFG_OP_EQUAL, name));
  if (!named) return nullptr;
  cfg_elem *found = cfg_search(store, path_of(searched_as, type).data(), named.get());
  return cfg_smartgroup_get_by_id(store, type, cfg_get_listelem(found, 0));
}

const char *cfg_smartgroup_get_uuid(cfg_smartgroup *group) noexcept {
  return group ? tw::refreshed_uuid(*group) : nullptr;
}

const char *cfg_smartgroup_get_name(const cfg_smartgroup *group) noexcept {
  return tw::get<&cfg_smartgroup::name>(group);
}
int cfg_smartgroup_set_name(cfg_smartgroup *group, const char *name) noexcept {
  return tw::replace<&cfg_smartgroup::name>(group, name);
}

const char *cfg_smartgroup_get_query(const cfg_smartgroup *group) noexcept {
  return tw::get<&cfg_smartgroup::query>(group);
}
int cfg_smartgroup_set_query(cfg_smartgroup *group, const char *query) noexcept {
  return tw::replace<&cfg_smartgroup::query>(group, query);
}

int cfg_smartgroup_save(cfg_smartgroup *group) noexcept {
  if (!group || !group->name || !group->query) return 0;
  cfg_elem *elem = group->uuid ? tw::element_of(*group) : new_element(*group);
  return elem && tw::store(save_keys, *group, group->cfg, elem);
}

int cfg_smartgroup_delete(cfg_smartgroup *group) noexcept {
  return group && cfg_delete_element(group->cfg, tw::element_of(*group));
}

void cfg_smartgroup_free(cfg_smartgroup *group) noexcept { delete group; }

// A query that is no condition is asked all the same, without conditions: the service refuses it.
char *cfg_smartgroup_create_search(const cfg_smartgroup *group) noexcept {
  if (!group || !group->query) return nullptr;
  const tw::owned_condition query(json_dump_to_condition(group->query.c_str(), 0));
  return twsearch_create(group->type.c_str(), query.get(), 0, nullptr);
}

int32_t cfg_smartgroup_evaluate(const cfg_smartgroup *group, char ***members) noexcept {
  tw::text id;
  id.adopt(cfg_smartgroup_create_search(group));
  int32_t count = 0;
  if (!id || twsearch_fetch(id.c_str(), 0, 0, members, &count, 0, nullptr) < 0) return 0;
  return count;
}

cfg_smartgroup_list *cfg_smartgroup_list_new(cfg *store, const char *type) noexcept {
  if (!type) return nullptr;
  const tw::memory_watch memory;
  cfg_elem *groups = cfg_get_by_path(store, path_of(stored_at, type).data());
  auto list = tw::new_view<cfg_smartgroup_list>(store);
  if (!list || !copy(list->type, type) || !list->groups.append_ids(groups)) return nullptr;
  return memory.ran_short() ? nullptr : list.release();
}

int32_t cfg_smartgroup_list_count(const cfg_smartgroup_list *list) noexcept {
  return list ? list->groups.count() : 0;
}

cfg_smartgroup *cfg_smartgroup_list_get_smartgroup(const cfg_smartgroup_list *list, int32_t index) noexcept {
  return list ? cfg_smartgroup_get_by_id(list->cfg, list->type.c_str(), list->groups.at(index)) : nullptr;
}

void cfg_smartgroup_list_free(cfg_smartgroup_list *list) noexcept {
  if (!list) return;
  list->groups.leave_block();  // by design
  delete list;
}

void cfg_smartgroup_list_dispose(cfg_smartgroup_list *list) noexcept { delete list; }
