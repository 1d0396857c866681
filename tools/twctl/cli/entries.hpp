// What the nouns for named entries of the store have in common: names, FIELD=VALUE, confirming, reporting.
#pragma once

#include <map>
#include <string>
#include <utility>
#include <vector>

#include "cli/session.hpp"

namespace twctl {

/// Fails with exit code 5 unless the text is fit for a name: 1 to 255 bytes of UTF-8 without control
/// characters. `what` is what the message calls it.
void require_label(const std::string &text, const std::string &what);

/// Splits "NAME=VALUE" at its first '='; fails with exit code 2 without one. `form` and `example` are for the
/// message.
std::pair<std::string, std::string> split_pair(const std::string &text, const std::string &form,
                                               const std::string &example);

/// The names of fields as messages and helps list them: "name, description".
std::string joined(const std::vector<const char *> &names);

/**
 * Reads FIELD=VALUE arguments. Fails with exit code 2 for a field that is none of `fields`, a field that is
 * given twice, and when there are no arguments and `may_be_none` is false.
 */
std::map<std::string, std::string> read_assignments(const std::vector<std::string> &texts,
                                                    const std::vector<const char *> &fields,
                                                    bool may_be_none = false);

/// yes or no, as every command spells it; fails with exit code 5 for anything else.
bool require_truth(const std::string &text, const std::string &what);

/// Asks whether `what` is to be deleted, unless --yes or --dry-run; fails with exit code 1 when it is not.
void confirm_delete(const options &opts, const std::string &what);

[[noreturn]] void not_found(const char *kind, const std::string &reference, const char *noun);

/// The IDs of the committed entries of the list at a path; none without the list.
std::vector<std::string> ids_in(cfg *store, const char *path);

/// The record that a look-up found; fails with exit code 3 when there is none. `noun` is its command's, such
/// as "net conn", `kind` what it is called.
template <typename Owner>
Owner require_found(Owner record, const char *kind, const std::string &reference, const char *noun) {
  if (!record) not_found(kind, reference, noun);
  return record;
}

/// Fails with exit code 4 when there is a record with the name that a new one, or a renamed one, is to have.
void require_free(const char *id, const std::string &name);

/// Commits the edit and reports it: what was done ("Created") to the entry with this ID, if it has one, and
/// its name.
void finish_entry(session &work, const std::string &id, const std::string &name, const char *done);

}  // namespace twctl
