#include "push_fixture.hpp"

namespace {

using records::node_ctxt;
using records::push_record;

class Push : public records::PushTest {
 protected:
  // A node context in the list "nodes" of a push's element; its list is made with the first.
  std::string add_stored_node(cfg_elem *push, const char *node) {
    cfg_elem *nodes = cfg_simple_get_mapelem(store, push, "nodes");
    if (!nodes) nodes = child_list(push, "nodes");
    cfg_elem *elem = cfg_new_map(store);
    set_reference(elem, "node", node);
    add(nodes, elem);
    return id_of(elem);
  }
  cfg_push_node_ctxt *new_node(const char *node) {
    cfg_push_node_ctxt *context = cfg_push_node_ctxt_new(store);
    cfg_push_node_ctxt_set_node(context, node);
    return context;
  }
};

TEST_F(Push, StatusesHaveTheirTexts) {
  const char *const texts[] = {"unconfigured",       "preflight_ready",     "preflight_in_progress",
                               "preflight_complete", "execute_in_progress", "execute_complete"};
  for (int32_t i = 0; i < 6; ++i) {
    EXPECT_STREQ(texts[i], cfg_exec_ctxt_status_enum_to_string(i));
    EXPECT_EQ(i, cfg_exec_ctxt_status_string_to_enum(texts[i]));
  }
  for (int32_t value : {-1, 6, 7}) EXPECT_EQ(nullptr, cfg_exec_ctxt_status_enum_to_string(value));
  for (const char *text : {"Unconfigured", "", "unconfigured "})
    EXPECT_EQ(6, cfg_exec_ctxt_status_string_to_enum(text));
  EXPECT_EQ(6, cfg_exec_ctxt_status_string_to_enum(nullptr));
}

TEST_F(Push, BehavioursHaveTheirTexts) {
  const char *const texts[] = {"skip", "prompt", "apply"};
  for (int32_t i = 0; i < 3; ++i) {
    EXPECT_STREQ(texts[i], cfg_exec_ctxt_disconn_behaviour_enum_to_string(i));
    EXPECT_EQ(i, cfg_exec_ctxt_disconn_behaviour_string_to_enum(texts[i]));
  }
  for (int32_t value : {-1, 3}) EXPECT_EQ(nullptr, cfg_exec_ctxt_disconn_behaviour_enum_to_string(value));
  EXPECT_EQ(3, cfg_exec_ctxt_disconn_behaviour_string_to_enum("Skip"));
  EXPECT_EQ(3, cfg_exec_ctxt_disconn_behaviour_string_to_enum(nullptr));
}

TEST_F(Push, TheSameTextHasAnotherNumberForANode) {
  EXPECT_EQ(1, cfg_exec_ctxt_status_string_to_enum("preflight_ready"));
  EXPECT_EQ(0, cfg_node_ctxt_status_string_to_enum("preflight_ready"));
}

TEST_F(Push, ANewPushHasItsHandleAndNothingElse) {
  const push_record push = make();
  EXPECT_EQ(store, cfg_push_exec_ctxt_get_cfg(push.get()));
  EXPECT_EQ(store, cfg_push_exec_ctxt_get_config(push.get()));
  EXPECT_EQ(nullptr, cfg_push_exec_ctxt_get_uuid(push.get()));
  EXPECT_EQ(nullptr, cfg_push_exec_ctxt_get_username(push.get()));
  EXPECT_EQ(0, cfg_push_exec_ctxt_get_status(push.get()));
  EXPECT_EQ(0, cfg_push_exec_ctxt_get_disconnected_behaviour(push.get()));
  EXPECT_EQ(0, cfg_push_exec_ctxt_get_num_templates(push.get()));
  EXPECT_EQ(0, cfg_push_exec_ctxt_get_num_nodes(push.get()));
}

TEST_F(Push, ANewPushSavedAloneWritesItsStateAndNoUserName) {
  const push_record push = make();
  EXPECT_EQ(1, cfg_push_exec_ctxt_save(push.get(), 0));
  EXPECT_EQ("[+{disconnected_nodes_behaviour=\"skip\" status=\"unconfigured\"}]", dump(pushes));
  EXPECT_EQ('{', *cfg_push_exec_ctxt_get_uuid(push.get()));
  commit();
  EXPECT_STREQ("cfg_push_exec_ctxts-1", cfg_push_exec_ctxt_get_uuid(push.get()));
  EXPECT_EQ(1, cfg_push_exec_ctxt_save(push.get(), 0));
  EXPECT_EQ("[{disconnected_nodes_behaviour=\"skip\" status=\"unconfigured\"}]", dump(pushes));
}

TEST_F(Push, WithoutTheListANewPushCannotBeSaved) {
  erase(cfg_root(store), pushes);
  const push_record push = make();
  EXPECT_EQ(0, cfg_push_exec_ctxt_save(push.get(), 1));
  EXPECT_EQ(nullptr, cfg_push_exec_ctxt_get_uuid(push.get()));
  EXPECT_EQ(0, cfg_push_exec_ctxt_save(nullptr, 1));
}

TEST_F(Push, AWholePushIsSavedWithTemplatesAndNodesAndComesBack) {
  const push_record push = make();
  EXPECT_EQ(1, cfg_push_exec_ctxt_set_username(push.get(), "alice"));
  cfg_push_exec_ctxt_set_status(push.get(), CFG_PUSH_EXEC_PREFLIGHT_READY);
  cfg_push_exec_ctxt_set_disconnected_behaviour(push.get(), CFG_PUSH_DISCONNECTED_APPLY);
  EXPECT_EQ(1, cfg_push_exec_ctxt_add_template(push.get(), "templates-4"));
  EXPECT_EQ(1, cfg_push_exec_ctxt_add_template(push.get(), "templates-2"));
  EXPECT_EQ(1, cfg_push_exec_ctxt_add_node(push.get(), new_node("nodes-8")));
  EXPECT_EQ(1, cfg_push_exec_ctxt_add_node(push.get(), new_node("nodes-3")));
  EXPECT_EQ("[]", dump(pushes));
  EXPECT_EQ(1, cfg_push_exec_ctxt_save(push.get(), 1));
  commit();
  const push_record again = load("cfg_push_exec_ctxts-1");
  EXPECT_STREQ("alice", cfg_push_exec_ctxt_get_username(again.get()));
  EXPECT_EQ(CFG_PUSH_EXEC_PREFLIGHT_READY, cfg_push_exec_ctxt_get_status(again.get()));
  EXPECT_EQ(CFG_PUSH_DISCONNECTED_APPLY, cfg_push_exec_ctxt_get_disconnected_behaviour(again.get()));
  ASSERT_EQ(2, cfg_push_exec_ctxt_get_num_templates(again.get()));
  EXPECT_STREQ("templates-4", cfg_push_exec_ctxt_get_template_uuid(again.get(), 0));
  EXPECT_STREQ("templates-2", cfg_push_exec_ctxt_get_template_uuid(again.get(), 1));
  ASSERT_EQ(2, cfg_push_exec_ctxt_get_num_nodes(again.get()));
  EXPECT_STREQ("nodes-8", cfg_push_node_ctxt_get_node(cfg_push_exec_ctxt_get_node_ctxt(again.get(), 0)));
  EXPECT_STREQ("nodes-3", cfg_push_node_ctxt_get_node(cfg_push_exec_ctxt_get_node_ctxt(again.get(), 1)));
}

TEST_F(Push, WhatIsSavedInTheSameEditIsReferredToByItsFinalIdAfterTheCommit) {
  const auto provisional = [&](const char *list) { return id_of(entry_of(list)); };
  const std::string template_id = provisional("templates"), node = provisional("nodes");
  ASSERT_EQ('{', template_id[0]);
  push_record push = make();
  cfg_push_exec_ctxt_add_template(push.get(), template_id.c_str());
  cfg_push_exec_ctxt_add_node(push.get(), new_node(node.c_str()));
  ASSERT_EQ(1, cfg_push_exec_ctxt_save(push.get(), 1));
  cfg_push_node_ctxt *context = cfg_push_exec_ctxt_get_node_ctxt(push.get(), 0);
  ASSERT_EQ(1, cfg_push_node_ctxt_add_execution_error(context, 7, 0, nullptr, template_id.c_str()));
  push.reset();
  commit_and_reopen();
  const push_record again = load("cfg_push_exec_ctxts-1");
  EXPECT_STREQ("templates-1", cfg_push_exec_ctxt_get_template_uuid(again.get(), 0));
  context = cfg_push_exec_ctxt_get_node_ctxt(again.get(), 0);
  EXPECT_STREQ("nodes-1", cfg_push_node_ctxt_get_node(context));
  const records::heap_text referred(
      get_template_uuid_from_message_uuid(store, cfg_push_node_ctxt_get_execution_error(context, 0)));
  EXPECT_STREQ("templates-1", referred.get());
}

TEST_F(Push, ASaveWithoutTheFlagWritesNeitherTemplatesNorNodes) {
  const push_record push = make();
  cfg_push_exec_ctxt_add_template(push.get(), "templates-4");
  cfg_push_exec_ctxt_add_node(push.get(), new_node("nodes-8"));
  EXPECT_EQ(1, cfg_push_exec_ctxt_save(push.get(), 0));
  EXPECT_EQ("[+{disconnected_nodes_behaviour=\"skip\" status=\"unconfigured\"}]", dump(pushes));
}

TEST_F(Push, SavingTwiceStoresEachTemplateOnce) {
  const push_record push = make();
  cfg_push_exec_ctxt_add_template(push.get(), "templates-4");
  EXPECT_EQ(1, cfg_push_exec_ctxt_save(push.get(), 1));
  EXPECT_EQ(1, cfg_push_exec_ctxt_save(push.get(), 1));
  commit();
  EXPECT_EQ(1, cfg_push_exec_ctxt_save(push.get(), 1));
  commit();
  const push_record again = load("cfg_push_exec_ctxts-1");
  EXPECT_EQ(1, cfg_push_exec_ctxt_get_num_templates(again.get()));
  EXPECT_EQ(1, cfg_push_exec_ctxt_save(again.get(), 1));
  EXPECT_EQ("[&templates-4]",
            dump(cfg_get_child_by_path(store, cfg_get_by_id(store, "cfg_push_exec_ctxts-1"), "templates")));
}

TEST_F(Push, OneTemplateCanBeSavedAlone) {
  const push_record push = make();
  cfg_push_exec_ctxt_add_template(push.get(), "templates-4");
  cfg_push_exec_template *entry = cfg_push_exec_ctxt_get_template(push.get(), 0);
  EXPECT_EQ(0, cfg_push_exec_ctxt_save_template(push.get(), entry)) << "the push has no element";
  EXPECT_EQ(1, cfg_push_exec_ctxt_save(push.get(), 0));
  EXPECT_EQ(1, cfg_push_exec_ctxt_save_template(push.get(), entry));
  EXPECT_EQ(1, cfg_push_exec_ctxt_save_template(push.get(), entry));
  EXPECT_EQ("[+&templates-4]",
            dump(cfg_get_child_by_path(store, cfg_get_by_id(store, cfg_push_exec_ctxt_get_uuid(push.get())),
                                       "templates")));
  EXPECT_EQ(0, cfg_push_exec_ctxt_save_template(nullptr, entry));
  EXPECT_EQ(0, cfg_push_exec_ctxt_save_template(push.get(), nullptr));
}

TEST_F(Push, SavingATemplateThatIsStoredMakesAMissingListAndNothingElse) {
  cfg_elem *elem = add_push();
  add(child_list(elem, "templates"), cfg_new_reference(store, "templates-4"));
  const push_record push = load(id_of(elem));
  erase(elem, "templates");
  EXPECT_EQ(1, cfg_push_exec_ctxt_save_template(push.get(), cfg_push_exec_ctxt_get_template(push.get(), 0)));
  EXPECT_EQ("{templates=[]}", dump(elem));
}

TEST_F(Push, ATemplateThatIsNoReferenceFailsTheSave) {
  const push_record push = make();
  cfg_push_exec_ctxt_add_template(push.get(), records::unwritable_id().c_str());
  EXPECT_EQ(0, cfg_push_exec_ctxt_save(push.get(), 1));
}

TEST_F(Push, MissingAndForeignKeysReadAsInvalid) {
  cfg_elem *elem = add_push();
  const push_record bare = load(id_of(elem));
  ASSERT_NE(nullptr, bare);
  EXPECT_EQ(CFG_PUSH_EXEC_INVALID, cfg_push_exec_ctxt_get_status(bare.get()));
  EXPECT_EQ(CFG_PUSH_DISCONNECTED_INVALID, cfg_push_exec_ctxt_get_disconnected_behaviour(bare.get()));
  EXPECT_EQ(nullptr, cfg_push_exec_ctxt_get_username(bare.get()));
  EXPECT_EQ(0, cfg_push_exec_ctxt_get_num_templates(bare.get()));
  for (const char *key : {"status", "username", "disconnected_nodes_behaviour", "templates"})
    set(elem, key, 3);
  const push_record foreign = load(id_of(elem));
  ASSERT_NE(nullptr, foreign);
  EXPECT_EQ(CFG_PUSH_EXEC_INVALID, cfg_push_exec_ctxt_get_status(foreign.get()));
  set(elem, "status", "other");
  set(elem, "disconnected_nodes_behaviour", "other");
  const push_record unknown = load(id_of(elem));
  EXPECT_EQ(CFG_PUSH_EXEC_INVALID, cfg_push_exec_ctxt_get_status(unknown.get()));
  EXPECT_EQ(CFG_PUSH_DISCONNECTED_INVALID, cfg_push_exec_ctxt_get_disconnected_behaviour(unknown.get()));
}

TEST_F(Push, NothingLoadsWithoutHandleIdOrElement) {
  EXPECT_EQ(nullptr, cfg_push_exec_ctxt_get_by_id(store, nullptr));
  EXPECT_EQ(nullptr, cfg_push_exec_ctxt_get_by_id(nullptr, "cfg_push_exec_ctxts-1"));
  EXPECT_EQ(nullptr, cfg_push_exec_ctxt_get_by_id(store, "cfg_push_exec_ctxts-1"));
}

TEST_F(Push, InvalidValuesDeleteTheirKeysAndNoUserNameKeepsTheStoredOne) {
  cfg_elem *elem = add_push();
  set(elem, "username", "alice");
  set(elem, "status", "other");
  const push_record push = load(id_of(elem));
  cfg_push_exec_ctxt_set_username(push.get(), "");
  EXPECT_EQ(1, cfg_push_exec_ctxt_save(push.get(), 0));
  EXPECT_EQ("{username=\"alice\"}", dump(elem));
}

TEST_F(Push, ASaveStopsAtAFailedWriteAndNeedsItsElement) {
  cfg_elem *elem = add_push();
  const push_record push = load(id_of(elem));
  cfg_push_exec_ctxt_set_status(push.get(), 0);
  cfg_push_exec_ctxt_set_username(push.get(), records::unwritable().c_str());
  EXPECT_EQ(0, cfg_push_exec_ctxt_save(push.get(), 0));
  EXPECT_EQ("{}", dump(elem));
  ASSERT_EQ(1, cfg_delete_element(store, elem));
  cfg_push_exec_ctxt_set_username(push.get(), "alice");
  EXPECT_EQ(0, cfg_push_exec_ctxt_save(push.get(), 0));
}

TEST_F(Push, NodesAreLoadedWhenTheyAreFirstAskedForAndOnce) {
  cfg_elem *elem = add_push();
  add_stored_node(elem, "nodes-1");
  const push_record push = load(id_of(elem));
  add_stored_node(elem, "nodes-2");
  EXPECT_EQ(2, cfg_push_exec_ctxt_get_num_nodes(push.get()));
  add_stored_node(elem, "nodes-3");
  EXPECT_EQ(2, cfg_push_exec_ctxt_get_num_nodes(push.get()));
  cfg_push_exec_ctxt_populate_nodes(push.get());
  EXPECT_EQ(2, cfg_push_exec_ctxt_get_num_nodes(push.get()));
  EXPECT_EQ(nullptr, cfg_push_exec_ctxt_get_node_ctxt(push.get(), 2));
  EXPECT_EQ(nullptr, cfg_push_exec_ctxt_get_node_ctxt(push.get(), -1));
}

TEST_F(Push, WithoutAListOfNodesTheNextCallTriesAgain) {
  cfg_elem *elem = add_push();
  const push_record push = load(id_of(elem));
  EXPECT_EQ(0, cfg_push_exec_ctxt_get_num_nodes(push.get()));
  add_stored_node(elem, "nodes-1");
  EXPECT_EQ(1, cfg_push_exec_ctxt_get_num_nodes(push.get()));
}

TEST_F(Push, AnAddedNodeStandsBehindTheStoredOnes) {
  cfg_elem *elem = add_push();
  add_stored_node(elem, "nodes-1");
  const push_record push = load(id_of(elem));
  EXPECT_EQ(1, cfg_push_exec_ctxt_add_node(push.get(), new_node("nodes-2")));
  EXPECT_EQ(2, cfg_push_exec_ctxt_get_num_nodes(push.get()));
  EXPECT_STREQ("nodes-2", cfg_push_node_ctxt_get_node(cfg_push_exec_ctxt_get_node_ctxt(push.get(), 1)));
  EXPECT_EQ(1, cfg_push_exec_ctxt_save(push.get(), 1));
  for (int32_t i = 0; i < 2; ++i)
    EXPECT_STREQ(id_of(elem).c_str(),
                 cfg_push_node_ctxt_get_parent_uuid(cfg_push_exec_ctxt_get_node_ctxt(push.get(), i)))
        << i << ": a loaded one named its list before";
}

TEST_F(Push, ANodeThatCannotBeSavedFailsTheSave) {
  const push_record push = make();
  cfg_push_exec_ctxt_add_node(push.get(), cfg_push_node_ctxt_new(store));
  cfg_push_exec_ctxt_add_template(push.get(), "templates-4");
  EXPECT_EQ(0, cfg_push_exec_ctxt_save(push.get(), 1));
  EXPECT_EQ(std::string::npos, dump(pushes).find("templates"));
}

TEST_F(Push, RemovedTemplatesAreGoneForGoodFromTheRecordOnly) {
  cfg_elem *elem = add_push();
  add(child_list(elem, "templates"), cfg_new_reference(store, "templates-4"));
  const push_record push = load(id_of(elem));
  EXPECT_EQ(1, cfg_push_exec_ctxt_remove_templates(push.get()));
  EXPECT_EQ(0, cfg_push_exec_ctxt_get_num_templates(push.get()));
  EXPECT_EQ(0, cfg_push_exec_ctxt_remove_templates(push.get()));
  EXPECT_EQ(0, cfg_push_exec_ctxt_add_template(push.get(), "templates-5"));
  EXPECT_EQ("{templates=[&templates-4]}", dump(elem));
}

TEST_F(Push, RemovedNodesAreGoneForGoodFromTheRecordOnly) {
  cfg_elem *elem = add_push();
  add_stored_node(elem, "nodes-1");
  cfg_push_exec_ctxt *push = cfg_push_exec_ctxt_get_by_id(store, id_of(elem).c_str());
  std::set<const char *> texts;
  records::texts_of(cfg_push_exec_ctxt_get_node_ctxt(push, 0), texts);
  EXPECT_EQ(1, cfg_push_exec_ctxt_remove_nodes(push));
  EXPECT_EQ(1U, texts.count(*texts.begin()));
  EXPECT_EQ(0, cfg_push_exec_ctxt_get_num_nodes(push));
  EXPECT_EQ(0, cfg_push_exec_ctxt_remove_nodes(push));
  const node_ctxt more(new_node("nodes-2"));
  EXPECT_EQ(0, cfg_push_exec_ctxt_add_node(push, more.get()));
  EXPECT_EQ("{nodes=[{node=&nodes-1}]}", dump(elem));
  cfg_push_exec_ctxt_free(push);
  for (const char *text : texts) std::free(const_cast<char *>(text));
}

TEST_F(Push, TextsOfTemplatesAndNodesOutliveTheirPush) {
  cfg_push_exec_ctxt *push = cfg_push_exec_ctxt_new(store);
  cfg_push_exec_ctxt_add_template(push, "templates-4");
  cfg_push_exec_ctxt_add_node(push, new_node("nodes-2"));
  const char *template_id = cfg_push_exec_ctxt_get_template_uuid(push, 0);
  const char *node = cfg_push_node_ctxt_get_node(cfg_push_exec_ctxt_get_node_ctxt(push, 0));
  cfg_push_exec_ctxt_free(push);
  EXPECT_STREQ("templates-4", template_id);
  EXPECT_STREQ("nodes-2", node);
  std::free(const_cast<char *>(template_id));
  std::free(const_cast<char *>(node));
}

TEST_F(Push, EverythingTakesNull) {
  EXPECT_EQ(nullptr, cfg_push_exec_ctxt_get_uuid(nullptr));
  EXPECT_EQ(nullptr, cfg_push_exec_ctxt_get_cfg(nullptr));
  EXPECT_EQ(nullptr, cfg_push_exec_ctxt_get_config(nullptr));
  EXPECT_EQ(nullptr, cfg_push_exec_ctxt_get_username(nullptr));
  EXPECT_EQ(0, cfg_push_exec_ctxt_set_username(nullptr, "a"));
  EXPECT_EQ(6, cfg_push_exec_ctxt_get_status(nullptr));
  EXPECT_EQ(0, cfg_push_exec_ctxt_set_status(nullptr, 1));
  EXPECT_EQ(3, cfg_push_exec_ctxt_get_disconnected_behaviour(nullptr));
  EXPECT_EQ(0, cfg_push_exec_ctxt_set_disconnected_behaviour(nullptr, 1));
  EXPECT_EQ(0, cfg_push_exec_ctxt_get_num_templates(nullptr));
  EXPECT_EQ(nullptr, cfg_push_exec_ctxt_get_template(nullptr, 0));
  EXPECT_EQ(nullptr, cfg_push_exec_ctxt_get_template_uuid(nullptr, 0));
  EXPECT_EQ(0, cfg_push_exec_ctxt_add_template(nullptr, "templates-1"));
  EXPECT_EQ(1, cfg_push_exec_ctxt_remove_templates(nullptr));
  EXPECT_EQ(0, cfg_push_exec_ctxt_get_num_nodes(nullptr));
  EXPECT_EQ(nullptr, cfg_push_exec_ctxt_get_node_ctxt(nullptr, 0));
  EXPECT_EQ(0, cfg_push_exec_ctxt_remove_nodes(nullptr));
  cfg_push_exec_ctxt_populate_nodes(nullptr);
  cfg_push_exec_ctxt_free(nullptr);
  const node_ctxt node(new_node("nodes-1"));
  EXPECT_EQ(0, cfg_push_exec_ctxt_add_node(nullptr, node.get()));
  const push_record push = make();
  EXPECT_EQ(0, cfg_push_exec_ctxt_add_node(push.get(), nullptr));
  EXPECT_EQ(0, cfg_push_exec_ctxt_add_template(push.get(), nullptr));
  cfg_push_exec_ctxt_set_username(push.get(), "alice");
  EXPECT_EQ(0, cfg_push_exec_ctxt_set_username(push.get(), nullptr));
  EXPECT_STREQ("alice", cfg_push_exec_ctxt_get_username(push.get()));
}

TEST_F(Push, TheListHasAllCommittedPushes) {
  set(add_push(), "username", "alice");
  set(add_push(), "username", "bob");
  commit_and_reopen();
  ASSERT_EQ(1, cfg_push_exec_ctxt_save(make().get(), 0)) << "pending";
  cfg_push_exec_ctxt_list *list = cfg_push_exec_ctxt_list_new(store);
  EXPECT_EQ(2, cfg_push_exec_ctxt_list_count(list));
  const push_record second(cfg_push_exec_ctxt_list_get_execution(list, 1));
  EXPECT_STREQ("bob", cfg_push_exec_ctxt_get_username(second.get()));
  EXPECT_EQ(nullptr, cfg_push_exec_ctxt_list_get_execution(list, 2));
  EXPECT_EQ(nullptr, cfg_push_exec_ctxt_list_get_execution(list, -1));
  cfg_push_exec_ctxt_list_free(list);
  EXPECT_EQ(0, cfg_push_exec_ctxt_list_count(nullptr));
  EXPECT_EQ(nullptr, cfg_push_exec_ctxt_list_get_execution(nullptr, 0));
  cfg_push_exec_ctxt_list_free(nullptr);
}

}  // namespace
