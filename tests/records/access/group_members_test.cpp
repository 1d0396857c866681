// The members of groups.
#include "access_fixture.hpp"

namespace {

using records::owned;
using records::texts;

class GroupMembers : public records::AccessTest {
 protected:
  // Users u1, u2 ... and a group that lists them all.
  void seed(int users) {
    cfg_elem *list = child_list(add_group("g"), "members");
    list_at("users");
    for (int i = 1; i <= users; ++i)
      add(list, cfg_new_reference(store, id_of(add_user(("u" + std::to_string(i)).c_str())).c_str()));
    commit_and_reopen();
  }
  std::string stored(const char *id = "groups-1") {
    return dump(cfg_simple_get_mapelem(store, cfg_get_by_id(store, id), "members"));
  }
};

TEST_F(GroupMembers, AreHeldTheLastOfTheStoredListFirst) {
  seed(3);
  EXPECT_EQ((texts{"u3", "u2", "u1"}), members_of(group("groups-1").get()));
}

TEST_F(GroupMembers, TurnRoundWithEachReadAndSave) {
  seed(3);
  ASSERT_EQ(1, cfg_group_save(group("groups-1").get()));
  EXPECT_EQ("[&users-3 &users-2 &users-1]", stored());
  ASSERT_EQ(1, cfg_group_save(group("groups-1").get()));
  EXPECT_EQ("[&users-1 &users-2 &users-3]", stored());
  commit_and_reopen();
  EXPECT_EQ("[&users-1 &users-2 &users-3]", stored());
}

TEST_F(GroupMembers, ANewOneIsTheFirst) {
  seed(2);
  add_user("new");
  commit();
  const auto record = group("groups-1");
  ASSERT_EQ(1, cfg_group_add_member(record.get(), user("users-3").get()));
  EXPECT_EQ((texts{"new", "u2", "u1"}), members_of(record.get()));
  EXPECT_EQ("[&users-1 &users-2]", stored()) << "the group is not saved";
  ASSERT_EQ(1, cfg_group_save(record.get()));
  EXPECT_EQ("[&users-3 &users-2 &users-1]", stored());
}

TEST_F(GroupMembers, AddingOneDoesNotTouchTheUsersOwnGroups) {
  seed(0);
  add_user("u");
  commit();
  const auto record = user("users-1");
  ASSERT_EQ(1, cfg_group_add_member(group("groups-1").get(), record.get()));
  EXPECT_EQ(0, cfg_user_get_groups_count(record.get()));
  EXPECT_EQ("[{username=\"u\"}]", dump("users"));
}

TEST_F(GroupMembers, OneIsAddedOnceByWhateverRecord) {
  seed(2);
  const auto record = group("groups-1");
  EXPECT_EQ(1, cfg_group_add_member(record.get(), user("users-1").get()));
  EXPECT_EQ((texts{"u2", "u1"}), members_of(record.get()));
}

TEST_F(GroupMembers, ARecordThatIsGivenToAGroupCanBeFreedBeforeIt) {
  seed(1);
  add_user("v");
  commit();
  const auto record = group("groups-1");
  ASSERT_EQ(1, cfg_group_add_member(record.get(), user("users-2").get()));
  ASSERT_EQ(1, cfg_group_save(record.get()));
  EXPECT_EQ("[&users-2 &users-1]", stored());
}

TEST_F(GroupMembers, AUserWhoWasNeverSavedIsAddedEachTimeAndFailsTheSave) {
  seed(2);
  const auto unsaved = new_user("new");
  const auto record = group("groups-1");
  ASSERT_EQ(1, cfg_group_add_member(record.get(), unsaved.get()));
  ASSERT_EQ(1, cfg_group_add_member(record.get(), unsaved.get()));
  EXPECT_EQ((texts{"?", "?", "u2", "u1"}), members_of(record.get()));
  EXPECT_EQ(0, cfg_group_save(record.get()));
  EXPECT_EQ("[]", stored()) << "the list is emptied, and the first link cannot be written";
}

TEST_F(GroupMembers, LinksInFrontOfTheOneThatFailsAreWritten) {
  seed(2);
  const auto unsaved = new_user("new");
  const auto record = group("groups-1");
  ASSERT_EQ(1, cfg_group_add_member(record.get(), unsaved.get()));
  ASSERT_NE(nullptr, cfg_group_load_member(record.get(), user("users-1").get(), 1));
  EXPECT_EQ(0, cfg_group_save(record.get()));
  EXPECT_EQ("[&users-1]", stored());
}

TEST_F(GroupMembers, AUserWhoIsSavedLaterIsKnownByTheIdFromThenOn) {
  seed(1);
  const auto late = new_user("late");
  const auto record = group("groups-1");
  ASSERT_EQ(1, cfg_group_add_member(record.get(), late.get()));
  ASSERT_EQ(1, cfg_user_save(late.get()));
  EXPECT_EQ(1, cfg_group_add_member(record.get(), late.get())) << "a member already";
  ASSERT_EQ(1, cfg_group_save(record.get()));
  commit();
  EXPECT_EQ("[&users-2 &users-1]", stored());
  EXPECT_EQ((texts{"late", "u1"}), members_of(record.get()));
  EXPECT_EQ(1, cfg_group_delete_member(record.get(), user("users-2").get()));
  EXPECT_EQ((texts{"u1"}), members_of(record.get()));
}

TEST_F(GroupMembers, RemovingTakesEveryLinkToTheUser) {
  seed(3);
  const auto record = group("groups-1");
  const auto second = user("users-2");
  ASSERT_NE(nullptr, cfg_group_load_member(record.get(), second.get(), 0));
  EXPECT_EQ((texts{"u2", "u3", "u2", "u1"}), members_of(record.get()));
  EXPECT_EQ(1, cfg_group_delete_member(record.get(), second.get()));
  EXPECT_EQ((texts{"u3", "u1"}), members_of(record.get()));
  EXPECT_EQ(0, cfg_group_delete_member(record.get(), second.get()));
  EXPECT_STREQ("u2", cfg_user_get_username(second.get()));
  ASSERT_EQ(1, cfg_group_save(record.get()));
  EXPECT_EQ("[&users-3 &users-1]", stored());
}

TEST_F(GroupMembers, TheFirstTheLastAndAllOfThemCanBeRemoved) {
  seed(3);
  const auto record = group("groups-1");
  EXPECT_EQ(1, cfg_group_delete_member(record.get(), user("users-3").get()));
  EXPECT_EQ((texts{"u2", "u1"}), members_of(record.get()));
  EXPECT_EQ(1, cfg_group_delete_member(record.get(), user("users-1").get()));
  EXPECT_EQ((texts{"u2"}), members_of(record.get()));
  EXPECT_EQ(1, cfg_group_delete_member(record.get(), user("users-2").get()));
  EXPECT_EQ((texts{}), members_of(record.get()));
  ASSERT_EQ(1, cfg_group_save(record.get()));
  EXPECT_EQ("[]", stored());
}

TEST_F(GroupMembers, RemovingFromAGroupWithoutMembersAnswersZero) {
  seed(0);
  add_user("u");
  commit();
  EXPECT_EQ(0, cfg_group_delete_member(group("groups-1").get(), user("users-1").get()));
  EXPECT_EQ(0, cfg_group_delete_member(new_group("h").get(), user("users-1").get()));
}

TEST_F(GroupMembers, AUserWithoutIdIsNobodysMember) {
  seed(1);
  const auto record = group("groups-1");
  const auto unsaved = new_user("new");
  ASSERT_EQ(1, cfg_group_add_member(record.get(), unsaved.get()));
  EXPECT_EQ(0, cfg_group_delete_member(record.get(), unsaved.get()));
}

TEST_F(GroupMembers, AMemberWhoseUserIsGoneStaysOne) {
  seed(3);
  const auto gone = user("users-2");
  ASSERT_EQ(1, cfg_user_delete(gone.get()));
  commit_and_reopen();
  auto record = group("groups-1");
  EXPECT_EQ((texts{"u3", "?", "u1"}), members_of(record.get()));
  ASSERT_EQ(1, cfg_group_save(record.get()));
  EXPECT_EQ("[&users-3 &users-2 &users-1]", stored()) << "the reference is not lost";
}

TEST_F(GroupMembers, AMemberWhoseUserIsGoneCanBeRemovedByARecordFromBefore) {
  seed(2);
  const auto gone = user("users-2");
  ASSERT_EQ(1, cfg_user_delete(gone.get()));
  const auto record = group("groups-1");
  EXPECT_EQ(1, cfg_group_delete_member(record.get(), gone.get()));
  EXPECT_EQ((texts{"u1"}), members_of(record.get()));
}

TEST_F(GroupMembers, AMemberWhoCannotBeLoadedStaysOne) {
  seed(2);
  erase(cfg_get_by_id(store, "users-1"), "username");
  ASSERT_EQ(1, cfg_group_save(group("groups-1").get()));
  EXPECT_EQ("[&users-2 &users-1]", stored());
}

TEST_F(GroupMembers, EntriesThatAreNoReferencesArePassedOver) {
  cfg_elem *list = child_list(add_group("g"), "members");
  add(list, "users-1");
  add(list, cfg_new_map(store));
  add(list, cfg_new_reference(store, id_of(add_user("u")).c_str()));
  commit_and_reopen();
  EXPECT_EQ((texts{"u"}), members_of(group("groups-1").get()));
}

TEST_F(GroupMembers, TheLinkThatIsLoadedIsTheGroups) {
  seed(1);
  const auto record = group("groups-1");
  const auto member = user("users-1");
  const cfg_group_member *link = cfg_group_load_member(record.get(), member.get(), 0);
  EXPECT_NE(nullptr, link);
  EXPECT_NE(link, cfg_group_load_member(record.get(), member.get(), 1));
  EXPECT_EQ((texts{"u1", "u1", "u1"}), members_of(record.get()));
}

TEST_F(GroupMembers, TheListShowsWhatWasThereWhenItWasMade) {
  seed(2);
  const auto record = group("groups-1");
  const owned<cfg_group_member_list> list(cfg_group_member_list_new(record.get()));
  ASSERT_EQ(1, cfg_group_delete_member(record.get(), user("users-1").get()));
  EXPECT_EQ(2, cfg_group_get_member_count(list.get()));
  EXPECT_STREQ("users-1",
               cfg_user_get_uuid(owned<cfg_user>(cfg_group_member_list_get_user(list.get(), 1)).get()));
  for (const int32_t outside : {-1, 2, INT32_MIN, INT32_MAX})
    EXPECT_EQ(nullptr, cfg_group_member_list_get_user(list.get(), outside)) << outside;
}

TEST_F(GroupMembers, TwoThousandAreKept) {
  seed(2000);
  const auto record = group("groups-1");
  ASSERT_EQ(1, cfg_group_save(record.get()));
  commit_and_reopen();
  const texts names = members_of(group("groups-1").get());
  ASSERT_EQ(2000U, names.size());
  EXPECT_EQ("u1", names.front());
  EXPECT_EQ("u2000", names.back());
}

TEST_F(GroupMembers, NullGivesNothing) {
  seed(1);
  const auto record = group("groups-1");
  const auto member = user("users-1");
  EXPECT_EQ(0, cfg_group_add_member(nullptr, member.get()));
  EXPECT_EQ(0, cfg_group_add_member(record.get(), nullptr));
  EXPECT_EQ(0, cfg_group_delete_member(nullptr, member.get()));
  EXPECT_EQ(0, cfg_group_delete_member(record.get(), nullptr));
  EXPECT_EQ(nullptr, cfg_group_load_member(nullptr, member.get(), 0));
  EXPECT_EQ(nullptr, cfg_group_load_member(record.get(), nullptr, 0));
  EXPECT_EQ(nullptr, cfg_group_member_list_new(nullptr));
  EXPECT_EQ(0, cfg_group_get_member_count(nullptr));
  EXPECT_EQ(nullptr, cfg_group_member_list_get_user(nullptr, 0));
  cfg_group_member_list_free(nullptr);
  EXPECT_EQ((texts{"u1"}), members_of(record.get()));
}

// groups-1 is "operators", groups-2 "admin" with u1 in it; u2 is in neither.
class Administrators : public GroupMembers {
 protected:
  void SetUp() override {
    GroupMembers::SetUp();
    add_user("u1");
    add_user("u2");
    set_reference(child_map(add_group("operators"), "global_roles"), "ref",
                  id_of(add_role("FernhollowAdmin")));
    add_references(add_group("admin"), "members", {"users-1"});
    commit_and_reopen();
  }
};

TEST_F(Administrators, BecomeMembersOfAdminToo) {
  const auto record = group("groups-1");
  const auto member = user("users-2");
  ASSERT_EQ(1, cfg_group_add_member(record.get(), member.get()));
  EXPECT_EQ((texts{"u2"}), members_of(record.get()));
  EXPECT_EQ((texts{"groups-2"}), groups_of(member.get()));
  EXPECT_EQ("[&users-2 &users-1]", stored("groups-2")) << "saved";
  EXPECT_EQ((texts{"groups-2"}), groups_of(user("users-2").get())) << "saved";
  EXPECT_EQ("none", stored("groups-1")) << "not saved";
}

TEST_F(Administrators, SeveralInOneEditAllBecomeMembersOfAdmin) {
  add_user("u3");
  commit();
  const auto record = group("groups-1");
  ASSERT_EQ(1, cfg_group_add_member(record.get(), user("users-2").get()));
  ASSERT_EQ(1, cfg_group_add_member(record.get(), user("users-3").get()));
  commit_and_reopen();
  EXPECT_EQ("[&users-3 &users-1 &users-2]", stored("groups-2"));
}

TEST_F(Administrators, OneWhoIsInAdminAlreadyIsNotAddedTwice) {
  ASSERT_EQ(1, cfg_group_add_member(group("groups-1").get(), user("users-1").get()));
  EXPECT_EQ("[&users-1]", stored("groups-2"));
  EXPECT_EQ((texts{"groups-2"}), groups_of(user("users-1").get()));
}

TEST_F(Administrators, OneWhoIsAMemberAlreadyCausesNothing) {
  add_references(cfg_get_by_id(store, "groups-1"), "members", {"users-2"});
  commit();
  ASSERT_EQ(1, cfg_group_add_member(group("groups-1").get(), user("users-2").get()));
  EXPECT_EQ((texts{}), changes());
}

TEST_F(Administrators, OneWithoutElementGetsItAndAdminKeepsItsMembers) {
  const auto fresh = new_user("u3");
  ASSERT_EQ(1, cfg_group_add_member(group("groups-1").get(), fresh.get()));
  commit_and_reopen();
  EXPECT_EQ("[&users-3 &users-1]", stored("groups-2"));
  EXPECT_STREQ("u3", cfg_user_get_username(user("users-3").get()));
  EXPECT_EQ((texts{"groups-2"}), groups_of(user("users-3").get()));
}

TEST_F(Administrators, AdminItselfCausesNothing) {
  set_reference(child_map(cfg_get_by_id(store, "groups-2"), "global_roles"), "ref", "roles-1");
  commit();
  const auto member = user("users-2");
  ASSERT_EQ(1, cfg_group_add_member(group("groups-2").get(), member.get()));
  EXPECT_EQ((texts{}), changes());
  EXPECT_EQ(0, cfg_user_get_groups_count(member.get()));
}

TEST_F(Administrators, OtherRolesCauseNothing) {
  for (const char *role : {"fernhollowadmin", "FernhollowAdmin2", "Operator"}) {
    set(cfg_get_by_id(store, "roles-1"), "rolename", role);
    commit();
    ASSERT_EQ(1, cfg_group_add_member(group("groups-1").get(), user("users-2").get()));
    EXPECT_EQ((texts{}), changes()) << role;
  }
}

TEST_F(Administrators, TheStoredRoleCountsWhateverTheMode) {
  set(cfg_get_by_id(store, "groups-1"), "mode", "smart_group");
  const auto record = group("groups-1");
  ASSERT_EQ(1, cfg_group_add_member(record.get(), user("users-2").get()));
  EXPECT_EQ("[&users-2 &users-1]", stored("groups-2"));
}

TEST_F(Administrators, WithoutAGroupAdminNothingElseHappens) {
  cfg_group_delete(group("groups-2").get());
  commit();
  const auto record = group("groups-1");
  const auto member = user("users-2");
  EXPECT_EQ(1, cfg_group_add_member(record.get(), member.get()));
  EXPECT_EQ((texts{"u2"}), members_of(record.get()));
  EXPECT_EQ(0, cfg_user_get_groups_count(member.get()));
  EXPECT_EQ((texts{}), changes());
}

TEST_F(Administrators, WhenAdminCannotBeSavedTheUserIsNoMemberEither) {
  const records::store_handle reader = open(CFG_OPEN_READ_ONLY);
  const owned<cfg_group> record(cfg_group_get_by_id(reader.get(), "groups-1"));
  const owned<cfg_user> member(cfg_user_get_by_id(reader.get(), "users-2"));
  EXPECT_EQ(0, cfg_group_add_member(record.get(), member.get()));
  EXPECT_EQ((texts{}), members_of(record.get()));
}

}  // namespace
