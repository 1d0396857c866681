/* The C++ face of nodes, what belongs to them, their enrolment and their certificates. */
#ifndef TWOBJECT_NODES_HPP
#define TWOBJECT_NODES_HPP

#include <twobject/certificate.h>
#include <twobject/enrollment.h>
#include <twobject/node.h>
#include <twobject/node_group.h>
#include <twobject/node_interface.h>
#include <twobject/node_tag.h>
#include <twobject/node_user.h>
#include <twobject/port.h>
#include <twobject/owner.hpp>
#include <twobject/tags.hpp>

#include <span>
#include <vector>

namespace twobject {

/// Frees a certificate with its block, which cfg_certificate_free() leaves for other holders: here is no
/// other.
inline void release_certificate(cfg_certificate *certificate) noexcept {
  cfg_certificate_free(certificate);
  release_heap(certificate);
}

using certificate_record = owner<cfg_certificate, release_certificate>;
using enrollment_record = owner<cfg_enrollment, cfg_enrollment_free>;
using node_record = owner<cfg_node, cfg_node_free>;
using port_record = owner<cfg_port, cfg_port_free>;
using node_group_record = owner<cfg_node_group, cfg_node_group_free>;
using node_interface_record = owner<cfg_node_interface, cfg_node_interface_free>;
using node_user_record = owner<cfg_node_user, cfg_node_user_free>;

/// Loads all nodes; NULL for one that cannot be loaded.
inline auto nodes(cfg *store) {
  return indexed(cfg_get_nodes_count(store),
                 [store](int32_t i) { return node_record(cfg_get_node_by_idx(store, i)); });
}

/// Loads several nodes at once, in the order of their IDs; nothing when one of them cannot be loaded. IDs
/// that name nothing are left out.
inline std::optional<std::vector<node_record>> nodes_by_id(cfg *store, std::span<const char *const> ids) {
  std::vector<node_record> loaded;
  loaded.reserve(ids.size());
  const owner<cfg_node *, release_heap<cfg_node *>> found(
      cfg_get_nodes_by_id(store, ids.data(), static_cast<int32_t>(ids.size())));
  if (!found) return std::nullopt;
  for (cfg_node **node = found.get(); *node; ++node) loaded.emplace_back(*node);
  return loaded;
}

/* Parts of a node's record belong to it and end with it: these ranges give plain pointers, NULL for a part
 * that could not be read. */

/// The node's committed ports.
inline auto ports(cfg_node *node) {
  return indexed(cfg_node_get_port_count(node), [node](int32_t i) { return cfg_node_get_port(node, i); });
}
inline auto interfaces(const cfg_node *node) {
  return indexed(cfg_node_get_interface_count(node),
                 [node](int32_t i) { return cfg_node_get_interface(node, i); });
}
/// The node's own local users and groups, not those of the appliance.
inline auto users(const cfg_node *node) {
  return indexed(cfg_node_get_node_user_count(node),
                 [node](int32_t i) { return cfg_node_get_node_user(node, i); });
}
inline auto groups(const cfg_node *node) {
  return indexed(cfg_node_get_node_group_count(node),
                 [node](int32_t i) { return cfg_node_get_node_group(node, i); });
}
inline auto etags(cfg_node *node) {
  return indexed(cfg_node_get_etag_count(node), [node](int32_t i) { return cfg_node_get_etag(node, i); });
}

/// Loads the values that the node is tagged with, pending ones too; NULL for a reference that leads nowhere.
inline auto tags(cfg_node *node) {
  return indexed(cfg_node_get_tag_count(node),
                 [node](int32_t i) { return tag_value_record(cfg_node_get_tag(node, i)); });
}

/// The labels of a "generic" node's ports; nothing for a port without.
inline auto port_labels(const cfg_node *node) {
  return indexed(cfg_node_get_port_count_field(node),
                 [node](int32_t i) { return text_of(cfg_node_get_port_label(node, i)); });
}
inline auto port_labels(const cfg_enrollment *enrollment) {
  return indexed(cfg_enrollment_get_port_count_field(enrollment),
                 [enrollment](int32_t i) { return text_of(cfg_enrollment_get_port_label(enrollment, i)); });
}

/// The names of a local group's roles, and of the groups that a local user is in.
inline auto roles(const cfg_node_group *group) {
  return indexed(cfg_node_group_get_role_count(group),
                 [group](int32_t i) { return text_of(cfg_node_group_get_role(group, i)); });
}
inline auto groups(const cfg_node_user *user) {
  return indexed(cfg_node_user_get_group_count(user),
                 [user](int32_t i) { return text_of(cfg_node_user_get_group(user, i)); });
}

/// Takes a local group out of the node's record, which then is the caller's; NULL when it is none of the
/// node's.
inline node_group_record take_group(cfg_node *node, cfg_node_group *group) noexcept {
  return node_group_record(cfg_node_delete_group(node, group) ? group : nullptr);
}

/// The enrollment status, a copy; NULL without.
inline heap_text status(const cfg_enrollment *enrollment) noexcept {
  return heap_text(cfg_enrollment_get_status(enrollment));
}

}  // namespace twobject

#endif
