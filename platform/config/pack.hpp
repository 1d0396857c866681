// Turns an edit into the writes of a commit: numbers for new entries, records in their stored form, heads of
// lists, shapes. Works on the edit without changing what callers see of it, so that a refused commit can be
// planned again.
#pragma once

#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "record_buffer.hpp"
#include "store.hpp"

namespace twcfg {

class Packer;

// How maps of one sequence of keys are stored.
struct MapLayout {
  std::uint32_t shape;                // kMaxShapes: the keys are spelled out
  std::vector<std::uint16_t> sorted;  // positions of the items that are there, in the order of their keys
};

class Plan {
 public:
  explicit Plan(Store &store);
  ~Plan();
  Plan(const Plan &) = delete;
  Plan &operator=(const Plan &) = delete;
  // Plans the whole edit against the handle's snapshot. False with the reason noted.
  bool make();
  // As an engine wants them; their bytes are the plan's and the edit's.
  const std::vector<Write> &writes() const { return writes_; }

  // The ID that a node has after this commit; empty for one that is attached nowhere.
  std::string final_id(const Node *node) const;
  // The final ID for the provisional one of an element that this or an earlier commit made, under which
  // references to it are kept; empty when there is none.
  std::string final_reference(std::string_view id) const;
  // The number of the shape with these keys, a new one if need be; kMaxShapes: spell the keys out.
  std::uint32_t shape_of(const std::vector<const KeyName *> &keys);

 private:
  friend class Packer;
  struct ListName {
    std::string prefix;  // flattened names of the maps between the owner and here
    MapNode *owner;      // NULL below a list in a list
    std::size_t first;   // where its lists' names begin in `list_names_`
  };

  // Gives new entries their numbers, everywhere below a node.
  bool number(Node *node, ListName *name, bool in_root_record, int depth);
  bool number_list(ListNode &list, ListName *name, bool in_root_record, int depth);
  std::uint32_t first_number(const ListNode &list, const ListName *name) const;
  bool number_entries(ListNode &list, std::uint32_t &next, int depth);

  bool plan_record(Key key, Node *root, std::uint64_t expected);
  bool plan_sealed(Key key, MapNode &entry);  // a new entry that is a record already
  bool plan_placed(ListNode &list);           // entries that become records of their own
  bool plan_placed_below(Node *node);
  bool plan_list(std::uint32_t list, ListNode &changes);
  void plan_purge(std::uint32_t list);  // removes a distant list with all its records
  void plan_removal(Key key);           // removes one record and the distant lists inside it
  void purge_inside(const Packed &node, int depth);
  void purge_dropped(Key key, const Node *root);  // distant lists that an opened record no longer has
  void write(Key key, std::uint64_t expected, std::string_view bytes);  // of this plan or the edit's seals
  void write_head(std::uint32_t list, const ListHead &head, std::uint64_t expected);
  void remove(Key key, std::uint64_t expected);
  void sort_writes();
  std::uint32_t new_list();
  const MapLayout &layout_of(const MapNode &map);
  bool load_counters();
  // The numbers of lists that an owner no longer has, in stored form; empty when there are none.
  std::string retired_table(const MapNode &owner) const;

  struct KeysHash {
    std::size_t operator()(const std::vector<const KeyName *> &keys) const;
  };

  Store &store_;
  std::unique_ptr<Packer> packer_;
  std::vector<Write> writes_;
  RecordBuffer records_;                 // what is written: records,
  Arena small_bytes_{Contents::plain};   // heads of lists, shapes, counters
  std::vector<std::string> list_names_;  // of the owners that are being numbered
  // Maps that were filled in the same order are laid out alike: by their keys, NULL for a deleted one.
  std::unordered_map<std::vector<const KeyName *>, MapLayout, KeysHash> layouts_;
  std::vector<const KeyName *> keys_;  // of the map that is being looked up
  std::map<std::vector<const KeyName *>, std::uint32_t> new_shapes_;
  bool counters_loaded_ = false;
  bool counters_changed_ = false;
  std::uint64_t counters_expected_ = 0;
  std::uint32_t next_list_ = kFirstList;
  std::uint32_t next_shape_ = 0;
};

}  // namespace twcfg
