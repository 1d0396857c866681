#include "users/group_set.hpp"

#include <cstring>
#include <memory>
#include <new>

#include "record/text.hpp"

// The table tells of memory that it did not get by calling this, and is then as it was before.
#define HASH_NONFATAL_OOM 1
#define uthash_nonfatal_oom(entry) (added = false)
#include <uthash.h>

namespace tw {

struct group_set::entry {
  text id;
  UT_hash_handle hh;
};

bool group_set::add(const char *id) noexcept {
  if (find(id)) return true;
  std::unique_ptr<entry> fresh(new (std::nothrow) entry);
  if (!fresh || !fresh->id.assign(id, std::strlen(id))) return false;
  bool added = true;
  entry *put = fresh.get();
  HASH_ADD_KEYPTR(hh, table_, put->id.c_str(), std::strlen(id), put);
  if (added) static_cast<void>(fresh.release());  // the table's now
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
  return shown->id.c_str();
}

group_set::entry *group_set::after(const entry *at) noexcept { return static_cast<entry *>(at->hh.next); }

const char *group_set::id_of(const entry *at) noexcept { return at->id.c_str(); }

group_set::entry *group_set::find(const char *id) const noexcept {
  entry *found = nullptr;
  HASH_FIND(hh, table_, id, std::strlen(id), found);
  return found;
}

// A cursor that stands on what goes moves on, so that the others are still shown once each.
void group_set::drop(entry *gone) noexcept {
  if (cursor_ == gone) cursor_ = after(gone);
  HASH_DEL(table_, gone);
  delete gone;
}

}  // namespace tw
