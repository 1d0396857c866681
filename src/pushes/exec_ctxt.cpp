// Push execution contexts: one push of templates to nodes.
#include "pushes/exec_ctxt.hpp"

#include "record/boundary.hpp"
#include "record/engine.hpp"
#include "record/memory_watch.hpp"
#include "record/tables.hpp"

namespace {

using push = cfg_push_exec_ctxt;

// Not the table of the node contexts, whose numbers begin at "preflight_ready".
constexpr const char *status_texts[] = {"unconfigured",       "preflight_ready",     "preflight_in_progress",
                                        "preflight_complete", "execute_in_progress", "execute_complete"};
constexpr tw::enumeration statuses{
    .texts = status_texts, .first = CFG_PUSH_EXEC_UNCONFIGURED, .unknown = CFG_PUSH_EXEC_INVALID};
constexpr const char *behaviour_texts[] = {"skip", "prompt", "apply"};
constexpr tw::enumeration behaviours{
    .texts = behaviour_texts, .first = CFG_PUSH_DISCONNECTED_SKIP, .unknown = CFG_PUSH_DISCONNECTED_INVALID};

// A push is loaded with what can be read of it.
constexpr auto status = lenient(tw::enum_row<&push::status, statuses>("status"));
constexpr auto username = lenient(tw::string_row<&push::username>("username"));
constexpr auto behaviour =
    lenient(tw::enum_row<&push::disconnected_behaviour, behaviours>("disconnected_nodes_behaviour"));

constexpr tw::load_list load_push({status, username, behaviour});
constexpr tw::store_list save_username({username});
constexpr tw::store_list save_state({status, behaviour});

constexpr tw::named_list lists[] = {{"push load", load_push},
                                    {"push save, \"username\" unless it is NULL", save_username},
                                    {"push save", save_state}};

int save_contents(push &record) noexcept {
  for (cfg_push_node_ctxt *node : record.nodes) {
    cfg_push_node_ctxt_set_parent_uuid(node, record.uuid.c_str());
    if (!cfg_push_node_ctxt_save(node)) return 0;
  }
  for (const auto &entry : record.templates)
    if (!cfg_push_exec_ctxt_save_template(&record, entry.get())) return 0;
  return 1;
}

}  // namespace

const tw::tables tw::push_exec_ctxt_tables = lists;

int32_t cfg_exec_ctxt_status_string_to_enum(const char *text) noexcept { return statuses.from_string(text); }
const char *cfg_exec_ctxt_status_enum_to_string(int32_t value) noexcept { return statuses.to_string(value); }

int32_t cfg_exec_ctxt_disconn_behaviour_string_to_enum(const char *text) noexcept {
  return behaviours.from_string(text);
}
const char *cfg_exec_ctxt_disconn_behaviour_enum_to_string(int32_t value) noexcept {
  return behaviours.to_string(value);
}

cfg_push_exec_ctxt *cfg_push_exec_ctxt_new(cfg *store) noexcept {
  return tw::new_view<push>(store).release();
}

cfg_push_exec_ctxt *cfg_push_exec_ctxt_get_by_id(cfg *store, const char *id) noexcept {
  const tw::memory_watch memory;
  cfg_elem *elem = cfg_get_by_id(store, id);
  auto record = tw::new_view<push>(store, elem);
  if (!record) return nullptr;
  record->status = CFG_PUSH_EXEC_INVALID;
  record->disconnected_behaviour = CFG_PUSH_DISCONNECTED_INVALID;
  if (cfg_elem_kind(elem) == CFG_MAP && !tw::load(load_push, *record, elem)) return nullptr;
  const bool loaded = tw::guarded([&] { return tw::load_templates(*record, elem); });
  return loaded && !memory.ran_short() ? record.release() : nullptr;
}

void cfg_push_exec_ctxt_free(cfg_push_exec_ctxt *record) noexcept {
  if (!record) return;
  for (auto &entry : record->templates) tw::release_template(std::move(entry));
  tw::release_nodes(*record);
  delete record;
}

void cfg_push_exec_ctxt_dispose(cfg_push_exec_ctxt *record) noexcept {
  if (!record) return;
  for (cfg_push_node_ctxt *node : record->nodes) cfg_push_node_ctxt_free(node);
  delete record;
}

const char *cfg_push_exec_ctxt_get_uuid(cfg_push_exec_ctxt *record) noexcept {
  return record ? tw::refreshed_uuid(*record) : nullptr;
}

cfg *cfg_push_exec_ctxt_get_cfg(const cfg_push_exec_ctxt *record) noexcept {
  return record ? record->cfg : nullptr;
}
cfg *cfg_push_exec_ctxt_get_config(const cfg_push_exec_ctxt *record) noexcept {
  return cfg_push_exec_ctxt_get_cfg(record);
}

const char *cfg_push_exec_ctxt_get_username(const cfg_push_exec_ctxt *record) noexcept {
  return tw::get<&push::username>(record);
}
// NULL is "no change".
int cfg_push_exec_ctxt_set_username(cfg_push_exec_ctxt *record, const char *text) noexcept {
  return text && tw::replace<&push::username>(record, text);
}

int32_t cfg_push_exec_ctxt_get_status(const cfg_push_exec_ctxt *record) noexcept {
  return record ? record->status : CFG_PUSH_EXEC_INVALID;
}
int cfg_push_exec_ctxt_set_status(cfg_push_exec_ctxt *record, int32_t value) noexcept {
  return tw::set<&push::status>(record, value);
}

int32_t cfg_push_exec_ctxt_get_disconnected_behaviour(const cfg_push_exec_ctxt *record) noexcept {
  return record ? record->disconnected_behaviour : CFG_PUSH_DISCONNECTED_INVALID;
}
int cfg_push_exec_ctxt_set_disconnected_behaviour(cfg_push_exec_ctxt *record, int32_t value) noexcept {
  return tw::set<&push::disconnected_behaviour>(record, value);
}

int cfg_push_exec_ctxt_save(cfg_push_exec_ctxt *record, int32_t whole) noexcept {
  if (!record) return 0;
  cfg_elem *elem = tw::element_to_save(*record, "cfg_push_exec_ctxts");
  if (!elem) return 0;
  // A push without user name keeps the one that is stored.
  if (record->username && !tw::store(save_username, *record, record->cfg, elem)) return 0;
  if (!tw::store(save_state, *record, record->cfg, elem)) return 0;
  return whole ? save_contents(*record) : 1;
}
