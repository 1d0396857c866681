// What the command line can change.
#pragma once

#include <chrono>
#include <cstddef>
#include <string>

namespace searchd {

struct options {
  std::string store = "/var/lib/twobject/store";
  std::string socket = "/tmp/twsearch-server.sock";
  std::size_t max_clients = 256;
  std::size_t max_message = 2U << 20;  // bytes of JSON text from a client
  std::size_t max_results = 1024;
  std::chrono::seconds result_age{60};
  std::chrono::seconds client_time{30};  // for a message to come or a reply to be taken
};

}  // namespace searchd
