#include "commit_log.hpp"

#include <cstring>

namespace twcfg {
namespace {

template <class T>
void put(std::string &out, T value) {
  out.append(reinterpret_cast<const char *>(&value), sizeof value);
}

void put_text(std::string &out, std::string_view text) {
  put(out, static_cast<std::uint16_t>(text.size()));
  out += text;
}

template <class T>
bool take(std::string_view &in, T &value) {
  if (in.size() < sizeof value) return false;
  std::memcpy(&value, in.data(), sizeof value);
  in.remove_prefix(sizeof value);
  return true;
}

bool take_text(std::string_view &in, std::string_view &text) {
  std::uint16_t length = 0;
  if (!take(in, length) || in.size() < length) return false;
  text = in.substr(0, length);
  in.remove_prefix(length);
  return true;
}

}  // namespace

std::string encode_commit(const LoggedCommit &commit) {
  std::string out;
  put(out, commit.time_ms);
  put_text(out, commit.who);
  put_text(out, commit.why);
  put_text(out, commit.token);
  return out;
}

void add_change(std::string &entry, const LoggedChange &change) {
  entry += change.op;
  put_text(entry, change.path);
}

bool decode_commit(std::string_view bytes, LoggedCommit &commit) {
  commit.changes.clear();
  if (!take(bytes, commit.time_ms) || !take_text(bytes, commit.who) || !take_text(bytes, commit.why) ||
      !take_text(bytes, commit.token)) {
    return false;
  }
  while (!bytes.empty()) {
    LoggedChange change{bytes.front(), {}};
    bytes.remove_prefix(1);
    if (!take_text(bytes, change.path)) return false;
    commit.changes.push_back(change);
  }
  return true;
}

}  // namespace twcfg
