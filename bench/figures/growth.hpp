// Costs that must grow no faster than what they are spent on.
#pragma once

#include <string>

#include "measure/contest.hpp"
#include "measure/table.hpp"

namespace bench {

// The sizes at which such a cost is measured; competitors are named for their size.
inline constexpr int kGrowthSizes[] = {100, 1'000, 10'000};

// What a competitor does in one run: as much as its size says, or as much as all others do.
enum class Work { of_its_size, as_much };

// A row for each larger size: what one of many costs against one of the fewest, in processor time.
void limit_growth(const std::string &what, const Contest &contest, Table &table, Work work);

}  // namespace bench
