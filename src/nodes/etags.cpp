// Etags: the version tags of a node.
#include "nodes/node.hpp"
#include "record/boundary.hpp"
#include "record/engine.hpp"
#include "record/memory_watch.hpp"
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
  struct reading {
    std::vector<cfg_etag> etags;
    bool complete = true;
  } list;
  const memory_watch memory;
  cfg_child_scan(
      elem, "etags", &etag_keys.keys,
      [](void *context, const char *id, const cfg_value *values) {
        auto &self = *static_cast<reading *>(context);
        self.complete = tw::guarded([&] {
          cfg_etag &etag = self.etags.emplace_back();
          return !values || (etag.uuid.set(id) && tw::load_from(etag_keys, etag, values));
        });
        return self.complete ? 1 : 0;
      },
      &list);
  if (!list.complete || memory.ran_short()) return false;
  node.etags = std::move(list.etags);
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
