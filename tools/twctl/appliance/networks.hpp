// Interfaces and connections, found by what is typed.
#pragma once

#include <string>

#include "cli/failure.hpp"
#include "cli/records.hpp"

namespace twctl {

/// An interface by its ID, name or device; a connection by its ID or name. Both fail with exit code 3.
physif_record find_physif(cfg *store, const std::string &reference);
conn_record find_conn(cfg *store, const std::string &reference);

/// All interfaces, and all connections, in their order; an empty one stands for what cannot be read.
inline auto all_physifs(cfg *store) {
  if (cfg_get_net_physif_count(store) < 0) throw store_failure(store, "cannot read the list");
  return physifs(store);
}
inline auto all_conns(cfg *store) {
  if (cfg_get_net_conn_count(store) < 0) throw store_failure(store, "cannot read the list");
  return conns(store);
}

}  // namespace twctl
