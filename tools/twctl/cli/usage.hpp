// How the command line explains itself: the words of --help, and what is told when a command makes no sense.
#pragma once

#include <CLI/CLI.hpp>

#include "cli/failure.hpp"

namespace twctl {

/// Makes --help speak of nouns and verbs, each with a footer of its own. Called when all nouns are there.
void name_parts(CLI::App &program);

/// The command that was given, without the program's name and its arguments: "tag value add".
std::string command_of(const CLI::App &program);

/// What is wrong with a command line that could not be read, and which --help tells more.
failure usage_failure(const CLI::App &program, const CLI::ParseError &problem);

}  // namespace twctl
