// How twctl fails: one exception that says what, why and what to do, and the exit codes that scripts rely on.
#pragma once

#include <exception>
#include <string>

#include <twconfig.h>

namespace twctl {

/// Exit codes of the program. Scripts depend on the numbers: never renumber.
enum class exit_code : int {
  ok = 0,
  failure = 1,         ///< something broke that the caller did not cause: input/output, damage, memory
  usage = 2,           ///< the command line makes no sense, or an answer is needed and nobody can be asked
  not_found = 3,       ///< the store, node, certificate, setting or file does not exist
  conflict = 4,        ///< it exists already, or another commit got in the way
  invalid_input = 5,   ///< a value or a file does not have the form it must have, or is too large
  no_access = 6,       ///< no permission, or no space
  outcome_unknown = 7  ///< a commit was handed over and nobody knows whether it took effect
};

/// The constant name of an exit code, as the JSON error object spells it.
const char *name_of(exit_code code);

class failure : public std::exception {
 public:
  failure(exit_code code, std::string what, std::string why = {}, std::string hint = {});

  exit_code code() const { return code_; }
  const char *what() const noexcept override { return what_.c_str(); }
  const std::string &why() const { return why_; }
  const std::string &hint() const { return hint_; }

 private:
  exit_code code_;
  std::string what_, why_, hint_;
};

/// The exit code that stands for a code of the store.
exit_code exit_code_of(cfg_code code);

/// What a failed call on the store means for the user. `what` says what was being tried.
failure store_failure(const cfg *store, std::string what);
failure store_failure(cfg_code code, const char *text, std::string what);

/// The same for a failed system call, from errno.
failure system_failure(std::string what);

}  // namespace twctl
