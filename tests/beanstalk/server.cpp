#include "beanstalk/server.hpp"

#include <arpa/inet.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <cstring>
#include <stdexcept>

namespace queue {
namespace {

[[noreturn]] void fail(const std::string &what) {
  throw std::runtime_error(what + ": " + std::strerror(errno));
}

sockaddr *general(sockaddr_in &address) { return reinterpret_cast<sockaddr *>(&address); }

sockaddr_in loopback(uint16_t port) {
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_port = htons(port);
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  return address;
}

// The server takes over a socket that listens already, as the service manager hands it to services: nobody
// has to wait until it is up, and no other process can be faster in taking the port.
[[noreturn]] void become_server(int listening, const std::vector<std::string> &options) {
  prctl(PR_SET_PDEATHSIG, SIGKILL);
  if (listening != 3) dup2(listening, 3);
  fcntl(3, F_SETFD, 0);
  setenv("LISTEN_FDS", "1", 1);
  setenv("LISTEN_PID", std::to_string(getpid()).c_str(), 1);
  std::vector<char *> arguments;
  std::string name = "beanstalkd";
  arguments.push_back(name.data());
  for (const std::string &option : options) arguments.push_back(const_cast<char *>(option.c_str()));
  arguments.push_back(nullptr);
  execv(BEANSTALKD_PROGRAM, arguments.data());
  _exit(127);
}

}  // namespace

FixedPort::FixedPort() : lock_(open(QUEUE_PORT_LOCK, O_RDWR | O_CREAT | O_CLOEXEC, 0666)) {
  if (lock_ < 0 || flock(lock_, LOCK_EX) != 0) fail("the lock of port 11300");
}
FixedPort::~FixedPort() { close(lock_); }

int listen_on(uint16_t port) {
  const int listening = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  const int yes = 1;
  setsockopt(listening, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes);
  sockaddr_in address = loopback(port);
  if (bind(listening, general(address), sizeof address) != 0 || listen(listening, 64) != 0)
    fail("port " + std::to_string(port) + " of 127.0.0.1");
  return listening;
}

uint16_t port_of(int listening) {
  sockaddr_in address{};
  socklen_t size = sizeof address;
  if (getsockname(listening, general(address), &size) != 0) fail("the port of a socket");
  return ntohs(address.sin_port);
}

std::string send_raw(uint16_t port, const std::string &bytes) {
  const int connection = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  sockaddr_in address = loopback(port);
  if (connect(connection, general(address), sizeof address) != 0) fail("connecting");
  const std::string all = bytes + "quit\r\n";
  if (send(connection, all.data(), all.size(), MSG_NOSIGNAL) != static_cast<ssize_t>(all.size()))
    fail("sending");
  std::string answer;
  char buffer[4096];
  for (ssize_t got; (got = recv(connection, buffer, sizeof buffer, 0)) > 0;)
    answer.append(buffer, static_cast<size_t>(got));
  close(connection);
  return answer;
}

Server::Server(uint16_t port, const std::vector<std::string> &options) {
  const int listening = listen_on(port);
  port_ = port_of(listening);
  pid_ = fork();
  if (pid_ == 0) become_server(listening, options);
  close(listening);
  if (pid_ < 0) fail("fork");
}

Server::~Server() { stop(); }

void Server::stop() {
  if (pid_ <= 0) return;
  kill(pid_, SIGKILL);
  waitpid(pid_, nullptr, 0);
  pid_ = -1;
}

}  // namespace queue
