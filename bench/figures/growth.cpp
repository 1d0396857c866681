#include "figures/growth.hpp"

#include <span>

namespace bench {

void limit_growth(const std::string &what, const Contest &contest, Table &table, Work work) {
  const int smallest = kGrowthSizes[0];
  for (const int size : std::span(kGrowthSizes).subspan(1)) {
    const double ratio = contest.ratio(std::to_string(size), std::to_string(smallest), Contest::processor);
    const double each = work == Work::as_much ? ratio : ratio * smallest / size;
    table.limit(what + ", each of " + std::to_string(size) + " against each of " + std::to_string(smallest),
                each, 1.3, "x");
  }
}

}  // namespace bench
