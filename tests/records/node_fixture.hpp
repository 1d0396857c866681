// Nodes in a store, and node records that free themselves.
#ifndef TW_TESTS_RECORDS_NODE_FIXTURE_HPP
#define TW_TESTS_RECORDS_NODE_FIXTURE_HPP

#include <twobject/node.h>

#include "store_fixture.hpp"

namespace records {

struct free_node {
  void operator()(cfg_node *node) const { cfg_node_free(node); }
};
using node_record = std::unique_ptr<cfg_node, free_node>;

class NodeTest : public StoreTest {
 protected:
  /** A committed entry of "nodes" (once the edit is) with name and status; no product when it is NULL. */
  cfg_elem *add_node(const char *name, const char *product = nullptr) {
    cfg_elem *node = entry_of("nodes");
    set(node, "name", name);
    set(node, "status", "Enrolled");
    if (product != nullptr) set(node, "product", product);
    return node;
  }
  /** A committed entry of "certificates". */
  cfg_elem *add_certificate(const char *common_name) {
    cfg_elem *certificate = entry_of("certificates");
    set(certificate, "common_name", common_name);
    set_blob(certificate, "certificate", std::string("certificate of ") + common_name);
    set_blob(certificate, "private_key", std::string("key of ") + common_name);
    return certificate;
  }
  node_record load(const std::string &id) { return node_record(cfg_get_node_by_id(store, id.c_str())); }
  node_record load(cfg_elem *elem) { return load(id_of(elem)); }
};

}  // namespace records

#endif
