// The memory that Jansson holds: how much of it is still there after a call.
#ifndef TW_TESTS_JANSSON_BLOCKS_HPP
#define TW_TESTS_JANSSON_BLOCKS_HPP

#include <cstddef>

namespace search_service {

// While this lives, all of Jansson's blocks are counted. What is left at the end is given back. One at a
// time.
class JanssonBlocks {
 public:
  JanssonBlocks();
  ~JanssonBlocks();
  JanssonBlocks(const JanssonBlocks &) = delete;
  JanssonBlocks &operator=(const JanssonBlocks &) = delete;

  std::size_t held() const;
};

// The blocks of what a hello that could not be sent leaves behind: the message without its "data".
std::size_t blocks_of_an_unsent_hello();

}  // namespace search_service

#endif
