// That the sweeps notice what they are made for: the allocator refuses on every layer, and a call that takes
// no notice of it is found out.
#include <gtest/gtest-spi.h>
#include <openssl/bio.h>

#include <cstring>
#include <memory>

#include "allocation/sweep.hpp"

namespace allocation {
namespace {

template <class Call>
bool refuses(Call call) {
  refuse(1, Behind::refused);
  call();
  return stop_refusing();
}

TEST(FailingAllocator, RefusesTheLibrariesAndThoseTheyUse) {
  World world;
  EXPECT_TRUE(refuses([&] { EXPECT_EQ(cfg_new_node(world.store), nullptr); })) << "operator new";
  EXPECT_TRUE(refuses([&] { EXPECT_EQ(cfg_enrollment_get_status(world.enrollment), nullptr); }))
      << "strdup()";
  EXPECT_TRUE(refuses([&] { EXPECT_EQ(BIO_new(BIO_s_mem()), nullptr); })) << "OpenSSL";
  EXPECT_TRUE(refuses([&] { EXPECT_EQ(cfg_open("nowhere", 0, nullptr), nullptr); })) << "the store";
}

TEST(FailingAllocator, GrantsWhatComesBehindUnlessTold) {
  for (const Behind behind : {Behind::granted, Behind::refused}) {
    refuse(2, behind);
    const std::unique_ptr<char, decltype(&std::free)> first(strdup("1"), std::free),
        second(strdup("2"), std::free), third(strdup("3"), std::free);
    EXPECT_TRUE(stop_refusing());
    EXPECT_NE(first, nullptr);
    EXPECT_EQ(second, nullptr);
    EXPECT_EQ(third != nullptr, behind == Behind::granted);
  }
}

TEST(Sweep, FindsACallThatHalfSucceeds) {
  const auto half_done = [](World &world) {
    char *copy = strdup(kNew);
    const int done = cfg_node_set_approved(world.node, 0);
    return std::pair{done, copy};
  };
  EXPECT_NONFATAL_FAILURE(sweep({Behind::granted}, half_done,
                                [](World &, std::pair<int, char *> result) {
                                  const bool whole = result.first == 1 && result.second;
                                  EXPECT_TRUE(whole || result.first == 0);
                                  std::free(result.second);
                                  return whole;
                                }),
                          "whole || result.first == 0");
}

// Writes where it should have allocated.
__attribute__((noinline)) int unchecked() {
  auto *memory = static_cast<volatile char *>(std::malloc(16));
  memory[0] = 'x';
  std::free(const_cast<char *>(memory));
  return 1;
}

TEST(SweepDeathTest, FindsAnAllocationThatIsNotChecked) {
  EXPECT_DEATH(sweep([](World &) { return unchecked(); }, gives(1)), "");
}

}  // namespace
}  // namespace allocation
