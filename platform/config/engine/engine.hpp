// The one table of operations that a storage engine offers. Everything above it (tree, edits, IDs, conflicts,
// conditions, messages) is the same for all engines; everything below it is the engine's own.
//
// An engine is an ordered map from 64-bit keys to values. Each value carries the revision of the commit that
// wrote it. A commit names the revision it expects for every key it writes and is refused, unchanged, when
// one differs: optimistic, so that no lock is held while edits are prepared and a consensus cluster can serve
// as an engine.
#pragma once

#include <twconfig/store.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace twcfg {

using Key = std::uint64_t;
// Keys of values lie below this; the engines keep the top two bits for their own records.
inline constexpr Key kKeyLimit = Key{1} << 62;
// The largest value and the largest log text. Values of up to about 2,000 bytes share pages; larger ones take
// whole pages of their own.
inline constexpr std::uint64_t kBytesLimit = std::uint64_t{1} << 30;
inline constexpr std::size_t kTokenLimit = 1024;

struct Failure {
  cfg_code code = CFG_OK;
  std::string text;
  explicit operator bool() const { return code != CFG_OK; }
};

// A value as stored. Revision 0 means absent. The bytes stay valid until their snapshot ends; they may begin
// at any address.
struct Stored {
  std::uint64_t revision = 0;
  std::string_view bytes;
  explicit operator bool() const { return revision != 0; }
};

// Walks keys upwards. At most one cursor step invalidates nothing: bytes live as long as the snapshot. A
// cursor goes before its snapshot.
class Cursor {
 public:
  virtual ~Cursor() = default;
  // Moves to the first key at or above `at_least`; false when there is none.
  virtual bool seek(Key at_least) = 0;
  virtual bool next() = 0;
  // Where the last move that answered true has led. Not virtual: scans ask for both at every step.
  Key key() const { return key_; }
  const Stored &value() const { return value_; }

 protected:
  Key key_ = 0;
  Stored value_;  // nothing behind the last key
};

// One consistent view of the store, used by one thread at a time.
class Snapshot {
 public:
  virtual ~Snapshot() = default;
  virtual std::uint64_t revision() const = 0;
  virtual Stored get(Key key) = 0;
  virtual std::unique_ptr<Cursor> cursor() = 0;
  // What the commit `revision` left in the log; empty when it is not kept (any more).
  virtual std::string_view log(std::uint64_t revision) = 0;
  // The oldest revision in the log; 0 when the log is empty.
  virtual std::uint64_t oldest_log() = 0;
  // The revision of the kept commit that carried this token, or 0.
  virtual std::uint64_t find_token(std::string_view token) = 0;
  // CFG_OK while every read was sound. Otherwise reads of this view gave "absent" because the files are
  // damaged or because this is the child of a fork: an absence must not be believed.
  virtual Failure failure() const = 0;
};

struct Write {
  Key key = 0;
  std::uint64_t expected = 0;  // revision that the value must have now; 0: must be absent
  std::string_view bytes;      // the new value
  bool remove = false;         // take the key away instead
};

struct Commit {
  std::vector<Write> writes;  // each key at most once; sorted upwards by key
  std::string_view log;       // kept under the revision that the commit gets
  std::string_view token;     // may be empty
};

struct CommitResult {
  std::uint64_t revision = 0;  // of this commit, or of the earlier one with the same token
  bool stale = false;          // an expected revision did not hold: nothing was changed
  bool repeated = false;       // the token is in the log: nothing was changed now
  Failure failure;             // anything else: nothing was changed (except CFG_E_UNKNOWN)
};

// The commit log keeps at least this many commits.
inline constexpr std::uint64_t kLogKept = 4096;

class Engine {
 public:
  virtual ~Engine() = default;
  // A view of the newest revision. NULL with `failure` set when there can be none.
  virtual std::unique_ptr<Snapshot> snapshot(Failure &failure) = 0;
  // The newest revision, without opening a view; cheap.
  virtual std::uint64_t newest(Failure &failure) = 0;
  virtual CommitResult commit(const Commit &commit) = 0;
  // Fills everything but `revision`'s meaning for the tree: sizes and readers.
  virtual Failure status(cfg_status_info &out) = 0;
  // Checks what the engine itself can check; reports each problem.
  using Problem = std::function<void(const std::string &where, const std::string &what)>;
  virtual Failure verify(const Problem &problem) = 0;
  // Writes a compact copy into a new directory.
  virtual Failure compact(const std::string &path) = 0;
  // A process that holds snapshots for long calls this now and then: clears what killed readers left behind.
  virtual void clear_dead_readers() = 0;
};

// Handles of one process share one engine per store: asking twice for the same files gives the same engine,
// whatever the options were, so a handle that was opened for reading only refuses changes itself. The engine
// refuses them (CFG_E_READ_ONLY) when it could not open the files for writing at all.
std::shared_ptr<Engine> open_lmdb(const std::string &path, unsigned options, Failure &failure);
// Engines of the same non-empty name are shared in the process; an empty name is never shared.
std::shared_ptr<Engine> open_memory(const std::string &name);

}  // namespace twcfg
