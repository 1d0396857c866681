// The values of tags.
#include "tag_fixture.hpp"

namespace {

using records::tag_record;
using records::value_record;

class TagValue : public records::TagTest {
 protected:
  value_record fresh(const char *text) { return value_record(cfg_tag_value_new(store, text)); }
  value_record first_of(const tag_record &tag) { return value_record(cfg_tag_get_value(tag.get(), 0)); }
  value_record find(const tag_record &tag, const char *text) {
    return value_record(cfg_get_tag_value_by_name(store, tag.get(), text));
  }
};

TEST_F(TagValue, IsReadFromItsElement) {
  add_tag("Bundle", {"north"});
  commit_and_reopen();
  const value_record value = load_value("tags_node_tags-1_values-1");
  ASSERT_NE(nullptr, value);
  EXPECT_EQ(store, tag_value_get_config(value.get()));
  EXPECT_STREQ("tags_node_tags-1_values-1", tag_value_get_uuid(value.get()));
  EXPECT_STREQ("north", tag_value_get_value(value.get()));
}

TEST_F(TagValue, CannotBeLoadedWithoutAText) {
  cfg_elem *elem = entry_of("values");
  EXPECT_EQ(nullptr, load_value(id_of(elem)));
  set(elem, "value", 7);
  EXPECT_EQ(nullptr, load_value(id_of(elem)));
  set(elem, "value", "seven");
  EXPECT_NE(nullptr, load_value(id_of(elem)));
}

TEST_F(TagValue, CannotBeLoadedFromWhatIsNoValue) {
  add_tag("Bundle", {"north"});
  EXPECT_EQ(nullptr, load_value("tags_node_tags-1_values-2"));
  EXPECT_EQ(nullptr, load_value("tags.node_tags"));
  EXPECT_EQ(nullptr, cfg_get_tag_value_by_id(store, nullptr));
  EXPECT_EQ(nullptr, cfg_get_tag_value_by_id(nullptr, "tags_node_tags-1_values-1"));
}

TEST_F(TagValue, IsFoundByItsExactText) {
  const tag_record tag = load(id_of(add_tag("Bundle", {"North", "north", "north"})));
  EXPECT_STREQ(tag_get_value(tag.get(), 1), tag_value_get_uuid(find(tag, "north").get()));
  EXPECT_STREQ(tag_get_value(tag.get(), 0), tag_value_get_uuid(find(tag, "North").get()));
  for (const char *text : {"NORTH", "nort", "norths", ""}) EXPECT_EQ(nullptr, find(tag, text)) << text;
}

TEST_F(TagValue, IsFoundAmongTheValuesOfItsTagOnly) {
  add_tag("Location", {"south"});
  EXPECT_EQ(nullptr, find(load(id_of(add_tag("Bundle", {"north"}))), "south"));
  EXPECT_EQ(nullptr, find(load(id_of(add_tag("Empty"))), "south"));
}

TEST_F(TagValue, ThatCannotBeLoadedEndsTheSearch) {
  cfg_elem *elem = add_tag("Bundle", {"first", "second", "third"});
  add(cfg_simple_get_mapelem(store, elem, "values"), "no map");
  add_value(elem, "fifth");
  const tag_record tag = load(id_of(elem));
  EXPECT_NE(nullptr, find(tag, "third"));
  EXPECT_EQ(nullptr, find(tag, "fifth"));
  erase(cfg_get_by_id(store, tag_get_value(tag.get(), 1)), "value");
  EXPECT_NE(nullptr, find(tag, "first"));
  EXPECT_EQ(nullptr, find(tag, "third"));
}

TEST_F(TagValue, IsFoundAmongTheCommittedOnesOfTheStoreNotOfTheRecord) {
  list_at("tags.node_tags");
  const tag_record tag(cfg_tag_new(store, "Bundle"));
  EXPECT_EQ(nullptr, find(tag, "north")) << "the tag has no element";
  ASSERT_EQ(1, cfg_tag_save(tag.get(), CFG_TAG_NODE));
  ASSERT_EQ(1, cfg_tag_value_save(tag.get(), fresh("north").get()));
  EXPECT_EQ(nullptr, find(tag, "north")) << "a pending value";
  commit();
  EXPECT_STREQ("tags_node_tags-1_values-1", tag_value_get_uuid(find(tag, "north").get()));
  ASSERT_EQ(1, cfg_tag_value_delete(store, find(tag, "north").get()));
  EXPECT_EQ(nullptr, find(tag, "north"));
}

TEST_F(TagValue, IsNotFoundForNull) {
  const tag_record tag = load(id_of(add_tag("Bundle", {"north"})));
  EXPECT_EQ(nullptr, cfg_get_tag_value_by_name(store, nullptr, "north"));
  EXPECT_EQ(nullptr, cfg_get_tag_value_by_name(store, tag.get(), nullptr));
  EXPECT_EQ(nullptr, cfg_get_tag_value_by_name(nullptr, tag.get(), "north"));
}

TEST_F(TagValue, IsNewWithATextAndNothingElse) {
  const value_record value = fresh("north");
  ASSERT_NE(nullptr, value);
  EXPECT_EQ(store, tag_value_get_config(value.get()));
  EXPECT_EQ(nullptr, tag_value_get_uuid(value.get()));
  EXPECT_STREQ("north", tag_value_get_value(value.get()));
}

TEST_F(TagValue, IsNotMadeWithoutAText) { EXPECT_EQ(nullptr, cfg_tag_value_new(store, nullptr)); }

TEST_F(TagValue, MadeWithoutAHandleCannotBeSaved) {
  const value_record value(cfg_tag_value_new(nullptr, "north"));
  ASSERT_NE(nullptr, value);
  EXPECT_EQ(0, cfg_tag_value_save(load(id_of(add_tag("Bundle"))).get(), value.get()));
}

TEST_F(TagValue, TheFirstOfATagMakesTheListOfValues) {
  const tag_record tag = load(id_of(add_tag("Bundle")));
  const value_record value = fresh("north");
  EXPECT_EQ(1, cfg_tag_value_save(tag.get(), value.get()));
  ASSERT_NE(nullptr, tag_value_get_uuid(value.get()));
  EXPECT_EQ('{', tag_value_get_uuid(value.get())[0]);
  EXPECT_EQ(R"([{name="Bundle" values=[+{value="north"}]}])", dump("tags.node_tags"));
  commit();
  EXPECT_EQ(R"([{name="Bundle" values=[{value="north"}]}])", dump("tags.node_tags"));
  EXPECT_STREQ("tags_node_tags-1_values-1",
               tag_value_get_uuid(load_value(tag_value_get_uuid(value.get())).get()));
}

TEST_F(TagValue, OfATagThatIsItselfPendingIsSaved) {
  list_at("tags.node_tags");
  const tag_record tag(cfg_tag_new(store, "Bundle"));
  ASSERT_EQ(1, cfg_tag_save(tag.get(), CFG_TAG_NODE));
  EXPECT_EQ(1, cfg_tag_value_save(tag.get(), fresh("north").get()));
  EXPECT_EQ(1, cfg_tag_value_save(tag.get(), fresh("south").get()));
  commit_and_reopen();
  EXPECT_EQ(R"([{name="Bundle" values=[{value="north"} {value="south"}]}])", dump("tags.node_tags"));
}

TEST_F(TagValue, IsAppendedBehindTheOthers) {
  const tag_record tag = load(id_of(add_tag("Bundle", {"north"})));
  EXPECT_EQ(1, cfg_tag_value_save(tag.get(), fresh("south").get()));
  EXPECT_EQ(R"([{name="Bundle" values=[{value="north"} +{value="south"}]}])", dump("tags.node_tags"));
}

TEST_F(TagValue, ThatIsSavedAgainChangesItsText) {
  const tag_record tag = load(id_of(add_tag("Bundle", {"north"})));
  commit();
  const value_record value = first_of(tag);
  EXPECT_EQ(1, tag_value_set_value(value.get(), "south"));
  EXPECT_EQ(1, cfg_tag_value_save(tag.get(), value.get()));
  EXPECT_EQ(std::vector<std::string>{"= tags_node_tags-1_values-1.value"}, changes());
  EXPECT_EQ(R"([{name="Bundle" values=[{value="south"}]}])", dump("tags.node_tags"));
}

TEST_F(TagValue, IsNotSavedWithoutTagRecordOrText) {
  const tag_record tag = load(id_of(add_tag("Bundle")));
  EXPECT_EQ(0, cfg_tag_value_save(nullptr, fresh("north").get()));
  EXPECT_EQ(0, cfg_tag_value_save(tag.get(), nullptr));
  const value_record value = fresh("north");
  EXPECT_EQ(1, tag_value_set_value(value.get(), nullptr));
  EXPECT_EQ(0, cfg_tag_value_save(tag.get(), value.get()));
  EXPECT_EQ(R"([{name="Bundle"}])", dump("tags.node_tags"));
}

TEST_F(TagValue, IsNotSavedWithoutTheElementOfItsTagOrItsOwn) {
  const tag_record unsaved(cfg_tag_new(store, "Bundle"));
  EXPECT_EQ(0, cfg_tag_value_save(unsaved.get(), fresh("north").get()));
  const tag_record tag = load(id_of(add_tag("Bundle", {"north"})));
  const value_record value = first_of(tag);
  ASSERT_TRUE(cfg_delete_element(store, cfg_get_by_id(store, tag_value_get_uuid(value.get()))));
  EXPECT_EQ(0, cfg_tag_value_save(tag.get(), value.get()));
  ASSERT_EQ(1, cfg_tag_delete(store, tag.get()));
  EXPECT_EQ(0, cfg_tag_value_save(tag.get(), fresh("south").get()));
}

TEST_F(TagValue, IsNotSavedWhenTheStoreDoesNotTakeIt) {
  cfg_elem *elem = add_tag("Bundle");
  const tag_record tag = load(id_of(elem));
  EXPECT_EQ(0, cfg_tag_value_save(tag.get(), fresh(records::unwritable().c_str()).get()));
  set(elem, "values", "no list");
  EXPECT_EQ(0, cfg_tag_value_save(tag.get(), fresh("north").get()));
}

TEST_F(TagValue, KnowsItsTag) {
  add_tag("Location", {"south"});
  add_tag("Bundle", {"north", "east"});
  commit();
  const value_record value = load_value("tags_node_tags-2_values-2");
  const tag_record tag(cfg_tag_value_get_parent_tag(value.get()));
  ASSERT_NE(nullptr, tag);
  EXPECT_STREQ("tags_node_tags-2", tag_get_uuid(tag.get()));
  EXPECT_STREQ("Bundle", tag_get_name(tag.get()));
  EXPECT_EQ(2, tag_get_num_values(tag.get()));
}

TEST_F(TagValue, KnowsItsTagWhileItIsPending) {
  const tag_record tag = load(id_of(add_tag("Bundle")));
  const value_record value = fresh("north");
  ASSERT_EQ(1, cfg_tag_value_save(tag.get(), value.get()));
  EXPECT_STREQ("Bundle", tag_get_name(tag_record(cfg_tag_value_get_parent_tag(value.get())).get()));
}

TEST_F(TagValue, HasNoTagOutsideOfOne) {
  EXPECT_EQ(nullptr, cfg_tag_value_get_parent_tag(fresh("north").get()));
  cfg_elem *elem = entry_of("values");
  set(elem, "value", "north");
  EXPECT_EQ(nullptr, cfg_tag_value_get_parent_tag(load_value(id_of(elem)).get()));
  const tag_record tag = load(id_of(add_tag("Bundle", {"north"})));
  const value_record value = first_of(tag);
  cfg_tag_value_delete(store, value.get());
  EXPECT_EQ(nullptr, cfg_tag_value_get_parent_tag(value.get()));
  EXPECT_EQ(nullptr, cfg_tag_value_get_parent_tag(nullptr));
}

TEST_F(TagValue, TextIsReplaced) {
  const value_record value = fresh("north");
  EXPECT_EQ(1, tag_value_set_value(value.get(), "south"));
  EXPECT_STREQ("south", tag_value_get_value(value.get()));
  EXPECT_EQ(1, tag_value_set_value(value.get(), tag_value_get_value(value.get())));
  EXPECT_STREQ("south", tag_value_get_value(value.get()));
  EXPECT_EQ(1, tag_value_set_value(value.get(), ""));
  EXPECT_EQ(nullptr, tag_value_get_value(value.get()));
}

TEST_F(TagValue, IsDeleted) {
  const tag_record tag = load(id_of(add_tag("Bundle", {"north", "south"})));
  const value_record value = first_of(tag);
  EXPECT_EQ(1, cfg_tag_value_delete(store, value.get()));
  EXPECT_EQ(R"([{name="Bundle" values=[{value="south"}]}])", dump("tags.node_tags"));
  EXPECT_STREQ("north", tag_value_get_value(value.get()));
  EXPECT_EQ(0, cfg_tag_value_delete(store, value.get()));
}

TEST_F(TagValue, IsNotDeletedWithoutAnElement) {
  EXPECT_EQ(0, cfg_tag_value_delete(store, fresh("north").get()));
  EXPECT_EQ(0, cfg_tag_value_delete(store, nullptr));
}

TEST_F(TagValue, NullGivesNothing) {
  EXPECT_EQ(nullptr, tag_value_get_config(nullptr));
  EXPECT_EQ(nullptr, tag_value_get_uuid(nullptr));
  EXPECT_EQ(nullptr, tag_value_get_value(nullptr));
  EXPECT_EQ(0, tag_value_set_value(nullptr, "x"));
  cfg_tag_value_free(nullptr);
}

}  // namespace
