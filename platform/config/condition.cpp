#include "condition.hpp"

#include <exception>

namespace {

using Kind = cfg_condition::Kind;

cfg_condition *make(Kind kind, const char *key, int32_t op, const char *value) noexcept {
  try {
    auto made = std::make_unique<cfg_condition>();
    made->kind = kind;
    made->op = op;
    made->key = key;
    made->value = value;
    return made.release();
  } catch (const std::exception &) {
    return nullptr;
  }
}

cfg_condition *make_comparison(Kind kind, const char *key, int32_t op, const char *value) noexcept {
  if (!key || !value || (op != CFG_OP_EQUAL && op != CFG_OP_NOT_EQUAL)) return nullptr;
  return make(kind, key, op, value);
}

}  // namespace

cfg_condition *cfg_new_string_condition(const char *key, int32_t op, const char *value) noexcept {
  return make_comparison(Kind::string, key, op, value);
}

cfg_condition *cfg_new_reference_condition(const char *key, int32_t op, const char *id) noexcept {
  return make_comparison(Kind::reference, key, op, id);
}

cfg_condition *cfg_new_untyped_condition(const char *key, int32_t op) noexcept {
  if (!key || op != CFG_OP_ABSENT) return nullptr;
  return make(Kind::untyped, key, op, "");
}

cfg_condition *cfg_new_and_condition(void) noexcept { return make(Kind::conjunction, "", 0, ""); }

int cfg_condition_add_child(cfg_condition *node, cfg_condition *child) noexcept {
  if (!node || !child || node->kind != Kind::conjunction || child->owner) return 0;

  std::size_t level = 1;
  cfg_condition *root = node;
  for (; root->owner; root = root->owner) ++level;
  // A child without an owner can only lie above the node by being its root.
  if (child == root || root->nodes + child->nodes > twcfg::kMaxConditionNodes ||
      level + child->levels > twcfg::kMaxConditionLevels)
    return 0;

  try {
    node->children.emplace_back();
  } catch (const std::exception &) {
    return 0;
  }
  node->children.back().reset(child);
  child->owner = node;
  std::size_t levels = child->levels;
  for (cfg_condition *above = node; above; above = above->owner) {
    above->nodes += child->nodes;
    above->levels = std::max(above->levels, ++levels);
  }
  return 1;
}

void cfg_free_conditions(cfg_condition *root) noexcept {
  // A node that has been given away is freed with its owner; freeing it here as well would free it twice.
  if (root && !root->owner) delete root;
}

const cfg_condition *twcfg::index_leaf(const cfg_condition &condition) {
  if (condition.kind != Kind::conjunction) return condition.op == CFG_OP_EQUAL ? &condition : nullptr;
  for (const auto &child : condition.children)
    if (const cfg_condition *leaf = index_leaf(*child)) return leaf;
  return nullptr;
}
