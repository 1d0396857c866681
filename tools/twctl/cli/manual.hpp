// twctl's manual page, from the very texts that --help shows.
#pragma once

#include <CLI/CLI.hpp>

namespace twctl {

/// Adds the option that prints the page; a build uses it, people have --help.
void add_manual(CLI::App &program, const std::string &version);

}  // namespace twctl
