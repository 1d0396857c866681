#include "engine/lmdb_format.hpp"

#include <cstring>

#include "engine/records.hpp"

namespace twcfg {
namespace {

constexpr std::string_view kMagic = "twconfig";
constexpr std::uint64_t kFormatSlot = slot_of(Area::meta, 0);

}  // namespace

void write_format(WritableTable &table, std::uint32_t version) {
  char bytes[sizeof version];
  std::memcpy(bytes, &version, sizeof version);
  table.put(kFormatSlot, {kMagic, {bytes, sizeof bytes}});
}

Failure check_format(Table &table, const std::string &path) {
  std::uint32_t version = 0;
  const auto record = table.get(kFormatSlot);
  if (!record || record->size() != kMagic.size() + sizeof version || !record->starts_with(kMagic))
    return {CFG_E_CORRUPT, path + ": this is not the data file of a configuration store"};
  std::memcpy(&version, record->data() + kMagic.size(), sizeof version);
  if (version > kFormatVersion)
    return {CFG_E_VERSION, path + ": written in format " + std::to_string(version) +
                               "; this library knows formats up to " + std::to_string(kFormatVersion)};
  if (version == 0) return {CFG_E_CORRUPT, path + ": the format version is 0"};
  return {};
}

}  // namespace twcfg
