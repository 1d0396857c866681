#include "engine/records.hpp"

#include <cstring>

namespace twcfg {
namespace {

constexpr std::size_t kNumber = sizeof(std::uint64_t);

std::uint64_t number_at(std::string_view bytes, std::size_t offset) {
  std::uint64_t number = 0;
  std::memcpy(&number, bytes.data() + offset, kNumber);
  return number;
}

std::optional<LogEntry> decode_log(std::string_view record) {
  std::uint16_t length = 0;
  if (record.size() < sizeof length) return std::nullopt;
  std::memcpy(&length, record.data(), sizeof length);
  record.remove_prefix(sizeof length);
  if (record.size() < length) return std::nullopt;
  return LogEntry{record.substr(0, length), record.substr(length)};
}

void append_log(WritableTable &table, std::uint64_t revision, const Commit &commit) {
  const auto length = static_cast<std::uint16_t>(commit.token.size());
  char head[sizeof length];
  std::memcpy(head, &length, sizeof length);
  table.append(slot_of(Area::log, revision), {{head, sizeof head}, commit.token, commit.log});
}

// The tokens of one hash share a slot, which holds the revisions of their commits.
std::uint64_t token_slot(std::string_view token) {
  std::uint64_t hash = 0xcbf29ce484222325U;  // FNV-1a
  for (const char c : token) hash = (hash ^ static_cast<unsigned char>(c)) * 0x100000001b3U;
  return slot_of(Area::tokens, number_of(hash));
}

void add_token(WritableTable &table, std::string_view token, std::uint64_t revision) {
  if (token.empty()) return;
  const std::uint64_t slot = token_slot(token);
  const std::string others(table.get(slot).value_or(std::string_view()));
  table.put(slot, {others, bytes_of(revision)});
}

void remove_token(WritableTable &table, std::string_view token, std::uint64_t revision) {
  if (token.empty()) return;
  const std::uint64_t slot = token_slot(token);
  const std::string revisions(table.get(slot).value_or(std::string_view()));
  std::string others;
  for (std::size_t at = 0; at + kNumber <= revisions.size(); at += kNumber)
    if (number_at(revisions, at) != revision) others.append(revisions, at, kNumber);
  if (others.empty())
    table.erase(slot);
  else
    table.put(slot, {others});
}

// Old commits leave the log many at a time: their tokens lie scattered, and a commit now and then that
// changes all those pages is cheaper than one more page in every commit.
constexpr std::uint64_t kLogBatch = 512;

void prune_log(WritableTable &table, std::uint64_t newest) {
  const std::uint64_t oldest = oldest_log(table);
  if (newest - oldest + 1 < kLogKept + kLogBatch) return;
  for (std::uint64_t revision = oldest; revision + kLogKept <= newest; revision++) {
    if (const auto entry = read_log(table, revision))
      remove_token(table, std::string(entry->token), revision);
    table.erase(slot_of(Area::log, revision));
  }
}

Failure check_form(const Commit &commit) {
  if (commit.token.size() > kTokenLimit) return {CFG_E_LIMIT, "the commit's token is too long"};
  if (commit.log.size() > kBytesLimit) return {CFG_E_LIMIT, "the commit's log text is too long"};
  for (std::size_t i = 0; i < commit.writes.size(); i++) {
    const Write &write = commit.writes[i];
    if (write.key >= kKeyLimit) return {CFG_E_LIMIT, "a key is above what the engine can store"};
    if (write.bytes.size() > kBytesLimit) return {CFG_E_LIMIT, "a value is too long"};
    if (i > 0 && commit.writes[i - 1].key >= write.key)
      return {CFG_E_ARGUMENT, "the keys of a commit are not sorted"};
  }
  return {};
}

bool expectations_hold(Table &table, const std::vector<Write> &writes) {
  for (const Write &write : writes) {
    const auto record = table.get(slot_of(Area::values, write.key));
    const auto stored = record ? decode_value(*record) : Stored{};
    if (!stored || stored->revision != write.expected) return false;
  }
  return true;
}

// `stored` holds nothing for a record that is too short.
std::string value_problem(std::optional<Stored> stored, std::uint64_t newest) {
  if (!stored) return "the record is too short to hold a value";
  if (stored->revision == 0 || stored->revision > newest)
    return "its revision " + std::to_string(stored->revision) + " is not one of 1 to " +
           std::to_string(newest);
  return {};
}

std::string token_problem(Table &table, std::uint64_t slot, std::string_view revisions) {
  if (revisions.empty() || revisions.size() % kNumber != 0) return "the token record has a bad length";
  for (std::size_t at = 0; at < revisions.size(); at += kNumber) {
    const std::uint64_t revision = number_at(revisions, at);
    const auto entry = read_log(table, revision);
    if (!entry) return "the token of commit " + std::to_string(revision) + ", which is not in the log";
    if (token_slot(entry->token) != slot)
      return "the token record names commit " + std::to_string(revision) + ", which has another token";
  }
  return {};
}

std::string log_problem(Table &table, std::uint64_t revision, std::uint64_t previous,
                        std::string_view record) {
  if (previous != 0 && revision != previous + 1)
    return "the log has a gap behind commit " + std::to_string(previous);
  const auto entry = decode_log(record);
  if (!entry) return "the log entry is too short";
  if (!entry->token.empty() && find_token(table, entry->token) == 0)
    return "the commit's token cannot be looked up";
  return {};
}

const char *area_name(Area area) {
  switch (area) {
    case Area::values:
      return "value ";
    case Area::meta:
      return "meta ";
    case Area::tokens:
      return "token ";
    case Area::log:
      return "log ";
  }
  return "";
}

}  // namespace

std::string_view bytes_of(const std::uint64_t &number) {
  return {reinterpret_cast<const char *>(&number), kNumber};
}

std::uint64_t newest_revision(Table &table) {
  const auto last = table.last();
  return last && area_of(last->slot) == Area::log ? number_of(last->slot) : 0;
}

std::uint64_t oldest_log(Table &table) {
  const auto first = table.seek(slot_of(Area::log, 0));
  return first ? number_of(first->slot) : 0;
}

std::optional<LogEntry> read_log(Table &table, std::uint64_t revision) {
  if (revision >= kKeyLimit) return std::nullopt;
  const auto record = table.get(slot_of(Area::log, revision));
  return record ? decode_log(*record) : std::nullopt;
}

std::uint64_t find_token(Table &table, std::string_view token) {
  if (token.empty()) return 0;
  const auto revisions = table.get(token_slot(token));
  if (!revisions) return 0;
  for (std::size_t at = 0; at + kNumber <= revisions->size(); at += kNumber) {
    const std::uint64_t revision = number_at(*revisions, at);
    const auto entry = read_log(table, revision);
    if (entry && entry->token == token) return revision;
  }
  return 0;
}

std::uint64_t count_values(Table &table, std::uint64_t entries) {
  std::uint64_t others = 0;
  auto at = table.seek(slot_of(Area::meta, 0));
  for (; at && area_of(at->slot) != Area::log; at = table.seek(at->slot + 1)) others++;
  if (at) others += newest_revision(table) - number_of(at->slot) + 1;
  return entries - others;
}

CommitResult apply_commit(WritableTable &table, const Commit &commit) {
  CommitResult result;
  result.failure = check_form(commit);
  if (result.failure) return result;
  if (const std::uint64_t earlier = find_token(table, commit.token)) {
    result.revision = earlier;
    result.repeated = true;
    return result;
  }
  if (!expectations_hold(table, commit.writes)) {
    result.stale = true;
    return result;
  }
  result.revision = newest_revision(table) + 1;
  for (const Write &write : commit.writes) {
    const std::uint64_t slot = slot_of(Area::values, write.key);
    if (!write.remove)
      table.put(slot, {bytes_of(result.revision), write.bytes});
    else if (write.expected != 0)
      table.erase(slot);
  }
  append_log(table, result.revision, commit);
  add_token(table, commit.token, result.revision);
  prune_log(table, result.revision);
  return result;
}

void check_records(Table &table, const Engine::Problem &problem) {
  const std::uint64_t newest = newest_revision(table);
  std::uint64_t previous_log = 0;
  for (auto at = table.seek(0); at; at = table.seek(at->slot + 1)) {
    const Area area = area_of(at->slot);
    std::string what;
    if (area == Area::values) what = value_problem(decode_value(at->bytes), newest);
    if (area == Area::tokens) what = token_problem(table, at->slot, at->bytes);
    if (area == Area::log) {
      what = log_problem(table, number_of(at->slot), previous_log, at->bytes);
      previous_log = number_of(at->slot);
    }
    if (!what.empty()) problem(area_name(area) + std::to_string(number_of(at->slot)), what);
    if (at->slot == UINT64_MAX) break;
  }
}

}  // namespace twcfg
