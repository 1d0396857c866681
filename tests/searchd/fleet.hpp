// A store with tagged nodes for searchd to search.
#ifndef TW_TESTS_SEARCHD_FLEET_HPP
#define TW_TESTS_SEARCHD_FLEET_HPP

#include <gtest/gtest.h>
#include <twconfig.h>

#include <string>

namespace searchd_tests {

// Each test has a directory with a store in it, and room for a socket.
class Fleet : public testing::Test {
 protected:
  void SetUp() override;
  void TearDown() override;

  std::string store_path() const { return directory_ + "/store"; }
  std::string socket_path() const { return directory_ + "/socket"; }

  void commit();
  // The new tag's ID, the new value's, the new node's; known after the next commit under their final names.
  std::string tag(const std::string &name);
  std::string value(const std::string &tag_id, const std::string &text);
  std::string node(const std::string &name);
  // Makes a node carry a tag value.
  void give(const std::string &node_id, const std::string &value_id);
  void set(const std::string &id, const char *key, const char *text);
  void erase(const std::string &id);

  cfg *store = nullptr;

 private:
  cfg_elem *list(cfg_elem *map, const char *key);
  std::string entry(cfg_elem *list, const char *key, const std::string &text);
  std::string directory_;
};

std::string equal(const std::string &key, const std::string &value);
std::string differs(const std::string &key, const std::string &value);
std::string absent(const std::string &key);
std::string both(const std::string &one, const std::string &other);

}  // namespace searchd_tests

#endif
