#include "pending_node.hpp"

const Recipe &node() {
  static const Recipe recipe = map_of(
      {{"name", text("a node")},
       {"count", integer(7)},
       {"on", boolean(true)},
       {"off", boolean(false)},
       {"key", blob(std::string("\0\1\2", 3))},
       {"first", refer("nodes-1")},
       {"ssh", map_of({{"port", integer(22)}, {"more", named("deep")}})},
       {"ports", list_of({map_of({{"name", text("p1")}, {"on", boolean(true)}}), named("p2"), text("p3")})},
       {"a.b", text("dotted")},
       {"absent", Recipe{}},
       {"groups", list_of({})}});
  return recipe;
}
