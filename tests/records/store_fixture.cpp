#include "store_fixture.hpp"

#include <algorithm>
#include <filesystem>

namespace records {

const std::string &unwritable() {
  static const std::string text((16U << 20) + 1, 'x');
  return text;
}

std::string unwritable_id() { return std::string(5000, 'x'); }

void StoreTest::SetUp() {
  directory_ = (std::filesystem::temp_directory_path() / "records-XXXXXX").string();
  ASSERT_NE(nullptr, mkdtemp(directory_.data()));
  handle = open(CFG_OPEN_CREATE);
  store = handle.get();
}

void StoreTest::TearDown() {
  handle.reset();
  std::filesystem::remove_all(directory_);
}

store_handle StoreTest::open(unsigned options) {
  cfg_failure failure{};
  store_handle opened(cfg_open(directory_.c_str(), options, &failure));
  EXPECT_NE(nullptr, opened) << failure.text;
  return opened;
}

void StoreTest::commit() { ASSERT_EQ(1, cfg_commit(store, nullptr)) << cfg_error_text(store); }

void StoreTest::commit_and_reopen() {
  commit();
  handle.reset();
  handle = open();
  store = handle.get();
}

cfg_elem *StoreTest::child_map(cfg_elem *map, const char *key) {
  cfg_elem *child = cfg_new_map(store);
  EXPECT_TRUE(cfg_add_mapelem(store, map, key, child)) << key;
  return child;
}

cfg_elem *StoreTest::child_list(cfg_elem *map, const char *key) {
  cfg_elem *child = cfg_new_list(store);
  EXPECT_TRUE(cfg_add_mapelem(store, map, key, child)) << key;
  return child;
}

cfg_elem *StoreTest::map_at(const std::string &path) {
  cfg_elem *map = cfg_root(store);
  for (std::size_t from = 0; from < path.size();) {
    const std::size_t dot = std::min(path.find('.', from), path.size());
    const std::string key = path.substr(from, dot - from);
    cfg_elem *child = cfg_simple_get_mapelem(store, map, key.c_str());
    map = child != nullptr ? child : child_map(map, key.c_str());
    from = dot + 1;
  }
  return map;
}

cfg_elem *StoreTest::list_at(const std::string &path) {
  const std::size_t dot = path.rfind('.');
  cfg_elem *map = map_at(dot == std::string::npos ? "" : path.substr(0, dot));
  return child_list(map, path.substr(dot == std::string::npos ? 0 : dot + 1).c_str());
}

cfg_elem *StoreTest::entry_of(const std::string &list) {
  cfg_elem *found = cfg_get_by_path(store, list.c_str());
  if (found == nullptr) found = list_at(list);
  cfg_elem *entry = cfg_new_map(store);
  add(found, entry);
  return entry;
}

void StoreTest::set(cfg_elem *map, const char *key, const char *text) {
  EXPECT_TRUE(cfg_map_set_string(store, map, key, text)) << key;
}
void StoreTest::set(cfg_elem *map, const char *key, int32_t number) {
  EXPECT_TRUE(cfg_map_set_int(store, map, key, number)) << key;
}
void StoreTest::set_bool(cfg_elem *map, const char *key, bool truth) {
  EXPECT_TRUE(cfg_map_set_bool(store, map, key, truth ? 1 : 0)) << key;
}
void StoreTest::set_blob(cfg_elem *map, const char *key, std::string_view bytes) {
  EXPECT_TRUE(cfg_map_set_blob(store, map, key, bytes.data(), bytes.size())) << key;
}
void StoreTest::set_reference(cfg_elem *map, const char *key, const std::string &id) {
  EXPECT_TRUE(cfg_map_set_reference(store, map, key, id.c_str())) << key;
}
void StoreTest::add(cfg_elem *list, cfg_elem *elem) {
  EXPECT_TRUE(cfg_add_listelem(store, list, elem)) << cfg_error_text(store);
}
void StoreTest::add(cfg_elem *list, const char *text) { add(list, cfg_new_string(store, text)); }
void StoreTest::erase(cfg_elem *map, const char *key) { EXPECT_TRUE(cfg_map_delete_key(store, map, key)); }

std::string StoreTest::id_of(cfg_elem *elem) {
  char *id = nullptr;
  EXPECT_TRUE(cfg_elem_uuid(elem, &id));
  const heap_text owned(id);
  return id == nullptr ? "" : id;
}

std::optional<std::string> StoreTest::blob_at(const std::string &path) {
  void *data = nullptr;
  std::size_t length = 0;
  if (!cfg_blob_value(cfg_get_by_path(store, path.c_str()), &data, &length)) return std::nullopt;
  std::string bytes(static_cast<const char *>(data), length);
  std::free(data);
  return bytes;
}

std::string StoreTest::dump(const std::string &path) {
  return dump(path.empty() ? cfg_root(store) : cfg_get_by_path(store, path.c_str()));
}

std::string StoreTest::dump(cfg_elem *elem) {
  std::string words;
  char *text = nullptr;
  int32_t number = 0;
  switch (cfg_elem_kind(elem)) {
    case CFG_NONE:
      return "none";
    case CFG_MAP: {
      char **keys = nullptr;
      EXPECT_TRUE(cfg_map_keys(elem, &keys, &number));
      std::vector<std::string> names;
      for (int32_t i = 0; i < number; ++i) names.emplace_back(heap_text(keys[i]).get());
      std::free(static_cast<void *>(keys));
      std::sort(names.begin(), names.end());
      for (const std::string &name : names)
        words +=
            (words.empty() ? "" : " ") + name + "=" + dump(cfg_simple_get_mapelem(store, elem, name.c_str()));
      return "{" + words + "}";
    }
    case CFG_LIST: {
      EXPECT_TRUE(cfg_list_size(elem, &number));
      for (int32_t i = 0; i < number; ++i)
        words += (words.empty() ? "" : " ") + dump(cfg_simple_get_listelem(store, elem, i));
      EXPECT_TRUE(cfg_list_future_size(elem, &number));
      for (int32_t i = 0; i < number; ++i)
        words += (words.empty() ? "+" : " +") + dump(cfg_get_future_listelem(elem, i));
      return "[" + words + "]";
    }
    case CFG_STRING:
      EXPECT_TRUE(cfg_string_value(elem, &text));
      words = std::string("\"") + text + "\"";
      break;
    case CFG_REFERENCE:
      EXPECT_TRUE(cfg_reference_value(elem, &text));
      words = std::string("&") + text;
      break;
    case CFG_INT:
      EXPECT_TRUE(cfg_int_value(elem, &number));
      return std::to_string(number);
    case CFG_BOOL:
      EXPECT_TRUE(cfg_bool_value(elem, &number));
      return number != 0 ? "true" : "false";
    case CFG_BLOB: {
      void *data = nullptr;
      std::size_t length = 0;
      EXPECT_TRUE(cfg_blob_value(elem, &data, &length));
      words = "<" + std::string(static_cast<const char *>(data), length) + ">";
      std::free(data);
      return words;
    }
  }
  std::free(text);
  return words;
}

std::vector<std::string> StoreTest::changes() {
  std::vector<std::string> lines;
  EXPECT_TRUE(cfg_visit_changes(
      store,
      [](void *context, const cfg_change *change) {
        static_cast<std::vector<std::string> *>(context)->push_back(std::string(1, change->op) + " " +
                                                                    change->id);
        return 1;
      },
      &lines));
  return lines;
}

}  // namespace records
