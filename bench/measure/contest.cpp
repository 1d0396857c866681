#include "measure/contest.hpp"

#include <time.h>

#include <algorithm>
#include <stdexcept>

namespace bench {
namespace {

double now(Contest::Clock clock) {
  timespec time{};
  clock_gettime(clock == Contest::wall ? CLOCK_MONOTONIC : CLOCK_THREAD_CPUTIME_ID, &time);
  return static_cast<double>(time.tv_sec) * 1e9 + static_cast<double>(time.tv_nsec);
}

}  // namespace

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
  for (std::size_t round = 0; round <= rounds; ++round) {
    for (std::size_t turn = 0; turn < entrants_.size(); ++turn) {
      // Another one begins each round, so that none always runs behind the same predecessor.
      Entrant &entrant = entrants_[(round + turn) % entrants_.size()];
      if (entrant.prepare) entrant.prepare(round);
      const double start[] = {now(wall), now(processor)};
      entrant.run(round);
      const double end[] = {now(wall), now(processor)};
      if (round == 0) continue;
      for (const Clock clock : {wall, processor})
        entrant.nanoseconds[clock].push_back((end[clock] - start[clock]) / static_cast<double>(operations));
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

double Contest::nanoseconds(const std::string &name, Clock clock) const {
  return median(find(name).nanoseconds[clock]);
}

double Contest::ratio(const std::string &name, const std::string &peer, Clock clock) const {
  const std::vector<double> &ours = find(name).nanoseconds[clock], &theirs = find(peer).nanoseconds[clock];
  std::vector<double> ratios;
  for (std::size_t i = 0; i < ours.size(); ++i) ratios.push_back(ours[i] / theirs[i]);
  return median(ratios);
}

}  // namespace bench
