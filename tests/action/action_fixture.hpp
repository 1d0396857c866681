// Actions in a directory of the test's own.
#ifndef TW_TESTS_ACTION_ACTION_FIXTURE_HPP
#define TW_TESTS_ACTION_ACTION_FIXTURE_HPP

#include <gtest/gtest.h>
#include <twaction.h>

#include <cerrno>
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

#include "store_processes/scratch.hpp"

namespace action {

struct free_action {
  void operator()(twaction *one) const { twaction_free(one); }
};
using record = std::unique_ptr<twaction, free_action>;

/** A new action that is not stored yet. */
inline record make(const char *queue, int32_t state = TWACTION_NEW) {
  record made(twaction_new());
  EXPECT_EQ(twaction_set_queue_name(made.get(), queue), 0);
  EXPECT_EQ(twaction_set_state(made.get(), state), 0);
  return made;
}
/** Stores a new action of a node; its number. */
inline uint64_t add(const char *node, const char *queue, int32_t state = TWACTION_NEW) {
  const record made = make(queue, state);
  EXPECT_EQ(twaction_store(made.get()), 0);
  EXPECT_EQ(twaction_associate_node(twaction_get_id(made.get()), node), 0);
  return twaction_get_id(made.get());
}
inline record by_id(uint64_t id) {
  twaction *found = nullptr;
  twaction_get_by_id(id, &found);
  return record(found);
}
inline record of_node(const char *node, const char *queue) {
  twaction *found = nullptr;
  twaction_get_for_node(node, queue, &found);
  return record(found);
}
inline int32_t state_of(const record &one) {
  int32_t state = -1000;
  twaction_get_state(one.get(), &state);
  return state;
}
inline std::string error_of(const record &one) {
  const char *text = nullptr;
  if (twaction_get_last_error(one.get(), &text) != 0) return "failed";
  return text ? text : "none";
}
/** The numbers of the stored actions of a queue (NULL: of all), as they are visited. */
inline std::vector<uint64_t> numbers(const char *queue = nullptr) {
  std::vector<uint64_t> found;
  EXPECT_EQ(twaction_visit(
                queue,
                [](void *context, const twaction *one) {
                  static_cast<std::vector<uint64_t> *>(context)->push_back(twaction_get_id(one));
                  return 0;
                },
                &found),
            0);
  return found;
}

class ActionTest : public testing::Test {
 protected:
  ActionTest() { setenv("TW_ACTION_DIR", directory().c_str(), 1); }
  std::string directory() const { return scratch_.path() + "/actions"; }

 private:
  trial::Scratch scratch_;
};

}  // namespace action

#endif
