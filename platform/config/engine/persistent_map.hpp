// An ordered map whose copies are free and stay as they were: a change copies the path to what it changes and
// shares everything else.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

namespace twcfg {

// A treap: a search tree by key, a heap by a hash of the key, so that its shape follows from the keys alone
// and its depth is logarithmic.
class PersistentMap {
 public:
  struct Node;
  using Link = std::shared_ptr<const Node>;
  struct Node {
    std::uint64_t key;
    std::shared_ptr<const std::string> bytes;
    Link left, right;
  };

  // All return NULL when there is no such node. The node lives as long as a map that contains it.
  const Node *find(std::uint64_t key) const;
  const Node *at_or_above(std::uint64_t key) const;
  const Node *last() const;

  void put(std::uint64_t key, std::string bytes);
  void erase(std::uint64_t key);

  std::uint64_t size() const { return size_; }
  std::uint64_t bytes() const { return bytes_; }

 private:
  Link root_;
  std::uint64_t size_ = 0;
  std::uint64_t bytes_ = 0;
};

}  // namespace twcfg
