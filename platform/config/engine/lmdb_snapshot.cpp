#include "engine/lmdb_snapshot.hpp"

#include "engine/records.hpp"

namespace twcfg {
namespace {

inline Stored checked_value(std::string_view record) {
  const auto stored = decode_value(record);
  if (!stored) throw LmdbError{MDB_CORRUPTED};
  return *stored;
}

class LmdbCursor final : public Cursor {
 public:
  explicit LmdbCursor(LmdbSnapshot &snapshot) : snapshot_(snapshot), table_(snapshot.txn()) {}
  bool seek(Key at_least) override {
    return at_least < kKeyLimit && settle([this, at_least] { return table_.seek(at_least); });
  }
  bool next() override {
    return value_ && settle([this] { return table_.step(); });
  }

 private:
  // Values lie below everything else in the table: the first entry that is no value ends the walk.
  template <class Move>
  bool settle(Move move) {
    value_ = {};
    return snapshot_.guarded([this, &move] {
      const auto entry = move();
      if (!entry || area_of(entry->slot) != Area::values) return false;
      key_ = number_of(entry->slot);
      value_ = checked_value(entry->bytes);
      return static_cast<bool>(value_);
    });
  }

  LmdbSnapshot &snapshot_;
  LmdbTable table_;
};

}  // namespace

LmdbSnapshot::LmdbSnapshot(std::shared_ptr<LmdbEnvironment> environment)
    : environment_(std::move(environment)) {}

LmdbSnapshot::~LmdbSnapshot() {
  if (reader_) environment_->end(reader_);
}

Failure LmdbSnapshot::begin() {
  Failure failure;
  reader_ = environment_->begin(failure);
  return failure;
}

Stored LmdbSnapshot::get(Key key) {
  return guarded([this, key] {
    const auto record = key < kKeyLimit ? LmdbTable(txn()).get(slot_of(Area::values, key)) : std::nullopt;
    return record ? checked_value(*record) : Stored{};
  });
}

std::unique_ptr<Cursor> LmdbSnapshot::cursor() { return std::make_unique<LmdbCursor>(*this); }

std::string_view LmdbSnapshot::log(std::uint64_t revision) {
  return guarded([this, revision] {
    LmdbTable table(txn());
    const auto entry = read_log(table, revision);
    return entry ? entry->text : std::string_view();
  });
}

std::uint64_t LmdbSnapshot::oldest_log() {
  return guarded([this] {
    LmdbTable table(txn());
    return twcfg::oldest_log(table);
  });
}

std::uint64_t LmdbSnapshot::find_token(std::string_view token) {
  return guarded([this, token] {
    LmdbTable table(txn());
    return twcfg::find_token(table, token);
  });
}

Failure LmdbSnapshot::failure() const {
  if (Failure refused = environment_->refused()) return refused;
  if (error_ == 0) return {};
  return lmdb_failure(error_, environment_->files().data(), "cannot be read");
}

}  // namespace twcfg
