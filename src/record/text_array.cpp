#include "record/text_array.hpp"

#include <twconfig/element.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>

#include "record/memory_watch.hpp"

namespace tw {

bool text_array::grow(std::int32_t more) noexcept {
  if (more < 0 || more > INT32_MAX - count_) return false;
  if (more == 0) return true;
  const auto size = static_cast<std::size_t>(count_ + more) * sizeof(char *);
  auto **grown = static_cast<char **>(std::realloc(static_cast<void *>(texts_), size));
  if (!grown) return false;
  std::fill_n(grown + count_, more, nullptr);
  texts_ = grown;
  count_ += more;
  return true;
}

bool text_array::set(std::int32_t index, const char *text) noexcept {
  char *copy = text ? strdup(text) : nullptr;
  if (text && !copy) return false;
  std::free(std::exchange(texts_[index], copy));
  return true;
}

bool text_array::append(const char *text) noexcept {
  if (!grow(1)) return false;
  if (set(count_ - 1, text)) return true;
  --count_;
  return false;
}

bool text_array::append_ids(cfg_elem *list) noexcept {
  const memory_watch memory;
  std::int32_t size = 0;
  if (cfg_list_size(list, &size)) {
    const std::int32_t first = count_;
    if (!grow(size)) return false;
    for (std::int32_t i = 0; i < size; ++i) {
      if (!set(first + i, cfg_get_listelem(list, i))) return false;
    }
  }
  return !memory.ran_short();
}

bool text_array::append_pending_ids(cfg_elem *list) noexcept {
  const memory_watch memory;
  std::int32_t size = 0;
  if (cfg_list_future_size(list, &size)) {
    const std::int32_t first = count_;
    if (!grow(size)) return false;
    for (std::int32_t i = 0; i < size; ++i) {
      // A handle reads as the element's ID.
      if (!set(first + i, reinterpret_cast<const char *>(cfg_get_future_listelem(list, i)))) return false;
    }
  }
  return !memory.ran_short();
}

void text_array::clear() noexcept { adopt(nullptr, 0); }

void text_array::leave_block() noexcept {
  std::for_each(texts_, texts_ + count_, [](char *text) { std::free(text); });
  texts_ = nullptr;
  count_ = 0;
}

void text_array::leave_texts() noexcept {
  std::free(static_cast<void *>(texts_));
  texts_ = nullptr;
  count_ = 0;
}

void text_array::adopt(char **texts, std::int32_t count) noexcept {
  char **block = texts_;
  leave_block();
  std::free(static_cast<void *>(block));
  texts_ = texts;
  count_ = count;
}

}  // namespace tw
