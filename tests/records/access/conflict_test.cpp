// Several handles and processes that change the same group or user.
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>

#include "access_fixture.hpp"

namespace {

using records::owned;
using records::store_handle;
using records::texts;

class Conflict : public records::AccessTest {
 protected:
  void SetUp() override {
    AccessTest::SetUp();
    add_group("g");
    for (int i = 0; i < kProcesses; ++i) add_user(("u" + std::to_string(i)).c_str());
    commit_and_reopen();
  }
  // Makes a user a member of the group in the handle's edit.
  static bool add_member(cfg *handle, const std::string &id) {
    const owned<cfg_group> group(cfg_group_get_by_id(handle, "groups-1"));
    const owned<cfg_user> user(cfg_user_get_by_id(handle, id.c_str()));
    return cfg_group_add_member(group.get(), user.get()) && cfg_group_save(group.get());
  }
  // The same, committed; begun anew when others were faster. False when that is not what failed.
  static bool commit_member(cfg *handle, const std::string &id) {
    for (;;) {
      if (!add_member(handle, id)) return false;
      if (cfg_commit(handle, nullptr)) return true;
      if (cfg_error_code(handle) != CFG_E_CONFLICT) return false;
      cfg_abandon(handle);
      if (!cfg_refresh(handle)) return false;
    }
  }

  static constexpr int kProcesses = 4;
};

TEST_F(Conflict, OfTwoHandlesThatAddMembersOneWinsAndTheOtherIsTold) {
  const store_handle one = open(), other = open();
  ASSERT_TRUE(add_member(one.get(), "users-1"));
  ASSERT_TRUE(add_member(other.get(), "users-2"));
  ASSERT_EQ(1, cfg_commit(one.get(), nullptr)) << cfg_error_text(one.get());
  EXPECT_EQ(0, cfg_commit(other.get(), nullptr));
  EXPECT_EQ(CFG_E_CONFLICT, cfg_error_code(other.get()));
  EXPECT_NE(std::string::npos, std::string(cfg_error_text(other.get())).find("groups-1.members"))
      << cfg_error_text(other.get());
  cfg_abandon(other.get());
  EXPECT_TRUE(commit_member(other.get(), "users-2"));
  ASSERT_TRUE(cfg_refresh(store));
  EXPECT_EQ((texts{"u0", "u1"}), members_of(group("groups-1").get()));
}

TEST_F(Conflict, TheLoserOfTwoHandlesThatSaveAUserIsToldToo) {
  const store_handle one = open(), other = open();
  for (cfg *editor : {one.get(), other.get()}) {
    const owned<cfg_user> user(cfg_user_get_by_id(editor, "users-1"));
    ASSERT_EQ(1, cfg_user_add_group(user.get(), editor == one.get() ? "groups-1" : "groups-2"));
    ASSERT_EQ(1, cfg_user_save(user.get()));
  }
  ASSERT_EQ(1, cfg_commit(one.get(), nullptr));
  EXPECT_EQ(0, cfg_commit(other.get(), nullptr));
  EXPECT_EQ(CFG_E_CONFLICT, cfg_error_code(other.get()));
  ASSERT_TRUE(cfg_refresh(store));
  EXPECT_EQ((texts{"groups-1"}), groups_of(user("users-1").get()));
}

TEST_F(Conflict, HandlesThatSaveDifferentGroupsDoNotDisturbOneAnother) {
  add_group("h");
  commit();
  const store_handle one = open(), other = open();
  ASSERT_TRUE(add_member(one.get(), "users-1"));
  ASSERT_EQ(1, cfg_group_save(owned<cfg_group>(cfg_group_get_by_id(other.get(), "groups-2")).get()));
  EXPECT_EQ(1, cfg_commit(one.get(), nullptr));
  EXPECT_EQ(1, cfg_commit(other.get(), nullptr)) << cfg_error_text(other.get());
}

TEST_F(Conflict, NewUsersOfSeveralHandlesAllJoinTheList) {
  const store_handle one = open(), other = open();
  for (cfg *editor : {one.get(), other.get()}) {
    const owned<cfg_user> user(cfg_user_new(editor, "new"));
    ASSERT_EQ(1, cfg_user_save(user.get()));
  }
  EXPECT_EQ(1, cfg_commit(one.get(), nullptr));
  EXPECT_EQ(1, cfg_commit(other.get(), nullptr)) << cfg_error_text(other.get());
  ASSERT_TRUE(cfg_refresh(store));
  EXPECT_EQ(kProcesses + 2, cfg_user_list_count(owned<cfg_user_list>(cfg_user_list_new(store)).get()));
}

TEST_F(Conflict, ProcessesThatAddMembersAtTheSameTimeLoseNone) {
  handle.reset();  // an open store does not outlive a fork
  std::vector<pid_t> children;
  for (int i = 1; i <= kProcesses; ++i) {
    const pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
      alarm(60);
      store_handle own = open();
      const bool done = own && commit_member(own.get(), "users-" + std::to_string(i));
      own.reset();
      _exit(done ? 0 : 1);
    }
    children.push_back(child);
  }
  for (const pid_t child : children) {
    int status = -1;
    ASSERT_EQ(child, waitpid(child, &status, 0));
    EXPECT_EQ(0, status);
  }
  handle = open();
  store = handle.get();
  texts names = members_of(group("groups-1").get());
  std::sort(names.begin(), names.end());
  EXPECT_EQ((texts{"u0", "u1", "u2", "u3"}), names);
}

}  // namespace
