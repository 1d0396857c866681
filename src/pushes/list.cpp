// The list of all pushes.
#include <twobject/push_exec_ctxt.h>

#include "record/id_list.hpp"

struct cfg_push_exec_ctxt_list : tw::id_list {};

cfg_push_exec_ctxt_list *cfg_push_exec_ctxt_list_new(cfg *store) noexcept {
  return tw::new_id_list<cfg_push_exec_ctxt_list>(store, "cfg_push_exec_ctxts").release();
}

int32_t cfg_push_exec_ctxt_list_count(const cfg_push_exec_ctxt_list *list) noexcept {
  return tw::entry_count(list);
}

cfg_push_exec_ctxt *cfg_push_exec_ctxt_list_get_execution(const cfg_push_exec_ctxt_list *list,
                                                          int32_t index) noexcept {
  return tw::load_entry(list, index, cfg_push_exec_ctxt_get_by_id);
}

void cfg_push_exec_ctxt_list_free(cfg_push_exec_ctxt_list *list) noexcept { delete list; }
