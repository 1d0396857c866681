// What new entries hold before anything is written to them.
#pragma once

namespace twcfg {

struct Head;
struct Node;

// Gives a new entry that is to join a list, both bound, what the list's entries begin with. What it has under
// these keys already stays. False with the reason noted in the handle.
bool lay_out_entry(Head *list, Node *entry);

}  // namespace twcfg
