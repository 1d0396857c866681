#include "layout.hpp"

#include <twconfig/layout.h>

#include <iterator>
#include <span>
#include <string_view>

#include "store.hpp"

namespace twcfg {
namespace {

// The root. Maps that their users make when they first need them are not listed.
constexpr cfg_place root_places[] = {
    {"system", CFG_MAP},
    {"system.net", CFG_MAP},
    {"system.net.physifs", CFG_LIST},
    {"system.net.conns", CFG_LIST},
    {"system.net.external_endpoints", CFG_LIST},
    {"services", CFG_MAP},
    {"services.ca", CFG_MAP},
    {"services.https", CFG_MAP},
    {"services.ntp", CFG_MAP},
    {"services.ntp.enabled", CFG_BOOL},
    {"services.ntp.servers", CFG_LIST},
    {"services.fhvpn", CFG_MAP},
    {"services.fhvpn.server", CFG_MAP},
    {"boot_flags", CFG_LIST},
    {"nodes", CFG_LIST},
    {"certificates", CFG_LIST},
    {"enrollment", CFG_MAP},
    {"enrollment.bundles", CFG_LIST},
    {"users", CFG_LIST},
    {"groups", CFG_LIST},
    {"roles", CFG_LIST},
    {"acls", CFG_LIST},
    {"auth", CFG_MAP},
    {"auth.radius", CFG_MAP},
    {"auth.radius.authenticationServers", CFG_LIST},
    {"auth.radius.accountingServers", CFG_LIST},
    {"auth.tacacs", CFG_MAP},
    {"auth.tacacs.authenticationServers", CFG_LIST},
    {"auth.ldap", CFG_MAP},
    {"auth.ldap.authenticationServers", CFG_LIST},
    {"tags", CFG_MAP},
    {"tags.node_tags", CFG_LIST},
    {"smart_groups", CFG_MAP},
    {"smart_groups.nodes_groups", CFG_LIST},
    {"templates", CFG_LIST},
    {"cfg_push_exec_ctxts", CFG_LIST},
};

// A node's share of a push: services add messages to these lists and never make them.
constexpr cfg_place push_node_places[] = {
    {"preflight_changes", CFG_LIST},  {"preflight_warnings", CFG_LIST}, {"preflight_errors", CFG_LIST},
    {"preflight_messages", CFG_LIST}, {"execution_changes", CFG_LIST},  {"execution_warnings", CFG_LIST},
    {"execution_errors", CFG_LIST},   {"execution_messages", CFG_LIST},
};

// The lists whose entries begin with something. A step "*" is any entry of a list; an entry's places are
// keys.
constexpr struct {
  std::string_view list;
  std::span<const cfg_place> places;
} collections[] = {
    {"cfg_push_exec_ctxts.*.nodes", push_node_places},
};

// Whether an element stands at such a path. Nothing does that hangs on an element which is attached nowhere.
bool stands_at(Head *head, std::string_view path) {
  const Head *root = root_head(*head->store);
  while (head != nullptr && head != root && !path.empty()) {
    const std::size_t dot = path.rfind('.');
    const std::string_view step = path.substr(dot + 1);  // all of it without a dot
    const KeyName *key = head->born ? head->node->key : head->key;
    if ((step == "*") != (key == nullptr) || (key != nullptr && key->text != step)) return false;
    path = path.substr(0, dot == std::string_view::npos ? 0 : dot);
    head = holder_of(head);
  }
  return head != nullptr && head == root && path.empty();
}

Node *empty(Nodes &nodes, cfg_kind kind) {
  if (kind == CFG_MAP) return nodes.map();
  if (kind == CFG_LIST) return nodes.list();
  return nodes.scalar(kind, {}, 0);
}

}  // namespace

bool lay_out_entry(Head *list, Node *entry) {
  if (entry->kind != CFG_MAP) return true;
  Nodes &nodes = list->store->editing().nodes;
  for (const auto &collection : collections) {
    if (!stands_at(list, collection.list)) continue;
    bound(entry->head);  // opens an entry that was written whole
    for (const cfg_place &place : collection.places) {
      if (!find_key(entry->head, place.path) && !set_item(entry->head, place.path, empty(nodes, place.kind)))
        return false;
    }
  }
  return true;
}

}  // namespace twcfg

const cfg_place *cfg_base_layout(size_t *count) noexcept {
  if (count == nullptr) return nullptr;
  *count = std::size(twcfg::root_places);
  return twcfg::root_places;
}
