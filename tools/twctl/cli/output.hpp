// What commands print on standard output: tables and sheets for people, JSON for programs, from the same
// data.
#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "cli/options.hpp"
#include "cli/records.hpp"

namespace twctl {

/// One value: nothing, a text, a number or a truth value.
using cell = std::variant<std::monostate, std::string, int64_t, bool>;

/// The cell for a text that may be NULL.
cell cell_of(const char *text);
/// Cells for which an empty text and a zero mean that there is nothing to tell.
cell unless_empty(std::string text);
cell unless_zero(int64_t number);
/// The cell as a person reads it: "-" for nothing, "yes" and "no" for truth values.
std::string words(const cell &value);
inline bool is_nothing(const cell &value) { return std::holds_alternative<std::monostate>(value); }
json_value to_json(const cell &value);

json_value new_object();
json_value new_array();
/// Adds a member to a JSON object, an item to a JSON array.
void put(json_t *object, const char *key, json_value value);
void put(json_t *object, const char *key, const cell &value);
void append(json_t *array, json_value item);

/// A column or a line: its JSON key, its heading, and whether its values stand to the right.
struct heading {
  const char *key;
  const char *title;
  bool to_the_right = false;
};

/// Rows of one kind: a table, or {"<name>": [{...}, ...]}.
class listing {
 public:
  listing(const char *name, std::vector<heading> columns) : name_(name), columns_(std::move(columns)) {}
  void add(std::vector<cell> row) { rows_.push_back(std::move(row)); }
  size_t size() const { return rows_.size(); }
  void print(const options &opts) const;

 private:
  const char *name_;
  std::vector<heading> columns_;
  std::vector<std::vector<cell>> rows_;
};

/// The fields of one thing: a line for each that has a value, or one JSON object with all of them.
class sheet {
 public:
  void add(const char *key, const char *title, cell value) {
    lines_.emplace_back(heading{key, title}, std::move(value));
  }
  json_value json() const;
  void print(const options &opts) const;

 private:
  std::vector<std::pair<heading, cell>> lines_;
};

void print_json(const json_value &value);

/// Reports an output that did not arrive (a full disk, for one). Called once at the end.
void finish_output();

/// True when colours are wanted on the stream: it is a terminal and NO_COLOR is not set.
bool wants_colour(int descriptor);

}  // namespace twctl
