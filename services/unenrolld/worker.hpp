// Takes jobs from the work queue and does them, one after the other.
#pragma once

#include <twbeanstalk.h>

#include <memory>
#include <optional>

#include "nodes.hpp"
#include "options.hpp"

namespace unenrolld {

// It may be ended at any moment, by any signal: a job that was taken comes again when its connection is gone,
// and doing it again changes nothing. So there is nothing to do when the service is stopped.
class worker {
 public:
  explicit worker(const options &opts) : options_(opts), nodes_(opts.store) {}

  // Works for ever; with options::once until no job is left. 0, or 1 when there was no queue then.
  int run();

 private:
  struct closer {
    void operator()(bs_connection *connection) const { bs_disconnect(connection); }
  };

  bool connect();
  void wait_for_queue();
  // 0 when a job was taken and dealt with, or a negative errno number.
  int take_job();
  void deal_with(const bs_job &job);
  void settle(std::int64_t job, const outcome &result);

  const options &options_;
  nodes nodes_;
  std::unique_ptr<bs_connection, closer> queue_;
  std::optional<unsigned> pause_;  // seconds until the next attempt to reach the queue, while it is down
};

}  // namespace unenrolld
