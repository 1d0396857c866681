#include "users/group_set.hpp"

#include <cstdlib>
#include <cstring>

// The table tells of memory that it did not get by calling this, and is then as it was before.
#define HASH_NONFATAL_OOM 1
#define uthash_nonfatal_oom(entry) (added = false)
#include <uthash.h>
// Most users are in a group or two: a table starts small, or loading users would be making tables.
#undef HASH_INITIAL_NUM_BUCKETS
#undef HASH_INITIAL_NUM_BUCKETS_LOG2
#define HASH_INITIAL_NUM_BUCKETS 4U
#define HASH_INITIAL_NUM_BUCKETS_LOG2 2U

namespace tw {

// The ID stands behind its entry, in the same memory.
struct group_set::entry {
  UT_hash_handle hh;

  char *id() { return reinterpret_cast<char *>(this + 1); }
  const char *id() const { return reinterpret_cast<const char *>(this + 1); }
};

bool group_set::add(const char *id) noexcept {
  const std::size_t length = std::strlen(id);
  unsigned hash = 0;
  HASH_VALUE(id, length, hash);
  entry *known = nullptr;
  HASH_FIND_BYHASHVALUE(hh, table_, id, length, hash, known);
  if (known) return true;
  auto *put = static_cast<entry *>(std::malloc(sizeof(entry) + length + 1));
  if (!put) return false;
  std::memcpy(put->id(), id, length + 1);
  bool added = true;
  HASH_ADD_KEYPTR_BYHASHVALUE(hh, table_, put->id(), length, hash, put);
  if (!added) std::free(put);
  return added;
}

void group_set::remove(const char *id) noexcept {
  if (entry *gone = find(id)) drop(gone);
}

void group_set::clear() noexcept {
  while (table_) drop(table_);
}

std::int32_t group_set::count() const noexcept { return static_cast<std::int32_t>(HASH_COUNT(table_)); }

const char *group_set::next() noexcept {
  const entry *shown = cursor_ ? cursor_ : table_;
  if (!shown) return nullptr;
  cursor_ = after(shown);
  return shown->id();
}

group_set::entry *group_set::after(const entry *at) noexcept { return static_cast<entry *>(at->hh.next); }

const char *group_set::id_of(const entry *at) noexcept { return at->id(); }

group_set::entry *group_set::find(const char *id) const noexcept {
  entry *found = nullptr;
  HASH_FIND(hh, table_, id, std::strlen(id), found);
  return found;
}

// A cursor that stands on what goes moves on, so that the others are still shown once each.
void group_set::drop(entry *gone) noexcept {
  if (cursor_ == gone) cursor_ = after(gone);
  HASH_DEL(table_, gone);
  std::free(gone);
}

}  // namespace tw
