// Finding a node by a text of its own or by its certificate.
#include <twconfig/read.h>

#include "nodes/node.hpp"
#include "record/owned_condition.hpp"

namespace {

// A scan over "nodes" for the first node whose first key of the set has a given text. Nodes that it passes
// over are not loaded, only judged: the first that could not be loaded ends the scan without result, so that
// a damaged node is noticed instead of another node being taken for it.
struct scan {
  const char *wanted;
  size_t length;
  size_t name_slot;  // where "name" and "status" stand in the key set
  bool found = false;

  static int visit(void *context, int32_t, const cfg_value *values) {
    auto &self = *static_cast<scan *>(context);
    const cfg_value *name = values + self.name_slot;
    const cfg_value *status = name + 1;
    if (name->kind != CFG_STRING || status->kind != CFG_STRING) return 0;
    if (values->kind != CFG_STRING || values->length != self.length ||
        std::memcmp(values->data, self.wanted, self.length) != 0)
      return 1;
    self.found = true;
    return 0;
  }
};

constexpr const char *name_keys[] = {"name", "status"};
constexpr const char *serial_keys[] = {"serial_number", "name", "status"};
constexpr const char *address_keys[] = {"fhvpn_address", "name", "status"};
constexpr cfg_keyset by_name{name_keys, 2};
constexpr cfg_keyset by_serial{serial_keys, 3};
constexpr cfg_keyset by_address{address_keys, 3};

cfg_node *find(cfg *store, const cfg_keyset &keys, const char *wanted) noexcept {
  if (!wanted) return nullptr;
  scan context{wanted, std::strlen(wanted), keys.count - 2};
  cfg_elem *node = cfg_list_find(cfg_get_by_path(store, "nodes"), &keys, scan::visit, &context);
  return context.found ? tw::load_node(store, node).release() : nullptr;
}

using condition = tw::owned_condition;

bool add(condition &parent, condition child) noexcept {
  if (!parent || !child || !cfg_condition_add_child(parent.get(), child.get())) return false;
  static_cast<void>(child.release());  // the parent's now
  return true;
}

// The ID of the only match, or NULL.
const char *only_match(cfg *store, const char *collection, const condition &filter) noexcept {
  cfg_elem *matches = cfg_search(store, collection, filter.get());
  int32_t size = 0;
  return cfg_list_size(matches, &size) && size == 1 ? cfg_get_listelem(matches, 0) : nullptr;
}

}  // namespace

cfg_node *cfg_get_node_by_name(cfg *store, const char *name) noexcept { return find(store, by_name, name); }

cfg_node *cfg_get_node_by_serial_number(cfg *store, const char *serial_number) noexcept {
  return find(store, by_serial, serial_number);
}

cfg_node *cfg_get_node_by_fhvpn_address(cfg *store, const char *address) noexcept {
  return find(store, by_address, address);
}

cfg_node *cfg_get_node_by_cert_cn(cfg *store, const char *common_name) noexcept {
  condition unrevoked(cfg_new_and_condition());
  if (!add(unrevoked, condition(cfg_new_string_condition("common_name", CFG_OP_EQUAL, common_name))) ||
      !add(unrevoked, condition(cfg_new_untyped_condition("revoke_time", CFG_OP_ABSENT))))
    return nullptr;
  const char *certificate = only_match(store, "certificates", unrevoked);
  if (!certificate) return nullptr;
  condition holder(cfg_new_and_condition());
  if (!add(holder, condition(cfg_new_reference_condition("cert", CFG_OP_EQUAL, certificate)))) return nullptr;
  return cfg_get_node_by_id(store, only_match(store, "nodes", holder));
}
