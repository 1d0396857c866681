// An LMDB transaction as a table. The store is one unnamed tree of integer keys.
#pragma once

#include <lmdb.h>

#include <cstring>
#include <memory>

#include "engine/lmdb_error.hpp"
#include "engine/table.hpp"

namespace twcfg {

// The only tree of the environment, opened with these flags by whoever opens the environment.
inline constexpr MDB_dbi kTree = 1;
inline constexpr unsigned kTreeFlags = MDB_INTEGERKEY;

struct CursorCloser {
  void operator()(MDB_cursor *cursor) const { mdb_cursor_close(cursor); }
};
using CursorPointer = std::unique_ptr<MDB_cursor, CursorCloser>;

// Throws LmdbError. Goes before its transaction.
class LmdbTable final : public WritableTable {
 public:
  explicit LmdbTable(MDB_txn *txn) : txn_(txn) {}

  std::optional<std::string_view> get(std::uint64_t slot) override;
  std::optional<Entry> seek(std::uint64_t at_least) override;
  std::optional<Entry> last() override;
  void put(std::uint64_t slot, std::initializer_list<std::string_view> parts) override;
  void append(std::uint64_t slot, std::initializer_list<std::string_view> parts) override;
  void erase(std::uint64_t slot) override;

  // The entry behind the one that seek() or step() returned last.
  std::optional<Entry> step() { return move(0, MDB_NEXT); }

 private:
  void open_cursor();
  // Here because a scan's steps are worth inlining.
  std::optional<Entry> move(std::uint64_t slot, MDB_cursor_op operation) {
    if (!cursor_) open_cursor();
    MDB_val key{sizeof slot, &slot};
    MDB_val value{};
    const int code = mdb_cursor_get(cursor_.get(), &key, &value, operation);
    if (code == MDB_NOTFOUND) return std::nullopt;
    check(code);
    if (key.mv_size != sizeof slot) throw LmdbError{MDB_CORRUPTED};
    Entry entry{0, {static_cast<const char *>(value.mv_data), value.mv_size}};
    std::memcpy(&entry.slot, key.mv_data, sizeof entry.slot);
    return entry;
  }
  void store(std::uint64_t slot, std::initializer_list<std::string_view> parts, unsigned flags);

  MDB_txn *txn_;
  CursorPointer cursor_;  // opened when first needed
};

}  // namespace twcfg
