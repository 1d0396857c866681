#include "push_fixture.hpp"

namespace {

using records::node_ctxt;

class PushNode : public records::PushTest {
 protected:
  void SetUp() override {
    PushTest::SetUp();
    push = add_push();
  }
  cfg_elem *add_stored(const char *node) {
    cfg_elem *nodes = cfg_simple_get_mapelem(store, push, "nodes");
    if (!nodes) nodes = child_list(push, "nodes");
    cfg_elem *elem = cfg_new_map(store);
    set_reference(elem, "node", node);
    add(nodes, elem);
    return elem;
  }
  cfg_elem *push = nullptr;
};

TEST_F(PushNode, StatusesHaveTheirTexts) {
  const char *const texts[] = {"preflight_ready", "preflight_in_progress", "preflight_complete",
                               "execute_in_progress", "execute_complete"};
  for (int32_t i = 0; i < 5; ++i) {
    EXPECT_STREQ(texts[i], cfg_node_ctxt_status_enum_to_string(i));
    EXPECT_EQ(i, cfg_node_ctxt_status_string_to_enum(texts[i]));
  }
  for (int32_t value : {-1, 5}) EXPECT_EQ(nullptr, cfg_node_ctxt_status_enum_to_string(value));
  for (const char *text : {"unconfigured", "Preflight_ready", ""})
    EXPECT_EQ(5, cfg_node_ctxt_status_string_to_enum(text));
  EXPECT_EQ(5, cfg_node_ctxt_status_string_to_enum(nullptr));
}

TEST_F(PushNode, ANewContextIsReadyAndNotToBeApplied) {
  const node_ctxt context(cfg_push_node_ctxt_new(store));
  EXPECT_EQ(nullptr, cfg_push_node_ctxt_get_uuid(context.get()));
  EXPECT_EQ(nullptr, cfg_push_node_ctxt_get_parent_uuid(context.get()));
  EXPECT_EQ(nullptr, cfg_push_node_ctxt_get_node(context.get()));
  EXPECT_EQ(0, cfg_push_node_ctxt_get_status(context.get()));
  EXPECT_EQ(0, cfg_push_node_ctxt_get_apply_execution(context.get()));
}

TEST_F(PushNode, ALoadedContextNamesItsListAsItsParent) {
  cfg_elem *elem = add_stored("nodes-5");
  set(elem, "status", "execute_complete");
  set_bool(elem, "apply_execution", true);
  const node_ctxt context = load_node(id_of(elem));
  ASSERT_NE(nullptr, context);
  EXPECT_EQ(id_of(elem), cfg_push_node_ctxt_get_uuid(context.get()));
  EXPECT_STREQ("nodes-5", cfg_push_node_ctxt_get_node(context.get()));
  EXPECT_EQ(CFG_PUSH_NODE_EXECUTE_COMPLETE, cfg_push_node_ctxt_get_status(context.get()));
  EXPECT_EQ(1, cfg_push_node_ctxt_get_apply_execution(context.get()));
  EXPECT_EQ(id_of(cfg_simple_get_mapelem(store, push, "nodes")),
            cfg_push_node_ctxt_get_parent_uuid(context.get()));
}

TEST_F(PushNode, MissingAndForeignKeysLoad) {
  cfg_elem *elem = add_stored("nodes-5");
  erase(elem, "node");
  const node_ctxt bare = load_node(id_of(elem));
  ASSERT_NE(nullptr, bare);
  EXPECT_EQ(nullptr, cfg_push_node_ctxt_get_node(bare.get()));
  EXPECT_EQ(CFG_PUSH_NODE_INVALID, cfg_push_node_ctxt_get_status(bare.get()));
  EXPECT_EQ(0, cfg_push_node_ctxt_get_apply_execution(bare.get()));
  EXPECT_EQ(0, cfg_push_node_ctxt_get_preflight_change_count(bare.get()));
  for (const char *key : {"node", "status", "apply_execution", "execution_errors"}) set(elem, key, 9);
  const node_ctxt foreign = load_node(id_of(elem));
  ASSERT_NE(nullptr, foreign);
  EXPECT_EQ(CFG_PUSH_NODE_INVALID, cfg_push_node_ctxt_get_status(foreign.get()));
}

TEST_F(PushNode, NothingLoadsWithoutIdElementOrParent) {
  EXPECT_EQ(nullptr, cfg_push_node_ctxt_get_by_id(store, nullptr));
  EXPECT_EQ(nullptr, cfg_push_node_ctxt_get_by_id(store, "nodes-1"));
  EXPECT_EQ(nullptr, cfg_push_node_ctxt_get_by_id(nullptr, "nodes-1"));
  EXPECT_EQ(nullptr, load_node(id_of(cfg_new_map(store)))) << "attached nowhere";
}

TEST_F(PushNode, ANewContextJoinsItsParentsListAsAPendingEntry) {
  const node_ctxt context(cfg_push_node_ctxt_new(store));
  EXPECT_EQ(1, cfg_push_node_ctxt_set_node(context.get(), "nodes-5"));
  EXPECT_EQ(0, cfg_push_node_ctxt_save(context.get())) << "no parent";
  EXPECT_EQ(1, cfg_push_node_ctxt_set_parent_uuid(context.get(), "cfg_push_exec_ctxts-99"));
  EXPECT_EQ(0, cfg_push_node_ctxt_save(context.get())) << "no such parent";
  EXPECT_EQ(1, cfg_push_node_ctxt_set_parent_uuid(context.get(), id_of(push).c_str()));
  EXPECT_EQ(1, cfg_push_node_ctxt_set_apply_execution(context.get(), 7));
  EXPECT_EQ(7, cfg_push_node_ctxt_get_apply_execution(context.get()));
  EXPECT_EQ(1, cfg_push_node_ctxt_save(context.get()));
  const std::string stored = dump(push);
  EXPECT_EQ(0U, stored.find("{nodes=[+{apply_execution=true ")) << stored;
  EXPECT_NE(std::string::npos, stored.find("node=&nodes-5 ")) << stored;
  EXPECT_NE(std::string::npos, stored.find("status=\"preflight_ready\"")) << stored;
  EXPECT_EQ(1, cfg_push_node_ctxt_save(context.get()));
  EXPECT_EQ(stored, dump(push));
}

TEST_F(PushNode, ANewContextTakesMessagesOfEveryKindAtOnce) {
  using add_function = int (*)(cfg_push_node_ctxt *, int32_t, int32_t, const char *const *, const char *);
  const add_function adders[] = {
      cfg_push_node_ctxt_add_preflight_change, cfg_push_node_ctxt_add_preflight_warning,
      cfg_push_node_ctxt_add_preflight_error,  cfg_push_node_ctxt_add_preflight_message,
      cfg_push_node_ctxt_add_execution_change, cfg_push_node_ctxt_add_execution_warning,
      cfg_push_node_ctxt_add_execution_error,  cfg_push_node_ctxt_add_execution_message,
  };
  const node_ctxt context(cfg_push_node_ctxt_new(store));
  cfg_push_node_ctxt_set_node(context.get(), "nodes-5");
  cfg_push_node_ctxt_set_parent_uuid(context.get(), id_of(push).c_str());
  ASSERT_EQ(1, cfg_push_node_ctxt_save(context.get()));
  for (const add_function add_message : adders)
    EXPECT_EQ(1, add_message(context.get(), 7, 0, nullptr, "templates-1"));
  commit();
  const node_ctxt again = load_node(cfg_push_node_ctxt_get_uuid(context.get()));
  EXPECT_EQ(1, cfg_push_node_ctxt_get_preflight_change_count(again.get()));
  EXPECT_EQ(1, cfg_push_node_ctxt_get_execution_message_count(again.get()));
}

TEST_F(PushNode, AnInvalidStatusHasNoKey) {
  cfg_elem *elem = add_stored("nodes-5");
  set(elem, "status", "preflight_ready");
  const node_ctxt context = load_node(id_of(elem));
  EXPECT_EQ(1, cfg_push_node_ctxt_set_status(context.get(), 5));
  EXPECT_EQ(1, cfg_push_node_ctxt_save(context.get()));
  EXPECT_EQ("{apply_execution=false node=&nodes-5}", dump(elem));
}

TEST_F(PushNode, WithoutNodeOrElementASaveFails) {
  cfg_elem *elem = add_stored("nodes-5");
  erase(elem, "node");
  const node_ctxt context = load_node(id_of(elem));
  EXPECT_EQ(0, cfg_push_node_ctxt_save(context.get()));
  cfg_push_node_ctxt_set_node(context.get(), "nodes-6");
  EXPECT_EQ(1, cfg_push_node_ctxt_save(context.get()));
  ASSERT_EQ(1, cfg_delete_element(store, elem));
  EXPECT_EQ(0, cfg_push_node_ctxt_save(context.get()));
}

TEST_F(PushNode, ASaveThatFailsAtTheNodeHasWrittenTheStatusBefore) {
  const node_ctxt context(cfg_push_node_ctxt_new(store));
  cfg_push_node_ctxt_set_parent_uuid(context.get(), id_of(push).c_str());
  cfg_push_node_ctxt_set_status(context.get(), CFG_PUSH_NODE_EXECUTE_COMPLETE);
  EXPECT_EQ(0, cfg_push_node_ctxt_save(context.get()));
  cfg_elem *elem = cfg_get_by_id(store, cfg_push_node_ctxt_get_uuid(context.get()));
  ASSERT_NE(nullptr, elem) << "it has joined the list";
  EXPECT_NE(std::string::npos, dump(elem).find("status=\"execute_complete\"")) << dump(elem);
  EXPECT_FALSE(cfg_map_has(elem, "apply_execution"));
}

TEST_F(PushNode, EverythingTakesNull) {
  EXPECT_EQ(nullptr, cfg_push_node_ctxt_get_uuid(nullptr));
  EXPECT_EQ(nullptr, cfg_push_node_ctxt_get_parent_uuid(nullptr));
  EXPECT_EQ(0, cfg_push_node_ctxt_set_parent_uuid(nullptr, "a"));
  EXPECT_EQ(nullptr, cfg_push_node_ctxt_get_node(nullptr));
  EXPECT_EQ(0, cfg_push_node_ctxt_set_node(nullptr, "a"));
  EXPECT_EQ(5, cfg_push_node_ctxt_get_status(nullptr));
  EXPECT_EQ(0, cfg_push_node_ctxt_set_status(nullptr, 1));
  EXPECT_EQ(0, cfg_push_node_ctxt_get_apply_execution(nullptr));
  EXPECT_EQ(0, cfg_push_node_ctxt_set_apply_execution(nullptr, 1));
  EXPECT_EQ(0, cfg_push_node_ctxt_save(nullptr));
  cfg_push_node_ctxt_free(nullptr);
  const node_ctxt context(cfg_push_node_ctxt_new(store));
  cfg_push_node_ctxt_set_node(context.get(), "nodes-1");
  EXPECT_EQ(0, cfg_push_node_ctxt_set_node(context.get(), nullptr));
  EXPECT_STREQ("nodes-1", cfg_push_node_ctxt_get_node(context.get()));
}

}  // namespace
