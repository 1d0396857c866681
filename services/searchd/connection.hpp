// One client: messages in, replies out, never waiting for it.
#pragma once

#include <chrono>
#include <cstddef>
#include <string>

#include "descriptor.hpp"
#include "options.hpp"
#include "result_sets.hpp"
#include "service.hpp"

namespace searchd {

// The framing is that of libtwconfig's cfg_send() and cfg_receive(), which wait for their peer: here it is
// done in steps. A reply is taken before the next request is read, so that a client cannot pile up replies.
class connection {
 public:
  connection(descriptor socket, const options &opts, clock::time_point now);

  int fd() const { return socket_.get(); }
  // What poll() is to wait for, and until when: a message must come whole, and a reply be taken, in time.
  short events() const;
  clock::time_point deadline() const { return deadline_; }

  // Goes on when poll() says so. False when the connection is over.
  bool advance(service &answers, clock::time_point now);

 private:
  bool receive();
  bool send();
  bool answer_messages(service &answers);
  void reply(const std::string &text);

  descriptor socket_;
  std::size_t max_message_;
  std::chrono::seconds time_;
  clock::time_point deadline_;
  bool greeted_ = false;
  bool closing_ = false;  // when the reply is out
  std::string in_;
  std::string out_;
  std::size_t sent_ = 0;
  std::size_t served_ = 0;  // messages, to see that time is well spent
};

}  // namespace searchd
