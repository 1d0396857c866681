// Small steps that most tests take: making, reading and writing down trees through the public calls.
#pragma once

#include <twconfig.h>

#include <cstdint>
#include <map>
#include <string>
#include <vector>

// What a reading helper gives for something that is not there.
inline constexpr const char *kNothing = "<nothing>";

// Takes over a heap string.
std::string take(char *heap);
// The element's present ID, or kNothing.
std::string id_of(cfg_elem *elem);
// The text that the handle itself reads as.
inline const char *text_of(cfg_elem *elem) { return reinterpret_cast<const char *>(elem); }
// Whether an ID is a provisional one.
inline bool provisional(const std::string &id) { return !id.empty() && id.front() == '{'; }
// The number at the end of a committed list entry's ID; -1 for other IDs.
std::int64_t number_of(const std::string &id);

std::string string_at(cfg *store, cfg_elem *map, const char *key);
std::string reference_at(cfg *store, cfg_elem *map, const char *key);
std::int64_t int_at(cfg *store, cfg_elem *map, const char *key);  // INT64_MIN when there is none
std::vector<std::string> keys_of(cfg_elem *map);                  // sorted
int size_of(cfg_elem *list);                                      // -1 on failure
int pending_size_of(cfg_elem *list);                              // -1 on failure
std::vector<std::string> ids_in(cfg_elem *list);                  // of the committed entries
std::vector<std::string> pending_ids_in(cfg_elem *list);
// The strings under "name" of a list's committed map entries.
std::vector<std::string> names_in(cfg *store, cfg_elem *list);

// Make the maps of a dotted path that are missing and put an empty map or list under its last key. The
// result is the one that the store gives for the path; NULL on failure.
cfg_elem *make_map(cfg *store, const std::string &path);
cfg_elem *make_list(cfg *store, const std::string &path);
// An empty map or list under a literal key of a map.
cfg_elem *put_map(cfg *store, cfg_elem *map, const char *key);
cfg_elem *put_list(cfg *store, cfg_elem *map, const char *key);
// Appends a pending map entry that holds "name"; NULL on failure.
cfg_elem *append_named(cfg *store, cfg_elem *list, const std::string &name);
// Appends a pending string entry.
cfg_elem *append_string(cfg *store, cfg_elem *list, const std::string &value);

// Writes a value down: its kind, its content, the IDs of list entries; equal texts are equal trees.
std::string dump(cfg *store, cfg_elem *elem);
inline std::string dump(cfg *store) { return dump(store, cfg_root(store)); }

// A key set of these keys. A store handle knows key sets by their address, so that each lives until the end.
const cfg_keyset &keyset_of(const std::vector<std::string> &keys);

// Walks the whole tree and checks what holds for every element: the ways to reach it agree, its ID names it
// and nothing else, its parent is the one it was found in, bulk reads give what plain reads give. Gives every
// element's kind by ID.
std::map<std::string, cfg_kind> check_tree(cfg *store);

// The whole-store text; empty on failure.
std::string export_text(cfg *store);
// Imports a text in pieces of `piece` bytes.
int import_text(cfg *store, const std::string &text, size_t piece = 4096);
