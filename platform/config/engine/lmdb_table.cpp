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

std::optional<Table::Entry> LmdbTable::last() { return move(0, MDB_LAST); }

void LmdbTable::open_cursor() {
  MDB_cursor *cursor = nullptr;
  check(mdb_cursor_open(txn_, kTree, &cursor));
  cursor_.reset(cursor);
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
