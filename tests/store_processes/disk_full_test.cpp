// A disk that fills up. Everything happens in a child with a small file system of its own.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "child.hpp"
#include "ledger.hpp"
#include "opened.hpp"
#include "scratch.hpp"
#include "tiny_disk.hpp"

using namespace trial;

namespace {

constexpr const char *kDiskSize = "4m";
const std::string kBigText(256 * 1024, 'x');

class DiskFull : public testing::Test {
 protected:
  void SetUp() override {
    const std::string reason = in_child([this] { return mount_tiny_disk(disk_, kDiskSize); });
    if (!reason.empty()) GTEST_SKIP() << "cannot mount a small file system here: " << reason;
  }

  // Runs a body in a child whose disk is small.
  std::string on_tiny_disk(const std::function<std::string()> &body) {
    return in_child([&]() -> std::string {
      if (std::string problem = mount_tiny_disk(disk_, kDiskSize); !problem.empty()) return problem;
      return body();
    });
  }

  // Adds what does not fit on a full disk to the edit.
  static bool add_big_text(cfg *edit) {
    return cfg_map_set_string(edit, cfg_root(edit), "big", kBigText.c_str()) != 0;
  }

  static std::string check_big_text(cfg *store) {
    char *text = nullptr;
    if (!cfg_map_get_string(store, cfg_root(store), "big", &text)) return "big text: " + explain(store);
    const bool same = kBigText == text;
    free(text);
    return same ? "" : "the big text is another";
  }

  static std::string check_whole(cfg *store, int moves) {
    if (ledger::moves(store) != moves) return std::to_string(ledger::moves(store)) + " moves";
    if (std::string problem = ledger::check(store); !problem.empty()) return problem;
    return problems(store);
  }

  Scratch scratch_;
  const std::string disk_ = scratch_.path();
  const std::string path_ = scratch_.store();
};

}  // namespace

TEST_F(DiskFull, ACommitThatDoesNotFitFailsKeepsItsEditAndSucceedsOnceThereIsSpace) {
  EXPECT_EQ(on_tiny_disk([this]() -> std::string {
              const Opened store = open_store(path_, CFG_OPEN_CREATE);
              ledger::create(store.get());
              if (std::string problem = ledger::move_and_commit(store.get(), 3); !problem.empty())
                return problem;
              const uint64_t revision = cfg_revision(store.get());
              const std::string before = export_text(store.get());
              {
                const Filler full(disk_);
                if (!add_big_text(store.get())) return "edit: " + explain(store.get());
                for (int attempt = 0; attempt < 3; ++attempt) {
                  if (cfg_commit(store.get(), nullptr)) return "a commit succeeded on a full disk";
                  if (cfg_error_code(store.get()) != CFG_E_NO_SPACE) return explain(store.get());
                  if (cfg_error_text(store.get())[0] == '\0') return "no text";
                  if (!cfg_has_changes(store.get())) return "the edit is gone";
                  if (std::string problem = check_big_text(store.get()); !problem.empty()) return problem;
                }
                const Opened other = open_store(path_);
                if (cfg_revision(other.get()) != revision) return "the failed commit made a revision";
                if (export_text(other.get()) != before) return "the store has changed";
                if (std::string problem = check_whole(other.get(), 1); !problem.empty()) return problem;
              }
              if (!cfg_commit(store.get(), nullptr)) return "with space again: " + explain(store.get());
              if (cfg_revision(store.get()) != revision + 1) return "not the next revision";
              const Opened other = open_store(path_);
              if (std::string problem = check_big_text(other.get()); !problem.empty()) return problem;
              return check_whole(other.get(), 1);
            }),
            "");
}

