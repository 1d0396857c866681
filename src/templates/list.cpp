// The list of all templates.
#include "record/id_list.hpp"
#include "templates/template.hpp"

struct cfg_template_list : tw::id_list {};

cfg_template_list *cfg_template_list_new(cfg *store) noexcept {
  return tw::new_id_list<cfg_template_list>(store, "templates").release();
}

int32_t cfg_template_list_count(const cfg_template_list *list) noexcept {
  return list ? list->ids.count() : 0;
}

cfg_template *cfg_template_list_get_template(const cfg_template_list *list, int32_t index) noexcept {
  return list ? cfg_template_get_by_id(list->cfg, list->ids.at(index)) : nullptr;
}

void cfg_template_list_free(cfg_template_list *list) noexcept { delete list; }
