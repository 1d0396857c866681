#include "cli/files.hpp"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>

#include "cli/failure.hpp"
#include "cli/text.hpp"

namespace twctl {

private_file::private_file(const std::string &path) : path_(path), working_path_(path + ".XXXXXX") {
  struct stat there;
  if (lstat(path.c_str(), &there) == 0)
    throw failure(exit_code::conflict, fmt::format("'{}' exists already", printable(path)), "",
                  "choose another name or remove it first");
  descriptor_ = mkostemp(working_path_.data(), O_CLOEXEC);  // made with mode 0600
  if (descriptor_ < 0) throw system_failure(fmt::format("cannot create '{}'", printable(path)));
}

private_file::~private_file() {
  if (descriptor_ >= 0) close(descriptor_);
  if (!working_path_.empty()) unlink(working_path_.c_str());
}

void private_file::write(std::string_view data) {
  while (!data.empty()) {
    ssize_t written = ::write(descriptor_, data.data(), data.size());
    if (written < 0 && errno == EINTR) continue;
    if (written < 0) throw system_failure(fmt::format("cannot write '{}'", printable(path_)));
    data.remove_prefix(static_cast<size_t>(written));
  }
}

void private_file::publish() {
  // link() rather than rename(): it refuses to replace a file that has appeared meanwhile.
  if (fsync(descriptor_) != 0 || link(working_path_.c_str(), path_.c_str()) != 0)
    throw system_failure(fmt::format("cannot write '{}'", printable(path_)));
}

void write_private_file(const std::string &path, std::string_view data) {
  private_file file(path);
  file.write(data);
  file.publish();
}

void hand_out_key(const session &work, const std::string &path, std::string_view key) {
  if (key.empty()) throw failure(exit_code::not_found, "there is no private key in the store");
  if (work.opts().dry_run)
    return work.note(fmt::format("Dry run: the private key would be written to '{}'.", printable(path)));
  write_private_file(path, key);
  work.note(fmt::format("Wrote the private key to '{}', readable by you alone.", printable(path)));
}

}  // namespace twctl
