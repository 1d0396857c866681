// twbench_search: searches through the library and a real searchd: tagged nodes and a smart group, and what a
// commit costs the search behind it. See docs/performance.md.
#include <sched.h>
#include <sys/wait.h>
#include <twconfig.h>
#include <twobject.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "measure/workspace.hpp"

namespace {

constexpr int kSome = 100;  // nodes with the tag value "some"; all have "all"

void check(int done, const char *what) {
  if (!done) throw std::runtime_error(what);
}

// A store of tagged nodes, and the searchd that serves it.
class Served {
 public:
  Served(const std::string &path, int nodes) : store_(cfg_open(path.c_str(), CFG_OPEN_CREATE, nullptr)) {
    check(store_ != nullptr, "the store cannot be made");
    fill(nodes);
    searchd_ = fork();
    if (searchd_ == 0) {
      setenv("TWLOG_LEVEL", "4", 1);
      execl(TW_SEARCHD, TW_SEARCHD, "--store", path.c_str(), nullptr);
      _exit(127);
    }
    for (int fd = 0; (fd = twsearch_connect()) == 0;) {
      check(waitpid(searchd_, nullptr, WNOHANG) == 0,
            "searchd has ended: does another one serve its socket?");
      std::this_thread::sleep_for(std::chrono::milliseconds(50));
    }
  }
  ~Served() {
    kill(searchd_, SIGTERM);
    waitpid(searchd_, nullptr, 0);
    cfg_close(store_);
  }
  Served(const Served &) = delete;
  Served &operator=(const Served &) = delete;

  cfg *store() const { return store_; }
  // Durable.
  void change_a_node(int round) const {
    cfg_elem *node = cfg_get_by_id(store_, "nodes-7");
    check(cfg_map_set_string(store_, node, "description", std::to_string(round).c_str()), "description");
    check(cfg_commit(store_, nullptr), "commit");
  }

 private:
  cfg_elem *list(cfg_elem *map, const char *key) const {
    cfg_elem *made = cfg_new_list(store_);
    check(cfg_add_mapelem(store_, map, key, made), key);
    return made;
  }
  cfg_elem *entry(cfg_elem *list, const char *key, const char *text) const {
    cfg_elem *made = cfg_new_map(store_);
    check(cfg_add_listelem(store_, list, made) && cfg_map_set_string(store_, made, key, text), key);
    return made;
  }
  void fill(int nodes) const {
    cfg_elem *tags = cfg_new_map(store_);
    check(cfg_add_mapelem(store_, cfg_root(store_), "tags", tags), "tags");
    cfg_elem *values = list(entry(list(tags, "node_tags"), "name", "Bundle"), "values");
    entry(values, "value", "some");
    entry(values, "value", "all");
    cfg_elem *all = list(cfg_root(store_), "nodes");
    for (int i = 0; i < nodes; ++i) {
      cfg_elem *node = entry(all, "name", ("node " + std::to_string(i)).c_str());
      check(cfg_map_set_string(store_, node, "status", "Enrolled"), "status");
      check(cfg_map_set_string(store_, node, "product", i < kSome ? "generic" : "tarnwell"), "product");
      cfg_elem *refs = list(node, "tags");
      check(cfg_add_listelem(store_, refs, cfg_new_reference(store_, "tags_node_tags-1_values-2")), "all");
      if (i < kSome)
        check(cfg_add_listelem(store_, refs, cfg_new_reference(store_, "tags_node_tags-1_values-1")), "some");
    }
    check(cfg_commit(store_, nullptr), "commit");
  }

