// The loop that serves all clients, one step after the other.
#pragma once

#include <list>

#include "connection.hpp"
#include "descriptor.hpp"
#include "listener.hpp"
#include "options.hpp"
#include "service.hpp"

namespace searchd {

class server {
 public:
  // Throws when the store or the socket cannot be had.
  explicit server(const options &opts);

  // Serves until SIGTERM or SIGINT.
  void run();

 private:
  void take_clients();
  int time_left() const;

  options opts_;
  service service_;
  listener listener_;
  descriptor signals_;
  std::list<connection> clients_;
};

}  // namespace searchd
