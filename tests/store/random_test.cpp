// Thousands of random operations on a store and on a model of it, with commits, abandons, another handle's
// commits and reopening in between; the two must never differ.
#include "fixture.hpp"
#include "model.hpp"
#include "recipe.hpp"
#include "tree.hpp"

#include <random>
#include <set>

namespace {

// One handle at work in a subtree of its own, and the model of that subtree.
class Worker {
 public:
  Worker(std::string area, unsigned seed) : area_(std::move(area)), random_(seed) {}

  void attach(cfg *store) {
    store_ = store;
    if (!cfg_get_by_path(store_, area_.c_str())) put_map(store_, cfg_root(store_), area_.c_str());
  }
  cfg *store() const { return store_; }
  unsigned below(unsigned limit) { return static_cast<unsigned>(random_()) % limit; }

  // One random operation on a random element.
  void step() {
    cfg_elem *elem = cfg_get_by_path(store_, area_.c_str());
    ModelNode *node = &working_;
    descend(elem, node);
    if (node->kind == CFG_MAP) {
      change_map(elem, *node);
    } else {
      change_list(elem, *node);
    }
  }

  void expect_equal(const char *when) {
    ASSERT_EQ(dump(store_, cfg_get_by_path(store_, area_.c_str())), working_.dump()) << when;
  }

  // To be called after a successful commit of the handle.
  void committed() {
    working_.commit();
    learn_ids(cfg_get_by_path(store_, area_.c_str()), working_, area_);
    committed_ = working_;
  }
  void abandoned() { working_ = committed_; }

 private:
  // Goes down into maps and lists, now and then stopping.
  void descend(cfg_elem *&elem, ModelNode *&node) {
    while (below(4) != 0) {
      std::vector<std::pair<ModelNode *, int>> inner;  // and the index in its list, -1 in a map
      for (std::size_t i = 0; i < node->children.size(); ++i)
        if (container(node->children[i])) inner.emplace_back(&node->children[i], static_cast<int>(i));
      std::size_t committed = inner.size();
      for (std::size_t i = 0; i < node->pending.size(); ++i)
        if (container(node->pending[i])) inner.emplace_back(&node->pending[i], static_cast<int>(i));
      if (inner.empty()) return;
      std::size_t pick = below(static_cast<unsigned>(inner.size()));
      cfg_elem *next = node->kind == CFG_MAP
                           ? cfg_simple_get_mapelem(store_, elem, inner[pick].first->name.c_str())
                       : pick < committed ? cfg_simple_get_listelem(store_, elem, inner[pick].second)
                                          : cfg_get_future_listelem(elem, inner[pick].second);
      ASSERT_NE(next, nullptr);
      elem = next;
      node = inner[pick].first;
    }
  }
  static bool container(const ModelNode &node) { return node.kind == CFG_MAP || node.kind == CFG_LIST; }

  std::string random_text() {
    static constexpr std::size_t sizes[] = {0, 1, 5, 12, 12, 40, 40, 300, 900, 5000};
    std::size_t size = below(200) == 0 ? 70000 : sizes[below(10)];
    std::string text(size, 'x');
    for (std::size_t i = 0; i < size && i < 8; ++i) text[i] = static_cast<char>('a' + below(26));
    return text;
  }
  // Keys of containers have no dots or underscores, so that no two lists name their entries alike.
  std::string container_key() { return std::string(1, static_cast<char>('a' + below(4))); }
  std::string any_key() {
    static constexpr const char *keys[] = {"a",   "b",   "c",   "name", "x.y",      "x",
                                           "k~1", "p_q", "n-1", "{z}",  "\xc3\xa4", "long"};
    if (below(30) == 0) return "wide" + std::to_string(below(200));
    return keys[below(12)];
  }

