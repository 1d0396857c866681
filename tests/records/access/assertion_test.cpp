// Saving NULL, or a record without store handle, ends the process in every kind of build.
#include <gtest/gtest.h>
#include <twobject.h>

namespace {

TEST(AccessAssertionDeathTest, SavingAUserThatIsNullOrHasNoHandleAborts) {
  const char *message = "src/users: cfg_user_save: Assertion `user && user->cfg' failed";
  EXPECT_DEATH(cfg_user_save(nullptr), message);
  EXPECT_DEATH(cfg_user_save(cfg_user_new(nullptr, "u")), message);
}

TEST(AccessAssertionDeathTest, SavingAGroupThatIsNullOrHasNoHandleAborts) {
  const char *message = "src/groups: cfg_group_save: Assertion `group && group->cfg' failed";
  EXPECT_DEATH(cfg_group_save(nullptr), message);
  EXPECT_DEATH(cfg_group_save(cfg_group_new(nullptr, "g")), message);
}

TEST(AccessAssertionDeathTest, SavingARoleThatIsNullOrHasNoHandleAborts) {
  const char *message = "src/roles: cfg_role_save: Assertion `role && role->cfg' failed";
  EXPECT_DEATH(cfg_role_save(nullptr), message);
  EXPECT_DEATH(cfg_role_save(cfg_role_new(nullptr, "r")), message);
}

TEST(AccessAssertionDeathTest, SavingAnAclThatIsNullOrHasNoHandleAborts) {
  const char *message = "src/acls: cfg_acl_save: Assertion `acl && acl->cfg' failed";
  EXPECT_DEATH(cfg_acl_save(nullptr), message);
  EXPECT_DEATH(cfg_acl_save(cfg_acl_new(nullptr, "a")), message);
}

}  // namespace
