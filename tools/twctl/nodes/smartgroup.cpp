// twctl smartgroup: saved searches for nodes.
#include <fmt/format.h>

#include "cli/entries.hpp"
#include "cli/text.hpp"
#include "commands.hpp"
#include "nodes/searching.hpp"

namespace twctl {

namespace {

constexpr const char *type = "nodes";

smartgroup_record find_group(cfg *store, const std::string &reference) {
  smartgroup_record one;
  if (reference.starts_with("smart_groups_nodes_groups-"))
    one.reset(cfg_smartgroup_get_by_id(store, type, reference.c_str()));
  if (!one) one.reset(cfg_smartgroup_get_by_name(store, type, reference.c_str()));
  return require_found(std::move(one), "smart group", reference, "smartgroup");
}

void list(const options &opts) {
  session work(opts, session::access::read);
  listing result("smartgroups", {{"id", "ID"}, {"name", "NAME"}, {"query", "QUERY"}});
  smartgroup_list all(cfg_smartgroup_list_new(work.store(), type));
  for (const smartgroup_record &one : entries(all.get())) {
    if (!one) throw store_failure(work.store(), "cannot read a smart group");
    result.add({cell_of(cfg_smartgroup_get_uuid(one.get())), cell_of(cfg_smartgroup_get_name(one.get())),
                cell_of(cfg_smartgroup_get_query(one.get()))});
  }
  result.print(opts);
}

void show(const options &opts, const std::string &reference) {
  session work(opts, session::access::read);
  smartgroup_record one = find_group(work.store(), reference);
  sheet result;
  result.add("id", "ID", cell_of(cfg_smartgroup_get_uuid(one.get())));
  result.add("name", "Name", cell_of(cfg_smartgroup_get_name(one.get())));
  result.add("query", "Query", cell_of(cfg_smartgroup_get_query(one.get())));
  result.print(opts);
}

struct change_arguments {
  std::string reference, name;
  std::vector<std::string> terms;
};

void require_new(cfg *store, const std::string &name) {
  require_label(name, "the name of a smart group");
  smartgroup_record same(cfg_smartgroup_get_by_name(store, type, name.c_str()));
  if (same) require_free(cfg_smartgroup_get_uuid(same.get()), name);
}

void save(session &work, cfg_smartgroup *group, const char *done) {
  if (!cfg_smartgroup_save(group))
    throw store_failure(work.store(),
                        "cannot save the smart group (is there a list 'smart_groups.nodes_groups'?)");
  finish_entry(work, cfg_smartgroup_get_uuid(group), cfg_smartgroup_get_name(group), done);
}

void create(const options &opts, const change_arguments &arguments) {
  std::string query = query_of(read_condition(arguments.terms).get());
  session work(opts, session::access::write);
  require_new(work.store(), arguments.name);
  smartgroup_record one(cfg_smartgroup_new(work.store(), type, arguments.name.c_str(), query.c_str()));
  save(work, one.get(), "Created");
}

void set(const options &opts, const change_arguments &arguments) {
  if (arguments.name.empty() && arguments.terms.empty())
    throw failure(exit_code::usage, "nothing to set", "", "give --name NAME, conditions, or both");
  session work(opts, session::access::write);
  smartgroup_record one = find_group(work.store(), arguments.reference);
  if (!arguments.name.empty() && arguments.name != view(cfg_smartgroup_get_name(one.get()))) {
    require_new(work.store(), arguments.name);
    cfg_smartgroup_set_name(one.get(), arguments.name.c_str());
  }
  if (!arguments.terms.empty())
    cfg_smartgroup_set_query(one.get(), query_of(read_condition(arguments.terms).get()).c_str());
  save(work, one.get(), "Changed");
}

void remove(const options &opts, const std::string &reference) {
  session work(opts, session::access::write);
  smartgroup_record one = find_group(work.store(), reference);
  std::string id = cfg_smartgroup_get_uuid(one.get()), name = cfg_smartgroup_get_name(one.get());
  confirm_delete(opts, fmt::format("the smart group '{}'", name));
  if (!cfg_smartgroup_delete(one.get())) throw store_failure(work.store(), "cannot delete the smart group");
  finish_entry(work, id, name, "Deleted");
}

void list_members(const options &opts, const std::string &reference, int32_t limit) {
  session work(opts, session::access::read);
  smartgroup_record one = find_group(work.store(), reference);
  // To cfg_smartgroup_evaluate() a service that does not answer looks like a group without members.
  condition_tree tree(json_dump_to_condition(cfg_smartgroup_get_query(one.get()), 0));
  if (!tree)
    throw failure(exit_code::invalid_input,
                  fmt::format("the query of '{}' is no condition", printable(reference)), "",
                  "give it another with 'twctl smartgroup set'");
  list_found(work, tree, limit);
}

}  // namespace

void add_smartgroup(CLI::App &program, const options &opts) {
  CLI::App *noun = program.add_subcommand("smartgroup", "Smart groups: saved searches for nodes");
  noun->require_subcommand(1);
  constexpr const char *what_a_group_is = "ID or name of a smart group";

  CLI::App *verb =
      add_verb(noun, "list", "List smart groups", "  twctl smartgroup list\n  twctl smartgroup list -o json");
  verb->callback([&opts] { list(opts); });

  auto reference = std::make_shared<std::string>();
  verb = add_verb(noun, "show", "Show one smart group", "  twctl smartgroup show Waiting -o json");
  verb->add_option("group", *reference, what_a_group_is)->required();
  verb->callback([&opts, reference] { show(opts, *reference); });

  auto limit = std::make_shared<int32_t>(0);
  verb = add_verb(noun, "nodes", "List the nodes that match now, as the search service finds them",
                  "  twctl smartgroup nodes Waiting\n  twctl smartgroup nodes Waiting --limit 20");
  verb->add_option("group", *reference, what_a_group_is)->required();
  add_limit(verb, *limit);
  verb->callback([&opts, reference, limit] { list_members(opts, *reference, *limit); });

  auto arguments = std::make_shared<change_arguments>();
  verb = add_verb(noun, "create", "Create a smart group",
                  std::string("  twctl smartgroup create Waiting status=Pending\n"
                              "  twctl smartgroup create Berlin tag:Site=Berlin product!=generic --dry-run\n"
                              "\n") +
                      condition_help);
  verb->add_option("name", arguments->name, "Name of the new group")->required();
  verb->add_option("conditions", arguments->terms, "What its members match; see below")->required();
  verb->callback([&opts, arguments] { create(opts, *arguments); });

  verb =
      add_verb(noun, "set", "Change the name or the conditions of a smart group",
               std::string("  twctl smartgroup set Waiting --name 'To be approved'\n"
                           "  twctl smartgroup set Waiting status=Pending product=tarnwell --dry-run\n\n") +
                   condition_help);
  verb->add_option("group", arguments->reference, what_a_group_is)->required();
  verb->add_option("conditions", arguments->terms, "What its members match from now on; see below");
  verb->add_option("--name", arguments->name, "Its new name");
  verb->callback([&opts, arguments] { set(opts, *arguments); });

  verb = add_verb(noun, "delete", "Delete a smart group",
                  "  twctl smartgroup delete Waiting\n  twctl smartgroup delete Waiting --yes");
  verb->add_option("group", *reference, what_a_group_is)->required();
  verb->callback([&opts, reference] { remove(opts, *reference); });
}

}  // namespace twctl
