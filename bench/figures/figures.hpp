// The figures; each adds its rows to the table.
#pragma once

#include <cstdint>
#include <string>

#include "data/node.hpp"
#include "measure/table.hpp"
#include "measure/workspace.hpp"

namespace bench {

struct Settings {
  const Workspace &workspace;
  FieldSet fields = kLoadedByNodeLoader;
  std::uint32_t nodes = 5000;
  std::uint32_t few = 1000, many = 50000;  // the sizes between which a commit must not grow
  std::uint32_t port_nodes = 500;          // nodes with 48 ports
  double effort = 1;                       // multiplies the number of rounds
  std::string fresh_program;               // path of twbench_fresh

  std::size_t rounds(double count) const { return static_cast<std::size_t>(count * effort) + 3; }
};

// A whole node by its ID, and the last node by its name, against the peers.
void measure_reads(const Settings &settings, Table &table);
// A port by its ID against the hand-packed record, and a node's ports at two sizes.
void measure_ports(const Settings &settings, Table &table);
// One field changed and one node added, each durable, at three sizes. Leaves behind the store of `many` nodes
// in the directory that it returns.
std::string measure_commits(const Settings &settings, Table &table);
// All nodes in one commit.
void measure_imports(const Settings &settings, Table &table);
// All users by their list, and saves of users and groups as they grow.
void measure_access(const Settings &settings, Table &table);
// All connections with their live status, with and without one state of the daemon for each.
void measure_connections(const Settings &settings, Table &table);
// Making, saving and reading a push as its nodes grow.
void measure_pushes(const Settings &settings, Table &table);
// A certificate request with a new key, against the key alone.
void measure_requests(const Settings &settings, Table &table);
// A fresh process on the store in `large`: time to the first value, and memory as nodes are read.
void measure_fresh_processes(const Settings &settings, const std::string &large, Table &table);

}  // namespace bench
