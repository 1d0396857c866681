// A condition tree that its maker frees.
#ifndef TW_RECORD_OWNED_CONDITION_HPP
#define TW_RECORD_OWNED_CONDITION_HPP

#include <twconfig/condition.h>

#include <memory>

namespace tw {

struct condition_free {
  void operator()(cfg_condition *condition) const noexcept { cfg_free_conditions(condition); }
};
using owned_condition = std::unique_ptr<cfg_condition, condition_free>;

}  // namespace tw

#endif
