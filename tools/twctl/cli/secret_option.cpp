#include "cli/secret_option.hpp"

#include <fmt/format.h>

#include "cli/failure.hpp"
#include "cli/text.hpp"

namespace twctl {

secret secret_option::read() const {
  if (static_cast<int>(ask) + static_cast<int>(clear) + static_cast<int>(!file.empty()) > 1)
    throw failure(exit_code::usage,
                  fmt::format("--{0}, --{0}-file and --clear-{0} exclude each other", name));
  if (clear) return {};
  secret result = read_password(file, prompt);
  if (!is_label(result.view()))
    throw failure(exit_code::invalid_input, fmt::format("the {} cannot be used", name),
                  "it is empty, longer than 255 bytes, not UTF-8 or holds control characters");
  return result;
}

void add_secret(CLI::App *verb, secret_option &option, const std::string &name, const std::string &prompt,
                bool may_be_cleared) {
  option.name = name;
  option.prompt = prompt;
  verb->add_flag("--" + name, option.ask, "Ask for it: " + prompt);
  verb->add_option(fmt::format("--{}-file", name), option.file,
                   "File whose first line is it; - for standard input");
  if (may_be_cleared) verb->add_flag("--clear-" + name, option.clear, "Take it away");
}

}  // namespace twctl
