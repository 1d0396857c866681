// Push node contexts: one node's share of a push.
#include "pushes/node_ctxt.hpp"

#include "record/boundary.hpp"
#include "record/engine.hpp"
#include "record/memory_watch.hpp"
#include "record/tables.hpp"

namespace {

using context = cfg_push_node_ctxt;

constexpr const char *status_texts[] = {"preflight_ready", "preflight_in_progress", "preflight_complete",
                                        "execute_in_progress", "execute_complete"};
constexpr tw::enumeration statuses{
    .texts = status_texts, .first = CFG_PUSH_NODE_PREFLIGHT_READY, .unknown = CFG_PUSH_NODE_INVALID};

// A context is loaded with what can be read of it: a push goes on with the nodes that it has.
constexpr auto node = lenient(tw::reference_row<&context::node>("node"));
constexpr auto status = lenient(tw::enum_row<&context::status, statuses>("status"));
constexpr auto apply_execution = lenient(tw::bool_row<&context::apply_execution>("apply_execution"));

constexpr tw::load_list load_context({node, status, apply_execution});
constexpr tw::store_list save_status({status});

constexpr tw::named_list lists[] = {{"push node context load", load_context},
                                    {"push node context save, status", save_status}};

// Setters of IDs: NULL is "no change".
template <auto Member>
int set_id(context *record, const char *id) noexcept {
  return id && tw::replace<Member>(record, id);
}

bool load_messages(context &record, cfg_elem *elem) noexcept {
  for (std::size_t i = 0; i < record.messages.size(); ++i)
    if (!record.messages[i].append_ids(cfg_get_child_by_path(record.cfg, elem, tw::message_list_keys[i])))
      return false;
  return true;
}

// A new context's element: a pending entry of the list "nodes" of its parent.
cfg_elem *new_element(context &record) noexcept {
  cfg_elem *parent = cfg_get_by_id(record.cfg, record.parent_uuid.c_str());
  return parent ? tw::append_new_element(record, tw::need_list(record.cfg, parent, "nodes")) : nullptr;
}

}  // namespace

const tw::tables tw::push_node_ctxt_tables = lists;

int32_t cfg_node_ctxt_status_string_to_enum(const char *text) noexcept { return statuses.from_string(text); }
const char *cfg_node_ctxt_status_enum_to_string(int32_t value) noexcept { return statuses.to_string(value); }

cfg_push_node_ctxt *cfg_push_node_ctxt_new(cfg *store) noexcept {
  return tw::new_view<context>(store).release();
}

cfg_push_node_ctxt *cfg_push_node_ctxt_get_by_id(cfg *store, const char *id) noexcept {
  const tw::memory_watch memory;
  cfg_elem *elem = cfg_get_by_id(store, id);
  auto record = tw::new_view<context>(store, elem);
  // The holder is the list, where a new context names the execution context: only a first save looks at it.
  if (!record || !tw::take_uuid(record->parent_uuid, cfg_get_parent_elem(store, elem))) return nullptr;
  record->status = CFG_PUSH_NODE_INVALID;
  if (cfg_elem_kind(elem) == CFG_MAP && !tw::load(load_context, *record, elem)) return nullptr;
  return load_messages(*record, elem) && !memory.ran_short() ? record.release() : nullptr;
}

void cfg_push_node_ctxt_free(cfg_push_node_ctxt *record) noexcept { delete record; }

const char *cfg_push_node_ctxt_get_uuid(cfg_push_node_ctxt *record) noexcept {
  return record ? tw::refreshed_uuid(*record) : nullptr;
}

const char *cfg_push_node_ctxt_get_parent_uuid(const cfg_push_node_ctxt *record) noexcept {
  return tw::get<&context::parent_uuid>(record);
}
int cfg_push_node_ctxt_set_parent_uuid(cfg_push_node_ctxt *record, const char *id) noexcept {
  return set_id<&context::parent_uuid>(record, id);
}

const char *cfg_push_node_ctxt_get_node(const cfg_push_node_ctxt *record) noexcept {
  return tw::get<&context::node>(record);
}
int cfg_push_node_ctxt_set_node(cfg_push_node_ctxt *record, const char *id) noexcept {
  return set_id<&context::node>(record, id);
}

int32_t cfg_push_node_ctxt_get_status(const cfg_push_node_ctxt *record) noexcept {
  return record ? record->status : CFG_PUSH_NODE_INVALID;
}
int cfg_push_node_ctxt_set_status(cfg_push_node_ctxt *record, int32_t value) noexcept {
  return tw::set<&context::status>(record, value);
}

int32_t cfg_push_node_ctxt_get_apply_execution(const cfg_push_node_ctxt *record) noexcept {
  return tw::get<&context::apply_execution>(record);
}
int cfg_push_node_ctxt_set_apply_execution(cfg_push_node_ctxt *record, int32_t apply) noexcept {
  return tw::set<&context::apply_execution>(record, apply);
}

int cfg_push_node_ctxt_save(cfg_push_node_ctxt *record) noexcept {
  if (!record) return 0;
  cfg_elem *elem = record->uuid ? tw::element_of(*record) : new_element(*record);
  // A context without node is refused, so that none is taken for another node's.
  if (!elem || !tw::store(save_status, *record, record->cfg, elem) ||
      !cfg_map_set_reference(record->cfg, elem, "node", record->node.c_str()))
    return 0;
  const tw::memory_watch memory;
  cfg_map_set_bool(record->cfg, elem, "apply_execution", record->apply_execution != 0);
  return !memory.ran_short();
}
