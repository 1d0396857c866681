// The lists of rows of all families, for the dump that the tests compare.
#ifndef TW_RECORD_TABLES_HPP
#define TW_RECORD_TABLES_HPP

#include <span>

#include "record/row.hpp"

namespace tw {

// A list under the name that the dump of all tables gives it. Every family publishes its lists as
// `<name>_tables`, so that a changed key, order or rule shows in the tests as a changed line.
struct named_list {
  const char *name;
  const row_list &list;
  bool stores;
};
using tables = std::span<const named_list>;

extern const tables certificate_tables;
extern const tables enrollment_tables;
extern const tables etag_tables;
extern const tables node_load_tables;
extern const tables node_save_tables;

}  // namespace tw

#endif
