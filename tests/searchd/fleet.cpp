#include "searchd/fleet.hpp"

#include <cstdlib>
#include <filesystem>

namespace searchd_tests {

void Fleet::SetUp() {
  directory_ = (std::filesystem::temp_directory_path() / "searchd-XXXXXX").string();
  ASSERT_NE(mkdtemp(directory_.data()), nullptr);
  cfg_failure failure{};
  store = cfg_open(store_path().c_str(), CFG_OPEN_CREATE, &failure);
  ASSERT_NE(store, nullptr) << failure.text;
  list(cfg_root(store), "nodes");
  cfg_elem *tags = cfg_new_map(store);
  ASSERT_TRUE(cfg_add_mapelem(store, cfg_root(store), "tags", tags));
  list(tags, "node_tags");
  commit();
}

void Fleet::TearDown() {
  cfg_close(store);
  std::filesystem::remove_all(directory_);
}

void Fleet::commit() { ASSERT_EQ(cfg_commit(store, nullptr), 1) << cfg_error_text(store); }

cfg_elem *Fleet::list(cfg_elem *map, const char *key) {
  cfg_elem *made = cfg_simple_get_mapelem(store, map, key);
  if (made) return made;
  made = cfg_new_list(store);
  EXPECT_TRUE(cfg_add_mapelem(store, map, key, made));
  return made;
}

std::string Fleet::entry(cfg_elem *list, const char *key, const std::string &text) {
  cfg_elem *made = cfg_new_map(store);
  EXPECT_TRUE(cfg_add_listelem(store, list, made));
  EXPECT_TRUE(cfg_map_set_string(store, made, key, text.c_str()));
  return reinterpret_cast<const char *>(made);
}

std::string Fleet::tag(const std::string &name) {
  return entry(cfg_get_by_path(store, "tags.node_tags"), "name", name);
}

std::string Fleet::value(const std::string &tag_id, const std::string &text) {
  return entry(list(cfg_get_by_id(store, tag_id.c_str()), "values"), "value", text);
}

std::string Fleet::node(const std::string &name) {
  return entry(cfg_get_by_path(store, "nodes"), "name", name);
}

void Fleet::give(const std::string &node_id, const std::string &value_id) {
  cfg_elem *refs = list(cfg_get_by_id(store, node_id.c_str()), "tags");
  EXPECT_TRUE(cfg_append_future_listelem(store, refs, cfg_new_reference(store, value_id.c_str())));
}

void Fleet::set(const std::string &id, const char *key, const char *text) {
  EXPECT_TRUE(cfg_map_set_string(store, cfg_get_by_id(store, id.c_str()), key, text));
}

void Fleet::erase(const std::string &id) {
  EXPECT_TRUE(cfg_delete_element(store, cfg_get_by_id(store, id.c_str())));
}

std::string equal(const std::string &key, const std::string &value) {
  return R"({"key":")" + key + R"(","op":"equal","string":")" + value + R"("})";
}
std::string differs(const std::string &key, const std::string &value) {
  return R"({"key":")" + key + R"(","op":"not_equal","string":")" + value + R"("})";
}
std::string absent(const std::string &key) { return R"({"key":")" + key + R"(","op":"absent"})"; }
std::string both(const std::string &one, const std::string &other) {
  return R"({"and":[)" + one + "," + other + "]}";
}

}  // namespace searchd_tests
