#include "opened.hpp"

#include <cstdlib>
#include <stdexcept>

namespace trial {

Opened open_store(const std::string &path, unsigned options) {
  cfg_failure failure{};
  Opened store(cfg_open(path.c_str(), options, &failure));
  if (!store)
    throw std::runtime_error(std::string("open: ") + cfg_code_text(failure.code) + ": " + failure.text);
  return store;
}

std::string explain(const cfg *store) {
  return std::string(cfg_code_text(cfg_error_code(store))) + ": " + cfg_error_text(store);
}

std::string commit_with_retry(cfg *store, const Change &change, const cfg_commit_note *note, int *conflicts) {
  for (int attempt = 0; attempt < 10000; ++attempt) {
    if (!change(store)) return "change: " + explain(store);
    if (cfg_commit(store, note)) return "";
    if (cfg_error_code(store) != CFG_E_CONFLICT) return "commit: " + explain(store);
    if (conflicts) ++*conflicts;
    cfg_abandon(store);
    if (!cfg_refresh(store)) return "refresh: " + explain(store);
  }
  return "never got through: " + explain(store);
}

void commit_now(cfg *store, const Change &change, const cfg_commit_note *note) {
  if (!change(store)) throw std::runtime_error("change: " + explain(store));
  if (!cfg_commit(store, note)) throw std::runtime_error("commit: " + explain(store));
}

int read_number(cfg *store, const char *key) {
  int32_t value = 0;
  return cfg_map_get_int(store, cfg_root(store), key, &value) ? value : -1;
}

bool set_number(cfg *store, const char *key, int value) {
  return cfg_map_set_int(store, cfg_root(store), key, value) != 0;
}

int list_size(cfg *store, const char *path) {
  int32_t size = 0;
  return cfg_list_size(cfg_get_by_path(store, path), &size) ? size : -1;
}

bool add_list(cfg *store, const char *key) {
  return cfg_add_mapelem(store, cfg_root(store), key, cfg_new_list(store)) != 0;
}

cfg_elem *append_number(cfg *store, const char *path, const char *key, int value) {
  cfg_elem *entry = cfg_new_map(store);
  if (!cfg_map_set_int(store, entry, key, value)) return nullptr;
  return cfg_append_future_listelem(store, cfg_get_by_path(store, path), entry) ? entry : nullptr;
}

std::string id_of(cfg_elem *elem) {
  char *id = nullptr;
  if (!cfg_elem_uuid(elem, &id)) return "";
  std::string copy(id);
  std::free(id);
  return copy;
}

namespace {

int append_text(void *context, const char *data, size_t length) {
  static_cast<std::string *>(context)->append(data, length);
  return 1;
}

int append_problem(void *context, const char *where, const char *problem) {
  static_cast<std::string *>(context)->append(where).append(": ").append(problem).append("\n");
  return 1;
}

}  // namespace

std::string export_text(cfg *store) {
  std::string text;
  if (!cfg_export(store, append_text, &text)) throw std::runtime_error("export: " + explain(store));
  return text;
}

std::string problems(cfg *store) {
  std::string found;
  if (!cfg_verify(store, append_problem, &found) && found.empty()) return explain(store);
  return found;
}

}  // namespace trial
