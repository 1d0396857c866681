// Tags in a store, and records that give back all of themselves: what their free functions leave as well.
#ifndef TW_TESTS_RECORDS_TAGS_TAG_FIXTURE_HPP
#define TW_TESTS_RECORDS_TAGS_TAG_FIXTURE_HPP

#include <twobject/tag.h>

#include "records/store_fixture.hpp"

namespace records {

struct free_tag {
  void operator()(cfg_tag *tag) const {
    char **values = tag_get_all_values(tag);
    cfg_tag_free(tag);
    std::free(static_cast<void *>(values));
  }
};
struct free_tag_value {
  void operator()(cfg_tag_value *value) const { cfg_tag_value_free(value); }
};
struct free_tag_list {
  void operator()(cfg_tag_list *list) const {
    char **tags = tag_list_get_all_tags(list);
    const char *uuid = tag_list_get_uuid(list);
    cfg_tag_list_free(list);
    std::free(static_cast<void *>(tags));
    std::free(const_cast<char *>(uuid));
  }
};
using tag_record = std::unique_ptr<cfg_tag, free_tag>;
using value_record = std::unique_ptr<cfg_tag_value, free_tag_value>;
using tag_list = std::unique_ptr<cfg_tag_list, free_tag_list>;

class TagTest : public StoreTest {
 protected:
  /** A committed tag (once the edit is) with values; without a list of values when there are none. */
  cfg_elem *add_tag(const char *name, std::initializer_list<const char *> values = {}) {
    cfg_elem *tag = entry_of("tags.node_tags");
    set(tag, "name", name);
    if (values.size() == 0) return tag;
    child_list(tag, "values");
    for (const char *text : values) add_value(tag, text);
    return tag;
  }
  /** A committed value (once the edit is) behind those that the tag has. */
  void add_value(cfg_elem *tag, const char *text) {
    cfg_elem *value = cfg_new_map(store);
    add(cfg_simple_get_mapelem(store, tag, "values"), value);
    set(value, "value", text);
  }
  /** A tag that is pending in its list. */
  void add_pending_tag(const char *name) {
    cfg_elem *tag = cfg_new_map(store);
    set(tag, "name", name);
    ASSERT_TRUE(cfg_append_future_listelem(store, cfg_get_by_path(store, "tags.node_tags"), tag));
  }
  tag_record load(const std::string &id) { return tag_record(cfg_get_tag_by_id(store, id.c_str())); }
  tag_record find(const char *name) { return tag_record(cfg_get_tag_by_name(store, name, CFG_TAG_NODE)); }
  value_record load_value(const std::string &id) {
    return value_record(cfg_get_tag_value_by_id(store, id.c_str()));
  }
};

}  // namespace records

#endif
