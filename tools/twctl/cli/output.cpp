#include "cli/output.hpp"

#include <fmt/format.h>
#include <libsmartcols.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <new>

#include "cli/failure.hpp"
#include "cli/text.hpp"

namespace twctl {

namespace {

using table_handle = std::unique_ptr<libscols_table, releaser<scols_unref_table>>;

[[noreturn]] void out_of_memory() { throw std::bad_alloc(); }

json_value checked(json_t *value) {
  if (!value) out_of_memory();
  return json_value(value);
}

}  // namespace

cell cell_of(const char *text) {
  if (!text) return {};
  return std::string(text);
}

cell unless_empty(std::string text) {
  if (text.empty()) return {};
  return text;
}

cell unless_zero(int64_t number) {
  if (number == 0) return {};
  return number;
}

std::string words(const cell &value) {
  struct visitor {
    std::string operator()(std::monostate) const { return "-"; }
    std::string operator()(const std::string &text) const { return printable(text); }
    std::string operator()(int64_t number) const { return std::to_string(number); }
    std::string operator()(bool truth) const { return truth ? "yes" : "no"; }
  };
  return std::visit(visitor{}, value);
}

json_value to_json(const cell &value) {
  struct visitor {
    json_t *operator()(std::monostate) const { return json_null(); }
    json_t *operator()(const std::string &text) const {
      // The store does not check what its texts are made of; JSON can only carry UTF-8.
      return is_utf8(text) ? json_stringn(text.data(), text.size()) : json_string(printable(text).c_str());
    }
    json_t *operator()(int64_t number) const { return json_integer(number); }
    json_t *operator()(bool truth) const { return json_boolean(truth); }
  };
  return checked(std::visit(visitor{}, value));
}

json_value new_object() { return checked(json_object()); }
json_value new_array() { return checked(json_array()); }

void append(json_t *array, json_value item) {
  if (json_array_append_new(array, item.release()) != 0) out_of_memory();
}

void put(json_t *object, const char *key, json_value value) {
  if (json_object_set_new(object, key, value.release()) != 0) out_of_memory();
}

void put(json_t *object, const char *key, const cell &value) { put(object, key, to_json(value)); }

void print_json(const json_value &value) {
  if (json_dumpf(value.get(), stdout, JSON_INDENT(2)) != 0)
    throw failure(exit_code::failure, "cannot write the result");
  fmt::print("\n");
}

void listing::print(const options &opts) const {
  if (opts.json()) {
    json_value items = new_array();
    for (const auto &row : rows_) {
      json_value item = new_object();
      for (size_t i = 0; i < columns_.size(); i++) put(item.get(), columns_[i].key, row[i]);
      append(items.get(), std::move(item));
    }
    json_value result = new_object();
    put(result.get(), name_, std::move(items));
    print_json(result);
    return;
  }
  table_handle table(scols_new_table());
  if (!table) out_of_memory();
  scols_table_enable_noencoding(table.get(), 1);  // words() has made every cell printable
  for (const heading &column : columns_)
    if (!scols_table_new_column(table.get(), column.title, 0, column.to_the_right ? SCOLS_FL_RIGHT : 0))
      out_of_memory();
  for (const auto &row : rows_) {
    libscols_line *line = scols_table_new_line(table.get(), nullptr);
    if (!line) out_of_memory();
    for (size_t i = 0; i < row.size(); i++)
      if (scols_line_set_data(line, i, words(row[i]).c_str()) != 0) out_of_memory();
  }
  if (rows_.empty()) {
    fmt::print(stderr, "Nothing to list.\n");
    return;
  }
  // Only a terminal is worth fitting the width to; a pipe gets every column whole.
  scols_table_set_stream(table.get(), stdout);
  if (!isatty(STDOUT_FILENO)) scols_table_set_termforce(table.get(), SCOLS_TERMFORCE_NEVER);
  if (scols_print_table(table.get()) != 0) throw failure(exit_code::failure, "cannot write the table");
}

json_value sheet::json() const {
  json_value object = new_object();
  for (const auto &[line, value] : lines_) put(object.get(), line.key, value);
  return object;
}

void sheet::print(const options &opts) const {
  if (opts.json()) {
    print_json(json());
    return;
  }
  if (std::all_of(lines_.begin(), lines_.end(), [](const auto &line) { return is_nothing(line.second); })) {
    fmt::print(stderr, "Nothing is set.\n");
    return;
  }
  size_t width = 0;
  for (const auto &[line, value] : lines_) width = std::max(width, view(line.title).size());
  for (const auto &[line, value] : lines_)
    if (!is_nothing(value)) fmt::print("{:<{}}  {}\n", line.title, width, words(value));
}

void finish_output() {
  if (fflush(stdout) != 0 || ferror(stdout)) throw system_failure("cannot write to standard output");
}

bool wants_colour(int descriptor) {
  const char *no_colour = getenv("NO_COLOR");
  const char *terminal = getenv("TERM");
  return isatty(descriptor) && (!no_colour || !*no_colour) && terminal && view(terminal) != "dumb";
}

}  // namespace twctl
