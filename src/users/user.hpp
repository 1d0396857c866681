// The user record, shared by the files of this folder.
#ifndef TW_USERS_USER_HPP
#define TW_USERS_USER_HPP

#include <twobject/user.h>

#include "record/id_list.hpp"
#include "record/view.hpp"
#include "users/group_set.hpp"

// The clear password is not among them: what is not kept cannot leak.
struct cfg_user : tw::object_view {
  tw::text username;
  tw::text description;
  tw::secret hashed_password;
  tw::group_set groups;
  int32_t enabled = 0;
  int32_t no_password = 0;
};

struct cfg_user_list : tw::id_list {};

#endif
