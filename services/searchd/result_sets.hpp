// What searches have found, kept until it is fetched or too old: bounded in number, size and age.
#pragma once

#include <chrono>
#include <cstddef>
#include <list>
#include <string>
#include <unordered_map>

#include "access.hpp"
#include "tag_index.hpp"

namespace searchd {

using clock = std::chrono::steady_clock;

struct result_set {
  std::string collection;
  numbers entries;
  asker owner;  // who searched, and alone may fetch
};

class result_sets {
 public:
  result_sets(std::size_t most, std::chrono::seconds age) : most_(most), age_(age) {}

  // Keeps a result and gives the ID that it is fetched by, which nobody can guess.
  std::string keep(result_set result, clock::time_point now);
  // NULL when it is unknown, or was dropped for its age or to make room. Lives until the next call.
  const result_set *find(const std::string &id, clock::time_point now);

 private:
  struct kept {
    std::string id;
    clock::time_point since;
    result_set result;
  };
  void drop_oldest();
  void drop_old(clock::time_point now);

  std::size_t most_;
  std::chrono::seconds age_;
  std::list<kept> kept_;  // the oldest first
  std::unordered_map<std::string, std::list<kept>::iterator> by_id_;
  std::size_t entries_ = 0;
};

}  // namespace searchd
