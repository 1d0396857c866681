// Two stores that are filled alike, one with a call for each new element and one with a call for each value:
// nobody can tell them apart, before a commit and after it.
#pragma once

#include <functional>

#include "fixture.hpp"
#include "recipe.hpp"
#include "tree.hpp"

// One of the two stores, with the way in which new elements get into it.
struct Filler {
  cfg *store = nullptr;
  bool whole = false;

  cfg_elem *append(cfg_elem *list, const Recipe &recipe) const {
    return whole ? cfg_append_content(store, list, Content(recipe)) : append_singly(store, list, recipe);
  }
  cfg_elem *append(const char *list, const Recipe &recipe) const { return append(at(list), recipe); }
  int put(cfg_elem *map, const char *key, const Recipe &recipe) const {
    return whole ? cfg_put_content(store, map, key, Content(recipe)) : put_singly(store, map, key, recipe);
  }
  cfg_elem *at(const char *id) const { return cfg_get_by_id(store, id); }
};

// Both hold the lists "nodes", with two entries, "certs" and "labels", and a map "map"; everything that they
// hold so far has been committed.
class TwinTest : public StoreTest {
 protected:
  void SetUp() override;

  using Step = std::function<void(const Filler &)>;
  // Does the same to both.
  void both(const Step &step);
  // Both read alike now, edit and store. This opens whatever was put down whole.
  void expect_alike();
  // Commits, having read nothing; both then hold and log the same.
  void commit_both();
  // Puts these into lists and maps of every sort and commits, having looked at the edit before or not.
  void expect_alike_everywhere(const std::vector<Recipe> &recipes);
  // Both commits are refused in the same words, and neither edit changes by that.
  void expect_refused(cfg_code code);

  Filler whole, single;
};

// Provisional IDs, which differ from store to store, read as "{}".
std::string without_provisional_ids(std::string text);
// An edit in words, without such IDs.
std::string edit_text(cfg *store);
// What a commit did, in words.
std::string log_text(cfg *store, std::uint64_t revision);
// How a text and the one that it should be differ, where they begin to: they are long.
::testing::AssertionResult same_text(const std::string &text, const std::string &expected);
