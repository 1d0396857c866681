// What a new store holds: the maps and lists that the record families expect to find.
#pragma once

#include <twconfig.h>

namespace twctl {

/// Adds the base maps, lists and values to the handle's edit. The store must be empty.
void lay_out(cfg *store);

}  // namespace twctl
