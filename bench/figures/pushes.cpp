// Pushes: what making, saving and reading one costs as its nodes grow, and a message for each of them. Every
// round of every size works on as many nodes, so that none has the processor's caches to itself: a hundred
// pushes of a hundred nodes stand beside one of ten thousand.
#include <twobject.h>

#include <cstdlib>
#include <map>
#include <memory>
#include <vector>

#include "figures/figures.hpp"
#include "figures/growth.hpp"
#include "ours/own_store.hpp"

namespace bench {
namespace {

// A push is freed but for texts that callers may go on with; here nobody does.
void free_push(cfg_push_exec_ctxt *push) {
  std::vector<const char *> texts;
  for (std::int32_t i = 0, count = cfg_push_exec_ctxt_get_num_nodes(push); i < count; ++i) {
    cfg_push_node_ctxt *node = cfg_push_exec_ctxt_get_node_ctxt(push, i);
    texts.insert(texts.end(), {cfg_push_node_ctxt_get_uuid(node), cfg_push_node_ctxt_get_node(node),
                               cfg_push_node_ctxt_get_parent_uuid(node)});
  }
  cfg_push_exec_ctxt_free(push);
  for (const char *text : texts) std::free(const_cast<char *>(text));
}
using owned_push = std::unique_ptr<cfg_push_exec_ctxt, void (*)(cfg_push_exec_ctxt *)>;

using Pushes = std::vector<owned_push>;

constexpr int kNodes = 10'000;

// A store of its own with committed pushes of each size, each with as many nodes in all.
class PushStore {
 public:
  explicit PushStore(const std::string &directory)
      : handle_(cfg_open(directory.c_str(), CFG_OPEN_CREATE, nullptr)) {
    if (handle_ == nullptr) throw std::runtime_error("the store cannot be opened");
    const char *list = "cfg_push_exec_ctxts";
    require(cfg_add_mapelem(handle_, cfg_root(handle_), list, cfg_new_list(handle_)));
    require(cfg_commit(handle_, nullptr));
    for (const int size : kGrowthSizes) {
      const Pushes pushes = make(size);
      require(cfg_commit(handle_, nullptr));
      for (const owned_push &push : pushes) ids_[size].emplace_back(cfg_push_exec_ctxt_get_uuid(push.get()));
    }
  }
  ~PushStore() { cfg_close(handle_); }
  PushStore(const PushStore &) = delete;
  PushStore &operator=(const PushStore &) = delete;

  // New pushes to this many nodes each, saved whole.
  Pushes make(int size) {
    Pushes made;
    for (int left = kNodes; left > 0; left -= size) {
      made.emplace_back(cfg_push_exec_ctxt_new(handle_), free_push);
      cfg_push_exec_ctxt *push = made.back().get();
      require(cfg_push_exec_ctxt_set_username(push, "operator"));
      for (int i = 1; i <= size; ++i) {
        cfg_push_node_ctxt *node = cfg_push_node_ctxt_new(handle_);
        require(cfg_push_node_ctxt_set_node(node, ("nodes-" + std::to_string(i)).c_str()));
        require(cfg_push_exec_ctxt_add_node(push, node));
      }
      require(cfg_push_exec_ctxt_save(push, 1));
    }
    return made;
  }
  // The committed pushes of this size, with their nodes.
  Pushes load(int size) {
    Pushes loaded;
    for (const std::string &id : ids_[size]) {
      loaded.emplace_back(cfg_push_exec_ctxt_get_by_id(handle_, id.c_str()), free_push);
      require(cfg_push_exec_ctxt_get_num_nodes(loaded.back().get()) == size);
    }
    return loaded;
  }
  void save(const Pushes &pushes) {
    for (const owned_push &push : pushes) require(cfg_push_exec_ctxt_save(push.get(), 1));
  }
  void add_messages(const Pushes &pushes) {
    constexpr const char *arguments[] = {"operator"};
    for (const owned_push &push : pushes)
      for (std::int32_t i = 0, count = cfg_push_exec_ctxt_get_num_nodes(push.get()); i < count; ++i)
        require(cfg_push_node_ctxt_add_execution_change(cfg_push_exec_ctxt_get_node_ctxt(push.get(), i), 12,
                                                        1, arguments, "templates-1"));
  }
  void abandon() { cfg_abandon(handle_); }

 private:
  void require(bool done) { require_store(handle_, done); }

  cfg *handle_;
  std::map<int, std::vector<std::string>> ids_;
};

// What a run works on: the committed pushes of its size, and a place for what it makes.
struct Working {
  Pushes there, made;
};

// Each run begins without an edit and without what the last one made; only the run is measured.
template <class Run>
void measure_growth(const std::string &what, PushStore &own, const Run &run, const Settings &settings,
                    Table &table) {
  std::map<int, Working> sizes;
  Contest contest;
  for (const int size : kGrowthSizes) {
    Working &working = sizes[size];
    contest.enter(
        std::to_string(size), [&, size](std::size_t) { run(working, size); },
        [&, size](std::size_t) {
          working.made.clear();
          own.abandon();
          working.there = own.load(size);
        });
  }
  contest.run(settings.rounds(20), kNodes);
  sizes.clear();
  own.abandon();
  limit_growth(what, contest, table, Work::as_much);
}

}  // namespace

void measure_pushes(const Settings &settings, Table &table) {
  PushStore own(settings.workspace.directory("pushes"));
  lock_mapped_files(settings.workspace.path());
  const auto measure = [&](const char *what, const auto &run) {
    measure_growth(what, own, run, settings, table);
  };
  measure("making a push and saving it", [&](Working &w, int size) { w.made = own.make(size); });
  measure("reading a push with its nodes", [&](Working &w, int size) { w.made = own.load(size); });
  measure("saving a push again", [&](Working &w, int) { own.save(w.there); });
  measure("a message for each node of a push", [&](Working &w, int) { own.add_messages(w.there); });
}

}  // namespace bench