  // A new element with a few values in it, and the same in the model.
  cfg_elem *make(ModelNode &node, int depth) {
    cfg_elem *elem = nullptr;
    switch (below(depth > 2 ? 2 : 5)) {
      case 0:
        node.kind = CFG_STRING;
        node.text = random_text();
        return cfg_new_string(store_, node.text.c_str());
      case 1:
        node.kind = CFG_REFERENCE;
        node.text = "target-" + std::to_string(below(20));
        return cfg_new_reference(store_, node.text.c_str());
      case 2:
        node.kind = CFG_LIST;
        elem = cfg_new_list(store_);
        for (unsigned i = below(4); i > 0; --i) append(elem, node, depth + 1);
        return elem;
      default:
        node.kind = CFG_MAP;
        elem = cfg_new_map(store_);
        for (unsigned i = below(6); i > 0; --i) set_scalar(elem, node);
        if (below(3) == 0) attach_new(elem, node, depth + 1);
        return elem;
    }
  }
  // The content of a new element, and the same in the model.
  Recipe recipe_of(ModelNode &node, int depth) {
    switch (below(depth > 2 ? 2 : 5)) {
      case 0:
        node.kind = CFG_STRING;
        node.text = random_text();
        return text(node.text);
      case 1:
        node.kind = CFG_REFERENCE;
        node.text = "target-" + std::to_string(below(20));
        return refer(node.text);
      case 2: {
        node.kind = CFG_LIST;
        std::vector<Recipe> entries;
        for (unsigned i = below(4); i > 0; --i)
          entries.push_back(recipe_of(node.children.emplace_back(), depth + 1));
        return list_of(std::move(entries));
      }
      default: {
        node.kind = CFG_MAP;
        std::vector<std::pair<std::string, Recipe>> values;
        for (const char *key : {"name", "x.y", "p_q", "a", "b"}) {
          if (below(2) == 0) continue;
          ModelNode value;
          values.emplace_back(key, may_hold(key) ? recipe_of(value, depth + 1) : scalar_of(value));
          node.put(key, std::move(value));
        }
        return map_of(std::move(values));
      }
    }
  }
  // As for container_key().
  static bool may_hold(const std::string &key) { return key.size() == 1; }
  Recipe scalar_of(ModelNode &value) {
    if (below(2) == 0) {
      value.kind = CFG_BLOB;
      value.text = random_text();
      return blob(value.text);
    }
    value.kind = CFG_INT;
    value.number = static_cast<std::int32_t>(random_());
    return integer(value.number);
  }

  void append(cfg_elem *list, ModelNode &node, int depth) {
    ModelNode entry;
    if (below(3) == 0) {
      const Recipe recipe = recipe_of(entry, depth);
      ASSERT_NE(cfg_append_content(store_, list, Content(recipe)), nullptr) << cfg_error_text(store_);
      node.pending.push_back(std::move(entry));
      return;
    }
    cfg_elem *elem = make(entry, depth);
    if (below(4) == 0) {
      ASSERT_EQ(cfg_add_listelem(store_, list, elem), 1) << cfg_error_text(store_);
      node.children.push_back(std::move(entry));
    } else {
      ASSERT_EQ(cfg_append_future_listelem(store_, list, elem), 1) << cfg_error_text(store_);
      node.pending.push_back(std::move(entry));
    }
  }
  void attach_new(cfg_elem *map, ModelNode &node, int depth) {
    ModelNode value;
    std::string key = container_key();
    if (below(4) == 0) {
      const Recipe recipe = recipe_of(value, depth);
      ASSERT_EQ(cfg_put_content(store_, map, key.c_str(), Content(recipe)), 1) << cfg_error_text(store_);
      node.put(key, std::move(value));
      return;
    }
    cfg_elem *elem = make(value, depth);
    ASSERT_EQ(cfg_add_mapelem(store_, map, key.c_str(), elem), 1) << cfg_error_text(store_);
    node.put(key, std::move(value));
  }
  void set_scalar(cfg_elem *map, ModelNode &node) {
    std::string key = any_key();
    ModelNode value;
    switch (below(5)) {
      case 0:
        value.kind = CFG_INT;
        value.number = static_cast<std::int32_t>(random_());
        ASSERT_EQ(cfg_map_set_int(store_, map, key.c_str(), value.number), 1);
        break;
      case 1:
        value.kind = CFG_BOOL;
        value.number = static_cast<std::int32_t>(below(2));
        ASSERT_EQ(cfg_map_set_bool(store_, map, key.c_str(), value.number), 1);
        break;
      case 2:
        value.kind = CFG_BLOB;
        value.text = random_text() + std::string(below(3), '\0');
        ASSERT_EQ(cfg_map_set_blob(store_, map, key.c_str(), value.text.data(), value.text.size()), 1);
        break;
      case 3:
        value.kind = CFG_REFERENCE;
        value.text = "target-" + std::to_string(below(20));
        ASSERT_EQ(cfg_map_set_reference(store_, map, key.c_str(), value.text.c_str()), 1);
        break;
      default:
        value.kind = CFG_STRING;
        value.text = random_text();
        ASSERT_EQ(cfg_map_set_string(store_, map, key.c_str(), value.text.c_str()), 1);
    }
    node.put(key, std::move(value));
  }

