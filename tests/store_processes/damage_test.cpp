// Damaged data files. Each is looked at in a child of its own, so that a crash is counted and not suffered.
#include <gtest/gtest.h>

#include <cstdio>
#include <map>
#include <random>

#include "child.hpp"
#include "ledger.hpp"
#include "opened.hpp"
#include "scratch.hpp"

using namespace trial;

namespace {

constexpr size_t kPage = 4096;
// The lowest byte of the number by which the newer of the first two pages is told. One of its bits makes the
// older page look newer in a way that nothing contradicts.
constexpr size_t kTransaction = 144;

// How often each outcome came, by name.
using Tally = std::map<std::string, int>;

class Damage : public testing::Test {
 protected:
  Damage() {
    const Opened store = open_store(path_, CFG_OPEN_CREATE);
    ledger::create(store.get());
    for (uint32_t i = 0; i < 40; ++i)
      commit_now(store.get(), [i](cfg *edit) { return ledger::move(edit, i * 37); });
    previous_text_ = export_text(store.get());
    commit_now(store.get(), [](cfg *edit) {
      return cfg_map_set_string(edit, cfg_root(edit), "long", std::string(20000, 'l').c_str()) != 0;
    });
    text_ = export_text(store.get());
    data_ = read_file(data_file(path_));
  }

  // What comes of a store with these bytes: "right", "older" (the state one commit ago), "wrong" (read
  // without a complaint, but not what was stored), "refused at open",
  // "found by verify" (which comes first; nothing is read then), "refused while reading" or "signal N".
  std::string outcome_of(const std::string &bytes) {
    remove_other_files(path_);
    write_file(data_file(path_), bytes);
    return in_child([this]() -> std::string {
      cfg_failure failure{};
      const Opened store(cfg_open(path_.c_str(), 0, &failure));
      if (!store)
        return failure.code != CFG_OK && failure.text[0] ? "refused at open" : "refused without a reason";
      if (!problems(store.get()).empty()) return "found by verify";
      std::string read;
      if (!cfg_export(store.get(), append, &read))
        return cfg_error_code(store.get()) == CFG_OK ? "failed without a code" : "refused while reading";
      return read == text_ ? "right" : read == previous_text_ ? "older" : "wrong";
    });
  }

  static int append(void *context, const char *data, size_t length) {
    static_cast<std::string *>(context)->append(data, length);
    return 1;
  }

  std::string with_flipped_bit(size_t byte) {
    std::string bytes = data_;
    bytes[byte] = static_cast<char>(bytes[byte] ^ (1 << (random_() % 8)));
    return bytes;
  }

  static void print(const char *what, const Tally &tally) {
    std::printf("%s:", what);
    for (const auto &[outcome, count] : tally) std::printf(" %s %d;", outcome.c_str(), count);
    std::printf("\n");
  }

  static int signals_in(const Tally &tally) {
    int count = 0;
    for (const auto &[outcome, times] : tally)
      if (outcome.rfind("signal", 0) == 0 || outcome.rfind("exit", 0) == 0) count += times;
    return count;
  }

  Scratch scratch_;
  const std::string path_ = scratch_.store();
  std::string text_, previous_text_, data_;
  std::mt19937 random_{7};
};

}  // namespace

TEST_F(Damage, AnUndamagedCopyReadsRight) { EXPECT_EQ(outcome_of(data_), "right"); }

TEST_F(Damage, ATruncatedFileIsRefusedWhenItIsOpened) {
  Tally tally;
  for (size_t page = 0; page * kPage < data_.size(); ++page)
    for (size_t extra : {size_t{0}, size_t{1}, kPage - 1}) {
      const size_t length = page * kPage + extra;
      if (length >= data_.size()) continue;
      const std::string outcome = outcome_of(data_.substr(0, length));
      ++tally[outcome];
      EXPECT_TRUE(outcome == "refused at open" || outcome == "right")
          << length << " of " << data_.size() << ": " << outcome;
    }
  print("truncated", tally);
  EXPECT_GT(tally["refused at open"], tally["right"]);
}

TEST_F(Damage, AFlippedBitInTheFirstTwoPagesIsRefusedOrHarmless) {
  Tally tally;
  for (size_t page = 0; page < 2; ++page)
    for (size_t i = 0; i < 256; ++i) {
      const size_t byte = page * kPage + (i < 200 ? i : random_() % kPage);
      const std::string outcome = outcome_of(with_flipped_bit(byte));
      ++tally[outcome];
      if (i == kTransaction && outcome == "older") continue;
      EXPECT_TRUE(outcome == "right" || outcome == "refused at open" || outcome == "found by verify" ||
                  outcome == "refused while reading")
          << "byte " << byte << ": " << outcome;
    }
  print("first two pages", tally);
}

