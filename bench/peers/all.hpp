// The peers of the whole-node figure, each with what is promised against it.
#pragma once

#include <vector>

#include "measure/table.hpp"
#include "peers/reader.hpp"

namespace bench {

struct Peer {
  const char *name;
  const char *missing;  // why it was not built; "" when it was
  Target target;
  // Fills a new store in an empty directory that is the peer's alone; NULL when it was not built.
  MakeReader *make;
};
const std::vector<Peer> &peers();

}  // namespace bench
