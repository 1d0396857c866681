// Comma-separated values as RFC 4180 has them: quoted cells, doubled quotes, line ends inside quotes, CRLF,
// BOM.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "cli/secret.hpp"

namespace twctl {

struct csv_row {
  size_t line;                          ///< where the row starts, counted from 1
  std::vector<std::string_view> cells;  ///< point into the text that was parsed
  std::string problem;                  ///< why the row cannot be read; its cells are then incomplete
};

/**
 * Splits a text into rows, in place: quoted cells are unquoted where they stand, so that passwords among them
 * are not copied about. Empty lines are left out. The text must outlive the rows.
 */
std::vector<csv_row> parse_csv(secret &text, size_t most_rows, size_t most_cells);

}  // namespace twctl
