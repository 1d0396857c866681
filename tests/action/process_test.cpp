// Actions under several processes, and after sudden death.
#include <atomic>
#include <thread>

#include "action_fixture.hpp"
#include "store_processes/child.hpp"

namespace action {
namespace {

using trial::Child;
using trial::in_child;
using trial::Line;

TEST_F(ActionTest, OfManyProcessesThatTakeAnActionExactlyOneGetsIt) {
  for (int round = 0; round < 5; ++round) {
    const uint64_t id = add("nodes-1", "enrollment");
    std::vector<std::unique_ptr<Child>> children;
    for (int i = 0; i < 4; ++i)
      children.push_back(std::make_unique<Child>([id](Line &parent) -> std::string {
        const record mine = by_id(id);
        parent.say("fetched");
        parent.wait();
        twaction_set_state(mine.get(), TWACTION_TAKEN);
        const int result = twaction_store(mine.get());
        return result == 0 ? "taken" : result == -ESTALE ? "" : "error " + std::to_string(result);
      }));
    for (auto &child : children) child->line().wait();
    for (auto &child : children) child->line().say("go");
    std::vector<std::string> complaints;
    for (auto &child : children)
      if (std::string said = child->finish(); !said.empty()) complaints.push_back(said);
    EXPECT_EQ(complaints, std::vector<std::string>{"taken"});
  }
}

TEST_F(ActionTest, ProcessesThatStoreAtOnceGetDifferentNumbers) {
  std::vector<std::unique_ptr<Child>> children;
  for (int i = 0; i < 4; ++i)
    children.push_back(std::make_unique<Child>([i](Line &) -> std::string {
      for (int k = 0; k < 25; ++k)
        if (add(("nodes-" + std::to_string(100 * i + k)).c_str(), "a") == 0) return "not stored";
      return "";
    }));
  for (auto &child : children) EXPECT_EQ(child->finish(), "");
  EXPECT_EQ(numbers().size(), 100U);
}

TEST_F(ActionTest, WhatWasStoredIsThereAfterAKill) {
  for (int i = 0; i < 10; ++i) {
    Child child([](Line &parent) -> std::string {
      for (int k = 0;; ++k) {
        const std::string node = "nodes-" + std::to_string(k);
        const uint64_t id = add(node.c_str(), "a");
        parent.say(node + " " + std::to_string(id));
      }
    });
    std::string said;
    for (int k = 0; k <= i; ++k) ASSERT_TRUE(child.line().hear(said));
    child.kill_now();
    child.finish();
    const std::string node = said.substr(0, said.find(' ')), id = said.substr(said.find(' ') + 1);
    const record found = of_node(node.c_str(), "a");
    ASSERT_NE(found, nullptr) << node;
    EXPECT_EQ(std::to_string(twaction_get_id(found.get())), id);
    for (const uint64_t number : numbers()) ASSERT_EQ(twaction_remove(number), 0);
  }
}

TEST_F(ActionTest, AChildGoesOnWithTheActionsThatItsParentHasOpen) {
  const uint64_t id = add("nodes-1", "a");
  EXPECT_EQ(in_child([id]() -> std::string {
              const record one = by_id(id);
              twaction_set_state(one.get(), TWACTION_DONE);
              return twaction_store(one.get()) == 0 ? "" : "cannot store";
            }),
            "");
  EXPECT_EQ(state_of(by_id(id)), TWACTION_DONE);
}

TEST_F(ActionTest, ThreadsStoreAtOnce) {
  std::vector<std::thread> threads;
  for (int i = 0; i < 4; ++i)
    threads.emplace_back([i] {
      for (int k = 0; k < 10; ++k) add(("nodes-" + std::to_string(100 * i + k)).c_str(), "a");
    });
  for (std::thread &thread : threads) thread.join();
  EXPECT_EQ(numbers().size(), 40U);
}

TEST_F(ActionTest, ADamagedFileIsReported) {
  add("nodes-1", "a");
  trial::write_file(directory() + "/actions.mdb", std::string(8192, 'x'));
  twaction *action = nullptr;
  EXPECT_EQ(in_child([] { return of_node("nodes-1", "a") == nullptr ? "" : "found"; }), "");
  setenv("TW_ACTION_DIR", (directory() + "/.").c_str(), 1);
  EXPECT_EQ(twaction_get_for_node("nodes-1", "a", &action), -EBADMSG);
  EXPECT_EQ(twaction_store(make("a").get()), -EBADMSG);
}

TEST_F(ActionTest, AProcessForksWhileItsThreadsUseTheLibrary) {
  std::atomic<bool> stop{false};
  std::thread user([&] {
    while (!stop) add("nodes-1", "enrollment");
  });
  for (int i = 0; i < 20; ++i)
    EXPECT_EQ(in_child([] { return add("nodes-2", "enrollment") != 0 ? "" : "cannot store"; }), "");
  stop = true;
  user.join();
}

}  // namespace
}  // namespace action
