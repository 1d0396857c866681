// The nouns of the command line. Each function adds one noun with its verbs.
#pragma once

#include <CLI/CLI.hpp>

#include <cstdint>

#include "cli/options.hpp"

namespace twctl {

void add_init(CLI::App &program, const options &opts);
void add_system(CLI::App &program, const options &opts);
void add_net(CLI::App &program, const options &opts);
/// The nouns of "net".
void add_net_physif(CLI::App *net, const options &opts);
void add_net_conn(CLI::App *net, const options &opts);
void add_net_endpoint(CLI::App *net, const options &opts);
void add_net_address(CLI::App *net, const options &opts);
void add_ntp(CLI::App &program, const options &opts);
void add_console_gateway(CLI::App &program, const options &opts);
void add_boot_flag(CLI::App &program, const options &opts);
void add_https(CLI::App &program, const options &opts);
/// The nouns of "https".
void add_https_cert(CLI::App *https, const options &opts);
void add_https_csr(CLI::App *https, const options &opts);
void add_node(CLI::App &program, const options &opts);
/// The verbs of "node" that are about enrolled nodes.
void add_node_live(CLI::App *noun, const options &opts);
void add_port(CLI::App &program, const options &opts);
void add_fleet(CLI::App &program, const options &opts);
void add_cert(CLI::App &program, const options &opts);
void add_user(CLI::App &program, const options &opts);
void add_group(CLI::App &program, const options &opts);
void add_role(CLI::App &program, const options &opts);
void add_acl(CLI::App &program, const options &opts);
void add_auth(CLI::App &program, const options &opts);
/// The verbs of "auth server", and of "template server", whose servers are a template's.
void add_auth_server(CLI::App *noun, const options &opts, bool in_template);
void add_tag(CLI::App &program, const options &opts);
void add_bundle(CLI::App &program, const options &opts);
void add_template(CLI::App &program, const options &opts);
/// The verbs of "template change".
void add_template_change(CLI::App *noun, const options &opts);
void add_push(CLI::App &program, const options &opts);
/// The verbs of "push" that show how far it has come.
void add_push_view(CLI::App *noun, const options &opts);
void add_smartgroup(CLI::App &program, const options &opts);
void add_search(CLI::App &program, const options &opts);
void add_services(CLI::App &program, const options &opts);
void add_store(CLI::App &program, const options &opts);

/// A verb with its help: one line of description, and examples that can be copied.
inline CLI::App *add_verb(CLI::App *noun, const std::string &name, const std::string &description,
                          const std::string &examples) {
  return noun->add_subcommand(name, description)->footer("Examples:\n" + examples);
}

/// The option --limit of a verb that lists.
template <typename Number>
void add_limit(CLI::App *verb, Number &limit) {
  verb->add_option("--limit", limit, "At most this many")->check(CLI::Range(1, INT32_MAX).description(""));
}

}  // namespace twctl
