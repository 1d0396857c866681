#include "value.hpp"

#include <cstring>

namespace twinfod {
namespace {

// Processes of two versions of this library may run side by side while an update is installed.
constexpr char kVersion = 1;
constexpr std::size_t kHead = sizeof(kVersion) + sizeof(Value::time_ms) + sizeof(Value::kind);

}  // namespace

std::string pack(const Value &value) {
  std::string stored(kHead, kVersion);
  std::memcpy(&stored[1], &value.time_ms, sizeof value.time_ms);
  std::memcpy(&stored[1 + sizeof value.time_ms], &value.kind, sizeof value.kind);
  stored.append(value.text);
  stored.push_back('\0');
  return stored;
}

bool unpack(const MDB_val &stored, Value &value) noexcept {
  const char *bytes = static_cast<const char *>(stored.mv_data);
  if (stored.mv_size <= kHead || bytes[0] != kVersion || bytes[stored.mv_size - 1] != '\0') return false;
  std::memcpy(&value.time_ms, bytes + 1, sizeof value.time_ms);
  std::memcpy(&value.kind, bytes + 1 + sizeof value.time_ms, sizeof value.kind);
  value.text = {bytes + kHead, stored.mv_size - kHead - 1};
  return true;
}

}  // namespace twinfod
