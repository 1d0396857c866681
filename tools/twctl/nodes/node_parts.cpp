// What a node's record says beside its own fields: what it carries, and how it authenticates.
#include "cli/fields.hpp"
#include "cli/text.hpp"
#include "nodes/nodes.hpp"
#include "nodes/tags.hpp"

namespace twctl {

namespace {

constexpr field<cfg_node> authentication[] = {
    shown_text<cfg_node_get_auth_method>("auth_method", "Authentication"),
    shown_text<cfg_node_get_auth_type>("auth_type", "Authentication type"),
    {"use_remote_groups", "Remote groups",
     [](cfg_node *node) {
       return cfg_node_get_auth_method(node) ? cell(cfg_node_get_use_remote_groups(node) != 0) : cell();
     },
     nullptr},
    shown_text<cfg_node_get_radius_authentication_servers>("radius_authentication_servers", "RADIUS servers"),
    shown_text<cfg_node_get_radius_accounting_servers>("radius_accounting_servers", "RADIUS accounting"),
    shown_secret<cfg_node_get_radius_password>("radius_password_set", "RADIUS secret set"),
    shown_text<cfg_node_get_tacacs_authentication_servers>("tacacs_authentication_servers",
                                                           "TACACS+ servers"),
    shown_text<cfg_node_get_tacacs_method>("tacacs_method", "TACACS+ method"),
    shown_text<cfg_node_get_tacacs_service>("tacacs_service", "TACACS+ service"),
    shown_secret<cfg_node_get_tacacs_password>("tacacs_password_set", "TACACS+ secret set"),
    shown_text<cfg_node_get_ldap_authentication_servers>("ldap_authentication_servers", "LDAP servers"),
    shown_text<cfg_node_get_ldap_base_dn>("ldap_base_dn", "LDAP base DN"),
    shown_text<cfg_node_get_ldap_bind_dn>("ldap_bind_dn", "LDAP bind DN"),
    shown_text<cfg_node_get_ldap_username_attribute>("ldap_username_attribute", "LDAP user name in"),
    shown_text<cfg_node_get_ldap_group_attribute>("ldap_group_attribute", "LDAP groups in"),
    shown_secret<cfg_node_get_ldap_bind_password>("ldap_bind_password_set", "LDAP password set"),
};

/// What `words` makes of each part, joined by semicolons; nothing without parts. One that could not be read
/// reads as "?".
template <typename Parts, typename Words>
cell listed(Parts parts, Words words) {
  std::string text;
  for (auto &&part : parts) text += (text.empty() ? "" : ";") + (part ? std::string(words(part)) : "?");
  return unless_empty(text);
}

std::string words_of(const cfg_node_interface *interface) {
  std::string text(view(cfg_node_interface_get_name(interface)));
  for (auto address :
       {cfg_node_interface_get_ipv4_addr(interface), cfg_node_interface_get_ipv6_addr(interface)})
    if (address) text += std::string(" ") + address;
  return text;
}

std::string words_of(const cfg_port *port) {
  std::string text(view(cfg_port_get_csid(port)));
  if (const char *label = cfg_port_get_label(port)) text += (text.empty() ? "" : " ") + std::string(label);
  return text;
}

/// A local user or group with what it is in, or may do: "root (admin, users)".
template <typename Texts>
std::string with_others(const char *name, Texts others) {
  std::string inside;
  for (auto other : others)
    if (other) inside += (inside.empty() ? "" : ", ") + std::string(*other);
  std::string text(view(name));
  return inside.empty() ? text : text + " (" + inside + ")";
}

}  // namespace

void show_parts(sheet &result, cfg_node *node) {
  result.add("tags", "Tags",
             listed(tags(node), [](const tag_value_record &value) { return twctl::words_of(value.get()); }));
  result.add("ports", "Ports known",
             listed(ports(node), [](const cfg_port *port) { return words_of(port); }));
  result.add("interfaces", "Interfaces", listed(interfaces(node), [](const cfg_node_interface *interface) {
               return words_of(interface);
             }));
  result.add("users", "Local users", listed(users(node), [](const cfg_node_user *user) {
               return with_others(cfg_node_user_get_username(user), groups(user));
             }));
  result.add("groups", "Local groups", listed(groups(node), [](const cfg_node_group *group) {
               return with_others(cfg_node_group_get_groupname(group), roles(group));
             }));
  show_fields(result, authentication, node);
}

}  // namespace twctl
