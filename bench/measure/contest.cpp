#include "measure/contest.hpp"

#include <algorithm>
#include <chrono>
#include <stdexcept>

namespace bench {

double median(std::vector<double> values) {
  if (values.empty()) return 0;
  std::sort(values.begin(), values.end());
  const std::size_t middle = values.size() / 2;
  return values.size() % 2 ? values[middle] : (values[middle - 1] + values[middle]) / 2;
}

void Contest::enter(std::string name, Run run, Run prepare) {
  entrants_.push_back({std::move(name), std::move(run), std::move(prepare), {}});
}

void Contest::run(std::size_t rounds, std::size_t operations) {
  using Clock = std::chrono::steady_clock;
  for (std::size_t round = 0; round <= rounds; ++round) {
    for (std::size_t turn = 0; turn < entrants_.size(); ++turn) {
      // Another one begins each round, so that none always runs behind the same predecessor.
      Entrant &entrant = entrants_[(round + turn) % entrants_.size()];
      if (entrant.prepare) entrant.prepare(round);
      const Clock::time_point start = Clock::now();
      entrant.run(round);
      const std::chrono::duration<double, std::nano> taken = Clock::now() - start;
      if (round > 0) entrant.nanoseconds.push_back(taken.count() / static_cast<double>(operations));
    }
  }
}

const Contest::Entrant &Contest::find(const std::string &name) const {
  const auto found =
      std::find_if(entrants_.begin(), entrants_.end(), [&](const Entrant &e) { return e.name == name; });
  if (found == entrants_.end()) throw std::logic_error("nobody entered as " + name);
  return *found;
}

bool Contest::has(const std::string &name) const {
  return std::any_of(entrants_.begin(), entrants_.end(), [&](const Entrant &e) { return e.name == name; });
}

std::vector<std::string> Contest::names() const {
  std::vector<std::string> names;
  for (const Entrant &entrant : entrants_) names.push_back(entrant.name);
  return names;
}

double Contest::nanoseconds(const std::string &name) const { return median(find(name).nanoseconds); }

double Contest::ratio(const std::string &name, const std::string &peer) const {
  const std::vector<double> &ours = find(name).nanoseconds, &theirs = find(peer).nanoseconds;
  std::vector<double> ratios;
  for (std::size_t i = 0; i < ours.size(); ++i) ratios.push_back(ours[i] / theirs[i]);
  return median(ratios);
}

}  // namespace bench
