// A store on disk for each test, ways to fill it, and ways to read it back exactly.
#ifndef TW_TESTS_RECORDS_STORE_FIXTURE_HPP
#define TW_TESTS_RECORDS_STORE_FIXTURE_HPP

#include <gtest/gtest.h>
#include <twconfig.h>

#include <cstdlib>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace records {

struct free_heap {
  void operator()(void *block) const { std::free(block); }
};
using heap_text = std::unique_ptr<char, free_heap>;

struct close_store {
  void operator()(cfg *store) const { cfg_close(store); }
};
using store_handle = std::unique_ptr<cfg, close_store>;

/** A text that no store takes as a value: a write of it fails. */
const std::string &unwritable();
/** An ID that no store takes as a reference. */
std::string unwritable_id();

class StoreTest : public testing::Test {
 protected:
  void SetUp() override;
  void TearDown() override;

  /** Another handle on the same store. */
  store_handle open(unsigned options = 0);
  void commit();
  /** Commits, and goes on with a new handle, which has nothing in memory. */
  void commit_and_reopen();

  /** The map at a path of plain keys; maps that are missing are made. "" is the root. */
  cfg_elem *map_at(const std::string &path);
  /** A new list at a path. */
  cfg_elem *list_at(const std::string &path);
  /** A new map, committed entry of the list at a path, which is made when it is missing. */
  cfg_elem *entry_of(const std::string &list);
  cfg_elem *child_map(cfg_elem *map, const char *key);
  cfg_elem *child_list(cfg_elem *map, const char *key);

  void set(cfg_elem *map, const char *key, const char *text);
  void set(cfg_elem *map, const char *key, int32_t number);
  void set_bool(cfg_elem *map, const char *key, bool truth);
  void set_blob(cfg_elem *map, const char *key, std::string_view bytes);
  void set_reference(cfg_elem *map, const char *key, const std::string &id);
  void add(cfg_elem *list, cfg_elem *elem);
  void add(cfg_elem *list, const char *text);
  void erase(cfg_elem *map, const char *key);

  std::string id_of(cfg_elem *elem);
  /** A blob's bytes; nothing when there is no such blob. */
  std::optional<std::string> blob_at(const std::string &path);
  /**
   * The subtree of an element in words, keys sorted: {approved=true name="n" ports=[1 2] cert=&id
   * data=<bytes>}; pending list entries stand behind a "+". "none" for no element.
   */
  std::string dump(cfg_elem *elem);
  std::string dump(const std::string &path);
  /** What a commit would write: a line per change such as "= nodes-1.name". */
  std::vector<std::string> changes();

  store_handle handle;
  cfg *store = nullptr;

 private:
  std::string directory_;
};

}  // namespace records

#endif
