// Random contents, read and changed at random before their commits: a store that gets each by one call and
// one that gets them value by value never differ.
#include "twin.hpp"

#include <random>

namespace {

class Generator {
 public:
  explicit Generator(unsigned seed) : random_(seed) {}
  unsigned below(unsigned limit) { return static_cast<unsigned>(random_()) % limit; }

  // References in it name new elements by a number: "@7" is the eighth.
  Recipe element(int depth, std::size_t targets) {
    const unsigned choice = below(depth >= 5 ? 3 : 9);
    if (choice == 0) return text(bytes());
    if (choice == 1) return refer(reference(targets));
    if (choice == 2) return depth == 0 ? map(depth, targets) : named(bytes());
    if (choice == 3) return list(depth, targets);
    return map(depth, targets);
  }
  Recipe value(int depth, std::size_t targets) {
    switch (below(depth >= 5 ? 8 : 10)) {
      case 0:
      case 1:
        return text(bytes());
      case 2:
        return blob(bytes() + std::string(below(3), '\0'));
      case 3:
        return integer(static_cast<std::int32_t>(random_()));
      case 4:
        return boolean(below(2) == 0);
      case 5:
        return refer(reference(targets));
      case 6:
      case 7:
        return {};
      default:
        return element(depth, targets);
    }
  }
  std::string key() {
    static constexpr const char *keys[] = {"a",   "b",   "c",   "name",  "x.y",
                                           "k~1", "{z}", "n-1", "ports", "long key"};
    return keys[below(10)];
  }

 private:
  std::string bytes() {
    static constexpr std::size_t sizes[] = {0, 1, 5, 12, 12, 30, 60, 100, 250, 900};
    std::string text(below(300) == 0 ? 70000 : below(25) == 0 ? below(5000) : sizes[below(10)], 'x');
    for (std::size_t i = 0; i < text.size() && i < 6; ++i) text[i] = static_cast<char>('a' + below(26));
    return text;
  }
  std::string reference(std::size_t targets) {
    if (targets == 0 || below(2) == 0) return "nodes-" + std::to_string(below(9));
    return "@" + std::to_string(below(static_cast<unsigned>(targets)));
  }
  Recipe list(int depth, std::size_t targets) {
    std::vector<Recipe> entries;
    for (unsigned i = below(4); i > 0; --i) entries.push_back(element(depth + 1, targets));
    return list_of(std::move(entries));
  }
  // Of one of some sets of keys, now and then a large one.
  Recipe map(int depth, std::size_t targets) {
    static const std::vector<std::string> sets[] = {
        {"a", "b", "c"},
        {"c", "b", "a"},
        {"name"},
        {"name", "x.y", "ports", "k~1", "{z}", "n-1"},
        {"ports", "name", "a", "long key", "b", "c", "d", "e", "f", "g"},
        {},
        {"b", "name"},
    };
    Recipe map{.kind = CFG_MAP};
    map.keys = sets[below(7)];
    if (below(60) == 0)
      for (unsigned i = below(2) == 0 ? 62 : 70; i > 0; --i) map.keys.push_back("wide " + std::to_string(i));
    for (std::size_t i = 0; i < map.keys.size(); ++i) map.items.push_back(value(depth + 1, targets));
    return map;
  }

  std::mt19937 random_;
};

Recipe with_ids(Recipe recipe, const std::vector<std::string> &ids) {
  if (recipe.kind == CFG_REFERENCE && recipe.data.starts_with('@'))
    recipe.data = ids[std::stoul(recipe.data.substr(1))];
  for (Recipe &item : recipe.items) item = with_ids(std::move(item), ids);
  return recipe;
}

}  // namespace

class ContentMirrorTest : public TwinTest {
 protected:
  void run(unsigned seed, int rounds) {
    Generator random(seed);
    for (int round = 0; round < rounds; ++round) {
      SCOPED_TRACE("seed " + std::to_string(seed) + " round " + std::to_string(round));
      ids_[0].clear();
      ids_[1].clear();
      for (unsigned steps = random.below(60); steps > 0 && !HasFailure(); --steps) step(random);
      if (HasFailure()) return;
      end_edit(random);
      if (HasFailure()) return;
    }
  }

