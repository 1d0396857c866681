// The description of a node as what the store is to hold.
#pragma once

#include <twconfig/content.h>

#include <array>
#include <cstddef>
#include <initializer_list>
#include <string>
#include <vector>

#include "data/node.hpp"

namespace bench {

// The contents of one node after another. What it gives is good until it is asked for the next.
class NodeContent {
 public:
  cfg_content certificate(const Certificate &certificate);
  cfg_content node(const Node &node, const char *certificate_id);

 private:
  cfg_content *take(std::size_t count);  // items of one map or list
  cfg_content map(const cfg_keyset &keys, std::initializer_list<cfg_content> items);
  template <class Items, class Fill>
  cfg_content list(const Items &items, Fill &&fill);
  cfg_content auth_group(const Node &node, std::size_t group);

  std::array<cfg_content, 512> items_;
  std::size_t taken_ = 0;
};

cfg_content text_content(const std::string &text);
cfg_content empty_list();

}  // namespace bench
