// Templates in a store, and records that give back all of themselves: what their free function leaves as
// well.
#ifndef TW_TESTS_RECORDS_TEMPLATES_TEMPLATE_FIXTURE_HPP
#define TW_TESTS_RECORDS_TEMPLATES_TEMPLATE_FIXTURE_HPP

#include <twobject/template.h>
#include <twobject/template_auth.h>
#include <twobject/template_script.h>
#include <twobject/template_users_groups.h>

#include "records/store_fixture.hpp"

namespace records {

struct free_template {
  void operator()(cfg_template *record) const {
    const void *left[] = {cfg_template_get_uuid(record), cfg_template_get_description(record),
                          cfg_dummy_template_get_dummy_field(record), cfg_script_template_get_script(record),
                          cfg_script_template_get_checksum(record)};
    cfg_auth *auth = cfg_template_get_auth(record);
    cfg_ugt_clear_user_operations(record);
    cfg_ugt_clear_group_operations(record);
    cfg_ugt_clear_membership_users(record);
    cfg_ugt_clear_membership_groups(record);
    cfg_template_free(record);
    cfg_auth_free(auth);
    for (const void *block : left) std::free(const_cast<void *>(block));
  }
};
using template_record = std::unique_ptr<cfg_template, free_template>;

class TemplateTest : public StoreTest {
 protected:
  /** A committed template (once the edit is). */
  cfg_elem *add_template(const char *name, const char *type) {
    cfg_elem *elem = entry_of("templates");
    set(elem, "name", name);
    if (type != nullptr) set(elem, "template_type", type);
    return elem;
  }
  template_record load(const std::string &id) {
    return template_record(cfg_template_get_by_id(store, id.c_str()));
  }
  template_record load(cfg_elem *elem) { return load(id_of(elem)); }
  template_record fresh(const char *name, int32_t type) {
    return template_record(cfg_template_new(store, name, type));
  }
};

}  // namespace records

#endif
