// The groups that a user record holds.
#include "access_fixture.hpp"

namespace {

using records::owned;
using records::texts;

class UserGroups : public records::AccessTest {
 protected:
  owned<cfg_user> in(std::initializer_list<const char *> groups) {
    owned<cfg_user> record = new_user("u");
    for (const char *group : groups) EXPECT_EQ(1, cfg_user_add_group(record.get(), group));
    return record;
  }
  static std::string next(const owned<cfg_user> &record) {
    const char *group = cfg_user_get_group(record.get());
    return group == nullptr ? "none" : group;
  }
};

TEST_F(UserGroups, AreShownOnceEachInTheOrderInWhichTheyCameAndThenAgain) {
  const auto record = in({"c", "a", "b"});
  ASSERT_EQ(3, cfg_user_get_groups_count(record.get()));
  for (const char *expected : {"c", "a", "b", "c", "a", "b", "c"}) EXPECT_EQ(expected, next(record));
}

TEST_F(UserGroups, OneThatIsThereAlreadyStaysWhereItIs) {
  const auto record = in({"a", "b", "a"});
  EXPECT_EQ((texts{"a", "b"}), groups_of(record.get()));
}

TEST_F(UserGroups, RemovingTakesTheExactIdOnly) {
  const auto record = in({"a", "b", "ab"});
  for (const char *other : {"A", "", "abc"}) cfg_user_remove_group(record.get(), other);
  EXPECT_EQ(3, cfg_user_get_groups_count(record.get()));
  cfg_user_remove_group(record.get(), "b");
  EXPECT_EQ((texts{"a", "ab"}), groups_of(record.get()));
}

TEST_F(UserGroups, TheLastOneCanBeRemovedAndOthersAdded) {
  const auto record = in({"a"});
  cfg_user_remove_group(record.get(), "a");
  EXPECT_EQ(0, cfg_user_get_groups_count(record.get()));
  EXPECT_EQ("none", next(record));
  EXPECT_EQ(1, cfg_user_add_group(record.get(), "b"));
  EXPECT_EQ("b", next(record));
}

TEST_F(UserGroups, CanAllBeRemovedAtOnce) {
  const auto record = in({"a", "b", "c"});
  EXPECT_EQ("a", next(record));
  cfg_user_free_groups(record.get());
  EXPECT_EQ(0, cfg_user_get_groups_count(record.get()));
  EXPECT_EQ("none", next(record));
  EXPECT_EQ(1, cfg_user_add_group(record.get(), "d"));
  EXPECT_EQ("d", next(record));
  cfg_user_free_groups(record.get());
  cfg_user_free_groups(record.get());
}

TEST_F(UserGroups, RemovingTheOneThatIsNextShowsThoseBehindItOnceEach) {
  const auto record = in({"a", "b", "c"});
  EXPECT_EQ("a", next(record));
  cfg_user_remove_group(record.get(), "b");
  EXPECT_EQ("c", next(record));
  EXPECT_EQ("a", next(record));
  cfg_user_remove_group(record.get(), "c");
  EXPECT_EQ("a", next(record));
}

TEST_F(UserGroups, OneThatIsAddedOnTheWayIsStillShown) {
  const auto record = in({"a", "b"});
  EXPECT_EQ("a", next(record));
  EXPECT_EQ(1, cfg_user_add_group(record.get(), "c"));
  EXPECT_EQ("b", next(record));
  EXPECT_EQ("c", next(record));
  EXPECT_EQ("a", next(record));
}

TEST_F(UserGroups, ManyKeepTheirOrder) {
  const auto record = new_user("u");
  texts expected;
  for (int i = 0; i < 2000; ++i) {
    expected.push_back("groups-" + std::to_string(i * 7919 % 2000));
    ASSERT_EQ(1, cfg_user_add_group(record.get(), expected.back().c_str()));
  }
  EXPECT_EQ(expected, groups_of(record.get()));
}

TEST_F(UserGroups, AreReadInListOrderWithoutRepetition) {
  add_references(add_user("u"), "groups", {"groups-3", "groups-1", "groups-3", "groups-2"});
  commit_and_reopen();
  EXPECT_EQ((texts{"groups-3", "groups-1", "groups-2"}), groups_of(user("users-1").get()));
}

TEST_F(UserGroups, EntriesThatAreNoReferencesArePassedOver) {
  cfg_elem *list = child_list(add_user("u"), "groups");
  add(list, "groups-1");
  add(list, cfg_new_map(store));
  add(list, cfg_new_reference(store, "groups-2"));
  commit_and_reopen();
  EXPECT_EQ((texts{"groups-2"}), groups_of(user("users-1").get()));
}

TEST_F(UserGroups, AreWrittenInTheirOrder) {
  list_at("users");
  const auto record = in({"groups-9", "groups-1", "groups-5"});
  ASSERT_EQ(1, cfg_user_save(record.get()));
  EXPECT_EQ("[+{enabled=true groups=[&groups-9 &groups-1 &groups-5] no_password=false username=\"u\"}]",
            dump("users"));
}

TEST_F(UserGroups, AGroupThatIsSavedInTheSameEditGetsItsFinalIdInTheReference) {
  list_at("users");
  list_at("groups");
  const auto group = new_group("g");
  ASSERT_EQ(1, cfg_group_save(group.get()));
  const auto record = in({cfg_group_get_uuid(group.get())});
  ASSERT_EQ(1, cfg_user_save(record.get()));
  commit_and_reopen();
  EXPECT_EQ((texts{"groups-1"}), groups_of(user("users-1").get()));
}

TEST_F(UserGroups, NullDoesNothing) {
  const auto record = in({"a"});
  EXPECT_EQ(0, cfg_user_add_group(record.get(), nullptr));
  cfg_user_remove_group(record.get(), nullptr);
  EXPECT_EQ(1, cfg_user_get_groups_count(record.get()));
  EXPECT_EQ(0, cfg_user_add_group(nullptr, "a"));
  cfg_user_remove_group(nullptr, "a");
  cfg_user_free_groups(nullptr);
  EXPECT_EQ(0, cfg_user_get_groups_count(nullptr));
  EXPECT_EQ(nullptr, cfg_user_get_group(nullptr));
}

}  // namespace
