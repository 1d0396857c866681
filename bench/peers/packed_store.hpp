// The hand-written LMDB store: packed nodes and certificates under their numbers, with the same durability as
// ours.
#pragma once

#include <lmdb.h>

#include <memory>
#include <span>
#include <string>

#include "peers/reader.hpp"

namespace bench {

class PackedStore {
 public:
  explicit PackedStore(const std::string &directory);
  ~PackedStore();
  PackedStore(const PackedStore &) = delete;
  PackedStore &operator=(const PackedStore &) = delete;

  // Each is one durable transaction.
  void append(std::span<const Node> nodes);
  void change_description(std::uint32_t number, const std::string &description);

  // Reads happen in a snapshot that stays open until it is released, as with a store handle of ours.
  void take_snapshot();
  void release_snapshot();
  NodeCopy *load(const char *id, FieldSet set);
  // The first node of this name, looking only at every node's name and status; NULL when there is none.
  NodeCopy *find_by_name(const char *name, FieldSet set);

 private:
  NodeCopy *unpack(const void *record, const char *id, FieldSet set);

  MDB_env *env_ = nullptr;
  MDB_dbi nodes_ = 0, certificates_ = 0;
  MDB_txn *snapshot_ = nullptr;
};

// Throws with LMDB's text when a call failed.
void require_lmdb(int code);
// An environment with the flags that durability asks for (none taken away).
MDB_env *open_lmdb_environment(const std::string &directory, unsigned databases);

}  // namespace bench
