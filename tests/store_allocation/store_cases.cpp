#include <filesystem>

#include "store_allocation/cases.hpp"

namespace store_allocation {
namespace {

// ---- Opening ----

// A call that has no handle yet tells its failure in another place.
template <class Open>
void open_sweep(EngineKind engine, const Open &open) {
  for (const Behind behind : {Behind::refused, Behind::granted}) {
    for (long n = 1; n < 10'000; ++n) {
      const World world(engine);
      const std::string path = world.path();
      cfg_failure failure{};
      allocation::refuse(n, behind);
      cfg *opened = open(path.c_str(), &failure);
      const bool refused = allocation::stop_refusing();
      if (!opened) {
        EXPECT_TRUE(refused) << failure.text;
        EXPECT_EQ(failure.code, CFG_E_MEMORY) << failure.text;
        EXPECT_STRNE(failure.text, "");
        opened = open(path.c_str(), &failure);
      }
      ASSERT_NE(opened, nullptr) << failure.text;
      EXPECT_EQ(dump(opened), dump(world.store));
      cfg_close(opened);
      if (testing::Test::HasFailure()) ADD_FAILURE() << "with allocation " << n << " refused";
      if (!refused || testing::Test::HasFailure()) break;
    }
  }
}

void open_directory(EngineKind engine) {
  open_sweep(engine, [](const char *path, cfg_failure *failure) { return cfg_open(path, 0, failure); });
  open_sweep(engine, [](const char *path, cfg_failure *failure) {
    return cfg_open(path, CFG_OPEN_READ_ONLY, failure);
  });
}

// The first handle of a process on its store, which has the engine to open, too.
void create_directory(EngineKind engine) {
  for (const Behind behind : {Behind::refused, Behind::granted}) {
    for (long n = 1; n < 10'000; ++n) {
      const World world(engine);
      const std::string path = world.path() + "/../new";
      cfg_failure failure{};
      allocation::refuse(n, behind);
      cfg *opened = cfg_open(path.c_str(), CFG_OPEN_CREATE, &failure);
      const bool refused = allocation::stop_refusing();
      if (!opened) {
        EXPECT_TRUE(refused) << failure.text;
        EXPECT_EQ(failure.code, CFG_E_MEMORY) << failure.text;
        opened = cfg_open(path.c_str(), CFG_OPEN_CREATE, &failure);
      }
      ASSERT_NE(opened, nullptr) << failure.text << " with allocation " << n << " refused";
      EXPECT_EQ(dump(opened), "{}");
      cfg_close(opened);
      if (!refused || testing::Test::HasFailure()) break;
    }
  }
}

void open_memory(EngineKind engine) { open_sweep(engine, cfg_open_memory); }

void close(EngineKind engine) {
  for (const Behind behind : {Behind::refused, Behind::granted}) {
    World world(engine);
    edit(world);
    allocation::refuse(1, behind);
    cfg_close(world.store);
    EXPECT_FALSE(allocation::stop_refusing()) << "giving back must not need memory";
    world.store = nullptr;
  }
}

// ---- The edit as a whole ----

constexpr cfg_commit_note kNote{"the author", "the reason", "the token"};

int call_commit(World &w) { return cfg_commit(w.store, &kNote); }

void commit(EngineKind engine) {
  sweep(engine, call_commit, done);
  sweep(engine, call_commit, done, edit);
  // Others have committed since.
  sweep(engine, call_commit, done, [](World &w) {
    edit(w);
    compete(w);
    w.moves = true;
  });
  // A list that is moved into records of its own, and one that was.
  sweep(engine, call_commit, done, [](World &w) {
    cfg_elem *ports = at(w.store, "nodes-1.ports");
    for (int i = 0; i < 10; ++i) EXPECT_NE(append_named(w.store, ports, std::string(300, 'x')), nullptr);
    EXPECT_EQ(cfg_delete_element(w.store, at(w.store, "nodes-3")), 1);
  });
  // The very commit has been made before.
  sweep(
      engine,
      [](World &w) {
        static constexpr cfg_commit_note again{"the maker", "filling the store", "filled"};
        return cfg_commit(w.store, &again);
      },
      done, edit);
}

void committed_revision(EngineKind engine) {
  sweep(
      engine, [](World &w) { return cfg_committed_revision(w.store); },
      [](World &, uint64_t revision) { return revision == 2 ? "2" : ""; },
      [](World &w) {
        edit(w);
        EXPECT_EQ(call_commit(w), 1);
      });
}

void abandon(EngineKind engine) {
  sweep(
      engine,
      [](World &w) {
        cfg_abandon(w.store);
        return 1;
      },
      done, edit);
}

void refresh(EngineKind engine) {
  const auto call = [](World &w) { return cfg_refresh(w.store); };
  sweep(engine, call, done);
  sweep(engine, call, done, compete);
  sweep(engine, call, done, [](World &w) {
    at(w.store, "nodes-6");
    compete(w);
  });
  sweep(engine, call, done, [](World &w) {
    edit(w);
    compete(w);
  });
}

void park(EngineKind engine) {
  sweep(
      engine, [](World &w) { return cfg_park(w.store); }, done, [](World &w) { at(w.store, "nodes-6"); });
}

void revision(EngineKind engine) {
  sweep(
      engine, [](World &w) { return cfg_revision(w.store); },
      [](World &, uint64_t revision) { return revision == 0 ? "" : std::to_string(revision); });
}

void has_changes(EngineKind engine) {
  const auto call = [](World &w) { return cfg_has_changes(w.store); };
  sweep(engine, call, done, edit);
}

// ---- What was changed ----

// What a visitor was told. Visitors run while memory is refused, so they only add up.
struct Told {
  int done = 0;
  int calls = 0;
  int64_t sum = 0;

