// Writing files that hold secrets.
#pragma once

#include <string>
#include <string_view>

#include "cli/session.hpp"

namespace twctl {

/**
 * A new file with mode 0600 that appears under its name only when it is complete and on disk; it never
 * replaces anything, and a symbolic link under its name is not followed.
 */
class private_file {
 public:
  explicit private_file(const std::string &path);
  ~private_file();
  private_file(const private_file &) = delete;
  private_file &operator=(const private_file &) = delete;

  void write(std::string_view data);
  /// Puts the file under its name; without this call nothing is left of it.
  void publish();

 private:
  std::string path_, working_path_;
  int descriptor_ = -1;
};

void write_private_file(const std::string &path, std::string_view data);

/// Writes a private key of the store to such a file, and says so. Fails with exit code 3 when there is none.
void hand_out_key(const session &work, const std::string &path, std::string_view key);

}  // namespace twctl
