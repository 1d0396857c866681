// Writes one record in its stored form (packed.hpp).
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "pack.hpp"
#include "record_writer.hpp"

namespace twcfg {

class Packer {
 public:
  // Leaves the record in `out`.
  Packer(Plan &plan, RecordBuffer &out) : plan_(plan), out_(out) {}
  // False when the record would be too large.
  bool pack(const Node *root);
  // Lists inside the last record and how many bytes they took.
  struct Inner {
    ListNode *list;
    std::size_t bytes;
  };
  const std::vector<Inner> &inner() const { return inner_; }

 private:
  bool pack(const Node *root, bool wide);
  void node(const Node *node);
  void map(const MapNode &map);
  void entry(const MapItem &item, std::size_t slot, bool spelled);
  void list(const ListNode &list);

  Plan &plan_;
  RecordWriter out_;
  std::vector<Inner> inner_;
};

// The lists of an owner as the commit leaves them: flattened name and node.
struct NamedList {
  std::string name;
  const ListNode *list;
};
// The flattened name of a child below a prefix of flattened names.
std::string list_name(const std::string &prefix, const KeyName &key);
void named_lists(const Node *node, const std::string &prefix, std::vector<NamedList> &out);

}  // namespace twcfg
