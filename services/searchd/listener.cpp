#include "listener.hpp"

#include <fmt/format.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>

#include <cerrno>
#include <cstring>
#include <stdexcept>
#include <utility>

#include "log.hpp"

namespace searchd {

namespace {

constexpr int backlog = 512;

[[noreturn]] void give_up(const std::string &path, const std::string &why) {
  throw std::runtime_error(fmt::format("the socket \"{}\" cannot be had: {}", path, why));
}

sockaddr_un address_of(const std::string &path) {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  if (path.empty() || path.size() >= sizeof address.sun_path) give_up(path, "its path is empty or too long");
  path.copy(address.sun_path, path.size());
  return address;
}

descriptor new_socket(const std::string &path) {
  descriptor made(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
  if (made.get() < 0) give_up(path, std::strerror(errno));
  return made;
}

}  // namespace

listener::listener(std::string path) : path_(std::move(path)) {
  const sockaddr_un address = address_of(path_);
  make_way();
  descriptor made = new_socket(path_);
  // For us and root alone, from the first moment on.
  const mode_t before = umask(0177);
  const bool bound = bind(made.get(), reinterpret_cast<const sockaddr *>(&address), sizeof address) == 0;
  const int problem = errno;
  umask(before);
  if (!bound) give_up(path_, std::strerror(problem));
  struct stat there;
  if (listen(made.get(), backlog) != 0 || lstat(path_.c_str(), &there) != 0)
    give_up(path_, std::strerror(errno));
  device_ = there.st_dev;
  inode_ = there.st_ino;
  socket_ = std::move(made);
}

listener::~listener() {
  struct stat there;
  if (lstat(path_.c_str(), &there) == 0 && there.st_dev == device_ && there.st_ino == inode_)
    unlink(path_.c_str());
}

void listener::make_way() const {
  struct stat there;
  if (lstat(path_.c_str(), &there) != 0) {
    if (errno == ENOENT) return;
    give_up(path_, std::strerror(errno));
  }
  if (!S_ISSOCK(there.st_mode)) give_up(path_, "something that is no socket is there");
  if (there.st_uid != geteuid()) give_up(path_, fmt::format("a socket of user {} is there", there.st_uid));
  const sockaddr_un address = address_of(path_);
  const descriptor probe = new_socket(path_);
  if (connect(probe.get(), reinterpret_cast<const sockaddr *>(&address), sizeof address) == 0 ||
      errno == EAGAIN)
    give_up(path_, "another server is listening there");
  if (errno != ECONNREFUSED) give_up(path_, std::strerror(errno));
  log(level::notice, "removing the socket of a server that is gone");
  if (unlink(path_.c_str()) != 0) give_up(path_, std::strerror(errno));
}

descriptor listener::accept() const {
  descriptor client(accept4(fd(), nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK));
  if (client.get() < 0) return client;
  ucred peer{};
  socklen_t size = sizeof peer;
  if (getsockopt(client.get(), SOL_SOCKET, SO_PEERCRED, &peer, &size) == 0 &&
      (peer.uid == 0 || peer.uid == geteuid()))
    return client;
  log(level::warning, fmt::format("turned away process {} of user {}", peer.pid, peer.uid));
  return descriptor();
}

}  // namespace searchd
