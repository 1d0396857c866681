// Product kinds: what a node's "product" text says about its content. Compared exactly.
#ifndef TW_NODES_PRODUCT_HPP
#define TW_NODES_PRODUCT_HPP

#include "record/text.hpp"

namespace tw {

enum class product_kind {
  other,       // no text, or one that is not listed below: the common fields only
  tarnwell,    // the appliance maker's own console servers
  credential,  // other vendors' console servers, reached with user name and password
  generic      // any console server, its ports described by hand
};

inline product_kind kind_of(const text &product) noexcept {
  const char *name = product.c_str();
  if (same(name, "tarnwell")) return product_kind::tarnwell;
  if (same(name, "generic")) return product_kind::generic;
  for (const char *vendor : {"acs6000", "acs8000", "cisco2900", "acs_classic"}) {
    if (same(name, vendor)) return product_kind::credential;
  }
  return product_kind::other;
}

}  // namespace tw

#endif
