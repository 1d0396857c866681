#include "nodes.hpp"

#include <fmt/format.h>

#include <optional>
#include <string_view>
#include <twobject/nodes.hpp>

#include "log.hpp"

namespace unenrolld {
namespace {

// The element of a node; NULL for one that is gone and for everything else that has an ID.
cfg_elem *node_element(cfg *store, const std::string &id) {
  cfg_elem *elem = cfg_get_by_id(store, id.c_str());
  const cfg_elem *parent = cfg_get_parent_elem(store, elem);
  if (!parent || std::string_view(reinterpret_cast<const char *>(parent)) != "nodes") return nullptr;
  return elem;
}

// Revokes the certificate that a node refers to. A node without one, one whose certificate is gone, and one
// that was revoked before need nothing. False when the store does not take it.
bool revoke_certificate(cfg *store, cfg_elem *node) {
  const twobject::heap_text id = twobject::text_from(cfg_map_get_reference, store, node, "cert");
  if (!id) return cfg_get_mapelem(node, "cert") == nullptr;
  cfg_elem *elem = cfg_get_by_id(store, id.get());
  if (!elem || cfg_get_mapelem(elem, "revoke_time")) return true;
  const twobject::certificate_record certificate(cfg_get_certificate_by_id(store, id.get()));
  return cfg_certificate_expire_now(certificate.get()) && cfg_certificate_save(certificate.get()) &&
         cfg_get_mapelem(elem, "revoke_time");
}

}  // namespace

outcome nodes::failure(const std::string &what) {
  const cfg_code code = cfg_error_code(store_.get());
  outcome failed{outcome::kind::not_now, fmt::format("{}: {}", what, cfg_error_text(store_.get()))};
  if (cfg_code_advice(code) == CFG_ADVICE_GIVE_UP) failed.how = outcome::kind::never;
  return failed;
}

bool nodes::open(outcome &failed) {
  if (store_) return true;
  cfg_failure problem{};
  store_.reset(cfg_open(path_.c_str(), 0, &problem));
  // Whatever is wrong with the store as a whole can be mended, and the job waits until it is.
  if (!store_) failed = {outcome::kind::not_now, fmt::format("the store cannot be opened: {}", problem.text)};
  return store_ != nullptr;
}

void nodes::park() {
  if (store_) cfg_park(store_.get());
}

outcome nodes::try_to_remove(const std::string &id) {
  cfg *store = store_.get();
  cfg_abandon(store);
  if (!cfg_refresh(store)) return failure("the store cannot be read");
  const std::string token = fmt::format("unenroll {}", id);
  std::uint64_t revision = 0;
  const bool done_before = cfg_find_commit(store, token.c_str(), &revision) != 0;
  cfg_elem *node = node_element(store, id);
  if (!node) return {done_before ? outcome::kind::done : outcome::kind::nothing_to_do, {}};
  if (!revoke_certificate(store, node)) return failure("the certificate cannot be revoked");
  if (!cfg_delete_element(store, node)) return failure("the node cannot be removed");
  // A node that was unenrolled before and is there again came back with a backup: under the same token the
  // store would take its removal for done.
  const cfg_commit_note note{"unenrolld", token.c_str(), done_before ? nullptr : token.c_str()};
  if (!cfg_commit(store, &note)) return failure("the change cannot be committed");
  return {outcome::kind::done, {}};
}

outcome nodes::remove(const std::string &id) {
  constexpr int kAttempts = 10;
  outcome result{outcome::kind::not_now, {}};
  if (!open(result)) return result;
  for (int i = 0; i < kAttempts; ++i) {
    result = try_to_remove(id);
    // Someone has changed the node in the meantime: what is there now is removed.
    if (result.finished() || cfg_error_code(store_.get()) != CFG_E_CONFLICT) break;
    log(level::info, fmt::format("{}: {}", id, result.error));
  }
  if (!result.finished()) store_.reset();  // the next attempt begins with nothing of this one
  return result;
}

}  // namespace unenrolld
