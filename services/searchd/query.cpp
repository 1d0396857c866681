#include "query.hpp"

#include <cstdlib>
#include <new>
#include <string_view>

#include "access.hpp"
#include "refusal.hpp"

namespace searchd {

namespace {

constexpr std::string_view tag_prefix = "tag:";

using condition = twobject::condition_tree;

// The library's reader is the judge of what a condition is; from then on every member is known to be there.
condition checked(const json_t *tree) {
  const twobject::heap_text text(tree ? json_dumps(tree, JSON_COMPACT | JSON_ENCODE_ANY) : nullptr);
  condition read(text ? json_dump_to_condition(text.get(), 0) : nullptr);
  if (!read) throw refusal("\"conditions\" is no condition tree");
  return read;
}

std::int32_t operator_of(std::string_view name) {
  if (name == "equal") return CFG_OP_EQUAL;
  return name == "absent" ? CFG_OP_ABSENT : CFG_OP_NOT_EQUAL;
}

void give(query &to, condition leaf) {
  if (!leaf || !cfg_condition_add_child(to.stored.get(), leaf.get())) throw std::bad_alloc();
  static_cast<void>(leaf.release());
  ++to.stored_count;
}

void read_leaf(const json_t *leaf, query &into) {
  const std::string key = json_string_value(json_object_get(leaf, "key"));
  const std::int32_t op = operator_of(json_string_value(json_object_get(leaf, "op")));
  const char *text = json_string_value(json_object_get(leaf, "string"));
  const char *id = json_string_value(json_object_get(leaf, "reference"));
  if (key.starts_with(tag_prefix)) {
    into.tags.push_back({key.substr(tag_prefix.size()), op, id != nullptr, id ? id : text ? text : ""});
    return;
  }
  check_key(key);
  if (op == CFG_OP_EQUAL) into.equal_keys.insert(key);
  if (op == CFG_OP_ABSENT)
    give(into, condition(cfg_new_untyped_condition(key.c_str(), op)));
  else if (id)
    give(into, condition(cfg_new_reference_condition(key.c_str(), op, id)));
  else
    give(into, condition(cfg_new_string_condition(key.c_str(), op, text)));
}

void read_tree(const json_t *tree, query &into) {
  const json_t *children = json_object_get(tree, "and");
  if (!children) return read_leaf(tree, into);
  for (std::size_t i = 0; i < json_array_size(children); ++i) read_tree(json_array_get(children, i), into);
}

}  // namespace

query read_query(const json_t *conditions) {
  checked(conditions);
  query made;
  made.stored.reset(cfg_new_and_condition());
  if (!made.stored) throw std::bad_alloc();
  read_tree(conditions, made);
  return made;
}

}  // namespace searchd
