// How element IDs are spelled.
//
// A child of a map is "<map ID>.<key>" (just "<key>" below the root). An entry of a list is the list's ID
// with all dots turned into underscores, a hyphen and its number. Inside an ID a key is escaped so that only
// a real entry has a raw hyphen in front of a digit and only a real step has a raw dot; that keeps IDs apart
// whatever the keys are. Paths, which the commit log uses, are spelled the same way but mark an entry as
// "[n]": "nodes[5].ssh.port".
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace twcfg {

inline constexpr const char *kRootId = ".";

// Whether it is the ID of a new element, or of something below one.
inline bool is_provisional(std::string_view id) { return id.starts_with('{'); }

// A byte that must not stand as it is: "~" and two hex digits; and a text with such bytes as it was. The
// second returns false for a "~" that is not followed by two digits.
void append_escaped(std::string &out, char byte);
bool read_escaped(std::string_view text, std::string &bytes);

// A key as it stands in IDs and paths; and back. unescape_key() returns false for an impossible spelling.
std::string escape_key(std::string_view key);
bool unescape_key(std::string_view text, std::string &key);

// The ID of a list as the front part of its entries' IDs.
std::string flatten(std::string_view id);
void append_flat(std::string &out, std::string_view id);

// Splits "<front>-<number>" at its last hyphen. False when `id` is not spelled like an entry's ID.
bool split_entry(std::string_view id, std::string_view &front, std::uint32_t &number);

// The ID that belongs to a path of the commit log.
std::string path_to_id(std::string_view path);

}  // namespace twcfg
