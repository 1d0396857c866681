// A store that outgrows the address space which a process can reserve for it.
#include <gtest/gtest.h>

#include <cstdio>
#include <vector>

#include "child.hpp"
#include "ledger.hpp"
#include "limits.hpp"
#include "opened.hpp"
#include "scratch.hpp"

using namespace trial;

namespace {

constexpr uint64_t kMiB = 1024 * 1024;
constexpr uint64_t kBlock = 8 * kMiB;
// What the process with little address space has for everything.
constexpr rlim_t kRoom = 240 * kMiB;

bool add_block(cfg *edit) {
  const std::vector<char> block(kBlock, 'z');
  cfg_elem *entry = append_number(edit, "ballast", "number", 0);
  return cfg_map_set_blob(edit, entry, "block", block.data(), block.size()) != 0;
}

// Adds blocks until a commit is refused, which must leave the edit; returns a complaint or "".
std::string fill_up(cfg *store, uint64_t &reserved) {
  cfg_status_info status{};
  if (!cfg_status(store, &status)) return "status: " + explain(store);
  reserved = status.map_bytes;
  for (uint64_t written = 0; written < 2 * kRoom; written += kBlock) {
    if (!add_block(store)) return "edit: " + explain(store);
    if (cfg_commit(store, nullptr)) continue;
    const cfg_code code = cfg_error_code(store);
    if (code != CFG_E_NO_SPACE && code != CFG_E_MEMORY) return "refused: " + explain(store);
    if (!cfg_has_changes(store)) return "the edit is gone";
    cfg_abandon(store);
    return "";
  }
  return "twice the room was not enough to fill it";
}

}  // namespace

TEST(MapGrowth, AProcessWithLittleAddressSpaceFailsCleanlyWhereOthersGoOn) {
  if (kSanitized) GTEST_SKIP() << "a sanitizer reserves more address space than any such limit allows";
  const Scratch scratch;
  const std::string path = scratch.store();
  Child small([&](Line &parent) -> std::string {
    if (!parent.wait()) return "no word";
    limit(RLIMIT_AS, address_space_in_use() + kRoom);
    Opened store = open_store(path);
    uint64_t reserved = 0;
    if (std::string problem = fill_up(store.get(), reserved); !problem.empty()) return problem;
    if (std::string problem = ledger::check(store.get()); !problem.empty())
      return "after the refusal: " + problem;
    parent.say(std::to_string(reserved));
    if (!parent.wait()) return "no word";
    // The store is now larger than this process's reservation: it can be read again, or the reason is told.
    if (cfg_refresh(store.get())) {
      const std::string problem = ledger::check(store.get());
      if (problem.empty()) return "";
    }
    const cfg_code code = cfg_error_code(store.get());
    return code == CFG_E_NO_SPACE || code == CFG_E_MEMORY ? "" : "grown: " + explain(store.get());
  });
  const Opened store = open_store(path, CFG_OPEN_CREATE);
  ledger::create(store.get());
  commit_now(store.get(), [](cfg *edit) { return add_list(edit, "ballast"); });
  std::string reserved;
  ASSERT_TRUE(small.line().say("go"));
  ASSERT_TRUE(small.line().hear(reserved)) << small.finish();
  ASSERT_TRUE(cfg_refresh(store.get()));
  const int blocks = list_size(store.get(), "ballast");
  std::printf("%s bytes reserved, %d blocks fitted\n", reserved.c_str(), blocks);
  EXPECT_GT(blocks, 0);
  for (int i = 0; i < 4; ++i) commit_now(store.get(), add_block);
  ASSERT_TRUE(small.line().say("go"));
  EXPECT_EQ(small.finish(), "");
  EXPECT_EQ(list_size(store.get(), "ballast"), blocks + 4);
  EXPECT_EQ(ledger::move_and_commit(store.get(), 1), "");
  EXPECT_EQ(ledger::check(store.get()), "");
}
