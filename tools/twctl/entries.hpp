// What the nouns for named entries of the store have in common: names, FIELD=VALUE, confirming, reporting.
#pragma once

#include <initializer_list>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "session.hpp"

namespace twctl {

/// Fails with exit code 5 unless the text is fit for a name: 1 to 255 bytes of UTF-8 without control
/// characters. `what` is what the message calls it.
void require_label(const std::string &text, const std::string &what);

/// Splits "NAME=VALUE" at its first '='; fails with exit code 2 without one. `form` and `example` are for the
/// message.
std::pair<std::string, std::string> split_pair(const std::string &text, const std::string &form,
                                               const std::string &example);

/**
 * Reads FIELD=VALUE arguments. Fails with exit code 2 for a field that is none of `fields`, a field that is
 * given twice, and when there are no arguments and `may_be_none` is false.
 */
std::map<std::string, std::string> read_assignments(const std::vector<std::string> &texts,
                                                    std::initializer_list<const char *> fields,
                                                    bool may_be_none = false);

/// yes or no, as every command spells it; fails with exit code 5 for anything else.
bool require_truth(const std::string &text, const std::string &what);

/// Asks whether `what` is to be deleted, unless --yes or --dry-run; fails with exit code 1 when it is not.
void confirm_delete(const options &opts, const std::string &what);

/// Commits the edit and reports it: what was done ("Created") to the entry with this ID, and its name.
void finish_entry(session &work, const std::string &id, const std::string &name, const char *done);

}  // namespace twctl
