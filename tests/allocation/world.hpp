// What the calls under test work on: a store with something in every place that they read, and records of it.
#ifndef TW_TESTS_ALLOCATION_WORLD_HPP
#define TW_TESTS_ALLOCATION_WORLD_HPP

#include <twconfig.h>
#include <twobject.h>

#include <string>

namespace allocation {

// The committed entries of the store.
inline constexpr char kTarnwell[] = "nodes-1";  // with certificate, etags, tags and what it reports
inline constexpr char kGeneric[] = "nodes-2";   // with credentials, port labels, etags and ports
inline constexpr char kPort[] = "nodes-2_ports-1";
inline constexpr char kCertificate[] = "certificates-1";
inline constexpr char kTag[] = "tags_node_tags-1";  // "Bundle"
inline constexpr char kTagValue[] = "tags_node_tags-1_values-1";
inline constexpr char kSmartGroup[] = "smart_groups_nodes_groups-1";
inline constexpr char kTemplate[] = "templates-1";  // a dummy
inline constexpr char kUsersTemplate[] = "templates-2";
inline constexpr char kGroupsTemplate[] = "templates-3";
inline constexpr char kMembershipTemplate[] = "templates-4";
inline constexpr char kAuthTemplate[] = "templates-5";
inline constexpr char kScriptTemplate[] = "templates-6";
inline constexpr char kBundle[] = "enrollment_bundles-1";  // with an automatic tag and a template
inline constexpr char kTagRef[] = "enrollment_bundles-1_automatic_tags-1";
inline constexpr char kRole[] = "roles-1";  // "FernhollowAdmin", the global role of kUserGroup
inline constexpr char kAcl[] = "acls-1";
inline constexpr char kUser[] = "users-1";         // a member of both groups, and "groups" says so
inline constexpr char kStranger[] = "users-2";     // of none
inline constexpr char kUserGroup[] = "groups-1";   // "operators", with roles of both kinds
inline constexpr char kAdminGroup[] = "groups-2";  // "admin"

inline constexpr char kEthernet[] = "system_net_physifs-1";
inline constexpr char kWireless[] = "system_net_physifs-2";
inline constexpr char kConn[] = "system_net_conns-1";  // "uplink", dhcp on kEthernet, with both sub-maps
inline constexpr char kEndpoint[] = "system_net_external_endpoints-1";
inline constexpr char kNtpServer[] = "services_ntp_servers-1";
inline constexpr char kBootFlag[] = "boot_flags-1";  // "wipe"

inline constexpr char kPush[] = "cfg_push_exec_ctxts-1";              // of kTemplate to kTarnwell
inline constexpr char kPushNode[] = "cfg_push_exec_ctxts-1_nodes-1";  // with a message in each list

// A text that was not there before; long, so that it is never kept within a string object.
inline constexpr char kNew[] = "a new text, longer than what fits into a string object";

// A handle on the store of this process, and records that are read through it. Each World begins with the
// same store: nothing in this program commits.
class World {
 public:
  World();
  ~World();
  World(const World &) = delete;
  World &operator=(const World &) = delete;

  // Drops the edit; true when the store then reads as it did at first.
  bool store_is_as_before();

  // For calls that allocate only when they are the first on their handle.
  void open_unread();

  cfg *store = nullptr;
  cfg *unread = nullptr;                         // another handle on the same store, once it is opened
  cfg_node *node = nullptr;                      // kTarnwell
  cfg_node *generic = nullptr;                   // kGeneric
  cfg_port *port = nullptr;                      // kPort
  cfg_enrollment *enrollment = nullptr;          // kTarnwell
  cfg_enrollment *generic_enrollment = nullptr;  // kGeneric
  cfg_certificate *certificate = nullptr;        // kCertificate
  cfg_csr *csr = nullptr;                        // each text its key, but for the country: "NZ"
  cfg_tag_list *tags = nullptr;
  cfg_tag *tag = nullptr;              // kTag
  cfg_tag_value *tag_value = nullptr;  // kTagValue
  cfg_smartgroup *group = nullptr;     // kSmartGroup
  cfg_template_list *templates = nullptr;
  cfg_template *dummy = nullptr;  // kTemplate
  cfg_template *users_template = nullptr;
  cfg_ugt_user_operation *user_operation = nullptr;  // the only one of users_template, which has it
  cfg_template *groups_template = nullptr;
  cfg_ugt_group_operation *group_operation = nullptr;  // the only one of groups_template, which has it
  cfg_template *membership_template = nullptr;
  cfg_template *auth_template = nullptr;
  cfg_template *script_template = nullptr;
  cfg_bundle_list *bundles = nullptr;
  cfg_bundle *bundle = nullptr;                   // kBundle
  cfg_net_physif *ethernet = nullptr;             // kEthernet
  cfg_net_physif *wireless = nullptr;             // kWireless
  cfg_net_conn *conn = nullptr;                   // kConn
  cfg_net_external_endpoint *endpoint = nullptr;  // kEndpoint
  cfg_net_external_endpoint_list *endpoints = nullptr;
  cfg_ntp *ntp = nullptr;
  cfg_service_console_gateway *gateway = nullptr;
  cfg_boot_flag *boot_flag = nullptr;       // kBootFlag
  cfg_push_exec_ctxt *push = nullptr;       // kPush
  cfg_push_node_ctxt *push_node = nullptr;  // kPushNode
  cfg_push_exec_ctxt_list *pushes = nullptr;
  cfg_role *role = nullptr;         // kRole
  cfg_acl *acl = nullptr;           // kAcl
  cfg_user *user = nullptr;         // kUser
  cfg_user *stranger = nullptr;     // kStranger
  cfg_group *user_group = nullptr;  // kUserGroup
  cfg_auth *auth = nullptr;
  cfg_auth_server *server = nullptr;  // of the list of RADIUS authentication servers
};

// Frees a record with what its free function leaves to others, who are not here.
void free_whole(cfg_certificate *certificate);
void free_whole(cfg_tag *tag);
void free_whole(cfg_tag_list *tags);
void free_whole(cfg_template *record);

}  // namespace allocation

#endif
