// The record that says that a data file is a configuration store, and of which format.
#pragma once

#include <string>

#include "engine/engine.hpp"
#include "engine/table.hpp"

namespace twcfg {

inline constexpr std::uint32_t kFormatVersion = 1;

void write_format(WritableTable &table, std::uint32_t version = kFormatVersion);
// CFG_E_CORRUPT when the record is missing or foreign, CFG_E_VERSION when it is of a newer format.
Failure check_format(Table &table, const std::string &path);

}  // namespace twcfg
