// What stands in OpenSSL's place where it is to run out of memory.
#ifndef TW_TESTS_ALLOCATION_READY_KEY_HPP
#define TW_TESTS_ALLOCATION_READY_KEY_HPP

#include "allocation/sweep.hpp"

namespace allocation {

// A key that is generated once and then, for as long as this lives, taken for every new RSA key: generating
// allocates thousands of times and never as often as the last time, so that what comes after it would be
// refused by chance only.
class ReadyKey {
 public:
  ReadyKey();
  ~ReadyKey();
  ReadyKey(const ReadyKey &) = delete;
  ReadyKey &operator=(const ReadyKey &) = delete;
};

// OpenSSL allocates thousands of times where it generates, signs or parses: of its allocations these are
// samples. Those of the library and of the store are refused one by one; there are more than `own` of them.
template <class Call, class Verdict, class Prepare = void (*)(World &)>
void sample_openssl(long own, Call call, Verdict succeeded, Prepare prepare = as_it_is) {
  const ReadyKey key;
  warm_up(call, succeeded, prepare);
  EXPECT_GT(sweep({Behind::granted, Whose::not_openssls}, call, succeeded, prepare), own);
  EXPECT_GT(sweep({Behind::refused, Whose::not_openssls}, call, succeeded, prepare), own);
  const auto eleventh = [](long n) { return n + 11; };
  const auto thirteenth = [](long n) { return n + 13; };
  EXPECT_GT(sweep({Behind::granted, Whose::everybodys, eleventh}, call, succeeded, prepare), 20);
  EXPECT_GT(sweep({Behind::refused, Whose::everybodys, thirteenth}, call, succeeded, prepare), 20);
}

}  // namespace allocation

#endif
