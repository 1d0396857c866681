// The journal's native protocol: one datagram of fields per line.
#pragma once

#include <cstdint>

#include "line.hpp"

namespace twlog {

inline constexpr const char *kJournalSocket = "/run/systemd/journal/socket";

// The stream that $JOURNAL_STREAM ("<device>:<inode>") names. Only what is printed to that very stream is
// read by the journal; a variable that was inherited says nothing about a stderr that has been redirected
// since.
class JournalStream {
 public:
  explicit JournalStream(const char *variable) noexcept;  // NULL: there is none
  bool is(int fd) const noexcept;

 private:
  std::uintmax_t device_ = 0, inode_ = 0;
  bool known_ = false;
};

// Sends the line to the journal's socket without waiting.
Outcome send_to_journal(const char *socket_path, const Line &line) noexcept;

}  // namespace twlog
