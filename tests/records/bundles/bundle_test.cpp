// Bundle records, and the list of all bundles.
#include "bundle_fixture.hpp"

namespace {

using records::bundle_record;

class Bundle : public records::BundleTest {};
class BundleDeathTest : public records::BundleTest {};

TEST_F(Bundle, IsReadFromItsElement) {
  set_bool(add_bundle("north"), "auto_approve", true);
  commit_and_reopen();
  const bundle_record bundle = load_bundle("enrollment_bundles-1");
  ASSERT_NE(nullptr, bundle);
  EXPECT_STREQ("enrollment_bundles-1", cfg_bundle_get_uuid(bundle.get()));
  EXPECT_STREQ("north", cfg_bundle_get_name(bundle.get()));
  EXPECT_STREQ("let me in", cfg_bundle_get_token(bundle.get()));
  EXPECT_EQ(1, cfg_bundle_get_auto_approve(bundle.get()));
}

TEST_F(Bundle, IsReadWithoutAnyOfItsKeys) {
  const bundle_record bundle = load_bundle(entry_of("enrollment.bundles"));
  ASSERT_NE(nullptr, bundle);
  EXPECT_EQ(nullptr, cfg_bundle_get_name(bundle.get()));
  EXPECT_EQ(nullptr, cfg_bundle_get_token(bundle.get()));
  EXPECT_EQ(0, cfg_bundle_get_auto_approve(bundle.get()));
}

TEST_F(Bundle, IsNotReadWithAKeyOfAnotherKind) {
  for (const char *key : {"name", "token", "auto_approve"}) {
    cfg_elem *elem = add_bundle("north");
    set(elem, key, 7);
    EXPECT_EQ(nullptr, load_bundle(elem)) << key;
  }
}

TEST_F(Bundle, IsNotReadFromNowhere) {
  add_bundle("north");
  EXPECT_EQ(nullptr, load_bundle("enrollment_bundles-9"));
  EXPECT_EQ(nullptr, cfg_bundle_get_by_id(store, nullptr));
  EXPECT_EQ(nullptr, cfg_bundle_get_by_id(nullptr, "enrollment_bundles-1"));
}

TEST_F(Bundle, IsFoundByItsExactName) {
  add_bundle("North");
  add_bundle("north");
  add_bundle("north");
  commit();
  const bundle_record found(cfg_bundle_get_by_name(store, "north"));
  EXPECT_STREQ("enrollment_bundles-2", cfg_bundle_get_uuid(found.get()));
  EXPECT_STREQ("let me in", cfg_bundle_get_token(found.get()));
}

TEST_F(Bundle, IsNotFoundByANameThatNoneHas) {
  EXPECT_EQ(nullptr, cfg_bundle_get_by_name(store, "north"));
  add_bundle("north");
  commit();
  for (const char *name : {"NORTH", "nort", "norths", ""})
    EXPECT_EQ(nullptr, cfg_bundle_get_by_name(store, name)) << name;
  EXPECT_EQ(nullptr, cfg_bundle_get_by_name(store, nullptr));
  EXPECT_EQ(nullptr, cfg_bundle_get_by_name(nullptr, "north"));
}

TEST_F(Bundle, IsNewWithWhatItIsGiven) {
  const bundle_record bundle = fresh("north");
  ASSERT_NE(nullptr, bundle);
  EXPECT_EQ(nullptr, cfg_bundle_get_uuid(bundle.get()));
  EXPECT_STREQ("north", cfg_bundle_get_name(bundle.get()));
  EXPECT_STREQ("let me in", cfg_bundle_get_token(bundle.get()));
  EXPECT_EQ(1, cfg_bundle_get_auto_approve(bundle.get()));
  EXPECT_EQ(0, cfg_bundle_get_automatic_tag_count(bundle.get()));
  EXPECT_EQ(0, cfg_bundle_get_template_count(bundle.get()));
}

TEST_F(Bundle, IsNotMadeWithoutNameOrToken) {
  EXPECT_EQ(nullptr, cfg_bundle_new(store, nullptr, "token", 0));
  EXPECT_EQ(nullptr, cfg_bundle_new(store, "name", nullptr, 0));
}

TEST_F(Bundle, ThatIsNewIsSavedIntoItsListAtOnceWithListsOfTagsAndTemplates) {
  list_at("enrollment.bundles");
  const bundle_record bundle = fresh("north");
  ASSERT_EQ(1, cfg_bundle_add_template(bundle.get(), "templates-7"));
  EXPECT_EQ(1, cfg_bundle_save(bundle.get()));
  const char whole[] = R"([{auto_approve=true automatic_tags=[] name="north" templates=[&templates-7] )"
                       R"(token="let me in"}])";
  EXPECT_EQ(whole, dump("enrollment.bundles"));
  ASSERT_NE(nullptr, cfg_bundle_get_uuid(bundle.get()));
  EXPECT_EQ('{', cfg_bundle_get_uuid(bundle.get())[0]);
  commit();
  EXPECT_STREQ("enrollment_bundles-1", cfg_bundle_get_uuid(bundle.get()));
  commit_and_reopen();
  EXPECT_EQ(whole, dump("enrollment.bundles"));
}

TEST_F(Bundle, IsSavedTwiceIntoOneElement) {
  list_at("enrollment.bundles");
  const bundle_record bundle = fresh("north");
  ASSERT_EQ(1, cfg_bundle_save(bundle.get()));
  ASSERT_EQ(1, cfg_bundle_set_name(bundle.get(), "south"));
  ASSERT_EQ(1, cfg_bundle_save(bundle.get()));
  commit();
  ASSERT_EQ(1, cfg_bundle_set_auto_approve(bundle.get(), 0));
  EXPECT_EQ(1, cfg_bundle_save(bundle.get()));
  EXPECT_EQ(R"([{auto_approve=false automatic_tags=[] name="south" templates=[] token="let me in"}])",
            dump("enrollment.bundles"));
}

TEST_F(Bundle, SavingLeavesTheAutomaticTagsAsTheyAre) {
  cfg_elem *elem = add_bundle("north");
  const bundle_record bundle = load_bundle(elem);
  ASSERT_EQ(1, cfg_bundle_save(bundle.get()));
  EXPECT_EQ(R"({auto_approve=false name="north" templates=[] token="let me in"})", dump(elem));
  refer(elem, "automatic_tags", "values-1");
  ASSERT_EQ(1, cfg_bundle_save(bundle.get()));
  EXPECT_EQ(R"({auto_approve=false automatic_tags=[&values-1] name="north" templates=[] token="let me in"})",
            dump(elem));
}

TEST_F(Bundle, ThatIsNewNeedsTheList) {
  const bundle_record bundle = fresh();
  EXPECT_EQ(0, cfg_bundle_save(bundle.get()));
  EXPECT_EQ(nullptr, cfg_bundle_get_uuid(bundle.get()));
  EXPECT_EQ("none", dump("enrollment"));
}

TEST_F(Bundle, IsNotSavedWithoutItsElement) {
  cfg_elem *elem = add_bundle("north");
  const bundle_record bundle = load_bundle(elem);
  ASSERT_TRUE(cfg_delete_element(store, elem));
  EXPECT_EQ(0, cfg_bundle_save(bundle.get()));
}

TEST_F(Bundle, AWriteThatFailsEndsTheSave) {
  cfg_elem *elem = add_bundle("north");
  const bundle_record bundle = load_bundle(elem);
  ASSERT_EQ(1, cfg_bundle_set_name(bundle.get(), "south"));
  ASSERT_EQ(1, cfg_bundle_set_token(bundle.get(), records::unwritable().c_str()));
  EXPECT_EQ(0, cfg_bundle_save(bundle.get()));
  EXPECT_EQ(R"({name="south" token="let me in"})", dump(elem));
}

TEST_F(BundleDeathTest, SavingAbortsWithoutRecordOrHandle) {
  EXPECT_DEATH(cfg_bundle_save(nullptr),
               "src/bundles: cfg_bundle_save: Assertion .bundle && bundle->cfg. failed");
  const bundle_record bundle(cfg_bundle_new(nullptr, "name", "token", 0));
  ASSERT_NE(nullptr, bundle);
  EXPECT_DEATH(cfg_bundle_save(bundle.get()),
               "src/bundles: cfg_bundle_save: Assertion .bundle && bundle->cfg. failed");
}

TEST_F(Bundle, TextsAreReplacedAndNullIsRefused) {
  const bundle_record bundle = fresh();
  const struct {
    int (*set)(cfg_bundle *, const char *);
    const char *(*get)(const cfg_bundle *);
  } fields[] = {
      {cfg_bundle_set_name, cfg_bundle_get_name},
      {cfg_bundle_set_token, cfg_bundle_get_token},
  };
  for (const auto &field : fields) {
    EXPECT_EQ(1, field.set(bundle.get(), "second"));
    EXPECT_STREQ("second", field.get(bundle.get()));
    EXPECT_EQ(1, field.set(bundle.get(), field.get(bundle.get())));
    EXPECT_EQ(0, field.set(bundle.get(), nullptr));
    EXPECT_STREQ("second", field.get(bundle.get()));
    EXPECT_EQ(1, field.set(bundle.get(), ""));
    EXPECT_EQ(nullptr, field.get(bundle.get()));
    EXPECT_EQ(0, field.set(nullptr, "x"));
    EXPECT_EQ(nullptr, field.get(nullptr));
  }
}

TEST_F(Bundle, AutomaticApprovalIsKeptAsZeroOrOne) {
  for (const int32_t approve : {1, 0, 2, -1, INT32_MIN}) {
    const int32_t kept = approve != 0 ? 1 : 0;
    const bundle_record bundle(cfg_bundle_new(store, "north", "let me in", approve));
    EXPECT_EQ(kept, cfg_bundle_get_auto_approve(bundle.get()));
    EXPECT_EQ(1, cfg_bundle_set_auto_approve(bundle.get(), !kept));
    EXPECT_EQ(1, cfg_bundle_set_auto_approve(bundle.get(), approve));
    EXPECT_EQ(kept, cfg_bundle_get_auto_approve(bundle.get()));
  }
}

TEST_F(Bundle, IsDeleted) {
  const bundle_record bundle = load_bundle(add_bundle("north"));
  EXPECT_EQ(1, cfg_bundle_delete(bundle.get()));
  EXPECT_EQ("[]", dump("enrollment.bundles"));
  EXPECT_STREQ("north", cfg_bundle_get_name(bundle.get()));
  EXPECT_EQ(0, cfg_bundle_delete(bundle.get()));
  EXPECT_EQ(0, cfg_bundle_delete(fresh().get()));
  EXPECT_EQ(0, cfg_bundle_delete(nullptr));
}

TEST_F(Bundle, NullGivesNothing) {
  EXPECT_EQ(nullptr, cfg_bundle_get_uuid(nullptr));
  EXPECT_EQ(0, cfg_bundle_get_auto_approve(nullptr));
  EXPECT_EQ(0, cfg_bundle_set_auto_approve(nullptr, 1));
  cfg_bundle_free(nullptr);
}

struct free_list {
  void operator()(cfg_bundle_list *list) const { cfg_bundle_list_free(list); }
};
using bundle_list = std::unique_ptr<cfg_bundle_list, free_list>;

class BundleList : public records::BundleTest {
 protected:
  bundle_list read() { return bundle_list(cfg_bundle_list_new(store)); }
  bundle_record at(const bundle_list &list, int32_t index) {
    return bundle_record(cfg_bundle_list_get_bundle(list.get(), index));
  }
};

TEST_F(BundleList, HoldsTheBundlesInOrder) {
  add_bundle("north");
  add_bundle("south");
  commit_and_reopen();
  const bundle_list list = read();
  ASSERT_EQ(2, cfg_bundle_list_count(list.get()));
  EXPECT_STREQ("enrollment_bundles-1", cfg_bundle_get_uuid(at(list, 0).get()));
  EXPECT_STREQ("south", cfg_bundle_get_name(at(list, 1).get()));
}

TEST_F(BundleList, HoldsABundleThatWasJustSaved) {
  list_at("enrollment.bundles");
  ASSERT_EQ(1, cfg_bundle_save(fresh("north").get()));
  const bundle_list list = read();
  ASSERT_EQ(1, cfg_bundle_list_count(list.get()));
  EXPECT_STREQ("north", cfg_bundle_get_name(at(list, 0).get()));
}

TEST_F(BundleList, GivesNothingOutsideItselfOrForABundleThatIsGone) {
  cfg_elem *elem = add_bundle("north");
  const bundle_list list = read();
  for (const int32_t index : {1, -1, INT32_MAX, INT32_MIN}) EXPECT_EQ(nullptr, at(list, index)) << index;
  ASSERT_TRUE(cfg_delete_element(store, elem));
  EXPECT_EQ(1, cfg_bundle_list_count(list.get()));
  EXPECT_EQ(nullptr, at(list, 0));
}

TEST_F(BundleList, IsEmptyWithoutBundles) {
  const bundle_list list = read();
  ASSERT_NE(nullptr, list);
  EXPECT_EQ(0, cfg_bundle_list_count(list.get()));
  EXPECT_EQ(nullptr, at(list, 0));
  EXPECT_EQ(0, cfg_bundle_list_count(nullptr));
  EXPECT_EQ(nullptr, cfg_bundle_list_get_bundle(nullptr, 0));
  cfg_bundle_list_free(nullptr);
}

}  // namespace
