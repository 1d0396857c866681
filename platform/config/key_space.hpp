// Which engine keys hold what. The upper half of a key names a space, the lower half an item in it.
#pragma once

#include "engine/engine.hpp"

namespace twcfg {

inline constexpr std::uint32_t kSystemSpace = 0;
inline constexpr std::uint32_t kShapeSpace = 1;
inline constexpr std::uint32_t kFirstList = 16;  // list numbers begin here; list n's entries stand in space n

constexpr Key make_key(std::uint32_t space, std::uint32_t item) {
  return (static_cast<Key>(space) << 32) | item;
}
constexpr std::uint32_t space_of(Key key) { return static_cast<std::uint32_t>(key >> 32); }
constexpr std::uint32_t item_of(Key key) { return static_cast<std::uint32_t>(key); }

inline constexpr Key kCountersKey = make_key(kSystemSpace, 0);  // next list number, next shape number
inline constexpr Key kRootKey = make_key(kSystemSpace, 1);      // the root map's record

// Entry numbers begin at 1; item 0 of a list's space is its head: next number and count.
constexpr Key head_key(std::uint32_t list) { return make_key(list, 0); }

}  // namespace twcfg
