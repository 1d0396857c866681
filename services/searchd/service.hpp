// The requests that clients make, and what they are answered.
#pragma once

#include <string>

#include "evaluator.hpp"
#include "json.hpp"
#include "options.hpp"
#include "result_sets.hpp"

namespace searchd {

class service {
 public:
  explicit service(const options &opts)
      : evaluator_(opts.store), results_(opts.max_results, opts.result_age) {}

  // Answers one message of a client with JSON text. `greeted` is the client's: whether it has said hello.
  // Every message has an answer, a bad one too.
  std::string answer(const std::string &message, bool &greeted);

 private:
  json serve(const json_t *request, bool &greeted);
  json get_fields(const json_t *data, const asker &who);
  json search(const json_t *data, const asker &who);
  json get(const json_t *data, const asker &who);

  evaluator evaluator_;
  result_sets results_;
};

}  // namespace searchd
