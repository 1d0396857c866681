// Two edits made side by side at random: they merge or conflict exactly as the rule says, and a merge is what
// doing one after the other gives.
#include "fixture.hpp"
#include "tree.hpp"

#include <functional>
#include <random>
#include <set>

namespace {

// What an edit did, for the rule and for doing it again elsewhere.
struct Edit {
  std::vector<std::string> writes;  // slash-separated places, an append being a new place below its list
  std::vector<std::function<void(cfg *)>> steps;
};

bool covers(const std::string &upper, const std::string &lower) {
  return lower == upper || lower.rfind(upper + "/", 0) == 0;
}

bool conflict(const Edit &one, const Edit &two) {
  for (const std::string &a : one.writes)
    for (const std::string &b : two.writes)
      if (covers(a, b) || covers(b, a)) return true;
  return false;
}

}  // namespace

class RaceTest : public StoreTest {
 protected:
  static constexpr const char *kKeys[] = {"a", "b", "c", "d", "e", "f"};

  void SetUp() override {
    StoreTest::SetUp();
    ASSERT_NE(make_list(store, "nodes"), nullptr);
    refill(store);
    ASSERT_TRUE(commits(store));
  }
  unsigned below(unsigned limit) { return static_cast<unsigned>(random_()) % limit; }

  static void append_node(cfg *handle, const std::string &name) {
    cfg_elem *entry = append_named(handle, cfg_get_by_path(handle, "nodes"), name);
    put_map(handle, entry, "sub");
    put_list(handle, entry, "ports");
  }
  // Tops the list up to 5 entries and every entry's inner list up to 4.
  void refill(cfg *handle) {
    cfg_elem *list = cfg_get_by_path(handle, "nodes");
    while (size_of(list) + pending_size_of(list) < 5) {
      append_node(handle, "n");
    }
    for (int i = 0; i < size_of(list); ++i) {
      cfg_elem *entry = cfg_simple_get_listelem(handle, list, i);
      cfg_elem *ports = cfg_simple_get_mapelem(handle, entry, "ports");
      for (int have = size_of(ports); have < 4; ++have) append_named(handle, ports, "p");
    }
  }

  // Makes a random edit. Each place is touched once at most, and every value written is new.
  Edit edit(cfg *handle) {
    Edit made;
    cfg_elem *list = cfg_get_by_path(handle, "nodes");
    for (unsigned count = 1 + below(4); count > 0; --count) {
      cfg_elem *entry = cfg_simple_get_listelem(
          handle, list, static_cast<int>(below(static_cast<unsigned>(size_of(list)))));
      if (!entry) break;
      std::string id = id_of(entry);
      std::string key = kKeys[below(6)];
      int value = ++value_;
      std::string place;
      std::function<void(cfg *)> step;
      cfg_elem *ports = cfg_simple_get_mapelem(handle, entry, "ports");
      int port_count = size_of(ports);
      switch (below(9)) {
        case 0:
          place = "/nodes/" + id;
          step = [id](cfg *h) { cfg_delete_element(h, cfg_get_by_id(h, id.c_str())); };
          break;
        case 1:
          place = "/nodes/+" + std::to_string(value);
          step = [value](cfg *h) { append_node(h, std::to_string(value)); };
          break;
        case 2:
          place = "/nodes/" + id + "/sub/" + key;
          step = [id, key, value](cfg *h) {
            cfg_map_set_int(h, cfg_get_by_id(h, (id + ".sub").c_str()), key.c_str(), value);
          };
          break;
        case 3:
          place = "/nodes/" + id + "/sub";
          step = [id, value](cfg *h) {
            cfg_map_set_int(h, put_map(h, cfg_get_by_id(h, id.c_str()), "sub"), "replaced", value);
          };
          break;
        case 4:
          place = "/nodes/" + id + "/ports/+" + std::to_string(value);
          step = [id, value](cfg *h) {
            append_named(h, cfg_get_by_id(h, (id + ".ports").c_str()),
                         std::to_string(value) + std::string(400, 'p'));
          };
          break;
        case 5:
        case 6: {
          if (port_count < 1) continue;
          std::string port = ids_in(ports)[below(static_cast<unsigned>(port_count))];
          bool removes = below(2) == 0;
          place = "/nodes/" + id + "/ports/" + port + (removes ? "" : "/" + key);
          step = [port, removes, key, value](cfg *h) {
            cfg_elem *elem = cfg_get_by_id(h, port.c_str());
            if (removes)
              cfg_delete_element(h, elem);
            else
              cfg_map_set_int(h, elem, key.c_str(), value);
          };
          break;
        }
        default:
          place = "/nodes/" + id + "/" + key;
          step = [id, key, value](cfg *h) {
            cfg_map_set_int(h, cfg_get_by_id(h, id.c_str()), key.c_str(), value);
          };
      }
      bool again = false;
      for (const std::string &before : made.writes)
        again = again || covers(before, place) || covers(place, before);
      if (again) continue;
      step(handle);
      made.writes.push_back(place);
      made.steps.push_back(step);
    }
    return made;
  }

