// How the attempt to do a job ended.
#pragma once

#include <string>

namespace unenrolld {

struct outcome {
  enum class kind {
    done,           // the node is gone, by this attempt or an earlier one
    nothing_to_do,  // someone else has removed the node
    not_now,        // a later attempt may do it
    never           // no attempt will
  };
  kind how;
  std::string error;  // for those that failed: why, for people

  bool finished() const { return how == kind::done || how == kind::nothing_to_do; }
};

}  // namespace unenrolld
