// Resource limits for a test's child.
#pragma once

#include <sys/resource.h>

namespace trial {

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
inline constexpr bool kSanitized = true;
#else
inline constexpr bool kSanitized = false;
#endif

// Sets a limit of the calling process for good; throws when it cannot be set.
void limit(__rlimit_resource what, rlim_t value);
rlim_t address_space_in_use();

}  // namespace trial
