// The commit log: what each commit leaves behind.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace twcfg {

struct LoggedChange {
  char op;  // '+' added, '-' removed, '=' set
  std::string_view path;
};

struct LoggedCommit {
  std::int64_t time_ms = 0;
  std::string_view who, why, token;
  std::vector<LoggedChange> changes;
};

// The start of an entry, and what follows for each change; `commit.changes` is not looked at.
std::string encode_commit(const LoggedCommit &commit);
void add_change(std::string &entry, const LoggedChange &change);
// False when the bytes are no log entry. The texts are borrowed from the bytes.
bool decode_commit(std::string_view bytes, LoggedCommit &commit);

}  // namespace twcfg
