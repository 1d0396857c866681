// The records of libtwobject and other C objects, released when their owner ends.
#pragma once

#include <jansson.h>
#include <twconfig.h>
#include <twobject.h>

#include <cstdlib>
#include <memory>

namespace twctl {

template <auto Release>
struct releaser {
  template <typename T>
  void operator()(T *object) const {
    Release(object);
  }
};

/// The store keeps a certificate record's own block alive for other holders; this owner is the only one.
inline void release_certificate(cfg_certificate *certificate) {
  cfg_certificate_free(certificate);
  std::free(certificate);
}

/// What cfg_tag_free() leaves to whoever took the whole array of the values: here no one did.
inline void release_tag(cfg_tag *tag) {
  char **values = tag_get_all_values(tag);
  cfg_tag_free(tag);
  std::free(static_cast<void *>(values));
}

/// The same for the array of the tags, and for the text of the list's own ID.
inline void release_tag_list(cfg_tag_list *list) {
  char **tags = tag_list_get_all_tags(list);
  char *id = const_cast<char *>(tag_list_get_uuid(list));
  cfg_tag_list_free(list);
  std::free(static_cast<void *>(tags));
  std::free(id);
}

/// A template's free keeps all that it has but the name alive for other holders; this owner is the only one.
inline void release_template(cfg_template *record) {
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

/// json_decref() has no linkage of its own, which a type that headers share needs.
inline void release_json(json_t *value) { json_decref(value); }

using node_record = std::unique_ptr<cfg_node, releaser<cfg_node_free>>;
using enrollment_record = std::unique_ptr<cfg_enrollment, releaser<cfg_enrollment_free>>;
using certificate_record = std::unique_ptr<cfg_certificate, releaser<release_certificate>>;
using csr_record = std::unique_ptr<cfg_csr, releaser<cfg_csr_free>>;
using https_details = std::unique_ptr<cfg_https_cert_details, releaser<cfg_free_https_cert_details>>;
using tag_record = std::unique_ptr<cfg_tag, releaser<release_tag>>;
using tag_value_record = std::unique_ptr<cfg_tag_value, releaser<cfg_tag_value_free>>;
using tag_list = std::unique_ptr<cfg_tag_list, releaser<release_tag_list>>;
using template_record = std::unique_ptr<cfg_template, releaser<release_template>>;
using template_list = std::unique_ptr<cfg_template_list, releaser<cfg_template_list_free>>;
using bundle_record = std::unique_ptr<cfg_bundle, releaser<cfg_bundle_free>>;
using bundle_list = std::unique_ptr<cfg_bundle_list, releaser<cfg_bundle_list_free>>;
using physif_record = std::unique_ptr<cfg_net_physif, releaser<cfg_net_physif_free>>;
using conn_record = std::unique_ptr<cfg_net_conn, releaser<cfg_net_conn_free>>;
using endpoint_record = std::unique_ptr<cfg_net_external_endpoint, releaser<cfg_net_external_endpoint_free>>;
using endpoint_list =
    std::unique_ptr<cfg_net_external_endpoint_list, releaser<cfg_net_external_endpoint_list_free>>;
using ntp_record = std::unique_ptr<cfg_ntp, releaser<cfg_ntp_free>>;
using gateway_record =
    std::unique_ptr<cfg_service_console_gateway, releaser<cfg_service_console_gateway_free>>;
using boot_flag_record = std::unique_ptr<cfg_boot_flag, releaser<cfg_boot_flag_free>>;
using condition_tree = std::unique_ptr<cfg_condition, releaser<cfg_free_conditions>>;
using json_value = std::unique_ptr<json_t, releaser<release_json>>;

}  // namespace twctl
