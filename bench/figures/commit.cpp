#include <cstdio>

#include "figures/figures.hpp"
#include "ours/own_store.hpp"
#include "peers/packed_store.hpp"

namespace bench {
namespace {

// Both stores at one size; nodes are added as the measuring goes on.
class Pair {
 public:
  Pair(const Settings &settings, std::uint32_t size)
      : name_(std::to_string(size)),
        directory_(settings.workspace.directory("own-" + name_)),
        own_(directory_),
        packed_(settings.workspace.directory("packed-" + name_)),
        size_(size),
        next_own_(size + 1),
        next_packed_(size + 1) {
    for (std::uint32_t done = 0; done < size;) {
      std::vector<Node> batch;
      for (std::uint32_t i = 0; i < 5000 && done < size; ++i) batch.push_back(make_node(++done));
      own_.append(batch);
      packed_.append(batch);
    }
  }

  std::string own_name() const { return "ours at " + name_; }
  std::string packed_name() const { return "LMDB, hand-packed at " + name_; }
  const std::string &directory() const { return directory_; }

  void enter_changes(Contest &contest) {
    const auto node = [this](std::size_t round) {
      return static_cast<std::uint32_t>(round * 7919 % size_ + 1);
    };
    const auto text = [](std::size_t round) {
      return changed_description(static_cast<std::uint32_t>(round));
    };
    contest.enter(own_name(), [=, this](std::size_t round) {
      own_.change_description(("nodes-" + std::to_string(node(round))).c_str(), text(round));
    });
    contest.enter(packed_name(),
                  [=, this](std::size_t round) { packed_.change_description(node(round), text(round)); });
  }

  void enter_additions(Contest &contest) {
    contest.enter(
        own_name(),
        [this](std::size_t) {
          own_.append({&new_node_, 1});
        },
        [this](std::size_t) { new_node_ = make_node(next_own_++); });
    contest.enter(
        packed_name(),
        [this](std::size_t) {
          packed_.append({&new_node_, 1});
        },
        [this](std::size_t) { new_node_ = make_node(next_packed_++); });
  }

 private:
  std::string name_, directory_;
  OwnStore own_;
  PackedStore packed_;
  std::uint32_t size_, next_own_, next_packed_;
  Node new_node_;
};

void compare(const std::string &figure, const Contest &contest, const Pair &few, const Pair &middle,
             const Pair &many, Table &table) {
  table.compare(figure, contest, middle.own_name(), middle.packed_name(), at_most(1.5));
  table.compare(figure, contest, many.own_name(), many.packed_name(), at_most(1.5));
  table.compare(figure + ", growth", contest, many.own_name(), few.own_name(), at_most(1.2));
  table.compare(figure + ", peer's growth", contest, many.packed_name(), few.packed_name(), Target{});
  // Where flushing takes most of the time this shows what else a commit costs.
  table.compare(figure + ", processor", contest, middle.own_name(), middle.packed_name(), Target{},
                Contest::processor);
  table.compare(figure + ", processor, growth", contest, many.own_name(), few.own_name(), Target{},
                Contest::processor);
}

}  // namespace

std::string measure_commits(const Settings &settings, Table &table) {
  Pair few(settings, settings.few), middle(settings, settings.nodes), many(settings, settings.many);
  lock_mapped_files(settings.workspace.path());
  const std::string where = settings.workspace.is_tmpfs() ? " (NOT ON A DISK)" : ", durable";
  Contest changes, additions;
  for (Pair *pair : {&few, &middle, &many}) {
    pair->enter_changes(changes);
    pair->enter_additions(additions);
  }
  changes.run(settings.rounds(100), 1);
  additions.run(settings.rounds(100), 1);
  compare("one field changed" + where, changes, few, middle, many, table);
  compare("one node added" + where, additions, few, middle, many, table);
  return many.directory();
}

}  // namespace bench
