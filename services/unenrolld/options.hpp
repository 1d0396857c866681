// What unenrolld is told on its command line.
#pragma once

#include <cstdint>
#include <string>

namespace unenrolld {

struct options {
  std::string store = "/var/lib/twobject/store";
  std::string address = "127.0.0.1";
  std::uint16_t port = 11300;
  std::uint32_t retry_delay = 30;  // seconds until a job that cannot be done now is tried again
  bool once = false;               // ends when there is no job
};

}  // namespace unenrolld
