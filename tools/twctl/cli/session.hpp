// One command's work on the store: open, change, show, commit.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "cli/changes.hpp"
#include "cli/options.hpp"
#include "cli/output.hpp"
#include "cli/records.hpp"

namespace twctl {

/// What became of an edit.
struct outcome {
  bool dry_run = false;
  uint64_t revision = 0;  ///< the commit's revision; 0 when nothing was written
  std::vector<change> changes;
};

class session {
 public:
  enum class access { read, write, create };

  /**
   * Opens the store that the options name. With `create` a missing store is made; in a dry run an empty store
   * in memory then stands in for it, so that nothing is written.
   */
  session(const options &opts, access mode);

  cfg *store() const { return store_.get(); }
  const options &opts() const { return opts_; }

  /**
   * Shows the edit's changes (standard error) and commits them, or drops them in a dry run.
   * @param why the reason in the commit log, unless --reason gave another
   */
  outcome commit(const std::string &why);

  /**
   * Makes an edit and commits it; when another commit got in the way, drops it and makes it again on the
   * newest revision, up to `attempts` times in all. `edit` must not keep anything from one call to the next.
   */
  outcome commit_retrying(const std::function<void()> &edit, const std::string &why, unsigned attempts);

  /**
   * Prints the result of a command that writes: in a dry run the changes, else the sentence; for programs one
   * object with "dry_run", "revision", "change_count", in a dry run "changes", and the members of `details`.
   */
  void report(const outcome &result, const std::string &sentence, json_value details = nullptr) const;

  /// A remark for people on standard error; nothing with --quiet.
  void note(const std::string &text) const;

 private:
  outcome collect() const;
  void show(const outcome &edit) const;
  void hand_over(const std::string &why, outcome &edit);

  const options &opts_;
  store_handle store_;
};

/// The ID that a new element got from the commit (the provisional one before it).
std::string final_id(cfg *store, const std::string &id);

}  // namespace twctl
