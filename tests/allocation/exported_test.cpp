// Memory runs out at every allocation of every exported function: the call fails as it promises or succeeds
// whole, the store is as it was, and, under the address sanitizer, nothing leaks.
#include <fstream>
#include <set>

#include "allocation/cases.hpp"

namespace allocation {
namespace {

std::vector<Case> all() {
  // One to a line, so that families can be added side by side.
  // clang-format off
  const std::span<const Case> families[] = {
      system_cases,
      certificate_cases,
      https_cases,
      node_cases,
      node_runtime_cases,
      node_part_cases,
      port_cases,
      enrollment_cases,
      tag_cases,
      template_cases,
      template_data_cases,
      users_groups_cases,
      role_cases,
      acl_cases,
      user_cases,
      group_cases,
      auth_cases,
      network_cases,
      service_cases,
      search_cases,
      push_cases,
      bundle_cases,
      smart_group_cases,
  };
  // clang-format on
  std::vector<Case> rows;
  for (const auto family : families) rows.insert(rows.end(), family.begin(), family.end());
  return rows;
}

class EveryRefusedAllocation : public testing::TestWithParam<Case> {};

TEST_P(EveryRefusedAllocation, IsAnOrdinaryFailureOf) { GetParam().run(); }

INSTANTIATE_TEST_SUITE_P(Exported, EveryRefusedAllocation, testing::ValuesIn(all()),
                         [](const auto &row) { return std::string(row.param.function); });

TEST(EveryExportedFunction, HasARowInTheTables) {
  std::multiset<std::string> rows, exports;
  for (const Case &row : all()) rows.insert(row.function);
  std::ifstream list(TW_EXPORTS);
  for (std::string line; std::getline(list, line);)
    if (!line.empty() && line[0] != '#') exports.insert(line);
  EXPECT_EQ(rows, exports);
}

}  // namespace
}  // namespace allocation
