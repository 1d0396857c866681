#include <cstring>
#include <memory>

#include "store_allocation/cases.hpp"

namespace store_allocation {
namespace {

constexpr char kLong[] = "a text that is too long for the space within a string object";
constexpr char kTree[] =
    R"({"and":[{"key":"name","op":"equal","string":"a name that is rather long"},{"and":[{"key":"k","op":"absent"}]}]})";

struct Free {
  void operator()(cfg_condition *condition) const { cfg_free_conditions(condition); }
};
using Condition = std::unique_ptr<cfg_condition, Free>;

std::string words(const Condition &condition) {
  const std::unique_ptr<json_t, decltype(&json_decref)> json(condition_to_json(condition.get()), json_decref);
  return take(json_dumps(json.get(), JSON_COMPACT));
}

// A maker gives a whole condition or NULL.
template <class Make>
void make(const Make &maker) {
  const std::string whole = words(Condition(maker()));
  EXPECT_GT(plain_sweep([&] {
              const Condition made(with_refusals(maker));
              if (made) EXPECT_EQ(words(made), whole);
              return made != nullptr;
            }),
            0);
}

void add_child(EngineKind) {
  EXPECT_GT(plain_sweep([] {
              const Condition node(cfg_new_and_condition());
              Condition child(cfg_new_and_condition());
              const int given =
                  with_refusals([&] { return cfg_condition_add_child(node.get(), child.get()); });
              if (given) child.release();
              EXPECT_EQ(words(node), given ? R"({"and":[{"and":[]}]})" : R"({"and":[]})");
              return given == 1;
            }),
            0);
}

void release(EngineKind) {
  EXPECT_EQ(plain_sweep([] {
              cfg_condition *tree = json_dump_to_condition(kTree, 0);
              with_refusals([&] {
                cfg_free_conditions(tree);
                return 1;
              });
              return true;
            }),
            0);
}

void to_json(EngineKind) {
  const Condition tree(json_dump_to_condition(kTree, 0));
  EXPECT_GT(plain_sweep([&] {
              const std::unique_ptr<json_t, decltype(&json_decref)> json(
                  with_refusals([&] { return condition_to_json(tree.get()); }), json_decref);
              if (json) EXPECT_EQ(take(json_dumps(json.get(), JSON_COMPACT)), words(tree));
              return json != nullptr;
            }),
            10);
}

// A search of each collection, asked often enough to be answered by an index.
template <class Prepare>
void search_after(EngineKind engine, const Prepare &prepare) {
  struct Question {
    const char *collection, *key, *value;
  };
  for (const Question question :
       {Question{"nodes", "status", "Pending"}, Question{"nodes-1_ports", "label", "one"},
        Question{"nodes-3_log", "line", "no such line"}}) {
    for (const int asked : {0, 2, 3}) {  // the second repetition builds the index, the third uses it
      sweep(
          engine, [question](World &w) { return cfg_search(w.store, question.collection, w.condition); },
          [](World &w, cfg_elem *found) {
            if (!found) return std::string();
            std::string text = "found";
            for (int i = 0; cfg_elem *entry = cfg_simple_get_listelem(w.store, found, i); ++i)
              text += "\n" + element(w, entry);
            return text;
          },
          [=, &prepare](World &w) {
            w.condition = cfg_new_string_condition(question.key, CFG_OP_EQUAL, question.value);
            for (int i = 0; i < asked; ++i)
              EXPECT_NE(cfg_search(w.store, question.collection, w.condition), nullptr);
            prepare(w);
          });
    }
  }
}

void search(EngineKind engine) {
  search_after(engine, as_it_is);
  search_after(engine, edit);
  search_after(engine, [](World &w) {
    compete(w);
    EXPECT_EQ(cfg_refresh(w.store), 1);
  });
}

void holds(EngineKind engine) {
  cfg_elem *node = nullptr;
  sweep(
      engine, [&](World &w) { return cfg_condition_holds(w.store, node, w.condition); }, done,
      [&](World &w) {
        w.condition = cfg_new_untyped_condition(kLong, CFG_OP_ABSENT);
        node = cfg_get_by_id(w.store, "nodes-1");
      });
}

const Case rows[] = {
    {"cfg_condition_add_child", add_child, kPlain},
    {"cfg_condition_holds", holds},
    {"cfg_free_conditions", release, kPlain},
    {"cfg_new_and_condition", [](EngineKind) { make([] { return cfg_new_and_condition(); }); }, kPlain},
    {"cfg_new_reference_condition",
     [](EngineKind) { make([] { return cfg_new_reference_condition(kLong, CFG_OP_EQUAL, kLong); }); },
     kPlain},
    {"cfg_new_string_condition",
     [](EngineKind) { make([] { return cfg_new_string_condition(kLong, CFG_OP_EQUAL, kLong); }); }, kPlain},
    {"cfg_new_untyped_condition",
     [](EngineKind) { make([] { return cfg_new_untyped_condition(kLong, CFG_OP_ABSENT); }); }, kPlain},
    {"cfg_search", search},
    {"condition_to_json", to_json, kPlain},
    {"json_dump_to_condition", [](EngineKind) { make([] { return json_dump_to_condition(kTree, 0); }); },
     kPlain},
};

}  // namespace

const std::span<const Case> condition_cases = rows;

}  // namespace store_allocation