TEST_F(DiskFull, AStoreThatFillsTheDiskItselfKeepsEveryAcknowledgedCommit) {
  EXPECT_EQ(
      on_tiny_disk([this]() -> std::string {
        int moves = 0, big = 0;
        {
          const Opened store = open_store(path_, CFG_OPEN_CREATE);
          ledger::create(store.get());
          commit_now(store.get(), [](cfg *edit) { return add_list(edit, "ballast"); });
          for (;;) {
            if (std::string problem = ledger::move_and_commit(store.get(), static_cast<uint32_t>(moves));
                !problem.empty())
              break;
            ++moves;
            cfg_elem *entry = append_number(store.get(), "ballast", "number", big);
            cfg_map_set_string(store.get(), entry, "text", std::string(50000, 'y').c_str());
            if (!cfg_commit(store.get(), nullptr)) break;
            ++big;
          }
          if (cfg_error_code(store.get()) != CFG_E_NO_SPACE) return explain(store.get());
          if (moves < 10 || moves > 200) return "full after " + std::to_string(moves) + " moves";
        }
        const Opened store = open_store(path_);
        if (list_size(store.get(), "ballast") != big) return "an entry was lost or half written";
        return check_whole(store.get(), moves);
      }),
      "");
}

TEST_F(DiskFull, AFullDiskIsReadAndReopenedWithoutHarm) {
  EXPECT_EQ(on_tiny_disk([this]() -> std::string {
              ledger::create(open_store(path_, CFG_OPEN_CREATE).get());
              const Filler full(disk_);
              return in_child([this]() -> std::string { return check_whole(open_store(path_).get(), 0); });
            }),
            "");
}

TEST_F(DiskFull, ARestoredStoreWithoutItsLockFileIsOpenedOrRefusedOnAFullDisk) {
  EXPECT_EQ(on_tiny_disk([this]() -> std::string {
              ledger::create(open_store(path_, CFG_OPEN_CREATE).get());
              remove_other_files(path_);
              const Filler full(disk_);
              return in_child([this]() -> std::string {
                cfg_failure failure{};
                const Opened store(cfg_open(path_.c_str(), 0, &failure));
                if (store) return check_whole(store.get(), 0);
                return failure.code == CFG_E_NO_SPACE ? "" : std::string(failure.text);
              });
            }),
            "");
}

TEST_F(DiskFull, ManyReadersFindTheirPlaceOnAFullDisk) {
  EXPECT_EQ(on_tiny_disk([this]() -> std::string {
              const Opened first = open_store(path_, CFG_OPEN_CREATE);
              ledger::create(first.get());
              const Filler full(disk_);
              return in_child([this]() -> std::string {
                std::vector<Opened> readers;
                for (int i = 0; i < 200; ++i) {
                  readers.push_back(open_store(path_));
                  if (std::string problem = ledger::check(readers.back().get()); !problem.empty())
                    return problem;
                }
                return "";
              });
            }),
            "");
}

TEST_F(DiskFull, CreatingAStoreOnAFullDiskSaysSoAndWorksOnceThereIsSpace) {
  EXPECT_EQ(on_tiny_disk([this]() -> std::string {
              {
                const Filler full(disk_);
                std::string problem = in_child([this]() -> std::string {
                  cfg_failure failure{};
                  const Opened store(cfg_open(path_.c_str(), CFG_OPEN_CREATE, &failure));
                  if (store) return "a store was made out of no space";
                  return failure.code == CFG_E_NO_SPACE ? "" : std::string(failure.text);
                });
                if (!problem.empty()) return problem;
              }
              const Opened store = open_store(path_, CFG_OPEN_CREATE);
              ledger::create(store.get());
              return check_whole(store.get(), 0);
            }),
            "");
}

TEST_F(DiskFull, ACompactCopyThatDoesNotFitFailsAndLeavesTheStoreAlone) {
  EXPECT_EQ(on_tiny_disk([this]() -> std::string {
              const Opened store = open_store(path_, CFG_OPEN_CREATE);
              ledger::create(store.get());
              commit_now(store.get(), add_big_text);
              {
                const Filler full(disk_);
                if (cfg_compact(store.get(), (disk_ + "/copy").c_str()))
                  return "a copy was made out of no space";
                if (cfg_error_code(store.get()) != CFG_E_NO_SPACE) return explain(store.get());
              }
              if (std::string problem = check_whole(store.get(), 0); !problem.empty()) return problem;
              if (!cfg_compact(store.get(), (disk_ + "/copy").c_str()))
                return "what the failed copy left is in the way: " + explain(store.get());
              return check_whole(open_store(disk_ + "/copy").get(), 0);
            }),
            "");
}
