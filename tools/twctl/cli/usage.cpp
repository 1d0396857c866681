#include "cli/usage.hpp"

#include <fmt/format.h>

#include "cli/text.hpp"

namespace twctl {

namespace {

std::vector<const CLI::App *> parts_of(const CLI::App &app) {
  return app.get_subcommands([](const CLI::App *) { return true; });
}

void name_noun(CLI::App *noun, const std::string &path) {
  auto words = std::make_shared<CLI::Formatter>();
  words->label("SUBCOMMAND", "VERB");
  noun->formatter(words);
  noun->footer(fmt::format("'{} VERB --help' shows the options of a verb, with examples.", path));
}

void name_parts_below(CLI::App &app, const std::string &path) {
  for (CLI::App *part : app.get_subcommands([](CLI::App *) { return true; })) {
    const bool is_noun = !parts_of(*part).empty();
    const std::string name = path + " " + part->get_name();
    part->group(is_noun ? "Nouns" : "Verbs");
    if (is_noun) name_noun(part, name);
    name_parts_below(*part, name);
  }
}

/// The noun or verb as far as the command line names one.
const CLI::App *deepest(const CLI::App &program) {
  const CLI::App *at = &program;
  while (!at->get_subcommands().empty()) at = at->get_subcommands().front();
  return at;
}

std::string joined_names(const std::vector<const CLI::App *> &parts) {
  std::string names;
  for (const CLI::App *part : parts) names += (names.empty() ? "" : ", ") + part->get_name();
  return names;
}

}  // namespace

void name_parts(CLI::App &program) {
  name_parts_below(program, program.get_name());
  // Two of them are nouns and verbs in one; people look for them among the nouns.
  for (CLI::App *part : program.get_subcommands([](CLI::App *) { return true; })) part->group("Nouns");
  program.get_formatter()->label("SUBCOMMAND", "NOUN VERB");
}

std::string command_of(const CLI::App &program) {
  std::string names;
  for (const CLI::App *at = &program; !at->get_subcommands().empty();) {
    at = at->get_subcommands().front();
    names += (names.empty() ? "" : " ") + at->get_name();
  }
  return names;
}

failure usage_failure(const CLI::App &program, const CLI::ParseError &problem) {
  const CLI::App *at = deepest(program);
  const std::vector<const CLI::App *> parts = parts_of(*at);
  const std::string command = command_of(program);
  const std::string path = command.empty() ? "twctl" : "twctl " + command;
  std::string hint = fmt::format("see '{} --help'", path);
  const std::vector<std::string> extras = program.remaining(true);
  if (!extras.empty() && extras[0].starts_with('-'))
    return {exit_code::usage, fmt::format("'{}' has no option '{}'", path, printable(extras[0])), "", hint};
  if (!parts.empty()) {
    hint = fmt::format("it goes on with one of {}; {}", joined_names(parts), hint);
    if (extras.empty()) return {exit_code::usage, fmt::format("'{}' is not complete", path), "", hint};
    return {exit_code::usage, fmt::format("'{}' does not know '{}'", path, printable(extras[0])), "", hint};
  }
  if (!extras.empty())
    return {exit_code::usage, fmt::format("'{}' takes no '{}'", path, printable(extras[0])), "", hint};
  return {exit_code::usage, printable(problem.what()), "", hint};
}

}  // namespace twctl
