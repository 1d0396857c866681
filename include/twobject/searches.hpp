/* The C++ face of the search service's client and of smart groups. */
#ifndef TWOBJECT_SEARCHES_HPP
#define TWOBJECT_SEARCHES_HPP

#include <twobject/search.h>
#include <twobject/smart_groups.h>
#include <twobject/owner.hpp>

namespace twobject {

using smartgroup_record = owner<cfg_smartgroup, cfg_smartgroup_free>;
/// A list with the array of its IDs, which cfg_smartgroup_list_free() leaves.
using smartgroup_list = owner<cfg_smartgroup_list, cfg_smartgroup_list_dispose>;

/// Loads the smart groups of a list; NULL for one that cannot be loaded.
inline auto entries(const cfg_smartgroup_list *list) {
  return indexed(cfg_smartgroup_list_count(list), [list](int32_t i) {
    return smartgroup_record(cfg_smartgroup_list_get_smartgroup(list, i));
  });
}

/// The IDs of a smart group's members. None also when the service does not answer: search() tells the two
/// apart.
inline heap_texts members(const cfg_smartgroup *group) noexcept {
  char **ids = nullptr;
  cfg_smartgroup_evaluate(group, &ids);  // the service's count may differ from the number of IDs
  return heap_texts(ids);
}

/// The keys by which objects of a type can be searched; nothing when the service does not tell.
inline std::optional<heap_texts> search_fields(const char *object) noexcept {
  char **fields = nullptr;
  int32_t count = 0;
  if (!twsearch_get_fields(object, &fields, &count)) return std::nullopt;
  return heap_texts(fields, count);
}

/// Has the service search objects of a type. The ID of the result, for fetch(); NULL on failure.
inline heap_text search(const char *object, cfg_condition *conditions, int32_t verb = 0,
                        const char *secctxt = nullptr) noexcept {
  return heap_text(twsearch_create(object, conditions, verb, secctxt));
}
/// The same for the members of a smart group.
inline heap_text search(const cfg_smartgroup *group) noexcept {
  return heap_text(cfg_smartgroup_create_search(group));
}

/// A result of the search service, or a part of it.
struct search_result {
  int32_t status = 0;  ///< negative on failure: -1 without a connection, -2 when the service refused
  heap_texts ids;      ///< what was fetched
  int32_t total = 0;   ///< how many objects the whole result has
};

/// Reads a result from `offset` on, at most `limit` IDs of it; 0 and 0 for the whole.
inline search_result fetch(const char *id, int32_t offset = 0, int32_t limit = 0, int32_t verb = 0,
                           const char *secctxt = nullptr) noexcept {
  search_result result;
  char **ids = nullptr;
  result.status = twsearch_fetch(id, offset, limit, &ids, &result.total, verb, secctxt);
  result.ids = heap_texts(ids, result.status);
  return result;
}

}  // namespace twobject

#endif