TEST_F(Damage, AFlippedBitInTheTailCrashesNobody) {
  Tally tally;
  for (int i = 0; i < 200; ++i)
    ++tally[outcome_of(with_flipped_bit(data_.size() - 1 - random_() % (3 * kPage)))];
  print("tail", tally);
  EXPECT_EQ(signals_in(tally), 0);
}

TEST_F(Damage, FlippedBitsInTheMiddleAreSurvived) {
  Tally tally;
  const size_t middle = data_.size() - 5 * kPage;
  for (int i = 0; i < 300; ++i) ++tally[outcome_of(with_flipped_bit(2 * kPage + random_() % middle))];
  print("middle", tally);
  EXPECT_EQ(signals_in(tally), 0);
}

TEST_F(Damage, APageOfNoiseOrOfAnotherPlaceIsSurvived) {
  Tally tally;
  const size_t pages = data_.size() / kPage;
  for (size_t page = 2; page < pages; ++page) {
    std::string noise = data_;
    for (size_t i = 0; i < kPage; ++i) noise[page * kPage + i] = static_cast<char>(random_());
    std::string moved = data_;
    moved.replace(page * kPage, kPage, data_, 2 * kPage + random_() % (pages - 2) * kPage, kPage);
    std::string zeroed = data_;
    zeroed.replace(page * kPage, kPage, kPage, '\0');
    for (const std::string &bytes : {noise, moved, zeroed}) ++tally[outcome_of(bytes)];
  }
  print("whole pages", tally);
  EXPECT_EQ(signals_in(tally), 0);
  EXPECT_GT(tally["found by verify"], 0);
}

// LMDB trusts the pages of its file: reading and writing without verifying first can end in a signal, but
// nearly always does not.
TEST_F(Damage, MostDamageIsSurvivedByThoseWhoDoNotVerify) {
  Tally tally;
  for (int i = 0; i < 100; ++i) {
    remove_other_files(path_);
    write_file(data_file(path_), with_flipped_bit(random_() % data_.size()));
    ++tally[in_child([this]() -> std::string {
      cfg_failure failure{};
      const Opened store(cfg_open(path_.c_str(), 0, &failure));
      if (!store) return "refused at open";
      std::string read;
      if (!cfg_export(store.get(), append, &read)) return "refused while reading";
      for (uint32_t round = 0; round < 4; ++round)
        if (!ledger::move(store.get(), round) || !cfg_commit(store.get(), nullptr))
          return "refused while writing";
      return "read and written";
    })];
  }
  print("without verifying", tally);
  EXPECT_LE(signals_in(tally), 10);
}

// A map whose keys would not fit its record has no values, and what is read behind it does not suffer.
TEST(DamagedMap, OfAnyShapeLeavesTheOthersReadable) {
  static constexpr const char *names[] = {"name", "key 7"};
  static constexpr cfg_keyset keys{names, 2};
  const std::string marker = "the name of the entry that is damaged";
  const Scratch scratch;
  const std::string path = scratch.store();
  {
    const Opened store = open_store(path, CFG_OPEN_CREATE);
    commit_now(store.get(), [&](cfg *edit) {
      cfg_elem *list = cfg_new_list(edit), *small = cfg_new_map(edit), *large = cfg_new_map(edit);
      bool done = cfg_add_mapelem(edit, cfg_root(edit), "entries", list) &&
                  cfg_add_listelem(edit, list, small) && cfg_add_listelem(edit, list, large) &&
                  cfg_map_set_string(edit, small, "name", marker.c_str()) &&
                  cfg_map_set_string(edit, large, "name", "sound");
      for (int i = 0; i < 60; ++i)
        done = done && cfg_map_set_int(edit, large, ("key " + std::to_string(i)).c_str(), i);
      return done;
    });
  }
  const std::string sound = read_file(data_file(path));
  // In front of a map's only value stand its length (2), kind (1) and offset (2), and in front of these the
  // number of the shape (4).
  constexpr size_t shape_to_text = 9;
  for (char shape = 0; shape < 8; ++shape) {
    std::string bytes = sound;
    size_t changed = 0;
    for (size_t at = bytes.find(marker); at != std::string::npos; at = bytes.find(marker, at + 1), ++changed)
      bytes[at - shape_to_text] = shape;
    ASSERT_GT(changed, 0U);
    remove_other_files(path);
    write_file(data_file(path), bytes);
    const std::string outcome = in_child([&path]() -> std::string {
      const Opened store(cfg_open(path.c_str(), 0, nullptr));
      std::string read;
      const auto visit = [](void *context, int32_t, const cfg_value *values) {
        const bool has_name = values[0].kind == CFG_STRING;
        static_cast<std::string *>(context)->append(has_name ? values[0].data : "-").append(";");
        return 1;
      };
      cfg_list_scan(cfg_get_by_path(store.get(), "entries"), &keys, visit, &read);
      return read.substr(read.find(';') + 1);
    });
    EXPECT_EQ(outcome, "sound;") << "shape " << int{shape};
  }
}
