// Sees what is wiped from memory.
#ifndef TW_TESTS_RECORDS_HTTPS_WIPING_HPP
#define TW_TESTS_RECORDS_HTTPS_WIPING_HPP

#include <string_view>

namespace records {

/** Looks, for as long as it lives, whether one text is wiped. */
class WipingWatch {
 public:
  explicit WipingWatch(std::string_view text);
  ~WipingWatch();
  WipingWatch(const WipingWatch &) = delete;
  WipingWatch &operator=(const WipingWatch &) = delete;

  /** How many blocks that held the text were wiped. */
  int count() const;
};

}  // namespace records

#endif
