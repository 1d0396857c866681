// How an engine's table is laid out: values, the commit log, the tokens of the commits in the log.
//
// The two top bits of a slot say what it holds. The log comes last, so that its newest entry, which tells the
// newest revision, is the last entry of the table: a commit writes the values it changes and one entry at the
// table's end, and dirties no further page.
#pragma once

#include <cstring>
#include <functional>
#include <string>

#include "engine/engine.hpp"
#include "engine/table.hpp"

namespace twcfg {

enum class Area : std::uint64_t { values = 0, meta = 1, tokens = 2, log = 3 };

constexpr std::uint64_t slot_of(Area area, std::uint64_t number) {
  return static_cast<std::uint64_t>(area) * kKeyLimit + number;
}
constexpr Area area_of(std::uint64_t slot) { return static_cast<Area>(slot / kKeyLimit); }
constexpr std::uint64_t number_of(std::uint64_t slot) { return slot % kKeyLimit; }

// A number as it is stored: eight bytes in the machine's order.
std::string_view bytes_of(const std::uint64_t &number);

// A value is its revision followed by its bytes.
inline std::optional<Stored> decode_value(std::string_view record) {
  Stored stored;
  if (record.size() < sizeof stored.revision) return std::nullopt;
  std::memcpy(&stored.revision, record.data(), sizeof stored.revision);
  stored.bytes = record.substr(sizeof stored.revision);
  return stored;
}

// A log entry is the token's length in two bytes, the token, and the text.
struct LogEntry {
  std::string_view token;
  std::string_view text;
};

std::uint64_t newest_revision(Table &table);
std::uint64_t oldest_log(Table &table);
std::optional<LogEntry> read_log(Table &table, std::uint64_t revision);
std::uint64_t find_token(Table &table, std::string_view token);

// How many of the table's `entries` are values.
std::uint64_t count_values(Table &table, std::uint64_t entries);

// The rules of a commit. Changes the table only when the result is neither stale nor repeated nor a failure;
// what a table throws passes through.
CommitResult apply_commit(WritableTable &table, const Commit &commit);

// Checks that every record has its form and that log, tokens and revisions agree.
void check_records(Table &table, const Engine::Problem &problem);

}  // namespace twcfg
