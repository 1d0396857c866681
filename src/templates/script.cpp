// Script templates: a script, its checksum and how long it may run.
#include <twobject/template_script.h>

#include <openssl/evp.h>

#include "record/boundary.hpp"
#include "record/engine.hpp"
#include "record/memory_watch.hpp"
#include "record/tables.hpp"
#include "templates/template.hpp"

namespace {

// The size is the caller's to set, and never decides how much is read: a save writes no more than there is.
constexpr auto script = [] {
  auto row = lenient(tw::blob_row<&cfg_template::script>("script"));
  row.load = [](void *record, const cfg_value &blob) {
    auto &self = *static_cast<cfg_template *>(record);
    if (!self.script.assign(blob.data, blob.length)) return false;
    self.script_end = self.size = static_cast<int32_t>(blob.length);
    return true;
  };
  row.store = [](cfg *store, cfg_elem *map, const char *key, const void *record) {
    const auto &self = *static_cast<const cfg_template *>(record);
    const int32_t end = self.size >= 0 && self.size < self.script_end ? self.size : self.script_end;
    return cfg_map_set_blob(store, map, key, self.script.c_str(), static_cast<size_t>(end)) != 0;
  };
  row.rule = "with its size; NULL leaves the stored one";
  return row;
}();

constexpr auto checksum = lenient(tw::string_row<&cfg_template::checksum>("script_checksum"));

// A time-out that was deleted stays deleted for as long as the record lives: callers set the other fields
// after they deleted it, this one included.
constexpr auto timeout = [] {
  auto row = lenient(tw::int_row<&cfg_template::timeout>("script_timeout"));
  row.store = [](cfg *store, cfg_elem *map, const char *key, const void *record) {
    const auto &self = *static_cast<const cfg_template *>(record);
    return (self.timeout_deleted ? tw::delete_map_key(store, map, key)
                                 : cfg_map_set_int(store, map, key, self.timeout)) != 0;
  };
  row.rule = "always written, or deleted on demand";
  return row;
}();

constexpr tw::load_list load_keys({script, timeout, checksum});
constexpr tw::store_list save_keys({script, checksum, timeout});

constexpr tw::named_list lists[] = {
    {"template load, script", load_keys},
    {"template save, script", save_keys},
};

constexpr size_t digest_size = 20;

// The SHA-1 of some bytes as hexadecimal digits. False without memory.
bool print_checksum(const void *bytes, size_t length, char (&out)[2 * digest_size + 1]) noexcept {
  unsigned char digest[digest_size];
  if (!EVP_Digest(bytes, length, digest, nullptr, EVP_sha1(), nullptr)) return false;
  constexpr char digits[] = "0123456789abcdef";
  for (size_t i = 0; i < digest_size; ++i) {
    out[2 * i] = digits[digest[i] >> 4];
    out[2 * i + 1] = digits[digest[i] & 15];
  }
  out[2 * digest_size] = '\0';
  return true;
}

}  // namespace

const tw::tables tw::script_template_tables = lists;

int cfg_script_template_new_setup(cfg_template *record) noexcept {
  if (!record) return 0;
  record->script.clear();
  record->checksum.clear();
  record->script_end = record->size = record->timeout = record->timeout_deleted = 0;
  return 1;
}

int cfg_script_template_load_from_config(cfg_template *record, cfg_elem *map) noexcept {
  if (!record || !map) return 0;
  const tw::memory_watch memory;
  record->checksum.clear();  // a map without one must not leave that of the former script
  tw::load(load_keys, *record, map);
  return !memory.ran_short();
}

int cfg_script_template_save_to_config(cfg_template *record, cfg_elem *map) noexcept {
  if (!record || !map) return 0;
  const tw::memory_watch memory;
  tw::store_each(save_keys, *record, record->cfg, map);
  return !memory.ran_short();
}

const void *cfg_script_template_get_script(const cfg_template *record) noexcept {
  return tw::get<&cfg_template::script>(record);
}
int cfg_script_template_set_script(cfg_template *record, const void *bytes, int32_t size) noexcept {
  if (!record || !bytes || size < 0) return 0;
  const auto length = static_cast<size_t>(size);
  char digits[2 * digest_size + 1];
  tw::text copy, sum;
  if (!print_checksum(bytes, length, digits) || !copy.assign(static_cast<const char *>(bytes), length) ||
      !sum.set(digits))
    return 0;
  record->script = std::move(copy);
  record->checksum = std::move(sum);
  record->script_end = record->size = size;
  return 1;
}

const char *cfg_script_template_get_checksum(const cfg_template *record) noexcept {
  return tw::get<&cfg_template::checksum>(record);
}
int cfg_script_template_set_checksum(cfg_template *record, const char *text) noexcept {
  return tw::replace<&cfg_template::checksum>(record, text);
}

int32_t cfg_script_template_get_size(const cfg_template *record) noexcept {
  return tw::get<&cfg_template::size>(record);
}
int cfg_script_template_set_size(cfg_template *record, int32_t size) noexcept {
  return tw::set<&cfg_template::size>(record, size);
}

int32_t cfg_script_template_get_timeout(const cfg_template *record) noexcept {
  return tw::get<&cfg_template::timeout>(record);
}
int cfg_script_template_set_timeout(cfg_template *record, int32_t value) noexcept {
  return tw::set<&cfg_template::timeout>(record, value);
}
int cfg_script_template_delete_timeout(cfg_template *record) noexcept {
  return tw::set<&cfg_template::timeout_deleted>(record, 1);
}
