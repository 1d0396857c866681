#include "searchd/searchd_process.hpp"

#include <sys/socket.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <twconfig/transport.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <memory>
#include <stdexcept>
#include <thread>

namespace searchd_tests {

namespace {

int connected(const std::string &path) {
  const int fd = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  path.copy(address.sun_path, sizeof address.sun_path - 1);
  if (connect(fd, reinterpret_cast<const sockaddr *>(&address), sizeof address) == 0) return fd;
  close(fd);
  return -1;
}

struct Release {
  void operator()(json_t *json) const { json_decref(json); }
};
using Json = std::unique_ptr<json_t, Release>;

Json parsed(const std::string &text) { return Json(json_loads(text.c_str(), JSON_DECODE_ANY, nullptr)); }

}  // namespace

Searchd::Searchd(const std::string &store, const std::string &socket, const Options &options)
    : socket_(socket) {
  Options all = {SEARCHD, "--store", store, "--socket", socket};
  all.insert(all.end(), options.begin(), options.end());
  std::vector<char *> arguments;
  for (std::string &option : all) arguments.push_back(option.data());
  arguments.push_back(nullptr);
  pid_ = fork();
  if (pid_ == 0) {
    setenv("TWLOG_LEVEL", "2", 1);
    execv(SEARCHD, arguments.data());
    _exit(127);
  }
  // One that could not have its socket ends; whoever is listening there then is somebody else.
  while (runs()) {
    if (const int fd = connected(socket_); fd >= 0) {
      ucred peer{};
      socklen_t size = sizeof peer;
      getsockopt(fd, SOL_SOCKET, SO_PEERCRED, &peer, &size);
      close(fd);
      if (peer.pid == pid_) return;
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
  }
}

Searchd::~Searchd() {
  if (pid_ > 0) end(SIGTERM);
}

bool Searchd::runs() {
  if (pid_ <= 0) return false;
  if (waitpid(pid_, &status_, WNOHANG) == 0) return true;
  pid_ = -1;
  return false;
}

int Searchd::end(int signal) {
  if (pid_ > 0) kill(pid_, signal);
  return wait();
}

int Searchd::wait() {
  if (pid_ > 0) waitpid(pid_, &status_, 0);
  pid_ = -1;
  return WIFSIGNALED(status_) ? -WTERMSIG(status_) : WEXITSTATUS(status_);
}

Client::Client(const std::string &path, bool hello) : fd_(connected(path)) {
  if (fd_ < 0) throw std::runtime_error("nobody listens at " + path);
  if (hello && ask(R"({"method":"hello","data":{"client_name":"test-1"}})") != R"({"result":true,"data":{}})")
    throw std::runtime_error("no greeting");
}

Client::~Client() { close(fd_); }

std::string Client::ask(const std::string &request) {
  send_bytes(framed(request));
  return receive();
}

std::string Client::search(const std::string &object, const std::string &conditions) {
  const std::string reply =
      ask(R"({"method":"search","data":{"object":")" + object + R"(","conditions":)" + conditions + "}}");
  const Json json = parsed(reply);
  const char *id = json_string_value(json_object_get(json_object_get(json.get(), "data"), "id"));
  return id ? id : reply;
}

std::string Client::find(const std::string &object, const std::string &conditions) {
  const std::string id = search(object, conditions);
  if (id.starts_with("{")) return id;
  const Json reply = parsed(ask(R"({"method":"get","data":{"id":")" + id + R"(","offset":0,"limit":0}})"));
  std::string all;
  const json_t *items = json_object_get(json_object_get(reply.get(), "data"), "items");
  for (std::size_t i = 0; i < json_array_size(items); ++i)
    all += (all.empty() ? "" : " ") + std::string(json_string_value(json_array_get(items, i)));
  return all;
}

void Client::send_bytes(const std::string &bytes) const {
  for (std::size_t done = 0; done < bytes.size();) {
    const ssize_t moved = ::send(fd_, bytes.data() + done, bytes.size() - done, MSG_NOSIGNAL);
    if (moved <= 0) return;
    done += static_cast<std::size_t>(moved);
  }
}

std::string Client::receive() const {
  const Json reply(cfg_receive(fd_));
  const std::unique_ptr<char, decltype(&std::free)> text(
      reply ? json_dumps(reply.get(), JSON_COMPACT | JSON_ENCODE_ANY) : nullptr, std::free);
  return text ? text.get() : "";
}

bool Client::closed_by_peer() const {
  char byte;
  return recv(fd_, &byte, 1, 0) <= 0;
}

std::string framed(const std::string &body) {
  std::string message;
  for (int shift = 24; shift >= 0; shift -= 8) message += static_cast<char>(body.size() >> shift & 0xff);
  return message + body;
}

}  // namespace searchd_tests
