#include "cli/entries.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <optional>

#include "cli/changes.hpp"
#include "cli/failure.hpp"
#include "cli/secret.hpp"
#include "cli/text.hpp"

namespace twctl {

void require_label(const std::string &text, const std::string &what) {
  if (!is_label(text))
    throw failure(exit_code::invalid_input, fmt::format("'{}' cannot be {}", printable(text), what),
                  "it must be 1 to 255 bytes of UTF-8 without control characters");
}

std::pair<std::string, std::string> split_pair(const std::string &text, const std::string &form,
                                               const std::string &example) {
  size_t equals = text.find('=');
  if (equals == std::string::npos)
    throw failure(exit_code::usage, fmt::format("'{}' is no {}", printable(text), form), "",
                  fmt::format("for example {}", example));
  return {text.substr(0, equals), text.substr(equals + 1)};
}

std::string joined(const std::vector<const char *> &names) {
  std::string result;
  for (const char *name : names) result += (result.empty() ? "" : ", ") + std::string(name);
  return result;
}

std::map<std::string, std::string> read_assignments(const std::vector<std::string> &texts,
                                                    const std::vector<const char *> &fields,
                                                    bool may_be_none) {
  std::string names = joined(fields);
  if (texts.empty() && !may_be_none)
    throw failure(exit_code::usage, "nothing to set", "", "give FIELD=VALUE; the fields are " + names);
  std::map<std::string, std::string> result;
  for (const std::string &text : texts) {
    auto [name, value] = split_pair(text, "FIELD=VALUE", fmt::format("{}=...", fields.front()));
    bool unknown = std::none_of(fields.begin(), fields.end(), [&](const char *one) { return name == one; });
    if (unknown && names_secret(name))
      throw failure(exit_code::usage, "a secret cannot be given on the command line",
                    "every user of the machine can read it there", "--help names the options for it");
    if (unknown)
      throw failure(exit_code::usage, fmt::format("there is no field '{}' here", printable(name)), "",
                    "the fields are " + names);
    if (!result.emplace(name, value).second)
      throw failure(exit_code::usage, fmt::format("'{}' is given twice", name));
  }
  return result;
}

bool require_truth(const std::string &text, const std::string &what) {
  std::optional<bool> value = parse_truth(text);
  if (!value)
    throw failure(exit_code::invalid_input, fmt::format("'{}' is no value for {}", printable(text), what),
                  "it must be yes or no");
  return *value;
}

void confirm_delete(const options &opts, const std::string &what) {
  if (!opts.yes && !opts.dry_run && !confirm(fmt::format("Delete {}?", printable(what))))
    throw failure(exit_code::failure, "nothing was deleted", "it was not confirmed");
}

void not_found(const char *kind, const std::string &reference, const char *noun) {
  throw failure(exit_code::not_found, fmt::format("there is no {} '{}'", kind, printable(reference)), "",
                fmt::format("see 'twctl {} list'", noun));
}

std::vector<std::string> ids_in(cfg *store, const char *path) {
  std::vector<std::string> ids;
  cfg_elem *list = cfg_get_by_path(store, path);
  for (int32_t i = 0; const char *id = cfg_get_listelem(list, i); i++) ids.emplace_back(id);
  return ids;
}

void require_free(const char *id, const std::string &name) {
  if (id)
    throw failure(exit_code::conflict, fmt::format("'{}' exists already", printable(name)),
                  fmt::format("it is {}", id));
}

void finish_entry(session &work, const std::string &id, const std::string &name, const char *done) {
  outcome result = work.commit(fmt::format("{} '{}'", work.opts().command, printable(name)));
  std::string now = result.dry_run ? std::string() : final_id(work.store(), id);
  sheet details;
  details.add("id", "ID", unless_empty(now));
  details.add("name", "Name", name);
  std::string where = now.empty() ? "" : fmt::format(" ({})", now);
  work.report(result, fmt::format("{} '{}'{}.", done, printable(name), where), details.json());
}

}  // namespace twctl
