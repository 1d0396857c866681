// Memory runs out at every allocation of every function of the store: the call says so, leaves the edit and
// the store as they were, and goes through when it is made again. Under the address sanitizer, nothing leaks.
#include <algorithm>
#include <filesystem>
#include <fstream>
#include <regex>
#include <set>
#include <sstream>
#include <vector>

#include "store_allocation/cases.hpp"

namespace store_allocation {
namespace {

std::vector<Case> all() {
  std::vector<Case> rows;
  for (const auto header : {store_cases, element_cases, content_cases, layout_cases, read_cases,
                            condition_cases, message_cases, transfer_cases})
    rows.insert(rows.end(), header.begin(), header.end());
  return rows;
}

struct Row {
  Case function;
  EngineKind engine;
};
void PrintTo(const Row &row, std::ostream *out) { PrintTo(row.function, out); }

std::vector<Row> on_each_engine() {
  std::vector<Row> rows;
  for (const Case &function : all()) {
    for (const EngineKind engine : {EngineKind::kLmdb, EngineKind::kMemory})
      if (function.only.value_or(engine) == engine) rows.push_back({function, engine});
  }
  return rows;
}

std::string name(const testing::TestParamInfo<Row> &row) {
  const std::string function = row.param.function.function;
  if (row.param.function.only) return function;
  return function + (row.param.engine == EngineKind::kLmdb ? "_lmdb" : "_memory");
}

class EveryRefusedAllocation : public testing::TestWithParam<Row> {};

TEST_P(EveryRefusedAllocation, IsAnOrdinaryFailureOf) { GetParam().function.run(GetParam().engine); }

INSTANTIATE_TEST_SUITE_P(Exported, EveryRefusedAllocation, testing::ValuesIn(on_each_engine()), name);

TEST(EveryExportedFunction, HasARowInTheTables) {
  std::set<std::string> rows, exports;
  for (const Case &row : all()) EXPECT_TRUE(rows.insert(row.function).second) << row.function;
  const std::regex declaration(R"(CFG_API[^;(]*?\b((?:cfg|condition|json)_\w+)\()");
  for (const auto &header : std::filesystem::directory_iterator(TWCONFIG_HEADERS)) {
    std::stringstream text;
    text << std::ifstream(header.path()).rdbuf();
    const std::string content = text.str();
    for (std::sregex_iterator at(content.begin(), content.end(), declaration), end; at != end; ++at)
      exports.insert((*at)[1]);
  }
  EXPECT_EQ(rows, exports);
}

}  // namespace
}  // namespace store_allocation
