#include "record/view.hpp"

#include "kit/fixture.hpp"

namespace {

class View : public kit::StoreTest {
 protected:
  tw::object_view new_view() {
    tw::object_view view;
    view.cfg = store.get();
    return view;
  }
};

TEST_F(View, ALoaderBeginsWithARecordThatHasItsHandleAndTheElementsId) {
  cfg_elem *elem = map_at("thing");
  const auto view = tw::new_view<tw::object_view>(store.get(), elem);
  ASSERT_NE(nullptr, view);
  EXPECT_EQ(store.get(), view->cfg);
  EXPECT_EQ(elem, tw::element_of(*view));
  EXPECT_EQ(nullptr, tw::new_view<tw::object_view>(store.get(), nullptr));
  ASSERT_TRUE(cfg_delete_element(store.get(), elem));
  EXPECT_EQ(nullptr, tw::new_view<tw::object_view>(store.get(), elem));
}

TEST_F(View, ARecordMadeInMemoryHasNoId) {
  EXPECT_FALSE(tw::new_view<tw::object_view>(store.get())->uuid);
  EXPECT_EQ(nullptr, tw::new_view<tw::object_view>(nullptr)->cfg);
}

TEST_F(View, ANewElementJoinsItsListAsAPendingEntry) {
  cfg_elem *list = list_at("things");
  tw::object_view view = new_view();
  cfg_elem *elem = tw::append_new_element(view, "things");
  ASSERT_NE(nullptr, elem);
  ASSERT_TRUE(view.uuid);
  EXPECT_EQ('{', view.uuid.c_str()[0]);
  EXPECT_EQ(elem, tw::element_of(view));
  int32_t size = -1;
  ASSERT_TRUE(cfg_list_size(list, &size));
  EXPECT_EQ(0, size);
  ASSERT_TRUE(cfg_list_future_size(list, &size));
  EXPECT_EQ(1, size);
}

TEST_F(View, WithoutItsListANewElementIsNotMade) {
  tw::object_view view = new_view();
  EXPECT_EQ(nullptr, tw::append_new_element(view, "things"));
  EXPECT_FALSE(view.uuid);
  ASSERT_TRUE(cfg_map_set_int(store.get(), root, "things", 1));
  EXPECT_EQ(nullptr, tw::append_new_element(view, "things"));
  EXPECT_FALSE(view.uuid);
}

TEST_F(View, AnElementThatWasFilledBeforeJoinsItsListWithWhatItHolds) {
  cfg_elem *list = list_at("things");
  tw::object_view view = new_view();
  cfg_elem *elem = cfg_new_map(store.get());
  ASSERT_TRUE(cfg_map_set_int(store.get(), elem, "n", 1));
  EXPECT_EQ(nullptr, tw::append_element(view, nullptr, elem));
  EXPECT_EQ(nullptr, tw::append_element(view, list, nullptr));
  EXPECT_FALSE(view.uuid);
  ASSERT_EQ(elem, tw::append_element(view, list, elem));
  EXPECT_EQ(elem, cfg_get_future_listelem(list, 0));
  EXPECT_EQ(elem, tw::element_of(view));
}

TEST_F(View, TheElementToSaveIsMadeOnceAndFoundFromThenOn) {
  cfg_elem *list = list_at("things");
  tw::object_view view = new_view();
  cfg_elem *elem = tw::element_to_save(view, "things");
  ASSERT_NE(nullptr, elem);
  EXPECT_EQ(elem, tw::element_to_save(view, "things"));
  int32_t size = 0;
  ASSERT_TRUE(cfg_list_future_size(list, &size));
  EXPECT_EQ(1, size);
  ASSERT_TRUE(cfg_delete_element(store.get(), elem));
  EXPECT_EQ(nullptr, tw::element_to_save(view, "things")) << "one that is gone is not made anew";
}

TEST_F(View, TheRefreshedIdIsTheFinalOneAfterACommit) {
  list_at("things");
  tw::object_view view = new_view();
  ASSERT_NE(nullptr, tw::append_new_element(view, "things"));
  const std::string provisional = view.uuid.c_str();
  EXPECT_EQ(provisional, tw::refreshed_uuid(view));
  commit();
  EXPECT_STREQ("things-1", tw::refreshed_uuid(view));
  EXPECT_STREQ("things-1", view.uuid.c_str());
}

TEST_F(View, TheRefreshedIdOfAGoneElementIsTheOneItHad) {
  tw::object_view view = new_view();
  EXPECT_EQ(nullptr, tw::refreshed_uuid(view));
  ASSERT_TRUE(view.uuid.set("things-9"));
  EXPECT_STREQ("things-9", tw::refreshed_uuid(view));
}

TEST_F(View, NeedMapMakesOnceAndThenFinds) {
  cfg_elem *parent = map_at("p");
  cfg_elem *made = tw::need_map(store.get(), parent, "ssh");
  ASSERT_NE(nullptr, made);
  ASSERT_TRUE(cfg_map_set_int(store.get(), made, "port", 22));
  cfg_elem *found = tw::need_map(store.get(), parent, "ssh");
  int32_t port = 0;
  ASSERT_TRUE(cfg_map_get_int(store.get(), found, "port", &port));
  EXPECT_EQ(22, port);
}

TEST_F(View, NeedListMakesOnceAndThenFinds) {
  cfg_elem *made = tw::need_list(store.get(), root, "things");
  EXPECT_EQ(CFG_LIST, cfg_elem_kind(made));
  EXPECT_EQ(made, tw::need_list(store.get(), root, "things"));
  EXPECT_EQ(nullptr, tw::need_list(store.get(), nullptr, "things"));
}

TEST_F(View, CollectionCountTellsAMissingListFromAnUnreadableOne) {
  EXPECT_EQ(0, tw::collection_count(store.get(), "things"));
  ASSERT_TRUE(cfg_map_set_int(store.get(), root, "things", 1));
  EXPECT_EQ(-1, tw::collection_count(store.get(), "things"));
  list_at("things");
  EXPECT_EQ(0, tw::collection_count(store.get(), "things"));
}

TEST_F(View, CollectionEntriesAreTheCommittedOnes) {
  list_at("things");
  tw::object_view view = new_view();
  ASSERT_NE(nullptr, tw::append_new_element(view, "things"));
  EXPECT_EQ(nullptr, tw::collection_entry(store.get(), "things", 0));
  commit();
  EXPECT_NE(nullptr, tw::collection_entry(store.get(), "things", 0));
  EXPECT_EQ(nullptr, tw::collection_entry(store.get(), "things", 1));
  EXPECT_EQ(nullptr, tw::collection_entry(store.get(), "things", -1));
  EXPECT_EQ(nullptr, tw::collection_entry(store.get(), "nothing", 0));
}

}  // namespace
