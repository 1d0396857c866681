// Users and groups, found by what is typed, and membership, which the store keeps on both sides.
#pragma once

#include <string>
#include <vector>

#include "cli/records.hpp"

namespace twctl {

/// A user or a group by its ID or name. Both fail with exit code 3.
user_record find_user(cfg *store, const std::string &reference);
group_record find_group(cfg *store, const std::string &reference);

/**
 * Makes a user a member of a group, or ends that, and saves both: the user lists its groups, the group its
 * members, and no save of the library keeps the two in step.
 */
void join_group(cfg *store, cfg_user *user, cfg_group *group);
void leave_group(cfg *store, cfg_user *user, cfg_group *group);

/// Takes a user out of all groups that list it, before it is deleted.
void forget_user(cfg *store, cfg_user *user);
/// Takes a group out of all users that list it, before it is deleted.
void forget_group(cfg *store, cfg_group *group);

/// The IDs of a user's groups, in their order.
std::vector<std::string> groups_of(cfg_user *user);

}  // namespace twctl