  // `mine` commits after `theirs`, both made on the same revision.
  void race(cfg *mine, cfg *theirs) {
    ASSERT_EQ(cfg_refresh(mine), 1);
    ASSERT_EQ(cfg_refresh(theirs), 1);
    if (below(15) == 0) cfg_set_list(theirs, cfg_get_by_path(theirs, "nodes"));
    refill(theirs);
    ASSERT_TRUE(commits(theirs));
    ASSERT_EQ(cfg_refresh(mine), 1);
    ASSERT_EQ(cfg_revision(mine), cfg_revision(theirs));
    std::string base = export_text(theirs);
    Edit my_edit = edit(mine);
    Edit their_edit = edit(theirs);
    std::string told;
    for (const Edit &one : {my_edit, their_edit}) {
      for (const std::string &place : one.writes) told += place + " ";
      told += "| ";
    }
    ASSERT_TRUE(commits(theirs)) << told;
    std::string after_theirs = dump(theirs);
    bool refused = conflict(my_edit, their_edit);
    (refused ? conflicts_ : merges_) += 1;
    if (refused) {
      ASSERT_TRUE(refuses_commit(mine, CFG_E_CONFLICT)) << told;
      cfg_abandon(mine);
      ASSERT_EQ(cfg_refresh(mine), 1);
      ASSERT_EQ(dump(mine), after_theirs) << told;
      return;
    }
    ASSERT_TRUE(commits(mine)) << told;
    // One after the other, on a copy of what both began with.
    cfg *copy = another_store();
    ASSERT_EQ(import_text(copy, base), 1);
    ASSERT_TRUE(commits(copy));
    for (const auto &step : their_edit.steps) step(copy);
    ASSERT_TRUE(commits(copy));
    for (const auto &step : my_edit.steps) step(copy);
    ASSERT_TRUE(commits(copy));
    ASSERT_EQ(dump(mine), dump(copy)) << told;
    close_handle(copy);
  }

  void run(unsigned seed) {
    random_.seed(seed);
    cfg *one = store;
    cfg *two = another_handle();
    for (int round = 0; round < 150 && !HasFailure(); ++round) {
      if (round % 2) {
        race(one, two);
      } else {
        race(two, one);
      }
    }
    EXPECT_GT(merges_, 30);
    EXPECT_GT(conflicts_, 15);
    check_tree(store);
    EXPECT_EQ(cfg_verify(store, nullptr, nullptr), 1);
  }

  std::mt19937 random_;
  int value_ = 0, merges_ = 0, conflicts_ = 0;
};
STORE_TEST_ON_BOTH_ENGINES(RaceTest);

TEST_P(RaceTest, EditsMergeOrConflictByTheRuleSeed1) { run(11); }
TEST_P(RaceTest, EditsMergeOrConflictByTheRuleSeed2) { run(22); }
TEST_P(RaceTest, EditsMergeOrConflictByTheRuleSeed3) { run(33); }