  void change_map(cfg_elem *map, ModelNode &node) {
    unsigned choice = below(20);
    if (choice < 11) return set_scalar(map, node);
    if (choice < 15) return attach_new(map, node, 0);
    std::string key = any_key();
    if (choice < 18) {
      ASSERT_EQ(cfg_map_delete_key(store_, map, key.c_str()), 1);
      node.remove(key);
      return;
    }
    ModelNode *child = node.find(key);
    cfg_elem *elem = cfg_simple_get_mapelem(store_, map, key.c_str());
    ASSERT_EQ(elem != nullptr, child != nullptr);
    if (!child) return;
    std::string text = random_text();
    ASSERT_EQ(cfg_set_string(store_, elem, text.c_str()), child->kind == CFG_STRING);
    if (child->kind == CFG_STRING) child->text = text;
  }

  void change_list(cfg_elem *list, ModelNode &node) {
    unsigned choice = below(40);
    if (choice < 22) return append(list, node, 0);
    if (choice < 24) {
      for (int i = 0; i < 30; ++i) append(list, node, 3);
      return;
    }
    if (choice == 24) {
      ASSERT_NE(cfg_set_list(store_, list), nullptr);
      node.children.clear();
      node.pending.clear();
      return;
    }
    bool of_pending = below(3) == 0;
    std::vector<ModelNode> &entries = of_pending ? node.pending : node.children;
    if (entries.empty()) return;
    // Mostly one entry goes, now and then half of the list.
    std::size_t gone = choice < 38 ? 1 : (entries.size() + 1) / 2;
    for (; gone > 0; --gone) {
      unsigned index = below(static_cast<unsigned>(entries.size()));
      cfg_elem *entry = of_pending ? cfg_get_future_listelem(list, static_cast<int>(index))
                                   : cfg_simple_get_listelem(store_, list, static_cast<int>(index));
      ASSERT_EQ(cfg_delete_element(store_, entry), 1);
      entries.erase(entries.begin() + index);
    }
  }

  // Takes the IDs of entries that a commit has named, checking their form and that they are new.
  void learn_ids(cfg_elem *elem, ModelNode &node, const std::string &id) {
    if (node.kind == CFG_MAP) {
      for (ModelNode &child : node.children)
        if (container(child))
          learn_ids(cfg_simple_get_mapelem(store_, elem, child.name.c_str()), child, id + "." + child.name);
      return;
    }
    std::string prefix = id;
    for (char &c : prefix)
      if (c == '.') c = '_';
    ASSERT_EQ(size_of(elem), static_cast<int>(node.children.size())) << id;
    for (std::size_t i = 0; i < node.children.size(); ++i) {
      ModelNode &child = node.children[i];
      cfg_elem *entry = cfg_simple_get_listelem(store_, elem, static_cast<int>(i));
      if (child.name.empty()) {
        child.name = id_of(entry);
        ASSERT_GT(number_of(child.name), 0);
        ASSERT_EQ(child.name, prefix + "-" + std::to_string(number_of(child.name)));
        ASSERT_TRUE(used_.insert(child.name).second) << child.name << " was given out twice";
      }
      if (container(child)) learn_ids(entry, child, child.name);
    }
  }

