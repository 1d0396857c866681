// An edit changes something inside an entry and then removes what is above it: nothing of the change may stay
// behind, in whatever way it was removed and however large the inner list is.
#include "fixture.hpp"
#include "tree.hpp"

#include <functional>

class RemovedBelowTest : public StoreTest {
 protected:
  using Step = std::function<void()>;
  cfg_elem *root() { return cfg_root(store); }
  cfg_elem *at(const char *id) { return cfg_get_by_id(store, id); }
  void fill(cfg_elem *list, int count) {
    for (int i = 0; i < count; ++i) ASSERT_NE(append_named(store, list, std::string(bytes_, 'p')), nullptr);
  }
  // "nodes" with one entry that has a list "ports" of `count` entries.
  void make_nodes(int count) {
    cfg_elem *entry = append_named(store, make_list(store, "nodes"), "n");
    fill(put_list(store, entry, "ports"), count);
  }

  void run(const Step &removal) {
    const Step changes[] = {
        [this] { fill(at("nodes-1.ports"), 1); },
        [this] { fill(at("nodes-1.ports"), 200); },
        [this] { cfg_map_set_int(store, at("nodes-1_ports-1"), "x", 1); },
        [this] { cfg_delete_element(store, at("nodes-1_ports-1")); },
        [this] { fill(cfg_set_list(store, at("nodes-1.ports")), 2); },
        [this] { fill(put_list(store, append_named(store, at("nodes-1.ports"), "y"), "deep"), 1); },
        [this] { fill(put_list(store, at("nodes-1_ports-1"), "deep"), 40); },
    };
    for (std::size_t change = 0; change < std::size(changes); ++change)
      for (int count : {1, 100})
        for (std::size_t bytes : {std::size_t{1}, std::size_t{400}})
          for (bool again : {false, true}) {
            SCOPED_TRACE("change " + std::to_string(change) + ", " + std::to_string(count) + " entries of " +
                         std::to_string(bytes) + " bytes" + (again ? ", made again" : ""));
            store = another_store();
            bytes_ = bytes;
            make_nodes(count);
            ASSERT_TRUE(commits(store));
            changes[change]();
            removal();
            if (again) {
              cfg_map_delete_key(store, root(), "nodes");
              make_nodes(count);
            }
            ASSERT_TRUE(commits(store));
            std::string problems;
            cfg_problem_visitor tell = [](void *context, const char *where, const char *problem) {
              static_cast<std::string *>(context)->append(where).append(": ").append(problem).append("; ");
              return 1;
            };
            EXPECT_EQ(cfg_verify(store, tell, &problems), 1) << problems;
            check_tree(store);
            close_handle(store);
          }
  }

 private:
  std::size_t bytes_ = 0;
};
STORE_TEST_ON_BOTH_ENGINES(RemovedBelowTest);

TEST_P(RemovedBelowTest, DeletingTheOuterListLeavesNothing) {
  run([this] { cfg_map_delete_key(store, root(), "nodes"); });
}
TEST_P(RemovedBelowTest, ReplacingTheOuterListLeavesNothing) {
  run([this] { put_list(store, root(), "nodes"); });
}
TEST_P(RemovedBelowTest, ReplacingTheOuterListByAMapLeavesNothing) {
  run([this] { put_map(store, root(), "nodes"); });
}
TEST_P(RemovedBelowTest, ReplacingTheOuterListByANumberLeavesNothing) {
  run([this] { cfg_map_set_int(store, root(), "nodes", 1); });
}
TEST_P(RemovedBelowTest, EmptyingTheOuterListLeavesNothing) {
  run([this] { cfg_set_list(store, cfg_get_by_path(store, "nodes")); });
}
TEST_P(RemovedBelowTest, DeletingTheEntryLeavesNothing) {
  run([this] { cfg_delete_element(store, at("nodes-1")); });
}
TEST_P(RemovedBelowTest, DeletingTheInnerListLeavesNothing) {
  run([this] { cfg_map_delete_key(store, at("nodes-1"), "ports"); });
}
TEST_P(RemovedBelowTest, ReplacingTheInnerListLeavesNothing) {
  run([this] { put_list(store, at("nodes-1"), "ports"); });
}
TEST_P(RemovedBelowTest, ReplacingTheInnerListByAMapLeavesNothing) {
  run([this] { put_map(store, at("nodes-1"), "ports"); });
}
TEST_P(RemovedBelowTest, ReplacingTheInnerListByANumberLeavesNothing) {
  run([this] { cfg_map_set_int(store, at("nodes-1"), "ports", 1); });
}
TEST_P(RemovedBelowTest, EmptyingTheInnerListLeavesNothing) {
  run([this] { cfg_set_list(store, at("nodes-1.ports")); });
}
TEST_P(RemovedBelowTest, ImportingAnEmptyStoreLeavesNothing) {
  run([this] {
    cfg *empty = another_store();
    std::string text = export_text(empty);
    close_handle(empty);
    ASSERT_EQ(import_text(store, text), 1);
  });
}
TEST_P(RemovedBelowTest, AttachingAPreparedListLeavesNothingOfTheOld) {
  run([this] {
    cfg_elem *list = cfg_new_list(store);
    fill(put_list(store, append_named(store, list, "m"), "ports"), 50);
    ASSERT_EQ(cfg_add_mapelem(store, root(), "nodes", list), 1);
  });
}
