// What the store's calls work on here: a small store with something of every kind in it, fresh for each call.
#pragma once

#include <twconfig.h>

#include <string>

namespace store_allocation {

enum class EngineKind { kLmdb, kMemory };

class World {
 public:
  explicit World(EngineKind engine);
  ~World();
  World(const World &) = delete;
  World &operator=(const World &) = delete;

  // One more handle on the same store; the caller closes it.
  cfg *open() const;
  // What the edit of `store` is, and how the store reads through it.
  std::string edited();
  bool moves = false;  // whether a call may fail when it has moved the handle already: edited() is "" then
  // What is in the store, read anew.
  std::string stored() const;
  // Of an LMDB store: its directory.
  std::string path() const { return directory_ + "/store"; }

  cfg *store = nullptr;  // nothing has been read through it yet
  cfg *other = nullptr;  // another user of the store
  // Whatever a case prepares for its call.
  cfg_elem *elem = nullptr;
  cfg_elem *fresh = nullptr;
  cfg_condition *condition = nullptr;

 private:
  EngineKind engine_;
  std::string directory_;  // also the name of a memory store
};

// Provisional IDs, which differ from handle to handle, read as "{}".
std::string without_provisional_ids(std::string text);
// The element with an ID; the test fails without it.
cfg_elem *at(cfg *store, const char *id);
// An edit that touches every way in which a store keeps its elements.
void edit(World &world);
// What somebody else commits meanwhile, in the same places but without a conflict.
void compete(World &world);

}  // namespace store_allocation
