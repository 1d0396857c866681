// A stored action, and the bytes that it is kept as.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace twjobs {

struct Record {
  std::int32_t state = 0;
  std::uint32_t revision = 0;  // counts how often it was stored
  std::int64_t created_ms = 0;
  std::int64_t changed_ms = 0;
  std::string node;
  std::string queue;
  std::string error;
};

std::string pack(const Record &record);

// False for what was not made by pack().
bool unpack(std::string_view bytes, Record &record);

}  // namespace twjobs
