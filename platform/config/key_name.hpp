// Map keys, each kept once per handle, so that keys are compared by address.
#pragma once

#include <cstdint>
#include <deque>
#include <string>
#include <string_view>
#include <vector>

namespace twcfg {

struct KeyName {
  std::string text;
  std::uint32_t number;  // counts up from 0 in order of appearance
  std::string flat;      // as it stands in the IDs of the entries of a list that is found there
};

class KeyNames {
 public:
  KeyNames();
  // NULL when no map or edit of this handle has used the key yet.
  const KeyName *find(std::string_view text) const;
  const KeyName *intern(std::string_view text);

 private:
  std::size_t slot_of(std::string_view text) const;
  void grow();

  std::deque<KeyName> names_;  // addresses stay
  std::vector<const KeyName *> table_;
};

}  // namespace twcfg
