// The engine that keeps its store in a directory, on LMDB.
#include <utility>

#include "engine/engine.hpp"
#include "engine/lmdb.hpp"
#include "engine/lmdb_commit.hpp"
#include "engine/lmdb_environment.hpp"
#include "engine/lmdb_files.hpp"
#include "engine/lmdb_pages.hpp"
#include "engine/lmdb_snapshot.hpp"
#include "engine/records.hpp"
#include "engine/registry.hpp"

namespace twcfg {
namespace {

class LmdbEngine final : public Engine, public std::enable_shared_from_this<LmdbEngine> {
 public:
  explicit LmdbEngine(std::unique_ptr<LmdbEnvironment> environment) : environment_(std::move(environment)) {}

  std::unique_ptr<Snapshot> snapshot(Failure &failure) override { return view(failure); }

  std::uint64_t newest(Failure &failure) override { return environment_->newest(failure); }

  CommitResult commit(const Commit &commit) override {
    CommitResult result;
    if ((result.failure = environment_->refused())) return result;
    if (environment_->read_only()) {
      result.failure = {CFG_E_READ_ONLY,
                        environment_->files().directory + ": could be opened for reading only"};
      return result;
    }
    return commit_to(*environment_, commit);
  }

  Failure status(cfg_status_info &out) override {
    Failure failure;
    const auto snapshot = view(failure);
    if (!snapshot) return failure;
    out = {};
    out.engine = "lmdb";
    out.revision = snapshot->revision();
    out.oldest_log = snapshot->oldest_log();
    MDB_stat info{};
    mdb_stat(snapshot->txn(), kTree, &info);
    const std::uint64_t pages = info.ms_branch_pages + info.ms_leaf_pages + info.ms_overflow_pages;
    out.used_bytes = pages * info.ms_psize;
    out.records = snapshot->guarded([&] {
      LmdbTable table(snapshot->txn());
      return count_values(table, info.ms_entries);
    });
    if ((failure = snapshot->failure())) return failure;
    return environment_->status(snapshot->reader(), out);
  }

  // The pages come first: walking damaged ones through LMDB would end the process.
  Failure verify(const Problem &problem) override {
    bool sound = true;
    const Problem report = [&](const std::string &where, const std::string &what) {
      sound = false;
      problem(where, what);
    };
    Failure failure = environment_->check_pages(report);
    if (failure || !sound) return failure;
    const auto snapshot = view(failure);
    if (!snapshot) return failure;
    snapshot->guarded([&] {
      LmdbTable table(snapshot->txn());
      check_records(table, report);
      return true;
    });
    return snapshot->failure();
  }

  Failure compact(const std::string &path) override {
    Failure failure;
    const auto snapshot = view(failure);
    if (!snapshot) return failure;
    LmdbTable table(snapshot->txn());
    return make_store_copy(path, &table);
  }

  void clear_dead_readers() override { environment_->clear_dead_readers(); }

 private:
  std::unique_ptr<LmdbSnapshot> view(Failure &failure) {
    // The snapshot keeps the whole engine: the environment must be closed before the files are opened again.
    auto snapshot = std::make_unique<LmdbSnapshot>(
        std::shared_ptr<LmdbEnvironment>(shared_from_this(), environment_.get()));
    if ((failure = snapshot->begin())) return nullptr;
    return snapshot;
  }

  const std::unique_ptr<LmdbEnvironment> environment_;
};

// Made when the library is loaded: a child that is forked while another thread makes it would wait for that
// thread for ever. Never destroyed: handles may be closed by destructors that run at exit.
using Engines = Registry<FileId, LmdbEngine>;
alignas(Engines) char place[sizeof(Engines)];
Engines &engines = *new (place) Engines;

}  // namespace

std::shared_ptr<Engine> open_lmdb_within(const std::string &path, unsigned options, std::size_t largest_map,
                                         Failure &failure) {
  failure = {};
  StoreFiles files;
  if ((failure = find_store(path, options, files))) return nullptr;
  return engines.get(files.id, [&]() -> std::unique_ptr<LmdbEngine> {
    auto environment = LmdbEnvironment::open(files, options, largest_map, failure);
    return environment ? std::make_unique<LmdbEngine>(std::move(environment)) : nullptr;
  });
}

std::shared_ptr<Engine> open_lmdb(const std::string &path, unsigned options, Failure &failure) {
  return open_lmdb_within(path, options, kLargestMap, failure);
}

}  // namespace twcfg
