#include "cli/manual.hpp"

#include <fmt/format.h>

#include <sstream>

namespace twctl {

namespace {

/// A line of text for troff: nothing in it is a command.
std::string for_troff(const std::string &line) {
  std::string out;
  if (!line.empty() && (line[0] == '.' || line[0] == '\'')) out = "\\&";
  for (char c : line) {
    if (c == '\\')
      out += "\\e";
    else if (c == '-')
      out += "\\-";
    else
      out += c;
  }
  return out;
}

/// Lines that stay as they are.
std::string as_it_is(const std::string &text) {
  std::string out = ".nf\n";
  std::istringstream lines(text);
  for (std::string line; std::getline(lines, line);) out += for_troff(line) + "\n";
  return out + ".fi\n";
}

using formatter = CLI::Formatter;

/// The options of the program or of a verb; that a verb has --help, too, is said once.
std::string options_of(const CLI::App &app, const formatter &words) {
  std::string out;
  for (const CLI::Option *option : app.get_options([&app](const CLI::Option *each) {
         return !each->get_group().empty() && (!app.get_parent() || each != app.get_help_ptr());
       })) {
    const bool positional = option->get_positional();
    out += fmt::format(".TP\n\\fB{}\\fR{}\n{}\n", for_troff(words.make_option_name(option, positional)),
                       for_troff(words.make_option_opts(option)), for_troff(words.make_option_desc(option)));
  }
  return out;
}

std::vector<const CLI::App *> parts_of(const CLI::App &app) {
  return app.get_subcommands([](const CLI::App *) { return true; });
}

/// The sections of a command and of all that is below it; a noun is told by its verbs.
std::string section_of(const CLI::App &app, const std::string &path, const formatter &words) {
  const std::string name = path + " " + app.get_name();
  std::string out;
  if (parts_of(app).empty()) {
    std::string arguments;
    for (const CLI::Option *option :
         app.get_options([](const CLI::Option *each) { return each->get_positional(); }))
      arguments += " " + words.make_option_usage(option);
    out = fmt::format(".SS \"{}{} [OPTIONS]\"\n{}\n{}", for_troff(name), for_troff(arguments),
                      for_troff(app.get_description()), options_of(app, words));
    if (!app.get_footer().empty()) out += ".PP\n" + as_it_is(app.get_footer());
  }
  for (const CLI::App *part : parts_of(app)) out += section_of(*part, name, words);
  return out;
}

std::string page_of(const CLI::App &program, const std::string &version) {
  const formatter words;
  std::string out = fmt::format(
      ".TH TWCTL 1 \"\" \"{0}\"\n.ad l\n.SH NAME\ntwctl \\- {1}\n.SH SYNOPSIS\n\\fBtwctl\\fR [OPTIONS] NOUN "
      "VERB\n"
      ".SH OPTIONS\nThese may also stand behind the verb.\n{2}.SH NOUNS\n",
      version, for_troff(program.get_description()), options_of(program, words));
  for (const CLI::App *noun : parts_of(program))
    out +=
        fmt::format(".TP\n\\fB{}\\fR\n{}\n", for_troff(noun->get_name()), for_troff(noun->get_description()));
  out += ".SH COMMANDS\n";
  for (const CLI::App *noun : parts_of(program)) out += section_of(*noun, "twctl", words);
  return out + ".SH NOTES\n" + as_it_is(program.get_footer());
}

}  // namespace

void add_manual(CLI::App &program, const std::string &version) {
  program
      .add_flag_callback("--man-page",
                         [&program, version] { throw CLI::CallForVersion(page_of(program, version), 0); })
      ->group("");
}

}  // namespace twctl
