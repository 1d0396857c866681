#include "nodes/package_password.hpp"

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

namespace {

// The sequence as the C library itself draws it.
std::string drawn_with_rand(unsigned seed) {
  std::srand(seed);
  std::string password;
  for (int i = 0; i < 64; ++i) {
    const int r = std::rand() % 62;
    if (r < 26)
      password += static_cast<char>('a' + r);
    else if (r < 52)
      password += static_cast<char>('A' + (r - 26));
    else
      password += static_cast<char>('0' + (r - 52));
  }
  return password;
}

std::string made(time_t now) {
  tw::secret password;
  EXPECT_TRUE(tw::make_package_password(password, now));
  return password.c_str();
}

TEST(PackagePassword, IsWhatSrandAndRandGive) {
  for (unsigned seed : {0U, 1U, 2U, 61U, 62U, 2147483646U, 2147483647U, 2147483648U, 4294967295U})
    EXPECT_EQ(drawn_with_rand(seed), made(seed)) << seed;
  for (unsigned seed = 1700000000; seed < 1700002000; ++seed)
    ASSERT_EQ(drawn_with_rand(seed), made(seed)) << seed;
}

TEST(PackagePassword, TakesTheLow32BitsOfTheTimeAsSrandDoes) {
  EXPECT_EQ(drawn_with_rand(5), made((time_t{1} << 32) + 5));
}

TEST(PackagePassword, LeavesTheProcesssOwnGeneratorAlone) {
  std::srand(7);
  const int first = std::rand();
  const int second = std::rand();
  std::srand(7);
  EXPECT_EQ(first, std::rand());
  made(1234);
  EXPECT_EQ(second, std::rand());
}

TEST(PackagePassword, IsSharedWithinASecondAndDiffersInTheNext) {
  EXPECT_EQ(made(1700000000), made(1700000000));
  EXPECT_NE(made(1700000000), made(1700000001));
}

}  // namespace
