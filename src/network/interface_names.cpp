// Finding connections, and naming them as the operating system does.
#include <twobject/net_address.h>

#include <cstring>
#include <memory>
#include <string>

#include "network/label.hpp"
#include "record/boundary.hpp"
#include "record/memory_watch.hpp"
#include "record/owned_condition.hpp"

namespace {

constexpr char conns[] = "system_net_conns";
constexpr char conns_path[] = "system.net.conns";

struct conn_free {
  void operator()(cfg_net_conn *conn) const noexcept { cfg_net_conn_free(conn); }
};
using conn_record = std::unique_ptr<cfg_net_conn, conn_free>;

tw::owned_condition text_is(const char *key, int32_t op, const char *value) noexcept {
  return tw::owned_condition(cfg_new_string_condition(key, op, value));
}

bool add(const tw::owned_condition &parent, tw::owned_condition child) noexcept {
  if (!parent || !child || !cfg_condition_add_child(parent.get(), child.get())) return false;
  static_cast<void>(child.release());  // the parent's now
  return true;
}

conn_record first_named(cfg *store, const char *name) noexcept {
  const tw::owned_condition named = text_is("name", CFG_OP_EQUAL, name);
  if (!named) return nullptr;
  const char *id = cfg_get_listelem(cfg_search(store, conns, named.get()), 0);
  return conn_record(cfg_get_net_conn_by_id(store, id));
}

// The labels of the found connections, each behind a space. A label and its space are never longer than 16
// characters. One connection without label spoils the list: an incomplete one would name a wrong address.
bool labels_of(cfg *store, cfg_elem *found, std::string &names) {
  int32_t count = 0;
  if (!cfg_list_size(found, &count)) return false;
  for (int32_t i = 0; i < count; ++i) {
    const conn_record conn(cfg_get_net_conn_by_id(store, cfg_get_listelem(found, i)));
    char label[tw::label_length + 1];
    if (!conn || !tw::label_of(store, conn.get(), label)) return false;
    names += ' ';
    names += label;
  }
  return true;
}

// The result of a search as a list of labels. What memory was too short to find must not look like nothing.
char *interfaces_list(cfg *store, cfg_condition *condition) noexcept {
  const tw::memory_watch memory;
  return tw::guarded([&]() -> char * {
    std::string names;
    if (!labels_of(store, cfg_search(store, conns, condition), names) || memory.ran_short()) return nullptr;
    return strdup(names.c_str());
  });
}

}  // namespace

const char *cfg_get_conn_mode_from_conn_name(cfg *store, const char *name) noexcept {
  const conn_record conn = first_named(store, name);
  if (!conn) return nullptr;
  const char *mode = cfg_net_conn_mode_to_string(cfg_net_conn_get_mode(conn.get()));
  return mode ? mode : "unknown";
}

char *cfg_get_interface_name_from_conn_name(cfg *store, const char *name) noexcept {
  const conn_record conn = first_named(store, name);
  char label[tw::label_length + 1];
  return conn && tw::label_of(store, conn.get(), label) ? strdup(label) : nullptr;
}

char *cfg_get_interfaces_list_from_condition(cfg *store, cfg_condition *condition) noexcept {
  // Callers do not free a tree for which there was nothing to search; one that was not searched for want of
  // memory stays theirs.
  const tw::memory_watch memory;
  if (!cfg_get_by_path(store, conns_path)) {
    if (!memory.ran_short()) cfg_free_conditions(condition);
    return nullptr;
  }
  return interfaces_list(store, condition);
}

char *cfg_get_interfaces_list_from_mode(cfg *store, const char *mode) noexcept {
  const tw::owned_condition of_mode = text_is("mode", CFG_OP_EQUAL, mode);
  return of_mode ? interfaces_list(store, of_mode.get()) : nullptr;
}

char *cfg_get_interfaces_list_from_mode_exclude_default(cfg *store, const char *mode,
                                                        const char *name) noexcept {
  const tw::owned_condition others(cfg_new_and_condition());
  if (!add(others, text_is("mode", CFG_OP_EQUAL, mode)) ||
      !add(others, text_is("name", CFG_OP_NOT_EQUAL, name)))
    return nullptr;
  return interfaces_list(store, others.get());
}
