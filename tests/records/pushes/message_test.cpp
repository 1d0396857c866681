// The messages of a push's node: the same promises for all eight lists.
#include "push_fixture.hpp"

namespace {

using records::heap_text;
using records::node_ctxt;

struct message_list {
  const char *key;
  int32_t (*count)(const cfg_push_node_ctxt *);
  const char *(*id)(const cfg_push_node_ctxt *, int32_t);
  int (*add)(cfg_push_node_ctxt *, int32_t, int32_t, const char *const *, const char *);
  int (*remove)(cfg_push_node_ctxt *, int32_t);
};
void PrintTo(const message_list &list, std::ostream *out) { *out << list.key; }

const message_list all_lists[] = {
    {"preflight_changes", cfg_push_node_ctxt_get_preflight_change_count,
     cfg_push_node_ctxt_get_preflight_change, cfg_push_node_ctxt_add_preflight_change,
     cfg_push_node_ctxt_delete_preflight_change},
    {"preflight_warnings", cfg_push_node_ctxt_get_preflight_warning_count,
     cfg_push_node_ctxt_get_preflight_warning, cfg_push_node_ctxt_add_preflight_warning,
     cfg_push_node_ctxt_delete_preflight_warning},
    {"preflight_errors", cfg_push_node_ctxt_get_preflight_error_count, cfg_push_node_ctxt_get_preflight_error,
     cfg_push_node_ctxt_add_preflight_error, cfg_push_node_ctxt_delete_preflight_error},
    {"preflight_messages", cfg_push_node_ctxt_get_preflight_message_count,
     cfg_push_node_ctxt_get_preflight_message, cfg_push_node_ctxt_add_preflight_message,
     cfg_push_node_ctxt_delete_preflight_message},
    {"execution_changes", cfg_push_node_ctxt_get_execution_change_count,
     cfg_push_node_ctxt_get_execution_change, cfg_push_node_ctxt_add_execution_change,
     cfg_push_node_ctxt_delete_execution_change},
    {"execution_warnings", cfg_push_node_ctxt_get_execution_warning_count,
     cfg_push_node_ctxt_get_execution_warning, cfg_push_node_ctxt_add_execution_warning,
     cfg_push_node_ctxt_delete_execution_warning},
    {"execution_errors", cfg_push_node_ctxt_get_execution_error_count, cfg_push_node_ctxt_get_execution_error,
     cfg_push_node_ctxt_add_execution_error, cfg_push_node_ctxt_delete_execution_error},
    {"execution_messages", cfg_push_node_ctxt_get_execution_message_count,
     cfg_push_node_ctxt_get_execution_message, cfg_push_node_ctxt_add_execution_message,
     cfg_push_node_ctxt_delete_execution_message},
};

struct free_message {
  void operator()(cfg_message *message) const { cfg_message_free(message); }
};
using message = std::unique_ptr<cfg_message, free_message>;

class PushMessage : public records::PushTest, public testing::WithParamInterface<message_list> {
 protected:
  // A committed node context with all lists of messages.
  void SetUp() override {
    PushTest::SetUp();
    cfg_elem *nodes = child_list(add_push(), "nodes");
    cfg_elem *elem = cfg_new_map(store);
    set_reference(elem, "node", "nodes-1");
    for (const message_list &one : all_lists) child_list(elem, one.key);
    add(nodes, elem);
    const std::string provisional = id_of(elem);
    commit();
    id = id_of(cfg_get_by_id(store, provisional.c_str()));
  }
  std::string stored() {
    return dump(cfg_get_child_by_path(store, cfg_get_by_id(store, id.c_str()), list.key));
  }
  // Adds a message and commits; the context as it is then.
  node_ctxt with_message(int32_t code, std::initializer_list<const char *> args) {
    EXPECT_EQ(1, list.add(load_node(id).get(), code, static_cast<int32_t>(args.size()), args.begin(),
                          "templates-3"));
    commit();
    return load_node(id);
  }

