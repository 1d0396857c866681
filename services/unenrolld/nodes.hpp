// The nodes in the store, as far as they are taken out of it.
#pragma once

#include <string>
#include <twobject/store.hpp>

#include "outcome.hpp"

namespace unenrolld {

class nodes {
 public:
  explicit nodes(std::string store) : path_(std::move(store)) {}

  // Removes a node and revokes its certificate in one commit, on disk when this returns. Doing it again
  // changes nothing, and the commit log tells then that it was done here.
  outcome remove(const std::string &id);

  // Lets go of the state that was read last, before a long time without work.
  void park();

 private:
  bool open(outcome &failed);
  outcome try_to_remove(const std::string &id);
  outcome failure(const std::string &what);

  std::string path_;
  twobject::store_handle store_;
};

}  // namespace unenrolld
