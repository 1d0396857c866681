#include "https/https.hpp"

#include "record/memory_watch.hpp"
#include "record/view.hpp"

namespace tw {

cfg_elem *need_https(cfg *store) noexcept {
  const memory_watch memory;
  if (cfg_elem *https = cfg_get_by_path(store, "services.https")) return https;
  if (memory.ran_short()) return nullptr;  // or a new map would take the place of what is there
  return need_map(store, need_map(store, cfg_root(store), "services"), "https");
}

pkey_ptr read_key(const char *pem) noexcept {
  const bio_ptr bytes = reading(pem);
  return bytes ? pkey_ptr(PEM_read_bio_PrivateKey(bytes.get(), nullptr, no_password, nullptr)) : nullptr;
}

}  // namespace tw
