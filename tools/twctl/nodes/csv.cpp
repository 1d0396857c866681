#include "nodes/csv.hpp"

#include <fmt/format.h>

#include "cli/failure.hpp"

namespace twctl {

namespace {

class reader {
 public:
  explicit reader(secret &text) : next_(text.data()), end_(text.data() + text.size()) {
    static constexpr std::string_view byte_order_mark = "\xef\xbb\xbf";
    if (text.view().starts_with(byte_order_mark)) next_ += byte_order_mark.size();
  }

  bool at_end() const { return next_ == end_; }

  csv_row row(size_t most_cells) {
    csv_row result{line_, {}, {}};
    for (;;) {
      std::string_view value = cell(result);
      if (result.cells.size() < most_cells)
        result.cells.push_back(value);
      else
        result.problem = fmt::format("more than {} columns", most_cells);
      if (!result.problem.empty()) {
        skip_line();
        return result;
      }
      if (!accept(',')) break;
    }
    accept_line_end();
    return result;
  }

 private:
  bool accept(char c) {
    if (at_end() || *next_ != c) return false;
    next_++;
    return true;
  }

  bool at_line_end() const {
    return at_end() || *next_ == '\n' || (*next_ == '\r' && next_ + 1 < end_ && next_[1] == '\n');
  }

  void accept_line_end() {
    accept('\r');
    if (accept('\n')) line_++;
  }

  void skip_line() {
    while (!at_end() && *next_ != '\n') next_++;
    accept_line_end();
  }

  std::string_view cell(csv_row &row) { return accept('"') ? quoted(row) : plain(row); }

  std::string_view plain(csv_row &row) {
    char *start = next_;
    while (!at_line_end() && *next_ != ',') {
      if (*next_ == '"') row.problem = "a quotation mark inside a cell that is not quoted";
      next_++;
    }
    return {start, static_cast<size_t>(next_ - start)};
  }

  /// The opening quotation mark is read already; unescaped bytes move up behind it.
  std::string_view quoted(csv_row &row) {
    char *start = next_, *write = next_;
    for (;;) {
      if (at_end()) {
        row.problem = "a quoted cell that never ends";
        break;
      }
      char c = *next_++;
      if (c == '"' && !accept('"')) break;
      if (c == '\n') line_++;
      *write++ = c;
    }
    if (row.problem.empty() && !at_line_end() && *next_ != ',')
      row.problem = "text behind the end of a quoted cell";
    return {start, static_cast<size_t>(write - start)};
  }

  char *next_, *end_;
  size_t line_ = 1;
};

}  // namespace

std::vector<csv_row> parse_csv(secret &text, size_t most_rows, size_t most_cells) {
  std::vector<csv_row> rows;
  for (reader source(text); !source.at_end();) {
    csv_row row = source.row(most_cells);
    bool empty_line = row.problem.empty() && row.cells.size() == 1 && row.cells[0].empty();
    if (empty_line) continue;
    if (rows.size() == most_rows)
      throw failure(exit_code::invalid_input, "the file has too many rows",
                    fmt::format("at most {} are read", most_rows), "split the file");
    rows.push_back(std::move(row));
  }
  return rows;
}

}  // namespace twctl