  cfg *store_;
  pid_t searchd_ = -1;
};

void release(char **items, int32_t count) {
  for (int32_t i = 0; i < count; ++i) std::free(items[i]);
  std::free(static_cast<void *>(items));
}

// As an enrollment bundle asks for its nodes.
int32_t tagged(const char *value) {
  cfg_condition *condition = cfg_new_string_condition("tag:Bundle", CFG_OP_EQUAL, value);
  char *id = twsearch_create("nodes", condition, 0, "bench");
  cfg_free_conditions(condition);
  char **items = nullptr;
  int32_t count = 0;
  const int32_t found = id ? twsearch_fetch(id, 0, 0, &items, &count, 0, "bench") : -1;
  std::free(id);
  if (found > 0) release(items, found);
  return found;
}

int32_t grouped(cfg *store, const char *product) {
  const std::string query = std::string(R"({"key":"product","op":"equal","string":")") + product + R"("})";
  cfg_smartgroup *group = cfg_smartgroup_new(store, "nodes", "bench", query.c_str());
  char **members = nullptr;
  const int32_t found = cfg_smartgroup_evaluate(group, &members);
  cfg_smartgroup_free(group);
  if (found > 0) release(members, found);
  return found;
}

struct Times {
  double median, p95;  // milliseconds
};

// Times `call`, which must find `expected` nodes each time; `before` is not timed.
template <class Before, class Call>
Times measured(int rounds, int32_t expected, Before before, Call call) {
  using clock = std::chrono::steady_clock;
  std::vector<double> times;
  for (int round = -5; round < rounds; ++round) {
    before(round);
    const auto begin = clock::now();
    check(call() == expected, "a search found something else");
    const std::chrono::duration<double, std::milli> took = clock::now() - begin;
    if (round >= 0) times.push_back(took.count());
  }
  std::sort(times.begin(), times.end());
  return {times[times.size() / 2], times[times.size() * 95 / 100]};
}

void print(const char *what, Times times, const char *bound) {
  std::printf("| %s | %.2f ms | %.2f ms | %s |\n", what, times.median, times.p95, bound);
}

// With the service that is started from here on. On two processors most of a search is the time that it takes
// to wake the other one, which depends on where the two happen to run; what is compared here is their work.
void stay_on_one_processor() {
  cpu_set_t one;
  CPU_ZERO(&one);
  CPU_SET(static_cast<unsigned>(sched_getcpu()), &one);
  check(sched_setaffinity(0, sizeof one, &one) == 0, "one processor");
}

void measure(const bench::Workspace &workspace) {
  const auto nothing = [](int) {};
  const auto some = [] { return tagged("some"); };
  std::printf("| search | median | p95 | bound of p95 |\n|---|---|---|---|\n");
  {
    const Served served(workspace.directory("searched"), 5000);
    print("100 of 5,000 nodes by tag", measured(300, kSome, nothing, some), "5 ms");
    print("all 5,000 nodes by tag", measured(100, 5000, nothing, [] { return tagged("all"); }), "20 ms");
    print("smart group of 100 of 5,000 nodes",
          measured(300, kSome, nothing, [&] { return grouped(served.store(), "generic"); }), "5 ms");
    print("smart group of 4,900 of 5,000 nodes",
          measured(100, 5000 - kSome, nothing, [&] { return grouped(served.store(), "tarnwell"); }), "20 ms");
  }
  stay_on_one_processor();
  Times few{}, many{};
  for (const int nodes : {1000, 50000}) {
    const Served served(workspace.directory("follow" + std::to_string(nodes)), nodes);
    const auto commit = [&](int round) { served.change_a_node(round); };
    (nodes == 1000 ? few : many) = measured(200, kSome, commit, some);
  }
  print("100 of 1,000 nodes by tag, behind a commit", few, "-");
  print("100 of 50,000 nodes by tag, behind a commit", many, "-");
  std::printf("growth of the median from 1,000 to 50,000 nodes: %.2fx (bound: 1.20x)\n",
              many.median / few.median);
}

}  // namespace

int main(int argc, char **argv) {
  try {
    measure(bench::Workspace(argc > 1 ? argv[1] : TW_BENCH_DIRECTORY));
    return 0;
  } catch (const std::exception &problem) {
    std::fprintf(stderr, "twbench_search: %s\n", problem.what());
    return 1;
  }
}
