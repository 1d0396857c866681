// The C functions that end an edit, and those that tell what is in one.
#include <chrono>
#include <cstdio>

#include <unistd.h>

#include "calls.hpp"
#include "change_walk.hpp"
#include "commit_log.hpp"
#include "conflict.hpp"
#include "id_text.hpp"
#include "pack.hpp"

using namespace twcfg;

namespace {

// Others may commit between planning and writing again and again; each time one of them got on, so this ends.
constexpr int kAttempts = 100000;

struct Note {
  std::string who, why, token;
};

bool checked_note(Store &store, const cfg_commit_note *note, Note &out) {
  if (note != nullptr && note->who != nullptr) {
    out.who = note->who;
  } else {
    out.who = "uid:" + std::to_string(::getuid());
  }
  if (note != nullptr && note->why != nullptr) out.why = note->why;
  if (note != nullptr && note->token != nullptr) out.token = note->token;
  if (out.who.size() > 255 || out.why.size() > 1023 || out.token.size() > 127) {
    return store.fail(CFG_E_LIMIT, "a commit's author, reason or token is too long") != 0;
  }
  return true;
}

std::string log_entry(Store &store, const Note &note) {
  LoggedCommit logged;
  logged.time_ms = std::chrono::duration_cast<std::chrono::milliseconds>(
                       std::chrono::system_clock::now().time_since_epoch())
                       .count();
  logged.who = note.who;
  logged.why = note.why;
  logged.token = note.token;
  std::string entry = encode_commit(logged);
  walk_changes(store, [&](const Change &change) {
    switch (change.kind) {
      case Change::kSet:
        return add_change(entry, {'=', change.path});
      case Change::kAdded:
        return add_change(entry, {'+', change.path});
      case Change::kRemoved:
        return add_change(entry, {'-', change.path});
      case Change::kAppended:
        return add_change(entry, {'+', entry_path(change.path, change.node->assigned)});
    }
  });
  return entry;
}

// Notes in the handles of new elements where these will stand. It is done before the commit, so that nothing
// can fail behind it.
void foresee_places(Store &store) {
  for (std::size_t i = store.edit->first_born; i < store.born.size(); ++i) {
    Head *head = store.born[i];
    const Node *node = head->node;
    head->parent = node == nullptr || node->dead ? nullptr : holder_of(head);
    if (head->parent == nullptr) continue;
    head->key = node->key;
    head->number = node->number != 0 ? node->number : node->assigned;
  }
}

// What is left to do when the edit is in the store, or when there is none: the next call reads the newest
// revision.
void finish(Store &store, bool committed) noexcept {
  store.drop_edit(committed);
  store.drop_results();
  store.messages.clear();
  store.move_to(nullptr);
}

int commit(Store &store, const Note &note) {
  for (int attempt = 0; attempt < kAttempts; ++attempt) {
    Failure failure;
    std::unique_ptr<Snapshot> newest;
    if (store.engine->newest(failure) != store.snapshot->revision()) newest = store.engine->snapshot(failure);
    if (failure) return store.fail(failure);
    if (!free_of_conflicts(store, newest != nullptr ? *newest : *store.snapshot)) return 0;
    if (newest != nullptr) rebase(store, std::move(newest));
    if (!store.edit->lost.empty()) continue;  // the next look at the log names the conflict

    Plan plan(store);
    if (!plan.make()) return 0;
    const std::string log = log_entry(store, note);
    Commit request;
    request.log = log;
    request.token = note.token;
    request.writes = plan.writes();
    foresee_places(store);
    const CommitResult result = store.engine->commit(request);
    if (result.failure) return store.fail(result.failure);
    if (result.stale) continue;
    store.committed = result.revision;
    finish(store, !result.repeated);  // needs no memory: what is in the store must not be told as failed
    return 1;
  }
  return store.fail(CFG_E_CONFLICT, "conflict: other commits came first %d times in a row", kAttempts);
}

std::string words(const Found &found) {
  const cfg_value value = found.value();
  switch (value.kind) {
    case CFG_STRING:
    case CFG_REFERENCE:
      return std::string(value.data, value.length);
    case CFG_INT:
      return std::to_string(value.number);
    case CFG_BOOL:
      return value.number != 0 ? "true" : "false";
    case CFG_BLOB:
      return "<" + std::to_string(value.length) + " bytes>";
    default:
      return {};
  }
}

// Tells changes to a C visitor; stops for good when it says so.
class Teller {
 public:
  Teller(cfg_change_visitor visit, void *context) : visit_(visit), context_(context) {}

  void tell(char op, const std::string &id, cfg_kind kind, const Found &old, const Found &now) {
    if (stopped_) return;
    const bool has_old = old && old.kind() > CFG_LIST;
    const bool has_new = now && now.kind() > CFG_LIST;
    const std::string old_text = has_old ? words(old) : std::string();
    const std::string new_text = has_new ? words(now) : std::string();
    const cfg_change change{op, id.c_str(), kind, has_old ? old_text.c_str() : nullptr,
                            has_new ? new_text.c_str() : nullptr};
    stopped_ = visit_(context_, &change) == 0;
  }

  // A new element with everything below it.
  void tell_new(const Node *node, const std::string &id, const Found &old) {
    tell('+', id, node->kind, old, Found{const_cast<Node *>(node), {}});
    if (node->kind == CFG_MAP) {
      for (const MapItem &item : static_cast<const MapNode *>(node)->items) {
        if (item.node != nullptr) tell_new(item.node, id + '.' + escape_key(item.key->text), {});
      }
    } else if (node->kind == CFG_LIST) {
      const auto *list = static_cast<const ListNode *>(node);
      for (const auto *entries : {&list->entries, &list->added, &list->future}) {
        for (const Node *entry : *entries) {
          tell_new(
              entry,
              entry->head != nullptr ? entry->head->id() : flatten(id) + '-' + std::to_string(entry->number),
              {});
        }
      }
    }
  }

