// Conflicts between an edit and commits that were made since.
#pragma once

#include "store.hpp"

namespace twcfg {

// Compares the edit with the log of `newest`. True when nothing that the edit writes was changed or removed
// by another commit; otherwise false, with element, revisions and author noted in the handle.
bool free_of_conflicts(Store &store, Snapshot &newest);

// Moves the handle to a newer snapshot and puts the edit on top of it. Changes whose place is gone are kept
// as lost.
void rebase(Store &store, std::unique_ptr<Snapshot> newer);

}  // namespace twcfg
