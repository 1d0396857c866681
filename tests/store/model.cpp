#include "model.hpp"

#include <algorithm>

ModelNode *ModelNode::find(const std::string &key) {
  for (ModelNode &child : children)
    if (child.name == key) return &child;
  return nullptr;
}

ModelNode &ModelNode::put(const std::string &key, ModelNode value) {
  remove(key);
  value.name = key;
  children.push_back(std::move(value));
  return children.back();
}

void ModelNode::remove(const std::string &key) {
  std::erase_if(children, [&](const ModelNode &child) { return child.name == key; });
}

namespace {

std::string hex(const std::string &bytes) {
  static constexpr char digits[] = "0123456789abcdef";
  std::string text;
  for (char c : bytes) {
    auto byte = static_cast<unsigned char>(c);
    text += digits[byte >> 4];
    text += digits[byte & 15];
  }
  return text;
}

}  // namespace

std::string ModelNode::dump() const {
  std::string out;
  std::vector<const ModelNode *> sorted;
  switch (kind) {
    case CFG_STRING:
      return "s'" + text + "'";
    case CFG_REFERENCE:
      return "r'" + text + "'";
    case CFG_BLOB:
      return "x" + hex(text);
    case CFG_INT:
      return "i" + std::to_string(number);
    case CFG_BOOL:
      return "b" + std::to_string(number);
    case CFG_MAP:
      for (const ModelNode &child : children) sorted.push_back(&child);
      std::sort(sorted.begin(), sorted.end(), [](auto *a, auto *b) { return a->name < b->name; });
      for (const ModelNode *child : sorted) out += "'" + child->name + "':" + child->dump() + ",";
      return "{" + out + "}";
    case CFG_LIST:
      for (const ModelNode &child : children)
        out += (child.name.empty() ? "{}" : child.name) + ":" + child.dump() + ",";
      for (const ModelNode &child : pending) out += "+:" + child.dump() + ",";
      return "[" + out + "]";
    case CFG_NONE:
      break;
  }
  return "<nothing>";
}

void ModelNode::commit() {
  for (ModelNode &entry : pending) children.push_back(std::move(entry));
  pending.clear();
  for (ModelNode &child : children) child.commit();
}
