#include "child.hpp"

#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <stdexcept>

namespace trial {

bool Line::say(const std::string &message) {
  return send(descriptor_, message.data(), message.size(), MSG_NOSIGNAL) ==
         static_cast<ssize_t>(message.size());
}

bool Line::hear(std::string &message) {
  char buffer[4096];
  const ssize_t got = recv(descriptor_, buffer, sizeof buffer, 0);
  if (got <= 0) return false;
  message.assign(buffer, static_cast<size_t>(got));
  return true;
}

bool Line::wait() {
  std::string ignored;
  return hear(ignored);
}

namespace {

std::string outcome_of(const Child::Body &body, Line &parent) {
  try {
    return body(parent);
  } catch (const std::exception &problem) {
    return problem.what();
  }
}

[[noreturn]] void live_as_child(const Child::Body &body, int line, int result) {
  prctl(PR_SET_PDEATHSIG, SIGKILL);
  // Let a fault end the child as a signal, even where a sanitizer would catch it and print a report.
  for (int fault : {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGABRT}) std::signal(fault, SIG_DFL);
  Line parent(line);
  const std::string complaint = outcome_of(body, parent);
  size_t written = 0;
  while (written < complaint.size()) {
    const ssize_t step = write(result, complaint.data() + written, complaint.size() - written);
    if (step <= 0) _exit(2);
    written += static_cast<size_t>(step);
  }
  _exit(0);
}

}  // namespace

Child::Child(const Body &body) {
  int line[2], result[2];
  if (socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, line) != 0 || pipe2(result, O_CLOEXEC) != 0)
    throw std::runtime_error("no line to a child");
  std::fflush(nullptr);  // what is buffered must be printed once
  pid_ = fork();
  if (pid_ < 0) throw std::runtime_error("no child");
  if (pid_ == 0) {
    close(line[0]);
    close(result[0]);
    live_as_child(body, line[1], result[1]);
  }
  close(line[1]);
  close(result[1]);
  line_ = Line(line[0]);
  result_ = result[0];
}

Child::~Child() {
  if (pid_ > 0) {
    kill_now();
    finish();
  }
  close(line_.descriptor());
  close(result_);
}

void Child::kill_now() { ::kill(pid_, SIGKILL); }

std::string Child::finish() {
  std::string complaint;
  char buffer[4096];
  for (ssize_t got; (got = read(result_, buffer, sizeof buffer)) > 0;)
    complaint.append(buffer, static_cast<size_t>(got));
  int status = 0;
  const pid_t ended = waitpid(pid_, &status, 0);
  pid_ = -1;
  if (ended < 0) return "lost";
  if (WIFSIGNALED(status)) return "signal " + std::to_string(WTERMSIG(status));
  if (WEXITSTATUS(status) != 0) return "exit " + std::to_string(WEXITSTATUS(status));
  return complaint;
}

std::string in_child(const std::function<std::string()> &body) {
  return Child([&](Line &) {
           alarm(60);
           return body();
         })
      .finish();
}

}  // namespace trial
