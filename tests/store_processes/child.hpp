// A process forked off a test.
#pragma once

#include <sys/types.h>

#include <functional>
#include <string>

namespace trial {

// One end of a line between a test and its child: whole messages, in order.
class Line {
 public:
  explicit Line(int descriptor = -1) : descriptor_(descriptor) {}
  // False when the other end is gone.
  bool say(const std::string &message);
  // Waits for the next message; false when the other end is gone and nothing is left to hear.
  bool hear(std::string &message);
  // Waits for the next message and forgets it.
  bool wait();
  int descriptor() const { return descriptor_; }

 private:
  int descriptor_;
};

// The body runs in the child and returns "" when all is well, else a complaint; what it throws is one too.
// A store must be opened in the body: handles that the test has open belong to the test's process.
class Child {
 public:
  using Body = std::function<std::string(Line &parent)>;
  explicit Child(const Body &body);
  // Kills the child if it is still there.
  ~Child();
  Child(const Child &) = delete;
  Child &operator=(const Child &) = delete;

  pid_t pid() const { return pid_; }
  Line &line() { return line_; }
  void kill_now();
  // Waits for the end: "", the complaint, or how it ended instead ("signal 11", "exit 1").
  std::string finish();

 private:
  pid_t pid_ = -1;
  Line line_;
  int result_ = -1;
};

// Runs a body in a child to its end. One that takes longer than a minute is ended by signal 14.
std::string in_child(const std::function<std::string()> &body);

}  // namespace trial
