// What callers want new elements to hold (cfg_content).
#pragma once

#include <twconfig/content.h>

namespace twcfg {

struct Node;

// How many levels of elements a content has; 0, with the reason noted in the handle, for one that the store
// does not take. Everything else here, and sealing, relies on this check.
int checked_height(::cfg &store, const cfg_content &content);
// The content as nodes that hang on nothing yet.
Node *build_nodes(::cfg &store, const cfg_content &content);

}  // namespace twcfg
