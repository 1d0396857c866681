#include "search_service/jansson_blocks.hpp"

#include <jansson.h>

#include <cstdlib>

namespace search_service {

namespace {

// A chain through the blocks themselves, so that counting allocates nothing.
struct Block {
  Block *before, *behind;
};
Block chain{&chain, &chain};

void *take(std::size_t size) {
  auto *block = static_cast<Block *>(std::malloc(sizeof(Block) + size));
  if (block == nullptr) return nullptr;
  *block = {chain.before, &chain};
  block->before->behind = block->behind->before = block;
  return block + 1;
}

void give(void *bytes) {
  if (bytes == nullptr) return;
  Block *block = static_cast<Block *>(bytes) - 1;
  block->before->behind = block->behind;
  block->behind->before = block->before;
  std::free(block);
}

}  // namespace

JanssonBlocks::JanssonBlocks() { json_set_alloc_funcs(take, give); }

JanssonBlocks::~JanssonBlocks() {
  while (chain.behind != &chain) give(chain.behind + 1);
  json_set_alloc_funcs(std::malloc, std::free);
}

std::size_t JanssonBlocks::held() const {
  std::size_t count = 0;
  for (const Block *block = chain.behind; block != &chain; block = block->behind) ++count;
  return count;
}

std::size_t blocks_of_an_unsent_hello() {
  const JanssonBlocks blocks;
  json_t *hello = json_pack("{s:s, s:{}}", "method", "hello", "data");
  json_object_del(hello, "data");
  return blocks.held();
}

}  // namespace search_service
