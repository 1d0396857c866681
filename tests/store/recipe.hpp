// What a new element is to hold, and the two ways to make it: by one call for all of it, or by a call for
// each value.
#pragma once

#include <twconfig.h>

#include <cstdint>
#include <deque>
#include <string>
#include <utility>
#include <vector>

struct Recipe {
  cfg_kind kind = CFG_NONE;  // CFG_NONE: a key of the set that this map does not have
  std::string data = {};     // of a string, reference or blob
  std::int32_t number = 0;   // of an integer or boolean
  std::vector<std::string> keys = {};
  std::vector<Recipe> items = {};  // of a map: one for each key; of a list: its entries
};

Recipe text(std::string value);
Recipe blob(std::string bytes);
Recipe refer(std::string id);
Recipe integer(std::int32_t value);
Recipe boolean(bool value);
Recipe list_of(std::vector<Recipe> entries);
Recipe map_of(std::vector<std::pair<std::string, Recipe>> values);
inline Recipe named(const std::string &name) { return map_of({{"name", text(name)}}); }

// A recipe as the content that one call takes. The recipe must outlive it, unlike the content.
class Content {
 public:
  explicit Content(const Recipe &recipe) : top_(make(recipe)) {}
  const cfg_content *get() const { return &top_; }
  operator const cfg_content *() const { return &top_; }

 private:
  cfg_content make(const Recipe &recipe);
  std::deque<std::vector<cfg_content>> items_;  // before `top_`, which is made with them
  cfg_content top_;
};

// An unattached element, made call by call. Lists can hold no integers, booleans and blobs then.
cfg_elem *make_singly(cfg *store, const Recipe &recipe);
// Appends a pending entry call by call.
cfg_elem *append_singly(cfg *store, cfg_elem *list, const Recipe &recipe);
// Puts one value under a key, whatever it is.
int put_singly(cfg *store, cfg_elem *map, const std::string &key, const Recipe &recipe);
