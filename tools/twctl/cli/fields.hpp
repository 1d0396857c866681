// Fields of a record as the command line has them: one table makes what a noun shows, what it sets, and its
// help.
#pragma once

#include <cstddef>
#include <iterator>
#include <map>
#include <string>
#include <type_traits>
#include <vector>

#include "cli/entries.hpp"
#include "cli/failure.hpp"
#include "cli/output.hpp"

namespace twctl {

/// What a field accepts: fails with exit code 5 for a text that cannot be the value of the field `name`.
using text_check = void (*)(const std::string &text, const std::string &name);

void allow_text(const std::string &text, const std::string &name);     ///< a label, or nothing
void allow_host(const std::string &text, const std::string &name);     ///< a host name or address, or nothing
void require_host(const std::string &text, const std::string &name);   ///< a host name or address
void allow_address(const std::string &text, const std::string &name);  ///< an IPv4 address, or nothing
int32_t require_number(const std::string &text, const std::string &name, int32_t lowest, int32_t highest);
/// Fails for a word that is none of those that are listed.
[[noreturn]] void refuse_word(const std::string &text, const std::string &name, const std::string &words);

template <typename Record>
struct field {
  const char *name;   ///< what is typed before '=', and the JSON key
  const char *title;  ///< what people read
  cell (*read)(Record *record);
  /// Checks a text and puts it into the record; NULL for what can only be read.
  void (*write)(Record *record, const std::string &text, const std::string &name);
};

template <typename Getter>
struct getter_of;
template <typename Value, typename Record, bool never_throws>
struct getter_of<Value (*)(Record *) noexcept(never_throws)> {
  using record = std::remove_const_t<Record>;
};
/// The record that a getter reads.
template <auto Get>
using record_of = typename getter_of<decltype(Get)>::record;

inline void require_set(int done, const std::string &name) {
  if (!done) throw failure(exit_code::failure, "cannot set " + name);
}

template <auto Get>
constexpr field<record_of<Get>> shown_text(const char *name, const char *title) {
  return {name, title, [](record_of<Get> *record) { return cell_of(Get(record)); }, nullptr};
}

template <auto Get, auto Set, text_check Check = allow_text>
constexpr field<record_of<Get>> text_field(const char *name, const char *title) {
  auto write = [](record_of<Get> *record, const std::string &text, const std::string &key) {
    Check(text, key);
    require_set(Set(record, text.c_str()), key);
  };
  return {name, title, shown_text<Get>(name, title).read, write};
}

/// A number for which 0 stands for none.
template <auto Get, auto Set, int32_t lowest, int32_t highest>
constexpr field<record_of<Get>> number_field(const char *name, const char *title) {
  auto write = [](record_of<Get> *record, const std::string &text, const std::string &key) {
    require_set(Set(record, require_number(text, key, lowest, highest)), key);
  };
  return {name, title, [](record_of<Get> *record) { return unless_zero(Get(record)); }, write};
}

template <auto Get, auto Set>
constexpr field<record_of<Get>> truth_field(const char *name, const char *title) {
  auto write = [](record_of<Get> *record, const std::string &text, const std::string &key) {
    require_set(Set(record, require_truth(text, key) ? 1 : 0), key);
  };
  return {name, title, [](record_of<Get> *record) { return cell(Get(record) != 0); }, write};
}

/// One of some words, the values `first` to `last` of a table of the library.
template <auto Get, auto Set, auto Word, int32_t first, int32_t last>
constexpr field<record_of<Get>> word_field(const char *name, const char *title) {
  auto write = [](record_of<Get> *record, const std::string &text, const std::string &key) {
    std::string words;
    for (int32_t value = first; value <= last; value++) {
      if (text == Word(value)) return require_set(Set(record, value), key);
      words += (words.empty() ? "" : ", ") + std::string(Word(value));
    }
    refuse_word(text, key, words);
  };
  return {name, title, [](record_of<Get> *record) { return cell_of(Word(Get(record))); }, write};
}

/// Whether a secret is set, which is all that is shown of it.
template <auto Get>
constexpr field<record_of<Get>> shown_secret(const char *name, const char *title) {
  auto read = [](record_of<Get> *record) {
    const char *text = Get(record);
    return cell(text && *text);
  };
  return {name, title, read, nullptr};
}

/// The names of the fields that can be set, and of what else the noun sets.
template <typename Record, size_t count>
std::vector<const char *> settable(const field<Record> (&fields)[count],
                                   const std::vector<const char *> &others = {}) {
  std::vector<const char *> names;
  for (const field<Record> &one : fields)
    if (one.write) names.push_back(one.name);
  names.insert(names.end(), others.begin(), others.end());
  return names;
}

template <typename Record, size_t count>
void show_fields(sheet &result, const field<Record> (&fields)[count], Record *record) {
  for (const field<Record> &one : fields) result.add(one.name, one.title, one.read(record));
}

/// The same as a row of a listing.
template <typename Record, size_t count>
void list_fields(listing &result, const field<Record> (&fields)[count], Record *record) {
  std::vector<cell> row;
  for (const field<Record> &one : fields) row.push_back(one.read(record));
  result.add(std::move(row));
}

/// Puts what read_assignments() gave into the record, checked, in the order of the fields.
template <typename Record, size_t count>
void set_fields(const field<Record> (&fields)[count], Record *record,
                const std::map<std::string, std::string> &values) {
  for (const field<Record> &one : fields)
    if (auto value = values.find(one.name); value != values.end()) one.write(record, value->second, one.name);
}

}  // namespace twctl
