#include "store_allocation/world.hpp"

#include <gtest/gtest.h>
#include <stdlib.h>

#include <filesystem>
#include <stdexcept>

#include "store/tree.hpp"

namespace store_allocation {
namespace {

void check(int done, const cfg *store) {
  if (!done) throw std::runtime_error(cfg_error_text(store));
}

std::string map_entry(int number, const std::string &members) {
  return (number == 1 ? "[" : ",[") + std::to_string(number) + R"(,{"map":{)" + members + "}}]";
}

// The content of every World's store, as an export. The entries of lists below the root and those of a long
// list in an entry are records of their own, those of a short list are not.
std::string content() {
  std::string log;
  for (int number = 1; number <= 12; ++number)
    log += map_entry(number, R"("line":{"string":")" + std::string(200, 'x') + R"("})");
  const std::string ports =
      map_entry(1, R"("label":{"string":"one"})") + map_entry(2, R"("on":{"boolean":true})");
  std::string nodes;
  for (int number = 1; number <= 6; ++number) {
    const std::string name = R"({"string":"node )" + std::to_string(number) + R"("})";
    std::string members = R"("name":)" + name + R"(,"status":{"string":"Pending"})";
    if (number == 1) members += R"(,"ports":{"list":[)" + ports + R"(],"next":3})";
    if (number == 3) members += R"(,"log":{"list":[)" + log + R"(],"next":13})";
    nodes += map_entry(number, members);
  }
  return R"({"format":"twconfig export","version":1,"root":{"map":{"hostname":{"string":"appliance"},)"
         R"("count":{"integer":7},"on":{"boolean":true},"key":{"blob":"AAEC"},"first":{"reference":"nodes-1"},)"
         R"("labels":{"list":[[1,{"string":"red"}],[2,{"string":"green"}]],"next":3},)"
         R"("system":{"map":{"net":{"map":{"port":{"integer":22},"a.b":{"string":"dotted"}}}}},)"
         R"("nodes":{"list":[)" +
         nodes + R"(],"next":7}},"retired":{"gone":5}}})";
}

cfg *opened(cfg *store, const cfg_failure &failure) {
  if (!store) throw std::runtime_error(failure.text);
  return store;
}

cfg *open_at(EngineKind engine, const std::string &place, unsigned options) {
  cfg_failure failure{};
  return opened(engine == EngineKind::kLmdb ? cfg_open(place.c_str(), options, &failure)
                                            : cfg_open_memory(place.c_str(), &failure),
                failure);
}

cfg *filled(EngineKind engine, const std::string &place) {
  cfg *store = open_at(engine, place, CFG_OPEN_CREATE);
  static const cfg_commit_note note{"the maker", "filling the store", "filled"};
  check(import_text(store, content()) && cfg_commit(store, &note), store);
  return store;
}

std::string new_directory() {
  // In memory where that is to be had: thousands of these stores are made and flushed.
  const bool shared_memory = std::filesystem::is_directory("/dev/shm");
  std::string name = (shared_memory ? "/dev/shm" : std::filesystem::temp_directory_path().string()) +
                     "/store_allocation.XXXXXX";
  if (!mkdtemp(name.data())) throw std::runtime_error("no temporary directory");
  return name;
}

// The LMDB store that those of all Worlds are copies of.
class Pattern {
 public:
  Pattern() : directory_(new_directory()) { cfg_close(filled(EngineKind::kLmdb, directory_ + "/store")); }
  ~Pattern() {
    std::error_code ignored;
    std::filesystem::remove_all(directory_, ignored);
  }
  Pattern(const Pattern &) = delete;
  Pattern &operator=(const Pattern &) = delete;

  void copy_to(const std::string &directory) const {
    std::filesystem::copy(directory_, directory, std::filesystem::copy_options::recursive);
  }

