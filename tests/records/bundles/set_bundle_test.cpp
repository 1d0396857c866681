// Applying a bundle to the node of an enrolment.
#include <twobject/enrollment.h>
#include <twobject/node.h>

#include "bundle_fixture.hpp"

namespace {

using records::bundle_record;

struct free_enrollment {
  void operator()(cfg_enrollment *enrollment) const { cfg_enrollment_free(enrollment); }
};
using enrollment_record = std::unique_ptr<cfg_enrollment, free_enrollment>;

class SetBundle : public records::BundleTest {
 protected:
  // A bundle that is committed, with ID enrollment_bundles-1.
  bundle_record bundle(bool auto_approve = true) {
    set_bool(add_bundle("north"), "auto_approve", auto_approve);
    if (cfg_get_by_path(store, "tags.node_tags") == nullptr) list_at("tags.node_tags");
    commit();
    return load_bundle("enrollment_bundles-1");
  }
  // A node that was enrolled and committed.
  enrollment_record enrol(const char *name = "node") {
    if (cfg_get_by_path(store, "nodes") == nullptr) list_at("nodes");
    enrollment_record enrollment(cfg_enrollment_new(store, "acs8000"));
    cfg_enrollment_set_name(enrollment.get(), name);
    EXPECT_EQ(1, cfg_enrollment_save(enrollment.get()));
    commit();
    return enrollment;
  }
  std::string tags(const char *node = "nodes-1") {
    return dump(cfg_simple_get_mapelem(store, cfg_get_by_id(store, node), "tags"));
  }
};

TEST_F(SetBundle, ApprovesTheNodeAndNamesItsBundle) {
  const enrollment_record enrollment = enrol();
  EXPECT_EQ(1, cfg_enrollment_set_bundle(enrollment.get(), bundle().get()));
  commit_and_reopen();
  EXPECT_EQ(R"([{approved=true bundle=&enrollment_bundles-1 name="node" product="acs8000" status="Pending" )"
            R"(tags=[&tags_node_tags-1_values-1]}])",
            dump("nodes"));
  EXPECT_EQ(R"([{name="Bundle" values=[{value="north"}]}])", dump("tags.node_tags"));
}

TEST_F(SetBundle, TakesBackAnApprovalThatTheBundleDoesNotGive) {
  const enrollment_record enrollment = enrol();
  set_bool(cfg_get_by_id(store, "nodes-1"), "approved", true);
  EXPECT_EQ(1, cfg_enrollment_set_bundle(enrollment.get(), bundle(false).get()));
  EXPECT_EQ("false", dump(cfg_simple_get_mapelem(store, cfg_get_by_id(store, "nodes-1"), "approved")));
}

TEST_F(SetBundle, GivesTheAutomaticTagsAndThenTheBundlesOwnAsPendingReferences) {
  const std::string north = add_value("Site", "north"), console = add_value("Role", "console");
  const bundle_record record = bundle();
  cfg_elem *elem = cfg_get_by_id(store, "enrollment_bundles-1");
  refer(elem, "automatic_tags", north);
  refer(elem, "automatic_tags", "values-99");
  refer(elem, "automatic_tags", console);
  const enrollment_record enrollment = enrol();
  EXPECT_EQ(1, cfg_enrollment_set_bundle(enrollment.get(), record.get()));
  commit();
  EXPECT_EQ("[&tags_node_tags-1_values-1 &tags_node_tags-2_values-1 &tags_node_tags-3_values-1]", tags());
  EXPECT_EQ(R"([{name="Site" values=[{value="north"}]} {name="Role" values=[{value="console"}]} )"
            R"({name="Bundle" values=[{value="north"}]}])",
            dump("tags.node_tags"));
}

TEST_F(SetBundle, AppendsToTheTagsThatTheNodeHas) {
  const std::string north = add_value("Site", "north");
  const enrollment_record enrollment = enrol();
  refer(cfg_get_by_id(store, "nodes-1"), "tags", north);
  EXPECT_EQ(1, cfg_enrollment_set_bundle(enrollment.get(), bundle().get()));
  commit();
  EXPECT_EQ("[&tags_node_tags-1_values-1 &tags_node_tags-2_values-1]", tags());
}

TEST_F(SetBundle, UsesTheTagAndTheValueThatAreThere) {
  add_tag("Bundle", {"south", "north"});
  const enrollment_record enrollment = enrol();
  EXPECT_EQ(1, cfg_enrollment_set_bundle(enrollment.get(), bundle().get()));
  commit();
  EXPECT_EQ("[&tags_node_tags-1_values-2]", tags());
  EXPECT_EQ(R"([{name="Bundle" values=[{value="south"} {value="north"}]}])", dump("tags.node_tags"));
}

TEST_F(SetBundle, AddsItsValueToTheTagThatIsThere) {
  add_tag("Bundle", {"south"});
  const enrollment_record enrollment = enrol();
  EXPECT_EQ(1, cfg_enrollment_set_bundle(enrollment.get(), bundle().get()));
  EXPECT_EQ(R"([{name="Bundle" values=[{value="south"} +{value="north"}]}])", dump("tags.node_tags"));
}

TEST_F(SetBundle, NodesShareTheTagOnceItIsCommitted) {
  const enrollment_record first = enrol("first"), second = enrol("second");
  const bundle_record record = bundle();
  ASSERT_EQ(1, cfg_enrollment_set_bundle(first.get(), record.get()));
  commit();
  ASSERT_EQ(1, cfg_enrollment_set_bundle(second.get(), record.get()));
  commit();
  EXPECT_EQ(tags("nodes-1"), tags("nodes-2"));
  EXPECT_EQ(R"([{name="Bundle" values=[{value="north"}]}])", dump("tags.node_tags"));
}

TEST_F(SetBundle, TheNodeThenTellsItsBundle) {
  const enrollment_record enrollment = enrol();
  ASSERT_EQ(1, cfg_enrollment_set_bundle(enrollment.get(), bundle().get()));
  const std::unique_ptr<cfg_node, void (*)(cfg_node *)> node(cfg_get_node_by_id(store, "nodes-1"),
                                                             [](cfg_node *n) { cfg_node_free(n); });
  EXPECT_STREQ("north", cfg_node_get_enrollment_bundle(node.get()));
  EXPECT_STREQ("enrollment_bundles-1", cfg_node_get_bundle_id(node.get()));
}

TEST_F(SetBundle, WorksOnANodeThatIsStillPending) {
  list_at("nodes");
  const bundle_record record = bundle();
  enrollment_record enrollment(cfg_enrollment_new(store, "acs8000"));
  cfg_enrollment_set_name(enrollment.get(), "node");
  ASSERT_EQ(1, cfg_enrollment_save(enrollment.get()));
  EXPECT_EQ(1, cfg_enrollment_set_bundle(enrollment.get(), record.get()));
  commit();
  EXPECT_EQ("[&tags_node_tags-1_values-1]", tags());
}

TEST_F(SetBundle, WithoutAListOfTagsOfTheApplianceStillApprovesAndNames) {
  const enrollment_record enrollment = enrol();
  const bundle_record record = bundle();
  erase(cfg_root(store), "tags");
  EXPECT_EQ(1, cfg_enrollment_set_bundle(enrollment.get(), record.get()));
  EXPECT_EQ(R"([{approved=true bundle=&enrollment_bundles-1 name="node" product="acs8000" status="Pending" )"
            R"(tags=[]}])",
            dump("nodes"));
}

TEST_F(SetBundle, DoesNothingWhenTheNodeCannotBeLoaded) {
  const enrollment_record enrollment = enrol();
  const bundle_record record = bundle();
  erase(cfg_get_by_id(store, "nodes-1"), "status");
  commit();
  EXPECT_EQ(0, cfg_enrollment_set_bundle(enrollment.get(), record.get()));
  const enrollment_record unsaved(cfg_enrollment_new(store, "acs8000"));
  EXPECT_EQ(0, cfg_enrollment_set_bundle(unsaved.get(), record.get()));
  cfg_enrollment_delete(enrollment.get());
  commit();
  EXPECT_EQ(0, cfg_enrollment_set_bundle(enrollment.get(), record.get()));
  EXPECT_EQ(0, cfg_enrollment_set_bundle(enrollment.get(), nullptr));
  EXPECT_EQ(0, cfg_enrollment_set_bundle(nullptr, record.get()));
  EXPECT_FALSE(cfg_has_changes(store));
}

}  // namespace
