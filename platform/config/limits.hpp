// What the store accepts. Sizes from files and callers are held against these before anything is allocated.
#pragma once

#include <cstddef>
#include <cstdint>

namespace twcfg {

inline constexpr std::size_t kMaxKey = 255;            // bytes of a map key
inline constexpr std::size_t kMaxValue = 16u << 20;    // bytes of a string or blob
inline constexpr std::size_t kMaxId = 4096;            // bytes of an element's ID, and of a reference to one
inline constexpr std::size_t kMaxPath = 1024;          // bytes of a dotted path
inline constexpr int kMaxDepth = 64;                   // nesting of elements
inline constexpr std::size_t kMaxRecord = 256u << 20;  // bytes of one stored record
inline constexpr std::uint32_t kMaxNumber = 0x7fffffff;  // highest number of a list entry
inline constexpr std::size_t kMaxShapeKeys = 64;         // maps with more keys spell them out
inline constexpr std::size_t kMaxMapKeys = 16384;        // keeps a map affordable to read and to change
inline constexpr std::uint32_t kMaxShapes = 1u << 16;  // beyond this, new kinds of maps spell their keys out
inline constexpr std::size_t kRecordTarget = 1900;     // above this, lists move into records of their own
inline constexpr std::size_t kWorthMoving = 256;       // of a list: below this, one costs more than it saves

}  // namespace twcfg
