// A process with little address space, few descriptors or a limit on its files.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>

#include "child.hpp"
#include "ledger.hpp"
#include "limits.hpp"
#include "opened.hpp"
#include "scratch.hpp"

using namespace trial;

namespace {

constexpr rlim_t kMiB = 1024 * 1024;

class Limits : public testing::Test {
 protected:
  Limits() { ledger::create(open_store(path_, CFG_OPEN_CREATE).get()); }
  Scratch scratch_;
  const std::string path_ = scratch_.store();
};

}  // namespace

TEST_F(Limits, LittleAddressSpaceMeansAWorkingStoreOrAClearRefusal) {
  if (kSanitized) GTEST_SKIP() << "a sanitizer reserves more address space than any such limit allows";
  for (rlim_t room : {kMiB / 4, 2 * kMiB, 16 * kMiB, 64 * kMiB, 256 * kMiB}) {
    const std::string outcome = in_child([&]() -> std::string {
      limit(RLIMIT_AS, address_space_in_use() + room);
      cfg_failure failure{};
      const Opened store(cfg_open(path_.c_str(), 0, &failure));
      if (!store) return failure.code == CFG_E_MEMORY && failure.text[0] ? "refused" : failure.text;
      for (uint32_t i = 0; i < 20; ++i)
        if (std::string problem = ledger::move_and_commit(store.get(), i); !problem.empty()) return problem;
      return ledger::check(store.get());
    });
    EXPECT_TRUE(outcome.empty() || outcome == "refused") << room / 1024 << " kB of room: " << outcome;
    std::printf("%lu kB of room: %s\n", static_cast<unsigned long>(room / 1024),
                outcome.empty() ? "works" : outcome.c_str());
  }
}

TEST_F(Limits, WithoutADescriptorLeftOpeningFailsClearlyAndWorksLater) {
  if (kSanitized)
    GTEST_SKIP() << "a sanitizer asks through a pipe what memory it may look at, which takes descriptors";
  EXPECT_EQ(in_child([this]() -> std::string {
              limit(RLIMIT_NOFILE, 64);
              int last = -1;
              for (int next; (next = open("/dev/null", O_RDONLY)) >= 0;) last = next;
              for (; last > 0; --last) {  // one descriptor more each time, until it is enough
                cfg_failure failure{};
                const Opened store(cfg_open(path_.c_str(), 0, &failure));
                if (store) return ledger::move_and_commit(store.get(), 1);
                if (failure.code == CFG_E_CORRUPT || failure.code == CFG_OK || !failure.text[0])
                  return std::string(cfg_code_text(failure.code)) + ": " + failure.text;
                close(last);
              }
              return "never enough descriptors";
            }),
            "");
  EXPECT_EQ(ledger::check(open_store(path_).get()), "");
}

TEST_F(Limits, AFileSizeLimitFailsTheCommitAndHarmsNothing) {
  EXPECT_EQ(in_child([this]() -> std::string {
              std::signal(SIGXFSZ, SIG_IGN);
              limit(RLIMIT_FSIZE, kMiB);
              const Opened store = open_store(path_);
              if (!cfg_map_set_string(store.get(), cfg_root(store.get()), "big",
                                      std::string(2 * kMiB, 'b').c_str()))
                return "edit: " + explain(store.get());
              if (cfg_commit(store.get(), nullptr)) return "a commit beyond the limit succeeded";
              if (cfg_error_code(store.get()) != CFG_E_NO_SPACE && cfg_error_code(store.get()) != CFG_E_IO)
                return explain(store.get());
              if (!cfg_has_changes(store.get())) return "the edit is gone";
              cfg_abandon(store.get());
              if (std::string problem = ledger::move_and_commit(store.get(), 1); !problem.empty())
                return problem;
              return problems(store.get());
            }),
            "");
  const Opened store = open_store(path_);
  EXPECT_EQ(ledger::moves(store.get()), 1);
  EXPECT_EQ(ledger::check(store.get()), "");
}
