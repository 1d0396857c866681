// Many clients of the library at once.
#include <twobject/search.h>

#include <atomic>
#include <thread>

#include "search_service/search_service.hpp"
#include "searchd/fleet.hpp"
#include "searchd/searchd_process.hpp"

namespace searchd_tests {
namespace {

class SearchdCrowd : public Fleet {};

// The names of those found are told by the IDs: each of these clients looks for its own ten nodes.
int wrong_answers(int me) {
  int wrong = 0;
  for (int round = 0; round < 10; ++round) {
    cfg_condition *condition =
        cfg_new_string_condition("name", CFG_OP_EQUAL, ("n" + std::to_string(me)).c_str());
    char *id = twsearch_create("nodes", condition, 0, "alice");
    cfg_free_conditions(condition);
    char **items = nullptr;
    int32_t count = -1;
    const int32_t found = id ? twsearch_fetch(id, 0, 0, &items, &count, 0, "alice") : -3;
    std::free(id);
    if (found != 10 || count != 10) ++wrong;
    for (int32_t i = 0; i < found; ++i) {
      if (std::string(items[i]) != "nodes-" + std::to_string(100 * i + me + 1)) ++wrong;
      std::free(items[i]);
    }
    std::free(static_cast<void *>(items));
  }
  return wrong;
}

TEST_F(SearchdCrowd, AHundredClientsAtOnceAreAllAnsweredRight) {
  for (int i = 0; i < 1000; ++i) node("n" + std::to_string(i % 100));
  commit();
  const search_service::PathClaim claim;
  Searchd searchd(store_path(), search_service::kPath);
  std::atomic<int> wrong = 0;
  std::vector<std::thread> clients;
  for (int me = 0; me < 100; ++me) clients.emplace_back([me, &wrong] { wrong += wrong_answers(me); });
  for (std::thread &client : clients) client.join();
  EXPECT_EQ(wrong, 0);
}

TEST_F(SearchdCrowd, AResultIsLostWithItsServerAndTheNextSearchIsServedByTheNext) {
  node("n0");
  commit();
  const search_service::PathClaim claim;
  auto searchd = std::make_unique<Searchd>(store_path(), search_service::kPath);
  cfg_condition *condition = cfg_new_string_condition("name", CFG_OP_EQUAL, "n0");
  char *id = twsearch_create("nodes", condition, 0, nullptr);
  ASSERT_NE(id, nullptr);
  searchd->end(9);
  char **items = nullptr;
  int32_t count = 0;
  EXPECT_EQ(twsearch_fetch(id, 0, 0, &items, &count, 0, nullptr), -1);
  searchd = std::make_unique<Searchd>(store_path(), search_service::kPath);
  EXPECT_EQ(twsearch_fetch(id, 0, 0, &items, &count, 0, nullptr), -2);
  std::free(id);
  id = twsearch_create("nodes", condition, 0, nullptr);
  cfg_free_conditions(condition);
  ASSERT_EQ(twsearch_fetch(id, 0, 0, &items, &count, 0, nullptr), 1);
  EXPECT_STREQ(items[0], "nodes-1");
  std::free(id);
  std::free(items[0]);
  std::free(static_cast<void *>(items));
}

}  // namespace
}  // namespace searchd_tests
