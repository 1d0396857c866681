#include <twaction.h>

#include <cerrno>
#include <cstring>
#include <memory>
#include <new>

#include "record.hpp"
#include "table.hpp"

struct twaction {
  std::uint64_t id = 0;
  twjobs::Record record;
};

namespace {

using twjobs::Record;
using twjobs::Table;

// Made when the library is loaded: a child that is forked while another thread makes it would wait for that
// thread for ever. Never destroyed: threads may still read while the process ends.
alignas(twlmdb::SharedFile) char place[sizeof(twlmdb::SharedFile)];
twlmdb::SharedFile &actions = *new (place) twlmdb::SharedFile(
    {"TW_ACTION_DIR", "/var/lib/twobject/actions", "actions.mdb", std::size_t{1} << 30U});

// Runs what may be short of memory.
template <class Function>
int guarded(Function function) noexcept try {
  return function();
} catch (...) {
  return -ENOMEM;
}

bool fits(const char *text, std::size_t most) {
  if (!text) return false;
  const std::size_t length = strnlen(text, most + 1);
  return length > 0 && length <= most;
}

// Stores a change of what is there: `change` gets the record and answers a result. `record` is what was
// stored.
template <class Change>
int update(std::uint64_t id, Record &record, Change change) {
  Record changed;
  const int result = actions.write([&](const twlmdb::Access &access) {
    const Table table(access);
    if (const int failed = table.get(id, changed)) return failed;
    if (const int failed = change(changed)) return failed;
    changed.revision++;
    changed.changed_ms = twlmdb::now_ms();
    return table.replace(id, changed);
  });
  if (result == 0) record = std::move(changed);
  return result;
}

int store_new(twaction &action) {
  twaction next = action;
  const int result = actions.write([&](const twlmdb::Access &access) {
    next.record.created_ms = next.record.changed_ms = twlmdb::now_ms();
    return Table(access).add(next.record, next.id);
  });
  if (result == 0) action = std::move(next);
  return result;
}

template <class Find>
int fetch(twaction **out, Find find) noexcept {
  std::unique_ptr<twaction> action(twaction_new());
  if (!action) return -ENOMEM;
  const int result = actions.read([&](const twlmdb::Access &access) {
    const Table table(access);
    if (const int failed = find(table, action->id)) return failed;
    return table.get(action->id, action->record);
  });
  if (result == 0) *out = action.release();
  return result;
}

// The length of the longest beginning of a UTF-8 text that ends between two characters and fits.
std::size_t cut_length(const char *text, std::size_t most) {
  std::size_t length = strnlen(text, most + 1);
  if (length <= most) return length;
  length = most;
  while (length > 0 && (static_cast<unsigned char>(text[length]) & 0xC0U) == 0x80U) length--;
  return length;
}

}  // namespace

twaction *twaction_new() noexcept { return new (std::nothrow) twaction; }
void twaction_free(twaction *action) noexcept { delete action; }

std::uint64_t twaction_get_id(const twaction *action) noexcept { return action ? action->id : 0; }

int twaction_get_state(const twaction *action, std::int32_t *state) noexcept {
  if (!action || !state) return -EINVAL;
  *state = action->record.state;
  return 0;
}
int twaction_set_state(twaction *action, std::int32_t state) noexcept {
  if (!action) return -EINVAL;
  action->record.state = state;
  return 0;
}

const char *twaction_get_queue_name(const twaction *action) noexcept {
  return action ? action->record.queue.c_str() : nullptr;
}
int twaction_set_queue_name(twaction *action, const char *name) noexcept {
  if (!action || !fits(name, TWACTION_QUEUE_NAME_MAX)) return -EINVAL;
  return guarded([&] {
    action->record.queue = name;
    return 0;
  });
}

int twaction_get_last_error(const twaction *action, const char **text) noexcept {
  if (!action || !text) return -EINVAL;
  *text = action->record.error.empty() ? nullptr : action->record.error.c_str();
  return 0;
}
int twaction_set_last_error(twaction *action, const char *text) noexcept {
  if (!action) return -EINVAL;
  return guarded([&] {
    if (text)
      action->record.error.assign(text, cut_length(text, TWACTION_ERROR_MAX));
    else
      action->record.error.clear();
    return 0;
  });
}

const char *twaction_get_node(const twaction *action) noexcept {
  return action ? action->record.node.c_str() : nullptr;
}
std::int64_t twaction_get_created_ms(const twaction *action) noexcept {
  return action ? action->record.created_ms : 0;
}
std::int64_t twaction_get_changed_ms(const twaction *action) noexcept {
  return action ? action->record.changed_ms : 0;
}

int twaction_store(twaction *action) noexcept {
  if (!action) return -EINVAL;
  return guarded([&] {
    if (action->id == 0) return store_new(*action);
    const int result = update(action->id, action->record, [&](Record &stored) {
      if (stored.revision != action->record.revision) return -ESTALE;
      stored = action->record;
      return 0;
    });
    return result == -ENOENT ? -ESTALE : result;
  });
}

int twaction_associate_node(std::uint64_t id, const char *node) noexcept {
  if (!fits(node, TWACTION_NODE_MAX)) return -EINVAL;
  Record ignored;
  return update(id, ignored, [&](Record &stored) {
    stored.node = node;
    return 0;
  });
}

int twaction_get_for_node(const char *node, const char *queue_name, twaction **action) noexcept {
  if (!fits(node, TWACTION_NODE_MAX) || !fits(queue_name, TWACTION_QUEUE_NAME_MAX) || !action) return -EINVAL;
  return fetch(action,
               [&](const Table &table, std::uint64_t &id) { return table.find(node, queue_name, id); });
}

int twaction_get_by_id(std::uint64_t id, twaction **action) noexcept {
  if (!action) return -EINVAL;
  return fetch(action, [&](const Table &, std::uint64_t &wanted) {
    wanted = id;
    return 0;
  });
}

int twaction_visit(const char *queue_name, twaction_visitor visit, void *context) noexcept {
  if (!visit) return -EINVAL;
  return guarded([&] {
    twlmdb::Snapshot snapshot;  // so that `visit` may store
    if (const int result = actions.take(snapshot)) return result;
    twlmdb::Access access;
    if (const int result = snapshot.use(access)) return result == -ENOENT ? 0 : result;
    const Table table(access);
    std::vector<std::uint64_t> ids;
    if (const int result = table.list(ids)) return result;
    for (const std::uint64_t id : ids) {
      twaction action{id, {}};
      if (const int result = table.get(id, action.record)) return result;
      if (queue_name && action.record.queue != queue_name) continue;
      if (const int result = visit(context, &action)) return result;
    }
    return 0;
  });
}

int twaction_remove(std::uint64_t id) noexcept {
  return actions.write([&](const twlmdb::Access &access) { return Table(access).remove(id); });
}
