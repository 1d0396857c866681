// twctl node status, approve, tag, unenroll: what happens to nodes once they are enrolled.
#include <fmt/format.h>

#include <chrono>
#include <thread>

#include "bundles.hpp"
#include "commands.hpp"
#include "entries.hpp"
#include "failure.hpp"
#include "nodes.hpp"
#include "secret.hpp"
#include "tags.hpp"
#include "text.hpp"

namespace twctl {

namespace {

cell connection_words(int32_t status) {
  static constexpr const char *words[] = {"connected", "disconnected", "never seen", "unknown"};
  return cell_of(words[status >= CFG_NODE_CONNECTED && status < CFG_NODE_CONNECTION_UNKNOWN
                           ? status
                           : CFG_NODE_CONNECTION_UNKNOWN]);
}

cell action_words(int32_t type) {
  switch (type) {
    case CFG_NODE_ACTION_UNENROLL:
      return cell_of("unenroll");
    case CFG_NODE_ACTION_ENROLLMENT:
      return cell_of("enrollment");
    case CFG_NODE_ACTION_REGISTRATION:
      return cell_of("registration");
    default:
      return {};
  }
}

cell progress_words(int32_t status) {
  static constexpr const char *words[] = {"pending", "finished", "failed", "unknown"};
  return cell_of(words[status >= CFG_NODE_ACTION_PENDING && status < CFG_NODE_ACTION_STATUS_UNKNOWN
                           ? status
                           : CFG_NODE_ACTION_STATUS_UNKNOWN]);
}

void add_status(listing &result, cfg_node *node) {
  // Without a published state every getter answers its failure value, the time 0.
  int64_t since = cfg_node_runtime_get_last_connection_change_time(node);
  cell action = action_words(cfg_node_runtime_get_action_type(node));
  bool acting = !std::holds_alternative<std::monostate>(action);
  result.add({cell_of(cfg_node_get_uuid(node)), cell_of(cfg_node_get_name(node)),
              connection_words(cfg_node_runtime_get_connection_status(node)),
              unless_empty(since ? utc_time(since) : ""), action,
              acting ? progress_words(cfg_node_runtime_get_action_status(node)) : cell(),
              cell_of(cfg_node_runtime_get_action_error_message(node))});
}

void status(const options &opts, const std::string &reference) {
  session work(opts, session::access::read);
  listing result("nodes", {{"id", "ID"},
                           {"name", "NAME"},
                           {"connection", "CONNECTION"},
                           {"since", "SINCE"},
                           {"action", "ACTION"},
                           {"action_status", "STATE"},
                           {"action_error", "ERROR"}});
  if (!reference.empty()) {
    add_status(result, find_node(work.store(), reference).get());
  } else {
    cfg_elem *nodes = cfg_get_by_path(work.store(), "nodes");
    for (int32_t i = 0; const char *id = cfg_get_listelem(nodes, i); i++) {
      node_record node(cfg_get_node_by_id(work.store(), id));
      if (!node) throw store_failure(work.store(), fmt::format("cannot read {}", id));
      add_status(result, node.get());
    }
  }
  result.print(opts);
}

void approve(const options &opts, const std::string &reference, const std::string &bundle) {
  session work(opts, session::access::write);
  std::string id = cfg_node_get_uuid(find_node(work.store(), reference).get());
  if (!bundle.empty()) {
    bundle_record with = find_bundle(work.store(), bundle);
    enrollment_record enrollment(cfg_enrollment_get_by_id(work.store(), id.c_str()));
    if (!enrollment || !cfg_enrollment_set_bundle(enrollment.get(), with.get()))
      throw store_failure(work.store(), "cannot apply the bundle");
  }
  // Loaded behind the bundle, which may leave the node unapproved: this command approves it all the same.
  node_record node(cfg_get_node_by_id(work.store(), id.c_str()));
  if (!node) throw store_failure(work.store(), fmt::format("cannot read {}", id));
  cfg_node_set_approved(node.get(), 1);
  if (!cfg_node_save(node.get())) throw store_failure(work.store(), fmt::format("cannot save {}", id));
  std::string name(view(cfg_node_get_name(node.get())));
  finish_entry(work, id, name, "Approved");
}

/// A node's tags, read from the store: the references in its list "tags", and the values they lead to.
struct node_tag {
  std::string reference;
  tag_value_record value;  ///< empty when the reference leads nowhere
};
std::vector<node_tag> tags_of(cfg *store, const std::string &node) {
  std::vector<node_tag> tags;
  cfg_elem *list = cfg_simple_get_mapelem(store, cfg_get_by_id(store, node.c_str()), "tags");
  for (int32_t i = 0; const char *id = cfg_get_listelem(list, i); i++) {
    cfg_value reference;
    bool leads = cfg_elem_read(cfg_get_by_id(store, id), &reference) && reference.kind == CFG_REFERENCE;
    tags.push_back({id, tag_value_record(leads ? cfg_get_tag_value_by_id(store, reference.data) : nullptr)});
  }
  return tags;
}

struct tag_arguments {
  std::string reference;
  std::vector<std::string> added, removed;
};

void list_tags(const options &opts, const std::string &reference) {
  session work(opts, session::access::read);
  std::string id = cfg_node_get_uuid(find_node(work.store(), reference).get());
  listing result("tags", {{"id", "ID"}, {"tag", "TAG"}, {"value", "VALUE"}});
  for (const node_tag &one : tags_of(work.store(), id)) {
    tag_record tag(cfg_tag_value_get_parent_tag(one.value.get()));
    result.add(
        {one.reference, cell_of(tag_get_name(tag.get())), cell_of(tag_value_get_value(one.value.get()))});
  }
  result.print(opts);
}

std::string reference_to(const std::vector<node_tag> &tags, const cfg_tag_value *value) {
  for (const node_tag &one : tags)
    if (view(tag_value_get_uuid(one.value.get())) == view(tag_value_get_uuid(value))) return one.reference;
  return {};
}

void change_tags(const options &opts, const tag_arguments &arguments) {
  session work(opts, session::access::write);
  cfg *store = work.store();
  node_record node = find_node(store, arguments.reference);
  std::string id = cfg_node_get_uuid(node.get()), name(view(cfg_node_get_name(node.get())));
  std::vector<node_tag> tags = tags_of(store, id);
  for (const std::string &pair : arguments.removed) {
    std::string reference = reference_to(tags, find_tag_pair(store, pair).get());
    if (reference.empty())
      throw failure(exit_code::not_found, fmt::format("{} is not tagged '{}'", id, printable(pair)), "",
                    fmt::format("see 'twctl node tag {}'", id));
    if (!cfg_delete_element(store, cfg_get_by_id(store, reference.c_str())))
      throw store_failure(store, "cannot take the tag from the node");
  }
  for (const std::string &pair : arguments.added) {
    tag_value_record value = find_tag_pair(store, pair);
    if (!reference_to(tags, value.get()).empty()) continue;
    cfg_elem *element = cfg_get_by_id(store, id.c_str());
    if (!cfg_simple_get_mapelem(store, element, "tags"))
      cfg_add_mapelem(store, element, "tags", cfg_new_list(store));
    cfg_elem *list = cfg_simple_get_mapelem(store, element, "tags");
    if (!list ||
        !cfg_append_future_listelem(store, list, cfg_new_reference(store, tag_value_get_uuid(value.get()))))
      throw store_failure(store, "cannot tag the node");
  }
  finish_entry(work, id, name, "Tagged");
}

/// Waits until the node is gone, or its action has failed.
void wait_for_removal(cfg *store, const std::string &id, int seconds) {
  auto end = std::chrono::steady_clock::now() + std::chrono::seconds(seconds);
  while (std::chrono::steady_clock::now() < end) {
    if (!cfg_refresh(store)) throw store_failure(store, "cannot read the newest revision");
    node_record node(cfg_get_node_by_id(store, id.c_str()));
    if (!node) return;
    if (cfg_node_runtime_get_action_status(node.get()) == CFG_NODE_ACTION_FAILED)
      throw failure(exit_code::failure, fmt::format("{} could not be unenrolled", id),
                    std::string(view(cfg_node_runtime_get_action_error_message(node.get()))));
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
  }
  throw failure(exit_code::failure, fmt::format("{} is still there after {} seconds", id, seconds),
                "its unenrolment was asked for and goes on", fmt::format("see 'twctl node status {}'", id));
}

void unenroll(const options &opts, const std::string &reference, int seconds) {
  session work(opts, session::access::read);
  node_record node = find_node(work.store(), reference);
  std::string id = cfg_node_get_uuid(node.get()), name(view(cfg_node_get_name(node.get())));
  if (!opts.yes && !opts.dry_run && !confirm(fmt::format("Unenroll {} ({})?", id, printable(name))))
    throw failure(exit_code::failure, "nothing was unenrolled", "it was not confirmed");
  if (!opts.dry_run && !cfg_node_unenroll(node.get()))
    throw failure(exit_code::failure, fmt::format("the unenrolment of {} could not be asked for", id),
                  "the work queue at 127.0.0.1, port 11300, or the directory of the actions is not there",
                  "on your own machine 'twctl services start' starts the queue, and TW_ACTION_DIR names the "
                  "directory");
  if (seconds && !opts.dry_run) wait_for_removal(work.store(), id, seconds);
  // The worker makes the commit: there is no change of this command's to be shown.
  const char *done = opts.dry_run ? "Dry run: would ask to unenroll"
                     : seconds    ? "Unenrolled"
                                  : "Asked to unenroll";
  if (opts.json()) {
    sheet details;
    details.add("id", "ID", id);
    details.add("name", "Name", name);
    details.add("dry_run", "Dry run", opts.dry_run);
    details.add("removed", "Removed", seconds > 0 && !opts.dry_run);
    details.print(opts);
  } else {
    fmt::print("{} {} ({}).\n", done, id, printable(name));
  }
}

}  // namespace

void add_node_live(CLI::App *noun, const options &opts) {
  constexpr const char *what_a_node_is = "ID, name, serial number or VPN address";
  auto reference = std::make_shared<std::string>();
  CLI::App *verb =
      add_verb(noun, "status", "Show whether nodes are connected, and what is being done to them",
               "  twctl node status\n  twctl node status rack-12 -o json");
  verb->add_option("node", *reference, std::string(what_a_node_is) + "; without it, all nodes");
  verb->callback([&opts, reference] { status(opts, *reference); });

  auto bundle = std::make_shared<std::string>();
  verb = add_verb(noun, "approve", "Approve a node",
                  "  twctl node approve rack-12\n  twctl node approve rack-12 --bundle Berlin");
  verb->add_option("node", *reference, what_a_node_is)->required();
  verb->add_option("--bundle", *bundle, "Put it into this bundle, and give it the bundle's tags");
  verb->callback([&opts, reference, bundle] { approve(opts, *reference, *bundle); });

  auto tags = std::make_shared<tag_arguments>();
  verb = add_verb(noun, "tag", "Show or change the tags of a node",
                  "  twctl node tag rack-12\n"
                  "  twctl node tag rack-12 --add Site=Berlin --remove Site=Lima\n"
                  "  twctl node tag rack-12 --add Floor=2 --dry-run");
  verb->add_option("node", tags->reference, what_a_node_is)->required();
  verb->add_option("--add", tags->added, "TAG=VALUE that it is to carry; may be repeated")
      ->allow_extra_args(false);
  verb->add_option("--remove", tags->removed, "TAG=VALUE that it is no longer to carry; may be repeated")
      ->allow_extra_args(false);
  verb->callback([&opts, tags] {
    if (tags->added.empty() && tags->removed.empty())
      list_tags(opts, tags->reference);
    else
      change_tags(opts, *tags);
  });

  auto seconds = std::make_shared<int>(0);
  verb = add_verb(noun, "unenroll", "Ask the unenrolment service to take a node out",
                  "  twctl node unenroll rack-12\n"
                  "  twctl node unenroll rack-12 --yes --wait 30");
  verb->add_option("node", *reference, what_a_node_is)->required();
  verb->add_option("--wait", *seconds, "Wait at most this many seconds until it is gone")
      ->check(CLI::Range(1, 86400));
  verb->callback([&opts, reference, seconds] { unenroll(opts, *reference, *seconds); });
}

}  // namespace twctl
