// Pending nodes that were appended whole, with values of every sort.
#pragma once

#include "twin.hpp"

const Recipe &node();

class PendingNodeTest : public TwinTest {
 protected:
  // Two pending nodes in each store; a step is then done with the first of them, before anything has read it.
  void with_pending_node(const std::function<void(const Filler &, cfg_elem *)> &step) {
    for (const char *list : {"nodes", "nodes-1.ports"}) {
      SCOPED_TRACE(list);
      both([&](const Filler &filler) {
        cfg_elem *entry = filler.append(list, node());
        ASSERT_NE(entry, nullptr) << cfg_error_text(filler.store);
        ASSERT_NE(filler.append(list, node()), nullptr);
        step(filler, entry);
      });
    }
  }
  // The same, committed with and without a look at the edit.
  void after_change(const std::function<void(const Filler &, cfg_elem *)> &change) {
    with_pending_node(change);
    if (HasFatalFailure()) return;
    commit_both();
    if (HasFatalFailure()) return;
    with_pending_node(change);
    if (HasFatalFailure()) return;
    expect_alike();
    both([](const Filler &filler) { check_tree(filler.store); });
    commit_both();
  }
};
