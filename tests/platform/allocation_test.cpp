// Memory that runs out, for twmisc and twlog.
#include <twlog.h>
#include <twmisc.h>

#include <cstdlib>
#include <cstring>
#include <string>

#include "allocation/plain_sweep.hpp"

namespace {

constexpr char kLong[] = "a text that is too long for the space within a string object";

TEST(EveryRefusedAllocation, LeavesTheStringThatWasToBeReplaced) {
  EXPECT_GT(allocation::plain_sweep([] {
              char *text = strdup("kept");
              const int replaced = allocation::with_refusals(
                  [&] { return twmisc_replace_heap_string(&text, "%s %s", kLong, kLong); });
              EXPECT_EQ(text, replaced ? std::string(kLong) + " " + kLong : "kept");
              std::free(text);
              return replaced == 1;
            }),
            0);
}

TEST(Logging, NeedsNoAllocation) {
  EXPECT_EQ(allocation::plain_sweep([] {
              return allocation::with_refusals([] {
                twlog_log_prio_codepos("src/users", "f", 1, 3, "no memory is needed for %s", kLong);
                return true;
              });
            }),
            0);
}

}  // namespace
