// A published value as it stands in the file.
#pragma once

#include <twlmdb.hpp>

#include <cstdint>
#include <string>
#include <string_view>

namespace twinfod {

struct Value {
  std::int64_t time_ms;
  std::int32_t kind;
  std::string_view text;  // a NUL stands behind it
};

std::string pack(const Value &value);

// The text lies in `stored`. False for what was not made by pack().
bool unpack(const MDB_val &stored, Value &value) noexcept;

}  // namespace twinfod
