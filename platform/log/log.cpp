#include <twlog.h>

#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <mutex>

#include "journal.hpp"
#include "line.hpp"

namespace {

constexpr int kInformation = 6;
constexpr int kDebug = 7;

int level_from_environment() noexcept {
  const char *level = secure_getenv("TWLOG_LEVEL");
  const bool digit = level && level[0] >= '0' && level[0] <= '7' && level[1] == '\0';
  return digit ? level[0] - '0' : kInformation;
}

const twlog::JournalStream journal_stream(secure_getenv("JOURNAL_STREAM"));
std::atomic<int> max_priority{level_from_environment()};
std::atomic<std::uint64_t> dropped{0};

// The sink is called under the mutex: one call at a time, and none any more once it has been replaced.
std::mutex sink_mutex;
std::atomic<twlog_sink> current_sink{nullptr};
void *sink_context = nullptr;
thread_local bool inside_sink = false;

class KeepErrno {
 public:
  KeepErrno() noexcept : value_(errno) {}
  ~KeepErrno() { errno = value_; }
  KeepErrno(const KeepErrno &) = delete;
  KeepErrno &operator=(const KeepErrno &) = delete;

 private:
  int value_;
};

// The message's text, cut to the limit between two characters.
class Message {
 public:
  Message(const char *format, va_list arguments) noexcept {
    const int wanted = std::vsnprintf(text_.data(), text_.size(), format, arguments);
    if (wanted < 0) std::strcpy(text_.data(), "(a message that cannot be formatted)");
    length_ = std::strlen(text_.data());
    if (wanted >= static_cast<int>(text_.size())) mark_cut();
    while (length_ > 0 && (text_[length_ - 1] == '\n' || text_[length_ - 1] == '\r')) text_[--length_] = '\0';
  }
  std::string_view text() const { return {text_.data(), length_}; }

 private:
  static bool continues_character(char byte) { return (static_cast<unsigned char>(byte) & 0xc0) == 0x80; }
  void mark_cut() noexcept {
    length_ = TWLOG_MESSAGE_MAX - 3;
    for (int steps = 0; steps < 3 && continues_character(text_[length_]); ++steps) --length_;
    std::strcpy(text_.data() + length_, "...");
    length_ += 3;
  }
  std::array<char, TWLOG_MESSAGE_MAX + 1> text_;
  std::size_t length_ = 0;
};

twlog::Outcome give_to_sink(const twlog::Line &line) noexcept {
  if (inside_sink) return twlog::Outcome::dropped;
  const std::lock_guard lock(sink_mutex);
  const twlog_sink sink = current_sink;
  if (!sink) return twlog::Outcome::no_output;
  inside_sink = true;
  sink(sink_context, line.file.data(), line.function.data(), line.line, line.priority, line.message.data());
  inside_sink = false;
  return twlog::Outcome::written;
}

twlog::Outcome write_out(const twlog::Line &line) noexcept {
  if (line.priority > max_priority) return twlog::Outcome::written;
  if (journal_stream.is(STDERR_FILENO)) {
    const twlog::Outcome outcome = twlog::send_to_journal(twlog::kJournalSocket, line);
    if (outcome != twlog::Outcome::no_output) return outcome;
  }
  return twlog::print(STDERR_FILENO, line);
}

}  // namespace

void twlog_log_prio_codepos(const char *file, const char *function, int line, int priority,
                            const char *format, ...) noexcept {
  const KeepErrno keep_errno;
  const bool to_sink = current_sink != nullptr;
  priority = std::clamp(priority, 0, kDebug);
  if (!format || (!to_sink && priority > max_priority)) return;

  va_list arguments;
  va_start(arguments, format);
  const Message message(format, arguments);
  va_end(arguments);
  const twlog::Line entry{file ? file : "", function ? function : "", line, priority, message.text()};

  twlog::Outcome outcome = to_sink ? give_to_sink(entry) : twlog::Outcome::no_output;
  if (outcome == twlog::Outcome::no_output) outcome = write_out(entry);
  if (outcome == twlog::Outcome::dropped) ++dropped;
}

int twlog_set_sink(twlog_sink sink, void *context) noexcept {
  if (inside_sink) return 0;
  const std::lock_guard lock(sink_mutex);
  sink_context = context;
  current_sink = sink;
  return 1;
}

void twlog_set_max_priority(int priority) noexcept { max_priority = std::clamp(priority, -1, kDebug); }

std::uint64_t twlog_dropped(void) noexcept { return dropped; }
