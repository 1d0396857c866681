#include "peers/reader.hpp"

namespace bench {

void CopyingReader::check(const char *who, const Node &node) {
  NodeCopy *copy = load(node.id.c_str());
  require_equal(who, *copy, node, set_);
  free_node_copy(copy);
}

}  // namespace bench
