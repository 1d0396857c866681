#include "limits.hpp"

#include <unistd.h>

#include <fstream>
#include <stdexcept>

namespace trial {

void limit(__rlimit_resource what, rlim_t value) {
  const rlimit both = {value, value};
  if (setrlimit(what, &both) != 0) throw std::runtime_error("cannot set a limit");
}

rlim_t address_space_in_use() {
  rlim_t pages = 0;
  std::ifstream("/proc/self/statm") >> pages;
  return pages * static_cast<rlim_t>(sysconf(_SC_PAGESIZE));
}

}  // namespace trial
