// twctl push: templates on their way to nodes.
#include "pushes/pushes.hpp"

#include <fmt/format.h>
#include <pwd.h>
#include <unistd.h>

#include <algorithm>

#include "cli/fields.hpp"
#include "cli/text.hpp"
#include "commands.hpp"
#include "nodes/nodes.hpp"
#include "pushes/templates.hpp"

namespace twctl {

namespace {

constexpr field<cfg_push_exec_ctxt> push_fields[] = {
    word_field<cfg_push_exec_ctxt_get_status, cfg_push_exec_ctxt_set_status,
               cfg_exec_ctxt_status_enum_to_string, CFG_PUSH_EXEC_UNCONFIGURED,
               CFG_PUSH_EXEC_EXECUTE_COMPLETE>("status", "Status"),
    word_field<cfg_push_exec_ctxt_get_disconnected_behaviour, cfg_push_exec_ctxt_set_disconnected_behaviour,
               cfg_exec_ctxt_disconn_behaviour_enum_to_string, CFG_PUSH_DISCONNECTED_SKIP,
               CFG_PUSH_DISCONNECTED_APPLY>("disconnected_nodes", "Disconnected nodes"),
};
constexpr field<cfg_push_node_ctxt> node_fields[] = {
    word_field<cfg_push_node_ctxt_get_status, cfg_push_node_ctxt_set_status,
               cfg_node_ctxt_status_enum_to_string, CFG_PUSH_NODE_PREFLIGHT_READY,
               CFG_PUSH_NODE_EXECUTE_COMPLETE>("status", "Status"),
    truth_field<cfg_push_node_ctxt_get_apply_execution, cfg_push_node_ctxt_set_apply_execution>(
        "apply", "Is executed"),
};

/// Who starts a push: --who, or the user of the process.
std::string author(const options &opts) {
  if (!opts.who.empty()) return opts.who;
  const passwd *user = getpwuid(getuid());
  return user ? user->pw_name : fmt::format("uid {}", getuid());
}

std::string templates_of(cfg *store, const cfg_push_exec_ctxt *push) {
  std::string names;
  for (int32_t i = 0; i < cfg_push_exec_ctxt_get_num_templates(push); i++)
    names += (i ? ";" : "") + template_name(store, cfg_push_exec_ctxt_get_template_uuid(push, i));
  return names;
}

void list(const options &opts) {
  session work(opts, session::access::read);
  listing result("pushes", {{"id", "ID"},
                            {"username", "USER"},
                            {"status", "STATUS"},
                            {"templates", "TEMPLATES"},
                            {"node_count", "NODES", true}});
  push_list all(cfg_push_exec_ctxt_list_new(work.store()));
  for (int32_t i = 0; i < cfg_push_exec_ctxt_list_count(all.get()); i++) {
    push_record one(cfg_push_exec_ctxt_list_get_execution(all.get(), i));
    if (!one) throw store_failure(work.store(), "cannot read a push");
    result.add({cell_of(cfg_push_exec_ctxt_get_uuid(one.get())),
                cell_of(cfg_push_exec_ctxt_get_username(one.get())), push_fields[0].read(one.get()),
                unless_empty(templates_of(work.store(), one.get())),
                int64_t{cfg_push_exec_ctxt_get_num_nodes(one.get())}});
  }
  result.print(opts);
}

void show(const options &opts, const std::string &reference) {
  session work(opts, session::access::read);
  push_record one = find_push(work.store(), reference);
  sheet result;
  result.add("id", "ID", cell_of(cfg_push_exec_ctxt_get_uuid(one.get())));
  result.add("username", "Started by", cell_of(cfg_push_exec_ctxt_get_username(one.get())));
  show_fields(result, push_fields, one.get());
  result.add("templates", "Templates", unless_empty(templates_of(work.store(), one.get())));
  result.add("node_count", "Number of nodes", int64_t{cfg_push_exec_ctxt_get_num_nodes(one.get())});
  result.print(opts);
}

struct create_arguments {
  std::vector<std::string> templates, nodes, assignments;
};

/// The same template or node twice would be pushed, or pushed to, twice.
void require_once(std::vector<std::string> &ids, const std::string &id, const std::string &reference) {
  if (std::find(ids.begin(), ids.end(), id) != ids.end())
    throw failure(exit_code::usage, fmt::format("'{}' is given twice", printable(reference)));
  ids.push_back(id);
}

void create(const options &opts, const create_arguments &arguments) {
  auto values = read_assignments(arguments.assignments, {"disconnected_nodes"}, true);
  session work(opts, session::access::write);
  push_record push(cfg_push_exec_ctxt_new(work.store()));
  require_set(cfg_push_exec_ctxt_set_username(push.get(), author(opts).c_str()), "the user");
  cfg_push_exec_ctxt_set_status(push.get(), CFG_PUSH_EXEC_PREFLIGHT_READY);
  set_fields(push_fields, push.get(), values);
  std::vector<std::string> ids;
  for (const std::string &reference : arguments.templates) {
    std::string id = cfg_template_get_uuid(find_template(work.store(), reference).get());
    require_once(ids, id, reference);
    require_set(cfg_push_exec_ctxt_add_template(push.get(), id.c_str()), "a template");
  }
  for (const std::string &reference : arguments.nodes) {
    std::string id = cfg_node_get_uuid(find_node(work.store(), reference).get());
    require_once(ids, id, reference);
    push_node_record node(cfg_push_node_ctxt_new(work.store()));
    require_set(cfg_push_node_ctxt_set_node(node.get(), id.c_str()), "a node");
    require_set(cfg_push_exec_ctxt_add_node(push.get(), node.get()), "a node");
    static_cast<void>(node.release());  // the push's now
  }
  if (!cfg_push_exec_ctxt_save(push.get(), 1))
    throw store_failure(work.store(), "cannot add the push (is there a list 'cfg_push_exec_ctxts'?)");
  std::string what = fmt::format("{} template{} to {} node{}", arguments.templates.size(),
                                 arguments.templates.size() == 1 ? "" : "s", arguments.nodes.size(),
                                 arguments.nodes.size() == 1 ? "" : "s");
  outcome result = work.commit("push " + what);
  std::string id = result.dry_run ? "" : cfg_push_exec_ctxt_get_uuid(push.get());
  sheet details;
  details.add("id", "ID", unless_empty(id));
  work.report(result, fmt::format("Created the push {} of {}.", id, what), details.json());
}

struct set_arguments {
  std::string reference;
  std::vector<std::string> nodes, assignments;
};

void set(const options &opts, const set_arguments &arguments) {
  bool of_nodes = !arguments.nodes.empty();
  auto values =
      read_assignments(arguments.assignments, of_nodes ? settable(node_fields) : settable(push_fields));
  session work(opts, session::access::write);
  push_record push = find_push(work.store(), arguments.reference);
  if (of_nodes) {
    for (const push_share &one : shares_of(work.store(), push.get(), arguments.nodes)) {
      set_fields(node_fields, one.context, values);
      if (!cfg_push_node_ctxt_save(one.context))
        throw store_failure(work.store(), fmt::format("cannot save the share of '{}'", printable(one.name)));
    }
  } else {
    set_fields(push_fields, push.get(), values);
    if (!cfg_push_exec_ctxt_save(push.get(), 0)) throw store_failure(work.store(), "cannot save the push");
  }
  std::string id = cfg_push_exec_ctxt_get_uuid(push.get());
  outcome result = work.commit("change " + id);
  sheet details;
  details.add("id", "ID", id);
  work.report(result, fmt::format("Changed {}.", id), details.json());
}

}  // namespace

push_record find_push(cfg *store, const std::string &reference) {
  push_record one;
  if (reference.starts_with("cfg_push_exec_ctxts-"))
    one.reset(cfg_push_exec_ctxt_get_by_id(store, reference.c_str()));
  if (reference == "last") {
    push_list all(cfg_push_exec_ctxt_list_new(store));
    one.reset(cfg_push_exec_ctxt_list_get_execution(all.get(), cfg_push_exec_ctxt_list_count(all.get()) - 1));
  }
  return require_found(std::move(one), "push", reference, "push");
}

std::string template_name(cfg *store, const char *id) {
  template_record one(cfg_template_get_by_id(store, id));
  const char *name = cfg_template_get_name(one.get());
  return std::string(view(name ? name : id));
}

void add_push(CLI::App &program, const options &opts) {
  CLI::App *noun = program.add_subcommand("push", "Pushes: templates on their way to nodes");
  noun->require_subcommand(1);
  constexpr const char *what_a_push_is = "ID of a push, or 'last' for the newest";

  CLI::App *verb = add_verb(noun, "list", "List pushes", "  twctl push list\n  twctl push list -o json");
  verb->callback([&opts] { list(opts); });

  auto reference = std::make_shared<std::string>();
  verb = add_verb(noun, "show", "Show one push", "  twctl push show last");
  verb->add_option("push", *reference, what_a_push_is)->required();
  verb->callback([&opts, reference] { show(opts, *reference); });

  auto created = std::make_shared<create_arguments>();
  verb = add_verb(noun, "create", "Make a push, ready for the service that checks and executes it",
                  "  twctl push create --template Upgrade --node rack-1 --node rack-2\n"
                  "  twctl push create --template Upgrade --node rack-1 disconnected_nodes=apply --dry-run\n"
                  "\nFields: disconnected_nodes (skip, prompt or apply)");
  verb->add_option("--template", created->templates, "Template, by its ID or name; may be repeated")
      ->required()
      ->allow_extra_args(false);
  verb->add_option("--node", created->nodes, "Node to push to; may be repeated")
      ->required()
      ->allow_extra_args(false);
  verb->add_option("assignments", created->assignments, "FIELD=VALUE ...");
  verb->callback([&opts, created] { create(opts, *created); });

  auto changed = std::make_shared<set_arguments>();
  verb =
      add_verb(noun, "set", "Change a push, or what it does on single nodes",
               "  twctl push set last disconnected_nodes=skip\n"
               "  twctl push set last --node rack-1 apply=yes\n"
               "\nFields of a push: " +
                   joined(settable(push_fields)) + "\nFields with --node: " + joined(settable(node_fields)));
  verb->add_option("push", changed->reference, what_a_push_is)->required();
  verb->add_option("assignments", changed->assignments, "FIELD=VALUE ...")->required();
  verb->add_option("--node", changed->nodes, "Node of the push; may be repeated")->allow_extra_args(false);
  verb->callback([&opts, changed] { set(opts, *changed); });

  add_push_view(noun, opts);
}

}  // namespace twctl
