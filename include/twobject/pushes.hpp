/* The C++ face of pushes: execution contexts, their nodes and messages. */
#ifndef TWOBJECT_PUSHES_HPP
#define TWOBJECT_PUSHES_HPP

#include <twobject/push_exec_ctxt.h>
#include <twobject/push_node_ctxt.h>
#include <twobject/store.hpp>

#include <vector>

namespace twobject {

/// A push with its templates and node contexts: no text of them lives on, other than after
/// cfg_push_exec_ctxt_free().
using push_record = owner<cfg_push_exec_ctxt, cfg_push_exec_ctxt_dispose>;
using push_list = owner<cfg_push_exec_ctxt_list, cfg_push_exec_ctxt_list_free>;
/// A node context that no push owns.
using push_node_record = owner<cfg_push_node_ctxt, cfg_push_node_ctxt_free>;

/// The eight lists of messages of a node context.
struct message_list {
  int32_t (*count)(const cfg_push_node_ctxt *);
  const char *(*id)(const cfg_push_node_ctxt *, int32_t);
};
inline constexpr message_list preflight_changes{cfg_push_node_ctxt_get_preflight_change_count,
                                                cfg_push_node_ctxt_get_preflight_change};
inline constexpr message_list preflight_warnings{cfg_push_node_ctxt_get_preflight_warning_count,
                                                 cfg_push_node_ctxt_get_preflight_warning};
inline constexpr message_list preflight_errors{cfg_push_node_ctxt_get_preflight_error_count,
                                               cfg_push_node_ctxt_get_preflight_error};
inline constexpr message_list preflight_messages{cfg_push_node_ctxt_get_preflight_message_count,
                                                 cfg_push_node_ctxt_get_preflight_message};
inline constexpr message_list execution_changes{cfg_push_node_ctxt_get_execution_change_count,
                                                cfg_push_node_ctxt_get_execution_change};
inline constexpr message_list execution_warnings{cfg_push_node_ctxt_get_execution_warning_count,
                                                 cfg_push_node_ctxt_get_execution_warning};
inline constexpr message_list execution_errors{cfg_push_node_ctxt_get_execution_error_count,
                                               cfg_push_node_ctxt_get_execution_error};
inline constexpr message_list execution_messages{cfg_push_node_ctxt_get_execution_message_count,
                                                 cfg_push_node_ctxt_get_execution_message};
inline constexpr message_list message_lists[] = {preflight_changes,  preflight_warnings, preflight_errors,
                                                 preflight_messages, execution_changes,  execution_warnings,
                                                 execution_errors,   execution_messages};

/// Loads the pushes of a list; NULL for one that cannot be loaded.
inline auto entries(const cfg_push_exec_ctxt_list *list) {
  return indexed(cfg_push_exec_ctxt_list_count(list),
                 [list](int32_t i) { return push_record(cfg_push_exec_ctxt_list_get_execution(list, i)); });
}

/// The node contexts of a push, which stay the push's; NULL for one that could not be loaded.
inline auto nodes(cfg_push_exec_ctxt *push) {
  return indexed(cfg_push_exec_ctxt_get_num_nodes(push),
                 [push](int32_t i) { return cfg_push_exec_ctxt_get_node_ctxt(push, i); });
}

/// The IDs of a push's templates, borrowed from it.
inline auto template_ids(const cfg_push_exec_ctxt *push) {
  return indexed(cfg_push_exec_ctxt_get_num_templates(push),
                 [push](int32_t i) { return text_of(cfg_push_exec_ctxt_get_template_uuid(push, i)); });
}

/// The IDs of the messages of one list (`message_ids(context, preflight_errors)`), borrowed from the context.
inline auto message_ids(const cfg_push_node_ctxt *context, message_list list) {
  return indexed(list.count(context), [=](int32_t i) { return text_of(list.id(context, i)); });
}

/// Gives a node context to a push. On failure `context` keeps it.
inline bool add_node(cfg_push_exec_ctxt *push, push_node_record &context) noexcept {
  if (!cfg_push_exec_ctxt_add_node(push, context.get())) return false;
  static_cast<void>(context.release());
  return true;
}

/// Removes all nodes from the push's record, loaded before or not, with their texts, which
/// cfg_push_exec_ctxt_remove_nodes() leaves. Their number.
inline int32_t remove_nodes(cfg_push_exec_ctxt *push) {
  std::vector<const char *> left;
  for (cfg_push_node_ctxt *context : nodes(push)) {
    if (!context) continue;
    left.insert(left.end(), {cfg_push_node_ctxt_get_uuid(context), cfg_push_node_ctxt_get_node(context),
                             cfg_push_node_ctxt_get_parent_uuid(context)});
    for (const message_list &list : message_lists)
      for (int32_t i = 0; i < list.count(context); ++i) left.push_back(list.id(context, i));
  }
  const int32_t count = cfg_push_exec_ctxt_remove_nodes(push);
  for (const char *text : left) release_heap(text);
  return count;
}

/// The message with an ID, as it can be shown; NULL when there is none.
inline message_record message(cfg *store, const char *id) noexcept {
  return message_record(get_config_message_from_uuid(store, id));
}
/// ID of the template that a message is about; NULL without.
inline heap_text template_of_message(cfg *store, const char *id) noexcept {
  return heap_text(get_template_uuid_from_message_uuid(store, id));
}

}  // namespace twobject

#endif
