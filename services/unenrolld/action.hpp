// The record of the request, by which people see how far it has come.
#pragma once

#include <twaction.h>

#include <cstdint>
#include <memory>
#include <string>

#include "outcome.hpp"

namespace unenrolld {

// The name of the tube, and of the actions' queue.
inline constexpr char kQueue[] = "unenroll_node";

// The action of a node. It may be missing, and it may be out of reach: the work is done all the same, since
// it was asked for by the job; the log tells.
class action {
 public:
  explicit action(std::string node) : node_(std::move(node)) {}

  void begin();
  void end(const outcome &result);

 private:
  void change(std::int32_t state, const std::string &error);
  int try_to_change(std::int32_t state, const std::string &error) const;

  std::string node_;
};

}  // namespace unenrolld
