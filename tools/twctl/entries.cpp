#include "entries.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <optional>

#include "device.hpp"
#include "failure.hpp"
#include "secret.hpp"
#include "text.hpp"

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

std::map<std::string, std::string> read_assignments(const std::vector<std::string> &texts,
                                                    std::initializer_list<const char *> fields,
                                                    bool may_be_none) {
  std::string names;
  for (const char *name : fields) names += (names.empty() ? "" : ", ") + std::string(name);
  if (texts.empty() && !may_be_none)
    throw failure(exit_code::usage, "nothing to set", "", "give FIELD=VALUE; the fields are " + names);
  std::map<std::string, std::string> result;
  for (const std::string &text : texts) {
    auto [name, value] = split_pair(text, "FIELD=VALUE", fmt::format("{}=...", *fields.begin()));
    if (std::none_of(fields.begin(), fields.end(), [&](const char *one) { return name == one; }))
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

void finish_entry(session &work, const std::string &id, const std::string &name, const char *done) {
  outcome result = work.commit(fmt::format("{} '{}'", done, printable(name)));
  std::string now = result.dry_run ? std::string() : final_id(work.store(), id);
  sheet details;
  details.add("id", "ID", unless_empty(now));
  details.add("name", "Name", name);
  work.report(result, fmt::format("{} '{}' ({}).", done, printable(name), now), details.json());
}

}  // namespace twctl
