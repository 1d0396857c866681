// Rows: which key of the store belongs to which member of a record, as plain constant data.
//
// A family names its rows once, made from pointers-to-member, and puts them into a load list (the order in
// which keys are read) and a store list (the order in which they are written). One engine (engine.cpp) runs
// over the lists; it knows rows only through the two functions in them.
#ifndef TW_RECORD_ROW_HPP
#define TW_RECORD_ROW_HPP

#include <twconfig/element.h>
#include <twconfig/read.h>

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "record/enumeration.hpp"
#include "record/helpers.hpp"

namespace tw {

// What a load makes of a key that is absent, or present with a value of another kind.
enum class presence : std::uint8_t {
  mandatory,  // both fail the load
  optional,   // absent leaves the member NULL or 0; another kind fails the load
  lenient     // both leave the member NULL or 0
};

using load_function = bool (*)(void *record, const cfg_value &value);
using store_function = bool (*)(cfg *store, cfg_elem *map, const char *key, const void *record);

struct row_data {
  const char *key;
  cfg_kind kind;
  presence need;
  load_function load;    // takes over a value of `kind`; false fails the load
  store_function store;  // writes or deletes the key; false fails the save
  const char *rule;      // what the two functions do, in words, for the dump of all tables
};

// A row of records of type Record. The type keeps rows of different records out of one list.
template <class Record>
struct row : row_data {};

template <class Record>
constexpr row<Record> mandatory(row<Record> r) {
  r.need = presence::mandatory;
  return r;
}
template <class Record>
constexpr row<Record> lenient(row<Record> r) {
  r.need = presence::lenient;
  return r;
}

// The record and the type of a pointer-to-member.
template <auto Member>
struct member_of;
template <class Record, class Value, Value Record::*Member>
struct member_of<Member> {
  using record = Record;
  using value = Value;
  static Value &of(void *record) { return static_cast<Record *>(record)->*Member; }
  static const Value &of(const void *record) { return static_cast<const Record *>(record)->*Member; }
};

template <auto Member>
using row_of = row<typename member_of<Member>::record>;

// Where a record keeps the texts that it is loaded with: in its member `texts`, a block or a pointer to that
// of the record it is part of; else each by itself.
inline text_block *block_in(text_block &own) { return &own; }
inline text_block *block_in(text_block *owners) { return owners; }
template <class Record>
text_block *block_of(Record &record) {
  if constexpr (requires { block_in(record.texts); })
    return block_in(record.texts);
  else
    return nullptr;
}

// A text, from a value that is a string, a reference or a blob.
template <auto Member>
bool load_text(void *record, const cfg_value &value) {
  auto *self = static_cast<typename member_of<Member>::record *>(record);
  return (self->*Member).assign(value.data, value.length, block_of(*self));
}
// An integer or a truth value.
template <auto Member>
bool load_number(void *record, const cfg_value &value) {
  member_of<Member>::of(record) = static_cast<typename member_of<Member>::value>(value.number);
  return true;
}

// A string; saving NULL deletes the key.
template <auto Member>
constexpr row_of<Member> string_row(const char *key) {
  return {{key, CFG_STRING, presence::optional, load_text<Member>,
           [](cfg *store, cfg_elem *map, const char *k, const void *record) {
             return store_map_string(store, map, k, member_of<Member>::of(record).c_str()) != 0;
           },
           "NULL deletes"}};
}

// A string that no save deletes: saving NULL leaves what is stored.
template <auto Member>
constexpr row_of<Member> kept_string_row(const char *key) {
  row_of<Member> r = string_row<Member>(key);
  r.store = [](cfg *store, cfg_elem *map, const char *k, const void *record) {
    const char *value = member_of<Member>::of(record).c_str();
    return !value || cfg_map_set_string(store, map, k, value) != 0;
  };
  r.rule = "NULL leaves the stored one";
  return r;
}

// The ID of another element, kept as text; saving NULL deletes the key.
template <auto Member>
constexpr row_of<Member> reference_row(const char *key) {
  return {{key, CFG_REFERENCE, presence::optional, load_text<Member>,
           [](cfg *store, cfg_elem *map, const char *k, const void *record) {
             return store_map_reference(store, map, k, member_of<Member>::of(record).c_str()) != 0;
           },
           "NULL deletes"}};
}

// A blob that holds text, stored without its NUL; saving NULL deletes the key.
template <auto Member>
constexpr row_of<Member> blob_row(const char *key) {
  return {{key, CFG_BLOB, presence::optional, load_text<Member>,
           [](cfg *store, cfg_elem *map, const char *k, const void *record) {
             const char *bytes = member_of<Member>::of(record).c_str();
             return store_map_blob(store, map, k, bytes, bytes ? std::strlen(bytes) : 0) != 0;
           },
           "NULL deletes"}};
}

// A 32-bit integer, signed or not; 0 is a value like any other.
template <auto Member>
constexpr row_of<Member> int_row(const char *key) {
  return {{key, CFG_INT, presence::optional, load_number<Member>,
           [](cfg *store, cfg_elem *map, const char *k, const void *record) {
             return cfg_map_set_int(store, map, k, static_cast<int32_t>(member_of<Member>::of(record))) != 0;
           },
           "always written"}};
}

// A 32-bit integer of which 0 means "none": saving 0 deletes the key.
template <auto Member>
constexpr row_of<Member> nonzero_row(const char *key) {
  row_of<Member> r = int_row<Member>(key);
  r.store = [](cfg *store, cfg_elem *map, const char *k, const void *record) {
    const auto value = member_of<Member>::of(record);
    return (value != 0 ? cfg_map_set_int(store, map, k, static_cast<int32_t>(value))
                       : delete_map_key(store, map, k)) != 0;
  };
  r.rule = "0 deletes";
  return r;
}

// A truth value, kept as int32_t; any value but 0 is saved as true.
template <auto Member>
constexpr row_of<Member> bool_row(const char *key) {
  return {{key, CFG_BOOL, presence::optional, load_number<Member>,
           [](cfg *store, cfg_elem *map, const char *k, const void *record) {
             return cfg_map_set_bool(store, map, k, member_of<Member>::of(record) != 0) != 0;
           },
           "always written"}};
}

// An enumeration, kept in the store as its text. Unknown text reads as the table's unknown value; a value
// without text deletes the key.
template <auto Member, const enumeration &Table>
constexpr row_of<Member> enum_row(const char *key) {
  return {{key, CFG_STRING, presence::optional,
           [](void *record, const cfg_value &value) {
             member_of<Member>::of(record) = Table.from_string(value.data);
             return true;
           },
           [](cfg *store, cfg_elem *map, const char *k, const void *record) {
             return store_map_string(store, map, k, Table.to_string(member_of<Member>::of(record))) != 0;
           },
           "enumeration, unknown deletes"}};
}

// The same for a record that makes no sense without a known value: unknown text fails the load.
template <auto Member, const enumeration &Table>
constexpr row_of<Member> known_enum_row(const char *key) {
  row_of<Member> r = mandatory(enum_row<Member, Table>(key));
  r.load = [](void *record, const cfg_value &value) {
    return (member_of<Member>::of(record) = Table.from_string(value.data)) != Table.unknown;
  };
  r.rule = "enumeration, unknown fails the load, unknown deletes";
  return r;
}

// A key that one function of the family takes over on load and that no save writes.
template <class Record>
constexpr row<Record> hook_row(const char *key, cfg_kind kind, load_function load, const char *function) {
  return {{key, kind, presence::optional, load, nullptr, function}};
}

// ---- Lists ----

struct row_list {
  const row_data *rows;
  std::size_t count;
};

// A load list also keeps its keys side by side, at an address that the store remembers them by. Lists point
// into themselves and are made by the compiler alone, so that none compiles that does not stand still: define
// them as constexpr variables at namespace scope.
struct load_rows : row_list {
  cfg_keyset keys;
};
struct store_rows : row_list {};

inline constexpr std::size_t max_rows = 64;

template <class Record, std::size_t N>
struct load_list : load_rows {
  static_assert(N <= max_rows, "split the list");
  row_data rows_[N];
  const char *keys_[N];

  consteval explicit load_list(const row<Record> (&list)[N])
      : load_rows{{rows_, N}, {keys_, N}}, rows_{}, keys_{} {
    for (std::size_t i = 0; i < N; ++i) {
      rows_[i] = list[i];
      keys_[i] = list[i].key;
    }
  }
  load_list(const load_list &) = delete;
  load_list &operator=(const load_list &) = delete;
};

template <class Record, std::size_t N>
struct store_list : store_rows {
  row_data rows_[N];

  consteval explicit store_list(const row<Record> (&list)[N]) : store_rows{{rows_, N}}, rows_{} {
    for (std::size_t i = 0; i < N; ++i) {
      if (!list[i].store) throw "a hook row is not written";
      rows_[i] = list[i];
    }
  }
  store_list(const store_list &) = delete;
  store_list &operator=(const store_list &) = delete;
};

}  // namespace tw

#endif
