// Makes one call of the store's again and again, with another of its allocations refused each time.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <optional>
#include <ostream>
#include <string>

#include "allocation/failing_allocator.hpp"
#include "store/tree.hpp"
#include "store_allocation/world.hpp"

namespace store_allocation {

using allocation::Behind;

// One row of the tables: a function of the library, and the sweeps over its allocations.
struct Case {
  const char *function;
  void (*run)(EngineKind engine);
  std::optional<EngineKind> only = {};  // where there is nothing to be had from the other engine
};
inline void PrintTo(const Case &row, std::ostream *out) { *out << row.function; }

inline void as_it_is(World &) {}

// What is true after a call that went through: how its result reads, and what the edit and the store are
// then.
struct Whole {
  std::string result, edited, stored;
};

// Equal, or where they begin to differ: the texts are long.
inline testing::AssertionResult same(const std::string &text, const std::string &expected) {
  const auto [at, other] = std::mismatch(text.begin(), text.end(), expected.begin(), expected.end());
  if (at == text.end() && other == expected.end()) return testing::AssertionSuccess();
  const auto begin = static_cast<size_t>(std::max<std::ptrdiff_t>(at - text.begin() - 60, 0));
  return testing::AssertionFailure() << "\n  ..." << text.substr(begin, 160) << "\nbut expected\n  ..."
                                     << expected.substr(begin, 160);
}

// Judges a call on a World: what is true before it, and after it has gone through.
template <class Call, class Words, class Prepare>
class Judge {
 public:
  Judge(EngineKind engine, const Call &call, const Words &words, const Prepare &prepare)
      : engine_(engine), call_(call), words_(words), prepare_(prepare) {
    World untouched(engine);
    prepare(untouched);
    before_.edited = untouched.edited();
    before_.stored = untouched.stored();
    World world(engine);
    prepare(world);
    after_.result = words(world, call(world));
    EXPECT_NE(after_.result, "") << cfg_error_text(world.store);
    after_.edited = world.edited();
    after_.stored = world.stored();
    committed_ = committed(world);
  }

  // Refuses each allocation in turn until the call needs no more.
  void sweep(Behind behind) {
    for (long n = 1; n < 100'000; ++n) {
      World world(engine_);
      prepare_(world);
      allocation::refuse(n, behind);
      auto result = call_(world);
      const bool refused = allocation::stop_refusing();
      std::string text = words_(world, result);
      if (text.empty()) {
        EXPECT_TRUE(refused) << "without a refused allocation: " << cfg_error_text(world.store);
        EXPECT_EQ(cfg_error_code(world.store), CFG_E_MEMORY) << cfg_error_text(world.store);
        EXPECT_STRNE(cfg_error_text(world.store), "");
        EXPECT_TRUE(same(world.edited(), before_.edited)) << "after a failure";
        EXPECT_TRUE(same(world.stored(), before_.stored)) << "after a failure";
        text = words_(world, call_(world));
      }
      EXPECT_TRUE(same(text, after_.result)) << cfg_error_text(world.store);
      EXPECT_TRUE(same(world.edited(), after_.edited));
      EXPECT_TRUE(same(world.stored(), after_.stored));
      EXPECT_TRUE(same(committed(world), committed_));
      if (testing::Test::HasFailure()) ADD_FAILURE() << "with allocation " << n << " refused";
      if (!refused || testing::Test::HasFailure()) return;
    }
    ADD_FAILURE() << "never runs to its end";
  }

 private:
  static std::string committed(World &world) {
    EXPECT_EQ(cfg_commit(world.store, nullptr), 1) << cfg_error_text(world.store);
    return world.stored();
  }

  EngineKind engine_;
  const Call &call_;
  const Words &words_;
  const Prepare &prepare_;
  Whole before_, after_;
  std::string committed_;
};

// `call` does nothing else than the call. `words` says in words what it returned, "" for the failure value,
// and releases it. A call that fails says that memory is short and leaves edit and store as they were; the
// same call made again goes through, and everything is then as if nothing had been refused.
template <class Call, class Words, class Prepare = void (*)(World &)>
void sweep(EngineKind engine, const Call &call, const Words &words, const Prepare &prepare = as_it_is) {
  Judge<Call, Words, Prepare> judge(engine, call, words, prepare);
  judge.sweep(Behind::refused);
  if (!testing::Test::HasFailure()) judge.sweep(Behind::granted);
}

// ---- Words for results ----

inline std::string done(World &, int result) { return result == 1 ? "1" : ""; }

inline std::string element(World &world, cfg_elem *elem) {
  if (!elem) return "";
  const std::string id = id_of(elem);
  return without_provisional_ids(id + " " + dump(world.store, elem));
}

inline std::string id(World &, const char *text) { return text ? text : ""; }

}  // namespace store_allocation
