// twctl https: the nouns of the appliance's own web server.
#include "commands.hpp"

namespace twctl {

void add_https(CLI::App &program, const options &opts) {
  CLI::App *https = program.add_subcommand("https", "The appliance's own web server");
  https->require_subcommand(1);
  add_https_cert(https, opts);
  add_https_csr(https, opts);
}

}  // namespace twctl
