// Pushes to test with.
#ifndef TW_TESTS_RECORDS_PUSHES_PUSH_FIXTURE_HPP
#define TW_TESTS_RECORDS_PUSHES_PUSH_FIXTURE_HPP

#include <twobject/push_exec_ctxt.h>
#include <twobject/push_node_ctxt.h>

#include <set>

#include "records/store_fixture.hpp"

namespace records {

struct free_node_ctxt {
  void operator()(cfg_push_node_ctxt *context) const { cfg_push_node_ctxt_free(context); }
};
using node_ctxt = std::unique_ptr<cfg_push_node_ctxt, free_node_ctxt>;

// The texts of a node context that its push's free function leaves to callers.
inline void texts_of(cfg_push_node_ctxt *node, std::set<const char *> &texts) {
  using count_function = int32_t (*)(const cfg_push_node_ctxt *);
  using id_function = const char *(*)(const cfg_push_node_ctxt *, int32_t);
  static constexpr struct {
    count_function count;
    id_function id;
  } lists[] = {
      {cfg_push_node_ctxt_get_preflight_change_count, cfg_push_node_ctxt_get_preflight_change},
      {cfg_push_node_ctxt_get_preflight_warning_count, cfg_push_node_ctxt_get_preflight_warning},
      {cfg_push_node_ctxt_get_preflight_error_count, cfg_push_node_ctxt_get_preflight_error},
      {cfg_push_node_ctxt_get_preflight_message_count, cfg_push_node_ctxt_get_preflight_message},
      {cfg_push_node_ctxt_get_execution_change_count, cfg_push_node_ctxt_get_execution_change},
      {cfg_push_node_ctxt_get_execution_warning_count, cfg_push_node_ctxt_get_execution_warning},
      {cfg_push_node_ctxt_get_execution_error_count, cfg_push_node_ctxt_get_execution_error},
      {cfg_push_node_ctxt_get_execution_message_count, cfg_push_node_ctxt_get_execution_message},
  };
  texts.insert({cfg_push_node_ctxt_get_uuid(node), cfg_push_node_ctxt_get_node(node),
                cfg_push_node_ctxt_get_parent_uuid(node)});
  for (const auto &list : lists)
    for (int32_t i = 0; i < list.count(node); ++i) texts.insert(list.id(node, i));
}

// Frees a push with what its free function leaves to callers: these tests keep none of it.
struct free_push {
  void operator()(cfg_push_exec_ctxt *push) const {
    std::set<const char *> texts;
    for (int32_t i = 0; i < cfg_push_exec_ctxt_get_num_nodes(push); ++i)
      if (cfg_push_node_ctxt *node = cfg_push_exec_ctxt_get_node_ctxt(push, i)) texts_of(node, texts);
    cfg_push_exec_ctxt_remove_templates(push);
    cfg_push_exec_ctxt_free(push);
    for (const char *text : texts) std::free(const_cast<char *>(text));
  }
};
using push_record = std::unique_ptr<cfg_push_exec_ctxt, free_push>;

class PushTest : public StoreTest {
 protected:
  void SetUp() override {
    StoreTest::SetUp();
    list_at(pushes);
  }
  push_record make() { return push_record(cfg_push_exec_ctxt_new(store)); }
  push_record load(const std::string &id) {
    return push_record(cfg_push_exec_ctxt_get_by_id(store, id.c_str()));
  }
  node_ctxt load_node(const std::string &id) {
    return node_ctxt(cfg_push_node_ctxt_get_by_id(store, id.c_str()));
  }
  // A push's element, not yet committed.
  cfg_elem *add_push() { return entry_of(pushes); }

  static constexpr char pushes[] = "cfg_push_exec_ctxts";
};

}  // namespace records

#endif