 private:
  static constexpr const char *kLists[] = {"nodes", "certs", "nodes", "nodes-1.ports", "labels"};
  static constexpr const char *kMaps[] = {"map", "nodes-2", "nodes-1_ports-1"};

  void step(Generator &random) {
    const unsigned choice = random.below(20);
    if (choice < 13) return append(random);
    if (choice < 15) {
      const Recipe value = random.element(1, ids_[0].size());
      const std::string key = random.key();
      const char *map = kMaps[random.below(3)];
      return on_each([&](const Filler &filler, const auto &ids) {
        ASSERT_EQ(filler.put(filler.at(map), key.c_str(), with_ids(value, ids)), 1)
            << cfg_error_text(filler.store);
      });
    }
    const char *list = kLists[random.below(5)];
    const unsigned pick = random.below(20);
    const Recipe change = random.value(3, ids_[0].size());
    const std::string key = random.key();
    std::string read[2];
    on_each([&](const Filler &filler, const auto &ids) {
      const int pending = pending_size_of(filler.at(list));
      if (pending == 0) return;
      cfg_elem *entry = cfg_get_future_listelem(filler.at(list), static_cast<int>(pick) % pending);
      ASSERT_NE(entry, nullptr);
      if (choice == 19) {
        ASSERT_EQ(cfg_delete_element(filler.store, entry), 1);
      } else if (cfg_elem_kind(entry) == CFG_MAP && choice == 18) {
        ASSERT_EQ(cfg_map_delete_key(filler.store, entry, key.c_str()), 1);
      } else if (cfg_elem_kind(entry) == CFG_MAP && choice == 17 && change.kind != CFG_NONE) {
        ASSERT_EQ(filler.put(entry, key.c_str(), with_ids(change, ids)), 1) << cfg_error_text(filler.store);
      } else {
        read[filler.whole ? 0 : 1] = without_provisional_ids(dump(filler.store, entry));
      }
    });
    ASSERT_TRUE(same_text(read[0], read[1]));
  }

  void append(Generator &random) {
    const Recipe recipe = random.element(0, ids_[0].size());
    const char *list = kLists[random.below(5)];
    on_each([&](const Filler &filler, auto &ids) {
      cfg_elem *entry = filler.append(list, with_ids(recipe, ids));
      ASSERT_NE(entry, nullptr) << cfg_error_text(filler.store);
      ids.emplace_back(text_of(entry));
    });
  }

  template <class Body>
  void on_each(const Body &body) {
    body(whole, ids_[0]);
    body(single, ids_[1]);
  }

  void end_edit(Generator &random) {
    const unsigned choice = random.below(8);
    if (choice < 2) expect_alike();
    if (choice == 3) {
      both([](const Filler &filler) { cfg_abandon(filler.store); });
      return expect_alike();
    }
    if (choice < 6) {
      // Somebody else comes first, in both.
      const Recipe recipe = random.element(0, 0);
      for (const Filler &filler :
           {Filler{another_handle(), true}, Filler{another_handle_of(single.store), false}}) {
        ASSERT_NE(filler.append("nodes", recipe), nullptr);
        ASSERT_NE(filler.append("certs", recipe), nullptr);
        ASSERT_TRUE(commits(filler.store));
        close_handle(filler.store);
      }
      if (choice == 5) both([](const Filler &filler) { ASSERT_EQ(cfg_refresh(filler.store), 1); });
    }
    commit_both();
    if (random.below(6) != 0) return;
    // One of the two is opened again: its handle then knows nothing of its own any more.
    cfg *again = another_handle();
    close_handle(store);
    store = again;
    whole.store = again;
  }

  std::vector<std::string> ids_[2];  // of the entries of this edit
};
STORE_TEST_ON_BOTH_ENGINES(ContentMirrorTest);

TEST_P(ContentMirrorTest, TheTwoNeverDifferSeed1) { run(1, 14); }
TEST_P(ContentMirrorTest, TheTwoNeverDifferSeed2) { run(22, 14); }
TEST_P(ContentMirrorTest, TheTwoNeverDifferSeed3) { run(333, 14); }
TEST_P(ContentMirrorTest, TheTwoNeverDifferSeed4) { run(4444, 14); }
