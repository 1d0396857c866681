#include <twinfod.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <new>

#include "value.hpp"

struct infod_multiple {
  twlmdb::Snapshot snapshot;
};

namespace {

// Made when the library is loaded: a child that is forked while another thread makes it would wait for that
// thread for ever. Never destroyed: threads may still read while the process ends.
alignas(twlmdb::SharedFile) char place[sizeof(twlmdb::SharedFile)];
twlmdb::SharedFile &state =
    *new (place) twlmdb::SharedFile({"TW_INFOD_DIR", "/run/twinfod", "state.mdb", std::size_t{256} << 20U});

MDB_val stored_key(const char *key) { return twlmdb::bytes_of(key, std::strlen(key)); }

bool is_key(const char *key) {
  if (!key) return false;
  const std::size_t length = strnlen(key, INFOD_KEY_MAX + 1);
  return length > 0 && length <= INFOD_KEY_MAX;
}

int get(const twlmdb::Access &access, const char *key, char **text, std::int64_t *time_ms) {
  MDB_val stored{};
  if (const int result = access.get(stored_key(key), stored)) return result;
  twinfod::Value value{};
  if (!twinfod::unpack(stored, value)) return -EBADMSG;
  auto *copy = static_cast<char *>(std::malloc(value.text.size() + 1));
  if (!copy) return -ENOMEM;
  std::memcpy(copy, value.text.data(), value.text.size() + 1);
  *text = copy;
  if (time_ms) *time_ms = value.time_ms;
  return 0;
}

}  // namespace

int infod_push_text(const char *key, const char *text, int32_t kind) noexcept {
  if (!is_key(key) || !text || strnlen(text, INFOD_TEXT_MAX + 1) > INFOD_TEXT_MAX) return -EINVAL;
  return state.write([&](const twlmdb::Access &access) {
    // Within the write, so that of two values the newer has the newer time.
    const std::string stored = twinfod::pack({twlmdb::now_ms(), kind, text});
    return access.put(stored_key(key), twlmdb::bytes_of(stored.data(), stored.size()));
  });
}

int infod_get_extended(const char *key, char **text, int64_t *time_ms) noexcept {
  if (!is_key(key) || !text) return -EINVAL;
  return state.read([&](const twlmdb::Access &access) { return get(access, key, text, time_ms); });
}

infod_multiple *infod_get_multiple_start() noexcept {
  auto *multiple = new (std::nothrow) infod_multiple;
  if (multiple && state.take(multiple->snapshot) != 0) {
    delete multiple;
    return nullptr;
  }
  return multiple;
}

int infod_get_multiple_extended(infod_multiple *multiple, const char *key, char **text,
                                int64_t *time_ms) noexcept {
  if (!multiple || !is_key(key) || !text) return -EINVAL;
  twlmdb::Access access;
  if (const int result = multiple->snapshot.use(access)) return result;
  return get(access, key, text, time_ms);
}

void infod_get_multiple_end(infod_multiple *multiple) noexcept { delete multiple; }

int infod_visit(const char *prefix, infod_visitor visit, void *context) noexcept try {
  if (!prefix || !visit) return -EINVAL;
  twlmdb::Snapshot snapshot;  // so that `visit` may publish and read
  if (const int result = state.take(snapshot)) return result;
  twlmdb::Access access;
  if (const int result = snapshot.use(access)) return result == -ENOENT ? 0 : result;
  return access.scan(stored_key(prefix), [&](const MDB_val &stored_at, const MDB_val &stored) {
    twinfod::Value value{};
    if (!twinfod::unpack(stored, value)) return -EBADMSG;
    const std::string key(static_cast<const char *>(stored_at.mv_data), stored_at.mv_size);
    const infod_value found{key.c_str(), value.text.data(), value.kind, value.time_ms};
    return visit(context, &found);
  });
} catch (...) {
  return -ENOMEM;
}

int infod_remove(const char *prefix) noexcept {
  if (!is_key(prefix)) return -EINVAL;
  // Nothing is made or written where there is nothing to remove.
  const int found = infod_visit(
      prefix, [](void *, const infod_value *) { return 1; }, nullptr);
  if (found != 1) return found;
  return state.write([&](const twlmdb::Access &access) { return access.remove_all(stored_key(prefix)); });
}
