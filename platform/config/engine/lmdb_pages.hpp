// LMDB's data file, page by page: what is checked before LMDB, which trusts its file, is let near it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "engine/engine.hpp"

namespace twcfg {

// One of the two trees of a data file, as a meta page describes it.
struct PageTree {
  std::uint64_t root = 0;
  std::uint64_t entries = 0;
  std::uint16_t flags = 0;
  std::uint16_t depth = 0;
};

// A meta page: one committed state of the file.
struct MetaPage {
  std::uint64_t transaction = 0;
  std::uint64_t last_page = 0;
  std::size_t page_size = 0;
  PageTree free_pages;
  PageTree records;
};

// Reads and checks both meta pages and that the file holds every page which the newer one counts, which it
// returns in `newest`. `path` is for texts.
Failure check_meta_pages(int file, const std::string &path, MetaPage &newest);

// Walks every page of the state that transaction `transaction` left, which a read transaction of the caller
// keeps from being overwritten, and reports what is wrong. False when the state's meta page is gone because
// two commits have been made since: the caller tries again with a newer one.
bool check_all_pages(int file, std::uint64_t transaction, const Engine::Problem &problem);

}  // namespace twcfg
