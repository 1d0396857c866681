// The kinds of tag, and the list of all tags of a kind.
#include "record/boundary.hpp"
#include "record/enumeration.hpp"
#include "record/text_array.hpp"
#include "record/view.hpp"
#include "tags/tag.hpp"

struct cfg_tag_list : tw::object_view {
  tw::text_array tags;  // their IDs
};

namespace {

constexpr const char *paths[] = {"tags.node_tags"};
constexpr tw::enumeration kinds{
    .texts = paths, .first = CFG_TAG_NODE, .unknown = CFG_TAG_UNKNOWN, .any_case = true};

}  // namespace

const char *cfg_tag_type_to_path(int32_t type) noexcept { return kinds.to_string(type); }
int32_t cfg_path_to_tag_type(const char *path) noexcept { return kinds.from_string(path); }

cfg_tag_list *cfg_get_tag_list(cfg *store, int32_t type) noexcept {
  cfg_elem *elem = cfg_get_by_path(store, cfg_tag_type_to_path(type));
  auto list = tw::new_view<cfg_tag_list>(store, elem);
  return list && list->tags.append_ids(elem) ? list.release() : nullptr;
}

void cfg_tag_list_free(cfg_tag_list *list) noexcept {
  if (!list) return;
  // Whoever asked for tag_list_get_all_tags() and tag_list_get_uuid() frees them, after the list.
  list->tags.leave_block();
  list->uuid.leave();
  delete list;
}

cfg *tag_list_get_config(const cfg_tag_list *list) noexcept { return list ? list->cfg : nullptr; }
const char *tag_list_get_uuid(const cfg_tag_list *list) noexcept {
  return tw::get<&cfg_tag_list::uuid>(list);
}
int32_t tag_list_get_num_tags(const cfg_tag_list *list) noexcept { return list ? list->tags.count() : 0; }
char **tag_list_get_all_tags(const cfg_tag_list *list) noexcept {
  return list ? list->tags.texts() : nullptr;
}
const char *tag_list_get_tag(const cfg_tag_list *list, int32_t index) noexcept {
  return list ? list->tags.at(index) : nullptr;
}
cfg_tag *cfg_tag_list_get_tag(const cfg_tag_list *list, int32_t index) noexcept {
  return list ? cfg_get_tag_by_id(list->cfg, list->tags.at(index)) : nullptr;
}
