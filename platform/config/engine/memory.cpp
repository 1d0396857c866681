// The engine that keeps its store in this process's memory: for tests, and for stores that need not last.
#include <unistd.h>

#include <cstring>
#include <list>
#include <mutex>

#include "engine/clock.hpp"
#include "engine/engine.hpp"
#include "engine/fork_epoch.hpp"
#include "engine/persistent_map.hpp"
#include "engine/records.hpp"
#include "engine/registry.hpp"

namespace twcfg {
namespace {

class MemoryTable final : public WritableTable {
 public:
  explicit MemoryTable(PersistentMap &map) : map_(map) {}

  std::optional<std::string_view> get(std::uint64_t slot) override {
    const auto entry = entry_of(map_.find(slot));
    return entry ? std::optional(entry->bytes) : std::nullopt;
  }
  std::optional<Entry> seek(std::uint64_t at_least) override { return entry_of(map_.at_or_above(at_least)); }
  std::optional<Entry> last() override { return entry_of(map_.last()); }

  void put(std::uint64_t slot, std::initializer_list<std::string_view> parts) override {
    std::string bytes;
    for (const auto part : parts) bytes.append(part);
    map_.put(slot, std::move(bytes));
  }
  void append(std::uint64_t slot, std::initializer_list<std::string_view> parts) override {
    put(slot, parts);
  }
  void erase(std::uint64_t slot) override { map_.erase(slot); }

 private:
  static std::optional<Entry> entry_of(const PersistentMap::Node *node) {
    if (!node) return std::nullopt;
    return Entry{node->key, *node->bytes};
  }
  PersistentMap &map_;
};

Stored stored_of(std::string_view record) { return decode_value(record).value_or(Stored{}); }

class MemoryCursor final : public Cursor {
 public:
  explicit MemoryCursor(MemoryTable &table) : table_(table) {}
  bool seek(Key at_least) override {
    const auto entry = table_.seek(at_least);
    const bool found = entry && area_of(entry->slot) == Area::values;
    key_ = found ? number_of(entry->slot) : 0;
    value_ = found ? stored_of(entry->bytes) : Stored{};
    return found;
  }
  bool next() override { return value_ && seek(key_ + 1); }

 private:
  MemoryTable &table_;
};

// The snapshots that are open, for cfg_status().
class OpenSnapshots {
 public:
  struct Info {
    std::uint64_t revision;
    std::int64_t since_ms;
  };
  using Place = std::list<Info>::iterator;
  Place add(std::uint64_t revision) {
    const std::lock_guard guard(mutex_);
    return open_.insert(open_.end(), Info{revision, steady_ms()});
  }
  void remove(Place place) {
    const std::lock_guard guard(mutex_);
    open_.erase(place);
  }
  void report(cfg_status_info &out) {
    const std::lock_guard guard(mutex_);
    for (const Info &info : open_) {
      if (out.reader_count == std::size(out.readers)) return;
      out.readers[out.reader_count++] = {getpid(), info.revision, steady_ms() - info.since_ms};
    }
  }

 private:
  std::mutex mutex_;
  std::list<Info> open_;
};

class MemorySnapshot final : public Snapshot {
 public:
  MemorySnapshot(PersistentMap map, std::shared_ptr<OpenSnapshots> open)
      : map_(std::move(map)),
        table_(map_),
        revision_(newest_revision(table_)),
        open_(std::move(open)),
        place_(open_->add(revision_)) {}
  MemorySnapshot(const MemorySnapshot &) = delete;
  MemorySnapshot &operator=(const MemorySnapshot &) = delete;
  ~MemorySnapshot() override {
    // A child leaves the list alone: another thread of the parent may have held its lock at the fork.
    if (epoch_ == fork_epoch()) open_->remove(place_);
  }

  std::uint64_t revision() const override { return revision_; }
  Stored get(Key key) override {
    const auto record = key < kKeyLimit ? table_.get(slot_of(Area::values, key)) : std::nullopt;
    return record ? stored_of(*record) : Stored{};
  }
  std::unique_ptr<Cursor> cursor() override { return std::make_unique<MemoryCursor>(table_); }
  std::string_view log(std::uint64_t revision) override {
    const auto entry = read_log(table_, revision);
    return entry ? entry->text : std::string_view();
  }
  std::uint64_t oldest_log() override { return twcfg::oldest_log(table_); }
  std::uint64_t find_token(std::string_view token) override { return twcfg::find_token(table_, token); }
  Failure failure() const override { return {}; }

 private:
  PersistentMap map_;
  MemoryTable table_;
  std::uint64_t revision_;
  std::uint64_t epoch_ = fork_epoch();
  std::shared_ptr<OpenSnapshots> open_;
  OpenSnapshots::Place place_;
};

class MemoryEngine final : public Engine {
 public:
  std::unique_ptr<Snapshot> snapshot(Failure &failure) override {
    if ((failure = refused())) return nullptr;
    return std::make_unique<MemorySnapshot>(current(), open_);
  }

  std::uint64_t newest(Failure &failure) override {
    if ((failure = refused())) return 0;
    PersistentMap map = current();
    MemoryTable table(map);
    return newest_revision(table);
  }

  CommitResult commit(const Commit &commit) override {
    CommitResult result;
    if ((result.failure = refused())) return result;
    const std::lock_guard writer(writer_);
    PersistentMap map = current();
    MemoryTable table(map);
    result = apply_commit(table, commit);
    if (!result.failure && !result.stale && !result.repeated) {
      const std::lock_guard guard(mutex_);
      std::swap(map_, map);
    }
    return result;
  }

  Failure status(cfg_status_info &out) override {
    if (Failure failure = refused()) return failure;
    PersistentMap map = current();
    MemoryTable table(map);
    out = {};
    out.engine = "memory";
    out.revision = newest_revision(table);
    out.records = count_values(table, map.size());
    out.used_bytes = map.bytes();
    out.oldest_log = oldest_log(table);
    open_->report(out);
    return {};
  }

  Failure verify(const Problem &problem) override {
    if (Failure failure = refused()) return failure;
    PersistentMap map = current();
    MemoryTable table(map);
    check_records(table, problem);
    return {};
  }

  Failure compact(const std::string &) override {
    if (Failure failure = refused()) return failure;
    return {CFG_E_ARGUMENT, "a store in memory has no files to compact"};
  }

  void clear_dead_readers() override {}

 private:
  // A child's copy would live on beside its parent's without anybody noticing.
  Failure refused() const {
    if (epoch_ == fork_epoch()) return {};
    return {CFG_E_FORKED, "the store in memory belongs to the parent process"};
  }
  PersistentMap current() {
    const std::lock_guard guard(mutex_);
    return map_;
  }

  const std::uint64_t epoch_ = fork_epoch();
  std::mutex writer_;
  std::mutex mutex_;  // guards map_
  PersistentMap map_;
  std::shared_ptr<OpenSnapshots> open_ = std::make_shared<OpenSnapshots>();
};

// Made when the library is loaded: a child that is forked while another thread makes it would wait for that
// thread for ever. Never destroyed: handles may be closed by destructors that run at exit.
using Engines = Registry<std::string, MemoryEngine>;
alignas(Engines) char place[sizeof(Engines)];
Engines &engines = *new (place) Engines;

}  // namespace

std::shared_ptr<Engine> open_memory(const std::string &name) {
  if (name.empty()) return std::make_shared<MemoryEngine>();
  return engines.get(name, [] { return std::make_unique<MemoryEngine>(); });
}

}  // namespace twcfg
