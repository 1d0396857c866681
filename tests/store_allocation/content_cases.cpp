// Writing whole elements, and what is done with those that have been written and not been looked at since.
#include <functional>
#include <optional>

#include "store/recipe.hpp"
#include "store_allocation/cases.hpp"

namespace store_allocation {
namespace {

// What a case is about to write; it is put together before allocations are refused.
class Given {
 public:
  void set(Recipe recipe) {
    content_.reset();
    recipe_ = std::move(recipe);
    content_.emplace(recipe_);
  }
  const cfg_content *get() const { return content_->get(); }

 private:
  Recipe recipe_;
  std::optional<Content> content_;
};

Recipe plain() {
  return map_of({{"name", text("a plain map with a text of some length")},
                 {"count", integer(7)},
                 {"on", boolean(true)},
                 {"key", blob(std::string(40, '\0'))},
                 {"absent", {}}});
}
Recipe nested() {
  return map_of({{"map", map_of({{"below", plain()}})},
                 {"list", list_of({plain(), text("an entry"), list_of({integer(1), named("deep")})})},
                 {"empty", list_of({})}});
}
// Above the size at which lists move into records of their own.
Recipe large() { return map_of({{"list", list_of(std::vector<Recipe>(6, text(std::string(400, 't'))))}}); }
Recipe huge() { return map_of({{"name", text(std::string(40'000, 't'))}, {"list", list_of({plain()})}}); }
// To so many new elements, which is one.
Recipe referring(const char *id, int count) {
  std::vector<Recipe> entries(static_cast<std::size_t>(count), refer(id));
  return map_of({{"first", refer(id)}, {"all", list_of(std::move(entries))}, {"other", refer("nodes-1")}});
}

using Prepare = std::function<void(World &)>;
using Make = std::function<Recipe(World &)>;

Make always(Recipe recipe) {
  return [recipe = std::move(recipe)](World &) { return recipe; };
}
Make with_references(int count) {
  return [count](World &w) {
    cfg_elem *target = append_named(w.store, at(w.store, "nodes"), "a target");
    return referring(reinterpret_cast<const char *>(target), count);
  };
}

// The states in which a place can be met.
std::vector<Prepare> states(const char *id) {
  return {[id](World &w) { w.elem = at(w.store, id); },
          [id](World &w) {
            w.elem = at(w.store, id);
            edit(w);
          },
          [id](World &w) {
            w.elem = at(w.store, id);
            compete(w);
            EXPECT_EQ(cfg_refresh(w.store), 1);
          }};
}

void append(EngineKind engine) {
  Given given;
  const auto call = [&](World &w) { return cfg_append_content(w.store, w.elem, given.get()); };
  const auto with = [&](const Make &make, const Prepare &state) {
    sweep(engine, call, element, [&](World &w) {
      state(w);
      given.set(make(w));
    });
  };
  for (const char *list : {"nodes", "nodes-3.log", "nodes-1.ports", "labels"}) {
    for (const Prepare &state : states(list)) with(always(nested()), state);
  }
  for (const char *list : {"nodes", "nodes-1.ports"}) {
    for (const Make &make :
         {always(plain()), always(large()), always(huge()), always(text("a text")),
          always(list_of({plain()})), always(map_of({})), with_references(1), with_references(12)})
      with(make, states(list).front());
  }
  // Into lists that are new themselves, and behind an entry of the same keys.
  with(always(nested()), [](World &w) { w.elem = cfg_new_list(w.store); });
  with(always(nested()), [](World &w) {
    w.elem = at(w.store, "nodes");
    const Recipe recipe = nested();
    EXPECT_NE(cfg_append_content(w.store, w.elem, Content(recipe)), nullptr);
  });
  with(always(plain()), [](World &w) {
    cfg_elem *push = append_named(w.store, make_list(w.store, "cfg_push_exec_ctxts"), "a push");
    EXPECT_NE(put_list(w.store, push, "nodes"), nullptr);
    EXPECT_EQ(cfg_commit(w.store, nullptr), 1) << cfg_error_text(w.store);
    for (int i = 0; i < 40; ++i)
      EXPECT_NE(append_named(w.store, at(w.store, "cfg_push_exec_ctxts-1.nodes"), "node"), nullptr);
    EXPECT_EQ(cfg_commit(w.store, nullptr), 1) << cfg_error_text(w.store);
    w.elem = at(w.store, "cfg_push_exec_ctxts-1.nodes");
  });
}

void put(EngineKind engine) {
  Given given;
  for (const char *key : {"ports", "a key that is not there"}) {
    const auto call = [&](World &w) { return cfg_put_content(w.store, w.elem, key, given.get()); };
    for (const char *map : {".", "system.net", "nodes-1", "nodes-1_ports-1"}) {
      for (const Prepare &state : states(map)) {
        sweep(engine, call, done, [&](World &w) {
          state(w);
          given.set(nested());
        });
      }
    }
    for (const Make &make : {always(text("a text")), always(large()), with_references(12)}) {
      sweep(engine, call, done, [&](World &w) {
        w.elem = at(w.store, "nodes-1");
        given.set(make(w));
      });
    }
  }
}

// ---- What becomes of pending entries that were appended whole ----

// Two of them, with references to one another's list, behind all that a store can be asked to number anew.
void append_pending(World &w) {
  cfg_elem *list = at(w.store, "nodes");
  const Recipe target = nested();
  w.elem = cfg_append_content(w.store, list, Content(target));
  const Recipe refers = referring(reinterpret_cast<const char *>(w.elem), 3);
  w.fresh = cfg_append_content(w.store, list, Content(refers));
  const Recipe last = nested();
  EXPECT_NE(cfg_append_content(w.store, at(w.store, "nodes-3.log"), Content(last)), nullptr);
  EXPECT_NE(w.fresh, nullptr) << cfg_error_text(w.store);
}

// One whose references get longer with the commit than there is room for.
void append_with_long_reference(World &w) {
  const std::string key(200, 'k');
  cfg_elem *target = cfg_new_map(w.store);
  const Recipe refers = referring(reinterpret_cast<const char *>(target), 2);
  w.fresh = cfg_append_content(w.store, at(w.store, "nodes"), Content(refers));
  EXPECT_EQ(cfg_add_mapelem(w.store, at(w.store, "system"), key.c_str(), target), 1);
}

// What the edit makes of the store; a store that cannot be read is a failure and no end of the test.
std::string committed(World &w) {
  EXPECT_EQ(cfg_commit(w.store, nullptr), 1) << cfg_error_text(w.store);
  try {
    return w.stored();
  } catch (const std::exception &problem) {
    return problem.what();
  }
}

// Whether a commit leaves what it should when an allocation of the call before it was refused, and nothing
// was looked at in between: a call that failed has left no trace.
template <class Call>
testing::AssertionResult commits_after(World &w, const Call &call, const std::string &without,
                                       const std::string &with, bool &refused) {
  const int went_through = call(w);
  refused = allocation::stop_refusing();
  if (!went_through && (!refused || cfg_error_code(w.store) != CFG_E_MEMORY))
    return testing::AssertionFailure() << cfg_error_code(w.store) << ": " << cfg_error_text(w.store);
  return same(committed(w), went_through ? with : without);
}

template <class Call>
void then_commit(EngineKind engine, const char *what, const Call &call,
                 const Prepare &prepare = append_pending) {
  std::string without, with;
  {
    World w(engine);
    prepare(w);
    without = committed(w);
  }
  {
    World w(engine);
    prepare(w);
    EXPECT_EQ(call(w), 1) << what << ": " << cfg_error_text(w.store);
    with = committed(w);
  }
  for (const Behind behind : {Behind::refused, Behind::granted}) {
    bool refused = true;
    for (long n = 1; refused && n < 100'000; ++n) {
      World w(engine);
      prepare(w);
      allocation::refuse(n, behind);
      const auto right = commits_after(w, call, without, with, refused);
      EXPECT_TRUE(right) << what << " with allocation " << n << " refused";
      if (!right) return;
    }
    EXPECT_FALSE(refused) << what << " never runs to its end";
  }
}

int tell_nobody(void *, const cfg_change *) { return 1; }

void pending(EngineKind engine) {
  then_commit(engine, "reading keys", [](World &w) {
    int32_t count = 0;
    return cfg_map_keys(w.elem, nullptr, &count);
  });
  then_commit(engine, "reading an inner list",
              [](World &w) { return cfg_simple_get_mapelem(w.store, w.elem, "list") != nullptr ? 1 : 0; });
  then_commit(engine, "reading a list of references",
              [](World &w) { return cfg_simple_get_mapelem(w.store, w.fresh, "all") != nullptr ? 1 : 0; });
  then_commit(engine, "the dry run",
              [](World &w) { return cfg_visit_changes(w.store, tell_nobody, nullptr); });
  then_commit(engine, "setting a key",
              [](World &w) { return cfg_map_set_string(w.store, w.elem, "name", "a new name"); });
  then_commit(engine, "replacing a reference",
              [](World &w) { return cfg_map_set_string(w.store, w.fresh, "first", "no reference"); });
  then_commit(engine, "deleting a key", [](World &w) { return cfg_map_delete_key(w.store, w.elem, "list"); });
  then_commit(engine, "deleting it", [](World &w) { return cfg_delete_element(w.store, w.fresh); });
  then_commit(engine, "emptying its list",
              [](World &w) { return cfg_set_list(w.store, at(w.store, "nodes")) != nullptr ? 1 : 0; });
  then_commit(
      engine, "a refresh", [](World &w) { return cfg_refresh(w.store); },
      [](World &w) {
        append_pending(w);
        compete(w);
      });
  // The commit itself: made again at once, it does what it would have done.
  then_commit(engine, "a commit", [](World &w) { return cfg_commit(w.store, nullptr); });
  then_commit(
      engine, "a commit of long references", [](World &w) { return cfg_commit(w.store, nullptr); },
      append_with_long_reference);
  then_commit(
      engine, "a commit behind another", [](World &w) { return cfg_commit(w.store, nullptr); },
      [](World &w) {
        append_pending(w);
        compete(w);
      });
}

const Case rows[] = {
    {"cfg_append_content",
     [](EngineKind e) {
       append(e);
       pending(e);
     }},
    {"cfg_put_content", put},
};

}  // namespace

const std::span<const Case> content_cases = rows;

}  // namespace store_allocation
