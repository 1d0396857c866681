#include "worker.hpp"

#include <fmt/format.h>
#include <twinfod.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <string_view>
#include <system_error>
#include <thread>
#include <twobject/owner.hpp>

#include "action.hpp"
#include "job.hpp"
#include "log.hpp"

namespace unenrolld {
namespace {

constexpr std::uint32_t kMostUrgent = 0;
// How long to wait for a job before asking again; the connection is found dead then at the latest.
constexpr std::uint32_t kSecondsWithoutJob = 60;
constexpr unsigned kLongestPause = 30;

std::string text_of(int error) { return std::generic_category().message(error); }

}  // namespace

bool worker::connect() {
  queue_.reset(bs_connect(options_.address.c_str(), options_.port));
  int error = queue_ ? 0 : -errno;
  if (error == 0) error = bs_watch(queue_.get(), kQueue);
  if (error == 0) error = bs_ignore(queue_.get(), "default");
  if (error == 0) {
    log(level::info, fmt::format("waiting for jobs of {}:{}", options_.address, options_.port));
    pause_.reset();
    return true;
  }
  queue_.reset();
  // Told once, however long it takes.
  if (!pause_)
    log(level::warning,
        fmt::format("no work queue at {}:{}: {}", options_.address, options_.port, text_of(-error)));
  return false;
}

void worker::wait_for_queue() {
  pause_ = pause_ ? std::min(2 * *pause_, kLongestPause) : 1;
  std::this_thread::sleep_for(std::chrono::seconds(*pause_));
}

int worker::run() {
  for (;;) {
    if (!queue_ && !connect()) {
      if (options_.once) return 1;
      wait_for_queue();
      continue;
    }
    const int result = take_job();
    if (result == 0) continue;
    if (result == -EAGAIN) {
      if (options_.once) return 0;
      nodes_.park();
      continue;
    }
    log(level::warning, fmt::format("the work queue is gone: {}", text_of(-result)));
    queue_.reset();
  }
}

int worker::take_job() {
  bs_job job{};
  const int result = bs_reserve(queue_.get(), options_.once ? 0 : kSecondsWithoutJob, &job);
  const twobject::heap_text body(job.body);
  if (result == 0) deal_with(job);
  if (result != -EMSGSIZE) return result;
  settle(job.id, {outcome::kind::never, "the job is too large"});
  return 0;
}

void worker::deal_with(const bs_job &job) {
  const auto node = node_of_job({job.body, job.length});
  if (!node) return settle(job.id, {outcome::kind::never, "the job names no node"});
  action request(*node);
  outcome result{outcome::kind::done, {}};
  if (!is_node_id(*node)) {
    result = {outcome::kind::never, "what the job names has not the form of a node's ID"};
    request.end(result);
  } else {
    request.begin();
    result = nodes_.remove(*node);
    if (result.finished()) infod_remove(fmt::format("nodes.{}.", *node).c_str());
    request.end(result);
    if (result.finished())
      log(level::notice,
          fmt::format("{} {}", *node,
                      result.how == outcome::kind::done ? "is unenrolled" : "was gone already"));
    else
      log(level::error, fmt::format("{} cannot be unenrolled: {}", *node, result.error));
  }
  settle(job.id, result);
}

// What the queue does not hear comes to it by the end of the connection: the job is there again.
void worker::settle(std::int64_t job, const outcome &result) {
  int error = 0;
  if (result.finished()) {
    error = bs_delete(queue_.get(), job);
  } else if (result.how == outcome::kind::not_now) {
    error = bs_release(queue_.get(), job, kMostUrgent, options_.retry_delay);
  } else {
    log(level::error, fmt::format("job {} is put aside: {}", job, result.error));
    error = bs_bury(queue_.get(), job, kMostUrgent);
  }
  if (error != 0) log(level::warning, fmt::format("job {} cannot be settled: {}", job, text_of(-error)));
}

}  // namespace unenrolld
