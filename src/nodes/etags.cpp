// Etags: the version tags of a node.
#include "nodes/node.hpp"
#include "record/boundary.hpp"
#include "record/engine.hpp"
#include "record/entries.hpp"
#include "record/tables.hpp"

namespace {

constexpr tw::load_list etag_keys({
    lenient(tw::string_row<&cfg_etag::name>("name")),
    lenient(tw::int_row<&cfg_etag::version>("version")),
    lenient(tw::string_row<&cfg_etag::status>("status")),
});

constexpr tw::named_list lists[] = {{"etag load", etag_keys}};

// The node's etags. "None" is not remembered: a node without etags is asked again at each query, so that a
// record which is kept for long sees the etags that the node's first report brings.
std::vector<cfg_etag> &etags_of(cfg_node &node) noexcept {
  if (node.etags.empty()) tw::load_etags(node, tw::element_of(node));
  return node.etags;
}

// The first etag of this name, or NULL.
const cfg_etag *find(cfg_node *node, const char *name) noexcept {
  if (!node || !name) return nullptr;
  for (const cfg_etag &etag : etags_of(*node)) {
    if (tw::same(etag.name.c_str(), name)) return &etag;
  }
  return nullptr;
}

}  // namespace

const tw::tables tw::etag_tables = lists;

bool tw::load_etags(cfg_node &node, cfg_elem *elem) noexcept {
  std::vector<cfg_etag> etags;
  const auto take = [&](const char *id, const cfg_value *values) {
    cfg_etag &etag = tw::add_slot(etags);
    etag.texts = &node.texts;
    return !values || (etag.uuid.set(id, etag.texts) && tw::load_from(etag_keys, etag, values));
  };
  if (!tw::each_entry(elem, "etags", etag_keys.keys, take)) return false;
  node.etags = std::move(etags);
  return true;
}

int32_t cfg_node_get_etag_count(cfg_node *node) noexcept {
  return node ? static_cast<int32_t>(etags_of(*node).size()) : 0;
}

cfg_etag *cfg_node_get_etag(cfg_node *node, int32_t index) noexcept {
  cfg_etag *etag = node ? tw::slot_at(etags_of(*node), index) : nullptr;
  return etag && etag->uuid ? etag : nullptr;
}

int32_t cfg_node_get_etag_version(cfg_node *node, const char *name) noexcept {
  return cfg_etag_get_version(find(node, name));
}
const char *cfg_node_get_etag_status(cfg_node *node, const char *name) noexcept {
  return cfg_etag_get_status(find(node, name));
}

const char *cfg_etag_get_uuid(const cfg_etag *etag) noexcept { return tw::get<&cfg_etag::uuid>(etag); }
const char *cfg_etag_get_name(const cfg_etag *etag) noexcept { return tw::get<&cfg_etag::name>(etag); }
const char *cfg_etag_get_status(const cfg_etag *etag) noexcept { return tw::get<&cfg_etag::status>(etag); }
int32_t cfg_etag_get_version(const cfg_etag *etag) noexcept { return tw::get<&cfg_etag::version>(etag); }
