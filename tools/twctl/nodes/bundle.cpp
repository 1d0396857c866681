// twctl bundle: enrollment bundles, and the tokens that nodes present.
#include <fmt/format.h>
#include <openssl/rand.h>

#include <algorithm>
#include <cstring>

#include "cli/entries.hpp"
#include "cli/failure.hpp"
#include "cli/secret.hpp"
#include "cli/text.hpp"
#include "commands.hpp"
#include "nodes/bundles.hpp"
#include "nodes/searching.hpp"
#include "nodes/tags.hpp"
#include "pushes/templates.hpp"

namespace twctl {

namespace {

/// 40 characters of hexadecimal: what nobody guesses.
secret new_token() {
  unsigned char bytes[20];
  if (RAND_bytes(bytes, sizeof bytes) != 1)
    throw failure(exit_code::failure, "no random numbers are available");
  secret token = secret::with_size(2 * sizeof bytes);
  for (size_t i = 0; i < sizeof bytes; i++)
    fmt::format_to_n(token.data() + 2 * i, 2, "{:02x}", static_cast<unsigned>(bytes[i]));
  return token;
}

/// The token in the file, or a new one without a file.
secret token_from(const std::string &file) {
  secret token = file.empty() ? new_token() : read_password(file, "Token");
  if (token.empty() || token.size() > 255 || !is_utf8(token.view()) || has_control(token.view()))
    throw failure(exit_code::invalid_input, "the token cannot be used",
                  "it is empty, longer than 255 bytes, not UTF-8 or holds control characters");
  return token;
}

std::vector<std::string> templates_of(cfg_bundle *bundle) {
  std::vector<std::string> ids;
  for (int32_t i = 0; i < cfg_bundle_get_template_count(bundle); i++)
    if (const char *id = cfg_bundle_get_template_uuid(bundle, i)) ids.emplace_back(id);
  return ids;
}

std::string joined(const std::vector<std::string> &texts) {
  std::string result;
  for (const std::string &text : texts) result += (result.empty() ? "" : ";") + text;
  return result;
}

/// "TAG=VALUE" of each automatic tag; a reference that leads nowhere reads as its ID.
std::vector<std::string> tags_of(cfg_bundle *bundle) {
  std::vector<std::string> texts;
  for (int32_t i = 0; i < cfg_bundle_get_automatic_tag_count(bundle); i++) {
    tag_value_record value(cfg_bundle_get_automatic_tag(bundle, i));
    texts.push_back(value ? words_of(value.get())
                          : std::string(view(cfg_bundle_get_automatic_tag_ref_uuid(bundle, i))));
  }
  return texts;
}

std::vector<std::string> template_names(cfg *store, cfg_bundle *bundle) {
  std::vector<std::string> names;
  for (const std::string &id : templates_of(bundle)) {
    template_record one(cfg_template_get_by_id(store, id.c_str()));
    names.emplace_back(one ? view(cfg_template_get_name(one.get())) : id);
  }
  return names;
}

void list(const options &opts) {
  session work(opts, session::access::read);
  listing result("bundles", {{"id", "ID"},
                             {"name", "NAME"},
                             {"auto_approve", "APPROVES"},
                             {"tags", "TAGS"},
                             {"templates", "TEMPLATES"}});
  bundle_list all(cfg_bundle_list_new(work.store()));
  for (const bundle_record &one : entries(all.get())) {
    if (!one) throw store_failure(work.store(), "cannot read a bundle");
    result.add({cell_of(cfg_bundle_get_uuid(one.get())), cell_of(cfg_bundle_get_name(one.get())),
                cfg_bundle_get_auto_approve(one.get()) != 0, unless_empty(joined(tags_of(one.get()))),
                unless_empty(joined(template_names(work.store(), one.get())))});
  }
  result.print(opts);
}

void show(const options &opts, const std::string &reference) {
  session work(opts, session::access::read);
  bundle_record one = find_bundle(work.store(), reference);
  sheet result;
  result.add("id", "ID", cell_of(cfg_bundle_get_uuid(one.get())));
  result.add("name", "Name", cell_of(cfg_bundle_get_name(one.get())));
  result.add("auto_approve", "Approves at once", cfg_bundle_get_auto_approve(one.get()) != 0);
  result.add("token_set", "Token set", cfg_bundle_get_token(one.get()) != nullptr);
  result.add("tags", "Automatic tags", unless_empty(joined(tags_of(one.get()))));
  result.add("templates", "Templates", unless_empty(joined(template_names(work.store(), one.get()))));
  result.print(opts);
}

struct change_arguments {
  std::string reference, token_file;
  std::vector<std::string> assignments;
  std::vector<std::string> tags, templates;                  ///< to be added
  std::vector<std::string> removed_tags, removed_templates;  ///< to be taken away
};

void require_new(cfg *store, const std::string &name) {
  require_label(name, "the name of a bundle");
  bundle_record same(cfg_bundle_get_by_name(store, name.c_str()));
  if (same)
    throw failure(exit_code::conflict, fmt::format("a bundle '{}' exists already", printable(name)),
                  fmt::format("it is {}", cfg_bundle_get_uuid(same.get())));
}

/// The record's templates become those that it has, less the ones to be removed, and the new ones.
void change_templates(cfg *store, cfg_bundle *bundle, const change_arguments &arguments) {
  std::vector<std::string> ids = templates_of(bundle);
  for (const std::string &reference : arguments.removed_templates) {
    template_record one = find_template(store, reference);
    auto found = std::find(ids.begin(), ids.end(), cfg_template_get_uuid(one.get()));
    if (found == ids.end())
      throw failure(exit_code::not_found,
                    fmt::format("the bundle has no template '{}'", printable(reference)));
    ids.erase(found);
  }
  for (const std::string &reference : arguments.templates) {
    template_record one = find_template(store, reference);
    std::string id = cfg_template_get_uuid(one.get());
    if (std::find(ids.begin(), ids.end(), id) == ids.end()) ids.push_back(id);
  }
  cfg_bundle_clear_templates(bundle);
  for (const std::string &id : ids)
    if (!cfg_bundle_add_template(bundle, id.c_str())) throw std::bad_alloc();
}

/// Changes the references of the saved bundle to tag values.
void change_tags(cfg *store, cfg_bundle *bundle, const change_arguments &arguments) {
  for (const std::string &pair : arguments.removed_tags) {
    tag_value_record value = find_tag_pair(store, pair);
    const char *reference = cfg_bundle_get_tag_ref_uuid_by_value(bundle, value.get());
    if (!reference)
      throw failure(exit_code::not_found, fmt::format("the bundle does not give '{}'", printable(pair)));
    if (!cfg_bundle_delete_automatic_tag(store, reference))
      throw store_failure(store, "cannot take the tag from the bundle");
  }
  for (const std::string &pair : arguments.tags) {
    tag_value_record value = find_tag_pair(store, pair);
    if (cfg_bundle_get_tag_ref_uuid_by_value(bundle, value.get())) continue;
    if (!cfg_bundle_save_automatic_tag(bundle, value.get()))
      throw store_failure(store, "cannot give the bundle its tag");
  }
}

void save(cfg *store, cfg_bundle *bundle, const change_arguments &arguments) {
  // Saving writes the templates that the record knows: it must have read them.
  change_templates(store, bundle, arguments);
  if (!cfg_bundle_save(bundle))
    throw store_failure(store, "cannot save the bundle (is there a list 'enrollment.bundles'?)");
  change_tags(store, bundle, arguments);
}

void create(const options &opts, const change_arguments &arguments) {
  auto fields = read_assignments(arguments.assignments, {"auto_approve"}, true);
  bool approve = !fields.empty() && require_truth(fields.begin()->second, "auto_approve");
  secret token = token_from(arguments.token_file);
  session work(opts, session::access::write);
  require_new(work.store(), arguments.reference);
  bundle_record one(
      cfg_bundle_new(work.store(), arguments.reference.c_str(), token.c_str(), approve ? 1 : 0));
  if (!one) throw std::bad_alloc();
  save(work.store(), one.get(), arguments);
  finish_entry(work, cfg_bundle_get_uuid(one.get()), arguments.reference, "Created");
}

void set(const options &opts, const change_arguments &arguments) {
  bool lists_change = !arguments.tags.empty() || !arguments.templates.empty() ||
                      !arguments.removed_tags.empty() || !arguments.removed_templates.empty();
  auto fields = read_assignments(arguments.assignments, {"name", "auto_approve"}, lists_change);
  session work(opts, session::access::write);
  bundle_record one = find_bundle(work.store(), arguments.reference);
  for (const auto &[field, text] : fields) {
    if (field == "auto_approve") {
      cfg_bundle_set_auto_approve(one.get(), require_truth(text, field));
    } else if (text != view(cfg_bundle_get_name(one.get()))) {
      require_new(work.store(), text);
      cfg_bundle_set_name(one.get(), text.c_str());
    }
  }
  save(work.store(), one.get(), arguments);
  finish_entry(work, cfg_bundle_get_uuid(one.get()), std::string(view(cfg_bundle_get_name(one.get()))),
               "Changed");
}

void remove(const options &opts, const std::string &reference) {
  session work(opts, session::access::write);
  bundle_record one = find_bundle(work.store(), reference);
  std::string id = cfg_bundle_get_uuid(one.get()), name(view(cfg_bundle_get_name(one.get())));
  confirm_delete(opts, fmt::format("{} ({})", id, name));
  cfg_bundle_delete(one.get());
  finish_entry(work, id, name, "Deleted");
}

void nodes(const options &opts, const std::string &reference) {
  session work(opts, session::access::read);
  bundle_record one = find_bundle(work.store(), reference);
  if (!cfg_bundle_init_nodes(one.get(), nullptr)) throw search_failure();
  listing result("nodes", {{"id", "ID"}, {"name", "NAME"}, {"status", "STATUS"}});
  for (int32_t i = 0; i < cfg_bundle_get_node_count(one.get(), nullptr); i++) {
    const char *id = cfg_bundle_get_node_id(one.get(), i, nullptr);
    node_record node(cfg_get_node_by_id(work.store(), id));
    result.add(
        {cell_of(id), cell_of(cfg_node_get_name(node.get())), cell_of(cfg_node_get_status(node.get()))});
  }
  result.print(opts);
}

struct token_arguments {
  std::string bundle, file;
  bool request = false, renew = false, remove = false;
};

void show_token(const options &opts, const token_arguments &arguments) {
  session work(opts, session::access::read);
  secret token;
  if (arguments.request) {
    token = secret(view(request_token(work.store()).get()));
  } else {
    token = secret(view(cfg_bundle_get_token(find_bundle(work.store(), arguments.bundle).get())));
  }
  if (token.empty())
    throw failure(exit_code::not_found, "no token is set", "", "set one with --renew or --token-file FILE");
  if (opts.json()) {
    json_value object = new_object();
    put(object.get(), "token", cell(std::string(token.view())));
    print_json(object);
  } else {
    fmt::print("{}\n", token.view());
  }
}

/// Writes a token, or removes the appliance's; which one it is now, only showing it tells.
void change_token(const options &opts, const token_arguments &arguments) {
  if (arguments.remove && !arguments.request)
    throw failure(exit_code::usage, "a bundle cannot be without a token", "", "use --renew");
  secret token = arguments.remove ? secret() : token_from(arguments.file);
  session work(opts, session::access::write);
  if (arguments.request) {
    int done = arguments.remove ? cfg_bundle_delete_global_request_token(work.store())
                                : cfg_bundle_set_global_request_token(work.store(), token.c_str());
    if (!done) throw store_failure(work.store(), "cannot change the request token");
    finish_entry(work, "enrollment.request_token", "request token", arguments.remove ? "Removed" : "Changed");
    return;
  }
  bundle_record one = find_bundle(work.store(), arguments.bundle);
  cfg_bundle_set_token(one.get(), token.c_str());
  save(work.store(), one.get(), {});
  finish_entry(work, cfg_bundle_get_uuid(one.get()), std::string(view(cfg_bundle_get_name(one.get()))),
               "Changed the token of");
}

void token(const options &opts, const token_arguments &arguments) {
  if (arguments.bundle.empty() != arguments.request)
    throw failure(exit_code::usage, "give a bundle, or --request for the appliance's own token");
  if (arguments.renew || arguments.remove || !arguments.file.empty())
    change_token(opts, arguments);
  else
    show_token(opts, arguments);
}

constexpr const char *what_a_bundle_is = "ID or name of a bundle";

void add_changing(CLI::App *noun, const options &opts) {
  auto arguments = std::make_shared<change_arguments>();
  auto add_contents = [&](CLI::App *verb) {
    verb->add_option("assignments", arguments->assignments, "FIELD=VALUE ...");
    verb->add_option("--tag", arguments->tags, "TAG=VALUE that nodes are given; may be repeated")
        ->allow_extra_args(false);
    verb->add_option("--template", arguments->templates, "Template that is pushed to nodes; may be repeated")
        ->allow_extra_args(false);
  };
  CLI::App *verb =
      add_verb(noun, "create", "Create a bundle; without --token-file its token is made up",
               "  twctl bundle create Berlin auto_approve=yes --tag Site=Berlin --template 'Branch ports'\n"
               "  twctl bundle create Lima --token-file ./token\n"
               "\nFields: auto_approve (yes or no)");
  verb->add_option("name", arguments->reference, "Name of the new bundle")->required();
  add_contents(verb);
  verb->add_option("--token-file", arguments->token_file,
                   "File whose first line is the token; - for standard input");
  verb->callback([&opts, arguments] { create(opts, *arguments); });

  verb = add_verb(noun, "set", "Change a bundle",
                  "  twctl bundle set Berlin name='Berlin Mitte' auto_approve=no\n"
                  "  twctl bundle set Berlin --tag Floor=2 --remove-tag Floor=1\n"
                  "  twctl bundle set Berlin --remove-template 'Branch ports' --dry-run\n"
                  "\nFields: name, auto_approve (yes or no)");
  verb->add_option("bundle", arguments->reference, what_a_bundle_is)->required();
  add_contents(verb);
  verb->add_option("--remove-tag", arguments->removed_tags, "TAG=VALUE that nodes are no longer given")
      ->allow_extra_args(false);
  verb->add_option("--remove-template", arguments->removed_templates, "Template that is no longer pushed")
      ->allow_extra_args(false);
  verb->callback([&opts, arguments] { set(opts, *arguments); });
}

void add_token(CLI::App *noun, const options &opts) {
  auto arguments = std::make_shared<token_arguments>();
  CLI::App *verb = add_verb(noun, "token", "Show or change a bundle's token, or the appliance's own",
                            "  twctl bundle token Berlin\n"
                            "  twctl bundle token Berlin --renew\n"
                            "  twctl bundle token --request --token-file ./token\n"
                            "  twctl bundle token --request --remove");
  verb->add_option("bundle", arguments->bundle, what_a_bundle_is);
  verb->add_flag("--request", arguments->request,
                 "The token of nodes that ask to be enrolled without a bundle");
  auto *renew = verb->add_flag("--renew", arguments->renew, "Make up a new one");
  auto *file = verb->add_option("--token-file", arguments->file,
                                "Take the first line of this file; - for standard input");
  auto *remove = verb->add_flag("--remove", arguments->remove, "Remove the appliance's token");
  renew->excludes(file)->excludes(remove);
  file->excludes(remove);
  verb->callback([&opts, arguments] { token(opts, *arguments); });
}

}  // namespace

bundle_record find_bundle(cfg *store, const std::string &reference) {
  bundle_record one;
  if (reference.starts_with("enrollment_bundles-")) one.reset(cfg_bundle_get_by_id(store, reference.c_str()));
  if (!one) one.reset(cfg_bundle_get_by_name(store, reference.c_str()));
  if (!one)
    throw failure(exit_code::not_found, fmt::format("there is no bundle '{}'", printable(reference)),
                  "it is no bundle's ID or name", "see 'twctl bundle list'");
  return one;
}

void add_bundle(CLI::App &program, const options &opts) {
  CLI::App *noun = program.add_subcommand("bundle", "Enrollment bundles: defaults for new nodes");
  noun->require_subcommand(1);

  CLI::App *verb = add_verb(noun, "list", "List bundles", "  twctl bundle list\n  twctl bundle list -o json");
  verb->callback([&opts] { list(opts); });

  auto reference = std::make_shared<std::string>();
  verb = add_verb(noun, "show", "Show one bundle, without its token", "  twctl bundle show Berlin");
  verb->add_option("bundle", *reference, what_a_bundle_is)->required();
  verb->callback([&opts, reference] { show(opts, *reference); });

  add_changing(noun, opts);

  verb = add_verb(noun, "delete", "Delete a bundle", "  twctl bundle delete Berlin --yes");
  verb->add_option("bundle", *reference, what_a_bundle_is)->required();
  verb->callback([&opts, reference] { remove(opts, *reference); });

  verb = add_verb(noun, "nodes", "List the nodes of a bundle, as the search service finds them",
                  "  twctl bundle nodes Berlin");
  verb->add_option("bundle", *reference, what_a_bundle_is)->required();
  verb->callback([&opts, reference] { nodes(opts, *reference); });

  add_token(noun, opts);
}

}  // namespace twctl