  std::string area_;
  std::mt19937 random_;
  cfg *store_ = nullptr;
  ModelNode working_, committed_;
  std::set<std::string> used_;
};

}  // namespace

class RandomTest : public StoreTest {
 protected:
  // Two handles, each in its own area and both appending to one list; a round is a few operations of each and
  // then what a user may do with an edit.
  void run(unsigned seed, int rounds) {
    Worker first("one", seed), second("two", seed + 1);
    make_list(store, "shared");
    first.attach(store);
    second.attach(store);
    ASSERT_TRUE(commits(store));
    first.committed();
    second.committed();
    second.attach(another_handle());
    std::vector<std::string> shared;
    std::string first_pending, second_pending;
    for (int round = 0; round < rounds; ++round) {
      SCOPED_TRACE("seed " + std::to_string(seed) + " round " + std::to_string(round));
      work(first, first_pending, shared, round);
      work(second, second_pending, shared, round);
      if (HasFailure()) return;
      if (first.below(12) == 0) {
        reopen();
        first.attach(store);
        second.attach(another_handle());
        first.abandoned();
        second.abandoned();
        first_pending.clear();
        second_pending.clear();
        first.expect_equal("after opening again");
        second.expect_equal("after opening again");
        ASSERT_EQ(cfg_verify(store, nullptr, nullptr), 1);
        std::string text = export_text(store);
        cfg *copy = another_store();
        ASSERT_EQ(import_text(copy, text), 1) << cfg_error_text(copy);
        ASSERT_TRUE(commits(copy));
        ASSERT_EQ(export_text(copy), text);
        ASSERT_EQ(dump(copy), dump(store));
        close_handle(copy);
      }
      if (HasFailure()) return;
    }
  }

 private:
  void work(Worker &worker, std::string &pending, std::vector<std::string> &shared, int round) {
    for (unsigned steps = worker.below(25); steps > 0 && !HasFailure(); --steps) worker.step();
    if (pending.empty() && worker.below(3) == 0) {
      pending = "round " + std::to_string(round);
      ASSERT_NE(append_string(worker.store(), cfg_get_by_path(worker.store(), "shared"), pending), nullptr);
    }
    worker.expect_equal("during the edit");
    if (HasFailure()) return;
    switch (worker.below(6)) {
      case 0:
        cfg_abandon(worker.store());
        worker.abandoned();
        pending.clear();
        worker.expect_equal("after abandon");
        break;
      case 1:
        ASSERT_EQ(cfg_refresh(worker.store()), 1);
        worker.expect_equal("after refresh");
        check_tree(worker.store());
        break;
      case 2:
        break;
      default:
        ASSERT_TRUE(commits(worker.store()));
        worker.committed();
        if (!pending.empty()) shared.push_back(pending);
        pending.clear();
        worker.expect_equal("after commit");
        check_tree(worker.store());
        expect_shared(worker.store(), shared);
    }
  }
  static void expect_shared(cfg *store, const std::vector<std::string> &shared) {
    cfg_elem *list = cfg_get_by_path(store, "shared");
    ASSERT_EQ(size_of(list), static_cast<int>(shared.size()));
    for (std::size_t i = 0; i < shared.size(); ++i)
      ASSERT_EQ(dump(store, cfg_simple_get_listelem(store, list, static_cast<int>(i))),
                "s'" + shared[i] + "'");
  }
};
STORE_TEST_ON_BOTH_ENGINES(RandomTest);

TEST_P(RandomTest, AStoreAndItsModelNeverDifferSeed1) { run(1, 100); }
TEST_P(RandomTest, AStoreAndItsModelNeverDifferSeed2) { run(20, 100); }
TEST_P(RandomTest, AStoreAndItsModelNeverDifferSeed3) { run(300, 100); }
TEST_P(RandomTest, AStoreAndItsModelNeverDifferOverALongTime) { run(4000, 400); }