  void add(const char *text) {
    for (; text && *text; ++text) sum = (sum * 31 + static_cast<unsigned char>(*text)) % 1'000'003;
  }
};
std::string told(World &, Told got) {
  return got.done ? std::to_string(got.calls) + " calls, sum " + std::to_string(got.sum) : "";
}

int take_change(void *context, const cfg_change *change) {
  auto &to = *static_cast<Told *>(context);
  ++to.calls;
  if (change->id[0] != '{') to.add(change->id);
  to.add(change->old_text);
  // The ID of a new element is another one each time.
  if (change->new_text && change->new_text[0] != '{') to.add(change->new_text);
  return 1;
}

int take_commit(void *context, const cfg_commit_info *commit) {
  auto &to = *static_cast<Told *>(context);
  ++to.calls;
  to.add(commit->who);
  to.add(commit->why);
  to.add(commit->token);
  return 1;
}

void visit_changes(EngineKind engine) {
  const auto call = [](World &w) {
    Told got;
    got.done = cfg_visit_changes(w.store, take_change, &got);
    return got;
  };
  sweep(engine, call, told);
  sweep(engine, call, told, edit);
}

void visit_log(EngineKind engine) {
  sweep(
      engine,
      [](World &w) {
        Told got;
        got.done = cfg_visit_log(w.store, 0, take_commit, &got);
        return got;
      },
      told, compete);
}

void visit_commit(EngineKind engine) {
  sweep(
      engine,
      [](World &w) {
        Told got;
        got.done = cfg_visit_commit(w.store, 2, take_change, &got);
        return got;
      },
      told, compete);
}

void find_commit(EngineKind engine) {
  sweep(
      engine,
      [](World &w) {
        uint64_t found = 0;
        return cfg_find_commit(w.store, "filled", &found) ? found : 0;
      },
      [](World &, uint64_t found) { return found == 0 ? "" : std::to_string(found); });
}

// ---- The store as a whole ----

void status(EngineKind engine) {
  struct Status {
    int done;
    cfg_status_info info;
  };
  sweep(
      engine,
      [](World &w) {
        Status got{};
        got.done = cfg_status(w.store, &got.info);
        return got;
      },
      [](World &, const Status &got) {
        return got.done ? std::string(got.info.engine) + " " + std::to_string(got.info.revision) + " " +
                              std::to_string(got.info.records)
                        : "";
      },
      compete);
}

void verify(EngineKind engine) {
  const auto call = [](World &w) {
    const auto count = [](void *context, const char *, const char *) {
      return ++*static_cast<int *>(context);
    };
    int problems = 0;
    const int sound = cfg_verify(w.store, count, &problems);
    return problems == 0 ? sound : -1;
  };
  sweep(engine, call, done);
}

void compact(EngineKind engine) {
  static std::string path;
  const auto prepare = [](World &w) { path = w.path() + "-copy"; };
  const auto call = [](World &w) { return cfg_compact(w.store, path.c_str()); };
  sweep(
      engine, call,
      [](World &, int copied) {
        if (copied != 1) {
          EXPECT_FALSE(std::filesystem::exists(path)) << "a copy that failed is not left behind";
          return std::string();
        }
        cfg *copy = cfg_open(path.c_str(), 0, nullptr);
        std::string text = export_text(copy);
        cfg_close(copy);
        return text;
      },
      prepare);
}

// ---- Calls that only tell what is known ----

void tell(EngineKind engine) {
  World world(engine);
  EXPECT_EQ(cfg_get_by_id(world.store, "no such ID"), nullptr);
  allocation::refuse(1, Behind::refused);
  const cfg_code code = cfg_error_code(world.store);
  const char *text = cfg_error_text(world.store), *name = cfg_code_text(code);
  const cfg_advice advice = cfg_code_advice(code);
  EXPECT_FALSE(allocation::stop_refusing());
  EXPECT_EQ(code, CFG_E_NOT_FOUND);
  EXPECT_STREQ(text, "there is no element with ID \"no such ID\"");
  EXPECT_STREQ(name, "not found");
  EXPECT_EQ(advice, CFG_ADVICE_FIX);
}

const Case rows[] = {
    {"cfg_abandon", abandon},
    {"cfg_close", close},
    {"cfg_code_advice", tell, EngineKind::kMemory},
    {"cfg_code_text", tell, EngineKind::kMemory},
    {"cfg_commit", commit},
    {"cfg_committed_revision", committed_revision},
    {"cfg_compact", compact, EngineKind::kLmdb},
    {"cfg_error_code", tell},
    {"cfg_error_text", tell},
    {"cfg_find_commit", find_commit},
    {"cfg_has_changes", has_changes},
    {"cfg_open",
     [](EngineKind engine) {
       create_directory(engine);
       open_directory(engine);
     },
     EngineKind::kLmdb},
    {"cfg_open_memory", open_memory, EngineKind::kMemory},
    {"cfg_park", park},
    {"cfg_refresh", refresh},
    {"cfg_revision", revision},
    {"cfg_status", status},
    {"cfg_verify", verify},
    {"cfg_visit_changes", visit_changes},
    {"cfg_visit_commit", visit_commit},
    {"cfg_visit_log", visit_log},
};

}  // namespace

const std::span<const Case> store_cases = rows;

}  // namespace store_allocation
