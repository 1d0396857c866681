#include "engine/lmdb_table.hpp"

#include <cstring>

#include "engine/lmdb_error.hpp"

namespace twcfg {
namespace {

MDB_val key_of(std::uint64_t &slot) { return {sizeof slot, &slot}; }

std::string_view view(const MDB_val &value) {
  return {static_cast<const char *>(value.mv_data), value.mv_size};
}

}  // namespace

std::optional<std::string_view> LmdbTable::get(std::uint64_t slot) {
  MDB_val key = key_of(slot);
  MDB_val value{};
  const int code = mdb_get(txn_, kTree, &key, &value);
  if (code == MDB_NOTFOUND) return std::nullopt;
  check(code);
  return view(value);
}

std::optional<Table::Entry> LmdbTable::seek(std::uint64_t at_least) { return move(at_least, MDB_SET_RANGE); }

std::optional<Table::Entry> LmdbTable::step() { return move(0, MDB_NEXT); }

std::optional<Table::Entry> LmdbTable::last() { return move(0, MDB_LAST); }

std::optional<Table::Entry> LmdbTable::move(std::uint64_t slot, MDB_cursor_op operation) {
  if (!cursor_) {
    MDB_cursor *cursor = nullptr;
    check(mdb_cursor_open(txn_, kTree, &cursor));
    cursor_.reset(cursor);
  }
  MDB_val key = key_of(slot);
  MDB_val value{};
  const int code = mdb_cursor_get(cursor_.get(), &key, &value, operation);
  if (code == MDB_NOTFOUND) return std::nullopt;
  check(code);
  if (key.mv_size != sizeof slot) throw LmdbError{MDB_CORRUPTED};
  Entry entry{0, view(value)};
  std::memcpy(&entry.slot, key.mv_data, sizeof entry.slot);
  return entry;
}

void LmdbTable::put(std::uint64_t slot, std::initializer_list<std::string_view> parts) {
  store(slot, parts, 0);
}

void LmdbTable::append(std::uint64_t slot, std::initializer_list<std::string_view> parts) {
  store(slot, parts, MDB_APPEND);
}

void LmdbTable::store(std::uint64_t slot, std::initializer_list<std::string_view> parts, unsigned flags) {
  MDB_val key = key_of(slot);
  MDB_val value{};
  for (const auto part : parts) value.mv_size += part.size();
  check(mdb_put(txn_, kTree, &key, &value, flags | MDB_RESERVE));
  char *to = static_cast<char *>(value.mv_data);
  for (const auto part : parts)
    if (!part.empty()) to = static_cast<char *>(std::memcpy(to, part.data(), part.size())) + part.size();
}

void LmdbTable::erase(std::uint64_t slot) {
  MDB_val key = key_of(slot);
  const int code = mdb_del(txn_, kTree, &key, nullptr);
  if (code != MDB_NOTFOUND) check(code);
}

}  // namespace twcfg
