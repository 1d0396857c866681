// What one transaction of a storage engine offers to the rules that all engines share.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <optional>
#include <string_view>

namespace twcfg {

// An ordered map from 64-bit slots to bytes. Reading. Views stay valid until the table is changed.
class Table {
 public:
  struct Entry {
    std::uint64_t slot = 0;
    std::string_view bytes;
  };
  virtual ~Table() = default;
  virtual std::optional<std::string_view> get(std::uint64_t slot) = 0;
  // The first entry at or above `at_least`; nothing when there is none.
  virtual std::optional<Entry> seek(std::uint64_t at_least) = 0;
  virtual std::optional<Entry> last() = 0;
};

class WritableTable : public Table {
 public:
  // Stores the parts one behind the other.
  virtual void put(std::uint64_t slot, std::initializer_list<std::string_view> parts) = 0;
  // The same for a slot above all others.
  virtual void append(std::uint64_t slot, std::initializer_list<std::string_view> parts) = 0;
  virtual void erase(std::uint64_t slot) = 0;
};

}  // namespace twcfg
