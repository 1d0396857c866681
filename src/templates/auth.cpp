// Authentication templates: settings like the appliance's own, to be given to nodes.
#include <twobject/template_auth.h>

#include "record/memory_watch.hpp"
#include "templates/template.hpp"

cfg_auth *cfg_template_get_auth(const cfg_template *record) noexcept {
  return record ? record->auth.get() : nullptr;
}

int cfg_auth_new_setup(cfg_template *record) noexcept {
  tw::owned_auth auth = record ? tw::new_auth(record->cfg) : nullptr;
  if (!auth) return 0;
  record->auth = std::move(auth);
  return 1;
}

int cfg_auth_load_from_config(cfg_template *record, cfg_elem *map) noexcept {
  tw::owned_auth auth = record ? tw::load_auth(record->cfg, map) : nullptr;
  if (!auth) return 0;
  record->auth = std::move(auth);
  return 1;
}

int cfg_auth_save_to_config(cfg_template *record, cfg_elem *map) noexcept {
  if (!record || !record->auth || !map) return 0;
  const tw::memory_watch memory;
  tw::store_auth(*record->auth, map);
  return !memory.ran_short();
}
