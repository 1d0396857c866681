// Bundles in a store, and bundle records that free themselves.
#ifndef TW_TESTS_RECORDS_BUNDLES_BUNDLE_FIXTURE_HPP
#define TW_TESTS_RECORDS_BUNDLES_BUNDLE_FIXTURE_HPP

#include <twobject/bundle.h>

#include "records/tags/tag_fixture.hpp"
#include "records/templates/template_fixture.hpp"

namespace records {

struct free_bundle {
  void operator()(cfg_bundle *bundle) const { cfg_bundle_free(bundle); }
};
using bundle_record = std::unique_ptr<cfg_bundle, free_bundle>;

class BundleTest : public TagTest {
 protected:
  /** A committed bundle (once the edit is) with a token and nothing else. */
  cfg_elem *add_bundle(const char *name) {
    cfg_elem *elem = entry_of("enrollment.bundles");
    set(elem, "name", name);
    set(elem, "token", "let me in");
    return elem;
  }
  /** A committed reference, at the end of a list below an element, which is made when it is missing. */
  std::string refer(cfg_elem *elem, const char *key, const std::string &target) {
    cfg_elem *list = cfg_simple_get_mapelem(store, elem, key);
    if (list == nullptr) list = child_list(elem, key);
    cfg_elem *reference = cfg_new_reference(store, target.c_str());
    add(list, reference);
    return id_of(reference);
  }
  std::string refer_pending(cfg_elem *elem, const char *key, const std::string &target) {
    cfg_elem *reference = cfg_new_reference(store, target.c_str());
    EXPECT_TRUE(cfg_append_future_listelem(store, cfg_simple_get_mapelem(store, elem, key), reference));
    return id_of(reference);
  }
  /** The ID of a new tag value. */
  std::string add_value(const char *tag, const char *text) {
    cfg_elem *elem = add_tag(tag, {text});
    return id_of(cfg_simple_get_listelem(store, cfg_simple_get_mapelem(store, elem, "values"), 0));
  }
  bundle_record load_bundle(cfg_elem *elem) { return load_bundle(id_of(elem)); }
  bundle_record load_bundle(const std::string &id) {
    return bundle_record(cfg_bundle_get_by_id(store, id.c_str()));
  }
  bundle_record fresh(const char *name = "north") {
    return bundle_record(cfg_bundle_new(store, name, "let me in", 1));
  }
};

}  // namespace records

#endif
