// What is compared: something that finds a node by its ID and hands out copies of its values.
#pragma once

#include <memory>
#include <span>
#include <string>

#include "data/node_copy.hpp"

namespace bench {

class NodeReader {
 public:
  virtual ~NodeReader() = default;
  // The measured operation.
  virtual void load_and_free(const char *id) = 0;
  // Ends the program unless a load gives exactly what was stored.
  virtual void check(const char *who, const Node &node) = 0;
};

// A peer: loads into the common record.
class CopyingReader : public NodeReader {
 public:
  explicit CopyingReader(FieldSet set) : set_(set) {}
  void load_and_free(const char *id) final { free_node_copy(load(id)); }
  void check(const char *who, const Node &node) final;

 protected:
  virtual NodeCopy *load(const char *id) = 0;
  bool whole() const { return set_ == FieldSet::whole; }
  const FieldSet set_;
};

// The peers, filled with the nodes; `directory` is empty and theirs alone.
using MakeReader = std::unique_ptr<NodeReader>(std::span<const Node> nodes, FieldSet set,
                                               const std::string &directory);
MakeReader make_strdups, make_packed_lmdb, make_protobuf_lmdb, make_kept_protobuf_lmdb, make_sqlite,
    make_libyang;

}  // namespace bench
