// All tables of the library as text, compared with the reviewed copy: a changed key, order or rule is a
// changed line there.
#include <gtest/gtest.h>

#include <fstream>
#include <iomanip>
#include <sstream>

#include "record/tables.hpp"

namespace {

const char *kind_name(cfg_kind kind) {
  constexpr const char *names[] = {"none", "map", "list", "string", "int", "bool", "blob", "reference"};
  return names[kind];
}

const char *presence_name(tw::presence need) {
  constexpr const char *names[] = {"mandatory", "optional", "lenient"};
  return names[static_cast<int>(need)];
}

void print(std::ostream &out, const tw::named_list &list) {
  out << "\n" << list.name << "\n";
  for (size_t i = 0; i < list.list.count; ++i) {
    const tw::row_data &row = list.list.rows[i];
    out << "  " << std::left << std::setw(20) << std::string(row.key) + " " << std::setw(11)
        << kind_name(row.kind);
    if (list.stores)
      out << row.rule;
    else
      out << std::setw(11) << presence_name(row.need) << (row.store ? "" : row.rule);
    out << "\n";
  }
}

std::string dump() {
  std::ostringstream out;
  out << "Keys that records read and write, in order.\n";
  for (const tw::tables *tables : tw::all_tables) {
    for (const tw::named_list &list : *tables) print(out, list);
  }
  std::string text;
  std::istringstream lines(out.str());
  for (std::string line; std::getline(lines, line);)
    text += line.substr(0, line.find_last_not_of(' ') + 1) + "\n";
  return text;
}

TEST(Golden, TheTablesAreTheReviewedOnes) {
  const std::string actual = dump();
  std::ofstream(GOLDEN_ACTUAL) << actual;
  std::ifstream file(GOLDEN_TABLES);
  ASSERT_TRUE(file) << GOLDEN_TABLES;
  std::ostringstream reviewed;
  reviewed << file.rdbuf();
  EXPECT_EQ(reviewed.str(), actual) << "When the change is meant: cp " GOLDEN_ACTUAL " " GOLDEN_TABLES;
}

}  // namespace
