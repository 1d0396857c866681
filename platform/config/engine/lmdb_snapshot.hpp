// A view of one revision, read in place from the map.
#pragma once

#include <cerrno>
#include <memory>
#include <new>

#include "engine/lmdb_environment.hpp"
#include "engine/lmdb_error.hpp"
#include "engine/lmdb_table.hpp"

namespace twcfg {

class LmdbSnapshot final : public Snapshot {
 public:
  // `environment` keeps alive whatever must not be closed before the snapshot ends.
  explicit LmdbSnapshot(std::shared_ptr<LmdbEnvironment> environment);
  LmdbSnapshot(const LmdbSnapshot &) = delete;
  LmdbSnapshot &operator=(const LmdbSnapshot &) = delete;
  ~LmdbSnapshot() override;
  // To be called once, before anything else.
  Failure begin();

  std::uint64_t revision() const override { return reader_->revision; }
  Stored get(Key key) override;
  std::unique_ptr<Cursor> cursor() override;
  std::string_view log(std::uint64_t revision) override;
  std::uint64_t oldest_log() override;
  std::uint64_t find_token(std::string_view token) override;
  Failure failure() const override;

  MDB_txn *txn() const { return reader_->txn; }
  const LmdbEnvironment::Reader &reader() const { return *reader_; }
  // What `read` returns, or a value-initialised result when it cannot read. Memory that is short says nothing
  // about the store and is no failure of the snapshot.
  template <class Read>
  auto guarded(Read read) -> decltype(read()) {
    if (environment_->forked()) return {};
    try {
      return read();
    } catch (const LmdbError &error) {
      if (error.code == ENOMEM) throw std::bad_alloc();
      if (error_ == 0) error_ = error.code;
      return {};
    }
  }

 private:
  const std::shared_ptr<LmdbEnvironment> environment_;
  LmdbEnvironment::Reader *reader_ = nullptr;
  int error_ = 0;  // the first that a read ran into
};

}  // namespace twcfg