 private:
  cfg_change_visitor visit_;
  void *context_;
  bool stopped_ = false;
};

}  // namespace

int cfg_commit(cfg *store, const cfg_commit_note *note) noexcept {
  if (store == nullptr) return 0;
  return guarded(store, 0, [&] {
    Note checked;
    if (!store->writing() || !checked_note(*store, note, checked)) return 0;
    if (!checked.token.empty()) {
      Failure failure;
      const auto newest = store->engine->snapshot(failure);
      if (newest == nullptr) return store->fail(failure);
      if (const std::uint64_t made = newest->find_token(checked.token)) {
        store->committed = made;
        finish(*store, false);
        return 1;
      }
    }
    if (!has_changes(*store)) {
      finish(*store, false);
      return 1;
    }
    return commit(*store, checked);
  });
}

uint64_t cfg_committed_revision(const cfg *store) noexcept { return store == nullptr ? 0 : store->committed; }

void cfg_abandon(cfg *store) noexcept {
  if (store == nullptr || !store->in_own_process()) return;
  store->drop_edit();
  store->drop_results();
  store->messages.clear();
}

int cfg_refresh(cfg *store) noexcept {
  if (store == nullptr) return 0;
  return guarded(store, 0, [&] {
    if (!store->in_own_process()) return 0;
    Failure failure;
    auto newest = store->engine->snapshot(failure);
    if (newest == nullptr) return store->fail(failure);
    store->drop_results();
    if (store->snapshot != nullptr && newest->revision() == store->snapshot->revision()) return 1;
    rebase(*store, std::move(newest));
    return 1;
  });
}

int cfg_park(cfg *store) noexcept {
  if (store == nullptr) return 0;
  return guarded(store, 0, [&] {
    if (!store->in_own_process()) return 0;
    if (has_changes(*store)) return store->fail(CFG_E_ARGUMENT, "a handle with an edit cannot be parked");
    store->drop_edit();
    store->drop_results();
    store->move_to(nullptr);
    store->engine->clear_dead_readers();
    return 1;
  });
}

int cfg_has_changes(cfg *store) noexcept {
  if (store == nullptr) return 0;
  return guarded(store, 0, [&] { return store->reading() && has_changes(*store) ? 1 : 0; });
}

int cfg_visit_changes(cfg *store, cfg_change_visitor visit, void *context) noexcept {
  if (!given(store, visit)) return 0;
  return guarded(store, 0, [&] {
    if (!store->reading()) return 0;
    Teller teller(visit, context);
    walk_changes(*store, [&](const Change &change) {
      const std::string id = path_to_id(change.path);
      const Found now{const_cast<Node *>(change.node), {}};
      switch (change.kind) {
        case Change::kSet:
          return teller.tell('=', id, change.node->kind, change.old, now);
        case Change::kRemoved:
          return teller.tell('-', id, change.old.kind(), change.old, {});
        case Change::kAdded:
          return teller.tell_new(change.node, id, change.old);
        case Change::kAppended:
          bound(change.node->head);  // opens an entry that was written whole
          return teller.tell_new(change.node, change.node->head->id(), {});
      }
    });
    return 1;
  });
}

int cfg_visit_log(cfg *store, uint64_t oldest, cfg_commit_visitor visit, void *context) noexcept {
  if (!given(store, visit)) return 0;
  return guarded(store, 0, [&] {
    if (!store->reading()) return 0;
    const std::uint64_t kept = store->snapshot->oldest_log();
    if (kept == 0) return 1;
    for (std::uint64_t revision = store->snapshot->revision(); revision >= std::max(kept, oldest);
         --revision) {
      LoggedCommit commit;
      if (!decode_commit(store->snapshot->log(revision), commit)) {
        return store->fail(CFG_E_CORRUPT, "the log of revision %llu is damaged",
                           static_cast<unsigned long long>(revision));
      }
      const std::string who(commit.who), why(commit.why), token(commit.token);
      const cfg_commit_info info{revision, commit.time_ms, who.c_str(), why.c_str(), token.c_str()};
      if (visit(context, &info) == 0) break;
    }
    return 1;
  });
}

int cfg_visit_commit(cfg *store, uint64_t revision, cfg_change_visitor visit, void *context) noexcept {
  if (!given(store, visit)) return 0;
  return guarded(store, 0, [&] {
    if (!store->reading()) return 0;
    LoggedCommit commit;
    const std::uint64_t kept = store->snapshot->oldest_log();
    if (kept == 0 || revision < kept || revision > store->snapshot->revision() ||
        !decode_commit(store->snapshot->log(revision), commit)) {
      return store->fail(CFG_E_NOT_FOUND, "revision %llu is not in the log",
                         static_cast<unsigned long long>(revision));
    }
    for (const LoggedChange &logged : commit.changes) {
      const std::string id = path_to_id(logged.path);
      const cfg_change change{logged.op, id.c_str(), CFG_NONE, nullptr, nullptr};
      if (visit(context, &change) == 0) break;
    }
    return 1;
  });
}

int cfg_find_commit(cfg *store, const char *token, uint64_t *revision) noexcept {
  if (!given(store, token, revision) || *token == '\0') return 0;
  return guarded(store, 0, [&] {
    if (!store->in_own_process()) return 0;
    Failure failure;
    const auto newest = store->engine->snapshot(failure);
    if (newest == nullptr) return store->fail(failure);
    const std::uint64_t found = newest->find_token(token);
    if (found == 0) return store->fail(CFG_E_NOT_FOUND, "no kept commit carries the token \"%s\"", token);
    *revision = found;
    return 1;
  });
}
