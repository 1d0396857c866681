// The system calls behind a password's hash, for a test to answer in the system's place.
#ifndef TW_TESTS_RECORDS_ACCESS_SYSTEM_CALLS_HPP
#define TW_TESTS_RECORDS_ACCESS_SYSTEM_CALLS_HPP

#include <cstddef>
#include <string>

namespace records {

// What "/dev/urandom" is as long as this lives.
class RandomSource {
 public:
  enum Kind { missing, unreadable, ended, bytes };
  explicit RandomSource(Kind kind, std::string content = "", std::size_t at_once = 12);
  ~RandomSource();
  RandomSource(const RandomSource &) = delete;
  RandomSource &operator=(const RandomSource &) = delete;
};

// Whether all that crypt() last worked on was overwritten behind it.
bool crypt_work_was_wiped();

}  // namespace records

#endif
