// twctl acl: access-control lists, of which the store knows the names.
#include "cli/named_noun.hpp"

namespace twctl {

void add_acl(CLI::App &program, const options &opts) {
  static const named_noun<cfg_acl> noun(
      "acl", "acls", "access-control list", "an access-control list",
      {cfg_acl_get_by_id, cfg_acl_new, cfg_acl_get_uuid, cfg_acl_get_aclname, cfg_acl_set_aclname,
       cfg_acl_save, cfg_acl_delete, cfg_acl_free, nullptr});
  noun.add_to(program, opts, "Access-control lists, by their names", "night-shift", "evening-shift");
}

}  // namespace twctl
