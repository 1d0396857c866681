// Programs that run in the background for a store, known by a file that names their process.
#pragma once

#include <string>
#include <vector>

#include <sys/types.h>

namespace twctl {

class daemon_process {
 public:
  /// `directory` holds the files NAME.pid and NAME.log.
  daemon_process(const std::string &directory, const std::string &name);

  /// The running process that the file names; 0 when there is none.
  pid_t pid() const;
  const std::string &log_path() const { return log_path_; }

  /**
   * Starts `program` in a session of its own, without input, with its output in the log.
   * @param program a path, or a name that is looked up in $PATH
   */
  void start(const std::string &program, const std::vector<std::string> &arguments);
  /// Asks it to end, waits until it has, and removes the file; kills it when it takes more than 10 seconds.
  /// @return whether it was running
  bool stop();

 private:
  std::string pid_path_, log_path_;
};

}  // namespace twctl
