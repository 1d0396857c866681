// Etags: the version tags of a node.
#include "nodes/node.hpp"
#include "record/boundary.hpp"
#include "record/engine.hpp"
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
const std::vector<cfg_etag> &etags_of(cfg_node &node) {
  if (node.etags.empty()) tw::load_etags(node, tw::element_of(node));
  return node.etags;
}

// The first etag of this name, or NULL.
const cfg_etag *find(cfg_node *node, const char *name) noexcept {
  if (!node || !name) return nullptr;
  return tw::guarded([&]() -> const cfg_etag * {
    for (const cfg_etag &etag : etags_of(*node)) {
      if (tw::same(etag.name.c_str(), name)) return &etag;
    }
    return nullptr;
  });
}

}  // namespace

const tw::tables tw::etag_tables = lists;

bool tw::load_etags(cfg_node &node, cfg_elem *elem) {
  cfg_elem *list = cfg_simple_get_mapelem(node.cfg, elem, "etags");
  int32_t size = 0;
  if (!cfg_list_size(list, &size)) return true;
  std::vector<cfg_etag> etags(static_cast<size_t>(size));
  for (int32_t i = 0; i < size; ++i) {
    cfg_etag &etag = etags[static_cast<size_t>(i)];
    cfg_elem *entry = cfg_simple_get_listelem(node.cfg, list, i);
    if (tw::load(etag_keys, etag, entry)) {
      if (!tw::take_uuid(etag.uuid, entry)) return false;
    } else if (cfg_elem_kind(entry) == CFG_MAP) {
      return false;  // nothing but memory can be missing
    }
  }
  node.etags = std::move(etags);
  return true;
}

int32_t cfg_node_get_etag_count(cfg_node *node) noexcept {
  if (!node) return 0;
  return tw::guarded([&] { return static_cast<int32_t>(etags_of(*node).size()); });
}

const cfg_etag *cfg_node_get_etag(cfg_node *node, int32_t index) noexcept {
  if (!node || index < 0) return nullptr;
  return tw::guarded([&]() -> const cfg_etag * {
    const auto &etags = etags_of(*node);
    const auto i = static_cast<size_t>(index);
    return i < etags.size() && etags[i].uuid ? &etags[i] : nullptr;
  });
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
