#include "pushes/template_content.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <cstdio>

#include "cli/fields.hpp"
#include "cli/files.hpp"
#include "cli/text.hpp"

namespace twctl {

namespace {

constexpr size_t script_limit = 8 << 20;

/// Once a time-out is deleted, the record's saves delete it whatever is set.
void write_timeout(cfg_template *record, const std::string &text, const std::string &name) {
  require_set(text.empty() ? cfg_script_template_delete_timeout(record)
                           : cfg_script_template_set_timeout(record, require_number(text, name, 0, 86400)),
              name);
}

constexpr field<cfg_template> dummy_fields[] = {
    text_field<cfg_dummy_template_get_dummy_field, cfg_dummy_template_set_dummy_field>("dummy_field", "Text"),
};
constexpr field<cfg_template> script_fields[] = {
    {"size", "Size in bytes",
     [](cfg_template *record) { return cell(int64_t{cfg_script_template_get_size(record)}); }, nullptr},
    shown_text<cfg_script_template_get_checksum>("checksum", "SHA-1"),
    {"timeout", "Time-out",
     [](cfg_template *record) { return unless_zero(cfg_script_template_get_timeout(record)); },
     write_timeout},
};
constexpr field<cfg_template> users_groups_fields[] = {
    word_field<cfg_ugt_get_operation, cfg_ugt_set_operation, cfg_ugt_op_type_to_string, CFG_UGT_USER_ADD,
               CFG_UGT_MEMBERSHIP>("operation", "Operation"),
    truth_field<cfg_ugt_get_add_membership, cfg_ugt_set_add_membership>("add_membership",
                                                                        "Members are added"),
};

/// The names of the fields that a template of a kind has.
std::vector<const char *> fields_of(int32_t kind) {
  switch (kind) {
    case CFG_TEMPLATE_DUMMY:
      return settable(dummy_fields);
    case CFG_TEMPLATE_SCRIPT:
      return settable(script_fields);
    case CFG_TEMPLATE_AUTH:
      return auth_field_names();
    case CFG_TEMPLATE_USERS_GROUPS:
      return settable(users_groups_fields);
    default:
      return {};
  }
}

[[noreturn]] void refuse(const cfg_template *record, const std::string &what) {
  const char *kind = cfg_template_type_enum_to_string(cfg_template_get_type(record));
  throw failure(exit_code::invalid_input,
                fmt::format("a template of the kind {} has no {}", kind ? kind : "unknown", what));
}

/// Fails for what templates of the record's kind do not have.
void require_fitting(const cfg_template *record, const std::map<std::string, std::string> &values,
                     const template_content &content) {
  int32_t kind = cfg_template_get_type(record);
  std::vector<const char *> own = fields_of(kind);
  for (const char *name : content_fields())
    if (values.contains(name) &&
        std::none_of(own.begin(), own.end(), [&](const char *one) { return view(one) == name; }))
      refuse(record, name);
  if (!content.script_file.empty() && kind != CFG_TEMPLATE_SCRIPT) refuse(record, "script");
  if (content.secrets.given() && kind != CFG_TEMPLATE_AUTH) refuse(record, "passwords");
}

}  // namespace

void add_content_options(CLI::App *verb, template_content &content) {
  verb->add_option("--script", content.script_file,
                   "kind script: file with the script; - for standard input");
  add_auth_secrets(verb, content.secrets);
}

std::vector<const char *> content_fields() {
  std::vector<const char *> names;
  for (int32_t kind = CFG_TEMPLATE_DUMMY; kind < CFG_TEMPLATE_INVALID; kind++) {
    std::vector<const char *> more = fields_of(kind);
    names.insert(names.end(), more.begin(), more.end());
  }
  return names;
}

void show_content(sheet &result, cfg_template *record) {
  show_fields(result, dummy_fields, record);
  switch (cfg_template_get_type(record)) {
    case CFG_TEMPLATE_SCRIPT:
      return show_fields(result, script_fields, record);
    case CFG_TEMPLATE_AUTH:
      return show_auth_fields(result, cfg_template_get_auth(record));
    case CFG_TEMPLATE_USERS_GROUPS:
      return show_fields(result, users_groups_fields, record);
    default:
      return;
  }
}

void set_content(cfg_template *record, const std::map<std::string, std::string> &values,
                 const template_content &content) {
  require_fitting(record, values, content);
  switch (cfg_template_get_type(record)) {
    case CFG_TEMPLATE_DUMMY:
      return set_fields(dummy_fields, record, values);
    case CFG_TEMPLATE_USERS_GROUPS:
      return set_fields(users_groups_fields, record, values);
    case CFG_TEMPLATE_SCRIPT:
      set_fields(script_fields, record, values);
      if (!content.script_file.empty()) {
        secret script = read_file(content.script_file, script_limit);
        require_set(
            cfg_script_template_set_script(record, script.c_str(), static_cast<int32_t>(script.size())),
            "script");
      }
      return;
    case CFG_TEMPLATE_AUTH: {
      cfg_auth *auth = cfg_template_get_auth(record);
      set_auth_fields(auth, values, content.secrets);
      // Without a mode, a save writes none of the settings.
      if (view(cfg_auth_get_mode(auth)).empty())
        throw failure(exit_code::invalid_input, "authentication settings need a mode", "", "add mode=...");
      return;
    }
    default:
      return;
  }
}

void write_script(const cfg_template *record, const std::string &path) {
  const auto *script = static_cast<const char *>(cfg_script_template_get_script(record));
  if (!script)
    throw failure(exit_code::not_found,
                  fmt::format("'{}' has no script", printable(view(cfg_template_get_name(record)))));
  std::string_view bytes(script, static_cast<size_t>(cfg_script_template_get_size(record)));
  if (path != "-") return write_private_file(path, bytes);
  std::fwrite(bytes.data(), 1, bytes.size(), stdout);  // finish_output() tells whether it arrived
}

}  // namespace twctl
