#include "cli/failure.hpp"

#include <cerrno>
#include <cstring>
#include <utility>

namespace twctl {

const char *name_of(exit_code code) {
  switch (code) {
    case exit_code::ok:
      return "ok";
    case exit_code::failure:
      return "failure";
    case exit_code::usage:
      return "usage";
    case exit_code::not_found:
      return "not_found";
    case exit_code::conflict:
      return "conflict";
    case exit_code::invalid_input:
      return "invalid_input";
    case exit_code::no_access:
      return "no_access";
    case exit_code::outcome_unknown:
      return "outcome_unknown";
  }
  return "failure";
}

failure::failure(exit_code code, std::string what, std::string why, std::string hint)
    : code_(code), what_(std::move(what)), why_(std::move(why)), hint_(std::move(hint)) {}

exit_code exit_code_of(cfg_code code) {
  switch (code) {
    case CFG_OK:
      return exit_code::ok;
    case CFG_E_NOT_FOUND:
      return exit_code::not_found;
    case CFG_E_EXISTS:
    case CFG_E_CONFLICT:
      return exit_code::conflict;
    case CFG_E_ARGUMENT:
    case CFG_E_LIMIT:
    case CFG_E_FORMAT:
      return exit_code::invalid_input;
    case CFG_E_READ_ONLY:
    case CFG_E_PERMISSION:
    case CFG_E_NO_SPACE:
      return exit_code::no_access;
    case CFG_E_UNKNOWN:
      return exit_code::outcome_unknown;
    case CFG_E_IO:
    case CFG_E_CORRUPT:
    case CFG_E_VERSION:
    case CFG_E_MEMORY:
    case CFG_E_FORKED:
      return exit_code::failure;
  }
  return exit_code::failure;
}

namespace {

const char *hint_for(cfg_code code) {
  switch (code) {
    case CFG_E_CONFLICT:
      return "nothing was changed; look at what the other commit did and run this again";
    case CFG_E_PERMISSION:
      return "run as the user who owns the store; its directory must be private to that user";
    case CFG_E_NO_SPACE:
      return "nothing was changed; free disk space and run this again";
    case CFG_E_CORRUPT:
      return "run 'twctl store verify', and restore the last export if it confirms the damage";
    case CFG_E_VERSION:
      return "use the release of twctl that wrote this store, or a newer one";
    case CFG_E_UNKNOWN:
      return "run 'twctl store log' to see whether the commit is there before trying again";
    default:
      return "";
  }
}

}  // namespace

failure store_failure(cfg_code code, const char *text, std::string what) {
  std::string why = text && *text ? text : cfg_code_text(code);
  return failure(code == CFG_OK ? exit_code::failure : exit_code_of(code), std::move(what), std::move(why),
                 hint_for(code));
}

failure store_failure(const cfg *store, std::string what) {
  return store_failure(cfg_error_code(store), cfg_error_text(store), std::move(what));
}

failure system_failure(std::string what) {
  int error = errno;
  exit_code code = exit_code::failure;
  if (error == ENOENT) code = exit_code::not_found;
  if (error == EEXIST) code = exit_code::conflict;
  if (error == EACCES || error == EPERM || error == EROFS || error == ENOSPC || error == EDQUOT)
    code = exit_code::no_access;
  return failure(code, std::move(what), std::strerror(error));
}

}  // namespace twctl
