// twctl user: the appliance's local accounts.
#include <fmt/format.h>

#include <map>

#include "access/members.hpp"
#include "cli/fields.hpp"
#include "cli/secret_option.hpp"
#include "cli/text.hpp"
#include "commands.hpp"

namespace twctl {

namespace {

constexpr field<cfg_user> fields[] = {
    {"id", "ID", [](cfg_user *user) { return cell_of(cfg_user_get_uuid(user)); }, nullptr},
    shown_text<cfg_user_get_username>("name", "Name"),
    // A description cannot be taken away again: a save without one leaves the stored one.
    text_field<cfg_user_get_description, cfg_user_set_description, require_label>("description",
                                                                                  "Description"),
    truth_field<cfg_user_get_enabled, cfg_user_set_enabled>("enabled", "Enabled"),
    truth_field<cfg_user_get_no_password, cfg_user_set_no_password>("no_password", "Needs no password"),
};

/// The names of groups by their IDs, each looked up once.
class group_namer {
 public:
  explicit group_namer(cfg *store) : store_(store) {}
  /// The groups of a user, joined by ';'; one that leads nowhere reads as its ID.
  cell names_of(cfg_user *user) {
    std::string names;
    for (const std::string &id : groups_of(user)) names += (names.empty() ? "" : ";") + name_of(id);
    return unless_empty(names);
  }

 private:
  const std::string &name_of(const std::string &id) {
    auto known = names_.find(id);
    if (known != names_.end()) return known->second;
    group_record group(cfg_group_get_by_id(store_, id.c_str()));
    const char *name = cfg_group_get_groupname(group.get());
    return names_.emplace(id, name ? name : id).first->second;
  }

