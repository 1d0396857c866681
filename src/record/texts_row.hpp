// A list of strings under a key, kept as an array of texts.
#ifndef TW_RECORD_TEXTS_ROW_HPP
#define TW_RECORD_TEXTS_ROW_HPP

#include "record/row.hpp"
#include "record/text_array.hpp"

namespace tw {

// Reads the entries of a list into `texts`, in the block if there is one; an entry that is no string leaves
// NULL in its place.
bool load_texts(text_array &texts, cfg *store, const cfg_value &list, text_block *block) noexcept;
// Puts a new list with one string per text under a key; entries that are NULL are left out, and so is a text
// that the store does not take, which makes the result false.
bool store_texts(const text_array &texts, cfg *store, cfg_elem *map, const char *key) noexcept;

// The record keeps its handle as `cfg`, by which the list is read.
template <auto Member>
constexpr row_of<Member> texts_row(const char *key) {
  return {{key, CFG_LIST, presence::optional,
           [](void *record, const cfg_value &list) {
             auto *self = static_cast<typename member_of<Member>::record *>(record);
             return load_texts(self->*Member, self->cfg, list, block_of(*self));
           },
           [](cfg *store, cfg_elem *map, const char *k, const void *record) {
             return store_texts(member_of<Member>::of(record), store, map, k);
           },
           "always written, a string for each text"}};
}

}  // namespace tw

#endif
