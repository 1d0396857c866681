// The table of actions: records by number, and which of them a node has for a queue.
#pragma once

#include <twlmdb.hpp>

#include <cstdint>
#include <string>
#include <vector>

#include "record.hpp"

namespace twjobs {

// Functions answer 0 or a negative errno number; -ENOENT when the action is not there. They may throw
// bad_alloc.
class Table {
 public:
  explicit Table(const twlmdb::Access &access) : access_(access) {}

  int get(std::uint64_t id, Record &record) const;
  int find(const std::string &node, const std::string &queue, std::uint64_t &id) const;
  // The numbers of all actions, oldest first.
  int list(std::vector<std::uint64_t> &ids) const;

  int add(const Record &record, std::uint64_t &id) const;
  // Replaces the record. One that its node had for the queue makes room for it.
  int replace(std::uint64_t id, const Record &record) const;
  int remove(std::uint64_t id) const;

 private:
  int put(std::uint64_t id, const Record &record) const;
  int forget_place(std::uint64_t id, const Record &record) const;

  const twlmdb::Access &access_;
};

}  // namespace twjobs
