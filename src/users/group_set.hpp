// The groups of a user: a set of IDs that keeps the order in which they came.
#ifndef TW_USERS_GROUP_SET_HPP
#define TW_USERS_GROUP_SET_HPP

#include <cstdint>

namespace tw {

class group_set {
 public:
  group_set() = default;
  group_set(const group_set &) = delete;
  group_set &operator=(const group_set &) = delete;
  ~group_set() { clear(); }

  // Adds a copy; an ID that is there already stays where it is. False without memory.
  bool add(const char *id) noexcept;
  void remove(const char *id) noexcept;
  void clear() noexcept;
  std::int32_t count() const noexcept;

  // The ID under the cursor, which moves on to the next. Without a cursor, as at the beginning and behind the
  // last ID, that is the first; NULL in an empty set.
  const char *next() noexcept;

  // Shows every ID to `visit(id)`, in order, until it answers false; that is the result.
  template <class Visit>
  bool each(Visit visit) const noexcept {
    for (const entry *at = table_; at; at = after(at)) {
      if (!visit(id_of(at))) return false;
    }
    return true;
  }

 private:
  struct entry;
  static entry *after(const entry *at) noexcept;
  static const char *id_of(const entry *at) noexcept;
  entry *find(const char *id) const noexcept;
  void drop(entry *gone) noexcept;

  entry *table_ = nullptr;   // the first entry; an empty set has no table
  entry *cursor_ = nullptr;  // the entry that next() shows
};

}  // namespace tw

#endif