 private:
  std::string directory_;
};

int tell_change(void *context, const cfg_change *change) {
  auto &text = *static_cast<std::string *>(context);
  text += change->op;
  text += change->id + std::string("|") + (change->old_text ? change->old_text : "") + "|" +
          (change->new_text ? change->new_text : "") + "\n";
  return 1;
}

}  // namespace

std::string without_provisional_ids(std::string text) {
  constexpr size_t nonce = 16;  // "{", 16 hexadecimal digits, "-", a number, "}"
  for (size_t at = 0; (at = text.find('{', at)) != std::string::npos; ++at) {
    const size_t end = text.find('}', at);
    if (end == std::string::npos || text.find_first_not_of("0123456789abcdef", at + 1) != at + 1 + nonce)
      continue;
    if (text[at + 1 + nonce] == '-') text.erase(at + 1, end - at - 1);
  }
  return text;
}

World::World(EngineKind engine) : engine_(engine) {
  if (engine == EngineKind::kLmdb) {
    static const Pattern pattern;
    directory_ = new_directory();
    pattern.copy_to(directory_);
    store = open();
  } else {
    static int worlds = 0;
    directory_ = "store_allocation " + std::to_string(++worlds);
    other = filled(engine, path());
    store = open();
    cfg_close(other);
  }
  other = open();
}

World::~World() {
  cfg_free_conditions(condition);
  cfg_close(store);
  cfg_close(other);
  std::error_code ignored;
  if (engine_ == EngineKind::kLmdb) std::filesystem::remove_all(directory_, ignored);
}

cfg *World::open() const { return open_at(engine_, path(), 0); }

std::string World::edited() {
  if (moves) return "";
  std::string text = dump(store) + "\n";
  EXPECT_EQ(cfg_visit_changes(store, tell_change, &text), 1) << cfg_error_text(store);
  for (int32_t i = 0; i < cfg_get_message_count(store); ++i)
    text += cfg_message_get_text(cfg_get_message(store, i)) + std::string("\n");
  return without_provisional_ids(text);
}

std::string World::stored() const {
  cfg *reader = open();
  std::string text = export_text(reader);
  check(!text.empty(), reader);
  std::string problems;
  const auto note = [](void *context, const char *where, const char *problem) {
    *static_cast<std::string *>(context) += std::string(where) + ": " + problem + "\n";
    return 1;
  };
  EXPECT_EQ(cfg_verify(reader, note, &problems), 1) << problems;
  cfg_close(reader);
  return text;
}

cfg_elem *at(cfg *store, const char *id) {
  cfg_elem *elem = cfg_get_by_id(store, id);
  EXPECT_NE(elem, nullptr) << id << ": " << cfg_error_text(store);
  return elem;
}

void edit(World &world) {
  cfg *store = world.store;
  check(cfg_map_set_string(store, cfg_root(store), "hostname", "renamed"), store);
  check(cfg_map_set_int(store, at(store, "system.net"), "port", 2222), store);
  check(cfg_map_set_string(store, at(store, "nodes-2"), "name", "second"), store);
  check(cfg_map_delete_key(store, at(store, "nodes-5"), "status"), store);
  check(cfg_delete_element(store, at(store, "nodes-4")), store);
  check(cfg_delete_element(store, at(store, "nodes-3_log-2")), store);
  check(cfg_delete_element(store, at(store, "nodes-1_ports-2")), store);
  check(append_named(store, at(store, "nodes-1.ports"), "third") != nullptr, store);
  cfg_elem *added = append_named(store, at(store, "nodes"), "new");
  check(added && put_list(store, added, "ports") && append_string(store, at(store, "labels"), "blue"), store);
  check(cfg_map_set_reference(store, at(store, "nodes-6"), "next", reinterpret_cast<const char *>(added)),
        store);
}

void compete(World &world) {
  cfg *store = world.other;
  check(cfg_map_set_string(store, cfg_root(store), "motto", "faster"), store);
  check(cfg_map_set_string(store, at(store, "nodes-1"), "status", "Enrolled"), store);
  check(cfg_map_set_string(store, at(store, "nodes-2"), "status", "Enrolled"), store);
  check(append_named(store, at(store, "nodes-1.ports"), "theirs") != nullptr, store);
  check(append_named(store, at(store, "nodes"), "theirs") != nullptr, store);
  check(cfg_delete_element(store, at(store, "nodes-3_log-7")), store);
  check(cfg_commit(store, nullptr), store);
}

}  // namespace store_allocation
