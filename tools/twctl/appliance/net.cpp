// twctl net: the nouns of the appliance's own network.
#include "commands.hpp"

namespace twctl {

void add_net(CLI::App &program, const options &opts) {
  CLI::App *net = program.add_subcommand("net", "The appliance's own network");
  net->require_subcommand(1);
  add_net_physif(net, opts);
  add_net_conn(net, opts);
  add_net_endpoint(net, opts);
  add_net_address(net, opts);
}

}  // namespace twctl
