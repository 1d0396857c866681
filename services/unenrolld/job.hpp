// What a job says: which node is to be unenrolled.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace unenrolld {

// The node's ID in the body of a job, a JSON object with a text "node_id" and a NUL behind it; nothing when
// the body is none. Whether it is the ID of a node is another question.
std::optional<std::string> node_of_job(std::string_view body);

// Whether a text has the form of a committed node's ID.
bool is_node_id(std::string_view id);

}  // namespace unenrolld
