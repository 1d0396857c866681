#include "beanstalk/fake_server.hpp"

#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>

#include "beanstalk/server.hpp"

namespace queue {
namespace {

bool hear_more(int connection, std::string &heard) {
  char bytes[4096];
  const ssize_t got = recv(connection, bytes, sizeof bytes, 0);
  if (got > 0) heard.append(bytes, static_cast<size_t>(got));
  return got > 0;
}

std::ptrdiff_t line_ends(const std::string &text) { return std::count(text.begin(), text.end(), '\n'); }

bool say(int connection, const std::string &reply) {
  for (size_t said = 0; said < reply.size();) {
    const ssize_t step = send(connection, reply.data() + said, reply.size() - said, MSG_NOSIGNAL);
    if (step <= 0) return false;
    said += static_cast<size_t>(step);
  }
  return true;
}

}  // namespace

FakeServer::FakeServer(std::vector<Step> steps, Ending ending, uint16_t port)
    : listening_(listen_on(port)),
      port_(port_of(listening_)),
      thread_([this, steps = std::move(steps), ending] { serve(steps, ending); }) {}

FakeServer::~FakeServer() {
  if (thread_.joinable()) heard();
  close(listening_);
}

std::string FakeServer::heard() {
  shutdown(listening_, SHUT_RDWR);  // for a test in which nobody came
  if (thread_.joinable()) thread_.join();
  return heard_;
}

void FakeServer::serve(const std::vector<Step> &steps, Ending ending) {
  const int connection = accept(listening_, nullptr, nullptr);
  if (connection < 0) return;
  std::ptrdiff_t lines = 0;
  bool there = true;
  for (const Step &step : steps) {
    lines += step.lines;
    while (there && line_ends(heard_) < lines) there = hear_more(connection, heard_);
    if (there) there = say(connection, step.reply);
  }
  if (ending == Ending::close) shutdown(connection, SHUT_WR);
  while (there) there = hear_more(connection, heard_);
  close(connection);
}

}  // namespace queue
