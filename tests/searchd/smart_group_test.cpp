// Smart groups after each of many random commits, against a walk over a model of the nodes.
#include <twobject/smart_groups.h>

#include <algorithm>
#include <map>
#include <random>
#include <set>

#include "search_service/search_service.hpp"
#include "searchd/fleet.hpp"
#include "searchd/searchd_process.hpp"

namespace searchd_tests {
namespace {

constexpr const char *kNames[] = {"a", "b", "c"};
constexpr const char *kTags[] = {"Bundle", "Room"};
constexpr const char *kTexts[] = {"north", "south"};

struct Node {
  std::string name;
  std::multiset<int> values;  // indexes of the model's tag values
};

// A value of a tag; it can be renamed.
struct Value {
  std::size_t tag;
  std::string text;
};

struct Condition {
  std::string key, op, value;  // op "absent": without value
};

class SmartGroups : public Fleet {
 protected:
  std::size_t below(std::size_t end) {
    return std::uniform_int_distribution<std::size_t>(0, end - 1)(random_);
  }

  void start() {
    for (std::size_t number = 0; number < std::size(kTags); ++number) {
      const std::string made = tag(kTags[number]);
      for (const char *text : kTexts) {
        value(made, text);
        values_.push_back({number, text});
      }
    }
    commit();
  }

  std::string value_id(int value) const {
    return "tags_node_tags-" + std::to_string(value / 2 + 1) + "_values-" + std::to_string(value % 2 + 1);
  }

  // False when no further change can be made before the commit: a new node has no final ID yet.
  bool change_something() {
    auto some = nodes_.begin();
    if (!nodes_.empty()) std::advance(some, below(nodes_.size()));
    const std::size_t what = below(20);
    if (nodes_.size() < 5 || (what < 4 && nodes_.size() < 60)) {
      const char *name = kNames[below(std::size(kNames))];
      node(name);
      nodes_[++last_] = {name, {}};
      return false;
    }
    const std::string id = "nodes-" + std::to_string(some->first);
    if (what < 7) {
      erase(id);
      nodes_.erase(some);
    } else if (what < 12) {
      some->second.name = kNames[below(std::size(kNames))];
      set(id, "name", some->second.name.c_str());
    } else if (what < 16) {
      const int value = static_cast<int>(below(values_.size()));
      give(id, value_id(value));
      some->second.values.insert(value);
    } else if (what < 19) {
      EXPECT_TRUE(cfg_map_delete_key(store, cfg_get_by_id(store, id.c_str()), "tags"));
      some->second.values.clear();
    } else {
      const int value = static_cast<int>(below(values_.size()));
      values_[static_cast<std::size_t>(value)].text = kTexts[below(std::size(kTexts))];
      set(value_id(value), "value", values_[static_cast<std::size_t>(value)].text.c_str());
    }
    return true;
  }

  Condition some_condition() {
    static const char *const ops[] = {"equal", "equal", "not_equal", "absent"};
    const std::string op = ops[below(std::size(ops))];
    if (below(2) == 0) return {"name", op, kNames[below(std::size(kNames))]};
    return {std::string("tag:") + kTags[below(std::size(kTags))], op, kTexts[below(std::size(kTexts))]};
  }

  bool holds(const Node &node, const Condition &condition) const {
    if (condition.key == "name")
      return condition.op != "absent" && (node.name == condition.value) == (condition.op == "equal");
    const auto carried = [&](int number) {
      const Value &value = values_[static_cast<std::size_t>(number)];
      return condition.key == std::string("tag:") + kTags[value.tag] &&
             (condition.op == "absent" || value.text == condition.value);
    };
    return std::any_of(node.values.begin(), node.values.end(), carried) == (condition.op == "equal");
  }

  std::string expected(const std::vector<Condition> &conditions) const {
    std::string all;
    for (const auto &[number, node] : nodes_)
      if (std::all_of(conditions.begin(), conditions.end(),
                      [&](const Condition &c) { return holds(node, c); }))
        all += " nodes-" + std::to_string(number);
    return all;
  }

  std::string evaluated(const std::vector<Condition> &conditions) {
    std::string query;
    for (const Condition &c : conditions) {
      const std::string leaf = c.op == "absent"  ? absent(c.key)
                               : c.op == "equal" ? equal(c.key, c.value)
                                                 : differs(c.key, c.value);
      query += (query.empty() ? "" : ",") + leaf;
    }
    query = R"({"and":[)" + query + "]}";
    cfg_smartgroup *group = cfg_smartgroup_new(store, "nodes", "group", query.c_str());
    char **members = nullptr;
    const int32_t count = cfg_smartgroup_evaluate(group, &members);
    cfg_smartgroup_free(group);
    std::string all;
    for (int32_t i = 0; i < count; ++i) {
      all += std::string(" ") + members[i];
      std::free(members[i]);
    }
    std::free(static_cast<void *>(members));
    return all;
  }

  std::mt19937 random_{4711};
  std::map<int, Node> nodes_;
  std::vector<Value> values_;
  int last_ = 0;
};

TEST_F(SmartGroups, AreWhatAWalkOverAllNodesFindsAfterEachCommit) {
  start();
  const search_service::PathClaim claim;
  Searchd searchd(store_path(), search_service::kPath);
  for (int round = 0; round < 2000; ++round) {
    for (std::size_t changes = 1 + below(3); changes > 0 && change_something(); --changes) {
    }
    commit();
    std::vector<Condition> conditions;
    for (std::size_t count = below(4); count > 0; --count) conditions.push_back(some_condition());
    ASSERT_EQ(evaluated(conditions), expected(conditions)) << "in round " << round;
  }
}

}  // namespace
}  // namespace searchd_tests
