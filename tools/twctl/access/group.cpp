// twctl group: groups of users, their roles and members.
#include <fmt/format.h>

#include <set>

#include "access/members.hpp"
#include "cli/fields.hpp"
#include "cli/text.hpp"
#include "commands.hpp"

namespace twctl {

namespace {

constexpr const char *everywhere = "global";
constexpr const char *within_smart_group = "smart_group";

void require_mode(const std::string &text, const std::string &name) {
  if (text != everywhere && text != within_smart_group)
    refuse_word(text, name, fmt::format("{}, {}", everywhere, within_smart_group));
}

/// Nothing takes the description away, at once.
void write_description(cfg_group *group, const std::string &text, const std::string &name) {
  allow_text(text, name);
  require_set(cfg_group_set_description(group, text.empty() ? nullptr : text.c_str()), name);
}

constexpr field<cfg_group> fields[] = {
    {"id", "ID", [](cfg_group *group) { return cell_of(cfg_group_get_uuid(group)); }, nullptr},
    text_field<cfg_group_get_groupname, cfg_group_set_groupname, require_label>("name", "Name"),
    {"description", "Description", [](cfg_group *group) { return cell_of(cfg_group_get_description(group)); },
     write_description},
    truth_field<cfg_group_get_enabled, cfg_group_set_enabled>("enabled", "Enabled"),
    text_field<cfg_group_get_mode, cfg_group_set_mode, require_mode>("mode", "Mode"),
};

bool is_limited(const cfg_group *group) { return view(cfg_group_get_mode(group)) == within_smart_group; }

/// The name of the role that the group has by its mode; "" without one.
std::string role_of(const cfg_group *group) {
  return take(is_limited(group) ? cfg_group_get_smart_group_roles(group) : cfg_group_get_global_roles(group));
}

/// The name of the smart group that limits the group's role; one that is gone reads as its ID.
cell smart_group_of(cfg *store, const cfg_group *group) {
  std::string id = is_limited(group) ? take(cfg_group_get_smart_group(group)) : std::string();
  smartgroup_record one(cfg_smartgroup_get_by_id(store, "nodes", id.c_str()));
  return one ? cell_of(cfg_smartgroup_get_name(one.get())) : unless_empty(id);
}

/// The ID of a smart group by its ID or name.
std::string find_smart_group(cfg *store, const std::string &reference) {
  smartgroup_record one;
  if (reference.starts_with("smart_groups_nodes_groups-"))
    one.reset(cfg_smartgroup_get_by_id(store, "nodes", reference.c_str()));
  if (!one) one.reset(cfg_smartgroup_get_by_name(store, "nodes", reference.c_str()));
  return cfg_smartgroup_get_uuid(require_found(std::move(one), "smart group", reference, "smartgroup").get());
}

void list(const options &opts) {
  session work(opts, session::access::read);
  listing result("groups", {{"id", "ID"},
                            {"name", "NAME"},
                            {"enabled", "ENABLED"},
                            {"mode", "MODE"},
                            {"role", "ROLE"},
                            {"smart_group", "SMART GROUP"},
                            {"member_count", "MEMBERS", true}});
  group_list all(cfg_group_list_new(work.store()));
  for (int32_t i = 0; i < cfg_group_list_count(all.get()); i++) {
    group_record one(cfg_group_list_get_group(all.get(), i));
    if (!one) throw store_failure(work.store(), "cannot read a group");
    group_member_list members(cfg_group_member_list_new(one.get()));
    result.add({cell_of(cfg_group_get_uuid(one.get())), cell_of(cfg_group_get_groupname(one.get())),
                cfg_group_get_enabled(one.get()) != 0, cell_of(cfg_group_get_mode(one.get())),
                unless_empty(role_of(one.get())), smart_group_of(work.store(), one.get()),
                int64_t{cfg_group_get_member_count(members.get())}});
  }
  result.print(opts);
}

void show(const options &opts, const std::string &reference) {
  session work(opts, session::access::read);
  group_record one = find_group(work.store(), reference);
  sheet result;
  show_fields(result, fields, one.get());
  result.add("role", "Role", unless_empty(role_of(one.get())));
  result.add("smart_group", "Smart group", smart_group_of(work.store(), one.get()));
  group_member_list members(cfg_group_member_list_new(one.get()));
  // By name: the stored order turns round with every save.
  std::set<std::string> names;
  for (int32_t i = 0; i < cfg_group_get_member_count(members.get()); i++)
    if (user_record user(cfg_group_member_list_get_user(members.get(), i)); user)
      names.emplace(cfg_user_get_username(user.get()));
  result.add("members", "Members", unless_empty(fmt::format("{}", fmt::join(names, ";"))));
  result.add("member_count", "Number of members", int64_t{cfg_group_get_member_count(members.get())});
  result.print(opts);
}

struct change_arguments {
  std::string reference;
  std::vector<std::string> assignments, members, left_members;
};

/// Gives the saved group its role. The role of the mode that it had before goes along to the new one.
void set_role(cfg *store, cfg_group *group, const std::string &role, std::string smart_group) {
  if (role.empty() && smart_group.empty()) return;
  if (!cfg_group_get_mode(group))
    throw failure(exit_code::invalid_input, "a role needs a mode", "the group has none",
                  "add mode=global or mode=smart_group");
  if (!is_limited(group)) {
    if (!smart_group.empty())
      throw failure(exit_code::invalid_input, "only a group of the mode smart_group has a smart group");
    if (!cfg_group_set_global_roles(group, role.c_str())) throw store_failure(store, "cannot set the role");
    return;
  }
  smart_group =
      smart_group.empty() ? take(cfg_group_get_smart_group(group)) : find_smart_group(store, smart_group);
  if (role.empty() || smart_group.empty())
    throw failure(exit_code::invalid_input,
                  "a group of the mode smart_group needs both a role and a smart group");
  if (!cfg_group_set_smart_group_roles(group, role.c_str(), smart_group.c_str()))
    throw store_failure(store, "cannot set the role");
}

/// Makes the changes to the record, and saves it.
void change(session &work, cfg_group *group, const change_arguments &arguments,
            const std::map<std::string, std::string> &values) {
  auto value_of = [&](const char *name) {
    auto value = values.find(name);
    if (value == values.end()) return std::string();
    require_label(value->second, name);
    return value->second;
  };
  std::string role = value_of("role"), smart_group = value_of("smart_group");
  if (role.empty() && (values.contains("mode") || !smart_group.empty())) role = role_of(group);
  set_fields(fields, group, values);
  if (!cfg_group_save(group))
    throw store_failure(work.store(), "cannot save the group (is there a list 'groups'?)");
  // Before the members come: those of a group of administrators are made administrators.
  set_role(work.store(), group, role, smart_group);
  for (const std::string &member : arguments.left_members)
    leave_group(work.store(), find_user(work.store(), member).get(), group);
  for (const std::string &member : arguments.members)
    join_group(work.store(), find_user(work.store(), member).get(), group);
}

void require_new(cfg *store, const std::string &name) {
  group_record same(cfg_group_get_by_groupname(store, name.c_str()));
  require_free(cfg_group_get_uuid(same.get()), name);
}

void add(const options &opts, const change_arguments &arguments) {
  auto values = read_assignments(arguments.assignments,
                                 {"description", "enabled", "mode", "role", "smart_group"}, true);
  std::erase_if(values, [](const auto &one) { return one.first == "description" && one.second.empty(); });
  require_label(arguments.reference, "the name of a group");
  session work(opts, session::access::write);
  require_new(work.store(), arguments.reference);
  group_record one(cfg_group_new(work.store(), arguments.reference.c_str()));
  change(work, one.get(), arguments, values);
  finish_entry(work, cfg_group_get_uuid(one.get()), arguments.reference, "Added");
}

void set(const options &opts, const change_arguments &arguments) {
  auto values = read_assignments(arguments.assignments, settable(fields, {"role", "smart_group"}),
                                 !arguments.members.empty() || !arguments.left_members.empty());
  session work(opts, session::access::write);
  group_record one = find_group(work.store(), arguments.reference);
  if (auto name = values.find("name");
      name != values.end() && name->second != view(cfg_group_get_groupname(one.get())))
    require_new(work.store(), name->second);
  change(work, one.get(), arguments, values);
  finish_entry(work, cfg_group_get_uuid(one.get()), cfg_group_get_groupname(one.get()), "Changed");
}

void remove(const options &opts, const std::string &reference) {
  session work(opts, session::access::write);
  group_record one = find_group(work.store(), reference);
  std::string id = cfg_group_get_uuid(one.get()), name(view(cfg_group_get_groupname(one.get())));
  confirm_delete(opts, fmt::format("the group '{}'", name));
  forget_group(work.store(), one.get());
  cfg_group_delete(one.get());
  if (cfg_get_by_id(work.store(), id.c_str())) throw store_failure(work.store(), "cannot delete the group");
  finish_entry(work, id, name, "Deleted");
}

}  // namespace

group_record find_group(cfg *store, const std::string &reference) {
  group_record one;
  if (reference.starts_with("groups-")) one.reset(cfg_group_get_by_id(store, reference.c_str()));
  if (!one) one.reset(cfg_group_get_by_groupname(store, reference.c_str()));
  return require_found(std::move(one), "group", reference, "group");
}

void add_group(CLI::App &program, const options &opts) {
  CLI::App *noun = program.add_subcommand("group", "Groups of users: what their members may do");
  noun->require_subcommand(1);
  constexpr const char *what_a_group_is = "ID or name of a group";

  CLI::App *verb = add_verb(noun, "list", "List groups", "  twctl group list\n  twctl group list -o json");
  verb->callback([&opts] { list(opts); });

  auto reference = std::make_shared<std::string>();
  verb = add_verb(noun, "show", "Show one group with its members", "  twctl group show operators");
  verb->add_option("group", *reference, what_a_group_is)->required();
  verb->callback([&opts, reference] { show(opts, *reference); });

  auto added = std::make_shared<change_arguments>();
  verb = add_verb(noun, "add", "Add a group",
                  "  twctl group add operators mode=global role=NodeUser --member ada\n"
                  "  twctl group add berlin mode=smart_group role=NodeUser smart_group='Berlin nodes'\n"
                  "\nFields: description, enabled, mode, role, smart_group\n"
                  "A role that does not exist yet is made.");
  verb->add_option("name", added->reference, "Name of the new group")->required();
  verb->add_option("assignments", added->assignments, "FIELD=VALUE ...");
  verb->add_option("--member", added->members, "User to be a member, by ID or name; may be repeated")
      ->allow_extra_args(false);
  verb->callback([&opts, added] { add(opts, *added); });

  auto changed = std::make_shared<change_arguments>();
  verb = add_verb(noun, "set", "Change a group",
                  "  twctl group set operators --member ada --remove-member ben\n"
                  "  twctl group set operators role=NodeAdmin --dry-run\n"
                  "  twctl group set operators mode=smart_group smart_group='Berlin nodes'\n"
                  "  twctl group set operators description=     (an empty value clears the field)\n"
                  "\nFields: " +
                      joined(settable(fields, {"role", "smart_group"})) +
                      "\nA role that does not exist yet is made.");
  verb->add_option("group", changed->reference, what_a_group_is)->required();
  verb->add_option("assignments", changed->assignments, "FIELD=VALUE ...");
  verb->add_option("--member", changed->members, "User to become a member; may be repeated")
      ->allow_extra_args(false);
  verb->add_option("--remove-member", changed->left_members, "User to leave the group; may be repeated")
      ->allow_extra_args(false);
  verb->callback([&opts, changed] { set(opts, *changed); });

  verb = add_verb(noun, "delete", "Delete a group, which all its members leave with that",
                  "  twctl group delete operators --yes");
  verb->add_option("group", *reference, what_a_group_is)->required();
  verb->callback([&opts, reference] { remove(opts, *reference); });
}

}  // namespace twctl
