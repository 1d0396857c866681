// Makes one call again and again, with another of its allocations refused each time.
#ifndef TW_TESTS_ALLOCATION_SWEEP_HPP
#define TW_TESTS_ALLOCATION_SWEEP_HPP

#include <gtest/gtest.h>

#include <ostream>

#include "allocation/failing_allocator.hpp"
#include "allocation/world.hpp"

namespace allocation {

// One row of the tables: a function of the library, and the sweep over its allocations.
struct Case {
  const char *function;
  void (*run)();
};
inline void PrintTo(const Case &row, std::ostream *out) { *out << row.function; }

// Which allocations a sweep refuses: those that count, from the first on, each next one as `next` says.
struct Refusals {
  Behind behind;
  Whose whose = Whose::everybodys;
  long (*next)(long n) = [](long n) { return n + 1; };
  long too_many = 200'000;  // a call that still allocates behind so many never ends
};

inline void as_it_is(World &) {}

// Each call gets a fresh World, which `prepare` may change. `call` runs with a refused allocation and does
// nothing else than the call. `succeeded` then judges its result and releases it: true for the full success,
// false for the documented failure, and a test failure for anything between. The store must be as before
// after each. Ends with the first call that needed no more allocations, which must have succeeded. Returns
// the number of refused allocations.
template <class Call, class Verdict, class Prepare = void (*)(World &)>
long sweep(const Refusals &refusals, Call call, Verdict succeeded, Prepare prepare = as_it_is) {
  long count = 0;
  for (long n = 1; n < refusals.too_many; n = refusals.next(n)) {
    World world;
    prepare(world);
    refuse(n, refusals.behind, refusals.whose);
    auto result = call(world);
    const bool refused = stop_refusing();
    const bool success = succeeded(world, result);
    EXPECT_TRUE(world.store_is_as_before());
    EXPECT_TRUE(success || refused) << "without a refused allocation";
    if (testing::Test::HasFailure()) ADD_FAILURE() << "with allocation " << n << " refused";
    if (!refused || testing::Test::HasFailure()) return count;
    ++count;
  }
  ADD_FAILURE() << "never runs to its end";
  return count;
}

// What is made once for the process is made here, before any sweep.
template <class Call, class Verdict, class Prepare = void (*)(World &)>
void warm_up(Call call, Verdict succeeded, Prepare prepare = as_it_is) {
  World world;
  prepare(world);
  auto result = call(world);
  EXPECT_TRUE(succeeded(world, result)) << "with memory enough";
}

// Every allocation once, alone and with all that follow it.
template <class Call, class Verdict, class Prepare = void (*)(World &)>
void sweep(Call call, Verdict succeeded, Prepare prepare = as_it_is) {
  warm_up(call, succeeded, prepare);
  sweep({Behind::refused}, call, succeeded, prepare);
  sweep({Behind::granted}, call, succeeded, prepare);
}

// ---- Verdicts ----

// The value, or the failure value of every function: NULL or 0.
template <class Value>
auto gives(Value value) {
  return [value](World &, Value got) {
    if (got == value) return true;
    EXPECT_EQ(got, Value{});
    return false;
  };
}

// A borrowed text, or NULL.
inline auto gives_text(const char *text) {
  return [text](World &, const char *got) {
    if (got) EXPECT_STREQ(got, text);
    return got != nullptr;
  };
}

// ---- Sweeps of the commonest functions ----

template <class Record>
void text_getter(const char *(*get)(const Record *), Record *World::*record, const char *text) {
  sweep([=](World &w) { return get(w.*record); }, gives_text(text));
}

template <class Record, class Value>
void number_getter(Value (*get)(const Record *), Record *World::*record, Value value) {
  sweep([=](World &w) { return get(w.*record); }, gives(value));
}

// A setter of a text either sets it, or answers 0 and leaves the field NULL.
template <class Record>
void text_setter(int (*set)(Record *, const char *), const char *(*get)(const Record *),
                 Record *World::*record) {
  sweep([=](World &w) { return set(w.*record, kNew); },
        [=](World &w, int done) {
          const char *now = get(w.*record);
          if (done)
            EXPECT_STREQ(now, kNew);
          else
            EXPECT_EQ(now, nullptr);
          return done == 1;
        });
}

template <class Record, class Value>
void number_setter(int (*set)(Record *, Value), Value (*get)(const Record *), Record *World::*record) {
  sweep([=](World &w) { return set(w.*record, Value{4711}); },
        [=](World &w, int done) {
          if (done) EXPECT_EQ(get(w.*record), Value{4711});
          return done == 1;
        });
}

}  // namespace allocation

#endif
