// The record of a push.
#ifndef TW_PUSHES_EXEC_CTXT_HPP
#define TW_PUSHES_EXEC_CTXT_HPP

#include <twobject/push_exec_ctxt.h>

#include <memory>
#include <vector>

#include "record/view.hpp"

struct cfg_push_exec_template {
  tw::text template_uuid;
  tw::text elem_uuid;  // of the reference; NULL until it is saved
};

namespace tw {

// Whether a push's templates or nodes are there. Once removed they neither come back nor take more: callers
// that removed them know that what they see from then on is not the store's.
enum class contents : std::uint8_t { unread, there, removed };

}  // namespace tw

struct cfg_push_exec_ctxt : tw::object_view {
  tw::text username;
  std::vector<std::unique_ptr<cfg_push_exec_template>> templates;
  tw::contents templates_state = tw::contents::there;
  std::vector<cfg_push_node_ctxt *> nodes;  // owned; NULL for one that could not be loaded
  tw::contents nodes_state = tw::contents::unread;
  int32_t disconnected_behaviour = CFG_PUSH_DISCONNECTED_SKIP;
  int32_t status = CFG_PUSH_EXEC_UNCONFIGURED;
};

namespace tw {

// Frees a push's node contexts but not their texts, which callers may still hold.
void release_nodes(cfg_push_exec_ctxt &push) noexcept;
// Frees the push's record of a template, but not its texts.
void release_template(std::unique_ptr<cfg_push_exec_template> entry) noexcept;
// Reads the push's templates. False when memory is short.
bool load_templates(cfg_push_exec_ctxt &push, cfg_elem *elem);

}  // namespace tw

#endif
