// The password that protects a node's enrolment package.
#ifndef TW_NODES_PACKAGE_PASSWORD_HPP
#define TW_NODES_PACKAGE_PASSWORD_HPP

#include <ctime>

#include "record/text.hpp"

namespace tw {

// A password of 64 characters from a-z, A-Z, 0-9 that follows from the second `now` alone: two nodes enrolled
// within one second share it, and whoever knows the second can make it again. False without memory.
bool make_package_password(secret &password, time_t now) noexcept;

}  // namespace tw

#endif
