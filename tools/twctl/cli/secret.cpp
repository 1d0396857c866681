#include "cli/secret.hpp"

#include <fcntl.h>
#include <fmt/format.h>
#include <openssl/crypto.h>
#include <sys/stat.h>
#include <termios.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstring>
#include <memory>
#include <utility>

#include "cli/failure.hpp"
#include "cli/text.hpp"

namespace twctl {

namespace {

constexpr size_t password_limit = 1024;

class descriptor {
 public:
  explicit descriptor(int number) : number_(number) {}
  ~descriptor() {
    if (number_ > STDERR_FILENO) close(number_);
  }
  descriptor(const descriptor &) = delete;
  descriptor &operator=(const descriptor &) = delete;
  int get() const { return number_; }

 private:
  int number_;
};

/// The terminal whose echo is off, for the signal handler: there is never more than one.
int silenced_terminal = -1;
termios modes_before;

constexpr int deadly_signals[] = {SIGINT, SIGTERM, SIGQUIT, SIGHUP};

/// Dies of the signal, but not without giving the user the echo back.
void restore_and_die(int signal) {
  tcsetattr(silenced_terminal, TCSANOW, &modes_before);
  raise(signal);
}

/// Switches the terminal's echo off for its lifetime.
class silent_terminal {
 public:
  explicit silent_terminal(int terminal) {
    if (tcgetattr(terminal, &modes_before) != 0) throw system_failure("cannot ask for the password");
    silenced_terminal = terminal;
    struct sigaction action {};
    action.sa_handler = restore_and_die;
    action.sa_flags = static_cast<int>(SA_RESETHAND | SA_NODEFER);
    for (int signal : deadly_signals) sigaction(signal, &action, nullptr);
    termios silent = modes_before;
    silent.c_lflag &= ~static_cast<tcflag_t>(ECHO);
    if (tcsetattr(terminal, TCSAFLUSH, &silent) != 0) throw system_failure("cannot ask for the password");
  }
  ~silent_terminal() {
    tcsetattr(silenced_terminal, TCSAFLUSH, &modes_before);
    for (int signal : deadly_signals) std::signal(signal, SIG_DFL);
  }
  silent_terminal(const silent_terminal &) = delete;
  silent_terminal &operator=(const silent_terminal &) = delete;
};

void say(int terminal, std::string_view text) {
  while (!text.empty()) {
    ssize_t written = write(terminal, text.data(), text.size());
    if (written <= 0) return;
    text.remove_prefix(static_cast<size_t>(written));
  }
}

/// One line from a descriptor, without its line end, at most `limit` bytes.
secret read_line(int from, size_t limit) {
  secret line = secret::with_size(limit + 1);
  size_t length = 0;
  while (length <= limit) {
    ssize_t count = read(from, line.data() + length, 1);
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) throw system_failure("cannot read the password");
    if (count == 0 || line.data()[length] == '\n') {
      if (length > 0 && line.data()[length - 1] == '\r') length--;
      line.truncate(length);
      return line;
    }
    length++;
  }
  throw failure(exit_code::invalid_input, "the password is too long",
                fmt::format("a line of at most {} bytes is read", limit));
}

}  // namespace

secret secret::with_size(size_t size) {
  secret result;
  result.data_ = new char[size + 1]();
  result.size_ = result.room_ = size;
  return result;
}

secret::secret(std::string_view text) {
  if (text.empty()) return;
  *this = with_size(text.size());
  std::memcpy(data_, text.data(), text.size());
}

secret::secret(secret &&other) noexcept
    : data_(std::exchange(other.data_, nullptr)),
      size_(std::exchange(other.size_, 0)),
      room_(std::exchange(other.room_, 0)) {}

secret &secret::operator=(secret &&other) noexcept {
  std::swap(data_, other.data_);
  std::swap(size_, other.size_);
  std::swap(room_, other.room_);
  return *this;
}

secret::~secret() {
  if (data_) OPENSSL_cleanse(data_, room_);
  delete[] data_;
}

void secret::truncate(size_t size) {
  if (size >= size_) return;
  OPENSSL_cleanse(data_ + size, size_ - size);
  size_ = size;
}

secret read_file(const std::string &path, size_t limit) {
  std::string shown = printable(path);
  descriptor file(path == "-" ? STDIN_FILENO : open(path.c_str(), O_RDONLY | O_CLOEXEC));
  if (file.get() < 0) throw system_failure(fmt::format("cannot open '{}'", shown));
  // The buffer doubles by copying into a new one, so that every block that held file bytes is wiped.
  secret content = secret::with_size(64 * 1024);
  size_t length = 0;
  for (;;) {
    if (length == content.size()) {
      secret larger = secret::with_size(content.size() * 2);
      std::memcpy(larger.data(), content.data(), length);
      content = std::move(larger);
    }
    ssize_t count = read(file.get(), content.data() + length, content.size() - length);
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) throw system_failure(fmt::format("cannot read '{}'", shown));
    if (count == 0) break;
    length += static_cast<size_t>(count);
    if (length > limit)
      throw failure(exit_code::invalid_input, fmt::format("'{}' is too large", shown),
                    fmt::format("at most {} bytes are read", limit), "split the file");
  }
  content.truncate(length);
  return content;
}

secret read_password(const std::string &path, const std::string &prompt) {
  if (path == "-") return read_line(STDIN_FILENO, password_limit);
  if (!path.empty()) {
    descriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC));
    if (file.get() < 0)
      throw system_failure(fmt::format("cannot open the password file '{}'", printable(path)));
    return read_line(file.get(), password_limit);
  }
  descriptor terminal(open("/dev/tty", O_RDWR | O_CLOEXEC));
  if (terminal.get() < 0)
    throw failure(exit_code::usage, "a password is needed", "there is no terminal to ask for it",
                  "give --password-file FILE, or --password-file - for standard input");
  secret password;
  {
    silent_terminal silence(terminal.get());  // before the prompt: whoever sees it may start typing
    say(terminal.get(), prompt + ": ");
    password = read_line(terminal.get(), password_limit);
  }
  say(terminal.get(), "\n");
  return password;
}

bool confirm(const std::string &question) {
  if (!isatty(STDIN_FILENO))
    throw failure(exit_code::usage, "this needs a confirmation", "there is no terminal to ask on",
                  "add --yes");
  fmt::print(stderr, "{} [y/N] ", question);
  secret answer = read_line(STDIN_FILENO, 64);
  return parse_truth(answer.view()).value_or(lower(answer.view()) == "y");
}

}  // namespace twctl
