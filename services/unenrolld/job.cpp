#include "job.hpp"

#include <jansson.h>

#include <memory>

namespace unenrolld {

std::optional<std::string> node_of_job(std::string_view body) {
  struct release {
    void operator()(json_t *value) const { json_decref(value); }
  };
  if (!body.ends_with('\0')) return std::nullopt;
  body.remove_suffix(1);
  const std::unique_ptr<json_t, release> job(
      json_loadb(body.data(), body.size(), JSON_REJECT_DUPLICATES, nullptr));
  const json_t *id = json_object_get(job.get(), "node_id");
  if (!json_is_string(id)) return std::nullopt;
  return std::string(json_string_value(id), json_string_length(id));
}

bool is_node_id(std::string_view id) {
  constexpr std::string_view collection = "nodes-", digits = "0123456789";
  constexpr std::size_t most_digits = 10;
  if (!id.starts_with(collection)) return false;
  const std::string_view number = id.substr(collection.size());
  return !number.empty() && number.size() <= most_digits && number[0] != '0' &&
         number.find_first_not_of(digits) == std::string_view::npos;
}

}  // namespace unenrolld
