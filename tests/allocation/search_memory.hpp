// What calls that ask the search service leave behind in Jansson.
#ifndef TW_TESTS_ALLOCATION_SEARCH_MEMORY_HPP
#define TW_TESTS_ALLOCATION_SEARCH_MEMORY_HPP

#include <gtest/gtest.h>

#include <memory>

#include "search_service/jansson_blocks.hpp"

namespace allocation {

// Jansson's memory during one sweep, looked at after each call. A hello that could not be sent leaves its
// outer object behind, and nothing else ever stays.
class SearchMemory {
 public:
  void judge() {
    const std::size_t held = blocks_->held();
    if (held != 0) EXPECT_EQ(held, unsent_hello_);
    blocks_.reset();
    blocks_ = std::make_unique<search_service::JanssonBlocks>();
  }

 private:
  std::size_t unsent_hello_ = search_service::blocks_of_an_unsent_hello();
  std::unique_ptr<search_service::JanssonBlocks> blocks_ = std::make_unique<search_service::JanssonBlocks>();
};

}  // namespace allocation

#endif
