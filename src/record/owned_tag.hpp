// Tag records that a function of another family holds for itself alone.
#ifndef TW_RECORD_OWNED_TAG_HPP
#define TW_RECORD_OWNED_TAG_HPP

#include <twobject/tag.h>

#include <cstdlib>
#include <memory>

namespace tw {

// cfg_tag_free() leaves the array of the values to whoever asked for it; here no one did.
struct tag_release {
  void operator()(cfg_tag *tag) const noexcept {
    char **values = tag_get_all_values(tag);
    cfg_tag_free(tag);
    std::free(static_cast<void *>(values));
  }
};
struct tag_value_release {
  void operator()(cfg_tag_value *value) const noexcept { cfg_tag_value_free(value); }
};
using owned_tag = std::unique_ptr<cfg_tag, tag_release>;
using owned_tag_value = std::unique_ptr<cfg_tag_value, tag_value_release>;

}  // namespace tw

#endif
