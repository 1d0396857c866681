// twctl push status and message: how far a push has come on each node, and what there was to tell.
#include <fmt/format.h>

#include <array>
#include <map>

#include "cli/entries.hpp"
#include "cli/failure.hpp"
#include "cli/text.hpp"
#include "commands.hpp"
#include "pushes/pushes.hpp"

namespace twctl {

namespace {

constexpr const char *phases[] = {"preflight", "execution"};
constexpr const char *kinds[] = {"change", "warning", "error", "message"};

/// One of the eight lists of messages that a node's share has.
struct message_list {
  const char *key;  ///< JSON key of its count
  int32_t (*count)(const cfg_push_node_ctxt *);
  const char *(*id)(const cfg_push_node_ctxt *, int32_t);
};

/// By phase and kind.
constexpr message_list lists[2][4] = {{{"preflight_changes", cfg_push_node_ctxt_get_preflight_change_count,
                                        cfg_push_node_ctxt_get_preflight_change},
                                       {"preflight_warnings", cfg_push_node_ctxt_get_preflight_warning_count,
                                        cfg_push_node_ctxt_get_preflight_warning},
                                       {"preflight_errors", cfg_push_node_ctxt_get_preflight_error_count,
                                        cfg_push_node_ctxt_get_preflight_error},
                                       {"preflight_messages", cfg_push_node_ctxt_get_preflight_message_count,
                                        cfg_push_node_ctxt_get_preflight_message}},
                                      {{"execution_changes", cfg_push_node_ctxt_get_execution_change_count,
                                        cfg_push_node_ctxt_get_execution_change},
                                       {"execution_warnings", cfg_push_node_ctxt_get_execution_warning_count,
                                        cfg_push_node_ctxt_get_execution_warning},
                                       {"execution_errors", cfg_push_node_ctxt_get_execution_error_count,
                                        cfg_push_node_ctxt_get_execution_error},
                                       {"execution_messages", cfg_push_node_ctxt_get_execution_message_count,
                                        cfg_push_node_ctxt_get_execution_message}}};

cell status_of(const cfg_push_node_ctxt *context) {
  return cell_of(cfg_node_ctxt_status_enum_to_string(cfg_push_node_ctxt_get_status(context)));
}

/// "2 changes, 1 error": what a phase had to tell about a node.
cell summary(const cfg_push_node_ctxt *context, size_t phase) {
  std::string words;
  for (size_t kind = 0; kind < std::size(kinds); kind++) {
    int32_t count = lists[phase][kind].count(context);
    if (count > 0)
      words += fmt::format("{}{} {}{}", words.empty() ? "" : ", ", count, kinds[kind], count == 1 ? "" : "s");
  }
  return unless_empty(words);
}

/// "5 nodes: 3 preflight_complete, 2 preflight_ready", in the order of the states.
std::string progress(const std::vector<push_share> &shares) {
  std::map<int32_t, size_t> counts;
  for (const push_share &one : shares) counts[cfg_push_node_ctxt_get_status(one.context)]++;
  std::string words = fmt::format("{} node{}", shares.size(), shares.size() == 1 ? "" : "s");
  const char *separator = ": ";
  for (const auto &[status, count] : counts) {
    const char *name = cfg_node_ctxt_status_enum_to_string(status);
    words += fmt::format("{}{} {}", separator, count, name ? name : "in an unknown state");
    separator = ", ";
  }
  return words;
}

/// For programs every count is a member of its own, for people a phase is one column.
listing status_listing(const options &opts, const std::vector<push_share> &shares) {
  std::vector<heading> columns{{"node_id", "ID"}, {"name", "NODE"}, {"status", "STATUS"}, {"apply", "APPLY"}};
  for (size_t phase = 0; phase < std::size(phases); phase++) {
    if (!opts.json()) columns.push_back({phases[phase], phase ? "EXECUTION" : "PREFLIGHT"});
    for (const message_list &list : lists[phase])
      if (opts.json()) columns.push_back({list.key, list.key});
  }
  listing result("nodes", columns);
  for (const push_share &one : shares) {
    std::vector<cell> row{cell_of(cfg_push_node_ctxt_get_node(one.context)), one.name, status_of(one.context),
                          cfg_push_node_ctxt_get_apply_execution(one.context) != 0};
    for (size_t phase = 0; phase < std::size(phases); phase++) {
      if (!opts.json()) row.push_back(summary(one.context, phase));
      for (const message_list &list : lists[phase])
        if (opts.json()) row.emplace_back(int64_t{list.count(one.context)});
    }
    result.add(std::move(row));
  }
  return result;
}

void status(const options &opts, const std::string &reference, const std::vector<std::string> &nodes) {
  session work(opts, session::access::read);
  push_record push = find_push(work.store(), reference);
  std::vector<push_share> shares = shares_of(work.store(), push.get(), nodes);
  if (!opts.json()) {
    const char *state = cfg_exec_ctxt_status_enum_to_string(cfg_push_exec_ctxt_get_status(push.get()));
    fmt::print("{}: {}; {}\n", cfg_push_exec_ctxt_get_uuid(push.get()), state ? state : "in an unknown state",
               progress(shares));
  }
  status_listing(opts, shares).print(opts);
}

struct message_arguments {
  std::string reference, phase, kind;
  std::vector<std::string> nodes;
};

void add_messages(cfg *store, listing &result, const push_share &share, size_t phase, size_t kind) {
  const message_list &list = lists[phase][kind];
  for (int32_t i = 0; i < list.count(share.context); i++) {
    const char *id = list.id(share.context, i);
    message_record message(get_config_message_from_uuid(store, id));
    std::string about = take(get_template_uuid_from_message_uuid(store, id));
    cell code = message ? cell(int64_t{cfg_message_get_code(message.get())}) : cell();
    result.add({cell_of(id), share.name, cell_of(phases[phase]), cell_of(kinds[kind]),
                unless_empty(about.empty() ? about : template_name(store, about.c_str())), code,
                cell_of(message ? cfg_message_get_text(message.get()) : nullptr)});
  }
}

void message(const options &opts, const message_arguments &arguments) {
  session work(opts, session::access::read);
  push_record push = find_push(work.store(), arguments.reference);
  listing result("messages", {{"id", "ID"},
                              {"node", "NODE"},
                              {"phase", "PHASE"},
                              {"kind", "KIND"},
                              {"template", "TEMPLATE"},
                              {"code", "CODE", true},
                              {"text", "TEXT"}});
  for (const push_share &share : shares_of(work.store(), push.get(), arguments.nodes))
    for (size_t phase = 0; phase < std::size(phases); phase++)
      for (size_t kind = 0; kind < std::size(kinds); kind++)
        if ((arguments.phase.empty() || arguments.phase == phases[phase]) &&
            (arguments.kind.empty() || arguments.kind == kinds[kind]))
          add_messages(work.store(), result, share, phase, kind);
  result.print(opts);
}

}  // namespace

std::vector<push_share> shares_of(cfg *store, cfg_push_exec_ctxt *push,
                                  const std::vector<std::string> &nodes) {
  std::vector<push_share> shares;
  std::vector<bool> found(nodes.size());
  for (int32_t i = 0; i < cfg_push_exec_ctxt_get_num_nodes(push); i++) {
    cfg_push_node_ctxt *context = cfg_push_exec_ctxt_get_node_ctxt(push, i);
    if (!context) throw store_failure(store, "cannot read a node of the push");
    std::string id(view(cfg_push_node_ctxt_get_node(context)));
    node_record node(cfg_get_node_by_id(store, id.c_str()));
    const char *name = cfg_node_get_name(node.get());
    push_share share{context, name ? name : id};
    bool wanted = nodes.empty();
    for (size_t j = 0; j < nodes.size(); j++)
      if (nodes[j] == id || nodes[j] == share.name) wanted = found[j] = true;
    if (wanted) shares.push_back(std::move(share));
  }
  for (size_t j = 0; j < nodes.size(); j++)
    if (!found[j])
      throw failure(exit_code::not_found, fmt::format("the push does not go to '{}'", printable(nodes[j])),
                    "", "see 'twctl push status'");
  return shares;
}

void add_push_view(CLI::App *noun, const options &opts) {
  constexpr const char *what_a_push_is = "ID of a push, or 'last' for the newest";
  auto arguments = std::make_shared<message_arguments>();
  auto begin = [&](const char *name, const char *what, const std::string &examples) {
    CLI::App *verb = add_verb(noun, name, what, examples);
    verb->add_option("push", arguments->reference, what_a_push_is)->required();
    verb->add_option("--node", arguments->nodes, "Only this node; may be repeated")->allow_extra_args(false);
    return verb;
  };

  CLI::App *verb = begin("status", "Show how far a push has come on each node",
                         "  twctl push status last\n  twctl push status last --node rack-1 -o json");
  verb->callback([&opts, arguments] { status(opts, arguments->reference, arguments->nodes); });

  verb = begin("message", "Show what the preflight check and the execution had to tell",
               "  twctl push message last --kind error\n"
               "  twctl push message last --node rack-1 --phase preflight");
  verb->add_option("--phase", arguments->phase, "Only of this phase")
      ->check(CLI::IsMember({"preflight", "execution"}));
  verb->add_option("--kind", arguments->kind, "Only of this kind")
      ->check(CLI::IsMember({"change", "warning", "error", "message"}));
  verb->callback([&opts, arguments] { message(opts, *arguments); });
}

}  // namespace twctl
