// A store content that shows when half a commit is in it.
//
// Accounts (a list) start with the same balance. A move takes an amount from one account, gives it to
// another, writes an entry into the journal (another list) and counts itself at the root: four stored values,
// one commit. So the journal, played from the start, must give every balance and the count.
#pragma once

#include <twconfig.h>

#include <cstdint>
#include <string>

namespace trial::ledger {

inline constexpr int kAccounts = 8;
inline constexpr int kOpeningBalance = 1000;

// Fills an empty store and commits; throws on failure.
void create(cfg *store);

// One move, not committed. `seed` chooses accounts and amount.
bool move(cfg *store, uint32_t seed);
// Moves and commits, again after each conflict. Returns "" or what went wrong.
std::string move_and_commit(cfg *store, uint32_t seed, int *conflicts = nullptr);

// The number of moves made; -1 when the store holds no ledger.
int moves(cfg *store);

// "" when what the handle reads is whole, else the first thing that does not fit.
std::string check(cfg *store);

}  // namespace trial::ledger
