// Kinds of tag, and the list of all tags of a kind.
#include "tag_fixture.hpp"

namespace {

class TagList : public records::TagTest {
 protected:
  records::tag_list read(int32_t type = CFG_TAG_NODE) {
    return records::tag_list(cfg_get_tag_list(store, type));
  }
};

TEST(TagKind, NodeTagsAreKindZeroAndTheOnlyKindWithAPath) {
  EXPECT_EQ(0, CFG_TAG_NODE);
  EXPECT_STREQ("tags.node_tags", cfg_tag_type_to_path(0));
  for (const int32_t type : {1, 2, -1, INT32_MAX, INT32_MIN})
    EXPECT_EQ(nullptr, cfg_tag_type_to_path(type)) << type;
}

TEST(TagKind, APathIsComparedWithoutRegardToCase) {
  EXPECT_EQ(0, cfg_path_to_tag_type("tags.node_tags"));
  EXPECT_EQ(0, cfg_path_to_tag_type("TAGS.NODE_TAGS"));
  EXPECT_EQ(0, cfg_path_to_tag_type("Tags.Node_tags"));
}

TEST(TagKind, AnyOtherPathIsKindOne) {
  for (const char *path : {"", "tags", "tags.node_tag", "tags.node_tagss", " tags.node_tags"})
    EXPECT_EQ(1, cfg_path_to_tag_type(path)) << path;
  EXPECT_EQ(1, cfg_path_to_tag_type(nullptr));
}

TEST_F(TagList, HoldsTheIdsOfTheCommittedTagsInOrder) {
  add_tag("Bundle", {"north"});
  add_tag("Location");
  commit_and_reopen();
  add_pending_tag("Pending");
  const records::tag_list list = read();
  ASSERT_NE(nullptr, list);
  EXPECT_EQ(store, tag_list_get_config(list.get()));
  EXPECT_STREQ("tags.node_tags", tag_list_get_uuid(list.get()));
  ASSERT_EQ(2, tag_list_get_num_tags(list.get()));
  EXPECT_STREQ("tags_node_tags-1", tag_list_get_tag(list.get(), 0));
  EXPECT_STREQ("tags_node_tags-2", tag_list_get_tag(list.get(), 1));
  char **all = tag_list_get_all_tags(list.get());
  EXPECT_EQ(tag_list_get_tag(list.get(), 0), all[0]);
  EXPECT_EQ(tag_list_get_tag(list.get(), 1), all[1]);
}

TEST_F(TagList, SeesAPendingTagAfterTheCommit) {
  list_at("tags.node_tags");
  add_pending_tag("Pending");
  EXPECT_EQ(0, tag_list_get_num_tags(read().get()));
  commit();
  EXPECT_EQ(1, tag_list_get_num_tags(read().get()));
}

TEST_F(TagList, LoadsItsTags) {
  add_tag("Bundle", {"north"});
  const records::tag_list list = read();
  const records::tag_record tag(cfg_tag_list_get_tag(list.get(), 0));
  ASSERT_NE(nullptr, tag);
  EXPECT_STREQ("Bundle", tag_get_name(tag.get()));
  EXPECT_EQ(1, tag_get_num_values(tag.get()));
}

TEST_F(TagList, GivesNothingOutsideItself) {
  add_tag("Bundle");
  const records::tag_list list = read();
  for (const int32_t index : {1, 2, -1, INT32_MAX, INT32_MIN}) {
    EXPECT_EQ(nullptr, tag_list_get_tag(list.get(), index)) << index;
    EXPECT_EQ(nullptr, cfg_tag_list_get_tag(list.get(), index)) << index;
  }
}

TEST_F(TagList, ATagThatIsGoneOrNamelessIsListedButNotLoaded) {
  cfg_elem *gone = add_tag("gone");
  entry_of("tags.node_tags");
  const records::tag_list list = read();
  ASSERT_TRUE(cfg_delete_element(store, gone));
  EXPECT_EQ(2, tag_list_get_num_tags(list.get()));
  EXPECT_EQ(nullptr, cfg_tag_list_get_tag(list.get(), 0));
  EXPECT_EQ(nullptr, cfg_tag_list_get_tag(list.get(), 1));
}

TEST_F(TagList, IsThereWhenItIsEmpty) {
  list_at("tags.node_tags");
  const records::tag_list list = read();
  ASSERT_NE(nullptr, list);
  EXPECT_EQ(0, tag_list_get_num_tags(list.get()));
  EXPECT_EQ(nullptr, tag_list_get_tag(list.get(), 0));
}

TEST_F(TagList, NeedsAKindAndTheStoresList) {
  EXPECT_EQ(nullptr, read());
  add_tag("Bundle");
  EXPECT_EQ(nullptr, read(1));
  EXPECT_EQ(nullptr, read(-1));
  EXPECT_EQ(nullptr, cfg_get_tag_list(nullptr, CFG_TAG_NODE));
}

TEST_F(TagList, FreeingItLeavesTheArrayAndItsOwnIdToTheCaller) {
  add_tag("Bundle");
  commit();
  cfg_tag_list *list = cfg_get_tag_list(store, CFG_TAG_NODE);
  const records::heap_text uuid(const_cast<char *>(tag_list_get_uuid(list)));
  const std::unique_ptr<char *, records::free_heap> array(tag_list_get_all_tags(list));
  cfg_tag_list_free(list);
  EXPECT_STREQ("tags.node_tags", uuid.get());
}

TEST_F(TagList, NullGivesNothing) {
  EXPECT_EQ(nullptr, tag_list_get_config(nullptr));
  EXPECT_EQ(nullptr, tag_list_get_uuid(nullptr));
  EXPECT_EQ(0, tag_list_get_num_tags(nullptr));
  EXPECT_EQ(nullptr, tag_list_get_all_tags(nullptr));
  EXPECT_EQ(nullptr, tag_list_get_tag(nullptr, 0));
  EXPECT_EQ(nullptr, cfg_tag_list_get_tag(nullptr, 0));
  cfg_tag_list_free(nullptr);
}

}  // namespace
