// What a users-groups template does to one user or group.
#ifndef TW_TEMPLATES_OPERATIONS_HPP
#define TW_TEMPLATES_OPERATIONS_HPP

#include <twobject/template_users_groups.h>

#include <cstdlib>
#include <memory>
#include <new>
#include <vector>

#include "record/text.hpp"
#include "record/text_array.hpp"

struct cfg_ugt_user_operation {
  ::cfg *cfg = nullptr;  // by which its list is read
  tw::text username;
  tw::text description;
  tw::text_array groups;
  tw::secret password;
  int32_t disabled = 0;
};

struct cfg_ugt_group_operation {
  ::cfg *cfg = nullptr;
  tw::text groupname;
  tw::text description;
  tw::text_array roles;
};

namespace tw {

// The block comes from calloc(), because a caller who was left with it gives it back with free().
template <class Operation>
struct operation_release {
  void operator()(Operation *operation) const noexcept {
    operation->~Operation();
    std::free(operation);
  }
};
template <class Operation>
using operation_ptr = std::unique_ptr<Operation, operation_release<Operation>>;

template <class Operation>
operation_ptr<Operation> new_operation(cfg *store) noexcept {
  void *block = std::calloc(1, sizeof(Operation));
  operation_ptr<Operation> operation(block ? new (block) Operation : nullptr);
  if (operation) operation->cfg = store;
  return operation;
}

// None is NULL.
template <class Operation>
using operations = std::vector<operation_ptr<Operation>>;

}  // namespace tw

#endif
