// The lists of messages of a push node context: one element of the store for each message.
#include <algorithm>
#include <cstdlib>
#include <iterator>
#include <vector>

#include "pushes/node_ctxt.hpp"
#include "record/boundary.hpp"
#include "record/content.hpp"
#include "record/memory_watch.hpp"

namespace {

using tw::message_list;

constexpr int32_t max_arguments = 1024;  // of a message that can be shown

const tw::text_array &ids_of(const cfg_push_node_ctxt *context, message_list which) noexcept {
  return context->messages[static_cast<std::size_t>(which)];
}

int32_t count(const cfg_push_node_ctxt *context, message_list which) noexcept {
  return context ? ids_of(context, which).count() : 0;
}

const char *at(const cfg_push_node_ctxt *context, message_list which, int32_t index) noexcept {
  return context ? ids_of(context, which).at(index) : nullptr;
}

constexpr const char *keys[] = {"code", "argc", "template", "args"};
constexpr cfg_keyset message_keys = {keys, std::size(keys)};

// The message joins its list whole or not at all.
int add(const cfg_push_node_ctxt *context, message_list which, int32_t code, int32_t argc,
        const char *const *args, const char *template_id) noexcept {
  if (!context || (argc > 0 && !args)) return 0;
  return tw::guarded([&] {
    // The list is never made here: it is for the store to give a new context its lists.
    cfg_elem *list = cfg_get_child_by_path(context->cfg, tw::element_of(*context),
                                           tw::message_list_keys[static_cast<std::size_t>(which)]);
    std::vector<cfg_content> texts(static_cast<std::size_t>(std::max(argc, 0)));
    std::transform(args, args + texts.size(), texts.begin(),
                   [](const char *arg) { return tw::content(arg); });
    const cfg_content values[] = {tw::content(code), tw::content(argc),
                                  template_id ? tw::content(template_id, CFG_REFERENCE) : tw::no_content(),
                                  tw::content(texts)};
    const cfg_content message = tw::content(message_keys, values);
    return cfg_append_content(context->cfg, list, &message) ? 1 : 0;
  });
}

// A message that is gone already counts as deleted: the count says what there was.
int remove(const cfg_push_node_ctxt *context, message_list which, int32_t index) noexcept {
  const tw::memory_watch memory;
  const char *id = at(context, which, index);
  if (!id) return 0;
  cfg_delete_element(context->cfg, cfg_get_by_id(context->cfg, id));
  return !memory.ran_short();
}

void free_arguments(char **args, int32_t argc) noexcept {
  for (int32_t i = 0; args && i < argc; ++i) std::free(args[i]);
  std::free(static_cast<void *>(args));
}

}  // namespace

int32_t cfg_push_node_ctxt_get_preflight_change_count(const cfg_push_node_ctxt *context) noexcept {
  return count(context, message_list::preflight_changes);
}
const char *cfg_push_node_ctxt_get_preflight_change(const cfg_push_node_ctxt *context,
                                                    int32_t index) noexcept {
  return at(context, message_list::preflight_changes, index);
}
int cfg_push_node_ctxt_add_preflight_change(cfg_push_node_ctxt *context, int32_t code, int32_t argc,
                                            const char *const *args, const char *template_id) noexcept {
  return add(context, message_list::preflight_changes, code, argc, args, template_id);
}
int cfg_push_node_ctxt_delete_preflight_change(cfg_push_node_ctxt *context, int32_t index) noexcept {
  return remove(context, message_list::preflight_changes, index);
}

int32_t cfg_push_node_ctxt_get_preflight_warning_count(const cfg_push_node_ctxt *context) noexcept {
  return count(context, message_list::preflight_warnings);
}
const char *cfg_push_node_ctxt_get_preflight_warning(const cfg_push_node_ctxt *context,
                                                     int32_t index) noexcept {
  return at(context, message_list::preflight_warnings, index);
}
int cfg_push_node_ctxt_add_preflight_warning(cfg_push_node_ctxt *context, int32_t code, int32_t argc,
                                             const char *const *args, const char *template_id) noexcept {
  return add(context, message_list::preflight_warnings, code, argc, args, template_id);
}
int cfg_push_node_ctxt_delete_preflight_warning(cfg_push_node_ctxt *context, int32_t index) noexcept {
  return remove(context, message_list::preflight_warnings, index);
}

int32_t cfg_push_node_ctxt_get_preflight_error_count(const cfg_push_node_ctxt *context) noexcept {
  return count(context, message_list::preflight_errors);
}
const char *cfg_push_node_ctxt_get_preflight_error(const cfg_push_node_ctxt *context,
                                                   int32_t index) noexcept {
  return at(context, message_list::preflight_errors, index);
}
int cfg_push_node_ctxt_add_preflight_error(cfg_push_node_ctxt *context, int32_t code, int32_t argc,
                                           const char *const *args, const char *template_id) noexcept {
  return add(context, message_list::preflight_errors, code, argc, args, template_id);
}
int cfg_push_node_ctxt_delete_preflight_error(cfg_push_node_ctxt *context, int32_t index) noexcept {
  return remove(context, message_list::preflight_errors, index);
}

