// Enrollment settings: loading, saving and deleting the node element behind them.
#include "nodes/enrollment.hpp"
#include "record/boundary.hpp"
#include "record/engine.hpp"
#include "record/memory_watch.hpp"
#include "record/tables.hpp"

namespace {

using enrollment = cfg_enrollment;

constexpr auto certificate = tw::hook_row<enrollment>(
    "cert", CFG_REFERENCE, tw::load_certificate<&enrollment::certificate>, "load_certificate");
constexpr auto name = tw::string_row<&enrollment::name>("name");
constexpr auto product = tw::string_row<&enrollment::product>("product");
constexpr auto status = tw::string_row<&enrollment::status>("status");
constexpr auto package_password = tw::string_row<&enrollment::package_password>("package_password");
constexpr auto address = tw::string_row<&enrollment::address>("address");
constexpr auto connection_method = tw::string_row<&enrollment::connection_method>("connection_method");
constexpr auto username = tw::string_row<&enrollment::username>("username");
constexpr auto password = tw::string_row<&enrollment::password>("password");
constexpr auto port_count = tw::int_row<&enrollment::port_label_count>("port_count");
constexpr auto base_port = tw::int_row<&enrollment::base_port>("base_port");

// One member, two keys: approval is read as what the enrolment asks for and written as what the node is. The
// services that approve nodes look at "approved" only.
constexpr auto asked_approval = tw::bool_row<&enrollment::auto_approve>("auto_approve");
constexpr auto given_approval = tw::bool_row<&enrollment::auto_approve>("approved");

constexpr tw::load_list load_common({certificate, name, product, status, asked_approval});
constexpr tw::load_list load_tarnwell({package_password});
constexpr tw::load_list load_credential({address, username, password});
constexpr tw::load_list load_generic({address, connection_method, username, password, port_count, base_port});

constexpr tw::store_list save_common({status, product, given_approval});
constexpr tw::store_list save_tarnwell({package_password});
constexpr tw::store_list save_credential({name, address, username, password});
constexpr tw::store_list save_generic({name, address, connection_method});
constexpr tw::store_list save_generic_login({username, password});
constexpr tw::store_list save_generic_ports({port_count, base_port});

constexpr tw::named_list lists[] = {
    {"enrollment load, every product", load_common},
    {"enrollment load, tarnwell", load_tarnwell},
    {"enrollment load, credential", load_credential},
    {"enrollment load, generic", load_generic},
    {"enrollment save, every product", save_common},
    {"enrollment save, tarnwell", save_tarnwell},
    {"enrollment save, credential", save_credential},
    {"enrollment save, generic", save_generic},
    {"enrollment save, generic reached by ssh", save_generic_login},
    {"enrollment save, generic, ports", save_generic_ports},
};

// A "tarnwell" node can only be enrolled by an appliance that has a CA certificate to give it. A certificate
// that is there but is no blob leaves the field NULL.
bool load_ca(enrollment &record) noexcept {
  cfg_elem *elem = cfg_get_by_path(record.cfg, "services.ca.certificate");
  if (!elem) return false;
  cfg_value value;
  if (!cfg_elem_read(elem, &value) || value.kind != CFG_BLOB) return true;
  return record.ca.assign(value.data, value.length);
}

bool load_kind(enrollment &record, cfg_elem *elem) {
  switch (tw::kind_of(record.product)) {
    case tw::product_kind::tarnwell:
      return tw::load(load_tarnwell, record, elem) && load_ca(record);
    case tw::product_kind::credential:
      return tw::load(load_credential, record, elem);
    case tw::product_kind::generic:
      return tw::load(load_generic, record, elem) &&
             record.port_labels.load(record.port_label_count, record.cfg,
                                     cfg_simple_get_mapelem(record.cfg, elem, "port_labels"));
    case tw::product_kind::other:
      break;
  }
  return true;
}

// Such a node is known by its ID until its display name is set through the node record. A provisional ID is
// no name: it is gone after the commit.
bool store_tarnwell(const enrollment &record, cfg_elem *elem) noexcept {
  const char *id = record.uuid.c_str();
  return cfg_map_set_string(record.cfg, elem, "name", *id == '{' ? "tempname" : id) &&
         tw::need_map(record.cfg, elem, "ssh") && tw::store(save_tarnwell, record, record.cfg, elem);
}

bool store_generic(const enrollment &record, cfg_elem *elem) noexcept {
  cfg *store = record.cfg;
  if (!tw::store(save_generic, record, store, elem)) return false;
  // Other methods need no login: the keys are left as they are.
  if (tw::same(record.connection_method.c_str(), "ssh") &&
      !tw::store(save_generic_login, record, store, elem))
    return false;
  if (!tw::store(save_generic_ports, record, store, elem)) return false;
  return tw::guarded([&] { return record.port_labels.save(store, elem, "port_labels"); });
}

}  // namespace

const tw::tables tw::enrollment_tables = lists;

cfg_enrollment *cfg_enrollment_get_by_id(cfg *store, const char *id) noexcept {
  cfg_elem *elem = cfg_get_by_id(store, id);
  if (!elem) return nullptr;
  const tw::memory_watch memory;  // whole or not at all, as in tw::load_node()
  auto record = tw::new_view<cfg_enrollment>(store);
  // The ID is kept as it was given, a provisional one too, until cfg_enrollment_get_uuid() looks it up anew:
  // a save before that still names a "tarnwell" node "tempname".
  if (!record || !record->uuid.set(id)) return nullptr;
  const bool loaded =
      tw::guarded([&] { return tw::load(load_common, *record, elem) && load_kind(*record, elem); });
  return loaded && !memory.ran_short() ? record.release() : nullptr;
}

int cfg_enrollment_save(cfg_enrollment *enrollment) noexcept {
  TW_ASSERT(enrollment && enrollment->cfg, "src/enrollment");
  cfg_elem *elem = tw::element_to_save(*enrollment, "nodes");
  if (!elem || !tw::store(save_common, *enrollment, enrollment->cfg, elem)) return 0;
  switch (tw::kind_of(enrollment->product)) {
    case tw::product_kind::tarnwell:
      return store_tarnwell(*enrollment, elem);
    case tw::product_kind::credential:
      return tw::store(save_credential, *enrollment, enrollment->cfg, elem);
    case tw::product_kind::generic:
      return store_generic(*enrollment, elem);
    case tw::product_kind::other:
      break;
  }
  return 1;
}

void cfg_enrollment_delete(cfg_enrollment *enrollment) noexcept {
  if (!enrollment || !enrollment->uuid) return;
  cfg_delete_element(enrollment->cfg, tw::element_of(*enrollment));
}
