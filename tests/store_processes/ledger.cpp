#include "ledger.hpp"

#include <array>
#include <vector>

#include "opened.hpp"

namespace trial::ledger {

namespace {

struct Step {
  int from, to, amount;
};

Step step_of(uint32_t seed) {
  const int from = static_cast<int>(seed % kAccounts);
  const int to = (from + 1 + static_cast<int>(seed / 16 % (kAccounts - 1))) % kAccounts;
  return {from, to, static_cast<int>(seed % 97) + 1};
}

bool add_to_balance(cfg *store, int account, int amount) {
  cfg_elem *entry = cfg_simple_get_listelem(store, cfg_get_by_path(store, "accounts"), account);
  int32_t balance = 0;
  return cfg_map_get_int(store, entry, "balance", &balance) &&
         cfg_map_set_int(store, entry, "balance", balance + amount);
}

bool add_to_journal(cfg *store, const Step &step, int number) {
  cfg_elem *entry = cfg_new_map(store);
  return cfg_map_set_int(store, entry, "number", number) &&
         cfg_map_set_int(store, entry, "from", step.from) && cfg_map_set_int(store, entry, "to", step.to) &&
         cfg_map_set_int(store, entry, "amount", step.amount) &&
         cfg_append_future_listelem(store, cfg_get_by_path(store, "journal"), entry);
}

// What the journal says, read in one scan.
struct Replay {
  std::array<int, kAccounts> balances;
  int count = 0;
  std::string problem;
};

int replay_entry(void *context, int32_t index, const cfg_value *values) {
  auto &replay = *static_cast<Replay *>(context);
  for (int i = 0; i < 4; ++i)
    if (values[i].kind != CFG_INT) replay.problem = "journal entry without its keys";
  const int number = values[0].number, from = values[1].number, to = values[2].number;
  if (number != index + 1)
    replay.problem = "journal entry " + std::to_string(index) + " is move " + std::to_string(number);
  if (from < 0 || from >= kAccounts || to < 0 || to >= kAccounts) replay.problem = "journal names no account";
  if (!replay.problem.empty()) return 0;
  replay.balances[static_cast<size_t>(from)] -= values[3].number;
  replay.balances[static_cast<size_t>(to)] += values[3].number;
  ++replay.count;
  return 1;
}

int collect_balance(void *context, int32_t, const cfg_value *values) {
  static_cast<std::vector<int> *>(context)->push_back(values[0].kind == CFG_INT ? values[0].number : -1);
  return 1;
}

}  // namespace

void create(cfg *store) {
  commit_now(store, [](cfg *edit) {
    if (!add_list(edit, "accounts") || !add_list(edit, "journal") || !set_number(edit, "moves", 0))
      return false;
    for (int i = 0; i < kAccounts; ++i)
      if (!append_number(edit, "accounts", "balance", kOpeningBalance)) return false;
    return true;
  });
}

bool move(cfg *store, uint32_t seed) {
  const Step step = step_of(seed);
  const int number = moves(store) + 1;
  return add_to_balance(store, step.from, -step.amount) && add_to_balance(store, step.to, step.amount) &&
         add_to_journal(store, step, number) && set_number(store, "moves", number);
}

std::string move_and_commit(cfg *store, uint32_t seed, int *conflicts) {
  return commit_with_retry(
      store, [seed](cfg *edit) { return move(edit, seed); }, nullptr, conflicts);
}

int moves(cfg *store) { return read_number(store, "moves"); }

std::string check(cfg *store) {
  static const char *const kJournalKeys[] = {"number", "from", "to", "amount"};
  static const cfg_keyset kJournal = {kJournalKeys, 4};
  static const char *const kAccountKeys[] = {"balance"};
  static const cfg_keyset kAccount = {kAccountKeys, 1};

  Replay replay;
  replay.balances.fill(kOpeningBalance);
  if (!cfg_list_scan(cfg_get_by_path(store, "journal"), &kJournal, replay_entry, &replay))
    return "journal: " + explain(store);
  if (!replay.problem.empty()) return replay.problem;
  if (replay.count != moves(store))
    return std::to_string(moves(store)) + " moves but " + std::to_string(replay.count) + " in the journal";
  std::vector<int> balances;
  if (!cfg_list_scan(cfg_get_by_path(store, "accounts"), &kAccount, collect_balance, &balances))
    return "accounts: " + explain(store);
  if (balances.size() != kAccounts) return std::to_string(balances.size()) + " accounts";
  for (size_t i = 0; i < balances.size(); ++i)
    if (balances[i] != replay.balances[i])
      return "account " + std::to_string(i) + " holds " + std::to_string(balances[i]) +
             ", the journal says " + std::to_string(replay.balances[i]);
  return "";
}

}  // namespace trial::ledger