  const message_list list = GetParam();
  std::string id;
};

TEST_P(PushMessage, AnAddedMessageIsPendingAndCountsWhenTheContextIsLoadedAfterTheCommit) {
  const node_ctxt context = load_node(id);
  const char *const args[] = {"eth0", "10.0.0.1"};
  EXPECT_EQ(1, list.add(context.get(), 17, 2, args, "templates-3"));
  EXPECT_EQ("[+{argc=2 args=[\"eth0\" \"10.0.0.1\"] code=17 template=&templates-3}]", stored());
  EXPECT_EQ(0, list.count(context.get()));
  EXPECT_EQ(0, list.count(load_node(id).get()));
  commit();
  EXPECT_EQ(0, list.count(context.get()));
  const node_ctxt again = load_node(id);
  ASSERT_EQ(1, list.count(again.get()));
  EXPECT_NE(nullptr, cfg_get_by_id(store, list.id(again.get(), 0)));
  for (const message_list &other : all_lists)
    EXPECT_EQ(std::string(other.key) == list.key ? 1 : 0, other.count(again.get())) << other.key;
}

TEST_P(PushMessage, AMessageWithoutArgumentsHasAnEmptyListOfThem) {
  const char *const unused[] = {"x"};
  for (int32_t argc : {0, -2}) {
    EXPECT_EQ(1, list.add(load_node(id).get(), 5, argc, unused, "templates-3"));
    EXPECT_EQ("[+{argc=" + std::to_string(argc) + " args=[] code=5 template=&templates-3}]", stored());
    cfg_abandon(store);
  }
  const node_ctxt context = with_message(5, {});
  const message shown(get_config_message_from_uuid(store, list.id(context.get(), 0)));
  ASSERT_NE(nullptr, shown);
  EXPECT_EQ(5, cfg_message_get_code(shown.get()));
  EXPECT_EQ(0, cfg_message_get_argc(shown.get()));
}

TEST_P(PushMessage, AnElementWithoutTheListTakesNoMessage) {
  cfg_elem *elem = cfg_get_by_id(store, id.c_str());
  erase(elem, list.key);
  const std::string before = dump(elem);
  EXPECT_EQ(0, list.add(load_node(id).get(), 1, 0, nullptr, "templates-3"));
  EXPECT_EQ(before, dump(elem));
}

TEST_P(PushMessage, WithoutContextOrElementThereIsNoMessage) {
  EXPECT_EQ(0, list.add(nullptr, 1, 0, nullptr, "templates-3"));
  EXPECT_EQ(0, list.count(nullptr));
  EXPECT_EQ(nullptr, list.id(nullptr, 0));
  EXPECT_EQ(0, list.remove(nullptr, 0));
  const node_ctxt unsaved(cfg_push_node_ctxt_new(store));
  EXPECT_EQ(0, list.add(unsaved.get(), 1, 0, nullptr, "templates-3"));
}

TEST_P(PushMessage, AnArgumentThatCannotBeWrittenAddsNothing) {
  const char *const args[] = {"a", records::unwritable().c_str()};
  EXPECT_EQ(0, list.add(load_node(id).get(), 1, 2, args, "templates-3"));
  EXPECT_EQ("[]", stored());
}

TEST_P(PushMessage, ArgumentsThatAreNotThereAddNothing) {
  const char *const args[] = {"a", nullptr};
  EXPECT_EQ(0, list.add(load_node(id).get(), 1, 2, args, "templates-3"));
  EXPECT_EQ(0, list.add(load_node(id).get(), 1, 2, nullptr, "templates-3"));
  EXPECT_EQ("[]", stored());
}

TEST_P(PushMessage, WithoutATemplateTheKeyIsAbsent) {
  EXPECT_EQ(1, list.add(load_node(id).get(), 1, 0, nullptr, nullptr));
  EXPECT_EQ("[+{argc=0 args=[] code=1}]", stored());
}

TEST_P(PushMessage, ADeletedMessageIsGoneFromTheStoreAndStaysInTheRecord) {
  const node_ctxt context = with_message(1, {});
  EXPECT_EQ(0, list.remove(context.get(), 1));
  EXPECT_EQ(0, list.remove(context.get(), -1));
  EXPECT_EQ(1, list.remove(context.get(), 0));
  EXPECT_EQ("[]", stored());
  EXPECT_EQ(1, list.count(context.get()));
  EXPECT_EQ(1, list.remove(context.get(), 0)) << "below the count";
  EXPECT_EQ(0, list.count(load_node(id).get()));
  EXPECT_EQ(0, list.remove(load_node(id).get(), 0));
}

TEST_P(PushMessage, IdsStandInListOrderAndNothingOutsideTheCount) {
  with_message(1, {});
  const node_ctxt context = with_message(2, {});
  ASSERT_EQ(2, list.count(context.get()));
  for (int32_t i = 0; i < 2; ++i) {
    const message shown(get_config_message_from_uuid(store, list.id(context.get(), i)));
    EXPECT_EQ(i + 1, cfg_message_get_code(shown.get()));
  }
  EXPECT_EQ(nullptr, list.id(context.get(), 2));
  EXPECT_EQ(nullptr, list.id(context.get(), -1));
}

TEST_P(PushMessage, AMessageIsShownWithItsArgumentsAndItsTemplate) {
  const node_ctxt context = with_message(17, {"eth0", ""});
  const char *uuid = list.id(context.get(), 0);
  const message shown(get_config_message_from_uuid(store, uuid));
  ASSERT_NE(nullptr, shown);
  EXPECT_EQ(17, cfg_message_get_code(shown.get()));
  ASSERT_EQ(2, cfg_message_get_argc(shown.get()));
  EXPECT_STREQ("eth0", cfg_message_get_arg(shown.get(), 0));
  EXPECT_STREQ("", cfg_message_get_arg(shown.get(), 1));
  const heap_text template_id(get_template_uuid_from_message_uuid(store, uuid));
  EXPECT_STREQ("templates-3", template_id.get());
}

TEST_P(PushMessage, TheStoredNumberOfArgumentsCounts) {
  const node_ctxt context = with_message(17, {"a", "b"});
  const char *uuid = list.id(context.get(), 0);
  cfg_elem *elem = cfg_get_by_id(store, uuid);
  set(elem, "argc", 1);
  EXPECT_EQ(1, cfg_message_get_argc(message(get_config_message_from_uuid(store, uuid)).get()));
  set(elem, "argc", 3);
  const message longer(get_config_message_from_uuid(store, uuid));
  ASSERT_EQ(3, cfg_message_get_argc(longer.get()));
  EXPECT_STREQ("b", cfg_message_get_arg(longer.get(), 1));
  EXPECT_EQ(nullptr, cfg_message_get_arg(longer.get(), 2));
  for (int32_t argc : {-1, 1025, INT32_MAX}) {
    set(elem, "argc", argc);
    EXPECT_EQ(nullptr, get_config_message_from_uuid(store, uuid)) << argc;
  }
}

TEST_P(PushMessage, WhatIsNoMessageIsNotShown) {
  const node_ctxt context = with_message(17, {});
  const char *uuid = list.id(context.get(), 0);
  cfg_elem *elem = cfg_get_by_id(store, uuid);
  erase(elem, "args");
  EXPECT_EQ(nullptr, get_config_message_from_uuid(store, uuid));
  erase(elem, "template");
  EXPECT_EQ(nullptr, get_template_uuid_from_message_uuid(store, uuid));
  EXPECT_EQ(nullptr, get_config_message_from_uuid(store, nullptr));
  EXPECT_EQ(nullptr, get_config_message_from_uuid(nullptr, uuid));
  EXPECT_EQ(nullptr, get_config_message_from_uuid(store, "nodes-77"));
  EXPECT_EQ(nullptr, get_template_uuid_from_message_uuid(store, nullptr));
  EXPECT_EQ(nullptr, get_template_uuid_from_message_uuid(nullptr, uuid));
}

INSTANTIATE_TEST_SUITE_P(Lists, PushMessage, testing::ValuesIn(all_lists),
                         [](const auto &one) { return std::string(one.param.key); });

}  // namespace
