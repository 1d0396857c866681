// The table that a run prints: one row per figure and peer.
#pragma once

#include <string>
#include <vector>

#include "measure/contest.hpp"

namespace bench {

// What a figure promises. `none` is printed for comparison only.
struct Target {
  enum Kind { none, at_most, times_faster } kind = none;
  double value = 0;
};
inline Target at_most(double ratio) { return {Target::at_most, ratio}; }
inline Target times_faster(double factor) { return {Target::times_faster, factor}; }

class Table {
 public:
  // Ours against a peer of one contest.
  void compare(const std::string &figure, const Contest &contest, const std::string &ours,
               const std::string &peer, Target target, Contest::Clock clock = Contest::wall);
  // A figure with a limit of its own, both in the same unit.
  void limit(const std::string &figure, double value, double limit, const std::string &unit);
  // A line for a figure that was not measured.
  void skip(const std::string &figure, const std::string &reason);
  void print() const;
  bool all_met() const;

 private:
  struct Row {
    std::string figure, ours, peer_name, peer, ratio, target, met;
  };
  std::vector<Row> rows_;
};

// "1.23 us", three significant digits.
std::string duration_text(double nanoseconds);

}  // namespace bench
