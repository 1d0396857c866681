// The certificate request in progress: fields, loading, saving. csr_generate.cpp makes its content.
#include "https/csr.hpp"

#include "https/https.hpp"
#include "record/boundary.hpp"
#include "record/engine.hpp"
#include "record/memory_watch.hpp"
#include "record/tables.hpp"
#include "record/view.hpp"

namespace {

constexpr auto common_name = tw::kept_string_row<&cfg_csr::common_name>("common_name");
constexpr auto org_unit = tw::kept_string_row<&cfg_csr::org_unit>("org_unit");
constexpr auto organization = tw::kept_string_row<&cfg_csr::organization>("organization");
constexpr auto locality = tw::kept_string_row<&cfg_csr::locality>("locality");
constexpr auto state = tw::kept_string_row<&cfg_csr::state>("state");
constexpr auto country = tw::kept_string_row<&cfg_csr::country>("country");
constexpr auto email = tw::kept_string_row<&cfg_csr::email>("email");
constexpr auto challenge_password = tw::string_row<&cfg_csr::challenge_password>("challenge_password");
constexpr auto key_length = tw::int_row<&cfg_csr::key_length>("key_length");
constexpr auto private_key = tw::blob_row<&cfg_csr::private_key>("private_key");
constexpr auto request = tw::blob_row<&cfg_csr::csr>("csr");

// Lenient, since a request can always be begun: what cannot be read is asked for again.
constexpr tw::load_list everything({lenient(common_name), lenient(org_unit), lenient(organization),
                                    lenient(locality), lenient(state), lenient(country), lenient(email),
                                    lenient(challenge_password), lenient(key_length), lenient(private_key),
                                    lenient(request)});
constexpr tw::store_list texts({common_name, org_unit, organization, locality, state, country, email,
                                challenge_password, private_key, request});
constexpr tw::store_list last({key_length});

constexpr tw::named_list lists[] = {
    {"https request load", everything},
    {"https request save", texts},
    {"https request save, last", last},
};

template <tw::secret cfg_csr::*Field>
int set_text(cfg_csr *csr, const char *value) noexcept {
  tw::secret fresh;
  return csr && fresh.set(value) && tw::replace_text(*csr, Field, std::move(fresh));
}

}  // namespace

const tw::tables tw::https_csr_tables = lists;

bool tw::replace_text(cfg_csr &csr, secret cfg_csr::*field, secret &&fresh) noexcept {
  secret &present = csr.*field;
  if (present && !guarded([&] { return csr.former.emplace_back(), true; })) return false;
  if (present) csr.former.back() = std::move(present);
  present = std::move(fresh);
  return true;
}

cfg_csr *cfg_new_https_csr(cfg *store) noexcept { return tw::new_view<cfg_csr>(store).release(); }

cfg_csr *cfg_get_https_csr(cfg *store) noexcept {
  const tw::memory_watch memory;
  auto csr = tw::new_view<cfg_csr>(store);
  if (csr) tw::load(everything, *csr, cfg_get_by_path(store, "services.https.csr"));
  return memory.ran_short() ? nullptr : csr.release();
}

const char *cfg_csr_get_common_name(const cfg_csr *csr) noexcept {
  return tw::get<&cfg_csr::common_name>(csr);
}
int cfg_csr_set_common_name(cfg_csr *csr, const char *name) noexcept {
  return set_text<&cfg_csr::common_name>(csr, name);
}

const char *cfg_csr_get_org_unit(const cfg_csr *csr) noexcept { return tw::get<&cfg_csr::org_unit>(csr); }
int cfg_csr_set_org_unit(cfg_csr *csr, const char *unit) noexcept {
  return set_text<&cfg_csr::org_unit>(csr, unit);
}

const char *cfg_csr_get_organization(const cfg_csr *csr) noexcept {
  return tw::get<&cfg_csr::organization>(csr);
}
int cfg_csr_set_organization(cfg_csr *csr, const char *name) noexcept {
  return set_text<&cfg_csr::organization>(csr, name);
}

const char *cfg_csr_get_locality(const cfg_csr *csr) noexcept { return tw::get<&cfg_csr::locality>(csr); }
int cfg_csr_set_locality(cfg_csr *csr, const char *name) noexcept {
  return set_text<&cfg_csr::locality>(csr, name);
}

const char *cfg_csr_get_state(const cfg_csr *csr) noexcept { return tw::get<&cfg_csr::state>(csr); }
int cfg_csr_set_state(cfg_csr *csr, const char *name) noexcept {
  return set_text<&cfg_csr::state>(csr, name);
}

const char *cfg_csr_get_country(const cfg_csr *csr) noexcept { return tw::get<&cfg_csr::country>(csr); }
int cfg_csr_set_country(cfg_csr *csr, const char *code) noexcept {
  return set_text<&cfg_csr::country>(csr, code);
}

const char *cfg_csr_get_email(const cfg_csr *csr) noexcept { return tw::get<&cfg_csr::email>(csr); }
int cfg_csr_set_email(cfg_csr *csr, const char *address) noexcept {
  return set_text<&cfg_csr::email>(csr, address);
}

const char *cfg_csr_get_challenge_password(const cfg_csr *csr) noexcept {
  return tw::get<&cfg_csr::challenge_password>(csr);
}
int cfg_csr_set_challenge_password(cfg_csr *csr, const char *password) noexcept {
  return set_text<&cfg_csr::challenge_password>(csr, password);
}

const char *cfg_csr_get_private_key(const cfg_csr *csr) noexcept {
  return tw::get<&cfg_csr::private_key>(csr);
}
int cfg_csr_set_private_key(cfg_csr *csr, const char *pem) noexcept {
  return set_text<&cfg_csr::private_key>(csr, pem);
}

const char *cfg_csr_get_csr(const cfg_csr *csr) noexcept { return tw::get<&cfg_csr::csr>(csr); }
int cfg_csr_set_csr(cfg_csr *csr, const char *pem) noexcept { return set_text<&cfg_csr::csr>(csr, pem); }

int32_t cfg_csr_get_key_length(const cfg_csr *csr) noexcept { return tw::get<&cfg_csr::key_length>(csr); }
int cfg_csr_set_key_length(cfg_csr *csr, int32_t bits) noexcept {
  return tw::set<&cfg_csr::key_length>(csr, bits);
}

void cfg_csr_delete_request(cfg_csr *csr) noexcept {
  if (!csr) return;
  csr->csr.clear();
  csr->private_key.clear();
}

// Callers count on a save that goes on behind a write that fails, and on "key_length" to tell.
int cfg_save_https_csr(cfg_csr *csr) noexcept {
  TW_ASSERT(csr && csr->cfg, "src/https");
  const tw::memory_watch memory;
  cfg_elem *map = tw::need_map(csr->cfg, tw::need_https(csr->cfg), "csr");
  tw::store_each(texts, *csr, csr->cfg, map);
  return tw::store(last, *csr, csr->cfg, map) && !memory.ran_short();
}

void cfg_csr_free(cfg_csr *csr) noexcept { delete csr; }
