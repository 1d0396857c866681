// New entries that were written whole: records before their time.
//
// Whoever imports appends entries by the ten thousand and looks at none of them again. Such an entry is put
// down once, as the record that the commit will write, and stays sealed: its map has no items. It is opened,
// which makes it what it would be if it had been built key by key, by the first one who asks for it through
// its handle (bound() in heads.cpp). Its list, the commit log and what judges conflicts need not know.
//
// Two things are not known before the commit and are put into the record then, in place: the numbers of
// shapes that the store does not have yet, and the final IDs of new elements that it refers to. For the
// numbers and for the length of the IDs there are guesses, which mostly come true. A refused commit may
// leave other ones there than the next will want; so a sealed record is never read as it stands.
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string_view>
#include <vector>

#include <twconfig/content.h>

#include "node.hpp"
#include "record_buffer.hpp"
#include "record_writer.hpp"

namespace twcfg {

class Plan;

struct Sealed {
  struct Mark {
    std::uint32_t at;     // where a map stands
    std::uint32_t shape;  // the edit's own number of it
  };
  struct Link {
    std::uint32_t slot;    // where the offset of a reference stands
    std::uint32_t at;      // where the reference stands, with room for
    std::uint32_t length;  // as many bytes of a final ID
    std::string_view id;   // the provisional one
  };
  std::span<char> bytes;
  std::span<const Mark> marks;
  std::span<const Link> links;
};

// How contents of one key set are put down that have the same keys, and maps or lists under the same ones.
struct ContentForm {
  std::uint64_t present, nested;  // a bit for each key of the set
  std::uint32_t shape;            // the edit's own number of it
  bool closed;                    // whether the names of the lists in it cannot meet
  struct Place {
    std::uint16_t item, slot;
  };
  std::vector<Place> places;  // in the order in which the values are written
};

// The sealed entries of one edit.
class Seals {
 public:
  Seals(std::uint64_t edit, KeyNames &names) : edit_(edit), shapes_(names), writer_(records_) {}

  // A new map as a sealed record, for a list whose entries are records of their own. NULL for a content that
  // is better kept as nodes. The content must have been checked.
  MapNode *seal(::cfg &store, const cfg_content &content);
  // Makes a sealed map one like all others.
  void open(::cfg &store, MapNode &map);

  // Before a commit: finds out which numbers its shapes have.
  void settle(Plan &plan);
  // The record as this commit writes it; empty when the map must be opened for that.
  std::string_view finish(Plan &plan, const Sealed &sealed) const;

 private:
  // How a map is put down; NULL when it is better kept as nodes.
  const ContentForm *form_of(::cfg &store, const cfg_content &map);
  void make_form(::cfg &store, const std::vector<const KeyName *> &names, std::uint64_t present,
                 std::uint64_t nested);
  std::uint32_t guess_number(::cfg &store, const std::vector<const KeyName *> &keys);
  std::uint32_t guess_length(::cfg &store, std::string_view id);  // 0 without a guess
  bool map(::cfg &store, const cfg_content &content, bool inner);
  bool list(::cfg &store, const cfg_content &content);
  bool value(::cfg &store, const cfg_content &content, std::size_t slot, bool inner);
  bool reference(::cfg &store, std::string_view id, std::size_t slot);

  const std::uint64_t edit_;  // number of the edit
  // The shapes of sealed maps under the edit's own numbers, and the number that each has in the records.
  Shapes shapes_;
  std::vector<std::uint32_t> numbers_;
  std::vector<bool> used_;  // whether a record has them
  std::uint32_t next_guess_ = 0;
  bool guessing_ = false;        // whether `next_guess_` is one
  bool guesses_failed_ = false;  // numbers have changed since records were put down with them
  bool spelled_ = false;         // the store has no number left for one of them
  // Of the list that was last referred to: the next number, and the length of its entries' IDs without it.
  const ListNode *target_ = nullptr;
  std::uint32_t target_next_ = 0;
  std::uint32_t target_length_ = 0;

  Arena notes_{Contents::plain};                           // what is kept of each record besides its bytes
  std::vector<std::unique_ptr<const ContentForm>> forms_;  // key sets point to them

  RecordBuffer records_;
  RecordWriter writer_;
  // Of the record that is being put down.
  std::vector<Sealed::Mark> marks_;
  std::vector<Sealed::Link> links_;
  std::size_t largest_list_ = 0;
};

}  // namespace twcfg
