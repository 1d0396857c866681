// Secrets that a verb may be given: asked for, or read from a file, never taken from the command line.
#pragma once

#include <CLI/CLI.hpp>

#include <optional>
#include <string>

#include "cli/secret.hpp"

namespace twctl {

/// What the options --NAME, --NAME-file FILE and --clear-NAME say about one secret.
struct secret_option {
  std::string name;    ///< of the options
  std::string prompt;  ///< what the secret is called
  std::string file;
  bool ask = false, clear = false;

  /// True when the secret is to be changed.
  bool given() const { return ask || clear || !file.empty(); }
  /// The new secret, empty for one that is to be cleared. Fails with exit code 5 for one that is empty,
  /// longer than 255 bytes, not UTF-8 or holds control characters.
  secret read() const;
};

/// Adds the options to a verb. A secret of something new cannot be cleared.
void add_secret(CLI::App *verb, secret_option &option, const std::string &name, const std::string &prompt,
                bool may_be_cleared = true);

}  // namespace twctl
