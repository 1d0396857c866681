// Every allocation that a call makes fails in turn: the call must then fail in its own way, or do without,
// and release what it had. The allocator of this program counts for the libraries as well.
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <twconfig.h>
#include <twlog.h>
#include <twmisc.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <string>

extern "C" {
void *__libc_malloc(size_t);
void *__libc_calloc(size_t, size_t);
void *__libc_realloc(void *, size_t);
void __libc_free(void *);
}

namespace {

std::atomic<long> allocations_left{-1};  // below 0: none fails
std::atomic<long> live{0};
std::atomic<std::size_t> largest{0};

bool refused(std::size_t size) {
  if (size > largest) largest = size;
  if (allocations_left < 0 || allocations_left-- > 0) return false;
  allocations_left = 0;  // from here on all fail
  errno = ENOMEM;
  return true;
}

// Runs the call with all allocations after the first n failing, for each n, until it needs no more than n.
// Returns how many allocations it makes; `call` says whether it succeeded.
long fail_each_allocation(const std::function<bool()> &call) {
  EXPECT_TRUE(call());  // what is made once for the process is made now
  for (long n = 0;; ++n) {
    const long live_before = live;
    allocations_left = n;
    const bool succeeded = call();
    allocations_left = -1;
    EXPECT_EQ(live, live_before) << "after " << n << " allocations";
    if (succeeded || n > 10'000) {
      EXPECT_TRUE(succeeded);
      return n;
    }
  }
}

bool released(cfg_condition *condition) {
  cfg_free_conditions(condition);
  return condition != nullptr;
}

bool released(json_t *json) {
  json_decref(json);
  return json != nullptr;
}

constexpr char kLong[] = "a text that is too long for the space within a string object";

}  // namespace

extern "C" {
void *malloc(size_t size) {
  void *memory = refused(size) ? nullptr : __libc_malloc(size);
  if (memory) ++live;
  return memory;
}
void *calloc(size_t count, size_t size) {
  void *memory = refused(count * size) ? nullptr : __libc_calloc(count, size);
  if (memory) ++live;
  return memory;
}
void *realloc(void *old, size_t size) {
  void *memory = refused(size) ? nullptr : __libc_realloc(old, size);
  if (memory && !old) ++live;
  return memory;
}
void free(void *memory) {
  if (memory) --live;
  __libc_free(memory);
}
}

TEST(NoMemory, TheCounterSeesTheLibrariesAllocations) {
  EXPECT_GE(
      fail_each_allocation([] { return released(cfg_new_string_condition(kLong, CFG_OP_EQUAL, kLong)); }), 3);
}

TEST(NoMemory, ConditionMakersGiveNull) {
  fail_each_allocation([] { return released(cfg_new_reference_condition(kLong, CFG_OP_EQUAL, kLong)); });
  fail_each_allocation([] { return released(cfg_new_untyped_condition(kLong, CFG_OP_ABSENT)); });
  fail_each_allocation([] { return released(cfg_new_and_condition()); });
}

TEST(NoMemory, AChildThatIsNotTakenStaysTheCallers) {
  EXPECT_GT(fail_each_allocation([] {
              const long left = allocations_left.exchange(-1);
              cfg_condition *node = cfg_new_and_condition(), *child = cfg_new_and_condition();
              allocations_left = left;
              const int given = cfg_condition_add_child(node, child);
              if (!given) cfg_free_conditions(child);
              cfg_free_conditions(node);
              return given == 1;
            }),
            0);
}

TEST(NoMemory, ConditionsAndJsonGiveNull) {
  const char *text =
      R"({"and":[{"key":"name","op":"equal","string":"x"},{"and":[{"key":"k","op":"absent"}]}]})";
  EXPECT_GT(fail_each_allocation([&] { return released(json_dump_to_condition(text, 0)); }), 10);
  cfg_condition *tree = json_dump_to_condition(text, 0);
  EXPECT_GT(fail_each_allocation([&] { return released(condition_to_json(tree)); }), 5);
  cfg_free_conditions(tree);
}

TEST(NoMemory, AMessageThatCannotBeMadeReleasesItsArguments) {
  EXPECT_GT(fail_each_allocation([] {
              const long left = allocations_left.exchange(-1);
              auto **args = static_cast<char **>(calloc(1, sizeof(char *)));
              args[0] = strdup(kLong);
              allocations_left = left;
              cfg_message *message = cfg_new_message(4711, 1, args);
              cfg_message_free(message);
              return message != nullptr;
            }),
            1);
}

TEST(NoMemory, AnEditThatCannotTakeAMessageHasNone) {
  EXPECT_GT(fail_each_allocation([] {
              const long left = allocations_left.exchange(-1);
              cfg *store = cfg_open_memory(nullptr, nullptr);
              allocations_left = left;
              const int added = cfg_message_add_unexpected(store, "src/users", 120);
              allocations_left = -1;
              EXPECT_EQ(cfg_get_message_count(store), added);
              cfg_close(store);
              return added == 1;
            }),
            4);
}

TEST(NoMemory, SendingAndReceivingFail) {
  int ends[2];
  json_t *value = json_pack("{s:s, s:[i]}", "text", kLong, "list", 3);
  EXPECT_GT(fail_each_allocation([&] {
              if (socketpair(AF_UNIX, SOCK_STREAM, 0, ends) != 0) abort();
              const int sent = cfg_send(ends[0], value);
              json_t *received = sent ? cfg_receive(ends[1]) : nullptr;
              const bool arrived = json_equal(value, received) == 1;
              json_decref(received);
              close(ends[0]);
              close(ends[1]);
              return arrived;
            }),
            10);
  json_decref(value);
}

TEST(NoMemory, AClaimedLengthCostsNothingBeforeItsBytesCome) {
  int ends[2];
  ASSERT_EQ(socketpair(AF_UNIX, SOCK_STREAM, 0, ends), 0);
  ASSERT_EQ(write(ends[1], "\1\0\0\0[1,2,3", 10), 10);  // 16 MiB are to come
  close(ends[1]);
  largest = 0;
  EXPECT_EQ(cfg_receive(ends[0]), nullptr);
  EXPECT_GT(largest, 0u);
  EXPECT_LE(largest, 128u * 1024);
  close(ends[0]);
}

TEST(NoMemory, AStringThatCannotBeReplacedIsKept) {
  EXPECT_GT(fail_each_allocation([] {
              const long left = allocations_left.exchange(-1);
              char *text = strdup("kept");
              allocations_left = left;
              const int replaced = twmisc_replace_heap_string(&text, "%s %s", kLong, kLong);
              allocations_left = -1;
              EXPECT_EQ(text, replaced ? std::string(kLong) + " " + kLong : "kept");
              free(text);
              return replaced == 1;
            }),
            0);
}

TEST(NoMemory, LoggingNeedsNone) {
  EXPECT_EQ(fail_each_allocation([] {
              twlog_log_prio_codepos("src/users", "f", 1, 3, "no memory is needed for %s", kLong);
              return true;
            }),
            0);
}
