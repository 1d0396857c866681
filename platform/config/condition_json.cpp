// The JSON form of condition trees, as stored queries and the search service carry it:
//
//   {"and": [CONDITION, ...]}                                     holds when all hold; may be empty
//   {"key": "name", "op": "equal", "string": "eth0"}
//   {"key": "cert", "op": "not_equal", "reference": "certificates-3"}
//   {"key": "revoke_time", "op": "absent"}
//
// A node has exactly these members, each once, in any order. JSON text is UTF-8: a tree with a key or value
// that is not (the makers take any bytes) works in a search but has no JSON form, and text with an escaped
// NUL is refused because no key or value can hold one.

#include <cstring>
#include <memory>

#include "condition.hpp"

namespace {

using Kind = cfg_condition::Kind;

constexpr std::size_t kMaxText = std::size_t{1} << 20;

constexpr char kAnd[] = "and", kKey[] = "key", kOp[] = "op", kString[] = "string", kReference[] = "reference";

struct OperatorName {
  int32_t op;
  const char *name;
};
constexpr OperatorName kOperators[] = {
    {CFG_OP_EQUAL, "equal"}, {CFG_OP_NOT_EQUAL, "not_equal"}, {CFG_OP_ABSENT, "absent"}};

int32_t operator_from_name(const char *name) {
  for (const OperatorName &known : kOperators)
    if (name && std::strcmp(known.name, name) == 0) return known.op;
  return 0;
}

const char *operator_name(int32_t op) {
  for (const OperatorName &known : kOperators)
    if (known.op == op) return known.name;
  return nullptr;
}

struct Release {
  void operator()(json_t *json) const { json_decref(json); }
  void operator()(cfg_condition *condition) const { cfg_free_conditions(condition); }
};
using Json = std::unique_ptr<json_t, Release>;
using Condition = std::unique_ptr<cfg_condition, Release>;

// NULL for a member that is missing or no string, which the makers and operator_from_name() refuse.
const char *text_member(const json_t *object, const char *name) {
  return json_string_value(json_object_get(object, name));
}

Condition read_leaf(const json_t *json) {
  const char *key = text_member(json, kKey);
  const int32_t op = operator_from_name(text_member(json, kOp));
  if (op == CFG_OP_ABSENT)
    return Condition(json_object_size(json) == 2 ? cfg_new_untyped_condition(key, op) : nullptr);
  if (json_object_size(json) != 3) return nullptr;
  if (const char *value = text_member(json, kString))
    return Condition(cfg_new_string_condition(key, op, value));
  return Condition(cfg_new_reference_condition(key, op, text_member(json, kReference)));
}

Condition read_node(const json_t *json) {
  return json_object_get(json, kAnd) ? Condition(cfg_new_and_condition()) : read_leaf(json);
}

// Fills an and-node that is already part of the tree: the first level or node above the limits is then
// refused where it is, however deep or long the rest of the text may be.
bool read_children(cfg_condition *node, const json_t *json) {
  const json_t *children = json_object_get(json, kAnd);
  if (!json_is_array(children) || json_object_size(json) != 1) return false;
  for (std::size_t i = 0; i < json_array_size(children); ++i) {
    const json_t *entry = json_array_get(children, i);
    Condition child = read_node(entry);
    if (!cfg_condition_add_child(node, child.get())) return false;
    cfg_condition *given = child.release();
    if (given->kind == Kind::conjunction && !read_children(given, entry)) return false;
  }
  return true;
}

}  // namespace

cfg_condition *json_dump_to_condition(const char *text, int32_t flags) noexcept {
  if (!text || flags != 0) return nullptr;
  const std::size_t length = strnlen(text, kMaxText + 1);
  if (length > kMaxText) return nullptr;
  const Json json(json_loadb(text, length, JSON_REJECT_DUPLICATES, nullptr));
  Condition root = read_node(json.get());
  if (root && root->kind == Kind::conjunction && !read_children(root.get(), json.get())) return nullptr;
  return root.release();
}

json_t *condition_to_json(const cfg_condition *condition) noexcept {
  if (!condition) return nullptr;
  if (condition->kind == Kind::untyped)
    return json_pack("{s:s, s:s}", kKey, condition->key.c_str(), kOp, operator_name(condition->op));
  if (condition->kind != Kind::conjunction)
    return json_pack("{s:s, s:s, s:s}", kKey, condition->key.c_str(), kOp, operator_name(condition->op),
                     condition->kind == Kind::string ? kString : kReference, condition->value.c_str());
  Json children(json_array());
  for (const auto &child : condition->children)
    if (json_array_append_new(children.get(), condition_to_json(child.get())) < 0) return nullptr;
  return json_pack("{s:o}", kAnd, children.release());
}
