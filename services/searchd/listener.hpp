// The socket that clients connect to.
#pragma once

#include <sys/types.h>

#include <string>

#include "descriptor.hpp"

namespace searchd {

// Its path may lie in a directory that everybody can write to. What is there already is replaced only when it
// is the socket of a server of the same user that is not running any more.
class listener {
 public:
  // Throws when the path cannot be had.
  explicit listener(std::string path);
  // Removes the socket, unless something else stands at its path by now.
  ~listener();
  listener(const listener &) = delete;
  listener &operator=(const listener &) = delete;

  int fd() const { return socket_.get(); }
  // The next client; none (-1) when there is none, or it is neither root nor of the same user.
  descriptor accept() const;

 private:
  void make_way() const;

  std::string path_;
  descriptor socket_;
  dev_t device_ = 0;
  ino_t inode_ = 0;
};

}  // namespace searchd
