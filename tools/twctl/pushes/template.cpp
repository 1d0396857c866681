// twctl template: pieces of configuration that are pushed to nodes.
#include <fmt/format.h>

#include "cli/entries.hpp"
#include "cli/failure.hpp"
#include "cli/fields.hpp"
#include "cli/session.hpp"
#include "cli/text.hpp"
#include "commands.hpp"
#include "pushes/template_content.hpp"
#include "pushes/templates.hpp"

namespace twctl {

namespace {

/// The first committed template with this name; empty when there is none.
template_record named(cfg *store, const std::string &name) {
  template_list all(cfg_template_list_new(store));
  for (template_record one : entries(all.get()))
    if (one && view(cfg_template_get_name(one.get())) == name) return one;
  return nullptr;
}

cell kind_of(const cfg_template *record) {
  return cell_of(cfg_template_type_enum_to_string(cfg_template_get_type(record)));
}

void list(const options &opts) {
  session work(opts, session::access::read);
  listing result("templates",
                 {{"id", "ID"}, {"name", "NAME"}, {"kind", "KIND"}, {"description", "DESCRIPTION"}});
  template_list all(cfg_template_list_new(work.store()));
  for (const template_record &one : entries(all.get())) {
    if (!one) throw store_failure(work.store(), "cannot read a template");
    result.add({cell_of(cfg_template_get_uuid(one.get())), cell_of(cfg_template_get_name(one.get())),
                kind_of(one.get()), cell_of(cfg_template_get_description(one.get()))});
  }
  result.print(opts);
}

void show(const options &opts, const std::string &reference, const std::string &script_file) {
  session work(opts, session::access::read);
  template_record one = find_template(work.store(), reference);
  if (opts.dry_run && !script_file.empty() && script_file != "-")
    return work.note(fmt::format("Dry run: the script would be written to '{}'.", printable(script_file)));
  if (!script_file.empty()) return write_script(one.get(), script_file);
  sheet result;
  result.add("id", "ID", cell_of(cfg_template_get_uuid(one.get())));
  result.add("name", "Name", cell_of(cfg_template_get_name(one.get())));
  result.add("kind", "Kind", kind_of(one.get()));
  result.add("description", "Description", cell_of(cfg_template_get_description(one.get())));
  show_content(result, one.get());
  result.print(opts);
}

void require_new(cfg *store, const std::string &name) {
  require_label(name, "the name of a template");
  if (template_record same = named(store, name))
    throw failure(exit_code::conflict, fmt::format("a template '{}' exists already", printable(name)),
                  fmt::format("it is {}", cfg_template_get_uuid(same.get())));
}

/// The fields of every template, and those of single kinds.
std::vector<const char *> field_names(std::vector<const char *> names) {
  for (const char *name : content_fields()) names.push_back(name);
  return names;
}

struct change_arguments {
  std::string reference, kind;
  std::vector<std::string> assignments;
  template_content content;
};

/// Puts the changes into the record, checked, and saves it.
void change(session &work, cfg_template *record, const std::map<std::string, std::string> &values,
            const template_content &content) {
  for (const auto &[field, text] : values) {
    if (field == "name") cfg_template_set_name(record, text.c_str());
    if (field != "description") continue;
    allow_text(text, field);
    cfg_template_set_description(record, text.c_str());
  }
  set_content(record, values, content);
  if (!cfg_template_save(record))
    throw store_failure(work.store(), "cannot save the template (is there a list 'templates'?)");
}

void create(const options &opts, const change_arguments &arguments) {
  auto fields = read_assignments(arguments.assignments, field_names({"description"}), true);
  session work(opts, session::access::write);
  require_new(work.store(), arguments.reference);
  template_record one(cfg_template_new(work.store(), arguments.reference.c_str(),
                                       cfg_template_type_string_to_enum(arguments.kind.c_str())));
  change(work, one.get(), fields, arguments.content);
  finish_entry(work, cfg_template_get_uuid(one.get()), arguments.reference, "Created");
}

void set(const options &opts, const change_arguments &arguments) {
  auto fields = read_assignments(arguments.assignments, field_names({"name", "description"}),
                                 arguments.content.given());
  session work(opts, session::access::write);
  template_record one = find_template(work.store(), arguments.reference);
  auto name = fields.find("name");
  if (name != fields.end() && name->second != view(cfg_template_get_name(one.get())))
    require_new(work.store(), name->second);
  change(work, one.get(), fields, arguments.content);
  finish_entry(work, cfg_template_get_uuid(one.get()), cfg_template_get_name(one.get()), "Changed");
}

void remove(const options &opts, const std::string &reference) {
  session work(opts, session::access::write);
  template_record one = find_template(work.store(), reference);
  std::string id = cfg_template_get_uuid(one.get()), name(view(cfg_template_get_name(one.get())));
  confirm_delete(opts, fmt::format("{} ({})", id, name));
  if (!cfg_template_delete(one.get())) throw store_failure(work.store(), "cannot delete the template");
  finish_entry(work, id, name, "Deleted");
}

}  // namespace

template_record find_template(cfg *store, const std::string &reference) {
  template_record one;
  if (reference.starts_with("templates-")) one.reset(cfg_template_get_by_id(store, reference.c_str()));
  if (!one) one = named(store, reference);
  if (!one)
    throw failure(exit_code::not_found, fmt::format("there is no template '{}'", printable(reference)),
                  "it is no template's ID or name", "see 'twctl template list'");
  return one;
}

void add_template(CLI::App &program, const options &opts) {
  CLI::App *noun =
      program.add_subcommand("template", "Templates: pieces of configuration that are pushed to nodes");
  noun->require_subcommand(1);
  constexpr const char *what_a_template_is = "ID or name of a template";

  CLI::App *verb =
      add_verb(noun, "list", "List templates", "  twctl template list\n  twctl template list -o json");
  verb->callback([&opts] { list(opts); });

  auto reference = std::make_shared<std::string>();
  auto script = std::make_shared<std::string>();
  verb = add_verb(noun, "show", "Show one template, or write its script to a file",
                  "  twctl template show 'Branch ports'\n"
                  "  twctl template show Upgrade --script upgrade.sh");
  verb->add_option("template", *reference, what_a_template_is)->required();
  verb->add_option("--script", *script, "Write the script there instead; - for standard output");
  verb->callback([&opts, reference, script] { show(opts, *reference, *script); });

  auto created = std::make_shared<change_arguments>();
  verb = add_verb(noun, "create", "Create a template",
                  "  twctl template create 'Branch ports' --kind ports description='Labels of a branch'\n"
                  "  twctl template create Upgrade --kind script --script upgrade.sh timeout=600\n"
                  "  twctl template create 'Branch logins' --kind auth mode=radius --radius-password\n"
                  "  twctl template create 'Night shift' --kind users_groups operation=user_add\n"
                  "\nFields: " +
                      joined(field_names({"description"})));
  verb->add_option("name", created->reference, "Name of the new template")->required();
  std::vector<std::string> names;
  for (int32_t kind = CFG_TEMPLATE_DUMMY; kind < CFG_TEMPLATE_INVALID; kind++)
    names.emplace_back(cfg_template_type_enum_to_string(kind));
  verb->add_option("--kind", created->kind, "What it carries")
      ->required()
      ->check(CLI::IsMember(std::move(names)));
  verb->add_option("assignments", created->assignments, "FIELD=VALUE ...");
  add_content_options(verb, created->content);
  verb->callback([&opts, created] { create(opts, *created); });

  auto changed = std::make_shared<change_arguments>();
  verb = add_verb(noun, "set", "Change fields of a template",
                  "  twctl template set 'Branch ports' name='Office ports'\n"
                  "  twctl template set templates-1 description=     (an empty value clears the field)\n"
                  "  twctl template set Upgrade --script upgrade2.sh timeout=\n"
                  "\nFields: " +
                      joined(field_names({"name", "description"})));
  verb->add_option("template", changed->reference, what_a_template_is)->required();
  verb->add_option("assignments", changed->assignments, "FIELD=VALUE ...");
  add_content_options(verb, changed->content);
  verb->callback([&opts, changed] { set(opts, *changed); });

  verb = add_verb(noun, "delete", "Delete a template", "  twctl template delete Trial --yes");
  verb->add_option("template", *reference, what_a_template_is)->required();
  verb->callback([&opts, reference] { remove(opts, *reference); });

  add_auth_server(noun, opts, true);
  add_template_change(noun, opts);
}

}  // namespace twctl
