// twctl template change: whom a template of users and groups changes on the nodes that it is pushed to.
#include <fmt/format.h>

#include "cli/fields.hpp"
#include "cli/secret_option.hpp"
#include "cli/text.hpp"
#include "commands.hpp"
#include "pushes/templates.hpp"

namespace twctl {

namespace {

constexpr field<cfg_ugt_user_operation> user_fields[] = {
    text_field<cfg_ugt_user_operation_get_description, cfg_ugt_user_operation_set_description>("description",
                                                                                               "Description"),
    truth_field<cfg_ugt_user_operation_get_disabled, cfg_ugt_user_operation_set_disabled>("disabled",
                                                                                          "Disabled"),
};
constexpr field<cfg_ugt_group_operation> group_fields[] = {
    text_field<cfg_ugt_group_operation_get_description, cfg_ugt_group_operation_set_description>(
        "description", "Description"),
};

/// The names that a record gives by their index, joined by ';'.
template <typename Record>
cell names_of(const Record *record, int32_t (*count)(const Record *),
              const char *(*name)(const Record *, int32_t)) {
  std::string names;
  for (int32_t i = 0; i < count(record); i++) names += (i ? ";" : "") + std::string(view(name(record, i)));
  return unless_empty(names);
}

template_record find_users_groups(cfg *store, const std::string &reference) {
  template_record one = find_template(store, reference);
  if (cfg_template_get_type(one.get()) != CFG_TEMPLATE_USERS_GROUPS)
    throw failure(exit_code::invalid_input,
                  fmt::format("'{}' is no template of users and groups", printable(reference)));
  return one;
}

void list(const options &opts, const std::string &reference) {
  session work(opts, session::access::read);
  template_record one = find_users_groups(work.store(), reference);
  listing result("changes", {{"type", "TYPE"},
                             {"name", "NAME"},
                             {"description", "DESCRIPTION"},
                             {"disabled", "DISABLED"},
                             {"password_set", "PASSWORD"},
                             {"groups", "GROUPS"},
                             {"roles", "ROLES"}});
  for (int32_t i = 0; i < cfg_ugt_get_user_operations_count(one.get()); i++) {
    const cfg_ugt_user_operation *user = cfg_ugt_get_user_operation(one.get(), i);
    result.add(
        {cell_of("user"), cell_of(cfg_ugt_user_operation_get_username(user)),
         cell_of(cfg_ugt_user_operation_get_description(user)),
         cfg_ugt_user_operation_get_disabled(user) != 0, cfg_ugt_user_operation_get_password(user) != nullptr,
         names_of(user, cfg_ugt_user_operation_get_groups_count, cfg_ugt_user_operation_get_group), cell()});
  }
  for (int32_t i = 0; i < cfg_ugt_get_group_operations_count(one.get()); i++) {
    const cfg_ugt_group_operation *group = cfg_ugt_get_group_operation(one.get(), i);
    result.add({cell_of("group"), cell_of(cfg_ugt_group_operation_get_groupname(group)),
                cell_of(cfg_ugt_group_operation_get_description(group)), cell(), cell(), cell(),
                names_of(group, cfg_ugt_group_operation_get_roles_count, cfg_ugt_group_operation_get_role)});
  }
  auto add_names = [&](const char *type, int32_t (*count)(const cfg_template *),
                       const char *(*name)(const cfg_template *, int32_t)) {
    for (int32_t i = 0; i < count(one.get()); i++)
      result.add({cell_of(type), cell_of(name(one.get(), i)), cell(), cell(), cell(), cell(), cell()});
  };
  add_names("member", cfg_ugt_get_membership_users_count, cfg_ugt_get_membership_user);
  add_names("group of members", cfg_ugt_get_membership_groups_count, cfg_ugt_get_membership_group);
  result.print(opts);
}

struct change_arguments {
  std::string reference, name;
  std::vector<std::string> assignments, names, groups;
  secret_option password;
};

/// Fails unless the template's operation is one of those from `first` to `last`.
void require_operation(const cfg_template *record, int32_t first, int32_t last) {
  int32_t operation = cfg_ugt_get_operation(record);
  if (operation >= first && operation <= last) return;
  std::string words;
  for (int32_t one = first; one <= last; one++)
    words += (words.empty() ? "" : ", ") + std::string(cfg_ugt_op_type_to_string(one));
  throw failure(exit_code::invalid_input, "the template's operation has no such change",
                fmt::format("it is {}, and this needs {}", cfg_ugt_op_type_to_string(operation), words),
                "change it with 'twctl template set TEMPLATE operation=...'");
}

void save(session &work, cfg_template *record) {
  if (!cfg_template_save(record)) throw store_failure(work.store(), "cannot save the template");
  finish_entry(work, cfg_template_get_uuid(record), cfg_template_get_name(record), "Changed");
}

void add_user_change(const options &opts, const change_arguments &arguments) {
  auto values = read_assignments(arguments.assignments, settable(user_fields), true);
  require_label(arguments.name, "the name of a user");
  session work(opts, session::access::write);
  template_record one = find_users_groups(work.store(), arguments.reference);
  require_operation(one.get(), CFG_UGT_USER_ADD, CFG_UGT_USER_SET_LIST);
  user_operation_record user(cfg_ugt_new_user_operation());
  require_set(cfg_ugt_user_operation_set_username(user.get(), arguments.name.c_str()), "the name");
  set_fields(user_fields, user.get(), values);
  if (arguments.password.given())
    require_set(cfg_ugt_user_operation_set_password(user.get(), arguments.password.read().c_str()),
                "the password");
  for (const std::string &group : arguments.groups) {
    require_label(group, "the name of a group");
    require_set(cfg_ugt_user_operation_add_group(user.get(), group.c_str()), "a group");
  }
  require_set(add_user_operation(one.get(), user), "the user");
  save(work, one.get());
}

void add_group_change(const options &opts, const change_arguments &arguments) {
  auto values = read_assignments(arguments.assignments, settable(group_fields), true);
  require_label(arguments.name, "the name of a group");
  session work(opts, session::access::write);
  template_record one = find_users_groups(work.store(), arguments.reference);
  require_operation(one.get(), CFG_UGT_GROUP_ADD, CFG_UGT_GROUP_SET_LIST);
  group_operation_record group(cfg_ugt_new_group_operation());
  require_set(cfg_ugt_group_operation_set_groupname(group.get(), arguments.name.c_str()), "the name");
  set_fields(group_fields, group.get(), values);
  for (const std::string &role : arguments.names) {
    require_label(role, "the name of a role");
    require_set(cfg_ugt_group_operation_add_role(group.get(), role.c_str()), "a role");
  }
  require_set(add_group_operation(one.get(), group), "the group");
  save(work, one.get());
}

void add_membership(const options &opts, const change_arguments &arguments) {
  if (arguments.names.empty() && arguments.groups.empty())
    throw failure(exit_code::usage, "nothing to add", "", "give --user NAME or --group NAME");
  session work(opts, session::access::write);
  template_record one = find_users_groups(work.store(), arguments.reference);
  require_operation(one.get(), CFG_UGT_MEMBERSHIP, CFG_UGT_MEMBERSHIP);
  for (const std::string &user : arguments.names) {
    require_label(user, "the name of a user");
    require_set(cfg_ugt_add_membership_user(one.get(), user.c_str()), "a user");
  }
  for (const std::string &group : arguments.groups) {
    require_label(group, "the name of a group");
    require_set(cfg_ugt_add_membership_group(one.get(), group.c_str()), "a group");
  }
  save(work, one.get());
}

void clear(const options &opts, const std::string &reference) {
  session work(opts, session::access::write);
  template_record one = find_users_groups(work.store(), reference);
  confirm_delete(opts, fmt::format("the changes of '{}'", view(cfg_template_get_name(one.get()))));
  cfg_ugt_clear_user_operations(one.get());
  cfg_ugt_clear_group_operations(one.get());
  cfg_ugt_clear_membership_users(one.get());
  cfg_ugt_clear_membership_groups(one.get());
  save(work, one.get());
}

}  // namespace

void add_template_change(CLI::App *parent, const options &opts) {
  CLI::App *noun = parent->add_subcommand("change", "What a template of users and groups changes on nodes");
  noun->require_subcommand(1);
  constexpr const char *what_a_template_is = "ID or name of a template of the kind users_groups";

  auto reference = std::make_shared<std::string>();
  CLI::App *verb = add_verb(noun, "list", "List the changes", "  twctl template change list 'Night shift'");
  verb->add_option("template", *reference, what_a_template_is)->required();
  verb->callback([&opts, reference] { list(opts, *reference); });

  auto user = std::make_shared<change_arguments>();
  verb = add_verb(noun, "user", "Add a user to an operation on users",
                  "  twctl template change user 'Night shift' ada --group operators --password\n"
                  "  twctl template change user 'Night shift' ben disabled=yes description='On leave'\n"
                  "\nThe password is stored as it is given: nodes get what they are to set.\n"
                  "Fields: " +
                      joined(settable(user_fields)));
  verb->add_option("template", user->reference, what_a_template_is)->required();
  verb->add_option("name", user->name, "Login name on the nodes")->required();
  verb->add_option("assignments", user->assignments, "FIELD=VALUE ...");
  verb->add_option("--group", user->groups, "Group of the user on the nodes; may be repeated")
      ->allow_extra_args(false);
  add_secret(verb, user->password, "password", "Password of the user", false);
  verb->callback([&opts, user] { add_user_change(opts, *user); });

  auto group = std::make_shared<change_arguments>();
  verb = add_verb(noun, "group", "Add a group to an operation on groups",
                  "  twctl template change group 'Branch groups' operators --role pmshell\n"
                  "\nFields: " +
                      joined(settable(group_fields)));
  verb->add_option("template", group->reference, what_a_template_is)->required();
  verb->add_option("name", group->name, "Name of the group on the nodes")->required();
  verb->add_option("assignments", group->assignments, "FIELD=VALUE ...");
  verb->add_option("--role", group->names, "Role of the group; may be repeated")->allow_extra_args(false);
  verb->callback([&opts, group] { add_group_change(opts, *group); });

  auto membership = std::make_shared<change_arguments>();
  verb =
      add_verb(noun, "membership", "Add users and groups to an operation on memberships",
               "  twctl template change membership Joining --user ada --user ben --group operators\n"
               "\nWhether the users join the groups or leave them is the template's field add_membership.");
  verb->add_option("template", membership->reference, what_a_template_is)->required();
  verb->add_option("--user", membership->names, "User on the nodes; may be repeated")
      ->allow_extra_args(false);
  verb->add_option("--group", membership->groups, "Group on the nodes; may be repeated")
      ->allow_extra_args(false);
  verb->callback([&opts, membership] { add_membership(opts, *membership); });

  verb = add_verb(noun, "clear", "Delete all changes", "  twctl template change clear 'Night shift' --yes");
  verb->add_option("template", *reference, what_a_template_is)->required();
  verb->callback([&opts, reference] { clear(opts, *reference); });
}

}  // namespace twctl
