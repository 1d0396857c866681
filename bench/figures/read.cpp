#include <cstdio>
#include <cstring>

#include "figures/figures.hpp"
#include "ours/own_store.hpp"
#include "peers/all.hpp"
#include "peers/packed_store.hpp"

namespace bench {
namespace {

// Nothing waits in these figures: processor time is wall time without what other processes take away.
constexpr const char *kOurs = "ours";
constexpr std::size_t kLoadsPerRound = 250;

// The ID that all competitors load at this turn: far from the one before, and over all nodes in the end.
const char *id_at(const std::vector<Node> &nodes, std::size_t round, std::size_t turn) {
  return nodes[((round * kLoadsPerRound + turn) * 7919) % nodes.size()].id.c_str();
}

void enter(Contest &contest, const char *name, NodeReader &reader, const std::vector<Node> &nodes) {
  // Checks what it loads, which also brings all of its data into memory.
  for (const Node &node : nodes) reader.check(name, node);
  contest.enter(name, [&reader, &nodes](std::size_t round) {
    for (std::size_t i = 0; i < kLoadsPerRound; ++i) reader.load_and_free(id_at(nodes, round, i));
  });
}

void measure_whole_node(const Settings &settings, const std::vector<Node> &nodes, OwnStore &own,
                        Table &table) {
  const char *figure =
      settings.fields == FieldSet::whole ? "whole node by id, all fields" : "whole node by id";
  Contest contest;
  std::vector<std::unique_ptr<NodeReader>> readers;
  readers.push_back(std::make_unique<OwnReader>(own.handle(), settings.fields));
  enter(contest, kOurs, *readers.back(), nodes);
  for (const Peer &peer : peers()) {
    if (peer.make == nullptr) continue;
    const std::string directory = settings.workspace.directory("peer" + std::to_string(readers.size()));
    readers.push_back(peer.make(nodes, settings.fields, directory));
    enter(contest, peer.name, *readers.back(), nodes);
  }
  lock_mapped_files(settings.workspace.path());
  contest.run(settings.rounds(200), kLoadsPerRound);
  for (const Peer &peer : peers()) {
    if (contest.has(peer.name))
      table.compare(figure, contest, kOurs, peer.name, peer.target, Contest::processor);
    else
      table.skip(figure, std::string(peer.name) + ", " + peer.missing);
  }
}

void measure_find(const Settings &settings, const std::vector<Node> &nodes, OwnStore &own, Table &table) {
  PackedStore packed(settings.workspace.directory("find"));
  packed.append(nodes);
  packed.take_snapshot();
  lock_mapped_files(settings.workspace.path());
  const Node &last = nodes.back();
  const char *name = last.texts[kName].c_str();
  const auto find_own = [&](std::size_t) {
    cfg_node *found = cfg_get_node_by_name(own.handle(), name);
    require_store(own.handle(), found != nullptr && last.id == cfg_node_get_uuid(found));
    cfg_node_free(found);
  };
  const auto find_packed = [&](std::size_t) {
    NodeCopy *found = packed.find_by_name(name, settings.fields);
    if (found == nullptr) throw std::runtime_error("the packed store does not find the last node");
    free_node_copy(found);
  };
  Contest contest;
  contest.enter(kOurs, find_own);
  contest.enter("LMDB scan of name and status", find_packed);
  contest.run(settings.rounds(300), 1);
  table.compare("find by name, last of " + std::to_string(nodes.size()), contest, kOurs,
                "LMDB scan of name and status", at_most(2), Contest::processor);
}

}  // namespace

void measure_reads(const Settings &settings, Table &table) {
  const std::vector<Node> nodes = make_nodes(settings.nodes);
  OwnStore own(settings.workspace.directory("own"));
  own.append(nodes);
  measure_whole_node(settings, nodes, own, table);
  measure_find(settings, nodes, own, table);
}

}  // namespace bench
