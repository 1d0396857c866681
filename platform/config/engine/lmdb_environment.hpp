// One store's LMDB environment: the only one of this process, shared by all its handles and threads.
#pragma once

#include <lmdb.h>

#include <atomic>
#include <cstdint>
#include <list>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "engine/engine.hpp"
#include "engine/fork_epoch.hpp"
#include "engine/lmdb_files.hpp"
#include "engine/lmdb_open.hpp"

namespace twcfg {

class LmdbEnvironment {
 public:
  // A read transaction, used again and again: beginning one takes no lock that other processes see.
  struct Reader {
    MDB_txn *txn = nullptr;
    std::uint64_t revision = 0;
    std::int64_t since_ms = 0;
    bool open = false;
  };

  // Checks the files, opens them and checks that they are the ones that were checked. For writing; when the
  // system does not allow that and `options` has CFG_OPEN_READ_ONLY, for reading.
  static std::unique_ptr<LmdbEnvironment> open(const StoreFiles &files, unsigned options,
                                               std::size_t largest_map, Failure &failure);
  LmdbEnvironment(const LmdbEnvironment &) = delete;
  LmdbEnvironment &operator=(const LmdbEnvironment &) = delete;
  ~LmdbEnvironment();

  // CFG_E_FORKED in a child, where neither the environment nor its locks may be touched.
  Failure refused() const;
  bool forked() const { return epoch_ != fork_epoch(); }
  bool read_only() const { return read_only_; }
  const StoreFiles &files() const { return files_; }
  MDB_env *raw() const { return env_.get(); }
  int data_file() const;

  // The newest state. NULL with `failure` set when there can be none. Give it back with end().
  Reader *begin(Failure &failure);
  void end(Reader *reader);
  // The newest revision, mostly without a read transaction.
  std::uint64_t newest(Failure &failure);
  // What a commit learned: the state that transaction `txn_id` left is this revision.
  void remember(std::uint64_t txn_id, std::uint64_t revision);

  // Reserves more address space for a store that has outgrown what it has. Works only while this process
  // reads nothing, because the map moves; otherwise it is done when the last snapshot has ended. The caller
  // holds no transaction.
  bool grow();

  // Frees the places of readers that died. Returns how many they were.
  // Walks every page of the newest state and reports what is wrong; safe on any file.
  Failure check_pages(const Engine::Problem &problem);
  int clear_dead_readers();
  // The same, at every so many calls.
  void clear_dead_readers_sometimes();

  // Fills sizes and readers; the caller holds `reader` open.
  Failure status(const Reader &reader, cfg_status_info &out);

  // While one lives, the map stays where it is: held around a write transaction.
  class MapUse {
   public:
    explicit MapUse(LmdbEnvironment &environment);
    MapUse(const MapUse &) = delete;
    MapUse &operator=(const MapUse &) = delete;
    ~MapUse();

   private:
    LmdbEnvironment &environment_;
  };

 private:
  LmdbEnvironment(StoreFiles files, EnvironmentPointer env, bool read_only);
  Failure prepare();
  int start(Reader &reader);
  Reader *take_idle();
  void drop(Reader *reader);
  bool file_is_whole() const;
  bool grow_now();

  const StoreFiles files_;
  EnvironmentPointer env_;
  const bool read_only_;
  const std::uint64_t epoch_ = fork_epoch();
  std::atomic<unsigned> calls_{0};  // of clear_dead_readers_sometimes()

  std::mutex mutex_;  // guards what follows, and every move of the map
  std::list<Reader> readers_;
  std::vector<Reader *> idle_;
  std::size_t open_ = 0;  // readers and writers that need the map
  bool wants_to_grow_ = false;
  std::size_t page_size_ = 0;
  // Only commits make transactions, so a transaction number stands for one revision as long as the file
  // lives.
  std::uint64_t known_txn_ = 0;
  std::uint64_t known_revision_ = 0;
};

}  // namespace twcfg
