// Commits on a disk that fails.
#include <cerrno>
#include <utility>

#include "disk_faults.hpp"
#include "engine_fixture.hpp"

namespace twcfg::testing {
namespace {

class LmdbFaults : public ::testing::Test {
 protected:
  void SetUp() override { commit(*engine_, {set(1, "one")}); }

  CommitResult commit_with(DiskFault fault, int error) {
    const DiskFaultScope scope(fault, error);
    return commit(*engine_, {set(1, "two", 1), set(2, std::string(50'000, 'x'))}, "log", "token");
  }
  void expect_unchanged() {
    const auto snapshot = view(*engine_);
    EXPECT_EQ(snapshot->revision(), 1U);
    EXPECT_EQ(snapshot->get(1).bytes, "one");
    EXPECT_FALSE(snapshot->get(2));
    EXPECT_EQ(snapshot->find_token("token"), 0U);
  }

  TemporaryDirectory directory_;
  const std::string path_ = directory_ / "store";
  std::shared_ptr<Engine> engine_ = open_store(path_);
};

TEST_F(LmdbFaults, AFailureBeforeTheMetaPageChangesNothingAndPasses) {
  struct Case {
    DiskFault fault;
    int error;
    cfg_code code;
  };
  const Case cases[] = {
      {DiskFault::data_write, ENOSPC, CFG_E_NO_SPACE},
      {DiskFault::data_write, EDQUOT, CFG_E_NO_SPACE},
      {DiskFault::data_write, EIO, CFG_E_IO},
      {DiskFault::short_data_write, 0, CFG_E_IO},
      {DiskFault::flush, EIO, CFG_E_IO},
      {DiskFault::flush, ENOSPC, CFG_E_NO_SPACE},
  };
  for (const Case &one : cases) {
    const CommitResult result = commit_with(one.fault, one.error);
    EXPECT_EQ(result.failure.code, one.code) << result.failure.text;
    EXPECT_NE(result.failure.text.find(path_), std::string::npos) << result.failure.text;
    expect_unchanged();
  }
  EXPECT_EQ(commit_with(DiskFault::none, 0).revision, 2U);
  EXPECT_EQ(problems(*engine_), std::vector<std::string>());
}

TEST_F(LmdbFaults, AFailureOfTheMetaPageLeavesTheOutcomeUnknown) {
  auto snapshot = view(*engine_);
  const CommitResult result = commit_with(DiskFault::meta_write, EIO);
  EXPECT_EQ(result.failure.code, CFG_E_UNKNOWN) << result.failure.text;
  // What is open can be read on; nothing new is begun until the store is opened again.
  EXPECT_EQ(snapshot->get(1).bytes, "one");
  Failure failure;
  EXPECT_FALSE(engine_->snapshot(failure));
  EXPECT_EQ(failure.code, CFG_E_IO);
  EXPECT_EQ(commit(*engine_, {set(3, "three")}).failure.code, CFG_E_IO);
  snapshot.reset();
  engine_.reset();
  engine_ = open_store(path_, 0);
  expect_unchanged();
  EXPECT_EQ(commit_with(DiskFault::none, 0).revision, 2U);
  EXPECT_EQ(problems(*engine_), std::vector<std::string>());
}

}  // namespace
}  // namespace twcfg::testing