  cfg *store_;
  std::map<std::string, std::string> names_;
};

void list(const options &opts) {
  session work(opts, session::access::read);
  listing result("users", {{"id", "ID"},
                           {"name", "NAME"},
                           {"enabled", "ENABLED"},
                           {"no_password", "NO PASSWORD"},
                           {"groups", "GROUPS"},
                           {"description", "DESCRIPTION"}});
  group_namer groups(work.store());
  user_list all(cfg_user_list_new(work.store()));
  for (int32_t i = 0; i < cfg_user_list_count(all.get()); i++) {
    user_record one(cfg_user_list_get_user(all.get(), i));
    if (!one) throw store_failure(work.store(), "cannot read a user");
    result.add({cell_of(cfg_user_get_uuid(one.get())), cell_of(cfg_user_get_username(one.get())),
                cfg_user_get_enabled(one.get()) != 0, cfg_user_get_no_password(one.get()) != 0,
                groups.names_of(one.get()), cell_of(cfg_user_get_description(one.get()))});
  }
  result.print(opts);
}

void show(const options &opts, const std::string &reference) {
  session work(opts, session::access::read);
  user_record one = find_user(work.store(), reference);
  sheet result;
  show_fields(result, fields, one.get());
  result.add("groups", "Groups", group_namer(work.store()).names_of(one.get()));
  result.print(opts);
}

struct change_arguments {
  std::string reference;
  std::vector<std::string> assignments, groups, left_groups;
  secret_option password;
};

/// Makes the changes to the record, and saves it.
void change(session &work, cfg_user *user, const change_arguments &arguments,
            const std::map<std::string, std::string> &values) {
  set_fields(fields, user, values);
  if (arguments.password.given()) {
    cfg_user_set_password(user, arguments.password.read().c_str());
    // A hash that cannot be made is told by a message alone, and would leave the user without password.
    if (cfg_get_message_count(work.store()) > 0)
      throw failure(exit_code::failure, "cannot hash the password",
                    cfg_get_first_message_string(work.store()));
  }
  if (!cfg_user_save(user))
    throw store_failure(work.store(), "cannot save the user (is there a list 'users'?)");
  for (const std::string &group : arguments.left_groups)
    leave_group(work.store(), user, find_group(work.store(), group).get());
  for (const std::string &group : arguments.groups)
    join_group(work.store(), user, find_group(work.store(), group).get());
}

void add(const options &opts, const change_arguments &arguments) {
  auto values = read_assignments(arguments.assignments, settable(fields), true);
  require_label(arguments.reference, "the name of a user");
  session work(opts, session::access::write);
  user_record same(cfg_user_get_by_username(work.store(), arguments.reference.c_str()));
  require_free(cfg_user_get_uuid(same.get()), arguments.reference);
  user_record one(cfg_user_new(work.store(), arguments.reference.c_str()));
  change(work, one.get(), arguments, values);
  finish_entry(work, cfg_user_get_uuid(one.get()), arguments.reference, "Added");
}

void set(const options &opts, const change_arguments &arguments) {
  bool more = arguments.password.given() || !arguments.groups.empty() || !arguments.left_groups.empty();
  auto values = read_assignments(arguments.assignments, settable(fields), more);
  session work(opts, session::access::write);
  user_record one = find_user(work.store(), arguments.reference);
  change(work, one.get(), arguments, values);
  finish_entry(work, cfg_user_get_uuid(one.get()), cfg_user_get_username(one.get()), "Changed");
}

void remove(const options &opts, const std::string &reference) {
  session work(opts, session::access::write);
  user_record one = find_user(work.store(), reference);
  std::string id = cfg_user_get_uuid(one.get()), name = cfg_user_get_username(one.get());
  if (name == "root") throw failure(exit_code::invalid_input, "the user 'root' is never deleted");
  confirm_delete(opts, fmt::format("the user '{}'", name));
  forget_user(work.store(), one.get());
  if (!cfg_user_delete(one.get())) throw store_failure(work.store(), "cannot delete the user");
  finish_entry(work, id, name, "Deleted");
}

}  // namespace

user_record find_user(cfg *store, const std::string &reference) {
  user_record one;
  if (reference.starts_with("users-")) one.reset(cfg_user_get_by_id(store, reference.c_str()));
  if (!one) one.reset(cfg_user_get_by_username(store, reference.c_str()));
  return require_found(std::move(one), "user", reference, "user");
}

void add_user(CLI::App &program, const options &opts) {
  CLI::App *noun = program.add_subcommand("user", "Users: the appliance's local accounts");
  noun->require_subcommand(1);
  constexpr const char *what_a_user_is = "ID or name of a user";

  CLI::App *verb = add_verb(noun, "list", "List users", "  twctl user list\n  twctl user list -o json");
  verb->callback([&opts] { list(opts); });

  auto reference = std::make_shared<std::string>();
  verb = add_verb(noun, "show", "Show one user", "  twctl user show ada");
  verb->add_option("user", *reference, what_a_user_is)->required();
  verb->callback([&opts, reference] { show(opts, *reference); });

  auto added = std::make_shared<change_arguments>();
  verb = add_verb(noun, "add", "Add a user, who can log in once there is a password",
                  "  twctl user add ada --password description='Ada, night shift'\n"
                  "  twctl user add backup --password-file ./secret --group operators enabled=no\n"
                  "\nFields: " +
                      joined(settable(fields)));
  verb->add_option("name", added->reference, "Login name, which cannot be changed later")->required();
  verb->add_option("assignments", added->assignments, "FIELD=VALUE ...");
  verb->add_option("--group", added->groups, "Group to join, by its ID or name; may be repeated")
      ->allow_extra_args(false);
  add_secret(verb, added->password, "password", "Password of the new user", false);
  verb->callback([&opts, added] { add(opts, *added); });

  auto changed = std::make_shared<change_arguments>();
  verb = add_verb(noun, "set", "Change a user",
                  "  twctl user set ada --password\n"
                  "  twctl user set ada enabled=no --reason 'left'\n"
                  "  twctl user set ada --group admin --remove-group operators --dry-run\n"
                  "\nFields: " +
                      joined(settable(fields)));
  verb->add_option("user", changed->reference, what_a_user_is)->required();
  verb->add_option("assignments", changed->assignments, "FIELD=VALUE ...");
  verb->add_option("--group", changed->groups, "Group to join; may be repeated")->allow_extra_args(false);
  verb->add_option("--remove-group", changed->left_groups, "Group to leave; may be repeated")
      ->allow_extra_args(false);
  add_secret(verb, changed->password, "password", "New password");
  verb->callback([&opts, changed] { set(opts, *changed); });

  verb = add_verb(noun, "delete", "Delete a user, who leaves all groups with that",
                  "  twctl user delete ada\n  twctl user delete ada --yes --reason 'left'");
  verb->add_option("user", *reference, what_a_user_is)->required();
  verb->callback([&opts, reference] { remove(opts, *reference); });
}

}  // namespace twctl
