// A store of its own for each test.
#ifndef TW_TESTS_KIT_FIXTURE_HPP
#define TW_TESTS_KIT_FIXTURE_HPP

#include <gtest/gtest.h>
#include <twconfig.h>

#include <memory>
#include <string>

namespace kit {

class StoreTest : public testing::Test {
 protected:
  void SetUp() override {
    cfg_failure failure{};
    store.reset(cfg_open_memory(nullptr, &failure));
    ASSERT_NE(nullptr, store) << failure.text;
    root = cfg_root(store.get());
  }

  // A new map under a key of the root.
  cfg_elem *map_at(const char *key) {
    cfg_elem *map = cfg_new_map(store.get());
    EXPECT_TRUE(cfg_add_mapelem(store.get(), root, key, map));
    return map;
  }
  // A new list under a key of the root.
  cfg_elem *list_at(const char *key) {
    cfg_elem *list = cfg_new_list(store.get());
    EXPECT_TRUE(cfg_add_mapelem(store.get(), root, key, list));
    return list;
  }
  void commit() { ASSERT_TRUE(cfg_commit(store.get(), nullptr)) << cfg_error_text(store.get()); }

  // The string under a key, or "<none>".
  std::string string_in(cfg_elem *map, const char *key) {
    char *chars = nullptr;
    if (!cfg_map_get_string(store.get(), map, key, &chars)) return "<none>";
    std::string result(chars);
    std::free(chars);
    return result;
  }

  struct close {
    void operator()(cfg *handle) const { cfg_close(handle); }
  };
  std::unique_ptr<cfg, close> store;
  cfg_elem *root = nullptr;
};

}  // namespace kit

#endif
