#include "server.hpp"

#include <fmt/format.h>
#include <poll.h>
#include <sys/signalfd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <stdexcept>
#include <vector>

#include "log.hpp"

namespace searchd {

namespace {

descriptor end_signals() {
  sigset_t set;
  sigemptyset(&set);
  sigaddset(&set, SIGTERM);
  sigaddset(&set, SIGINT);
  sigprocmask(SIG_BLOCK, &set, nullptr);
  descriptor signals(signalfd(-1, &set, SFD_CLOEXEC | SFD_NONBLOCK));
  if (signals.get() < 0) throw std::runtime_error(std::strerror(errno));
  return signals;
}

}  // namespace

server::server(const options &opts)
    : opts_(opts), service_(opts_), listener_(opts_.socket), signals_(end_signals()) {}

void server::run() {
  log(level::info, fmt::format("serving the store \"{}\" on \"{}\"", opts_.store, opts_.socket));
  std::vector<pollfd> events;
  for (;;) {
    // With all places taken, further clients wait in the socket's queue.
    const bool room = clients_.size() < opts_.max_clients;
    events.assign({{signals_.get(), POLLIN, 0}, {room ? listener_.fd() : -1, POLLIN, 0}});
    for (const connection &client : clients_) events.push_back({client.fd(), client.events(), 0});
    if (poll(events.data(), events.size(), time_left()) < 0 && errno != EINTR)
      throw std::runtime_error(std::strerror(errno));
    if (events[0].revents != 0) break;

    const clock::time_point now = clock::now();
    std::size_t i = 2;
    for (auto client = clients_.begin(); client != clients_.end(); ++i) {
      const bool stays = events[i].revents != 0 ? client->advance(service_, now) : now < client->deadline();
      client = stays ? std::next(client) : clients_.erase(client);
    }
    if (events[1].revents != 0) take_clients();
  }
  log(level::info, "ending");
}

void server::take_clients() {
  while (clients_.size() < opts_.max_clients) {
    descriptor client = listener_.accept();
    if (client.get() < 0) return;  // none left, or one that was turned away: the loop comes back for the rest
    clients_.emplace_back(std::move(client), opts_, clock::now());
  }
}

// Milliseconds for poll(), rounded up: until the first deadline; -1 without clients.
int server::time_left() const {
  if (clients_.empty()) return -1;
  const auto first =
      std::min_element(clients_.begin(), clients_.end(),
                       [](const connection &a, const connection &b) { return a.deadline() < b.deadline(); });
  const auto left = std::chrono::ceil<std::chrono::milliseconds>(first->deadline() - clock::now()).count();
  return static_cast<int>(std::clamp<decltype(left)>(left, 0, 60'000));
}

}  // namespace searchd
