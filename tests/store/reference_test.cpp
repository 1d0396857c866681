// References: to what is there, to what is new, to what is gone.
#include "fixture.hpp"
#include "tree.hpp"

class ReferenceTest : public StoreTest {
 protected:
  void SetUp() override {
    StoreTest::SetUp();
    list = make_list(store, "certs");
    map = make_map(store, "map");
    ASSERT_TRUE(commits(store));
    list = cfg_get_by_path(store, "certs");
    map = cfg_get_by_path(store, "map");
  }
  void commit_and_reopen() {
    ASSERT_TRUE(commits(store));
    reopen();
    list = cfg_get_by_path(store, "certs");
    map = cfg_get_by_path(store, "map");
  }
  cfg_elem *list = nullptr, *map = nullptr;
};
STORE_TEST_ON_BOTH_ENGINES(ReferenceTest);

TEST_P(ReferenceTest, AReferenceToANewEntryNamesTheFinalIdAfterCommit) {
  cfg_elem *cert = append_named(store, list, "a");
  ASSERT_EQ(cfg_map_set_reference(store, map, "cert", text_of(cert)), 1);
  std::string before = reference_at(store, map, "cert");
  EXPECT_EQ(id_of(cfg_get_by_id(store, before.c_str())), id_of(cert));
  ASSERT_TRUE(commits(store));
  EXPECT_EQ(reference_at(store, map, "cert"), "certs-1");
  commit_and_reopen();
  EXPECT_EQ(reference_at(store, map, "cert"), "certs-1");
}

TEST_P(ReferenceTest, ReferencesInEveryPlaceAreRewritten) {
  cfg_elem *target = cfg_new_map(store);
  // In a new entry, in a list of references, in an element made from it, by set_reference, to itself.
  cfg_elem *holder = append_named(store, list, "holder");
  ASSERT_EQ(cfg_map_set_reference(store, holder, "target", text_of(target)), 1);
  ASSERT_EQ(cfg_map_set_reference(store, holder, "self", text_of(holder)), 1);
  cfg_elem *refs = cfg_new_list(store);
  ASSERT_EQ(cfg_add_mapelem(store, holder, "refs", refs), 1);
  ASSERT_EQ(cfg_append_future_listelem(store, refs, cfg_new_reference(store, text_of(target))), 1);
  ASSERT_EQ(cfg_append_future_listelem(store, refs, cfg_new_reference(store, text_of(holder))), 1);
  cfg_elem *late = cfg_new_reference(store, "nothing");
  ASSERT_EQ(cfg_set_reference(store, late, text_of(target)), 1);
  ASSERT_EQ(cfg_add_mapelem(store, map, "late", late), 1);
  ASSERT_EQ(cfg_map_set_string(store, target, "name", "target"), 1);
  ASSERT_EQ(cfg_append_future_listelem(store, list, target), 1);
  commit_and_reopen();
  holder = cfg_simple_get_listelem(store, list, 0);
  EXPECT_EQ(reference_at(store, holder, "target"), "certs-2");
  EXPECT_EQ(reference_at(store, holder, "self"), "certs-1");
  EXPECT_EQ(dump(store, cfg_get_by_id(store, "certs-1.refs")),
            "[certs-1_refs-1:r'certs-2',certs-1_refs-2:r'certs-1',]");
  EXPECT_EQ(reference_at(store, map, "late"), "certs-2");
}

TEST_P(ReferenceTest, AnOldProvisionalIdIsRewrittenInALaterEditToo) {
  cfg_elem *cert = append_named(store, list, "a");
  std::string before = id_of(cert);
  ASSERT_TRUE(commits(store));
  ASSERT_EQ(cfg_map_set_reference(store, map, "cert", before.c_str()), 1);
  ASSERT_EQ(cfg_map_set_reference(store, map, "by handle", text_of(cert)), 1);
  commit_and_reopen();
  EXPECT_EQ(reference_at(store, map, "cert"), "certs-1");
  EXPECT_EQ(reference_at(store, map, "by handle"), "certs-1");
}

TEST_P(ReferenceTest, AReferenceToANewMapBelowAMapNamesItsPlace) {
  cfg_elem *fresh = cfg_new_map(store);
  ASSERT_EQ(cfg_map_set_reference(store, map, "to", text_of(fresh)), 1);
  ASSERT_EQ(cfg_add_mapelem(store, map, "fresh", fresh), 1);
  commit_and_reopen();
  EXPECT_EQ(reference_at(store, map, "to"), "map.fresh");
}

TEST_P(ReferenceTest, AStringThatLooksLikeAProvisionalIdIsLeftAlone) {
  cfg_elem *cert = append_named(store, list, "a");
  std::string before = id_of(cert);
  ASSERT_EQ(cfg_map_set_string(store, map, "text", before.c_str()), 1);
  commit_and_reopen();
  EXPECT_EQ(string_at(store, map, "text"), before);
}

TEST_P(ReferenceTest, AReferenceMayNameWhatIsNotThere) {
  for (const char *id : {"certs-99", "nothing at all", "a.b.c"}) {
    ASSERT_EQ(cfg_map_set_reference(store, map, "r", id), 1);
    EXPECT_EQ(reference_at(store, map, "r"), id);
    commit_and_reopen();
    EXPECT_EQ(reference_at(store, map, "r"), id);
  }
}

TEST_P(ReferenceTest, DeletingTheTargetLeavesTheReference) {
  cfg_elem *cert = append_named(store, list, "a");
  ASSERT_EQ(cfg_map_set_reference(store, map, "cert", text_of(cert)), 1);
  commit_and_reopen();
  ASSERT_EQ(cfg_delete_element(store, cfg_get_by_id(store, "certs-1")), 1);
  commit_and_reopen();
  EXPECT_EQ(reference_at(store, map, "cert"), "certs-1");
  EXPECT_EQ(cfg_get_by_id(store, "certs-1"), nullptr);
}

TEST_P(ReferenceTest, AReferenceCanBeChanged) {
  ASSERT_EQ(cfg_map_set_reference(store, map, "r", "certs-1"), 1);
  commit_and_reopen();
  cfg_elem *reference = cfg_simple_get_mapelem(store, map, "r");
  EXPECT_EQ(cfg_set_reference(store, reference, "certs-2"), 1);
  EXPECT_EQ(cfg_set_reference(store, reference, nullptr), 0);
  EXPECT_EQ(reference_at(store, map, "r"), "certs-2");
  commit_and_reopen();
  EXPECT_EQ(reference_at(store, map, "r"), "certs-2");
}
