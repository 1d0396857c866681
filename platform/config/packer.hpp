// Writes one record in its stored form (packed.hpp).
#pragma once

#include <string>
#include <vector>

#include "pack.hpp"

namespace twcfg {

class Packer {
 public:
  explicit Packer(Plan &plan) : plan_(plan) {}
  // The record's bytes; empty when the record would be too large.
  std::string pack(const Node *root);
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
  void list(const ListNode &list);
  void bytes(std::uint8_t tag, std::size_t length_bytes, std::string_view data);
  void patch(std::size_t slot, std::size_t offset);

  template <class T>
  void put(T value) {
    out_.append(reinterpret_cast<const char *>(&value), sizeof value);
  }

  Plan &plan_;
  std::string out_;
  std::size_t width_ = 2;
  bool overflow_ = false;
  std::vector<Inner> inner_;
};

// The lists of an owner as the commit leaves them: flattened name and node.
struct NamedList {
  std::string name;
  const ListNode *list;
};
// The flattened name of a child below a prefix of flattened names.
std::string list_name(const std::string &prefix, std::string_view key);
void named_lists(const Node *node, const std::string &prefix, std::vector<NamedList> &out);

}  // namespace twcfg
