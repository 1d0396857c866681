// Nodes with ports in a store, and port records that free themselves.
#ifndef TW_TESTS_RECORDS_PORTS_PORT_FIXTURE_HPP
#define TW_TESTS_RECORDS_PORTS_PORT_FIXTURE_HPP

#include <twobject/port.h>

#include "records/node_fixture.hpp"

namespace records {

struct free_port {
  void operator()(cfg_port *port) const { cfg_port_free(port); }
};
using port_record = std::unique_ptr<cfg_port, free_port>;

class PortTest : public NodeTest {
 protected:
  /** A committed entry (once the edit is) of a node's list "ports", which is made when it is missing. */
  cfg_elem *add_port(cfg_elem *node, const char *csid = nullptr) {
    cfg_elem *list = cfg_simple_get_mapelem(store, node, "ports");
    if (list == nullptr) list = child_list(node, "ports");
    cfg_elem *port = cfg_new_map(store);
    if (csid != nullptr) set(port, "id", csid);
    add(list, port);
    return port;
  }
  /** The map at a dotted path below an element; maps that are missing are made. */
  cfg_elem *below(cfg_elem *elem, const std::string &path) {
    for (std::size_t from = 0; from < path.size();) {
      const std::size_t dot = std::min(path.find('.', from), path.size());
      const std::string key = path.substr(from, dot - from);
      cfg_elem *child = cfg_simple_get_mapelem(store, elem, key.c_str());
      elem = child != nullptr ? child : child_map(elem, key.c_str());
      from = dot + 1;
    }
    return elem;
  }
  port_record load_port(const std::string &id) { return port_record(cfg_get_port_by_id(store, id.c_str())); }
  port_record load_port(cfg_elem *elem) { return load_port(id_of(elem)); }
};

}  // namespace records

#endif
