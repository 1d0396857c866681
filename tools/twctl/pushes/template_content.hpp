// What templates carry beside their names, kind by kind.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "access/auth_settings.hpp"
#include "cli/output.hpp"
#include "cli/records.hpp"

namespace twctl {

/// What a verb changes by options, because it is too large or too secret for FIELD=VALUE.
struct template_content {
  std::string script_file;
  auth_secrets secrets;
  bool given() const { return !script_file.empty() || secrets.given(); }
};
void add_content_options(CLI::App *verb, template_content &content);

/// The names of all fields that templates of one kind or another have.
std::vector<const char *> content_fields();
void show_content(sheet &result, cfg_template *record);
/// Puts fields and options into the record; fails with exit code 5 for what its kind does not have.
void set_content(cfg_template *record, const std::map<std::string, std::string> &values,
                 const template_content &content);

/// Writes a template's script to a file ("-": standard output).
void write_script(const cfg_template *record, const std::string &path);

}  // namespace twctl
