// Processes and threads that publish and read at the same time, fork, and die.
#include <sys/stat.h>

#include <atomic>
#include <thread>

#include "infod_fixture.hpp"
#include "store_processes/child.hpp"

namespace infod {
namespace {

using trial::Child;
using trial::in_child;
using trial::Line;

TEST_F(InfodTest, WhatOneProcessPublishesAnotherReads) {
  EXPECT_EQ(in_child([] { return push("a", "from the child") == 0 ? "" : "cannot publish"; }), "");
  EXPECT_EQ(text_of("a"), "from the child");
  push("a", "from the parent");
  EXPECT_EQ(in_child([] { return text_of("a") == "from the parent" ? "" : text_of("a"); }), "");
}

TEST_F(InfodTest, ProcessesThatStartAtOnceMakeOneState) {
  std::vector<std::unique_ptr<Child>> children;
  for (int i = 0; i < 8; ++i)
    children.push_back(std::make_unique<Child>([i](Line &parent) -> std::string {
      parent.wait();
      return push("from " + std::to_string(i), "x") == 0 ? "" : "cannot publish";
    }));
  for (auto &child : children) child->line().say("go");
  for (auto &child : children) EXPECT_EQ(child->finish(), "");
  EXPECT_EQ(all("from ").size(), 8U);
}

TEST_F(InfodTest, NoWriteOfManyProcessesIsLostOrHalf) {
  constexpr int kRounds = 100;
  std::vector<std::unique_ptr<Child>> children;
  for (int i = 0; i < 4; ++i)
    children.push_back(std::make_unique<Child>([i](Line &) -> std::string {
      const std::string own = "own " + std::to_string(i);
      for (int round = 0; round < kRounds; ++round) {
        const std::string text(static_cast<size_t>(50 + round * 7), static_cast<char>('a' + i));
        if (push(own, text) != 0 || push("shared", text) != 0) return "cannot publish";
        if (text_of(own) != text) return "an own text is lost";
        const std::string shared = text_of("shared");
        if (shared.find_first_not_of(shared[0]) != std::string::npos) return "a shared text is mixed";
      }
      return "";
    }));
  for (auto &child : children) EXPECT_EQ(child->finish(), "");
}

TEST_F(InfodTest, AProcessThatIsKilledWhileItPublishesLeavesTheStateSound) {
  push("kept", "kept");
  for (int i = 0; i < 20; ++i) {
    Child child([](Line &parent) -> std::string {
      parent.say("begun");
      for (int round = 0;; ++round) push("victim", std::string(static_cast<size_t>(round % 3000), 'v'));
    });
    child.line().wait();
    std::this_thread::sleep_for(std::chrono::milliseconds(i % 5));
    child.kill_now();
    child.finish();
    ASSERT_EQ(text_of("kept"), "kept");
    ASSERT_EQ(push("after", std::to_string(i)), 0);
    ASSERT_EQ(text_of("after"), std::to_string(i));
    const std::string victim = text_of("victim");
    ASSERT_TRUE(victim == missing || victim.find_first_not_of('v') == std::string::npos);
  }
}

// Else the file would grow with every publishing.
TEST_F(InfodTest, ADeadReaderDoesNotKeepOldStatesForEver) {
  for (int i = 0; i < 50; ++i) push("key " + std::to_string(i), std::string(1000, 'x'));
  Child child([](Line &parent) -> std::string {
    infod_multiple *multiple = infod_get_multiple_start();
    parent.say(text_of(multiple, "key 0") == missing ? "cannot read" : "reading");
    parent.wait();
    return "";
  });
  std::string said;
  ASSERT_TRUE(child.line().hear(said));
  ASSERT_EQ(said, "reading");
  child.kill_now();
  child.finish();
  for (int i = 0; i < 2000; ++i) ASSERT_EQ(push("key " + std::to_string(i % 50), std::string(1000, 'y')), 0);
  struct stat file {};
  ASSERT_EQ(stat(data().c_str(), &file), 0);
  EXPECT_LT(file.st_size, 2 << 20);
}

TEST_F(InfodTest, AChildGoesOnWithTheStateThatItsParentHasOpen) {
  push("a", "1");
  EXPECT_EQ(text_of("a"), "1");
  EXPECT_EQ(
      in_child([]() -> std::string {
        if (text_of("a") != "1") return "cannot read";
        if (push("a", "2") != 0) return "cannot publish";
        return in_child([] { return text_of("a") == "2" && push("b", "3") == 0 ? "" : "the grandchild"; });
      }),
      "");
  EXPECT_EQ(text_of("a"), "2");
  EXPECT_EQ(text_of("b"), "3");
  EXPECT_EQ(push("a", "4"), 0);
}

TEST_F(InfodTest, AChildCannotReadInWhatItsParentStartedAndMayEndIt) {
  push("a", "1");
  infod_multiple *multiple = infod_get_multiple_start();
  const std::string refused = "error " + std::to_string(-EBADF);
  EXPECT_EQ(in_child([&]() -> std::string {
              if (text_of(multiple, "a") != refused) return text_of(multiple, "a");
              infod_get_multiple_end(multiple);
              return text_of("a") == "1" ? "" : "cannot read";
            }),
            "");
  push("a", "2");
  EXPECT_EQ(text_of(multiple, "a"), "1");
  infod_get_multiple_end(multiple);
}

TEST_F(InfodTest, AChildThatEndsDoesNotDisturbItsParentsReading) {
  for (int i = 0; i < 50; ++i) push("key " + std::to_string(i), std::string(1000, 'x'));
  infod_multiple *multiple = infod_get_multiple_start();
  ASSERT_EQ(in_child([] { return text_of("key 1").size() == 1000 ? "" : "cannot read"; }), "");
  // Would overwrite the pages that are read if the reader were forgotten.
  ASSERT_EQ(in_child([]() -> std::string {
              for (int i = 0; i < 500; ++i) push("key " + std::to_string(i % 50), std::string(1000, 'y'));
              return "";
            }),
            "");
  for (int i = 0; i < 50; ++i)
    ASSERT_EQ(text_of(multiple, "key " + std::to_string(i)), std::string(1000, 'x'));
  infod_get_multiple_end(multiple);
}

TEST_F(InfodTest, ThreadsPublishAndReadAtOnce) {
  std::atomic<int> wrong{0};
  std::vector<std::thread> threads;
  for (int i = 0; i < 4; ++i)
    threads.emplace_back([i, &wrong] {
      const std::string own = "own " + std::to_string(i);
      for (int round = 0; round < 100; ++round) {
        push(own, std::to_string(round));
        if (text_of(own) != std::to_string(round)) ++wrong;
        infod_multiple *multiple = infod_get_multiple_start();
        if (text_of(multiple, own) != std::to_string(round)) ++wrong;
        infod_get_multiple_end(multiple);
      }
    });
  for (std::thread &thread : threads) thread.join();
  EXPECT_EQ(wrong, 0);
}

TEST_F(InfodTest, AProcessForksWhileItsThreadsPublish) {
  std::atomic<bool> stop{false};
  std::thread publisher([&] {
    while (!stop) push("busy", "x");
  });
  for (int i = 0; i < 20; ++i)
    EXPECT_EQ(in_child([i] { return push("child", std::to_string(i)) == 0 ? "" : "cannot publish"; }), "");
  stop = true;
  publisher.join();
  EXPECT_EQ(text_of("child"), "19");
}

}  // namespace
}  // namespace infod
