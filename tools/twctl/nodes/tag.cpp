// twctl tag: tags and the values that nodes can be marked with.
#include <fmt/format.h>

#include "cli/entries.hpp"
#include "cli/failure.hpp"
#include "cli/text.hpp"
#include "commands.hpp"
#include "nodes/tags.hpp"

namespace twctl {

tag_record find_tag(cfg *store, const std::string &reference) {
  tag_record tag;
  if (reference.starts_with("tags_node_tags-")) tag.reset(cfg_get_tag_by_id(store, reference.c_str()));
  if (!tag) tag.reset(cfg_get_tag_by_name(store, reference.c_str(), CFG_TAG_NODE));
  if (!tag)
    throw failure(exit_code::not_found, fmt::format("there is no tag '{}'", printable(reference)), "",
                  "see 'twctl tag list'");
  return tag;
}

tag_value_record find_tag_value(cfg *store, const cfg_tag *tag, const std::string &reference) {
  // Only this tag's own: an ID leads anywhere.
  for (int32_t i = 0; i < tag_get_num_values(tag); i++)
    if (reference == tag_get_value(tag, i)) return tag_value_record(cfg_tag_get_value(tag, i));
  tag_value_record value(cfg_get_tag_value_by_name(store, tag, reference.c_str()));
  if (!value)
    throw failure(exit_code::not_found,
                  fmt::format("the tag '{}' has no value '{}'",
                              printable(std::string(view(tag_get_name(tag)))), printable(reference)),
                  "", "see 'twctl tag show', or add it with 'twctl tag value add'");
  return value;
}

tag_value_record find_tag_pair(cfg *store, const std::string &pair) {
  auto [name, text] = split_pair(pair, "TAG=VALUE", "Site=Berlin");
  return find_tag_value(store, find_tag(store, name).get(), text);
}

std::string words_of(const cfg_tag_value *value) {
  tag_record tag(cfg_tag_value_get_parent_tag(value));
  return fmt::format("{}={}", view(tag_get_name(tag.get())), view(tag_value_get_value(value)));
}

namespace {

void list(const options &opts) {
  session work(opts, session::access::read);
  listing result("tags", {{"id", "ID"}, {"name", "NAME"}, {"value_count", "VALUES", true}});
  tag_list tags(cfg_get_tag_list(work.store(), CFG_TAG_NODE));
  for (int32_t i = 0; i < tag_list_get_num_tags(tags.get()); i++) {
    tag_record tag(cfg_tag_list_get_tag(tags.get(), i));
    const char *id = tag_list_get_tag(tags.get(), i);
    if (!tag) throw store_failure(work.store(), fmt::format("cannot read {}", id));
    result.add({cell_of(id), cell_of(tag_get_name(tag.get())), int64_t{tag_get_num_values(tag.get())}});
  }
  result.print(opts);
}

void show(const options &opts, const std::string &reference) {
  session work(opts, session::access::read);
  tag_record tag = find_tag(work.store(), reference);
  listing result("values", {{"id", "ID"}, {"value", "VALUE"}});
  for (int32_t i = 0; i < tag_get_num_values(tag.get()); i++) {
    tag_value_record value(cfg_tag_get_value(tag.get(), i));
    const char *id = tag_get_value(tag.get(), i);
    if (!value) throw store_failure(work.store(), fmt::format("cannot read {}", id));
    result.add({cell_of(id), cell_of(tag_value_get_value(value.get()))});
  }
  result.print(opts);
}

/// Two tags, or two values of a tag, with one name could not be told apart.
template <typename Record>
void require_none(const Record &same, const char *id, const std::string &name) {
  if (same)
    throw failure(exit_code::conflict, fmt::format("'{}' exists already", printable(name)),
                  fmt::format("it is {}", id));
}

void require_new_tag(cfg *store, const std::string &name) {
  require_label(name, "the name of a tag");
  if (name.find('=') != std::string::npos)
    throw failure(exit_code::invalid_input, "the name of a tag cannot hold '='",
                  "commands name a value by TAG=VALUE");
  tag_record same(cfg_get_tag_by_name(store, name.c_str(), CFG_TAG_NODE));
  require_none(same, tag_get_uuid(same.get()), name);
}

void require_new_value(cfg *store, const cfg_tag *tag, const std::string &text) {
  require_label(text, "the value of a tag");
  tag_value_record same(cfg_get_tag_value_by_name(store, tag, text.c_str()));
  require_none(same, tag_value_get_uuid(same.get()), text);
}

/// Adds a value to the handle's edit and gives its ID.
std::string add_value(cfg *store, const cfg_tag *tag, const std::string &text) {
  tag_value_record value(cfg_tag_value_new(store, text.c_str()));
  if (!cfg_tag_value_save(tag, value.get()))
    throw store_failure(store, fmt::format("cannot add the value '{}'", printable(text)));
  return tag_value_get_uuid(value.get());
}

void add(const options &opts, const std::string &name, const std::vector<std::string> &values) {
  session work(opts, session::access::write);
  require_new_tag(work.store(), name);
  tag_record tag(cfg_tag_new(work.store(), name.c_str()));
  if (!cfg_tag_save(tag.get(), CFG_TAG_NODE))
    throw store_failure(work.store(), "cannot add the tag (is there a list 'tags.node_tags'?)");
  for (size_t i = 0; i < values.size(); i++) {
    // The look-up sees only what is committed: the values of one command are compared here.
    require_new_value(work.store(), tag.get(), values[i]);
    for (size_t j = 0; j < i; j++)
      if (values[i] == values[j])
        throw failure(exit_code::usage, fmt::format("'{}' is given twice", printable(values[i])));
    add_value(work.store(), tag.get(), values[i]);
  }
  finish_entry(work, tag_get_uuid(tag.get()), name, "Added");
}

void rename(const options &opts, const std::string &reference, const std::string &name) {
  session work(opts, session::access::write);
  tag_record tag = find_tag(work.store(), reference);
  if (view(tag_get_name(tag.get())) != name) require_new_tag(work.store(), name);
  tag_set_name(tag.get(), name.c_str());
  if (!cfg_tag_save(tag.get(), CFG_TAG_NODE)) throw store_failure(work.store(), "cannot save the tag");
  finish_entry(work, tag_get_uuid(tag.get()), name, "Renamed to");
}

void remove(const options &opts, const std::string &reference) {
  session work(opts, session::access::write);
  tag_record tag = find_tag(work.store(), reference);
  std::string id = tag_get_uuid(tag.get()), name = tag_get_name(tag.get());
  confirm_delete(opts, fmt::format("the tag '{}' and its values", name));
  if (!cfg_tag_delete(work.store(), tag.get())) throw store_failure(work.store(), "cannot delete the tag");
  finish_entry(work, id, name, "Deleted");
}

void value_add(const options &opts, const std::string &reference, const std::string &text) {
  session work(opts, session::access::write);
  tag_record tag = find_tag(work.store(), reference);
  require_new_value(work.store(), tag.get(), text);
  std::string id = add_value(work.store(), tag.get(), text);
  finish_entry(work, id, text, "Added");
}

void value_rename(const options &opts, const std::string &reference, const std::string &old_text,
                  const std::string &text) {
  session work(opts, session::access::write);
  tag_record tag = find_tag(work.store(), reference);
  tag_value_record value = find_tag_value(work.store(), tag.get(), old_text);
  if (view(tag_value_get_value(value.get())) != text) require_new_value(work.store(), tag.get(), text);
  tag_value_set_value(value.get(), text.c_str());
  if (!cfg_tag_value_save(tag.get(), value.get())) throw store_failure(work.store(), "cannot save the value");
  finish_entry(work, tag_value_get_uuid(value.get()), text, "Renamed to");
}

void value_remove(const options &opts, const std::string &reference, const std::string &text) {
  session work(opts, session::access::write);
  tag_record tag = find_tag(work.store(), reference);
  tag_value_record value = find_tag_value(work.store(), tag.get(), text);
  std::string id = tag_value_get_uuid(value.get()), name = tag_value_get_value(value.get());
  confirm_delete(opts, fmt::format("the value '{}'", name));
  if (!cfg_tag_value_delete(work.store(), value.get()))
    throw store_failure(work.store(), "cannot delete the value");
  finish_entry(work, id, name, "Deleted");
}

constexpr const char *what_a_tag_is = "ID or name of a tag";
constexpr const char *what_a_value_is = "ID or text of one of the tag's values";

struct value_arguments {
  std::string tag, value, text;
};

void add_value_verbs(CLI::App *noun, const options &opts) {
  CLI::App *values = noun->add_subcommand("value", "The values of a tag");
  values->require_subcommand(1);
  auto arguments = std::make_shared<value_arguments>();

  CLI::App *verb = add_verb(values, "add", "Add a value to a tag", "  twctl tag value add Site Berlin");
  verb->add_option("tag", arguments->tag, what_a_tag_is)->required();
  verb->add_option("value", arguments->text, "The new value")->required();
  verb->callback([&opts, arguments] { value_add(opts, arguments->tag, arguments->text); });

  verb = add_verb(values, "rename", "Change the text of a value, everywhere it is used",
                  "  twctl tag value rename Site Berlin 'Berlin Mitte'");
  verb->add_option("tag", arguments->tag, what_a_tag_is)->required();
  verb->add_option("value", arguments->value, what_a_value_is)->required();
  verb->add_option("text", arguments->text, "Its new text")->required();
  verb->callback(
      [&opts, arguments] { value_rename(opts, arguments->tag, arguments->value, arguments->text); });

  verb = add_verb(values, "delete", "Delete a value",
                  "  twctl tag value delete Site Berlin\n"
                  "  twctl tag value delete Site Berlin --dry-run");
  verb->add_option("tag", arguments->tag, what_a_tag_is)->required();
  verb->add_option("value", arguments->value, what_a_value_is)->required();
  verb->callback([&opts, arguments] { value_remove(opts, arguments->tag, arguments->value); });
}

}  // namespace

void add_tag(CLI::App &program, const options &opts) {
  CLI::App *noun = program.add_subcommand("tag", "Tags: what nodes are marked with");
  noun->require_subcommand(1);

  CLI::App *verb = add_verb(noun, "list", "List tags", "  twctl tag list\n  twctl tag list -o json");
  verb->callback([&opts] { list(opts); });

  auto reference = std::make_shared<std::string>();
  verb = add_verb(noun, "show", "Show the values of a tag", "  twctl tag show Site");
  verb->add_option("tag", *reference, what_a_tag_is)->required();
  verb->callback([&opts, reference] { show(opts, *reference); });

  auto name = std::make_shared<std::string>();
  auto values = std::make_shared<std::vector<std::string>>();
  verb = add_verb(noun, "add", "Add a tag, with values or without",
                  "  twctl tag add Site\n  twctl tag add Site Berlin Lima 'New York'");
  verb->add_option("name", *name, "Name of the new tag")->required();
  verb->add_option("values", *values, "Its values");
  verb->callback([&opts, name, values] { add(opts, *name, *values); });

  verb = add_verb(noun, "rename", "Change the name of a tag", "  twctl tag rename Site Location");
  verb->add_option("tag", *reference, what_a_tag_is)->required();
  verb->add_option("name", *name, "Its new name")->required();
  verb->callback([&opts, reference, name] { rename(opts, *reference, *name); });

  verb = add_verb(noun, "delete", "Delete a tag with its values",
                  "  twctl tag delete Site\n  twctl tag delete Site --yes --reason 'not used'");
  verb->add_option("tag", *reference, what_a_tag_is)->required();
  verb->callback([&opts, reference] { remove(opts, *reference); });

  add_value_verbs(noun, opts);
}

}  // namespace twctl
