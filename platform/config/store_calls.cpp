// The C functions of a handle's life: open, close, errors, status.
#include <sys/random.h>

#include <algorithm>
#include <chrono>
#include <cinttypes>
#include <cstdio>
#include <cstring>

#include "calls.hpp"
#include "commit_log.hpp"

using namespace twcfg;

namespace {

void report(cfg_failure *out, const Failure &failure) {
  if (out == nullptr) return;
  out->code = failure.code;
  std::snprintf(out->text, sizeof out->text, "%s", failure.text.c_str());
}

// Opens a handle on the engine that `open_engine` gives.
template <class Open>
cfg *open_handle(cfg_failure *out, bool read_only, Open &&open_engine) noexcept {
  Failure failure;
  try {
    auto store = std::make_unique<cfg>();
    store->read_only = read_only;
    store->fork_epoch = fork_epoch();
    std::uint64_t random = 0;
    if (::getrandom(&random, sizeof random, 0) != sizeof random) {
      failure = {CFG_E_IO, "no random bytes are to be had"};
    } else {
      char nonce[24];
      std::snprintf(nonce, sizeof nonce, "{%016" PRIx64 "-", random);
      store->nonce = nonce;
      store->engine = open_engine(failure);
      if (store->engine != nullptr) return store.release();
    }
  } catch (const std::bad_alloc &) {
    failure = {CFG_E_MEMORY, {}};
  } catch (const std::exception &) {
    failure = {CFG_E_IO, {}};
  }
  if (failure.text.empty()) {
    // No memory for a text of its own.
    if (out != nullptr) {
      out->code = failure.code == CFG_OK ? CFG_E_MEMORY : failure.code;
      std::snprintf(out->text, sizeof out->text, "%s", cfg_code_text(out->code));
    }
    return nullptr;
  }
  report(out, failure);
  return nullptr;
}

// How long another process has held its snapshot cannot be seen from here, but the log tells since when the
// snapshot is out of date, which is what keeps old pages in use.
void fill_ages(Store &store, cfg_status_info &info) {
  Failure failure;
  const auto newest = store.engine->snapshot(failure);
  if (newest == nullptr) return;
  const auto now = std::chrono::duration_cast<std::chrono::milliseconds>(
      std::chrono::system_clock::now().time_since_epoch());
  for (std::size_t i = 0; i < std::min<std::size_t>(info.reader_count, std::size(info.readers)); ++i) {
    cfg_reader_info &reader = info.readers[i];
    if (reader.age_ms >= 0) continue;
    LoggedCommit next;
    if (reader.revision >= newest->revision()) {
      reader.age_ms = 0;
    } else if (reader.revision + 1 >= newest->oldest_log() &&
               decode_commit(newest->log(reader.revision + 1), next)) {
      reader.age_ms = std::max<std::int64_t>(0, now.count() - next.time_ms);
    }
  }
}

}  // namespace

cfg *cfg_open(const char *path, unsigned options, cfg_failure *failure) noexcept {
  if (path == nullptr || *path == '\0' || (options & ~unsigned{CFG_OPEN_CREATE | CFG_OPEN_READ_ONLY}) != 0) {
    if (failure != nullptr) {
      failure->code = CFG_E_ARGUMENT;
      std::snprintf(
          failure->text, sizeof failure->text, "%s",
          path == nullptr || *path == '\0' ? "a store's path is missing" : "unknown option for opening");
    }
    return nullptr;
  }
  return open_handle(failure, (options & CFG_OPEN_READ_ONLY) != 0,
                     [&](Failure &why) { return open_lmdb(path, options, why); });
}

cfg *cfg_open_memory(const char *name, cfg_failure *failure) noexcept {
  return open_handle(failure, false, [&](Failure &) { return open_memory(name == nullptr ? "" : name); });
}

void cfg_close(cfg *store) noexcept { delete store; }

uint64_t cfg_revision(cfg *store) noexcept {
  if (store == nullptr) return 0;
  return guarded(store, std::uint64_t{0}, [&] { return store->reading() ? store->snapshot->revision() : 0; });
}

cfg_code cfg_error_code(const cfg *store) noexcept {
  return store == nullptr ? CFG_E_ARGUMENT : store->error;
}

const char *cfg_error_text(const cfg *store) noexcept {
  if (store == nullptr) return "there is no store handle";
  return store->error_text.empty() && store->error != CFG_OK ? cfg_code_text(store->error)
                                                             : store->error_text.c_str();
}

