// The templates that a bundle pushes to nodes.
#include "bundle_fixture.hpp"

namespace {

using records::bundle_record;

constexpr char kTemplates[] = "templates";

class BundleTemplates : public records::BundleTest {
 protected:
  std::string add_template(const char *name) {
    cfg_elem *elem = entry_of("templates");
    set(elem, "name", name);
    set(elem, "template_type", "ports");
    return id_of(elem);
  }
  // The templates' IDs, "-" for an empty place.
  std::string ids(const bundle_record &bundle) {
    std::string words;
    for (int32_t i = 0; i < cfg_bundle_get_template_count(bundle.get()); ++i) {
      const char *id = cfg_bundle_get_template_uuid(bundle.get(), i);
      words += (words.empty() ? "" : " ") + std::string(id == nullptr ? "-" : id);
    }
    return words;
  }
};

TEST_F(BundleTemplates, AreReadFromTheStoreAndLoaded) {
  cfg_elem *elem = add_bundle("b");
  const std::string first = add_template("first"), second = add_template("second");
  refer(elem, kTemplates, first);
  refer(elem, kTemplates, second);
  const bundle_record bundle = load_bundle(elem);
  EXPECT_EQ(2, cfg_bundle_get_template_count(bundle.get()));
  EXPECT_EQ(first + " " + second, ids(bundle));
  const records::template_record record(cfg_bundle_get_template(bundle.get(), 1));
  EXPECT_STREQ("second", cfg_template_get_name(record.get()));
}

TEST_F(BundleTemplates, ThatArePendingTakeTheFirstPlacesAndLeaveTheLastOnesEmpty) {
  cfg_elem *elem = add_bundle("b");
  for (const char *id : {"templates-1", "templates-2", "templates-3"}) refer(elem, kTemplates, id);
  refer_pending(elem, kTemplates, "templates-4");
  EXPECT_EQ("templates-4 templates-2 templates-3 -", ids(load_bundle(elem)));
  refer_pending(elem, kTemplates, "templates-5");
  EXPECT_EQ("templates-4 templates-5 templates-3 - -", ids(load_bundle(elem)));
  commit();
  EXPECT_EQ("templates-1 templates-2 templates-3 templates-4 templates-5",
            ids(load_bundle("enrollment_bundles-1")));
}

TEST_F(BundleTemplates, ThatAreAllPendingOrMoreThanTheCommittedOnesAreAllThere) {
  cfg_elem *elem = add_bundle("b");
  child_list(elem, kTemplates);
  refer_pending(elem, kTemplates, "templates-1");
  EXPECT_EQ("templates-1", ids(load_bundle(elem)));
  cfg_elem *other = add_bundle("c");
  refer(other, kTemplates, "templates-1");
  for (const char *id : {"templates-2", "templates-3"}) refer_pending(other, kTemplates, id);
  EXPECT_EQ("templates-2 templates-3 -", ids(load_bundle(other)));
}

TEST_F(BundleTemplates, AnEmptyPlaceCannotBeSaved) {
  cfg_elem *elem = add_bundle("b");
  refer(elem, kTemplates, "templates-1");
  refer_pending(elem, kTemplates, "templates-2");
  const bundle_record bundle = load_bundle(elem);
  ASSERT_EQ("templates-2 -", ids(bundle));
  EXPECT_EQ(0, cfg_bundle_save(bundle.get()));
  EXPECT_EQ("[&templates-1 +&templates-2]", dump(cfg_simple_get_mapelem(store, elem, kTemplates)));
}

TEST_F(BundleTemplates, AnIdThatCannotBeReferredToEndsTheSaveAndLeavesTheListAsItWas) {
  cfg_elem *elem = add_bundle("b");
  refer(elem, kTemplates, "templates-1");
  const bundle_record bundle = load_bundle(elem);
  ASSERT_EQ(1, cfg_bundle_add_template(bundle.get(), records::unwritable_id().c_str()));
  EXPECT_EQ(0, cfg_bundle_save(bundle.get()));
  EXPECT_EQ("[&templates-1]", dump(cfg_simple_get_mapelem(store, elem, kTemplates)));
}

TEST_F(BundleTemplates, GiveNothingOutsideOrBehindWhatLeadsNowhere) {
  cfg_elem *elem = add_bundle("b");
  refer(elem, kTemplates, "templates-99");
  const bundle_record bundle = load_bundle(elem);
  for (const int32_t index : {1, -1, INT32_MAX, INT32_MIN}) {
    EXPECT_EQ(nullptr, cfg_bundle_get_template_uuid(bundle.get(), index)) << index;
    EXPECT_EQ(nullptr, cfg_bundle_get_template(bundle.get(), index)) << index;
  }
  EXPECT_STREQ("templates-99", cfg_bundle_get_template_uuid(bundle.get(), 0));
  EXPECT_EQ(nullptr, cfg_bundle_get_template(bundle.get(), 0));
}

TEST_F(BundleTemplates, WhatIsNoReferenceIsAnEmptyPlace) {
  cfg_elem *elem = add_bundle("b");
  add(child_list(elem, kTemplates), "templates-1");
  EXPECT_EQ("-", ids(load_bundle(elem)));
}

TEST_F(BundleTemplates, AreAddedToThoseOfTheRecordNotOfTheStore) {
  cfg_elem *elem = add_bundle("b");
  refer(elem, kTemplates, "templates-1");
  const bundle_record unread = load_bundle(elem), read = load_bundle(elem);
  EXPECT_EQ(1, cfg_bundle_add_template(unread.get(), "templates-2"));
  EXPECT_EQ("templates-2", ids(unread));
  EXPECT_EQ(1, cfg_bundle_get_template_count(read.get()));
  EXPECT_EQ(1, cfg_bundle_add_template(read.get(), "templates-2"));
  EXPECT_EQ("templates-1 templates-2", ids(read));
  EXPECT_EQ(1, cfg_bundle_save(read.get()));
  EXPECT_EQ("[&templates-1 &templates-2]", dump(cfg_simple_get_mapelem(store, elem, kTemplates)));
}

TEST_F(BundleTemplates, AreWrittenWholeByEverySave) {
  cfg_elem *elem = add_bundle("b");
  refer(elem, kTemplates, "templates-1");
  const bundle_record unread = load_bundle(elem), read = load_bundle(elem);
  ASSERT_EQ(1, cfg_bundle_get_template_count(read.get()));
  EXPECT_EQ(1, cfg_bundle_save(unread.get()));
  EXPECT_EQ("[]", dump(cfg_simple_get_mapelem(store, elem, kTemplates)));
  EXPECT_EQ(1, cfg_bundle_save(read.get()));
  EXPECT_EQ("[&templates-1]", dump(cfg_simple_get_mapelem(store, elem, kTemplates)));
}

TEST_F(BundleTemplates, ThatWereClearedAreReadAgainUntilTheBundleIsSaved) {
  cfg_elem *elem = add_bundle("b");
  refer(elem, kTemplates, "templates-1");
  const bundle_record bundle = load_bundle(elem);
  ASSERT_EQ(1, cfg_bundle_get_template_count(bundle.get()));
  EXPECT_EQ(1, cfg_bundle_clear_templates(bundle.get()));
  EXPECT_EQ(1, cfg_bundle_get_template_count(bundle.get()));
  EXPECT_EQ(1, cfg_bundle_clear_templates(bundle.get()));
  EXPECT_EQ(1, cfg_bundle_save(bundle.get()));
  EXPECT_EQ("[]", dump(cfg_simple_get_mapelem(store, elem, kTemplates)));
  EXPECT_EQ(0, cfg_bundle_get_template_count(bundle.get()));
}

TEST_F(BundleTemplates, ThatWereClearedAreReplacedByThoseThatAreAdded) {
  cfg_elem *elem = add_bundle("b");
  refer(elem, kTemplates, "templates-1");
  const bundle_record bundle = load_bundle(elem);
  EXPECT_EQ(1, cfg_bundle_clear_templates(bundle.get()));
  EXPECT_EQ(1, cfg_bundle_add_template(bundle.get(), "templates-2"));
  EXPECT_EQ("templates-2", ids(bundle));
}

TEST_F(BundleTemplates, OfNullAreNone) {
  EXPECT_EQ(0, cfg_bundle_get_template_count(nullptr));
  EXPECT_EQ(nullptr, cfg_bundle_get_template_uuid(nullptr, 0));
  EXPECT_EQ(nullptr, cfg_bundle_get_template(nullptr, 0));
  EXPECT_EQ(0, cfg_bundle_clear_templates(nullptr));
  EXPECT_EQ(0, cfg_bundle_add_template(nullptr, "templates-1"));
  EXPECT_EQ(0, cfg_bundle_add_template(fresh().get(), nullptr));
}

}  // namespace
