#include "result_sets.hpp"

#include <fmt/format.h>
#include <sys/random.h>

#include <array>
#include <stdexcept>

namespace searchd {

namespace {

constexpr std::size_t most_entries = 4'000'000;  // of all results together: 16 MB

std::string unguessable() {
  std::array<unsigned char, 16> bytes;
  if (getrandom(bytes.data(), bytes.size(), 0) != static_cast<ssize_t>(bytes.size()))
    throw std::runtime_error("no random numbers");
  std::string text;
  for (const unsigned char byte : bytes) text += fmt::format("{:02x}", byte);
  return text;
}

}  // namespace

std::string result_sets::keep(result_set result, clock::time_point now) {
  drop_old(now);
  const std::size_t size = result.entries.size();
  while (!kept_.empty() && (kept_.size() >= most_ || entries_ + size > most_entries)) drop_oldest();
  kept_.push_back({unguessable(), now, std::move(result)});
  by_id_.emplace(kept_.back().id, std::prev(kept_.end()));
  entries_ += size;
  return kept_.back().id;
}

const result_set *result_sets::find(const std::string &id, clock::time_point now) {
  drop_old(now);
  const auto found = by_id_.find(id);
  return found == by_id_.end() ? nullptr : &found->second->result;
}

void result_sets::drop_oldest() {
  entries_ -= kept_.front().result.entries.size();
  by_id_.erase(kept_.front().id);
  kept_.pop_front();
}

void result_sets::drop_old(clock::time_point now) {
  while (!kept_.empty() && now - kept_.front().since >= age_) drop_oldest();
}

}  // namespace searchd
