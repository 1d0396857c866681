// twctl search: nodes by conditions, as the search service finds them.
#include <fmt/format.h>
#include <unistd.h>

#include "cli/text.hpp"
#include "commands.hpp"
#include "nodes/searching.hpp"

namespace twctl {

const char *const condition_help =
    "Conditions, all of which must hold:\n"
    "  KEY=VALUE      a key of the node has this text, for example name=rack-12\n"
    "  KEY!=VALUE     it has another, or none\n"
    "  !KEY           it has none\n"
    "  tag:TAG=VALUE  the node carries this value of the tag\n"
    "or one condition as JSON: '{\"key\": \"name\", \"op\": \"equal\", \"string\": \"rack-12\"}'";

namespace {

cfg_condition *read_term(const std::string &term) {
  size_t equals = term.find('=');
  if (equals == std::string::npos)
    return term.size() > 1 && term[0] == '!' ? cfg_new_untyped_condition(term.c_str() + 1, CFG_OP_ABSENT)
                                             : nullptr;
  bool negated = equals > 0 && term[equals - 1] == '!';
  std::string key = term.substr(0, negated ? equals - 1 : equals);
  if (key.empty()) return nullptr;
  return cfg_new_string_condition(key.c_str(), negated ? CFG_OP_NOT_EQUAL : CFG_OP_EQUAL,
                                  term.c_str() + equals + 1);
}

failure no_condition(const std::string &text) {
  return {exit_code::invalid_input, fmt::format("'{}' is no condition", printable(text)), "",
          "KEY=VALUE, KEY!=VALUE, !KEY, or JSON; see 'twctl search --help'"};
}

}  // namespace

condition_tree read_condition(const std::vector<std::string> &terms) {
  if (terms.size() == 1 && terms[0].starts_with('{')) {
    condition_tree tree(json_dump_to_condition(terms[0].c_str(), 0));
    if (!tree) throw no_condition(terms[0]);
    return tree;
  }
  condition_tree tree(cfg_new_and_condition());
  for (const std::string &term : terms) {
    if (!is_utf8(term)) throw no_condition(term);
    condition_tree leaf(read_term(term));
    if (!cfg_condition_add_child(tree.get(), leaf.get())) throw no_condition(term);
    static_cast<void>(leaf.release());  // the tree's now
  }
  return tree;
}

std::string query_of(const cfg_condition *tree) {
  json_value json(condition_to_json(tree));
  heap_text text(json ? json_dumps(json.get(), JSON_COMPACT) : nullptr);
  if (!text)
    throw failure(exit_code::invalid_input, "this condition cannot be written as JSON", "is it UTF-8?");
  return text.get();
}

failure search_failure() {
  int connection = twsearch_connect();
  if (connection == 0)
    return {exit_code::failure, "the search service does not answer", "",
            "start it, on your own machine with 'twctl services start'"};
  close(connection);
  return {exit_code::invalid_input, "the search service has refused the search",
          "it searches no keys that hold secrets, and its log says what else it refuses"};
}

void list_found(const session &work, const condition_tree &tree, int32_t limit) {
  heap_text result_id = search("nodes", tree.get());
  if (!result_id) throw search_failure();
  search_result found = fetch(result_id.get(), 0, limit);
  if (found.status < 0) throw search_failure();
  listing result(
      "nodes",
      {{"id", "ID"}, {"name", "NAME"}, {"product", "PRODUCT"}, {"status", "STATUS"}, {"address", "ADDRESS"}});
  for (const char *id : found.ids) {
    node_record node(cfg_get_node_by_id(work.store(), id));
    const cfg_node *n = node.get();  // none when it was deleted meanwhile: its ID alone is shown then
    result.add({cell_of(id), cell_of(cfg_node_get_name(n)), cell_of(cfg_node_get_product(n)),
                cell_of(cfg_node_get_status(n)), cell_of(cfg_node_get_address(n))});
  }
  result.print(work.opts());
  if (found.total > found.status) work.note(fmt::format("{} of {} shown.", found.status, found.total));
}

void add_search(CLI::App &program, const options &opts) {
  auto terms = std::make_shared<std::vector<std::string>>();
  auto limit = std::make_shared<int32_t>(0);
  CLI::App *verb = program.add_subcommand("search", "Find nodes, with the help of the search service");
  verb->footer(std::string("Examples:\n"
                           "  twctl search status=Pending product!=generic\n"
                           "  twctl search tag:Site=Berlin '!cert' --limit 20\n\n") +
               condition_help);
  verb->add_option("conditions", *terms, "What must hold; see below")->required();
  add_limit(verb, *limit);
  verb->callback([&opts, terms, limit] {
    condition_tree tree = read_condition(*terms);
    list_found(session(opts, session::access::read), tree, *limit);
  });
}

}  // namespace twctl
