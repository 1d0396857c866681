// twctl node status, approve, tag, unenroll: what happens to nodes once they are enrolled.
#include <fmt/format.h>

#include <chrono>
#include <thread>

#include "cli/entries.hpp"
#include "cli/failure.hpp"
#include "cli/secret.hpp"
#include "cli/text.hpp"
#include "commands.hpp"
#include "nodes/bundles.hpp"
#include "nodes/nodes.hpp"
#include "nodes/tags.hpp"

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

constexpr std::pair<const char *, int32_t> publishable[] = {{"connected", CFG_NODE_CONNECTED},
                                                            {"disconnected", CFG_NODE_DISCONNECTED},
                                                            {"never-seen", CFG_NODE_NEVER_SEEN}};

/// Publishes the live state of a node, as the service that is connected to it does.
void publish(const options &opts, cfg_node *node, const std::string &state) {
  for (const auto &[word, status] : publishable)
    if (state == word && !opts.dry_run && !cfg_node_runtime_set_connection_status(node, status))
      throw failure(exit_code::failure, "cannot publish the state");
}

struct status_arguments {
  std::string reference, state;
};

void status(const options &opts, const status_arguments &arguments) {
  session work(opts, session::access::read);
  listing result("nodes", {{"id", "ID"},
                           {"name", "NAME"},
                           {"connection", "CONNECTION"},
                           {"since", "SINCE"},
                           {"action", "ACTION"},
                           {"action_status", "STATE"},
                           {"action_error", "ERROR"}});
  if (!arguments.reference.empty()) {
    node_record node = find_node(work.store(), arguments.reference);
    publish(opts, node.get(), arguments.state);
    add_status(result, node.get());
    if (opts.dry_run && !arguments.state.empty())
      work.note(fmt::format("Dry run: '{}' would be published.", arguments.state));
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

struct tag_arguments {
  std::string reference;
  std::vector<std::string> added, removed;
};

void list_tags(const options &opts, const std::string &reference) {
  session work(opts, session::access::read);
  node_record node = find_node(work.store(), reference);
  listing result("tags", {{"id", "ID"}, {"tag", "TAG"}, {"value", "VALUE"}});
  for (int32_t i = 0; i < cfg_node_get_tag_count(node.get()); i++) {
    tag_value_record value(cfg_node_get_tag(node.get(), i));  // none when the reference leads nowhere
    tag_record tag(cfg_tag_value_get_parent_tag(value.get()));
    result.add({cell_of(cfg_node_get_tag_ref_uuid(node.get(), i)), cell_of(tag_get_name(tag.get())),
                cell_of(tag_value_get_value(value.get()))});
  }
  result.print(opts);
}

/// The node's reference to a value, as the edit has it now; empty when there is none. A record keeps the tags
/// that it has once read, so each look-up takes a new one.
std::string reference_to(cfg *store, const std::string &node, const cfg_tag_value *value) {
  node_record now(cfg_get_node_by_id(store, node.c_str()));
  return std::string(view(cfg_node_get_tag_ref_uuid_by_value(now.get(), value)));
}

void change_tags(const options &opts, const tag_arguments &arguments) {
  session work(opts, session::access::write);
  cfg *store = work.store();
  node_record node = find_node(store, arguments.reference);
  std::string id = cfg_node_get_uuid(node.get()), name(view(cfg_node_get_name(node.get())));
  for (const std::string &pair : arguments.removed) {
    std::string reference = reference_to(store, id, find_tag_pair(store, pair).get());
    if (reference.empty())
      throw failure(exit_code::not_found, fmt::format("{} is not tagged '{}'", id, printable(pair)), "",
                    fmt::format("see 'twctl node tag {}'", id));
    if (!cfg_node_delete_tag(store, reference.c_str()))
      throw store_failure(store, "cannot take the tag from the node");
  }
  for (const std::string &pair : arguments.added) {
    tag_value_record value = find_tag_pair(store, pair);
    if (!reference_to(store, id, value.get()).empty()) continue;
    need_list(store, node.get(), "tags");
    if (!cfg_node_save_tag(node.get(), value.get())) throw store_failure(store, "cannot tag the node");
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
  auto live = std::make_shared<status_arguments>();
  CLI::App *verb =
      add_verb(noun, "status", "Show whether nodes are connected, and what is being done to them",
               "  twctl node status\n"
               "  twctl node status rack-12 -o json\n"
               "  twctl node status rack-12 --publish connected    (for a try without a real node)");
  CLI::Option *one =
      verb->add_option("node", live->reference, std::string(what_a_node_is) + "; without it, all nodes");
  verb->add_option("--publish", live->state,
                   "Publish this state first, as the service that is connected to nodes does")
      ->check(CLI::IsMember({"connected", "disconnected", "never-seen"}))
      ->needs(one);
  verb->callback([&opts, live] { status(opts, *live); });

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
