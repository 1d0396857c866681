// twctl role: the names of bundles of rights, which groups refer to.
#include "cli/named_noun.hpp"

namespace twctl {

namespace {

std::vector<std::string> groups_with(cfg *store, const cfg_role *role) {
  std::vector<std::string> names;
  std::string_view name = view(cfg_role_get_rolename(role));
  group_list all(cfg_group_list_new(store));
  for (int32_t i = 0; i < cfg_group_list_count(all.get()); i++) {
    group_record group(cfg_group_list_get_group(all.get(), i));
    if (take(cfg_group_get_global_roles(group.get())) == name ||
        take(cfg_group_get_smart_group_roles(group.get())) == name)
      names.push_back(fmt::format("the group '{}'", view(cfg_group_get_groupname(group.get()))));
  }
  return names;
}

}  // namespace

void add_role(CLI::App &program, const options &opts) {
  static const named_noun<cfg_role> noun(
      "role", "roles", "role", "a role",
      {cfg_role_get_by_id, cfg_role_new, cfg_role_get_uuid, cfg_role_get_rolename, cfg_role_set_rolename,
       cfg_role_save, cfg_role_delete, cfg_role_free, groups_with});
  noun.add_to(program, opts, "Roles: what groups let their members do", "NodeUser", "Operator");
}

}  // namespace twctl
