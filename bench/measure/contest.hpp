// Runs competitors in turn, A B C A B C, and compares them round by round. What the machine does meanwhile
// hits all of them alike, and one disturbed round moves no median.
#pragma once

#include <array>
#include <cstddef>
#include <functional>
#include <string>
#include <vector>

namespace bench {

double median(std::vector<double> values);

class Contest {
 public:
  using Run = std::function<void(std::size_t round)>;
  // Prepares a round outside the measured time; may be empty.
  void enter(std::string name, Run run, Run prepare = nullptr);

  // One unmeasured round, then `rounds` measured ones; each call of Run does `operations` operations.
  void run(std::size_t rounds, std::size_t operations);

  // Wall time, or the time that this thread was running, in the kernel included: what is left when the disk
  // is waited for.
  enum Clock { wall, processor };
  // Median nanoseconds of one operation.
  double nanoseconds(const std::string &name, Clock clock = wall) const;
  // Median over the rounds of what `name` took in proportion to `peer`.
  double ratio(const std::string &name, const std::string &peer, Clock clock = wall) const;
  bool has(const std::string &name) const;
  std::vector<std::string> names() const;

 private:
  struct Entrant {
    std::string name;
    Run run, prepare;
    std::array<std::vector<double>, 2> nanoseconds;  // by clock
  };
  const Entrant &find(const std::string &name) const;
  std::vector<Entrant> entrants_;
};

}  // namespace bench
