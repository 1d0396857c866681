// Tag records.
#include "tag_fixture.hpp"

namespace {

using records::tag_record;

class Tag : public records::TagTest {
 protected:
  tag_record fresh(const char *name) { return tag_record(cfg_tag_new(store, name)); }
};

TEST_F(Tag, IsReadWithItsValues) {
  add_tag("Bundle", {"north", "south"});
  commit_and_reopen();
  const tag_record tag = load("tags_node_tags-1");
  ASSERT_NE(nullptr, tag);
  EXPECT_EQ(store, tag_get_config(tag.get()));
  EXPECT_STREQ("tags_node_tags-1", tag_get_uuid(tag.get()));
  EXPECT_STREQ("Bundle", tag_get_name(tag.get()));
  ASSERT_EQ(2, tag_get_num_values(tag.get()));
  EXPECT_STREQ("tags_node_tags-1_values-1", tag_get_value(tag.get(), 0));
  EXPECT_STREQ("tags_node_tags-1_values-2", tag_get_value(tag.get(), 1));
  char **all = tag_get_all_values(tag.get());
  EXPECT_EQ(tag_get_value(tag.get(), 0), all[0]);
  EXPECT_EQ(tag_get_value(tag.get(), 1), all[1]);
}

TEST_F(Tag, LoadsItsValues) {
  const tag_record tag = load(id_of(add_tag("Bundle", {"north", "south"})));
  const records::value_record value(cfg_tag_get_value(tag.get(), 1));
  ASSERT_NE(nullptr, value);
  EXPECT_STREQ("south", tag_value_get_value(value.get()));
  EXPECT_STREQ(tag_get_value(tag.get(), 1), tag_value_get_uuid(value.get()));
}

TEST_F(Tag, GivesNothingOutsideItsValues) {
  const tag_record tag = load(id_of(add_tag("Bundle", {"north"})));
  for (const int32_t index : {1, 2, -1, INT32_MAX, INT32_MIN}) {
    EXPECT_EQ(nullptr, tag_get_value(tag.get(), index)) << index;
    EXPECT_EQ(nullptr, cfg_tag_get_value(tag.get(), index)) << index;
  }
}

TEST_F(Tag, WithoutAListOfValuesHasNone) {
  const tag_record tag = load(id_of(add_tag("Bundle")));
  ASSERT_NE(nullptr, tag);
  EXPECT_EQ(0, tag_get_num_values(tag.get()));
  EXPECT_EQ(nullptr, tag_get_value(tag.get(), 0));
}

TEST_F(Tag, DoesNotCountValuesThatArePending) {
  cfg_elem *elem = add_tag("Bundle", {"north"});
  const tag_record tag = load(id_of(elem));
  const records::value_record value(cfg_tag_value_new(store, "south"));
  ASSERT_EQ(1, cfg_tag_value_save(tag.get(), value.get()));
  EXPECT_EQ(1, tag_get_num_values(load(id_of(elem)).get()));
  commit();
  EXPECT_EQ(2, tag_get_num_values(load(id_of(elem)).get()));
  EXPECT_EQ(1, tag_get_num_values(tag.get()));
}

TEST_F(Tag, CannotBeLoadedWithoutAName) {
  cfg_elem *elem = entry_of("tags.node_tags");
  EXPECT_EQ(nullptr, load(id_of(elem)));
  set(elem, "name", 7);
  EXPECT_EQ(nullptr, load(id_of(elem)));
  set(elem, "name", "seven");
  EXPECT_NE(nullptr, load(id_of(elem)));
}

TEST_F(Tag, CannotBeLoadedFromWhatIsNoTag) {
  add_tag("Bundle");
  EXPECT_EQ(nullptr, load("tags_node_tags-2"));
  EXPECT_EQ(nullptr, load("tags.node_tags"));
  EXPECT_EQ(nullptr, cfg_get_tag_by_id(store, nullptr));
  EXPECT_EQ(nullptr, cfg_get_tag_by_id(nullptr, "tags_node_tags-1"));
}

TEST_F(Tag, IsFoundByItsExactName) {
  add_tag("bundle");
  add_tag("Bundle");
  add_tag("Bundle");
  commit();
  EXPECT_STREQ("tags_node_tags-2", tag_get_uuid(find("Bundle").get()));
  EXPECT_STREQ("tags_node_tags-1", tag_get_uuid(find("bundle").get()));
  for (const char *name : {"BUNDLE", "Bundl", "Bundles", ""}) EXPECT_EQ(nullptr, find(name)) << name;
}

TEST_F(Tag, IsFoundByNameOnlyWhenItIsCommitted) {
  list_at("tags.node_tags");
  add_pending_tag("Bundle");
  EXPECT_EQ(nullptr, find("Bundle"));
  commit();
  EXPECT_NE(nullptr, find("Bundle"));
}

TEST_F(Tag, ThatCannotBeLoadedEndsTheSearch) {
  add_tag("before");
  entry_of("tags.node_tags");
  add_tag("behind");
  EXPECT_NE(nullptr, find("before"));
  EXPECT_EQ(nullptr, find("behind"));
}

TEST_F(Tag, IsFoundByNameInTheListOfItsKindOnly) {
  EXPECT_EQ(nullptr, find("Bundle"));
  add_tag("Bundle");
  EXPECT_EQ(nullptr, cfg_get_tag_by_name(store, "Bundle", 1));
  EXPECT_EQ(nullptr, cfg_get_tag_by_name(store, nullptr, CFG_TAG_NODE));
  EXPECT_EQ(nullptr, cfg_get_tag_by_name(nullptr, "Bundle", CFG_TAG_NODE));
}

TEST_F(Tag, IsNewWithANameAndNothingElse) {
  const tag_record tag = fresh("Location");
  ASSERT_NE(nullptr, tag);
  EXPECT_EQ(store, tag_get_config(tag.get()));
  EXPECT_EQ(nullptr, tag_get_uuid(tag.get()));
  EXPECT_STREQ("Location", tag_get_name(tag.get()));
  EXPECT_EQ(0, tag_get_num_values(tag.get()));
  EXPECT_EQ(nullptr, tag_get_all_values(tag.get()));
}

TEST_F(Tag, IsNotMadeWithoutHandleOrName) {
  EXPECT_EQ(nullptr, cfg_tag_new(nullptr, "Location"));
  EXPECT_EQ(nullptr, cfg_tag_new(store, nullptr));
}

TEST_F(Tag, ThatIsNewIsSavedAsAPendingEntryOfItsKind) {
  list_at("tags.node_tags");
  const tag_record tag = fresh("Location");
  EXPECT_EQ(1, cfg_tag_save(tag.get(), CFG_TAG_NODE));
  ASSERT_NE(nullptr, tag_get_uuid(tag.get()));
  EXPECT_EQ('{', tag_get_uuid(tag.get())[0]);
  EXPECT_EQ(R"([+{name="Location"}])", dump("tags.node_tags"));
  commit();
  EXPECT_EQ(R"([{name="Location"}])", dump("tags.node_tags"));
  EXPECT_STREQ("tags_node_tags-1", tag_get_uuid(load(tag_get_uuid(tag.get())).get()));
}

TEST_F(Tag, IsSavedTwiceIntoOneElement) {
  list_at("tags.node_tags");
  const tag_record tag = fresh("Location");
  ASSERT_EQ(1, cfg_tag_save(tag.get(), CFG_TAG_NODE));
  ASSERT_EQ(1, tag_set_name(tag.get(), "Site"));
  EXPECT_EQ(1, cfg_tag_save(tag.get(), CFG_TAG_NODE));
  commit();
  ASSERT_EQ(1, tag_set_name(tag.get(), "Place"));
  EXPECT_EQ(1, cfg_tag_save(tag.get(), CFG_TAG_NODE));
  EXPECT_EQ(R"([{name="Place"}])", dump("tags.node_tags"));
}

TEST_F(Tag, WithAnElementIsSavedWhateverTheKind) {
  const tag_record tag = load(id_of(add_tag("Bundle", {"north"})));
  ASSERT_EQ(1, tag_set_name(tag.get(), "Site"));
  EXPECT_EQ(1, cfg_tag_save(tag.get(), 1));
  EXPECT_EQ(R"([{name="Site" values=[{value="north"}]}])", dump("tags.node_tags"));
}

TEST_F(Tag, SavingWritesItsNameOnly) {
  const tag_record tag = load(id_of(add_tag("Bundle", {"north"})));
  commit();
  ASSERT_EQ(1, tag_set_name(tag.get(), "Site"));
  EXPECT_EQ(1, cfg_tag_save(tag.get(), CFG_TAG_NODE));
  EXPECT_EQ(std::vector<std::string>{"= tags_node_tags-1.name"}, changes());
}

TEST_F(Tag, ThatIsNewNeedsTheListOfItsKind) {
  const tag_record tag = fresh("Location");
  EXPECT_EQ(0, cfg_tag_save(tag.get(), CFG_TAG_NODE));
  list_at("tags.node_tags");
  EXPECT_EQ(0, cfg_tag_save(tag.get(), 1));
  EXPECT_EQ(nullptr, tag_get_uuid(tag.get()));
  EXPECT_EQ("[]", dump("tags.node_tags"));
}

TEST_F(Tag, IsNotSavedWithoutARecordANameOrAnElement) {
  EXPECT_EQ(0, cfg_tag_save(nullptr, CFG_TAG_NODE));
  cfg_elem *elem = add_tag("Bundle");
  const tag_record tag = load(id_of(elem));
  EXPECT_EQ(1, tag_set_name(tag.get(), ""));
  EXPECT_EQ(0, cfg_tag_save(tag.get(), CFG_TAG_NODE));
  EXPECT_EQ(R"([{name="Bundle"}])", dump("tags.node_tags"));
  EXPECT_EQ(1, tag_set_name(tag.get(), "Site"));
  ASSERT_TRUE(cfg_delete_element(store, elem));
  EXPECT_EQ(0, cfg_tag_save(tag.get(), CFG_TAG_NODE));
}

TEST_F(Tag, IsNotSavedWhenTheStoreDoesNotTakeItsName) {
  const tag_record tag = load(id_of(add_tag("Bundle")));
  ASSERT_EQ(1, tag_set_name(tag.get(), records::unwritable().c_str()));
  EXPECT_EQ(0, cfg_tag_save(tag.get(), CFG_TAG_NODE));
}

TEST_F(Tag, IsRenamed) {
  const tag_record tag = fresh("Location");
  EXPECT_EQ(1, tag_set_name(tag.get(), "Site"));
  EXPECT_STREQ("Site", tag_get_name(tag.get()));
  EXPECT_EQ(1, tag_set_name(tag.get(), tag_get_name(tag.get())));
  EXPECT_STREQ("Site", tag_get_name(tag.get()));
  EXPECT_EQ(1, tag_set_name(tag.get(), nullptr));
  EXPECT_EQ(nullptr, tag_get_name(tag.get()));
}

TEST_F(Tag, IsDeletedWithItsValues) {
  const tag_record tag = load(id_of(add_tag("Bundle", {"north"})));
  const std::string value = tag_get_value(tag.get(), 0);
  EXPECT_EQ(1, cfg_tag_delete(store, tag.get()));
  EXPECT_EQ("[]", dump("tags.node_tags"));
  EXPECT_EQ(nullptr, load_value(value));
  EXPECT_STREQ("Bundle", tag_get_name(tag.get()));
  EXPECT_EQ(0, cfg_tag_delete(store, tag.get()));
}

TEST_F(Tag, IsNotDeletedWithoutAnElement) {
  EXPECT_EQ(0, cfg_tag_delete(store, fresh("Location").get()));
  EXPECT_EQ(0, cfg_tag_delete(store, nullptr));
  EXPECT_EQ(0, cfg_tag_delete(nullptr, load(id_of(add_tag("Bundle"))).get()));
}

TEST_F(Tag, FreeingItLeavesTheArrayOfValuesToTheCaller) {
  cfg_tag *tag = load(id_of(add_tag("Bundle", {"north"}))).release();
  const std::unique_ptr<char *, records::free_heap> array(tag_get_all_values(tag));
  ASSERT_NE(nullptr, array);
  cfg_tag_free(tag);
}

TEST_F(Tag, NullGivesNothing) {
  EXPECT_EQ(nullptr, tag_get_config(nullptr));
  EXPECT_EQ(nullptr, tag_get_uuid(nullptr));
  EXPECT_EQ(nullptr, tag_get_name(nullptr));
  EXPECT_EQ(0, tag_set_name(nullptr, "x"));
  EXPECT_EQ(0, tag_get_num_values(nullptr));
  EXPECT_EQ(nullptr, tag_get_all_values(nullptr));
  EXPECT_EQ(nullptr, tag_get_value(nullptr, 0));
  EXPECT_EQ(nullptr, cfg_tag_get_value(nullptr, 0));
  cfg_tag_free(nullptr);
}

}  // namespace
