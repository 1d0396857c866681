#include <memory>

#include "figures/figures.hpp"
#include "ours/own_store.hpp"
#include "peers/packed_store.hpp"

namespace bench {
namespace {

// Each round imports into a new store; making and removing the store is not measured.
template <class Store>
void enter(Contest &contest, const Settings &settings, const std::string &name,
           const std::vector<Node> &nodes, void (Store::*import)(std::span<const Node>)) {
  struct Place {
    std::string path;
    std::unique_ptr<Store> store;
  };
  auto place = std::make_shared<Place>();
  place->path = settings.workspace.path() + "/" + name;
  contest.enter(
      name, [=, &nodes](std::size_t) { (place->store.get()->*import)(nodes); },
      [=, &settings](std::size_t) {
        place->store.reset();
        remove_directory(place->path);
        place->store = std::make_unique<Store>(settings.workspace.directory(name));
      });
}

template <class Import>
void compare(const Settings &settings, const std::string &figure, const std::vector<Node> &nodes,
             Import import, Target target, Table &table) {
  Contest contest;
  enter(contest, settings, "ours", nodes, import);
  enter(contest, settings, "LMDB bulk insert", nodes, &PackedStore::append);
  contest.run(settings.rounds(4), 1);
  table.compare(figure, contest, "ours", "LMDB bulk insert", target);
  table.compare(figure + ", processor", contest, "ours", "LMDB bulk insert", Target{}, Contest::processor);
}

}  // namespace

void measure_imports(const Settings &settings, Table &table) {
  const std::vector<Node> nodes = make_nodes(settings.nodes);
  std::vector<Node> enrolled;
  for (const Node &node : nodes) enrolled.push_back(enrolled_part(node));
  const std::string count = std::to_string(settings.nodes) + " in one commit";
  compare(settings, "import of " + count, nodes, &OwnStore::append, at_most(2), table);
  // What the peer does of an enrolment is the least of it: the row has no target.
  compare(settings, "enrolment of " + count, enrolled, &OwnStore::enroll, Target{}, table);
}

}  // namespace bench
