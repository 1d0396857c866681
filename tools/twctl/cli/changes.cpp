#include "cli/changes.hpp"

#include <fmt/color.h>
#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <exception>
#include <map>

#include "cli/failure.hpp"
#include "cli/text.hpp"

namespace twctl {

namespace {

constexpr std::string_view hidden = "(hidden)";
constexpr size_t longest_value = 120;

/// The visitors are called from C, which an exception must not cross: it is carried over to the caller.
struct collector {
  std::vector<change> changes;
  std::exception_ptr problem;
};

const char *name_of(cfg_kind kind) {
  switch (kind) {
    case CFG_MAP:
      return "map";
    case CFG_LIST:
      return "list";
    case CFG_STRING:
      return "string";
    case CFG_INT:
      return "int";
    case CFG_BOOL:
      return "bool";
    case CFG_BLOB:
      return "blob";
    case CFG_REFERENCE:
      return "reference";
    case CFG_NONE:
      break;
  }
  return "";
}

/// Kinds that are shown whatever their name: the store words a blob as its size, and a truth value is no
/// secret.
bool is_told(cfg_kind kind) { return kind == CFG_BLOB || kind == CFG_BOOL; }

/**
 * A value as it may be shown. Containers are shown by their kind alone: their text could hold what their
 * members hide.
 */
cell shown(const cfg_change &raw, const char *text) {
  if (!text || raw.kind == CFG_MAP || raw.kind == CFG_LIST) return {};
  if (names_secret(view(raw.id)) && !is_told(raw.kind)) return std::string(hidden);
  return std::string(text);
}

int collect(void *context, const cfg_change *raw) {
  auto *target = static_cast<collector *>(context);
  try {
    std::string id(view(raw->id));
    target->changes.push_back(
        {raw->op, id, id, name_of(raw->kind), shown(*raw, raw->old_text), shown(*raw, raw->new_text)});
    return 1;
  } catch (...) {
    target->problem = std::current_exception();
    return 0;
  }
}

std::vector<change> finish(collector &target) {
  if (target.problem) std::rethrow_exception(target.problem);
  return std::move(target.changes);
}

/// Names the new list entries of an edit, whose provisional IDs say nothing, by their lists.
class place_namer {
 public:
  explicit place_namer(cfg *store) : store_(store) {}

  std::string name(const std::string &id) {
    size_t end = id.find('}');
    if (!id.starts_with('{') || end == std::string::npos) return id;
    std::string entry = id.substr(0, end + 1);
    auto known = names_.find(entry);
    if (known == names_.end()) known = names_.emplace(entry, name_entry(entry)).first;
    return known->second + id.substr(end + 1);
  }

 private:
  std::string name_entry(const std::string &entry) {
    cfg_elem *element = cfg_get_by_id(store_, entry.c_str());
    cfg_elem *parent = cfg_get_parent_elem(store_, element);
    heap_text parent_id = text_from(cfg_elem_uuid, parent);
    if (!parent_id) return entry;
    std::string inside = name(parent_id.get());
    if (cfg_elem_kind(parent) == CFG_MAP) return fmt::format("{}.{}", inside, key_of(parent, element));
    return fmt::format("{}[new {}]", inside, ++counts_[inside]);
  }

  /// The key under which a map holds an element that was made apart from it.
  std::string key_of(cfg_elem *map, cfg_elem *element) {
    std::optional<heap_texts> keys = map_keys(map);
    if (!keys) return {};
    for (const char *key : *keys)
      if (cfg_simple_get_mapelem(store_, map, key) == element) return key;
    return {};
  }

  cfg *store_;
  std::map<std::string, std::string> names_;
  std::map<std::string, size_t> counts_;
};

std::string value_words(const cell &value, const std::string &kind) {
  std::string text = words(value);
  if (text.size() > longest_value) {
    size_t end = longest_value;
    while (end > 0 && (static_cast<unsigned char>(text[end]) & 0xc0) == 0x80) end--;
    text = text.substr(0, end) + "...";
  }
  return kind == "string" && text != hidden ? '"' + text + '"' : text;
}

std::string line_of(const change &one) {
  std::string line = fmt::format("{} {}", one.op, printable(one.place));
  bool has_before = !std::holds_alternative<std::monostate>(one.before);
  bool has_after = !std::holds_alternative<std::monostate>(one.after);
  if (!has_before && !has_after) return one.kind.empty() ? line : fmt::format("{} ({})", line, one.kind);
  line += ": ";
  if (has_before) line += value_words(one.before, one.kind);
  if (has_before && has_after) line += " -> ";
  if (has_after) line += value_words(one.after, one.kind);
  return line;
}

fmt::terminal_color colour_of(char op) {
  if (op == '+') return fmt::terminal_color::green;
  if (op == '-') return fmt::terminal_color::red;
  return fmt::terminal_color::yellow;
}

}  // namespace

bool names_secret(std::string_view id) {
  static constexpr std::array<std::string_view, 7> parts = {"password", "passphrase", "private_key", "psk",
                                                            "secret",   "token",      "hash"};
  std::string name = lower(id);
  if (std::any_of(parts.begin(), parts.end(),
                  [&](std::string_view part) { return name.find(part) != std::string::npos; }))
    return true;
  // "key" is short enough to stand inside other words: only a whole step of the ID, or its end, counts.
  size_t start = 0;
  while (start <= name.size()) {
    size_t end = std::min(name.find('.', start), name.size());
    std::string_view step = std::string_view(name).substr(start, end - start);
    if (step == "key" || (step.size() > 4 && (step.ends_with("_key") || step.ends_with("-key")))) return true;
    start = end + 1;
  }
  return false;
}

std::vector<change> changes_of(cfg *store) {
  collector target;
  int done = cfg_visit_changes(store, collect, &target);
  std::vector<change> changes = finish(target);
  if (!done) throw store_failure(store, "cannot list the changes");
  place_namer places(store);
  for (change &one : changes) {
    one.place = places.name(one.id);
    if (!names_secret(one.place) || one.kind == name_of(CFG_BLOB) || one.kind == name_of(CFG_BOOL)) continue;
    for (cell *value : {&one.before, &one.after})
      if (!std::holds_alternative<std::monostate>(*value)) *value = std::string(hidden);
  }
  return changes;
}

std::vector<change> changes_of_commit(cfg *store, uint64_t revision) {
  collector target;
  int done = cfg_visit_commit(store, revision, collect, &target);
  std::vector<change> changes = finish(target);
  if (!done) throw store_failure(store, fmt::format("cannot show commit {}", revision));
  return changes;
}

void print_changes(const std::vector<change> &changes, std::FILE *stream, size_t limit) {
  bool colour = wants_colour(fileno(stream));
  size_t count = limit && changes.size() > limit ? limit : changes.size();
  for (size_t i = 0; i < count; i++) {
    std::string line = line_of(changes[i]);
    if (colour)
      fmt::print(stream, fmt::fg(colour_of(changes[i].op)), "{}\n", line);
    else
      fmt::print(stream, "{}\n", line);
  }
  if (count < changes.size()) fmt::print(stream, "... and {} more changes\n", changes.size() - count);
}

json_value changes_to_json(const std::vector<change> &changes) {
  json_value list = new_array();
  for (const change &one : changes) {
    json_value item = new_object();
    put(item.get(), "op", std::string(1, one.op));
    put(item.get(), "id", one.id);
    if (!one.kind.empty()) {
      put(item.get(), "kind", one.kind);
      put(item.get(), "before", one.before);
      put(item.get(), "after", one.after);
    }
    append(list.get(), std::move(item));
  }
  return list;
}

}  // namespace twctl
