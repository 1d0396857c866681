#include <cstdlib>
#include <set>

#include "allocation/cases.hpp"
#include "records/pushes/push_fixture.hpp"

namespace allocation {
namespace {

template <class Record>
void release(void (*free_one)(Record *), Record *World::*record) {
  sweep(
      [=](World &w) {
        free_one(w.*record);
        w.*record = nullptr;
        return 1;
      },
      gives(1));
}

const char *message_id(World &w) { return cfg_push_node_ctxt_get_preflight_change(w.push_node, 0); }

// A push; one that is loaded must be whole.
template <class Call>
void push(Call call, bool stored) {
  sweep(call, [=](World &, cfg_push_exec_ctxt *found) {
    if (!found) return false;
    EXPECT_EQ(cfg_push_exec_ctxt_get_num_templates(found), stored ? 1 : 0);
    if (stored) {
      EXPECT_EQ(cfg_push_exec_ctxt_get_status(found), CFG_PUSH_EXEC_PREFLIGHT_READY);
      EXPECT_NE(cfg_push_exec_ctxt_get_username(found), nullptr);
      EXPECT_STREQ(cfg_push_exec_ctxt_get_template_uuid(found, 0), kTemplate);
    }
    records::free_push()(found);
    return true;
  });
}

template <class Call>
void node(Call call, bool stored) {
  sweep(call, [=](World &, cfg_push_node_ctxt *found) {
    if (!found) return false;
    if (stored) {
      EXPECT_STREQ(cfg_push_node_ctxt_get_node(found), kTarnwell);
      EXPECT_EQ(cfg_push_node_ctxt_get_status(found), CFG_PUSH_NODE_PREFLIGHT_IN_PROGRESS);
      EXPECT_EQ(cfg_push_node_ctxt_get_execution_message_count(found), 1);
    }
    cfg_push_node_ctxt_free(found);
    return true;
  });
}

void free_push() {
  sweep(
      [](World &w) {
        cfg_push_exec_ctxt_remove_templates(w.push);
        cfg_push_exec_ctxt_free(w.push);
        w.push = nullptr;
        return 1;
      },
      gives(1));
}

void save_template() {
  sweep(
      [](World &w) {
        return cfg_push_exec_ctxt_save_template(w.push, cfg_push_exec_ctxt_get_template(w.push, 1));
      },
      gives(1), [](World &w) { EXPECT_EQ(cfg_push_exec_ctxt_add_template(w.push, kNew), 1); });
}

// A node that could not be given to the push is still the caller's.
void add_node() {
  sweep([](World &w) { return cfg_push_exec_ctxt_add_node(w.push, w.push_node); },
        [](World &w, int added) {
          if (added) w.push_node = nullptr;
          return added == 1;
        });
}

void remove_nodes() {
  static std::set<const char *> left;  // what the removal leaves to callers
  sweep([](World &w) { return cfg_push_exec_ctxt_remove_nodes(w.push); },
        [](World &, int32_t removed) {
          for (const char *text : left) std::free(const_cast<char *>(text));
          left.clear();
          return removed == 1;
        },
        [](World &w) { records::texts_of(cfg_push_exec_ctxt_get_node_ctxt(w.push, 0), left); });
}

void save_push() {
  sweep([](World &w) { return cfg_push_exec_ctxt_save(w.push, 1); }, gives(1),
        [](World &w) {
          EXPECT_EQ(cfg_push_exec_ctxt_get_num_nodes(w.push), 1);
          EXPECT_EQ(cfg_push_exec_ctxt_add_template(w.push, kNew), 1);
          EXPECT_EQ(cfg_push_exec_ctxt_set_status(w.push, CFG_PUSH_EXEC_PREFLIGHT_COMPLETE), 1);
        });
}

void save_node() {
  sweep([](World &w) { return cfg_push_node_ctxt_save(w.push_node); }, gives(1),
        [](World &w) { EXPECT_EQ(cfg_push_node_ctxt_set_status(w.push_node, 3), 1); });
}

void list() {
  sweep([](World &w) { return cfg_push_exec_ctxt_list_new(w.store); },
        [](World &, cfg_push_exec_ctxt_list *pushes) {
          if (pushes) EXPECT_EQ(cfg_push_exec_ctxt_list_count(pushes), 1);
          cfg_push_exec_ctxt_list_free(pushes);
          return pushes != nullptr;
        });
}

void add_message(int (*add)(cfg_push_node_ctxt *, int32_t, int32_t, const char *const *, const char *)) {
  sweep(
      [=](World &w) {
        const char *const args[] = {kNew, "second"};
        return add(w.push_node, 7, 2, args, kTemplate);
      },
      gives(1));
}

void message() {
  sweep([](World &w) { return get_config_message_from_uuid(w.store, message_id(w)); },
        [](World &, cfg_message *found) {
          if (found) EXPECT_STREQ(cfg_message_get_arg(found, 0), "the argument of the message");
          cfg_message_free(found);
          return found != nullptr;
        });
}

void message_template() {
  sweep([](World &w) { return get_template_uuid_from_message_uuid(w.store, message_id(w)); },
        [](World &, char *found) {
          if (found) EXPECT_STREQ(found, kTemplate);
          std::free(found);
          return found != nullptr;
        });
}

const Case rows[] = {
    {"cfg_exec_ctxt_disconn_behaviour_enum_to_string",
     [] {
       sweep([](World &) { return cfg_exec_ctxt_disconn_behaviour_enum_to_string(2); }, gives_text("apply"));
     }},
    {"cfg_exec_ctxt_disconn_behaviour_string_to_enum",
     [] {
       sweep([](World &) { return cfg_exec_ctxt_disconn_behaviour_string_to_enum("apply"); }, gives(2));
     }},
    {"cfg_exec_ctxt_status_enum_to_string",
     [] {
       sweep([](World &) { return cfg_exec_ctxt_status_enum_to_string(5); }, gives_text("execute_complete"));
     }},
    {"cfg_exec_ctxt_status_string_to_enum",
     [] {
       sweep([](World &) { return cfg_exec_ctxt_status_string_to_enum("execute_complete"); }, gives(5));
     }},
    {"cfg_node_ctxt_status_enum_to_string",
     [] {
       sweep([](World &) { return cfg_node_ctxt_status_enum_to_string(4); }, gives_text("execute_complete"));
     }},
    {"cfg_node_ctxt_status_string_to_enum",
     [] {
       sweep([](World &) { return cfg_node_ctxt_status_string_to_enum("execute_complete"); }, gives(4));
     }},
    {"cfg_push_exec_ctxt_add_node", add_node},
    {"cfg_push_exec_ctxt_add_template",
     [] { sweep([](World &w) { return cfg_push_exec_ctxt_add_template(w.push, kNew); }, gives(1)); }},
    {"cfg_push_exec_ctxt_dispose", [] { release(cfg_push_exec_ctxt_dispose, &World::push); }},
    {"cfg_push_exec_ctxt_free", free_push},
    {"cfg_push_exec_ctxt_get_by_id",
     [] { push([](World &w) { return cfg_push_exec_ctxt_get_by_id(w.store, kPush); }, true); }},
    {"cfg_push_exec_ctxt_get_cfg",
     [] { sweep([](World &w) { return cfg_push_exec_ctxt_get_cfg(w.push) == w.store; }, gives(true)); }},
    {"cfg_push_exec_ctxt_get_config",
     [] { sweep([](World &w) { return cfg_push_exec_ctxt_get_config(w.push) == w.store; }, gives(true)); }},
    {"cfg_push_exec_ctxt_get_disconnected_behaviour",
     [] { number_getter(cfg_push_exec_ctxt_get_disconnected_behaviour, &World::push, 1); }},
    {"cfg_push_exec_ctxt_get_node_ctxt",
     [] {
       sweep(
           [](World &w) { return cfg_push_node_ctxt_get_node(cfg_push_exec_ctxt_get_node_ctxt(w.push, 0)); },
           gives_text(kTarnwell));
     }},
    {"cfg_push_exec_ctxt_get_num_nodes",
     [] { sweep([](World &w) { return cfg_push_exec_ctxt_get_num_nodes(w.push); }, gives(1)); }},
    {"cfg_push_exec_ctxt_get_num_templates",
     [] { number_getter(cfg_push_exec_ctxt_get_num_templates, &World::push, 1); }},
    {"cfg_push_exec_ctxt_get_status", [] { number_getter(cfg_push_exec_ctxt_get_status, &World::push, 1); }},
    {"cfg_push_exec_ctxt_get_template",
     [] {
       sweep([](World &w) { return cfg_push_exec_ctxt_get_template(w.push, 0) != nullptr; }, gives(true));
     }},
    {"cfg_push_exec_ctxt_get_template_uuid",
     [] {
       sweep([](World &w) { return cfg_push_exec_ctxt_get_template_uuid(w.push, 0); }, gives_text(kTemplate));
     }},
    {"cfg_push_exec_ctxt_get_username",
     [] {
       text_getter(cfg_push_exec_ctxt_get_username, &World::push,
                   "alice of the night shift, the second of that name");
     }},
    {"cfg_push_exec_ctxt_get_uuid",
     [] { sweep([](World &w) { return cfg_push_exec_ctxt_get_uuid(w.push); }, gives_text(kPush)); }},
    {"cfg_push_exec_ctxt_list_count",
     [] { number_getter(cfg_push_exec_ctxt_list_count, &World::pushes, 1); }},
    {"cfg_push_exec_ctxt_list_free", [] { release(cfg_push_exec_ctxt_list_free, &World::pushes); }},
    {"cfg_push_exec_ctxt_list_get_execution",
     [] { push([](World &w) { return cfg_push_exec_ctxt_list_get_execution(w.pushes, 0); }, true); }},
    {"cfg_push_exec_ctxt_list_new", list},
    {"cfg_push_exec_ctxt_new", [] { push([](World &w) { return cfg_push_exec_ctxt_new(w.store); }, false); }},
    {"cfg_push_exec_ctxt_populate_nodes",
     [] {
       sweep(
           [](World &w) {
             cfg_push_exec_ctxt_populate_nodes(w.push);
             return cfg_push_exec_ctxt_get_num_nodes(w.push);
           },
           gives(1));
     }},
    {"cfg_push_exec_ctxt_remove_nodes", remove_nodes},
    {"cfg_push_exec_ctxt_remove_templates",
     [] { sweep([](World &w) { return cfg_push_exec_ctxt_remove_templates(w.push); }, gives(1)); }},
    {"cfg_push_exec_ctxt_save", save_push},
    {"cfg_push_exec_ctxt_save_template", save_template},
    {"cfg_push_exec_ctxt_set_disconnected_behaviour",
     [] {
       number_setter(cfg_push_exec_ctxt_set_disconnected_behaviour,
                     cfg_push_exec_ctxt_get_disconnected_behaviour, &World::push);
     }},
    {"cfg_push_exec_ctxt_set_status",
     [] { number_setter(cfg_push_exec_ctxt_set_status, cfg_push_exec_ctxt_get_status, &World::push); }},
    {"cfg_push_exec_ctxt_set_username",
     [] { text_setter(cfg_push_exec_ctxt_set_username, cfg_push_exec_ctxt_get_username, &World::push); }},
    {"cfg_push_node_ctxt_add_execution_change", [] { add_message(cfg_push_node_ctxt_add_execution_change); }},
    {"cfg_push_node_ctxt_add_execution_error", [] { add_message(cfg_push_node_ctxt_add_execution_error); }},
    {"cfg_push_node_ctxt_add_execution_message",
     [] { add_message(cfg_push_node_ctxt_add_execution_message); }},
    {"cfg_push_node_ctxt_add_execution_warning",
     [] { add_message(cfg_push_node_ctxt_add_execution_warning); }},
    {"cfg_push_node_ctxt_add_preflight_change", [] { add_message(cfg_push_node_ctxt_add_preflight_change); }},
    {"cfg_push_node_ctxt_add_preflight_error", [] { add_message(cfg_push_node_ctxt_add_preflight_error); }},
    {"cfg_push_node_ctxt_add_preflight_message",
     [] { add_message(cfg_push_node_ctxt_add_preflight_message); }},
    {"cfg_push_node_ctxt_add_preflight_warning",
     [] { add_message(cfg_push_node_ctxt_add_preflight_warning); }},
    {"cfg_push_node_ctxt_delete_execution_change",
     [] {
       sweep([](World &w) { return cfg_push_node_ctxt_delete_execution_change(w.push_node, 0); }, gives(1));
     }},
    {"cfg_push_node_ctxt_delete_execution_error",
     [] {
       sweep([](World &w) { return cfg_push_node_ctxt_delete_execution_error(w.push_node, 0); }, gives(1));
     }},
    {"cfg_push_node_ctxt_delete_execution_message",
     [] {
       sweep([](World &w) { return cfg_push_node_ctxt_delete_execution_message(w.push_node, 0); }, gives(1));
     }},
    {"cfg_push_node_ctxt_delete_execution_warning",
     [] {
       sweep([](World &w) { return cfg_push_node_ctxt_delete_execution_warning(w.push_node, 0); }, gives(1));
     }},
    {"cfg_push_node_ctxt_delete_preflight_change",
     [] {
       sweep([](World &w) { return cfg_push_node_ctxt_delete_preflight_change(w.push_node, 0); }, gives(1));
     }},
    {"cfg_push_node_ctxt_delete_preflight_error",
     [] {
       sweep([](World &w) { return cfg_push_node_ctxt_delete_preflight_error(w.push_node, 0); }, gives(1));
     }},
    {"cfg_push_node_ctxt_delete_preflight_message",
     [] {
       sweep([](World &w) { return cfg_push_node_ctxt_delete_preflight_message(w.push_node, 0); }, gives(1));
     }},
    {"cfg_push_node_ctxt_delete_preflight_warning",
     [] {
       sweep([](World &w) { return cfg_push_node_ctxt_delete_preflight_warning(w.push_node, 0); }, gives(1));
     }},
    {"cfg_push_node_ctxt_free", [] { release(cfg_push_node_ctxt_free, &World::push_node); }},
    {"cfg_push_node_ctxt_get_apply_execution",
     [] { number_getter(cfg_push_node_ctxt_get_apply_execution, &World::push_node, 1); }},
    {"cfg_push_node_ctxt_get_by_id",
     [] { node([](World &w) { return cfg_push_node_ctxt_get_by_id(w.store, kPushNode); }, true); }},
    {"cfg_push_node_ctxt_get_execution_change",
     [] {
       sweep([](World &w) { return cfg_push_node_ctxt_get_execution_change(w.push_node, 0) != nullptr; },
             gives(true));
     }},
    {"cfg_push_node_ctxt_get_execution_change_count",
     [] { number_getter(cfg_push_node_ctxt_get_execution_change_count, &World::push_node, 1); }},
    {"cfg_push_node_ctxt_get_execution_error",
     [] {
       sweep([](World &w) { return cfg_push_node_ctxt_get_execution_error(w.push_node, 0) != nullptr; },
             gives(true));
     }},
    {"cfg_push_node_ctxt_get_execution_error_count",
     [] { number_getter(cfg_push_node_ctxt_get_execution_error_count, &World::push_node, 1); }},
    {"cfg_push_node_ctxt_get_execution_message",
     [] {
       sweep([](World &w) { return cfg_push_node_ctxt_get_execution_message(w.push_node, 0) != nullptr; },
             gives(true));
     }},
    {"cfg_push_node_ctxt_get_execution_message_count",
     [] { number_getter(cfg_push_node_ctxt_get_execution_message_count, &World::push_node, 1); }},
    {"cfg_push_node_ctxt_get_execution_warning",
     [] {
       sweep([](World &w) { return cfg_push_node_ctxt_get_execution_warning(w.push_node, 0) != nullptr; },
             gives(true));
     }},
    {"cfg_push_node_ctxt_get_execution_warning_count",
     [] { number_getter(cfg_push_node_ctxt_get_execution_warning_count, &World::push_node, 1); }},
    {"cfg_push_node_ctxt_get_node",
     [] { text_getter(cfg_push_node_ctxt_get_node, &World::push_node, "nodes-1"); }},
    {"cfg_push_node_ctxt_get_parent_uuid",
     [] {
       text_getter(cfg_push_node_ctxt_get_parent_uuid, &World::push_node, "cfg_push_exec_ctxts-1.nodes");
     }},
    {"cfg_push_node_ctxt_get_preflight_change",
     [] {
       sweep([](World &w) { return cfg_push_node_ctxt_get_preflight_change(w.push_node, 0) != nullptr; },
             gives(true));
     }},
    {"cfg_push_node_ctxt_get_preflight_change_count",
     [] { number_getter(cfg_push_node_ctxt_get_preflight_change_count, &World::push_node, 1); }},
    {"cfg_push_node_ctxt_get_preflight_error",
     [] {
       sweep([](World &w) { return cfg_push_node_ctxt_get_preflight_error(w.push_node, 0) != nullptr; },
             gives(true));
     }},
    {"cfg_push_node_ctxt_get_preflight_error_count",
     [] { number_getter(cfg_push_node_ctxt_get_preflight_error_count, &World::push_node, 1); }},
    {"cfg_push_node_ctxt_get_preflight_message",
     [] {
       sweep([](World &w) { return cfg_push_node_ctxt_get_preflight_message(w.push_node, 0) != nullptr; },
             gives(true));
     }},
    {"cfg_push_node_ctxt_get_preflight_message_count",
     [] { number_getter(cfg_push_node_ctxt_get_preflight_message_count, &World::push_node, 1); }},
    {"cfg_push_node_ctxt_get_preflight_warning",
     [] {
       sweep([](World &w) { return cfg_push_node_ctxt_get_preflight_warning(w.push_node, 0) != nullptr; },
             gives(true));
     }},
    {"cfg_push_node_ctxt_get_preflight_warning_count",
     [] { number_getter(cfg_push_node_ctxt_get_preflight_warning_count, &World::push_node, 1); }},
    {"cfg_push_node_ctxt_get_status",
     [] { number_getter(cfg_push_node_ctxt_get_status, &World::push_node, 1); }},
    {"cfg_push_node_ctxt_get_uuid",
     [] { sweep([](World &w) { return cfg_push_node_ctxt_get_uuid(w.push_node); }, gives_text(kPushNode)); }},
    {"cfg_push_node_ctxt_new", [] { node([](World &w) { return cfg_push_node_ctxt_new(w.store); }, false); }},
    {"cfg_push_node_ctxt_save", save_node},
    {"cfg_push_node_ctxt_set_apply_execution",
     [] {
       number_setter(cfg_push_node_ctxt_set_apply_execution, cfg_push_node_ctxt_get_apply_execution,
                     &World::push_node);
     }},
    {"cfg_push_node_ctxt_set_node",
     [] { text_setter(cfg_push_node_ctxt_set_node, cfg_push_node_ctxt_get_node, &World::push_node); }},
    {"cfg_push_node_ctxt_set_parent_uuid",
     [] {
       text_setter(cfg_push_node_ctxt_set_parent_uuid, cfg_push_node_ctxt_get_parent_uuid, &World::push_node);
     }},
    {"cfg_push_node_ctxt_set_status",
     [] { number_setter(cfg_push_node_ctxt_set_status, cfg_push_node_ctxt_get_status, &World::push_node); }},
    {"get_config_message_from_uuid", message},
    {"get_template_uuid_from_message_uuid", message_template},
};

}  // namespace

const std::span<const Case> push_cases = rows;

}  // namespace allocation
