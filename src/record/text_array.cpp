#include "record/text_array.hpp"

#include <twconfig/element.h>
#include <twconfig/read.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>

#include "record/memory_watch.hpp"

namespace tw {

bool text_array::assign(const cfg_value *values, std::int32_t count, text_block *block) noexcept {
  text_array loaded;
  loaded.texts_ = block ? block->take_pointers(static_cast<std::size_t>(count)) : nullptr;
  for (; loaded.texts_ && loaded.count_ < count; ++loaded.count_) {
    const cfg_value &value = values[loaded.count_];
    char *copy = value.kind == CFG_STRING ? block->take(value.length + 1) : nullptr;
    if (value.kind == CFG_STRING && !copy) break;
    // The store's texts end with NUL.
    if (copy) std::memcpy(copy, value.data, value.length + 1);
    loaded.texts_[loaded.count_] = copy;
  }
  loaded.in_block_ = loaded.texts_ != nullptr;
  if (!loaded.in_block_ || loaded.count_ < count) {
    // No block, or no room in it for one of them.
    loaded = text_array();
    if (!loaded.grow(count)) return false;
    for (std::int32_t i = 0; i < count; ++i) {
      if (values[i].kind == CFG_STRING && !loaded.set(i, values[i].data)) return false;
    }
  }
  *this = std::move(loaded);
  return true;
}

bool text_array::move_out() noexcept {
  if (!in_block_) return true;
  text_array moved;
  if (!moved.grow(count_)) return false;
  for (std::int32_t i = 0; i < count_; ++i) {
    if (!moved.set(i, texts_[i])) return false;
  }
  *this = std::move(moved);
  return true;
}

bool text_array::grow(std::int32_t more) noexcept {
  if (more < 0 || more > INT32_MAX - count_ || !move_out()) return false;
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
  if ((text && !copy) || !move_out()) {
    std::free(copy);
    return false;
  }
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
  struct appending {
    text_array &ids;
    std::int32_t first;
  } state{*this, count_};
  std::int32_t size = 0;
  if (cfg_list_size(list, &size)) {
    if (!grow(size)) return false;
    const auto take = [](void *context, std::int32_t index, const char *id) {
      const auto &self = *static_cast<const appending *>(context);
      return self.ids.set(self.first + index, id) ? 1 : 0;
    };
    cfg_list_ids(list, take, &state);
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
  if (!in_block_) std::for_each(texts_, texts_ + count_, [](char *text) { std::free(text); });
  texts_ = nullptr;
  count_ = 0;
}

void text_array::leave_texts() noexcept {
  std::free(static_cast<void *>(texts_));
  texts_ = nullptr;
  count_ = 0;
}

void text_array::adopt(char **texts, std::int32_t count) noexcept {
  char **block = in_block_ ? nullptr : texts_;
  leave_block();
  std::free(static_cast<void *>(block));
  texts_ = texts;
  count_ = count;
  in_block_ = false;
}

}  // namespace tw
