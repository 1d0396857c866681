// The templates of a push: references in its list "templates".
#include <new>

#include "pushes/exec_ctxt.hpp"
#include "record/boundary.hpp"

namespace {

using entry_ptr = std::unique_ptr<cfg_push_exec_template>;

entry_ptr &at(cfg_push_exec_ctxt &push, int32_t index) noexcept {
  return push.templates[static_cast<std::size_t>(index)];
}

}  // namespace

bool tw::load_templates(cfg_push_exec_ctxt &push, cfg_elem *elem) {
  cfg_elem *list = cfg_get_child_by_path(push.cfg, elem, "templates");
  int32_t count = 0;
  if (!cfg_get_list(push.cfg, list) || !cfg_list_size(list, &count)) return true;
  for (int32_t i = 0; i < count; ++i) {
    auto entry = std::make_unique<cfg_push_exec_template>();
    cfg_elem *reference = cfg_simple_get_listelem(push.cfg, list, i);
    char *id = nullptr;
    if (!take_uuid(entry->elem_uuid, reference)) return false;
    if (cfg_reference_value(reference, &id)) entry->template_uuid.adopt(id);
    push.templates.push_back(std::move(entry));
  }
  return true;
}

void tw::release_template(std::unique_ptr<cfg_push_exec_template> entry) noexcept {
  // No destructor: callers keep the texts beyond the push's life.
  ::operator delete(entry.release());
}

int32_t cfg_push_exec_ctxt_get_num_templates(const cfg_push_exec_ctxt *push) noexcept {
  return push ? static_cast<int32_t>(push->templates.size()) : 0;
}

cfg_push_exec_template *cfg_push_exec_ctxt_get_template(cfg_push_exec_ctxt *push, int32_t index) noexcept {
  if (index < 0 || index >= cfg_push_exec_ctxt_get_num_templates(push)) return nullptr;
  return at(*push, index).get();
}

const char *cfg_push_exec_ctxt_get_template_uuid(const cfg_push_exec_ctxt *push, int32_t index) noexcept {
  if (index < 0 || index >= cfg_push_exec_ctxt_get_num_templates(push)) return nullptr;
  return push->templates[static_cast<std::size_t>(index)]->template_uuid.c_str();
}

int cfg_push_exec_ctxt_add_template(cfg_push_exec_ctxt *push, const char *template_id) noexcept {
  if (!push || !template_id || push->templates_state == tw::contents::removed) return 0;
  return tw::guarded([&] {
    auto entry = std::make_unique<cfg_push_exec_template>();
    if (!entry->template_uuid.assign(template_id, std::strlen(template_id))) return 0;
    push->templates.push_back(std::move(entry));
    return 1;
  });
}

// The answers for NULL differ from those for nodes; callers have always got these.
int32_t cfg_push_exec_ctxt_remove_templates(cfg_push_exec_ctxt *push) noexcept {
  if (!push) return 1;
  const int32_t count = cfg_push_exec_ctxt_get_num_templates(push);
  push->templates.clear();
  push->templates_state = tw::contents::removed;
  return count;
}

int cfg_push_exec_ctxt_save_template(cfg_push_exec_ctxt *push, cfg_push_exec_template *entry) noexcept {
  if (!push || !entry) return 0;
  cfg_elem *elem = tw::element_of(*push);
  cfg_elem *list = elem ? tw::need_list(push->cfg, elem, "templates") : nullptr;
  if (!list) return 0;
  if (entry->elem_uuid) return 1;  // each template is stored once
  cfg_elem *reference = cfg_new_reference(push->cfg, entry->template_uuid.c_str());
  tw::text id;
  if (!tw::take_uuid(id, reference) || !cfg_append_future_listelem(push->cfg, list, reference)) return 0;
  entry->elem_uuid = std::move(id);
  return 1;
}