int32_t cfg_push_node_ctxt_get_preflight_message_count(const cfg_push_node_ctxt *context) noexcept {
  return count(context, message_list::preflight_messages);
}
const char *cfg_push_node_ctxt_get_preflight_message(const cfg_push_node_ctxt *context,
                                                     int32_t index) noexcept {
  return at(context, message_list::preflight_messages, index);
}
int cfg_push_node_ctxt_add_preflight_message(cfg_push_node_ctxt *context, int32_t code, int32_t argc,
                                             const char *const *args, const char *template_id) noexcept {
  return add(context, message_list::preflight_messages, code, argc, args, template_id);
}
int cfg_push_node_ctxt_delete_preflight_message(cfg_push_node_ctxt *context, int32_t index) noexcept {
  return remove(context, message_list::preflight_messages, index);
}

int32_t cfg_push_node_ctxt_get_execution_change_count(const cfg_push_node_ctxt *context) noexcept {
  return count(context, message_list::execution_changes);
}
const char *cfg_push_node_ctxt_get_execution_change(const cfg_push_node_ctxt *context,
                                                    int32_t index) noexcept {
  return at(context, message_list::execution_changes, index);
}
int cfg_push_node_ctxt_add_execution_change(cfg_push_node_ctxt *context, int32_t code, int32_t argc,
                                            const char *const *args, const char *template_id) noexcept {
  return add(context, message_list::execution_changes, code, argc, args, template_id);
}
int cfg_push_node_ctxt_delete_execution_change(cfg_push_node_ctxt *context, int32_t index) noexcept {
  return remove(context, message_list::execution_changes, index);
}

int32_t cfg_push_node_ctxt_get_execution_warning_count(const cfg_push_node_ctxt *context) noexcept {
  return count(context, message_list::execution_warnings);
}
const char *cfg_push_node_ctxt_get_execution_warning(const cfg_push_node_ctxt *context,
                                                     int32_t index) noexcept {
  return at(context, message_list::execution_warnings, index);
}
int cfg_push_node_ctxt_add_execution_warning(cfg_push_node_ctxt *context, int32_t code, int32_t argc,
                                             const char *const *args, const char *template_id) noexcept {
  return add(context, message_list::execution_warnings, code, argc, args, template_id);
}
int cfg_push_node_ctxt_delete_execution_warning(cfg_push_node_ctxt *context, int32_t index) noexcept {
  return remove(context, message_list::execution_warnings, index);
}

int32_t cfg_push_node_ctxt_get_execution_error_count(const cfg_push_node_ctxt *context) noexcept {
  return count(context, message_list::execution_errors);
}
const char *cfg_push_node_ctxt_get_execution_error(const cfg_push_node_ctxt *context,
                                                   int32_t index) noexcept {
  return at(context, message_list::execution_errors, index);
}
int cfg_push_node_ctxt_add_execution_error(cfg_push_node_ctxt *context, int32_t code, int32_t argc,
                                           const char *const *args, const char *template_id) noexcept {
  return add(context, message_list::execution_errors, code, argc, args, template_id);
}
int cfg_push_node_ctxt_delete_execution_error(cfg_push_node_ctxt *context, int32_t index) noexcept {
  return remove(context, message_list::execution_errors, index);
}

int32_t cfg_push_node_ctxt_get_execution_message_count(const cfg_push_node_ctxt *context) noexcept {
  return count(context, message_list::execution_messages);
}
const char *cfg_push_node_ctxt_get_execution_message(const cfg_push_node_ctxt *context,
                                                     int32_t index) noexcept {
  return at(context, message_list::execution_messages, index);
}
int cfg_push_node_ctxt_add_execution_message(cfg_push_node_ctxt *context, int32_t code, int32_t argc,
                                             const char *const *args, const char *template_id) noexcept {
  return add(context, message_list::execution_messages, code, argc, args, template_id);
}
int cfg_push_node_ctxt_delete_execution_message(cfg_push_node_ctxt *context, int32_t index) noexcept {
  return remove(context, message_list::execution_messages, index);
}

cfg_message *get_config_message_from_uuid(cfg *store, const char *id) noexcept {
  const tw::memory_watch memory;
  cfg_elem *message = cfg_get_by_id(store, id);
  cfg_elem *list = cfg_get_child_by_path(store, message, "args");
  if (!list) return nullptr;
  int32_t code = 0, argc = 0;
  cfg_map_get_int(store, message, "code", &code);
  cfg_map_get_int(store, message, "argc", &argc);
  if (argc < 0 || argc > max_arguments) return nullptr;
  auto **args = static_cast<char **>(std::calloc(static_cast<std::size_t>(argc) + 1, sizeof(char *)));
  for (int32_t i = 0; args && i < argc; ++i)
    cfg_string_value(cfg_simple_get_listelem(store, list, i), &args[i]);
  if (memory.ran_short()) {
    free_arguments(args, argc);
    return nullptr;
  }
  return cfg_new_message(code, argc, args);
}

char *get_template_uuid_from_message_uuid(cfg *store, const char *id) noexcept {
  char *template_id = nullptr;
  return cfg_map_get_reference(store, cfg_get_by_id(store, id), "template", &template_id) ? template_id
                                                                                          : nullptr;
}
