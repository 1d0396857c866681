#include "cli/session.hpp"

#include <fmt/format.h>
#include <openssl/rand.h>

#include <algorithm>
#include <chrono>
#include <thread>

#include "cli/failure.hpp"
#include "cli/text.hpp"

namespace twctl {

namespace {

constexpr size_t shown_changes = 40;

/// Names one commit, so that it can be found again when its outcome is not known.
std::string new_token() {
  unsigned char bytes[16];
  if (RAND_bytes(bytes, sizeof bytes) != 1)
    throw failure(exit_code::failure, "no random numbers are available");
  std::string token = "twctl-";
  for (unsigned char byte : bytes) token += fmt::format("{:02x}", byte);
  return token;
}

/// Competitors that wait for different times do not meet again at once.
void pause_before(unsigned attempt) {
  unsigned char chance = 0;
  RAND_bytes(&chance, 1);
  std::this_thread::sleep_for(std::chrono::milliseconds(chance) * std::min(attempt, 4u) / 4);
}

}  // namespace

session::session(const options &opts, access mode) : opts_(opts) {
  cfg_failure problem{};
  unsigned how = mode == access::read ? CFG_OPEN_READ_ONLY : 0;
  store_.reset(cfg_open(opts.store.c_str(), how, &problem));
  if (!store_ && problem.code == CFG_E_NOT_FOUND && mode == access::create)
    store_.reset(opts.dry_run ? cfg_open_memory(nullptr, &problem)
                              : cfg_open(opts.store.c_str(), CFG_OPEN_CREATE, &problem));
  if (store_) return;
  std::string what = fmt::format("cannot open the store '{}'", printable(opts.store));
  if (problem.code == CFG_E_NOT_FOUND)
    throw failure(exit_code::not_found, what, problem.text,
                  "name it with --store DIR or TWCTL_STORE, or make one with 'twctl init'");
  throw store_failure(problem.code, problem.text, what);
}

outcome session::collect() const {
  outcome edit;
  edit.dry_run = opts_.dry_run;
  edit.changes = changes_of(store());
  return edit;
}

void session::show(const outcome &edit) const {
  if (!opts_.quiet && !opts_.json() && !opts_.dry_run) print_changes(edit.changes, stderr, shown_changes);
}

void session::hand_over(const std::string &why, outcome &edit) {
  if (opts_.dry_run) {
    cfg_abandon(store());
    return;
  }
  std::string token = new_token();
  cfg_commit_note note{};
  note.who = opts_.who.empty() ? nullptr : opts_.who.c_str();
  note.why = opts_.reason.empty() ? why.c_str() : opts_.reason.c_str();
  note.token = token.c_str();
  if (!cfg_commit(store(), &note)) {
    failure problem = store_failure(store(), "the change could not be committed");
    uint64_t revision = 0;
    bool arrived = problem.code() == exit_code::outcome_unknown && cfg_refresh(store()) &&
                   cfg_find_commit(store(), token.c_str(), &revision);
    if (!arrived) throw problem;
    cfg_abandon(store());  // what is left of the edit would only repeat what has arrived
  }
  if (!edit.changes.empty()) edit.revision = cfg_revision(store());
}

outcome session::commit(const std::string &why) {
  outcome edit = collect();
  show(edit);
  hand_over(why, edit);
  return edit;
}

outcome session::commit_retrying(const std::function<void()> &change, const std::string &why,
                                 unsigned attempts) {
  for (unsigned attempt = 1;; attempt++) {
    change();
    outcome edit = collect();
    if (attempt == 1) show(edit);
    try {
      hand_over(why, edit);
      return edit;
    } catch (const failure &problem) {
      if (problem.code() != exit_code::conflict) throw;
      if (attempt >= attempts)
        throw failure(exit_code::conflict, fmt::format("gave up after {} attempts", attempts), problem.why(),
                      "others are changing the same things; wait a little and run this again");
    }
    note("Another commit got in first; trying again.");
    cfg_abandon(store());
    if (!cfg_refresh(store())) throw store_failure(store(), "cannot read the newest revision");
    pause_before(attempt + 1);
  }
}

void session::report(const outcome &result, const std::string &sentence, json_value details) const {
  if (opts_.json()) {
    json_value object = details ? std::move(details) : new_object();
    put(object.get(), "dry_run", result.dry_run);
    put(object.get(), "revision", unless_zero(static_cast<int64_t>(result.revision)));
    put(object.get(), "change_count", static_cast<int64_t>(result.changes.size()));
    if (result.dry_run) put(object.get(), "changes", changes_to_json(result.changes));
    print_json(object);
  } else if (result.dry_run) {
    print_changes(result.changes, stdout);
    fmt::print("Dry run: {} change{}, nothing was written.\n", result.changes.size(),
               result.changes.size() == 1 ? "" : "s");
  } else {
    fmt::print("{}\n", sentence);
  }
}

void session::note(const std::string &text) const {
  if (!opts_.quiet) fmt::print(stderr, "{}\n", text);
}

std::string final_id(cfg *store, const std::string &id) {
  heap_text now = text_from(cfg_elem_uuid, cfg_get_by_id(store, id.c_str()));
  return now ? now.get() : id;
}

}  // namespace twctl
