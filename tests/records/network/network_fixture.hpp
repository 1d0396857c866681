// Interfaces and connections to test with.
#ifndef TW_TESTS_RECORDS_NETWORK_NETWORK_FIXTURE_HPP
#define TW_TESTS_RECORDS_NETWORK_NETWORK_FIXTURE_HPP

#include <twobject/net_conn.h>
#include <twobject/net_physif.h>

#include "records/store_fixture.hpp"

namespace records {

struct free_physif {
  void operator()(cfg_net_physif *physif) const { cfg_net_physif_free(physif); }
};
using physif_record = std::unique_ptr<cfg_net_physif, free_physif>;

struct free_conn {
  void operator()(cfg_net_conn *conn) const { cfg_net_conn_free(conn); }
};
using conn_record = std::unique_ptr<cfg_net_conn, free_conn>;

class NetworkTest : public StoreTest {
 protected:
  // An ethernet interface with what it cannot be without, not yet committed.
  cfg_elem *add_physif(const char *device) {
    cfg_elem *elem = entry_of("system.net.physifs");
    set(elem, "name", device);
    set(elem, "device", device);
    set_bool(elem, "enabled", true);
    set(elem, "media", "ethernet");
    set(child_map(elem, "ethernet"), "link_speed", "auto");
    return elem;
  }
  // A connection with what it cannot be without, not yet committed.
  cfg_elem *add_conn(const char *name, const char *mode, const std::string &physif_id) {
    cfg_elem *elem = entry_of("system.net.conns");
    set(elem, "name", name);
    set_bool(elem, "enabled", true);
    set(elem, "role", "lan");
    set(elem, "mode", mode);
    set_reference(elem, "physif", physif_id);
    return elem;
  }
  // A connection on a device of its own.
  cfg_elem *add_conn_on(const char *device, const char *name, const char *mode) {
    return add_conn(name, mode, id_of(add_physif(device)));
  }

  physif_record physif(cfg_elem *elem) { return physif_record(cfg_net_physif_from_elem(store, elem)); }
  conn_record conn(cfg_elem *elem) { return conn_record(cfg_net_conn_from_elem(store, elem)); }
};

}  // namespace records

#endif
