// The tag values that a bundle gives to nodes.
#include "bundle_fixture.hpp"

namespace {

using records::bundle_record;
using records::value_record;

constexpr char kTags[] = "automatic_tags";

class AutomaticTags : public records::BundleTest {
 protected:
  value_record value_at(const bundle_record &bundle, int32_t index) {
    return value_record(cfg_bundle_get_automatic_tag(bundle.get(), index));
  }
  value_record value_behind(const bundle_record &bundle, const char *ref) {
    return value_record(cfg_bundle_get_automatic_tag_by_ref_uuid(bundle.get(), ref));
  }
};

TEST_F(AutomaticTags, AreTheCommittedOnesAndBehindThemThePendingOnes) {
  cfg_elem *elem = add_bundle("b");
  refer(elem, kTags, add_value("Site", "north"));
  commit();
  elem = cfg_get_by_id(store, "enrollment_bundles-1");
  const std::string pending = refer_pending(elem, kTags, add_value("Role", "console"));
  const bundle_record bundle = load_bundle(elem);
  ASSERT_EQ(2, cfg_bundle_get_automatic_tag_count(bundle.get()));
  EXPECT_STREQ("enrollment_bundles-1_automatic_tags-1",
               cfg_bundle_get_automatic_tag_ref_uuid(bundle.get(), 0));
  EXPECT_STREQ(pending.c_str(), cfg_bundle_get_automatic_tag_ref_uuid(bundle.get(), 1));
  EXPECT_STREQ("north", tag_value_get_value(value_at(bundle, 0).get()));
  EXPECT_STREQ("console", tag_value_get_value(value_at(bundle, 1).get()));
}

TEST_F(AutomaticTags, GiveNothingOutside) {
  cfg_elem *elem = add_bundle("b");
  refer(elem, kTags, add_value("Site", "north"));
  const bundle_record bundle = load_bundle(elem);
  for (const int32_t index : {1, -1, INT32_MAX, INT32_MIN}) {
    EXPECT_EQ(nullptr, value_at(bundle, index)) << index;
    EXPECT_EQ(nullptr, cfg_bundle_get_automatic_tag_ref_uuid(bundle.get(), index)) << index;
  }
}

TEST_F(AutomaticTags, AReferenceThatLeadsNowhereCountsButHasNoValue) {
  cfg_elem *elem = add_bundle("b");
  const std::string ref = refer(elem, kTags, "values-99");
  const bundle_record bundle = load_bundle(elem);
  EXPECT_EQ(1, cfg_bundle_get_automatic_tag_count(bundle.get()));
  EXPECT_EQ(nullptr, value_at(bundle, 0));
  EXPECT_EQ(nullptr, value_behind(bundle, ref.c_str()));
}

TEST_F(AutomaticTags, AreReadOnceWhenThereAreSomeAndAgainWhenThereAreNone) {
  cfg_elem *elem = add_bundle("b");
  const bundle_record bundle = load_bundle(elem);
  EXPECT_EQ(0, cfg_bundle_get_automatic_tag_count(bundle.get()));
  refer(elem, kTags, add_value("Site", "north"));
  EXPECT_EQ(1, cfg_bundle_get_automatic_tag_count(bundle.get()));
  refer(elem, kTags, add_value("Site", "south"));
  EXPECT_EQ(1, cfg_bundle_get_automatic_tag_count(bundle.get()));
  EXPECT_EQ(2, cfg_bundle_get_automatic_tag_count(load_bundle(elem).get()));
}

TEST_F(AutomaticTags, AreFoundByTheirReference) {
  cfg_elem *elem = add_bundle("b");
  refer(elem, kTags, add_value("Site", "north"));
  const std::string ref = refer(elem, kTags, add_value("Role", "console"));
  const bundle_record bundle = load_bundle(elem);
  EXPECT_STREQ("console", tag_value_get_value(value_behind(bundle, ref.c_str()).get()));
  EXPECT_EQ(nullptr, value_behind(bundle, nullptr));
  // A reference of another bundle is not this one's.
  const std::string foreign = refer(add_bundle("other"), kTags, add_value("Site", "south"));
  EXPECT_EQ(nullptr, value_behind(bundle, foreign.c_str()));
}

TEST_F(AutomaticTags, TheReferenceOfAValueIsTheFirstThatLeadsToIt) {
  cfg_elem *elem = add_bundle("b");
  const std::string north = add_value("Site", "north"), south = add_value("Site", "south");
  refer(elem, kTags, "values-99");
  refer(elem, kTags, north);
  const std::string first = refer(elem, kTags, south);
  refer(elem, kTags, south);
  const bundle_record bundle = load_bundle(elem);
  EXPECT_STREQ(first.c_str(), cfg_bundle_get_tag_ref_uuid_by_value(bundle.get(), load_value(south).get()));
  const value_record other = load_value(add_value("Site", "south"));
  EXPECT_EQ(nullptr, cfg_bundle_get_tag_ref_uuid_by_value(bundle.get(), other.get()));
  const value_record unsaved(cfg_tag_value_new(store, "south"));
  EXPECT_EQ(nullptr, cfg_bundle_get_tag_ref_uuid_by_value(bundle.get(), unsaved.get()));
  EXPECT_EQ(nullptr, cfg_bundle_get_tag_ref_uuid_by_value(bundle.get(), nullptr));
}

TEST_F(AutomaticTags, AreAppendedAsPendingReferences) {
  list_at("enrollment.bundles");
  const bundle_record bundle = fresh();
  ASSERT_EQ(1, cfg_bundle_save(bundle.get()));
  const std::string id = add_value("Site", "north");
  EXPECT_EQ(1, cfg_bundle_save_automatic_tag(bundle.get(), load_value(id).get()));
  EXPECT_EQ("[+&" + id + "]", dump(cfg_get_child_by_path(
                                  store, cfg_get_by_id(store, cfg_bundle_get_uuid(bundle.get())), kTags)));
  EXPECT_EQ(1, cfg_bundle_get_automatic_tag_count(bundle.get()));
  EXPECT_STREQ("north", tag_value_get_value(value_at(bundle, 0).get()));
  commit();
  EXPECT_EQ("[&tags_node_tags-1_values-1]",
            dump(cfg_get_child_by_path(store, cfg_get_by_id(store, "enrollment_bundles-1"), kTags)));
}

TEST_F(AutomaticTags, AreNotAppendedWithoutValueListOrElement) {
  cfg_elem *elem = add_bundle("b");
  const bundle_record bundle = load_bundle(elem);
  const value_record value = load_value(add_value("Site", "north"));
  EXPECT_EQ(0, cfg_bundle_save_automatic_tag(bundle.get(), value.get()));
  child_list(elem, kTags);
  EXPECT_EQ(0, cfg_bundle_save_automatic_tag(bundle.get(), nullptr));
  EXPECT_EQ(0, cfg_bundle_save_automatic_tag(bundle.get(),
                                             value_record(cfg_tag_value_new(store, "unsaved")).get()));
  EXPECT_EQ(0, cfg_bundle_save_automatic_tag(fresh().get(), value.get()));
  EXPECT_EQ(0, cfg_bundle_save_automatic_tag(nullptr, value.get()));
  EXPECT_EQ("[]", dump(cfg_simple_get_mapelem(store, elem, kTags)));
}

TEST_F(AutomaticTags, AReferenceIsLetLeadToAnotherValue) {
  cfg_elem *elem = add_bundle("b");
  const std::string ref = refer(elem, kTags, add_value("Site", "north"));
  const std::string south = add_value("Site", "south");
  EXPECT_EQ(1, cfg_bundle_update_automatic_tag(store, ref.c_str(), load_value(south).get()));
  EXPECT_EQ("[&" + south + "]", dump(cfg_simple_get_mapelem(store, elem, kTags)));
  EXPECT_EQ(0, cfg_bundle_update_automatic_tag(store, ref.c_str(), nullptr));
  EXPECT_EQ(0, cfg_bundle_update_automatic_tag(store, "values-99", load_value(south).get()));
  EXPECT_EQ(0, cfg_bundle_update_automatic_tag(store, nullptr, load_value(south).get()));
  EXPECT_EQ(0, cfg_bundle_update_automatic_tag(store, id_of(elem).c_str(), load_value(south).get()));
}

TEST_F(AutomaticTags, AReferenceIsDeletedAndItsValueStays) {
  cfg_elem *elem = add_bundle("b");
  const std::string north = add_value("Site", "north");
  const std::string ref = refer(elem, kTags, north);
  EXPECT_EQ(1, cfg_bundle_delete_automatic_tag(store, ref.c_str()));
  EXPECT_EQ("[]", dump(cfg_simple_get_mapelem(store, elem, kTags)));
  EXPECT_NE(nullptr, load_value(north));
  EXPECT_EQ(0, cfg_bundle_delete_automatic_tag(store, ref.c_str()));
  EXPECT_EQ(0, cfg_bundle_delete_automatic_tag(store, nullptr));
}

TEST_F(AutomaticTags, OnlyReferencesAreDeleted) {
  const std::string north = add_value("Site", "north");
  EXPECT_EQ(0, cfg_bundle_delete_automatic_tag(store, north.c_str()));
  EXPECT_NE(nullptr, load_value(north));
}

TEST_F(AutomaticTags, OfNullAreNone) {
  EXPECT_EQ(0, cfg_bundle_get_automatic_tag_count(nullptr));
  EXPECT_EQ(nullptr, cfg_bundle_get_automatic_tag(nullptr, 0));
  EXPECT_EQ(nullptr, cfg_bundle_get_automatic_tag_ref_uuid(nullptr, 0));
  EXPECT_EQ(nullptr, cfg_bundle_get_automatic_tag_by_ref_uuid(nullptr, "x"));
  EXPECT_EQ(nullptr, cfg_bundle_get_tag_ref_uuid_by_value(nullptr, nullptr));
}

}  // namespace