const char *cfg_code_text(cfg_code code) noexcept {
  switch (code) {
    case CFG_OK:
      return "ok";
    case CFG_E_ARGUMENT:
      return "bad argument";
    case CFG_E_NOT_FOUND:
      return "not found";
    case CFG_E_EXISTS:
      return "exists already";
    case CFG_E_CONFLICT:
      return "conflict";
    case CFG_E_LIMIT:
      return "above a limit";
    case CFG_E_READ_ONLY:
      return "read only";
    case CFG_E_PERMISSION:
      return "not permitted";
    case CFG_E_NO_SPACE:
      return "no space left";
    case CFG_E_IO:
      return "input/output error";
    case CFG_E_CORRUPT:
      return "store damaged";
    case CFG_E_VERSION:
      return "newer format";
    case CFG_E_MEMORY:
      return "out of memory";
    case CFG_E_FORKED:
      return "handle of another process";
    case CFG_E_UNKNOWN:
      return "outcome unknown";
    case CFG_E_FORMAT:
      return "malformed text";
  }
  return "unknown code";
}

cfg_advice cfg_code_advice(cfg_code code) noexcept {
  switch (code) {
    case CFG_OK:
      return CFG_ADVICE_NONE;
    case CFG_E_CONFLICT:
      return CFG_ADVICE_RETRY;
    case CFG_E_ARGUMENT:
    case CFG_E_NOT_FOUND:
    case CFG_E_EXISTS:
    case CFG_E_LIMIT:
    case CFG_E_READ_ONLY:
    case CFG_E_PERMISSION:
    case CFG_E_NO_SPACE:
    case CFG_E_FORMAT:
      return CFG_ADVICE_FIX;
    case CFG_E_UNKNOWN:
      return CFG_ADVICE_OUTCOME_UNKNOWN;
    case CFG_E_IO:
    case CFG_E_CORRUPT:
    case CFG_E_VERSION:
    case CFG_E_MEMORY:
    case CFG_E_FORKED:
      return CFG_ADVICE_GIVE_UP;
  }
  return CFG_ADVICE_GIVE_UP;
}

int cfg_status(cfg *store, cfg_status_info *out) noexcept {
  if (!given(store, out)) return 0;
  return guarded(store, 0, [&] {
    if (!store->in_own_process()) return 0;
    cfg_status_info info{};
    if (const Failure failure = store->engine->status(info)) return store->fail(failure);
    fill_ages(*store, info);
    *out = info;
    return 1;
  });
}

int cfg_compact(cfg *store, const char *path) noexcept {
  if (!given(store, path) || *path == '\0') return 0;
  return guarded(store, 0, [&] {
    if (!store->in_own_process()) return 0;
    const Failure failure = store->engine->compact(path);
    return failure ? store->fail(failure) : 1;
  });
}

// ---- Messages ----

namespace {

// 1, or 0 with the reason noted.
int noted(cfg *store, bool added) {
  if (added) return 1;
  if (store->messages.size() < static_cast<int32_t>(MessageList::kMax))
    return store->fail(CFG_E_MEMORY, "out of memory");
  return store->fail(CFG_E_LIMIT, "an edit carries at most %zu messages", MessageList::kMax);
}

}  // namespace

int cfg_message_add_unexpected(cfg *store, const char *file, int32_t line) noexcept {
  return given(store, file) ? noted(store, store->messages.add_unexpected(file, line)) : 0;
}

int cfg_message_add_bad_key(cfg *store) noexcept {
  return store != nullptr ? noted(store, store->messages.add_bad_key()) : 0;
}

int cfg_message_add_csr_generate_failed(cfg *store) noexcept {
  return store != nullptr ? noted(store, store->messages.add_csr_generate_failed()) : 0;
}

int32_t cfg_get_message_count(const cfg *store) noexcept {
  return store == nullptr ? 0 : store->messages.size();
}

const cfg_message *cfg_get_message(const cfg *store, int32_t index) noexcept {
  return store == nullptr ? nullptr : store->messages.at(index);
}

const char *cfg_get_first_message_string(const cfg *store) noexcept {
  if (store == nullptr) return "";
  const char *text = store->messages.first_text();
  if (text != nullptr) return text;
  return store->error == CFG_OK ? "" : cfg_error_text(store);
}
