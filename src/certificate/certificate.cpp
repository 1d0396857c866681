// Certificate records: loading, revoking, saving, freeing. issue.cpp makes their content.
#include "certificate/certificate.hpp"

#include <cstring>
#include <ctime>
#include <iterator>
#include <new>

#include "record/boundary.hpp"
#include "record/engine.hpp"
#include "record/memory_watch.hpp"
#include "record/owned_certificate.hpp"
#include "record/tables.hpp"

namespace {

constexpr auto certificate = tw::blob_row<&cfg_certificate::cert>("certificate");
constexpr auto private_key = tw::blob_row<&cfg_certificate::private_key>("private_key");
constexpr auto common_name = tw::string_row<&cfg_certificate::common_name>("common_name");
constexpr auto revoke_time = tw::nonzero_row<&cfg_certificate::revoke_time>("revoke_time");

constexpr tw::load_list everything({certificate, private_key, common_name, revoke_time});
constexpr tw::store_list issued({certificate, private_key, common_name});
constexpr tw::store_list state({revoke_time});

constexpr tw::named_list lists[] = {
    {"certificate load", everything},
    {"certificate save, new record", issued},
    {"certificate save, every record", state},
};

// The block comes from malloc() because its last owner may give it back with free().
tw::owned_certificate new_record(cfg *store) noexcept {
  void *block = std::malloc(sizeof(cfg_certificate));
  if (!block) return nullptr;
  tw::owned_certificate record(new (block) cfg_certificate);
  record->cfg = store;
  return record;
}

}  // namespace

const tw::tables tw::certificate_tables = lists;

cfg_certificate *cfg_certificate_new(cfg *store, const char *name) noexcept {
  tw::owned_certificate record = new_record(store);
  if (!record) return nullptr;
  // An exact copy: an empty name is for the request to refuse, with the message that names the subject.
  if (name && !record->common_name.assign(name, std::strlen(name))) return nullptr;
  return cfg_certificate_generate(record.get()) ? record.release() : nullptr;
}

cfg_certificate *cfg_get_certificate_by_id(cfg *store, const char *id) noexcept {
  cfg_elem *elem = cfg_get_by_id(store, id);
  if (!elem) return nullptr;
  tw::owned_certificate record = new_record(store);
  cfg_value values[std::size(everything.keys_)];
  if (!record || !cfg_map_read(elem, &everything.keys, values)) return nullptr;
  // Certificate and key are long: one piece of memory for all texts instead of one for each.
  std::size_t bytes = std::strlen(reinterpret_cast<const char *>(elem)) + 1;
  for (const cfg_value &value : values) bytes += value.kind > CFG_LIST ? value.length + 1 : 0;
  if (!record->texts.reserve(bytes) || !tw::take_uuid(record->uuid, elem, record->texts) ||
      !tw::load_from(everything, *record, values))
    return nullptr;
  return record.release();
}

const char *cfg_certificate_get_id(const cfg_certificate *record) noexcept {
  return tw::get<&cfg_certificate::uuid>(record);
}
const char *cfg_certificate_get_common_name(const cfg_certificate *record) noexcept {
  return tw::get<&cfg_certificate::common_name>(record);
}
const char *cfg_certificate_get_cert(const cfg_certificate *record) noexcept {
  return tw::get<&cfg_certificate::cert>(record);
}
const char *cfg_certificate_get_private_key(const cfg_certificate *record) noexcept {
  return tw::get<&cfg_certificate::private_key>(record);
}

// The store's integers have 32 bits, so the time is cut to them; that is good until 2038.
int cfg_certificate_expire_now(cfg_certificate *record) noexcept {
  return tw::set<&cfg_certificate::revoke_time>(record, static_cast<int32_t>(std::time(nullptr)));
}

int cfg_certificate_save(cfg_certificate *record) noexcept {
  TW_ASSERT(record && record->cfg, "src/certificate");
  // A saved certificate, its key and its name never change again; only its revocation does, and callers who
  // revoke a certificate whose element is gone already are told the same as the others: it is done.
  if (!record->uuid) {
    cfg_elem *elem = tw::append_new_element(*record, "certificates");
    if (!elem || !record->cert || !record->private_key) return 0;
    if (!tw::store(issued, *record, record->cfg, elem)) return 0;
  }
  const tw::memory_watch memory;
  tw::store(state, *record, record->cfg, tw::element_of(*record));
  return !memory.ran_short();
}

void cfg_certificate_free(cfg_certificate *record) noexcept {
  if (!record) return;
  record->uuid.clear();
  record->common_name.clear();
  record->cert.clear();
  record->private_key.clear();
  record->texts.clear();
  // The block itself stays. Services hand the pointer of one certificate record to several places and drop
  // them in any order: those that come later find an empty record here, not freed memory.
}
