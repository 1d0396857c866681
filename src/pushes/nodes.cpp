// The nodes of a push: maps in its list "nodes", loaded when they are first asked for.
#include "pushes/exec_ctxt.hpp"
#include "pushes/node_ctxt.hpp"
#include "record/boundary.hpp"
#include "record/memory_watch.hpp"

namespace {

// False when memory is short; the nodes then count as not read.
bool load_nodes(cfg_push_exec_ctxt &push, cfg_elem *list, int32_t count) {
  const tw::memory_watch memory;
  push.nodes.reserve(static_cast<std::size_t>(count));
  for (int32_t i = 0; i < count; ++i)
    push.nodes.push_back(cfg_push_node_ctxt_get_by_id(push.cfg, cfg_get_listelem(list, i)));
  return !memory.ran_short();
}

}  // namespace

void tw::release_nodes(cfg_push_exec_ctxt &push) noexcept {
  for (cfg_push_node_ctxt *node : push.nodes) {
    if (!node) continue;
    for (text_array &ids : node->messages) ids.leave_texts();
    // No destructor: callers keep the texts beyond the context's life.
    ::operator delete(node);
  }
  push.nodes.clear();
}

void cfg_push_exec_ctxt_populate_nodes(cfg_push_exec_ctxt *push) noexcept {
  if (!push || push->nodes_state != tw::contents::unread) return;
  cfg_elem *list = cfg_get_child_by_path(push->cfg, tw::element_of(*push), "nodes");
  int32_t count = 0;
  // Without such a list the next call tries again.
  if (!cfg_get_list(push->cfg, list) || !cfg_list_size(list, &count)) return;
  if (tw::guarded([&] { return load_nodes(*push, list, count); })) {
    push->nodes_state = tw::contents::there;
    return;
  }
  for (cfg_push_node_ctxt *node : push->nodes) cfg_push_node_ctxt_free(node);
  push->nodes.clear();
}

int32_t cfg_push_exec_ctxt_get_num_nodes(cfg_push_exec_ctxt *push) noexcept {
  cfg_push_exec_ctxt_populate_nodes(push);
  return push ? static_cast<int32_t>(push->nodes.size()) : 0;
}

cfg_push_node_ctxt *cfg_push_exec_ctxt_get_node_ctxt(cfg_push_exec_ctxt *push, int32_t index) noexcept {
  if (index < 0 || index >= cfg_push_exec_ctxt_get_num_nodes(push)) return nullptr;
  return push->nodes[static_cast<std::size_t>(index)];
}

int cfg_push_exec_ctxt_add_node(cfg_push_exec_ctxt *push, cfg_push_node_ctxt *node) noexcept {
  if (!push || !node) return 0;
  const tw::memory_watch memory;
  cfg_push_exec_ctxt_populate_nodes(push);
  if (push->nodes_state == tw::contents::removed || memory.ran_short()) return 0;
  return tw::guarded([&] {
    push->nodes.push_back(node);
    push->nodes_state = tw::contents::there;
    return 1;
  });
}

int32_t cfg_push_exec_ctxt_remove_nodes(cfg_push_exec_ctxt *push) noexcept {
  if (!push) return 0;
  const auto count = static_cast<int32_t>(push->nodes.size());
  tw::release_nodes(*push);
  push->nodes_state = tw::contents::removed;
  return count;
}
