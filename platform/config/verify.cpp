// Checking a whole store.
#include <map>

#include "id_text.hpp"
#include "store.hpp"

namespace twcfg {
namespace {

class Verifier {
 public:
  Verifier(Store &store, cfg_problem_visitor visit, void *context)
      : store_(store), visit_(visit), context_(context) {}

  // False with the reason noted.
  bool run() {
    const Failure failure = store_.engine->verify(
        [&](const std::string &where, const std::string &what) { problem(where, what.c_str()); });
    if (failure.code == CFG_E_MEMORY) return store_.fail(failure) != 0;  // which says nothing about the store
    if (failure) problem("engine", failure.text.c_str());
    // Reading on through damaged pages could end the process.
    if (problems_ > 0) return damaged();
    if (!store_.reading()) return false;
    const Stored root = store_.snapshot->get(kRootKey);
    if (root) record(".", root.bytes);
    // Lists are checked as they are found, so that what cannot be reached from the root stands out.
    while (!waiting_.empty()) {
      const auto [list, id] = *waiting_.begin();
      waiting_.erase(waiting_.begin());
      check_list(list, id);
    }
    unreachable();
    if (const Failure reading = store_.snapshot->failure()) problem("engine", reading.text.c_str());
    return problems_ == 0 || damaged();
  }

 private:
  bool damaged() { return store_.fail(CFG_E_CORRUPT, "the store is damaged") != 0; }

  void problem(const std::string &where, const char *what) {
    ++problems_;
    if (visit_ != nullptr && !stopped_) stopped_ = visit_(context_, where.c_str(), what) == 0;
  }

  void record(const std::string &id, std::string_view bytes) {
    const Packed root = packed_record(bytes);
    Nodes nodes;
    Unpacker unpacker(nodes, store_.shapes, store_.names, *store_.snapshot);
    const Node *node = root ? unpacker.unpack(root) : nullptr;
    if (node == nullptr) return problem(id, "the record is damaged");
    lists_in(*node, id);
  }

  void lists_in(const Node &node, const std::string &id) {
    if (node.kind == CFG_MAP) {
      for (const MapItem &item : static_cast<const MapNode &>(node).items) {
        std::string below = id == kRootId ? std::string() : id + '.';
        below += escape_key(item.key->text);
        lists_in(*item.node, below);
      }
    } else if (node.kind == CFG_LIST) {
      const auto &list = static_cast<const ListNode &>(node);
      if (list.distant != 0) {
        if (!known_.emplace(list.distant, id).second)
          return problem(id, "its list belongs to another element as well");
        waiting_.emplace(list.distant, id);
      }
      std::uint32_t last = 0;
      for (const Node *entry : list.entries) {
        if (entry->number <= last || entry->number >= list.next)
          problem(id, "an entry's number is out of order");
        last = entry->number;
        lists_in(*entry, flatten(id) + '-' + std::to_string(entry->number));
      }
    }
  }

  void check_list(std::uint32_t list, const std::string &id) {
    ListHead head;
    if (!read_list_head(store_.snapshot->get(head_key(list)).bytes, head))
      return problem(id, "the list has no head");
    const auto cursor = store_.snapshot->cursor();
    std::uint32_t count = 0;
    for (bool more = cursor->seek(make_key(list, 1)); more && space_of(cursor->key()) == list;
         more = cursor->next()) {
      const std::uint32_t number = item_of(cursor->key());
      if (number >= head.next) problem(id, "an entry's number has not been given out yet");
      record(flatten(id) + '-' + std::to_string(number), cursor->value().bytes);
      ++count;
    }
    if (count != head.count) problem(id, "the list's count is not the number of its entries");
  }

  void unreachable() {
    const auto cursor = store_.snapshot->cursor();
    bool more = cursor->seek(make_key(kFirstList, 0));
    while (more) {
      const std::uint32_t list = space_of(cursor->key());
      if (known_.find(list) == known_.end()) problem("list " + std::to_string(list), "nothing refers to it");
      more = cursor->seek(make_key(list + 1, 0));
    }
  }

  Store &store_;
  cfg_problem_visitor visit_;
  void *context_;
  std::map<std::uint32_t, std::string> known_;
  std::map<std::uint32_t, std::string> waiting_;
  std::uint64_t problems_ = 0;
  bool stopped_ = false;
};

}  // namespace
}  // namespace twcfg

int cfg_verify(cfg *store, cfg_problem_visitor visit, void *context) noexcept {
  using namespace twcfg;
  if (store == nullptr) return 0;
  return guarded(store, 0, [&] {
    if (!store->in_own_process()) return 0;
    return Verifier(*store, visit, context).run() ? 1 : 0;
  });
}
