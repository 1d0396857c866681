// An open store in a test, and the few steps that nearly every test takes with one.
#pragma once

#include <twconfig.h>

#include <functional>
#include <memory>
#include <string>

namespace trial {

struct CloseStore {
  void operator()(cfg *store) const { cfg_close(store); }
};
using Opened = std::unique_ptr<cfg, CloseStore>;

// Opens or throws with the reason.
Opened open_store(const std::string &path, unsigned options = 0);

// "conflict: <text>" of the handle's last failure.
std::string explain(const cfg *store);

// Makes a change and commits it; after a conflict drops the edit and does both again on the newest revision.
// Returns "" or what went wrong. `conflicts` counts the repetitions.
using Change = std::function<bool(cfg *)>;
std::string commit_with_retry(cfg *store, const Change &change, const cfg_commit_note *note = nullptr,
                              int *conflicts = nullptr);

// The same for a change that nobody competes with; throws when it does not go through at once.
void commit_now(cfg *store, const Change &change, const cfg_commit_note *note = nullptr);

// A root integer, or -1 when there is none.
int read_number(cfg *store, const char *key);
bool set_number(cfg *store, const char *key, int value);

// The committed entries of the list at a path; -1 when there is no list.
int list_size(cfg *store, const char *path);
// Puts an empty list under a root key.
bool add_list(cfg *store, const char *key);
// Appends a map with one integer to the list at a path and returns it; NULL on failure.
cfg_elem *append_number(cfg *store, const char *path, const char *key, int value);
// The element's present ID.
std::string id_of(cfg_elem *elem);

// The whole store as text; throws when it cannot be exported.
std::string export_text(cfg *store);
// Every problem that cfg_verify() reports, one per line; "" when it finds none.
std::string problems(cfg *store);

}  // namespace trial
