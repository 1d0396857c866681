// twctl template: pieces of configuration that are pushed to nodes.
#include <fmt/format.h>

#include "commands.hpp"
#include "entries.hpp"
#include "failure.hpp"
#include "session.hpp"
#include "templates.hpp"
#include "text.hpp"

namespace twctl {

namespace {

/// The kinds that consist of the fields below. Scripts and users are shown, but made elsewhere.
constexpr int32_t kinds[] = {CFG_TEMPLATE_DUMMY, CFG_TEMPLATE_PORTS, CFG_TEMPLATE_NETWORK};

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

void show(const options &opts, const std::string &reference) {
  session work(opts, session::access::read);
  template_record one = find_template(work.store(), reference);
  sheet result;
  result.add("id", "ID", cell_of(cfg_template_get_uuid(one.get())));
  result.add("name", "Name", cell_of(cfg_template_get_name(one.get())));
  result.add("kind", "Kind", kind_of(one.get()));
  result.add("description", "Description", cell_of(cfg_template_get_description(one.get())));
  result.add("dummy_field", "Text", cell_of(cfg_dummy_template_get_dummy_field(one.get())));
  result.print(opts);
}

void require_new(cfg *store, const std::string &name) {
  require_label(name, "the name of a template");
  if (template_record same = named(store, name))
    throw failure(exit_code::conflict, fmt::format("a template '{}' exists already", printable(name)),
                  fmt::format("it is {}", cfg_template_get_uuid(same.get())));
}

/// Puts the fields into the record, checked.
void fill(cfg_template *record, const std::map<std::string, std::string> &fields) {
  for (const auto &[field, text] : fields) {
    if (field == "name") {
      cfg_template_set_name(record, text.c_str());
      continue;
    }
    if (!text.empty()) require_label(text, field);
    if (field == "description") cfg_template_set_description(record, text.c_str());
    if (field == "dummy_field") {
      if (cfg_template_get_type(record) != CFG_TEMPLATE_DUMMY)
        throw failure(exit_code::invalid_input, "only a template of the kind dummy has a dummy_field");
      cfg_dummy_template_set_dummy_field(record, text.c_str());
    }
  }
}

struct change_arguments {
  std::string reference, kind;
  std::vector<std::string> assignments;
};

void create(const options &opts, const change_arguments &arguments) {
  auto fields = read_assignments(arguments.assignments, {"description", "dummy_field"}, true);
  session work(opts, session::access::write);
  require_new(work.store(), arguments.reference);
  template_record one(cfg_template_new(work.store(), arguments.reference.c_str(),
                                       cfg_template_type_string_to_enum(arguments.kind.c_str())));
  fill(one.get(), fields);
  if (!cfg_template_save(one.get()))
    throw store_failure(work.store(), "cannot add the template (is there a list 'templates'?)");
  finish_entry(work, cfg_template_get_uuid(one.get()), arguments.reference, "Created");
}

void set(const options &opts, const change_arguments &arguments) {
  auto fields = read_assignments(arguments.assignments, {"name", "description", "dummy_field"});
  session work(opts, session::access::write);
  template_record one = find_template(work.store(), arguments.reference);
  auto name = fields.find("name");
  if (name != fields.end() && name->second != view(cfg_template_get_name(one.get())))
    require_new(work.store(), name->second);
  fill(one.get(), fields);
  if (!cfg_template_save(one.get())) throw store_failure(work.store(), "cannot save the template");
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
  verb = add_verb(noun, "show", "Show one template", "  twctl template show 'Branch ports'");
  verb->add_option("template", *reference, what_a_template_is)->required();
  verb->callback([&opts, reference] { show(opts, *reference); });

  auto arguments = std::make_shared<change_arguments>();
  verb = add_verb(noun, "create", "Create a template",
                  "  twctl template create 'Branch ports' --kind ports description='Labels of a branch'\n"
                  "  twctl template create Trial --kind dummy dummy_field=hello\n"
                  "\nFields: description, dummy_field (kind dummy)");
  verb->add_option("name", arguments->reference, "Name of the new template")->required();
  std::vector<std::string> names;
  for (int32_t kind : kinds) names.emplace_back(cfg_template_type_enum_to_string(kind));
  verb->add_option("--kind", arguments->kind, "What it carries")
      ->required()
      ->check(CLI::IsMember(std::move(names)));
  verb->add_option("assignments", arguments->assignments, "FIELD=VALUE ...");
  verb->callback([&opts, arguments] { create(opts, *arguments); });

  verb = add_verb(noun, "set", "Change fields of a template",
                  "  twctl template set 'Branch ports' name='Office ports'\n"
                  "  twctl template set templates-1 description=     (an empty value clears the field)\n"
                  "\nFields: name, description, dummy_field (kind dummy)");
  verb->add_option("template", arguments->reference, what_a_template_is)->required();
  verb->add_option("assignments", arguments->assignments, "FIELD=VALUE ...")->required();
  verb->callback([&opts, arguments] { set(opts, *arguments); });

  verb = add_verb(noun, "delete", "Delete a template", "  twctl template delete Trial --yes");
  verb->add_option("template", *reference, what_a_template_is)->required();
  verb->callback([&opts, reference] { remove(opts, *reference); });
}

}  // namespace twctl
