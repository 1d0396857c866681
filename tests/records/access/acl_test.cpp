// Access-control lists.
#include "access_fixture.hpp"

namespace {

using records::owned;
using records::texts;

class Acl : public records::AccessTest {
 protected:
  cfg_elem *add_acl(const char *name) {
    cfg_elem *elem = entry_of("acls");
    set(elem, "aclname", name);
    return elem;
  }
  owned<cfg_acl> make(const char *name) {
    owned<cfg_acl> acl(cfg_acl_new(store, "not taken over"));
    EXPECT_EQ(1, cfg_acl_set_aclname(acl.get(), name));
    return acl;
  }
  owned<cfg_acl> load(const char *id) { return owned<cfg_acl>(cfg_acl_get_by_id(store, id)); }
};

TEST_F(Acl, ANewOneDoesNotTakeOverTheNameThatItMustBeGiven) {
  const owned<cfg_acl> acl(cfg_acl_new(store, "a"));
  ASSERT_NE(nullptr, acl);
  EXPECT_EQ(nullptr, cfg_acl_get_aclname(acl.get()));
  EXPECT_EQ(nullptr, cfg_acl_get_uuid(acl.get()));
  EXPECT_EQ(nullptr, cfg_acl_new(store, nullptr));
}

TEST_F(Acl, SavingANewOneMakesAPendingEntryThatGetsItsFinalIdAtTheCommit) {
  list_at("acls");
  const auto acl = make("a");
  ASSERT_EQ(1, cfg_acl_save(acl.get()));
  EXPECT_EQ("[+{aclname=\"a\"}]", dump("acls"));
  EXPECT_EQ('{', cfg_acl_get_uuid(acl.get())[0]);
  commit();
  EXPECT_STREQ("acls-1", cfg_acl_get_uuid(acl.get()));
  EXPECT_EQ("[{aclname=\"a\"}]", dump("acls"));
}

TEST_F(Acl, WithoutTheListOrANameANewOneCannotBeSaved) {
  const auto acl = make("a");
  EXPECT_EQ(0, cfg_acl_save(acl.get()));
  EXPECT_EQ(nullptr, cfg_acl_get_uuid(acl.get()));
  list_at("acls");
  EXPECT_EQ(0, cfg_acl_save(owned<cfg_acl>(cfg_acl_new(store, "a")).get()));
  EXPECT_EQ("[]", dump("acls"));
}

TEST_F(Acl, SavingAnExistingOneWritesItsName) {
  set(add_acl("old"), "other", "kept");
  commit_and_reopen();
  const auto acl = load("acls-1");
  EXPECT_STREQ("old", cfg_acl_get_aclname(acl.get()));
  EXPECT_EQ(1, cfg_acl_set_aclname(acl.get(), "new"));
  ASSERT_EQ(1, cfg_acl_save(acl.get()));
  EXPECT_EQ((texts{"= acls-1.aclname"}), changes());
  EXPECT_EQ("[{aclname=\"new\" other=\"kept\"}]", dump("acls"));
  ASSERT_EQ(1, cfg_acl_set_aclname(acl.get(), records::unwritable().c_str()));
  EXPECT_EQ(0, cfg_acl_save(acl.get()));
}

TEST_F(Acl, OneWhoseElementIsGoneCannotBeSaved) {
  cfg_elem *elem = add_acl("a");
  const auto acl = load(id_of(elem).c_str());
  ASSERT_TRUE(cfg_delete_element(store, elem));
  EXPECT_EQ(0, cfg_acl_save(acl.get()));
}

TEST_F(Acl, AnElementWithoutNameCannotBeLoaded) {
  cfg_elem *elem = add_acl("a");
  const std::string id = id_of(elem);
  set(elem, "aclname", 1);
  EXPECT_EQ(nullptr, load(id.c_str()));
  erase(elem, "aclname");
  EXPECT_EQ(nullptr, load(id.c_str()));
  EXPECT_EQ(nullptr, load("acls-99"));
  EXPECT_EQ(nullptr, load(nullptr));
}

TEST_F(Acl, DeletingRemovesTheElementAndLeavesTheRecord) {
  add_acl("a");
  commit_and_reopen();
  const auto acl = load("acls-1");
  cfg_acl_delete(acl.get());
  EXPECT_EQ("[]", dump("acls"));
  EXPECT_STREQ("a", cfg_acl_get_aclname(acl.get()));
  cfg_acl_delete(acl.get());
  cfg_acl_delete(make("b").get());
  cfg_acl_delete(nullptr);
}

TEST_F(Acl, TheNameIsSetToNullByNullAndByTheEmptyText) {
  const auto acl = make("a");
  EXPECT_EQ(1, cfg_acl_set_aclname(acl.get(), cfg_acl_get_aclname(acl.get())));
  EXPECT_STREQ("a", cfg_acl_get_aclname(acl.get()));
  EXPECT_EQ(1, cfg_acl_set_aclname(acl.get(), ""));
  EXPECT_EQ(nullptr, cfg_acl_get_aclname(acl.get()));
  EXPECT_EQ(1, cfg_acl_set_aclname(acl.get(), nullptr));
}

TEST_F(Acl, NullGivesNothing) {
  EXPECT_EQ(0, cfg_acl_set_aclname(nullptr, "a"));
  EXPECT_EQ(nullptr, cfg_acl_get_aclname(nullptr));
  EXPECT_EQ(nullptr, cfg_acl_get_uuid(nullptr));
  cfg_acl_free(nullptr);
}

}  // namespace
