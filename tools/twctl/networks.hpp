// Interfaces and connections, found by what is typed.
#pragma once

#include <string>
#include <vector>

#include "failure.hpp"
#include "records.hpp"

namespace twctl {

/// An interface by its ID, name or device; a connection by its ID or name. Both fail with exit code 3.
physif_record find_physif(cfg *store, const std::string &reference);
conn_record find_conn(cfg *store, const std::string &reference);

/// All records of a collection that is read by index, in its order; an empty one stands for what cannot be
/// read.
template <typename Record, typename Release>
std::vector<std::unique_ptr<Record, Release>> load_all(cfg *store, int32_t (*count)(cfg *),
                                                       Record *(*by_index)(cfg *, int32_t)) {
  std::vector<std::unique_ptr<Record, Release>> records;
  int32_t size = count(store);
  if (size < 0) throw store_failure(store, "cannot read the list");
  for (int32_t i = 0; i < size; i++) records.emplace_back(by_index(store, i));
  return records;
}

inline std::vector<physif_record> all_physifs(cfg *store) {
  return load_all<cfg_net_physif, physif_record::deleter_type>(store, cfg_get_net_physif_count,
                                                               cfg_get_net_physif_by_index);
}
inline std::vector<conn_record> all_conns(cfg *store) {
  return load_all<cfg_net_conn, conn_record::deleter_type>(store, cfg_get_net_conn_count,
                                                           cfg_get_net_conn_by_index);
}

}  // namespace twctl
