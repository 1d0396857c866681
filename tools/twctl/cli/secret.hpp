// Passwords and files that hold them: kept in one place each, wiped when they are let go.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace twctl {

/// A text that is wiped from memory when it ends. It never moves its bytes and is never printed.
class secret {
 public:
  secret() = default;
  explicit secret(std::string_view text);
  /// Room for `size` bytes to be filled in by the caller.
  static secret with_size(size_t size);
  secret(secret &&other) noexcept;
  secret &operator=(secret &&other) noexcept;
  secret(const secret &other) : secret(other.view()) {}
  secret &operator=(const secret &other) {
    if (this != &other) *this = secret(other.view());
    return *this;
  }
  ~secret();

  bool empty() const { return size_ == 0; }
  size_t size() const { return size_; }
  char *data() { return data_; }
  const char *c_str() const { return data_ ? data_ : ""; }
  std::string_view view() const { return {c_str(), size_}; }
  /// Cuts the text to its first `size` bytes.
  void truncate(size_t size);

 private:
  char *data_ = nullptr;  ///< size_ bytes and a NUL
  size_t size_ = 0;
  size_t room_ = 0;
};

/// A whole file of at most `limit` bytes ("-": standard input).
secret read_file(const std::string &path, size_t limit);

/**
 * A password: the first line of the file `path` ("-": standard input), or, when no file is named, asked for
 * on the terminal without echo. Never taken from the command line, which every user of the machine can read.
 */
secret read_password(const std::string &path, const std::string &prompt);

/// Asks a yes-or-no question on the terminal. Without a terminal the command needs --yes and is refused.
bool confirm(const std::string &question);

}  // namespace twctl
